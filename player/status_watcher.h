#pragma once

#include <thread>

#include "platform/fileutil.h"

#include "platform/stop_flag.h"

class DecoderRun;
class DecoderShell;

// What the status watcher reports, on its own thread. Receivers only store
// values or hand the news to the main thread.
class StatusListener {
public:
    virtual ~StatusListener() {}
    // After each counted read of the status file; `generation` is the decoder
    // run the report belongs to.
    virtual void onStatus(int generation, bool completed, int durationMS, int positionMS, int volume,
                          int audioTrack) = 0;
    virtual void onInfo(int generation, int width, int height, int audioTrackNum) = 0;
    // The decoder of `generation` has exited (killed, crashed).
    virtual void onDecoderLost(int generation) = 0;
};

// Follows the decoder's status and information files twice a second and
// watches that the decoder it started still runs. Owned by the decoder
// client: started by its first start, stopped and joined before the client
// goes.
//
// A report written before the current decoder was started never counts (a
// "completed" left by the previous decoder would skip a video): a file counts
// once it differs from what it was when the start line ran, told by its
// identity, not by any clock. Every number is clamped to a sane range before
// anyone sees it.
class StatusWatcher {
public:
    // None is owned; all outlive the watcher.
    StatusWatcher(DecoderRun* run, DecoderShell* shell, StatusListener* listener);
    ~StatusWatcher();
    StatusWatcher(const StatusWatcher&) = delete;
    StatusWatcher& operator=(const StatusWatcher&) = delete;

    // Starts the thread unless it runs; true when this call started it.
    // Main thread, like stop().
    bool start();
    // Wakes the thread and joins it; returns within one read of the files.
    void stop();
    bool running() const { return mThread.joinable(); }

    // One cycle: the liveness check and both files. The thread calls it;
    // tests may call it while no thread runs.
    void cycle();

private:
    void loop();
    // Reads `pathId` into mBuf when it has changed since `atStart` at some
    // read of this run (*fresh remembers that); false when it is missing,
    // not a regular file, or still the earlier run's.
    bool readFresh(int pathId, const FileIdentity& atStart, bool* fresh);

    DecoderRun* mRun;             // not owned
    DecoderShell* mShell;         // not owned
    StatusListener* mListener;    // not owned

    // The watcher thread's own (or a test's while no thread runs). Kept
    // across cycles of one decoder run: a key missing from one read keeps its
    // last value. Reset when a new run begins.
    int mGeneration = -1;
    bool mCompleted = false;
    int mDuration = 0, mPosition = 0, mVolume = 0, mAudioTrack = 0;
    int mWidth = 0, mHeight = 0, mStreams = 0;
    bool mStatusFresh = false, mInfoFresh = false;
    // Static size so that a cycle allocates nothing but the parsed documents.
    char mBuf[1024];

    StopFlag mStop;
    std::thread mThread;
};
