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
#include "bench_folder.h"
#include "platform/log_queue.h"
#include "platform/logger.h"
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

double timeLoaddir(const std::string& dir, int* count) {
    std::vector<void*> list;
    const double start = nowMs();
    *count = loaddir(&list, dir.c_str(), file_handler, 0);
    const double elapsed = nowMs() - start;
    for (void* entry : list) delete static_cast<TextMenuItem*>(entry);
    return elapsed;
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
        timeFolderFloor(dir);
        for (int run = 0; run < kRuns; run++) {
            best = std::min(best, timeLoaddir(dir, &count));
            floorMs = std::min(floorMs, timeFolderFloor(dir));
        }
    }
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
    printf("loaddir %d entries: %.1f ms; floor %.1f ms; ratio %.2f\n", count, best, floorMs, best / floorMs);
    return count == kFolderFiles ? 0 : 1;
}

// One write call per line, as the system log takes one send per line.
class NullSink : public LogSink {
public:
    NullSink() : mFd(open("/dev/null", O_WRONLY | O_CLOEXEC)) {}
    ~NullSink() override {
        if (mFd >= 0) close(mFd);
    }
    void write(const char* line) override {
        if (::write(mFd, line, strlen(line)) > 0) mLines++;
    }
    // Only once the writer thread is joined.
    long lines() const { return mLines; }

private:
    int mFd;
    long mLines = 0;
};

// What a caller pays for a log line: the loader's line per entry, against
// formatting the same line into a buffer. The queue holds the whole burst,
// so no line is dropped.
int benchTprintf() {
    const int lines = kFolderFiles;
    std::vector<std::string> names;
    for (int i = 0; i < lines; i++) names.push_back("video-" + std::to_string(i) + ".mp4");
    const void* icon = &names;
    NullSink sink;
    double best = 1e9, floorMs = 1e9;
    size_t formatted = 0;
    for (int run = 0; run < kRuns; run++) {
        if (initLoggerToSink(&sink, lines) != 0) return 1;
        double start = nowMs();
        for (const std::string& name : names) tprintf("%s labelicon = %p\n", name.c_str(), icon);
        best = std::min(best, nowMs() - start);
        shutdownLogger();
        char line[256];
        start = nowMs();
        for (const std::string& name : names)
            formatted += snprintf(line, sizeof line, "%s labelicon = %p\n", name.c_str(), icon);
        floorMs = std::min(floorMs, nowMs() - start);
    }
    printf("tprintf: %.2f us per line on the caller's side (%d lines, queue); floor %.2f us; ratio %.2f\n",
           best * 1000 / lines, lines, floorMs * 1000 / lines, best / floorMs);
    if (sink.lines() != long(lines) * kRuns || formatted == 0) {
        fprintf(stderr, "tprintf bench: %ld of %d lines written\n", sink.lines(), lines * kRuns);
        return 1;
    }
    return 0;
}

struct Bench {
    const char* name;
    int (*run)();
};

const Bench kBenches[] = {
    {"folder", benchFolder},
    {"tprintf", benchTprintf},
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
