// The player under the real main loop, which draws only when it sees a
// change: after each step of a scripted session, once the loop has gone
// idle, the screen equals what a forced full redraw gives.
#include <SDL2/SDL_image.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "player/app_options.h"
#include "player/player_lang.h"
#include "player/player_window.h"
#include "player/skin.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/recording_shell.h"
#include "tests/support/sdl_events.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "toolkit/screen.h"

namespace {

void pushCode(int code) {
    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = code;
    SDL_PushEvent(&e);
}

std::vector<Uint32> readFrame() {
    std::vector<Uint32> px(1280 * 720);
    SDL_RenderReadPixels(gRenderer, nullptr, SDL_PIXELFORMAT_ARGB8888, px.data(), 1280 * 4);
    return px;
}

void savePng(const std::vector<Uint32>& px, const std::string& path) {
    SDL_Surface* s = SDL_CreateRGBSurfaceWithFormatFrom(const_cast<Uint32*>(px.data()), 1280, 720, 32, 1280 * 4,
                                                        SDL_PIXELFORMAT_ARGB8888);
    IMG_SavePNG(s, path.c_str());
    SDL_FreeSurface(s);
}

// Real time; whenever the loop goes idle (a long wait with nothing queued)
// the test's next step runs on the main thread.
class IdleScript : public FrameClock {
public:
    long nowMs() override { return systemms(); }
    void waitEventMs(long ms) override {
        SDL_PumpEvents();
        const bool idle = ms > 100 && !SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        if (idle && mNext < mSteps.size()) {
            const size_t step = mNext++;
            mSteps[step]();
        }
        SDL_WaitEventTimeout(nullptr, (int)SDL_min(ms, 20L));
    }
    std::vector<std::function<void()>> mSteps;
    size_t mNext = 0;
};

// A player window that counts the frames it draws.
class CountingPlayer : public PlayerWindow {
public:
    explicit CountingPlayer(DecoderShell* shell) : PlayerWindow(nullptr, shell) {}
    int draw() override {
        mDraws++;
        return PlayerWindow::draw();
    }
    int mDraws = 0;
};

class PlayerLoopTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        clearQuitRequest();
        // The frame lives in a texture: it keeps its pixels and alpha across
        // presents, as the device's UI layer does.
        mFrame = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 1280, 720);
        mCheck = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 1280, 720);
        ASSERT_EQ(SDL_SetRenderTarget(gRenderer, mFrame), 0) << SDL_GetError();
        makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
        const std::string videos = mRoot.path() + "/videos";
        for (const char* name : {"a.mp4", "b.mkv", "c.avi"}) writeFileAtomic(videos + "/" + name, "");
        gUserPath = videos;
        char cwd[4096];
        mOldCwd = getcwd(cwd, sizeof cwd) ? cwd : "/";
        ASSERT_EQ(chdir(KOVANI_APP_DIR), 0);
        initDefLang();
        init_skin();
        setFrameClock(&mScript);
    }
    void TearDown() override {
        setFrameClock(nullptr);
        clearQuitRequest();
        uninit_skin();
        (void)chdir(mOldCwd.c_str());
        SDL_SetRenderTarget(gRenderer, nullptr);
        SDL_DestroyTexture(mFrame);
        SDL_DestroyTexture(mCheck);
        SdlScreenTest::TearDown();
    }
    // The frame on screen against a full redraw of the window on top, pixel
    // by pixel within a small tolerance (text is blended).
    void expectUpToDate(const std::string& name) {
        const std::vector<Uint32> shown = readFrame();
        SDL_SetRenderTarget(gRenderer, mCheck);
        // The full redraw draws every part anew, composed parts included.
        PlayerWindow* player = dynamic_cast<PlayerWindow*>(gWinList->back());
        if (player) player->setComposeStatic(false);
        gWinList->back()->draw();
        if (player) player->setComposeStatic(true);
        const std::vector<Uint32> full = readFrame();
        SDL_SetRenderTarget(gRenderer, mFrame);
        int differ = 0;
        size_t first = 0;
        for (size_t i = 0; i < shown.size(); i++) {
            for (int shift = 0; shift < 32; shift += 8) {
                const int a = (shown[i] >> shift) & 0xFF, b = (full[i] >> shift) & 0xFF;
                if (abs(a - b) > 8) {
                    if (differ == 0) first = i;
                    differ++;
                    break;
                }
            }
        }
        mChecked.push_back(name);
        if (differ > 50) {
            savePng(shown, name + "_err.png");
            savePng(full, name + "_full.png");
            ADD_FAILURE() << name << ": " << differ << " pixels differ from a full redraw, the first at ("
                          << first % 1280 << ", " << first / 1280 << ") (see " << name << "_err.png)";
        }
    }
    void step(const std::string& name, std::function<void()> keys) {
        mScript.mSteps.push_back([this, name, keys] {
            expectUpToDate(name);
            if (keys) keys();
        });
    }

    SDL_Texture* mFrame = nullptr;  // owned
    SDL_Texture* mCheck = nullptr;  // owned
    TempDeviceRoot mRoot;
    RecordingShell mShell;
    IdleScript mScript;
    std::string mOldCwd;
    std::vector<std::string> mChecked;
};

}  // namespace

