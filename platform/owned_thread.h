#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "stop_flag.h"

struct OwnedThreadState;

// A background thread and its stop request, held by the one object that
// owns the thread. stop() asks the body to end and waits a bounded time for
// it. A body that does not end in time (held up in a system call that no
// flag can interrupt, such as a read from a dead network mount) is never
// abandoned: it moves to the process's late threads, which main joins as its
// very last step (joinLateThreads). Such a body must therefore touch only
// what it co-owns (a shared_ptr it captured), never its owner.
class OwnedThread {
public:
    OwnedThread() = default;
    // stop(kOwnedThreadStopMs).
    ~OwnedThread();
    OwnedThread(const OwnedThread&) = delete;
    OwnedThread& operator=(const OwnedThread&) = delete;

    // Runs `body` on a new thread named `name` (a literal of at most 15
    // bytes). The body gets the stop flag and returns when it sees it set.
    // False when a thread of this owner runs or none could be made (logged).
    bool start(const char* name, std::function<void(const StopFlag&)> body);
    // Sets the stop flag and waits up to `ms` for the body to return. True
    // when it did (the thread is joined) or none ran; false when it is still
    // busy, logged and handed to the late threads.
    bool stop(long ms);

private:
    const char* mName = "";
    std::shared_ptr<OwnedThreadState> mState;  // shared with the running thread
    std::thread mThread;
};

// How long an owner's destructor waits for its thread.
const long kOwnedThreadStopMs = 1000;

// Waits up to `ms` in all for the threads whose owners gave up on them and
// joins those that end. Returns how many are still running (logged); the
// caller then ends the process without running destructors (_exit), the
// threads still inside their system calls. Main thread, at the very end.
int joinLateThreads(long ms);
