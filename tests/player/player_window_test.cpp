#include "player/player_window.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "player/app_options.h"
#include "player/player_lang.h"
#include "player/skin.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/recording_shell.h"
#include "tests/support/sdl_events.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/dir_browser.h"
#include "toolkit/input.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"

namespace {

// A player window that counts the frames it draws.
class CountingPlayer : public PlayerWindow {
public:
    using PlayerWindow::PlayerWindow;
    int draw() override {
        mDraws++;
        return PlayerWindow::draw();
    }
    int mDraws = 0;
};

// The player window over the staged skin, videos a.mp4, b.mkv, c.avi, x/, y/ and
// the stand-in shell; frames go to a texture that keeps alpha, as the UI layer.
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
        SDL_Delay(250);  // a second choice within 200 ms would count as a repeat
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
    void reportStatus(const char* state, long duration, long position) {
        writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_STATUS),
                        std::string("{\"status\":\"") + state + "\",\"duration\":" + std::to_string(duration) +
                            ",\"position\":" + std::to_string(position) + "}");
    }

    SDL_Texture* mFrame = nullptr;  // owned: where the window draws
    TempDeviceRoot mRoot;
    RecordingShell mShell;
    std::vector<KovaniWindow*> mWindows;  // owned; the stack the window pushes popups on
    std::string mVideos, mOldCwd;
};

}  // namespace

// A video that ends under the settings popup plays on when the popup
// closes; the window then goes while its decoder client still reports.
TEST_F(PlayerWindowTest, ACompletionUnderThePopupPlaysOnAndTheWindowCanGoAnyTime) {
    PlayerWindow* window = openPlayer();
    playEntry(*window, 2);
    ASSERT_TRUE(started("/a.mp4"));

    pressKey(*window, KEY_MENU_KEY);
    ASSERT_EQ(mWindows.size(), 2u);
    reportStatus("completed", 9000, 9000);
    ASSERT_TRUE(waitQueued(EVENT_PLAY_COMPLETE));
    KovaniWindow* popup = mWindows.back();
    for (int i = 0; i < 8 && queued(EVENT_PLAY_COMPLETE); i++) popup->eventHandling();
    EXPECT_EQ(lastStarted(), mVideos + "/a.mp4") << "nothing starts under the popup";

    delete popup;
    mWindows.pop_back();
    window->refresh();
    EXPECT_TRUE(started("/b.mkv"));
    EXPECT_TRUE(window->isPlaying());

    reportStatus("playing", 9000, 9000);
    SDL_Delay(600);
    reportStatus("completed", 9000, 9000);
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
    mShell.setDecoder(false);  // it crashed
    ASSERT_TRUE(waitQueued(EVENT_DECODER_EXIT));
    pressKey(window, KEY_NONE);
    EXPECT_FALSE(window.isPlaying());

    const size_t lines = mShell.lines().size();
    pressKey(window, KEY_START);
    EXPECT_TRUE(window.isPlaying());
    ASSERT_TRUE(mShell.waitForLines(lines + 2));
    EXPECT_TRUE(started("/a.mp4"));
}

// A decoder left by a killed run is stopped at start, and one at exit too.
TEST_F(PlayerWindowTest, LeftoverDecodersAreStoppedAtStartAndAtExit) {
    mShell.setDecoder(true);
    PlayerWindow& window = *openPlayer();
    ASSERT_TRUE(mShell.waitForLines(1));
    EXPECT_LT(mShell.findDecoder(), 0);
    mShell.setDecoder(true);
    window.quit();
    ASSERT_TRUE(mShell.waitForLines(2));
    EXPECT_LT(mShell.findDecoder(), 0);
    EXPECT_EQ(mShell.lines(), (std::vector<std::string>{"killall avworker", "killall avworker"}));

    // Without one a start runs no shell line; the exit still stops.
    PlayerWindow& second = *openPlayer();
    second.quit();
    ASSERT_TRUE(mShell.waitForLines(3));
    EXPECT_EQ(mShell.lines().size(), 3u);
}

// A long name in the title line ends short of the status icons (x 1139 on).
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
    reportStatus("completed", 9000, 9000);
    ASSERT_TRUE(waitQueued(EVENT_PLAY_COMPLETE));
    pressKey(window, KEY_NONE);
    EXPECT_TRUE(started("/x/x2.mp4"));
    pressKey(window, KEY_HOTKEY1);  // L: the one before, still in x
    EXPECT_TRUE(started("/x/x1.mp4"));
}

