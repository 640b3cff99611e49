#include "player/kovani_player.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <dirent.h>
#include <set>
#include <string>

#include "decoder_fixture.h"
#include "player/watch_thread.h"
#include "tests/support/capture_stdout.h"
#include "toolkit/sysutil.h"

namespace {

class CountingHandler : public KovaniPlayerHandler {
public:
    void onPlayComplete() override { mCompletions++; }
    void onSeekComplete() override { mSeeks++; }
    std::atomic<int> mCompletions{0};
    std::atomic<int> mSeeks{0};
};

std::set<std::string> folderEntries(const std::string& path) {
    std::set<std::string> names;
    if (DIR* d = opendir(path.c_str())) {
        while (dirent* e = readdir(d))
            if (e->d_name[0] != '.') names.insert(e->d_name);
        closedir(d);
    }
    return names;
}

// Waits (bounded) for the stand-in decoder to have recorded its arguments.
std::string decoderArgs(const std::string& file) {
    for (int i = 0; i < 200 && !fileExists(file); i++) usleep(10 * 1000);
    return readFile(file);
}

class KovaniPlayerTest : public DecoderFixture {
protected:
    void TearDown() override {
        stop_watch_thread();
        DecoderFixture::TearDown();
    }
};

}  // namespace

TEST_F(KovaniPlayerTest, NothingIsSentWithoutAUrlOrADecoder) {
    KovaniPlayer player(nullptr);
    EXPECT_EQ(player.getUrl(), nullptr);

    CaptureStdout capture;
    EXPECT_EQ(player.prepare(), 0);
    EXPECT_EQ(player.play(), -1);
    EXPECT_EQ(player.pause(), 0);
    player.fastForward();
    player.setDisplayRect(0, 0, 1280, 720);
    const std::string log = capture.finish();

    EXPECT_EQ(log, "avworker not exist, can not play\n") << "an empty url starts nothing";
    EXPECT_FALSE(fileExists(mRoot.at(DEVICE_PATH_PLAYER_CMD)));
    EXPECT_EQ(check_process_exist("avworker"), -1);
    EXPECT_EQ(player.seekTo(5000), -1);
    EXPECT_EQ(player.setPlaySpeed(2), -1);
    EXPECT_EQ(player.setRotation(90), -1);
}

TEST_F(KovaniPlayerTest, CommandFileHoldsExactlyTheLastCommandWhileTheDecoderRuns) {
    KovaniPlayer player(nullptr);
    const std::string film = "/mnt/SDCARD/My Videos/film one.mp4";
    player.setUrl(film.c_str());
    EXPECT_STREQ(player.getUrl(), film.c_str());

    CaptureStdout capture;
    ASSERT_EQ(player.prepare(), 0);
    const std::string log = capture.finish();
    EXPECT_NE(log.find("killall avworker\n"), std::string::npos);
    EXPECT_NE(log.find("exec cmd: avworker '" + film + "' &\n"), std::string::npos);
    EXPECT_NE(log.find("start watch thread\n"), std::string::npos);

    EXPECT_GT(check_process_exist("avworker"), 0);
    EXPECT_EQ(decoderArgs(work("avworker.args")), film + '\0');

    EXPECT_EQ(player.play(), 0);
    EXPECT_EQ(cmdFile(), "play\n");
    player.setDisplayRect(650, 85, 610, 360);
    EXPECT_EQ(cmdFile(), "win 650 85 610 360\n");
    player.pause();
    EXPECT_EQ(cmdFile(), "pause\n");
    player.switchAudio(2);
    EXPECT_EQ(cmdFile(), "audiotrack 2\n");
    player.setVolume(-3);
    EXPECT_EQ(cmdFile(), "volume -3\n");
    player.fastForward();
    EXPECT_EQ(cmdFile(), "fastforward\n");
    player.fastBackward();
    EXPECT_EQ(cmdFile(), "rewind\n");

    // A second prepare replaces the decoder rather than adding one.
    const int first = check_process_exist("avworker");
    unlink(work("avworker.args").c_str());
    player.reset();
    ASSERT_EQ(player.prepare(), 0);
    const int second = check_process_exist("avworker");
    EXPECT_GT(second, 0);
    EXPECT_NE(second, first);
    EXPECT_EQ(decoderArgs(work("avworker.args")), film + '\0');

    player.stop();
    EXPECT_EQ(check_process_exist("avworker"), -1);
    EXPECT_EQ(player.play(), -1);
    EXPECT_EQ(cmdFile(), "rewind\n") << "nothing written once the decoder is gone";
}

TEST_F(KovaniPlayerTest, HostileFileNamesReachTheDecoderIntactAndRunNothing) {
    const std::string names[] = {
        mWork + "/a\"b $HOME `touch pwned1`; touch pwned2 it's\nnew $(touch pwned3).mp4",
        "$(touch pwned4)",
    };
    for (const std::string& name : names) {
        KovaniPlayer player(nullptr);
        player.setUrl(name.c_str());
        CaptureStdout quiet;
        player.prepare();
        quiet.finish();
        EXPECT_EQ(decoderArgs(work("avworker.args")), name + '\0');
        player.stop();
        unlink(work("avworker.args").c_str());
    }
    EXPECT_EQ(folderEntries(mWork), std::set<std::string>{}) << "no stray files";
}

TEST(KovaniPlayerCompletion, OnlyARisingCompletedFlagCallsTheHandler) {
    CountingHandler handler;
    KovaniPlayer player(&handler);
    CaptureStdout quiet;
    const bool flags[] = {false, true, true, true, false, false, true, true};
    const int callsAfter[] = {0, 1, 1, 1, 1, 1, 2, 2};
    for (size_t i = 0; i < sizeof flags; i++) {
        player.playNotifyer(flags[i], 9000, int(i) * 100, 40, 1);
        EXPECT_EQ(handler.mCompletions, callsAfter[i]) << "step " << i;
        EXPECT_EQ(player.isComplete(), flags[i]);
        EXPECT_EQ(player.getPositionMS(), int(i) * 100);
    }
    EXPECT_EQ(handler.mSeeks, 0);
    EXPECT_EQ(quiet.finish(), "complete 0->1\ncomplete 0->1\n");

    KovaniPlayer orphan(nullptr);
    orphan.playNotifyer(true, 1, 2, 3, 4);
    EXPECT_TRUE(orphan.isComplete());
    EXPECT_EQ(orphan.getDurationMS(), 1);
    EXPECT_EQ(orphan.getVolume(), 3);
    EXPECT_EQ(orphan.getAudioTrack(), 4);
}
