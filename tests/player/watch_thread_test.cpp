#include "player/watch_thread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "platform/device_paths.h"
#include "player/kovani_player.h"
#include "tests/support/temp_dir.h"
#include "toolkit/sysutil.h"

namespace {

class CountingHandler : public KovaniPlayerHandler {
public:
    void onPlayComplete() override { mCompletions++; }
    void onSeekComplete() override {}
    std::atomic<int> mCompletions{0};
};

// Runs the real watcher against real files in a temporary device root.
class WatchThreadTest : public ::testing::Test {
protected:
    void SetUp() override {
        makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
    }
    void TearDown() override { stop_watch_thread(); }

    void start() { ASSERT_TRUE(start_watch_thread(&mPlayer)); }
    void status(const std::string& json) { writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_STATUS), json); }

    // Returns once the watcher has read the files as they are now. The
    // information file is read after the status file in every cycle, so a
    // width seen twice anew means a whole cycle began after this call.
    void settle(int height = 0, int streams = 0) {
        for (int i = 0; i < 2; i++) {
            const int marker = ++mMarker;
            writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_INFO),
                            "{\"width\":" + std::to_string(marker) + ",\"height\":" +
                                std::to_string(height) + ",\"audiostreamcount\":" +
                                std::to_string(streams) + "}");
            const long deadline = systemms() + 3000;
            while (mPlayer.getVideoWidth() != marker && systemms() < deadline) usleep(5000);
            ASSERT_EQ(mPlayer.getVideoWidth(), marker) << "watcher did not read the info file in time";
        }
    }

    TempDeviceRoot mRoot;
    CountingHandler mHandler;
    KovaniPlayer mPlayer{&mHandler};
    int mMarker = 0;
};

}  // namespace

TEST_F(WatchThreadTest, ReportsCompletionOncePerRisingEdge) {
    start();
    status(R"({"status":"playing","duration":60000,"position":1000,"volume":7,"audiotrack":1})");
    settle();
    EXPECT_EQ(mPlayer.getDurationMS(), 60000);
    EXPECT_EQ(mPlayer.getPositionMS(), 1000);
    EXPECT_EQ(mPlayer.getVolume(), 7);
    EXPECT_EQ(mPlayer.getAudioTrack(), 1);
    EXPECT_EQ(mHandler.mCompletions, 0);

    status(R"({"status":"completed","position":60000})");
    settle();
    settle();
    EXPECT_EQ(mHandler.mCompletions, 1) << "a flag that stays true is reported once";

    status(R"({"position":60000})");
    settle();
    EXPECT_TRUE(mPlayer.isComplete()) << "a missing status keeps the last state";

    status(R"({"status":"Completed"})");
    settle();
    EXPECT_FALSE(mPlayer.isComplete()) << "the comparison is exact";

    status(R"({"status":"completed"})");
    settle();
    EXPECT_EQ(mHandler.mCompletions, 2);
}

TEST_F(WatchThreadTest, MissingOrMistypedKeysKeepTheirLastValues) {
    start();
    status(R"({"status":"playing","duration":1000,"volume":5,"audiotrack":2})");
    settle();
    status(R"({"position":2500.7,"volume":"loud","duration":null})");
    settle();
    EXPECT_EQ(mPlayer.getPositionMS(), 2500) << "cJSON's integer view of the number";
    EXPECT_EQ(mPlayer.getVolume(), 5);
    EXPECT_EQ(mPlayer.getDurationMS(), 1000);
    EXPECT_EQ(mPlayer.getAudioTrack(), 2);
}

TEST_F(WatchThreadTest, OversizedAndBrokenFilesAreSkipped) {
    start();
    status(R"({"position":100})");
    settle();
    const std::string padding(1100, 'x');
    status("{\"position\":999,\"pad\":\"" + padding + "\"}");
    settle();
    EXPECT_EQ(mPlayer.getPositionMS(), 100) << "a file cut at the buffer does not parse";
    status(R"({"position": 12)");
    settle();
    EXPECT_EQ(mPlayer.getPositionMS(), 100);
    status("");
    settle();
    EXPECT_EQ(mPlayer.getPositionMS(), 100);
    status(R"({"position":300})");
    settle();
    EXPECT_EQ(mPlayer.getPositionMS(), 300) << "the watcher goes on after bad files";
}

TEST_F(WatchThreadTest, InfoIsReadWhileTheStatusFileIsMissing) {
    mPlayer.playNotifyer(false, 11, 22, 33, 44);
    start();
    settle(720, 3);
    EXPECT_EQ(mPlayer.getVideoHeight(), 720);
    EXPECT_EQ(mPlayer.getAudioTrackNum(), 3);
    EXPECT_EQ(mPlayer.getDurationMS(), 11) << "no status file, no status report";
    EXPECT_EQ(mPlayer.getPositionMS(), 22);
}

TEST_F(WatchThreadTest, OnlyOneWatcherRunsAndAStoppedOneCanBeRestarted) {
    start();
    KovaniPlayer other(nullptr);
    EXPECT_FALSE(start_watch_thread(&other));
    stop_watch_thread();
    EXPECT_TRUE(start_watch_thread(&mPlayer));
}
