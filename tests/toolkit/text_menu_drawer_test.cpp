#include "toolkit/text_menu_drawer.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tests/support/draw_fixture.h"
#include "tests/support/sdl_events.h"
#include "toolkit/keycodes.h"
#include "toolkit/lang.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"
#include "toolkit/text.h"
#include "toolkit/text_menu_item.h"

namespace {

const SDL_Color sBlack = {0, 0, 0, 255};
const SDL_Color sWhite = {255, 255, 255, 255};
const SDL_Color sSubColor = {255, 200, 0, 255};
const SDL_Color sSeqColor = {200, 200, 255, 255};
const SDL_Color sFocusColor = {200, 40, 40, 255};
const SDL_Color sNormalColor = {30, 30, 120, 255};
const int kRowHeight = 96;  // 6 rows, no space
const int kListTop = 80;

// A drawer over a map of entries (owned; missing indexes are null entries)
// whose hold-detection clock always reads a pause, so every press moves one.
class TestDrawer : public TextMenuDrawer {
public:
    TestDrawer(int count, const char* focusBg, const char* normalBg)
        : TextMenuDrawer(focusBg, normalBg, 6, 0), mCount(count) {}
    ~TestDrawer() override {
        for (auto& entry : mItems) delete entry.second;
    }
    void* getItemByIndex(int index) override {
        auto at = mItems.find(index);
        return at == mItems.end() ? nullptr : at->second;
    }
    int getListNum() override { return mCount; }

    TextMenuItem* put(int index, TextMenuItem* item) {
        mItems[index] = item;
        return item;
    }
    void fill() {
        for (int i = 0; i < mCount; i++)
            put(i, new TextMenuItem(("Entry " + std::to_string(i)).c_str(), nullptr, nullptr, false));
    }

    int mCount;
    std::map<int, TextMenuItem*> mItems;

protected:
    uint64_t nowMs() override { return mClock += 1000; }

private:
    uint64_t mClock = 0;
};

class RecordingAction : public Action {
public:
    RecordingAction(int result, int result2) : Action(-1), mResult(result), mResult2(result2) {}
    int dowork(void* item) override {
        mItem = item;
        return mResult;
    }
    int dowork2(void* item) override {
        mItem = item;
        return mResult2;
    }
    int mResult;
    int mResult2;
    void* mItem = nullptr;
};

// A real screen in a fresh working folder, the list fonts opened from the
// CJK interface font, and the skin colours set.
class DrawerTest : public DrawTest {
protected:
    void SetUp() override {
        DrawTest::SetUp();
        gListFontTxt = TTF_OpenFont(KOVANI_TEST_CJK_FONT, 36);
        gListFontSubtxt = TTF_OpenFont(KOVANI_TEST_CJK_FONT, 24);
        gStatFont = TTF_OpenFont(KOVANI_TEST_CJK_FONT, 24);
        ASSERT_TRUE(gListFontTxt && gListFontSubtxt && gStatFont) << TTF_GetError();
        gListColorTxt = sWhite;
        gListColorSubtxt = sSubColor;
        gListColorSeq = sSeqColor;
        gStatColorTxt = sWhite;
        writePng(dir() + "skin/focus.png", 600, kRowHeight, sFocusColor, 4);
        writePng(dir() + "skin/normal.png", 600, kRowHeight, sNormalColor, 4);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        clear(0, 0, 0);
    }
    void TearDown() override {
        gTextSurfaceCache.clear();
        for (TTF_Font** f : {&gListFontTxt, &gListFontSubtxt, &gStatFont}) {
            if (*f) TTF_CloseFont(*f);
            *f = nullptr;
        }
        free(gThemePath);
        gThemePath = nullptr;
        DrawTest::TearDown();
    }

    std::vector<Uint32> grab(SDL_Rect area) {
        std::vector<Uint32> px(size_t(area.w) * area.h);
        SDL_RenderReadPixels(gRenderer, &area, SDL_PIXELFORMAT_ARGB8888, px.data(), area.w * 4);
        return px;
    }

    int rowTop(int row) { return kListTop + kRowHeight * row; }
    int listTextTop() { return kListTop + (kRowHeight - TTF_FontHeight(gListFontTxt)) / 2 - 2; }

    TempDeviceRoot mRoot;  // input markers of wait_event
};

}  // namespace

