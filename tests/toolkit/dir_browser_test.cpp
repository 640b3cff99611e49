#include "toolkit/dir_browser.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"
#include "tests/toolkit/folder_fixture.h"

namespace {

typedef std::vector<std::string> Names;

// Files named "*.txt" are refused.
TextMenuItem* filtered(const char* name, const char* path, int type) {
    const size_t n = strlen(name);
    return n >= 4 && strcmp(name + n - 4, ".txt") == 0 ? nullptr : entryFor(name, path, type);
}

// Lists `dir` as loaddir does, checks each entry's path and frees them.
Names load(const std::string& dir, int withParent, TextMenuItem* (*make)(const char*, const char*, int) = entryFor) {
    std::vector<void*> list;
    CaptureStdout quiet;
    const int count = loaddir(&list, dir.c_str(), make, withParent);
    const Names labels = labelsOf(&list);
    EXPECT_EQ(count, int(labels.size()));
    for (size_t i = 0; i < list.size(); i++) {
        TextMenuItem* item = static_cast<TextMenuItem*>(list[i]);
        EXPECT_EQ(static_cast<FileAction*>(item->getAction())->mPath, dir + "/" + labels[i]);
        delete item;
    }
    return labels;
}

// Paths below `prefix` of the browser's cached folders and folder stack.
Names cached(const DirBrowser& browser, const std::string& prefix) {
    Names out;
    for (const MenuCache& record : browser.mCache) out.push_back(record.path.substr(prefix.size()));
    return out;
}
Names stack(const DirBrowser& browser, const std::string& prefix) {
    Names out;
    for (const std::string& dir : browser.mDirStack) out.push_back(dir.substr(prefix.size()));
    return out;
}

}  // namespace

TEST(LoadDirTest, FoldersComeFirstThenFilesEachInByteOrder) {
    TempFolder top;
    // Hidden folders are never offered; hidden files are.
    for (const char* name : {"Zeta", "alpha", "Beta", "中文目录", "10", "9", ".thumbnails", "..more"}) top.dir(name);
    // Names alike in their first 16 bytes, ending within them or at them,
    // and a byte above 0x7f there: the order is strcmp's throughout.
    for (const char* name : {"b.mkv", "B.mkv", "a.avi", "10.mp4", "9.mp4", "abc.mp4", "Abc.mp4", "视频.mp4",
                             "_x.mkv", ".hidden.mkv", "Episode 01 part 2.mkv", "Episode 01 part 10.mkv",
                             "Sixteen byte.mp4", "Sixteen byte.mp4.mkv", "Sixteen byte.mp", "Sixteen bytf.mp4",
                             "Sixteen byté.mp4"})
        top.file(name);
    const Names listed = {"10", "9", "Beta", "Zeta", "alpha", "中文目录", ".hidden.mkv", "10.mp4", "9.mp4",
                          "Abc.mp4", "B.mkv", "Episode 01 part 10.mkv", "Episode 01 part 2.mkv",
                          "Sixteen byte.mp", "Sixteen byte.mp4", "Sixteen byte.mp4.mkv", "Sixteen bytf.mp4",
                          "Sixteen byté.mp4", "_x.mkv", "a.avi", "abc.mp4", "b.mkv", "视频.mp4"};
    EXPECT_EQ(load(top.path(), 0), listed);
}

TEST(LoadDirTest, OddEntriesAreListedOrLeftOutWithoutHarm) {
    TempFolder top;
    const std::string longName = std::string(251, 'a') + ".mkv";
    top.file(longName);
    top.file("bad\xff\xfe.mkv");
    top.file("refused.txt");
    top.dir("sub");
    ASSERT_EQ(symlink("loop", (top / "loop").c_str()), 0);
    ASSERT_EQ(symlink("missing", (top / "dangling").c_str()), 0);
    ASSERT_EQ(symlink(longName.c_str(), (top / "linkfile.mkv").c_str()), 0);
    ASSERT_EQ(symlink("sub", (top / "linkdir").c_str()), 0);
    ASSERT_EQ(mkfifo((top / "pipe").c_str(), 0644), 0);
    EXPECT_EQ(load(top.path(), 0, filtered), (Names{"linkdir", "sub", longName, "bad\xff\xfe.mkv", "linkfile.mkv"}));

    // Folders that cannot be read give no entries.
    const std::string locked = top.dir("locked");
    top.file("locked/clip.mkv");
    chmod(locked.c_str(), 0);
    Names unreadable = {top / "missing", top / longName, top / "loop", top / std::string(300, 'x')};
    // The superuser reads any folder whatever its mode.
    if (geteuid() != 0) unreadable.push_back(locked);
    for (const std::string& dir : unreadable) EXPECT_EQ(load(dir, 0), Names{}) << dir;
    chmod(locked.c_str(), 0755);
}

