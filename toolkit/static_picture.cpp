#include "static_picture.h"

#include "platform/logger.h"
#include "screen.h"
#include "text_menu_drawer.h"

StaticPicture::StaticPicture(int width, int height)
    : mWidth(width),
      mHeight(height),
      mPlain(nullptr),
      mWithRows(nullptr),
      mPlainKey(0),
      mRowsShown{0, 0, 0},
      mRowsAsked{0, 0, 0},
      mBroken(false) {}

StaticPicture::~StaticPicture() {
    if (mPlain) SDL_DestroyTexture(mPlain);
    if (mWithRows) SDL_DestroyTexture(mWithRows);
}

bool StaticPicture::make(SDL_Texture** texture) {
    if (*texture) return true;
    if (mBroken) return false;
    *texture = SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, mWidth, mHeight);
    if (!*texture) {
        tprintf("compose static picture fail: %s\n", SDL_GetError());
        mBroken = true;
        return false;
    }
    SDL_SetTextureBlendMode(*texture, SDL_BLENDMODE_NONE);
    // Copied pixel for pixel: filtering would only cost.
    SDL_SetTextureScaleMode(*texture, SDL_ScaleModeNearest);
    return true;
}

bool StaticPicture::copy(uint32_t key, const std::function<void()>& draw, TextMenuDrawer* list) {
    if (list) list->setNormalBackgroundsDrawn(false);
    if (!make(&mPlain)) return false;
    if (key != mPlainKey) {
        SDL_Texture* screen = SDL_GetRenderTarget(gRenderer);
        SDL_SetRenderTarget(gRenderer, mPlain);
        SDL_SetRenderDrawColor(gRenderer, 0, 0, 0, 0);
        SDL_RenderClear(gRenderer);
        draw();
        SDL_SetRenderTarget(gRenderer, screen);
        mPlainKey = key;
    }
    if (!list || !list->mNormalBg || !copyWithRows(list)) SDL_RenderCopy(gRenderer, mPlain, nullptr, nullptr);
    return true;
}

bool StaticPicture::copyWithRows(TextMenuDrawer* list) {
    const Rows wanted = {mPlainKey, list->visibleRows(), list->rowImagesVersion()};
    const bool again = wanted == mRowsAsked;
    mRowsAsked = wanted;
    if (wanted.rows < 1) return false;
    if (!(mRowsShown == wanted)) {
        if (!again || !make(&mWithRows)) return false;
        SDL_Texture* target = SDL_GetRenderTarget(gRenderer);
        SDL_SetRenderTarget(gRenderer, mWithRows);
        SDL_RenderCopy(gRenderer, mPlain, nullptr, nullptr);
        list->drawNormalBackgrounds(wanted.rows);
        SDL_SetRenderTarget(gRenderer, target);
        mRowsShown = wanted;
    }
    const SDL_Rect screen = {0, 0, mWidth, mHeight};
    SDL_Rect row, hole;
    if (!list->cursorBackgroundRect(&row) || !SDL_IntersectRect(&row, &screen, &hole)) {
        SDL_RenderCopy(gRenderer, mWithRows, nullptr, nullptr);
    } else {
        // Around the cursor row from the picture with rows, the row itself
        // from the one without: each pixel is copied once.
        const int right = hole.x + hole.w;
        const int bottom = hole.y + hole.h;
        const SDL_Rect around[] = {{0, 0, mWidth, hole.y},
                                   {0, bottom, mWidth, mHeight - bottom},
                                   {0, hole.y, hole.x, hole.h},
                                   {right, hole.y, mWidth - right, hole.h}};
        for (const SDL_Rect& part : around)
            if (part.w > 0 && part.h > 0) SDL_RenderCopy(gRenderer, mWithRows, &part, &part);
        SDL_RenderCopy(gRenderer, mPlain, &hole, &hole);
    }
    list->setNormalBackgroundsDrawn(true);
    return true;
}
