#include "toolkit/file_browser_menu.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/key_shm.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/draw_fixture.h"
#include "tests/support/sdl_events.h"
#include "tests/support/temp_dir.h"
#include "tests/toolkit/folder_fixture.h"
#include "toolkit/keycodes.h"
#include "toolkit/shared_skin.h"
#include "toolkit/system_state.h"
#include "toolkit/text.h"

// The application's two functions, as these tests need them.
TextMenuItem* file_handler(const char* name, const char* path, int type) {
    return entryFor(name, path, type);
}

bool file_filter(const char* name, const char*) { return strchr(name, '.') != nullptr; }

namespace {

typedef std::vector<std::string> Names;

const SDL_Color sWhite = {255, 255, 255, 255};
const SDL_Color sBlack = {0, 0, 0, 255};

// A real screen, the list fonts from the CJK interface font, the key shared
// memory and every device path in temporary folders.
class FileBrowserMenuTest : public DrawTest {
protected:
    void SetUp() override {
        DrawTest::SetUp();
        gListFontTxt = TTF_OpenFont(KOVANI_TEST_CJK_FONT, 36);
        gListFontSubtxt = TTF_OpenFont(KOVANI_TEST_CJK_FONT, 24);
        gStatFont = TTF_OpenFont(KOVANI_TEST_CJK_FONT, 24);
        ASSERT_TRUE(gListFontTxt && gListFontSubtxt && gStatFont) << TTF_GetError();
        gListColorTxt = sWhite;
        gListColorSubtxt = sWhite;
        gListColorSeq = sWhite;
        gStatColorTxt = sWhite;
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        ASSERT_EQ(SetKeyShm(&gShmInfo, MONITOR_B_CONFIRM, 0), 0);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
    void TearDown() override {
        UninitKeyShm(&gShmInfo);
        gTextSurfaceCache.clear();
        for (TTF_Font** f : {&gListFontTxt, &gListFontSubtxt, &gStatFont}) {
            if (*f) TTF_CloseFont(*f);
            *f = nullptr;
        }
        DrawTest::TearDown();
    }

    int send(FileBrowserMenu& menu, int code, void* data = nullptr) { return pressKey(menu, code, data); }

    Names shown(FileBrowserMenu& menu) { return labelsOf(menu.mCurrentMenu); }

    std::string current(FileBrowserMenu& menu) {
        const char* dir = menu.getCurrentDir();
        return dir ? dir : "(none)";
    }

    TempDeviceRoot mRoot;  // key shared memory and input markers
    TempFolder mFolders;
};

}  // namespace

TEST_F(FileBrowserMenuTest, BackClosesInTheTopFolderAndBelowItGoesUpToTheFirstEntry) {
    for (int i = 1; i <= 3; i++) mFolders.file("top/A/x" + std::to_string(i) + ".mkv");
    for (int i = 1; i <= 9; i++) mFolders.file("top/c" + std::to_string(i) + ".mkv");
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), "", nullptr, nullptr, 6, 0);
    EXPECT_EQ(menu.getItemByIndex(0), nullptr) << "nothing before loading";
    menu.LoadDir();
    ASSERT_EQ(menu.getListNum(), 10);
    EXPECT_EQ(send(menu, KEY_B), WINDOW_CLOSE);
    EXPECT_EQ(current(menu), top);

    // Folder "A" is the first entry.
    EXPECT_EQ(send(menu, KEY_A), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top + "/A");
    EXPECT_EQ(shown(menu), (Names{"..", "x1.mkv", "x2.mkv", "x3.mkv"}));

    menu.restorePos(3, 1, 3);
    EXPECT_EQ(send(menu, KEY_B), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(menu.getCurrentPos(), 0);
    EXPECT_EQ(menu.mFirstVisible, 0);
    EXPECT_EQ(send(menu, KEY_B), WINDOW_CLOSE);
}

TEST_F(FileBrowserMenuTest, ChoosingTheParentEntryGoesUpAndIsNotOfferedAtTheTop) {
    mFolders.file("top/A/clip.mkv");
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), (top + "/A").c_str(), nullptr, nullptr, 6, 0);
    menu.LoadDir();
    ASSERT_EQ(shown(menu), (Names{"..", "clip.mkv"}));
    // A change of folder that names none changes nothing.
    EXPECT_EQ(send(menu, EVENT_CHDIR, nullptr), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top + "/A");

    CaptureStdout out;
    EXPECT_EQ(send(menu, KEY_A), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(shown(menu), Names{"A"});
}

TEST_F(FileBrowserMenuTest, FolderRemovedWhileOpenShowsNoEntriesWhenReadAgain) {
    mFolders.file("top/A/B/clip.mkv");
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), (top + "/A/B").c_str(), nullptr, nullptr, 6, 0);
    menu.LoadDir();
    ASSERT_EQ(menu.getListNum(), 2);
    std::filesystem::remove_all(top + "/A");

    CaptureStdout out;
    EXPECT_EQ(send(menu, KEY_B), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top + "/A");
    EXPECT_EQ(menu.getListNum(), 0);
    clear(0, 0, 0);
    menu.draw();
    EXPECT_EQ(inkBounds(sBlack).w, 0);

    EXPECT_EQ(send(menu, KEY_B), EVENT_CHDIR);
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(menu.getListNum(), 0);
    EXPECT_EQ(send(menu, KEY_B), WINDOW_CLOSE);
}
