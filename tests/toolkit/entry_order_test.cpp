#include "toolkit/entry_order.h"

#include <gtest/gtest.h>
#include <string.h>

#include <memory>
#include <random>
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

// The ordering rule written out: stop at the first entry the item goes before.
void insertLinearly(std::vector<void*>* list, TextMenuItem* item) {
    size_t i = 0;
    for (; i < list->size(); i++) {
        TextMenuItem* e = static_cast<TextMenuItem*>((*list)[i]);
        if (e->mAction && item->mAction) {
            const int et = static_cast<FileAction*>(e->mAction)->mFileType;
            const int it = static_cast<FileAction*>(item->mAction)->mFileType;
            if (et < it) break;
            if (et > it) continue;
        }
        if (strcmp(item->mLabel.c_str(), e->mLabel.c_str()) <= 0) break;
    }
    list->insert(list->begin() + i, item);
}

}  // namespace

TEST(EntryOrder, FoldersFirstThenLabelsInByteOrder) {
    struct Insert {
        const char* label;
        int type;
    };
    const struct {
        const char* name;
        std::vector<Insert> inserts;
        std::vector<int> order;  // indexes into inserts
    } cases[] = {
        {"folders before files",
         {{"b.mkv", 99}, {"A", 102}, {"a.avi", 99}, {"Z", 102}},
         {1, 3, 2, 0}},
        {"byte order, no number order",
         {{"10.mp4", 99}, {"9.mp4", 99}, {"abc.mp4", 99}, {"Abc.mp4", 99}},
         {0, 1, 3, 2}},
        {"CJK names sort by their UTF-8 bytes",
         {{"\xe6\x97\xa5\xe6\x9c\xac.mp4", 99}, {"zz.mp4", 99}, {"\xe4\xb8\xad.mp4", 99},
          {"\xe6\x96\x87", 102}},
         {3, 1, 2, 0}},
        {"same label: the later one first",
         {{"x.mp4", 99}, {"x.mp4", 99}, {"x", 102}, {"x.mp4", 99}, {"x", 102}},
         {4, 2, 3, 1, 0}},
        {"entries without action go by label among their neighbours",
         {{"Z", 102}, {"A", NO_ACTION}, {"B", 99}, {"C", 102}, {"M", NO_ACTION}},
         {1, 3, 4, 0, 2}},
        {"a folder stops at the first smaller type, past an entry without action",
         {{"m", NO_ACTION}, {"z", 102}, {"a", 99}, {"b", 102}, {"zz", 102}},
         {3, 4, 2, 0, 1}},
        {"an item without action goes by label alone",
         {{"b", 102}, {"a", 99}, {"c", 99}, {"ab", NO_ACTION}},
         {3, 0, 1, 2}},
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

TEST(EntryOrder, PlacesLikeTheLinearRuleOnThousandsOfEntries) {
    const char* const stems[] = {"a", "A", "b", "ab", "Ab", "10", "9", "", "\xe4\xb8\xad",
                                 "\xe6\x96\x87", "z", "a.b", "a b", "_"};
    const int types[] = {99, 102, 101};
    // Entries without action: none at all, one outside the list (the lists
    // must still be searched correctly), some inside it.
    const struct {
        const char* name;
        int withoutActionPercent;
        bool outsider;
    } cases[] = {
        {"every entry with action", 0, false},
        {"an entry without action elsewhere", 0, true},
        {"entries without action in the list", 3, false},
    };
    for (const auto& c : cases) {
        std::mt19937 random(1234);
        Entries entries;
        if (c.outsider) entries.make("outside", NO_ACTION);
        std::vector<void*> sorted, reference;
        for (int n = 0; n < 4000; n++) {
            std::string label = stems[random() % (sizeof stems / sizeof stems[0])];
            label += stems[random() % (sizeof stems / sizeof stems[0])];
            const bool plain = int(random() % 100) < c.withoutActionPercent;
            TextMenuItem* item = entries.make(label, plain ? NO_ACTION : types[random() % 3]);
            additemsorted(&sorted, item);
            insertLinearly(&reference, item);
        }
        ASSERT_EQ(sorted.size(), reference.size());
        size_t differ = 0;
        while (differ < sorted.size() && sorted[differ] == reference[differ]) differ++;
        EXPECT_EQ(differ, sorted.size()) << c.name << ": first difference";
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
