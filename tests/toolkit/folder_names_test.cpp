#include "toolkit/folder_names.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <string>

#include "tests/toolkit/folder_fixture.h"

namespace {

// What each name of a big folder is, by its number: folders, files, and
// names that list as nothing (a pipe, a dangling link).
FolderNames::Kind kindFor(int i) {
    switch (i % 5) {
        case 0: return FolderNames::KIND_FOLDER;
        case 1:
        case 2: return FolderNames::KIND_OTHER;
        default: return FolderNames::KIND_FILE;
    }
}

class FolderNamesTest : public ::testing::Test {
protected:
    void SetUp() override {
        char name[32];
        for (int i = 0; i < kNames; i++) {
            snprintf(name, sizeof name, "n%05d", i);
            mExpected[name] = kindFor(i);
            const std::string path = mTop / name;
            if (i % 5 == 0) {
                mTop.dir(name);
            } else if (i % 5 == 1) {
                ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
            } else if (i % 5 == 2) {
                ASSERT_EQ(symlink("missing", path.c_str()), 0);
            } else {
                mTop.file(name);
            }
        }
    }

    // Many chunks, far more than one thread would be given alone.
    static const int kNames = 6000;
    TempFolder mTop;
    std::map<std::string, FolderNames::Kind> mExpected;
};

}  // namespace

// However the stats are shared out (the caller racing the helper for the
// chunks, or the helper far ahead of a caller busy with each entry), every
// name gets its own kind: a mix-up would list a pipe as a video or drop a
// folder.
TEST_F(FolderNamesTest, EveryNameGetsItsOwnKindHoweverTheStatsAreShared) {
    for (const bool slowCaller : {false, true}) {
        DIR* folder = opendir(mTop.path().c_str());
        ASSERT_NE(folder, nullptr);
        FolderNames names(dirfd(folder));
        // The folder may close at once: the names keep their own handle.
        std::map<std::string, FolderNames::Kind> seen;
        for (const dirent* e; (e = readdir(folder)) != nullptr;) {
            if (e->d_name[0] == '.') continue;
            ASSERT_TRUE(names.add(e->d_name));
        }
        closedir(folder);
        ASSERT_EQ(names.size(), size_t(kNames));
        for (size_t i = 0; i < names.size(); i++) {
            if (slowCaller && i % 100 == 0) usleep(500);
            seen[names.name(i)] = names.kindOf(i);
        }
        EXPECT_EQ(seen, mExpected) << (slowCaller ? "slow caller" : "fast caller");
    }
}

// A caller that has what it needs part way stops the helper and goes on;
// nothing is asked after the end.
TEST_F(FolderNamesTest, ACallerDoneEarlyEndsTheHelper) {
    DIR* folder = opendir(mTop.path().c_str());
    ASSERT_NE(folder, nullptr);
    {
        FolderNames names(dirfd(folder));
        for (const dirent* e; (e = readdir(folder)) != nullptr;) names.add(e->d_name);
        EXPECT_EQ(names.kindOf(names.size()), FolderNames::KIND_OTHER);
        for (size_t i = 0; i < 300; i++) names.kindOf(i);
        names.done();
        EXPECT_FALSE(names.add("late")) << "names are fixed once kinds are asked";
    }
    closedir(folder);
}
