#include "toolkit/list_menu.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "platform/key_shm.h"
#include "tests/support/sdl_events.h"
#include "tests/support/temp_dir.h"
#include "toolkit/keycodes.h"
#include "toolkit/system_state.h"
#include "toolkit/window.h"

namespace {

// A list of `count` entries that counts its activations and whose clock the
// test sets.
class CountingList : public ListMenu {
public:
    explicit CountingList(int count) : mCount(count) {}
    int select() override {
        mSelected++;
        return 42;
    }
    void* getItemByIndex(int) override { return nullptr; }
    void draw() override {}
    int getListNum() override { return mCount; }

    int mCount;
    int mSelected = 0;
    uint64_t mNow = 1000000;

protected:
    uint64_t nowMs() override { return mNow; }
};

// Real SDL events and key shared memory, with every device path in a
// temporary folder.
class ListMenuTest : public ::testing::Test {
protected:
    void SetUp() override {
        setenv("SDL_VIDEODRIVER", "offscreen", 1);
        ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO | SDL_INIT_EVENTS), 0) << SDL_GetError();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        ASSERT_EQ(SetKeyShm(&gShmInfo, MONITOR_B_CONFIRM, 0), 0);
        s_bootFpsTimeout = 0;
    }
    void TearDown() override {
        UninitKeyShm(&gShmInfo);
        SDL_Quit();
    }

    TempDeviceRoot mRoot;
};

}  // namespace

TEST_F(ListMenuTest, DownWrapsAlwaysUpWrapsOnlyWhenAllowed) {
    const struct { int count, from; bool wrap; int key, to, result; } cases[] = {
        {10, 9, false, KEY_DOWN, 0, KEY_DOWN},
        {10, 0, true, KEY_UP, 9, KEY_UP},
        {10, 0, false, KEY_UP, 0, WINDOW_HANDLED},
        {1, 0, true, KEY_UP, 0, KEY_UP},
        {0, 0, true, KEY_DOWN, 0, KEY_DOWN},
    };
    for (const auto& c : cases) {
        CountingList list(c.count);
        list.mCurrentPos = c.from;
        list.mWrap = c.wrap;
        EXPECT_EQ(pressKey(list, c.key), c.result) << c.count << " entries, from " << c.from;
        EXPECT_EQ(list.getCurrentPos(), c.to) << c.count << " entries, from " << c.from;
    }
}

TEST_F(ListMenuTest, HeldDownMovesOneElevenTimesThenPagesAndStopsOnTheLast) {
    CountingList list(40);
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
    EXPECT_TRUE(list.mKeyHistory.empty());
}

TEST_F(ListMenuTest, OnlyTheKeyThatStartedTheRunExtendsIt) {
    // Down and up alternate every 50 ms after a pause: down only starts the
    // clock, up starts the run and every later up (100 ms on) extends it;
    // down, inside the gap and not the run's key, changes nothing.
    CountingList list(40);
    list.mCurrentPos = 20;
    for (int upPress = 1; upPress <= 11; upPress++) {
        list.mNow += 50;
        EXPECT_EQ(pressKey(list, KEY_DOWN), KEY_DOWN);
        EXPECT_EQ(list.getCurrentPos(), 21) << "down before up press " << upPress;
        EXPECT_EQ(list.mKeyHistory.size(), size_t(upPress - 1));
        list.mNow += 50;
        EXPECT_EQ(pressKey(list, KEY_UP), KEY_UP);
        EXPECT_EQ(list.mKeyHistory.size(), size_t(upPress));
        EXPECT_EQ(list.getCurrentPos(), upPress < 11 ? 20 : 15) << "up press " << upPress;
    }
}

TEST_F(ListMenuTest, RestorePosTakesCursorAndRangeEachOnlyWhenInside) {
    const struct { int pos, first, last; int cursor, firstVisible, lastVisible; } cases[] = {
        {3, 2, 7, 3, 1, 2},   // range reaches past the end: kept
        {-1, 0, 4, 1, 0, 4},  // cursor outside: kept
        {2, 4, 1, 2, 4, 1},   // no order between them is required
        {4, -1, 3, 4, 1, 2},
    };
    for (const auto& c : cases) {
        CountingList list(5);
        list.mCurrentPos = 1;
        list.mFirstVisible = 1;
        list.mLastVisible = 2;
        list.restorePos(c.pos, c.first, c.last);
        EXPECT_EQ(list.mCurrentPos, c.cursor) << c.pos << " " << c.first << " " << c.last;
        EXPECT_EQ(list.mFirstVisible, c.firstVisible) << c.pos << " " << c.first << " " << c.last;
        EXPECT_EQ(list.mLastVisible, c.lastVisible) << c.pos << " " << c.first << " " << c.last;
    }
}
