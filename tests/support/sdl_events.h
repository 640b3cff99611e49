#pragma once

#include <SDL2/SDL.h>
#include <gtest/gtest.h>

#include <initializer_list>

#include "toolkit/keycodes.h"

// Queues user events carrying `codes` all at once, as keys that arrive
// while the loop is busy, and lets the handler (a list, menu or window) take
// them, plus whatever the handling posts in turn, off the queue. SDL may
// answer one poll empty after a round of events, so reading goes on while
// user events are queued. Returns the last result that was not KEY_NONE.
template <class Handler>
int pressKeys(Handler& handler, std::initializer_list<int> codes, void* data = nullptr) {
    for (int code : codes) {
        SDL_Event e = {};
        e.type = SDL_USEREVENT;
        e.user.code = code;
        e.user.data1 = data;
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

// One user event carrying `code` (and `data` in data1), as pressKeys.
template <class Handler>
int pressKey(Handler& handler, int code, void* data = nullptr) {
    return pressKeys(handler, {code}, data);
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

// Waits (bounded) until a user event with `code` is queued, such as news
// another thread posts.
inline bool waitQueued(int code) {
    for (int i = 0; i < 500 && !queued(code); i++) SDL_Delay(10);
    return queued(code);
}
