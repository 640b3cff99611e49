#pragma once

#include <stddef.h>

class LogSink;

// The one logging function. Lines go to standard output until
// initLogger(non-zero) switches them to the system log (debug level, under
// the process's own name), or to standard error where no system log runs.
// Every format carries its own "\n".
//
// From initLogger(non-zero) on, a caller only formats its line and queues it;
// a writer thread started there does the write. tprintf may be called from
// any thread at any time; lines from one thread keep their order and each
// arrives whole. A line that finds the queue full is dropped and counted
// ("N log lines dropped" follows in the log).
void initLogger(int toSyslog);
void tprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Writes everything still queued and joins the writer thread; also run at
// exit. Later lines are written by their callers directly. A writer whose
// sink hangs (a log daemon that reads nothing) is given up on after a bound,
// so the exit goes on; the lines still queued are lost, later ones go to
// standard error. The thread that called initLogger.
void shutdownLogger();
// For tests and benches: like initLogger(1), but the writer thread writes
// into `sink` (not owned; kept until shutdownLogger) with room for
// `capacity` queued lines (0: as many as the program's own queue). After shutdownLogger lines go to standard output
// again. 0, or -1 when the writer thread cannot start.
int initLoggerToSink(LogSink* sink, size_t capacity);
