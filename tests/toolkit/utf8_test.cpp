#include "toolkit/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(Utf8, CountsCodePointsAndTreatsEveryBadByteAsOne) {
    struct Row { const char* text; std::vector<uint32_t> codePoints; } rows[] = {
        {"", {}},
        {"a\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80", {'a', 0xE9, 0x4E2D, 0x1F600}},
        {"a\xff" "b", {'a', 0xFFFD, 'b'}},
        {"\x80\x80", {0xFFFD, 0xFFFD}},                 // stray continuation bytes
        {"\xe4\xb8" "a", {0xFFFD, 0xFFFD, 'a'}},        // cut off before ASCII
        {"\xc0\xaf", {0xFFFD, 0xFFFD}},                 // overlong '/'
        {"\xed\xa0\x80", {0xFFFD, 0xFFFD, 0xFFFD}},     // surrogate
        {"\xf4\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},  // beyond U+10FFFF
    };
    for (const Row& row : rows) {
        EXPECT_EQ(utf8CodePoints(row.text), row.codePoints) << row.text;
        EXPECT_EQ(utf8Length(row.text), int(row.codePoints.size())) << row.text;
    }
    EXPECT_EQ(utf8Length(nullptr), 0);
}

TEST(Utf8, OffsetsAndSubstringsStayOnCodePointBoundariesWithinTheText) {
    const char* text = "\xe4\xb8\xad\xe6\x96\x87" "ab";  // two CJK characters, then "ab"
    struct Row {
        int index;
        int offset;
    } offsets[] = {{-3, 0}, {0, 0}, {1, 3}, {2, 6}, {3, 7}, {4, 8}, {5, 8}, {1000, 8}};
    for (const Row& row : offsets) EXPECT_EQ(utf8ByteOffset(text, row.index), row.offset) << row.index;

    struct Cut { int start, count; std::string bytes; } cuts[] = {
        {0, 1, "\xe4\xb8\xad"},
        {1, 2, "\xe6\x96\x87" "a"},
        {2, 1000, "ab"},
        {0, 2147483647, text},
        {4, 1, ""},
        {1, 0, ""},
        {-2, 1, "\xe4\xb8\xad"},
    };
    for (const Cut& cut : cuts)
        EXPECT_EQ(utf8Substr(text, cut.start, cut.count), cut.bytes) << cut.start << "+" << cut.count;

    EXPECT_EQ(utf8ByteOffset("\xe4\xb8", 1), 1) << "a cut-off sequence advances one byte";
    EXPECT_EQ(utf8Substr("x\xe4\xb8", 1, 5), "\xe4\xb8");
    EXPECT_EQ(utf8Substr(nullptr, 0, 3), "");
}
