#include "toolkit/input.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/device_paths.h"
#include "tests/support/sdl_events.h"
#include "tests/support/shifted_clock.h"
#include "tests/support/temp_dir.h"
#include "toolkit/key_repeat.h"
#include "toolkit/keycodes.h"

namespace {

enum { PAD_B, PAD_A, PAD_Y, PAD_X, PAD_L, PAD_R, PAD_SELECT, PAD_START, PAD_MENU };
const bool DOWN = true, UP = false;

SDL_Event event(Uint32 type) {
    SDL_Event e = {};
    e.type = type;
    return e;
}
SDL_Event button(int number, bool down) {
    SDL_Event e = event(down ? SDL_JOYBUTTONDOWN : SDL_JOYBUTTONUP);
    e.jbutton.button = number;
    e.jbutton.state = down ? SDL_PRESSED : SDL_RELEASED;
    return e;
}
SDL_Event key(SDL_Keycode sym, bool down) {
    SDL_Event e = event(down ? SDL_KEYDOWN : SDL_KEYUP);
    e.key.keysym.sym = sym;
    e.key.state = down ? SDL_PRESSED : SDL_RELEASED;
    return e;
}
SDL_Event hat(int value) {
    SDL_Event e = event(SDL_JOYHATMOTION);
    e.jhat.value = value;
    return e;
}

// Both clocks as a test sets them: the repeat thread reads mThreadMs, the
// test's own thread (which presses keys) mPressMs.
class SteppedClock : public ClockSource {
public:
    long monotonicMs() override { return now(); }
    long wallMs() override { return now(); }
    long now() {
        if (std::this_thread::get_id() == mTestThread) return mPressMs;
        mThreadReads++;
        return mThreadMs;
    }
    const std::thread::id mTestThread = std::this_thread::get_id();
    std::atomic<long> mPressMs{1000000}, mThreadMs{1000000};
    std::atomic<int> mThreadReads{0};
};

// Named runs of events, each with the code it must give.
typedef std::vector<std::pair<const char*, std::vector<std::pair<SDL_Event, int>>>> Sequences;

// Real SDL with its event queue, and every device path in a temp folder.
class InputTest : public ::testing::Test {
protected:
    void SetUp() override {
        setenv("SDL_VIDEODRIVER", "offscreen", 1);
        ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO | SDL_INIT_JOYSTICK | SDL_INIT_EVENTS), 0) << SDL_GetError();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        // A grab marker that comes and goes clears every half-made combination.
        setMarker(DEVICE_PATH_INPUT_GRAB, true);
        wait_event(nullptr);
        setMarker(DEVICE_PATH_INPUT_GRAB, false);
        wait_event(nullptr);
        clearQuitRequest();
        clear_repeat_state();
    }
    void TearDown() override {
        stop_repeat_thread();
        setClockSource(nullptr);
        closeJoyStick();
        SDL_Quit();
    }
    // Pushes one event and reads it back through wait_event (SDL may answer one poll empty).
    int deliver(SDL_Event event) {
        EXPECT_EQ(SDL_PushEvent(&event), 1) << SDL_GetError();
        SDL_Event out = {};
        int code = KEY_NONE;
        for (int i = 0; i < 3 && out.type == 0; i++) {
            const int read = wait_event(&out);
            if (read != KEY_NONE) code = read;
        }
        EXPECT_EQ(out.type, event.type) << "handed back";
        return code;
    }
    void setMarker(int deviceId, bool present) {
        present ? writeFileAtomic(mRoot.at(deviceId), "") : (void)unlink(mRoot.at(deviceId).c_str());
    }
    void run(const Sequences& sequences) {
        for (const auto& [name, steps] : sequences)
            for (size_t i = 0; i < steps.size(); i++)
                EXPECT_EQ(deliver(steps[i].first), steps[i].second) << name << ", step " << i;
    }

    TempDeviceRoot mRoot;  // keeps the input markers away from the real ones
    ShiftedClock mClock;         // installed by the tests that step the wall clock
    SteppedClock mSteppedClock;  // installed by the repeat timing table
};

}  // namespace

