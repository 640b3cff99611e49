#include "platform/logger.h"

#include <gtest/gtest.h>
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#include <condition_variable>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "platform/log_queue.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/test_clock.h"

namespace {

typedef std::vector<std::string> Lines;

// Records the writer's lines; writes from index mHeldFrom on wait until released.
class HeldSink : public LogSink {
public:
    void write(const char* line) override {
        std::unique_lock<std::mutex> hold(mLock);
        const size_t index = mLines.size();
        mLines.push_back(line);
        mCond.notify_all();
        mCond.wait(hold, [&] { return index < mHeldFrom; });
    }
    void holdFrom(size_t index) {
        std::lock_guard<std::mutex> hold(mLock);
        mHeldFrom = index;
        mCond.notify_all();
    }
    void release() { holdFrom(SIZE_MAX); }
    bool waitForWrites(size_t count) {
        std::unique_lock<std::mutex> hold(mLock);
        return mCond.wait_for(hold, std::chrono::seconds(20), [&] { return mLines.size() >= count; });
    }
    Lines lines() {
        std::lock_guard<std::mutex> hold(mLock);
        return mLines;
    }

private:
    std::mutex mLock;
    std::condition_variable mCond;
    Lines mLines;                  // guarded by mLock
    size_t mHeldFrom = SIZE_MAX;  // guarded by mLock
};

class LoggerQueueTest : public ::testing::Test {
protected:
    void TearDown() override {
        mSink.release();
        shutdownLogger();
    }
    HeldSink mSink;
};

}  // namespace

// Lines queued behind a held writer are all written at shutdown, in order;
// later lines go straight to the output.
TEST_F(LoggerQueueTest, ShutdownWritesEverythingQueuedThenCallersWriteDirectly) {
    ASSERT_EQ(initLoggerToSink(&mSink, 1000), 0);
    mSink.holdFrom(0);
    Lines queued;
    for (int i = 0; i < 200; i++) {
        queued.push_back("queued " + std::to_string(i) + "\n");
        tprintf("%s", queued.back().c_str());
    }
    ASSERT_TRUE(mSink.waitForWrites(1));
    mSink.release();
    shutdownLogger();
    EXPECT_EQ(mSink.lines(), queued);

    CaptureStdout out;
    tprintf("after shutdown %d\n", 1);
    EXPECT_EQ(out.finish(), "after shutdown 1\n");
    EXPECT_EQ(mSink.lines().size(), 200u);
}

// A log daemon that reads nothing: the writer's write waits for good. The
// exit goes on once the writer's drain bound has passed.
TEST_F(LoggerQueueTest, AHungLogDaemonDoesNotHoldUpTheExit) {
    {
        TestClock clock;
        ASSERT_EQ(initLoggerToSink(&mSink, 0), 0);
        mSink.holdFrom(0);
        tprintf("a line the daemon never takes\n");
        ASSERT_TRUE(mSink.waitForWrites(1));
        CaptureStdout out;
        auto exit = std::async(std::launch::async, [] { shutdownLogger(); });
        ASSERT_TRUE(clock.advanceUntil(
            [&] { return exit.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        tprintf("the exit goes on\n");
        EXPECT_EQ(out.finish(), "logger: the log writer hangs, given up\nthe exit goes on\n");
    }
    // The daemon reads again: the writer ends and the next start joins it.
    mSink.release();
    CaptureStdout quiet;
    bool restarted = false;
    for (int i = 0; i < 500 && !restarted; i++) {
        restarted = initLoggerToSink(&mSink, 0) == 0;
        if (!restarted) usleep(10 * 1000);
    }
    EXPECT_TRUE(restarted);
}
