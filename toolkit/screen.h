#pragma once

#include <SDL2/SDL.h>

// The one window and renderer of the process. Every drawing call of the
// toolkit goes through gRenderer, on the main thread only.
extern SDL_Renderer* gRenderer;

// Opens the screen; non-zero on success. With `rotate` the picture is drawn
// into an off-screen canvas and presented turned by 270 degrees.
int ScreenInit(int width, int height, int bpp, int rotate);
// Presents the frame drawn so far; always 0. On a desktop the frame drawn is
// the interface plane, and the decoder's video plane is composited beneath
// it here; reading pixels back reads the interface plane.
int ScreenUpdateAndFlip();
// Destroys the canvas, renderer and window that exist; always 0.
int ScreenUninit();

// Size of the window in pixels: what a read-back of the whole screen holds.
int ScreenWidth();
int ScreenHeight();
// Where drawing goes: the rotated canvas, or NULL for the window itself.
SDL_Texture* ScreenTargetTexture();

// Whether the decoder's video plane shows something new since the last
// present (desktop builds; always false on the device, whose hardware shows
// the video by itself). Presenting again shows it; nothing needs redrawing.
bool ScreenVideoChanged();
// Milliseconds until the video plane should be looked at again; -1 when
// there is none to look at.
long ScreenNextVideoLookMs();
