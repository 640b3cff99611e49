#pragma once

#include <time.h>

#include <atomic>
#include <functional>

#include "platform/clock.h"

// A clock that stands still until the test moves it. Installed while it
// lives: make it before the threads that read it and let it go after them.
class TestClock : public ClockSource {
public:
    TestClock() { setClockSource(this); }
    ~TestClock() override { setClockSource(nullptr); }
    long monotonicMs() override { return mMonotonic; }
    long wallMs() override { return mWall; }
    void advance(long ms) {
        mMonotonic += ms;
        mWall += ms;
    }
    // Moves time on in `stepMs` steps, a moment of real time apart, until
    // `done` holds; false when it does not within 20 s of real time.
    bool advanceUntil(const std::function<bool()>& done, long stepMs = 50) {
        for (int i = 0; i < 10000; i++) {
            if (done()) return true;
            advance(stepMs);
            struct timespec pause = {0, 2000000};
            nanosleep(&pause, nullptr);
        }
        return done();
    }

private:
    std::atomic<long> mMonotonic{1000000};
    std::atomic<long> mWall{1700000000000L};
};
