#pragma once

#include <string>

// Notices every write of the decoder's command file. The player rewrites the
// file with the shell ("echo play > cmd"), and the same command twice in a
// row must act twice, so the watch counts finished writes (inotify's
// close-after-write on the folder) rather than comparing contents or times.
class CommandWatch {
public:
    CommandWatch();
    virtual ~CommandWatch();

    // Starts watching `path`; its folder must exist. 0 on success, -1 on
    // failure.
    virtual int open(const std::string& path);
    // The descriptor to poll for readability.
    virtual int fd() const { return mFd; }
    // Takes the pending notifications; returns how many finished writes of
    // the command file they held (0 when none), -1 when the watch failed.
    virtual int takeWrites();

private:
    int mFd;            // owned inotify descriptor, -1 when closed
    std::string mName;  // the command file's name inside the watched folder
};
