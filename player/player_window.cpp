#include "player_window.h"

#include <string.h>

#include <algorithm>
#include <functional>

#include "app_options.h"
#include "display_rect.h"
#include "player_lang.h"
#include "player_setting_window.h"
#include "quit_action.h"
#include "time_text.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "platform/logger.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"
#include "platform/clock.h"
#include "toolkit/text.h"
#include "toolkit/window_bars.h"

namespace {

const uint64_t kNever = ~(uint64_t)0;
const long kPanelShowMs = 1500;
const long kRepeatedChoiceMs = 200;
// How long the window's end waits for a loader that is not done.
const long kLoaderStopMs = 1000;

KovaniSurface* loadSkin(const char* name) { return LoadKovaniSurface(nullptr, "./", name); }

void drawAt(KovaniSurface* image, int x, int y) {
    if (!image) return;
    SDL_Rect dst = {x, y, 0, 0};
    image->render(nullptr, &dst, true, nullptr);
}

std::string baseName(const std::string& path) {
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

void pushUserEvent(int code) {
    SDL_Event event;
    memset(&event, 0, sizeof event);
    event.type = SDL_USEREVENT;
    event.user.code = code;
    if (SDL_PushEvent(&event) < 0) tprintf("Failed to push play SDL event\n");
}

// Keys that would read or move the list; dropped while the loader owns it.
bool isKey(int code) { return code > KEY_NONE && code < EVENT_BATTERY; }

}  // namespace

void PlayerWindowHnadler::onPlayComplete() { pushUserEvent(EVENT_PLAY_COMPLETE); }

void PlayerWindowHnadler::onSeekComplete() { pushUserEvent(EVENT_SEEK_COMPLETE); }

void PlayerWindowHnadler::onDecoderExit() { pushUserEvent(EVENT_DECODER_EXIT); }

// Only wakes the main loop, which then asks the window whether the times
// shown changed.
void PlayerWindowHnadler::onReport() { pushUserEvent(EVENT_REFRESH); }

PlayerWindow::PlayerWindow(const char* startDir, DecoderShell* shell)
    : KovaniWindow(STRING_MEDIAPLAYER, -1),
      mMenu(gUserPath.c_str(), startDir, &mPlaying),
      mPlayerBG(loadSkin("skin/bg-video-window.png")),
      mCtlPanelBG(loadSkin("skin/bg-control-panel.png")),
      mFullscreen(loadSkin("skin/btn-full-screen.png")),
      mPrevious(loadSkin("skin/btn-previous.png")),
      mNext(loadSkin("skin/btn-next.png")),
      mPlay(loadSkin("skin/btn-play.png")),
      mPause(loadSkin("skin/btn-pause.png")),
      mConfig(loadSkin("skin/btn-config.png")),
      mTipL(loadSkin("skin/tips-L.png")),
      mTipR(loadSkin("skin/tips-R.png")),
      mTipMenu(loadSkin("skin/tips-MENU.png")),
      mTipStart(loadSkin("skin/tips-START.png")),
      mTipSelect(loadSkin("skin/tips-SELECT.png")),
      mProgressBG(loadSkin("skin/progress-bg.png")),
      mProgressBGFull(nullptr),
      mProgressLeft(loadSkin("skin/progress-slider-left.png")),
      mProgressMiddle(loadSkin("skin/progress-slider-middle.png")),
      mProgressRight(loadSkin("skin/progress-slider-right.png")),
      mIconPlay(loadSkin("skin/icon-player.png")),
      mProgressTitleFull(nullptr),
      mCtlPanelBGFull(nullptr),
      mFullscreenImagesLoaded(false),
      mFullscreenMode(false),
      mPlaying(false),
      mDurationMS(0),
      mPositionMS(-1),
      mPlayer(&mHandler, shell),
      mPlayed(false),
      mPlayIndex(-1),
      mFullscreenShowCtrlMS(kNever),
      mLastPlayedTime(0),
      mDrawnKey(0),
      mStaticPicture(1280, 720),
      mComposeStatic(true),
      mFirstFrameNoted(false),
      mListShown(false) {
    mDispBuf[0] = '\0';
    SDL_Rect listRect = {0, 80, 620, 580};
    mMenu.setRect(listRect);
    mMenu.setDrawNum(false);
}

PlayerWindow::~PlayerWindow() {
    // The loader writes only into the FolderLoad it shares, never into the
    // list, so the window need not outlive it. The stop ends the read between
    // two entries; a read held up inside a system call (a dead network mount)
    // is waited for a bounded time and then left to main's last step, so the
    // shutdown goes on and saves the settings.
    if (mLoad) mLoad->firstFrameShown.set();
    mLoader.stop(kLoaderStopMs);
    releaseImages();
}

void PlayerWindow::releaseImages() {
    KovaniSurface** images[] = {
        &mPlayerBG,    &mCtlPanelBG,      &mFullscreen,    &mPrevious,      &mNext,
        &mPlay,        &mPause,           &mConfig,        &mTipL,          &mTipR,
        &mTipMenu,     &mTipStart,        &mTipSelect,     &mProgressBG,    &mProgressBGFull,
        &mProgressLeft, &mProgressMiddle, &mProgressRight, &mIconPlay,      &mProgressTitleFull,
        &mCtlPanelBGFull,
    };
    for (KovaniSurface** image : images) {
        delete *image;
        *image = nullptr;
    }
}

void PlayerWindow::loadFullscreenImages() {
    if (mFullscreenImagesLoaded) return;
    mFullscreenImagesLoaded = true;
    mProgressBGFull = loadSkin("skin/progress-bg-full.png");
    mProgressTitleFull = loadSkin("skin/bg-full-screen-title.png");
    mCtlPanelBGFull = loadSkin("skin/bg-control-panel-full.png");
}

void PlayerWindow::init() {
    sLoading = true;
    mLoad = std::make_shared<FolderLoad>(mMenu.mRootDir, mMenu.mStartDir);
    std::shared_ptr<FolderLoad> load = mLoad;
    if (!mLoader.start("rombrowser", [load](const StopFlag& stop) { readStartFolder(load.get(), stop); }))
        sLoading = false;  // the list shows the folder empty
    mPlayer.init();
    // A decoder left by an earlier run that was killed would play on.
    mPlayer.stopLeftover();
}

// However the program ends (the quit question, SIGTERM), the open folder is
// kept for the next start and no decoder is left running, whether or not
// this run started one.
void PlayerWindow::quit() {
    if (!stillLoading()) {
        const char* dir = mMenu.getCurrentDir();
        if (dir) gSavedDir = dir;
    }
    mPlayer.stop();
}

void PlayerWindow::refresh() { takeDecoderNews(); }

bool PlayerWindow::stillLoading() {
    if (!mLoad) return false;
    if (sLoading) return true;
    mMenu.showLoaded(mLoad->browser, mLoad->list);
    mLoad.reset();
    if (mMenu.checkUserFile()) pushUserEvent(EVENT_PLAY_FILE);
    return false;
}

// A completion plays on; a decoder that went away shows as stopped, and the
// same file starts again with A or Start. One that went before it reported a
// duration never came up (it is missing, or it rejected the file): that ends
// as a failed play, with the idle picture and no mark.
void PlayerWindow::takeDecoderNews() {
    if (mPlayer.takeCompletion()) stepTrack(true);
    if (!mPlayer.decoderGone()) return;
    if (mPlayer.getDurationMS() <= 0 && (mPlaying || mMenu.mPlayIndex >= 0)) {
        const char* url = mPlayer.getUrl();
        tprintf("play failed, the decoder did not come up: %s\n", url ? url : "");
        mPlaying = false;
        mPlayed = false;
        mFullscreenMode = false;
        mMenu.setPlayIndex(-1, nullptr);
    } else if (mPlaying) {
        tprintf("avworker gone, stopped\n");
        mPlaying = false;
    }
}

const char* PlayerWindow::getTitle() {
    return mCurrentName.empty() ? KovaniWindow::getTitle() : nullptr;
}

bool PlayerWindow::sameFile(const char* url) {
    if (!url) return false;
    FileAction* action = fileActionAt(mMenu, mMenu.getCurrentPos());
    if (!action) return false;
    tprintf("same file %s %s\n", action->mPath.c_str(), url);
    return action->mPath == url;
}

// Follows the entry, not its index: a folder change may leave the cursor on
// the same index.
void PlayerWindow::getFileName() {
    FileAction* action = fileActionAt(mMenu, mMenu.getCurrentPos());
    if (!action || action->mPath == mCurrentNamePath) return;
    mCurrentNamePath = action->mPath;
    mCurrentName = baseName(action->mPath);
    if (mCurrentName == "..") mCurrentName.clear();
}

bool PlayerWindow::loadPath(const std::string& path, int listIndex, const std::string& folder) {
    mPlayer.reset();
    mPlayer.init();
    mPlayer.setUrl(path.c_str());
    mPlayer.prepare();
    setPlayerDisplayRect(mFullscreenMode, &mPlayer);
    mFileName = baseName(path);
    // The last file's times must not stand for this one's.
    mDurationMS = 0;
    mPositionMS = -1;
    mPlayIndex = listIndex;
    mMenu.setPlayIndex(listIndex, folder.c_str());
    return true;
}

// Opening a file from the list makes its folder the playlist.
bool PlayerWindow::playCurrentPos() {
    const int index = mMenu.getCurrentPos();
    FileAction* action = fileActionAt(mMenu, index);
    if (!action || action->mFileType != FILE_ACTION_PLAYABLE) return false;
    mPlaylist.fill(mMenu, mMenu.getCurrentDir());
    return loadPath(action->mPath, index, mPlaylist.folder());
}

// Previous and next walk the folder the playing file came from; before
// anything played, the folder on screen from the cursor on.
bool PlayerWindow::playNeighbour(int step) {
    int start = mPlayIndex;
    if (mPlaylist.empty() || start < 0) {
        mPlaylist.fill(mMenu, mMenu.getCurrentDir());
        start = mMenu.getCurrentPos();
    }
    const Playlist::Entry* entry = mPlaylist.neighbour(start, step);
    if (!entry) return false;
    const Playlist::Entry next = *entry;
    loadPath(next.path, next.listIndex, mPlaylist.folder());
    return true;
}

bool PlayerWindow::playNextPos() { return playNeighbour(1); }

bool PlayerWindow::playPreviousPos() { return playNeighbour(-1); }

// A file whose decoder was stopped or went away starts again.
void PlayerWindow::playStep() {
    if (mPlayer.getUrl() && !mPlayer.decoderExpected()) {
        mPlayer.prepare();
        setPlayerDisplayRect(mFullscreenMode, &mPlayer);
    }
    mPlaying = mPlayer.play() >= 0;
}

// The row of the loaded file shows the mark while it plays, also when a
// stopped file starts again; none does when nothing plays.
void PlayerWindow::markStep(bool markCursor) {
    if (mPlaying) {
        mPlayed = true;
        if (markCursor) mPlayIndex = mMenu.getCurrentPos();
        mMenu.setPlayIndex(mPlayIndex, mPlaylist.folder().c_str());
    } else {
        mMenu.setPlayIndex(-1, nullptr);
    }
}

void PlayerWindow::stepTrack(bool forward) {
    if (!mPlayer.getUrl()) return;
    mPlayer.stop();
    if (forward ? playNextPos() : playPreviousPos())
        playStep();
    else
        mPlaying = false;  // the first or last video: the decoder is stopped
    markStep(false);
}

void PlayerWindow::showFullscreenPanel() {
    if (mFullscreenMode) mFullscreenShowCtrlMS = (uint64_t)monotonicMs();
}

int PlayerWindow::onPlayFile() {
    const long now = monotonicMs();
    tprintf("event play file %ld\n", now);
    if (now - (long)mLastPlayedTime <= kRepeatedChoiceMs) return 0;
    if (!sameFile(mPlayer.getUrl())) {
        if (mPlayer.getUrl()) {
            mPlayer.stop();
            mPlaying = false;
        }
        if (playCurrentPos()) playStep();
        markStep(true);
    } else if (mPlaying) {
        mPlaying = false;
        mPlayer.pause();
    } else {
        playStep();
        markStep(true);
    }
    mLastPlayedTime = (uint64_t)now;
    return 0;
}

int PlayerWindow::eventHandling() {
    int code;
    if (mFullscreenMode) {
        code = wait_event(nullptr);
        if (isBackKey(code)) {
            mFullscreenMode = false;
            setPlayerDisplayRect(false, &mPlayer);
            return 0;
        }
    } else if (stillLoading()) {
        // No list until the loader is done: keys are dropped.
        code = wait_event(nullptr);
        if (isKey(code)) return 0;
    } else {
        code = mMenu.eventHandling();
        getFileName();
    }
    return handleCode(code);
}

int PlayerWindow::handleCode(int code) {
    switch (code) {
    case KEY_SELECT_COIN:
        if (mPlaying) {
            if (!mFullscreenMode) loadFullscreenImages();
            mFullscreenMode = !mFullscreenMode;
            setPlayerDisplayRect(mFullscreenMode, &mPlayer);
        }
        return 0;
    case KEY_Y:
        return 0;
    case KEY_UP:
    case KEY_DOWN:
        showFullscreenPanel();
        return 0;
    case KEY_LEFT:
    case KEY_RIGHT:
        if (mPlaying) code == KEY_LEFT ? mPlayer.fastBackward() : mPlayer.fastForward();
        showFullscreenPanel();
        return code;
    case KEY_START:
        if (mPlaying) {
            mPlaying = false;
            mPlayer.pause();
        } else if (mPlayer.getUrl()) {
            // Resumes the loaded file, wherever the cursor stands now.
            playStep();
            markStep(false);
        } else {
            if (playCurrentPos()) playStep();
            markStep(true);
        }
        showFullscreenPanel();
        return 0;
    case KEY_MENU_KEY: {
        PlayerSettingWindow* settings =
            new PlayerSettingWindow(&mPlayer, stillLoading() ? nullptr : mMenu.getCurrentDir(), mFullscreenMode);
        settings->init();
        gWinList->push_back(settings);
        return 0;
    }
    case KEY_HOTKEY1:
        stepTrack(false);
        return 0;
    case KEY_HOTKEY2:
        stepTrack(true);
        return 0;
    case EVENT_PLAY_COMPLETE:
    case EVENT_DECODER_EXIT:
        takeDecoderNews();
        return 0;
    case EVENT_PLAY_FILE:
        return onPlayFile();
    case EVENT_FIRST_FRAME_SHOWN:
        if (mLoad) mLoad->firstFrameShown.set();
        return EVENT_REFRESH;
    case EVENT_FOLDER_READ:
        // The list the user waits for: shown before anything else.
        return WINDOW_SHOW_NOW;
    case WINDOW_CLOSE:
        openQuitQuestion(&mPlayer, mMenu.getCurrentDir());
        return 0;
    default:
        return code;
    }
}

// The panel shows the report as it stands: a duration of 0 (not known yet)
// shows as 0, never as an earlier file's, and the position lies within
// [0, duration], so nothing drawn from them leaves the panel.
void PlayerWindow::readPlayerTimes() {
    if (!mPlaying) return;
    mDurationMS = std::max(0, mPlayer.getDurationMS());
    mPositionMS = std::clamp(mPlayer.getPositionMS(), 0, mDurationMS);
}

void PlayerWindow::drawTimes(int y) {
    const int left = y == 497 ? 670 : 40;
    DrawString(gListFontSubtxt, SDL_Rect{left, y, 0, 0},
               formatMediaTime(mPositionMS, mDispBuf, sizeof mDispBuf), gListColorTxt, ALIGN_TOP_LEFT);
    DrawString(gListFontSubtxt, SDL_Rect{1240, y, 0, 0},
               formatMediaTime(mDurationMS, mDispBuf, sizeof mDispBuf), gListColorTxt, ALIGN_TOP_RIGHT);
}

void PlayerWindow::drawProgress(KovaniSurface* background, int x, int y, int track) {
    drawAt(background, x, y);
    if (mDurationMS < 1 || mPositionMS < 1 || !mProgressMiddle) return;
    const int left = mProgressLeft ? mProgressLeft->getWidth() : 0;
    const int right = mProgressRight ? mProgressRight->getWidth() : 0;
    const int middle = mProgressMiddle->getWidth();
    drawAt(mProgressLeft, x, y);
    if (middle <= 0) return;
    // Never more pieces than the track holds, whatever the times say.
    const int room = std::max(0, track - left - right);
    const int64_t n = std::min<int64_t>(((int64_t)room * mPositionMS) / ((int64_t)mDurationMS * middle),
                                        room / middle);
    for (int64_t i = 0; i < n; i++) drawAt(mProgressMiddle, x + left + (int)i * middle, y);
    drawAt(mProgressRight, x + left + (int)n * middle, y);
}

void PlayerWindow::drawProgressBar() { drawProgress(mProgressBG, 670, 475, 570); }

void PlayerWindow::drawFullscreenProgressBar() { drawProgress(mProgressBGFull, 40, 616, 1200); }

void PlayerWindow::drawPanelImages() {
    drawAt(mCtlPanelBG, 650, 455);
    drawAt(mFullscreen, 705, 540);
    drawAt(mPrevious, 815, 540);
    drawAt(mPlaying ? mPause : mPlay, 925, 540);
    drawAt(mNext, 1035, 540);
    drawAt(mConfig, 1145, 540);
    drawAt(mTipSelect, 695, 610);
    drawAt(mTipL, 829, 610);
    drawAt(mTipStart, 915, 610);
    drawAt(mTipR, 1049, 610);
    drawAt(mTipMenu, 1135, 610);
}

void PlayerWindow::drawPanelTimes() {
    readPlayerTimes();
    drawProgressBar();
    drawTimes(497);
}

void PlayerWindow::drawControlPanel() {
    drawPanelImages();
    drawPanelTimes();
}

void PlayerWindow::drawFullscreenCtrlPanel() {
    drawAt(mCtlPanelBGFull, 20, 596);
    readPlayerTimes();
    drawFullscreenProgressBar();
    drawTimes(638);
}

bool PlayerWindow::panelShown() {
    const uint64_t shown = mFullscreenShowCtrlMS;
    return mFullscreenMode && shown != 0 && shown != kNever &&
           (uint64_t)monotonicMs() - shown <= kPanelShowMs - 1;
}

uint64_t PlayerWindow::viewKey() {
    uint64_t key = (uint64_t)stillLoading() << 63 | (uint64_t)mPlaying << 62 | (uint64_t)panelShown() << 61;
    // The title follows the cursor, which a refresh passing through the list
    // can settle on.
    key ^= std::hash<std::string>()(mCurrentName) >> 4;
    if (mPlaying) {
        // Whole seconds for the times, and the slider in pieces of the bar
        // on screen: a report that moves neither draws nothing.
        const int duration = std::max(0, mPlayer.getDurationMS());
        const int64_t position = std::clamp(mPlayer.getPositionMS(), 0, duration);
        const int64_t piece = mProgressMiddle ? SDL_max(1, mProgressMiddle->getWidth()) : 1;
        const int64_t track = mFullscreenMode ? 1200 : 570;
        const int64_t bar = duration > 0 ? position * track / (duration * piece) : 0;
        key ^= (uint64_t)(duration / 1000) << 32 ^ (uint64_t)(position / 1000) << 11 ^ (uint64_t)bar;
    }
    return key;
}

bool PlayerWindow::needsRedraw() { return KovaniWindow::needsRedraw() || viewKey() != mDrawnKey; }

long PlayerWindow::nextRedrawMs() {
    return panelShown() ? (long)(mFullscreenShowCtrlMS + kPanelShowMs) : -1;
}

void PlayerWindow::clearTransparent() {
    SDL_SetRenderDrawColor(gRenderer, 0, 0, 0, 0);
    SDL_RenderClear(gRenderer);
}

void PlayerWindow::drawStaticParts() {
    if (!mPlayed) {
        if (gBackground) gBackground->render(nullptr, nullptr, false, nullptr);
        drawAt(mPlayerBG, 650, 85);
        if (!mPlaying) drawAt(mIconPlay, 895, 205);
    } else if (gBackground) {
        // The background around the video rectangle, which stays transparent.
        SDL_Rect pieces[] = {{0, 0, 650, 720}, {650, 0, 610, 85}, {650, 445, 610, 275}, {1260, 0, 20, 720}};
        for (SDL_Rect& piece : pieces) gBackground->render(&piece, &piece, false, nullptr);
        if (!mPlaying) drawAt(mIconPlay, 895, 205);
    }
    drawStatBar(0);
    drawPanelImages();
}

// The static parts, transparent hole included, come from a picture composed
// once and copied whole in place of the screen's clear; it holds the list's
// normal row images too while the list is shown. The frames the user waits
// for at start, up to the first that shows the list, draw them directly:
// making and filling the picture would only delay them.
bool PlayerWindow::copyStaticParts() {
    if (!mComposeStatic || !mListShown) {
        mMenu.setNormalBackgroundsDrawn(false);
        return false;
    }
    const uint32_t key = 1u | (uint32_t)mPlayed << 1 | (uint32_t)mPlaying << 2 |
                         (uint32_t)isConfirmKey(KEY_B) << 3;
    return mStaticPicture.copy(key, [this] { drawStaticParts(); }, stillLoading() ? nullptr : &mMenu);
}

void PlayerWindow::setComposeStatic(bool on) { mComposeStatic = on; }

int PlayerWindow::draw() {
    mDrawnKey = viewKey();
    if (mFullscreenMode) {
        // Every pixel not drawn below stays fully transparent: the video
        // layer beneath shows through it.
        clearTransparent();
        const uint64_t shown = mFullscreenShowCtrlMS;
        if (shown != 0 && shown != kNever && (uint64_t)monotonicMs() - shown <= kPanelShowMs - 1) {
            if (!mFileName.empty() && mProgressTitleFull) {
                drawAt(mProgressTitleFull, 20, 20);
                SDL_Rect band = {20, 20, mProgressTitleFull->getWidth(), mProgressTitleFull->getHeight()};
                DrawString(gListFontSubtxt, band, mFileName.c_str(), gListColorTxt, ALIGN_CENTER);
            }
            drawFullscreenCtrlPanel();
        }
        return 0;
    }

    // The static parts cover the whole screen, hole included: no clear.
    if (!copyStaticParts()) {
        clearTransparent();
        drawStaticParts();
    }
    const int icons = drawNavBar(0);
    drawPanelTimes();

    if (stillLoading()) {
        DrawString(gListFontTxt, SDL_Rect{0, 80, 620, 580}, getLangStr(STRING_READING_FILES),
                   gListColorTxt, ALIGN_CENTER);
        // The folder is read once this frame is on screen: the loop
        // presents it before it hands the window this word.
        if (!mFirstFrameNoted) pushUserEvent(EVENT_FIRST_FRAME_SHOWN);
        mFirstFrameNoted = true;
        return 0;
    }
    if (!mCurrentName.empty())
        DrawStringFitted(gStatFont, SDL_Rect{90, 27, navBarTitleRight(icons) - 90, 0}, mCurrentName.c_str(),
                         gListColorTxt);
    mMenu.draw();
    mListShown = true;
    return 0;
}
