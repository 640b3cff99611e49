#include "player/time_text.h"

#include <gtest/gtest.h>

#include <string>

// Minutes and seconds up to an hour, hours from just past it; negative
// times read as 0; the text is cut to the buffer.
TEST(TimeText, Table) {
    const struct { int ms; const char* text; } rows[] = {
        {-5000, "00:00"},       {0, "00:00"},           {999, "00:00"},         {61000, "01:01"},
        {3599000, "59:59"},     {3600000, "60:00"},     {3600999, "60:00"},     {3601000, "1:00:01"},
        {3723000, "1:02:03"},   {36000000, "10:00:00"}, {2147483647, "596:31:23"},
    };
    char buf[32];
    for (const auto& row : rows) EXPECT_EQ(std::string(formatMediaTime(row.ms, buf, sizeof buf)), row.text) << row.ms;
    char tiny[4];
    EXPECT_EQ(std::string(formatMediaTime(3723000, tiny, sizeof tiny)), "1:0");
}
