#pragma once

// Toolkit key and event codes: what wait_event returns and what windows pass
// on. Codes from EVENT_BATTERY on arrive only as SDL user events whose `code`
// carries them.
enum {
    KEY_NONE = 0,
    KEY_A = 1,
    KEY_B = 2,
    KEY_X = 3,
    KEY_Y = 4,
    KEY_UP = 5,
    KEY_DOWN = 6,
    KEY_LEFT = 7,
    KEY_RIGHT = 8,
    KEY_START = 9,
    KEY_SELECT_COIN = 10,
    KEY_MENU_KEY = 11,
    KEY_HOTKEY1 = 12,
    KEY_HOTKEY2 = 13,
    KEY_HOTKEY3 = 14,
    KEY_HOTKEY4 = 15,
    TEST_KEY_PWR = 16,
    TEST_KEY_VOL_UP = 17,
    TEST_KEY_VOL_DOWN = 18,
    EVENT_BATTERY = 19,
    EVENT_HOTPLUG = 20,
    EVENT_NOTIFY = 21,
    EVENT_POWEROFF = 22,
    EVENT_COUNTDOWN = 23,
    EVENT_POWEROFF_NOW = 24,
    EVENT_REFRESH = 25,
    EVENT_CHDIR = 26,
    EVENT_TEST_TIMEOUT = 27,
    EVENT_WIFI_SCAN_END = 28,
    EVENT_NEW_MESSAGE = 29,
    EVENT_WIFI_CONNECTED = 30,
    EVENT_WIFI_REFRESH = 31,
    EVENT_BLUETOOTH_SCAN = 32,
    EVENT_BLUETOOTH_SCAN_FAIL = 33,
    EVENT_BLUETOOTH_ITEM = 34,
    EVENT_BLUETOOTH_CONNECT_OK = 35,
    EVENT_BLUETOOTH_CONNECT_FAIL = 36,
    EVENT_BLUETOOTH_MEDIACONTROL = 37,
    EVENT_BLUETOOTH_REMOVED = 38,
    EVENT_WIFI_CONNECT_FAIL = 39,
    EVENT_DOWNLOAD_OK = 40,
    EVENT_DOWNLOAD_FAIL = 41,
    EVENT_MARKET_REFRESH = 42,
    EVENT_SDCARD_MOUNTED = 43,
    EVENT_SDCARD_UMOUNTED = 44,
    EVENT_POPUP_RETURN_VALUE = 45,
    EVENT_ICON_MENU_EDITOR = 46,
    EVENT_EXTUDISK_MOUNTED = 47,
    EVENT_EXTUDISK_UMOUNTED = 48,
    EVENT_PLAY_FILE = 49,
    EVENT_PLAY_COMPLETE = 50,
    EVENT_SEEK_COMPLETE = 51,
    EVENT_FILE_REMOVED = 52,
    KEY_MAX_KEY = 53
};

// Window-stack codes returned by KovaniWindow::eventHandling().
enum {
    WINDOW_CLOSE = 1002,        // close the top window unless it is the last
    WINDOW_QUIT = 1003,         // end the main loop
    WINDOW_QUIT_ALL = 1004,     // end the main loop
    WINDOW_CLOSE_LAST = 1005,   // close the top window even when it is the last
    WINDOW_HANDLED = 1008,      // handled; nothing for the loop to do
    WINDOW_SHOW_NOW = 1009,     // handled; what changed is drawn at once, ahead of the pace
};
