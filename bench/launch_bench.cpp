// What a user waits for, on the running program started as on the device,
// each figure beside a floor or a peer measured in the same run:
//  - the 20000-video start folder: from the program's opendir of it to the
//    first frame presented after its loader said it is done, against plain
//    readdir + stat + one sort;
//  - start (exec) to the first frame presented, in a 12-video folder, against
//    a bare SDL program that opens a window, a renderer and the same font
//    and presents one text;
//  - the resident memory once that first frame is up, against the same peer.
// The times come from bench/present_shim.cpp, preloaded into both programs.
// Run by "./kovani bench" under Xvfb:
//     launch_bench APP_DIR BENCH_DIR
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "bench_clock.h"
#include "bench_folder.h"

extern char** environ;

namespace {

const int kRuns = 5;
const int kBigFolder = 20000;
const int kSmallFolder = 12;
// How long a program has to reach what is waited for.
const double kDeadlineMs = 30000;
// Memory is read once the first frame has settled.
const int kSettleMs = 500;

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// A program started with the shim, its output to /dev/null.
class Launched {
public:
    Launched(const std::vector<std::string>& argv, const std::string& cwd, const std::string& shim,
             const std::string& folder) {
        char tmpl[] = "/tmp/kovani_launch_XXXXXX";
        const int fd = mkstemp(tmpl);
        if (fd >= 0) close(fd);
        mTimes = tmpl;
        std::vector<std::string> env;
        for (char** e = environ; *e; e++)
            if (strncmp(*e, "LD_PRELOAD=", 11) != 0 && strncmp(*e, "KOVANI_SHIM_", 12) != 0) env.push_back(*e);
        env.push_back("LD_PRELOAD=" + shim);
        env.push_back("KOVANI_SHIM_TIMES=" + mTimes);
        if (!folder.empty()) env.push_back("KOVANI_SHIM_FOLDER=" + folder);
        std::vector<char*> args, envp;
        for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        for (const std::string& e : env) envp.push_back(const_cast<char*>(e.c_str()));
        envp.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        // The child changes folder before it runs: the player loads its files from there.
        const std::string self = std::filesystem::current_path();
        if (chdir(cwd.c_str()) != 0) return;
        mStartMs = nowMs();
        if (posix_spawn(&mPid, args[0], &actions, nullptr, args.data(), envp.data()) != 0) mPid = -1;
        if (chdir(self.c_str()) != 0) mPid = -1;
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Launched() {
        if (mPid > 0) {
            kill(mPid, SIGTERM);
            for (double end = nowMs() + 10000; nowMs() < end;) {
                if (waitpid(mPid, nullptr, WNOHANG) == mPid) {
                    mPid = -1;
                    break;
                }
                usleep(10000);
            }
            if (mPid > 0) {
                kill(mPid, SIGKILL);
                waitpid(mPid, nullptr, 0);
            }
        }
        unlink(mTimes.c_str());
    }
    // When the shim noted `what`, waiting for it; 0 when it never came.
    double waitFor(const std::string& what) {
        for (double end = nowMs() + kDeadlineMs; mPid > 0 && nowMs() < end; usleep(2000)) {
            std::ifstream in(mTimes);
            std::string name;
            double ms;
            while (in >> name >> ms)
                if (name == what) return ms;
        }
        return 0;
    }
    double startMs() const { return mStartMs; }
    double residentMb() const {
        std::ifstream in("/proc/" + std::to_string(mPid) + "/status");
        std::string line;
        while (std::getline(in, line))
            if (line.rfind("VmRSS:", 0) == 0) return atol(line.c_str() + 6) / 1024.0;
        return 0;
    }

private:
    pid_t mPid = -1;
    double mStartMs = 0;
    std::string mTimes;
};

std::string makeSmallFolder() {
    char tmpl[] = "/tmp/kovani_launch_few_XXXXXX";
    if (!mkdtemp(tmpl)) return "";
    for (int i = 0; i < kSmallFolder; i++) {
        const std::string name = std::string(tmpl) + "/clip " + std::to_string(i) + ".mp4";
        close(open(name.c_str(), O_CREAT | O_WRONLY, 0644));
    }
    return tmpl;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: %s APP_DIR BENCH_DIR\n", argv[0]);
        return 2;
    }
    const std::string app = argv[1], bench = argv[2];
    const std::string shim = bench + "/libpresent_shim.so";
    const std::string player = app + "/kovani_player";
    const std::string peer = bench + "/sdl_peer";
    const std::string big = makeVideoFolder(kBigFolder), few = makeSmallFolder();
    if (big.empty() || few.empty()) return 2;

    std::vector<double> opens, reads, readCpu, hands, presents, floors, starts, peerStarts, rss, peerRss;
    int failed = 0;
    timeFolderFloor(big);  // warms the caches
    for (int run = 0; run < kRuns; run++) {
        {
            Launched p({peer, "text", app + "/regular.ttf"}, bench, shim, "");
            const double first = p.waitFor("first");
            if (first > 0) peerStarts.push_back(first - p.startMs());
            usleep(kSettleMs * 1000);
            if (first > 0) peerRss.push_back(p.residentMb());
            failed += first <= 0;
        }
        {
            Launched p({player, "-d", few}, app, shim, "");
            const double first = p.waitFor("first");
            if (first > 0) starts.push_back(first - p.startMs());
            usleep(kSettleMs * 1000);
            if (first > 0) rss.push_back(p.residentMb());
            failed += first <= 0;
        }
        // The floor just before the open, in the state the open then meets.
        floors.push_back(timeFolderFloor(big));
        {
            Launched p({player, "-d", big}, app, shim, big);
            const double open = p.waitFor("open");
            const double list = p.waitFor("list");
            if (open > 0 && list > 0) {
                opens.push_back(list - open);
                reads.push_back(p.waitFor("closed") - open);
                readCpu.push_back(p.waitFor("readcpu"));
                hands.push_back(p.waitFor("handed") - open);
                presents.push_back(p.waitFor("presents"));
            }
            failed += open <= 0 || list <= 0;
        }
    }
    std::error_code ec;
    std::filesystem::remove_all(big, ec);
    std::filesystem::remove_all(few, ec);

    const double open = median(opens), floorMs = median(floors);
    const double start = median(starts), peerStart = median(peerStarts);
    const double mem = median(rss), peerMem = median(peerRss);
    printf("running program, %d-video start folder: opendir -> frame showing the list %.1f ms; floor %.1f ms; "
           "ratio %.2f\n",
           kBigFolder, open, floorMs, floorMs > 0 ? open / floorMs : 0);
    printf("  of which: closedir at %.1f ms (the reading thread %.1f ms on the processor, beside the helper "
           "that shares its stats), the loader's event at %.1f ms, "
           "the list frame at %.1f ms; %.0f frames presented while the folder was read\n",
           median(reads), median(readCpu), median(hands), open, median(presents));
    printf("start (exec) -> first frame, %d-video folder: %.1f ms; bare SDL peer %.1f ms; ratio %.2f\n",
           kSmallFolder, start, peerStart, peerStart > 0 ? start / peerStart : 0);
    printf("resident memory after the first frame: %.1f MB; bare SDL peer %.1f MB; ratio %.2f\n", mem, peerMem,
           peerMem > 0 ? mem / peerMem : 0);
    if (failed) printf("launch bench: %d of %d launches never showed what was waited for\n", failed, kRuns * 3);
    return failed ? 1 : 0;
}
