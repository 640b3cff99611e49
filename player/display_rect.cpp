#include "display_rect.h"

#include "kovani_player.h"

const SDL_Rect kWindowedVideoRect = {650, 85, 610, 360};
const SDL_Rect kFullscreenVideoRect = {0, 0, 1280, 720};

bool calcDisplayRect(PLAYER_ASPECT_RATIO ratio, SDL_Rect area, SDL_Rect& out) {
    int num, den;
    if (ratio == RATIO16_9) {
        num = 16;
        den = 9;
    } else if (ratio == RATIO4_3) {
        num = 4;
        den = 3;
    } else {
        return false;
    }
    out.w = area.w;
    out.h = area.w * den / num;
    if (out.h > area.h) {
        out.w = area.h * num / den;
        out.h = area.h;
    }
    out.x = area.x + (area.w - out.w) / 2;
    out.y = area.y + (area.h - out.h) / 2;
    return true;
}

void setPlayerDisplayRect(bool fullscreen, KovaniPlayer* player) {
    SDL_Rect rect = fullscreen ? kFullscreenVideoRect : kWindowedVideoRect;
    SDL_Rect fitted;
    if (calcDisplayRect(gPlayerAspectRatio, rect, fitted)) rect = fitted;
    player->setDisplayRect(rect.x, rect.y, rect.w, rect.h);
}
