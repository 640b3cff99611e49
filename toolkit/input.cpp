#include "input.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "input_map.h"
#include "key_repeat.h"
#include "keycodes.h"
#include "platform/clock.h"
#include "platform/logger.h"
#include "platform/device_paths.h"
#include "platform/key_shm.h"
#include "system_state.h"

SDL_Joystick* gJoystick = nullptr;

namespace {

// Stick deflections up to half way are noise; past it one code per 150 ms.
const int kAxisDeadZone = 16384;
const long kAxisGateMs = 150;

// Combination state; main thread only.
bool sStartPressed = false;
bool sSelectPressed = false;
bool sLAdjusted = false;  // L joined a held Start: its release is swallowed
bool sRAdjusted = false;  // R joined a held Start: likewise
long sLastAxisMs = 0;
bool s_lastGrab = false;

std::atomic<bool> sQuitRequested{false};

bool markerExists(int deviceId) { return access(devicePath(deviceId), F_OK) == 0; }

// While the input daemon holds the pad, presses and releases can go unseen,
// so any half-made combination is forgotten when the grab starts or ends.
void checkGrab() {
    const bool grab = markerExists(DEVICE_PATH_INPUT_GRAB);
    if (grab == s_lastGrab) return;
    s_lastGrab = grab;
    sStartPressed = false;
    sSelectPressed = false;
    sLAdjusted = false;
    sRAdjusted = false;
}

bool& adjustedFlag(int hotkey) { return hotkey == KEY_HOTKEY1 ? sLAdjusted : sRAdjusted; }

int pressed(const InputBinding* binding) {
    if (!binding) return KEY_NONE;
    switch (binding->role) {
        case INPUT_ROLE_PRESS:
            return binding->key;
        case INPUT_ROLE_REPEAT:
            update_repeat_key(binding->key);
            return binding->key;
        case INPUT_ROLE_START:
            sStartPressed = true;
            return KEY_NONE;
        case INPUT_ROLE_SELECT:
            sSelectPressed = true;
            return KEY_NONE;
        case INPUT_ROLE_HOTKEY:
            if (sStartPressed) adjustedFlag(binding->key) = true;
            return KEY_NONE;
        case INPUT_ROLE_RELEASE:
            return KEY_NONE;
    }
    return KEY_NONE;
}

int released(const InputBinding* binding) {
    if (!binding) return KEY_NONE;
    switch (binding->role) {
        case INPUT_ROLE_RELEASE:
            return binding->key;
        case INPUT_ROLE_HOTKEY:
            tprintf("hotkey%d select=%d, start=%d\n", binding->key - KEY_HOTKEY1 + 1, sSelectPressed,
                    sStartPressed);
            return sSelectPressed || sStartPressed ? KEY_NONE : binding->key;
        case INPUT_ROLE_SELECT:
            sSelectPressed = false;
            return sLAdjusted || sRAdjusted ? KEY_NONE : binding->key;
        case INPUT_ROLE_START: {
            const bool combined = sLAdjusted || sRAdjusted;
            sStartPressed = false;
            sLAdjusted = false;
            sRAdjusted = false;
            return combined ? KEY_NONE : binding->key;
        }
        case INPUT_ROLE_PRESS:
        case INPUT_ROLE_REPEAT:
            return KEY_NONE;
    }
    return KEY_NONE;
}

int hatMotion(int value) {
    const InputBinding* binding = findInputBinding(INPUT_JOY_HAT, value);
    if (binding) return pressed(binding);
    // Centred, or a diagonal: no direction is held any more.
    reset_repeat_key();
    return KEY_NONE;
}

int axisMotion(int axis, int value) {
    if (std::abs(value) <= kAxisDeadZone) return KEY_NONE;
    tprintf("joyaxis %d, value %d\n", axis, value);
    const long now = monotonicMs();
    if (now - sLastAxisMs <= kAxisGateMs) return KEY_NONE;
    sLastAxisMs = now;
    return pressed(findInputBinding(value > 0 ? INPUT_JOY_AXIS_PLUS : INPUT_JOY_AXIS_MINUS, axis));
}

int joyButtonUp(int button) {
    tprintf("joybuttonup %d\n", button);
    reset_repeat_key();
    return released(findInputBinding(INPUT_JOY_BUTTON, button));
}

int interpret(const SDL_Event& e) {
    switch (e.type) {
        case SDL_QUIT:
            // The main loop ends on the flag and shuts SDL down itself.
            requestQuit();
            return KEY_NONE;
        case SDL_JOYDEVICEADDED:
            tprintf("joystick add %d\n", e.jdevice.which);
            initJoyStick();
            return KEY_NONE;
        case SDL_JOYDEVICEREMOVED:
            tprintf("joystick remove %d\n", e.jdevice.which);
            initJoyStick();
            return KEY_NONE;
        case SDL_USEREVENT:
            return e.user.code;
        case SDL_JOYHATMOTION:
            return hatMotion(e.jhat.value);
        case SDL_JOYBUTTONDOWN:
            return pressed(findInputBinding(INPUT_JOY_BUTTON, e.jbutton.button));
        case SDL_JOYBUTTONUP:
            return joyButtonUp(e.jbutton.button);
        case SDL_JOYAXISMOTION:
            return axisMotion(e.jaxis.axis, e.jaxis.value);
        case SDL_KEYDOWN:
            return pressed(findInputBinding(INPUT_KEYBOARD, e.key.keysym.sym));
        case SDL_KEYUP:
            return released(findInputBinding(INPUT_KEYBOARD, e.key.keysym.sym));
        default:
            return KEY_NONE;
    }
}

}  // namespace

