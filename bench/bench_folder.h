#pragma once

#include <string>

// A folder of `count` empty video files with names in no particular order,
// in a new temporary folder; its path, "" on failure. The caller removes it.
std::string makeVideoFolder(int count);

// The least any folder reader does: read the names, stat each, sort once.
// Milliseconds.
double timeFolderFloor(const std::string& dir);
