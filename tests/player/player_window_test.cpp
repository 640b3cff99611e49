#include "player/player_window.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "player/player_setting_window.h"
#include "tests/player/player_window_fixture.h"
#include "tests/support/capture_stdout.h"
#include "toolkit/dialog_window.h"
#include "toolkit/dir_browser.h"
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

// Playing x/x1.mp4, then browsing into y: y's second row shows no playing
// mark, and play-on stays in x.
TEST_F(PlayerWindowTest, PlayOnWalksTheFolderThatIsPlaying) {
    PlayerWindow& window = *openPlayer();
    const SDL_Rect mark = {560, 80 + 96 + 30, 36, 36};
    pressKey(window, KEY_A);  // into x: "..", x1, x2
    drawFrame(window);
    const std::vector<Uint32> unmarked = pixels(mark);
    playEntry(window, 1);
    ASSERT_TRUE(started("/x/x1.mp4"));
    pressKey(window, KEY_B);  // back up
    pressKey(window, KEY_DOWN);
    pressKey(window, KEY_A);  // into y: "..", y1, y2
    drawFrame(window);
    EXPECT_TRUE(pixels(mark) == unmarked) << "no mark on y1";
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

// The title line names the entry under the cursor, the window's own name on
// "..", also when a folder change leaves the cursor on the same index.
TEST_F(PlayerWindowTest, TheTitleLineFollowsAFolderChange) {
    PlayerWindow& window = *openPlayer();
    const SDL_Rect title = {90, 15, 500, 50};
    drawFrame(window);
    const std::vector<Uint32> own = pixels(title);  // no entry chosen yet
    pressKey(window, KEY_NONE);  // the cursor on x
    drawFrame(window);
    const std::vector<Uint32> x = pixels(title);
    pressKey(window, KEY_A);  // into x, the cursor on ".."
    drawFrame(window);
    EXPECT_TRUE(pixels(title) == own) << "inside x, on \"..\"";
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

// The loader's word asks for a frame at once, and that frame shows a row for
// each of the folder's five entries (x, y, a.mp4, b.mkv, c.avi) and none
// beyond; with ten more videos and the player started on b.mkv, six rows
// from b.mkv on, and b.mkv plays.
TEST_F(PlayerWindowTest, TheLoadersWordBringsAFrameShowingTheFolderRows) {
    const struct { int more; const char* file; int rows; } cases[] = {{0, nullptr, 5}, {10, "/b.mkv", 6}};
    for (const auto& c : cases) {
        for (int i = 0; i < c.more; i++) writeFileAtomic(mVideos + "/m" + std::to_string(i) + ".mp4", "");
        gUserFile = c.file ? mVideos + c.file : "";
        PlayerWindow* window = openPlayer();
        ASSERT_TRUE(queued(EVENT_FOLDER_READ));
        EXPECT_EQ(window->eventHandling(), (int)WINDOW_SHOW_NOW);
        // A strip right of the labels, through every row's image and the bar below.
        const SDL_Rect strip = {500, 80, 4, 640};
        clear(0, 0, 0);
        gBackground->render(nullptr, nullptr, false, nullptr);
        const std::vector<Uint32> background = pixels(strip);
        drawFrame(*window);
        const std::vector<Uint32> shown = pixels(strip);
        for (int row = 0; row < 7; row++) {
            const size_t middle = size_t((row * 96 + 48) * strip.w);
            EXPECT_EQ(shown[middle] != background[middle], row < c.rows) << "row " << row;
        }
        pressKey(*window, KEY_NONE);  // the request to play the file named
        EXPECT_TRUE(c.file ? started(c.file) : !window->isPlaying());
    }
}

// The pictures of screens not shown yet wait until their screen opens: the
// quit question's mask. (The fullscreen panel's show in the session's screens.)
TEST_F(PlayerWindowTest, PicturesOfAScreenAreLoadedWhenItOpens) {
    PlayerWindow& window = *openPlayer();
    EXPECT_EQ(gBackgroundFloat, nullptr) << "no popup yet";
    pressKey(window, KEY_B);  // back in the top folder: the quit question
    ASSERT_EQ(gPopupList.size(), 1u);
    KovaniWindow* question = gPopupList.back();
    gPopupList.clear();
    question->init();  // as the loop opens it
    EXPECT_NE(gBackgroundFloat, nullptr);
    delete question;
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

// A report draws a frame when the position text changes, none when it stays.
TEST_F(PlayerLoopTest, AReportDrawsAFrameOnlyWhenThePositionTextChanges) {
    CountingPlayer* player = openPlayer<CountingPlayer>();
    const struct { int positionMs, frames; } reports[] = {{1000, 1}, {1400, 0}, {2000, 1}};  // 0:01, 0:01, 0:02
    int before = 0;
    step(nullptr, {KEY_DOWN, KEY_DOWN, KEY_A});  // a.mp4
    for (size_t i = 0; i <= 3; i++)
        step([&, i] {
            if (i > 0) {
                EXPECT_EQ(player->mDraws - before, reports[i - 1].frames) << reports[i - 1].positionMs;
            }
            // Reports written before the decoder's start count as stale.
            for (int k = 0; k < 500 && lastStarted().empty(); k++) SDL_Delay(10);
            if (i == 3) return pushCode(0, SDL_QUIT);
            before = player->mDraws;
            reportStatus("playing", 3600000, reports[i].positionMs);
            EXPECT_TRUE(waitQueued(EVENT_REFRESH)) << reports[i].positionMs;
        }, {});
    run();
}

// Keys while a video plays, each with the decoder commands it sends; then
// the quit question, whose OK stops the decoder and keeps the folder.
TEST_F(PlayerWindowTest, KeysTable) {
    PlayerWindow& window = *openPlayer();
    const struct {
        int key;
        std::vector<std::string> sent;
        bool playing, fullscreen;
        const char* file;
    } rows[] = {
        {KEY_SELECT_COIN, {}, false, false, nullptr},
        {KEY_START, {"win 650 85 610 360", "play"}, true, false, "/a.mp4"},
        {KEY_A, {"pause"}, false, false, "/a.mp4"},
        {KEY_A, {"play"}, true, false, "/a.mp4"},
        {KEY_START, {"pause"}, false, false, "/a.mp4"},
        {KEY_RIGHT, {}, false, false, "/a.mp4"},
        {KEY_START, {"play"}, true, false, "/a.mp4"},
        {KEY_RIGHT, {"fastforward"}, true, false, "/a.mp4"},
        {KEY_LEFT, {"rewind"}, true, false, "/a.mp4"},
        {KEY_Y, {}, true, false, "/a.mp4"},
        {KEY_SELECT_COIN, {"win 0 0 1280 720"}, true, true, "/a.mp4"},
        {KEY_A, {}, true, true, "/a.mp4"},
        {KEY_HOTKEY2, {"win 0 0 1280 720", "play"}, true, true, "/b.mkv"},
        {KEY_B, {"win 650 85 610 360"}, true, false, "/b.mkv"},
        {KEY_HOTKEY1, {"win 650 85 610 360", "play"}, true, false, "/a.mp4"},
        {KEY_HOTKEY1, {}, false, false, "/a.mp4"},
    };
    for (int i = 0; i < 2; i++) pressKey(window, KEY_DOWN);  // x, y, a.mp4
    size_t before = 0;
    for (const auto& row : rows) {
        if (row.key == KEY_A) mClock.mMonotonicShift += 250;  // a second choice within 200 ms would count as a repeat
        pressKey(window, row.key);
        const size_t want = before + row.sent.size();
        for (int i = 0; i < 1000 && commands().size() < want; i++) SDL_Delay(10);
        const std::vector<std::string> all = commands();
        EXPECT_EQ(std::vector<std::string>(all.begin() + std::min(before, all.size()), all.end()), row.sent)
            << "key " << row.key;
        before = all.size();
        EXPECT_EQ(window.isPlaying(), row.playing) << "key " << row.key;
        EXPECT_EQ(window.isFullscreen(), row.fullscreen) << "key " << row.key;
        if (row.file) {
            EXPECT_TRUE(started(row.file)) << "key " << row.key;
        }
    }

    pressKey(window, KEY_B);  // back in the top folder
    ASSERT_TRUE(gPopupList.size() == 1 || mWindows.size() == 2);
    KovaniWindow* question = gPopupList.empty() ? mWindows.back() : gPopupList.back();
    ASSERT_NE(dynamic_cast<DialogWindow*>(question), nullptr);
    gSavedDir.clear();
    EXPECT_EQ(pressKey(*question, KEY_A), WINDOW_QUIT);
    EXPECT_EQ(gSavedDir, mVideos);
    for (int i = 0; i < 1000 && mShell.lines().back() != "killall avworker"; i++) SDL_Delay(10);
    EXPECT_EQ(mShell.lines().back(), "killall avworker");
    if (!gPopupList.empty()) {
        delete gPopupList.back();
        gPopupList.clear();
    }
}

// The settings popup's rows: UP and DOWN move between Quit, the aspect
// ratio and the audio track, wrapping; LEFT and RIGHT change the focused
// value, the ratio round a circle, the track within its bounds. Closing the
// popup sends what changed, and nothing when nothing did.
TEST_F(PlayerWindowTest, SettingRowsTable) {
    const char* const k43 = "win 715 85 480 360";
    const char* const k169 = "win 650 93 610 343";
    const struct {
        int tracks;
        std::vector<int> keys;
        int ratio, track, result;
        const char* sent;
    } rows[] = {
        {3, {KEY_RIGHT, KEY_LEFT}, RATIO_DEFAULT, 0, -1, nullptr},
        {3, {KEY_DOWN, KEY_RIGHT}, RATIO4_3, 0, -1, k43},
        {3, {KEY_DOWN, KEY_RIGHT, KEY_RIGHT}, RATIO16_9, 0, -1, k169},
        {3, {KEY_DOWN, KEY_RIGHT, KEY_RIGHT, KEY_RIGHT}, RATIO_DEFAULT, 0, -1, nullptr},
        {3, {KEY_DOWN, KEY_LEFT}, RATIO16_9, 0, -1, k169},
        {3, {KEY_DOWN, KEY_LEFT, KEY_LEFT}, RATIO4_3, 0, -1, k43},
        {3, {KEY_DOWN, KEY_DOWN, KEY_DOWN, KEY_DOWN, KEY_RIGHT}, RATIO4_3, 0, -1, k43},
        {3, {KEY_UP, KEY_RIGHT}, RATIO_DEFAULT, 1, -1, "audiotrack 1"},
        {3, {KEY_UP, KEY_RIGHT, KEY_RIGHT, KEY_RIGHT}, RATIO_DEFAULT, 2, -1, "audiotrack 2"},
        {3, {KEY_UP, KEY_RIGHT, KEY_LEFT, KEY_LEFT}, RATIO_DEFAULT, 0, -1, nullptr},
        {1, {KEY_UP, KEY_RIGHT}, RATIO_DEFAULT, 0, -1, nullptr},
        {3, {KEY_A}, RATIO_DEFAULT, 0, WINDOW_CLOSE_LAST, nullptr},
        {3, {KEY_B}, RATIO_DEFAULT, 0, WINDOW_CLOSE, nullptr},
        {3, {KEY_X}, RATIO_DEFAULT, 0, WINDOW_CLOSE, nullptr},
        {3, {KEY_MENU_KEY}, RATIO_DEFAULT, 0, KEY_MENU_KEY, nullptr},
    };
    KovaniPlayer player(nullptr, &mShell);
    player.setUrl("/v/a.mp4");
    ASSERT_EQ(player.prepare(), 0);
    for (const auto& row : rows) {
        const std::string name = std::to_string(row.keys.size()) + " keys from " + std::to_string(row.keys[0]);
        player.infoNotifyer(0, 0, row.tracks);
        gPlayerAspectRatio = RATIO_DEFAULT;
        const size_t before = commands().size();
        {
            PlayerSettingWindow settings(&player, mVideos.c_str(), false);
            int result = 0;
            for (int key : row.keys) result = pressKey(settings, key);
            EXPECT_EQ(result, row.result) << name;
            EXPECT_EQ(gPlayerAspectRatio, row.ratio) << name;
            EXPECT_EQ(gAudioTrack, row.track) << name;
        }
        ASSERT_TRUE(player.waitIdle(10000));
        const std::vector<std::string> all = commands();
        EXPECT_EQ(std::vector<std::string>(all.begin() + before, all.end()),
                  row.sent ? std::vector<std::string>{row.sent} : std::vector<std::string>{})
            << "sent on closing, " << name;
        EXPECT_EQ(gPopupList.size(), row.result == WINDOW_CLOSE_LAST ? 1u : 0u) << "the quit question, " << name;
        for (KovaniWindow* w : gPopupList) delete w;
        gPopupList.clear();
    }
}

namespace {

// Both clocks at mNow, wherever they are read; installed while a guard
// lives. It lives as long as the process, so that no thread of a window the
// test left outlasts it.
class StoppedClock : public ClockSource {
public:
    long monotonicMs() override { return mNow; }
    long wallMs() override { return mNow; }
    std::atomic<long> mNow{5000000};
};
StoppedClock sStoppedClock;

struct StoppedClockInstalled {
    StoppedClockInstalled() { setClockSource(&sStoppedClock); }
    ~StoppedClockInstalled() { setClockSource(nullptr); }
};

}  // namespace

// In fullscreen the panel shows for 1.5 s after the last key that asks for
// it (a seek, shown by the session's screens, or Up or Down).
TEST_F(PlayerWindowTest, TheFullscreenPanelHidesOneAndAHalfSecondsAfterTheLastKey) {
    StoppedClockInstalled installed;
    StoppedClock& clock = sStoppedClock;
    PlayerWindow& window = *openPlayer();
    for (int key : {KEY_DOWN, KEY_DOWN, KEY_A, KEY_SELECT_COIN}) pressKey(window, key);
    ASSERT_TRUE(window.isFullscreen());
    const long pressed = clock.mNow += 60000;
    pressKey(window, KEY_DOWN);
    for (long after : {0L, 1499L, 1500L, 5000L}) {
        clock.mNow = pressed + after;
        drawFrame(window);
        EXPECT_EQ(pixel(100, 650).a != 0, after < 1500) << after << " ms after the key";
    }
}

// The wall clock steps an hour back, then forward (the network sets it, or
// the user): under the loop's own clock keys are still handled, frames
// still drawn and chosen videos still start.
TEST_F(PlayerLoopTest, SteppingTheWallClockStopsNeitherKeysNorFrames) {
    setFrameClock(nullptr);
    for (const char* dir : {"/x", "/y"}) std::filesystem::remove_all(mVideos + dir);
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
    step([this] { clear(200, 0, 40); }, {KEY_B});  // what a present may leave behind
    step([this] {
        EXPECT_NE(dynamic_cast<DialogWindow*>(gWinList->back()), nullptr);
        // Above the question's panel: the player window under the dimming,
        // as a frame of its own shows it.
        const SDL_Rect top = {0, 0, 1280, 100};
        const std::vector<Uint32> shown = pixels(top);
        SDL_Texture* check = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 1280, 720);
        SDL_SetRenderTarget(gRenderer, check);
        gWinList->front()->draw();
        if (gBackgroundFloat) gBackgroundFloat->render(nullptr, nullptr, false, nullptr);
        const std::vector<Uint32> player = pixels(top);
        SDL_SetRenderTarget(gRenderer, mFrame);
        SDL_DestroyTexture(check);
        int differ = 0;
        for (size_t i = 0; i < shown.size(); i++)
            for (int shift = 0; shift < 32; shift += 8)
                if (abs(int((shown[i] >> shift) & 0xFF) - int((player[i] >> shift) & 0xFF)) > 8) {
                    differ++;
                    break;
                }
        EXPECT_LE(differ, 50) << "pixels that differ from the player window";
    }, {0});
    run();
}
