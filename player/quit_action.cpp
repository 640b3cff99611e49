#include "quit_action.h"

#include "app_options.h"
#include "kovani_player.h"
#include "platform/logger.h"
#include "player_lang.h"
#include "toolkit/dialog_window.h"
#include "toolkit/keycodes.h"

QuitAction::QuitAction(KovaniPlayer* player, const char* currentDir)
    : Action(-1), mPlayer(player), mCurrentDir(currentDir ? currentDir : "") {}

int QuitAction::dowork(void*) {
    if (mPlayer) mPlayer->stop();
    if (!mCurrentDir.empty()) gSavedDir = mCurrentDir;
    tprintf("quit mediaplayer\n");
    return WINDOW_QUIT;
}

void openQuitQuestion(KovaniPlayer* player, const char* currentDir) {
    add2PopupList(new DialogWindow(STRING_MEDIAPLAYER, STRING_QUIT_PROMPT, false,
                                   new QuitAction(player, currentDir), nullptr));
}
