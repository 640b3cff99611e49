#include "toolkit/text.h"

#include <gtest/gtest.h>
#include <math.h>

#include <string>

#include "tests/support/draw_fixture.h"
#include "toolkit/screen.h"
#include "toolkit/utf8.h"

namespace {

const SDL_Color sBlack = {0, 0, 0, 255};
const SDL_Color sWhite = {255, 255, 255, 255};

class TextTest : public DrawTest {};

}  // namespace

TEST_F(TextTest, AlignmentPlacesTheTextInItsBoxAndLetsItOverflow) {
    TTF_Font* f = font(24);
    ASSERT_TRUE(f);
    const char* text = "Kovani player";
    clear(0, 0, 0);
    const int tw = DrawString(f, SDL_Rect{100, 100, 0, 0}, text, sWhite, ALIGN_TOP_LEFT);
    ASSERT_GT(tw, 100);
    const SDL_Rect ref = inkBounds(sBlack);
    ASSERT_GT(ref.w, 0);
    const int inkX = ref.x - 100, inkY = ref.y - 100;
    const int th = getCachedSurface(f, text, sWhite, false)->getHeight();

    const SDL_Rect box = {300, 200, 400, 100};
    const SDL_Rect narrow = {300, 200, 40, 10};
    struct Row { int align; SDL_Rect box; int x, y; } rows[] = {
        {ALIGN_CENTER, box, 300 + (400 - tw) / 2, 200 + (100 - th) / 2},
        {ALIGN_MIDDLE_RIGHT, box, 700 - tw, 200 + (100 - th) / 2},
        {ALIGN_CENTER, narrow, 300 - (tw - 40) / 2, 200 - (th - 10) / 2},
    };
    for (const Row& row : rows) {
        clear(0, 0, 0);
        EXPECT_EQ(DrawString(f, row.box, text, sWhite, row.align), tw);
        SDL_Rect ink = inkBounds(sBlack);
        EXPECT_EQ(ink.x, row.x + inkX) << "align " << row.align << " box w " << row.box.w;
        EXPECT_EQ(ink.y, row.y + inkY) << "align " << row.align << " box w " << row.box.w;
        EXPECT_EQ(ink.w, ref.w) << "never clipped";
    }
}

TEST_F(TextTest, ShadowLiesOneRightTwoDownAndSkipTextLeavesOnlyIt) {
    TTF_Font* f = font(24);
    const char* text = "Shadow";
    const SDL_Rect box = {100, 100, 300, 40};
    clear(0, 0, 0);
    const int tw = DrawString(f, box, text, sWhite, ALIGN_MIDDLE_LEFT);
    const SDL_Rect ref = inkBounds(sBlack);

    clear(0, 0, 0);
    EXPECT_EQ(DrawString(f, box, text, sWhite, ALIGN_MIDDLE_LEFT, true, true), tw);
    const SDL_Rect shadow = inkBounds(sBlack);
    const SDL_Rect moved = {ref.x + 1, ref.y + 2, ref.w, ref.h};
    EXPECT_TRUE(SDL_RectEquals(&shadow, &moved));

    clear(0, 0, 0);
    EXPECT_EQ(DrawString(f, box, text, sWhite, ALIGN_MIDDLE_LEFT, true, false), tw);
    const SDL_Rect both = inkBounds(sBlack);
    const SDL_Rect union_ = {ref.x, ref.y, ref.w + 1, ref.h + 2};
    EXPECT_TRUE(SDL_RectEquals(&both, &union_));

    clear(0, 0, 0);
    EXPECT_EQ(DrawString(f, box, text, sWhite, ALIGN_MIDDLE_LEFT, false, true), tw);
    EXPECT_EQ(inkBounds(sBlack).w, 0) << "nothing drawn, width still returned";
}

