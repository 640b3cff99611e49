#include "toolkit/window.h"

#include <gtest/gtest.h>

#include <time.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "tests/support/plane_frames.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "toolkit/screen.h"
#include "toolkit/system_state.h"
#include "toolkit/window_bars.h"

namespace {

void push(int type, int code = 0) {
    SDL_Event e = {};
    e.type = type;
    e.user.code = code;
    SDL_PushEvent(&e);
}

void pushWindowEvent(Uint8 what) {
    SDL_Event e = {};
    e.type = SDL_WINDOWEVENT;
    e.window.event = what;
    SDL_PushEvent(&e);
}

long realMs() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec * 1000L + ts.tv_nsec / 1000000;
}

// A clock that moves only when the loop sleeps, each sleep maybe a script step;
// a real-time deadline ends a loop that would never stop. It is also the
// program's clock source, so the status bar's reads follow it.
class FakeClock : public FrameClock, public ClockSource {
public:
    long nowMs() override {
        if (realMs() > mDeadline) {
            mExpired = true;
            requestQuit();
        }
        return mNow;
    }
    long monotonicMs() override { return mNow; }
    long wallMs() override { return mNow; }
    void waitEventMs(long ms) override {
        mWaits.push_back(ms);
        if (mOnWait) mOnWait(mWaits.size());
        SDL_PumpEvents();
        if (!SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT)) mNow += ms;
    }
    std::atomic<long> mNow{1000000};  // also read by the key-repeat thread
    // Generous: a loaded machine under the sanitizers is slow, and a loop
    // that ends as it should never waits for it.
    long mDeadline = realMs() + 30000;
    bool mExpired = false;
    std::vector<long> mWaits;
    std::function<void(size_t)> mOnWait;  // called with the count of waits so far
};

// A window whose handler is a script; draws and calls go to a shared journal.
class ScriptWindow : public KovaniWindow {
public:
    using Handler = std::function<int(ScriptWindow&, int)>;
    ScriptWindow(std::string name, std::vector<std::string>& journal, Handler handler, FakeClock* clock = nullptr)
        : KovaniWindow(-1, -1), mName(std::move(name)), mJournal(journal), mHandler(std::move(handler)),
          mClock(clock) {}
    ~ScriptWindow() override { log("deleted"); }
    // Like every real window, takes one event per call.
    int eventHandling() override {
        const int code = wait_event(nullptr);
        log("event");
        return mHandler(*this, code);
    }
    int draw() override {
        mChanged = false;
        if (mOnDraw) mOnDraw();
        if (dueReached()) mDue = -1;
        if (mDrawnAt) mDrawnAt->push_back(mClock->mNow);
        log("draw");
        return 0;
    }
    void quit() override { log("quit"); }
    void init() override { log("init"); }
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}
    // As a real window's: its own change, its due time, the status bar.
    bool needsRedraw() override { return mChanged || dueReached() || KovaniWindow::needsRedraw(); }
    long nextRedrawMs() override { return mDue >= 0 && !dueReached() ? mDue : -1; }
    bool dueReached() const { return mDue >= 0 && mDue <= mClock->mNow; }
    void log(const char* what) { mJournal.push_back(mName + "." + what); }
    // A window on the same journal and clock.
    ScriptWindow* another(const char* name, Handler handler) {
        return new ScriptWindow(name, mJournal, std::move(handler), mClock);
    }

    std::string mName;
    std::vector<std::string>& mJournal;
    Handler mHandler;
    FakeClock* mClock;                      // not owned
    std::vector<long>* mDrawnAt = nullptr;  // not owned; outlives the window
    std::function<void()> mOnDraw;          // what the window draws, if anything
    bool mChanged = false;
    long mDue = -1;
};

class RunWindowsTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        clearQuitRequest();
        setFrameClock(&mClock);
        setClockSource(&mClock);
        s_bootFpsTimeout = 0;
    }
    void TearDown() override {
        setFrameClock(nullptr);
        setClockSource(nullptr);
        clearQuitRequest();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        EXPECT_FALSE(mClock.mExpired) << "the loop did not end by itself";
        SdlScreenTest::TearDown();
    }
    ScriptWindow* add(const char* name, ScriptWindow::Handler handler) {
        auto* w = new ScriptWindow(name, mJournal, std::move(handler), &mClock);
        w->mDrawnAt = &mDrawTimes;
        mList.push_back(w);
        return w;
    }
    void run() {
        CaptureStdout quiet;
        runWindows(mList);
        EXPECT_TRUE(mList.empty());
    }
    size_t draws() const {
        return std::count_if(mJournal.begin(), mJournal.end(),
                             [](const std::string& line) { return line.find(".draw") != std::string::npos; });
    }
    // The journal without its draws: the order in which windows met events.
    std::vector<std::string> calls() const {
        std::vector<std::string> out;
        std::copy_if(mJournal.begin(), mJournal.end(), std::back_inserter(out),
                     [](const std::string& line) { return line.find(".draw") == std::string::npos; });
        return out;
    }

    TempDeviceRoot mDevice;  // the status bar's files, the video plane's name
    FakeClock mClock;
    std::vector<long> mDrawTimes;  // of the windows add() made
    std::vector<std::string> mJournal;
    std::vector<KovaniWindow*> mList;
};

}  // namespace

// WINDOW_CLOSE is ignored on the last window; WINDOW_CLOSE_LAST closes it.
TEST_F(RunWindowsTest, CloseCodesRespectTheLastWindow) {
    int n = 0;
    add("bottom", [&n](ScriptWindow& w, int) {
        if (n++ == 0) return (int)WINDOW_CLOSE;
        if (n == 2) gWinList->push_back(w.another("top", [](ScriptWindow&, int) { return (int)WINDOW_CLOSE; }));
        return n == 2 ? (int)KEY_NONE : (int)WINDOW_CLOSE_LAST;
    });
    for (int i = 0; i < 4; i++) push(SDL_USEREVENT, KEY_A);
    run();
    EXPECT_EQ(calls(), (std::vector<std::string>{"bottom.event", "bottom.event", "top.event", "top.quit",
                                                 "top.deleted", "bottom.event", "bottom.quit", "bottom.deleted"}));
}

TEST_F(RunWindowsTest, OnlyTheLastPendingPopupIsShownAndOpensAboveTheClosingWindow) {
    add("base", [](ScriptWindow&, int) { return (int)WINDOW_QUIT; });
    add("middle", [](ScriptWindow& w, int) {
        add2PopupList(w.another("first", [](ScriptWindow&, int) { return 0; }));
        add2PopupList(w.another("second", [](ScriptWindow&, int) { return (int)WINDOW_CLOSE; }));
        return (int)WINDOW_CLOSE_LAST;
    });
    for (int i = 0; i < 3; i++) push(SDL_USEREVENT, KEY_A);
    run();
    const std::vector<std::string> expected = {
        "middle.draw", "middle.event", "first.quit", "first.deleted",  // a replaced popup is never initialised
        "middle.quit", "middle.deleted",
        "base.draw", "second.init", "second.draw",                     // the popup opens at once, drawn
        "second.event", "second.quit", "second.deleted",
        "base.event", "base.quit", "base.deleted",
    };
    EXPECT_EQ(mJournal, expected);
}

// MENU and then DOWN queued together: DOWN reaches the popup MENU opened.
TEST_F(RunWindowsTest, EachEventGoesToTheWindowOnTopWhenItIsHandled) {
    std::vector<int> popupCodes;
    add("player", [&popupCodes](ScriptWindow& w, int code) {
        if (code != KEY_MENU_KEY) return (int)WINDOW_QUIT;
        gWinList->push_back(w.another("popup", [&popupCodes](ScriptWindow&, int c) {
            popupCodes.push_back(c);
            return c == KEY_B ? (int)WINDOW_CLOSE : (int)KEY_NONE;
        }));
        return (int)KEY_NONE;
    });
    for (int code : {KEY_MENU_KEY, KEY_DOWN, KEY_B, KEY_X}) push(SDL_USEREVENT, code);
    run();
    EXPECT_EQ(popupCodes, (std::vector<int>{KEY_DOWN, KEY_B}));
}

