#include "toolkit/dir_browser.h"

#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"
#include "tests/toolkit/folder_fixture.h"
#include "toolkit/entry_order.h"

namespace {

typedef std::vector<std::string> Names;

// Files named "*.txt" are refused.
TextMenuItem* refuseText(const char* name, const char* path, int type) {
    const size_t n = strlen(name);
    if (n >= 4 && strcmp(name + n - 4, ".txt") == 0) return nullptr;
    return entryFor(name, path, type);
}

// Reading the same folder of 20000 files through links named "take<N>"
// keeps only its first N files, so one folder gives cached lists of
// several sizes.
TextMenuItem* firstFilesOfTake(const char* name, const char* path, int type) {
    const char* take = strstr(path, "/take");
    if (type == DIR_ENTRY_FILE && take && atoi(name + 1) >= atoi(take + 5)) return nullptr;
    return entryFor(name, path, type);
}

void freeList(std::vector<void*>& list) {
    for (void* entry : list) delete static_cast<TextMenuItem*>(entry);
    list.clear();
}

Names cachedPaths(const DirBrowser& browser, const std::string& prefix) {
    Names out;
    for (const MenuCache& record : browser.mCache) out.push_back(record.path.substr(prefix.size()));
    return out;
}

Names stackBelow(const DirBrowser& browser, const std::string& prefix) {
    Names out;
    for (const std::string& dir : browser.mDirStack) out.push_back(dir.substr(prefix.size()));
    return out;
}

}  // namespace

TEST(LoadDirTest, FoldersComeFirstThenFilesEachInByteOrder) {
    TempFolder top;
    // Hidden folders are never offered, ".." only below the top; hidden files are.
    for (const char* name : {"Zeta", "alpha", "Beta", "中文目录", "10", "9", ".thumbnails", "..more"})
        top.dir(name);
    for (const char* name : {"b.mkv", "B.mkv", "a.avi", "10.mp4", "9.mp4", "abc.mp4", "Abc.mp4",
                             "视频.mp4", "_x.mkv", ".hidden.mkv"})
        top.file(name);
    const Names listed = {"10",     "9",     "Beta",    "Zeta",  "alpha", "中文目录",
                          ".hidden.mkv", "10.mp4", "9.mp4", "Abc.mp4", "B.mkv", "_x.mkv",
                          "a.avi",  "abc.mp4", "b.mkv", "视频.mp4"};
    Names withParent = listed;
    withParent.insert(withParent.begin(), "..");
    const struct { int withParent; Names expected; } cases[] = {{0, listed}, {1, withParent}};
    for (const auto& c : cases) {
        std::vector<void*> list;
        EXPECT_EQ(loaddir(&list, top.path().c_str(), entryFor, c.withParent), int(c.expected.size()));
        EXPECT_EQ(labelsOf(&list), c.expected) << "withParent " << c.withParent;
        for (size_t i = 0; i < list.size(); i++) EXPECT_EQ(pathOf(&list, i), top / labelsOf(&list)[i]);
        freeList(list);
    }
}

TEST(LoadDirTest, OddEntriesAreListedOrLeftOutWithoutHarm) {
    TempFolder top;
    const std::string longName = std::string(251, 'a') + ".mkv";
    ASSERT_EQ(longName.size(), 255u);
    top.file(longName);
    top.file("bad\xff\xfe.mkv");
    top.file("refused.txt");
    top.dir("sub");
    ASSERT_EQ(symlink("loop", (top / "loop").c_str()), 0);
    ASSERT_EQ(symlink("missing", (top / "dangling").c_str()), 0);
    ASSERT_EQ(symlink(longName.c_str(), (top / "linkfile.mkv").c_str()), 0);
    ASSERT_EQ(symlink("sub", (top / "linkdir").c_str()), 0);
    ASSERT_EQ(mkfifo((top / "pipe").c_str(), 0644), 0);

    std::vector<void*> list;
    EXPECT_EQ(loaddir(&list, top.path().c_str(), refuseText, 0), 5);
    EXPECT_EQ(labelsOf(&list), (Names{"linkdir", "sub", longName, "bad\xff\xfe.mkv", "linkfile.mkv"}));
    EXPECT_EQ(pathOf(&list, 2), top / longName);
    freeList(list);
}

TEST(LoadDirTest, FolderThatCannotBeOpenedGivesNoEntries) {
    TempFolder top;
    const std::string plainFile = top.file("clip.mkv");
    ASSERT_EQ(symlink("loop", (top / "loop").c_str()), 0);
    const std::string locked = top.dir("locked");
    top.file("locked/clip.mkv");
    chmod(locked.c_str(), 0);
    std::vector<std::string> dirs = {top / "missing", plainFile, top / "loop", top / std::string(300, 'x')};
    // The superuser reads any folder whatever its mode.
    if (geteuid() != 0) dirs.push_back(locked);
    for (const std::string& dir : dirs) {
        std::vector<void*> list;
        CaptureStdout out;
        EXPECT_EQ(loaddir(&list, dir.c_str(), entryFor, 0), 0) << dir;
        EXPECT_TRUE(list.empty()) << dir;
    }
    chmod(locked.c_str(), 0755);
}

