#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "decoder_run.h"
#include "decoder_shell.h"
#include "decoder_worker.h"
#include "kovani_player_handler.h"
#include "status_watcher.h"

// Client of the external decoder process "avworker". Its calls return at
// once: starting the process, killing it and the one-word commands into its
// command file run in order on the client's decoder worker. What the decoder
// reports comes back through the status watcher, which calls playNotifyer
// and infoNotifyer on its own thread; the reported fields are atomics: each
// getter gives the latest value of that one field.
//
// The client owns both threads: the worker lives as long as the client, the
// watcher from the first prepare(); the destructor stops the decoder and
// joins both, so nothing outlives the client.
class KovaniPlayer : private StatusListener {
public:
    // `handler`: not owned, may be null, fixed for life. `shell`: not owned,
    // outlives the client.
    explicit KovaniPlayer(KovaniPlayerHandler* handler, DecoderShell* shell = systemDecoderShell());
    ~KovaniPlayer() override;
    KovaniPlayer(const KovaniPlayer&) = delete;
    KovaniPlayer& operator=(const KovaniPlayer&) = delete;

    int init();
    int setUrl(const char* url);
    const char* getUrl() const;
    int prepare();
    // 0 when a decoder is started or starting; -1 (logged) when none is.
    int play();
    int pause();
    int stop();
    // Stops a decoder that an earlier run left behind, if one runs. Looking
    // first spares each start two processes (the shell and killall), which
    // would compete with the folder's loader.
    void stopLeftover();
    void reset();
    int seekTo(int positionMS);
    int getDurationMS() const;
    int getPositionMS() const;
    void switchAudio(int track);
    void setVolume(int volume);
    int getVolume() const;
    void setLoop(bool loop);
    void scaleDown(int factor);
    void fastForward();
    void fastBackward();
    void setCropRect(int x, int y, int w, int h);
    void setDisplayRect(int x, int y, int w, int h);
    void getDisplayRect(int& x, int& y, int& w, int& h) const;
    float getDisplayFramerate() const;
    void dumpMediaInfo();
    int setPlaySpeed(int speed);
    int setRotation(int rotation);
    bool isComplete() const;
    int getVideoWidth() const;
    int getVideoHeight() const;
    int getAudioTrackNum() const;
    int getAudioTrack() const;

    // Called by the status watcher after each counted read; a report counts
    // for the decoder run current when it is called.
    int playNotifyer(bool completed, int durationMS, int positionMS, int volume, int audioTrack);
    int infoNotifyer(int width, int height, int audioTrackNum);

    // Main thread. A completion of the current decoder run not yet acted on:
    // true once per completion. It stays until taken, so one that arrives
    // while the owner cannot act (a popup is on top) is not lost; a start or
    // stop since makes it void, so no completion is acted on twice.
    bool takeCompletion();
    // A decoder was started and is neither stopped nor known to be gone.
    bool decoderExpected() const { return mRun.expected(); }
    // The decoder last started has exited without being stopped.
    bool decoderGone() const { return mRun.snapshot().state == DecoderRun::GONE; }
    // Waits up to `ms` for the decoder worker to finish what it was given.
    bool waitIdle(long ms) { return mWorker.waitIdle(ms); }

private:
    void onStatus(int generation, bool completed, int durationMS, int positionMS, int volume,
                  int audioTrack) override;
    void onInfo(int generation, int width, int height, int audioTrackNum) override;
    void onDecoderLost(int generation) override;
    // A report about decoder run `generation`; dropped unless that run is
    // still the current one.
    void report(int generation, bool completed, int durationMS, int positionMS, int volume, int audioTrack);
    // Queues a command for the decoder when one is expected; false when not.
    bool sendCommand(const std::string& echoArgs, bool isPlay, bool logAsRect);

    // A report is published whole under mReportLock before the owner hears
    // of it, and a start clears it under the same lock: a report of an
    // earlier run can neither land after the start nor be taken for the new
    // run's.
    std::mutex mReportLock;
    std::atomic<bool> mComplete;  // written under mReportLock
    std::string mUrl;  // main thread only
    std::atomic<int> mWidth;
    std::atomic<int> mHeight;
    std::atomic<int> mAudioTrackNum;
    KovaniPlayerHandler* mHandler;  // not owned; may be null; fixed for life
    std::atomic<int> mDurationMS;
    std::atomic<int> mVolume;
    std::atomic<int> mAudioTrack;
    std::atomic<int> mPositionMS;
    int mCompletedRun;  // guarded by mReportLock: the run whose completion awaits taking; -1 none

    DecoderShell* mShell;  // not owned
    DecoderRun mRun;
    // Declared last: destroyed first, so their threads end before anything
    // they use.
    StatusWatcher mWatcher;
    DecoderWorker mWorker;
};
