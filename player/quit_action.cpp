#include "quit_action.h"

#include "app_options.h"
#include "kovani_player.h"
#include "toolkit/keycodes.h"
#include "platform/logger.h"

QuitAction::QuitAction(KovaniPlayer* player, const char* currentDir)
    : Action(-1), mPlayer(player), mCurrentDir(currentDir ? currentDir : "") {}

int QuitAction::dowork(void*) {
    if (mPlayer) mPlayer->stop();
    if (!mCurrentDir.empty()) gSavedDir = mCurrentDir;
    tprintf("quit mediaplayer\n");
    return WINDOW_QUIT;
}
