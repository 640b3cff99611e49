#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "platform/stop_flag.h"
#include "player/decoder_shell.h"

// Stand-in for the decoder's shell: records every line instead of running it
// and plays the process table (a start line brings up a decoder with a new
// pid, the kill line ends it). Starts can be held, to catch a client mid-start,
// or fail.
class RecordingShell : public DecoderShell {
public:
    void run(const std::string& line, const StopFlag* stop) override {
        std::unique_lock<std::mutex> hold(mLock);
        mLines.push_back(line);
        mChanged.notify_all();
        if (line.rfind("avworker ", 0) == 0) {
            mChanged.wait(hold, [&] { return !mHoldStarts || (stop && stop->isSet()); });
            mPid = mFailStarts ? -1 : ++mLastPid;
        } else if (line == "killall avworker") {
            mPid = -1;
        }
    }
    int findDecoder() override {
        std::lock_guard<std::mutex> hold(mLock);
        return mPid;
    }
    bool alive(int pid) override {
        std::lock_guard<std::mutex> hold(mLock);
        return pid > 0 && pid == mPid;
    }

    std::vector<std::string> lines() {
        std::lock_guard<std::mutex> hold(mLock);
        return mLines;
    }
    // A decoder this client did not start runs (a killed run left it), or
    // the decoder dies on its own (a crash, a kill from outside).
    void setDecoder(bool running) {
        std::lock_guard<std::mutex> hold(mLock);
        mPid = running ? ++mLastPid : -1;
    }
    // Starts bring up no decoder (it is missing, or quits on a file it rejects).
    void failStarts(bool on) {
        std::lock_guard<std::mutex> hold(mLock);
        mFailStarts = on;
    }
    void holdStarts(bool on) {
        std::lock_guard<std::mutex> hold(mLock);
        mHoldStarts = on;
        mChanged.notify_all();
    }
    bool waitForLines(size_t count) {
        std::unique_lock<std::mutex> hold(mLock);
        return mChanged.wait_for(hold, std::chrono::seconds(10), [&] { return mLines.size() >= count; });
    }

private:
    std::mutex mLock;  // guards all below
    std::condition_variable mChanged;
    std::vector<std::string> mLines;
    int mPid = -1, mLastPid = 1000;
    bool mHoldStarts = false;
    bool mFailStarts = false;
};
