#include "toolkit/setting_menu.h"

#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "tests/support/draw_fixture.h"
#include "tests/support/sdl_events.h"
#include "tests/support/temp_dir.h"
#include "toolkit/keycodes.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"
#include "toolkit/system_state.h"
#include "toolkit/text.h"

namespace {

const SDL_Color kBlack = {0, 0, 0, 255};
const SDL_Color kWhite = {255, 255, 255, 255};
const SDL_Color kSel = {200, 40, 40, 255};
const SDL_Color kNormal = {30, 30, 120, 255};
const SDL_Color kTextField = {0, 120, 0, 255};
const SDL_Color kLeftF = {250, 200, 0, 255};
const SDL_Color kLeftN = {120, 100, 0, 255};
const SDL_Color kRightF = {0, 200, 250, 255};
const SDL_Color kRightN = {0, 100, 120, 255};
const int kTop = 80;
const int kRow = 96;
const int kBgHeight = 80;  // row backgrounds are centred: 8 pixels above and below

int rowTop(int screenRow) { return kTop + kRow * screenRow; }
int rowMiddle(int screenRow) { return rowTop(screenRow) + kRow / 2; }

// Everything that happens to the handlers and actions, in order.
std::vector<std::string> sEvents;

class CountingHandler : public ValueHandler {
public:
    explicit CountingHandler(const char* name, const char* shown = "Wide")
        : mName(name), mShown(shown) {}
    ~CountingHandler() override { sEvents.push_back(mName + " deleted"); }
    int changeValue(int key) override {
        (key == KEY_LEFT ? mLefts : mRights)++;
        return 0;
    }
    int saveValue() override {
        sEvents.push_back(mName + " saved");
        return 0;
    }
    const char* getShowValue() override { return mShown.c_str(); }

    std::string mName;
    std::string mShown;
    int mLefts = 0;
    int mRights = 0;
};

class RecordingAction : public Action {
public:
    RecordingAction(const char* name, int result) : Action(-1), mName(name), mResult(result) {}
    ~RecordingAction() override { sEvents.push_back(mName + " deleted"); }
    int dowork(void* item) override {
        mRuns++;
        mItem = item;
        return mResult;
    }
    std::string mName;
    int mResult;
    int mRuns = 0;
    void* mItem = nullptr;
};

class SettingMenuTest : public DrawTest {
protected:
    void SetUp() override {
        DrawTest::SetUp();
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        gListFontTxt = font(36);
        ASSERT_TRUE(gListFontTxt) << TTF_GetError();
        gListColorTxt = kWhite;
        sEvents.clear();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        clear(0, 0, 0);
    }
    void TearDown() override {
        gTextSurfaceCache.clear();
        gListFontTxt = nullptr;
        for (KovaniSurface* image : mImages) delete image;
        UninitKeyShm(&gShmInfo);
        DrawTest::TearDown();
    }

    // A w x h skin image of one colour, owned by the fixture.
    KovaniSurface* skin(const char* name, int w, int h, SDL_Color color) {
        writePng(dir() + name, w, h, color, 4);
        KovaniSurface* image = LoadKovaniSurface(dir().c_str(), "./", name);
        EXPECT_TRUE(image) << name;
        mImages.push_back(image);
        return image;
    }
    void rowSkins() {
        mSel = skin("sel.png", 1260, kBgHeight, kSel);
        mNormal = skin("normal.png", 1260, kBgHeight, kNormal);
    }

