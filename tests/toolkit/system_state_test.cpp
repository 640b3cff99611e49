#include "toolkit/system_state.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <map>
#include <string>

#include "platform/device_paths.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"
#include "toolkit/lang.h"

namespace {

const int kUntouched = -7;
const char* const kAttrFiles[] = {"color_temperature", "enhance_bright", "enhance_contrast",
                                  "enhance_saturation"};

// Slot values after reading a file that holds none of the keys.
const std::map<int, int> kReadDefaults = {
    {MONITOR_VOLUME, 14},          {MONITOR_BRIGHTNESS, 6},
    {MONITOR_KEYMAP, 0},           {MONITOR_MUTE, 0},
    {MONITOR_BGM_VOLUME, 10},      {MONITOR_NETPLAY_MODE, 0},
    {MONITOR_CPU_FREQ, 0},         {MONITOR_LED_SWITCH, 1},
    {MONITOR_MENULIST_STYLE_L1, 1}, {MONITOR_LED_BRIGHTNESS, 4},
    {MONITOR_MENULIST_STYLE_L2, 0}, {MONITOR_RUMBLE_LEVEL, 4},
    {MONITOR_DIM_TIME, 300},       {MONITOR_OSD_SHORTCUT, 0},
    {MONITOR_B_CONFIRM, 0},
};

// One load against a fresh device root: `json` (null: no file) is the
// settings file; every slot starts at kUntouched.
struct SettingsLoad {
    TempDeviceRoot root;
    KeyShmInfo shm;
    std::string log;

    explicit SettingsLoad(const char* json, bool attrFolder = true, char** theme = nullptr) {
        if (attrFolder) makeDirs(root.at(DEVICE_PATH_DISP_ATTR_DIR));
        EXPECT_EQ(InitKeyShm(&shm), 0);
        for (int slot = 0; slot < MONITOR_VALUE_MAX; slot++) SetKeyShm(&shm, slot, kUntouched);
        if (json) writeFileAtomic(root.at(DEVICE_PATH_SYSTEM_CONFIG), json);
        CaptureStdout capture;
        loadSystemState(&shm, theme);
        log = capture.finish();
    }
    ~SettingsLoad() { UninitKeyShm(&shm); }

    // File text, or "-" when the file was not written.
    std::string attr(const char* file) const {
        std::string path = root.at(DEVICE_PATH_DISP_ATTR_DIR) + file;
        return fileExists(path) ? readFile(path) : "-";
    }
    std::string unusableLine() const {
        return std::string("system settings ") + root.at(DEVICE_PATH_SYSTEM_CONFIG) +
               " unusable, using defaults\n";
    }
};

}  // namespace

TEST(SystemState, EachKeyIsRangeCheckedIntoItsSlotAndColourFiles) {
    struct Row {
        const char* json;
        std::map<int, int> slots;  // differences from kReadDefaults
        const char* attrs[4];      // in kAttrFiles order, "-" when not written
    } rows[] = {
        {"{}", {}, {"-", "-", "-", "-"}},
        {"{\"vol\":25,\"bgmvol\":21,\"brightness\":11,\"keymap\":2,\"rumblelevel\":6}",
         {},
         {"-", "-", "-", "-"}},
        {"{\"vol\":-1,\"cpufreq\":-3,\"mute\":\"1\",\"ledswitch\":0,\"bgmvol\":\"3\"}",
         {{MONITOR_LED_SWITCH, 0}},
         {"-", "-", "-", "-"}},
        {"{\"vol\":20,\"bgmvol\":20,\"brightness\":10,\"keymap\":1,\"rumblelevel\":5,\"mute\":7,"
         "\"cpufreq\":1200,\"netplay\":3,\"ledswitch\":9,\"ledvalue\":-2,\"menustylel1\":7,"
         "\"menustylel2\":8,\"dimtime\":-1,\"osdshortcut\":5,\"bconfirm\":2}",
         {{MONITOR_VOLUME, 20}, {MONITOR_BGM_VOLUME, 20}, {MONITOR_BRIGHTNESS, 10},
          {MONITOR_KEYMAP, 1}, {MONITOR_RUMBLE_LEVEL, 5}, {MONITOR_MUTE, 1},
          {MONITOR_CPU_FREQ, 1200}, {MONITOR_NETPLAY_MODE, 1}, {MONITOR_LED_SWITCH, 1},
          {MONITOR_LED_BRIGHTNESS, -2}, {MONITOR_MENULIST_STYLE_L1, 7},
          {MONITOR_MENULIST_STYLE_L2, 8}, {MONITOR_DIM_TIME, -1}, {MONITOR_OSD_SHORTCUT, 5},
          {MONITOR_B_CONFIRM, 1}},
         {"-", "-", "-", "-"}},
        {"{\"wifi\":2,\"hostap\":0,\"bluetooth\":true}",
         {{MONITOR_WIFI_SWITCH, 1}, {MONITOR_HOSTAP_SWITCH, 0}},
         {"-", "-", "-", "-"}},
        {"{\"colortemperature\":30,\"colorbrightness\":0,\"colorcontrast\":11,"
         "\"colorsaturation\":0}",
         {},
         {"50", "10", "100", "0"}},
        {"{\"colortemperature\":-5,\"colorbrightness\":7,\"colorcontrast\":\"5\","
         "\"colorsaturation\":10.9,\"vol\":12.7}",
         {{MONITOR_VOLUME, 12}},
         {"-50", "70", "-", "100"}},
    };
    for (const Row& row : rows) {
        SettingsLoad load(row.json);
        EXPECT_EQ(load.log, "") << row.json;
        for (int slot = 0; slot < MONITOR_VALUE_MAX; slot++) {
            int expected = kUntouched;
            if (row.slots.count(slot))
                expected = row.slots.at(slot);
            else if (kReadDefaults.count(slot))
                expected = kReadDefaults.at(slot);
            EXPECT_EQ(GetKeyShm(&load.shm, slot), expected) << row.json << " slot " << slot;
        }
        for (int i = 0; i < 4; i++) EXPECT_EQ(load.attr(kAttrFiles[i]), row.attrs[i]) << row.json;
    }
}

