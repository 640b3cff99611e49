#include "shell_line.h"

#include <errno.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/wait.h>

#include "clock.h"
#include "logger.h"
#include "stop_flag.h"

extern char** environ;

namespace {

// The shell starts with default signal handling and nothing blocked, whatever
// the calling thread has set up.
bool prepareAttributes(posix_spawnattr_t* attr) {
    if (posix_spawnattr_init(attr) != 0) return false;
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    for (int sig : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD, SIGUSR1, SIGUSR2})
        sigaddset(&defaults, sig);
    posix_spawnattr_setsigmask(attr, &none);
    posix_spawnattr_setsigdefault(attr, &defaults);
    posix_spawnattr_setpgroup(attr, 0);
    posix_spawnattr_setflags(attr, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK |
                                       POSIX_SPAWN_SETSIGDEF);
    return true;
}

}  // namespace

namespace {

// Kills the line's whole process group and reaps its shell.
void killLine(pid_t pid) {
    kill(-pid, SIGKILL);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

int runShellLine(const char* line, const StopFlag* stop, long limitMs) {
    if (!line) return -1;
    posix_spawnattr_t attr;
    if (!prepareAttributes(&attr)) {
        tprintf("shell: cannot set up a process for \"%s\"\n", line);
        return -1;
    }
    char sh[] = "sh";
    char dashC[] = "-c";
    char* argv[] = {sh, dashC, const_cast<char*>(line), nullptr};
    pid_t pid = -1;
    const long deadline = monotonicMs() + limitMs;
    const int err = posix_spawn(&pid, "/bin/sh", nullptr, &attr, argv, environ);
    posix_spawnattr_destroy(&attr);
    if (err != 0) {
        tprintf("shell: cannot start \"%s\": %s\n", line, strerror(err));
        return -1;
    }
    // Short lines end within milliseconds; the wait starts fine and grows.
    long pauseMs = 1;
    while (true) {
        // The clock first: a line that ended by the time it was read counts.
        const bool late = limitMs > 0 && monotonicMs() >= deadline;
        int status = 0;
        const pid_t done = waitpid(pid, &status, WNOHANG);
        if (done == pid) return status;
        if (done < 0 && errno != EINTR) {
            tprintf("shell: lost \"%s\": %s\n", line, strerror(errno));
            return -1;
        }
        if (late) {
            killLine(pid);
            tprintf("shell: \"%s\" did not finish within %ld ms, killed\n", line, limitMs);
            return -1;
        }
        if (stop && stop->sleepFor(pauseMs)) {
            killLine(pid);
            tprintf("shell: stopped \"%s\"\n", line);
            return -1;
        }
        if (!stop) {
            struct timespec pause = {0, pauseMs * 1000000L};
            nanosleep(&pause, nullptr);
        }
        if (pauseMs < 10) pauseMs *= 2;
    }
}
