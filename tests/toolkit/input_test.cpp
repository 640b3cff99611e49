#include "toolkit/input.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/device_paths.h"
#include "tests/support/temp_dir.h"
#include "toolkit/key_repeat.h"
#include "toolkit/keycodes.h"
#include "platform/sysutil.h"

namespace {

enum { PAD_B, PAD_A, PAD_Y, PAD_X, PAD_L, PAD_R, PAD_SELECT, PAD_START, PAD_MENU };
const bool DOWN = true;
const bool UP = false;
// Longer than the gap the stick needs between two codes.
const Uint32 kAxisPauseMs = 160;

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
SDL_Event axis(int number, int value) {
    SDL_Event e = event(SDL_JOYAXISMOTION);
    e.jaxis.axis = number;
    e.jaxis.value = value;
    return e;
}
SDL_Event user(int code) {
    SDL_Event e = event(SDL_USEREVENT);
    e.user.code = code;
    return e;
}

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
        closeJoyStick();
        SDL_Quit();
    }

    // Pushes one event and reads it back through wait_event. SDL ends each
    // round of polling with one empty poll, so a read may take two calls.
    // A dropped event must be consumed without being handed back.
    int deliver(SDL_Event event, bool dropped = false) {
        EXPECT_EQ(SDL_PushEvent(&event), 1) << SDL_GetError();
        SDL_Event out = {};
        int code = KEY_NONE;
        for (int i = 0; i < 3 && (dropped ? SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT) == SDL_TRUE : out.type == 0); i++) {
            const int read = wait_event(&out);
            if (read != KEY_NONE) code = read;
        }
        EXPECT_EQ(out.type, dropped ? 0u : event.type) << "handed back unless dropped";
        return code;
    }

    void setMarker(int deviceId, bool present) {
        if (present)
            writeFileAtomic(mRoot.at(deviceId), "");
        else
            unlink(mRoot.at(deviceId).c_str());
    }

    void run(const Sequences& sequences, bool dropped = false) {
        for (const auto& sequence : sequences)
            for (size_t i = 0; i < sequence.second.size(); i++)
                EXPECT_EQ(deliver(sequence.second[i].first, dropped), sequence.second[i].second)
                    << sequence.first << ", step " << i;
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

TEST_F(InputTest, EachInputGivesItsKey) {
    // Buttons and keys act on release, except the keyboard arrows; the hat
    // ignores centre and diagonals.
    run({{"buttons",
          {{button(PAD_B, DOWN), KEY_NONE}, {button(PAD_B, UP), KEY_B}, {button(PAD_L, UP), KEY_HOTKEY1},
           {button(PAD_MENU, UP), KEY_MENU_KEY}, {button(9, UP), KEY_NONE}}},
         {"keyboard",
          {{key(SDLK_UP, DOWN), KEY_UP}, {key(SDLK_UP, UP), KEY_NONE}, {key(SDLK_SPACE, UP), KEY_A},
           {key(SDLK_ESCAPE, UP), KEY_MENU_KEY}, {key(SDLK_a, UP), KEY_NONE}}},
         {"hat", {{hat(SDL_HAT_LEFT), KEY_LEFT}, {hat(SDL_HAT_RIGHTUP), KEY_NONE}, {hat(SDL_HAT_CENTERED), KEY_NONE}}},
         {"user events", {{user(KEY_DOWN), KEY_DOWN}, {user(EVENT_FILE_REMOVED), EVENT_FILE_REMOVED}}}});

    // Stick axes beyond half give directions, the trigger axis a hotkey.
    const struct { int axis, value, expected; } axes[] = {
        {0, -32768, KEY_LEFT}, {4, 20000, KEY_DOWN}, {2, 32767, KEY_HOTKEY3},
        {2, -32768, KEY_NONE}, {6, 32767, KEY_NONE}, {0, 16384, KEY_NONE},
    };
    for (const auto& c : axes) {
        SDL_Delay(kAxisPauseMs);
        EXPECT_EQ(deliver(axis(c.axis, c.value)), c.expected) << "axis " << c.axis << " at " << c.value;
    }
    EXPECT_EQ(deliver(axis(0, 16385)), KEY_RIGHT) << "half deflection did not use up the gap";
    const long firstCode = systemms();
    const int tooSoon = deliver(axis(1, -32768));
    if (systemms() - firstCode <= 150) {
        EXPECT_EQ(tooSoon, KEY_NONE) << "one code per 150 ms";
    }
    while (systemms() - firstCode <= 160) SDL_Delay(5);
    EXPECT_EQ(deliver(axis(1, -32768)), KEY_UP) << "the refused event did not restart the gap";

    EXPECT_EQ(deliver(event(SDL_QUIT)), KEY_NONE);
    EXPECT_TRUE(quitRequested()) << "quit is remembered";
    EXPECT_EQ(deliver(user(EVENT_PLAY_FILE)), EVENT_PLAY_FILE) << "SDL still works after SDL_QUIT";
}

TEST_F(InputTest, StartAndSelectCombinationsSwallowTheirKeys) {
    run({{"Start alone", {{button(PAD_START, DOWN), KEY_NONE}, {button(PAD_START, UP), KEY_START}}},
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

TEST_F(InputTest, OsdMarkerDropsEveryEventWithoutTouchingCombinations) {
    EXPECT_EQ(deliver(button(PAD_START, DOWN)), KEY_NONE);
    setMarker(DEVICE_PATH_OSD_SHOW, true);
    run({{"while the display shows",
          {{button(PAD_L, DOWN), KEY_NONE}, {button(PAD_START, UP), KEY_NONE}, {button(PAD_A, UP), KEY_NONE},
           {hat(SDL_HAT_UP), KEY_NONE}, {user(EVENT_PLAY_FILE), KEY_NONE}, {event(SDL_QUIT), KEY_NONE}}}},
        true);
    EXPECT_FALSE(quitRequested());

    setMarker(DEVICE_PATH_OSD_SHOW, false);
    EXPECT_EQ(deliver(button(PAD_L, UP)), KEY_NONE) << "Start is still held";
    EXPECT_EQ(deliver(button(PAD_START, UP)), KEY_START) << "L never joined Start";
}

TEST_F(InputTest, HeldHatRepeatsAfterHalfASecondThenEveryTenthUntilCentred) {
    ASSERT_EQ(start_repeat_thread(), 0);
    EXPECT_EQ(start_repeat_thread(), -1) << "a second thread is refused";
    ASSERT_EQ(deliver(hat(SDL_HAT_UP)), KEY_UP);
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
    EXPECT_EQ(deliver(hat(SDL_HAT_CENTERED)), KEY_NONE);
    EXPECT_TRUE(repeats(KEY_UP, 1, systemms() + 400).empty()) << "a centred hat stops repeating";
}

TEST_F(InputTest, OnlyTheHatRepeatsAndAnyButtonReleaseEndsIt) {
    ASSERT_EQ(start_repeat_thread(), 0);
    EXPECT_EQ(deliver(key(SDLK_DOWN, DOWN)), KEY_DOWN);
    ASSERT_EQ(deliver(hat(SDL_HAT_LEFT)), KEY_LEFT);
    EXPECT_EQ(deliver(button(9, UP)), KEY_NONE);
    EXPECT_TRUE(repeats(KEY_NONE, 1, systemms() + 700).empty());

    // Presses are kept without a thread; a restarted one repeats them.
    stop_repeat_thread();
    ASSERT_EQ(deliver(hat(SDL_HAT_RIGHT)), KEY_RIGHT);
    ASSERT_EQ(start_repeat_thread(), 0);
    EXPECT_EQ(repeats(KEY_RIGHT, 1, systemms() + 1500).size(), 1u);
}
