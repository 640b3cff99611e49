#pragma once

#include <stdio.h>

#include <atomic>
#include <string>

#include "toolkit/wifi_monitor.h"

// Answers the Wi-Fi monitor's two wpa_cli commands (into the file each
// names) as a supplicant connected at mRssi dBm would.
class ConnectedWpaShell : public WpaShell {
public:
    bool supplicantRunning() override { return true; }
    int run(const char* command, const StopFlag&) override {
        const std::string cmd = command;
        const bool signal = cmd.find(">> ") != std::string::npos;
        FILE* f = fopen(cmd.substr(cmd.rfind(' ') + 1).c_str(), signal ? "a" : "w");
        if (!f) return 2 << 8;
        if (signal)
            fprintf(f, "RSSI=%d\nLINKSPEED=72\n", mRssi.load());
        else
            fputs("ssid=HomeNet\nwpa_state=COMPLETED\nip_address=10.0.0.2\n", f);
        fclose(f);
        return 0;
    }
    // Sets the signal and waits (bounded) until the monitor published it.
    bool publish(int rssi) {
        mRssi = rssi;
        for (int i = 0; i < 500 && rx_copy_wpa_msg().rssi != rssi; i++) usleep(10 * 1000);
        return rx_copy_wpa_msg().rssi == rssi;
    }
    std::atomic<int> mRssi{0};
};
