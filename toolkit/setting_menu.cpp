#include "setting_menu.h"

#include <string.h>

#include "input.h"
#include "keycodes.h"
#include "lang.h"
#include "platform/logger.h"
#include "shared_skin.h"
#include "text.h"
#include "utf8.h"

namespace {

const int kRowHeight = 96;
const int kRowsPerPage = 6;
const int kLabelX = 40;
// Value field and arrows, from the row's left edge.
const int kValueX = 745;
const int kValueW = 500;
const int kRightArrowX = 1173;
// Right-hand text of a plain row: a 60-pixel box ending 25 pixels before
// the row's right edge.
const int kEndMargin = 25;
const int kEndTextW = 60;
const int kValueRightMargin = 40;

// Draws `image` at its own size at x, vertically centred in `row`.
void drawCentred(KovaniSurface* image, int x, const SDL_Rect& row) {
    if (!image) return;
    SDL_Rect at = {x, row.y + (row.h - image->getHeight()) / 2, 0, 0};
    image->render(nullptr, &at, true, nullptr);
}

void drawBackground(KovaniSurface* selBG, KovaniSurface* normalBG, bool focused, const SDL_Rect& row) {
    drawCentred(focused && selBG ? selBG : normalBG, row.x, row);
}

void drawLabel(const char* text, const SDL_Rect& row) {
    const SDL_Rect box = {row.x + kLabelX, row.y, row.w, row.h};
    DrawString(gListFontTxt, box, text, gListColorTxt, ALIGN_MIDDLE_LEFT);
}

// Both row kinds carry an action; other rows have none.
Action* actionOf(ItemDrawable* row) {
    if (SettingItem* plain = dynamic_cast<SettingItem*>(row)) return plain->mAction;
    if (SettingValueItem* value = dynamic_cast<SettingValueItem*>(row)) return value->mAction;
    return nullptr;
}

}  // namespace

ValueHandler::~ValueHandler() {}

SettingItem::SettingItem(KovaniSurface* selBG, KovaniSurface* normalBG, int labelId,
                         const char* valueText, Action* action)
    : mAction(action),
      mSelBG(selBG),
      mNormalBG(normalBG),
      mIcon(nullptr),
      mLabelId(labelId),
      mValueText(valueText ? valueText : "") {}

SettingItem::~SettingItem() {
    tprintf("~SettingItem\n");
    delete mAction;
}

void SettingItem::draw(SDL_Rect& rect, bool focused) {
    drawBackground(mSelBG, mNormalBG, focused, rect);
    if (mIcon) drawCentred(mIcon, rect.x + rect.w - mIcon->getWidth() - kEndMargin, rect);
    drawLabel(mLabelId < 0 ? mLabel.c_str() : getLangStr(mLabelId), rect);
    if (mValueText.empty()) return;
    const SDL_Rect box = {rect.x + rect.w - kEndMargin - kEndTextW, rect.y, kEndTextW, rect.h};
    DrawString(gListFontTxt, box, mValueText.c_str(), gListColorTxt, ALIGN_MIDDLE_RIGHT);
}

SettingValueItem::SettingValueItem(KovaniSurface* selBG, KovaniSurface* normalBG,
                                   KovaniSurface* leftArrowF, KovaniSurface* leftArrowN,
                                   KovaniSurface* rightArrowF, KovaniSurface* rightArrowN,
                                   KovaniSurface* textBG, int labelId, Action* action,
                                   ValueHandler* handler)
    : mAction(action),
      mSelBG(selBG),
      mNormalBG(normalBG),
      mLeftArrowF(leftArrowF),
      mLeftArrowN(leftArrowN),
      mRightArrowF(rightArrowF),
      mRightArrowN(rightArrowN),
      mTextBG(textBG),
      mLabelId(labelId),
      mValueChanger(handler) {
    mShowBuf[0] = '\0';
}

SettingValueItem::~SettingValueItem() {
    if (mValueChanger) {
        mValueChanger->saveValue();
        delete mValueChanger;
    }
    delete mAction;
}

