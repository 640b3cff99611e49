#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/sysutil.h"

// A process the process table shows under `name` (a sleep under that first
// argument), until destroyed. The table is machine-wide: tests that make
// one take the "network_processes" lock.
class FakeProcess {
public:
    explicit FakeProcess(const char* name) {
        extern char** environ;
        char* argv[] = {const_cast<char*>(name), const_cast<char*>("60"), nullptr};
        if (posix_spawn(&mPid, "/bin/sleep", nullptr, nullptr, argv, environ) != 0) mPid = -1;
        for (int i = 0; i < 200 && mPid > 0 && check_process_exist(name) != mPid; i++) usleep(10 * 1000);
    }
    ~FakeProcess() {
        if (mPid <= 0) return;
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    FakeProcess(const FakeProcess&) = delete;
    FakeProcess& operator=(const FakeProcess&) = delete;

    pid_t mPid = -1;
};
