#include "player/kovani_player.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>

#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/recording_shell.h"
#include "tests/support/temp_dir.h"

namespace {

class CountingHandler : public KovaniPlayerHandler {
public:
    void onPlayComplete() override { mCompletions++; }
    void onSeekComplete() override {}
    void onDecoderExit() override { mExits++; }
    std::atomic<int> mCompletions{0};
    std::atomic<int> mExits{0};
};

std::string echoLine(const std::string& words) {
    return "echo " + words + " > " + shellQuote(devicePath(DEVICE_PATH_PLAYER_CMD));
}

class KovaniPlayerTest : public ::testing::Test {
protected:
    TempDeviceRoot mRoot;
    RecordingShell mShell;
    CountingHandler mHandler;
};

}  // namespace

// The calls return at once; the worker runs the lines in the order given,
// starting with the kill that makes room for the new decoder.
TEST_F(KovaniPlayerTest, CommandsReachTheDecoderInTheOrderGiven) {
    {
        KovaniPlayer player(&mHandler, &mShell);
        EXPECT_EQ(player.play(), -1) << "no decoder started";
        player.setUrl("/mnt/SDCARD/a.mp4");
        ASSERT_EQ(player.prepare(), 0);
        EXPECT_EQ(player.play(), 0);
        player.setDisplayRect(650, 85, 610, 360);
        player.pause();
        player.fastForward();
        player.switchAudio(1);
        ASSERT_TRUE(player.waitIdle(10000));
        const std::vector<std::string> expected = {
            "killall avworker",       "avworker /mnt/SDCARD/a.mp4 &",   echoLine("play"),
            echoLine("\"win 650 85 610 360\""), echoLine("pause"),      echoLine("fastforward"),
            echoLine("\"audiotrack 1\""),
        };
        EXPECT_EQ(mShell.lines(), expected);
    }
    EXPECT_EQ(mShell.lines().back(), "killall avworker") << "no decoder outlives its client";
}

// Pressing R three times quickly starts the last file only; the starts
// between are skipped, the running one is cut short.
TEST_F(KovaniPlayerTest, AStartSupersededBeforeItRanIsSkipped) {
    KovaniPlayer player(&mHandler, &mShell);
    mShell.holdStarts(true);
    for (const char* url : {"/v/a.mp4", "/v/b.mp4", "/v/c.mp4"}) {
        player.setUrl(url);
        player.prepare();
        player.play();
        if (url[3] == 'a') {
            ASSERT_TRUE(mShell.waitForLines(2));
        }
    }
    mShell.holdStarts(false);
    ASSERT_TRUE(player.waitIdle(10000));
    const std::vector<std::string> expected = {
        "killall avworker", "avworker /v/a.mp4 &", "killall avworker", "avworker /v/c.mp4 &", echoLine("play"),
    };
    EXPECT_EQ(mShell.lines(), expected);
}

// The client is destroyed while its worker sleeps after a start: the
// destructor ends the wait, stops the decoder and joins.
TEST_F(KovaniPlayerTest, DestructionDuringAStartStopsTheDecoderAndJoins) {
    {
        KovaniPlayer player(&mHandler, &mShell);
        player.setUrl("/v/a.mp4");
        player.prepare();
        ASSERT_TRUE(mShell.waitForLines(2));
    }
    const std::vector<std::string> lines = mShell.lines();
    EXPECT_EQ(lines.back(), "killall avworker");
    EXPECT_EQ(mShell.findDecoder(), -1);
}

TEST_F(KovaniPlayerTest, ADecoderThatWentAwayIsReportedAndPlayIsRefused) {
    KovaniPlayer player(&mHandler, &mShell);
    player.setUrl("/v/a.mp4");
    player.prepare();
    ASSERT_TRUE(player.waitIdle(10000));
    EXPECT_TRUE(player.decoderExpected());
    mShell.crash();
    CaptureStdout capture;
    EXPECT_EQ(player.play(), 0) << "the client does not know yet";
    ASSERT_TRUE(player.waitIdle(10000));
    EXPECT_NE(capture.finish().find("avworker not exist, can not play\n"), std::string::npos);
    EXPECT_EQ(mHandler.mExits, 1);
    EXPECT_TRUE(player.decoderGone());
    EXPECT_EQ(player.play(), -1);

    player.prepare();
    EXPECT_FALSE(player.decoderGone()) << "a new start";
    EXPECT_EQ(player.play(), 0);
}

TEST_F(KovaniPlayerTest, ACompletionIsCountedOncePerRisingEdgeAndKeptUntilTaken) {
    KovaniPlayer player(&mHandler, &mShell);
    EXPECT_FALSE(player.takeCompletion());
    player.playNotifyer(true, 1000, 1000, 0, 0);
    player.playNotifyer(true, 1000, 1000, 0, 0);
    EXPECT_EQ(mHandler.mCompletions, 1);
    EXPECT_TRUE(player.takeCompletion());
    EXPECT_FALSE(player.takeCompletion());
    player.playNotifyer(false, 1000, 10, 0, 0);
    player.playNotifyer(true, 1000, 1000, 0, 0);
    EXPECT_EQ(mHandler.mCompletions, 2);
}

// The one test with the real shell and a real process: the stand-in decoder
// receives a hostile file name intact, commands land in the command file and
// a stop ends the process.
TEST_F(KovaniPlayerTest, TheRealShellStartsAndStopsTheDecoder) {
    const std::string work = mRoot.path() + "/work";
    makeDirs(work);
    makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
    char cwd[4096];
    const std::string oldCwd = getcwd(cwd, sizeof cwd) ? cwd : "/";
    ASSERT_EQ(chdir(work.c_str()), 0);
    const std::string oldPath = getenv("PATH") ? getenv("PATH") : "";
    setenv("PATH", (std::string(KOVANI_TEST_DECODER_DIR) + ":" + oldPath).c_str(), 1);

    const std::string name = work + "/a\"b $HOME `touch pwned1`; touch pwned2 it's\nnew $(touch pwned3) *.mp4";
    {
        KovaniPlayer player(&mHandler);
        player.setUrl(name.c_str());
        player.prepare();
        EXPECT_EQ(player.play(), 0);
        ASSERT_TRUE(player.waitIdle(10000));
        EXPECT_EQ(readFile(work + "/avworker.args"), name + '\0') << "one argument, unchanged";
        EXPECT_GT(check_process_exist("avworker"), 0);
        EXPECT_EQ(readFile(mRoot.at(DEVICE_PATH_PLAYER_CMD)), "play\n");
        unlink((work + "/avworker.args").c_str());
        player.stop();
        ASSERT_TRUE(player.waitIdle(10000));
        EXPECT_EQ(check_process_exist("avworker"), -1);
    }
    EXPECT_TRUE(std::filesystem::is_empty(work)) << "no stray files";
    setenv("PATH", oldPath.c_str(), 1);
    (void)chdir(oldCwd.c_str());
}
