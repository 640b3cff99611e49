#pragma once

#include <SDL2/SDL.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

// A picture of the screen as read back: ARGB8888 pixels, row by row.
struct Picture {
    int w = 0, h = 0;
    std::vector<Uint32> argb;
};

// Compares `picture` with the reference "tests/reference/<name>.png". A pixel
// differs when one channel (alpha included) is more than a few steps off;
// a few differing pixels pass, as a font or blend rounding may move them,
// but no text, icon or edge can change that little. On a mismatch the
// picture taken ("<name>.png") and one that marks in red where it differs
// ("<name>_err.png") are written to the screens folder of the test build.
//
// With KOVANI_WRITE_REFERENCES=1 in the environment (./kovani references)
// the picture becomes the reference instead: look at it before committing.
::testing::AssertionResult matchesReference(const std::string& name, const Picture& picture);
