#include "player/kovani_player.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "player/display_rect.h"
#include "tests/support/recording_shell.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_clock.h"

namespace {

typedef std::vector<std::string> Lines;

std::string echoLine(const std::string& words) {
    return "echo " + words + " > " + shellQuote(devicePath(DEVICE_PATH_PLAYER_CMD));
}

class KovaniPlayerTest : public ::testing::Test {
protected:
    TempDeviceRoot mRoot;
    RecordingShell mShell;
};

}  // namespace

// Each call, the line it runs, in the order given after the kill that makes
// room and the start; the picture's rectangle follows the mode and ratio.
TEST_F(KovaniPlayerTest, CommandLineTable) {
    typedef std::function<void(KovaniPlayer&)> Call;
    auto rect = [](PLAYER_ASPECT_RATIO ratio, bool fullscreen) -> Call {
        return [=](KovaniPlayer& p) {
            gPlayerAspectRatio = ratio;
            setPlayerDisplayRect(fullscreen, &p);
        };
    };
    const struct { Call call; const char* words; } rows[] = {
        {[](KovaniPlayer& p) { EXPECT_EQ(p.play(), 0); }, "play"},
        {[](KovaniPlayer& p) { p.pause(); }, "pause"},
        {[](KovaniPlayer& p) { p.fastForward(); }, "fastforward"},
        {[](KovaniPlayer& p) { p.fastBackward(); }, "rewind"},
        {[](KovaniPlayer& p) { p.switchAudio(1); }, "\"audiotrack 1\""},
        {[](KovaniPlayer& p) { p.setVolume(7); }, "\"volume 7\""},
        {rect(RATIO_DEFAULT, false), "\"win 650 85 610 360\""},
        {rect(RATIO4_3, false), "\"win 715 85 480 360\""},
        {rect(RATIO16_9, false), "\"win 650 93 610 343\""},
        {rect(RATIO_DEFAULT, true), "\"win 0 0 1280 720\""},
        {rect(RATIO4_3, true), "\"win 160 0 960 720\""},
        {rect(RATIO16_9, true), "\"win 0 0 1280 720\""},
    };
    {
        KovaniPlayer player(nullptr, &mShell);
        EXPECT_EQ(player.play(), -1) << "no decoder started";
        player.setUrl("/mnt/SDCARD/a b.mp4");
        ASSERT_EQ(player.prepare(), 0);
        Lines expected = {"killall avworker", "avworker '/mnt/SDCARD/a b.mp4' &"};
        for (const auto& row : rows) {
            row.call(player);
            expected.push_back(echoLine(row.words));
        }
        gPlayerAspectRatio = RATIO_DEFAULT;
        ASSERT_TRUE(player.waitIdle(10000));
        EXPECT_EQ(mShell.lines(), expected);
    }
    EXPECT_EQ(mShell.lines().back(), "killall avworker") << "no decoder outlives its client";
}

// Three quick starts run the last only; the running one is cut short.
TEST_F(KovaniPlayerTest, AStartSupersededBeforeItRanIsSkipped) {
    KovaniPlayer player(nullptr, &mShell);
    mShell.holdStarts(true);
    for (const char* url : {"/v/a.mp4", "/v/b.mp4", "/v/c.mp4"}) {
        player.setUrl(url);
        player.prepare();
        player.play();
        if (url[3] == 'a') {
            ASSERT_TRUE(mShell.waitForLines(2));  // a's start is held
        }
    }
    mShell.holdStarts(false);
    ASSERT_TRUE(player.waitIdle(10000));
    EXPECT_EQ(mShell.lines(), (Lines{"killall avworker", "avworker /v/a.mp4 &", "killall avworker",
                                     "avworker /v/c.mp4 &", echoLine("play")}));
}

