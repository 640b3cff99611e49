#include "toolkit/window.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "toolkit/sysutil.h"

namespace {

// A frame clock that moves only when the loop sleeps (plus a fixed cost per
// reading, to model drawing time), so pacing is exact. A real-time deadline
// ends a loop that would otherwise never stop.
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

// A window whose event handler is a script: handler(frame) gives the code
// for each call; every call is recorded in the shared journal.
class ScriptWindow : public KovaniWindow {
public:
    ScriptWindow(std::string name, std::vector<std::string>& journal,
                 std::function<int(ScriptWindow&)> handler, int type = -1)
        : KovaniWindow(-1, type), mName(std::move(name)), mJournal(journal), mHandler(std::move(handler)) {}
    // Like every real window, takes one event per call.
    int eventHandling() override {
        mJournal.push_back(mName + ".event");
        if (mReadsEvents) wait_event(nullptr);
        return mHandler(*this);
    }
    int draw() override {
        mDraws++;
        mJournal.push_back(mName + ".draw");
        return 0;
    }
    void quit() override { mJournal.push_back(mName + ".quit"); }
    void init() override { mJournal.push_back(mName + ".init"); }
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}
    ~ScriptWindow() override { mJournal.push_back(mName + ".deleted"); }

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
    std::string run(std::vector<KovaniWindow*>& list) {
        CaptureStdout capture;
        runWindows(list);
        return capture.finish();
    }
    static bool has(const std::vector<std::string>& v, const std::string& s) {
        return std::find(v.begin(), v.end(), s) != v.end();
    }

    FakeClock mClock;
    std::vector<std::string> mJournal;
};

}  // namespace

TEST_F(RunWindowsTest, CloseCodesRespectTheLastWindow) {
    std::vector<KovaniWindow*> list;
    // The bottom window tries 1002 alone (ignored), then 1005 (closes it).
    list.push_back(new ScriptWindow("bottom", mJournal, [](ScriptWindow& w) {
        if (w.mDraws == 1) return (int)WINDOW_CLOSE;
        if (w.mDraws == 2) {
            gWinList->push_back(new ScriptWindow("top", w.mJournal, [](ScriptWindow&) {
                return (int)WINDOW_CLOSE;
            }));
            return (int)KEY_NONE;
        }
        return (int)WINDOW_CLOSE_LAST;
    }));
    const std::string log = run(list);

    EXPECT_TRUE(list.empty());
    const std::vector<std::string> expected = {
        "bottom.draw", "bottom.event",                  // 1002 alone: stays
        "bottom.draw", "bottom.event",                  // pushes "top"
        "top.draw",    "top.event",    "top.quit", "top.deleted",  // 1002 with two: closes
        "bottom.draw", "bottom.event", "bottom.quit", "bottom.deleted",
    };
    EXPECT_EQ(mJournal, expected);
    EXPECT_NE(log.find("a is 1002, popup current window\n"), std::string::npos);
    EXPECT_NE(log.find("a is 1005, popup current window\n"), std::string::npos);
    EXPECT_NE(log.find("0 window to free\n"), std::string::npos);
    EXPECT_NE(log.find("deinit check_repeat_thread\n"), std::string::npos);
}

TEST_F(RunWindowsTest, OnlyTheLastPendingPopupIsShownAndOpensAboveTheClosingWindow) {
    std::vector<KovaniWindow*> list;
    list.push_back(new ScriptWindow("base", mJournal, [](ScriptWindow& w) {
        return w.mDraws == 1 ? (int)KEY_NONE : (int)WINDOW_QUIT;
    }));
    list.push_back(new ScriptWindow("middle", mJournal, [](ScriptWindow& w) {
        add2PopupList(new ScriptWindow("first", w.mJournal, [](ScriptWindow&) { return 0; }));
        add2PopupList(new ScriptWindow("second", w.mJournal, [](ScriptWindow&) {
            return (int)WINDOW_CLOSE;
        }));
        return (int)WINDOW_CLOSE_LAST;
    }));
    run(list);

    const std::vector<std::string> expected = {
        "middle.draw", "middle.event", "first.quit", "first.deleted",
        "middle.quit", "middle.deleted",
        "base.draw", "second.init",                 // popup goes on in the next frame
        "second.draw", "second.event", "second.quit", "second.deleted",
        "base.draw", "base.event", "base.quit", "base.deleted",
    };
    EXPECT_EQ(mJournal, expected);
    EXPECT_FALSE(has(mJournal, "first.init")) << "a replaced popup is never initialised";
}

