// Entry point: start-up, the main loop, and the shutdown in reverse order.
#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "app_options.h"
#include "player_lang.h"
#include "player_settings.h"
#include "player_window.h"
#include "skin.h"
#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "platform/owned_thread.h"
#include "toolkit/input.h"
#include "toolkit/lang.h"
#include "platform/logger.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"
#include "platform/sysutil.h"
#include "toolkit/system_state.h"
#include "toolkit/text.h"
#include "toolkit/wifi_monitor.h"
#include "toolkit/window.h"
#include "ui_layer.h"

namespace {

// The last wait for threads whose owners gave up on them.
const long kLateJoinMs = 500;

void cleanup(int code) {
    tprintf("cleanup close ttf\n");
    TTF_Quit();
    tprintf("cleanup close sdl\n");
    SDL_Quit();
    tprintf("quit\n");
    if (code != 0) exit(code);
}

// On a desktop without a session bus, SDL's D-Bus start would have one
// launched: a fork in the middle of start-up, and a daemon left running
// after we are gone. Told that there is none, SDL goes on without it.
void keepSessionBusAway() {
    if (getenv("DBUS_SESSION_BUS_ADDRESS") || !getenv("DISPLAY")) return;
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime && access((std::string(runtime) + "/bus").c_str(), F_OK) == 0) return;
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session-bus", 1);
    tprintf("no session bus: D-Bus left out\n");
}

// The last picture while the rest shuts down: the background and the
// loading text, presented twice so both buffers of the display hold it.
void farewellFrame() {
    if (!gBackground) return;
    for (int i = 0; i < 2; i++) {
        gBackground->render(nullptr, nullptr, false, nullptr);
        DrawString(gListFontTxt, SDL_Rect{0, 0, 1280, 720}, getLangStr(STRING_LOADING_SMALL),
                   gListColorTxt, ALIGN_CENTER, false, false);
        ScreenUpdateAndFlip();
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    initLogger(1);
    tprintf("start %ld\n", systemms());
    disp2_ui_transparent(1);

    gUserPath = devicePath(DEVICE_PATH_MNT);
    check_opts(argc, argv);
    applyUserFileRoot();
    keepSessionBusAway();

    // No thread of ours may be busy here: on a desktop without a session
    // bus SDL's D-Bus start forks, and a child forked while another thread
    // holds an allocator lock can hang, and this start with it.
    if (SDL_Init(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_JOYSTICK) < 0) {
        tprintf("Couldn't initialize SDL: %s\n", SDL_GetError());
        return 2;
    }
    tprintf("ttf inited\n");
    if (TTF_Init() < 0) {
        tprintf("Couldn't initialize TTF: %s\n", SDL_GetError());
        SDL_Quit();
        return 2;
    }
    // Decoded while the screen opens, which keeps this thread busy.
    preload_skin();
    initJoyStick();
    SDL_ShowCursor(0);
    tprintf("sdl inited\n");
    if (!ScreenInit(1280, 720, 32, 0)) {
        tprintf("Couldn't set video mode in UI: %s\n", SDL_GetError());
        ScreenUninit();
        cleanup(2);
    }
    rx_wifi_monitor_start();
    initDefLang();
    loadPlayerConfig();
    tprintf("screen inited\n");
    InitKeyShm(&gShmInfo);
    loadSystemState(&gShmInfo, nullptr);
    if (!gThemePath) gThemePath = strdup("./");
    init_skin();
    initLang();

    std::vector<KovaniWindow*> windows;
    // A folder given on the command line wins over the one saved last time.
    const bool reopenSaved = !gSavedDir.empty() && gUserPath == devicePath(DEVICE_PATH_MNT);
    PlayerWindow* player = new PlayerWindow(reopenSaved ? gSavedDir.c_str() : nullptr);
    player->init();
    end_skin_preload();
    windows.push_back(player);
    tprintf("runWindows %ld\n", systemms());
    runWindows(windows);

    farewellFrame();
    uninit_skin();
    ScreenUninit();
    closeJoyStick();
    rx_wifi_monitor_stop();
    savePlayerConfig();
    UninitKeyShm(&gShmInfo);
    free(gThemePath);
    gThemePath = nullptr;
    cleanup(0);
    // The very last step: a thread whose owner stopped waiting for it (a
    // folder read stuck on a dead network mount) is joined if it has come
    // back by now. One still stuck ends with the process, everything being
    // saved and closed; _exit runs no destructor of what it may still use.
    if (joinLateThreads(kLateJoinMs) > 0) {
        fflush(nullptr);
        _exit(0);
    }
    return 0;
}
