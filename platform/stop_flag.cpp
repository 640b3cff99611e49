#include "stop_flag.h"

#include <chrono>

void StopFlag::set() {
    {
        std::lock_guard<std::mutex> hold(mLock);
        mSet = true;
    }
    mCond.notify_all();
}

void StopFlag::reset() {
    std::lock_guard<std::mutex> hold(mLock);
    mSet = false;
}

bool StopFlag::isSet() const { return mSet.load(std::memory_order_acquire); }

bool StopFlag::sleepFor(long ms) const {
    std::unique_lock<std::mutex> hold(mLock);
    if (ms > 0) mCond.wait_for(hold, std::chrono::milliseconds(ms), [this] { return mSet.load(); });
    return mSet;
}
