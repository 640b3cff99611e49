#include "player_setting_window.h"

#include <stdio.h>

#include "display_rect.h"
#include "kovani_player.h"
#include "player_lang.h"
#include "quit_action.h"
#include "toolkit/keycodes.h"
#include "platform/logger.h"
#include "toolkit/shared_skin.h"

namespace {

KovaniSurface* loadSkin(const char* name) { return LoadKovaniSurface(gThemePath, "./", name); }

}  // namespace

int AspectRatioHandler::changeValue(int key) {
    static const PLAYER_ASPECT_RATIO kLeft[] = {RATIO16_9, RATIO_DEFAULT, RATIO4_3};
    static const PLAYER_ASPECT_RATIO kRight[] = {RATIO4_3, RATIO16_9, RATIO_DEFAULT};
    if (gPlayerAspectRatio < RATIO_DEFAULT || gPlayerAspectRatio > RATIO16_9)
        gPlayerAspectRatio = RATIO_DEFAULT;
    else if (key == KEY_LEFT)
        gPlayerAspectRatio = kLeft[gPlayerAspectRatio];
    else if (key == KEY_RIGHT)
        gPlayerAspectRatio = kRight[gPlayerAspectRatio];
    return 1;
}

int AspectRatioHandler::saveValue() { return 1; }

const char* AspectRatioHandler::getShowValue() {
    if (gPlayerAspectRatio == RATIO4_3) return getLangStr(STRING_RATIO_4_3);
    if (gPlayerAspectRatio == RATIO16_9) return getLangStr(STRING_RATIO_16_9);
    return getLangStr(STRING_RATIO_DEFAULT);
}

AudioTrackHandler::AudioTrackHandler(int maxTrack) : mMaxTrack(maxTrack) {
    mDispBuf[0] = '\0';
    tprintf("AudioTrackHandler max track %d\n", maxTrack);
}

int AudioTrackHandler::changeValue(int key) {
    if (key == KEY_LEFT && gAudioTrack > 0) gAudioTrack--;
    if (key == KEY_RIGHT && gAudioTrack < mMaxTrack - 1) gAudioTrack++;
    return 1;
}

int AudioTrackHandler::saveValue() { return 1; }

const char* AudioTrackHandler::getShowValue() {
    snprintf(mDispBuf, sizeof mDispBuf, "%s %d", getLangStr(STRING_AUDIOTRACK), gAudioTrack);
    return mDispBuf;
}

QuitDialogAction::QuitDialogAction(KovaniPlayer* player, const char* currentDir)
    : Action(-1), mPlayer(player), mCurrentDir(currentDir ? currentDir : "") {}

int QuitDialogAction::dowork(void*) {
    openQuitQuestion(mPlayer, mCurrentDir.c_str());
    // Closes this popup; the question then comes up over the player window.
    return WINDOW_CLOSE_LAST;
}

PlayerSettingWindow::PlayerSettingWindow(KovaniPlayer* player, const char* currentDir, bool fullscreen)
    : KovaniWindow(STRING_SETTING, -1),
      mLeftArrowF(loadSkin("skin/ic-left-arrow-a.png")),
      mLeftArrowN(loadSkin("skin/ic-left-arrow-n.png")),
      mRightArrowF(loadSkin("skin/ic-right-arrow-a.png")),
      mRightArrowN(loadSkin("skin/ic-right-arrow-n.png")),
      mTextBG(loadSkin("skin/bg-setting-textfield.png")),
      mSelBG(loadSkin("skin/bg-list-long-a.png")),
      mNormalBG(loadSkin("skin/bg-list-long-n.png")),
      mPlayer(player),
      mFullscreen(fullscreen),
      mOldAspectRatio(gPlayerAspectRatio),
      mOldRotation(gPlayerRotation),
      mOldSpeed(gPlayerSpeed) {
    gAudioTrack = player->getAudioTrack();
    mMenu.insertSettingItem(
        new SettingItem(mSelBG, mNormalBG, STRING_QUIT, nullptr, new QuitDialogAction(player, currentDir)));
    mMenu.insertSettingItem(new SettingValueItem(mSelBG, mNormalBG, mLeftArrowF, mLeftArrowN, mRightArrowF,
                                                 mRightArrowN, mTextBG, STRING_ASPECT_RATIO, nullptr,
                                                 new AspectRatioHandler()));
    mMenu.insertSettingItem(new SettingValueItem(mSelBG, mNormalBG, mLeftArrowF, mLeftArrowN, mRightArrowF,
                                                 mRightArrowN, mTextBG, STRING_AUDIOTRACK, nullptr,
                                                 new AudioTrackHandler(player->getAudioTrackNum())));
}

PlayerSettingWindow::~PlayerSettingWindow() {
    KovaniSurface** images[] = {&mLeftArrowF, &mLeftArrowN, &mRightArrowF, &mRightArrowN,
                                &mTextBG,     &mSelBG,      &mNormalBG};
    for (KovaniSurface** image : images) {
        delete *image;
        *image = nullptr;
    }
    if (gPlayerAspectRatio != mOldAspectRatio) setPlayerDisplayRect(mFullscreen, mPlayer);
    if (gPlayerRotation != mOldRotation) {
        tprintf("set rotation %d\n", gPlayerRotation);
        mPlayer->setRotation(gPlayerRotation);
    }
    if (gPlayerSpeed != mOldSpeed) {
        tprintf("set speed %d\n", gPlayerSpeed);
        mPlayer->setPlaySpeed(gPlayerSpeed);
    }
    if (mPlayer->getAudioTrack() != gAudioTrack) {
        tprintf("set audio track %d\n", gAudioTrack);
        mPlayer->switchAudio(gAudioTrack);
    }
}

int PlayerSettingWindow::eventHandling() { return mMenu.eventHandling(); }

int PlayerSettingWindow::draw() {
    if (gBackground) gBackground->render(nullptr, nullptr, false, nullptr);
    drawNavBar(0);
    drawStatBar(0);
    mMenu.draw();
    return 0;
}
