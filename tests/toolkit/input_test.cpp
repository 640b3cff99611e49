#include "toolkit/input.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "tests/support/temp_dir.h"
#include "toolkit/keycodes.h"
#include "toolkit/system_state.h"
#include "toolkit/sysutil.h"

namespace {

enum { PAD_B, PAD_A, PAD_Y, PAD_X, PAD_L, PAD_R, PAD_SELECT, PAD_START, PAD_MENU };
const bool DOWN = true;
const bool UP = false;
// Longer than the gap the stick needs between two codes.
const Uint32 kAxisPauseMs = 160;

SDL_Event button(int number, bool down) {
    SDL_Event e = {};
    e.type = down ? SDL_JOYBUTTONDOWN : SDL_JOYBUTTONUP;
    e.jbutton.button = number;
    e.jbutton.state = down ? SDL_PRESSED : SDL_RELEASED;
    return e;
}

SDL_Event key(SDL_Keycode sym, bool down) {
    SDL_Event e = {};
    e.type = down ? SDL_KEYDOWN : SDL_KEYUP;
    e.key.keysym.sym = sym;
    e.key.state = down ? SDL_PRESSED : SDL_RELEASED;
    return e;
}

SDL_Event hat(int value) {
    SDL_Event e = {};
    e.type = SDL_JOYHATMOTION;
    e.jhat.value = value;
    return e;
}

SDL_Event axis(int number, int value) {
    SDL_Event e = {};
    e.type = SDL_JOYAXISMOTION;
    e.jaxis.axis = number;
    e.jaxis.value = value;
    return e;
}

SDL_Event user(int code) {
    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = code;
    return e;
}

struct Step {
    const char* what;
    SDL_Event event;
    int expected;
};

struct Sequence {
    const char* name;
    std::vector<Step> steps;
};

// Real SDL with its event queue, and every device path in a temp folder.
class InputTest : public ::testing::Test {
protected:
    void SetUp() override {
        setenv("SDL_VIDEODRIVER", "offscreen", 1);
        ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO | SDL_INIT_JOYSTICK | SDL_INIT_EVENTS), 0) << SDL_GetError();
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
        forgetCombinations();
        clearQuitRequest();
    }
    void TearDown() override {
        closeJoyStick();
        SDL_Quit();
    }

    // Pushes one event and reads it back through wait_event. SDL ends each
    // round of polling with one empty poll, so a read may take two calls.
    int deliver(const SDL_Event& event) {
        SDL_Event in = event;
        EXPECT_EQ(SDL_PushEvent(&in), 1) << SDL_GetError();
        SDL_Event out = {};
        int code = KEY_NONE;
        for (int i = 0; i < 3 && out.type == 0; i++) code = wait_event(&out);
        EXPECT_EQ(out.type, event.type) << "the event is handed back to the caller";
        return code;
    }

    // Pushes one event that the reader must drop without handing it back.
    int deliverDropped(const SDL_Event& event) {
        SDL_Event in = event;
        EXPECT_EQ(SDL_PushEvent(&in), 1) << SDL_GetError();
        SDL_Event out = {};
        int code = KEY_NONE;
        for (int i = 0; i < 3 && SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT); i++) {
            const int read = wait_event(&out);
            if (read != KEY_NONE) code = read;
        }
        EXPECT_FALSE(SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT)) << "the event is consumed";
        EXPECT_EQ(out.type, 0u) << "a dropped event is not handed back";
        return code;
    }

    // A grab marker that comes and goes clears every half-made combination.
    void forgetCombinations() {
        setMarker(DEVICE_PATH_INPUT_GRAB, true);
        wait_event(nullptr);
        setMarker(DEVICE_PATH_INPUT_GRAB, false);
        wait_event(nullptr);
    }

    void setMarker(int deviceId, bool present) {
        if (present)
            writeFileAtomic(mRoot.at(deviceId), "");
        else
            unlink(mRoot.at(deviceId).c_str());
    }

    // Delivers every step in order; `dropped`: each must be dropped unseen.
    void run(const std::vector<Sequence>& sequences, bool dropped) {
        for (const Sequence& sequence : sequences) {
            for (size_t i = 0; i < sequence.steps.size(); i++) {
                const Step& step = sequence.steps[i];
                const int code = dropped ? deliverDropped(step.event) : deliver(step.event);
                EXPECT_EQ(code, step.expected) << sequence.name << ", step " << i << ": " << step.what;
            }
        }
    }

    TempDeviceRoot mRoot;
};

}  // namespace

