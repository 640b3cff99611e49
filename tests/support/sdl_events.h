#pragma once

#include <SDL2/SDL.h>
#include <gtest/gtest.h>

#include <initializer_list>

#include "toolkit/keycodes.h"

// Queues user events carrying `codes` at once, as keys that arrive while the
// loop is busy, and lets the handler (a list, menu or window) take them and
// what it posts in turn. Returns the last result that was not KEY_NONE.
template <class Handler>
int pressKeys(Handler& handler, std::initializer_list<int> codes) {
    for (int code : codes) {
        SDL_Event e = {};
        e.type = SDL_USEREVENT;
        e.user.code = code;
        EXPECT_EQ(SDL_PushEvent(&e), 1) << SDL_GetError();
    }
    int result = KEY_NONE;
    for (size_t i = 0; i < codes.size() + 7 && SDL_HasEvent(SDL_USEREVENT); i++) {
        const int r = handler.eventHandling();
        if (r != KEY_NONE) result = r;
    }
    EXPECT_FALSE(SDL_HasEvent(SDL_USEREVENT)) << "every user event was read";
    return result;
}

template <class Handler>
int pressKey(Handler& handler, int code) {
    return pressKeys(handler, {code});
}

// Whether a user event with `code` waits in SDL's queue (peeked, not taken).
inline bool queued(int code) {
    SDL_PumpEvents();
    SDL_Event events[64];
    const int n = SDL_PeepEvents(events, 64, SDL_PEEKEVENT, SDL_USEREVENT, SDL_USEREVENT);
    for (int i = 0; i < n; i++)
        if (events[i].user.code == code) return true;
    return false;
}

// Waits (bounded) until a user event with `code` is queued.
inline bool waitQueued(int code) {
    for (int i = 0; i < 500 && !queued(code); i++) SDL_Delay(10);
    return queued(code);
}
