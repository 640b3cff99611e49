#include "command_watch.h"

#include <errno.h>
#include <string.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "platform/logger.h"

CommandWatch::CommandWatch() : mFd(-1) {}

CommandWatch::~CommandWatch() {
    if (mFd >= 0) close(mFd);
}

int CommandWatch::open(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash);
    mName = slash == std::string::npos ? path : path.substr(slash + 1);
    mFd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (mFd < 0) {
        tprintf("avworker: inotify_init1 failed: %s\n", strerror(errno));
        return -1;
    }
    // The folder, not the file: the file may not exist yet, and a writer may
    // replace it by renaming a new one over it. Modifications are watched
    // only to keep two finished writes apart: inotify merges identical
    // events that queue up unread, which would make two commands one.
    if (inotify_add_watch(mFd, folder.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO | IN_MODIFY) < 0) {
        tprintf("avworker: cannot watch %s: %s\n", folder.c_str(), strerror(errno));
        return -1;
    }
    return 0;
}

int CommandWatch::takeWrites() {
    alignas(struct inotify_event) char buf[4096];
    int writes = 0;
    while (true) {
        const ssize_t n = read(mFd, buf, sizeof buf);
        if (n < 0 && errno == EAGAIN) return writes;
        if (n <= 0) {
            tprintf("avworker: reading the command watch failed: %s\n", strerror(errno));
            return -1;
        }
        for (ssize_t pos = 0; pos < n;) {
            const struct inotify_event* event = (const struct inotify_event*)(buf + pos);
            pos += sizeof(struct inotify_event) + event->len;
            if (event->mask & IN_IGNORED) {
                tprintf("avworker: the command folder went away\n");
                return -1;
            }
            // After an overflow the count is lost; the file still holds the
            // latest command, so that one is taken.
            if (event->mask & IN_Q_OVERFLOW) writes++;
            const bool finished = event->mask & (IN_CLOSE_WRITE | IN_MOVED_TO);
            if (finished && event->len > 0 && mName == event->name) writes++;
        }
    }
}
