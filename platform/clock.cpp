#include "clock.h"

#include <time.h>

#include <atomic>

namespace {

long readClockMs(clockid_t id) {
    struct timespec ts;
    clock_gettime(id, &ts);
    return ts.tv_sec * 1000L + ts.tv_nsec / 1000000;
}

std::atomic<ClockSource*> sSource{nullptr};  // not owned; null: the system's clocks

}  // namespace

long monotonicMs() {
    ClockSource* source = sSource.load(std::memory_order_acquire);
    return source ? source->monotonicMs() : readClockMs(CLOCK_MONOTONIC);
}

long wallMs() {
    ClockSource* source = sSource.load(std::memory_order_acquire);
    return source ? source->wallMs() : readClockMs(CLOCK_REALTIME);
}

void setClockSource(ClockSource* source) { sSource.store(source, std::memory_order_release); }
