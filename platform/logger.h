#pragma once

// The one logging function. Lines go to standard output until
// initLogger(non-zero) switches them to the system log (debug level, under
// the process's own name), or to standard error where no system log runs.
// Every format carries its own "\n".
void initLogger(int toSyslog);
void tprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
