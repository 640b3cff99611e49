#include "fileutil.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <stdlib.h>
#include <string.h>

#include "logger.h"

int fileToMemWithTime(const char* path, void* buf, size_t capacity, struct timespec* mtime) {
    if (mtime) *mtime = timespec{0, 0};
    const int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return 0;
    struct stat st;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        close(fd);
        return 0;
    }
    size_t want = st.st_size < 0 ? 0 : (size_t)st.st_size;
    if (want > capacity) want = capacity;
    size_t got = 0;
    while (got < want) {
        const ssize_t n = read(fd, static_cast<char*>(buf) + got, want - got);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += (size_t)n;
    }
    close(fd);
    if (mtime) *mtime = st.st_mtim;
    return (int)got;
}

int fileToMem(const char* path, void* buf, size_t capacity) {
    return fileToMemWithTime(path, buf, capacity, nullptr);
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
