#include "player/app_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"

TEST(CheckOpts, EchoesTheOptionsAndTheSingleFileNamesTheRootUnlessAPathIsGiven) {
    struct Row { std::vector<std::string> args; std::string root, echo; } rows[] = {
        {{"p", "-d", "/x", "-f", "/a/b/film.mp4", "y"}, "/a/b",
         "usage: p [-d base-path] [-f single-file]\nuser path:/x\nuser file:/a/b/film.mp4\nargv single:y\n"},
        {{"p", "-d", "/media", "-f", "film.mp4"}, "/media",
         "usage: p [-d base-path] [-f single-file]\nuser path:/media\nuser file:film.mp4\nargv single:\n"},
        {{"p", "-f", "/film.mp4"}, "", "usage: p [-d base-path] [-f single-file]\nuser file:/film.mp4\nargv single:\n"},
        {{"p"}, "/mnt/", "usage: p [-d base-path] [-f single-file]\nargv single:\n"},
    };
    for (Row& row : rows) {
        std::vector<char*> argv;
        for (std::string& a : row.args) argv.push_back(&a[0]);
        argv.push_back(nullptr);
        gUserPath = "/mnt/";
        gUserFile.clear();
        CaptureStdout capture;
        check_opts((int)row.args.size(), argv.data());
        applyUserFileRoot();
        EXPECT_EQ(capture.finish(), row.echo);
        EXPECT_EQ(gUserPath, row.root) << row.echo;
    }
}
