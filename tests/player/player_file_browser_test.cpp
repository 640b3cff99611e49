#include "player/player_file_browser.h"

#include <gtest/gtest.h>

#include <memory>

#include "toolkit/dir_browser.h"
#include "toolkit/file_browser_menu.h"
#include "toolkit/text_menu_item.h"

// A file is listed as a video by the text from its last "." on, exactly,
// for each of the known extensions; every folder is listed.
TEST(PlayerFileBrowser, ExtensionTable) {
    const struct { const char* name; int type; bool listed; } rows[] = {
        {"a.avi", DIR_ENTRY_FILE, true},     {"a.mkv", DIR_ENTRY_FILE, true},   {"a.flv", DIR_ENTRY_FILE, true},
        {"a.ts", DIR_ENTRY_FILE, true},      {"a.mp4", DIR_ENTRY_FILE, true},   {"a.webm", DIR_ENTRY_FILE, true},
        {"a.asf", DIR_ENTRY_FILE, true},     {"a.mpg", DIR_ENTRY_FILE, true},   {"a.mpeg", DIR_ENTRY_FILE, true},
        {"a.mov", DIR_ENTRY_FILE, true},     {"a.vob", DIR_ENTRY_FILE, true},   {"a.3gp", DIR_ENTRY_FILE, true},
        {"a.wmv", DIR_ENTRY_FILE, true},     {"a.pmp", DIR_ENTRY_FILE, true},   {".mp4", DIR_ENTRY_FILE, true},
        {"my.holiday.mp4", DIR_ENTRY_FILE, true},
        {"a.MP4", DIR_ENTRY_FILE, false},    {"a.mp3", DIR_ENTRY_FILE, false},  {"a.mp4.txt", DIR_ENTRY_FILE, false},
        {"a.mp", DIR_ENTRY_FILE, false},     {"mp4", DIR_ENTRY_FILE, false},    {"a.mp4 ", DIR_ENTRY_FILE, false},
        {"films", DIR_ENTRY_FOLDER, true},   {"a.mp3", DIR_ENTRY_FOLDER, true},
    };
    for (const auto& row : rows) {
        std::unique_ptr<TextMenuItem> item(file_handler(row.name, (std::string("/v/") + row.name).c_str(), row.type));
        EXPECT_EQ(item != nullptr, row.listed) << row.name;
        if (row.type == DIR_ENTRY_FILE) {
            EXPECT_EQ(file_filter(row.name, ""), row.listed) << row.name;
        }
        if (!item) continue;
        const FileAction* action = dynamic_cast<FileAction*>(item->getAction());
        ASSERT_NE(action, nullptr) << row.name;
        EXPECT_EQ(action->mFileType, row.type == DIR_ENTRY_FOLDER ? FILE_ACTION_FOLDER : FILE_ACTION_PLAYABLE);
        EXPECT_EQ(action->mPath, std::string("/v/") + row.name);
    }
}
