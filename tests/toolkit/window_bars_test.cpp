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
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/lang.h"
#include "toolkit/shared_skin.h"
#include "platform/sysutil.h"
#include "toolkit/system_state.h"
#include "toolkit/wifi_monitor.h"
#include "toolkit/window.h"

extern char** environ;

namespace {

const SDL_Color kBackground = {20, 20, 60, 255};
const SDL_Color kJunk = {200, 0, 0, 255};

// Every status icon, 20 x 20 in a colour of its own.
const struct { const char* name; SDL_Color color; } kIcons[] = {
    {"skin/ic-charging.png", {255, 255, 0, 255}},      {"skin/ic-batery-100%.png", {0, 200, 0, 255}},
    {"skin/ic-batery-75%.png", {0, 160, 0, 255}},      {"skin/ic-batery-50%.png", {0, 120, 0, 255}},
    {"skin/ic-batery-25%.png", {0, 80, 0, 255}},       {"skin/ic-batery-0%.png", {0, 40, 0, 255}},
    {"skin/ic-sound-n.png", {0, 0, 250, 255}},         {"skin/ic-sound-mute.png", {0, 0, 150, 255}},
    {"skin/icon-bluetooth-headphone.png", {250, 0, 250, 255}}, {"skin/ic-wifi-01.png", {0, 250, 250, 255}},
    {"skin/ic-wifi-02.png", {0, 180, 180, 255}},       {"skin/ic-wifi-03.png", {0, 110, 110, 255}},
    {"skin/icon-hotspot.png", {250, 130, 0, 255}},
};

// A process the process table shows under `name`, until destroyed.
class FakeProcess {
public:
    explicit FakeProcess(const char* name) {
        char* argv[] = {const_cast<char*>(name), const_cast<char*>("60"), nullptr};
        if (posix_spawn(&mPid, "/bin/sleep", nullptr, nullptr, argv, environ) != 0) mPid = -1;
        for (int i = 0; i < 200 && mPid > 0 && check_process_exist(name) != mPid; i++) usleep(10 * 1000);
    }
    ~FakeProcess() {
        if (mPid <= 0) return;
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    pid_t mPid = -1;
};

// Answers the Wi-Fi monitor's two wpa_cli commands with fixed text.
class FixedAnswerShell : public WpaShell {
public:
    bool supplicantRunning() override { return true; }
    int run(const char* command, const StopFlag&) override {
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
    BarWindow() : KovaniWindow(STRING_MENU, 0) {}
    const char* getTitle() override { return mTitle ? mTitle : KovaniWindow::getTitle(); }
    int eventHandling() override { return 0; }
    int draw() override { return 0; }
    void quit() override {}
    void init() override {}
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}
    const char* mTitle = nullptr;  // not owned; null: the title string id's text
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
        setBattery("57\n", "Discharging\n", "0\n");
        clear(kJunk.r, kJunk.g, kJunk.b);
    }
    void TearDown() override {
        rx_wifi_monitor_stop();
        gNavFont = gNavFontIcon = gStatFont = nullptr;
        delete gBackground;
        gBackground = nullptr;
        UninitKeyShm(&gShmInfo);
        DrawTest::TearDown();
    }

