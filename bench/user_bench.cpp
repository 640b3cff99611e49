// What a user feels in the running program, each figure beside a floor
// measured in the same run:
//  - opening a folder of 20000 videos, the program's log lines included
//    (from the window's start to its "loaddir" line, as a listener on the log
//    stream sees it), against plain readdir + stat + one sort;
//  - the longest gap between two drawn frames while a video starts (on a
//    stand-in decoder), against the fast frame period.
// Run by "./kovani bench" from the app folder, as root in a private PID
// namespace (the decoder is killed by name).

#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>
#include <fcntl.h>
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
const int kRuns = 3;
const double kFastFrameMs = 33.0;

// Reads the program's log stream as fast as it comes and notes when a line
// holding a marker arrives. The stream is standard output, line by line, so
// that every line costs the program one write, as a system-log line does.
class LogListener {
public:
    LogListener() {
        int fds[2];
        if (pipe(fds) != 0) return;
        fflush(stdout);
        mSavedOut = dup(STDOUT_FILENO);
        dup2(fds[1], STDOUT_FILENO);
        close(fds[1]);
        setvbuf(stdout, nullptr, _IOLBF, 0);
        mRead = fds[0];
        mThread = std::thread([this] { loop(); });
    }
    ~LogListener() {
        fflush(stdout);
        dup2(mSavedOut, STDOUT_FILENO);  // closes the pipe's last writer: the loop ends
        close(mSavedOut);
        if (mThread.joinable()) mThread.join();
        close(mRead);
    }
    void expect(const std::string& marker) {
        std::lock_guard<std::mutex> hold(mLock);
        mMarker = marker;
        mSeenMs = 0;
        mTail.clear();
    }
    double seenMs() {
        std::lock_guard<std::mutex> hold(mLock);
        return mSeenMs;
    }

private:
    void loop() {
        char buf[65536];
        for (ssize_t n; (n = read(mRead, buf, sizeof buf)) > 0;) {
            std::lock_guard<std::mutex> hold(mLock);
            mTail.append(buf, (size_t)n);
            if (!mMarker.empty() && mSeenMs == 0 && mTail.find(mMarker) != std::string::npos) mSeenMs = nowMs();
            if (mTail.size() > 4096) mTail.erase(0, mTail.size() - 512);
        }
    }
    int mRead = -1;
    int mSavedOut = -1;
    std::mutex mLock;
    std::string mMarker;  // guarded by mLock
    double mSeenMs = 0;   // guarded by mLock
    std::string mTail;    // guarded by mLock: the end of what was read
    std::thread mThread;
};

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

void openFolder(LogListener& log, const std::string& folder, double* openMs, double* floorMs) {
    std::vector<double> opens, floors;
    for (int run = 0; run < kRuns; run++) {
        gUserPath = folder;
        log.expect("loaddir " + folder + " ");
        const double start = nowMs();
        {
            PlayerWindow window(nullptr);
            window.init();
            while (log.seenMs() == 0 && nowMs() - start < 60000) SDL_Delay(1);
            opens.push_back(log.seenMs() - start);
        }
        floors.push_back(timeFolderFloor(folder));
    }
    *openMs = median(opens);
    *floorMs = median(floors);
}

// Runs the main loop on the player window; a script presses Down and A (the
// first video starts) and quits 2.5 s later.
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
        SDL_Delay(2500);
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
    double openMs = 0, floorMs = 0, gapMs = 0;
    {
        LogListener log;
        initLogger(0);
        SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER);
        TTF_Init();
        if (!ScreenInit(1280, 720, 32, 0)) return 2;
        initDefLang();
        init_skin();
        timeFolderFloor(folder);  // warms the caches
        openFolder(log, folder, &openMs, &floorMs);
        gapMs = longestGapWhileStarting(few);
        uninit_skin();
        ScreenUninit();
        TTF_Quit();
        SDL_Quit();
    }
    printf("open %d-video folder in the player, log lines included: %.1f ms; floor %.1f ms; ratio %.2f\n",
           kFolderFiles, openMs, floorMs, openMs / floorMs);
    printf("longest frame gap while a video starts: %.1f ms; frame period %.1f ms; ratio %.2f\n", gapMs,
           kFastFrameMs, gapMs / kFastFrameMs);
    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
    std::filesystem::remove_all(root, ec);
    return 0;
}
