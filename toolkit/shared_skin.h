#pragma once

#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>

#include "kovani_surface.h"

// Folder of the current theme, ending in '/'; owned heap string, set by
// start-up and freed at shutdown.
extern char* gThemePath;

// The fonts, colours and images every window draws with. All owned here,
// alive from init_shared_skin to uninit_shared_skin; any of them may be NULL
// when its file could not be loaded.
extern TTF_Font* gNavFont;
extern TTF_Font* gNavFontIcon;
extern TTF_Font* gListFontTxt;
extern TTF_Font* gListFontSubtxt;
extern TTF_Font* gStatFont;
extern TTF_Font* gMenuFont;
extern TTF_Font* gPopupFontTitle;
extern TTF_Font* gPopupFontTxt;
extern TTF_Font* gPopupFontBtn;

extern SDL_Color gHighlightColor;
extern SDL_Color gPopupColorTitle;
extern SDL_Color gListColorTxt;
extern SDL_Color gListColorSubtxt;
extern SDL_Color gListColorSeq;
extern SDL_Color gNavColorTxt;
extern SDL_Color gNavColorIcon;
extern SDL_Color gStatColorTxt;
extern SDL_Color gPopupColorTxt;
extern SDL_Color gPopupColorBtn;

extern KovaniSurface* gIconVideo;
extern KovaniSurface* gIconFolder;
extern KovaniSurface* gBackground;
extern KovaniSurface* gIconBack;
extern KovaniSurface* gIconMenu;
extern KovaniSurface* gIconA;
extern KovaniSurface* gIconB;
extern KovaniSurface* gBackgroundFloat;

// Opens `folder`/`file` at `size` points; NULL on failure. The caller owns it.
TTF_Font* open_font(const char* folder, const char* file, int size);

// Sets the colours, opens the fonts from "./regular.ttf" and loads the images
// from gThemePath, falling back to "./". Needs TTF_Init and ScreenInit. The
// popups' mask gBackgroundFloat waits for loadPopupSkin.
void init_shared_skin();
// Loads gBackgroundFloat unless it is loaded: a popup about to open calls
// it, so that a start never decodes a picture no screen shows yet.
void loadPopupSkin();
// Closes the fonts and deletes the images, setting each to NULL.
void uninit_shared_skin();
