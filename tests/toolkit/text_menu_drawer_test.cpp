#include "toolkit/text_menu_drawer.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support/sdl_screen.h"
#include "tests/support/sdl_events.h"
#include "tests/support/temp_dir.h"
#include "toolkit/keycodes.h"
#include "toolkit/lang.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"
#include "toolkit/text.h"
#include "toolkit/text_menu_item.h"

namespace {

const SDL_Color sWhite = {255, 255, 255, 255};
const SDL_Color sSeqColor = {200, 200, 255, 255};
const SDL_Color sFocusColor = {200, 40, 40, 255};
const SDL_Color sNormalColor = {30, 30, 120, 255};
const int kRowHeight = 96;  // 6 rows, no space
const int kListTop = 80;

int rowMiddle(int row) { return kListTop + kRowHeight * row + kRowHeight / 2; }

// A drawer over a map of entries (owned; missing indexes are null entries)
// whose hold-detection clock moves mStep per reading: by default a pause, so
// every press moves one.
class TestDrawer : public TextMenuDrawer {
public:
    TestDrawer(int count, const char* focusBg = nullptr, const char* normalBg = nullptr)
        : TextMenuDrawer(focusBg, normalBg, 6, 0), mCount(count) {}
    ~TestDrawer() override {
        for (auto& entry : mItems) delete entry.second;
    }
    void* getItemByIndex(int index) override {
        auto at = mItems.find(index);
        return at == mItems.end() ? nullptr : at->second;
    }
    int getListNum() override { return mCount; }
    TextMenuItem* put(int index, TextMenuItem* item) { return mItems[index] = item; }

    int mCount;
    std::map<int, TextMenuItem*> mItems;
    uint64_t mNow = 1000000;
    int mStep = 1000;

protected:
    uint64_t nowMs() override { return mNow += mStep; }
};

class RecordingAction : public Action {
public:
    RecordingAction(int result, int result2) : Action(-1), mResult(result), mResult2(result2) {}
    int dowork(void* item) override {
        mItems.push_back(item);
        return mResult;
    }
    int dowork2(void* item) override {
        mItems.push_back(item);
        return mResult2;
    }
    int mResult, mResult2;
    std::vector<void*> mItems;
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
        gListColorTxt = gListColorSubtxt = gStatColorTxt = sWhite;
        gListColorSeq = sSeqColor;
        writePng(dir() + "skin/focus.png", 600, kRowHeight, sFocusColor, 4);
        writePng(dir() + "skin/normal.png", 600, kRowHeight, sNormalColor, 4);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
    void TearDown() override {
        gTextSurfaceCache.clear();
        for (TTF_Font** f : {&gListFontTxt, &gListFontSubtxt, &gStatFont}) {
            if (*f) TTF_CloseFont(*f);
            *f = nullptr;
        }
        DrawTest::TearDown();
    }

    std::vector<Uint32> grab(SDL_Rect area) {
        std::vector<Uint32> px(size_t(area.w) * area.h);
        SDL_RenderReadPixels(gRenderer, &area, SDL_PIXELFORMAT_ARGB8888, px.data(), area.w * 4);
        return px;
    }

    TempDeviceRoot mRoot;  // input markers of wait_event
};

}  // namespace

TEST_F(DrawerTest, CursorRowCarriesTheFocusBackgroundAsTheRangeFollows) {
    TestDrawer list(20, "skin/focus.png", "skin/normal.png");
    for (int i = 0; i < 20; i++)
        list.put(i, new TextMenuItem(("Entry " + std::to_string(i)).c_str(), nullptr, nullptr, false));
    const struct { int key, times, cursor, first; } steps[] = {
        {KEY_NONE, 0, 0, 0},
        {KEY_DOWN, 5, 5, 0},
        {KEY_DOWN, 1, 6, 1},   // cursor on the bottom row
        {KEY_UP, 1, 5, 1},
        {KEY_UP, 5, 0, 0},     // cursor on the top row
        {KEY_UP, 1, 19, 14},   // wrap to the end
        {KEY_DOWN, 1, 0, 0},   // and back to the start
    };
    for (const auto& step : steps) {
        for (int i = 0; i < step.times; i++) pressKey(list, step.key);
        clear(0, 0, 0);
        list.draw();
        EXPECT_EQ(list.mCurrentPos, step.cursor);
        EXPECT_EQ(list.mFirstVisible, step.first) << "cursor " << step.cursor;
        for (int row = 0; row < 6; row++) {
            const bool focused = step.first + row == step.cursor;
            EXPECT_TRUE(sameColor(pixel(15, rowMiddle(row)), focused ? sFocusColor : sNormalColor))
                << "cursor " << step.cursor << ", screen row " << row;
        }
    }
    list.mShowFocus = false;
    clear(0, 0, 0);
    list.draw();
    EXPECT_TRUE(sameColor(pixel(15, rowMiddle(0)), sNormalColor)) << "no focus shown";
}

