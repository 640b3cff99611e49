#pragma once

class StopFlag;

// Runs one command line as system() does, through "/bin/sh -c", and waits
// for the shell. Unlike system() the shell gets a process group of its own
// and the wait watches `stop` (may be null): once it is set the whole group
// is killed and the call returns, so a hung command never holds up the
// thread that runs it. A line still running `limitMs` after its start (0: no
// limit; measured on the monotonic clock) is killed the same way and logged.
// Returns the status as system() reports it, or -1 when the shell could not
// be started or was killed.
int runShellLine(const char* line, const StopFlag* stop, long limitMs = 0);
