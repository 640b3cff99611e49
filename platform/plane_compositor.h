#pragma once

#include <SDL2/SDL.h>

#include "video_plane.h"

// The desktop stand-in of the display engine's composition: the interface
// draws into a plane of its own (a texture with alpha) and each presented
// frame is the decoder's video plane first, then the interface over it with
// its alpha. Where the interface is transparent the video shows; where it is
// opaque nothing of the video does. Read-backs of the screen read the
// interface plane, as on the device, whose hardware composites the layers.
//
// Main thread only, like every drawing call.
class PlaneCompositor : private VideoPlaneReader::Sink {
public:
    // `renderer`: not owned; outlives the compositor.
    explicit PlaneCompositor(SDL_Renderer* renderer);
    // Destroys its textures; the renderer draws to the window again.
    ~PlaneCompositor() override;
    PlaneCompositor(const PlaneCompositor&) = delete;
    PlaneCompositor& operator=(const PlaneCompositor&) = delete;

    // Makes the interface plane (w x h) and the video texture and sets the
    // interface plane as the renderer's target. 0 on success; -1 (logged)
    // when the renderer cannot, and then drawing goes to the window as
    // without a compositor.
    int open(int w, int h);
    // The texture the interface draws into; null when not open.
    SDL_Texture* uiPlane() const { return mUi; }

    // Looks at the video plane; true when a present would show something
    // else than the last one (a new frame arrived, or the picture went).
    bool videoChanged();
    // Milliseconds until the video plane should be looked at again; -1
    // while there is none.
    long nextLookMs() const;

    // Draws the window's frame (the video plane's picture, the interface
    // plane over it, black beneath the rest) and leaves the window as the
    // render target;
    // finish() presents it and makes the interface plane the target again.
    void compose();
    void finish();
    // compose() then finish().
    void present();

private:
    void onFrame(const VideoRect& rect, const uint8_t* pixels, size_t stride) override;

    SDL_Renderer* mRenderer;  // not owned
    SDL_Texture* mUi = nullptr;     // owned: the interface plane
    SDL_Texture* mVideo = nullptr;  // owned: the last video frame, at its place in the plane
    VideoPlaneReader mReader;
    SDL_BlendMode mOver = SDL_BLENDMODE_BLEND;  // the interface over the picture
    int mWidth = 0, mHeight = 0;
    bool mChanged = false;  // a frame or a change not presented yet
    bool mLoggedUpload = false;
};
