#include "platform/logger.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/log_queue.h"
#include "tests/support/capture_stdout.h"

namespace {

// Records what the writer thread writes. Writes from a given index on are
// held inside write() until released, so the queue behind a held writer
// fills exactly as the test says.
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
        {
            std::lock_guard<std::mutex> hold(mLock);
            mHeldFrom = index;
        }
        mCond.notify_all();
    }
    void release() { holdFrom(SIZE_MAX); }
    // Whether `count` writes have begun; the wait is only a guard against a
    // writer that never comes.
    bool waitForWrites(size_t count) {
        std::unique_lock<std::mutex> hold(mLock);
        return mCond.wait_for(hold, std::chrono::seconds(20), [&] { return mLines.size() >= count; });
    }
    std::vector<std::string> lines() {
        std::lock_guard<std::mutex> hold(mLock);
        return mLines;
    }

private:
    std::mutex mLock;
    std::condition_variable mCond;
    std::vector<std::string> mLines;  // guarded by mLock
    size_t mHeldFrom = SIZE_MAX;      // guarded by mLock
};

class LoggerQueueTest : public ::testing::Test {
protected:
    void TearDown() override {
        mSink.release();
        shutdownLogger();
    }
    HeldSink mSink;
};

// Every tenth line is longer than the caller's own line buffer.
std::string padding(int thread, int index) {
    return std::string(index % 10 == 0 ? 300 : 20, char('a' + thread));
}

}  // namespace

TEST_F(LoggerQueueTest, LinesFromSeveralThreadsArriveWholeInTheirOrder) {
    const int kThreads = 4;
    const int kLines = 500;
    ASSERT_EQ(initLoggerToSink(&mSink, kThreads * kLines), 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; t++)
        threads.emplace_back([t] {
            for (int i = 0; i < kLines; i++)
                tprintf("thread %d line %d %s\n", t, i, padding(t, i).c_str());
        });
    for (std::thread& thread : threads) thread.join();
    shutdownLogger();

    const std::vector<std::string> lines = mSink.lines();
    ASSERT_EQ(lines.size(), size_t(kThreads * kLines));
    std::vector<int> next(kThreads, 0);
    for (const std::string& line : lines) {
        int t = -1, i = -1;
        ASSERT_EQ(sscanf(line.c_str(), "thread %d line %d", &t, &i), 2) << line;
        ASSERT_TRUE(t >= 0 && t < kThreads) << line;
        EXPECT_EQ(i, next[t]) << "thread " << t << " out of order";
        const std::string head = "thread " + std::to_string(t) + " line " + std::to_string(i) + " ";
        EXPECT_EQ(line, head + padding(t, i) + "\n");
        next[t] = i + 1;
    }
}

// The gap a full queue leaves is reported where it is, with the count since
// the last report.
TEST_F(LoggerQueueTest, AFullQueueDropsAndTheWriterReportsTheCount) {
    ASSERT_EQ(initLoggerToSink(&mSink, 3), 0);
    mSink.holdFrom(0);
    tprintf("first\n");
    ASSERT_TRUE(mSink.waitForWrites(1));
    for (const char* name : {"a", "b", "c"}) tprintf("%s\n", name);
    for (int i = 0; i < 5; i++) tprintf("lost %d\n", i);
    mSink.release();
    ASSERT_TRUE(mSink.waitForWrites(5));

    // "second" holds the writer; "d" passes, "e" holds it again, leaving
    // room for one line after two more drops.
    mSink.holdFrom(5);
    tprintf("second\n");
    ASSERT_TRUE(mSink.waitForWrites(6));
    for (const char* name : {"d", "e", "f"}) tprintf("%s\n", name);
    for (int i = 0; i < 2; i++) tprintf("lost again %d\n", i);
    mSink.holdFrom(7);
    ASSERT_TRUE(mSink.waitForWrites(8));
    tprintf("after the gap\n");
    mSink.release();
    shutdownLogger();

    const std::vector<std::string> expected = {"first\n", "a\n", "b\n", "c\n", "5 log lines dropped\n",
                                               "second\n", "d\n", "e\n", "f\n", "2 log lines dropped\n",
                                               "after the gap\n"};
    EXPECT_EQ(mSink.lines(), expected);
}

TEST_F(LoggerQueueTest, ShutdownWritesEverythingQueuedThenCallersWriteDirectly) {
    ASSERT_EQ(initLoggerToSink(&mSink, 1000), 0);
    mSink.holdFrom(0);
    for (int i = 0; i < 200; i++) tprintf("queued %d\n", i);
    ASSERT_TRUE(mSink.waitForWrites(1));
    mSink.release();
    shutdownLogger();
    const std::vector<std::string> lines = mSink.lines();
    ASSERT_EQ(lines.size(), 200u);
    for (int i = 0; i < 200; i++) EXPECT_EQ(lines[i], "queued " + std::to_string(i) + "\n");

    CaptureStdout out;
    tprintf("after shutdown %d\n", 1);
    EXPECT_EQ(out.finish(), "after shutdown 1\n");
    EXPECT_EQ(mSink.lines().size(), 200u);
}

// A forked child has no writer thread: it writes its lines itself. The
// writer is idle at the fork, as the sanitizers' allocators need.
TEST_F(LoggerQueueTest, AForkedChildWritesDirectly) {
    ASSERT_EQ(initLoggerToSink(&mSink, 16), 0);
    tprintf("before the fork\n");
    ASSERT_TRUE(mSink.waitForWrites(1));
    CaptureStdout out;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        tprintf("from the child\n");
        fflush(stdout);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(out.finish(), "from the child\n");
    tprintf("from the parent\n");
    shutdownLogger();
    EXPECT_EQ(mSink.lines(), (std::vector<std::string>{"before the fork\n", "from the parent\n"}));
}

// A process that reads its signals from a descriptor blocks them after the
// writer has started; the writer must not take them meanwhile.
TEST_F(LoggerQueueTest, TheWriterThreadBlocksSignals) {
    ASSERT_EQ(initLoggerToSink(&mSink, 16), 0);
    tprintf("named by now\n");
    ASSERT_TRUE(mSink.waitForWrites(1));
    unsigned long long blocked = 0;
    bool found = false;
    DIR* tasks = opendir("/proc/self/task");
    ASSERT_NE(tasks, nullptr);
    for (struct dirent* task; (task = readdir(tasks)) != nullptr;) {
        const std::string dir = std::string("/proc/self/task/") + task->d_name;
        if (readFile(dir + "/comm") != "logwriter\n") continue;
        const std::string status = readFile(dir + "/status");
        const size_t at = status.find("SigBlk:");
        ASSERT_NE(at, std::string::npos);
        blocked = strtoull(status.c_str() + at + 7, nullptr, 16);
        found = true;
    }
    closedir(tasks);
    ASSERT_TRUE(found);
    for (int sig : {SIGTERM, SIGINT, SIGHUP}) EXPECT_TRUE(blocked >> (sig - 1) & 1) << sig;
}
