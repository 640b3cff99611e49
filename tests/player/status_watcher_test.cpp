#include "player/status_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "player/decoder_run.h"
#include "tests/support/recording_shell.h"
#include "tests/support/temp_dir.h"

namespace {

// What the watcher last reported, and how often.
class RecordingListener : public StatusListener {
public:
    void onStatus(int generation, bool completed, int duration, int position, int volume, int track) override {
        mCalls++;
        mGeneration = generation;
        mCompleted = completed;
        mValues = {duration, position, volume, track};
    }
    void onInfo(int, int, int, int) override { mInfoCalls++; }
    void onDecoderLost(int) override {}

    int mCalls = 0, mInfoCalls = 0, mGeneration = -1;
    bool mCompleted = false;
    std::vector<int> mValues;  // duration, position, volume, track
};

// The watcher's cycle by hand over real files, the decoder on the stand-in shell.
class StatusWatcherTest : public ::testing::Test {
protected:
    void SetUp() override {
        makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
        startDecoder(systemms() - 1000);
    }
    void startDecoder(long startMs) {
        mGeneration = mRun.begin();
        mRun.starting(mGeneration, startMs);
        mShell.run("avworker x &", nullptr);
        mRun.found(mGeneration, mShell.findDecoder());
    }
    void status(const std::string& json) {
        writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_STATUS), json);
        mWatcher.cycle();
    }

    TempDeviceRoot mRoot;
    RecordingShell mShell;
    DecoderRun mRun;
    RecordingListener mListener;
    StatusWatcher mWatcher{&mRun, &mShell, &mListener};
    int mGeneration = 0;
};

}  // namespace

// A mistyped or missing key keeps its last value, numbers are clamped, and
// an oversized, broken or empty file is skipped.
TEST_F(StatusWatcherTest, MissingMistypedAndWildNumbersNeverReachTheClient) {
    const std::string oversized = "{\"position\":999,\"pad\":\"" + std::string(1100, 'x') + "\"}";
    const struct { std::string json; std::vector<int> values; } rows[] = {
        {R"({"status":"playing","duration":60000,"position":1000,"volume":5,"audiotrack":2})", {60000, 1000, 5, 2}},
        {R"({"position":2500.7,"volume":"loud","duration":null})", {60000, 2500, 5, 2}},
        {R"({"duration":1,"position":2147483647})", {1, 1, 5, 2}},
        {oversized, {1, 1, 5, 2}},
        {R"({"position": 12)", {1, 1, 5, 2}},
        {"", {1, 1, 5, 2}},
        {R"({"duration":-5,"position":-9,"volume":-3,"audiotrack":-1})", {0, 0, 0, 0}},
        {R"({"duration":1e300,"position":1e300,"volume":1e12,"audiotrack":1e12})", {2147483647, 2147483647, 1000, 255}},
    };
    for (const auto& row : rows) {
        status(row.json);
        EXPECT_EQ(mListener.mValues, row.values) << row.json.substr(0, 80);
    }
    EXPECT_EQ(mListener.mCalls, 5) << "skipped files report nothing";
}

// The previous decoder's "completed" would skip the video just chosen.
TEST_F(StatusWatcherTest, AReportFromBeforeTheStartNeverCounts) {
    status(R"({"status":"completed","duration":9000,"position":9000})");
    ASSERT_TRUE(mListener.mCompleted);
    writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_INFO), R"({"width":640})");

    startDecoder(systemms() + 1000);
    const int calls = mListener.mCalls;
    mWatcher.cycle();
    EXPECT_EQ(mListener.mCalls, calls) << "the old file is not read as this decoder's";
    EXPECT_EQ(mListener.mInfoCalls, 0) << "nor the old information file";

    startDecoder(systemms());
    status(R"({"position":10})");
    EXPECT_EQ(mListener.mGeneration, mGeneration);
    EXPECT_FALSE(mListener.mCompleted) << "a new run starts from nothing";
    EXPECT_EQ(mListener.mValues[0], 0) << "nor its duration";
}

// A FIFO as the status file must not block the watcher (it could never be joined).
TEST_F(StatusWatcherTest, AFifoInPlaceOfTheStatusFileDoesNotBlock) {
    const std::string path = mRoot.at(DEVICE_PATH_PLAYER_STATUS);
    ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
    auto done = std::async(std::launch::async, [this] { mWatcher.cycle(); });
    if (done.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        const int unblock = open(path.c_str(), O_WRONLY);
        close(unblock);
        FAIL() << "the watcher blocked on a FIFO";
    }
    EXPECT_EQ(mListener.mCalls, 0);
}
