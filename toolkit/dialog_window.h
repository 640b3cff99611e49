#pragma once

#include <string>

#include "action.h"
#include "float_window.h"

// A question over a snapshot of the screen: title, message, and two buttons,
// Cancel on the left and OK on the right (focused at first). The answer
// comes back through the callbacks:
//  - OK runs okAction->dowork(NULL) and eventHandling returns its result, so
//    the action decides what the window stack does next (WINDOW_CLOSE to
//    close the dialog, WINDOW_QUIT to end the program, ...). Without an
//    action OK just closes the dialog.
//  - Cancel (the back key, X, or confirm with Cancel focused) calls `cancel`
//    when given and closes the dialog.
// The creator hands it to add2PopupList: the loop then draws the window
// beneath and initialises the dialog before any present, which may leave
// the screen's pixels undefined. (A dialog put on gWinList directly must be
// initialised while the frame beneath is still undisturbed.) The window
// stack deletes it, and with it the action.
class DialogWindow : public FloatWindow {
public:
    // Texts are the language strings of the ids ("" for a negative id).
    // Takes ownership of `okAction` (may be null); `cancel` may be null.
    DialogWindow(int titleId, int messageId, bool multiLine, Action* okAction, void (*cancel)());
    ~DialogWindow() override;

    // One key: LEFT/RIGHT move the focus (no wrap), confirm/Y answers with the
    // focused button, back/X cancels. Returns -1 when the dialog stays.
    int eventHandling() override;
    int draw() override;

    int focus() const { return mFocus; }

private:
    int cancelAnswer();
    void drawMessage(int x, int top, int w);
    void drawButton(int x, int y, bool focused, int textId);

    std::string mTitleText;
    std::string mMessageText;
    int mFocus;                   // 0 Cancel, 1 OK
    KovaniSurface* mBG;           // owned, may be null: the panel
    KovaniSurface* mBtnFocusBG;   // owned, may be null: the focused button
    KovaniSurface* mBtnNormalBG;  // owned, may be null: the other button
    Action* mAction;              // owned, may be null
    void (*mCancel)();            // may be null
    bool mMultiLine;              // the message is split into lines at "\n"
};
