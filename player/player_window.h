#pragma once

#include <stdint.h>

#include <memory>
#include <string>

#include "kovani_player.h"
#include "player_file_browser.h"
#include "platform/owned_thread.h"
#include "playlist.h"
#include "toolkit/keycodes.h"
#include "toolkit/kovani_surface.h"
#include "toolkit/static_picture.h"
#include "toolkit/window.h"

// The player's own events: the decoder exited without being stopped; the
// window's first frame is on screen (the window's word to itself, after
// EVENT_FOLDER_READ of player_file_browser.h).
enum { EVENT_DECODER_EXIT = KEY_MAX_KEY + 1, EVENT_FIRST_FRAME_SHOWN = KEY_MAX_KEY + 3 };

// Hands the decoder's news to the main thread as SDL user events; runs on
// the decoder client's threads and touches nothing else.
class PlayerWindowHnadler : public KovaniPlayerHandler {
public:
    void onPlayComplete() override;
    void onSeekComplete() override;
    void onDecoderExit() override;
    void onReport() override;
};

// The player's one full-screen window: the video list on the left, the video
// area with its control panel on the right, or the video alone in fullscreen.
class PlayerWindow : public KovaniWindow {
public:
    // `startDir`: the folder to open, null for the browser's root. `shell`:
    // how the decoder is reached (not owned; outlives the window).
    explicit PlayerWindow(const char* startDir, DecoderShell* shell = systemDecoderShell());
    ~PlayerWindow() override;

    int eventHandling() override;
    int draw() override;
    void quit() override;
    void init() override;
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    // Acts on decoder news that came while another window was on top.
    void refresh() override;
    const char* getTitle() override;
    bool needsRedraw() override;
    long nextRedrawMs() override;

    bool isFullscreen() const { return mFullscreenMode; }
    bool isPlaying() const { return mPlaying; }
    bool sameFile(const char* url);
    void getFileName();
    bool playCurrentPos();
    bool playNextPos();
    bool playPreviousPos();

    void drawControlPanel();
    // Off: every frame draws everything anew (tests compare the two).
    void setComposeStatic(bool on);
    void drawProgressBar();
    void drawFullscreenCtrlPanel();
    void drawFullscreenProgressBar();

private:
    int handleCode(int code);
    int onPlayFile();
    void playStep();
    void markStep(bool markCursor);
    void stepTrack(bool forward);
    bool loadPath(const std::string& path, int listIndex, const std::string& folder);
    bool playNeighbour(int step);
    void takeDecoderNews();
    void showFullscreenPanel();
    void readPlayerTimes();
    void drawTimes(int y);
    void drawProgress(KovaniSurface* background, int x, int y, int track);
    void releaseImages();
    // The fullscreen view's images, loaded when it is first entered.
    void loadFullscreenImages();
    void drawPanelImages();
    void drawPanelTimes();
    void clearTransparent();
    void drawStaticParts();
    bool copyStaticParts();
    // What a frame shows that can change without an event reaching the
    // window, packed to compare whole.
    uint64_t viewKey();
    bool panelShown();
    // True while the loader reads the start folder; the first call after it
    // is read shows it in the list.
    bool stillLoading();

    PlayerFileBrowserMenu mMenu;
    // Skin images, owned; any may be null (then not drawn). The three of the
    // fullscreen view stay null until it is first entered.
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
    bool mFullscreenImagesLoaded;
    bool mFullscreenMode;
    bool mPlaying;
    int mDurationMS;
    int mPositionMS;
    PlayerWindowHnadler mHandler;
    KovaniPlayer mPlayer;
    char mDispBuf[32];
    bool mPlayed;
    int mPlayIndex;
    uint64_t mFullscreenShowCtrlMS;  // monotonic ms of the last panel key
    std::string mFileName;
    uint64_t mLastPlayedTime;  // monotonic ms of the last choice acted on
    std::string mCurrentName;
    std::string mCurrentNamePath;  // the entry mCurrentName was taken from
    uint64_t mDrawnKey;   // viewKey() of the last frame drawn
    StaticPicture mStaticPicture;
    bool mComposeStatic;
    bool mFirstFrameNoted;  // EVENT_FIRST_FRAME_SHOWN is posted
    bool mListShown;        // a frame has shown the list: later ones use mStaticPicture
    Playlist mPlaylist;   // the folder the playing file came from
    std::shared_ptr<FolderLoad> mLoad;  // shared with the loader; null once shown
    OwnedThread mLoader;  // reads the start folder into mLoad; stopped on destruction
};
