#include "decoder_worker.h"

#include <algorithm>
#include <chrono>

#include "decoder_run.h"
#include "decoder_shell.h"
#include "platform/clock.h"
#include "platform/device_paths.h"
#include "platform/fileutil.h"
#include "platform/logger.h"

namespace {

const char kTermLine[] = "killall avworker";
const char kKillLine[] = "killall -KILL avworker";
// Polls start short (a decoder usually goes within milliseconds of its
// signal) and grow to this.
const long kLongestPollMs = 50;

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
    mThread.join();
}

void DecoderWorker::post(DecoderJob job) {
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (mQuit) return;
        if (job.kind == DecoderJob::START) mJobs.clear();
        // A start or stop makes the start that runs pointless.
        if (job.kind != DecoderJob::COMMAND) mSkipWait.set();
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
            // A start posted from here on cuts this job short, not an older one.
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

bool DecoderWorker::waitUntil(long deadlineMs, const StopFlag& cut, const std::function<bool()>& done) {
    long pollMs = 5;
    while (true) {
        // The clock is read first: `done` then tells how things stood at
        // that time or later, so a step that ended in time always counts.
        const long left = deadlineMs - monotonicMs();
        if (done()) return true;
        if (left <= 0) return false;
        if (cut.sleepFor(std::min(pollMs, left))) return false;
        pollMs = std::min(pollMs * 2, kLongestPollMs);
    }
}

bool DecoderWorker::endDecoders() {
    const auto gone = [this] { return mShell->decoders().empty(); };
    long deadline = monotonicMs() + kDecoderTermWaitMs;
    mShell->run(kTermLine, kDecoderLineLimitMs);
    if (waitUntil(deadline, mNever, gone)) return true;
    tprintf("avworker still runs %ld ms after SIGTERM, killing it\n", kDecoderTermWaitMs);
    deadline = monotonicMs() + kDecoderKillWaitMs;
    mShell->run(kKillLine, kDecoderLineLimitMs);
    if (waitUntil(deadline, mNever, gone)) return true;
    tprintf("avworker still runs after SIGKILL\n");
    return false;
}

void DecoderWorker::start(const DecoderJob& job) {
    endDecoders();
    tprintf("killall avworker\n");
    // A newer start or a stop came meanwhile: this decoder would only be
    // ended again.
    if (mSkipWait.isSet()) return;
    // Only a decoder that even SIGKILL did not end is left: never this run's.
    const std::vector<int> before = mShell->decoders();
    mRun->launching(job.generation, fileIdentity(devicePath(DEVICE_PATH_PLAYER_STATUS)),
                    fileIdentity(devicePath(DEVICE_PATH_PLAYER_INFO)));
    mShell->run(job.text, kDecoderLineLimitMs);
    tprintf("exec cmd: %s\n", job.text.c_str());
    // From the start line's end: on a busy device the shell alone may take
    // a good part of a second, and commands sent before the decoder watches
    // its command file are lost.
    if (waitUntil(monotonicMs() + kDecoderStartWaitMs, mSkipWait, [] { return false; }) || mSkipWait.isSet())
        return;
    int pid = -1;
    for (int candidate : mShell->decoders()) {
        if (std::find(before.begin(), before.end(), candidate) == before.end()) {
            pid = candidate;
            break;
        }
    }
    if (mRun->found(job.generation, pid)) {
        tprintf("avworker did not start\n");
        mOnLost(job.generation);
    }
}

void DecoderWorker::execute(const DecoderJob& job) {
    switch (job.kind) {
    case DecoderJob::START:
        start(job);
        return;
    case DecoderJob::STOP_LEFTOVER:
        if (mShell->decoders().empty()) return;
        tprintf("avworker left by an earlier run\n");
        [[fallthrough]];
    case DecoderJob::STOP:
        tprintf("KovaniPlayer::stop\n");
        endDecoders();
        return;
    case DecoderJob::COMMAND: {
        const DecoderRun::Snapshot run = mRun->snapshot();
        if (run.generation != job.generation) return;  // that run is over
        if (!mShell->alive(run.pid)) {
            if (job.isPlay) tprintf("avworker not exist, can not play\n");
            if (mRun->lost(job.generation)) mOnLost(job.generation);
            return;
        }
        mShell->run(job.text, kDecoderLineLimitMs);
        if (job.logAsRect) tprintf("setdisplayrect : %s\n", job.text.c_str());
        return;
    }
    }
}