    TempDeviceRoot mRoot;  // key shared memory and input markers
    std::vector<KovaniSurface*> mImages;
    KovaniSurface* mSel = nullptr;
    KovaniSurface* mNormal = nullptr;
};

TEST_F(SettingMenuTest, CursorRowIsFocusedAndSixOfEightRowsFollowTheCursor) {
    rowSkins();
    SettingMenu menu;
    for (int i = 0; i < 8; i++) menu.insertSettingItem(new SettingItem(mSel, mNormal, -1, nullptr, nullptr));
    const struct { int key, times, cursor, first, last; } steps[] = {
        {KEY_NONE, 0, 0, 0, 5},  // a fresh menu shows rows 0-5
        {KEY_UP, 1, 7, 2, 7},    // wraps to the last row
        {KEY_DOWN, 1, 0, 0, 5},  // and back to the first
        {KEY_DOWN, 5, 5, 0, 5},
        {KEY_DOWN, 1, 6, 1, 6},
        {KEY_DOWN, 1, 7, 2, 7},
        {KEY_UP, 5, 2, 2, 7},
        {KEY_UP, 1, 1, 1, 6},
    };
    for (const auto& step : steps) {
        for (int i = 0; i < step.times; i++) EXPECT_EQ(pressKey(menu, step.key), -1);
        clear(0, 0, 0);
        menu.draw();
        ASSERT_EQ(menu.mCurrentPos, step.cursor);
        EXPECT_EQ(menu.mFirstVisible, step.first) << "cursor " << step.cursor;
        EXPECT_EQ(menu.mLastVisible, step.last) << "cursor " << step.cursor;
        for (int row = 0; row < 6; row++) {
            const SDL_Color want = step.first + row == step.cursor ? kSel : kNormal;
            EXPECT_TRUE(sameColor(pixel(20, rowMiddle(row)), want)) << "cursor " << step.cursor << ", row " << row;
        }
        EXPECT_EQ(inkBounds(kBlack, {0, rowTop(6), 1280, 720 - rowTop(6)}).w, 0) << "only six rows";
    }
}

TEST_F(SettingMenuTest, ValueRowShowsFocusedArrowsAndFieldOnlyOnTheCursorRow) {
    rowSkins();
    KovaniSurface* field = skin("field.png", 500, 60, kTextField);
    KovaniSurface* leftF = skin("lf.png", 30, 40, kLeftF);
    KovaniSurface* leftN = skin("ln.png", 30, 40, kLeftN);
    KovaniSurface* rightF = skin("rf.png", 30, 40, kRightF);
    KovaniSurface* rightN = skin("rn.png", 30, 40, kRightN);
    const std::string longValue(100, 'x');
    SettingMenu menu;
    for (const char* name : {"a", "b"})
        menu.insertSettingItem(new SettingValueItem(mSel, mNormal, leftF, leftN, rightF, rightN, field, -1,
                                                    nullptr, new CountingHandler(name)));
    menu.insertSettingItem(new SettingValueItem(mSel, mNormal, leftF, leftN, rightF, rightN, field, -1,
                                                nullptr, nullptr));
    SettingValueItem* overlong = new SettingValueItem(mSel, mNormal, leftF, leftN, rightF, rightN, nullptr,
                                                      -1, nullptr, new CountingHandler("e", longValue.c_str()));
    menu.insertSettingItem(overlong);
    menu.draw();

    const struct { int row; SDL_Color color; bool shown; } images[] = {
        {0, kLeftF, true},  {0, kRightF, true},  {0, kTextField, true}, {0, kLeftN, false},
        {1, kLeftN, true},  {1, kRightN, true},  {1, kTextField, false}, {1, kLeftF, false},
        {2, kLeftN, false},  // no handler: no value part at all
    };
    for (const auto& image : images)
        EXPECT_EQ(colorBounds(image.color, {0, rowTop(image.row), 1280, kRow}).w > 0, image.shown)
            << "row " << image.row;
    EXPECT_GT(colorBounds(kWhite, {640, rowTop(1), 640, kRow}).w, 0) << "value text drawn";
    EXPECT_EQ(strlen(overlong->mShowBuf), sizeof overlong->mShowBuf - 1) << "an overlong value is cut";
}

TEST_F(SettingMenuTest, KeysMoveChangeValuesConfirmAndClose) {
    RecordingAction* quit = new RecordingAction("quit", 7);
    RecordingAction* valueAction = new RecordingAction("value", WINDOW_CLOSE_LAST);
    CountingHandler* ratio = new CountingHandler("ratio");
    CountingHandler* track = new CountingHandler("track");
    SettingMenu menu;
    SettingItem* quitRow = new SettingItem(nullptr, nullptr, -1, nullptr, quit);
    menu.insertSettingItem(quitRow);
    menu.insertSettingItem(new SettingValueItem(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                nullptr, -1, nullptr, ratio));
    menu.insertSettingItem(new SettingItem(nullptr, nullptr, -1, nullptr, nullptr));
    SettingValueItem* trackRow = new SettingValueItem(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                      nullptr, -1, valueAction, track);
    menu.insertSettingItem(trackRow);
    menu.insertSettingItem(nullptr);
    ASSERT_EQ(menu.getListNum(), 4);

    const struct { int key, result, cursor, quitRuns, ratioLefts, ratioRights; } steps[] = {
        {KEY_LEFT, -1, 0, 0, 0, 0},  // a plain row has nothing to change
        {KEY_A, 7, 0, 1, 0, 0},
        {KEY_DOWN, -1, 1, 1, 0, 0},
        {KEY_LEFT, -1, 1, 1, 1, 0},
        {KEY_RIGHT, -1, 1, 1, 1, 1},
        {KEY_A, -1, 1, 1, 1, 1},  // value row without an action
        {KEY_DOWN, -1, 2, 1, 1, 1},
        {KEY_A, -1, 2, 1, 1, 1},  // plain row without an action
        {KEY_B, WINDOW_CLOSE, 2, 1, 1, 1},
        {KEY_MENU_KEY, KEY_MENU_KEY, 2, 1, 1, 1},
        {KEY_DOWN, -1, 3, 1, 1, 1},
        {KEY_A, WINDOW_CLOSE_LAST, 3, 1, 1, 1},  // the action's own code
        {KEY_DOWN, -1, 0, 1, 1, 1},
    };
    for (const auto& step : steps) {
        EXPECT_EQ(pressKey(menu, step.key), step.result) << "key " << step.key << " on row " << step.cursor;
        EXPECT_EQ(menu.mCurrentPos, step.cursor) << "key " << step.key;
        EXPECT_EQ(quit->mRuns, step.quitRuns) << "key " << step.key;
        EXPECT_EQ(ratio->mLefts, step.ratioLefts) << "key " << step.key;
        EXPECT_EQ(ratio->mRights, step.ratioRights) << "key " << step.key;
    }
    EXPECT_EQ(quit->mItem, static_cast<void*>(quitRow)) << "the action gets its row";
    EXPECT_EQ(valueAction->mItem, static_cast<void*>(trackRow));
    EXPECT_EQ(track->mLefts + track->mRights, 0);
}

TEST_F(SettingMenuTest, DestroyingTheMenuSavesEachValueOnceThenDeletesHandlerAndAction) {
    {
        SettingMenu menu;
        menu.insertSettingItem(new SettingItem(nullptr, nullptr, -1, nullptr, new RecordingAction("quit", 0)));
        menu.insertSettingItem(new SettingValueItem(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                    nullptr, -1, new RecordingAction("ratio action", 0),
                                                    new CountingHandler("ratio")));
        menu.insertSettingItem(new SettingValueItem(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                    nullptr, -1, nullptr, new CountingHandler("track")));
        menu.insertSettingItem(new SettingValueItem(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                    nullptr, -1, nullptr, nullptr));
        EXPECT_TRUE(sEvents.empty()) << "nothing saved while the menu lives";
    }
    const std::vector<std::string> want = {"quit deleted",         "ratio saved", "ratio deleted",
                                           "ratio action deleted", "track saved", "track deleted"};
    EXPECT_EQ(sEvents, want);
}

}  // namespace
