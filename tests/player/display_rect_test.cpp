#include "player/display_rect.h"

#include <gtest/gtest.h>

#include "player/time_text.h"

TEST(DisplayRect, PictureIsFittedAndCentredInTheModesArea) {
    struct Row { PLAYER_ASPECT_RATIO ratio; SDL_Rect area; bool fitted; SDL_Rect out; } rows[] = {
        {RATIO16_9, kWindowedVideoRect, true, {650, 93, 610, 343}},
        {RATIO4_3, kWindowedVideoRect, true, {715, 85, 480, 360}},
        {RATIO4_3, kFullscreenVideoRect, true, {160, 0, 960, 720}},
        {RATIO_DEFAULT, kWindowedVideoRect, false, {-7, -7, -7, -7}},
        {RATIO4_3, {10, 20, 100, 1000}, true, {10, 482, 100, 75}},
    };
    for (const Row& row : rows) {
        SDL_Rect out = {-7, -7, -7, -7};
        EXPECT_EQ(calcDisplayRect(row.ratio, row.area, out), row.fitted) << row.ratio;
        EXPECT_TRUE(SDL_RectEquals(&out, &row.out))
            << row.ratio << " " << row.area.w << ": " << out.x << "," << out.y << " " << out.w << "x" << out.h;
    }
}

TEST(TimeText, MinutesUpToAnHourThenHours) {
    struct Row { int ms; const char* text; } rows[] = {
        {-5000, "00:00"}, {999, "00:00"}, {3599000, "59:59"}, {3600999, "60:00"},
        {3601000, "1:00:01"}, {36000000, "10:00:00"},
    };
    char buf[32];
    for (const Row& row : rows) EXPECT_STREQ(formatMediaTime(row.ms, buf, sizeof buf), row.text) << row.ms;
    char tiny[4];
    EXPECT_STREQ(formatMediaTime(3601000, tiny, sizeof tiny), "1:0") << "never past the buffer";
}
