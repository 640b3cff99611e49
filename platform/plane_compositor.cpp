#include "plane_compositor.h"

#include "logger.h"

namespace {

// While frames come, the plane is looked at this often: a frame waits at
// most this long before it shows. A paused video is looked at less often.
const long kPlayingLookMs = 5;
const long kIdleLookMs = 100;

}  // namespace

PlaneCompositor::PlaneCompositor(SDL_Renderer* renderer) : mRenderer(renderer) {}

PlaneCompositor::~PlaneCompositor() {
    if (mUi && SDL_GetRenderTarget(mRenderer) == mUi) SDL_SetRenderTarget(mRenderer, nullptr);
    if (mUi) SDL_DestroyTexture(mUi);
    if (mVideo) SDL_DestroyTexture(mVideo);
}

int PlaneCompositor::open(int w, int h) {
    mWidth = w;
    mHeight = h;
    return 0;
}

bool PlaneCompositor::makeTextures() {
    if (mUi) return true;
    if (mBroken) return false;
    mUi = SDL_CreateTexture(mRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, mWidth, mHeight);
    // The decoder's rows are B, G, R, unused: RGB888 takes them as they are.
    mVideo = SDL_CreateTexture(mRenderer, SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_STREAMING,
                               kVideoPlaneWidth, kVideoPlaneHeight);
    if (!mUi || !mVideo) {
        tprintf("compositor: no interface plane, the video will not show: %s\n", SDL_GetError());
        if (mUi) SDL_DestroyTexture(mUi);
        if (mVideo) SDL_DestroyTexture(mVideo);
        mUi = mVideo = nullptr;
        mBroken = true;
        return false;
    }
    // The interface plane holds premultiplied colour: SDL's blending onto a
    // plane cleared to transparent black yields exactly that. So over black
    // it is a plain copy, and over the picture it adds the picture scaled by
    // what the interface leaves through.
    mOver = SDL_ComposeCustomBlendMode(SDL_BLENDFACTOR_ONE, SDL_BLENDFACTOR_ONE_MINUS_SRC_ALPHA, SDL_BLENDOPERATION_ADD,
                                       SDL_BLENDFACTOR_ONE, SDL_BLENDFACTOR_ONE_MINUS_SRC_ALPHA, SDL_BLENDOPERATION_ADD);
    if (SDL_SetTextureBlendMode(mUi, mOver) != 0) mOver = SDL_BLENDMODE_BLEND;
    SDL_SetTextureBlendMode(mVideo, SDL_BLENDMODE_NONE);
    // Both are copied pixel for pixel: filtering would only cost.
    SDL_SetTextureScaleMode(mUi, SDL_ScaleModeNearest);
    SDL_SetTextureScaleMode(mVideo, SDL_ScaleModeNearest);
    return true;
}

void PlaneCompositor::onFrame(const VideoRect& rect, const uint8_t* pixels, size_t stride) {
    if (!makeTextures()) return;
    const SDL_Rect at = {rect.x, rect.y, rect.w, rect.h};
    if (SDL_UpdateTexture(mVideo, &at, pixels, (int)stride) != 0 && !mLoggedUpload) {
        tprintf("compositor: video frame upload fail: %s\n", SDL_GetError());
        mLoggedUpload = true;
    }
}

void PlaneCompositor::poll() {
    if (!mBroken && mReader.poll(this, videoPlaneClockMs())) mChanged = true;
}

PlaneCompositor::Change PlaneCompositor::videoChanged() {
    poll();
    if (!mComposing) {
        // Without a plane the window holds the interface alone, and after a
        // present it holds nothing to present again.
        mChanged = false;
        // Composed from the first picture on, which makes the planes.
        if (!mReader.attached() || !mUi) return VIDEO_SAME;
        mComposing = true;
        SDL_SetRenderTarget(mRenderer, mUi);
        // The interface starts fully transparent, as the device's layer does.
        SDL_SetRenderDrawColor(mRenderer, 0, 0, 0, 0);
        SDL_RenderClear(mRenderer);
        return VIDEO_REDRAW;
    }
    return mChanged ? VIDEO_NEW : VIDEO_SAME;
}

long PlaneCompositor::nextLookMs() const {
    // Without a plane there is no decoder to wait for: an idle screen
    // sleeps on. A starting decoder's plane is found at the loop's next
    // wake (its first reports come before its first picture).
    if (!mReader.attached()) return -1;
    return mReader.playing(videoPlaneClockMs()) ? kPlayingLookMs : kIdleLookMs;
}

void PlaneCompositor::compose() {
    if (!mComposing) return;
    poll();
    SDL_SetRenderTarget(mRenderer, nullptr);
    const VideoRect r = mReader.rect();
    if (r.w <= 0) {
        // Nothing beneath: the interface over black is the plane as it is.
        SDL_SetTextureBlendMode(mUi, SDL_BLENDMODE_NONE);
        SDL_RenderCopy(mRenderer, mUi, nullptr, nullptr);
        mChanged = false;
        return;
    }
    const SDL_Rect video = {r.x, r.y, r.w, r.h};
    const SDL_Rect around[4] = {
        {0, 0, mWidth, video.y},
        {0, video.y + video.h, mWidth, mHeight - video.y - video.h},
        {0, video.y, video.x, video.h},
        {video.x + video.w, video.y, mWidth - video.x - video.w, video.h},
    };
    SDL_SetTextureBlendMode(mUi, SDL_BLENDMODE_NONE);
    for (const SDL_Rect& part : around)
        if (part.w > 0 && part.h > 0) SDL_RenderCopy(mRenderer, mUi, &part, &part);
    SDL_RenderCopy(mRenderer, mVideo, &video, &video);
    SDL_SetTextureBlendMode(mUi, mOver);
    SDL_RenderCopy(mRenderer, mUi, &video, &video);
    mChanged = false;
}

void PlaneCompositor::finish() {
    SDL_RenderPresent(mRenderer);
    if (!mComposing) return;
    if (mReader.attached()) {
        SDL_SetRenderTarget(mRenderer, mUi);
    } else {
        // The plane has gone and this present showed the interface alone:
        // from now on it draws to the window again.
        mComposing = false;
    }
}

void PlaneCompositor::present() {
    compose();
    finish();
}