    // Writes the power-supply files (null: the file is missing) and makes
    // the next bar read them.
    void setBattery(const char* capacity, const char* status, const char* online) {
        const struct { int id; const char* text; } files[] = {{DEVICE_PATH_BATTERY_CAPACITY, capacity},
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

    // Has the monitor publish one record from the given wpa_cli answers.
    void publishWifi(const std::string& status, int rssi) {
        rx_wifi_monitor_stop();
        mShell.mStatus = status;
        mShell.mSignal = "RSSI=" + std::to_string(rssi) + "\nLINKSPEED=72\n";
        const int state = parseWpaStatus(status.c_str()).state;
        ASSERT_EQ(wifi_monitor_start(&mShell, 60000), 0);
        for (int i = 0; i < 2000; i++) {
            const WpaMsg m = rx_copy_wpa_msg();
            if (m.state == state && m.rssi == rssi && m.linkspeed == 72) return;
            usleep(10 * 1000);
        }
        FAIL() << "the monitor published nothing";
    }

    // Which icon fills the status slot at x of a bar at y; "clean" for the
    // background, "junk" for what was drawn before the bar.
    std::string iconAt(int x, int y = 0) {
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
    BarWindow window;
    // Icons follow the sound icon on a 42-pixel pitch: Bluetooth audio, the
    // hotspot, the Bluetooth headphone markers. The slot after the last one
    // is cleaned even when empty, the one beyond it is left alone.
    const char* const bt = "skin/icon-bluetooth-headphone.png";
    const struct { bool audio, markers, hotspot; int volume; const char* slots[3]; int used; } cases[] = {
        {false, false, false, 10, {"clean", "junk", "junk"}, 141},
        {false, true, false, 0, {bt, "junk", "junk"}, 183},
        {true, false, false, 10, {bt, "clean", "junk"}, 183},
        {true, true, true, 10, {bt, "skin/icon-hotspot.png", bt}, 267},
    };
    for (const auto& c : cases) {
        const std::string name = std::string(c.audio ? "audio" : "") + (c.markers ? " markers" : "") +
                                 (c.hotspot ? " hotspot" : "");
        // The Bluetooth headphone markers count only together.
        writeFileAtomic(mRoot.at(DEVICE_PATH_BT_DEV_ADDR), "12:34:56:78:9A:BC\n");
        if (c.markers)
            writeFileAtomic(mRoot.at(DEVICE_PATH_BT_READY), "");
        else
            remove(mRoot.at(DEVICE_PATH_BT_READY).c_str());
        if (c.audio)
            writeFileAtomic(mRoot.at(DEVICE_PATH_BT_AUDIO), "");
        else
            remove(mRoot.at(DEVICE_PATH_BT_AUDIO).c_str());
        std::unique_ptr<FakeProcess> hostapd(c.hotspot ? new FakeProcess("hostapd") : nullptr);
        SetKeyShm(&gShmInfo, MONITOR_VOLUME, c.volume);
        invalidateBarStatus();
        clear(kJunk.r, kJunk.g, kJunk.b);
        EXPECT_EQ(window.drawNavBar(30), c.used) << name;
        EXPECT_EQ(iconAt(1223, 30), "skin/ic-batery-75%.png");
        EXPECT_EQ(iconAt(1124, 30), c.volume ? "skin/ic-sound-n.png" : "skin/ic-sound-mute.png");
        for (int i = 0; i < 3; i++) EXPECT_EQ(iconAt(1082 - 42 * i, 30), c.slots[i]) << name << " slot " << i;
        EXPECT_GT(inkBounds(kJunk, {100, 40, 400, 50}).w, 0) << "title drawn";
    }
}

TEST_F(BarsTest, BatteryGroupFollowsCapacityAndCharging) {
    const struct { const char* capacity, *status, *online, *icon; bool charging; int width; } cases[] = {
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
        EXPECT_EQ(iconAt(c.charging ? 1205 : 1223), c.icon) << name;
        EXPECT_EQ(iconAt(1240), c.charging ? "skin/ic-charging.png" : "clean") << name;
    }
}

TEST_F(BarsTest, NetworkIconFollowsSupplicantStateAndSignal) {
    const struct { bool supplicant, hostapd; const char* state; int rssi; const char* icon; int used; } cases[] = {
        {true, false, "COMPLETED", -70, "skin/ic-wifi-03.png", 183},
        {true, false, "COMPLETED", -80, "skin/ic-wifi-02.png", 183},
        {true, false, "COMPLETED", -81, "skin/ic-wifi-01.png", 183},
        {true, false, "COMPLETED", 128, "skin/ic-wifi-01.png", 183},
        {true, true, "SCANNING", -50, "clean", 141},  // not connected: no hotspot either
        {false, true, "COMPLETED", -50, "skin/icon-hotspot.png", 183},
        {false, false, "COMPLETED", -50, "clean", 141},
    };
    BarWindow window;
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

// A long title ends short of the leftmost status icon, whichever icons are
// shown, and uses the room up to it.
TEST_F(BarsTest, ALongTitleEndsLeftOfTheStatusIcons) {
    const SDL_Color white = {255, 255, 255, 255}, oldText = gNavColorTxt, oldIcon = gNavColorIcon;
    gNavColorTxt = white;
    gNavColorIcon = {0, 0, 1, 255};
    BarWindow window;
    std::string title;
    for (int i = 0; i < 40; i++) title += "Video ";
    window.mTitle = title.c_str();
    writeFileAtomic(mRoot.at(DEVICE_PATH_BT_DEV_ADDR), "12:34:56:78:9A:BC\n");
    // The leftmost icon: the sound icon, or two Bluetooth icons further.
    for (int icons : {1124, 1040}) {
        for (int id : {DEVICE_PATH_BT_READY, DEVICE_PATH_BT_AUDIO}) {
            if (icons == 1040)
                writeFileAtomic(mRoot.at(id), "");
            else
                remove(mRoot.at(id).c_str());
        }
        invalidateBarStatus();
        clear(kJunk.r, kJunk.g, kJunk.b);
        EXPECT_EQ(window.drawNavBar(0), 1223 + 42 - icons);
        EXPECT_EQ(colorBounds(white, {icons, 0, 1280 - icons, 80}).w, 0) << icons;
        const SDL_Rect drawn = colorBounds(white, {0, 0, icons, 80});
        EXPECT_GT(drawn.x + drawn.w, icons - 60) << icons;
    }
    gNavColorTxt = oldText;
    gNavColorIcon = oldIcon;
}
