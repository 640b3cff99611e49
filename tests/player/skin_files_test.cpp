#include <SDL2/SDL.h>
#include <SDL2/SDL_image.h>
#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "player/player_lang.h"
#include "tests/support/temp_dir.h"
#include "toolkit/lang.h"

namespace fs = std::filesystem;

TEST(SkinFiles, EveryImageTheCodeLoadsIsInstalledAndDecodes) {
    // Every "skin/<name>.png" literal in the program's sources loads from the app folder.
    static const std::regex kLiteral("\"(skin/[A-Za-z0-9][A-Za-z0-9_%.-]*\\.png)\"");
    std::set<std::string> names;
    for (const char* folder : {"/player", "/toolkit"})
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(KOVANI_SOURCE_DIR + std::string(folder))) {
            const std::string ext = entry.path().extension().string();
            if (!entry.is_regular_file() || (ext != ".cpp" && ext != ".h")) continue;
            const std::string text = readFile(entry.path());
            for (std::sregex_iterator m(text.begin(), text.end(), kLiteral), end; m != end; ++m)
                names.insert((*m)[1].str());
        }
    ASSERT_GE(names.size(), 40u) << "the scan read the wrong folder";
    for (const std::string& name : names) {
        const std::string path = std::string(KOVANI_APP_DIR) + "/" + name;
        SDL_Surface* image = IMG_Load(path.c_str());
        EXPECT_TRUE(image && image->w > 0 && image->h > 0) << path << ": " << IMG_GetError();
        SDL_FreeSurface(image);
    }
}

TEST(LanguageFiles, EveryShippedLanguageIsInstalledNamedAndComplete) {
    const std::string source = KOVANI_SOURCE_DIR + std::string("/lang/");
    std::set<std::string> shipped;
    for (const fs::directory_entry& entry : fs::directory_iterator(source))
        if (entry.path().extension() == ".lang") shipped.insert(entry.path().filename().string());
    for (const char* file : {"ch.lang", "es.lang", "pt.lang", "jp.lang", "ko.lang"})
        EXPECT_TRUE(shipped.count(file)) << file;

    initDefLang();
    for (const std::string& file : shipped) {
        const std::string installed = std::string(KOVANI_APP_DIR) + "/lang/" + file;
        const std::string text = readFile(installed);
        ASSERT_FALSE(text.empty()) << installed;
        EXPECT_EQ(text, readFile(source + file)) << file << " is stale";

        cJSON* root = cJSON_Parse(text.c_str());
        ASSERT_NE(root, nullptr) << file << " near: " << cJSON_GetErrorPtr();
        const cJSON* lang = cJSON_GetObjectItemCaseSensitive(root, "lang");
        EXPECT_TRUE(cJSON_IsString(lang) && lang->valuestring[0]) << file;
        for (int id = 0; id < STRING_MAX; id++) {
            const cJSON* item = cJSON_GetObjectItemCaseSensitive(root, std::to_string(id).c_str());
            EXPECT_TRUE(cJSON_IsString(item) && item->valuestring[0]) << file << " id " << id;
        }
        cJSON_Delete(root);
    }
}
