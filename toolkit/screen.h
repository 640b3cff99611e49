#pragma once

#include <SDL2/SDL.h>

// The one window and renderer of the process. Every drawing call of the
// toolkit goes through gRenderer, on the main thread only.
extern SDL_Renderer* gRenderer;

// Opens the screen; non-zero on success. With `rotate` the picture is drawn
// into an off-screen canvas and presented turned by 270 degrees.
int ScreenInit(int width, int height, int bpp, int rotate);
// Presents the frame drawn so far; always 0. On a desktop, while the
// decoder's video plane exists, the frame drawn is the interface plane and
// the video plane is composited beneath it here; reading pixels back reads
// the interface plane. Otherwise the frame is drawn in the window itself,
// whose pixels a read-back must take before the present.
int ScreenUpdateAndFlip();
// Destroys the canvas, renderer and window that exist; always 0.
int ScreenUninit();

// Size of the window in pixels: what a read-back of the whole screen holds.
int ScreenWidth();
int ScreenHeight();
// Where drawing goes: the rotated canvas, or NULL for the window itself.
SDL_Texture* ScreenTargetTexture();

// What the decoder's video plane brings before a frame is drawn (desktop
// builds; always SCREEN_VIDEO_SAME on the device, whose hardware shows the
// video by itself).
enum {
    SCREEN_VIDEO_SAME = 0,    // nothing new
    SCREEN_VIDEO_NEW = 1,     // a new picture: presenting again shows it, nothing needs drawing
    SCREEN_VIDEO_REDRAW = 2,  // the video has just appeared: the whole window must be drawn again
};
int ScreenVideoChanged();
// Milliseconds until the video plane should be looked at again; -1 when
// there is none to look at.
long ScreenNextVideoLookMs();
