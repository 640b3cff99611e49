// Entry point: start-up, the main loop, and the shutdown in reverse order.
#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>
#include <stdlib.h>
#include <string.h>

#include "app_options.h"
#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "toolkit/logger.h"
#include "toolkit/screen.h"
#include "toolkit/sysutil.h"
#include "ui_layer.h"

char* gThemePath = nullptr;  // owned heap copy, freed at shutdown
KeyShmInfo gShmInfo;

namespace {

void cleanup(int code) {
    tprintf("cleanup close ttf\n");
    TTF_Quit();
    tprintf("cleanup close sdl\n");
    SDL_Quit();
    tprintf("quit\n");
    if (code != 0) exit(code);
}

}  // namespace

int main(int argc, char* argv[]) {
    initLogger(1);
    tprintf("start %ld\n", systemms());
    disp2_ui_transparent(1);

    gUserPath = devicePath(DEVICE_PATH_MNT);
    check_opts(argc, argv);
    applyUserFileRoot();

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
    SDL_ShowCursor(0);
    tprintf("sdl inited\n");
    if (!ScreenInit(1280, 720, 32, 0)) {
        tprintf("Couldn't set video mode in UI: %s\n", SDL_GetError());
        ScreenUninit();
        cleanup(2);
    }
    tprintf("screen inited\n");
    InitKeyShm(&gShmInfo);
    if (!gThemePath) gThemePath = strdup("./");

    tprintf("runWindows %ld\n", systemms());
    SDL_SetRenderDrawColor(gRenderer, 0, 0, 0, 255);
    SDL_RenderClear(gRenderer);
    ScreenUpdateAndFlip();

    ScreenUninit();
    UninitKeyShm(&gShmInfo);
    free(gThemePath);
    gThemePath = nullptr;
    cleanup(0);
    return 0;
}
