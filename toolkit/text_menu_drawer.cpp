#include "text_menu_drawer.h"

#include <stdio.h>
#include <string.h>

#include "entry_order.h"
#include "lang.h"
#include "platform/logger.h"
#include "shared_skin.h"
#include "text.h"
#include "text_menu_item.h"
#include "utf8.h"

namespace {

const char* const kFocusBgFile = "skin/bg-list-f.png";
const char* const kNormalBgFile = "skin/bg-list-n.png";
// The list height the row height is computed from, whatever mRect says.
const int kListHeight = 580;
const int kHighestNumber = 9999;
// Page number box: ends at x 1256 on the bottom bar.
const SDL_Rect kPageNumberBox = {640, 671, 616, 0};

int fontHeight(TTF_Font* font) { return font ? TTF_FontHeight(font) : 0; }

const char* themeOrEmpty() { return gThemePath ? gThemePath : ""; }

// `text` cut to what fits `width` in `font`, with "..." when it was cut.
std::string fitted(TTF_Font* font, const std::string& text, int width) {
    const int keep = getTruncateLen(font, text.c_str(), width, 0);
    if (keep <= 0) return text;
    return utf8Substr(text.c_str(), 0, keep) + "...";
}

}  // namespace

TextMenuDrawer::TextMenuDrawer(const char* focusBgFile, const char* normalBgFile, int rowsPerPage,
                               int ySpace)
    : mShowFocus(true),
      mFocusBg(focusBgFile ? LoadKovaniSurface(gThemePath, "./", focusBgFile) : nullptr),
      mNormalBg(normalBgFile ? LoadKovaniSurface(gThemePath, "./", normalBgFile) : nullptr),
      mCursorIcon(nullptr),
      mItemHeight(rowsPerPage ? (kListHeight - (rowsPerPage - 1) * ySpace) / rowsPerPage : 0),
      mYSpaceInList(ySpace),
      mDrawNum(true),
      mShowPageNum(true),
      mTextColor(gListColorTxt),
      mShadow(false),
      mRowsPerPage(rowsPerPage),
      mThemePath(themeOrEmpty()),
      mBgOffsetX(10),
      mCentreText(false),
      mNormalBgDrawn(false),
      mRowImagesVersion(0) {
    if (focusBgFile && !mFocusBg) tprintf("list image %s open fail\n", focusBgFile);
    if (normalBgFile && !mNormalBg) tprintf("list image %s open fail\n", normalBgFile);
    tprintf("mItemHeight = %d, mYSpaceInList = %d\n", mItemHeight, mYSpaceInList);
}

TextMenuDrawer::~TextMenuDrawer() {
    delete mFocusBg;
    delete mNormalBg;
    delete mCursorIcon;
}

void TextMenuDrawer::setDrawNum(bool on) { mDrawNum = on; }

int TextMenuDrawer::select() {
    void* entry = getItemByIndex(mCurrentPos);
    if (!entry) return -1;
    TextMenuItem* item = static_cast<TextMenuItem*>(entry);
    Action* action = item->getAction();
    if (!action) return -1;
    tprintf("%s dowork %p\n", item->getLabel().c_str(), entry);
    const int result = action->dowork(entry);
    return result < 0 ? -1 : result;
}

int TextMenuDrawer::xselect() {
    tprintf("TextMenuDrawer::xselect\n");
    void* entry = getItemByIndex(mCurrentPos);
    if (!entry) return -1;
    Action* action = static_cast<TextMenuItem*>(entry)->getAction();
    if (!action) return -1;
    const int result = action->dowork2(entry);
    return result < 0 ? -1 : result;
}

void TextMenuDrawer::refresh() {
    if (mThemePath == themeOrEmpty()) return;
    // The row images always come under these names in a theme, whatever
    // files the list was made with.
    if (mFocusBg) {
        delete mFocusBg;
        mFocusBg = LoadKovaniSurface(gThemePath, "./", kFocusBgFile);
        if (!mFocusBg) tprintf("list image %s open fail\n", kFocusBgFile);
    }
    if (mNormalBg) {
        delete mNormalBg;
        mNormalBg = LoadKovaniSurface(gThemePath, "./", kNormalBgFile);
        if (!mNormalBg) tprintf("list image %s open fail\n", kNormalBgFile);
    }
    mRowImagesVersion++;
    mThemePath = themeOrEmpty();
}

int TextMenuDrawer::drawListNum(int number, SDL_Rect& rect, TTF_Font* font) {
    char text[16];
    snprintf(text, sizeof text, "%04d", SDL_min(number, kHighestNumber));
    return DrawString(font, rect, text, gListColorSeq, ALIGN_CENTER, false, false);
}

