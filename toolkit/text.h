#pragma once

#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>

#include "kovani_surface.h"
#include "lru_cache.h"

// Rendered strings, keyed by text, font, colour and shadow flag; values are
// KovaniSurface objects owned by the cache. Emptied when the screen closes.
extern LRUCache gTextSurfaceCache;
// Status-bar icons (KovaniSurface values owned by the cache).
extern LRUCache gIconCache;

// DrawString's alignment codes: where the text sits in its box.
enum {
    ALIGN_TOP_LEFT = 0,
    ALIGN_CENTER = 1,
    ALIGN_TOP_RIGHT = 2,
    ALIGN_MIDDLE_LEFT = 3,
    ALIGN_MIDDLE_RIGHT = 4
};

// `text` rendered in `font` and `color`, from gTextSurfaceCache or rendered
// and put there; NULL when it cannot be rendered (logged when first tried;
// the cache keeps the failure as it keeps a text). The cache owns the
// result: never delete it, and do not keep it across another put on the
// cache. A colour with alpha 0 renders opaque.
KovaniSurface* getCachedSurface(TTF_Font* font, const char* text, SDL_Color color, bool shadow);

// Draws `text` placed in `box` by `align` (never clipped to it), with a copy
// one pixel right and two down beneath it when `shadow` is set; `skipText`
// leaves out the text itself. Returns the text's width, 0 when it cannot be
// rendered. Main thread only.
int DrawString(TTF_Font* font, SDL_Rect box, const char* text, SDL_Color color, int align,
               bool shadow, bool skipText);
int DrawString(TTF_Font* font, SDL_Rect box, const char* text, SDL_Color color, int align);

// Draws `text` from the top left of `box` and never past box.x + box.w: a
// longer text is cut after a whole code point and ends in "...", and what
// still overhangs is clipped. Returns the width drawn. Main thread only.
int DrawStringFitted(TTF_Font* font, SDL_Rect box, const char* text, SDL_Color color);

// 0 when `text` fits a column `width` pixels wide (less a margin), else the
// number of leading code points to keep before an ellipsis. The last
// argument is not used.
int getTruncateLen(TTF_Font* font, const char* text, int width, int);
