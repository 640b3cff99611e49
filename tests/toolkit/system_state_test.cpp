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
const char* const kAttrFiles[] = {"color_temperature", "enhance_bright", "enhance_contrast", "enhance_saturation"};

// Slot values after reading a file that holds none of the keys.
const std::map<int, int> kReadDefaults = {
    {MONITOR_VOLUME, 14},           {MONITOR_BRIGHTNESS, 6},        {MONITOR_KEYMAP, 0},
    {MONITOR_MUTE, 0},              {MONITOR_BGM_VOLUME, 10},       {MONITOR_NETPLAY_MODE, 0},
    {MONITOR_CPU_FREQ, 0},          {MONITOR_LED_SWITCH, 1},        {MONITOR_MENULIST_STYLE_L1, 1},
    {MONITOR_LED_BRIGHTNESS, 4},    {MONITOR_MENULIST_STYLE_L2, 0}, {MONITOR_RUMBLE_LEVEL, 4},
    {MONITOR_DIM_TIME, 300},        {MONITOR_OSD_SHORTCUT, 0},      {MONITOR_B_CONFIRM, 0},
};

// One load against a fresh device root: `json` (null: no file) is the
// settings file; every slot starts at kUntouched.
struct SettingsLoad {
    TempDeviceRoot root;
    KeyShmInfo shm;
    std::string log;

    explicit SettingsLoad(const char* json, char** theme = nullptr) {
        makeDirs(root.at(DEVICE_PATH_DISP_ATTR_DIR));
        EXPECT_EQ(InitKeyShm(&shm), 0);
        for (int slot = 0; slot < MONITOR_VALUE_MAX; slot++) SetKeyShm(&shm, slot, kUntouched);
        if (json) writeFileAtomic(root.at(DEVICE_PATH_SYSTEM_CONFIG), json);
        CaptureStdout capture;
        loadSystemState(&shm, theme);
        log = capture.finish();
    }
    ~SettingsLoad() { UninitKeyShm(&shm); }

    // File text, or "-" when the file was not written.
    std::string attr(int i) const {
        std::string path = root.at(DEVICE_PATH_DISP_ATTR_DIR) + kAttrFiles[i];
        return fileExists(path) ? readFile(path) : "-";
    }
    void expectSlots(const std::map<int, int>& changed, const std::string& name) {
        for (int slot = 0; slot < MONITOR_VALUE_MAX; slot++) {
            int expected = kUntouched;
            if (changed.count(slot))
                expected = changed.at(slot);
            else if (kReadDefaults.count(slot))
                expected = kReadDefaults.at(slot);
            EXPECT_EQ(GetKeyShm(&shm, slot), expected) << name << " slot " << slot;
        }
    }
};

}  // namespace