// An idle loop draws nothing and sleeps in long waits, and a refresh that
// changes nothing draws nothing; each kind of change brings one frame, an
// opening popup two (the window beneath for the popup's picture, the popup).
TEST_F(RunWindowsTest, AFrameIsDrawnAfterEachKindOfChangeAndNoneWithout) {
    invalidateBarStatus();
    ScriptWindow* w = add("w", [](ScriptWindow& self, int code) {
        if (code == KEY_MENU_KEY)
            add2PopupList(self.another("popup", [](ScriptWindow&, int c) {
                return c == KEY_B ? (int)WINDOW_CLOSE : (int)KEY_NONE;
            }));
        return code == KEY_X ? (int)WINDOW_QUIT : code;
    });
    const struct {
        const char* change;
        std::function<void()> make;
        size_t frames;
    } changes[] = {
        {"none", [] {}, 0},
        {"a key", [] { push(SDL_USEREVENT, KEY_A); }, 1},
        {"a refresh that changes nothing", [] { push(SDL_USEREVENT, EVENT_REFRESH); }, 0},
        {"the window's own change", [&] { w->mChanged = true; }, 1},
        {"its due time", [&] { w->mDue = mClock.mNow + BAR_STATUS_PERIOD_MS + 300; }, 1},
        {"the battery",
         [&] {
             writeFileAtomic(mDevice.at(DEVICE_PATH_BATTERY_CAPACITY), "40\n");
             invalidateBarStatus();
         },
         1},
        // A desktop's pointer and focus: nothing on screen follows them.
        {"the pointer, the focus",
         [] {
             push(SDL_MOUSEMOTION);
             pushWindowEvent(SDL_WINDOWEVENT_ENTER);
             pushWindowEvent(SDL_WINDOWEVENT_FOCUS_GAINED);
         },
         0},
        {"the window uncovered", [] { pushWindowEvent(SDL_WINDOWEVENT_EXPOSED); }, 1},
        {"a popup opened", [] { push(SDL_USEREVENT, KEY_MENU_KEY); }, 2},
        {"the popup closed", [] { push(SDL_USEREVENT, KEY_B); }, 1},
        {"none again", [] {}, 0},
    };
    const size_t n = sizeof changes / sizeof changes[0];
    // Every sixth wait: the frames drawn so far, then the next change.
    std::vector<size_t> drawn;
    mClock.mOnWait = [&](size_t waits) {
        if (waits % 6 != 0) return;
        drawn.push_back(draws());
        const size_t next = waits / 6 - 1;
        if (next < n) changes[next].make();
        if (next == n) push(SDL_USEREVENT, KEY_X);
    };
    // What the window system says while the window is made is answered by
    // the first frame, not by a second one.
    pushWindowEvent(SDL_WINDOWEVENT_SHOWN);
    pushWindowEvent(SDL_WINDOWEVENT_EXPOSED);
    run();
    ASSERT_EQ(drawn.size(), n + 1);
    EXPECT_EQ(drawn[0], 1u) << "frames before the first change";
    for (size_t i = 0; i < n; i++) EXPECT_EQ(drawn[i + 1] - drawn[i], changes[i].frames) << changes[i].change;
    EXPECT_EQ(*std::max_element(mClock.mWaits.begin(), mClock.mWaits.end()), BAR_STATUS_PERIOD_MS)
        << "idle waits are as long as the status bar allows";
    EXPECT_NE(std::find(mClock.mWaits.begin(), mClock.mWaits.end(), 300), mClock.mWaits.end())
        << "the window's due time bounds the wait";
}

// Keys 10 ms apart are handled at once; frames come at most every 33 ms.
TEST_F(RunWindowsTest, EventsAreHandledAtOnceAndDrawingKeepsThePace) {
    std::vector<long> handledAt;
    add("w", [&](ScriptWindow&, int code) {
        handledAt.push_back(mClock.mNow);
        bootFastFrames();
        return code == KEY_X ? (int)WINDOW_QUIT : 0;
    });
    mClock.mOnWait = [&](size_t waits) {
        if (waits < 30) {
            mClock.mNow += 10;
            push(SDL_USEREVENT, KEY_DOWN);
        } else if (waits == 30) {
            push(SDL_USEREVENT, KEY_X);
        }
    };
    run();
    ASSERT_GE(handledAt.size(), 29u);
    for (size_t i = 1; i < handledAt.size(); i++) EXPECT_LE(handledAt[i] - handledAt[i - 1], 10) << i;
    for (size_t i = 1; i < mDrawTimes.size(); i++) EXPECT_GE(mDrawTimes[i] - mDrawTimes[i - 1], 33) << i;
    EXPECT_GE(mDrawTimes.size(), 5u) << "but it does draw";
}

