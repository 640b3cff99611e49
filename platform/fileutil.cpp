#include "fileutil.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include "logger.h"

int fileToMem(const char* path, void* buf, size_t capacity) {
    FILE* f = fopen(path, "r");
    if (!f) return 0;
    fseek(f, 0, SEEK_END);
    long size = ftell(f);
    fseek(f, 0, SEEK_SET);
    size_t want = size < 0 ? 0 : (size_t)size;
    if (want > capacity) want = capacity;
    size_t got = fread(buf, 1, want, f);
    fclose(f);
    return (int)got;
}

int loadContent(const char* name, FILE* stream, char** out) {
    fseek(stream, 0, SEEK_END);
    long size = ftell(stream);
    rewind(stream);
    if (size < 1 || size > 0x1FFFF) {
        tprintf("%s invalid size %d\n", name, (int)size);
        return -1;
    }
    char* buf = static_cast<char*>(malloc(size + 1));
    *out = buf;
    if (!buf) {
        tprintf("read %s (%d vs %d)error : %d:%s\n", name, 0, (int)size, ENOMEM, strerror(ENOMEM));
        return -1;
    }
    long got = 0;
    for (int calls = 0; calls < 10 && got < size; calls++) {
        size_t n = fread(buf + got, 1, size - got, stream);
        got += (long)n;
        if (n == 0 && ferror(stream)) break;
    }
    if (got == size) {
        buf[size] = '\0';
        return 0;
    }
    int err = errno;
    tprintf("read %s (%d vs %d)error : %d:%s\n", name, (int)got, (int)size, err, strerror(err));
    return -1;
}