TEST_F(TextTest, ColourWithAlphaZeroStillDrawsInThatColour) {
    TTF_Font* f = font(48);
    const SDL_Color highlight = {0x36, 0xFF, 0xA0, 0x00};
    clear(0, 0, 0);
    ASSERT_GT(DrawString(f, SDL_Rect{100, 100, 0, 0}, "HIH", highlight, ALIGN_TOP_LEFT), 0);
    const SDL_Rect ink = inkBounds(sBlack);
    ASSERT_GT(ink.w, 0) << "alpha 0 must not mean invisible";
    bool exact = false;
    for (int y = ink.y; y < ink.y + ink.h && !exact; y += 2)
        for (int x = ink.x; x < ink.x + ink.w && !exact; x++) {
            SDL_Color c = pixel(x, y);
            exact = c.r == 0x36 && c.g == 0xFF && c.b == 0xA0;
        }
    EXPECT_TRUE(exact) << "fully covered pixels carry the colour itself";

    const SDL_Color opaque = {0x36, 0xFF, 0xA0, 0xFF};
    EXPECT_NE(getCachedSurface(f, "HIH", highlight, false), getCachedSurface(f, "HIH", opaque, false))
        << "the key keeps the colour's own alpha";
}

TEST_F(TextTest, NothingToRenderDrawsNothingAndReturnsZero) {
    TTF_Font* f = font(24);
    clear(0, 0, 0);
    const SDL_Rect box = {0, 0, 200, 50};
    EXPECT_EQ(DrawString(nullptr, box, "text", sWhite, ALIGN_CENTER), 0);
    EXPECT_EQ(DrawString(f, box, "", sWhite, ALIGN_CENTER), 0);
    EXPECT_EQ(DrawString(f, box, nullptr, sWhite, ALIGN_CENTER), 0);
    EXPECT_EQ(inkBounds(sBlack).w, 0);
}

TEST_F(TextTest, ReopeningTheScreenDropsTextRenderedForTheOldRenderer) {
    TTF_Font* f = font(24);
    ASSERT_TRUE(getCachedSurface(f, "again", sWhite, false));
    ScreenUninit();
    ASSERT_NE(ScreenInit(1280, 720, 32, 0), 0);

    clear(0, 0, 0);
    EXPECT_GT(DrawString(f, SDL_Rect{10, 10, 0, 0}, "again", sWhite, ALIGN_TOP_LEFT), 0);
    EXPECT_GT(inkBounds(sBlack).w, 0);
}

TEST_F(TextTest, TruncateLenCountsCharactersUntilTheColumnIsFull) {
    TTF_Font* f = font(24);
    const std::string longLabel(60, 'x');
    for (int width : {20, 0, -50})
        for (const char* text : {"abc", longLabel.c_str(), ""})
            EXPECT_EQ(getTruncateLen(f, text, width, 0), 0) << width << " " << text;
    EXPECT_EQ(getTruncateLen(f, "ab", 1000, 0), 0);
    EXPECT_EQ(getTruncateLen(nullptr, longLabel.c_str(), 300, 0), 0);

    const int kept = getTruncateLen(f, longLabel.c_str(), 300, 0);
    ASSERT_GT(kept, 0);
    int w = 0;
    TTF_SizeUTF8(f, longLabel.substr(0, kept).c_str(), &w, nullptr);
    EXPECT_LT(w, 300) << "what is kept fits the column";
    EXPECT_EQ(getTruncateLen(f, longLabel.substr(0, kept + 1).c_str(), 300, 0), kept);
    EXPECT_EQ(getTruncateLen(f, longLabel.substr(0, kept).c_str(), 300, 0), 0)
        << "a text whose last character reaches the limit still fits";
}

TEST_F(TextTest, TruncateLenCutsWideAndBrokenTextOnCodePoints) {
    TTF_Font* f = font(24);
    const std::string cjk =
        "\xe4\xb8\xad\xe6\x96\x87\xe5\xad\x97\xe5\xb9\x95\xe6\xb5\x8b\xe8\xaf\x95"
        "\xe4\xb8\xad\xe6\x96\x87\xe5\xad\x97\xe5\xb9\x95\xe6\xb5\x8b\xe8\xaf\x95";
    const std::string broken = "\xff\xfe\xe4\xb8 abc \xc0\xaf\xed\xa0\x80 defgh ijkl \xe4";
    for (const std::string& text : {cjk, broken}) {
        const int n = getTruncateLen(f, text.c_str(), 120, 0);
        EXPECT_GT(n, 0);
        EXPECT_LT(n, utf8Length(text.c_str()));
        const std::string kept = utf8Substr(text.c_str(), 0, n);
        EXPECT_EQ(utf8Length(kept.c_str()), n);
        EXPECT_EQ(getTruncateLen(f, text.c_str(), 100000, 0), 0);
    }
}
