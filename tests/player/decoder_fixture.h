#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "platform/device_paths.h"
#include "tests/support/temp_dir.h"

// Device paths in a temporary root, a working folder of their own (the stand-in
// decoder writes its arguments there) and the stand-in decoder first on PATH.
class DecoderFixture : public ::testing::Test {
protected:
    void SetUp() override {
        makeDirs(mRoot.at(DEVICE_PATH_PLAYER_DIR));
        mWork = mRoot.path() + "/work";
        makeDirs(mWork);
        char cwd[4096];
        mOldCwd = getcwd(cwd, sizeof cwd) ? cwd : "/";
        ASSERT_EQ(chdir(mWork.c_str()), 0);
        const char* path = getenv("PATH");
        mOldPath = path ? path : "";
        setenv("PATH", (std::string(KOVANI_TEST_DECODER_DIR) + ":" + mOldPath).c_str(), 1);
    }
    void TearDown() override {
        (void)system("killall -q avworker");
        setenv("PATH", mOldPath.c_str(), 1);
        (void)chdir(mOldCwd.c_str());
    }

    std::string cmdFile() const { return readFile(mRoot.at(DEVICE_PATH_PLAYER_CMD)); }
    std::string work(const std::string& name) const { return mWork + "/" + name; }

    TempDeviceRoot mRoot;
    std::string mWork;
    std::string mOldCwd;
    std::string mOldPath;
};
