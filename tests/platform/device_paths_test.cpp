#include "platform/device_paths.h"

#include <gtest/gtest.h>

#include <string>

TEST(DevicePaths, APrefixMovesEveryPathAndATrailingSlashIsIgnored) {
    const std::string old = devicePathPrefix();
    setDevicePathPrefix("");
    EXPECT_STREQ(devicePath(DEVICE_PATH_PLAYER_CMD), "/tmp/kovani_player/cmd");
    EXPECT_STREQ(devicePath(DEVICE_PATH_PLAYER_CONFIG), "/mnt/UDISK/player.json");
    EXPECT_STREQ(devicePath(DEVICE_PATH_MNT), "/mnt/");

    setDevicePathPrefix("/home/me/device/");
    EXPECT_STREQ(devicePathPrefix(), "/home/me/device");
    EXPECT_STREQ(devicePath(DEVICE_PATH_PLAYER_STATUS), "/home/me/device/tmp/kovani_player/status");
    EXPECT_STREQ(devicePath(DEVICE_PATH_DISP), "/home/me/device/dev/disp");
    for (int id = 0; id < DEVICE_PATH_COUNT; id++)
        EXPECT_EQ(std::string(devicePath(id)).rfind("/home/me/device/", 0), 0u) << id;

    EXPECT_STREQ(devicePath(-1), "");
    EXPECT_STREQ(devicePath(DEVICE_PATH_COUNT), "");
    setDevicePathPrefix(old.c_str());
}
