#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "platform/sysutil.h"
#include "player/app_options.h"
#include "player/player_lang.h"
#include "player/player_settings.h"
#include "player/player_window.h"
#include "player/skin.h"
#include "tests/support/recording_shell.h"
#include "tests/support/sdl_events.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/shifted_clock.h"
#include "tests/support/temp_dir.h"
#include "toolkit/input.h"
#include "toolkit/screen.h"
#include "toolkit/system_state.h"
#include "toolkit/window_bars.h"

// The player window in a copy of the staged program folder (its skin and
// font, its languages), over folders x/ and y/ and videos a.mp4, b.mkv,
// c.avi, on the stand-in decoder shell; sound on, battery at 76 %. Frames go
// to a texture that keeps alpha, as the interface's layer does.
class PlayerWindowTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        mFrame = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 1280, 720);
        ASSERT_EQ(SDL_SetRenderTarget(gRenderer, mFrame), 0) << SDL_GetError();
        makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
        mVideos = mRoot.path() + "/videos";
        for (const char* name : {"a.mp4", "b.mkv", "c.avi", "x/x1.mp4", "x/x2.mp4", "y/y1.mp4", "y/y2.mp4"})
            writeFileAtomic(mVideos + "/" + name, "");
        writeFileAtomic(mRoot.at(DEVICE_PATH_BATTERY_CAPACITY), "76\n");
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        SetKeyShm(&gShmInfo, MONITOR_VOLUME, 10);
        invalidateBarStatus();
        gUserPath = mVideos;
        gWinList = &mWindows;
        // The languages are copies: the loader takes regular files only, and
        // writes en.lang beside them.
        const std::string stage = mRoot.path() + "/app";
        makeDirs(stage + "/lang");
        for (const char* name : {"skin", "regular.ttf"})
            ASSERT_EQ(symlink((KOVANI_APP_DIR "/" + std::string(name)).c_str(), (stage + "/" + name).c_str()), 0);
        for (const auto& lang : std::filesystem::directory_iterator(KOVANI_APP_DIR "/lang"))
            if (lang.path().filename() != "en.lang")
                std::filesystem::copy_file(lang.path(), stage + "/lang/" + lang.path().filename().string());
        char cwd[4096];
        mOldCwd = getcwd(cwd, sizeof cwd) ? cwd : "/";
        ASSERT_EQ(chdir(stage.c_str()), 0);
        initDefLang();
        init_skin();
        setClockSource(&mClock);
    }
    void TearDown() override {
        for (KovaniWindow* w : mWindows) delete w;
        mWindows.clear();
        setClockSource(nullptr);
        gWinList = nullptr;
        gUserFile.clear();
        uninit_skin();
        setSystemLanguage("");
        gPlayerAspectRatio = RATIO_DEFAULT;
        UninitKeyShm(&gShmInfo);
        (void)chdir(mOldCwd.c_str());
        SDL_SetRenderTarget(gRenderer, nullptr);
        SDL_DestroyTexture(mFrame);
        SdlScreenTest::TearDown();
    }
    void drawFrame(PlayerWindow& window) {
        clear(200, 0, 40);  // junk a frame must cover
        window.draw();
    }
    // The window's first frame, and its word to itself that the frame is on
    // screen, which lets the loader read.
    void showFirstFrame(PlayerWindow& window) {
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);  // words for windows opened before
        drawFrame(window);
        ASSERT_TRUE(queued(EVENT_FIRST_FRAME_SHOWN));
        EXPECT_EQ(window.eventHandling(), (int)EVENT_REFRESH);
    }
    // A player window, loaded and at the bottom of the window list.
    template <class Window = PlayerWindow>
    Window* openPlayer() {
        Window* window = new Window(nullptr, &mShell);
        mWindows.push_back(window);
        window->init();
        showFirstFrame(*window);
        for (int i = 0; i < 500 && sLoading; i++) SDL_Delay(10);
        EXPECT_FALSE(sLoading);
        return window;
    }
    // Plays the entry `downs` rows below the first.
    void playEntry(PlayerWindow& window, int downs) {
        for (int i = 0; i < downs; i++) pressKey(window, KEY_DOWN);
        mClock.mMonotonicShift += 250;  // a second choice within 200 ms would count as a repeat
        pressKey(window, KEY_A);
    }
    // The file the last start line names; started() waits (bounded) for `file`.
    std::string lastStarted() {
        std::string last;
        for (const std::string& line : mShell.lines())
            if (line.rfind("avworker ", 0) == 0) last = line.substr(9, line.size() - 11);
        return last;
    }
    bool started(const std::string& file) {
        for (int i = 0; i < 300 && lastStarted() != mVideos + file; i++) SDL_Delay(10);
        return lastStarted() == mVideos + file;
    }
    // The decoder command lines sent so far: "play", "win 650 85 610 360"...
    std::vector<std::string> commands() {
        std::vector<std::string> out;
        const std::string tail = " > " + shellQuote(mRoot.at(DEVICE_PATH_PLAYER_CMD));
        for (const std::string& line : mShell.lines()) {
            if (line.rfind("echo ", 0) != 0 || line.size() < 5 + tail.size()) continue;
            std::string words = line.substr(5, line.size() - 5 - tail.size());
            if (words.size() > 1 && words[0] == '"') words = words.substr(1, words.size() - 2);
            out.push_back(words);
        }
        return out;
    }
    // The last picture rectangle sent to the decoder; w 0 when none was.
    SDL_Rect lastVideoRect() {
        SDL_Rect r = {0, 0, 0, 0};
        for (const std::string& words : commands())
            if (words.rfind("win ", 0) == 0) sscanf(words.c_str(), "win %d %d %d %d", &r.x, &r.y, &r.w, &r.h);
        return r;
    }
    void reportStatus(const char* state, long duration, long position) {
        writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_STATUS),
                        std::string("{\"status\":\"") + state + "\",\"duration\":" + std::to_string(duration) +
                            ",\"position\":" + std::to_string(position) + "}");
    }

    SDL_Texture* mFrame = nullptr;  // owned: where the window draws
    ShiftedClock mClock;            // installed: tests move time on at once
    TempDeviceRoot mRoot;
    RecordingShell mShell;
    std::vector<KovaniWindow*> mWindows;  // owned; the stack the window pushes popups on
    std::string mVideos, mOldCwd;
};

