#include "player/player_window.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/device_paths.h"
#include "platform/owned_thread.h"
#include "player/player_setting_window.h"
#include "player/app_options.h"
#include "player/player_lang.h"
#include "player/skin.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/recording_shell.h"
#include "tests/support/sdl_events.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/dir_browser.h"
#include "toolkit/keycodes.h"
#include "toolkit/lang.h"
#include "toolkit/screen.h"
#include "platform/sysutil.h"

namespace {

const SDL_Color kJunk = {200, 0, 40, 255};

// The player window over the staged app folder's skin, a folder of three
// videos and two sub-folders, and the stand-in decoder shell.
class PlayerWindowTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        // The offscreen window has no alpha channel; a target texture keeps
        // the transparency the display layer would see.
        mFrame = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 1280, 720);
        ASSERT_EQ(SDL_SetRenderTarget(gRenderer, mFrame), 0) << SDL_GetError();
        makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
        mVideos = mRoot.path() + "/videos";
        for (const char* name : {"a.mp4", "b.mkv", "c.avi", "x/x1.mp4", "x/x2.mp4", "y/y1.mp4", "y/y2.mp4"})
            writeFileAtomic(mVideos + "/" + name, "");
        gUserPath = mVideos;
        gWinList = &mWindows;
        char cwd[4096];
        mOldCwd = getcwd(cwd, sizeof cwd) ? cwd : "/";
        ASSERT_EQ(chdir(KOVANI_APP_DIR), 0);
        initDefLang();
        init_skin();
    }
    void TearDown() override {
        for (KovaniWindow* w : mWindows) delete w;
        mWindows.clear();
        gWinList = nullptr;
        uninit_skin();
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

    // A player window, loaded and at the bottom of the window list.
    PlayerWindow* openPlayer() {
        PlayerWindow* window = new PlayerWindow(nullptr, &mShell);
        mWindows.push_back(window);
        window->init();
        for (int i = 0; i < 500 && sLoading; i++) SDL_Delay(10);
        EXPECT_FALSE(sLoading);
        return window;
    }
    // Plays the entry `downs` rows below the first and waits for its start.
    void playEntry(PlayerWindow& window, int downs) {
        for (int i = 0; i < downs; i++) pressKey(window, KEY_DOWN);
        SDL_Delay(250);  // a second choice within 200 ms would count as a repeat
        pressKey(window, KEY_A);
    }
    // The file the last start line names.
    std::string lastStarted() {
        std::string last;
        for (const std::string& line : mShell.lines())
            if (line.rfind("avworker ", 0) == 0) last = line.substr(9, line.size() - 11);
        return last;
    }
    // Waits (bounded) until the last start line names `file`.
    bool started(const std::string& file) {
        for (int i = 0; i < 300 && lastStarted() != mVideos + file; i++) SDL_Delay(10);
        return lastStarted() == mVideos + file;
    }
    void reportStatus(const char* state, long duration = 9000, long position = 9000) {
        writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_STATUS),
                        std::string("{\"status\":\"") + state + "\",\"duration\":" + std::to_string(duration) +
                            ",\"position\":" + std::to_string(position) + "}");
    }

    SDL_Texture* mFrame = nullptr;  // owned
    TempDeviceRoot mRoot;
    RecordingShell mShell;
    std::vector<KovaniWindow*> mWindows;  // owned; the stack the window pushes popups on
    std::string mVideos;
    std::string mOldCwd;
};

}  // namespace

// The video layer shows through exactly the video rectangle while playing;
// everything else of the windowed view is redrawn every frame.
TEST_F(PlayerWindowTest, PlayingLeavesOnlyTheVideoRectangleTransparent) {
    PlayerWindow& window = *openPlayer();
    drawFrame(window);
    EXPECT_TRUE(covered({0, 0, 1280, 720})) << "before playing the video window is drawn";

    playEntry(window, 2);
    ASSERT_TRUE(window.isPlaying());
    drawFrame(window);
    EXPECT_TRUE(transparent({650, 85, 610, 360}));
    for (SDL_Rect around : {SDL_Rect{0, 0, 650, 720}, SDL_Rect{650, 0, 630, 85}, SDL_Rect{650, 445, 630, 275},
                            SDL_Rect{1260, 85, 20, 360}})
        EXPECT_TRUE(covered(around)) << around.x << "," << around.y;
}

// A video that ends while the settings popup is on top plays on when the
// popup closes; the window then goes while its decoder client still reports.
TEST_F(PlayerWindowTest, ACompletionUnderThePopupPlaysOnAndTheWindowCanGoAnyTime) {
    PlayerWindow* window = openPlayer();
    playEntry(*window, 2);
    ASSERT_TRUE(started("/a.mp4"));

    pressKey(*window, KEY_MENU_KEY);
    ASSERT_EQ(mWindows.size(), 2u);
    reportStatus("completed");
    ASSERT_TRUE(waitQueued(EVENT_PLAY_COMPLETE));
    KovaniWindow* popup = mWindows.back();
    for (int i = 0; i < 8 && queued(EVENT_PLAY_COMPLETE); i++) popup->eventHandling();
    EXPECT_EQ(lastStarted(), mVideos + "/a.mp4") << "nothing starts under the popup";

    delete popup;
    mWindows.pop_back();
    window->refresh();
    EXPECT_TRUE(started("/b.mkv"));
    EXPECT_TRUE(window->isPlaying());

    reportStatus("playing");
    SDL_Delay(600);
    reportStatus("completed");
    window->quit();
    delete window;
    mWindows.clear();
    EXPECT_EQ(mShell.lines().back(), "killall avworker");
}

