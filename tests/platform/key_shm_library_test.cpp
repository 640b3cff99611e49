#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"

// Our stand-in (support/shmvar_stand_in.cpp) is on the library path as libshmvar.so.
TEST(KeyShmLibrary, UsesTheLibraryOnThePathElseTheStandInWithOneLogLine) {
    TempDeviceRoot root;
    const std::string standInFile = root.at(DEVICE_PATH_KEY_SHM);
    CaptureStdout log;

    KeyShmInfo lib;
    ASSERT_EQ(InitKeyShmWith(&lib, "libshmvar.so"), 0);
    EXPECT_EQ(SetKeyShm(&lib, MONITOR_VOLUME, 17), 0);
    EXPECT_EQ(GetKeyShm(&lib, MONITOR_VOLUME), 17);
    EXPECT_EQ(SetKeyShm(&lib, MONITOR_VALUE_MAX, 1), -1);
    EXPECT_EQ(GetKeyShm(&lib, -1), 0);
    EXPECT_STREQ(reinterpret_cast<const char*>(lib.library), "shmvar stand-in");
    const unsigned char* past = lib.library + 600;
    const unsigned char* end = lib.library + sizeof lib.library;
    EXPECT_TRUE(std::all_of(past, end, [](unsigned char b) { return b == 0; }))
        << "nothing past the library's record";
    EXPECT_EQ(lib.values, nullptr);
    EXPECT_FALSE(fileExists(standInFile)) << "the stand-in is not opened beside the library";
    // A second handle reaches the same values.
    KeyShmInfo other;
    ASSERT_EQ(InitKeyShmWith(&other, "libshmvar.so"), 0);
    EXPECT_EQ(GetKeyShm(&other, MONITOR_VOLUME), 17);
    UninitKeyShm(&other);
    EXPECT_EQ(UninitKeyShm(&lib), 0);
    EXPECT_STREQ(reinterpret_cast<const char*>(lib.library), "shmvar closed") << "the library released it";
    EXPECT_EQ(GetKeyShm(&lib, MONITOR_VOLUME), 0);

    // A library that is missing, or that lacks the functions: the stand-in.
    for (const char* name : {"libshmvar-absent.so", "libm.so.6"}) {
        KeyShmInfo fallback;
        ASSERT_EQ(InitKeyShmWith(&fallback, name), 0) << name;
        EXPECT_EQ(SetKeyShm(&fallback, MONITOR_MUTE, 1), 0) << name;
        EXPECT_EQ(GetKeyShm(&fallback, MONITOR_VOLUME), 0) << name << ": the library's values stay its own";
        EXPECT_TRUE(fileExists(standInFile)) << name;
        UninitKeyShm(&fallback);
    }
    const std::string text = log.finish();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3) << text;
    EXPECT_NE(text.find("using libshmvar.so"), std::string::npos) << text;
    EXPECT_NE(text.find("libshmvar-absent.so not loaded"), std::string::npos) << text;
    EXPECT_NE(text.find("libm.so.6 lacks InitKeyShm"), std::string::npos) << text;
}
