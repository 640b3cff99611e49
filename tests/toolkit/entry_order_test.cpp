#include "toolkit/entry_order.h"

#include <gtest/gtest.h>
#include <string.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/toolkit/folder_fixture.h"

TEST(EntryOrder, FoldersFirstThenLabelsInByteOrder) {
    enum { NO_ACTION = 0, kFile = FILE_ACTION_PLAYABLE, kDir = FILE_ACTION_FOLDER };
    struct Insert { const char* label; int type; };
    const struct { const char* name; std::vector<Insert> inserts; std::vector<int> order; } cases[] = {
        {"folders before files", {{"b.mkv", kFile}, {"A", kDir}, {"a.avi", kFile}, {"Z", kDir}}, {1, 3, 2, 0}},
        {"same label: the later one first",
         {{"x.mp4", kFile}, {"x.mp4", kFile}, {"x", kDir}, {"x.mp4", kFile}, {"x", kDir}}, {4, 2, 3, 1, 0}},
        {"entries without action go by label among their neighbours",
         {{"Z", kDir}, {"A", NO_ACTION}, {"B", kFile}, {"C", kDir}, {"M", NO_ACTION}}, {1, 3, 4, 0, 2}},
        {"a folder stops at the first smaller type, past an entry without action",
         {{"m", NO_ACTION}, {"z", kDir}, {"a", kFile}, {"b", kDir}, {"zz", kDir}}, {3, 4, 2, 0, 1}},
    };
    for (const auto& c : cases) {
        std::vector<std::unique_ptr<TextMenuItem>> made;
        std::vector<void*> list;
        for (const Insert& insert : c.inserts) {
            Action* action = insert.type == NO_ACTION ? nullptr : new TestFileAction(insert.label, insert.type);
            made.emplace_back(new TextMenuItem(insert.label, nullptr, action, true));
            additemsorted(&list, made.back().get());
        }
        ASSERT_EQ(list.size(), c.order.size()) << c.name;
        for (size_t i = 0; i < list.size(); i++)
            EXPECT_EQ(list[i], made[c.order[i]].get()) << c.name << ", position " << i;
    }
}

TEST(EntryOrder, PinyinStrstrGivesTheMatchedBytesOfTheText) {
    const struct { const char* text; const char* pinyin; const char* keyword; int result, start, length; } cases[] = {
        {"Movie", "Movie", "OV", 0, 1, 2},
        {"Movie", "Movie2", "e2", 0, 4, 1},  // runs past the text's end
        {"Movie", "Movie2", "2", -1, 0, 0},  // starts past it
        {"a\xe6\x96\xb0" "b", "axb", "xb", 0, 1, 4},
        // Bytes that are not UTF-8 count as one character each.
        {"a\xff\xe4\xb8", "abcd", "cd", 0, 2, 2},
        {"\xf0\x9f\x98", "abc", "c", 0, 2, 1},
    };
    for (const auto& c : cases) {
        // An exactly sized copy, so a read past the terminator shows in the
        // address sanitizer build.
        const size_t size = strlen(c.text) + 1;
        std::unique_ptr<char[]> text(new char[size]);
        memcpy(text.get(), c.text, size);
        const char* start = nullptr;
        int length = -99;
        const std::string name = std::string(c.pinyin) + " / " + c.keyword;
        EXPECT_EQ(PinyinStrstr(text.get(), c.pinyin, c.keyword, &start, &length), c.result) << name;
        EXPECT_EQ(start ? start - text.get() : 0, c.start) << name;
        EXPECT_EQ(length, c.result == 0 ? c.length : -99) << name << ": left alone on failure";
    }
    const char* start = nullptr;
    int length = 0;
    EXPECT_EQ(PinyinStrstr(nullptr, "a", "a", &start, &length), -1);
    EXPECT_EQ(PinyinStrstr("a", "a", nullptr, &start, &length), -1);
}
