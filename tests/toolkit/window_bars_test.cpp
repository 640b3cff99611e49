#include "toolkit/window_bars.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/draw_fixture.h"
#include "tests/support/temp_dir.h"
#include "toolkit/lang.h"
#include "toolkit/shared_skin.h"
#include "toolkit/sysutil.h"
#include "toolkit/system_state.h"
#include "toolkit/wifi_monitor.h"
#include "toolkit/window.h"

extern char** environ;

namespace {

const SDL_Color kBackground = {20, 20, 60, 255};
const SDL_Color kJunk = {200, 0, 0, 255};
const SDL_Color kBack = {120, 120, 0, 255};

// Every status icon, 20 x 20 in a colour of its own.
const struct {
    const char* name;
    SDL_Color color;
} kIcons[] = {
    {"skin/ic-charging.png", {255, 255, 0, 255}},
    {"skin/ic-batery-100%.png", {0, 200, 0, 255}},
    {"skin/ic-batery-75%.png", {0, 160, 0, 255}},
    {"skin/ic-batery-50%.png", {0, 120, 0, 255}},
    {"skin/ic-batery-25%.png", {0, 80, 0, 255}},
    {"skin/ic-batery-0%.png", {0, 40, 0, 255}},
    {"skin/ic-sound-n.png", {0, 0, 250, 255}},
    {"skin/ic-sound-mute.png", {0, 0, 150, 255}},
    {"skin/icon-bluetooth-headphone.png", {250, 0, 250, 255}},
    {"skin/ic-wifi-01.png", {0, 250, 250, 255}},
    {"skin/ic-wifi-02.png", {0, 180, 180, 255}},
    {"skin/ic-wifi-03.png", {0, 110, 110, 255}},
    {"skin/icon-hotspot.png", {250, 130, 0, 255}},
};

// A process the process table shows under `name`, until destroyed.
class FakeProcess {
public:
    explicit FakeProcess(const char* name) {
        char* argv[] = {const_cast<char*>(name), const_cast<char*>("60"), nullptr};
        if (posix_spawn(&mPid, "/bin/sleep", nullptr, nullptr, argv, environ) != 0) mPid = -1;
        for (int i = 0; i < 200 && mPid > 0 && check_process_exist(name) != mPid; i++)
            usleep(10 * 1000);
    }
    ~FakeProcess() {
        if (mPid <= 0) return;
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    pid_t mPid = -1;
};

// Answers the Wi-Fi monitor's wpa_cli commands with fixed text.
class FixedAnswerShell : public WpaShell {
public:
    bool supplicantRunning() override { return true; }
    int run(const char* command) override {
        const std::string cmd = command;
        const bool append = cmd.find(">> ") != std::string::npos;
        FILE* f = fopen(cmd.substr(cmd.rfind(' ') + 1).c_str(), append ? "a" : "w");
        if (!f) return 1;
        fputs(append ? mSignal.c_str() : mStatus.c_str(), f);
        fclose(f);
        return 0;
    }
    std::string mStatus;  // written only while no monitor runs
    std::string mSignal;
};

class BarWindow : public KovaniWindow {
public:
    explicit BarWindow(int title) : KovaniWindow(title, 0) {}
    int eventHandling() override { return 0; }
    int draw() override { return 0; }
    void quit() override {}
    void init() override {}
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}
};

class BarsTest : public DrawTest {
protected:
    void SetUp() override {
        DrawTest::SetUp();
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        SetKeyShm(&gShmInfo, MONITOR_VOLUME, 10);
        makeDirs(std::filesystem::path(mRoot.at(DEVICE_PATH_WPA_STATUS)).parent_path());
        for (const auto& icon : kIcons) writePng(dir() + icon.name, 20, 20, icon.color, 4);
        writePng(dir() + "skin/bg.png", 1280, 720, kBackground, 3);
        gBackground = LoadKovaniSurface(nullptr, "./", "skin/bg.png");
        ASSERT_NE(gBackground, nullptr);
        gNavFont = font(28);
        gNavFontIcon = font(16);
        gStatFont = font(24);
        const SDL_Color white = {255, 255, 255, 255};
        gNavColorTxt = gNavColorIcon = gStatColorTxt = white;
        setBattery("57\n", "Discharging\n", "0\n");
        clear(kJunk.r, kJunk.g, kJunk.b);
    }
    void TearDown() override {
        rx_wifi_monitor_stop();
        gNavFont = gNavFontIcon = gStatFont = nullptr;
        for (KovaniSurface** image : {&gBackground, &gIconBack, &gIconA, &gIconB, &gIconMenu}) {
            delete *image;
            *image = nullptr;
        }
        UninitKeyShm(&gShmInfo);
        DrawTest::TearDown();
    }

