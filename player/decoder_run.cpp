#include "decoder_run.h"

int DecoderRun::begin() {
    std::lock_guard<std::mutex> hold(mLock);
    mRun = Snapshot{mRun.generation + 1, STARTING, 0, 0};
    return mRun.generation;
}

int DecoderRun::end() {
    std::lock_guard<std::mutex> hold(mLock);
    mRun = Snapshot{mRun.generation + 1, NONE, 0, 0};
    return mRun.generation;
}

void DecoderRun::starting(int generation, long nowMs) {
    std::lock_guard<std::mutex> hold(mLock);
    if (generation == mRun.generation) mRun.startMs = nowMs;
}

bool DecoderRun::found(int generation, int pid) {
    std::lock_guard<std::mutex> hold(mLock);
    if (generation != mRun.generation || mRun.state != STARTING) return false;
    mRun.pid = pid > 0 ? pid : 0;
    mRun.state = pid > 0 ? RUNNING : GONE;
    return mRun.state == GONE;
}

bool DecoderRun::lost(int generation) {
    std::lock_guard<std::mutex> hold(mLock);
    if (generation != mRun.generation) return false;
    if (mRun.state != STARTING && mRun.state != RUNNING) return false;
    mRun.state = GONE;
    return true;
}

DecoderRun::Snapshot DecoderRun::snapshot() const {
    std::lock_guard<std::mutex> hold(mLock);
    return mRun;
}

bool DecoderRun::expected() const {
    std::lock_guard<std::mutex> hold(mLock);
    return mRun.state == STARTING || mRun.state == RUNNING;
}
