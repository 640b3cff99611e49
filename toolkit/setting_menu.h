#pragma once

#include <SDL2/SDL.h>

#include <string>
#include <vector>

#include "action.h"
#include "kovani_surface.h"
#include "text_menu_drawer.h"

// The value behind one row of a setting menu: LEFT and RIGHT change it, the
// row shows it, and the row lets it persist itself when the row goes away.
class ValueHandler {
public:
    virtual ~ValueHandler();
    // Called with KEY_LEFT or KEY_RIGHT; the menu ignores the result.
    virtual int changeValue(int key) = 0;
    // Called once, when the owning row is destroyed.
    virtual int saveValue() = 0;
    // Text of the current value; must stay valid until the next call.
    virtual const char* getShowValue() = 0;
};

// A row that runs an action when confirmed: background, label on the left,
// optional icon or text at the right end.
class SettingItem : public ItemDrawable {
public:
    // Takes ownership of `action` (may be null); `valueText` null: no text
    // at the right end. A negative `labelId` shows mLabel instead.
    SettingItem(KovaniSurface* selBG, KovaniSurface* normalBG, int labelId, const char* valueText,
                Action* action);
    ~SettingItem() override;
    SettingItem(const SettingItem&) = delete;
    SettingItem& operator=(const SettingItem&) = delete;

    void draw(SDL_Rect& rect, bool focused) override;

    Action* mAction;          // owned, may be null: run when the row is confirmed
    KovaniSurface* mSelBG;     // not owned, may be null: background while focused
    KovaniSurface* mNormalBG;  // not owned, may be null: background otherwise
    KovaniSurface* mIcon;      // not owned, may be null: image at the right end
    int mLabelId;              // language string id; negative: mLabel
    std::string mLabel;
    std::string mValueText;    // empty: nothing at the right end
};

// A row with a label on the left and, on the right, a value between two
// arrows that LEFT and RIGHT change through its ValueHandler.
class SettingValueItem : public ItemDrawable {
public:
    // Takes ownership of `action` and `handler` (either may be null). A
    // `textBG` centres the value in a 500-pixel field; without it the value
    // is right-aligned in the row.
    SettingValueItem(KovaniSurface* selBG, KovaniSurface* normalBG, KovaniSurface* leftArrowF,
                     KovaniSurface* leftArrowN, KovaniSurface* rightArrowF,
                     KovaniSurface* rightArrowN, KovaniSurface* textBG, int labelId, Action* action,
                     ValueHandler* handler);
    // Saves the handler's value, then deletes the handler and the action.
    ~SettingValueItem() override;
    SettingValueItem(const SettingValueItem&) = delete;
    SettingValueItem& operator=(const SettingValueItem&) = delete;

    void draw(SDL_Rect& rect, bool focused) override;
    // LEFT and RIGHT go to the handler (0); anything else is not used (-1).
    int handleEvent(int key) override;

    Action* mAction;             // owned, may be null: run when the row is confirmed
    KovaniSurface* mSelBG;        // not owned, may be null
    KovaniSurface* mNormalBG;     // not owned, may be null
    KovaniSurface* mLeftArrowF;   // not owned, may be null: arrows while focused
    KovaniSurface* mLeftArrowN;   // not owned, may be null: arrows otherwise
    KovaniSurface* mRightArrowF;  // not owned, may be null
    KovaniSurface* mRightArrowN;  // not owned, may be null
    KovaniSurface* mTextBG;       // not owned, may be null: value field, also picks the layout
    int mLabelId;                 // language string id; negative: no label
    ValueHandler* mValueChanger;  // owned, may be null: no value shown
    char mShowBuf[64];            // the value text last drawn, cut after a whole character
};

// A vertical list of setting rows, six 96-pixel rows per page. The owner
// window appends rows, forwards its key handling and drawing here and
// returns what eventHandling gives (1002: close, or an action's code).
// Main thread only.
class SettingMenu : public TextMenuDrawer {
public:
    SettingMenu();
    // Deletes every row.
    ~SettingMenu() override;

    // Takes ownership of `item` and appends it; null is ignored.
    void insertSettingItem(ItemDrawable* item);
    int getListNum() override;
    // The row at `index` (an ItemDrawable*), null when there is none.
    void* getItemByIndex(int index) override;
    ItemDrawable* rowAt(int index);
    // Runs the cursor row's action with the row; its result, -1 without one.
    int select() override;
    // Rows have no second action.
    int xselect() override;
    // One key: UP/DOWN move (wrapping), LEFT/RIGHT go to the cursor row,
    // confirm and Y confirm the row, back and X give 1002, MENU gives 11.
    // -1 for everything else.
    int eventHandling() override;
    void draw() override;

    std::vector<ItemDrawable*> mItems;  // owned rows, in order
};