void SettingValueItem::draw(SDL_Rect& rect, bool focused) {
    drawBackground(mSelBG, mNormalBG, focused, rect);
    drawLabel(getLangStr(mLabelId), rect);
    if (!mValueChanger) return;

    if (focused) {
        drawCentred(mTextBG, rect.x + kValueX, rect);
        drawCentred(mLeftArrowF, rect.x + kValueX, rect);
        drawCentred(mRightArrowF, rect.x + kRightArrowX, rect);
    } else {
        drawCentred(mLeftArrowN, rect.x + kValueX, rect);
        drawCentred(mRightArrowN, rect.x + kRightArrowX, rect);
    }

    // A long value is cut after a whole character, never inside one.
    const char* shown = mValueChanger->getShowValue();
    const int bytes = utf8FitBytes(shown, sizeof mShowBuf - 1);
    memcpy(mShowBuf, shown ? shown : "", bytes);
    mShowBuf[bytes] = '\0';
    if (mTextBG) {
        const SDL_Rect box = {rect.x + kValueX, rect.y, kValueW, rect.h};
        DrawString(gListFontTxt, box, mShowBuf, gListColorTxt, ALIGN_CENTER);
    } else {
        const SDL_Rect box = {rect.x, rect.y, rect.w - kValueRightMargin, rect.h};
        DrawString(gListFontTxt, box, mShowBuf, gListColorTxt, ALIGN_MIDDLE_RIGHT);
    }
}

int SettingValueItem::handleEvent(int key) {
    if ((key != KEY_LEFT && key != KEY_RIGHT) || !mValueChanger) return -1;
    tprintf("mValueChanger %p changeValue %d\n", static_cast<void*>(mValueChanger), key);
    mValueChanger->changeValue(key);
    return 0;
}

// No list images: every row brings its own backgrounds.
SettingMenu::SettingMenu() : TextMenuDrawer(nullptr, nullptr, kRowsPerPage, 0) {}

SettingMenu::~SettingMenu() {
    tprintf("SettingMenu::~SettingMenu\n");
    for (ItemDrawable* item : mItems) delete item;
}

void SettingMenu::insertSettingItem(ItemDrawable* item) {
    if (!item) {
        tprintf("insertSettingItem: no row\n");
        return;
    }
    mItems.push_back(item);
}

int SettingMenu::getListNum() { return int(mItems.size()); }

void* SettingMenu::getItemByIndex(int index) { return rowAt(index); }

ItemDrawable* SettingMenu::rowAt(int index) {
    if (index < 0 || index >= getListNum()) return nullptr;
    return mItems[size_t(index)];
}

int SettingMenu::select() {
    ItemDrawable* row = rowAt(mCurrentPos);
    Action* action = actionOf(row);
    if (!action) return -1;
    return action->dowork(row);
}

int SettingMenu::xselect() { return 0; }

int SettingMenu::eventHandling() {
    const int key = wait_event(nullptr);
    ItemDrawable* row = rowAt(mCurrentPos);
    switch (key) {
        case KEY_UP:
            moveBackward();
            return -1;
        case KEY_DOWN:
            moveForward();
            return -1;
        case KEY_LEFT:
        case KEY_RIGHT:
            if (row) row->handleEvent(key);
            return -1;
        case KEY_MENU_KEY:
            return KEY_MENU_KEY;
        default:
            break;
    }
    if (key == KEY_Y || isConfirmKey(key)) {
        if (row && row->handleEvent(key) >= 0) return -1;
        return select();
    }
    if (key == KEY_X || isBackKey(key)) return WINDOW_CLOSE;
    return -1;
}

void SettingMenu::draw() {
    const int count = getListNum();
    if (count < 1) return;
    if (mFirstVisible == 0 && mLastVisible == 0) mLastVisible = kRowsPerPage - 1;
    if (mCurrentPos < mFirstVisible) {
        mFirstVisible = mCurrentPos;
        mLastVisible = mCurrentPos + kRowsPerPage - 1;
    } else if (mCurrentPos > mLastVisible) {
        mFirstVisible = mCurrentPos - kRowsPerPage + 1;
        mLastVisible = mCurrentPos;
    }
    if (mFirstVisible < 0) mFirstVisible = 0;
    if (mLastVisible > count - 1) mLastVisible = count - 1;

    for (int i = mFirstVisible; i <= mLastVisible; i++) {
        SDL_Rect rect = {mRect.x + 10, mRect.y + (i - mFirstVisible) * kRowHeight, mRect.w - 20, kRowHeight};
        mItems[size_t(i)]->draw(rect, i == mCurrentPos);
    }
}
