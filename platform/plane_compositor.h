#pragma once

#include <SDL2/SDL.h>

#include "video_plane.h"

// The desktop stand-in of the display engine's composition. While the
// decoder's video plane exists, the interface draws into a plane of its own
// (a texture with alpha) and each presented frame is the video plane's
// picture first, then the interface over it with its alpha: where the
// interface is transparent the video shows, where it is opaque nothing of
// the video does. While there is no video plane the interface draws straight
// into the window, over nothing, and costs no composition. Read-backs of the
// screen read the interface as drawn, as on the device, whose hardware
// composites the layers.
//
// Main thread only, like every drawing call.
class PlaneCompositor : private VideoPlaneReader::Sink {
public:
    // What videoChanged() found.
    enum Change {
        VIDEO_SAME = 0,    // nothing to show anew
        VIDEO_NEW = 1,     // presenting again shows it; the interface stays as drawn
        VIDEO_REDRAW = 2,  // a video plane appeared: the interface must be drawn again, into its plane
    };

    // `renderer`: not owned; outlives the compositor.
    explicit PlaneCompositor(SDL_Renderer* renderer);
    // Destroys its textures; the renderer draws to the window again.
    ~PlaneCompositor() override;
    PlaneCompositor(const PlaneCompositor&) = delete;
    PlaneCompositor& operator=(const PlaneCompositor&) = delete;

    // Takes the interface plane's size (w x h); 0. The interface plane and
    // the video texture are made when the first picture comes, so that a
    // program that plays nothing never holds them. When the renderer cannot
    // make them (logged once) the interface always draws to the window, with
    // no video beneath.
    int open(int w, int h);
    // Whether the interface draws into its plane now (a video plane exists).
    bool composing() const { return mComposing; }

    // Looks at the video plane before a frame is drawn. When a plane has
    // appeared, the interface plane becomes the render target (cleared) and
    // VIDEO_REDRAW asks for the whole interface again.
    Change videoChanged();
    // Milliseconds until the video plane should be looked at again; -1
    // while there is none.
    long nextLookMs() const;

    // Presents the frame drawn. While composing: the window gets the video
    // plane's picture, the interface plane over it and black beneath the
    // rest, and the interface plane stays the render target, keeping the
    // interface for later presents; once the video plane is gone this is
    // the last composed present and the interface draws to the window again.
    void present();
    // The composing half of present(), for tests that read the window's
    // pixels: leaves the window as the render target; finish() presents and
    // goes on as present() does.
    void compose();
    void finish();

private:
    void onFrame(const VideoRect& rect, const uint8_t* pixels, size_t stride) override;
    void poll();
    // False when the planes cannot be made (then never tried again).
    bool makeTextures();

    SDL_Renderer* mRenderer;  // not owned
    SDL_Texture* mUi = nullptr;     // owned: the interface plane
    SDL_Texture* mVideo = nullptr;  // owned: the last video frame, at its place in the plane
    VideoPlaneReader mReader;
    SDL_BlendMode mOver = SDL_BLENDMODE_BLEND;  // the interface over the picture
    int mWidth = 0, mHeight = 0;
    bool mComposing = false;  // the interface draws into mUi
    bool mChanged = false;    // a frame or a change not presented yet
    bool mLoggedUpload = false;
    bool mBroken = false;     // the planes could not be made
};