// The last video ends: the window shows stopped and A starts it again.
TEST_F(PlayerWindowTest, TheLastVideoEndsAndTheSameFileStartsAgain) {
    PlayerWindow& window = *openPlayer();
    playEntry(window, 4);
    ASSERT_TRUE(started("/c.avi"));
    reportStatus("completed", 9000, 9000);
    ASSERT_TRUE(waitQueued(EVENT_PLAY_COMPLETE));
    pressKey(window, KEY_NONE);
    EXPECT_FALSE(window.isPlaying());

    const size_t lines = mShell.lines().size();
    SDL_Delay(250);
    pressKey(window, KEY_A);
    EXPECT_TRUE(window.isPlaying());
    ASSERT_TRUE(mShell.waitForLines(lines + 2));
    EXPECT_TRUE(started("/c.avi"));
}

// The slider stays on its track; a duration of 0 is unknown and shows none.
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

// The loader's word asks for a frame at once, and that frame shows a row for
// each of the folder's five entries (x, y, a.mp4, b.mkv, c.avi) and none
// beyond.
TEST_F(PlayerWindowTest, TheLoadersWordBringsAFrameShowingTheFolderRows) {
    PlayerWindow* window = openPlayer();
    ASSERT_TRUE(queued(EVENT_FOLDER_READ));
    EXPECT_EQ(window->eventHandling(), (int)WINDOW_SHOW_NOW);
    // A strip right of the labels, through every row's image.
    const SDL_Rect strip = {500, 80, 4, 580};
    clear(0, 0, 0);
    gBackground->render(nullptr, nullptr, false, nullptr);
    const std::vector<Uint32> background = pixels(strip);
    drawFrame(*window);
    const std::vector<Uint32> shown = pixels(strip);
    for (int row = 0; row < 6; row++) {
        const size_t middle = size_t((row * 96 + 48) * strip.w);
        EXPECT_EQ(shown[middle] != background[middle], row < 5) << "row " << row;
    }
}

// The pictures of screens not shown yet wait until their screen opens: the
// quit question's mask, the fullscreen panel.
TEST_F(PlayerWindowTest, PicturesOfAScreenAreLoadedWhenItOpens) {
    PlayerWindow& window = *openPlayer();
    EXPECT_EQ(gBackgroundFloat, nullptr) << "no popup yet";
    pressKey(window, KEY_B);  // back in the top folder: the quit question
    ASSERT_EQ(mWindows.size(), 2u);
    EXPECT_NE(gBackgroundFloat, nullptr);
    delete mWindows.back();
    mWindows.pop_back();

    playEntry(window, 2);
    ASSERT_TRUE(started("/a.mp4"));
    pressKeys(window, {KEY_SELECT_COIN, KEY_RIGHT});
    ASSERT_TRUE(window.isFullscreen());
    drawFrame(window);
    EXPECT_GT(pixel(30, 650).a, 0) << "the panel's picture, left of its times";
}

// What is decoded ahead is exactly what the first screen loads: nothing for
// nothing, nothing of that screen decoded apart.
TEST_F(PlayerWindowTest, TheFirstScreenTakesEveryPictureDecodedAheadAndNoOther) {
    uninit_skin();
    CaptureStdout log;
    preload_skin();
    init_skin();
    mWindows.push_back(new PlayerWindow(nullptr, &mShell));
    end_skin_preload();
    const std::string text = log.finish();
    EXPECT_EQ(text.find("image preload"), std::string::npos) << text;
}

// Going while a folder of kDirEntryLimit entries loads stops and joins the loader.
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
    showFirstFrame(*window);  // the read starts
    // The loader holds the folder open while it reads.
    const auto reading = [&huge] {
        for (const auto& fd : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code ec;
            if (std::filesystem::read_symlink(fd.path(), ec) == huge) return true;
        }
        return false;
    };
    for (int i = 0; i < 500 && !reading(); i++) SDL_Delay(10);
    delete window;
    const std::string log = capture.finish();
    EXPECT_NE(log.find("loaddir " + huge + ": stopped\n"), std::string::npos);
    const std::string count = "loaddir " + huge + " ";
    const size_t at = log.find(count);
    ASSERT_NE(at, std::string::npos);
    EXPECT_LT(atoi(log.c_str() + at + count.size()), kDirEntryLimit);
    EXPECT_EQ(joinLateThreads(0), 0) << "nothing was left to the late joins";
}

