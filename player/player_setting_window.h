#pragma once

#include "player_settings.h"
#include "toolkit/action.h"
#include "toolkit/kovani_surface.h"
#include "toolkit/setting_menu.h"
#include "toolkit/window.h"

#include <string>

class KovaniPlayer;

// Aspect ratio row: LEFT and RIGHT cycle Default, 4:3, 16:9.
class AspectRatioHandler : public ValueHandler {
public:
    int changeValue(int key) override;
    int saveValue() override;
    const char* getShowValue() override;
};

// Audio track row: LEFT and RIGHT step through 0 .. maxTrack - 1, no wrap.
class AudioTrackHandler : public ValueHandler {
public:
    explicit AudioTrackHandler(int maxTrack);
    int changeValue(int key) override;
    int saveValue() override;
    const char* getShowValue() override;

    int mMaxTrack;
    char mDispBuf[32];
};

// Quit row: asks whether to leave the player, over the player window.
class QuitDialogAction : public Action {
public:
    QuitDialogAction(KovaniPlayer* player, const char* currentDir);
    int dowork(void* item) override;

    KovaniPlayer* mPlayer;    // not owned
    std::string mCurrentDir;  // a copy of the list's folder when the popup opened
};

// The settings popup opened by MENU. Changes take effect when it closes.
class PlayerSettingWindow : public KovaniWindow {
public:
    // `player`: the player window's client (not owned; the window outlives
    // its popups). `fullscreen`: the player window's mode, which cannot
    // change while the popup is on top.
    PlayerSettingWindow(KovaniPlayer* player, const char* currentDir, bool fullscreen);
    ~PlayerSettingWindow() override;

    int eventHandling() override;
    int draw() override;
    void quit() override {}
    void init() override {}
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}

private:
    // Owned skin images; any may be null.
    KovaniSurface* mLeftArrowF;
    KovaniSurface* mLeftArrowN;
    KovaniSurface* mRightArrowF;
    KovaniSurface* mRightArrowN;
    KovaniSurface* mTextBG;
    KovaniSurface* mSelBG;
    KovaniSurface* mNormalBG;
    SettingMenu mMenu;
    KovaniPlayer* mPlayer;        // not owned
    bool mFullscreen;             // the player window's mode
    PLAYER_ASPECT_RATIO mOldAspectRatio;
    PLAYER_ROTATION mOldRotation;
    PLAYER_SPEED mOldSpeed;
};
