#include "player/status_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <string>

#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "player/decoder_run.h"
#include "tests/support/recording_shell.h"
#include "tests/support/temp_dir.h"

namespace {

struct Report {
    int calls = 0;
    int generation = -1;
    bool completed = false;
    int duration = 0, position = 0, volume = 0, track = 0;
};

class RecordingListener : public StatusListener {
public:
    void onStatus(int generation, bool completed, int duration, int position, int volume,
                  int track) override {
        mStatus = Report{mStatus.calls + 1, generation, completed, duration, position, volume, track};
    }
    void onInfo(int, int width, int height, int streams) override {
        mInfoCalls++;
        mWidth = width;
        mHeight = height;
        mStreams = streams;
    }
    void onDecoderLost(int generation) override { mLost.push_back(generation); }

    Report mStatus;
    int mInfoCalls = 0, mWidth = 0, mHeight = 0, mStreams = 0;
    std::vector<int> mLost;
};

// The watcher's cycle, driven by hand (no thread) over real files in a
// temporary device root, with a decoder started on the stand-in shell.
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

TEST_F(StatusWatcherTest, MissingMistypedAndWildNumbersNeverReachTheClient) {
    status(R"({"status":"playing","duration":60000,"position":1000,"volume":5,"audiotrack":2})");
    status(R"({"position":2500.7,"volume":"loud","duration":null})");
    EXPECT_EQ(mListener.mStatus.position, 2500);
    EXPECT_EQ(mListener.mStatus.volume, 5) << "a mistyped key keeps its last value";
    EXPECT_EQ(mListener.mStatus.duration, 60000);
    EXPECT_EQ(mListener.mStatus.track, 2);

    struct Row {
        const char* json;
        int duration, position, volume, track;
    } rows[] = {
        {R"({"duration":1,"position":2147483647})", 1, 1, 5, 2},
        {R"({"duration":-5,"position":-9,"volume":-3,"audiotrack":-1})", 0, 0, 0, 0},
        {R"({"duration":1e300,"position":1e300,"volume":1e12,"audiotrack":1e12})", 2147483647,
         2147483647, 1000, 255},
    };
    for (const Row& row : rows) {
        status(row.json);
        EXPECT_EQ(mListener.mStatus.duration, row.duration) << row.json;
        EXPECT_EQ(mListener.mStatus.position, row.position) << row.json;
        EXPECT_EQ(mListener.mStatus.volume, row.volume) << row.json;
        EXPECT_EQ(mListener.mStatus.track, row.track) << row.json;
    }
}

TEST_F(StatusWatcherTest, OversizedBrokenAndEmptyFilesAreSkipped) {
    status(R"({"position":100})");
    const int calls = mListener.mStatus.calls;
    for (const std::string& bad : {"{\"position\":999,\"pad\":\"" + std::string(1100, 'x') + "\"}",
                                   std::string(R"({"position": 12)"), std::string()})
        status(bad);
    EXPECT_EQ(mListener.mStatus.calls, calls);
    status(R"({"position":300})");
    EXPECT_EQ(mListener.mStatus.position, 300) << "the watcher goes on after bad files";

    writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_INFO), R"({"width":640,"height":"x","audiostreamcount":3})");
    mWatcher.cycle();
    EXPECT_EQ(mListener.mWidth, 640);
    EXPECT_EQ(mListener.mHeight, 0);
    EXPECT_EQ(mListener.mStreams, 3);
}

// The previous decoder's "completed" would skip the video just chosen.
TEST_F(StatusWatcherTest, AReportFromBeforeTheStartNeverCounts) {
    status(R"({"status":"completed","duration":9000,"position":9000})");
    ASSERT_TRUE(mListener.mStatus.completed);
    writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_INFO), R"({"width":640})");

    startDecoder(systemms() + 1000);
    const int calls = mListener.mStatus.calls;
    mWatcher.cycle();
    EXPECT_EQ(mListener.mStatus.calls, calls) << "the old file is not read as this decoder's";
    EXPECT_EQ(mListener.mInfoCalls, 0) << "nor the old information file";

    startDecoder(systemms());
    status(R"({"position":10})");
    EXPECT_EQ(mListener.mStatus.generation, mGeneration);
    EXPECT_FALSE(mListener.mStatus.completed) << "a new run starts from nothing";
    EXPECT_EQ(mListener.mStatus.duration, 0);
}

TEST_F(StatusWatcherTest, ADecoderThatExitsIsReportedOnce) {
    mWatcher.cycle();
    EXPECT_TRUE(mListener.mLost.empty());
    mShell.crash();
    mWatcher.cycle();
    mWatcher.cycle();
    ASSERT_EQ(mListener.mLost.size(), 1u);
    EXPECT_EQ(mListener.mLost[0], mGeneration);
    EXPECT_EQ(mRun.snapshot().state, DecoderRun::GONE);
}

// Something else in place of the status file must not stop the watcher for
// good (the thread could then never be joined).
TEST_F(StatusWatcherTest, AFifoInPlaceOfTheStatusFileDoesNotBlock) {
    const std::string path = mRoot.at(DEVICE_PATH_PLAYER_STATUS);
    ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
    auto done = std::async(std::launch::async, [this] { mWatcher.cycle(); });
    if (done.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        const int unblock = open(path.c_str(), O_WRONLY);
        close(unblock);
        FAIL() << "the watcher blocked on a FIFO";
    }
    EXPECT_EQ(mListener.mStatus.calls, 0);
}