// Keys act on release (arrows on press); Start and Select combinations swallow keys.
TEST_F(InputTest, KeysActOnReleaseAndStartAndSelectCombinationsSwallowTheirKeys) {
    run({{"buttons", {{button(PAD_B, DOWN), KEY_NONE}, {button(PAD_B, UP), KEY_B}, {button(9, UP), KEY_NONE}}},
         {"keyboard", {{key(SDLK_UP, DOWN), KEY_UP}, {key(SDLK_UP, UP), KEY_NONE}, {key(SDLK_SPACE, UP), KEY_A},
                       {key(SDLK_a, UP), KEY_NONE}}},
         {"hat", {{hat(SDL_HAT_LEFT), KEY_LEFT}, {hat(SDL_HAT_RIGHTUP), KEY_NONE}, {hat(SDL_HAT_CENTERED), KEY_NONE}}},
         {"Start+L",
          {{button(PAD_START, DOWN), KEY_NONE}, {button(PAD_L, DOWN), KEY_NONE}, {button(PAD_L, UP), KEY_NONE},
           {button(PAD_START, UP), KEY_NONE}, {button(PAD_START, DOWN), KEY_NONE},
           {button(PAD_START, UP), KEY_START}}},
         {"L before Start is no combination",
          {{button(PAD_L, DOWN), KEY_NONE}, {button(PAD_START, DOWN), KEY_NONE},
           {button(PAD_START, UP), KEY_START}, {button(PAD_L, UP), KEY_HOTKEY1}}},
         {"Select silences the hotkeys",
          {{button(PAD_SELECT, DOWN), KEY_NONE}, {button(PAD_L, UP), KEY_NONE}, {key(SDLK_BACKSPACE, UP), KEY_NONE},
           {button(PAD_SELECT, UP), KEY_SELECT_COIN}, {button(PAD_L, UP), KEY_HOTKEY1}}},
         {"Select inside Start+L",
          {{button(PAD_START, DOWN), KEY_NONE}, {button(PAD_L, DOWN), KEY_NONE},
           {button(PAD_SELECT, DOWN), KEY_NONE}, {button(PAD_SELECT, UP), KEY_NONE},
           {button(PAD_START, UP), KEY_NONE}, {button(PAD_SELECT, UP), KEY_SELECT_COIN}}}});
}

// The wall clock stepping an hour back (the network or the user sets it)
// neither stops the stick's codes nor a held direction's repeats.
TEST_F(InputTest, TheStickAndHeldKeysGoOnAcrossAWallClockStep) {
    setClockSource(&mClock);
    const long hour = 3600000;
    SDL_Event stick = event(SDL_JOYAXISMOTION);
    stick.jaxis.axis = 1;
    stick.jaxis.value = 30000;
    EXPECT_EQ(deliver(stick), KEY_DOWN);
    mClock.mWallShift -= hour;
    mClock.mMonotonicShift += 200;  // past the stick's gate
    EXPECT_EQ(deliver(stick), KEY_DOWN);

    ASSERT_EQ(start_repeat_thread(), 0);
    EXPECT_EQ(deliver(hat(SDL_HAT_UP)), KEY_UP);
    mClock.mWallShift -= hour;
    mClock.mMonotonicShift += 600;  // past the first repeat's delay
    EXPECT_TRUE(waitQueued(KEY_UP)) << "the held key repeats";
}

// A held direction repeats first more than 500 ms after its press, then at
// each wake-up of the repeat thread (about every 100 ms) until released;
// other keys never repeat.
TEST_F(InputTest, KeyRepeatTable) {
    setClockSource(&mSteppedClock);
    ASSERT_EQ(start_repeat_thread(), 0);
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    const struct { long afterPressMs; int repeats; bool release; } rows[] = {
        {0, 0, false}, {300, 0, false}, {500, 0, false}, {501, 1, false}, {501, 0, false},
        {601, 1, false}, {701, 1, false}, {801, 0, true}, {2000, 0, false},
    };
    update_repeat_key(KEY_UP);
    update_repeat_key(KEY_B);
    for (const auto& row : rows) {
        if (row.release) reset_repeat_key();
        mSteppedClock.mThreadMs = mSteppedClock.mPressMs + row.afterPressMs;
        // Once the thread has read the new time, a press waits for the lock
        // it holds while it posts.
        const int reads = mSteppedClock.mThreadReads;
        for (int i = 0; i < 300 && mSteppedClock.mThreadReads == reads; i++) SDL_Delay(10);
        update_repeat_key(KEY_A);
        SDL_PumpEvents();
        SDL_Event events[16];
        const int n = SDL_PeepEvents(events, 16, SDL_GETEVENT, SDL_USEREVENT, SDL_USEREVENT);
        int repeats = 0;
        for (int i = 0; i < n; i++) {
            EXPECT_EQ(events[i].user.code, KEY_UP) << row.afterPressMs;
            repeats += events[i].user.code == KEY_UP;
        }
        EXPECT_EQ(repeats, row.repeats) << row.afterPressMs << " ms after the press";
    }
}
