#pragma once

#include <stddef.h>
#include <stdio.h>

#include <time.h>

// Reads the file at `path` into `buf`, at most `capacity` bytes; the bytes are
// not terminated. Returns the number of bytes read, 0 when the file cannot be
// opened or is not a regular file (a FIFO or device put in its place never
// blocks the reader).
int fileToMem(const char* path, void* buf, size_t capacity);
// The same, also giving the file's last modification time in *mtime (zero
// when nothing was read).
int fileToMemWithTime(const char* path, void* buf, size_t capacity, struct timespec* mtime);

// Reads the open `stream` whole (1 to 131071 bytes) into a new NUL-terminated
// heap buffer stored in *out. 0 on success, -1 on failure; `name` only names
// the file in log lines. Whenever *out was set the caller frees it, also
// after a failed read.
int loadContent(const char* name, FILE* stream, char** out);
