#include "toolkit/sysutil.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

// What `sh` makes of `word` when it stands as one argument of printf.
std::string throughShell(const std::string& word) {
    std::string cmd = "printf '%s|' " + word;
    FILE* p = popen(cmd.c_str(), "r");
    std::string out;
    char buf[256];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    pclose(p);
    return out;
}

// A child process whose first command-line argument is `argv0`.
pid_t spawnNamed(const std::string& argv0) {
    pid_t pid = fork();
    if (pid == 0) {
        execl("/bin/sleep", argv0.c_str(), "30", (char*)nullptr);
        _exit(127);
    }
    // Wait until the exec has replaced the forked copy's command line.
    const std::string path = "/proc/" + std::to_string(pid) + "/cmdline";
    for (int i = 0; i < 200; i++) {
        FILE* f = fopen(path.c_str(), "r");
        char buf[256] = {};
        if (f) {
            (void)fread(buf, 1, sizeof buf - 1, f);
            fclose(f);
        }
        if (argv0 == buf) break;
        usleep(5000);
    }
    return pid;
}

void endChild(pid_t pid) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

}  // namespace

TEST(ShellQuote, EveryNameReachesTheShellAsExactlyOneWord) {
    const std::vector<std::string> names = {
        "/mnt/My Videos/two  spaces.mkv",
        "say \"hi\" $HOME `id` $(echo injected); echo x",
        "line\nbreak.mp4",
        "it's '''",
        "back\\slash \\n *.mp4 ?",
        "",
    };
    for (const std::string& name : names) {
        EXPECT_EQ(throughShell(shellQuote(name)), name + "|") << name;
    }
    EXPECT_EQ(shellQuote("/tmp/kovani_player/cmd"), "/tmp/kovani_player/cmd")
        << "plain paths stay readable in log lines";
}

TEST(CheckProcessExist, MatchesTheFirstArgumentEndingInTheNameOnly) {
    const std::string name = "kvprobe" + std::to_string(getpid());
    struct Row { std::string argv0; bool matches; } rows[] = {
        {name, true},
        {"/opt/bin/" + name, true},
        {"x" + name, true},
        {name + " --flag", true},
        {name + "2", false},
        {name + ".sh", false},
    };
    for (const Row& row : rows) {
        pid_t pid = spawnNamed(row.argv0);
        int found = check_process_exist(name.c_str(), 0);
        endChild(pid);
        if (row.matches)
            EXPECT_EQ(found, pid) << row.argv0;
        else
            EXPECT_EQ(found, -1) << row.argv0;
    }
    EXPECT_EQ(check_process_exist(name.c_str()), -1) << "gone once killed";
}
