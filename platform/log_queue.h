#pragma once

#include <stddef.h>

#include <atomic>
#include <condition_variable>
#include <stdint.h>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Where the writer thread puts each line. `line` is whole and ends in the
// "\n" its format carried.
class LogSink {
public:
    virtual ~LogSink() {}
    virtual void write(const char* line) = 0;
    // After each batch of lines: a sink that gathers lines writes them out.
    virtual void flush() {}
};

// Lines handed over by any thread and written by one writer thread, in the
// order they were queued, so a caller never waits for the sink. The queue is
// bounded: when it is full a line is dropped and counted, and the writer puts
// "N log lines dropped\n" where the gap is.
class LogQueue {
public:
    enum { LOG_QUEUED = 0, LOG_DROPPED = 1, LOG_CLOSED = -1 };

    // Starts the writer thread into `sink` (not owned; kept until stop()
    // returns true) with room for `capacity` lines. 0, or -1 when a writer
    // runs already (also one given up on that has not ended yet) or the
    // thread cannot start. The owner only.
    int start(LogSink* sink, size_t capacity);
    // Copies the `length` bytes of `line` into the queue (LOG_QUEUED), or
    // counts it as dropped when the queue is full (LOG_DROPPED); never waits
    // for the writer. LOG_CLOSED when no writer takes lines: the caller writes
    // it itself then, after every line it queued before. Any thread.
    int post(const char* line, size_t length);
    // Lets the writer write everything queued, then joins it: true. A writer
    // that has not finished within `drainMs` on the monotonic clock (its sink
    // hangs) is given up on: what is still queued is dropped, the writer ends
    // by itself once the sink's write returns, and false tells the caller
    // that the sink may still be in use. A later stop() or start() joins it
    // if it has ended by then. The owner only; true when no writer runs.
    bool stop(long drainMs);

private:
    enum State { STOPPED, RUNNING, DRAINING, DISCARDING };
    // A queued line in the byte queue: this head, then the line's bytes and
    // a terminating NUL. Lines are packed back to back, so queuing one costs
    // no allocation once the buffer has grown to a burst's size.
    struct LineHead {
        uint32_t length;         // of the text, without the NUL
        uint32_t droppedBefore;  // lines dropped between the previous line and this one
    };

    void run();
    // Writes the "N log lines dropped" notice when `dropped` is not 0.
    void writeDropped(unsigned dropped);
    // Joins a writer given up on once it has ended; false while it has not.
    bool joinAbandoned();

    std::mutex mLock;
    std::condition_variable mWake;     // the writer waits here for lines or a stop
    std::condition_variable mStopped;  // stop() waits here for the writer to finish
    State mState = STOPPED;            // guarded by mLock
    std::vector<char> mQueue;          // guarded by mLock: LineHead + text + NUL, back to back
    size_t mLines = 0;                 // guarded by mLock: lines in mQueue
    size_t mCapacity = 0;              // guarded by mLock
    unsigned mDropped = 0;             // guarded by mLock: dropped since the last entry queued
    bool mWriterWaiting = false;       // guarded by mLock: the writer sleeps on mWake
    std::atomic<bool> mDiscarding{false};  // set with DISCARDING; read by the writer between lines
    // Set by the owner while no writer runs; read by the writer only.
    LogSink* mSink = nullptr;
    bool mAbandoned = false;  // the owner only: the writer was given up on and not joined yet
    // The owner only. A writer given up on is left joinable here: the queue
    // is never destroyed while one may run.
    std::thread mThread;
};
