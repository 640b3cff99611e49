#pragma once

#include <atomic>
#include <string>

#include "kovani_player_handler.h"

// Client of the external decoder process "avworker". It starts and kills the
// process through the shell and sends one-word commands into its command
// file; what the decoder reports comes back through the status watcher,
// which calls playNotifyer and infoNotifyer on its own thread. The reported
// fields are atomics: each getter gives the latest value of that one field.
class KovaniPlayer {
public:
    explicit KovaniPlayer(KovaniPlayerHandler* handler);
    ~KovaniPlayer();

    int init();
    int setUrl(const char* url);
    const char* getUrl() const;
    int prepare();
    int play();
    int pause();
    int stop();
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

    // Called by the status watcher after each successful read.
    int playNotifyer(bool completed, int durationMS, int positionMS, int volume, int audioTrack);
    int infoNotifyer(int width, int height, int audioTrackNum);

private:
    // Sends `word` (already a safe shell word or quoted text) to the command
    // file when the decoder runs; false when it does not.
    bool sendCommand(const std::string& word, bool logIt);

    std::atomic<bool> mComplete;
    std::string mUrl;
    std::atomic<int> mWidth;
    std::atomic<int> mHeight;
    std::atomic<int> mAudioTrackNum;
    KovaniPlayerHandler* mHandler;  // not owned; may be null; fixed for life
    std::atomic<int> mDurationMS;
    std::atomic<int> mVolume;
    std::atomic<int> mAudioTrack;
    std::atomic<int> mPositionMS;
};