TEST_F(PlayerLoopTest, EveryIdleScreenEqualsAFullRedraw) {
    std::vector<KovaniWindow*> windows;
    PlayerWindow* player = new PlayerWindow(nullptr, &mShell);
    player->init();
    windows.push_back(player);

    step("browse", [] { pushCode(KEY_DOWN); });
    step("cursor-moved", [] { pushCode(KEY_A); });
    step("playing", [] { pushCode(KEY_START); });
    step("paused", [] {
        pushCode(KEY_START);
        pushCode(KEY_SELECT_COIN);
    });
    step("fullscreen", [] { pushCode(KEY_RIGHT); });
    step("fullscreen-panel", nullptr);  // the panel hides by itself 1.5 s later
    step("panel-hidden", [] {
        pushCode(KEY_B);
        pushCode(KEY_MENU_KEY);
    });
    step("settings", [] { pushCode(KEY_A); });
    step("quit-question", [] { pushCode(KEY_B); });
    step("back", [] {
        SDL_Event quit = {};
        quit.type = SDL_QUIT;
        SDL_PushEvent(&quit);
    });
    runWindows(windows);
    EXPECT_EQ(mChecked.size(), mScript.mSteps.size()) << "every step was reached";
}

// A decoder report wakes the loop, which draws a frame when the report moves
// the position text to another second and none when the text stays.
TEST_F(PlayerLoopTest, AReportDrawsAFrameOnlyWhenThePositionTextChanges) {
    std::vector<KovaniWindow*> windows;
    CountingPlayer* player = new CountingPlayer(&mShell);
    player->init();
    windows.push_back(player);
    int before = 0;
    // Writes a report and waits (bounded) until the watcher passed it on.
    auto report = [&](int positionMs) {
        before = player->mDraws;
        writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_STATUS),
                        "{\"status\":\"playing\",\"duration\":3600000,\"position\":" +
                            std::to_string(positionMs) + "}");
        EXPECT_TRUE(waitQueued(EVENT_REFRESH)) << positionMs;
    };
    auto started = [&] {
        for (const std::string& line : mShell.lines())
            if (line.rfind("avworker ", 0) == 0) return true;
        return false;
    };
    mScript.mSteps = {
        [] { pushCode(KEY_A); },
        [&] {
            // Reports written before the decoder's start count as stale.
            for (int i = 0; i < 500 && !started(); i++) SDL_Delay(10);
            EXPECT_TRUE(started());
            report(1000);
        },
        [&] {
            EXPECT_EQ(player->mDraws, before + 1) << "0:01";
            report(1400);
        },
        [&] {
            EXPECT_EQ(player->mDraws, before) << "still 0:01";
            report(2000);
        },
        [&] {
            EXPECT_EQ(player->mDraws, before + 1) << "0:02";
            SDL_Event quit = {};
            quit.type = SDL_QUIT;
            SDL_PushEvent(&quit);
        },
    };
    runWindows(windows);
    EXPECT_EQ(mScript.mNext, mScript.mSteps.size());
}
