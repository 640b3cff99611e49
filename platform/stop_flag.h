#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

// The stop request of one background thread, set by its owner. The thread
// sleeps on it instead of sleeping blind, so a stop wakes it at once and the
// owner's join returns within one step of the thread's work.
class StopFlag {
public:
    // Sets the flag and wakes every sleeper. Any thread.
    void set();
    // Clears it again, for an owner that starts a new thread. Only while no
    // thread uses the flag.
    void reset();
    // Without a lock: a loader asks once per folder entry.
    bool isSet() const;
    // Sleeps up to `ms` milliseconds; true when the flag is set (at once or
    // meanwhile).
    bool sleepFor(long ms) const;

private:
    mutable std::mutex mLock;
    mutable std::condition_variable mCond;
    // Written under mLock, so a sleeper cannot miss the wake-up; read
    // by isSet without it.
    std::atomic<bool> mSet{false};
};
