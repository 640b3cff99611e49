#pragma once

#include <stddef.h>
#include <stdio.h>

// Reads the file at `path` into `buf`, at most `capacity` bytes; the bytes are
// not terminated. Returns the number of bytes read, 0 when the file cannot be
// opened.
int fileToMem(const char* path, void* buf, size_t capacity);

// Reads the open `stream` whole (1 to 131071 bytes) into a new NUL-terminated
// heap buffer stored in *out. 0 on success, -1 on failure; `name` only names
// the file in log lines. Whenever *out was set the caller frees it, also
// after a failed read.
int loadContent(const char* name, FILE* stream, char** out);
