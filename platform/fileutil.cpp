#include "fileutil.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <stdlib.h>
#include <string.h>

#include "logger.h"

namespace {

FileIdentity identityOf(const struct stat& st) {
    return FileIdentity{true, st.st_dev, st.st_ino, st.st_size, st.st_mtim, st.st_ctim};
}

const FileIdentity kNoFile = {false, 0, 0, 0, {0, 0}, {0, 0}};

// A descriptor of the regular file at `path`, opened without waiting (a FIFO
// would wait for a writer), or -1. `st` receives its status.
int openRegular(const char* path, struct stat* st) {
    const int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return -1;
    if (fstat(fd, st) != 0 || !S_ISREG(st->st_mode)) {
        close(fd);
        return -1;
    }
    return fd;
}

bool sameTime(const struct timespec& a, const struct timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

}  // namespace

bool operator==(const FileIdentity& a, const FileIdentity& b) {
    if (!a.exists || !b.exists) return a.exists == b.exists;
    return a.device == b.device && a.inode == b.inode && a.size == b.size && sameTime(a.modified, b.modified) &&
           sameTime(a.changed, b.changed);
}

FileIdentity fileIdentity(const char* path) {
    struct stat st;
    if (stat(path, &st) != 0) return kNoFile;
    return identityOf(st);
}

int fileToMemWithIdentity(const char* path, void* buf, size_t capacity, FileIdentity* identity) {
    if (identity) *identity = kNoFile;
    struct stat st;
    const int fd = openRegular(path, &st);
    if (fd < 0) return 0;
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
    if (identity) *identity = identityOf(st);
    return (int)got;
}

int fileToMem(const char* path, void* buf, size_t capacity) {
    return fileToMemWithIdentity(path, buf, capacity, nullptr);
}

FILE* openRegularFile(const char* path) {
    struct stat st;
    const int fd = openRegular(path, &st);
    if (fd < 0) return nullptr;
    // Reads of a regular file never wait anyway; the flag goes so that stdio
    // sees an ordinary descriptor.
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    FILE* f = fdopen(fd, "r");
    if (!f) close(fd);
    return f;
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
