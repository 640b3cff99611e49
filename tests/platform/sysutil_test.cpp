#include "platform/sysutil.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "tests/support/temp_dir.h"

TEST(CheckProcessExist, MatchesTheFirstArgumentEndingInTheNameOnly) {
    const std::string name = "kvprobe" + std::to_string(getpid());
    struct Row { std::string argv0; bool matches; } rows[] = {
        {"/opt/bin/" + name, true}, {"x" + name, true}, {name + " --flag", true},
        {name + "2", false},        {name + ".sh", false},
    };
    for (const Row& row : rows) {
        pid_t pid = fork();
        if (pid == 0) {
            execl("/bin/sleep", row.argv0.c_str(), "30", (char*)nullptr);
            _exit(127);
        }
        // Wait until the exec has replaced the forked copy's command line.
        const std::string cmdline = "/proc/" + std::to_string(pid) + "/cmdline";
        for (int i = 0; i < 200 && readFile(cmdline).rfind(row.argv0 + '\0', 0) != 0; i++) usleep(5000);
        const int found = check_process_exist(name.c_str(), 0);
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        EXPECT_EQ(found, row.matches ? pid : -1) << row.argv0;
    }
    EXPECT_EQ(check_process_exist(name.c_str()), -1) << "gone once killed";
}

// An unreaped dead child (a zombie) does not count as a running decoder.
TEST(CheckProcessExist, AZombieIsNotARunningProcess) {
    const std::string name = "kvzombie" + std::to_string(getpid());
    pid_t pid = fork();
    if (pid == 0) {
        execl("/bin/sleep", name.c_str(), "30", (char*)nullptr);
        _exit(127);
    }
    for (int i = 0; i < 200 && check_process_exist(name.c_str()) != pid; i++) usleep(5000);
    EXPECT_TRUE(process_alive(pid));
    kill(pid, SIGKILL);
    // Not reaped yet: wait for the kill to land without collecting the child.
    siginfo_t info = {};
    waitid(P_PID, pid, &info, WEXITED | WNOWAIT);
    EXPECT_FALSE(process_alive(pid));
    EXPECT_EQ(check_process_exist(name.c_str()), -1);
    waitpid(pid, nullptr, 0);
    EXPECT_FALSE(process_alive(pid)) << "reaped: gone";
}