// The entries listed are the first the folder yields that the handler
// takes, whichever thread looked at them; refused names do not count
// towards the limit, and every name after it is counted for the log.
TEST(LoadDirTest, AFolderOverTheLimitListsItsFirstEntriesAndLogsHowManyMore) {
    TempFolder top;
    char name[32];
    for (int i = 0; i < kDirEntryLimit + 4000; i++) {
        snprintf(name, sizeof name, i % 7 == 0 ? "f%05d.txt" : "f%05d.mkv", i);
        top.file(name);
    }
    Names read;
    DIR* folder = opendir(top.path().c_str());
    ASSERT_NE(folder, nullptr);
    for (const dirent* e; (e = readdir(folder)) != nullptr;)
        if (e->d_name[0] != '.') read.push_back(e->d_name);
    closedir(folder);
    Names expected;
    size_t last = 0;
    for (; last < read.size() && expected.size() < size_t(kDirEntryLimit); last++)
        if (read[last].find(".txt") == std::string::npos) expected.push_back(read[last]);
    std::sort(expected.begin(), expected.end());

    std::vector<void*> list;
    CaptureStdout log;
    EXPECT_EQ(loaddir(&list, top.path().c_str(), filtered, 0), kDirEntryLimit);
    EXPECT_EQ(labelsOf(&list), expected);
    const std::string more = ": " + std::to_string(read.size() - last) + " more names left unread";
    EXPECT_NE(log.finish().find(more), std::string::npos) << more;
    for (void* entry : list) delete static_cast<TextMenuItem*>(entry);
}

TEST(DirBrowserTest, StartFolderBelowTheTopBuildsTheStackAndOthersShowTheTop) {
    TempFolder t;
    t.file("top/A/B/clip.mkv");
    t.dir("topX/A");
    const std::string top = t / "top";
    // A start folder too deep for any real one, and one too long for a path.
    std::string deep = "top", huge = "top";
    for (int i = 0; i <= kDirDepthLimit; i++) deep += "/A";
    for (int i = 0; i < 30000; i++) huge += "/A";
    const struct { const char* start; Names stack, shown; } cases[] = {
        {nullptr, {"top"}, {"A"}},
        {"top/A/B", {"top", "top/A", "top/A/B"}, {"..", "clip.mkv"}},
        {"top//A", {"top", "top/A"}, {"..", "B"}},
        {"top/A/./../A/B", {"top", "top/A", "top/A/B"}, {"..", "clip.mkv"}},
        {"topX/A", {"top"}, {"A"}},
        {"top/A/../../topX/A", {"top"}, {"A"}},
        {deep.c_str(), {"top"}, {"A"}},
        {huge.c_str(), {"top"}, {"A"}},
    };
    DirBrowser browser(entryFor, nullptr);
    for (const auto& c : cases) {
        const std::string start = c.start ? t / c.start : "";
        CaptureStdout log;
        std::vector<void*>* list = browser.LoadDir(top.c_str(), c.start ? start.c_str() : nullptr);
        const std::string logged = log.finish();
        const std::string label = c.start ? std::string(c.start).substr(0, 40) : "(none)";
        EXPECT_EQ(stack(browser, t.path() + "/"), c.stack) << label;
        EXPECT_EQ(labelsOf(list), c.shown) << label;
        EXPECT_EQ(cached(browser, t.path() + "/"), Names{c.stack.back()}) << label;
        // A line per stack level and one for the read, or one for the fallback.
        EXPECT_LE(std::count(logged.begin(), logged.end(), '\n'), long(c.stack.size()) + 2) << label;
    }
    // A top folder given with its trailing "/", as the default one is.
    browser.LoadDir((top + "/").c_str(), (t / "top/A").c_str());
    EXPECT_EQ(stack(browser, t.path() + "/"), (Names{"top/", "top/A"}));
}


// A folder left a moment ago comes back from the cache, not from the disk.
TEST(DirBrowserTest, FoldersSeenAMomentAgoComeFromTheCache) {
    TempFolder t;
    t.file("top/A/clip.mkv");
    t.file("top/b.mkv");
    DirBrowser browser(entryFor, nullptr);
    CaptureStdout quiet;
    std::vector<void*>* top = browser.LoadDir((t / "top").c_str(), nullptr);
    std::vector<void*>* inA = browser.ChildDir((t / "top/A").c_str());
    t.file("top/new.mkv");
    t.file("top/A/new.mkv");
    EXPECT_EQ(browser.ParentDir(), top);
    EXPECT_EQ(labelsOf(top), (Names{"A", "b.mkv"}));
    EXPECT_EQ(browser.ChildDir((t / "top/A").c_str()), inA);
    EXPECT_EQ(labelsOf(inA), (Names{"..", "clip.mkv"}));
}
