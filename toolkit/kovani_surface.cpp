#include "kovani_surface.h"

#include <stdio.h>

#include <string>

#include "image_preload.h"
#include "platform/logger.h"
#include "screen.h"

namespace {

const Uint32 sRMask = 0x00FF0000;
const Uint32 sGMask = 0x0000FF00;
const Uint32 sBMask = 0x000000FF;
const Uint32 sAMask = 0xFF000000;

SDL_Surface* newArgbSurface(int w, int h) {
    return SDL_CreateRGBSurface(0, w, h, 32, sRMask, sGMask, sBMask, sAMask);
}

// Saves the whole canvas as a BMP. The canvas is read at its own size: in
// rotated mode the window's size has the sides exchanged.
void dumpCanvas(SDL_Texture* canvas, const char* path) {
    int w = 0, h = 0;
    SDL_QueryTexture(canvas, nullptr, nullptr, &w, &h);
    SDL_Surface* shot = newArgbSurface(w, h);
    if (!shot) {
        tprintf("dump surface fail : %s\n", SDL_GetError());
        return;
    }
    if (SDL_RenderReadPixels(gRenderer, nullptr, SDL_PIXELFORMAT_ARGB8888, shot->pixels,
                             shot->pitch) != 0 ||
        SDL_SaveBMP_RW(shot, SDL_RWFromFile(path, "wb"), 1) != 0)
        tprintf("dump %s fail : %s\n", path, SDL_GetError());
    SDL_FreeSurface(shot);
}

// Whether a picture of w x h covers the target it is about to be drawn on
// (the canvas, a texture, or else the window) pixel for pixel.
bool fillsTargetExactly(int w, int h) {
    SDL_Texture* target = ScreenTargetTexture();
    if (!target) target = SDL_GetRenderTarget(gRenderer);
    int tw = 0, th = 0;
    const int result =
        target ? SDL_QueryTexture(target, nullptr, nullptr, &tw, &th) : SDL_GetRendererOutputSize(gRenderer, &tw, &th);
    return result == 0 && tw == w && th == h;
}

KovaniSurface* loadPath(const std::string& path) {
    DecodedImage image;
    if (!takePreloadedImage(path, &image)) image = decodeImage(path);
    if (!image.pixels) return nullptr;
    SDL_Texture* texture = SDL_CreateTextureFromSurface(gRenderer, image.pixels);
    // The texture holds the picture from now on.
    SDL_FreeSurface(image.pixels);
    if (!texture) return nullptr;
    if (image.opaque) SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_NONE);
    return new SDL2KovaniSurface(texture, nullptr);
}

}  // namespace

SDL2KovaniSurface::SDL2KovaniSurface(SDL_Texture* texture, SDL_Surface* pixels)
    : mTexture(texture), mPixels(pixels), mWidth(0), mHeight(0), mExactScale(false) {
    if (!mTexture) return;
    SDL_QueryTexture(mTexture, nullptr, nullptr, &mWidth, &mHeight);
    SDL_ScaleMode mode = SDL_ScaleModeLinear;
    SDL_GetTextureScaleMode(mTexture, &mode);
    mExactScale = mode == SDL_ScaleModeNearest;
}

SDL2KovaniSurface::~SDL2KovaniSurface() {
    if (mTexture) SDL_DestroyTexture(mTexture);
    if (mPixels) SDL_FreeSurface(mPixels);
}

int SDL2KovaniSurface::setBlendMode(SDL_BlendMode mode) {
    return SDL_SetTextureBlendMode(mTexture, mode);
}

int SDL2KovaniSurface::setAlpha(unsigned char alpha) {
    return SDL_SetTextureAlphaMod(mTexture, alpha);
}

int SDL2KovaniSurface::getBlendMode(SDL_BlendMode* mode) {
    return SDL_GetTextureBlendMode(mTexture, mode);
}

int SDL2KovaniSurface::getAlpha(unsigned char* alpha) {
    return SDL_GetTextureAlphaMod(mTexture, alpha);
}

int SDL2KovaniSurface::render(SDL_Rect* src, SDL_Rect* dst, bool keepOwnSize,
                              const char* dumpPath) {
    SDL_Rect placed;
    SDL_Rect* to = nullptr;
    if (dst) {
        placed = *dst;
        if (keepOwnSize) {
            placed.w = mWidth;
            placed.h = mHeight;
        }
        to = &placed;
    }
    // Drawn at its own size, filtering changes no pixel but costs a lot on
    // a software renderer; scaled, it smooths.
    const bool exact = to ? to->w == (src ? src->w : mWidth) && to->h == (src ? src->h : mHeight)
                          : fillsTargetExactly(src ? src->w : mWidth, src ? src->h : mHeight);
    if (exact != mExactScale) {
        SDL_SetTextureScaleMode(mTexture, exact ? SDL_ScaleModeNearest : SDL_ScaleModeLinear);
        mExactScale = exact;
    }
    SDL_Texture* canvas = ScreenTargetTexture();
    if (!canvas) return SDL_RenderCopy(gRenderer, mTexture, src, to);

    SDL_SetRenderTarget(gRenderer, canvas);
    int result = SDL_RenderCopy(gRenderer, mTexture, src, to);
    if (dumpPath) dumpCanvas(canvas, dumpPath);
    if (result != 0) tprintf("SDL_RenderCopy fail : %s\n", SDL_GetError());
    SDL_SetRenderTarget(gRenderer, nullptr);
    return result;
}

