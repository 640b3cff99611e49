#include "decoder_run.h"

int DecoderRun::begin() {
    std::lock_guard<std::mutex> hold(mLock);
    mRun = Snapshot{mRun.generation + 1, STARTING, false, {}, {}, 0};
    return mRun.generation;
}

int DecoderRun::end() {
    std::lock_guard<std::mutex> hold(mLock);
    mRun = Snapshot{mRun.generation + 1, NONE, false, {}, {}, 0};
    return mRun.generation;
}

void DecoderRun::launching(int generation, const FileIdentity& status, const FileIdentity& info) {
    std::lock_guard<std::mutex> hold(mLock);
    if (generation != mRun.generation) return;
    mRun.launched = true;
    mRun.statusAtStart = status;
    mRun.infoAtStart = info;
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
