#include "toolkit/list_menu.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "platform/key_shm.h"
#include "tests/support/capture_stdout.h"
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

    // Pushes `key` as a user event and lets the list read it through its
    // eventHandling. SDL may answer one poll empty after a round of events,
    // so the read is retried while the event is still queued.
    int press(ListMenu& list, int key) {
        SDL_Event e = {};
        e.type = SDL_USEREVENT;
        e.user.code = key;
        EXPECT_EQ(SDL_PushEvent(&e), 1) << SDL_GetError();
        int result = KEY_NONE;
        for (int i = 0; i < 3 && SDL_HasEvent(SDL_USEREVENT); i++) result = list.eventHandling();
        EXPECT_FALSE(SDL_HasEvent(SDL_USEREVENT)) << "the list read the key";
        return result;
    }

    TempDeviceRoot mRoot;
};

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    size_t from = 0;
    for (size_t at; (at = text.find('\n', from)) != std::string::npos; from = at + 1)
        out.push_back(text.substr(from, at - from));
    return out;
}

}  // namespace

TEST_F(ListMenuTest, DownWrapsAlwaysUpWrapsOnlyWhenAllowed) {
    const struct {
        int count;
        int from;
        bool wrap;
        int key;
        int to;
        int result;
    } cases[] = {
        {10, 9, true, KEY_DOWN, 0, KEY_DOWN},
        {10, 9, false, KEY_DOWN, 0, KEY_DOWN},
        {10, 4, false, KEY_DOWN, 5, KEY_DOWN},
        {10, 0, true, KEY_UP, 9, KEY_UP},
        {10, 0, false, KEY_UP, 0, WINDOW_HANDLED},
        {10, 4, false, KEY_UP, 3, KEY_UP},
        {1, 0, true, KEY_UP, 0, KEY_UP},
        {0, 0, true, KEY_UP, 0, KEY_UP},
        {0, 0, true, KEY_DOWN, 0, KEY_DOWN},
    };
    for (const auto& c : cases) {
        CountingList list(c.count);
        list.mCurrentPos = c.from;
        list.mWrap = c.wrap;
        EXPECT_EQ(press(list, c.key), c.result) << c.count << " entries, from " << c.from;
        EXPECT_EQ(list.getCurrentPos(), c.to) << c.count << " entries, from " << c.from;
    }
}

TEST_F(ListMenuTest, PagingMovesSixAndStopsAtTheEnds) {
    const struct {
        int count;
        int from;
        bool down;
        int to;
    } cases[] = {
        {40, 4, false, 0}, {40, 10, false, 4}, {40, 0, false, 0},  {40, 36, true, 39},
        {40, 10, true, 16}, {40, 39, true, 39}, {0, 0, true, 0},
    };
    for (const auto& c : cases) {
        CountingList list(c.count);
        list.mCurrentPos = c.from;
        EXPECT_EQ(c.down ? list.pageDown() : list.pageUp(), 0);
        EXPECT_EQ(list.getCurrentPos(), c.to) << "from " << c.from << (c.down ? " down" : " up");
    }
}

TEST_F(ListMenuTest, HeldDownMovesOneElevenTimesThenPagesAndStopsOnTheLast) {
    CountingList list(40);
    const int expected[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 17, 23, 29, 35, 39, 39};
    CaptureStdout capture;
    for (size_t i = 0; i < sizeof expected / sizeof expected[0]; i++) {
        list.mNow += 100;
        EXPECT_EQ(press(list, KEY_DOWN), KEY_DOWN);
        EXPECT_EQ(list.getCurrentPos(), expected[i]) << "press " << i + 1;
    }
    const std::vector<std::string> logged = lines(capture.finish());
    ASSERT_EQ(logged.size(), sizeof expected / sizeof expected[0]);
    for (size_t i = 0; i < logged.size(); i++)
        EXPECT_EQ(logged[i], "pressedForAWhile " + std::to_string(i)) << "press " << i + 1;

    // 199 ms still continues the run; 200 ms starts a new one, whose first
    // press moves one entry (here wrapping from the last).
    list.mNow += 199;
    press(list, KEY_DOWN);
    EXPECT_EQ(list.getCurrentPos(), 39);
    list.mNow += 200;
    press(list, KEY_DOWN);
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
        EXPECT_EQ(press(list, KEY_DOWN), KEY_DOWN);
        EXPECT_EQ(list.getCurrentPos(), 21) << "down before up press " << upPress;
        EXPECT_EQ(list.mKeyHistory.size(), size_t(upPress - 1));
        list.mNow += 50;
        EXPECT_EQ(press(list, KEY_UP), KEY_UP);
        EXPECT_EQ(list.mKeyHistory.size(), size_t(upPress));
        EXPECT_EQ(list.getCurrentPos(), upPress < 11 ? 20 : 15) << "up press " << upPress;
    }
}

