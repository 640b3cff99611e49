// What a user feels in the running program, each figure beside a floor
// measured in the same run:
//  - opening a folder of 20000 videos, the program's log lines included
//    (from the window's start until its loader has logged "loaddir" and
//    handed the list over), against plain readdir + stat + one sort;
//  - the resident memory with that folder open;
//  - the longest gap between two drawn frames while a video starts (on a
//    stand-in decoder) and keys keep asking for frames, against the fast
//    frame period.
// Run by "./kovani bench" from the app folder, as root in a private PID
// namespace (the decoder is killed by name).

#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "bench_clock.h"
#include "bench_folder.h"
#include "platform/device_paths.h"
#include "platform/log_queue.h"
#include "platform/logger.h"
#include "platform/sysutil.h"
#include "player/app_options.h"
#include "player/player_lang.h"
#include "player/player_window.h"
#include "player/skin.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "toolkit/screen.h"
#include "toolkit/window.h"

namespace {

const int kFolderFiles = 20000;
const int kRuns = 5;
const double kFastFrameMs = 33.0;

// Receives the program's log lines as fast as they come, one datagram a
// line as the system log's socket takes them, from the logger's writer
// thread, and notes when a line holding a marker arrives.
class LogListener : public LogSink {
public:
    LogListener() {
        int fds[2];
        if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, fds) != 0) return;
        mSend = fds[0];
        mRead = fds[1];
        mThread = std::thread([this] { loop(); });
    }
    ~LogListener() {
        shutdown(mRead, SHUT_RDWR);  // wakes the listener's recv: it ends
        if (mThread.joinable()) mThread.join();
        close(mSend);
        close(mRead);
    }
    // The writer thread's call for each line.
    void write(const char* line) override {
        if (send(mSend, line, strlen(line), 0) < 0) {
            // The listener is gone: the line has nowhere to go.
        }
    }
    void expect(const std::string& marker) {
        std::lock_guard<std::mutex> hold(mLock);
        mMarker = marker;
        mSeenMs = 0;
    }
    double seenMs() {
        std::lock_guard<std::mutex> hold(mLock);
        return mSeenMs;
    }

private:
    void loop() {
        char buf[4096];
        for (ssize_t n; (n = recv(mRead, buf, sizeof buf - 1, 0)) > 0;) {
            buf[n] = '\0';
            std::lock_guard<std::mutex> hold(mLock);
            if (!mMarker.empty() && mSeenMs == 0 && strstr(buf, mMarker.c_str())) mSeenMs = nowMs();
        }
    }
    int mSend = -1;
    int mRead = -1;
    std::mutex mLock;
    std::string mMarker;  // guarded by mLock
    double mSeenMs = 0;   // guarded by mLock
    std::thread mThread;
};

// Resident memory of this process, in MB.
double residentMb() {
    FILE* f = fopen("/proc/self/status", "r");
    if (!f) return 0;
    char line[256];
    long kb = 0;
    while (fgets(line, sizeof line, f))
        if (sscanf(line, "VmRSS: %ld kB", &kb) == 1) break;
    fclose(f);
    return kb / 1024.0;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void pushCode(int code) {
    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = code;
    SDL_PushEvent(&e);
}

// The player window, noting when each frame is drawn.
class TimedPlayerWindow : public PlayerWindow {
public:
    // `drawn`: not owned; outlives the window (the loop deletes the window).
    explicit TimedPlayerWindow(std::vector<double>* drawn) : PlayerWindow(nullptr), mDrawn(drawn) {}
    int draw() override {
        mDrawn->push_back(nowMs());
        return PlayerWindow::draw();
    }

private:
    std::vector<double>* mDrawn;
};

// The open as the user sees it: from the window's first frame on screen (the
// loader reads once it is), until its loader has logged "loaddir" and handed
// the list over. The lines are delivered to the listener behind the
// program's back; when the last one arrived is noted too.
void openFolder(LogListener& log, const std::string& folder, double* openMs, double* deliveredMs,
                double* floorMs, double* rssMb) {
    std::vector<double> opens, delivered, floors;
    for (int run = 0; run < kRuns; run++) {
        // The floor first, in the same state the open then meets.
        floors.push_back(timeFolderFloor(folder));
        gUserPath = folder;
        log.expect("loaddir " + folder + " ");
        {
            // The window's images are loaded before the clock starts: they
            // are no part of opening a folder.
            PlayerWindow window(nullptr);
            SDL_FlushEvent(SDL_USEREVENT);  // the words of the runs before
            window.init();
            window.draw();
            const double start = nowMs();
            // Its word to itself that the frame is on screen lets the loader read.
            for (int i = 0; i < 16 && SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT); i++) window.eventHandling();
            while (sLoading && nowMs() - start < 60000) SDL_Delay(1);
            opens.push_back(nowMs() - start);
            while (log.seenMs() == 0 && nowMs() - start < 60000) SDL_Delay(1);
            delivered.push_back(log.seenMs() - start);
            *rssMb = residentMb();
        }
    }
    *openMs = median(opens);
    *deliveredMs = median(delivered);
    *floorMs = median(floors);
}

