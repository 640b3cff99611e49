#include "dialog_window.h"

#include <SDL2/SDL_ttf.h>

#include <vector>

#include "input.h"
#include "keycodes.h"
#include "lang.h"
#include "platform/logger.h"
#include "shared_skin.h"
#include "text.h"

namespace {

// The dialog is laid out for the 1280 x 720 canvas.
const int kScreenW = 1280;
const int kScreenH = 720;
// Without the panel image the texts span the screen, the title standing
// where a panel's would over the fixed message top.
const int kNoPanelTop = 142;
const int kTitleTop = 80;
const int kTitleH = 43;
const int kMessageTop = 186;
const int kMessageH = 100;
// Buttons inside the panel, and their gap.
const int kButtonLeft = 100;
const int kButtonTop = 390;
const int kButtonGap = 100;
// Size a missing button image counts as, so the labels still line up.
const int kFallbackButtonW = 200;
const int kFallbackButtonH = 60;

int widthOr(KovaniSurface* s, int fallback) { return s ? s->getWidth() : fallback; }
int heightOr(KovaniSurface* s, int fallback) { return s ? s->getHeight() : fallback; }

// `text` split at "\n"; empty lines are left out.
std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        if (end > start) lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

}  // namespace

DialogWindow::DialogWindow(int titleId, int messageId, bool multiLine, Action* okAction,
                           void (*cancel)())
    : mTitleText(getLangStr(titleId)),
      mMessageText(getLangStr(messageId)),
      mFocus(1),
      mBG(LoadKovaniSurface(gThemePath, "./", "skin/pop-bg.png")),
      mBtnFocusBG(LoadKovaniSurface(gThemePath, "./", "skin/btn-bg-f.png")),
      mBtnNormalBG(LoadKovaniSurface(gThemePath, "./", "skin/btn-bg-n.png")),
      mAction(okAction),
      mCancel(cancel),
      mMultiLine(multiLine) {
    if (!mBG || !mBtnFocusBG || !mBtnNormalBG)
        tprintf("DialogWindow: skin images missing (panel %d, buttons %d %d)\n", mBG != nullptr,
                mBtnFocusBG != nullptr, mBtnNormalBG != nullptr);
}

DialogWindow::~DialogWindow() {
    delete mBG;
    delete mBtnFocusBG;
    delete mBtnNormalBG;
    delete mAction;
}

int DialogWindow::cancelAnswer() {
    if (mCancel) {
        tprintf("DialogWindow cancel\n");
        mCancel();
    }
    return WINDOW_CLOSE;
}

int DialogWindow::eventHandling() {
    const int code = wait_event(nullptr);
    if (code == KEY_LEFT) {
        if (mFocus > 0) mFocus--;
        return -1;
    }
    if (code == KEY_RIGHT) {
        if (mFocus <= 0) mFocus++;
        return -1;
    }
    if (isConfirmKey(code) || code == KEY_Y) {
        if (mFocus != 1) return cancelAnswer();
        if (!mAction) return WINDOW_CLOSE;
        tprintf("DialogWindow ok\n");
        return mAction->dowork(nullptr);
    }
    if (isBackKey(code) || code == KEY_X) return cancelAnswer();
    if (code == EVENT_REFRESH || code == EVENT_SDCARD_MOUNTED || code == EVENT_SDCARD_UMOUNTED)
        return code;
    return -1;
}

void DialogWindow::drawMessage(int x, int top, int w) {
    if (!mMultiLine) {
        if (mMessageText.empty()) return;
        const SDL_Rect box = {x, top, w, kMessageH};
        DrawString(gPopupFontTxt, box, mMessageText.c_str(), gPopupColorTitle, ALIGN_CENTER);
        return;
    }
    const std::vector<std::string> lines = splitLines(mMessageText);
    if (lines.empty()) return;
    const int fontH = gPopupFontTxt ? TTF_FontHeight(gPopupFontTxt) : 0;
    int step = kMessageH / (int)lines.size();
    // Lines never overlap: they may run below the area instead.
    if (step <= fontH + 4) step = fontH + 5;
    for (size_t i = 0; i < lines.size(); i++) {
        const SDL_Rect box = {x, top + (int)i * step, w, step};
        DrawString(gPopupFontTxt, box, lines[i].c_str(), gPopupColorTxt, ALIGN_CENTER);
    }
}

void DialogWindow::drawButton(int x, int y, bool focused, int textId) {
    KovaniSurface* image = focused ? mBtnFocusBG : mBtnNormalBG;
    if (image) {
        SDL_Rect at = {x, y, 0, 0};
        image->render(nullptr, &at, true, nullptr);
    }
    const SDL_Rect box = {x, y, widthOr(mBtnFocusBG, kFallbackButtonW),
                          heightOr(mBtnFocusBG, kFallbackButtonH)};
    // Without the focus image the label's colour has to show the focus.
    const SDL_Color color = focused && !mBtnFocusBG ? gHighlightColor : gPopupColorBtn;
    DrawString(gPopupFontBtn, box, getLangStr(textId), color, ALIGN_CENTER);
}

int DialogWindow::draw() {
    FloatWindow::draw();

    int x = 0, y = kNoPanelTop, w = kScreenW;
    if (mBG) {
        w = mBG->getWidth();
        x = (kScreenW - w) / 2;
        y = (kScreenH - mBG->getHeight()) / 2;
        SDL_Rect at = {x, y, 0, 0};
        mBG->render(nullptr, &at, true, nullptr);
    }
    if (!mTitleText.empty()) {
        const SDL_Rect titleBox = {x, y + kTitleTop, w, kTitleH};
        DrawString(gPopupFontTitle, titleBox, mTitleText.c_str(), gPopupColorTitle, ALIGN_CENTER);
    }
    drawMessage(x, y + kMessageTop, w);

    const int focusW = widthOr(mBtnFocusBG, kFallbackButtonW);
    int buttonX = x + kButtonLeft;
    int buttonY = y + kButtonTop;
    if (!mBG) {
        buttonX = (592 - focusW - widthOr(mBtnNormalBG, kFallbackButtonW)) / 2 + 338;
        buttonY = (60 - heightOr(mBtnFocusBG, kFallbackButtonH)) / 2 + 428;
    }
    drawButton(buttonX, buttonY, mFocus == 0, STRING_CANCEL);
    drawButton(buttonX + focusW + kButtonGap, buttonY, mFocus == 1, STRING_OK);
    return 0;
}