TEST(SystemState, EachKeyIsRangeCheckedIntoItsSlotAndColourFiles) {
    struct Row {
        const char* json;
        std::map<int, int> slots;  // differences from kReadDefaults
        const char* attrs[4];      // in kAttrFiles order, "-" when not written
    } rows[] = {
        {"{\"vol\":25,\"bgmvol\":\"3\",\"brightness\":11,\"keymap\":2,\"rumblelevel\":6,\"cpufreq\":-3,"
         "\"ledswitch\":0}",
         {{MONITOR_LED_SWITCH, 0}},
         {"-", "-", "-", "-"}},
        {"{\"vol\":20,\"bgmvol\":20,\"brightness\":10,\"keymap\":1,\"rumblelevel\":5,\"mute\":7,"
         "\"cpufreq\":1200,\"netplay\":3,\"ledswitch\":9,\"ledvalue\":-2,\"menustylel1\":7,"
         "\"menustylel2\":8,\"dimtime\":-1,\"osdshortcut\":5,\"bconfirm\":2,\"wifi\":2,\"hostap\":0}",
         {{MONITOR_VOLUME, 20}, {MONITOR_BGM_VOLUME, 20}, {MONITOR_BRIGHTNESS, 10}, {MONITOR_KEYMAP, 1},
          {MONITOR_RUMBLE_LEVEL, 5}, {MONITOR_MUTE, 1}, {MONITOR_CPU_FREQ, 1200}, {MONITOR_NETPLAY_MODE, 1},
          {MONITOR_LED_SWITCH, 1}, {MONITOR_LED_BRIGHTNESS, -2}, {MONITOR_MENULIST_STYLE_L1, 7},
          {MONITOR_MENULIST_STYLE_L2, 8}, {MONITOR_DIM_TIME, -1}, {MONITOR_OSD_SHORTCUT, 5},
          {MONITOR_B_CONFIRM, 1}, {MONITOR_WIFI_SWITCH, 1}, {MONITOR_HOSTAP_SWITCH, 0}},
         {"-", "-", "-", "-"}},
        {"{\"colortemperature\":30,\"colorbrightness\":0,\"colorcontrast\":11,\"colorsaturation\":0}",
         {},
         {"50", "10", "100", "0"}},
        {"{\"colortemperature\":-5,\"colorbrightness\":7,\"colorcontrast\":\"5\",\"colorsaturation\":10.9,"
         "\"vol\":12.7}",
         {{MONITOR_VOLUME, 12}},
         {"-50", "70", "-", "100"}},
    };
    for (const Row& row : rows) {
        SettingsLoad load(row.json);
        EXPECT_EQ(load.log, "") << row.json;
        load.expectSlots(row.slots, row.json);
        for (int i = 0; i < 4; i++) EXPECT_EQ(load.attr(i), row.attrs[i]) << row.json;
    }
}

TEST(SystemState, MissingOrBrokenFileGivesEveryDefaultWithOneLogLine) {
    for (const char* json : {(const char*)nullptr, "{\"vol\": 3", "[1, 2]"}) {
        SettingsLoad load(json);
        EXPECT_EQ(load.log, "system settings " + load.root.at(DEVICE_PATH_SYSTEM_CONFIG) +
                                " unusable, using defaults\n");
        load.expectSlots({{MONITOR_WIFI_SWITCH, 0}, {MONITOR_HOSTAP_SWITCH, 0}, {MONITOR_BLUETOOTH_SWITCH, 0}},
                         json ? json : "(none)");
        const char* defaults[] = {"0", "50", "50", "50"};
        for (int i = 0; i < 4; i++) EXPECT_EQ(load.attr(i), defaults[i]);
    }
}

TEST(SystemState, LanguageIsRememberedAndNamesLangWithoutRegardToCase) {
    const std::string longName(70, 'a');
    const std::string json70 = "{\"language\":\"" + longName + "\"}";
    struct Row { const char* json; std::string stored; const char* lang; } rows[] = {
        {"{\"language\":\"JP.LANG\"}", "JP.LANG", "ja_JP.UTF8"},
        {"{\"language\":\"Es.Lang\"}", "Es.Lang", "es_ES.UTF8"},
        {"{\"language\":\"jp.lang \"}", "jp.lang ", "C"},
        {json70.c_str(), longName.substr(0, 63), "C"},
        {"{\"language\":5}", "prev.lang", "C"},
    };
    const char* saved = getenv("LANG");
    const std::string savedLang = saved ? saved : "";
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

TEST(SystemState, ThemeIsTakenOnlyWhenItsFolderExists) {
    struct Row { const char* json; const char* theme; } rows[] = {
        {"{\"theme\":\"/tmp\"}", "/tmp"},
        {"{\"theme\":\"/no/such/theme\"}", nullptr},
        {"{}", nullptr},
    };
    for (const Row& row : rows) {
        char* old = strdup("old");  // the caller's to free
        char* theme = old;
        SettingsLoad load(row.json, &theme);
        EXPECT_STREQ(theme, row.theme) << row.json;
        if (theme != old) free(theme);
        free(old);
    }
}
