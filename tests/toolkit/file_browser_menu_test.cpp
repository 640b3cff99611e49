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
const int kRowHeight = 96;  // 6 rows, no space
const int kListTop = 80;

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

    // Rows 0..5 whose text column holds any ink.
    std::vector<bool> inkedRows() {
        std::vector<bool> rows;
        for (int row = 0; row < 6; row++) {
            const SDL_Rect text = {95, kListTop + kRowHeight * row, 1160, kRowHeight};
            rows.push_back(inkBounds(sBlack, text).w > 0);
        }
        return rows;
    }

    TempDeviceRoot mRoot;  // key shared memory and input markers
    TempFolder mFolders;
};

}  // namespace

TEST_F(FileBrowserMenuTest, BackClosesInTheTopFolderAndBelowItGoesUpToTheFirstEntry) {
    for (int i = 1; i <= 3; i++) mFolders.file("top/A/x" + std::to_string(i) + ".mkv");
    for (int i = 1; i <= 9; i++) mFolders.file("top/c" + std::to_string(i) + ".mkv");
    const std::string top = mFolders / "top";
    // Whether the buttons are swapped, which key confirms, which goes back.
    const struct {
        int swapped;
        int confirm;
        int back;
    } cases[] = {{0, KEY_A, KEY_B}, {1, KEY_B, KEY_A}};
    for (const auto& c : cases) {
        SetKeyShm(&gShmInfo, MONITOR_B_CONFIRM, c.swapped);
        FileBrowserMenu menu(top.c_str(), "", nullptr, nullptr, 6, 0);
        EXPECT_EQ(menu.getCurrentDir(), nullptr);
        EXPECT_EQ(menu.getItemByIndex(0), nullptr);
        menu.LoadDir();
        ASSERT_EQ(menu.getListNum(), 10);
        EXPECT_EQ(menu.getItemByIndex(10), nullptr);
        EXPECT_EQ(send(menu, c.back), WINDOW_CLOSE) << "swapped " << c.swapped;
        EXPECT_EQ(current(menu), top);

        // Folder "A" is the first entry.
        EXPECT_EQ(send(menu, c.confirm), EVENT_CHDIR) << "swapped " << c.swapped;
        EXPECT_EQ(current(menu), top + "/A");
        EXPECT_EQ(shown(menu), (Names{"..", "x1.mkv", "x2.mkv", "x3.mkv"}));
        EXPECT_EQ(menu.getCurrentPos(), 0);

        menu.restorePos(3, 1, 3);
        EXPECT_EQ(send(menu, c.back), EVENT_CHDIR) << "swapped " << c.swapped;
        EXPECT_EQ(current(menu), top);
        EXPECT_EQ(menu.getListNum(), 10);
        EXPECT_EQ(menu.getCurrentPos(), 0);
        EXPECT_EQ(menu.mFirstVisible, 0);
        EXPECT_EQ(menu.mLastVisible, 5);
        EXPECT_EQ(send(menu, c.back), WINDOW_CLOSE);
    }
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
    const std::string log = out.finish();
    EXPECT_EQ(current(menu), top);
    EXPECT_EQ(shown(menu), Names{"A"});
    EXPECT_NE(log.find("change dir " + top + "/A/..\n"), std::string::npos) << log;
    EXPECT_NE(log.find("parentdir " + top + " return "), std::string::npos) << log;
    EXPECT_NE(log.find("change dir return 26\n"), std::string::npos) << log;
}

TEST_F(FileBrowserMenuTest, EnteringAFolderAgainReadsTheDiskOnce) {
    mFolders.file("top/A/clip.mkv");
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), nullptr, nullptr, nullptr, 6, 0);
    menu.LoadDir();
    CaptureStdout out;
    for (int round = 0; round < 2; round++) {
        EXPECT_EQ(send(menu, KEY_A), EVENT_CHDIR);
        EXPECT_EQ(current(menu), top + "/A");
        EXPECT_EQ(send(menu, KEY_B), EVENT_CHDIR);
    }
    const std::string log = out.finish();
    const std::string read = "loaddir " + top + "/A ";
    EXPECT_NE(log.find(read), std::string::npos) << log;
    EXPECT_EQ(log.find(read, log.find(read) + 1), std::string::npos) << log;
    EXPECT_NE(log.find("childdir " + top + "/A return "), std::string::npos) << log;
    EXPECT_NE(log.find("found menu for " + top + "/A\n"), std::string::npos) << log;
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
    EXPECT_NE(out.finish().find("loaddir " + top + "/A 0\n"), std::string::npos);
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

TEST_F(FileBrowserMenuTest, RowsShowTheEntriesOfTheShownFolderWhateverTheirNames) {
    const std::string longName = std::string(251, 'w') + ".mkv";
    for (const std::string& name : {std::string("影片.mkv"), std::string("bad\xff\xfe.mkv"), longName})
        mFolders.file("top/odd/" + name);
    mFolders.file("top/one.mkv");
    const std::string top = mFolders / "top";
    FileBrowserMenu menu(top.c_str(), nullptr, nullptr, nullptr, 6, 0);
    menu.LoadDir();
    clear(0, 0, 0);
    menu.draw();
    EXPECT_EQ(inkedRows(), (std::vector<bool>{true, true, false, false, false, false}));

    EXPECT_EQ(send(menu, KEY_A), EVENT_CHDIR);
    ASSERT_EQ(shown(menu), (Names{"..", "bad\xff\xfe.mkv", longName, "影片.mkv"}));
    clear(0, 0, 0);
    menu.draw();
    EXPECT_EQ(inkedRows(), (std::vector<bool>{true, true, true, true, false, false}));
}
