#include "toolkit/file_browser_menu.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/sdl_events.h"
#include "tests/support/temp_dir.h"
#include "tests/toolkit/folder_fixture.h"
#include "toolkit/shared_skin.h"
#include "toolkit/system_state.h"
#include "toolkit/text.h"

// The application's two functions, as these tests need them.
TextMenuItem* file_handler(const char* name, const char* path, int type) { return entryFor(name, path, type); }
bool file_filter(const char* name, const char*) { return strchr(name, '.') != nullptr; }

namespace {

typedef std::vector<std::string> Names;

// The list fonts, the key shared memory, every device path in temporary folders.
class FileBrowserMenuTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        gListFontTxt = font(36);
        gListFontSubtxt = gStatFont = font(24);
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
    void TearDown() override {
        UninitKeyShm(&gShmInfo);
        gTextSurfaceCache.clear();
        gListFontTxt = gListFontSubtxt = gStatFont = nullptr;
        SdlScreenTest::TearDown();
    }
    std::string current(FileBrowserMenu& menu) { return menu.getCurrentDir() ? menu.getCurrentDir() : "(none)"; }

    TempDeviceRoot mRoot;  // key shared memory and input markers
    TempFolder mFolders;
    CaptureStdout mQuiet;
};

}  // namespace

// B closes in the top folder; below it, B and ".." go up, B to the first
// entry. With A and B swapped, A does what B did and B what A did.
TEST_F(FileBrowserMenuTest, BackClosesInTheTopFolderAndBelowItGoesUpToTheFirstEntry) {
    for (int i = 1; i <= 3; i++) mFolders.file("top/A/x" + std::to_string(i) + ".mkv");
    for (int i = 1; i <= 9; i++) mFolders.file("top/c" + std::to_string(i) + ".mkv");
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), "", nullptr, nullptr, 6, 0);
    menu.LoadDir();
    ASSERT_EQ(menu.getListNum(), 10);
    EXPECT_EQ(pressKey(menu, KEY_B), WINDOW_CLOSE);
    EXPECT_EQ(pressKey(menu, KEY_A), EVENT_CHDIR);  // into A, the first entry
    EXPECT_EQ(labelsOf(menu.mCurrentMenu), (Names{"..", "x1.mkv", "x2.mkv", "x3.mkv"}));
    EXPECT_EQ(pressKey(menu, KEY_A), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(pressKey(menu, EVENT_CHDIR), EVENT_CHDIR) << "a change that names no folder";
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(pressKey(menu, KEY_A), EVENT_CHDIR);
    menu.restorePos(3, 1, 3);
    EXPECT_EQ(pressKey(menu, KEY_B), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(menu.getCurrentPos(), 0);
    EXPECT_EQ(std::make_pair(menu.mFirstVisible, menu.mLastVisible), std::make_pair(0, 5)) << "six rows shown";
    EXPECT_EQ(pressKey(menu, KEY_B), WINDOW_CLOSE);

    SetKeyShm(&gShmInfo, MONITOR_B_CONFIRM, 1);  // the device's settings swap A and B
    EXPECT_EQ(pressKey(menu, KEY_A), WINDOW_CLOSE);
    EXPECT_EQ(pressKey(menu, KEY_B), EVENT_CHDIR);
    EXPECT_EQ(labelsOf(menu.mCurrentMenu), (Names{"..", "x1.mkv", "x2.mkv", "x3.mkv"}));
    EXPECT_EQ(pressKey(menu, KEY_A), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top);
}

// A folder change queued behind back presses, the third of which drops its list
// from the cache (over 40000 entries), must not use that list: it is stale.
TEST_F(FileBrowserMenuTest, AFolderChangeQueuedBehindBackPressesOutlivesItsList) {
    // top/big: 15000 files and "in", a link to itself; big/in/in is three deep.
    char name[32];
    for (int i = 0; i < 15000; i++) {
        snprintf(name, sizeof name, "top/big/f%05d.mkv", i);
        mFolders.file(name);
    }
    ASSERT_EQ(symlink(".", (mFolders / "top/big/in").c_str()), 0);
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), (top + "/big/in/in").c_str(), nullptr, nullptr, 6, 0);
    menu.LoadDir();
    pressKey(menu, KEY_DOWN);  // from ".." onto "in"
    pressKeys(menu, {KEY_A, KEY_B, KEY_B, KEY_B});
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(menu.mDirBrowser.mDirStack.size(), 1u);
    EXPECT_EQ(labelsOf(menu.mCurrentMenu), (Names{"big"}));
}
