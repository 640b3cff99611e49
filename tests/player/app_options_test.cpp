#include "player/app_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"

namespace {

struct OptionsRun {
    std::string output;
    std::string root;
    std::string file;
};

OptionsRun runOptions(std::vector<std::string> args) {
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(&a[0]);
    argv.push_back(nullptr);
    gUserPath = "/mnt/";
    gUserFile.clear();
    CaptureStdout capture;
    check_opts((int)args.size(), argv.data());
    applyUserFileRoot();
    return {capture.finish(), gUserPath, gUserFile};
}

}  // namespace

TEST(CheckOpts, EchoesFourLinesAndTheSingleFileNamesTheRoot) {
    struct Row {
        std::vector<std::string> args;
        std::string output;
        std::string root;
    } rows[] = {
        {{"./kovani_player", "-d", "/x", "-f", "/a/b/film.mp4", "y"},
         "usage: ./kovani_player [-d base-path] [-f single-file]\nuser path:/x\n"
         "user file:/a/b/film.mp4\nargv single:y\n",
         "/a/b"},
        {{"p", "-f", "/a/b/film.mp4", "-d", "/x"},
         "usage: p [-d base-path] [-f single-file]\nuser file:/a/b/film.mp4\nuser path:/x\n"
         "argv single:\n",
         "/a/b"},
        {{"p", "-f", "film.mp4"},
         "usage: p [-d base-path] [-f single-file]\nuser file:film.mp4\nargv single:\n", "/mnt/"},
        {{"p", "-d", "/media", "-f", "film.mp4"},
         "usage: p [-d base-path] [-f single-file]\nuser path:/media\nuser file:film.mp4\n"
         "argv single:\n",
         "/media"},
        {{"p", "-f", "/film.mp4"},
         "usage: p [-d base-path] [-f single-file]\nuser file:/film.mp4\nargv single:\n", ""},
        {{"p"}, "usage: p [-d base-path] [-f single-file]\nargv single:\n", "/mnt/"},
    };
    for (const Row& row : rows) {
        OptionsRun run = runOptions(row.args);
        EXPECT_EQ(run.output, row.output) << row.args.size();
        EXPECT_EQ(run.root, row.root) << row.output;
    }
}
