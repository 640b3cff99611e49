#include "player/kovani_player.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "player/display_rect.h"
#include "tests/support/recording_shell.h"
#include "tests/support/temp_dir.h"

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

// Destroyed while its worker waits after a start: it stops the decoder and joins.
TEST_F(KovaniPlayerTest, DestructionDuringAStartStopsTheDecoderAndJoins) {
    {
        KovaniPlayer player(nullptr, &mShell);
        player.setUrl("/v/a.mp4");
        player.prepare();
        ASSERT_TRUE(mShell.waitForLines(2));
    }
    EXPECT_EQ(mShell.lines().back(), "killall avworker");
    EXPECT_EQ(mShell.findDecoder(), -1);
}

// The real shell and process: a hostile file name arrives intact, a stop ends it.
TEST_F(KovaniPlayerTest, TheRealShellStartsAndStopsTheDecoder) {
    const std::string work = mRoot.path() + "/work", oldPath = getenv("PATH") ? getenv("PATH") : "";
    makeDirs(work);
    makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
    char oldCwd[4096];
    ASSERT_TRUE(getcwd(oldCwd, sizeof oldCwd) && chdir(work.c_str()) == 0);
    setenv("PATH", (KOVANI_TEST_DECODER_DIR ":" + oldPath).c_str(), 1);

    const std::string name = work + "/a\"b $HOME `touch pwned1`; touch pwned2 it's\nnew $(touch pwned3) *.mp4";
    {
        KovaniPlayer player(nullptr);
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
    (void)chdir(oldCwd);
}
