// Time to draw and present one player-window frame (windowed, 200 videos
// listed, a video playing, a new picture of it in the video plane beneath
// each frame) next to one full-screen texture copy, measured in the same run
// on the same renderer. Run by "./kovani bench" from the app folder.

#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "bench_clock.h"
#include "platform/device_paths.h"
#include "platform/video_plane.h"
#include "player/app_options.h"
#include "player/player_lang.h"
#include "player/player_window.h"
#include "player/skin.h"
#include "toolkit/keycodes.h"
#include "toolkit/screen.h"
#include "platform/sysutil.h"

namespace {

const int kEntries = 200;
const int kFrames = 300;

// Waits for the renderer to finish: both sides pay for one tiny read-back.
void readOnePixel() {
    Uint32 pixel;
    SDL_Rect one = {0, 0, 1, 1};
    SDL_RenderReadPixels(gRenderer, &one, SDL_PIXELFORMAT_ARGB8888, &pixel, 4);
}

void finishFrame() {
    SDL_RenderPresent(gRenderer);
    readOnePixel();
}

template <typename Frame>
double bestFrameMs(Frame frame) {
    for (int i = 0; i < 20; i++) frame();
    double best = 1e9;
    for (int run = 0; run < 3; run++) {
        const double start = nowMs();
        for (int i = 0; i < kFrames; i++) frame();
        best = std::min(best, (nowMs() - start) / kFrames);
    }
    return best;
}

void pushCode(int code) {
    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = code;
    SDL_PushEvent(&e);
}

}  // namespace

int main() {
    char tmpl[] = "/tmp/kovani_frame_XXXXXX";
    const std::string root = mkdtemp(tmpl);
    setDevicePathPrefix(root.c_str());
    std::filesystem::create_directories(devicePath(DEVICE_PATH_PLAYER_DIR));
    const std::string videos = root + "/videos";
    std::filesystem::create_directories(videos);
    for (int i = 0; i < kEntries; i++) {
        const std::string name = videos + "/Holiday clip " + std::to_string(1000 + i) + ".mp4";
        close(open(name.c_str(), O_CREAT | O_WRONLY, 0644));
    }
    // The stand-in decoder sits beside this program.
    const std::string self = std::filesystem::canonical("/proc/self/exe").parent_path();
    setenv("PATH", (self + ":" + getenv("PATH")).c_str(), 1);
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
    if (chdir(KOVANI_APP_DIR) != 0) return 2;
    // The program's log lines would drown the result.
    const int savedOut = dup(STDOUT_FILENO);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);

    SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER);
    TTF_Init();
    if (!ScreenInit(1280, 720, 32, 0)) return 2;
    initDefLang();
    init_skin();
    gUserPath = videos;

    int result = 0;
    double frameMs = 0, copyMs = 0;
    {
        PlayerWindow window(nullptr);
        window.init();
        const long deadline = systemms() + 10000;
        while (sLoading && systemms() < deadline) SDL_Delay(10);
        pushCode(EVENT_PLAY_FILE);
        for (int i = 0; i < 10 && !window.isPlaying(); i++) window.eventHandling();
        if (!window.isPlaying()) result = 1;

        // A stand-in decoder: a new picture at the windowed rectangle for
        // every frame, so each one uploads and composites it.
        VideoPlaneWriter decoder;
        if (decoder.create() != 0) result = 1;
        const VideoRect windowed = {650, 85, 610, 360};
        uint32_t shade = 0;
        frameMs = bestFrameMs([&] {
            size_t stride = 0;
            if (uint8_t* rows = decoder.beginFrame(windowed, &stride)) {
                memset(rows, (int)(shade++ & 0xFF), stride * windowed.h);
                decoder.endFrame();
            }
            // As the main loop does before it draws.
            ScreenVideoChanged();
            window.draw();
            ScreenUpdateAndFlip();
            readOnePixel();
        });
        decoder.remove();
        SDL_Texture* full = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888,
                                              SDL_TEXTUREACCESS_STATIC, 1280, 720);
        copyMs = bestFrameMs([&] {
            SDL_RenderCopy(gRenderer, full, nullptr, nullptr);
            finishFrame();
        });
        SDL_DestroyTexture(full);
        window.quit();
    }
    uninit_skin();
    ScreenUninit();
    TTF_Quit();
    SDL_Quit();
    // After everything has gone, whose last log lines would mix in.
    fflush(stdout);
    dup2(savedOut, STDOUT_FILENO);
    printf("player frame (windowed, %d entries, playing, composited over a 1280 x 720 video "
           "plane%s): %.3f ms; full-screen copy %.3f ms; ratio %.2f\n",
           kEntries, result ? " FAILED TO START" : "", frameMs, copyMs, frameMs / copyMs);
    std::error_code ec;
    std::filesystem::remove_all(root, ec);
    return result;
}
