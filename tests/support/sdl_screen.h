#pragma once

#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/reference_image.h"

// A real 1280 x 720 screen on SDL's offscreen driver, opened through the
// toolkit's ScreenInit, with pixel read-back, in a fresh temporary working
// folder (so "./" names a folder the test fills). Use as a fixture base.
class SdlScreenTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Colour of one pixel of the current frame (before it is presented).
    SDL_Color pixel(int x, int y);
    // The ARGB pixels of `area` of the current frame, row by row.
    std::vector<Uint32> pixels(SDL_Rect area);
    Picture shot(SDL_Rect area = {0, 0, 1280, 720});
    void clear(Uint8 r, Uint8 g, Uint8 b);
    // The test font at `size` points; closed in TearDown.
    TTF_Font* font(int size);
    // The temporary working folder, ending in '/'.
    const std::string& dir() const { return mDir; }

private:
    std::vector<TTF_Font*> mFonts;
    std::string mDir;
    std::string mOldCwd;
};

// Writes a w x h PNG of one colour, stored with `bytesPerPixel` 1 (palette),
// 3 or 4. Creates missing folders.
void writePng(const std::string& path, int w, int h, SDL_Color color, int bytesPerPixel);

bool sameColor(SDL_Color a, SDL_Color b);