inline void pushCode(int code, Uint32 type = SDL_USEREVENT) {
    SDL_Event e = {};
    e.type = type;
    e.user.code = code;
    SDL_PushEvent(&e);
}

// Real time; the script's steps run one by one as the loop goes idle: on
// the second idle wait in a row at which the next step is ready, when the
// loop has drawn all it had to. A loop still running after 200 s is ended.
class IdleScript : public FrameClock {
public:
    struct Step {
        std::function<bool()> ready;  // null: always
        std::function<void()> run;
    };
    long nowMs() override { return monotonicMs(); }
    void waitEventMs(long ms) override {
        SDL_PumpEvents();
        const bool idle = ms > 100 && !SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT) && mNext < mSteps.size() &&
                          (!mSteps[mNext].ready || mSteps[mNext].ready());
        mIdleWaits = idle ? mIdleWaits + 1 : 0;
        if (mIdleWaits >= 2) {
            mIdleWaits = 0;
            mSteps[mNext++].run();
        }
        if (monotonicMs() > mDeadline) pushEndOfTime();
        SDL_WaitEventTimeout(nullptr, (int)SDL_min(ms, 20L));
    }
    void pushEndOfTime() {
        SDL_Event e = {};
        e.type = SDL_QUIT;
        SDL_PushEvent(&e);
    }
    std::vector<Step> mSteps;
    size_t mNext = 0;
    int mIdleWaits = 0;
    const long mDeadline = monotonicMs() + 200000;
};

// The player under the real main loop.
class PlayerLoopTest : public PlayerWindowTest {
protected:
    void SetUp() override {
        PlayerWindowTest::SetUp();
        clearQuitRequest();
        setFrameClock(&mScript);
    }
    void TearDown() override {
        setFrameClock(nullptr);
        clearQuitRequest();
        PlayerWindowTest::TearDown();
    }
    // Once the loop is idle and `ready` holds: `check`, then queues `codes`
    // (0: quit).
    void step(std::function<void()> check, std::vector<int> codes, std::function<bool()> ready = nullptr) {
        mScript.mSteps.push_back({ready, [check, codes] {
                                      if (check) check();
                                      for (int code : codes) code ? pushCode(code) : pushCode(0, SDL_QUIT);
                                  }});
    }
    void run() {
        runWindows(mWindows);
        EXPECT_EQ(mScript.mNext, mScript.mSteps.size()) << "every step was reached";
    }

    IdleScript mScript;
};
