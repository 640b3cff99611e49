#include "toolkit/kovani_surface.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"

using SurfaceTest = SdlScreenTest;

// The theme's image first, then the default folder's; every format draws opaque.
TEST_F(SurfaceTest, LoadPrefersTheThemeThenTheDefaultFolderAndMakesEveryFormatOpaque) {
    const SDL_Color black = {0, 0, 0, 255}, red = {255, 0, 0, 255}, green = {0, 255, 0, 255},
                    blue = {0, 0, 255, 255}, orange = {250, 120, 10, 255};
    const std::string theme = dir() + "theme/", absolute = dir() + "elsewhere/abs.png";
    writePng(theme + "skin/both.png", 4, 4, red, 4);
    writePng(dir() + "skin/both.png", 4, 4, green, 4);
    writePng(dir() + "skin/fallback.png", 4, 4, blue, 3);
    writePng(dir() + "skin/palette.png", 4, 4, orange, 1);
    writePng(absolute, 4, 4, green, 4);
    writePng(theme + "elsewhere/abs.png", 4, 4, red, 4);
    struct Row { const char* themePath; const char* defaultPath; std::string name; SDL_Color color; } rows[] = {
        {theme.c_str(), "./", "skin/both.png", red},      {theme.c_str(), "./", "skin/fallback.png", blue},
        {theme.c_str(), "./", "skin/palette.png", orange}, {nullptr, "./", "skin/both.png", green},
        {theme.c_str(), "./", absolute, green},           {theme.c_str(), "./", "skin/missing.png", black},
        {theme.c_str(), nullptr, "skin/fallback.png", black},
    };
    for (const Row& row : rows) {
        clear(0, 0, 0);
        CaptureStdout quiet;
        std::unique_ptr<KovaniSurface> s(LoadKovaniSurface(row.themePath, row.defaultPath, row.name.c_str()));
        ASSERT_EQ(s != nullptr, !sameColor(row.color, black)) << row.name;
        if (!s) continue;
        SDL_Rect at = {0, 0, 0, 0};
        s->render(nullptr, &at, true, nullptr);
        EXPECT_TRUE(sameColor(pixel(1, 1), row.color)) << row.name;
        EXPECT_TRUE(sameColor(pixel(5, 1), black)) << row.name;
    }
}
