#pragma once

#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>
#include <gtest/gtest.h>

#include <string>

// A real 1280 x 720 screen on SDL's offscreen driver, opened through the
// toolkit's ScreenInit, with pixel read-back. Use as a fixture base.
class SdlScreenTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Colour of one pixel of the current frame (before it is presented).
    SDL_Color pixel(int x, int y);
    // Fills the whole frame with one opaque colour.
    void clear(Uint8 r, Uint8 g, Uint8 b);
    // Opens the test font at `size` points; closed in TearDown.
    TTF_Font* font(int size);

private:
    TTF_Font* mFonts[8] = {};
    int mFontCount = 0;
};

// Font file used by text tests (a Debian font package).
const char* testFontPath();
