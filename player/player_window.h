#pragma once

#include <stdint.h>

#include <atomic>
#include <string>

#include "kovani_player.h"
#include "player_file_browser.h"
#include "toolkit/kovani_surface.h"
#include "toolkit/window.h"

// Hands the decoder's reports to the main thread as SDL user events; runs on
// the status watcher's thread and touches nothing else.
class PlayerWindowHnadler : public KovaniPlayerHandler {
public:
    void onPlayComplete() override;
    void onSeekComplete() override;
};

// True while the loader thread reads the start folder; the list then belongs
// to that thread and the main thread must not touch it.
extern std::atomic<bool> sLoading;

// The player's one full-screen window: the video list on the left, the video
// area with its control panel on the right, or the video alone in fullscreen.
class PlayerWindow : public KovaniWindow {
public:
    // `startDir`: the folder to open, null for the browser's root.
    explicit PlayerWindow(const char* startDir);
    ~PlayerWindow() override;

    int eventHandling() override;
    int draw() override;
    void quit() override;
    void init() override;
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}
    const char* getTitle() override;

    bool isFullscreen() const { return mFullscreenMode; }
    bool isPlaying() const { return mPlaying; }
    bool sameFile(const char* url);
    void getFileName();
    bool playCurrentPos();
    bool playNextPos();
    bool playPreviousPos();

    void drawControlPanel();
    void drawProgressBar();
    void drawFullscreenCtrlPanel();
    void drawFullscreenProgressBar();

private:
    int handleCode(int code);
    int onPlayFile();
    void playStep();
    void markStep(bool markCursor);
    void stepTrack(bool forward);
    void openQuitDialog();
    void showFullscreenPanel();
    bool loadEntry(int index);
    int videoIndexFrom(int start, int step);
    void readPlayerTimes();
    void drawTimes(int y);
    void drawProgress(KovaniSurface* background, int x, int y, int track);
    void releaseImages();

    PlayerFileBrowserMenu mMenu;
    // Skin images, owned; any may be null (then not drawn).
    KovaniSurface* mPlayerBG;
    KovaniSurface* mCtlPanelBG;
    KovaniSurface* mFullscreen;
    KovaniSurface* mPrevious;
    KovaniSurface* mNext;
    KovaniSurface* mPlay;
    KovaniSurface* mPause;
    KovaniSurface* mConfig;
    KovaniSurface* mTipL;
    KovaniSurface* mTipR;
    KovaniSurface* mTipMenu;
    KovaniSurface* mTipStart;
    KovaniSurface* mTipSelect;
    KovaniSurface* mProgressBG;
    KovaniSurface* mProgressBGFull;
    KovaniSurface* mProgressLeft;
    KovaniSurface* mProgressMiddle;
    KovaniSurface* mProgressRight;
    KovaniSurface* mIconPlay;
    KovaniSurface* mProgressTitleFull;
    KovaniSurface* mCtlPanelBGFull;
    bool mFullscreenMode;
    bool mPlaying;
    int mDurationMS;
    int mPositionMS;
    PlayerWindowHnadler mHandler;
    KovaniPlayer mPlayer;
    char mDispBuf[32];
    bool mPlayed;
    int mPlayIndex;
    uint64_t mFullscreenShowCtrlMS;
    std::string mFileName;
    uint64_t mLastPlayedTime;
    std::string mCurrentName;
    int mCurrentNameIdx;
    SDL_Thread* mLoader;  // owned: the start folder's loader, joined on destruction
};