int SDL2KovaniSurface::getWidth() { return mWidth; }

int SDL2KovaniSurface::getHeight() { return mHeight; }

void* SDL2KovaniSurface::getPixels(int* pitch, int* bytesPerPixel, int* maxWidth,
                                   int* maxHeight) {
    Uint32 format = 0;
    int w = 0, h = 0;
    if (SDL_QueryTexture(mTexture, &format, nullptr, &w, &h) != 0) {
        tprintf("SDL_QueryTexture fail : %s\n", SDL_GetError());
        return nullptr;
    }
    int newW = w, newH = h;
    if (maxWidth && maxHeight && *maxWidth > 0 && *maxHeight > 0) {
        if (mPixels && mPixels->w == *maxWidth && mPixels->h == *maxHeight) {
            if (pitch) *pitch = mPixels->pitch;
            if (bytesPerPixel) *bytesPerPixel = mPixels->format->BytesPerPixel;
            return mPixels->pixels;
        }
        float scale = SDL_max(float(w) / *maxWidth, float(h) / *maxHeight);
        newW = int(w / scale);
        newH = int(h / scale);
        tprintf("getPixels %dx%d -> %dx%d max(%dx%d)\n", w, h, newW, newH, *maxWidth, *maxHeight);
    }
    mWidth = w;
    mHeight = h;

    SDL_Texture* scratch =
        SDL_CreateTexture(gRenderer, format, SDL_TEXTUREACCESS_TARGET, newW, newH);
    if (!scratch) {
        tprintf("SDL_CreateTexture fail : %s\n", SDL_GetError());
        return nullptr;
    }
    SDL_Surface* read = newArgbSurface(newW, newH);
    if (!read) {
        tprintf("getPixels surface fail : %s\n", SDL_GetError());
        SDL_DestroyTexture(scratch);
        return nullptr;
    }
    SDL_Texture* oldTarget = SDL_GetRenderTarget(gRenderer);
    SDL_Rect oldViewport;
    SDL_RenderGetViewport(gRenderer, &oldViewport);
    SDL_SetRenderTarget(gRenderer, scratch);
    SDL_Rect whole = {0, 0, newW, newH};
    SDL_RenderSetViewport(gRenderer, &whole);
    SDL_RenderCopy(gRenderer, mTexture, nullptr, nullptr);
    SDL_RenderReadPixels(gRenderer, nullptr, SDL_PIXELFORMAT_ARGB8888, read->pixels, read->pitch);
    SDL_SetRenderTarget(gRenderer, oldTarget);
    SDL_RenderSetViewport(gRenderer, &oldViewport);

    if (mPixels) SDL_FreeSurface(mPixels);
    mPixels = read;
    if (bytesPerPixel) *bytesPerPixel = read->format->BytesPerPixel;
    if (pitch) *pitch = read->pitch;
    if (maxWidth) *maxWidth = newW;
    if (maxHeight) *maxHeight = newH;
    SDL_DestroyTexture(scratch);
    return read->pixels;
}

KovaniSurface* LoadKovaniSurface(const char* themePath, const char* defaultPath,
                                 const char* name) {
    if (!name) return nullptr;
    if (name[0] == '/') return loadPath(name);
    if (themePath) {
        KovaniSurface* s = loadPath(std::string(themePath) + name);
        if (s) return s;
    }
    if (!defaultPath) return nullptr;
    KovaniSurface* s = loadPath(std::string(defaultPath) + name);
    if (s)
        tprintf("%s/%s open fail, use %s/%s\n", themePath ? themePath : "", name, defaultPath,
                name);
    return s;
}

int FillRect(KovaniSurface* target, SDL_Rect* rect, unsigned char r, unsigned char g,
             unsigned char b, unsigned char a) {
    SDL_Texture* texture = ScreenTargetTexture();
    if (target) {
        SDL2KovaniSurface* sdlTarget = dynamic_cast<SDL2KovaniSurface*>(target);
        if (!sdlTarget) {
            tprintf("FillRect: target is not an SDL surface\n");
            return -1;
        }
        texture = sdlTarget->texture();
    }
    SDL_Texture* oldTarget = SDL_GetRenderTarget(gRenderer);
    if (texture && SDL_SetRenderTarget(gRenderer, texture) != 0) {
        tprintf("FillRect: SDL_SetRenderTarget fail : %s\n", SDL_GetError());
        return -1;
    }
    SDL_BlendMode oldMode;
    Uint8 oldR, oldG, oldB, oldA;
    SDL_GetRenderDrawBlendMode(gRenderer, &oldMode);
    SDL_GetRenderDrawColor(gRenderer, &oldR, &oldG, &oldB, &oldA);
    SDL_SetRenderDrawColor(gRenderer, r, g, b, a);
    SDL_SetRenderDrawBlendMode(gRenderer, SDL_BLENDMODE_BLEND);
    SDL_RenderFillRect(gRenderer, rect);
    SDL_SetRenderDrawColor(gRenderer, oldR, oldG, oldB, oldA);
    SDL_SetRenderDrawBlendMode(gRenderer, oldMode);
    if (texture) SDL_SetRenderTarget(gRenderer, oldTarget);
    return 0;
}

void release_surface(void* surface) { delete static_cast<KovaniSurface*>(surface); }

void release_kovanisurface(void* surface) { delete static_cast<KovaniSurface*>(surface); }
