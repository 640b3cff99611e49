#include "player/watch_thread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "platform/device_paths.h"
#include "player/kovani_player.h"
#include "tests/support/temp_dir.h"
#include "platform/sysutil.h"

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
    void SetUp() override { makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR)); }
    void TearDown() override { stop_watch_thread(); }

    void start() { ASSERT_TRUE(start_watch_thread(&mPlayer)); }
    // Writes the status file and returns once the watcher has read it.
    void status(const std::string& json) {
        writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_STATUS), json);
        settle();
    }

    // The information file is read after the status file in every cycle, so
    // a width seen twice anew means a whole cycle began after this call.
    void settle(int height = 0, int streams = 0) {
        for (int i = 0; i < 2; i++) {
            const int marker = ++mMarker;
            writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_INFO),
                            "{\"width\":" + std::to_string(marker) + ",\"height\":" + std::to_string(height) +
                                ",\"audiostreamcount\":" + std::to_string(streams) + "}");
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
    status(R"({"status":"playing","duration":60000,"position":1000})");
    EXPECT_EQ(mHandler.mCompletions, 0);
    status(R"({"status":"completed","position":60000})");
    settle();
    EXPECT_EQ(mHandler.mCompletions, 1) << "a flag that stays true is reported once";
    status(R"({"position":60000})");
    EXPECT_TRUE(mPlayer.isComplete()) << "a missing status keeps the last state";
    status(R"({"status":"Completed"})");
    EXPECT_FALSE(mPlayer.isComplete()) << "the comparison is exact";
    status(R"({"status":"completed"})");
    EXPECT_EQ(mHandler.mCompletions, 2);
}

TEST_F(WatchThreadTest, MissingOrMistypedKeysKeepTheirLastValues) {
    start();
    status(R"({"status":"playing","duration":1000,"volume":5,"audiotrack":2})");
    status(R"({"position":2500.7,"volume":"loud","duration":null})");
    EXPECT_EQ(mPlayer.getPositionMS(), 2500);
    EXPECT_EQ(mPlayer.getVolume(), 5);
    EXPECT_EQ(mPlayer.getDurationMS(), 1000);
    EXPECT_EQ(mPlayer.getAudioTrack(), 2);
}

TEST_F(WatchThreadTest, OversizedAndBrokenFilesAreSkipped) {
    start();
    status(R"({"position":100})");
    for (const std::string& bad : {"{\"position\":999,\"pad\":\"" + std::string(1100, 'x') + "\"}",
                                   std::string(R"({"position": 12)"), std::string()}) {
        status(bad);
        EXPECT_EQ(mPlayer.getPositionMS(), 100) << bad.substr(0, 30);
    }
    status(R"({"position":300})");
    EXPECT_EQ(mPlayer.getPositionMS(), 300) << "the watcher goes on after bad files";
}

TEST_F(WatchThreadTest, InfoIsReadWhileTheStatusFileIsMissing) {
    mPlayer.playNotifyer(false, 11, 22, 33, 44);
    start();
    settle(720, 3);
    EXPECT_EQ(mPlayer.getVideoHeight(), 720);
    EXPECT_EQ(mPlayer.getAudioTrackNum(), 3);
    EXPECT_EQ(mPlayer.getPositionMS(), 22) << "no status file, no status report";
}
