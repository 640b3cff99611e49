#include "toolkit/shared_skin.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <string>

#include "tests/support/capture_stdout.h"
#include "tests/support/draw_fixture.h"

namespace {

class SharedSkinTest : public DrawTest {
protected:
    void TearDown() override {
        uninit_shared_skin();
        free(gThemePath);
        gThemePath = nullptr;
        DrawTest::TearDown();
    }
};

TTF_Font** const sAllFonts[] = {&gNavFont,        &gNavFontIcon, &gListFontTxt,
                                &gListFontSubtxt, &gStatFont,    &gMenuFont,
                                &gPopupFontTitle, &gPopupFontTxt, &gPopupFontBtn};
KovaniSurface** const sAllImages[] = {&gIconVideo, &gIconFolder, &gBackground, &gIconBack,
                                      &gIconMenu,  &gIconA,      &gIconB,      &gBackgroundFloat};

}  // namespace

TEST_F(SharedSkinTest, LoadsFontsFromTheWorkingFolderAndImagesFromThemeOrDefault) {
    std::filesystem::copy_file(testFontPath(), dir() + "regular.ttf");
    const std::string theme = dir() + "theme/";
    writePng(theme + "skin/ic-video.png", 48, 48, SDL_Color{255, 0, 0, 255}, 4);
    writePng(dir() + "skin/bg.png", 64, 36, SDL_Color{0, 0, 255, 255}, 4);
    gThemePath = strdup(theme.c_str());

    CaptureStdout capture;
    init_shared_skin();
    capture.finish();

    for (TTF_Font** f : sAllFonts) EXPECT_NE(*f, nullptr);
    ASSERT_TRUE(gIconVideo);
    EXPECT_EQ(gIconVideo->getWidth(), 48);
    ASSERT_TRUE(gBackground);
    EXPECT_EQ(gBackground->getWidth(), 64);
    for (KovaniSurface** image : {&gIconFolder, &gIconBack, &gIconMenu, &gIconA, &gIconB,
                                  &gBackgroundFloat})
        EXPECT_EQ(*image, nullptr);

    uninit_shared_skin();
    for (TTF_Font** f : sAllFonts) EXPECT_EQ(*f, nullptr);
    for (KovaniSurface** image : sAllImages) EXPECT_EQ(*image, nullptr);
}

TEST_F(SharedSkinTest, MissingFilesLeaveNulls) {
    gThemePath = strdup("./");
    CaptureStdout capture;
    init_shared_skin();
    capture.finish();
    for (TTF_Font** f : sAllFonts) EXPECT_EQ(*f, nullptr);
    for (KovaniSurface** image : sAllImages) EXPECT_EQ(*image, nullptr);
    uninit_shared_skin();
}
