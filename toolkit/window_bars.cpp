#include "window_bars.h"

#include <SDL2/SDL_ttf.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "lang.h"
#include "platform/clock.h"
#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "platform/logger.h"
#include "shared_skin.h"
#include "system_state.h"
#include "text.h"
#include "wifi_monitor.h"
#include "window.h"

namespace {

// The battery group is anchored here; every other icon is placed from
// kIconAnchorX leftwards.
const int kBatterySlotX = 1256;
const int kIconAnchorX = 1223;
const int kChargingIconW = 16;
const int kTipRowH = 70;
const int kTipGap = 24;
const int kTipTextGap = 10;
const int kTitleX = 110;
const int kTitleGap = 10;

// What the top bar shows besides sound and Wi-Fi. Reading it means sysfs
// files and, on the device, two walks of the process table, so it is kept
// for BAR_STATUS_PERIOD_MS.
struct BarStatus {
    int capacity;      // percent, 0 when unreadable
    bool charging;
    bool supplicant;   // Wi-Fi client mode
    bool hostapd;      // hotspot mode
    bool btHeadphone;  // both Bluetooth markers exist
    bool btAudio;      // the Bluetooth sound device is readable
};

BarStatus sStatus;
bool sStatusValid = false;
long sStatusReadMs = 0;  // monotonic
bool sCapacityReadable = true;  // last outcome, to log a change once

// The first line of a small sysfs file; false when it cannot be read.
bool readLine(int pathId, char* buf, int size) {
    buf[0] = '\0';
    FILE* f = fopen(devicePath(pathId), "r");
    if (!f) return false;
    const bool ok = fgets(buf, size, f) != nullptr;
    fclose(f);
    return ok;
}

int readCapacity() {
    char text[16];
    const bool ok = readLine(DEVICE_PATH_BATTERY_CAPACITY, text, sizeof text);
    if (ok != sCapacityReadable) {
        sCapacityReadable = ok;
        if (!ok) tprintf("battery capacity unreadable: %s\n", devicePath(DEVICE_PATH_BATTERY_CAPACITY));
    }
    if (!ok) return 0;
    const long value = strtol(text, nullptr, 10);
    return value < 0 ? 0 : (int)SDL_min(value, 1000L);
}

bool readCharging() {
    char status[32];
    char online[32];
    const bool statusOk = readLine(DEVICE_PATH_BATTERY_STATUS, status, sizeof status);
    const bool onlineOk = readLine(DEVICE_PATH_USB_ONLINE, online, sizeof online);
    return (onlineOk && online[0] == '1') ||
           (statusOk && strncmp(status, "Charging", 8) == 0);
}

bool statusFresh(long now) {
    return sStatusValid && now >= sStatusReadMs && now - sStatusReadMs < BAR_STATUS_PERIOD_MS;
}

const BarStatus& barStatus() {
    const long now = monotonicMs();
    if (statusFresh(now)) return sStatus;
    WpaShell* daemons = systemWpaShell();
    sStatus.capacity = readCapacity();
    sStatus.charging = readCharging();
    sStatus.supplicant = daemons->supplicantRunning();
    sStatus.hostapd = !sStatus.supplicant && daemons->hotspotRunning();
    sStatus.btHeadphone = access(devicePath(DEVICE_PATH_BT_DEV_ADDR), F_OK) == 0 &&
                          access(devicePath(DEVICE_PATH_BT_READY), F_OK) == 0;
    sStatus.btAudio = access(devicePath(DEVICE_PATH_BT_AUDIO), R_OK) == 0;
    sStatusValid = true;
    sStatusReadMs = now;
    return sStatus;
}

// Copies the slot's rectangle of the background onto itself, so icons with
// transparent parts never pile up.
void cleanArea(int x, int y, int w) {
    if (!gBackground) return;
    SDL_Rect r = {x, y, w, BAR_SLOT_H};
    gBackground->render(&r, &r, false, nullptr);
}

void cleanSlot(int x, int barY) { cleanArea(x, barY + BAR_SLOT_TOP, BAR_SLOT_W); }

void drawIconAt(int x, int barY, const char* name) {
    const SDL_Rect slot = {x, barY + BAR_SLOT_TOP, BAR_SLOT_W, BAR_SLOT_H};
    draw_bar_icon(slot, name);
}

const char* batteryIcon(int capacity) {
    if (capacity >= 80) return "skin/ic-batery-100%.png";
    if (capacity >= 50) return "skin/ic-batery-75%.png";
    if (capacity >= 25) return "skin/ic-batery-50%.png";
    if (capacity >= 5) return "skin/ic-batery-25%.png";
    return "skin/ic-batery-0%.png";
}

const char* wifiIcon(int rssi) {
    if (rssi >= -70 && rssi <= 127) return "skin/ic-wifi-03.png";
    if (rssi >= -80 && rssi <= -71) return "skin/ic-wifi-02.png";
    return "skin/ic-wifi-01.png";
}

}  // namespace

