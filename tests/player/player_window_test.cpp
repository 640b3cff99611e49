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
#include "tests/support/shifted_clock.h"
#include "tests/support/temp_dir.h"
#include "toolkit/dialog_window.h"
#include "toolkit/dir_browser.h"
#include "toolkit/input.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"

namespace {

// A player window that counts the frames it draws, and may act after each.
class CountingPlayer : public PlayerWindow {
public:
    using PlayerWindow::PlayerWindow;
    int draw() override {
        mDraws++;
        const int result = PlayerWindow::draw();
        if (mAfterDraw) mAfterDraw();
        return result;
    }
    int mDraws = 0;
    std::function<void()> mAfterDraw;
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
        setClockSource(&mClock);
    }
    void TearDown() override {
        for (KovaniWindow* w : mWindows) delete w;
        mWindows.clear();
        setClockSource(nullptr);
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
    // A player window, loaded and at the bottom of the window list.
    template <class Window = PlayerWindow>
    Window* openPlayer() {
        Window* window = new Window(nullptr, &mShell);
        mWindows.push_back(window);
        window->init();
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

// A decoder left by a killed run is stopped at start, and one at exit too.
TEST_F(PlayerWindowTest, LeftoverDecodersAreStoppedAtStartAndAtExit) {
    mShell.setDecoder(true);
    PlayerWindow& window = *openPlayer();
    ASSERT_TRUE(mShell.waitForLines(1));
    ASSERT_TRUE(mShell.waitForStopSeen());
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

// After the last video ends, or L on the first, the file stands stopped
// without its mark; A or Start starts it again, and its row shows the mark.
TEST_F(PlayerWindowTest, AStoppedFileStartsAgainWithItsPlayingMark) {
    const struct { const char* file; int row, stop, restart; } cases[] = {
        {"/c.avi", 4, EVENT_PLAY_COMPLETE, KEY_A},
        {"/a.mp4", 2, KEY_HOTKEY1, KEY_START},
    };
    for (const auto& c : cases) {
        PlayerWindow* window = openPlayer();
        for (int i = 0; i < c.row; i++) pressKey(*window, KEY_DOWN);
        const SDL_Rect mark = {560, 80 + c.row * 96 + 30, 36, 36};
        drawFrame(*window);
        const std::vector<Uint32> unmarked = pixels(mark);
        pressKey(*window, KEY_A);
        ASSERT_TRUE(started(c.file));
        if (c.stop == EVENT_PLAY_COMPLETE) {
            reportStatus("completed", 9000, 9000);
            ASSERT_TRUE(waitQueued(EVENT_PLAY_COMPLETE));
        }
        pressKey(*window, c.stop == EVENT_PLAY_COMPLETE ? KEY_NONE : c.stop);
        drawFrame(*window);
        EXPECT_FALSE(window->isPlaying()) << c.file;
        EXPECT_TRUE(pixels(mark) == unmarked) << c.file << ": stopped, no mark";

        const size_t lines = mShell.lines().size();
        mClock.mMonotonicShift += 250;  // not the same choice made twice
        pressKey(*window, c.restart);
        drawFrame(*window);
        EXPECT_TRUE(window->isPlaying()) << c.file;
        EXPECT_FALSE(pixels(mark) == unmarked) << c.file << ": the playing mark";
        ASSERT_TRUE(mShell.waitForLines(lines + 2));
        EXPECT_TRUE(started(c.file));
        mWindows.pop_back();
        delete window;
    }
}

// A start whose decoder never comes up (missing, or quitting on a file it
// rejects) ends as a failed play: the idle picture, no mark, one log line;
// Start tries the same file again.
TEST_F(PlayerWindowTest, AStartWhoseDecoderNeverComesUpEndsAsAFailedPlay) {
    PlayerWindow& window = *openPlayer();
    pressKeys(window, {KEY_DOWN, KEY_DOWN});
    const SDL_Rect all = {0, 0, 1280, 720};
    drawFrame(window);
    const std::vector<Uint32> idle = pixels(all);
    mShell.failStarts(true);
    CaptureStdout capture;
    pressKey(window, KEY_A);
    EXPECT_TRUE(started("/a.mp4"));
    ASSERT_TRUE(waitQueued(EVENT_DECODER_EXIT));
    pressKey(window, KEY_NONE);
    for (int i = 0; i < 3; i++) window.refresh();
    drawFrame(window);
    const std::string log = capture.finish();
    EXPECT_FALSE(window.isPlaying());
    EXPECT_TRUE(pixels(all) == idle) << "the idle picture, no mark";
    size_t lines = 0;
    for (size_t at = 0; (at = log.find("did not come up", at)) != std::string::npos; at++) lines++;
    EXPECT_EQ(lines, 1u) << log;

    mShell.failStarts(false);
    const size_t shellLines = mShell.lines().size();
    pressKey(window, KEY_START);  // tried again, it starts
    EXPECT_TRUE(window.isPlaying());
    EXPECT_TRUE(mShell.waitForLines(shellLines + 2));
}

// The title line names the entry under the cursor, also when a folder
// change leaves the cursor on the same index.
TEST_F(PlayerWindowTest, TheTitleLineFollowsAFolderChange) {
    PlayerWindow& window = *openPlayer();
    const SDL_Rect title = {90, 15, 500, 50};
    pressKey(window, KEY_NONE);  // the cursor on x
    drawFrame(window);
    const std::vector<Uint32> x = pixels(title);
    pressKey(window, KEY_A);  // into x, the cursor on ".."
    drawFrame(window);
    EXPECT_FALSE(pixels(title) == x) << "inside x";
    pressKey(window, KEY_B);  // back up, the cursor on x
    drawFrame(window);
    EXPECT_TRUE(pixels(title) == x) << "back up";
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
    long nowMs() override { return monotonicMs(); }
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
    // Pixels of `area` on screen that differ from what `redraw` draws into
    // a frame of its own (text blends a little).
    int differFrom(SDL_Rect area, const std::function<void()>& redraw) {
        const std::vector<Uint32> shown = pixels(area);
        SDL_SetRenderTarget(gRenderer, mCheck);
        redraw();
        const std::vector<Uint32> full = pixels(area);
        SDL_SetRenderTarget(gRenderer, mFrame);
        int differ = 0;
        for (size_t i = 0; i < shown.size(); i++)
            for (int shift = 0; shift < 32; shift += 8)
                if (abs(int((shown[i] >> shift) & 0xFF) - int((full[i] >> shift) & 0xFF)) > 8) {
                    differ++;
                    break;
                }
        return differ;
    }
    // The frame on screen against a full redraw of the top window.
    void expectUpToDate(const std::string& name) {
        const int differ = differFrom({0, 0, 1280, 720}, [] {
            PlayerWindow* player = dynamic_cast<PlayerWindow*>(gWinList->back());
            if (player) player->setComposeStatic(false);  // composed parts drawn anew too
            gWinList->back()->draw();
            if (player) player->setComposeStatic(true);
        });
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

// The wall clock steps an hour back, then forward (the network sets it, or
// the user): under the loop's own clock keys are still handled, frames
// still drawn and chosen videos still start.
TEST_F(PlayerLoopTest, SteppingTheWallClockStopsNeitherKeysNorFrames) {
    setFrameClock(nullptr);
    CountingPlayer* player = openPlayer<CountingPlayer>();
    const long hour = 3600000;
    const struct { long wallStep; std::vector<int> keys; const char* starts; } steps[] = {
        {0, {KEY_A}, "/a.mp4"},
        {-hour, {KEY_DOWN, KEY_A}, "/b.mkv"},
        {2 * hour, {KEY_DOWN, KEY_A}, "/c.avi"},
    };
    const size_t n = sizeof steps / sizeof steps[0];
    size_t next = 0;
    // After each frame that follows the last step's keys the next step: it
    // checks the last one's start, then steps the wall clock; the monotonic
    // one moves past the guard against a choice made twice.
    player->mAfterDraw = [&] {
        SDL_PumpEvents();
        if (next > n || SDL_HasEvent(SDL_USEREVENT)) return;
        if (next > 0) {
            EXPECT_TRUE(started(steps[next - 1].starts)) << steps[next - 1].starts;
        }
        if (next == n) {
            next++;
            return pushCode(0, SDL_QUIT);
        }
        mClock.mWallShift += steps[next].wallStep;
        mClock.mMonotonicShift += 250;
        for (int key : steps[next].keys) pushCode(key);
        next++;
    };
    // A loop that waits for a wall-clock hour is ended from outside.
    const SDL_TimerID deadline = SDL_AddTimer(20000, [](Uint32, void*) -> Uint32 {
        pushCode(0, SDL_QUIT);
        return 0;
    }, nullptr);
    runWindows(mWindows);
    SDL_RemoveTimer(deadline);
    EXPECT_EQ(next, n + 1) << "every step had its frame";
}

// Back in the top folder opens the quit question over a picture of the
// player window drawn for it, whatever a present left on the screen.
TEST_F(PlayerLoopTest, TheQuitQuestionOpensOverThePlayerWindow) {
    openPlayer();
    mScript.mSteps.push_back([this] {
        clear(200, 0, 40);  // what a present may leave behind
        pushCode(KEY_B);
    });
    mScript.mSteps.push_back([this] {
        EXPECT_NE(dynamic_cast<DialogWindow*>(gWinList->back()), nullptr);
        // Above the question's panel: the player window under the dimming.
        const int differ = differFrom({0, 0, 1280, 100}, [] {
            gWinList->front()->draw();
            if (gBackgroundFloat) gBackgroundFloat->render(nullptr, nullptr, false, nullptr);
        });
        EXPECT_LE(differ, 50) << "pixels that differ from the player window";
        pushCode(0, SDL_QUIT);
    });
    runWindows(mWindows);
    EXPECT_EQ(mScript.mNext, mScript.mSteps.size());
}
