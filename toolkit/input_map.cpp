#include "input_map.h"

#include <SDL2/SDL.h>

#include "keycodes.h"

namespace {

// The whole translation from the pad and the keyboard into toolkit keys.
// Joystick buttons: 0 B, 1 A, 2 Y, 3 X, 4 L, 5 R, 6 Select, 7 Start, 8 Menu.
const InputBinding sBindings[] = {
    {INPUT_JOY_BUTTON, 0, INPUT_ROLE_RELEASE, KEY_B, "B"},
    {INPUT_JOY_BUTTON, 1, INPUT_ROLE_RELEASE, KEY_A, "A"},
    {INPUT_JOY_BUTTON, 2, INPUT_ROLE_RELEASE, KEY_Y, "Y"},
    {INPUT_JOY_BUTTON, 3, INPUT_ROLE_RELEASE, KEY_X, "X"},
    {INPUT_JOY_BUTTON, 4, INPUT_ROLE_HOTKEY, KEY_HOTKEY1, "L"},
    {INPUT_JOY_BUTTON, 5, INPUT_ROLE_HOTKEY, KEY_HOTKEY2, "R"},
    {INPUT_JOY_BUTTON, 6, INPUT_ROLE_SELECT, KEY_SELECT_COIN, "Select"},
    {INPUT_JOY_BUTTON, 7, INPUT_ROLE_START, KEY_START, "Start"},
    {INPUT_JOY_BUTTON, 8, INPUT_ROLE_RELEASE, KEY_MENU_KEY, "Menu"},

    {INPUT_JOY_HAT, SDL_HAT_UP, INPUT_ROLE_REPEAT, KEY_UP, "Up"},
    {INPUT_JOY_HAT, SDL_HAT_RIGHT, INPUT_ROLE_REPEAT, KEY_RIGHT, "Right"},
    {INPUT_JOY_HAT, SDL_HAT_DOWN, INPUT_ROLE_REPEAT, KEY_DOWN, "Down"},
    {INPUT_JOY_HAT, SDL_HAT_LEFT, INPUT_ROLE_REPEAT, KEY_LEFT, "Left"},

    // Both sticks steer; the analogue triggers (axes 2 and 5) are hotkeys.
    {INPUT_JOY_AXIS_PLUS, 0, INPUT_ROLE_PRESS, KEY_RIGHT, "Right"},
    {INPUT_JOY_AXIS_MINUS, 0, INPUT_ROLE_PRESS, KEY_LEFT, "Left"},
    {INPUT_JOY_AXIS_PLUS, 1, INPUT_ROLE_PRESS, KEY_DOWN, "Down"},
    {INPUT_JOY_AXIS_MINUS, 1, INPUT_ROLE_PRESS, KEY_UP, "Up"},
    {INPUT_JOY_AXIS_PLUS, 2, INPUT_ROLE_PRESS, KEY_HOTKEY3, "Left trigger"},
    {INPUT_JOY_AXIS_PLUS, 3, INPUT_ROLE_PRESS, KEY_RIGHT, "Right"},
    {INPUT_JOY_AXIS_MINUS, 3, INPUT_ROLE_PRESS, KEY_LEFT, "Left"},
    {INPUT_JOY_AXIS_PLUS, 4, INPUT_ROLE_PRESS, KEY_DOWN, "Down"},
    {INPUT_JOY_AXIS_MINUS, 4, INPUT_ROLE_PRESS, KEY_UP, "Up"},
    {INPUT_JOY_AXIS_PLUS, 5, INPUT_ROLE_PRESS, KEY_HOTKEY4, "Right trigger"},

    // Arrows act on press and never repeat; everything else as on the pad.
    {INPUT_KEYBOARD, SDLK_UP, INPUT_ROLE_PRESS, KEY_UP, "Up"},
    {INPUT_KEYBOARD, SDLK_DOWN, INPUT_ROLE_PRESS, KEY_DOWN, "Down"},
    {INPUT_KEYBOARD, SDLK_LEFT, INPUT_ROLE_PRESS, KEY_LEFT, "Left"},
    {INPUT_KEYBOARD, SDLK_RIGHT, INPUT_ROLE_PRESS, KEY_RIGHT, "Right"},
    {INPUT_KEYBOARD, SDLK_SPACE, INPUT_ROLE_RELEASE, KEY_A, "A"},
    {INPUT_KEYBOARD, SDLK_LCTRL, INPUT_ROLE_RELEASE, KEY_B, "B"},
    {INPUT_KEYBOARD, SDLK_LSHIFT, INPUT_ROLE_RELEASE, KEY_X, "X"},
    {INPUT_KEYBOARD, SDLK_LALT, INPUT_ROLE_RELEASE, KEY_Y, "Y"},
    {INPUT_KEYBOARD, SDLK_RCTRL, INPUT_ROLE_SELECT, KEY_SELECT_COIN, "Select"},
    {INPUT_KEYBOARD, SDLK_RETURN, INPUT_ROLE_START, KEY_START, "Start"},
    {INPUT_KEYBOARD, SDLK_TAB, INPUT_ROLE_HOTKEY, KEY_HOTKEY1, "L"},
    {INPUT_KEYBOARD, SDLK_BACKSPACE, INPUT_ROLE_HOTKEY, KEY_HOTKEY2, "R"},
    {INPUT_KEYBOARD, SDLK_ESCAPE, INPUT_ROLE_RELEASE, KEY_MENU_KEY, "Menu"},
};

}  // namespace

const InputBinding* findInputBinding(InputSource source, int code) {
    for (const InputBinding& binding : sBindings) {
        if (binding.source == source && binding.code == code) return &binding;
    }
    return nullptr;
}

std::vector<std::string> keyboardMapLines() {
    std::vector<std::string> lines;
    for (const InputBinding& binding : sBindings) {
        if (binding.source != INPUT_KEYBOARD) continue;
        lines.push_back(std::string(SDL_GetKeyName(binding.code)) + ": " + binding.label);
    }
    return lines;
}
