#include "toolkit/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(Utf8, CountsCodePointsAndTreatsEveryBadByteAsOne) {
    struct Row { const char* text; std::vector<uint32_t> codePoints; } rows[] = {
        {"a\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80", {'a', 0xE9, 0x4E2D, 0x1F600}},
        {"\x80\xff", {0xFFFD, 0xFFFD}},                          // stray bytes
        {"\xe4\xb8" "a", {0xFFFD, 0xFFFD, 'a'}},                 // cut off before ASCII
        {"\xc0\xaf", {0xFFFD, 0xFFFD}},                          // overlong '/'
        {"\xed\xa0\x80", {0xFFFD, 0xFFFD, 0xFFFD}},              // surrogate
        {"\xf4\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},  // beyond U+10FFFF
    };
    for (const Row& row : rows) {
        EXPECT_EQ(utf8CodePoints(row.text), row.codePoints) << row.text;
        EXPECT_EQ(utf8Length(row.text), int(row.codePoints.size())) << row.text;
    }
}
