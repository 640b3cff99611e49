#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "platform/stop_flag.h"

class DecoderRun;
class DecoderShell;

// One piece of shell work for the decoder.
struct DecoderJob {
    enum Kind {
        START,          // end every decoder, start the decoder for `text`, wait, find it
        STOP,           // end every decoder
        STOP_LEFTOVER,  // STOP, only when a decoder runs (one left by an earlier run)
        COMMAND,        // `text` is the line to run while the run's decoder lives
    };
    Kind kind;
    int generation;     // of the decoder run the job belongs to
    std::string text;
    bool isPlay;        // COMMAND: a missing decoder is logged as "can not play"
    bool logAsRect;     // COMMAND: logged as the display rectangle
};

// Runs the decoder client's shell work in the order it was given, on a thread
// of its own, so that starting a decoder (ending the old one, starting, a
// second's wait) never stops the user interface. Owned by the decoder
// client; the thread lives from construction to destruction.
//
// This is the one place that decides that a decoder run is over: every
// decoder gets SIGTERM, then a bounded wait to go, then SIGKILL and another
// bounded wait, and only then may the next one start. Every shell line has a
// time limit, and every wait is measured on the monotonic clock, so each job
// ends within a known bound whatever the decoder or the shell do.
//
// A new START makes every job still waiting pointless (it ends whatever
// runs), so those are dropped, and the wait of a start that is running ends
// early.
class DecoderWorker {
public:
    // Neither is owned; both outlive the worker. `onLost` is called on the
    // worker's thread when a decoder it expected is missing.
    DecoderWorker(DecoderShell* shell, DecoderRun* run, std::function<void(int generation)> onLost);
    // Runs the stop jobs still waiting, drops the rest, ends the running
    // start's wait and joins the thread (bounded: every step is).
    ~DecoderWorker();
    DecoderWorker(const DecoderWorker&) = delete;
    DecoderWorker& operator=(const DecoderWorker&) = delete;

    void post(DecoderJob job);
    // Waits up to `ms` until no job waits or runs; true when idle.
    bool waitIdle(long ms);

private:
    void loop();
    void execute(const DecoderJob& job);
    void start(const DecoderJob& job);
    // SIGTERM, wait, SIGKILL, wait; true when no decoder is left.
    bool endDecoders();
    // Polls `done` until it holds (true), the monotonic clock reaches
    // `deadlineMs` or `cut` is set (false). A kill's deadline is taken
    // before its signal goes, so a test that moves the clock once it sees
    // the signal always moves it past the deadline's start.
    bool waitUntil(long deadlineMs, const StopFlag& cut, const std::function<bool()>& done);

    DecoderShell* mShell;  // not owned
    DecoderRun* mRun;      // not owned
    std::function<void(int)> mOnLost;

    std::mutex mLock;
    std::condition_variable mWake;  // a job was posted, or quit
    std::condition_variable mIdle;  // a job finished
    std::deque<DecoderJob> mJobs;   // guarded by mLock
    bool mBusy = false;             // guarded by mLock: a job runs
    bool mQuit = false;             // guarded by mLock
    StopFlag mSkipWait;  // ends the running start early (a newer start, or quit)
    StopFlag mNever;     // never set: for waits nothing may cut short
    std::thread mThread;
};

// The time limits, in milliseconds.
// A decoder gets this long after SIGTERM to go (a weak device's takes over a
// second), and this long after SIGKILL.
const long kDecoderTermWaitMs = 2000;
const long kDecoderKillWaitMs = 1000;
// A new decoder gets this long to come up before commands reach it.
const long kDecoderStartWaitMs = 1000;
// A shell line (a command into the command file, a kill) normally ends in
// milliseconds; one still running after this is killed.
const long kDecoderLineLimitMs = 2000;
