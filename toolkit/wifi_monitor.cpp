#include "wifi_monitor.h"

#include <ctype.h>
#include <errno.h>
#include <limits.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "platform/fileutil.h"
#include "platform/logger.h"
#include "platform/device_paths.h"
#include "platform/sysutil.h"

namespace {

const int kPollPeriodMs = 3000;
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
    int run(const char* command) override { return system(command); }
};

SystemWpaShell sSystemShell;

// The published record: written whole by the monitor, copied whole by
// readers, both under sWpaLock.
WpaMsg sWpaMsg;
pthread_mutex_t sWpaLock = PTHREAD_MUTEX_INITIALIZER;

// Set while the thread should run. Changed under sWakeLock so that a stop
// never slips between the thread's check and its wait.
std::atomic<bool> sRunning(false);
pthread_mutex_t sWakeLock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t sWakeCond;  // monotonic clock; initialised by start, destroyed by stop

// Main thread only (start and stop).
pthread_t sThread;
bool sThreadJoinable = false;

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

// One poll into *out. 0 when both commands succeeded, -1 when one failed;
// *out is set either way (zero where the output lacked a value).
int pollOnce(WpaShell* shell, WpaMsg* out) {
    const char* path = devicePath(DEVICE_PATH_WPA_STATUS);
    const std::string file = shellQuote(path);
    const std::string status = std::string(kWpaCli) + " status 2>/dev/null > " + file;
    const std::string signal = std::string(kWpaCli) + " signal_poll 2>/dev/null >> " + file;
    const int statusRc = shell->run(status.c_str());
    const int signalRc = shell->run(signal.c_str());
    char text[4096] = {};
    fileToMem(path, text, sizeof text - 1);
    *out = parseWpaStatus(text);
    return statusRc == 0 && signalRc == 0 ? 0 : -1;
}

void publish(const WpaMsg& msg) {
    pthread_mutex_lock(&sWpaLock);
    sWpaMsg = msg;
    pthread_mutex_unlock(&sWpaLock);
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

// Sleeps one period unless stopped first; false when the thread should end.
bool waitPeriod(int periodMs) {
    struct timespec deadline;
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += periodMs / 1000;
    deadline.tv_nsec += (long)(periodMs % 1000) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        deadline.tv_sec += 1;
        deadline.tv_nsec -= 1000000000L;
    }
    pthread_mutex_lock(&sWakeLock);
    int rc = 0;
    while (sRunning && rc == 0) rc = pthread_cond_timedwait(&sWakeCond, &sWakeLock, &deadline);
    const bool run = sRunning;
    pthread_mutex_unlock(&sWakeLock);
    return run;
}

void* thread_wifi_monitor(void* arg) {
    const MonitorConfig* config = static_cast<const MonitorConfig*>(arg);
    const unsigned tid = (unsigned)syscall(SYS_gettid);
    tprintf("%s pid %u tid %u (0x%x)\n", "new thread_wifi_monitor:", (unsigned)getpid(), tid, tid);
    int lastSeen = SEEN_NOTHING;
    do {
        if (config->shell->supplicantRunning()) {
            WpaMsg msg;
            const int rc = pollOnce(config->shell, &msg);
            publish(msg);
            logChange(rc < 0 ? SEEN_CLI_FAILED : msg.state, &lastSeen);
        } else {
            logChange(SEEN_NO_SUPPLICANT, &lastSeen);
        }
    } while (waitPeriod(config->periodMs));
    return nullptr;
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

WpaShell* systemWpaShell() { return &sSystemShell; }

WpaMsg rx_get_wpa_msg(WpaShell* shell) {
    WpaMsg msg;
    pollOnce(shell ? shell : &sSystemShell, &msg);
    return msg;
}

WpaMsg rx_get_wpa_msg() { return rx_get_wpa_msg(&sSystemShell); }

int wifi_monitor_start(WpaShell* shell, int periodMs) {
    bool stopped = false;
    if (sThreadJoinable || !sRunning.compare_exchange_strong(stopped, true)) {
        tprintf("wifi monitor already started.\n");
        return -1;
    }
    publish(WpaMsg{});
    sConfig.shell = shell ? shell : &sSystemShell;
    sConfig.periodMs = periodMs < 0 ? 0 : periodMs;
    pthread_condattr_t attr;
    pthread_condattr_init(&attr);
    pthread_condattr_setclock(&attr, CLOCK_MONOTONIC);
    pthread_cond_init(&sWakeCond, &attr);
    pthread_condattr_destroy(&attr);
    const int err = pthread_create(&sThread, nullptr, thread_wifi_monitor, &sConfig);
    if (err != 0) {
        tprintf("create wifi monitor thread fail: %s\n", strerror(err));
        sRunning = false;
        pthread_cond_destroy(&sWakeCond);
        return -1;
    }
    sThreadJoinable = true;
    return 0;
}

int rx_wifi_monitor_start() { return wifi_monitor_start(&sSystemShell, kPollPeriodMs); }

void rx_wifi_monitor_stop() {
    if (!sThreadJoinable) return;
    pthread_mutex_lock(&sWakeLock);
    sRunning = false;
    pthread_cond_broadcast(&sWakeCond);
    pthread_mutex_unlock(&sWakeLock);
    pthread_join(sThread, nullptr);
    sThreadJoinable = false;
    pthread_cond_destroy(&sWakeCond);
}

WpaMsg rx_copy_wpa_msg() {
    pthread_mutex_lock(&sWpaLock);
    const WpaMsg msg = sWpaMsg;
    pthread_mutex_unlock(&sWpaLock);
    return msg;
}
