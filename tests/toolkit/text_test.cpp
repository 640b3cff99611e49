#include "toolkit/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"
#include "tests/support/sdl_screen.h"
#include "toolkit/screen.h"

namespace {

const SDL_Color sWhite = {255, 255, 255, 255};

class TextTest : public SdlScreenTest {};

}  // namespace

// A text that cannot be drawn (no width, too wide) is tried and logged once.
TEST_F(TextTest, ATextThatCannotBeDrawnIsTriedAndLoggedOnce) {
    TTF_Font* f = font(24);
    const SDL_Rect box = {300, 200, 400, 100};
    clear(0, 0, 0);
    EXPECT_EQ(DrawString(nullptr, box, "text", sWhite, ALIGN_CENTER), 0);
    EXPECT_EQ(DrawString(f, box, "", sWhite, ALIGN_CENTER), 0);
    EXPECT_EQ(DrawString(f, box, nullptr, sWhite, ALIGN_CENTER), 0);
    const std::vector<Uint32> screen = pixels({0, 0, 1280, 720});
    EXPECT_EQ(std::count_if(screen.begin(), screen.end(), [](Uint32 p) { return (p & 0xFFFFFF) != 0; }), 0);
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
