#include "toolkit/window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "tests/support/plane_frames.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "toolkit/screen.h"
#include "toolkit/window_bars.h"

namespace {

void push(int type, int code = 0) {
    SDL_Event e = {};
    e.type = type;
    e.user.code = code;
    SDL_PushEvent(&e);
}

// A clock that moves only when the loop sleeps, each sleep maybe a script step;
// a real-time deadline ends a loop that would never stop.
class FakeClock : public FrameClock {
public:
    long nowMs() override {
        if (systemms() > mDeadline) {
            mExpired = true;
            requestQuit();
        }
        return mNow;
    }
    void waitEventMs(long ms) override {
        mWaits.push_back(ms);
        if (mOnWait) mOnWait(mWaits.size());
        SDL_PumpEvents();
        if (!SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT)) mNow += ms;
    }
    long mNow = 1000000;
    long mDeadline = systemms() + 5000;
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
        s_bootFpsTimeout = 0;
    }
    void TearDown() override {
        setFrameClock(nullptr);
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
        {"its due time", [&] { w->mDue = mClock.mNow + 1300; }, 1},
        {"the battery",
         [&] {
             writeFileAtomic(mDevice.at(DEVICE_PATH_BATTERY_CAPACITY), "40\n");
             invalidateBarStatus();
         },
         1},
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
    run();
    ASSERT_EQ(drawn.size(), n + 1);
    for (size_t i = 0; i < n; i++) EXPECT_EQ(drawn[i + 1] - drawn[i], changes[i].frames) << changes[i].change;
    EXPECT_GE(*std::max_element(mClock.mWaits.begin(), mClock.mWaits.end()), 1000) << "idle waits are long";
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
