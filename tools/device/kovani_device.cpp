// The desktop's hand on the device's state: writes the stand-in files that
// the status bar reads (battery and charger, the key memory's volume, the
// Bluetooth audio device and markers, the network daemons' stand-ins) under
// the desktop build's device folder, so a running player shows them as the
// device would. Run through `./kovani device`.

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "platform/device_paths.h"
#include "platform/fileutil.h"
#include "platform/key_shm.h"

namespace {

const char* const kUsage =
    "usage: ./kovani device [SETTING VALUE...]\n"
    "  (nothing)                          print the device's state\n"
    "  battery [0..100] [charging|discharging]\n"
    "                                     charge in percent; charging: on the charger\n"
    "  volume 0..20                       0 shows mute\n"
    "  headphones on|off                  sound goes to Bluetooth headphones\n"
    "  bluetooth on|off                   a Bluetooth headphone is paired and ready\n"
    "  wifi -126..0|off                   connected at that signal in dBm (-70 and up: full,\n"
    "                                     -80 to -71: two bars, below: one), or switched off\n"
    "  hotspot on|off                     the device serves a hotspot (the Wi-Fi client stops)\n"
    "  reset                              a full battery, not charging, volume 14, no\n"
    "                                     headphones, no Bluetooth, no Wi-Fi, no hotspot\n"
    "Settings can follow each other: ./kovani device battery 15 charging volume 0\n";

const int kVolumeMax = 20;
const int kDefaultVolume = 14;  // the device settings' default
const int kRssiMin = -126;

// A supplicant connected to a made-up network; only the signal varies.
const char* const kConnectedStatus =
    "bssid=02:00:00:00:00:01\nfreq=2437\nssid=KovaniDesk\nid=0\nmode=station\n"
    "pairwise_cipher=CCMP\ngroup_cipher=CCMP\nkey_mgmt=WPA2-PSK\nwpa_state=COMPLETED\n"
    "ip_address=192.168.4.23\n";

void makeParents(const std::string& path) {
    for (size_t pos = path.find('/', 1); pos != std::string::npos; pos = path.find('/', pos + 1))
        mkdir(path.substr(0, pos).c_str(), 0755);
}

// Written whole through a rename, so a reader never sees half of it.
bool writeFile(int id, const std::string& text) {
    const std::string path = devicePath(id);
    makeParents(path);
    const std::string temp = path + ".new";
    FILE* f = fopen(temp.c_str(), "w");
    if (!f) {
        fprintf(stderr, "kovani device: cannot write %s: %s\n", temp.c_str(), strerror(errno));
        return false;
    }
    const bool written = fputs(text.c_str(), f) >= 0;
    if (fclose(f) != 0 || !written || rename(temp.c_str(), path.c_str()) != 0) {
        fprintf(stderr, "kovani device: cannot write %s: %s\n", path.c_str(), strerror(errno));
        unlink(temp.c_str());
        return false;
    }
    return true;
}

bool removeFile(int id) {
    if (unlink(devicePath(id)) == 0 || errno == ENOENT) return true;
    fprintf(stderr, "kovani device: cannot remove %s: %s\n", devicePath(id), strerror(errno));
    return false;
}

bool exists(int id) { return access(devicePath(id), F_OK) == 0; }

// The file's first line, "" when it cannot be read.
std::string firstLine(int id) {
    char text[256] = {};
    fileToMem(devicePath(id), text, sizeof text - 1);
    text[strcspn(text, "\n")] = '\0';
    return text;
}

// Whole decimal `text` within [lo, hi] into *out.
bool parseInt(const char* text, int lo, int hi, int* out) {
    char* end = nullptr;
    errno = 0;
    const long v = strtol(text, &end, 10);
    if (end == text || *end || errno || v < lo || v > hi) return false;
    *out = (int)v;
    return true;
}

bool parseSwitch(const char* text, bool* on) {
    *on = strcmp(text, "on") == 0;
    return *on || strcmp(text, "off") == 0;
}

bool setCharging(bool charging) {
    const std::string capacity = firstLine(DEVICE_PATH_BATTERY_CAPACITY);
    const char* status = !charging ? "Discharging" : capacity == "100" ? "Full" : "Charging";
    return writeFile(DEVICE_PATH_BATTERY_STATUS, std::string(status) + "\n") &&
           writeFile(DEVICE_PATH_USB_ONLINE, charging ? "1\n" : "0\n");
}

bool charging() { return firstLine(DEVICE_PATH_USB_ONLINE) == "1"; }

bool setVolume(int volume) {
    KeyShmInfo shm;
    if (InitKeyShm(&shm) != 0) {
        fprintf(stderr, "kovani device: cannot open the key memory %s\n", devicePath(DEVICE_PATH_KEY_SHM));
        return false;
    }
    const bool ok = SetKeyShm(&shm, MONITOR_VOLUME, volume) == 0;
    UninitKeyShm(&shm);
    return ok;
}

int volume() {
    KeyShmInfo shm;
    if (InitKeyShm(&shm) != 0) return -1;
    const int v = GetKeyShm(&shm, MONITOR_VOLUME);
    UninitKeyShm(&shm);
    return v;
}

bool setWifi(bool on, int rssi) {
    if (!on) return removeFile(DEVICE_PATH_WPA_STAND_IN);
    char signal[160];
    snprintf(signal, sizeof signal, "RSSI=%d\nLINKSPEED=72\nNOISE=9999\nFREQUENCY=2437\n", rssi);
    return removeFile(DEVICE_PATH_HOSTAPD_STAND_IN) &&
           writeFile(DEVICE_PATH_WPA_STAND_IN, std::string(kConnectedStatus) + signal);
}

bool setHotspot(bool on) {
    if (!on) return removeFile(DEVICE_PATH_HOSTAPD_STAND_IN);
    return removeFile(DEVICE_PATH_WPA_STAND_IN) && writeFile(DEVICE_PATH_HOSTAPD_STAND_IN, "");
}

bool setMarker(int id, bool on) { return on ? writeFile(id, "") : removeFile(id); }

bool setBluetooth(bool on) {
    return on ? writeFile(DEVICE_PATH_BT_DEV_ADDR, "02:00:00:00:00:02\n") && writeFile(DEVICE_PATH_BT_READY, "")
              : removeFile(DEVICE_PATH_BT_DEV_ADDR) && removeFile(DEVICE_PATH_BT_READY);
}

bool reset() {
    return writeFile(DEVICE_PATH_BATTERY_CAPACITY, "100\n") && setCharging(false) && setVolume(kDefaultVolume) &&
           setMarker(DEVICE_PATH_BT_AUDIO, false) && setBluetooth(false) && setWifi(false, 0) &&
           setHotspot(false);
}

void printState() {
    const std::string capacity = firstLine(DEVICE_PATH_BATTERY_CAPACITY);
    printf("battery     %s%% %s\n", capacity.empty() ? "?" : capacity.c_str(),
           charging() ? "charging" : "discharging");
    const int v = volume();
    printf("volume      %d%s\n", v, v <= 0 ? " (mute)" : "");
    printf("headphones  %s\n", exists(DEVICE_PATH_BT_AUDIO) ? "on" : "off");
    printf("bluetooth   %s\n", exists(DEVICE_PATH_BT_DEV_ADDR) && exists(DEVICE_PATH_BT_READY) ? "on" : "off");
    if (exists(DEVICE_PATH_WPA_STAND_IN)) {
        char text[1024] = {};
        fileToMem(devicePath(DEVICE_PATH_WPA_STAND_IN), text, sizeof text - 1);
        const char* rssi = strstr(text, "RSSI=");
        printf("wifi        %s dBm\n", rssi ? std::to_string(atoi(rssi + 5)).c_str() : "?");
    } else {
        printf("wifi        off\n");
    }
    printf("hotspot     %s\n", exists(DEVICE_PATH_HOSTAPD_STAND_IN) ? "on" : "off");
    printf("(files under %s)\n", devicePathPrefix());
}

int usageError(const char* what) {
    fprintf(stderr, "kovani device: %s\n%s", what, kUsage);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        printState();
        return 0;
    }
    // Every setting is checked before anything is written.
    for (int pass = 0; pass < 2; pass++) {
        const bool apply = pass == 1;
        for (int i = 1; i < argc; i++) {
            const std::string name = argv[i];
            const char* value = i + 1 < argc ? argv[i + 1] : "";
            bool ok = true, on = false;
            int n = 0;
            if (name == "help" || name == "-h" || name == "--help") {
                fputs(kUsage, stdout);
                return 0;
            } else if (name == "reset") {
                ok = !apply || reset();
            } else if (name == "battery") {
                bool given = false;
                if (parseInt(value, 0, 100, &n)) {
                    given = true;
                    if (apply) ok = writeFile(DEVICE_PATH_BATTERY_CAPACITY, std::to_string(n) + "\n");
                    value = ++i + 1 < argc ? argv[i + 1] : "";
                }
                // Also after a new charge: "Full" or "Charging" follows it.
                const bool word = !strcmp(value, "charging") || !strcmp(value, "discharging");
                if (word) i++;
                if (!given && !word) return usageError("battery takes a charge 0..100 and/or charging|discharging");
                if (apply && ok) ok = setCharging(word ? value[0] == 'c' : charging());
            } else if (name == "volume") {
                if (!parseInt(value, 0, kVolumeMax, &n)) return usageError("volume takes 0..20");
                i++;
                ok = !apply || setVolume(n);
            } else if (name == "headphones" || name == "bluetooth" || name == "hotspot") {
                if (!parseSwitch(value, &on)) return usageError((name + " takes on or off").c_str());
                i++;
                if (apply)
                    ok = name == "headphones" ? setMarker(DEVICE_PATH_BT_AUDIO, on)
                         : name == "bluetooth" ? setBluetooth(on)
                                               : setHotspot(on);
            } else if (name == "wifi") {
                const bool off = !strcmp(value, "off");
                if (!off && !parseInt(value, kRssiMin, 0, &n))
                    return usageError("wifi takes a signal from -126 to 0 dBm, or off");
                i++;
                ok = !apply || setWifi(!off, n);
            } else {
                return usageError(("unknown setting " + name).c_str());
            }
            if (!ok) return 1;
        }
    }
    return 0;
}