TEST_F(RunWindowsTest, QuitCodeRemovesTheTopFirstThenFreesTheRestTopDown) {
    std::vector<KovaniWindow*> list;
    list.push_back(new ScriptWindow("a", mJournal, [](ScriptWindow&) { return 0; }, 2));
    list.push_back(new ScriptWindow("b", mJournal, [](ScriptWindow&) { return 0; }, 3));
    list.push_back(new ScriptWindow("c", mJournal, [](ScriptWindow&) { return (int)WINDOW_QUIT_ALL; }));
    const std::string log = run(list);
    const std::vector<std::string> expected = {
        "c.draw", "c.event", "c.quit", "c.deleted",
        "b.quit", "b.deleted", "a.quit", "a.deleted",
    };
    EXPECT_EQ(mJournal, expected);
    EXPECT_NE(log.find("a is 1004, quit deskui\n2 window to free\nfree window:title , type 3\n"
                       "free window:title , type 2\n"),
              std::string::npos)
        << log;
}

TEST_F(RunWindowsTest, AllPendingEventsAreHandledBeforeTheNextFrame) {
    std::vector<KovaniWindow*> list;
    std::vector<int> codes;
    auto* w = new ScriptWindow("w", mJournal, [&codes](ScriptWindow& w) {
        if (w.mDraws == 1) {
            int code = wait_event(nullptr);
            codes.push_back(code);
            return code;
        }
        return (int)WINDOW_QUIT;
    });
    w->mReadsEvents = false;
    list.push_back(w);
    for (int code : {KEY_A, KEY_B, EVENT_REFRESH, KEY_X}) {
        SDL_Event e = {};
        e.type = SDL_USEREVENT;
        e.user.code = code;
        SDL_PushEvent(&e);
    }
    run(list);
    // EVENT_REFRESH ends this frame's handling; KEY_X waits for the next.
    EXPECT_EQ(codes, (std::vector<int>{KEY_A, KEY_B, EVENT_REFRESH}));
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
}

TEST_F(RunWindowsTest, FramesRunAt33MsWhileTheBudgetLastsThenAt100) {
    std::vector<KovaniWindow*> list;
    list.push_back(new ScriptWindow("w", mJournal, [](ScriptWindow& w) {
        if (w.mDraws == 1) bootFastFrames();
        return w.mDraws > 120 ? (int)WINDOW_QUIT : 0;
    }));
    run(list);
    int fast = 0, slow = 0;
    for (long s : mClock.mSleeps) (s == 33 ? fast : slow) += (s == 33 || s == 100) ? 1 : 0;
    EXPECT_EQ(fast, 91) << "3000 ms of budget at 33 ms a frame";
    EXPECT_EQ(slow, (int)mClock.mSleeps.size() - 91);
    EXPECT_EQ(mClock.mSleeps.back(), 100);
    EXPECT_EQ(s_bootFpsTimeout, 0);
}

TEST_F(RunWindowsTest, SdlQuitEndsTheLoopEvenIfTheWindowNeverReadsEvents) {
    for (bool reads : {true, false}) {
        std::vector<KovaniWindow*> list;
        auto* w = new ScriptWindow("w", mJournal, [](ScriptWindow&) { return (int)KEY_NONE; });
        w->mReadsEvents = reads;
        list.push_back(w);
        SDL_Event quit = {};
        quit.type = SDL_QUIT;
        SDL_PushEvent(&quit);
        SDL_Event other = {};
        other.type = SDL_USEREVENT;
        other.user.code = KEY_A;
        SDL_PushEvent(&other);
        const std::string log = run(list);
        EXPECT_TRUE(list.empty()) << reads;
        EXPECT_NE(log.find("a is 1003, quit deskui\n"), std::string::npos) << log;
        clearQuitRequest();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
}
