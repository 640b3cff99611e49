#include "toolkit/text_menu_drawer.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// Six rows over `count` entries; its clock moves mStep a reading (by default
// a second: no key is held).
class TestDrawer : public TextMenuDrawer {
public:
    explicit TestDrawer(int count) : TextMenuDrawer(nullptr, nullptr, 6, 0) {
        for (int i = 0; i < count; i++)
            mItems.emplace_back(new TextMenuItem(("Entry " + std::to_string(i)).c_str(), nullptr, nullptr, false));
    }
    void* getItemByIndex(int index) override { return mItems[index].get(); }
    int getListNum() override { return (int)mItems.size(); }

    std::vector<std::unique_ptr<TextMenuItem>> mItems;
    uint64_t mNow = 1000000, mStep = 1000;

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

// Presses of one key at a steady pace: the cursor after each, always among
// the six rows drawn. A key repeated less than 200 ms apart is held; from
// the twelfth press of such a run it pages six entries, stopping at the ends.
TEST_F(DrawerTest, NavigationTable) {
    const struct {
        const char* name;
        int count, cursor, key, gapMs;
        bool wrap;
        std::vector<int> after;
    } rows[] = {
        {"held down", 40, 0, KEY_DOWN, 100, true, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 17, 23, 29, 35, 39, 39}},
        {"held up", 40, 39, KEY_UP, 100, true, {38, 37, 36, 35, 34, 33, 32, 31, 30, 29, 28, 22, 16, 10, 4, 0, 0}},
        {"199 ms apart is held", 40, 0, KEY_DOWN, 199, true, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 17}},
        {"200 ms apart is not", 40, 0, KEY_DOWN, 200, true, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {"down past the end wraps", 10, 8, KEY_DOWN, 1000, true, {9, 0, 1}},
        {"up past the start wraps", 10, 1, KEY_UP, 1000, true, {0, 9, 8}},
        {"up stops without wrap", 10, 1, KEY_UP, 1000, false, {0, 0}},
        {"sideways moves nothing", 10, 3, KEY_RIGHT, 100, true, {3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3}},
    };
    for (const auto& row : rows) {
        TestDrawer list(row.count);
        list.mWrap = row.wrap;
        list.mCurrentPos = row.cursor;
        list.mStep = row.gapMs;
        std::vector<int> after;
        for (size_t i = 0; i < row.after.size(); i++) {
            const int result = pressKey(list, row.key);
            after.push_back(list.mCurrentPos);
            list.draw();
            EXPECT_TRUE(list.mFirstVisible <= list.mCurrentPos && list.mCurrentPos <= list.mLastVisible &&
                        list.mLastVisible - list.mFirstVisible == std::min(row.count, 6) - 1)
                << row.name << ": " << list.mFirstVisible << ".." << list.mLastVisible;
            if (!row.wrap && i > 0) {
                EXPECT_EQ(result, WINDOW_HANDLED) << row.name;
            }
        }
        EXPECT_EQ(after, row.after) << row.name;
    }
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

// The page counter at the bottom right: the cursor's entry, of how many.
TEST_F(DrawerTest, ThePageCounterShowsTheCursorsEntryOfHowMany) {
    const SDL_Rect counter = {640, 660, 640, 60};
    for (int cursor : {0, 8, 19}) {
        TestDrawer list(20);
        list.mCurrentPos = cursor;
        clear(0, 0, 0);
        list.draw();
        const std::vector<Uint32> drawn = pixels(counter);
        clear(0, 0, 0);
        SDL_Rect box = {640, 671, 616, TTF_FontHeight(gStatFont)};
        box.x -= DrawString(gStatFont, box, "20", sWhite, ALIGN_TOP_RIGHT);
        DrawString(gStatFont, box, (std::to_string(cursor + 1) + "/").c_str(), sWhite, ALIGN_TOP_RIGHT);
        EXPECT_TRUE(pixels(counter) == drawn) << cursor + 1 << "/20";
    }
}