void TextMenuDrawer::draw() {
    const int count = getListNum();
    if (count < 1) return;
    alignVisibleRange(count);
    for (int i = mFirstVisible; i <= mLastVisible; i++) drawRow(i, rowY(i));
    if (mShowPageNum) drawPageNumber(count);
}

int TextMenuDrawer::rowY(int index) const { return mRect.y + (mItemHeight + mYSpaceInList) * (index - mFirstVisible); }

SDL_Rect TextMenuDrawer::backgroundRect(KovaniSurface* bg, int y) const {
    const int bw = SDL_min(bg->getWidth(), mRect.w);
    const int bh = SDL_min(bg->getHeight(), mItemHeight);
    return SDL_Rect{mRect.x + mBgOffsetX, y + (bh < mItemHeight ? (mItemHeight - bh) / 2 : 0), bw, bh};
}

int TextMenuDrawer::visibleRows() {
    const int count = getListNum();
    if (count < 1) return 0;
    alignVisibleRange(count);
    return SDL_max(0, mLastVisible - mFirstVisible + 1);
}

void TextMenuDrawer::drawNormalBackgrounds(int rows) {
    if (!mNormalBg) return;
    for (int i = 0; i < rows; i++) {
        SDL_Rect dst = backgroundRect(mNormalBg, rowY(mFirstVisible + i));
        SDL_Rect src = {0, 0, dst.w, dst.h};
        mNormalBg->render(&src, &dst, false, nullptr);
    }
}

bool TextMenuDrawer::cursorBackgroundRect(SDL_Rect* rect) {
    if (!mNormalBg || !mShowFocus || mFocusBg == mNormalBg) return false;
    if (visibleRows() < 1 || mCurrentPos < mFirstVisible || mCurrentPos > mLastVisible) return false;
    *rect = backgroundRect(mNormalBg, rowY(mCurrentPos));
    return true;
}

void TextMenuDrawer::setNormalBackgroundsDrawn(bool on) { mNormalBgDrawn = on; }

unsigned TextMenuDrawer::rowImagesVersion() const { return mRowImagesVersion; }

void TextMenuDrawer::alignVisibleRange(int count) {
    if (mFirstVisible == 0 && mLastVisible == 0) mLastVisible = mRowsPerPage - 1;
    if (mCurrentPos < mFirstVisible) {
        mFirstVisible = mCurrentPos;
        mLastVisible = mCurrentPos + mRowsPerPage - 1;
    }
    if (mCurrentPos > mLastVisible) {
        mLastVisible = mCurrentPos;
        mFirstVisible = mCurrentPos - mRowsPerPage + 1;
    }
    if (mFirstVisible < 0) mFirstVisible = 0;
    if (mLastVisible >= count - 1) mLastVisible = count - 1;
}

void TextMenuDrawer::drawRow(int index, int y) {
    const int x = mRect.x;
    const int h = mItemHeight;
    const bool onCursor = index == mCurrentPos;
    const bool shadow = mShadow && onCursor;
    const int f = fontHeight(gListFontTxt);

    KovaniSurface* bg = onCursor && mShowFocus ? mFocusBg : mNormalBg;
    if (bg && !(bg == mNormalBg && mNormalBgDrawn)) {
        SDL_Rect dst = backgroundRect(bg, y);
        SDL_Rect src = {0, 0, dst.w, dst.h};
        bg->render(&src, &dst, false, nullptr);
    }

    SDL_Rect numberRect = {x + 28, y + 5, 60, h - 5};
    int markWidth = 0;  // room the cursor mark takes on every row
    if (mCursorIcon) {
        if (onCursor) {
            SDL_Rect at = {x + 28, y + (h - mCursorIcon->getHeight()) / 2, 0, 0};
            mCursorIcon->render(nullptr, &at, true, nullptr);
        }
        markWidth = mCursorIcon->getWidth();
        numberRect.x += markWidth + 2;
    }
    const int markShift = mCursorIcon ? markWidth + 2 : 0;
    SDL_Rect textRect;
    if (mDrawNum) {
        drawListNum(index + 1, numberRect, gListFontSubtxt);
        textRect = {x + 95 + markShift, 0, mRect.w - 120 - markWidth, h};
    } else {
        textRect = {x + 30 + markShift, 0, mRect.w - 60 - markWidth, h};
    }
    textRect.y = mCentreText ? y : y + (h - f) / 2 - 2;

    TextMenuItem* item = static_cast<TextMenuItem*>(getItemByIndex(index));
    if (!item) {
        DrawString(gListFontTxt, textRect, getLangStr(STRING_LOADING_SMALL), mTextColor,
                   ALIGN_TOP_LEFT, shadow, false);
        return;
    }

    KovaniSurface* icon = item->getLabelIcon();
    if (icon && !mDrawNum) {
        SDL_Rect* part = item->getLabelIconDisplayRect();
        const int iw = part ? part->w : icon->getWidth();
        const int ih = part ? part->h : icon->getHeight();
        SDL_Rect at = {textRect.x, y + (h - ih) / 2, iw, ih};
        icon->render(part, &at, !part, nullptr);
        textRect.x += iw + 7;
        textRect.w -= iw + 5;
        textRect.y = y + (h - f) / 2;
    }

    const std::string label = item->getLabel();
    const std::string shown = fitted(gListFontTxt, label, textRect.w);
    const std::string pinyin = item->getPinyin();
    const std::string match = pinyin.empty() ? label : pinyin;
    const std::string originalPinyin = item->getOriginalPinyin();
    const std::string fileName = item->getFileName();
    const std::string subLabel = item->getSubLabel();
    if (subLabel.empty()) {
        drawListText(gListFontTxt, textRect, shown.c_str(), mTextColor, mCentreText, shadow,
                     mKeyword.c_str(), match.c_str(), originalPinyin.c_str(), fileName.c_str());
        return;
    }
    const int g = fontHeight(gListFontSubtxt);
    const SDL_Rect labelRect = {textRect.x, y + 60 - f, textRect.w, f};
    drawListText(gListFontTxt, labelRect, shown.c_str(), mTextColor, 0, shadow, mKeyword.c_str(),
                 match.c_str(), originalPinyin.c_str(), fileName.c_str());
    const SDL_Rect subRect = {textRect.x, y + 90 - g, textRect.w, g};
    DrawString(gListFontSubtxt, subRect, fitted(gListFontSubtxt, subLabel, textRect.w).c_str(),
               gListColorSubtxt, ALIGN_TOP_LEFT, shadow, false);
}

