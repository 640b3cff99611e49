#include "player/player_window.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/device_paths.h"
#include "player/app_options.h"
#include "player/player_lang.h"
#include "player/skin.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/keycodes.h"
#include "toolkit/lang.h"
#include "toolkit/screen.h"
#include "platform/sysutil.h"

namespace {

const SDL_Color kJunk = {200, 0, 40, 255};

// The player window over the staged app folder's skin, a folder of three
// videos, and the stand-in decoder first on PATH.
class PlayerWindowTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        // The offscreen window has no alpha channel; a target texture keeps
        // the transparency the display layer would see.
        mFrame = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 1280, 720);
        ASSERT_EQ(SDL_SetRenderTarget(gRenderer, mFrame), 0) << SDL_GetError();
        makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
        const std::string videos = mRoot.path() + "/videos";
        for (const char* name : {"a.mp4", "b.mkv", "c.avi"}) writeFileAtomic(videos + "/" + name, "");
        gUserPath = videos;
        char cwd[4096];
        mOldCwd = getcwd(cwd, sizeof cwd) ? cwd : "/";
        ASSERT_EQ(chdir(KOVANI_APP_DIR), 0);
        mOldPath = getenv("PATH") ? getenv("PATH") : "";
        setenv("PATH", (std::string(KOVANI_TEST_DECODER_DIR) + ":" + mOldPath).c_str(), 1);
        initDefLang();
        init_skin();
    }
    void TearDown() override {
        uninit_skin();
        (void)system("killall -q avworker");
        setenv("PATH", mOldPath.c_str(), 1);
        (void)chdir(mOldCwd.c_str());
        SDL_SetRenderTarget(gRenderer, nullptr);
        SDL_DestroyTexture(mFrame);
        SdlScreenTest::TearDown();
    }
    // Draws one frame over a screen full of junk.
    void drawFrame(PlayerWindow& window) {
        clear(kJunk.r, kJunk.g, kJunk.b);
        window.draw();
    }
    // Whether every sampled pixel of `area` is fully transparent, or else
    // opaque and not left over from the frame before.
    bool transparent(SDL_Rect area) { return sampled(area, [](SDL_Color c) { return c.a == 0; }); }
    bool covered(SDL_Rect area) {
        return sampled(area, [](SDL_Color c) { return c.a == 255 && !sameColor(c, kJunk); });
    }
    template <typename Check>
    bool sampled(SDL_Rect area, Check check) {
        for (int y = area.y; y < area.y + area.h; y += 7)
            for (int x = area.x; x < area.x + area.w; x += 7)
                if (!check(pixel(x, y))) return false;
        return true;
    }

    SDL_Texture* mFrame = nullptr;  // owned
    TempDeviceRoot mRoot;
    std::string mOldCwd, mOldPath;
};

}  // namespace

// The video layer shows through exactly the video rectangle while playing;
// everything else of the windowed view is redrawn every frame.
TEST_F(PlayerWindowTest, PlayingLeavesOnlyTheVideoRectangleTransparent) {
    PlayerWindow window(nullptr);
    window.init();
    for (int i = 0; i < 500 && sLoading; i++) SDL_Delay(10);
    ASSERT_FALSE(sLoading);

    drawFrame(window);
    EXPECT_TRUE(covered({0, 0, 1280, 720})) << "before playing the video window is drawn";

    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = EVENT_PLAY_FILE;
    SDL_PushEvent(&e);
    for (int i = 0; i < 10 && !window.isPlaying(); i++) window.eventHandling();
    ASSERT_TRUE(window.isPlaying());
    drawFrame(window);
    EXPECT_TRUE(transparent({650, 85, 610, 360}));
    for (SDL_Rect around : {SDL_Rect{0, 0, 650, 720}, SDL_Rect{650, 0, 630, 85}, SDL_Rect{650, 445, 630, 275},
                            SDL_Rect{1260, 85, 20, 360}})
        EXPECT_TRUE(covered(around)) << around.x << "," << around.y;
    window.quit();
}
