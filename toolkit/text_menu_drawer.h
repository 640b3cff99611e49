#pragma once

#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>

#include <string>

#include "kovani_surface.h"
#include "list_menu.h"

// A list drawn as text rows: row background, optional number, optional label
// icon, the label (cut with "..." when too wide, search keyword highlighted)
// and an optional second line; the page position at the bottom right.
// Choosing an entry runs its Action. Subclasses keep the entries:
// getItemByIndex returns a TextMenuItem* (as void*), null for none, and
// getListNum their count. Main thread only.
class TextMenuDrawer : public ListMenu {
public:
    // Row images are loaded from the theme (falling back to "./"); either file
    // may be null. Row height = (580 - (rowsPerPage - 1) * ySpace) / rowsPerPage.
    TextMenuDrawer(const char* focusBgFile, const char* normalBgFile, int rowsPerPage, int ySpace);
    ~TextMenuDrawer() override;
    TextMenuDrawer(const TextMenuDrawer&) = delete;
    TextMenuDrawer& operator=(const TextMenuDrawer&) = delete;

    // Runs the cursor entry's dowork; -1 without entry or action, or when
    // the action fails.
    int select() override;
    // Brings the visible range into line with the cursor and draws it.
    void draw() override;
    // As select, with dowork2.
    int xselect() override;
    // After a theme change reloads the row images from the new theme.
    void refresh() override;
    // Draws min(number, 9999) as four digits centred in `rect`; its width.
    virtual int drawListNum(int number, SDL_Rect& rect, TTF_Font* font);

    void setDrawNum(bool on);

    // For a caller that keeps the normal row images in a picture of its own
    // (see StaticPicture): how many rows the next draw shows; draws the
    // normal image in the first `rows` row places; where the normal image
    // lies on the cursor row when that row shows another one (false when it
    // shows the normal one or is not on screen); and whether draw leaves the
    // normal images out because they are already there.
    int visibleRows();
    void drawNormalBackgrounds(int rows);
    bool cursorBackgroundRect(SDL_Rect* rect);
    void setNormalBackgroundsDrawn(bool on);
    // Changes whenever the row images are loaded anew.
    unsigned rowImagesVersion() const;

    // Draws one label, `keyword` highlighted where PinyinStrstr finds it in
    // `pinyin`, or else in the label followed by "(fileName)" against
    // `pinyin` followed by "(originalPinyin)"; then that longer text is drawn.
    // `centred` centres it in `rect`.
    void drawListText(TTF_Font* font, SDL_Rect rect, const char* text, SDL_Color color,
                      int centred, bool shadow, const char* keyword, const char* pinyin,
                      const char* originalPinyin, const char* fileName);

    bool mShowFocus;            // the cursor row gets mFocusBg
    KovaniSurface* mFocusBg;    // owned; may be null
    KovaniSurface* mNormalBg;   // owned; may be null
    KovaniSurface* mCursorIcon;  // owned; may be null: mark left of the cursor row
    int mItemHeight;            // pixels of one row
    int mYSpaceInList;          // pixels between rows
    bool mDrawNum;              // rows carry a four-digit number
    bool mShowPageNum;          // "cursor/count" at the bottom right of the screen
    SDL_Color mTextColor;       // label colour
    bool mShadow;               // the cursor row's texts get a shadow
    int mRowsPerPage;
    std::string mThemePath;     // theme the row images came from
    int mBgOffsetX;             // x of the row images inside the list
    bool mCentreText;           // labels centred in their row

private:
    void alignVisibleRange(int count);
    void drawRow(int index, int y);
    void drawPageNumber(int count);
    int rowY(int index) const;
    // Where `bg` is drawn, 1:1 and cut to the row, in the row at `y`.
    SDL_Rect backgroundRect(KovaniSurface* bg, int y) const;

    bool mNormalBgDrawn;       // the normal row images are on the target already
    unsigned mRowImagesVersion;
};