// A frame asked for at once (the list the user waits for) comes ahead of the
// pace and of the events queued behind the request; other changes keep the
// pace.
TEST_F(RunWindowsTest, AFrameAskedForAtOnceComesAheadOfThePaceAndTheQueue) {
    std::vector<std::string> handled;  // key @ frames drawn before it
    add("w", [&](ScriptWindow&, int code) {
        handled.push_back(std::to_string(code) + "@" + std::to_string(draws()));
        if (code == KEY_Y) return (int)WINDOW_SHOW_NOW;
        return code == KEY_X ? (int)WINDOW_QUIT : 0;
    });
    mClock.mOnWait = [&](size_t waits) {
        if (waits == 1)
            for (int code : {KEY_A, KEY_Y, KEY_B}) push(SDL_USEREVENT, code);
        if (waits == 3) push(SDL_USEREVENT, KEY_X);
    };
    const long start = mClock.mNow;
    run();
    EXPECT_EQ(handled, (std::vector<std::string>{"1@1", "4@1", "2@2", "3@3"}));
    EXPECT_EQ(mDrawTimes, (std::vector<long>{start, start, start + 100})) << "the asked frame, then the pace";
}

// Video pictures beneath an unchanged window are presented without drawing it.
TEST_F(RunWindowsTest, VideoFramesArePresentedWithoutRedrawingTheWindow) {
#if !KOVANI_VIDEO_PLANE
    GTEST_SKIP() << "the device's hardware shows the video";
#endif
    VideoPlaneWriter decoder;
    ASSERT_EQ(decoder.create(), 0);
    publishFrame(decoder, VideoRect{650, 85, 610, 360}, 0);
    add("w", [](ScriptWindow&, int code) { return code == KEY_X ? (int)WINDOW_QUIT : 0; });
    mClock.mOnWait = [&](size_t waits) {
        if (waits < 20) publishFrame(decoder, VideoRect{650, 85, 610, 360}, 0);
        if (waits == 20) push(SDL_USEREVENT, KEY_X);
    };
    run();
    EXPECT_EQ(mDrawTimes.size(), 1u) << "only the first frame draws the window";
    EXPECT_LE(*std::max_element(mClock.mWaits.begin(), mClock.mWaits.end()), 5) << "frames come: short waits";
    EXPECT_FALSE(ScreenVideoChanged()) << "every picture was presented";
}

namespace {

// Status icons in colours of their own, for telling from a frame what its
// bar shows.
const struct { const char* name; SDL_Color color; } kBarIcons[] = {
    {"skin/ic-batery-75%.png", {0, 160, 0, 255}},    {"skin/ic-batery-25%.png", {160, 160, 0, 255}},
    {"skin/ic-charging.png", {250, 250, 0, 255}},    {"skin/ic-sound-n.png", {0, 0, 250, 255}},
    {"skin/ic-sound-mute.png", {0, 0, 150, 255}},    {"skin/icon-bluetooth-headphone.png", {250, 0, 250, 255}},
    {"skin/icon-hotspot.png", {250, 130, 0, 255}},
};

// A window that draws the top bar and notes, for each frame, when it was
// drawn and which status icons it shows.
class BarLoopTest : public RunWindowsTest {
protected:
    void SetUp() override {
        RunWindowsTest::SetUp();
        for (const auto& icon : kBarIcons) writePng(dir() + icon.name, 20, 20, icon.color, 4);
        writeFileAtomic(mDevice.at(DEVICE_PATH_BATTERY_CAPACITY), "57\n");
        ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        SetKeyShm(&gShmInfo, MONITOR_VOLUME, 10);
        invalidateBarStatus();
        mWindow = add("bar", [](ScriptWindow&, int code) { return code == KEY_X ? (int)WINDOW_QUIT : 0; });
        mWindow->mOnDraw = [this] {
            mWindow->drawNavBar(0);
            // The right end of the bar, read back once.
            const std::vector<Uint32> bar = pixels({900, 0, 380, 80});
            std::vector<std::string> shown;
            for (const auto& icon : kBarIcons) {
                const Uint32 rgb = Uint32(icon.color.r) << 16 | Uint32(icon.color.g) << 8 | icon.color.b;
                if (std::any_of(bar.begin(), bar.end(), [rgb](Uint32 p) { return (p & 0xFFFFFF) == rgb; }))
                    shown.push_back(icon.name);
            }
            mFrames.push_back({mClock.mNow, shown});
            if (mAfterBar) mAfterBar();
        };
    }
    void TearDown() override {
        UninitKeyShm(&gShmInfo);
        RunWindowsTest::TearDown();
    }
    // When the first frame from `since` on that shows `icon` was drawn, or -1.
    long shownAt(const char* icon, long since) const {
        for (const Frame& f : mFrames)
            if (f.at >= since && std::find(f.icons.begin(), f.icons.end(), icon) != f.icons.end()) return f.at;
        return -1;
    }

