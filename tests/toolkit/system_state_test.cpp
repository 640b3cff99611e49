#include "toolkit/system_state.h"

#include <gtest/gtest.h>
#include <string>

#include "platform/device_paths.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"

namespace {

const int kUntouched = -7;

// One load of `json` (null: no file) in a fresh device root, slots at kUntouched.
struct SettingsLoad {
    TempDeviceRoot root;
    KeyShmInfo shm;
    std::string log;

    explicit SettingsLoad(const char* json) {
        makeDirs(root.at(DEVICE_PATH_DISP_ATTR_DIR));
        EXPECT_EQ(InitKeyShm(&shm), 0);
        for (int slot = 0; slot < MONITOR_VALUE_MAX; slot++) SetKeyShm(&shm, slot, kUntouched);
        if (json) writeFileAtomic(root.at(DEVICE_PATH_SYSTEM_CONFIG), json);
        CaptureStdout capture;
        loadSystemState(&shm, nullptr);
        log = capture.finish();
    }
    ~SettingsLoad() { UninitKeyShm(&shm); }
    int slot(int i) { return GetKeyShm(&shm, i); }
    // The colour temperature file's text, or "-" when it was not written.
    std::string temperature() const {
        const std::string path = root.at(DEVICE_PATH_DISP_ATTR_DIR) + "color_temperature";
        return fileExists(path) ? readFile(path) : "-";
    }
};

}  // namespace

// Bad values take the default; an unusable file gives every default, logged
// once. "bconfirm" swaps A and B for every window.
TEST(SystemState, EachKeyIsCheckedIntoItsSlotAndAnUnusableFileGivesTheDefaults) {
    const struct {
        const char* json;
        int volume, mute, cpu, wifi, swapped;
        const char* temperature;
        bool logged;
    } rows[] = {
        {R"({"vol":20,"mute":7,"cpufreq":1200,"wifi":2,"colortemperature":30,"bconfirm":1})", 20, 1, 1200, 1, 1, "50",
         false},
        {R"({"vol":25,"cpufreq":-3,"colortemperature":-5,"bconfirm":0})", 14, 0, 0, kUntouched, 0, "-50", false},
        {R"({"vol":"3","mute":"1","colortemperature":"5","bconfirm":"1"})", 14, 0, 0, kUntouched, 0, "-", false},
        {R"({"vol":12.7,"colortemperature":10.9})", 12, 0, 0, kUntouched, 0, "0", false},
        {nullptr, 14, 0, 0, 0, 0, "0", true},
        {R"({"vol": 3)", 14, 0, 0, 0, 0, "0", true},
        {"[1, 2]", 14, 0, 0, 0, 0, "0", true},
    };
    for (const auto& row : rows) {
        const char* name = row.json ? row.json : "(no file)";
        SettingsLoad load(row.json);
        EXPECT_EQ(load.slot(MONITOR_VOLUME), row.volume) << name;
        EXPECT_EQ(load.slot(MONITOR_MUTE), row.mute) << name;
        EXPECT_EQ(load.slot(MONITOR_CPU_FREQ), row.cpu) << name;
        EXPECT_EQ(load.slot(MONITOR_WIFI_SWITCH), row.wifi) << name;
        EXPECT_EQ(load.slot(MONITOR_B_CONFIRM), row.swapped) << name;
        EXPECT_EQ(load.slot(MONITOR_DIM_TIME), 300) << name;
        EXPECT_EQ(load.temperature(), row.temperature) << name;
        EXPECT_EQ(load.log, row.logged ? "system settings " + load.root.at(DEVICE_PATH_SYSTEM_CONFIG) +
                                             " unusable, using defaults\n"
                                       : "")
            << name;
    }
}
