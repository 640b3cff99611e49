#pragma once

#include <stddef.h>
#include <stdio.h>
#include <sys/types.h>

#include <time.h>

// What tells one version of a file from another without any clock: a file
// replaced by a rename has a new inode, one rewritten in place a new change
// time (which no program can set back) and mostly a new size. Two reads that
// give equal identities saw the same version.
struct FileIdentity {
    bool exists;
    dev_t device;
    ino_t inode;
    off_t size;
    struct timespec modified;
    struct timespec changed;
};
bool operator==(const FileIdentity& a, const FileIdentity& b);
inline bool operator!=(const FileIdentity& a, const FileIdentity& b) { return !(a == b); }

// The identity of what is at `path` now; `exists` false when nothing is.
FileIdentity fileIdentity(const char* path);

// Reads the file at `path` into `buf`, at most `capacity` bytes; the bytes are
// not terminated. Returns the number of bytes read, 0 when the file cannot be
// opened or is not a regular file (a FIFO or device put in its place never
// blocks the reader).
int fileToMem(const char* path, void* buf, size_t capacity);
// The same, also giving the identity of the version read (`exists` false
// when nothing was read).
int fileToMemWithIdentity(const char* path, void* buf, size_t capacity, FileIdentity* identity);

// Opens `path` for reading as fopen(path, "r") does, but only a regular file,
// and without ever waiting: a FIFO or device in its place gives null, as a
// missing file does. The caller closes the stream.
FILE* openRegularFile(const char* path);

// Reads the open `stream` whole (1 to 131071 bytes) into a new NUL-terminated
// heap buffer stored in *out. 0 on success, -1 on failure; `name` only names
// the file in log lines. Whenever *out was set the caller frees it, also
// after a failed read.
int loadContent(const char* name, FILE* stream, char** out);