    // Writes the power-supply files (null: the file is missing) and makes
    // the next bar read them.
    void setBattery(const char* capacity, const char* status, const char* online) {
        const struct {
            int id;
            const char* text;
        } files[] = {{DEVICE_PATH_BATTERY_CAPACITY, capacity},
                     {DEVICE_PATH_BATTERY_STATUS, status},
                     {DEVICE_PATH_USB_ONLINE, online}};
        for (const auto& f : files) {
            if (f.text)
                writeFileAtomic(mRoot.at(f.id), f.text);
            else
                remove(mRoot.at(f.id).c_str());
        }
        invalidateBarStatus();
    }

    // Runs the Wi-Fi monitor until it has published the record of `status`.
    void publishWifi(const std::string& status, int rssi) {
        rx_wifi_monitor_stop();
        mShell.mStatus = status;
        mShell.mSignal = "RSSI=" + std::to_string(rssi) + "\nLINKSPEED=72\n";
        const int state = parseWpaStatus(status.c_str()).state;
        ASSERT_EQ(wifi_monitor_start(&mShell, 60000), 0);
        for (int i = 0; i < 300; i++) {
            const WpaMsg m = rx_copy_wpa_msg();
            if (m.state == state && m.rssi == rssi && m.linkspeed == 72) return;
            usleep(10 * 1000);
        }
        FAIL() << "the monitor published nothing";
    }

    // Which icon fills the status slot at x of a bar at y; "clean" for the
    // background, "junk" for what was drawn before the bar.
    std::string iconAt(int x, int y) {
        const SDL_Color c = pixel(x + 16, y + 19 + 16);
        if (sameColor(c, kBackground)) return "clean";
        if (sameColor(c, kJunk)) return "junk";
        for (const auto& icon : kIcons)
            if (sameColor(c, icon.color)) return icon.name;
        return "?";
    }

    TempDeviceRoot mRoot;
    FixedAnswerShell mShell;
};

}  // namespace

TEST_F(BarsTest, NavBarLaysIconsLeftwardsFromTheBatteryGroup) {
    writePng(dir() + "skin/icon-back.png", 24, 24, kBack, 4);
    gIconBack = LoadKovaniSurface(nullptr, "./", "skin/icon-back.png");
    FakeProcess supplicant("wpa_supplicant");
    publishWifi("wpa_state=COMPLETED\n", -75);
    BarWindow window(STRING_MENU);
    const int y = 30;

    EXPECT_EQ(window.drawNavBar(y), 183);
    EXPECT_EQ(iconAt(1223, y), "skin/ic-batery-75%.png");
    EXPECT_EQ(iconAt(1124, y), "skin/ic-sound-n.png");
    EXPECT_EQ(iconAt(1082, y), "skin/ic-wifi-02.png");
    EXPECT_EQ(iconAt(1040, y), "clean") << "the slot left of the last icon is cleaned";
    EXPECT_EQ(iconAt(1000, y), "junk");
    EXPECT_TRUE(sameColor(pixel(1083, y + 20), kBackground)) << "slots are cleaned before drawing";
    EXPECT_GT(inkBounds(kJunk, {100, y + 10, 400, 50}).w, 0) << "title drawn";
    EXPECT_TRUE(sameColor(pixel(22, y + 14), kBack));

    // The Bluetooth headphone needs both markers.
    writeFileAtomic(mRoot.at(DEVICE_PATH_BT_DEV_ADDR), "12:34:56:78:9A:BC\n");
    invalidateBarStatus();
    EXPECT_EQ(window.drawNavBar(y), 183);
    writeFileAtomic(mRoot.at(DEVICE_PATH_BT_READY), "");
    invalidateBarStatus();
    EXPECT_EQ(window.drawNavBar(y), 225);
    EXPECT_EQ(iconAt(1040, y), "skin/icon-bluetooth-headphone.png");

    SetKeyShm(&gShmInfo, MONITOR_VOLUME, 0);
    window.drawNavBar(y);
    EXPECT_EQ(iconAt(1124, y), "skin/ic-sound-mute.png");
}