    struct Frame {
        long at;
        std::vector<std::string> icons;
    };
    ScriptWindow* mWindow = nullptr;  // owned by mList
    std::vector<Frame> mFrames;
    std::function<void()> mAfterBar;  // runs in each draw, right after the bar
};

}  // namespace

// The key memory's volume changes right after the bar was drawn, before the
// frame is done: the mute icon still reaches the screen.
TEST_F(BarLoopTest, AChangeJustAfterTheBarWasDrawnIsDrawnNext) {
    mAfterBar = [this] {
        if (mFrames.size() == 1) SetKeyShm(&gShmInfo, MONITOR_VOLUME, 0);
    };
    mClock.mOnWait = [](size_t waits) {
        if (waits == 4) push(SDL_USEREVENT, KEY_X);
    };
    run();
    ASSERT_FALSE(mFrames.empty());
    const auto& last = mFrames.back().icons;
    EXPECT_NE(std::find(last.begin(), last.end(), "skin/ic-sound-mute.png"), last.end()) << "the screen stays unmuted";
}

// Each kind of change shows within a second, also when a key drew a frame
// from the status read just before the change.
TEST_F(BarLoopTest, EachStatusChangeShowsWithinASecond) {
    const struct {
        const char* change;
        std::function<void()> make;
        const char* icon;  // the icon that appears
        long keyAfter;     // a key handled this long after the change
    } changes[] = {
        {"battery low", [&] { writeFileAtomic(mDevice.at(DEVICE_PATH_BATTERY_CAPACITY), "15\n"); },
         "skin/ic-batery-25%.png", 100},
        {"charger", [&] { writeFileAtomic(mDevice.at(DEVICE_PATH_USB_ONLINE), "1\n"); }, "skin/ic-charging.png", 500},
        {"headphones", [&] { writeFileAtomic(mDevice.at(DEVICE_PATH_BT_AUDIO), ""); },
         "skin/icon-bluetooth-headphone.png", 790},
        {"mute", [&] { SetKeyShm(&gShmInfo, MONITOR_VOLUME, 0); }, "skin/ic-sound-mute.png", 300},
        {"hotspot", [&] { writeFileAtomic(mDevice.at(DEVICE_PATH_HOSTAPD_STAND_IN), ""); }, "skin/icon-hotspot.png",
         600},
    };
    const size_t n = sizeof changes / sizeof changes[0];
    std::vector<long> madeAt;
    // Every fifth wait, idle since the status was read: the next change,
    // then a key later on.
    mClock.mOnWait = [&](size_t waits) {
        if (waits % 5 != 0) return;
        const size_t next = waits / 5 - 1;
        if (next == n) push(SDL_USEREVENT, KEY_X);
        if (next >= n) return;
        changes[next].make();
        madeAt.push_back(mClock.mNow);
        mClock.mNow += changes[next].keyAfter;
        push(SDL_USEREVENT, KEY_A);
    };
    run();
    ASSERT_EQ(madeAt.size(), n);
    for (size_t i = 0; i < n; i++) {
        const long at = shownAt(changes[i].icon, madeAt[i]);
        EXPECT_GE(at, madeAt[i]) << changes[i].change << " never shown";
        EXPECT_LE(at - madeAt[i], 1000) << changes[i].change;
    }
}
