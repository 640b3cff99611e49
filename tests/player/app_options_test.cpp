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

TEST(CheckOpts, TheSingleFileNamesTheRootUnlessAPathIsGiven) {
    struct Row { std::vector<std::string> args; std::string root; } rows[] = {
        {{"p", "-d", "/x", "-f", "/a/b/film.mp4", "y"}, "/a/b"},
        {{"p", "-d", "/media", "-f", "film.mp4"}, "/media"},
        {{"p", "-f", "/film.mp4"}, ""},
        {{"p"}, "/mnt/"},
    };
    for (const Row& row : rows) {
        const OptionsRun run = runOptions(row.args);
        EXPECT_EQ(run.root, row.root) << run.output;
    }
}
