#include "toolkit/wifi_monitor.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"
#include "toolkit/sysutil.h"

namespace {

const char* const kConnectedStatus =
    "bssid=12:34:56:78:9a:bc\n"
    "freq=2437\n"
    "ssid=HomeNet\n"
    "id=3\n"
    "key_mgmt=WPA2-PSK\n"
    "wpa_state=COMPLETED\n"
    "ip_address=192.168.1.23\n"
    "address=a0:b1:c2:d3:e4:f5\n";
const char* const kSignalPoll =
    "RSSI=-55\nLINKSPEED=72\nNOISE=-92\nFREQUENCY=2437\nWIDTH=20 MHz\nAVG_RSSI=-57\n";
const char* const kNoSocket =
    "Failed to connect to non-global ctrl_ifname: wlan0  error: No such file or directory\n";

bool sameRecord(const WpaMsg& a, const WpaMsg& b) {
    return a.state == b.state && std::string(a.ssid) == b.ssid &&
           std::string(a.ip_address) == b.ip_address && a.rssi == b.rssi &&
           a.linkspeed == b.linkspeed && a.noise == b.noise && a.frequency == b.frequency &&
           a.id == b.id;
}

std::string describe(const WpaMsg& m) {
    return "state " + std::to_string(m.state) + " ssid '" + m.ssid + "' ip '" + m.ip_address +
           "' rssi " + std::to_string(m.rssi) + " speed " + std::to_string(m.linkspeed) +
           " noise " + std::to_string(m.noise) + " freq " + std::to_string(m.frequency) +
           " id " + std::to_string(m.id);
}

WpaMsg record(int state, const char* ssid, const char* ip, int rssi, int speed, int noise,
              int freq, int id) {
    WpaMsg m = {};
    m.state = state;
    snprintf(m.ssid, sizeof m.ssid, "%s", ssid);
    snprintf(m.ip_address, sizeof m.ip_address, "%s", ip);
    m.rssi = rssi;
    m.linkspeed = speed;
    m.noise = noise;
    m.frequency = freq;
    m.id = id;
    return m;
}

// Stands in for the shell and the supplicant: answers each poll's two
// wpa_cli commands by writing the scripted output into the file named after
// the redirection, the way the shell would.
class ScriptedShell : public WpaShell {
public:
    struct Answer { std::string status, signal; };

    bool supplicantRunning() override { return mSupplicant; }

    int run(const char* command) override {
        const std::string cmd = command;
        const bool append = cmd.find(">> ") != std::string::npos;
        const std::string path = cmd.substr(cmd.rfind(' ') + 1);
        if (!append) mCurrent = mAnswers[mPolls % mAnswers.size()];
        FILE* f = fopen(path.c_str(), append ? "a" : "w");
        if (!f) return 2 << 8;
        if (mExitStatus == 0) fputs(append ? mCurrent.signal.c_str() : mCurrent.status.c_str(), f);
        fclose(f);
        if (append) mPolls++;
        return mExitStatus;
    }

    // Waits until `total` polls have happened since the shell was made.
    bool waitForPolls(int total) {
        for (int i = 0; i < 2000 && mPolls < total; i++) usleep(10 * 1000);
        return mPolls >= total;
    }

    std::vector<Answer> mAnswers;  // set before the monitor starts
    std::atomic<bool> mSupplicant{true};
    std::atomic<int> mExitStatus{0};
    std::atomic<int> mPolls{0};

private:
    Answer mCurrent;  // the monitor thread's only
};

class WifiMonitorTest : public ::testing::Test {
protected:
    void SetUp() override { makeDirs(std::filesystem::path(mRoot.at(DEVICE_PATH_WPA_STATUS)).parent_path()); }
    // Runs before mShell goes, so the thread never outlives its shell.
    void TearDown() override { rx_wifi_monitor_stop(); }

    TempDeviceRoot mRoot;
    ScriptedShell mShell;
};

}  // namespace

