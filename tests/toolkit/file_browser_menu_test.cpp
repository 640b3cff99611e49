#include "toolkit/file_browser_menu.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/key_shm.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/sdl_events.h"
#include "tests/support/temp_dir.h"
#include "tests/toolkit/folder_fixture.h"
#include "toolkit/keycodes.h"
#include "toolkit/shared_skin.h"
#include "toolkit/system_state.h"
#include "toolkit/text.h"

// The application's two functions, as these tests need them.
TextMenuItem* file_handler(const char* name, const char* path, int type) { return entryFor(name, path, type); }
bool file_filter(const char* name, const char*) { return strchr(name, '.') != nullptr; }

namespace {

typedef std::vector<std::string> Names;

// A real screen, the list fonts from the CJK interface font, the key shared
// memory and every device path in temporary folders.
class FileBrowserMenuTest : public DrawTest {
protected:
    void SetUp() override {
        DrawTest::SetUp();
        gListFontTxt = TTF_OpenFont(KOVANI_TEST_CJK_FONT, 36);
        gListFontSubtxt = gStatFont = TTF_OpenFont(KOVANI_TEST_CJK_FONT, 24);
        ASSERT_TRUE(gListFontTxt && gListFontSubtxt) << TTF_GetError();
        gListColorTxt = gListColorSubtxt = gListColorSeq = gStatColorTxt = {255, 255, 255, 255};
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
    void TearDown() override {
        UninitKeyShm(&gShmInfo);
        gTextSurfaceCache.clear();
        TTF_CloseFont(gListFontTxt);
        TTF_CloseFont(gListFontSubtxt);
        gListFontTxt = gListFontSubtxt = gStatFont = nullptr;
        DrawTest::TearDown();
    }
    std::string current(FileBrowserMenu& menu) { return menu.getCurrentDir() ? menu.getCurrentDir() : "(none)"; }

    TempDeviceRoot mRoot;  // key shared memory and input markers
    TempFolder mFolders;
    CaptureStdout mQuiet;
};

}  // namespace

TEST_F(FileBrowserMenuTest, BackClosesInTheTopFolderAndBelowItGoesUpToTheFirstEntry) {
    for (int i = 1; i <= 3; i++) mFolders.file("top/A/x" + std::to_string(i) + ".mkv");
    for (int i = 1; i <= 9; i++) mFolders.file("top/c" + std::to_string(i) + ".mkv");
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), "", nullptr, nullptr, 6, 0);
    menu.LoadDir();
    ASSERT_EQ(menu.getListNum(), 10);
    EXPECT_EQ(pressKey(menu, KEY_B), WINDOW_CLOSE);

    // Folder "A" is the first entry; its ".." entry leads back up.
    EXPECT_EQ(pressKey(menu, KEY_A), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top + "/A");
    EXPECT_EQ(labelsOf(menu.mCurrentMenu), (Names{"..", "x1.mkv", "x2.mkv", "x3.mkv"}));
    EXPECT_EQ(pressKey(menu, KEY_A), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(pressKey(menu, EVENT_CHDIR, nullptr), EVENT_CHDIR) << "a change that names no folder";
    EXPECT_EQ(current(menu), top);

    EXPECT_EQ(pressKey(menu, KEY_A), EVENT_CHDIR);
    menu.restorePos(3, 1, 3);
    EXPECT_EQ(pressKey(menu, KEY_B), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(menu.getCurrentPos(), 0);
    EXPECT_EQ(menu.mFirstVisible, 0);
    EXPECT_EQ(pressKey(menu, KEY_B), WINDOW_CLOSE);
}

TEST_F(FileBrowserMenuTest, FolderRemovedWhileOpenShowsNoEntriesWhenReadAgain) {
    mFolders.file("top/A/B/clip.mkv");
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), (top + "/A/B").c_str(), nullptr, nullptr, 6, 0);
    menu.LoadDir();
    ASSERT_EQ(menu.getListNum(), 2);
    std::filesystem::remove_all(top + "/A");

    EXPECT_EQ(pressKey(menu, KEY_B), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top + "/A");
    EXPECT_EQ(menu.getListNum(), 0);
    clear(0, 0, 0);
    menu.draw();
    EXPECT_EQ(inkBounds(SDL_Color{0, 0, 0, 255}).w, 0);
    EXPECT_EQ(pressKey(menu, KEY_B), EVENT_CHDIR);
    EXPECT_EQ(pressKey(menu, KEY_B), WINDOW_CLOSE);
}
