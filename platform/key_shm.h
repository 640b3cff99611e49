#pragma once

// The key shared memory: a small array of int values that the device's
// daemons and this program read and write. On the device it belongs to the
// device's own library, which the device-package build loads at run time
// (KOVANI_KEY_SHM_LIBRARY). Everywhere else, and on a device without that
// library, our stand-in serves: it maps one file (see DEVICE_PATH_KEY_SHM)
// into every process that opens it, so values set by one process are seen by
// all others at once.
//
// Contract (both implementations):
//  - InitKeyShm opens (creating when needed) the shared block; 0 on success,
//    -1 on failure with the handle left unusable.
//  - GetKeyShm returns the slot's value, 0 for a bad slot or an unusable handle.
//  - SetKeyShm stores a value; 0 on success, -1 for a bad slot or handle.
//  - UninitKeyShm releases the handle; the values stay for other processes.
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

struct KeyShmOps;  // the implementation behind a handle (key_shm.cpp)

// Room for a loaded library's own handle record.
const int KEY_SHM_LIBRARY_RECORD_BYTES = 1024;

struct KeyShmInfo {
    const KeyShmOps* ops = nullptr;  // not owned; set by InitKeyShm, cleared by UninitKeyShm
    // The stand-in's handle.
    int fd = -1;
    int* values = nullptr;  // owned mapping of MONITOR_VALUE_MAX ints
    // A loaded library's handle record. Its layout is that library's business:
    // we own the room, zero it and pass it by pointer. It is far larger than
    // the few descriptors and pointers such a record holds, so a record that
    // grows with a newer library still fits.
    alignas(16) unsigned char library[KEY_SHM_LIBRARY_RECORD_BYTES] = {};
};

int InitKeyShm(KeyShmInfo* info);
int GetKeyShm(KeyShmInfo* info, int index);
int SetKeyShm(KeyShmInfo* info, int index, int value);
int UninitKeyShm(KeyShmInfo* info);

// Opens `info` on the shared library `library` (a file name looked up on the
// library path) when it loads and has all four functions; otherwise on the
// stand-in, after one log line that says why. InitKeyShm does this with the
// device's library in device-package builds (deciding once per process), and
// opens the stand-in directly in all other builds.
int InitKeyShmWith(KeyShmInfo* info, const char* library);

// The library InitKeyShm looks for, or null when it always uses the stand-in.
const char* keyShmLibraryName();
