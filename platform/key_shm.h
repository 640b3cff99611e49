#pragma once

// Stand-in for the device's key shared-memory library: a small array of int
// values that the device's daemons and this program read and write. Our
// version maps one file (see DEVICE_PATH_KEY_SHM) into every process that
// opens it, so values set by one process are seen by all others at once.
//
// Contract:
//  - InitKeyShm opens (creating when needed) the shared block; 0 on success,
//    -1 on failure with the handle left unusable.
//  - GetKeyShm returns the slot's value, 0 for a bad slot or an unusable handle.
//  - SetKeyShm stores a value; 0 on success, -1 for a bad slot or handle.
//  - UninitKeyShm releases the mapping; the values stay for other processes.
// Every slot is read and written atomically.

enum {
    MONITOR_VOLUME = 0,
    MONITOR_BRIGHTNESS = 1,
    MONITOR_KEYMAP = 2,
    MONITOR_MUTE = 3,
    MONITOR_VOLUME_CHANGED = 4,
    MONITOR_BGM_VOLUME = 5,
    MONITOR_NETPLAY_MODE = 6,
    MONITOR_CPU_FREQ = 7,
    MONITOR_LED_SWITCH = 8,
    MONITOR_MENULIST_STYLE_L1 = 9,
    MONITOR_LED_BRIGHTNESS = 10,
    MONITOR_MENULIST_STYLE_L2 = 11,
    MONITOR_RUMBLE_LEVEL = 12,
    MONITOR_DIM_TIME = 13,
    MONITOR_WIFI_SWITCH = 14,
    MONITOR_HOSTAP_SWITCH = 15,
    MONITOR_BLUETOOTH_SWITCH = 16,
    MONITOR_RUMBLE_SWITCH = 17,
    MONITOR_OSD_SHORTCUT = 18,
    MONITOR_B_CONFIRM = 19,
    MONITOR_VALUE_MAX = 20
};

struct KeyShmInfo {
    int fd = -1;
    int* values = nullptr;  // owned mapping of MONITOR_VALUE_MAX ints
};

int InitKeyShm(KeyShmInfo* info);
int GetKeyShm(KeyShmInfo* info, int index);
int SetKeyShm(KeyShmInfo* info, int index, int value);
int UninitKeyShm(KeyShmInfo* info);
