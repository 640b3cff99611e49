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
#include "platform/shell_line.h"
#include "platform/stop_flag.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"
#include "platform/sysutil.h"

namespace {

const char* const kConnectedStatus =
    "bssid=12:34:56:78:9a:bc\nssid=HomeNet\nid=3\nwpa_state=COMPLETED\nip_address=192.168.1.23\n";
const char* const kSignalPoll = "RSSI=-55\nLINKSPEED=72\nNOISE=-92\nFREQUENCY=2437\nAVG_RSSI=-57\n";

// The record as "state ssid ip rssi linkspeed noise frequency id".
std::string describe(const WpaMsg& m) {
    char text[200];
    snprintf(text, sizeof text, "%d '%.63s' %.23s %d %d %d %d %d", m.state, m.ssid, m.ip_address, m.rssi, m.linkspeed,
             m.noise, m.frequency, m.id);
    return text;
}
const std::string kConnected = "4 'HomeNet' 192.168.1.23 -55 72 -92 2437 3";
const std::string kEmpty = describe(WpaMsg{});

// Stands in for the shell and the supplicant: answers each poll's two
// wpa_cli commands by writing the scripted output into the file named after
// the redirection, the way the shell would.
class ScriptedShell : public WpaShell {
public:
    struct Answer { std::string status, signal; };

    bool supplicantRunning() override {
        mChecks++;
        return mSupplicant;
    }
    int run(const char* command, const StopFlag&) override {
        const std::string cmd = command;
        const bool append = cmd.find(">> ") != std::string::npos;
        if (!append) mCurrent = mAnswers[mPolls % mAnswers.size()];
        FILE* f = fopen(cmd.substr(cmd.rfind(' ') + 1).c_str(), append ? "a" : "w");
        if (!f) return 2 << 8;
        if (mExitStatus == 0) fputs(append ? mCurrent.signal.c_str() : mCurrent.status.c_str(), f);
        fclose(f);
        if (append) mPolls++;
        return mExitStatus;
    }
    // Wait until `total` polls, or supplicant checks, have happened since
    // the shell was made.
    bool waitForPolls(int total) { return waitFor(mPolls, total); }
    bool waitForChecks(int total) { return waitFor(mChecks, total); }

    std::vector<Answer> mAnswers;  // set before the monitor starts
    std::atomic<bool> mSupplicant{true};
    std::atomic<int> mExitStatus{0};
    std::atomic<int> mPolls{0};
    std::atomic<int> mChecks{0};

private:
    static bool waitFor(const std::atomic<int>& count, int total) {
        for (int i = 0; i < 2000 && count < total; i++) usleep(10 * 1000);
        return count >= total;
    }

    Answer mCurrent;  // the monitor thread's only
};

// A wpa_cli that hangs: every command is a shell line sleeping 10 s.
class HungShell : public WpaShell {
public:
    bool supplicantRunning() override { return true; }
    int run(const char*, const StopFlag& stop) override {
        mRuns++;
        return runShellLine("sleep 10", &stop);
    }
    std::atomic<int> mRuns{0};
};

// Stops the monitor; false when that took longer than a generous bound (a
// failure guard, not a timing: a working stop takes milliseconds).
bool stopsWithinSeconds(int seconds) {
    const long before = systemms();
    rx_wifi_monitor_stop();
    return systemms() - before < seconds * 1000L;
}

class WifiMonitorTest : public ::testing::Test {
protected:
    void SetUp() override { makeDirs(std::filesystem::path(mRoot.at(DEVICE_PATH_WPA_STATUS)).parent_path()); }
    // Runs before mShell goes, so the thread never outlives its shell.
    void TearDown() override { rx_wifi_monitor_stop(); }

    TempDeviceRoot mRoot;
    ScriptedShell mShell;
    CaptureStdout mQuiet;
};

}  // namespace

TEST(WpaStatusParse, ReadsEachFieldFromItsOwnLine) {
    const struct { const char* name; std::string text, expected; } cases[] = {
        {"connected", std::string(kConnectedStatus) + kSignalPoll, kConnected},
        {"handshake, signal_poll failed", "wpa_state=4WAY_HANDSHAKE\nssid=Cafe\nFAIL\n", "6 'Cafe'  0 0 0 0 0"},
        {"escaped ssid", "ssid=caf\\xc3\\xA9\\x20bar\\xZZ\\\\q\nwpa_state=COMPLETED\n",
         "4 'caf\xc3\xa9 bar\\xZZ\\\\q'  0 0 0 0 0"},
        {"long ssid is cut", "ssid=" + std::string(80, 'n') + "\nwpa_state=INACTIVE\n",
         "1 '" + std::string(63, 'n') + "'  0 0 0 0 0"},
        {"numbers that do not parse", "RSSI=strong\nLINKSPEED=99999999999\nNOISE=\nFREQUENCY=5180\n",
         "0 ''  0 0 0 5180 0"},
    };
    for (const auto& c : cases) EXPECT_EQ(describe(parseWpaStatus(c.text.c_str())), c.expected) << c.name;
}