void draw_bar_icon(const SDL_Rect& slot, const char* name) {
    KovaniSurface* icon = static_cast<KovaniSurface*>(gIconCache.get(name));
    if (!icon) {
        icon = LoadKovaniSurface(gThemePath, "./", name);
        if (!icon) {
            tprintf("status icon %s not found\n", name);
            // Not searched for again on every frame.
            icon = new AbsentSurface();
        }
        gIconCache.put(name, icon);
    }
    const int w = icon->getWidth();
    const int h = icon->getHeight();
    if (w <= 0 || h <= 0) return;
    SDL_Rect at = {slot.x + (BAR_SLOT_W - w) / 2, slot.y + (BAR_SLOT_H - h) / 2, w, h};
    icon->render(nullptr, &at, true, nullptr);
}

namespace {

// Everything the top bar's status icons show, taken at one moment: a bar is
// drawn from one look, and the loop compares looks to know when to draw.
struct BarLook {
    int capacity;
    bool charging;
    bool sound;            // volume above 0, else mute
    bool btAudio;          // the headphone icon beside the sound's
    const char* network;   // the Wi-Fi or hotspot icon, or null
    bool btHeadphone;      // the headphone icon at the far left
    bool operator!=(const BarLook& o) const {
        return capacity != o.capacity || charging != o.charging || sound != o.sound || btAudio != o.btAudio ||
               network != o.network || btHeadphone != o.btHeadphone;
    }
};

BarLook currentLook() {
    const BarStatus& status = barStatus();
    BarLook look = {status.capacity, status.charging, GetKeyShm(&gShmInfo, MONITOR_VOLUME) > 0,
                    status.btAudio,  nullptr,         status.btHeadphone};
    if (status.supplicant) {
        const WpaMsg wifi = rx_copy_wpa_msg();
        if (wifi.state == WPA_STATE_COMPLETED) look.network = wifiIcon(wifi.rssi);
    } else if (status.hostapd) {
        look.network = "skin/icon-hotspot.png";
    }
    return look;
}

// The look the last frame showed (what the loop compares with), and the one
// drawNavBar drew during the frame being made.
BarLook sShownLook = {-1, false, false, false, nullptr, false};
BarLook sDrawnLook;
bool sDrawnThisFrame = false;

int drawBatteryGroup(const BarLook& look, int y) {
    int x = kBatterySlotX;
    if (look.charging) x = kBatterySlotX - kChargingIconW - 2;
    x -= BAR_SLOT_W;

    int textX, textW;
    if (look.capacity < 10) {
        textX = x - 42;
        textW = 30;
    } else if (look.capacity < 100) {
        textX = x - 57;
        textW = 45;
    } else {
        textX = x - 72;
        textW = 60;
    }
    // The whole group, from the text to the battery slot's right edge.
    cleanArea(textX, y + BAR_SLOT_TOP, kBatterySlotX + BAR_SLOT_W - textX);

    if (look.charging) drawIconAt(kBatterySlotX - kChargingIconW, y, "skin/ic-charging.png");
    drawIconAt(x, y, batteryIcon(look.capacity));

    char text[16];
    snprintf(text, sizeof text, "%d%%", look.capacity);
    const SDL_Rect box = {textX, y + BAR_SLOT_TOP, textW, BAR_SLOT_H};
    DrawString(gNavFontIcon, box, text, gNavColorIcon, ALIGN_MIDDLE_LEFT);
    return textW + (look.charging ? 72 : 54);
}

}  // namespace