TEST_F(ListMenuTest, ConfirmKeyFollowsTheButtonExchange) {
    // The slot is written by another process's handle, as the settings
    // daemon does.
    KeyShmInfo writer;
    ASSERT_EQ(InitKeyShm(&writer), 0);
    const struct {
        int bConfirm;
        int key;
        int result;
        int selected;
    } cases[] = {
        {0, KEY_A, 42, 1},
        {0, KEY_B, KEY_B, 0},
        {1, KEY_A, KEY_A, 0},
        {1, KEY_B, 42, 1},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(SetKeyShm(&writer, MONITOR_B_CONFIRM, c.bConfirm), 0);
        CountingList list(5);
        s_bootFpsTimeout = 0;
        EXPECT_EQ(press(list, c.key), c.result) << "slot " << c.bConfirm << " key " << c.key;
        EXPECT_EQ(list.mSelected, c.selected) << "slot " << c.bConfirm << " key " << c.key;
        EXPECT_EQ(s_bootFpsTimeout, 3000) << "either way the frame rate goes up";
    }
    UninitKeyShm(&writer);
}

TEST_F(ListMenuTest, ListKeysRaiseTheFrameRateOthersPassThrough) {
    const struct {
        int key;
        bool boosts;
        int result;
    } cases[] = {
        {KEY_LEFT, true, KEY_LEFT},
        {KEY_RIGHT, true, KEY_RIGHT},
        {KEY_START, true, KEY_START},
        {KEY_SELECT_COIN, true, KEY_SELECT_COIN},
        {KEY_MENU_KEY, true, KEY_MENU_KEY},
        {EVENT_MARKET_REFRESH, true, EVENT_MARKET_REFRESH},
        {KEY_X, true, 0},
        {KEY_Y, false, KEY_Y},
        {EVENT_CHDIR, false, EVENT_CHDIR},
        {KEY_HOTKEY1, false, KEY_HOTKEY1},
        {KEY_NONE, false, KEY_NONE},
    };
    for (const auto& c : cases) {
        CountingList list(5);
        list.mCurrentPos = 2;
        s_bootFpsTimeout = 0;
        CaptureStdout capture;
        EXPECT_EQ(press(list, c.key), c.result) << "key " << c.key;
        const std::string logged = capture.finish();
        EXPECT_EQ(s_bootFpsTimeout, c.boosts ? 3000 : 0) << "key " << c.key;
        EXPECT_EQ(list.getCurrentPos(), 2) << "key " << c.key;
        EXPECT_EQ(list.mSelected, 0) << "key " << c.key;
        EXPECT_EQ(logged, c.key == KEY_X ? "key_x\n" : "") << "key " << c.key;
    }

    CountingList list(5);
    s_bootFpsTimeout = 0;
    EXPECT_EQ(list.eventHandling(), KEY_NONE) << "nothing pending";
    EXPECT_EQ(s_bootFpsTimeout, 0);
}

TEST_F(ListMenuTest, RestorePosTakesCursorAndRangeEachOnlyWhenInside) {
    const struct {
        int pos, first, last;
        int cursor, firstVisible, lastVisible;
    } cases[] = {
        {3, 2, 7, 3, 1, 2},   // range reaches past the end: kept
        {-1, 0, 4, 1, 0, 4},  // cursor outside: kept
        {5, 0, 4, 1, 0, 4},
        {2, 4, 1, 2, 4, 1},   // no order between them is required
        {0, 3, 3, 0, 3, 3},
        {4, -1, 3, 4, 1, 2},
        {4, 3, 5, 4, 1, 2},
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
