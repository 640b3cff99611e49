#pragma once

#include <SDL2/SDL.h>

#include "player_settings.h"

class KovaniPlayer;

// Where the decoder's picture goes: the video area of the windowed view
// (beside the list) or the whole screen.
extern const SDL_Rect kWindowedVideoRect;
extern const SDL_Rect kFullscreenVideoRect;

// Fits a picture of `ratio` into `area`, centred; false (and `out` left
// alone) for the default ratio, which fills the area.
bool calcDisplayRect(PLAYER_ASPECT_RATIO ratio, SDL_Rect area, SDL_Rect& out);

// Sends the picture rectangle for the mode and the chosen aspect ratio.
void setPlayerDisplayRect(bool fullscreen, KovaniPlayer* player);
