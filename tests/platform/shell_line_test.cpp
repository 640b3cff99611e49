#include "platform/shell_line.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "platform/stop_flag.h"
#include "tests/support/temp_dir.h"

TEST(ShellLineTest, RunsLikeSystemAndReportsTheStatus) {
    TempDeviceRoot dir;
    const std::string file = dir.path() + "/out";
    const std::string line = "echo 'a b' > '" + file + "'; exit 3";
    const int status = runShellLine(line.c_str(), nullptr);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(readFile(file), "a b\n");
}

// A hung command gives way to a stop: the call returns and the whole group,
// grandchildren included, is gone.
TEST(ShellLineTest, AStopEndsAHungLineAndEverythingItStarted) {
    TempDeviceRoot dir;
    const std::string pidFile = dir.path() + "/pid";
    const std::string line = "sleep 30 & echo $! > '" + pidFile + "'; wait";
    StopFlag stop;
    int result = 0;
    std::thread runner([&] { result = runShellLine(line.c_str(), &stop); });
    for (int i = 0; i < 500 && readFile(pidFile).empty(); i++) usleep(10 * 1000);
    const int sleeper = atoi(readFile(pidFile).c_str());
    ASSERT_GT(sleeper, 0);
    stop.set();
    runner.join();
    EXPECT_EQ(result, -1);
    for (int i = 0; i < 200 && kill(sleeper, 0) == 0; i++) usleep(10 * 1000);
    EXPECT_NE(kill(sleeper, 0), 0) << "the command's own child was killed with it";
}
