#include "toolkit/window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "platform/sysutil.h"

namespace {

// A frame clock that moves only when the loop sleeps, so pacing is exact. A
// real-time deadline ends a loop that would otherwise never stop.
class FakeClock : public FrameClock {
public:
    long nowMs() override {
        if (systemms() > mDeadline) {
            mExpired = true;
            requestQuit();
        }
        return mNow;
    }
    void sleepMs(long ms) override {
        mSleeps.push_back(ms);
        mNow += ms;
    }
    long mNow = 1000000;
    long mDeadline = systemms() + 5000;
    bool mExpired = false;
    std::vector<long> mSleeps;
};

// A window whose event handler is a script: handler(window) gives the code
// for each call; every call is recorded in the shared journal.
class ScriptWindow : public KovaniWindow {
public:
    ScriptWindow(std::string name, std::vector<std::string>& journal, std::function<int(ScriptWindow&)> handler)
        : KovaniWindow(-1, -1), mName(std::move(name)), mJournal(journal), mHandler(std::move(handler)) {}
    // Like every real window, takes one event per call.
    int eventHandling() override {
        log("event");
        if (mReadsEvents) wait_event(nullptr);
        return mHandler(*this);
    }
    int draw() override {
        mDraws++;
        log("draw");
        return 0;
    }
    void quit() override { log("quit"); }
    void init() override { log("init"); }
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}
    ~ScriptWindow() override { log("deleted"); }
    void log(const char* what) { mJournal.push_back(mName + "." + what); }

    std::string mName;
    std::vector<std::string>& mJournal;
    std::function<int(ScriptWindow&)> mHandler;
    int mDraws = 0;
    bool mReadsEvents = true;
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
        EXPECT_FALSE(mClock.mExpired) << "the loop did not end by itself";
        SdlScreenTest::TearDown();
    }
    ScriptWindow* add(const char* name, std::function<int(ScriptWindow&)> handler) {
        mList.push_back(new ScriptWindow(name, mJournal, std::move(handler)));
        return static_cast<ScriptWindow*>(mList.back());
    }
    std::string run() {
        CaptureStdout capture;
        runWindows(mList);
        EXPECT_TRUE(mList.empty());
        return capture.finish();
    }
    void push(int type, int code = 0) {
        SDL_Event e = {};
        e.type = type;
        e.user.code = code;
        SDL_PushEvent(&e);
    }

    FakeClock mClock;
    std::vector<std::string> mJournal;
    std::vector<KovaniWindow*> mList;
};

}  // namespace

TEST_F(RunWindowsTest, CloseCodesRespectTheLastWindow) {
    // The bottom window tries 1002 alone (ignored), then 1005 (closes it).
    add("bottom", [](ScriptWindow& w) {
        if (w.mDraws == 1) return (int)WINDOW_CLOSE;
        if (w.mDraws == 2) {
            gWinList->push_back(new ScriptWindow("top", w.mJournal, [](ScriptWindow&) { return (int)WINDOW_CLOSE; }));
            return (int)KEY_NONE;
        }
        return (int)WINDOW_CLOSE_LAST;
    });
    run();
    const std::vector<std::string> expected = {
        "bottom.draw", "bottom.event",                              // 1002 alone: stays
        "bottom.draw", "bottom.event",                              // pushes "top"
        "top.draw",    "top.event",    "top.quit", "top.deleted",   // 1002 with two: closes
        "bottom.draw", "bottom.event", "bottom.quit", "bottom.deleted",
    };
    EXPECT_EQ(mJournal, expected);
}

TEST_F(RunWindowsTest, QuitCodeRemovesTheTopFirstThenFreesTheRestTopDown) {
    add("a", [](ScriptWindow&) { return 0; });
    add("b", [](ScriptWindow&) { return 0; });
    add("c", [](ScriptWindow&) { return (int)WINDOW_QUIT_ALL; });
    run();
    EXPECT_EQ(mJournal, (std::vector<std::string>{"c.draw", "c.event", "c.quit", "c.deleted", "b.quit",
                                                  "b.deleted", "a.quit", "a.deleted"}));
}

TEST_F(RunWindowsTest, OnlyTheLastPendingPopupIsShownAndOpensAboveTheClosingWindow) {
    add("base", [](ScriptWindow& w) { return w.mDraws == 1 ? (int)KEY_NONE : (int)WINDOW_QUIT; });
    add("middle", [](ScriptWindow& w) {
        add2PopupList(new ScriptWindow("first", w.mJournal, [](ScriptWindow&) { return 0; }));
        add2PopupList(new ScriptWindow("second", w.mJournal, [](ScriptWindow&) { return (int)WINDOW_CLOSE; }));
        return (int)WINDOW_CLOSE_LAST;
    });
    run();
    const std::vector<std::string> expected = {
        "middle.draw", "middle.event", "first.quit", "first.deleted",  // a replaced popup is never initialised
        "middle.quit", "middle.deleted",
        "base.draw", "second.init",                                     // popup goes on in the next frame
        "second.draw", "second.event", "second.quit", "second.deleted",
        "base.draw", "base.event", "base.quit", "base.deleted",
    };
    EXPECT_EQ(mJournal, expected);
}

TEST_F(RunWindowsTest, AllPendingEventsAreHandledBeforeTheNextFrame) {
    std::vector<int> codes;
    add("w", [&codes](ScriptWindow& w) {
        if (w.mDraws > 1) return (int)WINDOW_QUIT;
        codes.push_back(wait_event(nullptr));
        return codes.back();
    })->mReadsEvents = false;
    for (int code : {KEY_A, KEY_B, EVENT_REFRESH, KEY_X}) push(SDL_USEREVENT, code);
    run();
    // EVENT_REFRESH ends this frame's handling; KEY_X waits for the next.
    EXPECT_EQ(codes, (std::vector<int>{KEY_A, KEY_B, EVENT_REFRESH}));
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
}

TEST_F(RunWindowsTest, FramesRunAt33MsWhileTheBudgetLastsThenAt100) {
    add("w", [](ScriptWindow& w) {
        if (w.mDraws == 1) bootFastFrames();
        return w.mDraws > 120 ? (int)WINDOW_QUIT : 0;
    });
    run();
    const long fast = std::count(mClock.mSleeps.begin(), mClock.mSleeps.end(), 33);
    EXPECT_EQ(fast, 91) << "3000 ms of budget at 33 ms a frame";
    EXPECT_EQ(std::count(mClock.mSleeps.begin(), mClock.mSleeps.end(), 100), long(mClock.mSleeps.size()) - 91);
    EXPECT_EQ(s_bootFpsTimeout, 0);
}

TEST_F(RunWindowsTest, SdlQuitEndsTheLoopEvenIfTheWindowNeverReadsEvents) {
    for (bool reads : {true, false}) {
            add("w", [](ScriptWindow&) { return (int)KEY_NONE; })->mReadsEvents = reads;
        push(SDL_QUIT);
        push(SDL_USEREVENT, KEY_A);
        EXPECT_NE(run().find("a is 1003, quit deskui\n"), std::string::npos) << reads;
        clearQuitRequest();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
}
