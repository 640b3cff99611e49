#include "toolkit/input.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "tests/support/capture_stdout.h"
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

    // Reads events until one of `type` arrives; its code, or -1 at the deadline.
    int deliverArrival(Uint32 type) {
        const long deadline = systemms() + 2000;
        while (systemms() < deadline) {
            SDL_Event out = {};
            const int code = wait_event(&out);
            if (out.type == type) return code;
            SDL_Delay(5);
        }
        ADD_FAILURE() << "no event of type " << type << " arrived";
        return -1;
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

TEST_F(InputTest, JoystickButtonsGiveTheirKeyOnRelease) {
    const struct {
        int button;
        int onRelease;
    } cases[] = {
        {PAD_B, KEY_B}, {PAD_A, KEY_A}, {PAD_L, KEY_HOTKEY1}, {PAD_MENU, KEY_MENU_KEY},
        {9, KEY_NONE},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(deliver(button(c.button, DOWN)), KEY_NONE) << "button " << c.button << " pressed";
        EXPECT_EQ(deliver(button(c.button, UP)), c.onRelease) << "button " << c.button << " released";
    }
}

TEST_F(InputTest, KeyboardStandsInForThePad) {
    const struct {
        SDL_Keycode sym;
        int onPress;
        int onRelease;
    } cases[] = {
        {SDLK_UP, KEY_UP, KEY_NONE},
        {SDLK_SPACE, KEY_NONE, KEY_A},
        {SDLK_ESCAPE, KEY_NONE, KEY_MENU_KEY},
        {SDLK_a, KEY_NONE, KEY_NONE},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(deliver(key(c.sym, DOWN)), c.onPress) << SDL_GetKeyName(c.sym) << " pressed";
        EXPECT_EQ(deliver(key(c.sym, UP)), c.onRelease) << SDL_GetKeyName(c.sym) << " released";
    }
}

TEST_F(InputTest, HatGivesDirectionsAndIgnoresCentreAndDiagonals) {
    const struct {
        int value;
        int expected;
    } cases[] = {
        {SDL_HAT_UP, KEY_UP}, {SDL_HAT_LEFT, KEY_LEFT}, {SDL_HAT_RIGHTUP, KEY_NONE},
        {SDL_HAT_CENTERED, KEY_NONE},
    };
    for (const auto& c : cases) EXPECT_EQ(deliver(hat(c.value)), c.expected) << "hat " << c.value;
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
        {"pad Start with keyboard R",
         {{"Start down", button(PAD_START, DOWN), KEY_NONE},
          {"Backspace down", key(SDLK_BACKSPACE, DOWN), KEY_NONE},
          {"Backspace up", key(SDLK_BACKSPACE, UP), KEY_NONE},
          {"Start up", button(PAD_START, UP), KEY_NONE}}},
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

TEST_F(InputTest, GrabMarkerChangeForgetsCombinations) {
    EXPECT_EQ(deliver(button(PAD_START, DOWN)), KEY_NONE);
    EXPECT_EQ(deliver(button(PAD_SELECT, DOWN)), KEY_NONE);
    setMarker(DEVICE_PATH_INPUT_GRAB, true);
    EXPECT_EQ(deliver(button(PAD_L, UP)), KEY_HOTKEY1) << "created marker: Start and Select forgotten";

    EXPECT_EQ(deliver(button(PAD_START, DOWN)), KEY_NONE);
    EXPECT_EQ(deliver(button(PAD_R, DOWN)), KEY_NONE);
    EXPECT_EQ(deliver(button(PAD_L, UP)), KEY_NONE) << "a marker that stays changes nothing";
    setMarker(DEVICE_PATH_INPUT_GRAB, false);
    EXPECT_EQ(deliver(button(PAD_START, UP)), KEY_START) << "removed marker: Start+R forgotten";
}

TEST_F(InputTest, StickIgnoresHalfDeflectionAndGivesOneCodePer150Ms) {
    SDL_Delay(kAxisPauseMs);
    CaptureStdout capture;
    EXPECT_EQ(deliver(axis(0, 16384)), KEY_NONE);
    EXPECT_EQ(deliver(axis(0, -16384)), KEY_NONE);
    const std::string log = capture.finish();
    EXPECT_EQ(log.find("joyaxis"), std::string::npos) << "half deflection is not even logged";

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

TEST_F(InputTest, StickAxesGiveDirectionsAndTriggersGiveHotkeys) {
    const struct {
        int axis;
        int value;
        int expected;
    } cases[] = {
        {0, -32768, KEY_LEFT}, {4, 20000, KEY_DOWN}, {2, 32767, KEY_HOTKEY3},
        {2, -32768, KEY_NONE}, {6, 32767, KEY_NONE},
    };
    for (const auto& c : cases) {
        SDL_Delay(kAxisPauseMs);
        EXPECT_EQ(deliver(axis(c.axis, c.value)), c.expected) << "axis " << c.axis << " at " << c.value;
    }
}

TEST_F(InputTest, UserEventsDeliverTheirCode) {
    for (int code : {KEY_DOWN, EVENT_PLAY_COMPLETE, EVENT_SEEK_COMPLETE, EVENT_FILE_REMOVED})
        EXPECT_EQ(deliver(user(code)), code);
}

TEST_F(InputTest, QuitEventIsRememberedAndLeavesSdlRunning) {
    EXPECT_FALSE(quitRequested());
    EXPECT_EQ(deliver(SDL_Event{SDL_QUIT}), KEY_NONE);
    EXPECT_TRUE(quitRequested());
    EXPECT_EQ(deliver(user(EVENT_PLAY_FILE)), EVENT_PLAY_FILE) << "SDL still works after SDL_QUIT";
    clearQuitRequest();
    EXPECT_FALSE(quitRequested());
}

TEST_F(InputTest, ConfirmAndBackFollowTheSharedExchangeSlot) {
    const struct {
        bool open;
        int bConfirm;
        int key;
        bool confirm;
        bool back;
    } cases[] = {
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

TEST_F(InputTest, JoystickHotPlugReopensTheJoysticks) {
    const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_GAMECONTROLLER, 6, 9, 1);
    ASSERT_GE(index, 0) << SDL_GetError();
    EXPECT_EQ(deliverArrival(SDL_JOYDEVICEADDED), KEY_NONE);
    ASSERT_NE(gJoystick, nullptr);
    EXPECT_EQ(SDL_JoystickNumButtons(gJoystick), 9);
    EXPECT_EQ(SDL_JoystickNumAxes(gJoystick), 6);

    ASSERT_EQ(SDL_JoystickDetachVirtual(index), 0) << SDL_GetError();
    EXPECT_EQ(deliverArrival(SDL_JOYDEVICEREMOVED), KEY_NONE);
    EXPECT_EQ(gJoystick, nullptr) << "no joystick left open";

}
