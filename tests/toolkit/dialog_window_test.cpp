#include "toolkit/dialog_window.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/sdl_events.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/system_state.h"

namespace {

int sCancels = 0;
void countCancel() { sCancels++; }

class CountingAction : public Action {
public:
    explicit CountingAction(int* runs) : Action(-1), mRuns(runs) {}
    int dowork(void*) override {
        ++*mRuns;
        return WINDOW_QUIT;
    }
    int* mRuns;  // not owned
};

class DialogTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
    void TearDown() override {
        UninitKeyShm(&gShmInfo);
        SdlScreenTest::TearDown();
    }
    TempDeviceRoot mRoot;  // key shared memory and input markers
};

}  // namespace

// OK is focused first; LEFT and RIGHT move between the two buttons without
// wrapping; confirm (A, or B when swapped) and Y answer with the focused
// button, back and X cancel; other keys leave the dialog as it is.
TEST_F(DialogTest, KeysTable) {
    const struct {
        bool swapped, withAction;
        std::vector<int> keys;
        int focus, result, actions, cancels;
    } rows[] = {
        {false, true, {KEY_A}, 1, WINDOW_QUIT, 1, 0},
        {false, true, {KEY_Y}, 1, WINDOW_QUIT, 1, 0},
        {false, true, {KEY_LEFT}, 0, -1, 0, 0},
        {false, true, {KEY_LEFT, KEY_A}, 0, WINDOW_CLOSE, 0, 1},
        {false, true, {KEY_LEFT, KEY_LEFT, KEY_RIGHT}, 1, -1, 0, 0},
        {false, true, {KEY_RIGHT, KEY_RIGHT}, 1, -1, 0, 0},
        {false, true, {KEY_UP, KEY_DOWN, KEY_START}, 1, -1, 0, 0},
        {false, true, {KEY_B}, 1, WINDOW_CLOSE, 0, 1},
        {false, true, {KEY_X}, 1, WINDOW_CLOSE, 0, 1},
        {false, true, {EVENT_REFRESH}, 1, EVENT_REFRESH, 0, 0},
        {false, false, {KEY_A}, 1, WINDOW_CLOSE, 0, 0},
        {true, true, {KEY_B}, 1, WINDOW_QUIT, 1, 0},
        {true, true, {KEY_A}, 1, WINDOW_CLOSE, 0, 1},
    };
    for (const auto& row : rows) {
        SetKeyShm(&gShmInfo, MONITOR_B_CONFIRM, row.swapped);
        int actions = 0;
        sCancels = 0;
        DialogWindow dialog(0, 1, false, row.withAction ? new CountingAction(&actions) : nullptr, countCancel);
        int result = 0;
        for (int key : row.keys) result = pressKey(dialog, key);
        const std::string name = std::to_string(row.keys.size()) + " keys from " + std::to_string(row.keys[0]) +
                                 (row.swapped ? ", swapped" : "");
        EXPECT_EQ(dialog.focus(), row.focus) << name;
        EXPECT_EQ(result, row.result) << name;
        EXPECT_EQ(actions, row.actions) << name;
        EXPECT_EQ(sCancels, row.cancels) << name;
    }
}
