#include "player/kovani_player.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/device_paths.h"
#include "player/watch_thread.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"
#include "platform/sysutil.h"

namespace {

// Device paths in a temporary root, a working folder of their own (the
// stand-in decoder writes its arguments there) and the stand-in decoder first
// on PATH.
class KovaniPlayerTest : public ::testing::Test {
protected:
    void SetUp() override {
        makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
        mWork = mRoot.path() + "/work";
        makeDirs(mWork);
        char cwd[4096];
        mOldCwd = getcwd(cwd, sizeof cwd) ? cwd : "/";
        ASSERT_EQ(chdir(mWork.c_str()), 0);
        mOldPath = getenv("PATH") ? getenv("PATH") : "";
        setenv("PATH", (std::string(KOVANI_TEST_DECODER_DIR) + ":" + mOldPath).c_str(), 1);
    }
    void TearDown() override {
        stop_watch_thread();
        (void)system("killall -q avworker");
        setenv("PATH", mOldPath.c_str(), 1);
        (void)chdir(mOldCwd.c_str());
    }
    std::string cmdFile() const { return readFile(mRoot.at(DEVICE_PATH_PLAYER_CMD)); }
    // Waits (bounded) for the stand-in decoder to have recorded its
    // arguments, then takes them away for the next start.
    std::string decoderArgs() {
        const std::string file = mWork + "/avworker.args";
        for (int i = 0; i < 200 && !fileExists(file); i++) usleep(10 * 1000);
        const std::string args = readFile(file);
        unlink(file.c_str());
        return args;
    }

    TempDeviceRoot mRoot;
    std::string mWork, mOldCwd, mOldPath;
};

}  // namespace

TEST_F(KovaniPlayerTest, CommandFileHoldsExactlyTheLastCommandWhileTheDecoderRuns) {
    KovaniPlayer player(nullptr);
    const std::string film = "/mnt/SDCARD/My Videos/film one.mp4";
    player.setUrl(film.c_str());
    CaptureStdout capture;
    ASSERT_EQ(player.prepare(), 0);
    EXPECT_NE(capture.finish().find("exec cmd: avworker '" + film + "' &\n"), std::string::npos);
    EXPECT_EQ(decoderArgs(), film + '\0');
    const int first = check_process_exist("avworker");
    EXPECT_GT(first, 0);

    EXPECT_EQ(player.play(), 0);
    EXPECT_EQ(cmdFile(), "play\n");
    player.setDisplayRect(650, 85, 610, 360);
    EXPECT_EQ(cmdFile(), "win 650 85 610 360\n");
    player.switchAudio(2);
    EXPECT_EQ(cmdFile(), "audiotrack 2\n");
    player.setVolume(-3);
    EXPECT_EQ(cmdFile(), "volume -3\n");
    player.fastBackward();
    EXPECT_EQ(cmdFile(), "rewind\n");

    // A second prepare replaces the decoder rather than adding one.
    player.reset();
    ASSERT_EQ(player.prepare(), 0);
    EXPECT_EQ(decoderArgs(), film + '\0');
    const int second = check_process_exist("avworker");
    EXPECT_GT(second, 0);
    EXPECT_NE(second, first);

    player.stop();
    EXPECT_EQ(check_process_exist("avworker"), -1);
    EXPECT_EQ(player.play(), -1);
    EXPECT_EQ(cmdFile(), "rewind\n") << "nothing written once the decoder is gone";
}

TEST_F(KovaniPlayerTest, HostileFileNamesReachTheDecoderIntactAndRunNothing) {
    const std::string names[] = {
        mWork + "/a\"b $HOME `touch pwned1`; touch pwned2 it's\nnew $(touch pwned3) back\\slash *.mp4",
        "$(touch pwned4)",
    };
    for (const std::string& name : names) {
        KovaniPlayer player(nullptr);
        player.setUrl(name.c_str());
        CaptureStdout quiet;
        player.prepare();
        quiet.finish();
        EXPECT_EQ(decoderArgs(), name + '\0') << "one argument, unchanged";
        player.stop();
    }
    EXPECT_TRUE(std::filesystem::is_empty(mWork)) << "no stray files";
}
