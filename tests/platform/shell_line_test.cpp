#include "platform/shell_line.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <thread>

#include "platform/stop_flag.h"
#include "tests/support/temp_dir.h"

// A stop ends a hung line and everything it started, grandchildren included.
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
