#pragma once

// Every fixed file, folder and device node the player touches on the handheld.
// All of them pass through here so that a desktop build can move the whole set
// under one folder and tests can point it at a temporary one.
enum DevicePathId {
    DEVICE_PATH_MNT,             // default root of the video browser
    DEVICE_PATH_PLAYER_DIR,      // the decoder's folder
    DEVICE_PATH_PLAYER_CMD,      // decoder command file
    DEVICE_PATH_PLAYER_STATUS,   // decoder status file
    DEVICE_PATH_PLAYER_INFO,     // decoder media-information file
    DEVICE_PATH_PLAYER_CONFIG,   // the player's own settings
    DEVICE_PATH_SYSTEM_CONFIG,   // the device's shared settings (read only)
    DEVICE_PATH_INPUT_GRAB,      // input daemon's grab marker
    DEVICE_PATH_OSD_SHOW,        // on-screen display marker
    DEVICE_PATH_WPA_STATUS,      // scratch file of the Wi-Fi monitor
    DEVICE_PATH_DISP,            // display engine device node
    DEVICE_PATH_KEY_SHM,         // key shared memory backing file
    DEVICE_PATH_BATTERY_CAPACITY,
    DEVICE_PATH_BATTERY_STATUS,
    DEVICE_PATH_USB_ONLINE,
    DEVICE_PATH_BT_DEV_ADDR,     // Bluetooth headphone markers
    DEVICE_PATH_BT_READY,
    DEVICE_PATH_DISP_ATTR_DIR,   // display colour attributes (sysfs)
    DEVICE_PATH_BT_AUDIO,        // sound device of Bluetooth audio, readable while it is on
    DEVICE_PATH_VIDEO_PLANE,     // desktop builds: the decoder's picture, in shared memory
    // Desktops and tests: stand-ins of the device's network daemons (see
    // deviceIsStandIn). The supplicant runs while its file exists, which
    // holds what wpa_cli prints for "status" and "signal_poll"; the hotspot
    // daemon runs while its (empty) file exists.
    DEVICE_PATH_WPA_STAND_IN,
    DEVICE_PATH_HOSTAPD_STAND_IN,
    DEVICE_PATH_COUNT
};

// The path for `id` under the current prefix; "" for an unknown id. The
// pointer stays valid until the next setDevicePathPrefix().
const char* devicePath(int id);

// The prefix before every path: empty on the device, a folder on desktop
// builds. Must only be changed while no other thread reads paths.
void setDevicePathPrefix(const char* prefix);
const char* devicePathPrefix();

// True when the paths lie under a folder: a desktop build or a test. The
// device's daemons are then not the machine's processes (a desktop's own
// wpa_supplicant is not the device's) but stand-ins in that folder.
bool deviceIsStandIn();
