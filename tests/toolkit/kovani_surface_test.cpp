#include "toolkit/kovani_surface.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>

#include <memory>
#include <string>

#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"
#include "tests/support/draw_fixture.h"
#include "toolkit/screen.h"

namespace {

const SDL_Color sBlack = {0, 0, 0, 255};
const SDL_Color sRed = {255, 0, 0, 255};
const SDL_Color sGreen = {0, 255, 0, 255};
const SDL_Color sBlue = {0, 0, 255, 255};

using SurfacePtr = std::unique_ptr<KovaniSurface>;

class SurfaceTest : public DrawTest {};

}  // namespace

TEST_F(SurfaceTest, FillRectPaintsOrTintsOnlyItsRectangleAndRestoresTheRenderer) {
    clear(255, 255, 255);
    SDL_SetRenderDrawColor(gRenderer, 1, 2, 3, 4);
    SDL_SetRenderDrawBlendMode(gRenderer, SDL_BLENDMODE_NONE);

    SDL_Rect opaque = {10, 10, 20, 20};
    EXPECT_EQ(FillRect(nullptr, &opaque, 255, 0, 0, 255), 0);
    SDL_Rect tint = {100, 10, 20, 20};
    EXPECT_EQ(FillRect(nullptr, &tint, 0, 0, 255, 128), 0);

    const SDL_Rect red = colorBounds(sRed);
    EXPECT_TRUE(SDL_RectEquals(&red, &opaque)) << "only its rectangle";
    const SDL_Color tinted = pixel(110, 20);
    EXPECT_TRUE(abs(tinted.r - 127) <= 2 && tinted.b == 255) << "half-transparent fill tints";

    Uint8 r, g, b, a;
    SDL_BlendMode mode;
    SDL_GetRenderDrawColor(gRenderer, &r, &g, &b, &a);
    SDL_GetRenderDrawBlendMode(gRenderer, &mode);
    EXPECT_TRUE(r == 1 && g == 2 && b == 3 && a == 4 && mode == SDL_BLENDMODE_NONE) << "renderer restored";
}

TEST_F(SurfaceTest, FillRectDrawsIntoATargetSurfaceAndRefusesOneThatCannotBeDrawnOn) {
    clear(0, 0, 0);
    SDL2KovaniSurface canvas(SDL_CreateTexture(gRenderer, SDL_PIXELFORMAT_ARGB8888,
                                               SDL_TEXTUREACCESS_TARGET, 40, 40),
                             nullptr);
    SDL_Rect whole = {0, 0, 40, 40};
    ASSERT_EQ(FillRect(&canvas, &whole, 0, 0, 255, 255), 0);
    EXPECT_EQ(SDL_GetRenderTarget(gRenderer), nullptr);

    SDL_Rect corner = {0, 0, 10, 10};
    ASSERT_EQ(FillRect(&canvas, &corner, 0, 255, 0, 255), 0);
    EXPECT_TRUE(sameColor(pixel(5, 5), sBlack)) << "the screen itself is untouched";

    SDL_Rect at = {200, 200, 0, 0};
    ASSERT_EQ(canvas.render(nullptr, &at, true, nullptr), 0);
    EXPECT_TRUE(sameColor(pixel(205, 205), sGreen));
    EXPECT_TRUE(sameColor(pixel(230, 230), sBlue));

    // A texture made from an image cannot be a render target: painting the
    // screen instead would be wrong.
    SDL_Surface* img = SDL_CreateRGBSurfaceWithFormat(0, 8, 8, 32, SDL_PIXELFORMAT_ARGB8888);
    SDL2KovaniSurface still(SDL_CreateTextureFromSurface(gRenderer, img), img);
    CaptureStdout capture;
    EXPECT_LT(FillRect(&still, nullptr, 255, 0, 0, 255), 0);
    EXPECT_TRUE(sameColor(pixel(5, 5), sBlack));
}

TEST_F(SurfaceTest, LoadPrefersTheThemeThenFallsBackToTheDefaultFolder) {
    const std::string theme = dir() + "theme/";
    writePng(theme + "skin/both.png", 4, 4, sRed, 4);
    writePng(dir() + "skin/both.png", 4, 4, sGreen, 4);
    writePng(dir() + "skin/fallback.png", 4, 4, sBlue, 4);
    writePng(dir() + "elsewhere/abs.png", 4, 4, sGreen, 4);
    writePng(theme + "elsewhere/abs.png", 4, 4, sRed, 4);
    const std::string absolute = dir() + "elsewhere/abs.png";

    struct Row { const char* themePath; std::string name; bool loads; SDL_Color color; } rows[] = {
        {theme.c_str(), "skin/both.png", true, sRed},
        {theme.c_str(), "skin/fallback.png", true, sBlue},
        {nullptr, "skin/both.png", true, sGreen},
        {theme.c_str(), "skin/missing.png", false, sBlack},
        {theme.c_str(), absolute, true, sGreen},
    };
    for (const Row& row : rows) {
        clear(0, 0, 0);
        CaptureStdout capture;
        SurfacePtr s(LoadKovaniSurface(row.themePath, "./", row.name.c_str()));
        ASSERT_EQ(s != nullptr, row.loads) << row.name;
        if (!s) continue;
        SDL_Rect at = {0, 0, 4, 4};
        s->render(nullptr, &at, false, nullptr);
        EXPECT_TRUE(sameColor(pixel(1, 1), row.color)) << row.name;
    }
    EXPECT_EQ(LoadKovaniSurface(nullptr, "./", "skin/missing.png"), nullptr);
    EXPECT_EQ(LoadKovaniSurface(theme.c_str(), nullptr, "skin/fallback.png"), nullptr);
}

