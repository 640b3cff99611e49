#include "player/app_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"

// -d names the root; a single file given with a path names its folder instead.
TEST(CheckOpts, TheSingleFileNamesTheRootUnlessItHasNoPath) {
    struct Row { std::vector<std::string> args; std::string root, file; } rows[] = {
        {{"p", "-d", "/x", "-f", "/a/b/film.mp4", "y"}, "/a/b", "/a/b/film.mp4"},
        {{"p", "-d", "/media", "-f", "film.mp4"}, "/media", "film.mp4"},
        {{"p", "-f", "/film.mp4"}, "", "/film.mp4"},
        {{"p"}, "/mnt/", ""},
    };
    for (Row& row : rows) {
        std::vector<char*> argv;
        for (std::string& a : row.args) argv.push_back(&a[0]);
        argv.push_back(nullptr);
        gUserPath = "/mnt/";
        gUserFile.clear();
        CaptureStdout quiet;
        check_opts((int)row.args.size(), argv.data());
        applyUserFileRoot();
        EXPECT_EQ(gUserPath, row.root) << row.args.size();
        EXPECT_EQ(gUserFile, row.file) << row.args.size();
    }
}
