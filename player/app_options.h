#pragma once

#include <string>

// Root folder of the video browser: the default root, then -d, then the
// folder part of -f.
extern std::string gUserPath;
// The single file given with -f, empty when none.
extern std::string gUserFile;
// The folder the browser showed when the player last quit.
extern std::string gSavedDir;

// Echoes the usage line, reads -d and -f, echoes what it took and the first
// argument that is not an option. Can be called again (it restarts getopt).
void check_opts(int argc, char* argv[]);

// A single file names the browser's root: everything before its last "/".
void applyUserFileRoot();
