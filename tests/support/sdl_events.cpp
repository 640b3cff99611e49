#include "sdl_events.h"

#include <SDL2/SDL.h>
#include <gtest/gtest.h>

#include "toolkit/keycodes.h"

int pushAndRead(int code, const std::function<int()>& read, void* data) {
    SDL_Event e = {};
    e.type = SDL_USEREVENT;
    e.user.code = code;
    e.user.data1 = data;
    EXPECT_EQ(SDL_PushEvent(&e), 1) << SDL_GetError();
    int result = KEY_NONE;
    for (int i = 0; i < 8 && SDL_HasEvent(SDL_USEREVENT); i++) {
        const int r = read();
        if (r != KEY_NONE) result = r;
    }
    EXPECT_FALSE(SDL_HasEvent(SDL_USEREVENT)) << "every user event was read";
    return result;
}
