// What the user sees, screen by screen, against reference pictures kept in
// tests/reference (./kovani references writes them anew; look at each).

#include <gtest/gtest.h>

#include <string>

#include "tests/player/player_window_fixture.h"
#include "tests/support/bare_window.h"
#include "tests/support/reference_image.h"
#include "tests/support/wifi_stand_in.h"
#include "toolkit/shared_skin.h"
#include "toolkit/wifi_monitor.h"

namespace {

// The frame as the screen shows it: the interface over the decoder's
// picture, three bands filling the rectangle the player last sent it, black
// elsewhere (the display engine's layers, done here in software).
Picture onVideo(const Picture& ui, SDL_Rect video) {
    const Uint32 bands[] = {0xC83232, 0x32A032, 0x3232C8};
    Picture out = ui;
    for (int y = 0; y < ui.h; y++)
        for (int x = 0; x < ui.w; x++) {
            Uint32& p = out.argb[size_t(y) * ui.w + x];
            const bool inside = x >= video.x && x < video.x + video.w && y >= video.y && y < video.y + video.h;
            const Uint32 v = inside ? bands[(y - video.y) * 3 / video.h] : 0;
            const Uint32 a = p >> 24;
            Uint32 mixed = 0xFF000000;
            for (int shift = 0; shift < 24; shift += 8)
                mixed |= ((((p >> shift) & 0xFF) * a + ((v >> shift) & 0xFF) * (255 - a)) / 255) << shift;
            p = mixed;
        }
    return out;
}

const SDL_Rect kNone = {0, 0, 0, 0}, kWindowed = {650, 85, 610, 360}, kFull = {0, 0, 1280, 720};

bool operator==(SDL_Rect a, SDL_Rect b) { return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h; }

class PlayerScreens : public PlayerLoopTest {
protected:
    // Once the loop is idle and the decoder was last sent `video` (the
    // client sends on its own thread): compares the screen with reference
    // `name`, then queues `codes`.
    void looks(const std::string& name, SDL_Rect video, std::vector<int> codes,
               std::function<bool()> ready = nullptr) {
        step([this, name] { EXPECT_TRUE(matchesReference(name, onVideo(shot(), lastVideoRect()))); }, codes,
             [this, video, ready] { return lastVideoRect() == video && (!ready || ready()); });
    }
};

}  // namespace

// A session: browse, play, move on, pause, fullscreen with and without its
// panel, the settings over it for each ratio, the picture at 4:3 there and
// in the window, the quit question, the list scrolled to its end, onto a
// long name.
TEST_F(PlayerScreens, EachScreenOfASession) {
    // The last, a long name, is cut short in the list and in the title line.
    const std::string longName = "\xe8\xa7\x86\xe9\xa2\x91 by the sea, the whole long afternoon with all who "
                                 "came along and stayed on into the night.mp4";
    for (const char* name : {"d.mp4", "e.mp4", "f.mp4", "g.mp4", longName.c_str()})
        writeFileAtomic(mVideos + "/" + name, "");
    PlayerWindow* player = openPlayer();
    step(nullptr, {KEY_DOWN, KEY_DOWN});  // x, y, a.mp4
    looks("browser", kNone, {KEY_A});
    step([&] {
        ASSERT_TRUE(started("/a.mp4"));
        reportStatus("playing", 3723000, 307000);  // 1:02:03, at 05:07
        EXPECT_TRUE(waitQueued(EVENT_REFRESH));
    }, {});
    looks("playing", kWindowed, {KEY_DOWN});
    looks("playing-mark-below-cursor", kWindowed, {KEY_START});
    looks("paused", kWindowed, {KEY_START, KEY_SELECT_COIN, KEY_RIGHT});
    looks("fullscreen-panel", kFull, {});
    looks("fullscreen", kFull, {KEY_MENU_KEY}, [&] { return player->nextRedrawMs() < 0; });
    looks("settings-default", kFull, {KEY_DOWN, KEY_RIGHT});
    looks("settings-4-3", kFull, {KEY_RIGHT});
    looks("settings-16-9", kFull, {KEY_LEFT, KEY_B});
    step(nullptr, {KEY_B}, [&] { return lastVideoRect() == SDL_Rect{160, 0, 960, 720}; });
    looks("playing-4-3", {715, 85, 480, 360}, {KEY_B});
    looks("quit-question", {715, 85, 480, 360}, {KEY_B, KEY_UP, KEY_UP, KEY_UP, KEY_UP});
    looks("scrolled-to-the-end", {715, 85, 480, 360}, {0});
    run();
}

