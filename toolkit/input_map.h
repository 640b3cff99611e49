#pragma once

#include <string>
#include <vector>

// Where a device input comes from. `code` of a binding is read per source.
enum InputSource {
    INPUT_JOY_BUTTON,      // code: joystick button number
    INPUT_JOY_HAT,         // code: hat value (SDL_HAT_UP, ...); a diagonal is no binding
    INPUT_JOY_AXIS_PLUS,   // code: axis number, pushed towards positive values
    INPUT_JOY_AXIS_MINUS,  // code: axis number, pushed towards negative values
    INPUT_KEYBOARD,        // code: SDL keycode
};

// What pressing and releasing a bound input does.
enum InputRole {
    INPUT_ROLE_RELEASE,  // the key when let go (face buttons, Menu)
    INPUT_ROLE_PRESS,    // the key when pressed (keyboard arrows, stick)
    INPUT_ROLE_REPEAT,   // the key when pressed, repeated while held (hat)
    INPUT_ROLE_START,    // held for combinations; the key when let go unless L or R joined it
    INPUT_ROLE_SELECT,   // held to silence the hotkeys; the key when let go unless L or R joined Start
    INPUT_ROLE_HOTKEY,   // with Start held joins it; the key when let go unless Start or Select is held
};

struct InputBinding {
    InputSource source;
    int code;
    InputRole role;
    int key;            // toolkit key (keycodes.h)
    const char* label;  // the pad control it stands for, for people
};

// The binding of one device input; null when the input means nothing.
const InputBinding* findInputBinding(InputSource source, int code);

// The keyboard stand-ins for the pad, one line each ("Space: A"), in table
// order, for documentation and help screens.
std::vector<std::string> keyboardMapLines();
