#include "toolkit/setting_menu.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/sdl_events.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/keycodes.h"
#include "toolkit/system_state.h"

namespace {

// Everything that happens to the handlers and actions, in order.
std::vector<std::string> sEvents;

class CountingHandler : public ValueHandler {
public:
    explicit CountingHandler(const char* name) : mName(name) {}
    ~CountingHandler() override { sEvents.push_back(mName + " deleted"); }
    int changeValue(int key) override {
        (key == KEY_LEFT ? mLefts : mRights)++;
        return 0;
    }
    int saveValue() override {
        sEvents.push_back(mName + " saved");
        return 0;
    }
    const char* getShowValue() override { return "Wide"; }
    std::string mName;
    int mLefts = 0, mRights = 0;
};

class RecordingAction : public Action {
public:
    RecordingAction(const char* name, int result) : Action(-1), mName(name), mResult(result) {}
    ~RecordingAction() override { sEvents.push_back(mName + " deleted"); }
    int dowork(void* item) override {
        mItems.push_back(item);
        return mResult;
    }
    std::string mName;
    int mResult;
    std::vector<void*> mItems;
};

SettingValueItem* valueRow(ValueHandler* handler, Action* action = nullptr) {
    return new SettingValueItem(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, -1, action, handler);
}

// Real SDL events, the key shared memory and input markers in a temporary
// device root.
class SettingMenuTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        sEvents.clear();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
    void TearDown() override {
        UninitKeyShm(&gShmInfo);
        SdlScreenTest::TearDown();
    }
    TempDeviceRoot mRoot;
};

}  // namespace

TEST_F(SettingMenuTest, KeysMoveChangeValuesConfirmAndClose) {
    RecordingAction* quit = new RecordingAction("quit", 7);
    RecordingAction* valueAction = new RecordingAction("value", WINDOW_CLOSE_LAST);
    CountingHandler* ratio = new CountingHandler("ratio");
    CountingHandler* track = new CountingHandler("track");
    SettingMenu menu;
    SettingItem* quitRow = new SettingItem(nullptr, nullptr, -1, nullptr, quit);
    menu.insertSettingItem(quitRow);
    menu.insertSettingItem(valueRow(ratio));
    menu.insertSettingItem(new SettingItem(nullptr, nullptr, -1, nullptr, nullptr));
    SettingValueItem* trackRow = valueRow(track, valueAction);
    menu.insertSettingItem(trackRow);
    menu.insertSettingItem(nullptr);
    ASSERT_EQ(menu.getListNum(), 4);

    const struct { int key, result, cursor, ratioLefts, ratioRights; } steps[] = {
        {KEY_LEFT, -1, 0, 0, 0},  // a plain row has nothing to change
        {KEY_A, 7, 0, 0, 0},
        {KEY_DOWN, -1, 1, 0, 0},
        {KEY_LEFT, -1, 1, 1, 0},
        {KEY_RIGHT, -1, 1, 1, 1},
        {KEY_A, -1, 1, 1, 1},  // value row without an action
        {KEY_DOWN, -1, 2, 1, 1},
        {KEY_A, -1, 2, 1, 1},  // plain row without an action
        {KEY_B, WINDOW_CLOSE, 2, 1, 1},
        {KEY_MENU_KEY, KEY_MENU_KEY, 2, 1, 1},
        {KEY_DOWN, -1, 3, 1, 1},
        {KEY_A, WINDOW_CLOSE_LAST, 3, 1, 1},  // the action's own code
        {KEY_DOWN, -1, 0, 1, 1},
    };
    for (const auto& step : steps) {
        EXPECT_EQ(pressKey(menu, step.key), step.result) << "key " << step.key << " on row " << step.cursor;
        EXPECT_EQ(menu.mCurrentPos, step.cursor) << "key " << step.key;
        EXPECT_EQ(ratio->mLefts, step.ratioLefts) << "key " << step.key;
        EXPECT_EQ(ratio->mRights, step.ratioRights) << "key " << step.key;
    }
    EXPECT_EQ(quit->mItems, std::vector<void*>{quitRow}) << "the action gets its row";
    EXPECT_EQ(valueAction->mItems, std::vector<void*>{trackRow});
    EXPECT_EQ(track->mLefts + track->mRights, 0);
}

TEST_F(SettingMenuTest, DestroyingTheMenuSavesEachValueOnceThenDeletesHandlerAndAction) {
    {
        SettingMenu menu;
        menu.insertSettingItem(new SettingItem(nullptr, nullptr, -1, nullptr, new RecordingAction("quit", 0)));
        menu.insertSettingItem(valueRow(new CountingHandler("ratio"), new RecordingAction("ratio action", 0)));
        menu.insertSettingItem(valueRow(new CountingHandler("track")));
        menu.insertSettingItem(valueRow(nullptr));
        EXPECT_TRUE(sEvents.empty()) << "nothing saved while the menu lives";
    }
    EXPECT_EQ(sEvents, (std::vector<std::string>{"quit deleted", "ratio saved", "ratio deleted",
                                                  "ratio action deleted", "track saved", "track deleted"}));
}
