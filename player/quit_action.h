#pragma once

#include "toolkit/action.h"

class KovaniPlayer;

// OK of the quit question: stops the decoder, remembers the open folder for
// the next start and ends the program (1003).
class QuitAction : public Action {
public:
    // Both not owned; either may be null.
    QuitAction(KovaniPlayer* player, const char* currentDir);
    int dowork(void* item) override;

    KovaniPlayer* mPlayer;    // not owned
    const char* mCurrentDir;  // not owned: the list's current folder
};
