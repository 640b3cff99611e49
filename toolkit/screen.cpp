#include "screen.h"

#include <stdio.h>

#include "lru_cache.h"
#include "platform/logger.h"
#include "text.h"
#if KOVANI_VIDEO_PLANE
#include "platform/plane_compositor.h"
#endif

SDL_Renderer* gRenderer = nullptr;

namespace {
SDL_Window* sWindow = nullptr;
int sRotate = 0;
SDL_Texture* sRotatedTexture = nullptr;
SDL_Texture* sTargetTexture = nullptr;
int sWidth = 0;
int sHeight = 0;
#if KOVANI_VIDEO_PLANE
PlaneCompositor* sCompositor = nullptr;  // owned; between ScreenInit and ScreenUninit
static_assert(int(PlaneCompositor::VIDEO_NEW) == SCREEN_VIDEO_NEW &&
                  int(PlaneCompositor::VIDEO_REDRAW) == SCREEN_VIDEO_REDRAW,
              "the screen passes the compositor's answers on");
#endif
}  // namespace

int ScreenInit(int width, int height, int bpp, int rotate) {
    tprintf("ScreenInit %dx%d %d, rotate=%d\n", width, height, bpp, rotate);
    sRotate = rotate;
    if (!SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "1"))
        printf("[Warning]: Linear texture filtering not enabled!");
    const int winW = rotate ? height : width;
    const int winH = rotate ? width : height;
    sWindow = SDL_CreateWindow("Main", SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, winW, winH,
                               SDL_WINDOW_SHOWN);
    if (sWindow)
        gRenderer = SDL_CreateRenderer(sWindow, -1,
                                       SDL_RENDERER_ACCELERATED | SDL_RENDERER_PRESENTVSYNC);
    if (rotate && gRenderer) {
        sRotatedTexture = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888,
                                            SDL_TEXTUREACCESS_TARGET, width, height);
        sTargetTexture = sRotatedTexture;
    }
    sWidth = winW;
    sHeight = winH;
#if KOVANI_VIDEO_PLANE
    // The decoder's picture lies beneath the interface, as on the device.
    // Without the compositor's textures the interface still draws, alone.
    if (gRenderer && !rotate) {
        sCompositor = new PlaneCompositor(gRenderer);
        if (sCompositor->open(width, height) != 0) {
            delete sCompositor;
            sCompositor = nullptr;
        }
    }
#endif
    tprintf("window=%p, renderer=%p\n", (void*)sWindow, (void*)gRenderer);
    return sWindow && gRenderer;
}

int ScreenUpdateAndFlip() {
#if KOVANI_VIDEO_PLANE
    if (sCompositor) {
        sCompositor->present();
        return 0;
    }
#endif
    if (sRotate && sRotatedTexture) {
        int w = 0, h = 0;
        SDL_QueryTexture(sRotatedTexture, nullptr, nullptr, &w, &h);
        SDL_Rect dst = {(h - w) / 2 - 1, (w - h) / 2, w, h};
        SDL_RenderCopyEx(gRenderer, sRotatedTexture, nullptr, &dst, 270.0, nullptr, SDL_FLIP_NONE);
    }
    SDL_RenderPresent(gRenderer);
    return 0;
}

int ScreenUninit() {
    // Cached text and icons are textures of this renderer: they go with it.
    gTextSurfaceCache.clear();
    gIconCache.clear();
#if KOVANI_VIDEO_PLANE
    delete sCompositor;
    sCompositor = nullptr;
#endif
    if (sRotatedTexture) SDL_DestroyTexture(sRotatedTexture);
    if (gRenderer) SDL_DestroyRenderer(gRenderer);
    if (sWindow) SDL_DestroyWindow(sWindow);
    sRotatedTexture = nullptr;
    sTargetTexture = nullptr;
    gRenderer = nullptr;
    sWindow = nullptr;
    return 0;
}

int ScreenWidth() { return sWidth; }

int ScreenHeight() { return sHeight; }

SDL_Texture* ScreenTargetTexture() { return sTargetTexture; }

int ScreenVideoChanged() {
#if KOVANI_VIDEO_PLANE
    if (sCompositor) return sCompositor->videoChanged();
#endif
    return SCREEN_VIDEO_SAME;
}

long ScreenNextVideoLookMs() {
#if KOVANI_VIDEO_PLANE
    if (sCompositor) return sCompositor->nextLookMs();
#endif
    return -1;
}
