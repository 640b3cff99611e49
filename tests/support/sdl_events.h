#pragma once

#include <SDL2/SDL.h>
#include <gtest/gtest.h>

#include "toolkit/keycodes.h"

// Pushes a user event carrying `code` (and `data` in data1) and lets the
// handler (a list, menu or window) take it, plus whatever the handling posts
// in turn, off the queue. SDL may answer one poll empty after a round of
// events, so reading goes on while user events are queued. Returns the last
// result that was not KEY_NONE.
template <class Handler>
int pressKey(Handler& handler, int code, void* data = nullptr) {
    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = code;
    e.user.data1 = data;
    EXPECT_EQ(SDL_PushEvent(&e), 1) << SDL_GetError();
    int result = KEY_NONE;
    for (int i = 0; i < 8 && SDL_HasEvent(SDL_USEREVENT); i++) {
        const int r = handler.eventHandling();
        if (r != KEY_NONE) result = r;
    }
    EXPECT_FALSE(SDL_HasEvent(SDL_USEREVENT)) << "every user event was read";
    return result;
}
