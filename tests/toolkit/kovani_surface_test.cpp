#include "toolkit/kovani_surface.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"

namespace {

const SDL_Color sBlack = {0, 0, 0, 255};
const SDL_Color sRed = {255, 0, 0, 255};
const SDL_Color sGreen = {0, 255, 0, 255};
const SDL_Color sBlue = {0, 0, 255, 255};

using SurfacePtr = std::unique_ptr<KovaniSurface>;

class SurfaceTest : public DrawTest {};

}  // namespace

TEST_F(SurfaceTest, LoadPrefersTheThemeThenTheDefaultFolderAndMakesEveryFormatOpaque) {
    const std::string theme = dir() + "theme/";
    const SDL_Color orange = {250, 120, 10, 255};
    writePng(theme + "skin/both.png", 4, 4, sRed, 4);
    writePng(dir() + "skin/both.png", 4, 4, sGreen, 4);
    writePng(dir() + "skin/fallback.png", 4, 4, sBlue, 3);
    writePng(dir() + "skin/palette.png", 4, 4, orange, 1);
    const std::string absolute = dir() + "elsewhere/abs.png";
    writePng(absolute, 4, 4, sGreen, 4);
    writePng(theme + "elsewhere/abs.png", 4, 4, sRed, 4);

    struct Row { const char* themePath; const char* defaultPath; std::string name; SDL_Color color; } rows[] = {
        {theme.c_str(), "./", "skin/both.png", sRed},
        {theme.c_str(), "./", "skin/fallback.png", sBlue},
        {theme.c_str(), "./", "skin/palette.png", orange},
        {nullptr, "./", "skin/both.png", sGreen},
        {theme.c_str(), "./", absolute, sGreen},
        {theme.c_str(), "./", "skin/missing.png", sBlack},
        {theme.c_str(), nullptr, "skin/fallback.png", sBlack},
    };
    for (const Row& row : rows) {
        clear(0, 0, 0);
        CaptureStdout capture;
        SurfacePtr s(LoadKovaniSurface(row.themePath, row.defaultPath, row.name.c_str()));
        capture.finish();
        ASSERT_EQ(s != nullptr, !sameColor(row.color, sBlack)) << row.name;
        if (!s) continue;
        SDL_Rect at = {0, 0, 0, 0};
        s->render(nullptr, &at, true, nullptr);
        EXPECT_TRUE(sameColor(pixel(1, 1), row.color)) << row.name;
        EXPECT_TRUE(sameColor(pixel(5, 1), sBlack)) << row.name;
    }
}