TEST_F(BarsTest, BatteryGroupFollowsCapacityAndCharging) {
    const struct {
        const char* capacity;
        const char* status;
        const char* online;
        const char* icon;
        bool charging;
        int width;
    } cases[] = {
        {"4\n", "Discharging\n", "0\n", "skin/ic-batery-0%.png", false, 84},
        {"5\n", "Discharging\n", "0\n", "skin/ic-batery-25%.png", false, 84},
        {"49", "Discharging", "0", "skin/ic-batery-50%.png", false, 99},
        {"100\n", "Full\n", "1\n", "skin/ic-batery-100%.png", true, 132},
        {"57\n", "Charging\n", "0\n", "skin/ic-batery-75%.png", true, 117},
        {nullptr, nullptr, nullptr, "skin/ic-batery-0%.png", false, 84},
    };
    for (const auto& c : cases) {
        const std::string name = c.capacity ? c.capacity : "(no files)";
        setBattery(c.capacity, c.status, c.online);
        clear(kJunk.r, kJunk.g, kJunk.b);
        EXPECT_EQ(draw_battery_icon(0), c.width) << name;
        const int x = c.charging ? 1205 : 1223;
        EXPECT_EQ(iconAt(x, 0), c.icon) << name;
        EXPECT_EQ(iconAt(1240, 0), c.charging ? "skin/ic-charging.png" : "clean") << name;
    }
}

TEST_F(BarsTest, NetworkIconFollowsSupplicantStateAndSignal) {
    const struct {
        bool supplicant;
        bool hostapd;
        const char* state;
        int rssi;
        const char* icon;
        int used;
    } cases[] = {
        {true, false, "COMPLETED", -80, "skin/ic-wifi-02.png", 183},
        {true, false, "COMPLETED", -81, "skin/ic-wifi-01.png", 183},
        {true, false, "COMPLETED", 128, "skin/ic-wifi-01.png", 183},
        {false, true, "COMPLETED", -50, "skin/icon-hotspot.png", 183},
        {false, false, "COMPLETED", -50, "clean", 141},
    };
    BarWindow window(-1);
    for (const auto& c : cases) {
        const std::string name = std::string(c.state) + " " + std::to_string(c.rssi) +
                                 (c.supplicant ? " supplicant" : "") + (c.hostapd ? " hostapd" : "");
        publishWifi(std::string("wpa_state=") + c.state + "\n", c.rssi);
        std::unique_ptr<FakeProcess> supplicant(c.supplicant ? new FakeProcess("wpa_supplicant") : nullptr);
        std::unique_ptr<FakeProcess> hostapd(c.hostapd ? new FakeProcess("hostapd") : nullptr);
        invalidateBarStatus();
        clear(kJunk.r, kJunk.g, kJunk.b);
        EXPECT_EQ(window.drawNavBar(0), c.used) << name;
        EXPECT_EQ(iconAt(1082, 0), c.icon) << name;
    }
}

TEST_F(BarsTest, MissingIconsLeaveCleanSlotsAndAreReportedOnce) {
    std::filesystem::remove_all(dir() + "skin/ic-sound-n.png");
    std::filesystem::remove_all(dir() + "skin/ic-batery-75%.png");
    BarWindow window(-1);
    CaptureStdout capture;
    EXPECT_EQ(window.drawNavBar(0), 141);
    EXPECT_EQ(window.drawNavBar(0), 141);
    const std::string log = capture.finish();
    EXPECT_EQ(iconAt(1223, 0), "clean");
    EXPECT_EQ(iconAt(1124, 0), "clean");
    const std::string line = "status icon skin/ic-sound-n.png not found\n";
    const size_t first = log.find(line);
    EXPECT_NE(first, std::string::npos) << log;
    EXPECT_EQ(log.find(line, first + 1), std::string::npos) << "reported once";
}