// The real shell: a wpa_cli script found on PATH answers like the real one;
// without any wpa_cli the poll says "not connected".
TEST_F(WifiMonitorTest, SystemShellPollsWpaCli) {
    const std::string bin = mRoot.path() + "/bin";
    const std::string args = mRoot.path() + "/args";
    writeFileAtomic(bin + "/wpa_cli", "#!/bin/sh\necho \"$*\" >> " + args +
                                          "\ncase \"$5\" in\nstatus) printf '" + kConnectedStatus +
                                          "' ;;\nsignal_poll) printf '" + kSignalPoll + "' ;;\nesac\n");
    ASSERT_EQ(chmod((bin + "/wpa_cli").c_str(), 0755), 0);
    const std::string oldPath = getenv("PATH") ? getenv("PATH") : "";
    setenv("PATH", (bin + ":" + oldPath).c_str(), 1);
    const WpaMsg connected = rx_get_wpa_msg();
    setenv("PATH", mRoot.path().c_str(), 1);
    const WpaMsg missing = rx_get_wpa_msg();
    setenv("PATH", oldPath.c_str(), 1);
    EXPECT_EQ(readFile(args), "-p /etc/wifi/sockets -i wlan0 status\n-p /etc/wifi/sockets -i wlan0 signal_poll\n");
    EXPECT_EQ(describe(connected), kConnected);
    EXPECT_EQ(describe(missing), kEmpty);
}

// The record stays as it was while the supplicant is gone; a failing
// wpa_cli means not connected; each change is logged once. A second start
// fails.
TEST_F(WifiMonitorTest, KeepsTheRecordWithoutSupplicantAndLogsEachChangeOnce) {
    mShell.mAnswers = {{kConnectedStatus, kSignalPoll}};
    ASSERT_EQ(wifi_monitor_start(&mShell, 1), 0);
    EXPECT_EQ(wifi_monitor_start(&mShell, 1), -1);
    ASSERT_TRUE(mShell.waitForPolls(5));
    mShell.mSupplicant = false;
    ASSERT_TRUE(mShell.waitForChecks(mShell.mChecks + 2));
    EXPECT_EQ(describe(rx_copy_wpa_msg()), kConnected) << "a stopped supplicant keeps the last record";
    mShell.mExitStatus = 127 << 8;
    mShell.mSupplicant = true;
    ASSERT_TRUE(mShell.waitForPolls(mShell.mPolls + 5));
    EXPECT_EQ(describe(rx_copy_wpa_msg()), kEmpty) << "failing wpa_cli means not connected";
    rx_wifi_monitor_stop();
    const std::string log = mQuiet.finish();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 5) << "the refused start and each change logged once, not per poll:\n" << log;
}

// Neither a hung wpa_cli nor a long sleep between polls holds up the stop,
// which shutdown waits for before it saves the settings.
TEST_F(WifiMonitorTest, StopEndsAHungWpaCliAndTheWaitBetweenPolls) {
    HungShell hung;
    ASSERT_EQ(wifi_monitor_start(&hung, 60000), 0);
    for (int i = 0; i < 2000 && hung.mRuns == 0; i++) usleep(1000);
    ASSERT_EQ(hung.mRuns, 1);
    usleep(50 * 1000);  // let the shell get going
    EXPECT_TRUE(stopsWithinSeconds(5)) << "stop waited for wpa_cli";
    EXPECT_EQ(describe(rx_copy_wpa_msg()), kEmpty) << "a poll cut short is not published";

    // A period far longer than the test: only a wake-up can end the wait.
    mShell.mAnswers = {{kConnectedStatus, kSignalPoll}};
    ASSERT_EQ(wifi_monitor_start(&mShell, 60000), 0);
    ASSERT_TRUE(mShell.waitForPolls(1));
    EXPECT_TRUE(stopsWithinSeconds(5)) << "stop waited for the period";
    EXPECT_EQ(describe(rx_copy_wpa_msg()), kConnected);
}

// The monitor publishes two different networks in turn as fast as it can;
// every copy a reader takes must be one of them whole (or the initial zero).
TEST_F(WifiMonitorTest, ReadersOnlyEverSeeWholeRecords) {
    mShell.mAnswers = {
        {"ssid=alpha\nid=1\nwpa_state=COMPLETED\nip_address=10.0.0.1\n",
         "RSSI=-40\nLINKSPEED=144\nNOISE=-95\nFREQUENCY=2412\n"},
        {"ssid=bravo-network\nid=2\nwpa_state=SCANNING\nip_address=172.16.254.200\n",
         "RSSI=-85\nLINKSPEED=6\nNOISE=-70\nFREQUENCY=5745\n"},
    };
    const std::string alpha = "4 'alpha' 10.0.0.1 -40 144 -95 2412 1";
    const std::string bravo = "2 'bravo-network' 172.16.254.200 -85 6 -70 5745 2";
    ASSERT_EQ(wifi_monitor_start(&mShell, 0), 0);
    int reads = 0, alphas = 0, bravos = 0, torn = 0;
    const long deadline = systemms() + 5000;
    while ((mShell.mPolls < 300 || reads < 100000) && systemms() < deadline) {
        const std::string m = describe(rx_copy_wpa_msg());
        reads++;
        if (m == alpha)
            alphas++;
        else if (m == bravo)
            bravos++;
        else if (m != kEmpty && torn++ == 0)
            ADD_FAILURE() << "torn record: " << m;
    }
    rx_wifi_monitor_stop();
    EXPECT_EQ(torn, 0);
    EXPECT_GE(mShell.mPolls, 300);
    EXPECT_GT(alphas, 0);
    EXPECT_GT(bravos, 0);
}