TEST_F(DrawerTest, RowNumbersAreFourDigitsUpToFourNinesAndMissingEntriesShowLoading) {
    TestDrawer list(10010);
    const SDL_Rect numberBox = {28, kListTop + 5, 60, kRowHeight - 5};
    const SDL_Rect textBox = {95, kListTop + (kRowHeight - TTF_FontHeight(gListFontTxt)) / 2 - 2, 1160, kRowHeight};
    const SDL_Rect firstRow = {0, kListTop, 1280, kRowHeight};
    const struct { int index; const char* number; } cases[] = {{0, "0001"}, {9998, "9999"}, {10005, "9999"}};
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
    const struct { const char* name; bool hasEntry, hasAction; int result, result2, chosen, chosen2; } cases[] = {
        {"action succeeds", true, true, 5, 8, 5, 8},
        {"action fails", true, true, -7, -3, -1, -1},
        {"entry without action", true, false, 0, 0, -1, -1},
        {"no entry", false, false, 0, 0, -1, -1},
    };
    for (const auto& c : cases) {
        TestDrawer list(3);
        list.mCurrentPos = 1;
        RecordingAction* action = c.hasAction ? new RecordingAction(c.result, c.result2) : nullptr;
        TextMenuItem* item = c.hasEntry ? list.put(1, new TextMenuItem("Pick", nullptr, action, true)) : nullptr;
        EXPECT_EQ(pressKey(list, KEY_A), c.chosen) << c.name;
        EXPECT_EQ(pressKey(list, KEY_X), c.chosen2) << c.name;
        if (action) {
            EXPECT_EQ(action->mItems, (std::vector<void*>{item, item})) << c.name << ": the action gets its entry";
        }
    }
}

TEST_F(DrawerTest, HeldDownMovesOneElevenTimesThenPagesAndStopsOnTheLast) {
    TestDrawer list(40);
    list.mStep = 0;
    const int expected[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 17, 23, 29, 35, 39, 39};
    for (size_t i = 0; i < sizeof expected / sizeof expected[0]; i++) {
        list.mNow += 100;
        EXPECT_EQ(pressKey(list, KEY_DOWN), KEY_DOWN);
        EXPECT_EQ(list.getCurrentPos(), expected[i]) << "press " << i + 1;
    }
    // 199 ms still continues the run; 200 ms starts a new one, whose first
    // press moves one entry (here wrapping from the last).
    list.mNow += 199;
    pressKey(list, KEY_DOWN);
    EXPECT_EQ(list.getCurrentPos(), 39);
    list.mNow += 200;
    pressKey(list, KEY_DOWN);
    EXPECT_EQ(list.getCurrentPos(), 0);

    // After a pause, down and up alternate every 50 ms: down only starts the
    // clock, up starts the run and only up, the run's key, extends it.
    list.mNow += 1000;
    list.mCurrentPos = 20;
    for (int upPress = 1; upPress <= 11; upPress++) {
        list.mNow += 50;
        pressKey(list, KEY_DOWN);
        EXPECT_EQ(list.getCurrentPos(), 21) << "down before up press " << upPress;
        list.mNow += 50;
        pressKey(list, KEY_UP);
        EXPECT_EQ(list.getCurrentPos(), upPress < 11 ? 20 : 15) << "up press " << upPress;
    }
}