// The owner may act on a completion the moment it hears of it, while the
// watcher is still inside its report: the next video's completion, even as
// its first report, counts again; one of a run since stopped counts never.
// The client then goes while its worker waits after a start.
TEST_F(KovaniPlayerTest, EachRunsCompletionIsActedOnOnce) {
    struct ActingHandler : KovaniPlayerHandler {
        void onPlayComplete() override {
            heard++;
            if (act && player->takeCompletion()) {
                taken++;
                player->setUrl(("/v/" + std::to_string(taken) + ".mp4").c_str());
                player->prepare();
            }
        }
        void onSeekComplete() override {}
        KovaniPlayer* player = nullptr;
        bool act = true;
        int heard = 0, taken = 0;
    } handler;
    auto player = std::make_unique<KovaniPlayer>(&handler, &mShell);
    handler.player = player.get();
    player->setUrl("/v/0.mp4");
    player->prepare();
    for (int i = 0; i < 3; i++) player->playNotifyer(true, 500, 500, 0, 0);
    EXPECT_EQ(handler.taken, 3) << "each completion-only video plays on";

    handler.act = false;
    player->playNotifyer(true, 500, 500, 0, 0);
    player->playNotifyer(true, 500, 500, 0, 0);
    EXPECT_EQ(handler.heard, 4) << "a completion is announced once";
    player->stop();  // R came first
    EXPECT_FALSE(player->takeCompletion()) << "a stopped run's completion plays nothing on";

    player->setUrl("/v/last.mp4");
    player->prepare();
    ASSERT_TRUE(mShell.waitForLine("avworker /v/last.mp4 &"));
    player.reset();  // during the start's wait
    EXPECT_EQ(mShell.lines().back(), "killall avworker");
    EXPECT_EQ(mShell.findDecoder(), -1) << "no decoder outlives its client";
}

// The real shell and processes: a hostile file name arrives intact; a
// command nobody can take is killed after its limit and the next one goes
// through; a decoder that ignores SIGTERM and is stopped still goes.
TEST_F(KovaniPlayerTest, TheRealShellStartsCommandsAndEndsTheDecoder) {
    TestClock clock;
    const std::string work = mRoot.path() + "/work", oldPath = getenv("PATH") ? getenv("PATH") : "";
    makeDirs(work);
    makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
    char oldCwd[4096];
    ASSERT_TRUE(getcwd(oldCwd, sizeof oldCwd) && chdir(work.c_str()) == 0);
    setenv("PATH", (KOVANI_TEST_DECODER_DIR ":" + oldPath).c_str(), 1);

    const std::string name =
        work + "/a\"b $HOME `touch pwned1`; touch pwned2 it's\nnew $(touch pwned3) ignores-term *.mp4";
    const std::string cmd = mRoot.at(DEVICE_PATH_PLAYER_CMD);
    {
        KovaniPlayer player(nullptr);
        // Time moves in small steps: a real shell line must not look hung.
        const auto idle = [&] { return player.waitIdle(0); };
        player.setUrl(name.c_str());
        player.prepare();
        EXPECT_EQ(player.play(), 0);
        // The clock stands still until the real decoder is up.
        for (int i = 0; i < 1000 && !fileExists(work + "/avworker.args"); i++) usleep(10 * 1000);
        ASSERT_TRUE(clock.advanceUntil(idle, 5));
        EXPECT_EQ(readFile(work + "/avworker.args"), name + '\0') << "one argument, unchanged";
        const int decoder = check_process_exist("avworker");
        EXPECT_GT(decoder, 0);
        EXPECT_EQ(readFile(cmd), "play\n");

        ASSERT_EQ(mkfifo((cmd + ".fifo").c_str(), 0644), 0);
        ASSERT_EQ(rename((cmd + ".fifo").c_str(), cmd.c_str()), 0);
        player.pause();
        ASSERT_TRUE(clock.advanceUntil(idle, 5));
        unlink(cmd.c_str());
        player.fastForward();
        ASSERT_TRUE(clock.advanceUntil(idle, 5));
        EXPECT_EQ(readFile(cmd), "fastforward\n") << "the command after the stuck one went through";

        unlink((work + "/avworker.args").c_str());
        kill(decoder, SIGSTOP);
        player.stop();
        ASSERT_TRUE(clock.advanceUntil(idle, 5));
        EXPECT_EQ(check_process_exist("avworker"), -1);
    }
    EXPECT_TRUE(std::filesystem::is_empty(work)) << "no stray files";
    setenv("PATH", oldPath.c_str(), 1);
    (void)chdir(oldCwd);
}
