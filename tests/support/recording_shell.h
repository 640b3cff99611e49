#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/device_paths.h"
#include "player/decoder_shell.h"
#include "tests/support/temp_dir.h"

// Stand-in for the decoder's shell: records every line instead of running it
// and plays the process table with scripted decoders. A start line brings up
// a decoder with a new pid; "killall avworker" is SIGTERM and "killall -KILL
// avworker" SIGKILL to every decoder, each taking effect as its script says,
// on the monotonic clock (a test's clock when one is installed). Starts can
// be held, to catch a client mid-start, or fail (the decoder is missing, or
// quits on a file it rejects).
class RecordingShell : public DecoderShell {
public:
    struct Script {
        // After SIGTERM it exits this much later; -1: only SIGKILL ends it
        // (it ignores SIGTERM, or is stopped).
        long exitAfterTermMs = 0;
        // Not even SIGKILL ends it (stuck in the kernel).
        bool survivesKill = false;
        // Its status report, written when it starts and again at every look
        // at the process table while it runs; "" for none.
        std::string report;
    };

    // How the decoders started from now on behave.
    void script(const Script& script) {
        std::lock_guard<std::mutex> hold(mLock);
        mScript = script;
    }

    void run(const std::string& line, long) override {
        std::unique_lock<std::mutex> hold(mLock);
        mLines.push_back(line);
        mChanged.notify_all();
        const long now = monotonicMs();
        if (line.rfind("avworker ", 0) == 0) {
            mChanged.wait(hold, [&] { return !mHoldStarts; });
            mCrowdAtStart = living().size();
            if (!mFailStarts) mProcs.push_back(Proc{++mLastPid, mScript, -1, false});
            publish();
        } else if (line == "killall avworker") {
            mSeenGone = false;
            for (Proc& p : mProcs)
                if (p.termMs < 0) p.termMs = now;
        } else if (line == "killall -KILL avworker") {
            for (Proc& p : mProcs) p.killed = p.killed || !p.script.survivesKill;
        }
    }
    std::vector<int> decoders() override {
        std::lock_guard<std::mutex> hold(mLock);
        publish();
        const std::vector<int> pids = living();
        if (pids.empty() && !mSeenGone) {
            mSeenGone = true;
            mChanged.notify_all();
        }
        return pids;
    }
    bool alive(int pid) override {
        std::lock_guard<std::mutex> hold(mLock);
        for (int p : living())
            if (p == pid) return pid > 0;
        return false;
    }

    // The first running decoder, or -1.
    int findDecoder() {
        const std::vector<int> pids = decoders();
        return pids.empty() ? -1 : pids.front();
    }
    std::vector<std::string> lines() {
        std::lock_guard<std::mutex> hold(mLock);
        return mLines;
    }
    size_t count(const std::string& line) {
        size_t n = 0;
        for (const std::string& l : lines()) n += l == line;
        return n;
    }
    // A decoder this client did not start runs (a killed run left it), or
    // every decoder dies on its own (a crash, a kill from outside).
    void setDecoder(bool running) {
        std::lock_guard<std::mutex> hold(mLock);
        if (running)
            mProcs.push_back(Proc{++mLastPid, Script(), -1, false});
        else
            for (Proc& p : mProcs) p.killed = true;
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
    // Waits until the table was seen empty after the last SIGTERM: the
    // client's stop has gone through.
    bool waitForStopSeen() {
        std::unique_lock<std::mutex> hold(mLock);
        return mChanged.wait_for(hold, std::chrono::seconds(10), [&] { return mSeenGone; });
    }
    bool waitForLine(const std::string& line) {
        std::unique_lock<std::mutex> hold(mLock);
        return mChanged.wait_for(hold, std::chrono::seconds(10),
                                 [&] { return std::find(mLines.begin(), mLines.end(), line) != mLines.end(); });
    }
    int newestPid() {
        std::lock_guard<std::mutex> hold(mLock);
        return mLastPid;
    }
    // How many decoders still ran when the last start line ran.
    size_t crowdAtStart() {
        std::lock_guard<std::mutex> hold(mLock);
        return mCrowdAtStart;
    }

private:
    struct Proc {
        int pid;
        Script script;
        long termMs;  // when SIGTERM came; -1 never
        bool killed;
    };
    // Under mLock.
    std::vector<int> living() {
        const long now = monotonicMs();
        std::vector<int> pids;
        for (const Proc& p : mProcs) {
            const bool exited = p.termMs >= 0 && p.script.exitAfterTermMs >= 0 &&
                                now >= p.termMs + p.script.exitAfterTermMs;
            if (!p.killed && !exited) pids.push_back(p.pid);
        }
        return pids;
    }
    void publish() {
        const std::vector<int> pids = living();
        for (const Proc& p : mProcs)
            for (int pid : pids)
                if (pid == p.pid && !p.script.report.empty())
                    writeFileAtomic(devicePath(DEVICE_PATH_PLAYER_STATUS), p.script.report);
    }

    std::mutex mLock;  // guards all below
    std::condition_variable mChanged;
    std::vector<std::string> mLines;
    std::vector<Proc> mProcs;
    Script mScript;
    int mLastPid = 1000;
    size_t mCrowdAtStart = 0;
    bool mHoldStarts = false;
    bool mFailStarts = false;
    bool mSeenGone = true;
};
