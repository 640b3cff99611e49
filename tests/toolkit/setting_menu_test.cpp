#include "toolkit/setting_menu.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class FixedValue : public ValueHandler {
public:
    explicit FixedValue(std::string text) : mText(std::move(text)) {}
    int changeValue(int) override { return 0; }
    int saveValue() override { return 0; }
    const char* getShowValue() override { return mText.c_str(); }
    std::string mText;
};

std::string times(const std::string& text, int n) {
    std::string out;
    for (int i = 0; i < n; i++) out += text;
    return out;
}

}  // namespace

// A value longer than the row's 63 bytes is cut after a whole character.
TEST(SettingValueItem, ALongValueIsCutAfterAWholeCharacter) {
    const std::string shi = "\xe8\xa7\x86", smile = "\xf0\x9f\x98\x80";  // 3 and 4 bytes
    const struct { std::string value, shown; } rows[] = {
        {std::string(70, 'a'), std::string(63, 'a')},
        {"a" + times(shi, 30), "a" + times(shi, 20)},
        {times(shi, 21) + "b", times(shi, 21)},
        {times(smile, 17), times(smile, 15)},
    };
    for (const auto& row : rows) {
        SettingValueItem item(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, -1, nullptr,
                              new FixedValue(row.value));
        SDL_Rect rect = {0, 80, 1280, 96};
        item.draw(rect, true);
        EXPECT_EQ(std::string(item.mShowBuf), row.shown) << row.value;
    }
}