TEST_F(PlayerWindowTest, ADeadDecoderShowsStoppedAndTheSameFileStartsAgain) {
    PlayerWindow& window = *openPlayer();
    playEntry(window, 2);
    ASSERT_TRUE(window.isPlaying());
    mShell.waitForLines(3);
    SDL_Delay(1200);  // past the start's wait: the decoder was found
    mShell.crash();
    ASSERT_TRUE(waitQueued(EVENT_DECODER_EXIT));
    pressKey(window, KEY_NONE);
    EXPECT_FALSE(window.isPlaying());

    const size_t lines = mShell.lines().size();
    pressKey(window, KEY_START);
    EXPECT_TRUE(window.isPlaying());
    ASSERT_TRUE(mShell.waitForLines(lines + 2));
    EXPECT_TRUE(started("/a.mp4"));
}

// A decoder left by a killed run is stopped when the window starts, and
// one is stopped when the window quits though no file was ever set.
TEST_F(PlayerWindowTest, LeftoverDecodersAreStoppedAtStartAndAtExit) {
    mShell.leaveDecoder();
    PlayerWindow& window = *openPlayer();
    ASSERT_TRUE(mShell.waitForLines(1));
    EXPECT_LT(mShell.findDecoder(), 0);
    mShell.leaveDecoder();
    window.quit();
    ASSERT_TRUE(mShell.waitForLines(2));
    EXPECT_LT(mShell.findDecoder(), 0);
    EXPECT_EQ(mShell.lines(), (std::vector<std::string>{"killall avworker", "killall avworker"}));
}

// The name under the cursor stands in the title line; a long one ends
// short of the status icons (here 0 % and sound, from x 1139 on).
TEST_F(PlayerWindowTest, ALongNameInTheTitleLineEndsLeftOfTheStatusIcons) {
    std::string name;
    for (int i = 0; i < 80; i++) name += "\xe8\xa7\x86";  // U+89C6
    writeFileAtomic(mVideos + "/" + name + ".mp4", "");
    PlayerWindow& window = *openPlayer();
    const SDL_Rect icons = {1139, 15, 141, 50}, beforeIcons = {1000, 15, 139, 50};
    drawFrame(window);
    const std::vector<Uint32> shortIcons = pixels(icons), shortBefore = pixels(beforeIcons);
    for (int i = 0; i < 5; i++) pressKey(window, KEY_DOWN);  // past x, y, a, b, c
    drawFrame(window);
    EXPECT_TRUE(pixels(icons) == shortIcons);
    EXPECT_FALSE(pixels(beforeIcons) == shortBefore) << "the name uses the room up to them";
}

// Playing x/x1.mp4, then browsing into y: play-on stays in x.
TEST_F(PlayerWindowTest, PlayOnWalksTheFolderThatIsPlaying) {
    PlayerWindow& window = *openPlayer();
    pressKey(window, KEY_A);  // into x: "..", x1, x2
    playEntry(window, 1);
    ASSERT_TRUE(started("/x/x1.mp4"));
    pressKey(window, KEY_B);  // back up
    pressKey(window, KEY_DOWN);
    pressKey(window, KEY_A);  // into y
    reportStatus("completed");
    ASSERT_TRUE(waitQueued(EVENT_PLAY_COMPLETE));
    pressKey(window, KEY_NONE);
    EXPECT_TRUE(started("/x/x2.mp4"));
}

// Whatever the decoder reports, the slider stays on its track: a duration
// that drops to 0 is not known, not the last one, and shows no slider.
TEST_F(PlayerWindowTest, ReportedTimesAreClampedBeforeTheSliderIsDrawn) {
    PlayerWindow& window = *openPlayer();
    playEntry(window, 2);
    ASSERT_TRUE(started("/a.mp4"));
    // The bar from its origin to the panel's right edge; the track ends at 1240.
    const SDL_Rect bar = {670, 475, 590, 20}, pastTrack = {1240, 475, 20, 20};
    drawFrame(window);
    const std::vector<Uint32> empty = pixels(bar), emptyPast = pixels(pastTrack);

    const struct { long duration, position; bool slider; } reports[] = {
        {1000, 500, true}, {0, 3000, false}, {1000, 1000, true}, {0, 2147483647, false},
    };
    for (const auto& r : reports) {
        SDL_FlushEvent(SDL_USEREVENT);
        reportStatus("playing", r.duration, r.position);
        ASSERT_TRUE(waitQueued(EVENT_REFRESH));
        drawFrame(window);
        ASSERT_EQ(pixels(bar) != empty, r.slider) << r.duration << " " << r.position;
        ASSERT_TRUE(pixels(pastTrack) == emptyPast) << r.duration << " " << r.position;
    }
}

// The window goes while a folder of the most entries a list takes is being
// read: the loader stops between two entries, having read fewer than there
// are, and its thread is joined with the window.
TEST_F(PlayerWindowTest, GoingWhileAHugeFolderLoadsStopsTheLoaderEarly) {
    const std::string huge = mRoot.path() + "/huge";
    makeDirs(huge);
    for (int i = 0; i < kDirEntryLimit; i++) {
        char name[32];
        snprintf(name, sizeof name, "/v%05d.mp4", i);
        close(open((huge + name).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    }
    gUserPath = huge;
    CaptureStdout capture;
    PlayerWindow* window = new PlayerWindow(nullptr, &mShell);
    window->init();
    delete window;
    const std::string log = capture.finish();
    EXPECT_NE(log.find("loaddir " + huge + ": stopped\n"), std::string::npos);
    const std::string count = "loaddir " + huge + " ";
    const size_t at = log.find(count);
    ASSERT_NE(at, std::string::npos);
    EXPECT_LT(atoi(log.c_str() + at + count.size()), kDirEntryLimit);
    EXPECT_EQ(joinLateThreads(0), 0) << "nothing was left to the late joins";
}