namespace {

void pushCode(int code, Uint32 type = SDL_USEREVENT) {
    SDL_Event e = {};
    e.type = type;
    e.user.code = code;
    SDL_PushEvent(&e);
}

// Real time; each time the loop goes idle the next step runs.
class IdleScript : public FrameClock {
public:
    long nowMs() override { return systemms(); }
    void waitEventMs(long ms) override {
        SDL_PumpEvents();
        if (ms > 100 && !SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT) && mNext < mSteps.size()) mSteps[mNext++]();
        SDL_WaitEventTimeout(nullptr, (int)SDL_min(ms, 20L));
    }
    std::vector<std::function<void()>> mSteps;
    size_t mNext = 0;
};

// The player under the real main loop, in a folder of a.mp4, b.mkv and c.avi.
class PlayerLoopTest : public PlayerWindowTest {
protected:
    void SetUp() override {
        PlayerWindowTest::SetUp();
        for (const char* dir : {"/x", "/y"}) std::filesystem::remove_all(mVideos + dir);
        clearQuitRequest();
        mCheck = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 1280, 720);
        setFrameClock(&mScript);
    }
    void TearDown() override {
        setFrameClock(nullptr);
        clearQuitRequest();
        SDL_DestroyTexture(mCheck);
        PlayerWindowTest::TearDown();
    }
    // The frame on screen against a full redraw of the top window (text blends a little).
    void expectUpToDate(const std::string& name) {
        const SDL_Rect all = {0, 0, 1280, 720};
        const std::vector<Uint32> shown = pixels(all);
        SDL_SetRenderTarget(gRenderer, mCheck);
        PlayerWindow* player = dynamic_cast<PlayerWindow*>(gWinList->back());
        if (player) player->setComposeStatic(false);  // composed parts drawn anew too
        gWinList->back()->draw();
        if (player) player->setComposeStatic(true);
        const std::vector<Uint32> full = pixels(all);
        SDL_SetRenderTarget(gRenderer, mFrame);
        int differ = 0;
        for (size_t i = 0; i < shown.size(); i++)
            for (int shift = 0; shift < 32; shift += 8)
                if (abs(int((shown[i] >> shift) & 0xFF) - int((full[i] >> shift) & 0xFF)) > 8) {
                    differ++;
                    break;
                }
        mChecked++;
        EXPECT_LE(differ, 50) << name << ": pixels that differ from a full redraw";
    }
    // Checks the screen once the loop is idle, then queues `codes` (0: quit).
    void step(const std::string& name, std::vector<int> codes) {
        mScript.mSteps.push_back([this, name, codes] {
            expectUpToDate(name);
            for (int code : codes) code ? pushCode(code) : pushCode(0, SDL_QUIT);
        });
    }

    SDL_Texture* mCheck = nullptr;  // owned
    IdleScript mScript;
    size_t mChecked = 0;
};

}  // namespace

// After each step of a session, once idle, the screen equals a full redraw.
TEST_F(PlayerLoopTest, EveryIdleScreenEqualsAFullRedraw) {
    openPlayer();
    step("browse", {KEY_DOWN});
    step("cursor-moved", {KEY_A});
    step("playing", {KEY_START});
    step("paused", {KEY_START, KEY_SELECT_COIN});
    step("fullscreen", {KEY_RIGHT});
    step("fullscreen-panel", {});  // the panel hides by itself 1.5 s later
    step("panel-hidden", {KEY_B, KEY_MENU_KEY});
    step("settings", {KEY_A});
    step("quit-question", {KEY_B});
    step("back", {0});
    runWindows(mWindows);
    EXPECT_EQ(mChecked, mScript.mSteps.size()) << "every step was reached";
}

// A report draws a frame when the position text changes, none when it stays.
TEST_F(PlayerLoopTest, AReportDrawsAFrameOnlyWhenThePositionTextChanges) {
    CountingPlayer* player = openPlayer<CountingPlayer>();
    const struct { int positionMs, frames; } reports[] = {{1000, 1}, {1400, 0}, {2000, 1}};  // 0:01, 0:01, 0:02
    int before = 0;
    mScript.mSteps.push_back([] { pushCode(KEY_A); });
    for (size_t i = 0; i <= 3; i++)
        mScript.mSteps.push_back([&, i] {
            if (i > 0) {
                EXPECT_EQ(player->mDraws - before, reports[i - 1].frames) << reports[i - 1].positionMs;
            }
            // Reports written before the decoder's start count as stale.
            for (int k = 0; k < 500 && lastStarted().empty(); k++) SDL_Delay(10);
            if (i == 3) return pushCode(0, SDL_QUIT);
            before = player->mDraws;
            reportStatus("playing", 3600000, reports[i].positionMs);
            EXPECT_TRUE(waitQueued(EVENT_REFRESH)) << reports[i].positionMs;
        });
    runWindows(mWindows);
    EXPECT_EQ(mScript.mNext, mScript.mSteps.size());
}
