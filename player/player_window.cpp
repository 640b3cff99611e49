#include "player_window.h"

#include "player_lang.h"
#include "toolkit/input.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"
#include "toolkit/text.h"

PlayerWindow::PlayerWindow(const char*) : KovaniWindow(STRING_MEDIAPLAYER, -1) {}

PlayerWindow::~PlayerWindow() {}

void PlayerWindow::init() {}

int PlayerWindow::eventHandling() { return wait_event(nullptr); }

int PlayerWindow::draw() {
    SDL_SetRenderDrawColor(gRenderer, 0, 0, 0, 0);
    SDL_RenderClear(gRenderer);
    if (gBackground) gBackground->render(nullptr, nullptr, false, nullptr);
    DrawString(gNavFont, SDL_Rect{90, 20, 0, 0}, getTitle(), gNavColorTxt, ALIGN_TOP_LEFT);
    return 0;
}
