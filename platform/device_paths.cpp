#include "device_paths.h"

#include <string>

#ifndef KOVANI_PATH_PREFIX
#define KOVANI_PATH_PREFIX ""
#endif

namespace {

const char* const kDevicePaths[DEVICE_PATH_COUNT] = {
    "/mnt/",
    "/tmp/kovani_player",
    "/tmp/kovani_player/cmd",
    "/tmp/kovani_player/status",
    "/tmp/kovani_player/info",
    "/mnt/UDISK/player.json",
    "/mnt/UDISK/system.json",
    "/tmp/kovani_inputd/grab",
    "/tmp/osdd_show_up",
    "/tmp/wpa_status.txt",
    "/dev/disp",
    "/dev/shm/kovani_keyshm",
    "/sys/class/power_supply/axp2202-battery/capacity",
    "/sys/class/power_supply/axp2202-battery/status",
    "/sys/class/power_supply/axp2202-usb/online",
    "/tmp/btdev_addr",
    "/tmp/bluetooth_ready",
    "/sys/devices/virtual/disp/disp/attr/",
    "/dev/dsp1",
    "/dev/shm/kovani_video_plane",
    "/tmp/kovani_device/wpa_supplicant",
    "/tmp/kovani_device/hostapd",
};

struct PathTable {
    std::string prefix;
    std::string paths[DEVICE_PATH_COUNT];

    explicit PathTable(const char* p) { set(p); }
    void set(const char* p) {
        prefix = p ? p : "";
        // A trailing slash on the prefix would double the root's slash.
        while (!prefix.empty() && prefix.back() == '/') prefix.pop_back();
        for (int i = 0; i < DEVICE_PATH_COUNT; i++) paths[i] = prefix + kDevicePaths[i];
    }
};

PathTable& table() {
    static PathTable sTable(KOVANI_PATH_PREFIX);
    return sTable;
}

}  // namespace

const char* devicePath(int id) {
    if (id < 0 || id >= DEVICE_PATH_COUNT) return "";
    return table().paths[id].c_str();
}

void setDevicePathPrefix(const char* prefix) { table().set(prefix); }

const char* devicePathPrefix() { return table().prefix.c_str(); }

bool deviceIsStandIn() { return !table().prefix.empty(); }
