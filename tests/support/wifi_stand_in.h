#pragma once

#include <unistd.h>

#include <string>

#include "platform/device_paths.h"
#include "tests/support/temp_dir.h"
#include "toolkit/wifi_monitor.h"

// Gives the stand-in supplicant `state` (connected by default) at `rssi` dBm,
// as the desktop's device tool does, and waits (bounded) until a running
// monitor published it.
inline bool publishWifi(int rssi, const std::string& state = "COMPLETED") {
    writeFileAtomic(devicePath(DEVICE_PATH_WPA_STAND_IN),
                    "ssid=HomeNet\nwpa_state=" + state + "\nip_address=10.0.0.2\nRSSI=" + std::to_string(rssi) +
                        "\nLINKSPEED=72\n");
    for (int i = 0; i < 500 && rx_copy_wpa_msg().rssi != rssi; i++) usleep(10 * 1000);
    return rx_copy_wpa_msg().rssi == rssi;
}
