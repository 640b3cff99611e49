#include "toolkit/shared_skin.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <map>
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
    const std::string log = capture.finish();

    struct Row {
        TTF_Font* font;
        int size;
    } fonts[] = {{gNavFont, 32},        {gNavFontIcon, 24},    {gListFontTxt, 36},
                 {gListFontSubtxt, 24}, {gStatFont, 24},       {gMenuFont, 36},
                 {gPopupFontTitle, 44}, {gPopupFontTxt, 36},   {gPopupFontBtn, 36}};
    std::map<int, TTF_Font*> reference;
    for (const Row& row : fonts) {
        ASSERT_TRUE(row.font);
        if (!reference[row.size]) reference[row.size] = font(row.size);
        EXPECT_EQ(TTF_FontHeight(row.font), TTF_FontHeight(reference[row.size])) << row.size;
    }
    size_t opens = 0;
    for (size_t at = log.find("open ./regular.ttf\n"); at != std::string::npos;
         at = log.find("open ./regular.ttf\n", at + 1))
        opens++;
    EXPECT_EQ(opens, 9u);

    ASSERT_TRUE(gIconVideo);
    EXPECT_EQ(gIconVideo->getWidth(), 48);
    ASSERT_TRUE(gBackground);
    EXPECT_EQ(gBackground->getWidth(), 64);
    EXPECT_NE(log.find(theme + "/skin/bg.png open fail, use .//skin/bg.png\n"), std::string::npos)
        << log;
    EXPECT_EQ(log.find("open background fail"), std::string::npos);
    for (KovaniSurface** image : {&gIconFolder, &gIconBack, &gIconMenu, &gIconA, &gIconB,
                                  &gBackgroundFloat})
        EXPECT_EQ(*image, nullptr);

    EXPECT_EQ(gHighlightColor.g, 0xFF);
    EXPECT_EQ(gHighlightColor.a, 0x00);
    EXPECT_EQ(gPopupColorTitle.r, 0x36);
    EXPECT_EQ(gListColorTxt.a, 0xFF);

    uninit_shared_skin();
    for (TTF_Font** f : sAllFonts) EXPECT_EQ(*f, nullptr);
    for (KovaniSurface** image : sAllImages) EXPECT_EQ(*image, nullptr);
}

TEST_F(SharedSkinTest, MissingFilesLeaveNullsAndReportTheBackground) {
    gThemePath = strdup("./");
    CaptureStdout capture;
    init_shared_skin();
    const std::string log = capture.finish();
    for (TTF_Font** f : sAllFonts) EXPECT_EQ(*f, nullptr);
    for (KovaniSurface** image : sAllImages) EXPECT_EQ(*image, nullptr);
    EXPECT_NE(log.find("open background fail: "), std::string::npos) << log;
    uninit_shared_skin();
}
