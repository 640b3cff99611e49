#pragma once

#include <mutex>

#include "platform/fileutil.h"

// What the decoder client knows of the decoder it started last. Shared by the
// main thread (which starts and stops), the decoder worker (which runs the
// start) and the status watcher (which sees it go); every call takes the
// lock and values are copied out whole.
//
// Each start or stop opens a new generation. News about an older generation
// (a start that was superseded, a report about a decoder already replaced)
// changes nothing.
class DecoderRun {
public:
    enum State {
        NONE,      // nothing started, or stopped on purpose
        STARTING,  // asked for; the start has not finished yet
        RUNNING,   // started and found in the process table
        GONE,      // started but missing, killed or crashed
    };
    struct Snapshot {
        int generation;
        State state;
        // Set just before the start line runs, every earlier decoder gone:
        // what the status and information files were then. A report counts
        // for this run only once its file differs from this.
        bool launched;
        FileIdentity statusAtStart;
        FileIdentity infoAtStart;
        int pid;  // the decoder this run started, found after the start; 0 unknown
    };

    // Main thread: a new start (STARTING) or a stop on purpose (NONE).
    // Return the new generation.
    int begin();
    int end();
    // Worker: the start line of `generation` runs now; the decoder files
    // are as given.
    void launching(int generation, const FileIdentity& status, const FileIdentity& info);
    // Worker: after the start's wait the decoder is `pid`, or none (-1).
    // True when this made the decoder count as gone.
    bool found(int generation, int pid);
    // Worker or watcher: the decoder of `generation` is not there any more.
    // True when this changed the state (so the news is told once).
    bool lost(int generation);

    Snapshot snapshot() const;
    // Started or starting, and not known to be gone.
    bool expected() const;

private:
    mutable std::mutex mLock;
    Snapshot mRun = {};  // guarded by mLock
};
