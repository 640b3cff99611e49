#include "player/decoder_worker.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "player/decoder_run.h"
#include "player/status_watcher.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/recording_shell.h"
#include "tests/support/temp_dir.h"
#include "tests/support/test_clock.h"

namespace {

// Which runs the watcher reported a status for.
class RunListener : public StatusListener {
public:
    void onStatus(int generation, bool, int, int, int, int) override {
        std::lock_guard<std::mutex> hold(mLock);
        mStatusRuns.push_back(generation);
    }
    void onInfo(int, int, int, int) override {}
    void onDecoderLost(int) override {}
    std::vector<int> statusRuns() {
        std::lock_guard<std::mutex> hold(mLock);
        return mStatusRuns;
    }

private:
    std::mutex mLock;
    std::vector<int> mStatusRuns;  // guarded by mLock
};

// The worker on the stand-in shell under a test clock, and the watcher's
// cycle run by hand, as the decoder client uses them.
class DecoderWorkerTest : public ::testing::Test {
protected:
    void SetUp() override { makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR)); }
    void TearDown() override { mShell.setDecoder(false); }
    int start(const std::string& url) {
        const int generation = mRun.begin();
        mWorker.post({DecoderJob::START, generation, "avworker " + url + " &", false, false});
        return generation;
    }
    bool running(int generation) {
        const DecoderRun::Snapshot run = mRun.snapshot();
        return run.generation == generation && run.state == DecoderRun::RUNNING;
    }

    TestClock mClock;  // first made, last gone
    TempDeviceRoot mRoot;
    CaptureStdout mQuiet;
    RecordingShell mShell;
    DecoderRun mRun;
    RunListener mListener;
    StatusWatcher mWatcher{&mRun, &mShell, &mListener};
    DecoderWorker mWorker{&mShell, &mRun, [](int) {}};
};

}  // namespace

// a.mp4 has ended and b.mp4 is chosen while a's decoder dies slowly, or not
// at all. b's decoder starts only once a's is gone; nothing a reports counts
// as b's; the watcher follows b's decoder.
TEST_F(DecoderWorkerTest, TheNextDecoderStartsOnlyOnceTheLastIsGone) {
    const std::string completed = R"({"status":"completed","duration":9000,"position":9000})";
    const struct Row {
        const char* name;
        RecordingShell::Script script;
        bool needsKill;
    } rows[] = {
        {"exits at once", {0, false, completed}, false},
        {"exits 0.7 s after SIGTERM, reporting until then", {700, false, completed}, false},
        {"exits 1.2 s after SIGTERM, reporting until then", {1200, false, completed}, false},
        {"ignores SIGTERM, reporting", {-1, false, completed}, true},
        {"stopped (SIGSTOP)", {-1, false, ""}, true},
        {"survives even SIGKILL", {-1, true, ""}, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        mShell.script(row.script);
        const int a = start("/v/a.mp4");
        ASSERT_TRUE(mClock.advanceUntil([&] { return running(a); }));
        mWatcher.cycle();

        mShell.script({});  // b's decoder never reports
        const size_t terms = mShell.count("killall avworker"), kills = mShell.count("killall -KILL avworker");
        const size_t starts = mShell.count("avworker /v/b.mp4 &");
        const int b = start("/v/b.mp4");
        ASSERT_TRUE(mClock.advanceUntil([&] { return mShell.count("avworker /v/b.mp4 &") > starts; }));
        EXPECT_EQ(mShell.count("killall avworker"), terms + 1);
        EXPECT_EQ(mShell.count("killall -KILL avworker"), kills + (row.needsKill ? 1 : 0));
        EXPECT_EQ(mShell.crowdAtStart(), row.script.survivesKill ? 1u : 0u) << "nothing else ran beside b";
        mWatcher.cycle();
        ASSERT_TRUE(mClock.advanceUntil([&] { return running(b); }));
        mWatcher.cycle();
        for (int run : mListener.statusRuns()) EXPECT_NE(run, b) << "a's report taken for b's";
        EXPECT_EQ(mRun.snapshot().pid, mShell.newestPid()) << "the watcher follows b's decoder";

        mShell.setDecoder(false);
        writeFileAtomic(mRoot.at(DEVICE_PATH_PLAYER_STATUS), "");
    }
}
