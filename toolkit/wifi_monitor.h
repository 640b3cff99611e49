#pragma once

#include <string>

// Wi-Fi state for the status bar. Asking the supplicant costs two shell
// commands, far too slow for a frame, so a background thread polls it and
// publishes each result whole; the main thread only ever copies the record.

// Connection states as the supplicant's "wpa_state" names them.
enum {
    WPA_STATE_OTHER = 0,  // DISABLED and every state not listed here
    WPA_STATE_INACTIVE = 1,
    WPA_STATE_SCANNING = 2,
    WPA_STATE_COMPLETED = 4,  // the only connected state
    WPA_STATE_4WAY_HANDSHAKE = 6,
};

// One poll of the supplicant. A key missing from its output leaves the field
// 0 or empty.
struct WpaMsg {
    int state;            // WPA_STATE_*
    char ssid[64];        // network name, "\x" escapes decoded
    char ip_address[24];
    int rssi;             // dBm
    int linkspeed;
    int noise;
    int frequency;        // MHz
    int id;               // the supplicant's network id
};

// Parses the text of `wpa_cli status` followed by `wpa_cli signal_poll`.
// Keys count only at the start of a line; string values are one word, cut to
// their field. `text` may be NULL (an all-zero record).
WpaMsg parseWpaStatus(const char* text);

class StopFlag;

// The device's network daemons, as the monitor and the status bar reach them:
// the system's shell and process table on the device, a stand-in elsewhere.
class WpaShell {
public:
    virtual ~WpaShell() {}
    // True when the Wi-Fi client daemon (wpa_supplicant) runs, so that asking
    // it makes sense.
    virtual bool supplicantRunning() = 0;
    // True when the hotspot daemon (hostapd) runs.
    virtual bool hotspotRunning() = 0;
    // Asks the supplicant what `wpa_cli REQUEST` prints ("status" or
    // "signal_poll") into *out, at most 4095 bytes; returns the status as
    // system() reports it. Must return promptly once `stop` is set, ending
    // the command if need be (then any non-zero status).
    virtual int query(const char* request, std::string* out, const StopFlag& stop) = 0;
};

// The one for this process: on the device the process table and wpa_cli
// through the shell; where the device is a stand-in (deviceIsStandIn) the
// stand-in files in the device folder, which the desktop's device tool
// writes. Never deleted.
WpaShell* systemWpaShell();

// Clears the published record and starts the monitor thread on
// systemWpaShell(), which polls every 3 s while the supplicant runs (the
// record keeps its last value while it does not; a stand-in, costing one
// file read, is polled every 500 ms). A poll that changes the state or the
// signal posts EVENT_REFRESH, so the status bar shows it at once. 0 when
// started; -1, record untouched, when it already runs (logged) or the thread
// could not be created. Start and stop are called from one thread.
int rx_wifi_monitor_start();
// The same with another shell (not owned; it must outlive the monitor) and
// poll period, for tests.
int wifi_monitor_start(WpaShell* shell, int periodMs);
// Wakes the thread, ends a wpa_cli it is waiting for, and joins it: returns
// within milliseconds however long wpa_cli would take. Nothing happens when
// no monitor runs.
void rx_wifi_monitor_stop();

// The last record the monitor published (all zero before its first poll),
// copied whole under the publication lock. Any thread.
WpaMsg rx_copy_wpa_msg();