void TextMenuDrawer::drawPageNumber(int count) {
    SDL_Rect box = kPageNumberBox;
    box.h = fontHeight(gStatFont);
    char text[32];
    snprintf(text, sizeof text, "%d", count);
    const int countWidth = DrawString(gStatFont, box, text, gStatColorTxt, ALIGN_TOP_RIGHT, false, false);
    box.x -= countWidth;
    snprintf(text, sizeof text, "%d/", mCurrentPos + 1);
    DrawString(gStatFont, box, text, gStatColorTxt, ALIGN_TOP_RIGHT, false, false);
}

void TextMenuDrawer::drawListText(TTF_Font* font, SDL_Rect rect, const char* text, SDL_Color color,
                                  int centred, bool shadow, const char* keyword, const char* pinyin,
                                  const char* originalPinyin, const char* fileName) {
    if (!text) return;
    const int plainAlign = centred ? ALIGN_CENTER : ALIGN_TOP_LEFT;
    if (!keyword || !keyword[0] || !pinyin) {
        DrawString(font, rect, text, color, plainAlign, shadow, false);
        return;
    }
    std::string drawn = text;
    const char* start = nullptr;
    int length = 0;
    size_t offset = 0;
    if (PinyinStrstr(text, pinyin, keyword, &start, &length) == 0) {
        offset = size_t(start - text);
    } else if (fileName && fileName[0]) {
        // A file name without pinyin is matched against itself, as a label is.
        const char* namePinyin = originalPinyin && originalPinyin[0] ? originalPinyin : fileName;
        drawn = std::string(text) + "(" + fileName + ")";
        const std::string pinyin2 = std::string(pinyin) + "(" + namePinyin + ")";
        if (PinyinStrstr(drawn.c_str(), pinyin2.c_str(), keyword, &start, &length) != 0) {
            DrawString(font, rect, text, color, plainAlign, shadow, false);
            return;
        }
        offset = size_t(start - drawn.c_str());
    } else {
        DrawString(font, rect, text, color, plainAlign, shadow, false);
        return;
    }

    int x = rect.x;
    const int align = centred ? ALIGN_MIDDLE_LEFT : ALIGN_TOP_LEFT;
    if (centred) {
        int width = 0;
        if (font) TTF_SizeUTF8(font, drawn.c_str(), &width, nullptr);
        x = rect.x + (rect.w - width) / 2;
    }
    auto piece = [&](const std::string& part, SDL_Color pieceColor) {
        SDL_Rect at = rect;
        at.x = x;
        x += DrawString(font, at, part.c_str(), pieceColor, align, shadow, false);
    };
    if (offset > 0) piece(drawn.substr(0, offset), color);
    piece(drawn.substr(offset, size_t(length)), gHighlightColor);
    if (offset + size_t(length) < drawn.size()) piece(drawn.substr(offset + size_t(length)), color);
}
