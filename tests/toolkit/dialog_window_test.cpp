#include "toolkit/dialog_window.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <vector>

#include "platform/key_shm.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "toolkit/lang.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"
#include "toolkit/system_state.h"

namespace {

const SDL_Color kPanel = {40, 60, 90, 255};
const SDL_Color kButtonFocus = {230, 150, 20, 255};
const SDL_Color kButtonNormal = {90, 90, 90, 255};
const SDL_Color kUnder = {10, 120, 200, 255};

int sActionRuns = 0;
int sActionsDeleted = 0;
int sCancels = 0;

class CountingAction : public Action {
public:
    CountingAction() : Action(-1) {}
    ~CountingAction() override { sActionsDeleted++; }
    int dowork(void* item) override {
        EXPECT_EQ(item, nullptr);
        sActionRuns++;
        return WINDOW_QUIT;
    }
};

void countCancel() { sCancels++; }

// Queues the key as the only pending event (the offscreen window posts
// window events of its own) and lets the dialog take it.
int press(DialogWindow& dialog, int code) {
    SDL_PumpEvents();
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = code;
    SDL_PushEvent(&e);
    return dialog.eventHandling();
}

class DialogTest : public DrawTest {
protected:
    void SetUp() override {
        DrawTest::SetUp();
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        clearQuitRequest();
        gPopupFontTitle = font(30);
        gPopupFontTxt = font(28);
        gPopupFontBtn = font(24);
        gPopupColorTitle = gPopupColorTxt = gPopupColorBtn = {255, 255, 255, 255};
    }
    void TearDown() override {
        gPopupFontTitle = gPopupFontTxt = gPopupFontBtn = nullptr;
        delete gBackgroundFloat;
        gBackgroundFloat = nullptr;
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        UninitKeyShm(&gShmInfo);
        DrawTest::TearDown();
    }
    TempDeviceRoot mRoot;
};

}  // namespace

// Each case feeds real key events one at a time and records what
// eventHandling returns; the action's own code comes back unchanged.
TEST_F(DialogTest, KeysMoveTheFocusAndAnswerThroughTheCallbacks) {
    const int other = -1;
    const struct {
        const char* name;
        int bConfirm;
        bool withAction;
        std::vector<int> keys, returns;
        int actionRuns, cancels;
    } cases[] = {
        {"confirm on OK runs the action", 0, true, {KEY_A}, {WINDOW_QUIT}, 1, 0},
        {"confirm on Cancel cancels", 0, true, {KEY_LEFT, KEY_A}, {other, WINDOW_CLOSE}, 0, 1},
        {"focus stops at Cancel", 0, true, {KEY_LEFT, KEY_LEFT, KEY_RIGHT, KEY_Y},
         {other, other, other, WINDOW_QUIT}, 1, 0},
        {"back key cancels", 0, true, {KEY_B}, {WINDOW_CLOSE}, 0, 1},
        {"exchanged: B confirms", 1, true, {KEY_B}, {WINDOW_QUIT}, 1, 0},
        {"exchanged: A goes back", 1, true, {KEY_A}, {WINDOW_CLOSE}, 0, 1},
        {"OK without an action closes", 0, false, {KEY_A}, {WINDOW_CLOSE}, 0, 0},
        {"other keys do nothing, refresh and card events pass through", 0, true,
         {KEY_UP, KEY_START, EVENT_REFRESH, EVENT_SDCARD_MOUNTED},
         {other, other, EVENT_REFRESH, EVENT_SDCARD_MOUNTED}, 0, 0},
    };
    for (const auto& c : cases) {
        SetKeyShm(&gShmInfo, MONITOR_B_CONFIRM, c.bConfirm);
        sActionRuns = sCancels = sActionsDeleted = 0;
        auto* dialog = new DialogWindow(STRING_OK, STRING_CANCEL, false, c.withAction ? new CountingAction : nullptr,
                                        countCancel);
        std::vector<int> returns;
        for (int key : c.keys) returns.push_back(press(*dialog, key));
        EXPECT_EQ(returns, c.returns) << c.name;
        EXPECT_EQ(sActionRuns, c.actionRuns) << c.name;
        EXPECT_EQ(sCancels, c.cancels) << c.name;
        delete dialog;
        EXPECT_EQ(sActionsDeleted, c.withAction ? 1 : 0) << c.name << ": the dialog owns its action";
    }

    DialogWindow bare(-1, -1, false, nullptr, nullptr);
    EXPECT_EQ(press(bare, KEY_B), WINDOW_CLOSE) << "no cancel function: cancelling still closes";
}

TEST_F(DialogTest, DrawsThePanelOverTheDimmedSnapshot) {
    writePng(dir() + "skin/pop-bg.png", 800, 480, kPanel, 4);
    writePng(dir() + "skin/btn-bg-f.png", 200, 60, kButtonFocus, 4);
    writePng(dir() + "skin/btn-bg-n.png", 200, 60, kButtonNormal, 4);
    writePng(dir() + "skin/mask.png", 1280, 720, SDL_Color{0, 0, 0, 128}, 4);
    gBackgroundFloat = LoadKovaniSurface(nullptr, "./", "skin/mask.png");
    ASSERT_NE(gBackgroundFloat, nullptr);

    clear(kUnder.r, kUnder.g, kUnder.b);
    DialogWindow dialog(STRING_OK, STRING_CANCEL, false, nullptr, nullptr);
    dialog.init();
    clear(0, 0, 0);
    dialog.init();  // the first picture is kept
    ASSERT_EQ(dialog.draw(), 0);

    const SDL_Color dimmed = pixel(5, 5);
    EXPECT_TRUE(abs(dimmed.r - kUnder.r / 2) <= 2 && abs(dimmed.g - kUnder.g / 2) <= 2 &&
                abs(dimmed.b - kUnder.b / 2) <= 2)
        << "the snapshot under the half-transparent mask";
    // Panel centred (800 x 480 at 240, 120) with the texts on it.
    EXPECT_TRUE(sameColor(pixel(245, 125), kPanel));
    EXPECT_GT(inkBounds(kPanel, {240, 200, 800, 206}).w, 0) << "title and message";
    // Cancel at (340, 510), OK 300 further right and focused.
    EXPECT_TRUE(sameColor(pixel(342, 512), kButtonNormal));
    EXPECT_TRUE(sameColor(pixel(642, 512), kButtonFocus));

    press(dialog, KEY_LEFT);
    dialog.draw();
    EXPECT_TRUE(sameColor(pixel(342, 512), kButtonFocus));
    EXPECT_TRUE(sameColor(pixel(642, 512), kButtonNormal));
}