TEST_F(SurfaceTest, PaletteAndTwentyFourBitImagesBecomeOpaqueThirtyTwoBitSurfaces) {
    const SDL_Color orange = {250, 120, 10, 255};
    for (int bytesPerPixel : {1, 3}) {
        const std::string name = "img" + std::to_string(bytesPerPixel) + ".png";
        writePng(dir() + name, 6, 5, orange, bytesPerPixel);
        clear(0, 0, 255);
        CaptureStdout capture;
        SurfacePtr s(LoadKovaniSurface("./", "./", name.c_str()));
        ASSERT_TRUE(s) << name;
        SDL_Rect at = {50, 50, 0, 0};
        s->render(nullptr, &at, true, nullptr);
        EXPECT_TRUE(sameColor(pixel(52, 52), orange)) << name;
        EXPECT_TRUE(sameColor(pixel(56, 52), SDL_Color{0, 0, 255, 255})) << name;
    }
}

TEST_F(SurfaceTest, RenderWithKeepOwnSizeUsesOnlyThePositionOfTheDestination) {
    writePng(dir() + "g.png", 30, 20, sGreen, 4);
    SurfacePtr s(LoadKovaniSurface(nullptr, "./", "g.png"));
    ASSERT_TRUE(s);

    clear(0, 0, 0);
    SDL_Rect dst = {100, 100, 10, 10};
    EXPECT_EQ(s->render(nullptr, &dst, true, nullptr), 0);
    SDL_Rect drawn = inkBounds(sBlack);
    const SDL_Rect own = {100, 100, 30, 20};
    EXPECT_TRUE(SDL_RectEquals(&drawn, &own));
    EXPECT_EQ(dst.w, 10) << "the caller's rectangle is not changed";

    clear(0, 0, 0);
    EXPECT_EQ(s->render(nullptr, &dst, false, nullptr), 0);
    drawn = inkBounds(sBlack);
    EXPECT_TRUE(SDL_RectEquals(&drawn, &dst)) << "stretched to the destination";

    clear(0, 0, 0);
    EXPECT_EQ(s->render(nullptr, nullptr, true, nullptr), 0);
    EXPECT_TRUE(sameColor(pixel(1279, 719), sGreen)) << "no destination fills the target";
}

TEST_F(SurfaceTest, RotatedScreenDrawsIntoTheCanvasAndDumpsItWhole) {
    ScreenUninit();
    ASSERT_NE(ScreenInit(1280, 720, 32, 1), 0);
    EXPECT_EQ(ScreenWidth(), 720);
    EXPECT_EQ(ScreenHeight(), 1280);
    ASSERT_TRUE(ScreenTargetTexture());

    writePng(dir() + "r.png", 8, 8, sRed, 4);
    SurfacePtr s(LoadKovaniSurface(nullptr, "./", "r.png"));
    ASSERT_TRUE(s);
    SDL_Rect dst = {1000, 600, 0, 0};
    const std::string dump = dir() + "dump.bmp";
    EXPECT_EQ(s->render(nullptr, &dst, true, dump.c_str()), 0);
    EXPECT_EQ(SDL_GetRenderTarget(gRenderer), nullptr);

    SDL_Surface* shot = SDL_LoadBMP(dump.c_str());
    ASSERT_TRUE(shot);
    EXPECT_EQ(shot->w, 1280);
    EXPECT_EQ(shot->h, 720);
    Uint8 r, g, b;
    Uint8* row = static_cast<Uint8*>(shot->pixels) + 604 * shot->pitch;
    Uint32 value = 0;
    memcpy(&value, row + 1004 * shot->format->BytesPerPixel, shot->format->BytesPerPixel);
    SDL_GetRGB(value, shot->format, &r, &g, &b);
    EXPECT_EQ(r, 255);
    EXPECT_EQ(g, 0);
    SDL_FreeSurface(shot);

    s.reset();
    ScreenUninit();
    ASSERT_NE(ScreenInit(1280, 720, 32, 0), 0);
    EXPECT_EQ(ScreenTargetTexture(), nullptr);
}
