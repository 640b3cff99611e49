#include "wifi_monitor.h"

#include <SDL2/SDL.h>
#include <ctype.h>
#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <system_error>
#include <thread>

#include "platform/device_paths.h"
#include "platform/fileutil.h"
#include "platform/logger.h"
#include "platform/shell_line.h"
#include "platform/stop_flag.h"
#include "platform/sysutil.h"
#include "keycodes.h"

namespace {

const int kPollPeriodMs = 3000;
const int kStandInPollPeriodMs = 500;
const size_t kAnswerBytes = 4095;
// The supplicant's control sockets and interface on the device. Its error
// output is dropped: where wpa_cli is missing every poll would print one.
const char* const kWpaCli = "wpa_cli -p /etc/wifi/sockets -i wlan0";

// What the monitor last saw, for logging each change once.
enum {
    SEEN_NOTHING = -3,
    SEEN_NO_SUPPLICANT = -2,
    SEEN_CLI_FAILED = -1,
    // 0 and above: a wpa_state code
};

struct StateName {
    const char* name;
    int state;
};

const StateName kStates[] = {
    {"COMPLETED", WPA_STATE_COMPLETED},
    {"INACTIVE", WPA_STATE_INACTIVE},
    {"SCANNING", WPA_STATE_SCANNING},
    {"4WAY_HANDSHAKE", WPA_STATE_4WAY_HANDSHAKE},
};

class SystemWpaShell : public WpaShell {
public:
    bool supplicantRunning() override { return check_process_exist("wpa_supplicant") > 0; }
    bool hotspotRunning() override { return check_process_exist("hostapd") > 0; }
    // A hung wpa_cli is killed on a stop instead of holding up shutdown.
    int query(const char* request, std::string* out, const StopFlag& stop) override {
        const char* path = devicePath(DEVICE_PATH_WPA_STATUS);
        const std::string line = std::string(kWpaCli) + " " + request + " 2>/dev/null > " + shellQuote(path);
        const int rc = runShellLine(line.c_str(), &stop);
        char text[kAnswerBytes + 1] = {};
        fileToMem(path, text, kAnswerBytes);
        *out = text;
        return rc;
    }
};

// The device's daemons as files in the device folder (device_paths.h).
class StandInWpaShell : public WpaShell {
public:
    bool supplicantRunning() override { return access(devicePath(DEVICE_PATH_WPA_STAND_IN), F_OK) == 0; }
    bool hotspotRunning() override { return access(devicePath(DEVICE_PATH_HOSTAPD_STAND_IN), F_OK) == 0; }
    // The file holds both answers: "status" gives all of it.
    int query(const char* request, std::string* out, const StopFlag&) override {
        out->clear();
        if (strcmp(request, "status") != 0) return 0;
        char text[kAnswerBytes + 1] = {};
        // As wpa_cli's when it cannot reach the supplicant.
        if (fileToMem(devicePath(DEVICE_PATH_WPA_STAND_IN), text, kAnswerBytes) <= 0) return 255 << 8;
        *out = text;
        return 0;
    }
};

SystemWpaShell sSystemShell;
StandInWpaShell sStandInShell;

// The published record: written whole by the monitor, copied whole by
// readers, both under sWpaLock.
WpaMsg sWpaMsg;
std::mutex sWpaLock;

// The monitor thread, owned by start and stop (one thread calls both): stop
// sets sStop, which wakes the thread's sleep and ends its shell line, then
// joins it.
std::thread sThread;
StopFlag sStop;

struct MonitorConfig {
    WpaShell* shell;  // not owned
    int periodMs;
};
MonitorConfig sConfig;  // written before the thread starts, then read only

// Value of `key` where it starts a line of `text`; NULL when there is none.
const char* findKey(const char* text, const char* key) {
    const size_t len = strlen(key);
    for (const char* line = text; line && *line;) {
        if (strncmp(line, key, len) == 0) return line + len;
        line = strchr(line, '\n');
        if (line) line++;
    }
    return nullptr;
}

// Copies the word at `value` (up to white space) into `out`, cut to fit.
void readWord(const char* value, char* out, size_t size) {
    size_t n = 0;
    while (value[n] && !isspace((unsigned char)value[n]) && n + 1 < size) {
        out[n] = value[n];
        n++;
    }
    out[n] = '\0';
}

// 0 when the value is missing or not a number.
int readInt(const char* value) {
    if (!value || !(isdigit((unsigned char)value[0]) || value[0] == '-' || value[0] == '+'))
        return 0;
    char* end = nullptr;
    errno = 0;
    const long n = strtol(value, &end, 10);
    if (end == value || errno == ERANGE || n < INT_MIN || n > INT_MAX) return 0;
    return (int)n;
}

int stateCode(const char* name) {
    for (const StateName& s : kStates)
        if (strcmp(name, s.name) == 0) return s.state;
    return WPA_STATE_OTHER;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// wpa_cli prints bytes outside printable ASCII as "\xNN"; turns them back
// into the bytes, in place.
void decodeHexEscapes(char* text) {
    char* out = text;
    for (const char* in = text; *in;) {
        if (in[0] == '\\' && in[1] == 'x' && hexDigit(in[2]) >= 0 && hexDigit(in[3]) >= 0) {
            *out++ = (char)(hexDigit(in[2]) * 16 + hexDigit(in[3]));
            in += 4;
        } else {
            *out++ = *in++;
        }
    }
    *out = '\0';
}

// One poll into *out. 0 when both requests succeeded, -1 when one failed;
// *out is set either way (zero where the output lacked a value). Once `stop`
// is set the rest of the poll is skipped: -1 and an all-zero record.
int pollOnce(WpaShell* shell, const StopFlag& stop, WpaMsg* out) {
    *out = WpaMsg{};
    std::string status, signal;
    const int statusRc = shell->query("status", &status, stop);
    if (stop.isSet()) return -1;
    const int signalRc = shell->query("signal_poll", &signal, stop);
    if (stop.isSet()) return -1;
    // Keys count at line starts: the second answer starts on a line of its own.
    *out = parseWpaStatus((status + "\n" + signal).c_str());
    return statusRc == 0 && signalRc == 0 ? 0 : -1;
}

// Publishes `msg`; true when what the status bar shows of it (the state and
// the signal) changed.
bool publish(const WpaMsg& msg) {
    std::lock_guard<std::mutex> hold(sWpaLock);
    const bool changed = msg.state != sWpaMsg.state || msg.rssi != sWpaMsg.rssi;
    sWpaMsg = msg;
    return changed;
}

// Wakes the main loop, which then looks at the status bar again.
void postRefresh() {
    if (!SDL_WasInit(SDL_INIT_EVENTS)) return;
    SDL_Event event = {};
    event.type = SDL_USEREVENT;
    event.user.code = EVENT_REFRESH;
    if (SDL_PushEvent(&event) < 0) tprintf("wifi monitor: push refresh fail: %s\n", SDL_GetError());
}

void logChange(int seen, int* lastSeen) {
    if (seen == *lastSeen) return;
    *lastSeen = seen;
    if (seen == SEEN_NO_SUPPLICANT)
        tprintf("wifi monitor: wpa_supplicant not running\n");
    else if (seen == SEEN_CLI_FAILED)
        tprintf("wifi monitor: wpa_cli failed, reporting not connected\n");
    else
        tprintf("wifi monitor: wpa_state %d\n", seen);
}

void thread_wifi_monitor(const MonitorConfig* config) {
    const unsigned tid = (unsigned)syscall(SYS_gettid);
    tprintf("%s pid %u tid %u (0x%x)\n", "new thread_wifi_monitor:", (unsigned)getpid(), tid, tid);
    int lastSeen = SEEN_NOTHING;
    do {
        if (config->shell->supplicantRunning()) {
            WpaMsg msg;
            const int rc = pollOnce(config->shell, sStop, &msg);
            // A poll cut short by the stop says nothing about the network.
            if (sStop.isSet()) break;
            if (publish(msg)) postRefresh();
            logChange(rc < 0 ? SEEN_CLI_FAILED : msg.state, &lastSeen);
        } else {
            logChange(SEEN_NO_SUPPLICANT, &lastSeen);
        }
    } while (!sStop.sleepFor(config->periodMs));
}

}  // namespace

WpaMsg parseWpaStatus(const char* text) {
    WpaMsg msg = {};
    if (!text) return msg;
    char word[64];
    if (const char* v = findKey(text, "wpa_state=")) {
        readWord(v, word, sizeof word);
        msg.state = stateCode(word);
    }
    if (const char* v = findKey(text, "ip_address="))
        readWord(v, msg.ip_address, sizeof msg.ip_address);
    if (const char* v = findKey(text, "ssid=")) {
        readWord(v, msg.ssid, sizeof msg.ssid);
        decodeHexEscapes(msg.ssid);
    }
    msg.id = readInt(findKey(text, "id="));
    msg.rssi = readInt(findKey(text, "RSSI="));
    msg.noise = readInt(findKey(text, "NOISE="));
    msg.linkspeed = readInt(findKey(text, "LINKSPEED="));
    msg.frequency = readInt(findKey(text, "FREQUENCY="));
    return msg;
}

WpaShell* systemWpaShell() {
    if (deviceIsStandIn()) return &sStandInShell;
    return &sSystemShell;
}

int wifi_monitor_start(WpaShell* shell, int periodMs) {
    if (sThread.joinable()) {
        tprintf("wifi monitor already started.\n");
        return -1;
    }
    publish(WpaMsg{});
    sConfig.shell = shell ? shell : systemWpaShell();
    sConfig.periodMs = periodMs < 0 ? 0 : periodMs;
    sStop.reset();
    try {
        sThread = std::thread(thread_wifi_monitor, &sConfig);
    } catch (const std::system_error& e) {
        tprintf("create wifi monitor thread fail: %s\n", e.what());
        return -1;
    }
    return 0;
}

int rx_wifi_monitor_start() {
    return wifi_monitor_start(systemWpaShell(), deviceIsStandIn() ? kStandInPollPeriodMs : kPollPeriodMs);
}

void rx_wifi_monitor_stop() {
    if (!sThread.joinable()) return;
    sStop.set();
    sThread.join();
}

WpaMsg rx_copy_wpa_msg() {
    std::lock_guard<std::mutex> hold(sWpaLock);
    return sWpaMsg;
}
