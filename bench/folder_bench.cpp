// Timing programs, run by "./kovani bench [name...]" on a release build.
// Each bench prints one line; with names given only those run.

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_clock.h"
#include "toolkit/dir_browser.h"
#include "toolkit/file_browser_menu.h"
#include "toolkit/text_menu_item.h"

namespace {

const int kRuns = 5;
const int kFolderFiles = 20000;

// Standard output goes to /dev/null while the object lives, so that the
// toolkit's log lines do not mix with the results.
class QuietStdout {
public:
    QuietStdout() {
        fflush(stdout);
        mSaved = dup(STDOUT_FILENO);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        close(null);
    }
    ~QuietStdout() {
        fflush(stdout);
        dup2(mSaved, STDOUT_FILENO);
        close(mSaved);
    }

private:
    int mSaved;
};

// A folder of `count` video files with names in no particular order; its
// path, "" on failure.
std::string makeVideoFolder(int count) {
    char tmpl[] = "/tmp/kovani_bench_XXXXXX";
    if (!mkdtemp(tmpl)) return "";
    const char* const words[] = {"Holiday", "clip",    "Concert", "lecture",
                                 "Match",   "trailer", "Zoo",     "家庭"};
    const char* const extensions[] = {".mp4", ".mkv", ".avi", ".mov", ".webm", ".ts"};
    char path[512];
    for (int i = 0; i < count; i++) {
        // 7919 and 100000 share no factor, so every name differs.
        snprintf(path, sizeof path, "%s/%s %05u%s", tmpl, words[i % 8], (unsigned(i) * 7919u) % 100000u,
                 extensions[i % 6]);
        const int fd = open(path, O_CREAT | O_WRONLY, 0644);
        if (fd < 0) {
            std::error_code ec;
            std::filesystem::remove_all(tmpl, ec);
            return "";
        }
        close(fd);
    }
    return tmpl;
}

double timeLoaddir(const std::string& dir, int* count) {
    std::vector<void*> list;
    const double start = nowMs();
    *count = loaddir(&list, dir.c_str(), file_handler, 0);
    const double elapsed = nowMs() - start;
    for (void* entry : list) delete static_cast<TextMenuItem*>(entry);
    return elapsed;
}

// The least any folder reader does: read the names, stat each, sort once.
double timeFloor(const std::string& dir) {
    const double start = nowMs();
    std::vector<std::string> names;
    DIR* folder = opendir(dir.c_str());
    if (!folder) return 0;
    for (struct dirent* entry; (entry = readdir(folder)) != nullptr;) {
        struct stat st;
        if (fstatat(dirfd(folder), entry->d_name, &st, 0) != 0) continue;
        if (S_ISREG(st.st_mode)) names.push_back(entry->d_name);
    }
    closedir(folder);
    std::sort(names.begin(), names.end(),
              [](const std::string& a, const std::string& b) { return strcmp(a.c_str(), b.c_str()) < 0; });
    return nowMs() - start;
}

int benchFolder() {
    const std::string dir = makeVideoFolder(kFolderFiles);
    if (dir.empty()) {
        fprintf(stderr, "folder bench: cannot make the video folder\n");
        return 1;
    }
    double best = 1e9, floorMs = 1e9;
    int count = 0;
    {
        QuietStdout quiet;
        // One untimed pass of each warms the page and inode caches.
        timeLoaddir(dir, &count);
        timeFloor(dir);
        for (int run = 0; run < kRuns; run++) {
            best = std::min(best, timeLoaddir(dir, &count));
            floorMs = std::min(floorMs, timeFloor(dir));
        }
    }
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
    printf("loaddir %d entries: %.1f ms; floor %.1f ms; ratio %.2f\n", count, best, floorMs, best / floorMs);
    return count == kFolderFiles ? 0 : 1;
}

struct Bench {
    const char* name;
    int (*run)();
};

const Bench kBenches[] = {
    {"folder", benchFolder},
};

}  // namespace

int main(int argc, char** argv) {
    int failed = 0;
    for (const Bench& bench : kBenches) {
        bool wanted = argc < 2;
        for (int i = 1; i < argc; i++) wanted = wanted || strcmp(argv[i], bench.name) == 0;
        if (wanted && bench.run() != 0) failed++;
    }
    return failed ? 1 : 0;
}
