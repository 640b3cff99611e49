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

namespace {
const int kWriterNice = 10;
// While lines keep coming the writer looks again after kLookMs, for at most
// kBurstMs: the longest a line of a burst waits to be written.
const int kLookMs = 2;
const int kBurstMs = 100;
// A batch buffer larger than this is given back after its burst.
const size_t kKeptBytes = 256 * 1024;
}  // namespace

int LogQueue::start(LogSink* sink, size_t capacity) {
    if (!sink || capacity == 0 || mThread.joinable()) return -1;
    {
        std::lock_guard<std::mutex> hold(mLock);
        mState = RUNNING;
        mDiscarding.store(false, std::memory_order_relaxed);
        mCapacity = capacity;
        mDropped = 0;
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
        const size_t at = mQueue.size();
        mQueue.resize(at + sizeof head + length + 1);
        memcpy(&mQueue[at], &head, sizeof head);
        memcpy(&mQueue[at + sizeof head], line, length);
        mQueue.back() = '\0';
        mLines++;
        mDropped = 0;
        // Only a sleeping writer needs the wake-up; a busy one finds the line.
        wake = mWriterWaiting;
        mWriterWaiting = false;
    }
    if (wake) mWake.notify_one();
    return LOG_QUEUED;
}

void LogQueue::stop(long drainMs) {
    if (!mThread.joinable()) return;
    {
        std::unique_lock<std::mutex> hold(mLock);
        mState = DRAINING;
        mWake.notify_one();
        const auto written = [this] { return mState == STOPPED; };
        if (!mStopped.wait_for(hold, std::chrono::milliseconds(drainMs), written)) {
            mState = DISCARDING;
            mDiscarding.store(true, std::memory_order_relaxed);
            mWake.notify_one();
        }
    }
    mThread.join();
    mSink = nullptr;
}

unsigned LogQueue::countLines(const std::vector<char>& bytes, size_t offset) {
    unsigned lines = 0;
    while (offset < bytes.size()) {
        LineHead head;
        memcpy(&head, &bytes[offset], sizeof head);
        lines += head.droppedBefore + 1;
        offset += sizeof head + head.length + 1;
    }
    return lines;
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
            // lines still come, up to a bound or half the queue.
            const auto settled = std::chrono::steady_clock::now() + std::chrono::milliseconds(kBurstMs);
            while (mState == RUNNING && mLines > 0 && mLines < mCapacity / 2 &&
                   std::chrono::steady_clock::now() < settled) {
                const size_t before = mLines;
                mWake.wait_for(hold, std::chrono::milliseconds(kLookMs));
                if (mLines == before) break;
            }
            if (mState == DISCARDING) {
                mDropped += countLines(mQueue, 0);
                mQueue.clear();
                mLines = 0;
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
            if (mDiscarding.load(std::memory_order_relaxed)) {
                // The sink hangs: what is left of the batch is counted.
                const unsigned lost = countLines(batch, offset);
                std::lock_guard<std::mutex> hold(mLock);
                mDropped += lost;
                break;
            }
            LineHead head;
            memcpy(&head, &batch[offset], sizeof head);
            writeDropped(head.droppedBefore);
            mSink->write(&batch[offset + sizeof head]);
            offset += sizeof head + head.length + 1;
        }
        // A burst's buffer is not kept for good.
        if (batch.capacity() > kKeptBytes) std::vector<char>().swap(batch);
        batch.clear();
        writeDropped(trailing);
    }
}