TEST(WpaStatusParse, ReadsEachFieldFromItsOwnLine) {
    const std::string connected = std::string(kConnectedStatus) + kSignalPoll;
    const std::string longSsid = "ssid=" + std::string(80, 'n') + "\nwpa_state=INACTIVE\n";
    const struct { const char* name; std::string text; WpaMsg expected; } cases[] = {
        {"connected", connected, record(4, "HomeNet", "192.168.1.23", -55, 72, -92, 2437, 3)},
        {"handshake, signal_poll failed", "wpa_state=4WAY_HANDSHAKE\nssid=Cafe\nFAIL\n",
         record(6, "Cafe", "", 0, 0, 0, 0, 0)},
        {"no control socket", kNoSocket, WpaMsg{}},
        {"escaped ssid", "ssid=caf\\xc3\\xA9\\x20bar\\xZZ\\\\q\nwpa_state=COMPLETED\n",
         record(4, "caf\xc3\xa9 bar\\xZZ\\\\q", "", 0, 0, 0, 0, 0)},
        {"long ssid is cut", longSsid, record(1, std::string(63, 'n').c_str(), "", 0, 0, 0, 0, 0)},
        {"numbers that do not parse", "RSSI=strong\nLINKSPEED=99999999999\nNOISE=\nFREQUENCY=5180\n",
         record(0, "", "", 0, 0, 0, 5180, 0)},
    };
    for (const auto& c : cases) {
        const WpaMsg got = parseWpaStatus(c.text.c_str());
        EXPECT_TRUE(sameRecord(got, c.expected))
            << c.name << ": got " << describe(got) << ", want " << describe(c.expected);
    }
    EXPECT_TRUE(sameRecord(parseWpaStatus(nullptr), WpaMsg{}));
}

// The real shell: a wpa_cli script found on PATH answers like the real one;
// without any wpa_cli the poll says "not connected".
TEST_F(WifiMonitorTest, SystemShellPollsWpaCli) {
    const std::string bin = mRoot.path() + "/bin";
    const std::string empty = mRoot.path() + "/empty";
    makeDirs(empty);
    const std::string args = mRoot.path() + "/args";
    writeFileAtomic(bin + "/wpa_cli",
                    "#!/bin/sh\n"
                    "echo \"$*\" >> " + args + "\n"
                    "case \"$5\" in\n"
                    "status) printf '" + std::string(kConnectedStatus) + "' ;;\n"
                    "signal_poll) printf '" + kSignalPoll + "' ;;\n"
                    "esac\n");
    ASSERT_EQ(chmod((bin + "/wpa_cli").c_str(), 0755), 0);
    const std::string oldPath = getenv("PATH") ? getenv("PATH") : "";

    setenv("PATH", (bin + ":" + oldPath).c_str(), 1);
    const WpaMsg connected = rx_get_wpa_msg();
    EXPECT_EQ(readFile(args),
              "-p /etc/wifi/sockets -i wlan0 status\n-p /etc/wifi/sockets -i wlan0 signal_poll\n");
    EXPECT_TRUE(sameRecord(connected, record(4, "HomeNet", "192.168.1.23", -55, 72, -92, 2437, 3)))
        << describe(connected);

    setenv("PATH", empty.c_str(), 1);
    const WpaMsg missing = rx_get_wpa_msg();
    setenv("PATH", oldPath.c_str(), 1);
    EXPECT_TRUE(sameRecord(missing, WpaMsg{})) << describe(missing);
}