TEST_F(InputTest, EachInputGivesItsKey) {
    // Buttons and keys act on release, except the keyboard arrows; the hat
    // ignores centre and diagonals; stick axes beyond half give directions,
    // the trigger axis a hotkey.
    const std::vector<Sequence> sequences = {
        {"buttons",
         {{"B down", button(PAD_B, DOWN), KEY_NONE},
          {"B up", button(PAD_B, UP), KEY_B},
          {"L up", button(PAD_L, UP), KEY_HOTKEY1},
          {"Menu up", button(PAD_MENU, UP), KEY_MENU_KEY},
          {"unknown button", button(9, UP), KEY_NONE}}},
        {"keyboard",
         {{"Up down", key(SDLK_UP, DOWN), KEY_UP},
          {"Up up", key(SDLK_UP, UP), KEY_NONE},
          {"Space up", key(SDLK_SPACE, UP), KEY_A},
          {"Escape up", key(SDLK_ESCAPE, UP), KEY_MENU_KEY},
          {"unmapped key", key(SDLK_a, UP), KEY_NONE}}},
        {"hat",
         {{"up", hat(SDL_HAT_UP), KEY_UP},
          {"left", hat(SDL_HAT_LEFT), KEY_LEFT},
          {"diagonal", hat(SDL_HAT_RIGHTUP), KEY_NONE},
          {"centre", hat(SDL_HAT_CENTERED), KEY_NONE}}},
        {"user events",
         {{"key code", user(KEY_DOWN), KEY_DOWN},
          {"file removed", user(EVENT_FILE_REMOVED), EVENT_FILE_REMOVED}}},
    };
    run(sequences, false);
    const struct { int axis, value, expected; } axes[] = {
        {0, -32768, KEY_LEFT}, {4, 20000, KEY_DOWN}, {2, 32767, KEY_HOTKEY3},
        {2, -32768, KEY_NONE}, {6, 32767, KEY_NONE},
    };
    for (const auto& c : axes) {
        SDL_Delay(kAxisPauseMs);
        EXPECT_EQ(deliver(axis(c.axis, c.value)), c.expected) << "axis " << c.axis << " at " << c.value;
    }

    EXPECT_EQ(deliver(SDL_Event{SDL_QUIT}), KEY_NONE);
    EXPECT_TRUE(quitRequested()) << "quit is remembered";
    EXPECT_EQ(deliver(user(EVENT_PLAY_FILE)), EVENT_PLAY_FILE) << "SDL still works after SDL_QUIT";
    clearQuitRequest();
}

TEST_F(InputTest, StartAndSelectCombinationsSwallowTheirKeys) {
    const std::vector<Sequence> sequences = {
        {"Start alone",
         {{"Start down", button(PAD_START, DOWN), KEY_NONE},
          {"Start up", button(PAD_START, UP), KEY_START}}},
        {"Start+L",
         {{"Start down", button(PAD_START, DOWN), KEY_NONE},
          {"L down", button(PAD_L, DOWN), KEY_NONE},
          {"L up while Start is held", button(PAD_L, UP), KEY_NONE},
          {"Start up after L joined", button(PAD_START, UP), KEY_NONE},
          {"Start down again", button(PAD_START, DOWN), KEY_NONE},
          {"Start up alone again", button(PAD_START, UP), KEY_START}}},
        {"L before Start is no combination",
         {{"L down", button(PAD_L, DOWN), KEY_NONE},
          {"Start down", button(PAD_START, DOWN), KEY_NONE},
          {"Start up", button(PAD_START, UP), KEY_START},
          {"L up", button(PAD_L, UP), KEY_HOTKEY1}}},
        {"Select silences the hotkeys",
         {{"Select down", button(PAD_SELECT, DOWN), KEY_NONE},
          {"L up", button(PAD_L, UP), KEY_NONE},
          {"Backspace up", key(SDLK_BACKSPACE, UP), KEY_NONE},
          {"Select up", button(PAD_SELECT, UP), KEY_SELECT_COIN},
          {"L up after Select", button(PAD_L, UP), KEY_HOTKEY1}}},
        {"Select inside Start+L",
         {{"Start down", button(PAD_START, DOWN), KEY_NONE},
          {"L down", button(PAD_L, DOWN), KEY_NONE},
          {"Select down", button(PAD_SELECT, DOWN), KEY_NONE},
          {"Select up", button(PAD_SELECT, UP), KEY_NONE},
          {"Start up", button(PAD_START, UP), KEY_NONE},
          {"Select alone afterwards", button(PAD_SELECT, UP), KEY_SELECT_COIN}}},
    };
    run(sequences, false);
}

