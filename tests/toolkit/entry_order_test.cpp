#include "toolkit/entry_order.h"

#include <gtest/gtest.h>
#include <string.h>

#include <memory>
#include <string>
#include <vector>

namespace {

enum { NO_ACTION = 0 };

class TestFileAction : public FileAction {
public:
    TestFileAction(const char* path, int type) : FileAction(path, type) {}
    int dowork(void*) override { return 0; }
};

// Entries of one test, deleted with it.
class Entries {
public:
    ~Entries() {
        for (TextMenuItem* item : mItems) delete item;
    }
    // `type` NO_ACTION makes an entry without action.
    TextMenuItem* make(const std::string& label, int type) {
        Action* action = type == NO_ACTION ? nullptr : new TestFileAction(label.c_str(), type);
        mItems.push_back(new TextMenuItem(label.c_str(), nullptr, action, true));
        return mItems.back();
    }

private:
    std::vector<TextMenuItem*> mItems;
};

}  // namespace

TEST(EntryOrder, FoldersFirstThenLabelsInByteOrder) {
    struct Insert { const char* label; int type; };
    const struct {
        const char* name;
        std::vector<Insert> inserts;
        std::vector<int> order;  // indexes into inserts
    } cases[] = {
        {"folders before files",
         {{"b.mkv", 99}, {"A", 102}, {"a.avi", 99}, {"Z", 102}},
         {1, 3, 2, 0}},
        {"same label: the later one first",
         {{"x.mp4", 99}, {"x.mp4", 99}, {"x", 102}, {"x.mp4", 99}, {"x", 102}},
         {4, 2, 3, 1, 0}},
        {"entries without action go by label among their neighbours",
         {{"Z", 102}, {"A", NO_ACTION}, {"B", 99}, {"C", 102}, {"M", NO_ACTION}},
         {1, 3, 4, 0, 2}},
        {"a folder stops at the first smaller type, past an entry without action",
         {{"m", NO_ACTION}, {"z", 102}, {"a", 99}, {"b", 102}, {"zz", 102}},
         {3, 4, 2, 0, 1}},
    };
    for (const auto& c : cases) {
        Entries entries;
        std::vector<TextMenuItem*> made;
        std::vector<void*> list;
        for (const Insert& insert : c.inserts) {
            made.push_back(entries.make(insert.label, insert.type));
            additemsorted(&list, made.back());
        }
        ASSERT_EQ(list.size(), c.order.size()) << c.name;
        for (size_t i = 0; i < list.size(); i++)
            EXPECT_EQ(list[i], made[c.order[i]]) << c.name << ", position " << i;
    }
}

TEST(EntryOrder, PinyinStrstrGivesTheMatchedBytesOfTheText) {
    const struct {
        const char* text;
        const char* pinyin;
        const char* keyword;
        int result;
        int start;
        int length;
    } cases[] = {
        {"Movie", "Movie", "OV", 0, 1, 2},
        {"Movie", "Movie2", "e2", 0, 4, 1},   // runs past the text's end
        {"Movie", "Movie2", "2", -1, 0, 0},   // starts past it
        {"a\xe6\x96\xb0" "b", "axb", "xb", 0, 1, 4},
        {"", "a", "a", -1, 0, 0},
        // Bytes that are not UTF-8 count as one character each.
        {"a\xff\xe4\xb8", "abcd", "cd", 0, 2, 2},
        {"\xe4\xb8\xad\xe4", "zxy", "xy", 0, 3, 1},
        {"\xf0\x9f\x98", "abc", "c", 0, 2, 1},
    };
    for (const auto& c : cases) {
        // Exactly sized copies, so a read past the terminator is caught by
        // the address sanitizer build.
        const size_t size = strlen(c.text) + 1;
        std::unique_ptr<char[]> text(new char[size]);
        memcpy(text.get(), c.text, size);
        const char* start = nullptr;
        int length = -99;
        EXPECT_EQ(PinyinStrstr(text.get(), c.pinyin, c.keyword, &start, &length), c.result)
            << c.pinyin << " / " << c.keyword;
        if (c.result == 0) {
            EXPECT_EQ(start - text.get(), c.start) << c.pinyin << " / " << c.keyword;
            EXPECT_EQ(length, c.length) << c.pinyin << " / " << c.keyword;
        } else {
            EXPECT_EQ(start, nullptr) << "left alone on failure";
            EXPECT_EQ(length, -99) << "left alone on failure";
        }
    }
    const char* start = nullptr;
    int length = 0;
    EXPECT_EQ(PinyinStrstr(nullptr, "a", "a", &start, &length), -1);
    EXPECT_EQ(PinyinStrstr("a", nullptr, "a", &start, &length), -1);
    EXPECT_EQ(PinyinStrstr("a", "a", nullptr, &start, &length), -1);
}
