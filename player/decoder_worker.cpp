#include "decoder_worker.h"

#include <chrono>

#include "decoder_run.h"
#include "decoder_shell.h"
#include "platform/logger.h"
#include "platform/sysutil.h"

namespace {

const char kKillLine[] = "killall avworker";
// The old decoder gets this long to go before anything else happens.
const long kAfterKillMs = 200;
// The new decoder gets this long to come up before it is looked for.
const long kAfterStartMs = 1000;
// Orderly shutdown: queued stops and a running job normally end in
// milliseconds; past this a hung shell line is killed.
const long kShutdownGraceMs = 2000;

}  // namespace

DecoderWorker::DecoderWorker(DecoderShell* shell, DecoderRun* run, std::function<void(int)> onLost)
    : mShell(shell), mRun(run), mOnLost(std::move(onLost)) {
    mThread = std::thread([this] { loop(); });
}

DecoderWorker::~DecoderWorker() {
    {
        std::lock_guard<std::mutex> hold(mLock);
        std::deque<DecoderJob> stops;
        for (DecoderJob& job : mJobs)
            if (job.kind == DecoderJob::STOP || job.kind == DecoderJob::STOP_LEFTOVER) stops.push_back(job);
        mJobs.swap(stops);
        mQuit = true;
        mSkipWait.set();
    }
    mWake.notify_all();
    if (!waitIdle(kShutdownGraceMs)) {
        tprintf("decoder worker: a shell line hangs, killing it\n");
        mAbort.set();
    }
    mThread.join();
}

void DecoderWorker::post(DecoderJob job) {
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (mQuit) return;
        if (job.kind == DecoderJob::START) {
            mJobs.clear();
            mSkipWait.set();
        }
        mJobs.push_back(std::move(job));
    }
    mWake.notify_one();
}

bool DecoderWorker::waitIdle(long ms) {
    std::unique_lock<std::mutex> hold(mLock);
    return mIdle.wait_for(hold, std::chrono::milliseconds(ms), [this] { return !mBusy && mJobs.empty(); });
}

void DecoderWorker::loop() {
    while (true) {
        DecoderJob job;
        {
            std::unique_lock<std::mutex> hold(mLock);
            mWake.wait(hold, [this] { return mQuit || !mJobs.empty(); });
            if (mJobs.empty()) break;
            job = std::move(mJobs.front());
            mJobs.pop_front();
            mBusy = true;
            // A start posted from here on cuts this job's wait, not an older one.
            if (!mQuit) mSkipWait.reset();
        }
        execute(job);
        {
            std::lock_guard<std::mutex> hold(mLock);
            mBusy = false;
        }
        mIdle.notify_all();
    }
    mIdle.notify_all();
}

void DecoderWorker::execute(const DecoderJob& job) {
    switch (job.kind) {
    case DecoderJob::START: {
        mShell->run(kKillLine, &mAbort);
        tprintf("killall avworker\n");
        mAbort.sleepFor(kAfterKillMs);
        mRun->starting(job.generation, systemms());
        mShell->run(job.text, &mAbort);
        tprintf("exec cmd: %s\n", job.text.c_str());
        if (mSkipWait.sleepFor(kAfterStartMs)) return;
        if (mRun->found(job.generation, mShell->findDecoder())) {
            tprintf("avworker did not start\n");
            mOnLost(job.generation);
        }
        return;
    }
    case DecoderJob::STOP_LEFTOVER:
        if (mShell->findDecoder() < 0) return;
        tprintf("avworker left by an earlier run\n");
        [[fallthrough]];
    case DecoderJob::STOP:
        tprintf("KovaniPlayer::stop\n");
        mShell->run(kKillLine, &mAbort);
        mAbort.sleepFor(kAfterKillMs);
        return;
    case DecoderJob::COMMAND:
        if (mShell->findDecoder() <= 0) {
            if (job.isPlay) tprintf("avworker not exist, can not play\n");
            if (mRun->lost(job.generation)) mOnLost(job.generation);
            return;
        }
        mShell->run(job.text, &mAbort);
        if (job.logAsRect) tprintf("setdisplayrect : %s\n", job.text.c_str());
        return;
    }
}
