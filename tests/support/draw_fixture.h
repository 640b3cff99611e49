#pragma once

#include <SDL2/SDL.h>

#include <string>

#include "tests/support/sdl_screen.h"

// A real screen whose working folder is a fresh temporary one, so "./" names
// a folder the test fills. The folder is removed afterwards.
class DrawTest : public SdlScreenTest {
protected:
    void SetUp() override;
    void TearDown() override;

    // The temporary working folder, ending in '/'.
    const std::string& dir() const { return mDir; }

    // Smallest rectangle holding every pixel of `area` that differs from
    // `background`; w = 0 when there is none.
    SDL_Rect inkBounds(SDL_Color background, SDL_Rect area = {0, 0, 1280, 720});
    // Smallest rectangle holding every pixel of `area` of exactly `color`.
    SDL_Rect colorBounds(SDL_Color color, SDL_Rect area = {0, 0, 1280, 720});

private:
    std::string mDir;
    std::string mOldCwd;
};

// Writes a w x h PNG of one colour; `bytesPerPixel` 1 (palette), 3 or 4
// chooses how it is stored. Creates missing folders.
void writePng(const std::string& path, int w, int h, SDL_Color color, int bytesPerPixel);

bool sameColor(SDL_Color a, SDL_Color b);
