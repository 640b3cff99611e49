#include "float_window.h"

#include "input.h"
#include "platform/logger.h"
#include "screen.h"
#include "shared_skin.h"

KovaniSurface* captureScreen() {
    SDL_Texture* canvas = ScreenTargetTexture();
    int w = ScreenWidth();
    int h = ScreenHeight();
    if (canvas) SDL_QueryTexture(canvas, nullptr, nullptr, &w, &h);
    SDL_Surface* shot =
        SDL_CreateRGBSurface(0, w, h, 32, 0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000);
    if (!shot) {
        tprintf("capture screen %dx%d fail : %s\n", w, h, SDL_GetError());
        return nullptr;
    }
    SDL_Texture* oldTarget = SDL_GetRenderTarget(gRenderer);
    if (canvas) SDL_SetRenderTarget(gRenderer, canvas);
    const int read = SDL_RenderReadPixels(gRenderer, nullptr, SDL_PIXELFORMAT_ARGB8888,
                                          shot->pixels, shot->pitch);
    if (canvas) SDL_SetRenderTarget(gRenderer, oldTarget);
    SDL_Texture* texture = read == 0 ? SDL_CreateTextureFromSurface(gRenderer, shot) : nullptr;
    if (!texture) {
        tprintf("capture screen fail : %s\n", SDL_GetError());
        SDL_FreeSurface(shot);
        return nullptr;
    }
    // Drawn back as it was, transparent video area included.
    SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_NONE);
    return new SDL2KovaniSurface(texture, shot);
}

FloatWindow::FloatWindow() : KovaniWindow(-1, -1), mSnapshot(nullptr) {}

FloatWindow::~FloatWindow() { delete mSnapshot; }

int FloatWindow::eventHandling() {
    wait_event(nullptr);
    return -1;
}

int FloatWindow::draw() {
    if (mSnapshot) mSnapshot->render(nullptr, nullptr, false, nullptr);
    if (gBackgroundFloat) gBackgroundFloat->render(nullptr, nullptr, false, nullptr);
    return 0;
}

void FloatWindow::quit() {}

void FloatWindow::init() {
    if (!mSnapshot) mSnapshot = captureScreen();
    loadPopupSkin();
}

void FloatWindow::saveState(cJSON*) {}

int FloatWindow::restoreState(cJSON*) { return 0; }

void FloatWindow::refresh() {}
