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
    mUi = SDL_CreateTexture(mRenderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, w, h);
    // The decoder's rows are B, G, R, unused: RGB888 takes them as they are.
    mVideo = SDL_CreateTexture(mRenderer, SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_STREAMING,
                               kVideoPlaneWidth, kVideoPlaneHeight);
    if (!mUi || !mVideo || SDL_SetRenderTarget(mRenderer, mUi) != 0) {
        tprintf("compositor: no interface plane, the video will not show: %s\n", SDL_GetError());
        if (mUi) SDL_DestroyTexture(mUi);
        if (mVideo) SDL_DestroyTexture(mVideo);
        mUi = mVideo = nullptr;
        return -1;
    }
    SDL_SetTextureBlendMode(mUi, SDL_BLENDMODE_BLEND);
    SDL_SetTextureBlendMode(mVideo, SDL_BLENDMODE_NONE);
    // The interface starts fully transparent, as the device's layer does.
    SDL_SetRenderDrawColor(mRenderer, 0, 0, 0, 0);
    SDL_RenderClear(mRenderer);
    return 0;
}

void PlaneCompositor::onFrame(const VideoRect& rect, const uint8_t* pixels, size_t stride) {
    const SDL_Rect at = {rect.x, rect.y, rect.w, rect.h};
    if (SDL_UpdateTexture(mVideo, &at, pixels, (int)stride) != 0 && !mLoggedUpload) {
        tprintf("compositor: video frame upload fail: %s\n", SDL_GetError());
        mLoggedUpload = true;
    }
}

bool PlaneCompositor::videoChanged() {
    if (mUi && mReader.poll(this, videoPlaneClockMs())) mChanged = true;
    return mChanged;
}

long PlaneCompositor::nextLookMs() const {
    // Without a plane there is no decoder to wait for: an idle screen
    // sleeps on. A starting decoder's plane is found at the loop's next
    // wake (its first reports come before its first picture).
    if (!mReader.attached()) return -1;
    return mReader.playing(videoPlaneClockMs()) ? kPlayingLookMs : kIdleLookMs;
}

void PlaneCompositor::compose() {
    if (!mUi) return;
    videoChanged();
    SDL_SetRenderTarget(mRenderer, nullptr);
    SDL_SetRenderDrawColor(mRenderer, 0, 0, 0, 255);
    SDL_RenderClear(mRenderer);
    const VideoRect r = mReader.rect();
    if (r.w > 0) {
        const SDL_Rect at = {r.x, r.y, r.w, r.h};
        SDL_RenderCopy(mRenderer, mVideo, &at, &at);
    }
    SDL_RenderCopy(mRenderer, mUi, nullptr, nullptr);
    mChanged = false;
}

void PlaneCompositor::finish() {
    SDL_RenderPresent(mRenderer);
    if (mUi) SDL_SetRenderTarget(mRenderer, mUi);
}

void PlaneCompositor::present() {
    compose();
    finish();
}
