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
        START,          // kill any decoder, pause, start the decoder for `text`, wait for it
        STOP,           // kill the decoder, pause
        STOP_LEFTOVER,  // STOP, only when a decoder runs (one left by an earlier run)
        COMMAND,        // `text` is the line to run when a decoder runs
    };
    Kind kind;
    int generation;     // of the decoder run the job belongs to
    std::string text;
    bool isPlay;        // COMMAND: a missing decoder is logged as "can not play"
    bool logAsRect;     // COMMAND: logged as the display rectangle
};

// Runs the decoder client's shell work in the order it was given, on a thread
// of its own, so that starting a decoder (kill, pause, start, a second's
// wait) never stops the user interface. Owned by the decoder client; the
// thread lives from construction to destruction.
//
// A new START makes every job still waiting pointless (it kills whatever
// runs), so those are dropped, and the wait of a start that is running ends
// early.
class DecoderWorker {
public:
    // Neither is owned; both outlive the worker. `onLost` is called on the
    // worker's thread when a decoder it expected is missing.
    DecoderWorker(DecoderShell* shell, DecoderRun* run, std::function<void(int generation)> onLost);
    // Runs the stop jobs still waiting, drops the rest, ends the running
    // job's waits and joins the thread; a shell line that hangs is killed
    // after a bound.
    ~DecoderWorker();
    DecoderWorker(const DecoderWorker&) = delete;
    DecoderWorker& operator=(const DecoderWorker&) = delete;

    void post(DecoderJob job);
    // Waits up to `ms` until no job waits or runs; true when idle.
    bool waitIdle(long ms);

private:
    void loop();
    void execute(const DecoderJob& job);

    DecoderShell* mShell;  // not owned
    DecoderRun* mRun;      // not owned
    std::function<void(int)> mOnLost;

    std::mutex mLock;
    std::condition_variable mWake;  // a job was posted, or quit
    std::condition_variable mIdle;  // a job finished
    std::deque<DecoderJob> mJobs;   // guarded by mLock
    bool mBusy = false;             // guarded by mLock: a job runs
    bool mQuit = false;             // guarded by mLock
    StopFlag mSkipWait;  // ends the running start's wait (a newer start, or quit)
    StopFlag mAbort;     // kills a shell line that hangs at shutdown
    std::thread mThread;
};
