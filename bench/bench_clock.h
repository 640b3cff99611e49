#pragma once

#include <time.h>

// Monotonic time in fractional milliseconds, for timing short runs.
inline double nowMs() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec * 1000.0 + ts.tv_nsec / 1e6;
}
