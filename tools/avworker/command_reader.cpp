#include "command_reader.h"

#include <errno.h>
#include <poll.h>
#include <stdint.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "platform/fileutil.h"
#include "platform/logger.h"

namespace {

// The command file holds one short line; a longer content is malformed anyway.
const size_t kCommandBytes = 255;

void closeFd(int* fd) {
    if (*fd >= 0) close(*fd);
    *fd = -1;
}

}  // namespace

CommandReader::~CommandReader() {
    if (mThread.joinable()) {
        const uint64_t one = 1;
        if (write(mStopFd, &one, sizeof one) != (ssize_t)sizeof one)
            tprintf("avworker: cannot wake the command reader: %s\n", strerror(errno));
        mThread.join();
    }
    closeFd(&mWatchFd);
    closeFd(&mStopFd);
    closeFd(&mReadyFd);
}

int CommandReader::start(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash);
    mPath = path;
    mName = slash == std::string::npos ? path : path.substr(slash + 1);
    mWatchFd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    mStopFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    mReadyFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (mWatchFd < 0 || mStopFd < 0 || mReadyFd < 0) {
        tprintf("avworker: cannot set up the command reader: %s\n", strerror(errno));
        return -1;
    }
    // The folder, not the file: the file may not exist yet, and a writer may
    // replace it by renaming a new one over it. Modifications are watched
    // only to keep two finished writes apart: inotify merges identical
    // events that queue up unread, which would make two commands one.
    if (inotify_add_watch(mWatchFd, folder.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO | IN_MODIFY) < 0) {
        tprintf("avworker: cannot watch %s: %s\n", folder.c_str(), strerror(errno));
        return -1;
    }
    mThread = std::thread([this] { run(); });
    return 0;
}

// The ready descriptor is set and cleared under mLock, so it is readable
// exactly while something waits to be taken.
std::vector<std::string> CommandReader::take(bool* failed) {
    std::lock_guard<std::mutex> hold(mLock);
    uint64_t count;
    (void)!read(mReadyFd, &count, sizeof count);  // empty already is fine
    std::vector<std::string> out(mQueue.begin(), mQueue.end());
    mQueue.clear();
    *failed = mFailed;
    return out;
}

void CommandReader::publish(const std::string* text, bool failed) {
    std::lock_guard<std::mutex> hold(mLock);
    if (text) mQueue.push_back(*text);
    mFailed = mFailed || failed;
    const uint64_t one = 1;
    (void)!write(mReadyFd, &one, sizeof one);  // at most full, and then already readable
}

void CommandReader::run() {
    struct pollfd fds[2] = {{mStopFd, POLLIN, 0}, {mWatchFd, POLLIN, 0}};
    while (true) {
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            tprintf("avworker: polling the command watch failed: %s\n", strerror(errno));
            return publish(nullptr, true);
        }
        if (fds[0].revents) return;
        const int writes = takeWrites();
        if (writes < 0) return publish(nullptr, true);
        // Writes that came faster than this thread woke can only be read as
        // the file is now: each still acts, with the latest command.
        for (int i = 0; i < writes; i++) {
            char text[kCommandBytes + 1];
            const int n = fileToMem(mPath.c_str(), text, kCommandBytes);
            // Empty while a writer has truncated the file but not yet
            // written; its own close brings the command.
            if (n <= 0) continue;
            const std::string command(text, n);
            publish(&command, false);
        }
    }
}

int CommandReader::takeWrites() {
    alignas(struct inotify_event) char buf[4096];
    int writes = 0;
    while (true) {
        const ssize_t n = read(mWatchFd, buf, sizeof buf);
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
