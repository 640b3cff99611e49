#include "toolkit/key_repeat.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <vector>

#include "tests/support/temp_dir.h"
#include "toolkit/input.h"
#include "toolkit/keycodes.h"
#include "toolkit/sysutil.h"

namespace {

// The real repeat thread posting into SDL's real event queue, read back
// through wait_event as a window would.
class KeyRepeatTest : public ::testing::Test {
protected:
    void SetUp() override {
        setenv("SDL_VIDEODRIVER", "offscreen", 1);
        ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO | SDL_INIT_JOYSTICK | SDL_INIT_EVENTS), 0) << SDL_GetError();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        clear_repeat_state();
        ASSERT_EQ(start_repeat_thread(), 0);
    }
    void TearDown() override {
        stop_repeat_thread();
        SDL_Quit();
    }

    // One pushed event read back; SDL may answer one empty poll first.
    int deliver(SDL_Event event) {
        EXPECT_EQ(SDL_PushEvent(&event), 1) << SDL_GetError();
        SDL_Event out = {};
        int code = KEY_NONE;
        for (int i = 0; i < 3 && out.type != event.type; i++) code = wait_event(&out);
        EXPECT_EQ(out.type, event.type);
        return code;
    }

    int deliverHat(int value) {
        SDL_Event e = {};
        e.type = SDL_JOYHATMOTION;
        e.jhat.value = value;
        return deliver(e);
    }

    // Arrival times of the repeats of `key` until `count` arrived or the
    // deadline passed; any other repeated key fails the test.
    std::vector<long> repeats(int key, size_t count, long deadline) {
        std::vector<long> times;
        while (times.size() < count && systemms() < deadline) {
            SDL_Event out = {};
            const int code = wait_event(&out);
            if (out.type != SDL_USEREVENT) {
                SDL_Delay(1);
                continue;
            }
            EXPECT_EQ(code, key) << "only the held direction repeats";
            times.push_back(systemms());
        }
        return times;
    }

    TempDeviceRoot mRoot;  // keeps the input markers away from the real ones
};

}  // namespace

TEST_F(KeyRepeatTest, HeldHatRepeatsAfterHalfASecondThenEveryTenthUntilCentred) {
    ASSERT_EQ(deliverHat(SDL_HAT_UP), KEY_UP);
    const long pressed = systemms();
    const std::vector<long> times = repeats(KEY_UP, 4, pressed + 3000);
    ASSERT_EQ(times.size(), 4u) << "the thread stopped repeating";
    EXPECT_GE(times[0] - pressed, 500);
    EXPECT_LE(times[0] - pressed, 700);
    for (size_t i = 1; i < times.size(); i++) {
        EXPECT_GE(times[i] - times[i - 1], 60) << "repeat " << i;
        EXPECT_LE(times[i] - times[i - 1], 200) << "repeat " << i;
    }
    // Centred just after a repeat, long before the next one is due.
    EXPECT_EQ(deliverHat(SDL_HAT_CENTERED), KEY_NONE);
    EXPECT_TRUE(repeats(KEY_UP, 1, systemms() + 400).empty()) << "a centred hat stops repeating";
}

TEST_F(KeyRepeatTest, OnlyTheHatRepeatsAndAnyButtonReleaseEndsIt) {
    SDL_Event arrow = {};
    arrow.type = SDL_KEYDOWN;
    arrow.key.keysym.sym = SDLK_DOWN;
    EXPECT_EQ(deliver(arrow), KEY_DOWN);
    SDL_Event stick = {};
    stick.type = SDL_JOYAXISMOTION;
    stick.jaxis.axis = 1;
    stick.jaxis.value = 32767;
    deliver(stick);

    ASSERT_EQ(deliverHat(SDL_HAT_LEFT), KEY_LEFT);
    SDL_Event release = {};
    release.type = SDL_JOYBUTTONUP;
    release.jbutton.button = 9;  // no key of its own
    EXPECT_EQ(deliver(release), KEY_NONE);
    EXPECT_TRUE(repeats(KEY_NONE, 1, systemms() + 700).empty());
}

TEST_F(KeyRepeatTest, ThreadRunsOnceAndStartsAgainAfterStop) {
    EXPECT_EQ(start_repeat_thread(), -1) << "a second thread is refused";
    stop_repeat_thread();
    ASSERT_EQ(deliverHat(SDL_HAT_RIGHT), KEY_RIGHT) << "presses are kept without a thread";
    ASSERT_EQ(start_repeat_thread(), 0);
    const std::vector<long> times = repeats(KEY_RIGHT, 1, systemms() + 1500);
    EXPECT_EQ(times.size(), 1u) << "a restarted thread repeats the key held meanwhile";
}
