#include "toolkit/setting_menu.h"

#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "tests/support/draw_fixture.h"
#include "tests/support/sdl_events.h"
#include "tests/support/temp_dir.h"
#include "toolkit/keycodes.h"
#include "toolkit/lang.h"
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

    // Ink of `text` drawn on black by DrawString, as a row would place it.
    SDL_Rect referenceInk(const char* text, SDL_Rect box, int align) {
        clear(0, 0, 0);
        DrawString(gListFontTxt, box, text, kWhite, align);
        const SDL_Rect ink = inkBounds(kBlack);
        clear(0, 0, 0);
        return ink;
    }

    int addString(const std::string& text) {
        gDefaultStringList.push_back(text);
        return int(gDefaultStringList.size()) - 1;
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
    const struct {
        int key;
        int times;
        int cursor;
        int first;
        int last;
    } steps[] = {
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
            const SDL_Rect bg = colorBounds(want, {0, rowTop(row), 1280, kRow});
            EXPECT_EQ(bg.x, 10) << "cursor " << step.cursor << ", screen row " << row;
            EXPECT_EQ(bg.y, rowTop(row) + (kRow - kBgHeight) / 2) << "screen row " << row;
            EXPECT_EQ(bg.w, 1260) << "screen row " << row;
            EXPECT_EQ(bg.h, kBgHeight) << "screen row " << row;
        }
        EXPECT_EQ(inkBounds(kBlack, {0, rowTop(6), 1280, 720 - rowTop(6)}).w, 0) << "only six rows";
    }

    SettingMenu shortMenu;
    for (int i = 0; i < 3; i++) shortMenu.insertSettingItem(new SettingItem(mSel, mNormal, -1, nullptr, nullptr));
    clear(0, 0, 0);
    shortMenu.draw();
    EXPECT_EQ(shortMenu.mLastVisible, 2);
    EXPECT_TRUE(sameColor(pixel(20, rowMiddle(2)), kNormal));
    EXPECT_EQ(inkBounds(kBlack, {0, rowTop(3), 1280, 720 - rowTop(3)}).w, 0) << "nothing below row 2";
}

TEST_F(SettingMenuTest, RowLabelsComeFromTheLanguageTableWithWrongbeefBeyondIt) {
    const size_t strings = gDefaultStringList.size();
    const int known = addString("Aspect ratio");
    const int beyond = int(gDefaultStringList.size()) + 3;
    const SDL_Rect labelBox = {10 + 40, kTop, 1260, kRow};
    const struct {
        bool valueRow;
        int labelId;
        const char* label;  // mLabel of a plain row
        const char* shown;  // null: no text at all
    } cases[] = {
        {false, known, "ignored", "Aspect ratio"},
        {false, -1, "Own label", "Own label"},
        {true, -1, nullptr, nullptr},
        {true, beyond, nullptr, "wrongbeef"},
    };
    for (const auto& c : cases) {
        SettingMenu menu;
        if (c.valueRow) {
            menu.insertSettingItem(new SettingValueItem(nullptr, nullptr, nullptr, nullptr, nullptr,
                                                        nullptr, nullptr, c.labelId, nullptr, nullptr));
        } else {
            SettingItem* row = new SettingItem(nullptr, nullptr, c.labelId, nullptr, nullptr);
            row->mLabel = c.label;
            menu.insertSettingItem(row);
        }
        clear(0, 0, 0);
        menu.draw();
        const SDL_Rect drawn = inkBounds(kBlack);
        if (!c.shown) {
            EXPECT_EQ(drawn.w, 0) << "value row, id " << c.labelId;
            continue;
        }
        const SDL_Rect want = referenceInk(c.shown, labelBox, ALIGN_MIDDLE_LEFT);
        ASSERT_GT(want.w, 0);
        EXPECT_TRUE(SDL_RectEquals(&drawn, &want))
            << (c.valueRow ? "value" : "plain") << " row, id " << c.labelId << " should read " << c.shown;
    }
    gDefaultStringList.resize(strings);
}

