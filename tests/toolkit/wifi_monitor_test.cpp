#include "toolkit/wifi_monitor.h"

#include <SDL2/SDL.h>
#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "platform/shell_line.h"
#include "platform/stop_flag.h"
#include "platform/clock.h"
#include "platform/sysutil.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"
#include "toolkit/keycodes.h"

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

// Answers each poll's two requests from a script of answers, as wpa_cli.
class ScriptedShell : public WpaShell {
public:
    struct Answer { std::string status, signal; };
    bool supplicantRunning() override { return mLastPoll < 0 || mPolls <= mLastPoll; }
    bool hotspotRunning() override { return false; }
    int query(const char* request, std::string* out, const StopFlag&) override {
        const bool signal = strcmp(request, "signal_poll") == 0;
        if (!signal) mCurrent = mAnswers[mPolls % mAnswers.size()];
        *out = signal ? mCurrent.signal : mCurrent.status;
        if (signal) mPolls++;
        return 0;
    }
    bool waitForPolls(int total) {
        for (int i = 0; i < 2000 && mPolls < total; i++) usleep(10 * 1000);
        return mPolls >= total;
    }

    std::vector<Answer> mAnswers{{kConnectedStatus, kSignalPoll}};  // set before the monitor starts
    std::atomic<int> mPolls{0};
    int mLastPoll = -1;  // the supplicant stops after this poll; -1: never

private:
    Answer mCurrent;  // the monitor thread's only
};

// A wpa_cli that hangs: every request is a shell line sleeping 10 s.
class HungShell : public WpaShell {
public:
    bool supplicantRunning() override { return true; }
    bool hotspotRunning() override { return false; }
    int query(const char*, std::string* out, const StopFlag& stop) override {
        mRuns++;
        out->clear();
        return runShellLine("sleep 10", &stop);
    }
    std::atomic<int> mRuns{0};
};

// Whether the monitor stops within 5 s (a working stop takes milliseconds).
bool stopsAtOnce() {
    const long before = monotonicMs();
    rx_wifi_monitor_stop();
    return monotonicMs() - before < 5000;
}

class WifiMonitorTest : public ::testing::Test {
protected:
    void TearDown() override { rx_wifi_monitor_stop(); }  // before mShell goes

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

// Neither a hung wpa_cli nor the wait between polls holds up the stop.
TEST_F(WifiMonitorTest, StopEndsAHungWpaCliAndTheWaitBetweenPolls) {
    HungShell hung;
    ASSERT_EQ(wifi_monitor_start(&hung, 60000), 0);
    for (int i = 0; i < 2000 && hung.mRuns == 0; i++) usleep(1000);
    ASSERT_EQ(hung.mRuns, 1);
    usleep(50 * 1000);  // let the shell get going
    EXPECT_TRUE(stopsAtOnce()) << "stop waited for wpa_cli";
    EXPECT_EQ(describe(rx_copy_wpa_msg()), kEmpty) << "a poll cut short is not published";

    // Published, the monitor sleeps out its period.
    ASSERT_EQ(wifi_monitor_start(&mShell, 60000), 0);
    for (int i = 0; i < 2000 && describe(rx_copy_wpa_msg()) != kConnected; i++) usleep(10 * 1000);
    ASSERT_EQ(describe(rx_copy_wpa_msg()), kConnected);
    EXPECT_TRUE(stopsAtOnce()) << "stop waited for the period";
}

// A poll that changes what the status bar shows wakes the main loop once;
// one that changes nothing does not.
TEST_F(WifiMonitorTest, AChangeOfStateOrSignalPostsOneRefresh) {
    ASSERT_EQ(SDL_Init(SDL_INIT_EVENTS), 0) << SDL_GetError();
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    const ScriptedShell::Answer connected = {kConnectedStatus, kSignalPoll},
                                weaker = {kConnectedStatus, "RSSI=-75\n"};
    mShell.mAnswers = {connected, connected, weaker, weaker};
    mShell.mLastPoll = 3;
    ASSERT_EQ(wifi_monitor_start(&mShell, 0), 0);
    ASSERT_TRUE(mShell.waitForPolls(4));
    rx_wifi_monitor_stop();
    SDL_Event events[8];
    const int n = SDL_PeepEvents(events, 8, SDL_GETEVENT, SDL_USEREVENT, SDL_USEREVENT);
    EXPECT_EQ(n, 2) << "connected, then the weaker signal";
    for (int i = 0; i < n; i++) EXPECT_EQ(events[i].user.code, EVENT_REFRESH);
    SDL_Quit();
}