TEST_F(WifiMonitorTest, SecondStartFailsAndStopIsPrompt) {
    ScriptedShell& shell = mShell;
    shell.mAnswers = {{kConnectedStatus, kSignalPoll}};
    CaptureStdout capture;
    // A period far longer than the test: only a wake-up can end the wait.
    ASSERT_EQ(wifi_monitor_start(&shell, 60000), 0);
    EXPECT_EQ(wifi_monitor_start(&shell, 60000), -1);
    // The first poll runs at once, maybe before this line.
    ASSERT_TRUE(shell.waitForPolls(1));
    const long before = systemms();
    rx_wifi_monitor_stop();
    EXPECT_LT(systemms() - before, 1000);
    capture.finish();
    EXPECT_EQ(shell.mPolls, 1);
    EXPECT_EQ(rx_copy_wpa_msg().state, WPA_STATE_COMPLETED);

    // Stopped, it starts again with a cleared record.
    shell.mSupplicant = false;
    ASSERT_EQ(wifi_monitor_start(&shell, 60000), 0);
    EXPECT_TRUE(sameRecord(rx_copy_wpa_msg(), WpaMsg{}));
    rx_wifi_monitor_stop();
}

// The record stays as it was while the supplicant is gone; a failing
// wpa_cli means not connected. Each change is logged once, not per poll.
TEST_F(WifiMonitorTest, KeepsTheRecordWithoutSupplicantAndLogsChangesOnce) {
    ScriptedShell& shell = mShell;
    shell.mAnswers = {{kConnectedStatus, kSignalPoll}};
    CaptureStdout capture;
    ASSERT_EQ(wifi_monitor_start(&shell, 1), 0);
    ASSERT_TRUE(shell.waitForPolls(5));

    shell.mSupplicant = false;
    usleep(50 * 1000);
    const WpaMsg kept = rx_copy_wpa_msg();

    shell.mExitStatus = 127 << 8;
    shell.mSupplicant = true;
    ASSERT_TRUE(shell.waitForPolls(shell.mPolls + 5));
    rx_wifi_monitor_stop();
    const std::string log = capture.finish();

    EXPECT_EQ(kept.state, WPA_STATE_COMPLETED) << "a stopped supplicant keeps the last record";
    EXPECT_EQ(kept.rssi, -55);
    EXPECT_TRUE(sameRecord(rx_copy_wpa_msg(), WpaMsg{})) << "failing wpa_cli means not connected";
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 4) << log;
}

// The monitor publishes two different networks in turn as fast as it can;
// every copy a reader takes must be one of them whole (or the initial zero).
TEST_F(WifiMonitorTest, ReadersOnlyEverSeeWholeRecords) {
    ScriptedShell& shell = mShell;
    shell.mAnswers = {
        {"ssid=alpha\nid=1\nwpa_state=COMPLETED\nip_address=10.0.0.1\n",
         "RSSI=-40\nLINKSPEED=144\nNOISE=-95\nFREQUENCY=2412\n"},
        {"ssid=bravo-network\nid=2\nwpa_state=SCANNING\nip_address=172.16.254.200\n",
         "RSSI=-85\nLINKSPEED=6\nNOISE=-70\nFREQUENCY=5745\n"},
    };
    const WpaMsg alpha = record(4, "alpha", "10.0.0.1", -40, 144, -95, 2412, 1);
    const WpaMsg bravo = record(2, "bravo-network", "172.16.254.200", -85, 6, -70, 5745, 2);

    CaptureStdout capture;
    ASSERT_EQ(wifi_monitor_start(&shell, 0), 0);
    int reads = 0, alphas = 0, bravos = 0, torn = 0;
    const long deadline = systemms() + 5000;
    while ((shell.mPolls < 300 || reads < 100000) && systemms() < deadline) {
        const WpaMsg m = rx_copy_wpa_msg();
        reads++;
        if (sameRecord(m, alpha))
            alphas++;
        else if (sameRecord(m, bravo))
            bravos++;
        else if (!sameRecord(m, WpaMsg{}) && torn++ == 0)
            ADD_FAILURE() << "torn record: " << describe(m);
    }
    rx_wifi_monitor_stop();
    capture.finish();
    EXPECT_EQ(torn, 0);
    EXPECT_GE(shell.mPolls, 300);
    EXPECT_GT(alphas, 0);
    EXPECT_GT(bravos, 0);
}