int draw_battery_icon(int y) { return drawBatteryGroup(currentLook(), y); }

int navBarTitleRight(int iconsWidth) { return kIconAnchorX - iconsWidth + BAR_SLOT_PITCH - kTitleGap; }

int KovaniWindow::drawNavBar(int y) {
    if (gIconBack) {
        SDL_Rect at = {20, y + 12, 0, 0};
        gIconBack->render(nullptr, &at, true, nullptr);
    }

    const BarLook look = currentLook();
    int used = drawBatteryGroup(look, y);
    int x = kIconAnchorX - used;

    cleanSlot(x, y);
    drawIconAt(x, y, look.sound ? "skin/ic-sound-n.png" : "skin/ic-sound-mute.png");
    used += BAR_SLOT_PITCH;
    x = kIconAnchorX - used;

    // Sound goes to Bluetooth headphones: their icon sits beside the sound's.
    if (look.btAudio) {
        cleanSlot(x, y);
        drawIconAt(x, y, "skin/icon-bluetooth-headphone.png");
        used += BAR_SLOT_PITCH;
        x = kIconAnchorX - used;
    }

    if (look.network) {
        cleanSlot(x, y);
        drawIconAt(x, y, look.network);
        used += BAR_SLOT_PITCH;
        x = kIconAnchorX - used;
    }

    cleanSlot(x, y);
    if (look.btHeadphone) {
        drawIconAt(x, y, "skin/icon-bluetooth-headphone.png");
        used += BAR_SLOT_PITCH;
    }
    sDrawnLook = look;
    sDrawnThisFrame = true;

    // Last: a long title (long CJK names) is cut to the room the icons leave.
    const char* title = getTitle();
    if (title && title[0]) {
        const SDL_Rect box = {kTitleX, y + 22, navBarTitleRight(used) - kTitleX, 0};
        DrawStringFitted(gNavFont, box, title, gNavColorTxt);
    }
    return used;
}

int draw_stat_icon_item_left(KovaniSurface* icon, int x, int y, const char* text) {
    const int iconW = icon->getWidth();
    SDL_Rect at = {x, y + (kTipRowH - icon->getHeight()) / 2 + 2, 0, 0};
    icon->render(nullptr, &at, true, nullptr);
    const int fontH = gStatFont ? TTF_FontHeight(gStatFont) : 0;
    const SDL_Rect box = {x + iconW + kTipTextGap, y + (kTipRowH - fontH) / 2 + 2, 0, 0};
    const int textW = DrawString(gStatFont, box, text, gStatColorTxt, ALIGN_TOP_LEFT);
    return iconW + kTipTextGap + textW;
}

int KovaniWindow::drawStatBar(int y) {
    const bool exchanged = GetKeyShm(&gShmInfo, MONITOR_B_CONFIRM) != 0;
    KovaniSurface* confirm = exchanged ? gIconB : gIconA;
    KovaniSurface* back = exchanged ? gIconA : gIconB;
    const struct {
        KovaniSurface* icon;
        int text;
    } tips[] = {{confirm, STRING_OPEN}, {back, STRING_BACK}, {gIconMenu, STRING_MENU}};

    int x = 30;
    for (const auto& tip : tips) {
        if (!tip.icon) continue;
        x += draw_stat_icon_item_left(tip.icon, x, y + 650, getLangStr(tip.text)) + kTipGap;
    }
    return x;
}

void invalidateBarStatus() { sStatusValid = false; }

long barsLookDueInMs() {
    const long now = monotonicMs();
    if (!statusFresh(now)) return 0;
    return sStatusReadMs + BAR_STATUS_PERIOD_MS - now;
}

bool barsNeedRedraw() { return currentLook() != sShownLook; }

// What the frame showed is what its bar was drawn from, not the state now: a
// change that came after the bar was drawn still differs and is drawn next.
// A window that drew no bar shows none, so nothing of it can be stale.
void noteBarsDrawn() {
    sShownLook = sDrawnThisFrame ? sDrawnLook : currentLook();
    sDrawnThisFrame = false;
}
