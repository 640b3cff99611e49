#include "player/status_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <string>
#include <vector>

#include "platform/device_paths.h"
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
        startDecoder();
    }
    // As the worker starts one: the files are noted just before the start line.
    void startDecoder() {
        mGeneration = mRun.begin();
        mRun.launching(mGeneration, fileIdentity(mRoot.at(DEVICE_PATH_PLAYER_STATUS).c_str()),
                       fileIdentity(mRoot.at(DEVICE_PATH_PLAYER_INFO).c_str()));
        mShell.setDecoder(false);
        mShell.run("avworker x &", 0);
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

// The previous decoder's "completed" would skip the video just chosen, also
// one dated ahead of the clock (the clock was stepped back since).
TEST_F(StatusWatcherTest, AReportFromBeforeTheStartNeverCounts) {
    const std::string path = mRoot.at(DEVICE_PATH_PLAYER_STATUS);
    const long hour = 3600;
    const struct { const char* name; long secondsAhead; } rows[] = {
        {"written before", -1}, {"dated an hour ahead", hour}, {"dated a day ahead", 24 * hour}};
    for (const auto& row : rows) {
        status(R"({"status":"completed","duration":9000,"position":9000})");
        ASSERT_TRUE(mListener.mCompleted) << row.name;
        const struct timespec dated[2] = {{time(nullptr) + row.secondsAhead, 0}, {time(nullptr) + row.secondsAhead, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), dated, 0), 0);
        writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_INFO), R"({"width":640})");

        startDecoder();
        const int calls = mListener.mCalls, infoCalls = mListener.mInfoCalls;
        mWatcher.cycle();
        EXPECT_EQ(mListener.mCalls, calls) << row.name << ": the old file is not read as this decoder's";
        EXPECT_EQ(mListener.mInfoCalls, infoCalls) << row.name << ": nor the old information file";

        status(R"({"position":10})");
        EXPECT_EQ(mListener.mGeneration, mGeneration);
        EXPECT_FALSE(mListener.mCompleted) << row.name << ": a new run starts from nothing";
        EXPECT_EQ(mListener.mValues[0], 0) << row.name << ": nor its duration";
    }
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
