#pragma once

#include <SDL2/SDL.h>

// Windows never read SDL events themselves: wait_event takes at most one
// event from SDL's queue (never blocking) and turns it into one toolkit key
// or event code (keycodes.h), 0 when there is none or it means nothing. When
// `out` is given, the event is copied there before it is interpreted.
int wait_event(SDL_Event* out);

// SDL_QUIT (SIGINT, SIGTERM, a closed desktop window) is remembered here so
// that the main loop ends and the normal shutdown runs.
bool quitRequested();
void requestQuit();
void clearQuitRequest();

// (Re)opens every joystick; the last one opened stays in gJoystick.
void initJoyStick();
// Closes gJoystick (shutdown).
void closeJoyStick();
extern SDL_Joystick* gJoystick;  // owned; null when none is open

// The confirm/back exchange of the device's settings: with the shared slot
// MONITOR_B_CONFIRM set, B confirms and A goes back.
bool isConfirmKey(int key);
bool isBackKey(int key);
