#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Reads the decoder's command file as each write of it finishes, on a thread
// of its own. The player rewrites the file with the shell ("echo win ... >
// cmd", then "echo play > cmd"), and the same command twice in a row must act
// twice, so finished writes are counted (inotify's close-after-write on the
// folder) rather than contents compared. Each is read at once: the main loop
// may be busy a good while (mpv starting up, a picture drawn), and two writes
// read only afterwards would both give the last command.
class CommandReader {
public:
    CommandReader() = default;
    // Stops the thread and joins it (it wakes at once), then closes all.
    ~CommandReader();
    CommandReader(const CommandReader&) = delete;
    CommandReader& operator=(const CommandReader&) = delete;

    // Watches `path`, whose folder must exist, and starts the thread. Call it
    // after the process's signal mask is set: the thread inherits it. 0 on
    // success, -1 on failure (logged).
    int start(const std::string& path);
    // Readable while read commands wait to be taken; the main loop polls it.
    int readyFd() const { return mReadyFd; }
    // The command texts read since the last call, oldest first. *failed is
    // set once the watch has ended for good (logged); nothing comes after.
    std::vector<std::string> take(bool* failed);

private:
    void run();
    // Takes the pending notifications: how many finished writes of the file
    // they held, -1 when the watch failed.
    int takeWrites();
    void publish(const std::string* text, bool failed);

    int mWatchFd = -1;  // owned inotify descriptor
    int mStopFd = -1;   // owned eventfd: the owner's stop request
    int mReadyFd = -1;  // owned eventfd: commands or a failure wait
    std::string mPath, mName;  // the file, and its name inside the watched folder

    std::mutex mLock;
    std::deque<std::string> mQueue;  // guarded by mLock
    bool mFailed = false;            // guarded by mLock
    std::thread mThread;             // owned: started by start, joined by the destructor
};
