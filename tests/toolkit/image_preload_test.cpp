#include "toolkit/image_preload.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"

namespace {

SDL_Color firstPixel(SDL_Surface* s) {
    SDL_Color c = {0, 0, 0, 0};
    SDL_GetRGBA(*static_cast<Uint32*>(s->pixels), s->format, &c.r, &c.g, &c.b, &c.a);
    return c;
}

}  // namespace

using ImagePreloadTest = SdlScreenTest;

// Each listed picture goes to the load that asks for it, decoded as a load of
// its own would decode it, whether or not the batch has reached it yet; a
// missing file is handed over as missing; a path not listed is left to the
// caller; what no one took is freed and named at the end, after which
// nothing is held.
TEST_F(ImagePreloadTest, EachLoadGetsItsOwnPictureAndTheRestIsFreedAtTheEnd) {
    const SDL_Color red = {255, 0, 0, 128}, green = {0, 255, 0, 255}, blue = {0, 0, 255, 255};
    writePng(dir() + "a.png", 8, 8, red, 4);
    writePng(dir() + "b.png", 8, 8, green, 3);
    writePng(dir() + "c.png", 8, 8, blue, 4);
    writePng(dir() + "unlisted.png", 8, 8, blue, 4);
    const struct {
        std::string path;
        bool listed, exists, opaque;
        SDL_Color color;
    } loads[] = {
        {dir() + "b.png", true, true, true, green},  // ahead of the batch's order
        {dir() + "a.png", true, true, false, red},
        {dir() + "missing.png", true, false, false, red},
        {dir() + "unlisted.png", false, true, false, blue},
    };
    CaptureStdout log;
    preloadImages({dir() + "a.png", dir() + "b.png", dir() + "missing.png", dir() + "c.png"});
    for (const auto& load : loads) {
        DecodedImage image = {nullptr, false};
        ASSERT_EQ(takePreloadedImage(load.path, &image), load.listed) << load.path;
        if (!load.listed) continue;
        ASSERT_EQ(image.pixels != nullptr, load.exists) << load.path;
        if (!image.pixels) continue;
        EXPECT_TRUE(sameColor(firstPixel(image.pixels), load.color)) << load.path;
        EXPECT_EQ(image.opaque, load.opaque) << load.path;
        const DecodedImage own = decodeImage(load.path);
        EXPECT_EQ(own.opaque, image.opaque);
        EXPECT_TRUE(sameColor(firstPixel(own.pixels), firstPixel(image.pixels)));
        SDL_FreeSurface(own.pixels);
        SDL_FreeSurface(image.pixels);
    }
    endPreloading();
    DecodedImage image = {nullptr, false};
    EXPECT_FALSE(takePreloadedImage(dir() + "c.png", &image)) << "the batch is over";
    const std::string text = log.finish();
    EXPECT_NE(text.find("image preload: " + dir() + "c.png not used"), std::string::npos) << text;
    EXPECT_NE(text.find("image preload: " + dir() + "unlisted.png not in the batch"), std::string::npos) << text;
}