TEST_F(PlayerScreens, TheChineseInterface) {
    setSystemLanguage("ch.lang");
    initLang();
    openPlayer();
    step(nullptr, {KEY_MENU_KEY});
    looks("chinese-settings", kNone, {KEY_A});  // the Quit row
    looks("chinese-quit-question", kNone, {KEY_B, 0});
    run();
}

namespace {

// The background and both bars, nothing else.
class BarWindow : public BareWindow {
public:
    BarWindow() : BareWindow(STRING_MEDIAPLAYER) {}
    int draw() override {
        if (gBackground) gBackground->render(nullptr, nullptr, false, nullptr);
        drawNavBar(0);
        drawStatBar(0);
        return 0;
    }
};

class BarScreens : public PlayerWindowTest {
protected:
    void TearDown() override {
        rx_wifi_monitor_stop();
        PlayerWindowTest::TearDown();
    }
    void setFile(int id, const char* text) {
        text ? writeFileAtomic(mRoot.at(id), text) : (void)remove(mRoot.at(id).c_str());
    }
    // The status icons of the top bar as drawn now.
    void expectBars(const std::string& name) {
        invalidateBarStatus();
        BarWindow window;
        window.draw();
        EXPECT_TRUE(matchesReference("bar-" + name, shot({880, 0, 400, 80})));
    }
};

}  // namespace

// Battery levels at the low end of each icon's band, charging, mute,
// headphones, the hotspot and each Wi-Fi level.
TEST_F(BarScreens, EachStateOfTheStatusBar) {
    for (const char* capacity : {"80", "50", "25", "5", "4"}) {
        setFile(DEVICE_PATH_BATTERY_CAPACITY, capacity);
        expectBars(std::string("battery-") + capacity);
    }
    setFile(DEVICE_PATH_BATTERY_CAPACITY, "100");
    setFile(DEVICE_PATH_USB_ONLINE, "1\n");
    expectBars("charging");
    setFile(DEVICE_PATH_USB_ONLINE, "0\n");

    SetKeyShm(&gShmInfo, MONITOR_VOLUME, 0);
    expectBars("mute");
    SetKeyShm(&gShmInfo, MONITOR_VOLUME, 10);
    // Sound to Bluetooth headphones, and the headphones' own markers.
    for (int id : {DEVICE_PATH_BT_AUDIO, DEVICE_PATH_BT_DEV_ADDR, DEVICE_PATH_BT_READY}) setFile(id, "");
    expectBars("headphones");
    for (int id : {DEVICE_PATH_BT_AUDIO, DEVICE_PATH_BT_DEV_ADDR, DEVICE_PATH_BT_READY}) setFile(id, nullptr);
    setFile(DEVICE_PATH_HOSTAPD_STAND_IN, "");
    expectBars("hotspot");
    setFile(DEVICE_PATH_HOSTAPD_STAND_IN, nullptr);
    ASSERT_EQ(wifi_monitor_start(systemWpaShell(), 20), 0);
    for (int rssi : {-70, -80, -81}) {
        ASSERT_TRUE(publishWifi(rssi));
        expectBars("wifi" + std::to_string(rssi));
    }
}

// The device's settings may make B confirm and A go back.
TEST_F(BarScreens, TheTipsAsTheyAreAndWithAAndBSwapped) {
    BarWindow window;
    for (int swapped : {0, 1}) {
        SetKeyShm(&gShmInfo, MONITOR_B_CONFIRM, swapped);
        window.draw();
        EXPECT_TRUE(matchesReference(swapped ? "tips-swapped" : "tips", shot({0, 650, 640, 70})));
    }
}
