#include "toolkit/text_menu_drawer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/sdl_screen.h"
#include "tests/support/sdl_events.h"
#include "tests/support/temp_dir.h"
#include "toolkit/shared_skin.h"
#include "toolkit/text.h"
#include "toolkit/text_menu_item.h"

namespace {

const SDL_Color sWhite = {255, 255, 255, 255};
const SDL_Color sFocusColor = {200, 40, 40, 255};
const SDL_Color sNormalColor = {30, 30, 120, 255};
const int kRowHeight = 96;  // 6 rows, no space
const int kListTop = 80;

int rowMiddle(int row) { return kListTop + kRowHeight * row + kRowHeight / 2; }

// Six rows over `count` entries; its clock moves mStep a reading (at first a
// second: no held keys).
class TestDrawer : public TextMenuDrawer {
public:
    explicit TestDrawer(int count) : TextMenuDrawer("skin/focus.png", "skin/normal.png", 6, 0) {
        for (int i = 0; i < count; i++)
            mItems.emplace_back(new TextMenuItem(("Entry " + std::to_string(i)).c_str(), nullptr, nullptr, false));
    }
    void* getItemByIndex(int index) override { return mItems[index].get(); }
    int getListNum() override { return (int)mItems.size(); }

    std::vector<std::unique_ptr<TextMenuItem>> mItems;
    uint64_t mNow = 1000000;
    uint64_t mStep = 1000;  // between two readings: the time between two keys

protected:
    uint64_t nowMs() override { return mNow += mStep; }
};

class DrawerTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        gListFontTxt = font(36);
        gListFontSubtxt = gStatFont = font(24);
        gListColorTxt = gListColorSubtxt = gStatColorTxt = gListColorSeq = sWhite;
        writePng(dir() + "skin/focus.png", 600, kRowHeight, sFocusColor, 4);
        writePng(dir() + "skin/normal.png", 600, kRowHeight, sNormalColor, 4);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
    void TearDown() override {
        gTextSurfaceCache.clear();
        gListFontTxt = gListFontSubtxt = gStatFont = nullptr;
        SdlScreenTest::TearDown();
    }

    TempDeviceRoot mRoot;  // input markers of wait_event
};

}  // namespace

TEST_F(DrawerTest, CursorRowCarriesTheFocusBackgroundAsTheRangeFollows) {
    TestDrawer list(20);
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


// A held direction pages from the twelfth press of its run; a key that is
// not part of that run moves one entry.
TEST_F(DrawerTest, OnlyTheRunOfTheKeyPressedPages) {
    TestDrawer list(40);
    list.restorePos(20, 15, 20);
    const struct { int key, gapMs, times, cursor; } presses[] = {
        {KEY_UP, 100, 11, 9},   // one entry each
        {KEY_UP, 100, 1, 3},    // the twelfth press pages
        {KEY_DOWN, 50, 1, 4},   // a tap of the other direction right after
        {KEY_DOWN, 100, 1, 5},
    };
    for (const auto& p : presses) {
        list.mStep = p.gapMs;
        for (int i = 0; i < p.times; i++) pressKey(list, p.key);
        EXPECT_EQ(list.mCurrentPos, p.cursor) << "key " << p.key << " after " << p.gapMs << " ms";
    }
}