// Runs the main loop on the player window; a script presses A (the first
// video starts), then Down every 20 ms, each of which wants a frame, and
// quits 2.5 s later.
double longestGapWhileStarting(const std::string& folder) {
    gUserPath = folder;
    std::vector<KovaniWindow*> windows;
    std::vector<double> times;
    TimedPlayerWindow* window = new TimedPlayerWindow(&times);
    window->init();
    windows.push_back(window);
    std::atomic<double> pressedMs{0};
    std::thread script([&] {
        while (sLoading) SDL_Delay(10);
        SDL_Delay(500);
        pushCode(KEY_A);
        pressedMs = nowMs();
        for (int i = 0; i < 100; i++) {
            SDL_Delay(20);
            pushCode(i % 2 ? KEY_UP : KEY_DOWN);
        }
        SDL_Delay(500);
        SDL_Event quit = {};
        quit.type = SDL_QUIT;
        SDL_PushEvent(&quit);
    });
    runWindows(windows);
    script.join();
    clearQuitRequest();
    double longest = 0;
    for (size_t i = 1; i < times.size(); i++)
        if (times[i - 1] >= pressedMs && times[i] <= pressedMs + 2000)
            longest = std::max(longest, times[i] - times[i - 1]);
    return longest;
}

}  // namespace

int main() {
    char tmpl[] = "/tmp/kovani_user_XXXXXX";
    const std::string root = mkdtemp(tmpl);
    setDevicePathPrefix(root.c_str());
    std::filesystem::create_directories(devicePath(DEVICE_PATH_PLAYER_DIR));
    const std::string folder = makeVideoFolder(kFolderFiles);
    if (folder.empty()) return 2;
    // The stand-in decoder sits beside this program.
    const std::string self = std::filesystem::canonical("/proc/self/exe").parent_path();
    setenv("PATH", (self + ":" + getenv("PATH")).c_str(), 1);
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
    if (chdir(KOVANI_APP_DIR) != 0) return 2;
    // What the shell lines print (killall finding nothing) is not the result.
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDERR_FILENO);
    close(null);

    const std::string few = root + "/few";
    std::filesystem::create_directories(few);
    for (const char* name : {"/a.mp4", "/b.mp4"}) close(open((few + name).c_str(), O_CREAT | O_WRONLY, 0644));
    double openMs = 0, deliveredMs = 0, floorMs = 0, gapMs = 0, rssMb = 0;
    const double startRssMb = residentMb();
    {
        LogListener log;
        // The program's own logger, its queue and writer thread, into a
        // listener that takes each line as the system log's socket would.
        initLoggerToSink(&log, 0);
        SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER);
        TTF_Init();
        if (!ScreenInit(1280, 720, 32, 0)) return 2;
        initDefLang();
        init_skin();
        timeFolderFloor(folder);  // warms the caches
        openFolder(log, folder, &openMs, &deliveredMs, &floorMs, &rssMb);
        gapMs = longestGapWhileStarting(few);
        uninit_skin();
        ScreenUninit();
        TTF_Quit();
        SDL_Quit();
        shutdownLogger();
    }
    printf("open %d-video folder in the player, log lines included: %.1f ms; floor %.1f ms; ratio %.2f "
           "(its last log line reached the listener at %.1f ms)\n",
           kFolderFiles, openMs, floorMs, openMs / floorMs, deliveredMs);
    printf("resident memory with the %d-video folder open: %.1f MB (%.1f MB before the screen opened)\n",
           kFolderFiles, rssMb, startRssMb);
    printf("longest frame gap while a video starts: %.1f ms; frame period %.1f ms; ratio %.2f\n", gapMs,
           kFastFrameMs, gapMs / kFastFrameMs);
    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
    std::filesystem::remove_all(root, ec);
    return 0;
}