TEST_F(DrawerTest, CursorRowCarriesTheFocusBackgroundAsTheRangeFollows) {
    TestDrawer list(20, "skin/focus.png", "skin/normal.png");
    list.fill();
    ASSERT_EQ(list.mItemHeight, kRowHeight);
    const struct { int key, times, cursor, first, last; } steps[] = {
        {KEY_NONE, 0, 0, 0, 5},
        {KEY_DOWN, 5, 5, 0, 5},
        {KEY_DOWN, 1, 6, 1, 6},   // cursor on the bottom row
        {KEY_UP, 1, 5, 1, 6},
        {KEY_UP, 5, 0, 0, 5},     // cursor on the top row
        {KEY_UP, 1, 19, 14, 19},  // wrap to the end
        {KEY_DOWN, 1, 0, 0, 5},   // and back to the start
    };
    for (const auto& step : steps) {
        for (int i = 0; i < step.times; i++) pressKey(list, step.key);
        clear(0, 0, 0);
        list.draw();
        EXPECT_EQ(list.mCurrentPos, step.cursor);
        EXPECT_EQ(list.mFirstVisible, step.first) << "cursor " << step.cursor;
        EXPECT_EQ(list.mLastVisible, step.last) << "cursor " << step.cursor;
        for (int row = 0; row < 6; row++) {
            const bool focused = step.first + row == step.cursor;
            EXPECT_TRUE(sameColor(pixel(15, rowTop(row) + 48), focused ? sFocusColor : sNormalColor))
                << "cursor " << step.cursor << ", screen row " << row;
        }
    }

    list.mShowFocus = false;
    clear(0, 0, 0);
    list.draw();
    EXPECT_TRUE(sameColor(pixel(15, rowTop(0) + 48), sNormalColor)) << "no focus shown";
}

TEST_F(DrawerTest, RowNumbersAreFourDigitsUpToFourNinesAndMissingEntriesShowLoading) {
    TestDrawer list(10010, nullptr, nullptr);
    const SDL_Rect numberBox = {28, kListTop + 5, 60, kRowHeight - 5};
    const SDL_Rect textBox = {95, listTextTop(), 1280 - 120, kRowHeight};
    const SDL_Rect firstRow = {0, kListTop, 1280, kRowHeight};
    const struct {
        int index;
        const char* number;
    } cases[] = {{0, "0001"}, {9998, "9999"}, {10005, "9999"}};
    for (const auto& c : cases) {
        list.restorePos(c.index, c.index, c.index);
        clear(0, 0, 0);
        list.draw();
        ASSERT_EQ(list.mFirstVisible, c.index);
        const std::vector<Uint32> drawn = grab(firstRow);
        clear(0, 0, 0);
        DrawString(gListFontSubtxt, numberBox, c.number, sSeqColor, ALIGN_CENTER);
        DrawString(gListFontTxt, textBox, getLangStr(STRING_LOADING_SMALL), sWhite, ALIGN_TOP_LEFT);
        EXPECT_TRUE(drawn == grab(firstRow)) << "row " << c.index << " shows " << c.number;
    }
}

TEST_F(DrawerTest, ChoosingAnEntryRunsItsActionWithTheEntry) {
    const struct {
        const char* name;
        bool hasEntry;
        bool hasAction;
        int result;
        int result2;
        int chosen;
        int chosen2;
    } cases[] = {
        {"action succeeds", true, true, 5, 8, 5, 8},
        {"action fails", true, true, -7, -3, -1, -1},
        {"entry without action", true, false, 0, 0, -1, -1},
        {"no entry", false, false, 0, 0, -1, -1},
    };
    for (const auto& c : cases) {
        TestDrawer list(3, nullptr, nullptr);
        list.mCurrentPos = 1;
        RecordingAction* action = c.hasAction ? new RecordingAction(c.result, c.result2) : nullptr;
        TextMenuItem* item = c.hasEntry ? list.put(1, new TextMenuItem("Pick", nullptr, action, true))
                                        : nullptr;
        EXPECT_EQ(pressKey(list, KEY_A), c.chosen) << c.name;
        if (action) {
            EXPECT_EQ(action->mItem, item) << c.name << ": the action gets its entry";
            action->mItem = nullptr;
        }
        EXPECT_EQ(pressKey(list, KEY_X), c.chosen2) << c.name;
        if (action) {
            EXPECT_EQ(action->mItem, item) << c.name;
        }
    }
}

TEST_F(DrawerTest, RefreshReloadsTheRowImagesFromANewTheme) {
    const SDL_Color green = {0, 200, 0, 255};
    const SDL_Color yellow = {220, 220, 0, 255};
    writePng(dir() + "t1/skin/own-f.png", 600, kRowHeight, sFocusColor, 4);
    writePng(dir() + "t1/skin/own-n.png", 600, kRowHeight, sNormalColor, 4);
    writePng(dir() + "t2/skin/bg-list-f.png", 600, kRowHeight, green, 4);
    writePng(dir() + "t2/skin/bg-list-n.png", 600, kRowHeight, yellow, 4);
    gThemePath = strdup((dir() + "t1/").c_str());

    TestDrawer list(3, "skin/own-f.png", "skin/own-n.png");
    KovaniSurface* const before = list.mFocusBg;
    list.refresh();
    EXPECT_EQ(list.mFocusBg, before) << "same theme: nothing reloaded";

    free(gThemePath);
    gThemePath = strdup((dir() + "t2/").c_str());
    list.refresh();
    clear(0, 0, 0);
    list.draw();
    EXPECT_TRUE(sameColor(pixel(15, rowTop(0) + 48), green));
    EXPECT_TRUE(sameColor(pixel(15, rowTop(1) + 48), yellow));
}
