#include "toolkit/window_bars.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <string>

#include "platform/device_paths.h"
#include "tests/support/bare_window.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wifi_stand_in.h"
#include "toolkit/lang.h"
#include "toolkit/shared_skin.h"
#include "toolkit/system_state.h"
#include "toolkit/window.h"

namespace {

const SDL_Color kBackground = {20, 20, 60, 255};
const SDL_Color kJunk = {200, 0, 0, 255};

// Every status icon, 20 x 20 in a colour of its own.
const struct { const char* name; SDL_Color color; } kIcons[] = {
    {"skin/ic-batery-100%.png", {0, 200, 0, 255}},  {"skin/ic-batery-75%.png", {0, 160, 0, 255}},
    {"skin/ic-batery-50%.png", {0, 120, 0, 255}},   {"skin/ic-batery-25%.png", {0, 80, 0, 255}},
    {"skin/ic-batery-0%.png", {0, 40, 0, 255}},     {"skin/ic-charging.png", {200, 200, 0, 255}},
    {"skin/ic-sound-n.png", {0, 0, 250, 255}},      {"skin/ic-sound-mute.png", {0, 0, 150, 255}},
    {"skin/ic-wifi-03.png", {0, 200, 200, 255}},    {"skin/ic-wifi-02.png", {0, 140, 140, 255}},
    {"skin/ic-wifi-01.png", {0, 80, 80, 255}},
    {"skin/icon-bluetooth-headphone.png", {250, 0, 250, 255}}, {"skin/icon-hotspot.png", {250, 130, 0, 255}},
};

class BarWindow : public BareWindow {
public:
    BarWindow() : BareWindow(STRING_MENU) {}
};

class BarsTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        SetKeyShm(&gShmInfo, MONITOR_VOLUME, 10);
        for (const auto& icon : kIcons) writePng(dir() + icon.name, 20, 20, icon.color, 4);
        writePng(dir() + "skin/bg.png", 1280, 720, kBackground, 3);
        gBackground = LoadKovaniSurface(nullptr, "./", "skin/bg.png");
        ASSERT_NE(gBackground, nullptr);
        gNavFont = font(28);
        gNavFontIcon = font(16);
        gStatFont = font(24);
        writeFileAtomic(mRoot.at(DEVICE_PATH_BATTERY_CAPACITY), "57\n");
        writeFileAtomic(mRoot.at(DEVICE_PATH_BATTERY_STATUS), "Discharging\n");
        writeFileAtomic(mRoot.at(DEVICE_PATH_USB_ONLINE), "0\n");
        writeFileAtomic(mRoot.at(DEVICE_PATH_BT_DEV_ADDR), "12:34:56:78:9A:BC\n");
        invalidateBarStatus();
    }
    void TearDown() override {
        gNavFont = gNavFontIcon = gStatFont = nullptr;
        delete gBackground;
        gBackground = nullptr;
        UninitKeyShm(&gShmInfo);
        SdlScreenTest::TearDown();
    }

    // The icon in the status slot at x of a bar at y, or "clean" / "junk".
    std::string iconAt(int x, int y = 0) {
        const SDL_Color c = pixel(x + 16, y + 19 + 16);
        if (sameColor(c, kBackground)) return "clean";
        if (sameColor(c, kJunk)) return "junk";
        for (const auto& icon : kIcons)
            if (sameColor(c, icon.color)) return icon.name;
        return "?";
    }

    TempDeviceRoot mRoot;
};

}  // namespace

// Which icon each battery level and Wi-Fi signal shows, on both sides of
// every threshold; the plug while the supply is online or the battery says
// it charges.
TEST_F(BarsTest, IconThresholdTable) {
    BarWindow window;
    const struct {
        const char *capacity, *usb, *status, *battery;
        bool plug;
    } rows[] = {
        {"100", "0", "Discharging", "skin/ic-batery-100%.png", false},
        {"80", "0", "Discharging", "skin/ic-batery-100%.png", false},
        {"79", "0", "Discharging", "skin/ic-batery-75%.png", false},
        {"50", "0", "Discharging", "skin/ic-batery-75%.png", false},
        {"49", "0", "Discharging", "skin/ic-batery-50%.png", false},
        {"25", "0", "Discharging", "skin/ic-batery-50%.png", false},
        {"24", "0", "Discharging", "skin/ic-batery-25%.png", false},
        {"5", "0", "Discharging", "skin/ic-batery-25%.png", false},
        {"4", "0", "Discharging", "skin/ic-batery-0%.png", false},
        {"0", "0", "Discharging", "skin/ic-batery-0%.png", false},
        {"57", "1", "Discharging", "skin/ic-batery-75%.png", true},
        {"57", "0", "Charging", "skin/ic-batery-75%.png", true},
    };
    for (const auto& row : rows) {
        writeFileAtomic(mRoot.at(DEVICE_PATH_BATTERY_CAPACITY), row.capacity);
        writeFileAtomic(mRoot.at(DEVICE_PATH_USB_ONLINE), row.usb);
        writeFileAtomic(mRoot.at(DEVICE_PATH_BATTERY_STATUS), row.status);
        invalidateBarStatus();
        clear(kJunk.r, kJunk.g, kJunk.b);
        window.drawNavBar(0);
        EXPECT_EQ(iconAt(row.plug ? 1205 : 1223), row.battery) << row.capacity;
        EXPECT_EQ(iconAt(1240), row.plug ? "skin/ic-charging.png" : "clean") << row.capacity;
    }
    writeFileAtomic(mRoot.at(DEVICE_PATH_BATTERY_STATUS), "Discharging");
    ASSERT_EQ(wifi_monitor_start(systemWpaShell(), 20), 0);
    // Only a connected supplicant shows its signal.
    const struct { int rssi; const char* state; const char* icon; } signals[] = {
        {127, "COMPLETED", "skin/ic-wifi-03.png"}, {-70, "COMPLETED", "skin/ic-wifi-03.png"},
        {-71, "COMPLETED", "skin/ic-wifi-02.png"}, {-80, "COMPLETED", "skin/ic-wifi-02.png"},
        {-81, "COMPLETED", "skin/ic-wifi-01.png"}, {-200, "COMPLETED", "skin/ic-wifi-01.png"},
        {-60, "SCANNING", "clean"},                {-61, "4WAY_HANDSHAKE", "clean"},
    };
    for (const auto& s : signals) {
        ASSERT_TRUE(publishWifi(s.rssi, s.state));
        invalidateBarStatus();
        clear(kJunk.r, kJunk.g, kJunk.b);
        window.drawNavBar(0);
        EXPECT_EQ(iconAt(1082), s.icon) << s.rssi;
    }
    rx_wifi_monitor_stop();
}