TEST(DirBrowserTest, StartFolderBelowTheTopBuildsTheStackAndOthersShowTheTop) {
    TempFolder t;
    t.dir("top/A/B");
    t.file("top/A/B/clip.mkv");
    t.dir("topX/A");
    const std::string top = t / "top";
    const struct {
        const char* start;  // below the temporary folder; null: none
        Names stack;
        Names shown;
    } cases[] = {
        {nullptr, {"top"}, {"A"}},
        {"top/A/B", {"top", "top/A", "top/A/B"}, {"..", "clip.mkv"}},
        {"top//A", {"top", "top/A"}, {"..", "B"}},
        {"topX/A", {"top"}, {"A"}},
    };
    DirBrowser browser(entryFor, nullptr);
    for (const auto& c : cases) {
        const std::string start = c.start ? t / c.start : "";
        CaptureStdout out;
        std::vector<void*>* list = browser.LoadDir(top.c_str(), c.start ? start.c_str() : nullptr);
        const std::string label = c.start ? c.start : "(none)";
        EXPECT_EQ(stackBelow(browser, t.path() + "/"), c.stack) << label;
        EXPECT_EQ(labelsOf(list), c.shown) << label;
        EXPECT_EQ(cachedPaths(browser, t.path() + "/"), Names{c.stack.back()}) << label;
    }
}

TEST(DirBrowserTest, GoingUpStopsAtTheTopAndFoldersSeenBeforeAreNotReadAgain) {
    TempFolder t;
    t.dir("top/A/B");
    t.file("top/A/B/clip.mkv");
    const std::string top = t / "top";
    DirBrowser browser(entryFor, nullptr);
    browser.LoadDir(top.c_str(), (t / "top/A/B").c_str());

    std::vector<void*>* list = browser.ParentDir();
    EXPECT_EQ(stackBelow(browser, t.path() + "/"), (Names{"top", "top/A"}));
    EXPECT_EQ(labelsOf(list), (Names{"..", "B"}));

    list = browser.ParentDir();
    EXPECT_EQ(labelsOf(list), Names{"A"});
    std::vector<void*>* atTop = list;

    CaptureStdout again;
    list = browser.ParentDir();
    EXPECT_EQ(list, atTop);
    EXPECT_EQ(stackBelow(browser, t.path() + "/"), Names{"top"});
    list = browser.ChildDir((top + "/A").c_str());
    list = browser.ChildDir((top + "/A/B").c_str());
    const std::string log = again.finish();
    EXPECT_EQ(labelsOf(list), (Names{"..", "clip.mkv"}));
    EXPECT_EQ(stackBelow(browser, t.path() + "/"), (Names{"top", "top/A", "top/A/B"}));
    EXPECT_EQ(log.find("loaddir "), std::string::npos) << "nothing read again: " << log;
}

TEST(DirBrowserTest, ReadingAnotherFolderDropsLeastRecentlyUsedOnesAboveFortyThousandEntries) {
    TempFolder t;
    ASSERT_TRUE(makeNumberedFiles(t / "top/big", 20000));
    for (const char* take : {"take10000", "take15000", "take20000"})
        ASSERT_EQ(symlink("big", (t / ("top/" + std::string(take))).c_str()), 0);
    t.file("top/other/clip.mkv");
    const std::string top = t / "top";
    const struct {
        Names visits;  // each entered and left again, in this order
        Names cached;  // after entering "other"
    } cases[] = {
        // 45005 entries: the 10000 go, 35005 remain.
        {{"take10000", "take15000", "take20000"}, {"other", "", "take20000", "take15000"}},
        // Entering a cached folder again makes it recent.
        {{"take10000", "take15000", "take20000", "take10000"}, {"other", "", "take10000", "take20000"}},
    };
    for (const auto& c : cases) {
        DirBrowser browser(firstFilesOfTake, nullptr);
        browser.LoadDir(top.c_str(), nullptr);
        for (const std::string& dir : c.visits) {
            browser.ChildDir((top + "/" + dir).c_str());
            browser.ParentDir();
        }
        std::vector<void*>* list = browser.ChildDir((top + "/other").c_str());
        EXPECT_EQ(labelsOf(list), (Names{"..", "clip.mkv"}));
        Names cached = cachedPaths(browser, top);
        for (std::string& path : cached) path.erase(0, path.empty() ? 0 : 1);
        EXPECT_EQ(cached, c.cached) << c.visits.size() << " visits";
    }
}
