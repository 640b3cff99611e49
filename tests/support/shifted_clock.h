#pragma once

#include <time.h>

#include <atomic>

#include "platform/clock.h"

// The system's clocks, each moved by a shift the test sets: the wall clock
// may step either way, as when the network or the user sets it; the
// monotonic one only moves on (time passing at once). Install it with
// setClockSource, and reset that before the clock goes and after every
// thread that reads it has ended.
class ShiftedClock : public ClockSource {
public:
    long monotonicMs() override { return read(CLOCK_MONOTONIC) + mMonotonicShift; }
    long wallMs() override { return read(CLOCK_REALTIME) + mWallShift; }

    std::atomic<long> mMonotonicShift{0};
    std::atomic<long> mWallShift{0};

private:
    static long read(clockid_t id) {
        struct timespec ts;
        clock_gettime(id, &ts);
        return ts.tv_sec * 1000L + ts.tv_nsec / 1000000;
    }
};