TEST_F(InputTest, OsdMarkerDropsEveryEventWithoutTouchingCombinations) {
    EXPECT_EQ(deliver(button(PAD_START, DOWN)), KEY_NONE);
    setMarker(DEVICE_PATH_OSD_SHOW, true);
    const std::vector<Sequence> dropped = {
        {"while the display shows",
         {{"L down would join Start", button(PAD_L, DOWN), KEY_NONE},
          {"Start up would end Start", button(PAD_START, UP), KEY_NONE},
          {"A up", button(PAD_A, UP), KEY_NONE},
          {"Escape up", key(SDLK_ESCAPE, UP), KEY_NONE},
          {"hat up", hat(SDL_HAT_UP), KEY_NONE},
          {"user event", user(EVENT_PLAY_FILE), KEY_NONE},
          {"quit", SDL_Event{SDL_QUIT}, KEY_NONE}}},
    };
    run(dropped, true);
    EXPECT_FALSE(quitRequested());

    setMarker(DEVICE_PATH_OSD_SHOW, false);
    EXPECT_EQ(deliver(button(PAD_L, UP)), KEY_NONE) << "Start is still held";
    EXPECT_EQ(deliver(button(PAD_START, UP)), KEY_START) << "L never joined Start";
    EXPECT_EQ(deliver(button(PAD_L, UP)), KEY_HOTKEY1);
}

TEST_F(InputTest, StickIgnoresHalfDeflectionAndGivesOneCodePer150Ms) {
    SDL_Delay(kAxisPauseMs);
    EXPECT_EQ(deliver(axis(0, 16384)), KEY_NONE);
    EXPECT_EQ(deliver(axis(0, -16384)), KEY_NONE);

    EXPECT_EQ(deliver(axis(0, 16385)), KEY_RIGHT) << "half deflection did not use up the gap";
    const long firstCode = systemms();
    SDL_Delay(100);
    const int tooSoon = deliver(axis(1, -32768));
    if (systemms() - firstCode <= 150) {
        EXPECT_EQ(tooSoon, KEY_NONE) << "100 ms after a code";
    }
    while (systemms() - firstCode <= 150) SDL_Delay(5);
    SDL_Delay(10);
    EXPECT_EQ(deliver(axis(1, -32768)), KEY_UP) << "the refused event did not restart the gap";
}

TEST_F(InputTest, ConfirmAndBackFollowTheSharedExchangeSlot) {
    const struct { bool open; int bConfirm, key; bool confirm, back; } cases[] = {
        {false, 0, KEY_A, true, false}, {true, 0, KEY_B, false, true},
        {true, 1, KEY_A, false, true},  {true, 1, KEY_B, true, false},
        {true, 1, KEY_START, false, false}, {true, 7, KEY_B, true, false},
    };
    // The slot is written through a handle of its own, as the device's
    // settings daemon would.
    KeyShmInfo writer;
    ASSERT_EQ(InitKeyShm(&writer), 0);
    for (const auto& c : cases) {
        if (c.open && !gShmInfo.values) {
            ASSERT_EQ(InitKeyShm(&gShmInfo), 0);
        }
        ASSERT_EQ(SetKeyShm(&writer, MONITOR_B_CONFIRM, c.bConfirm), 0);
        EXPECT_EQ(isConfirmKey(c.key), c.confirm) << "slot " << c.bConfirm << ", key " << c.key;
        EXPECT_EQ(isBackKey(c.key), c.back) << "slot " << c.bConfirm << ", key " << c.key;
    }
    UninitKeyShm(&gShmInfo);
    UninitKeyShm(&writer);
}
