#pragma once

#include <stddef.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

// Where the writer thread puts each line. `line` is whole and ends in the
// "\n" its format carried.
class LogSink {
public:
    virtual ~LogSink() {}
    virtual void write(const char* line) = 0;
};

// Lines handed over by any thread and written by one writer thread, in the
// order they were queued, so a caller never waits for the sink. The queue is
// bounded: when it is full a line is dropped and counted, and the writer puts
// "N log lines dropped\n" where the gap is.
class LogQueue {
public:
    enum { LOG_QUEUED = 0, LOG_DROPPED = 1, LOG_CLOSED = -1 };

    // Starts the writer thread into `sink` (not owned; kept until stop()
    // returns) with room for `capacity` lines. 0, or -1 when a writer runs
    // already or the thread cannot start. The owner only.
    int start(LogSink* sink, size_t capacity);
    // Takes `*line` into the queue (LOG_QUEUED), or counts it as dropped when
    // the queue is full (LOG_DROPPED); never waits for the writer. LOG_CLOSED,
    // leaving `*line` alone, when no writer takes lines: the caller writes it
    // itself then, after every line it queued before. Any thread.
    int post(std::string* line);
    // Lets the writer write everything queued, then joins it. A writer that
    // has not drained within `drainMs` (the sink hangs) drops what is still
    // queued instead; a single write stuck in the sink is waited for. The
    // owner only; nothing when no writer runs.
    void stop(long drainMs);

private:
    enum State { STOPPED, RUNNING, DRAINING, DISCARDING };
    struct Entry {
        std::string text;
        unsigned droppedBefore;  // lines dropped between the previous entry and this one
    };

    void run();
    // Writes the "N log lines dropped" notice when `dropped` is not 0.
    void writeDropped(unsigned dropped);
    // Moves what is queued to the dropped count. Called with mLock held.
    void discardQueued();

    std::mutex mLock;
    std::condition_variable mWake;     // the writer waits here for lines or a stop
    std::condition_variable mStopped;  // stop() waits here for the writer to finish
    State mState = STOPPED;            // guarded by mLock
    std::deque<Entry> mQueue;          // guarded by mLock
    size_t mCapacity = 0;              // guarded by mLock
    unsigned mDropped = 0;             // guarded by mLock: dropped since the last entry queued
    bool mWriterWaiting = false;       // guarded by mLock: the writer sleeps on mWake
    std::atomic<bool> mDiscarding{false};  // set with DISCARDING; read by the writer between lines
    // Set by the owner while no writer runs; read by the writer only.
    LogSink* mSink = nullptr;
    std::thread mThread;  // the owner only
};
