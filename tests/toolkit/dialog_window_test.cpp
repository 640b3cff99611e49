#include "toolkit/dialog_window.h"

#include <SDL2/SDL_ttf.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "platform/key_shm.h"
#include "tests/support/draw_fixture.h"
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
const SDL_Color kMarker = {250, 10, 10, 255};

int sActionRuns = 0;
int sActionsDeleted = 0;
int sCancels = 0;

class CountingAction : public Action {
public:
    explicit CountingAction(int result) : Action(-1), mResult(result) {}
    ~CountingAction() override { sActionsDeleted++; }
    int dowork(void* item) override {
        EXPECT_EQ(item, nullptr);
        sActionRuns++;
        return mResult;
    }
    int mResult;
};

void countCancel() { sCancels++; }

// Queues the key as the only pending event (the offscreen window posts
// window events of its own).
void pushKey(int code) {
    SDL_PumpEvents();
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = code;
    SDL_PushEvent(&e);
}

class DialogTest : public DrawTest {
protected:
    void SetUp() override {
        DrawTest::SetUp();
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        clearQuitRequest();
        sActionRuns = sActionsDeleted = sCancels = 0;
        mStrings = gDefaultStringList.size();
        gPopupFontTitle = font(30);
        gPopupFontTxt = font(28);
        gPopupFontBtn = font(24);
        gPopupColorTitle = {255, 255, 0, 255};
        gPopupColorTxt = {255, 255, 255, 255};
        gPopupColorBtn = {0, 255, 255, 255};
        gHighlightColor = {0, 255, 0, 255};
    }
    void TearDown() override {
        gPopupFontTitle = gPopupFontTxt = gPopupFontBtn = nullptr;
        delete gBackgroundFloat;
        gBackgroundFloat = nullptr;
        gDefaultStringList.resize(mStrings);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        UninitKeyShm(&gShmInfo);
        DrawTest::TearDown();
    }

    void writeSkin() {
        writePng(dir() + "skin/pop-bg.png", 800, 480, kPanel, 4);
        writePng(dir() + "skin/btn-bg-f.png", 200, 60, kButtonFocus, 4);
        writePng(dir() + "skin/btn-bg-n.png", 200, 60, kButtonNormal, 4);
    }
    // A new language string id holding `text`.
    int addString(const std::string& text) {
        gDefaultStringList.push_back(text);
        return (int)gDefaultStringList.size() - 1;
    }
    TempDeviceRoot mRoot;
    size_t mStrings = 0;
};

}  // namespace

