#include "log_queue.h"

#include <pthread.h>
#include <signal.h>
#include <stdio.h>

#include <chrono>
#include <system_error>

int LogQueue::start(LogSink* sink, size_t capacity) {
    if (!sink || capacity == 0 || mThread.joinable()) return -1;
    {
        std::lock_guard<std::mutex> hold(mLock);
        mState = RUNNING;
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

int LogQueue::post(std::string* line) {
    bool wake = false;
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (mState != RUNNING && mState != DRAINING) return LOG_CLOSED;
        if (mQueue.size() >= mCapacity) {
            mDropped++;
            return LOG_DROPPED;
        }
        mQueue.push_back(Entry{std::string(), mDropped});
        mQueue.back().text.swap(*line);
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
            mWake.notify_one();
        }
    }
    mThread.join();
    mSink = nullptr;
}

void LogQueue::discardQueued() {
    for (const Entry& entry : mQueue) mDropped += entry.droppedBefore + 1;
    mQueue.clear();
}

void LogQueue::run() {
    pthread_setname_np(pthread_self(), "logwriter");
    std::string line;
    while (true) {
        unsigned dropped = 0;
        bool haveLine = false;
        {
            std::unique_lock<std::mutex> hold(mLock);
            while (mQueue.empty() && mDropped == 0 && mState == RUNNING) {
                mWriterWaiting = true;
                mWake.wait(hold);
                mWriterWaiting = false;
            }
            if (mState == DISCARDING) discardQueued();
            if (!mQueue.empty()) {
                dropped = mQueue.front().droppedBefore;
                line.swap(mQueue.front().text);
                mQueue.pop_front();
                haveLine = true;
            } else if (mDropped > 0) {
                dropped = mDropped;
                mDropped = 0;
            } else {
                // Everything queued is written: later lines are the callers'
                // own to write, and they come after all of these.
                mState = STOPPED;
                mStopped.notify_all();
                return;
            }
        }
        if (dropped > 0) {
            char notice[48];
            snprintf(notice, sizeof notice, "%u log lines dropped\n", dropped);
            mSink->write(notice);
        }
        if (haveLine) mSink->write(line.c_str());
    }
}
