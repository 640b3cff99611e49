#pragma once

#include <string>

#include "toolkit/action.h"

class KovaniPlayer;

// OK of the quit question: stops the decoder, remembers the open folder for
// the next start and ends the program (1003).
class QuitAction : public Action {
public:
    // `player`: not owned, may be null. `currentDir`: the list's folder when
    // the question opened; null or empty keeps the saved folder.
    QuitAction(KovaniPlayer* player, const char* currentDir);
    int dowork(void* item) override;

    KovaniPlayer* mPlayer;    // not owned; outlives the question
    std::string mCurrentDir;  // a copy: the list's folders can change meanwhile
};

// Asks whether to quit, with a QuitAction of `player` and `currentDir` on
// OK. The question opens as the pending popup: the loop draws the window
// beneath and takes the question's picture of it before any present, which
// may leave the screen's pixels undefined.
void openQuitQuestion(KovaniPlayer* player, const char* currentDir);