TEST_F(SettingMenuTest, ValueRowDrawsFocusedArrowsOverItsFieldAndPlainArrowsOtherwise) {
    rowSkins();
    KovaniSurface* field = skin("field.png", 500, 60, kTextField);
    KovaniSurface* leftF = skin("lf.png", 30, 40, kLeftF);
    KovaniSurface* leftN = skin("ln.png", 30, 40, kLeftN);
    KovaniSurface* rightF = skin("rf.png", 30, 40, kRightF);
    KovaniSurface* rightN = skin("rn.png", 30, 40, kRightN);
    const std::string longValue(100, 'x');
    SettingMenu menu;
    menu.insertSettingItem(new SettingValueItem(mSel, mNormal, leftF, leftN, rightF, rightN, field, -1,
                                                nullptr, new CountingHandler("a")));
    menu.insertSettingItem(new SettingValueItem(mSel, mNormal, leftF, leftN, rightF, rightN, field, -1,
                                                nullptr, new CountingHandler("b")));
    menu.insertSettingItem(new SettingValueItem(mSel, mNormal, leftF, leftN, rightF, rightN, field, -1,
                                                nullptr, nullptr));
    menu.insertSettingItem(new SettingValueItem(mSel, mNormal, leftF, leftN, rightF, rightN, nullptr, -1,
                                                nullptr, new CountingHandler("d")));
    SettingValueItem* overlong = new SettingValueItem(mSel, mNormal, leftF, leftN, rightF, rightN, nullptr,
                                                      -1, nullptr, new CountingHandler("e", longValue.c_str()));
    menu.insertSettingItem(overlong);
    menu.draw();

    const int fieldX = 10 + 745;
    const int rightX = 10 + 1173;
    const struct {
        int row;
        SDL_Color color;
        SDL_Rect at;  // w = 0: absent from the row
    } images[] = {
        {0, kLeftF, {fieldX, rowMiddle(0) - 20, 30, 40}},
        {0, kRightF, {rightX, rowMiddle(0) - 20, 30, 40}},
        {0, kLeftN, {0, 0, 0, 0}},
        {1, kLeftN, {fieldX, rowMiddle(1) - 20, 30, 40}},
        {1, kRightN, {rightX, rowMiddle(1) - 20, 30, 40}},
        {1, kTextField, {0, 0, 0, 0}},  // the field only under the focused row
        {1, kLeftF, {0, 0, 0, 0}},
        {2, kLeftN, {0, 0, 0, 0}},  // no handler: no value part at all
        {3, kLeftN, {fieldX, rowMiddle(3) - 20, 30, 40}},
    };
    for (const auto& image : images) {
        const SDL_Rect got = colorBounds(image.color, {0, rowTop(image.row), 1280, kRow});
        EXPECT_EQ(got.w, image.at.w) << "row " << image.row;
        if (!image.at.w) continue;
        EXPECT_EQ(got.x, image.at.x) << "row " << image.row;
        EXPECT_EQ(got.y, image.at.y) << "row " << image.row;
        EXPECT_EQ(got.h, image.at.h) << "row " << image.row;
    }
    // The field sits under the arrows, vertically centred.
    EXPECT_TRUE(sameColor(pixel(fieldX + 40, rowMiddle(0) - 25), kTextField));
    EXPECT_TRUE(sameColor(pixel(fieldX + 499, rowMiddle(0) - 25), kTextField));
    EXPECT_TRUE(sameColor(pixel(fieldX + 500, rowMiddle(0) - 25), kSel));
    EXPECT_TRUE(sameColor(pixel(fieldX + 40, rowMiddle(0) - 31), kSel));

    // The value text: centred in the field, or ending 40 pixels before the
    // row's right edge without one.
    const SDL_Rect centred = colorBounds(kWhite, {fieldX, rowTop(1), 500, kRow});
    const SDL_Rect plain = colorBounds(kWhite, {640, rowTop(3), 640, kRow});
    const SDL_Rect wantCentred = referenceInk("Wide", {fieldX, rowTop(1), 500, kRow}, ALIGN_CENTER);
    const SDL_Rect wantPlain = referenceInk("Wide", {10, rowTop(3), 1220, kRow}, ALIGN_MIDDLE_RIGHT);
    EXPECT_NEAR(centred.x + centred.w / 2, wantCentred.x + wantCentred.w / 2, 1);
    EXPECT_NEAR(centred.y + centred.h / 2, wantCentred.y + wantCentred.h / 2, 1);
    EXPECT_NEAR(plain.x + plain.w, wantPlain.x + wantPlain.w, 1);
    EXPECT_LE(wantPlain.x + wantPlain.w, 1230);

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

    const struct {
        int key;
        int result;
        int cursor;
        int quitRuns;
        int ratioLefts;
        int ratioRights;
    } steps[] = {
        {KEY_LEFT, -1, 0, 0, 0, 0},  // a plain row has nothing to change
        {KEY_A, 7, 0, 1, 0, 0},
        {KEY_Y, 7, 0, 2, 0, 0},
        {KEY_DOWN, -1, 1, 2, 0, 0},
        {KEY_LEFT, -1, 1, 2, 1, 0},
        {KEY_RIGHT, -1, 1, 2, 1, 1},
        {KEY_A, -1, 1, 2, 1, 1},  // value row without an action
        {KEY_DOWN, -1, 2, 2, 1, 1},
        {KEY_A, -1, 2, 2, 1, 1},  // plain row without an action
        {KEY_B, WINDOW_CLOSE, 2, 2, 1, 1},
        {KEY_X, WINDOW_CLOSE, 2, 2, 1, 1},
        {KEY_MENU_KEY, KEY_MENU_KEY, 2, 2, 1, 1},
        {KEY_START, -1, 2, 2, 1, 1},
        {KEY_DOWN, -1, 3, 2, 1, 1},
        {KEY_A, WINDOW_CLOSE_LAST, 3, 2, 1, 1},  // the action's own code
        {KEY_DOWN, -1, 0, 2, 1, 1},
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

    // With the buttons exchanged, B confirms and A goes back; X and Y keep
    // their meaning.
    KeyShmInfo writer;
    ASSERT_EQ(InitKeyShm(&writer), 0);
    EXPECT_EQ(SetKeyShm(&writer, MONITOR_B_CONFIRM, 1), 0);
    EXPECT_EQ(pressKey(menu, KEY_B), 7);
    EXPECT_EQ(quit->mRuns, 3);
    EXPECT_EQ(pressKey(menu, KEY_A), WINDOW_CLOSE);
    EXPECT_EQ(pressKey(menu, KEY_Y), 7);
    EXPECT_EQ(pressKey(menu, KEY_X), WINDOW_CLOSE);
    EXPECT_EQ(quit->mRuns, 4);
    UninitKeyShm(&writer);
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
