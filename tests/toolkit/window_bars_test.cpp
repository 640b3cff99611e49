#include "toolkit/window_bars.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "platform/device_paths.h"
#include "tests/support/connected_wpa_shell.h"
#include "tests/support/fake_process.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/lang.h"
#include "toolkit/shared_skin.h"
#include "platform/sysutil.h"
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

    // Makes or removes an empty marker file.
    void setMarker(int id, bool on) { on ? writeFileAtomic(mRoot.at(id), "") : (void)remove(mRoot.at(id).c_str()); }

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

TEST_F(BarsTest, NavBarLaysIconsLeftwardsFromTheBatteryGroup) {
    BarWindow window;
    // Leftwards of sound, 42 px apart: Bluetooth audio, hotspot, headphone
    // markers; the slot after the last is cleaned, the next left alone.
    const char* const bt = "skin/icon-bluetooth-headphone.png";
    const struct { bool audio, markers, hotspot; int volume; const char* slots[3]; int used; } cases[] = {
        {false, false, false, 10, {"clean", "junk", "junk"}, 141},
        {false, true, false, 0, {bt, "junk", "junk"}, 183},
        {true, false, false, 10, {bt, "clean", "junk"}, 183},
        {true, true, true, 10, {bt, "skin/icon-hotspot.png", bt}, 267},
    };
    for (const auto& c : cases) {
        const std::string name = std::to_string(c.used);
        setMarker(DEVICE_PATH_BT_READY, c.markers);  // with the address file, a headphone
        setMarker(DEVICE_PATH_BT_AUDIO, c.audio);
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

// A long title ends short of the leftmost icon and uses the room up to it.
TEST_F(BarsTest, ALongTitleEndsLeftOfTheStatusIcons) {
    const SDL_Color white = {255, 255, 255, 255}, oldText = gNavColorTxt, oldIcon = gNavColorIcon;
    gNavColorTxt = white;
    gNavColorIcon = {0, 0, 1, 255};
    BarWindow window;
    std::string title;
    for (int i = 0; i < 40; i++) title += "Video ";
    window.mTitle = title.c_str();
    // The leftmost icon: the sound icon, or two Bluetooth icons further.
    for (int icons : {1124, 1040}) {
        for (int id : {DEVICE_PATH_BT_READY, DEVICE_PATH_BT_AUDIO}) setMarker(id, icons == 1040);
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

// Which icon each battery level and Wi-Fi signal shows, on both sides of
// every threshold; the plug while the supply is online or the battery says
// it charges.
TEST_F(BarsTest, IconThresholdTable) {
    BarWindow window;
    const struct { const char* capacity; const char* usb; const char* status; const char* battery; bool plug; } rows[] = {
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
    FakeProcess supplicant("wpa_supplicant");
    ConnectedWpaShell wifi;
    ASSERT_EQ(wifi_monitor_start(&wifi, 20), 0);
    const struct { int rssi; const char* icon; } signals[] = {
        {127, "skin/ic-wifi-03.png"}, {-70, "skin/ic-wifi-03.png"}, {-71, "skin/ic-wifi-02.png"},
        {-80, "skin/ic-wifi-02.png"}, {-81, "skin/ic-wifi-01.png"}, {-200, "skin/ic-wifi-01.png"},
    };
    for (const auto& s : signals) {
        ASSERT_TRUE(wifi.publish(s.rssi));
        invalidateBarStatus();
        clear(kJunk.r, kJunk.g, kJunk.b);
        window.drawNavBar(0);
        EXPECT_EQ(iconAt(1082), s.icon) << s.rssi;
    }
    rx_wifi_monitor_stop();
}
