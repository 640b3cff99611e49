#include "toolkit/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"
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
        const SDL_Rect ink = inkBounds(sBlack);
        const SDL_Rect want = {row.x + ref.x - 100, row.y + ref.y - 100, ref.w, ref.h};
        EXPECT_TRUE(SDL_RectEquals(&ink, &want)) << "align " << row.align << " box w " << row.box.w;
    }

    clear(0, 0, 0);
    EXPECT_EQ(DrawString(nullptr, box, text, sWhite, ALIGN_CENTER), 0);
    EXPECT_EQ(DrawString(f, box, "", sWhite, ALIGN_CENTER), 0);
    EXPECT_EQ(DrawString(f, box, nullptr, sWhite, ALIGN_CENTER), 0);
    EXPECT_EQ(inkBounds(sBlack).w, 0) << "nothing to render draws nothing";
}

TEST_F(TextTest, ShadowLiesOneRightTwoDownAndSkipTextLeavesOnlyIt) {
    TTF_Font* f = font(24);
    const SDL_Rect box = {100, 100, 300, 40};
    clear(0, 0, 0);
    const int tw = DrawString(f, box, "Shadow", sWhite, ALIGN_MIDDLE_LEFT);
    const SDL_Rect ref = inkBounds(sBlack);
    const struct { bool shadow, skipText; SDL_Rect ink; } rows[] = {
        {true, true, {ref.x + 1, ref.y + 2, ref.w, ref.h}},
        {true, false, {ref.x, ref.y, ref.w + 1, ref.h + 2}},
        {false, true, {0, 0, 0, 0}},
    };
    for (const auto& row : rows) {
        clear(0, 0, 0);
        EXPECT_EQ(DrawString(f, box, "Shadow", sWhite, ALIGN_MIDDLE_LEFT, row.shadow, row.skipText), tw);
        const SDL_Rect ink = inkBounds(sBlack);
        EXPECT_TRUE(SDL_RectEquals(&ink, &row.ink)) << row.shadow << row.skipText;
    }
}

TEST_F(TextTest, ColourWithAlphaZeroStillDrawsInThatColour) {
    TTF_Font* f = font(48);
    const SDL_Color highlight = {0x36, 0xFF, 0xA0, 0x00};
    clear(0, 0, 0);
    ASSERT_GT(DrawString(f, SDL_Rect{100, 100, 0, 0}, "HIH", highlight, ALIGN_TOP_LEFT), 0);
    EXPECT_GT(colorBounds(highlight).w, 0) << "fully covered pixels carry the colour itself";
    const SDL_Color opaque = {0x36, 0xFF, 0xA0, 0xFF};
    EXPECT_NE(getCachedSurface(f, "HIH", highlight, false), getCachedSurface(f, "HIH", opaque, false))
        << "the key keeps the colour's own alpha";
}

TEST_F(TextTest, TruncateLenCutsOnCodePointsWhenTheColumnIsFull) {
    TTF_Font* f = font(24);
    const std::string longLabel(60, 'x');
    EXPECT_EQ(getTruncateLen(f, "ab", 1000, 0), 0) << "fits";
    EXPECT_EQ(getTruncateLen(f, longLabel.c_str(), 0, 0), 0) << "no column";
    EXPECT_EQ(getTruncateLen(nullptr, longLabel.c_str(), 300, 0), 0);

    const int kept = getTruncateLen(f, longLabel.c_str(), 300, 0);
    ASSERT_GT(kept, 0);
    int w = 0;
    TTF_SizeUTF8(f, longLabel.substr(0, kept).c_str(), &w, nullptr);
    EXPECT_LT(w, 300) << "what is kept fits the column";
    EXPECT_EQ(getTruncateLen(f, longLabel.substr(0, kept).c_str(), 300, 0), 0)
        << "a text whose last character reaches the limit still fits";

    const std::string cjk = "\xe4\xb8\xad\xe6\x96\x87\xe5\xad\x97\xe5\xb9\x95\xe6\xb5\x8b\xe8\xaf\x95"
                            "\xe4\xb8\xad\xe6\x96\x87\xe5\xad\x97\xe5\xb9\x95\xe6\xb5\x8b\xe8\xaf\x95";
    const std::string broken = "\xff\xfe\xe4\xb8 abc \xc0\xaf\xed\xa0\x80 defgh ijkl \xe4";
    for (const std::string& text : {cjk, broken}) {
        const int n = getTruncateLen(f, text.c_str(), 120, 0);
        EXPECT_GT(n, 0);
        EXPECT_LT(n, utf8Length(text.c_str()));
    }
}

// A text that cannot be drawn (of no width, or wider than the largest
// texture) is tried and logged once, not on every frame.
TEST_F(TextTest, ATextThatCannotBeDrawnIsTriedAndLoggedOnce) {
    TTF_Font* f = font(24);
    SDL_RendererInfo info;
    ASSERT_EQ(SDL_GetRendererInfo(gRenderer, &info), 0);
    std::vector<std::string> texts = {"\xe2\x80\x8b"};  // a zero-width space
    if (info.max_texture_width > 0) texts.push_back(std::string(size_t(info.max_texture_width / 8), 'W'));
    for (const std::string& text : texts) {
        CaptureStdout log;
        for (int frame = 0; frame < 3; frame++)
            EXPECT_EQ(DrawString(f, SDL_Rect{0, 0, 0, 0}, text.c_str(), sWhite, ALIGN_TOP_LEFT), 0);
        const std::string logged = log.finish();
        EXPECT_EQ(std::count(logged.begin(), logged.end(), '\n'), 1) << text.size() << " bytes";
    }
}
