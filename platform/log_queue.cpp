#include "log_queue.h"

#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <system_error>

#include "clock.h"

namespace {
const int kWriterNice = 10;
// While lines keep coming the writer looks again after kLookMs, for at most
// kBurstMs: the longest a line of a burst waits to be written.
const int kLookMs = 2;
const int kBurstMs = 100;
// A burst is written in batches of about this size: the two buffers the
// callers and the writer swap stay this small, so they stay in memory and
// warm, and a line is never copied to a grown buffer.
const size_t kBatchBytes = 64 * 1024;
// Room each buffer has from the start: a batch and what comes in while
// the writer is not looking.
const size_t kReservedBytes = 2 * kBatchBytes;
// A batch buffer larger than this is given back after its burst.
const size_t kKeptBytes = 256 * 1024;
// How often a stop looks at the clock while it waits for the writer.
const long kStopLookMs = 10;
}  // namespace

int LogQueue::start(LogSink* sink, size_t capacity) {
    if (!sink || capacity == 0) return -1;
    // A writer given up at an earlier stop is joined once it has come back.
    if (mThread.joinable() && !joinAbandoned()) return -1;
    {
        std::lock_guard<std::mutex> hold(mLock);
        mState = RUNNING;
        mDiscarding.store(false, std::memory_order_relaxed);
        mCapacity = capacity;
        mDropped = 0;
        mQueue.reserve(kReservedBytes);
    }
    mSink = sink;
    // The writer takes no signals: a process that blocks its signals to read
    // them from a descriptor (the decoder) does so after this thread starts,
    // and a signal delivered here would take the default action instead.
    sigset_t all, old;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &old);
    int result = 0;
    try {
        mThread = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        result = -1;
    }
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    if (result != 0) {
        mSink = nullptr;
        std::lock_guard<std::mutex> hold(mLock);
        mState = STOPPED;
    }
    return result;
}

int LogQueue::post(const char* line, size_t length) {
    bool wake = false;
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (mState != RUNNING && mState != DRAINING) return LOG_CLOSED;
        if (mLines >= mCapacity) {
            mDropped++;
            return LOG_DROPPED;
        }
        const LineHead head = {uint32_t(length), mDropped};
        const char* headBytes = reinterpret_cast<const char*>(&head);
        mQueue.insert(mQueue.end(), headBytes, headBytes + sizeof head);
        mQueue.insert(mQueue.end(), line, line + length);
        mQueue.push_back('\0');
        mLines++;
        mDropped = 0;
        // Only a sleeping writer needs the wake-up; a busy one finds the line.
        wake = mWriterWaiting;
        mWriterWaiting = false;
    }
    if (wake) mWake.notify_one();
    return LOG_QUEUED;
}

bool LogQueue::stop(long drainMs) {
    if (!mThread.joinable()) return true;
    if (mAbandoned) return joinAbandoned();
    {
        std::unique_lock<std::mutex> hold(mLock);
        mState = DRAINING;
        mWake.notify_one();
        // Measured on the monotonic clock, looked at in short steps, so that
        // a test can move it.
        const long deadline = monotonicMs() + drainMs;
        while (mState != STOPPED && monotonicMs() < deadline)
            mStopped.wait_for(hold, std::chrono::milliseconds(kStopLookMs));
        if (mState != STOPPED) {
            // The sink hangs (a system-log daemon that reads nothing). The
            // writer drops what is queued and ends when its write comes
            // back, if ever; nobody waits for that.
            mState = DISCARDING;
            mDiscarding.store(true, std::memory_order_relaxed);
            mWake.notify_one();
            mAbandoned = true;
            return false;
        }
    }
    mThread.join();
    mSink = nullptr;
    return true;
}

bool LogQueue::joinAbandoned() {
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (mState != STOPPED) return false;
    }
    mThread.join();
    mSink = nullptr;
    mAbandoned = false;
    return true;
}

void LogQueue::writeDropped(unsigned dropped) {
    if (dropped == 0) return;
    char notice[48];
    snprintf(notice, sizeof notice, "%u log lines dropped\n", dropped);
    mSink->write(notice);
}

void LogQueue::run() {
    pthread_setname_np(pthread_self(), "logwriter");
    // Writing the log is never the user's wait: on a busy machine the
    // threads that load folders and draw get the processor first.
    if (setpriority(PRIO_PROCESS, (id_t)syscall(SYS_gettid), kWriterNice) != 0) {
        // Stays at the caller's priority: only slower under load.
    }
    std::vector<char> batch;
    batch.reserve(kReservedBytes);
    while (true) {
        unsigned trailing = 0;
        {
            std::unique_lock<std::mutex> hold(mLock);
            while (mLines == 0 && mDropped == 0 && mState == RUNNING) {
                mWriterWaiting = true;
                mWake.wait(hold);
                mWriterWaiting = false;
            }
            // A burst (a folder's lines) is let finish before it is written:
            // meanwhile the processor is the burst's caller's, and its lines
            // cost it no wake-up each. The writer looks every few ms whether
            // lines still come, up to a bound or a batch's worth.
            const auto settled = std::chrono::steady_clock::now() + std::chrono::milliseconds(kBurstMs);
            while (mState == RUNNING && mLines > 0 && mLines < mCapacity / 2 && mQueue.size() < kBatchBytes &&
                   std::chrono::steady_clock::now() < settled) {
                const size_t before = mLines;
                mWake.wait_for(hold, std::chrono::milliseconds(kLookMs));
                if (mLines == before) break;
            }
            if (mState == DISCARDING) {
                // Given up on: the sink is not written again.
                mQueue.clear();
                mLines = 0;
                mDropped = 0;
                mState = STOPPED;
                mStopped.notify_all();
                return;
            }
            if (mLines > 0) {
                // The callers go on in the buffer the last batch left.
                batch.swap(mQueue);
                mLines = 0;
            } else if (mDropped > 0) {
                trailing = mDropped;
                mDropped = 0;
            } else {
                // Everything queued is written: later lines are the callers'
                // own to write, and they come after all of these.
                mState = STOPPED;
                mStopped.notify_all();
                return;
            }
        }
        for (size_t offset = 0; offset < batch.size();) {
            if (mDiscarding.load(std::memory_order_relaxed)) break;  // the rest is given up
            LineHead head;
            memcpy(&head, &batch[offset], sizeof head);
            writeDropped(head.droppedBefore);
            mSink->write(&batch[offset + sizeof head]);
            offset += sizeof head + head.length + 1;
        }
        if (!mDiscarding.load(std::memory_order_relaxed)) mSink->flush();
        // A burst's buffer is not kept for good.
        if (batch.capacity() > kKeptBytes) {
            std::vector<char>().swap(batch);
            batch.reserve(kReservedBytes);
        }
        batch.clear();
        if (!mDiscarding.load(std::memory_order_relaxed) && trailing > 0) {
            writeDropped(trailing);
            mSink->flush();
        }
    }
}
