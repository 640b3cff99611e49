#include "player/player_settings.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <future>
#include <string>

#include "platform/device_paths.h"
#include "player/app_options.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"
#include "toolkit/system_state.h"

namespace {

class PlayerSettingsTest : public ::testing::Test {
protected:
    void TearDown() override { reset(); }
    // Loading starts from the defaults.
    void reset() {
        gPlayerAspectRatio = RATIO16_9;
        gSavedDir.clear();
        gAudioTrack = 0;
    }
    std::string file() const { return mRoot.at(DEVICE_PATH_PLAYER_CONFIG); }
    TempDeviceRoot mRoot;
    CaptureStdout mQuiet;
};

}  // namespace

TEST_F(PlayerSettingsTest, LoadTakesEachValidMemberAndIgnoresTheRest) {
    std::string deep = "/mnt/UDISK";
    for (int i = 0; i < 30000; i++) deep += "/a";
    struct Row {
        std::string text;  // "": no file
        int result, ratio, rotation, speed, track;
        const char* dir;
    } rows[] = {
        {R"({"ratio": 2, "rotation": 1, "speed": 7})", 0, 2, 1, 7, 0, ""},
        {R"({"ratio": 5, "rotation": -1, "speed": 9})", 0, 0, 0, 4, 0, ""},
        {R"({"ratio": "2", "rotation": 3.9, "speed": 0, "audiotrack": 2, "dir": "/mnt/SDCARD/Films"})",
         0, 0, 3, 0, 2, "/mnt/SDCARD/Films"},
        {R"({"dir": 7, "audiotrack": "1"})", 0, 0, 0, 4, 0, ""},
        {R"({"ratio": 2,)", -1, 0, 0, 4, 0, ""},
        {"{\"dir\": \"" + deep + "\"}", 0, 0, 0, 4, 0, ""},
        {"", -1, 0, 0, 4, 0, ""},
    };
    for (const Row& row : rows) {
        const std::string name = row.text.empty() ? "(none)" : row.text.substr(0, 80);
        reset();
        unlink(file().c_str());
        if (!row.text.empty()) writeFileAtomic(file(), row.text);
        EXPECT_EQ(loadPlayerConfig(), row.result) << name;
        EXPECT_EQ(gPlayerAspectRatio, row.ratio) << name;
        EXPECT_EQ(gPlayerRotation, row.rotation) << name;
        EXPECT_EQ(gPlayerSpeed, row.speed) << name;
        EXPECT_EQ(gAudioTrack, row.track) << name;
        EXPECT_EQ(gSavedDir, row.dir) << name;
    }
    const std::string log = mQuiet.finish();
    EXPECT_LT(std::count(log.begin(), log.end(), '\n'), 10);
}

TEST_F(PlayerSettingsTest, SaveReplacesTheWholeFileAndLoadsBack) {
    writeFileAtomic(file(), std::string(4000, ' ') + "{\"old\": true}");
    gPlayerAspectRatio = RATIO4_3;
    gPlayerRotation = VIDEO_ROTATE_DEGREE_270;
    gPlayerSpeed = VIDEO_SPEED_FAST_FORWARD_2;
    gSavedDir = "/mnt/SDCARD/Mes films \"2024\"";
    gAudioTrack = 2;
    savePlayerConfig();
    EXPECT_EQ(readFile(file()).find("old"), std::string::npos) << "nothing of the old file is left";
    EXPECT_FALSE(fileExists(file() + ".tmp")) << "written beside and renamed over";

    reset();
    gPlayerAspectRatio = RATIO_DEFAULT;
    EXPECT_EQ(loadPlayerConfig(), 0);
    EXPECT_EQ(gPlayerAspectRatio, RATIO4_3);
    EXPECT_EQ(gPlayerRotation, VIDEO_ROTATE_DEGREE_270);
    EXPECT_EQ(gPlayerSpeed, VIDEO_SPEED_FAST_FORWARD_2);
    EXPECT_EQ(gSavedDir, "/mnt/SDCARD/Mes films \"2024\"");
    EXPECT_EQ(gAudioTrack, 2);
}

// A FIFO nobody writes in place of either settings file must not hold up the
// start: it counts as no file.
TEST_F(PlayerSettingsTest, AFifoInPlaceOfASettingsFileDoesNotHoldUpTheStart) {
    KeyShmInfo shm;
    ASSERT_EQ(InitKeyShm(&shm), 0);
    const struct {
        int path;
        std::function<void()> load;
    } rows[] = {
        {DEVICE_PATH_PLAYER_CONFIG, [] { EXPECT_EQ(loadPlayerConfig(), -1); }},
        {DEVICE_PATH_SYSTEM_CONFIG, [&shm] { loadSystemState(&shm, nullptr); }},
    };
    for (const auto& row : rows) {
        const std::string path = mRoot.at(row.path);
        makeDirs(path.substr(0, path.rfind('/')));
        ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
        auto done = std::async(std::launch::async, row.load);
        if (done.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
            close(open(path.c_str(), O_WRONLY));  // lets the stuck open go
            ADD_FAILURE() << path << " held up the start";
        }
    }
    UninitKeyShm(&shm);
}
