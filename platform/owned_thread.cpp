#include "owned_thread.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <vector>

#include "logger.h"

// What a thread shares with its owner, kept alive by both, so that an owner
// that gave up may go while the thread still runs.
struct OwnedThreadState {
    StopFlag stop;
    std::mutex lock;
    std::condition_variable ended;
    bool done = false;  // guarded by lock: the body returned
};

namespace {

typedef std::chrono::steady_clock::time_point Deadline;

Deadline after(long ms) { return std::chrono::steady_clock::now() + std::chrono::milliseconds(ms > 0 ? ms : 0); }

bool waitEnded(OwnedThreadState& state, Deadline until) {
    std::unique_lock<std::mutex> hold(state.lock);
    return state.ended.wait_until(hold, until, [&state] { return state.done; });
}

struct LateThread {
    const char* name;
    std::shared_ptr<OwnedThreadState> state;
    std::thread thread;
};

std::mutex sLateLock;
// Guarded by sLateLock. Made on first use and never destroyed: at exit it
// may still hold a running thread, whose std::thread must not be destroyed.
std::vector<LateThread>* sLate = nullptr;

}  // namespace

OwnedThread::~OwnedThread() { stop(kOwnedThreadStopMs); }

bool OwnedThread::start(const char* name, std::function<void(const StopFlag&)> body) {
    if (mThread.joinable()) {
        tprintf("%s: already running\n", name);
        return false;
    }
    mName = name;
    mState = std::make_shared<OwnedThreadState>();
    std::shared_ptr<OwnedThreadState> state = mState;
    try {
        mThread = std::thread([state, name, body] {
            pthread_setname_np(pthread_self(), name);
            body(state->stop);
            {
                std::lock_guard<std::mutex> hold(state->lock);
                state->done = true;
            }
            state->ended.notify_all();
        });
    } catch (const std::system_error& e) {
        tprintf("%s: no thread: %s\n", name, e.what());
        mState.reset();
        return false;
    }
    return true;
}

bool OwnedThread::stop(long ms) {
    if (!mThread.joinable()) return true;
    mState->stop.set();
    if (waitEnded(*mState, after(ms))) {
        mThread.join();
        mState.reset();
        return true;
    }
    tprintf("%s: still busy %ld ms after its stop, joined at exit\n", mName, ms);
    std::lock_guard<std::mutex> hold(sLateLock);
    if (!sLate) sLate = new std::vector<LateThread>;
    sLate->push_back(LateThread{mName, std::move(mState), std::move(mThread)});
    return false;
}

int joinLateThreads(long ms) {
    std::lock_guard<std::mutex> hold(sLateLock);
    if (!sLate) return 0;
    const Deadline until = after(ms);
    for (auto it = sLate->begin(); it != sLate->end();) {
        if (!waitEnded(*it->state, until)) {
            tprintf("%s: still busy at exit\n", it->name);
            ++it;
            continue;
        }
        it->thread.join();
        tprintf("%s: joined late\n", it->name);
        it = sLate->erase(it);
    }
    return (int)sLate->size();
}