// Each case feeds real key events one at a time and records what
// eventHandling returns; the action answers 1003, so its result is seen to
// come back unchanged.
TEST_F(DialogTest, KeysMoveTheFocusAndAnswerThroughTheCallbacks) {
    const int other = -1;
    const struct {
        const char* name;
        int bConfirm;
        bool withAction;
        std::vector<int> keys;
        std::vector<int> returns;
        int actionRuns;
        int cancels;
    } cases[] = {
        {"confirm on OK runs the action", 0, true, {KEY_A}, {WINDOW_QUIT}, 1, 0},
        {"Y is a confirm key", 0, true, {KEY_Y}, {WINDOW_QUIT}, 1, 0},
        {"confirm on Cancel cancels", 0, true, {KEY_LEFT, KEY_A}, {other, WINDOW_CLOSE}, 0, 1},
        {"focus stops at Cancel", 0, true, {KEY_LEFT, KEY_LEFT, KEY_RIGHT, KEY_A},
         {other, other, other, WINDOW_QUIT}, 1, 0},
        {"back key cancels", 0, true, {KEY_B}, {WINDOW_CLOSE}, 0, 1},
        {"exchanged: B confirms", 1, true, {KEY_B}, {WINDOW_QUIT}, 1, 0},
        {"exchanged: A goes back", 1, true, {KEY_A}, {WINDOW_CLOSE}, 0, 1},
        {"OK without an action closes", 0, false, {KEY_A}, {WINDOW_CLOSE}, 0, 0},
        {"other keys do nothing", 0, true, {KEY_UP, KEY_DOWN, KEY_START}, {other, other, other}, 0, 0},
        {"refresh and card events pass through", 0, true,
         {EVENT_REFRESH, EVENT_SDCARD_MOUNTED, EVENT_SDCARD_UMOUNTED},
         {EVENT_REFRESH, EVENT_SDCARD_MOUNTED, EVENT_SDCARD_UMOUNTED}, 0, 0},
    };
    for (const auto& c : cases) {
        SetKeyShm(&gShmInfo, MONITOR_B_CONFIRM, c.bConfirm);
        sActionRuns = sCancels = sActionsDeleted = 0;
        auto* dialog = new DialogWindow(STRING_OK, STRING_CANCEL, false,
                                        c.withAction ? new CountingAction(WINDOW_QUIT) : nullptr,
                                        countCancel);
        EXPECT_EQ(dialog->focus(), 1) << c.name;
        std::vector<int> returns;
        for (int key : c.keys) {
            pushKey(key);
            returns.push_back(dialog->eventHandling());
        }
        EXPECT_EQ(returns, c.returns) << c.name;
        EXPECT_EQ(sActionRuns, c.actionRuns) << c.name;
        EXPECT_EQ(sCancels, c.cancels) << c.name;
        delete dialog;
        EXPECT_EQ(sActionsDeleted, c.withAction ? 1 : 0) << c.name << ": the dialog owns its action";
    }

    // No cancel function: cancelling still closes.
    DialogWindow bare(-1, -1, false, nullptr, nullptr);
    pushKey(KEY_B);
    EXPECT_EQ(bare.eventHandling(), WINDOW_CLOSE);
}

TEST_F(DialogTest, DrawsThePanelOverTheDimmedSnapshot) {
    writeSkin();
    writePng(dir() + "skin/mask.png", 1280, 720, SDL_Color{0, 0, 0, 128}, 4);
    gBackgroundFloat = LoadKovaniSurface(nullptr, "./", "skin/mask.png");
    ASSERT_NE(gBackgroundFloat, nullptr);

    clear(kUnder.r, kUnder.g, kUnder.b);
    SDL_Rect marker = {0, 0, 60, 40};
    FillRect(nullptr, &marker, kMarker.r, kMarker.g, kMarker.b, 255);
    const int title = addString("Quit?");
    const int message = addString("Leave the player now");
    DialogWindow dialog(title, message, false, nullptr, nullptr);
    dialog.init();
    dialog.init();  // the first picture is kept
    clear(0, 0, 0);
    ASSERT_EQ(dialog.draw(), 0);

    // The snapshot under the half-transparent mask.
    auto near = [](SDL_Color got, SDL_Color want) {
        return abs(got.r - want.r / 2) <= 2 && abs(got.g - want.g / 2) <= 2 &&
               abs(got.b - want.b / 2) <= 2;
    };
    EXPECT_TRUE(near(pixel(5, 5), kMarker));
    EXPECT_TRUE(near(pixel(100, 5), kUnder));

    // Panel centred (800 x 480 at 240, 120) with the texts on it.
    EXPECT_TRUE(sameColor(pixel(245, 125), kPanel));
    EXPECT_GT(inkBounds(kPanel, {240, 200, 800, 206}).w, 0) << "title and message";

    // Cancel at (340, 510), OK 300 further right and focused.
    EXPECT_TRUE(sameColor(pixel(342, 512), kButtonNormal));
    EXPECT_TRUE(sameColor(pixel(642, 512), kButtonFocus));

    pushKey(KEY_LEFT);
    dialog.eventHandling();
    dialog.draw();
    EXPECT_TRUE(sameColor(pixel(342, 512), kButtonFocus));
    EXPECT_TRUE(sameColor(pixel(642, 512), kButtonNormal));
}

// 100 px of message area shared by the lines, but never less than the font
// height + 5 per line; empty lines vanish.
// Without skin images the texts span the screen and the buttons keep their
// fallback place; the focused label takes the highlight colour instead.