TEST(SystemState, MissingOrBrokenFileGivesEveryDefault) {
    for (const char* json : {(const char*)nullptr, "{\"vol\": 3", "[1, 2]", ""}) {
        SettingsLoad load(json);
        EXPECT_NE(load.log.find(load.unusableLine()), std::string::npos) << (json ? json : "none");
        for (int slot = 0; slot < MONITOR_VALUE_MAX; slot++) {
            int expected = kReadDefaults.count(slot) ? kReadDefaults.at(slot) : kUntouched;
            if (slot == MONITOR_WIFI_SWITCH || slot == MONITOR_HOSTAP_SWITCH ||
                slot == MONITOR_BLUETOOTH_SWITCH)
                expected = 0;
            EXPECT_EQ(GetKeyShm(&load.shm, slot), expected) << "slot " << slot;
        }
        EXPECT_EQ(load.attr("color_temperature"), "0");
        EXPECT_EQ(load.attr("enhance_bright"), "50");
        EXPECT_EQ(load.attr("enhance_contrast"), "50");
        EXPECT_EQ(load.attr("enhance_saturation"), "50");
    }
}

TEST(SystemState, LanguageIsRememberedAndNamesLangWithoutRegardToCase) {
    std::string longName(70, 'a');
    std::string json70 = "{\"language\":\"" + longName + "\"}";
    struct Row { const char* json; std::string stored; const char* lang; } rows[] = {
        {"{\"language\":\"JP.LANG\"}", "JP.LANG", "ja_JP.UTF8"},
        {"{\"language\":\"Es.Lang\"}", "Es.Lang", "es_ES.UTF8"},
        {"{\"language\":\"de.lang\"}", "de.lang", "C"},
        {"{\"language\":\"jp.lang \"}", "jp.lang ", "C"},
        {json70.c_str(), longName.substr(0, 63), "C"},
        {"{\"language\":5}", "prev.lang", "C"},
        {"{\"language\":", "prev.lang", "C"},
    };
    const char* saved = getenv("LANG");
    std::string savedLang = saved ? saved : "";
    for (const Row& row : rows) {
        setenv("LANG", "C", 1);
        setSystemLanguage("prev.lang");
        SettingsLoad load(row.json);
        EXPECT_EQ(getSystemLanguage(), row.stored) << row.json;
        EXPECT_STREQ(getenv("LANG"), row.lang) << row.json;
    }
    setSystemLanguage("");
    if (saved)
        setenv("LANG", savedLang.c_str(), 1);
    else
        unsetenv("LANG");
}

TEST(SystemState, StoreUrlTimeZoneAndThemeFollowTheFile) {
    const std::string longZone(300, 'z');
    const std::string existing = "/tmp";
    struct Row {
        std::string json;
        const char* storeUrl;  // null: none
        std::string timeZone;
        const char* theme;  // null: none; "old": left as it was
    } rows[] = {
        {"{\"storeurl\":\"http://store.local/a\",\"timezone\":\"Asia/Shanghai\",\"theme\":\"" +
             existing + "\"}",
         "http://store.local/a", "Asia/Shanghai", "/tmp"},
        {"{\"timezone\":\"" + longZone + "\"}", nullptr, longZone.substr(0, 255), nullptr},
        {"{\"timezone\":", nullptr, "", "old"},  // unreadable: theme untouched
    };
    for (const Row& row : rows) {
        free(gStoreUrl);
        gStoreUrl = strdup("stale");
        char* old = strdup("old");
        char* theme = old;
        SettingsLoad load(row.json.c_str(), true, &theme);
        if (row.storeUrl)
            EXPECT_STREQ(gStoreUrl, row.storeUrl) << row.json;
        else
            EXPECT_EQ(gStoreUrl, nullptr) << row.json;
        EXPECT_EQ(getSystemTimeZone(), row.timeZone) << row.json;
        if (!row.theme) {
            EXPECT_EQ(theme, nullptr) << row.json;
        } else if (strcmp(row.theme, "old") == 0) {
            EXPECT_EQ(theme, old) << row.json;
        } else {
            EXPECT_STREQ(theme, row.theme) << row.json;
            EXPECT_NE(theme, old);
        }
        if (theme != old) free(theme);
        free(old);
    }
    free(gStoreUrl);
    gStoreUrl = nullptr;
}