int wait_event(SDL_Event* out) {
    checkGrab();
    SDL_Event e;
    // SDL ends each round of polls with a marker that stays queued behind the
    // round's last event, so the first poll of the next round answers empty
    // although an event waits; the main loop would take that answer for a
    // handled event and draw a frame. A second poll reads the event.
    if (!SDL_PollEvent(&e) && !SDL_PollEvent(&e)) return KEY_NONE;
    // The on-screen display owns the pad while it shows.
    if (markerExists(DEVICE_PATH_OSD_SHOW)) return KEY_NONE;
    if (out) *out = e;
    return interpret(e);
}

bool quitRequested() { return sQuitRequested.load(); }
void requestQuit() { sQuitRequested.store(true); }
void clearQuitRequest() { sQuitRequested.store(false); }

void closeJoyStick() {
    if (!gJoystick) return;
    SDL_JoystickClose(gJoystick);
    gJoystick = nullptr;
}

void initJoyStick() {
    closeJoyStick();
    const int count = SDL_NumJoysticks();
    tprintf("num of joysticks %d\n", count);
    for (int index = 0; index < count; index++) {
        // Every pad is opened so that SDL delivers its events; only the
        // last one is kept to be closed again.
        SDL_Joystick* joystick = SDL_JoystickOpen(index);
        if (!joystick) {
            tprintf("open joystick fail: %s\n", SDL_GetError());
            continue;
        }
        gJoystick = joystick;
        const char* name = SDL_JoystickNameForIndex(index);
        tprintf("opened joystick name: %s, number of axes: %d, number of buttons: %d, "
                "number of balls: %d\n",
                name ? name : "", SDL_JoystickNumAxes(joystick),
                SDL_JoystickNumButtons(joystick), SDL_JoystickNumBalls(joystick));
    }
}

bool isConfirmKey(int key) {
    return key == (GetKeyShm(&gShmInfo, MONITOR_B_CONFIRM) ? KEY_B : KEY_A);
}

bool isBackKey(int key) {
    return key == (GetKeyShm(&gShmInfo, MONITOR_B_CONFIRM) ? KEY_A : KEY_B);
}
