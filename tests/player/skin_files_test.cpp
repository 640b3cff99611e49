// The files the build stages into the app folder: the skin images the code
// loads and the translations.
#include <SDL2/SDL.h>
#include <SDL2/SDL_image.h>
#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "player/player_lang.h"
#include "toolkit/lang.h"

namespace fs = std::filesystem;

namespace {

const std::string kSourceDir = KOVANI_SOURCE_DIR;
const std::string kAppDir = KOVANI_APP_DIR;

std::string readWhole(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Every "skin/<name>.png" literal in the program's sources.
std::set<std::string> skinNamesInSources() {
    static const std::regex kLiteral("\"(skin/[A-Za-z0-9][A-Za-z0-9_%.-]*\\.png)\"");
    std::set<std::string> names;
    for (const char* folder : {"player", "toolkit"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kSourceDir + "/" + folder)) {
            const std::string ext = entry.path().extension().string();
            if (!entry.is_regular_file() || (ext != ".cpp" && ext != ".h")) continue;
            const std::string text = readWhole(entry.path());
            for (std::sregex_iterator m(text.begin(), text.end(), kLiteral), end; m != end; ++m)
                names.insert((*m)[1].str());
        }
    }
    return names;
}

struct Size {
    int w = 0;
    int h = 0;
};

// Size of an installed skin image; 0 x 0 when it is missing or undecodable.
Size installedSize(const std::string& name) {
    SDL_Surface* image = IMG_Load((kAppDir + "/" + name).c_str());
    if (!image) return {};
    const Size size = {image->w, image->h};
    SDL_FreeSurface(image);
    return size;
}

}  // namespace

TEST(SkinFiles, EveryImageTheCodeLoadsIsInstalledAndDecodes) {
    const std::set<std::string> names = skinNamesInSources();
    // The player window alone loads 21; a scan that finds few read the wrong folder.
    ASSERT_GE(names.size(), 40u);
    for (const std::string& name : names) {
        const std::string path = kAppDir + "/" + name;
        EXPECT_TRUE(fs::is_regular_file(path)) << path;
        SDL_Surface* image = IMG_Load(path.c_str());
        EXPECT_NE(image, nullptr) << path << ": " << IMG_GetError();
        if (image) {
            EXPECT_GT(image->w, 0) << name;
            EXPECT_GT(image->h, 0) << name;
            SDL_FreeSurface(image);
        }
    }
}

TEST(SkinFiles, ImagesFitTheBoxesTheScreensGiveThem) {
    struct Box {
        const char* name;
        int maxW, maxH;
    };
    const Box boxes[] = {
        // Drawn at their own size at fixed places on the 1280 x 720 screen.
        {"skin/bg-video-window.png", 610, 360},
        {"skin/icon-player.png", 1260 - 895, 445 - 205},  // inside the video window
        {"skin/bg-control-panel.png", 610, 650 - 455},    // down to the bottom bar
        {"skin/bg-control-panel-full.png", 1240, 720 - 596},
        {"skin/bg-full-screen-title.png", 1240, 596 - 20},
        {"skin/progress-bg.png", 570, 540 - 475},          // above the buttons
        {"skin/progress-bg-full.png", 1200, 720 - 616},
        // Control buttons stand 110 apart, above the tips row at 610.
        {"skin/btn-full-screen.png", 110, 610 - 540},
        {"skin/btn-previous.png", 110, 610 - 540},
        {"skin/btn-play.png", 110, 610 - 540},
        {"skin/btn-pause.png", 110, 610 - 540},
        {"skin/btn-next.png", 110, 610 - 540},
        {"skin/btn-config.png", 1260 - 1145, 610 - 540},
        // Panel tips: each ends before the next one starts.
        {"skin/tips-SELECT.png", 829 - 695, 650 - 610},
        {"skin/tips-L.png", 915 - 829, 650 - 610},
        {"skin/tips-START.png", 1049 - 915, 650 - 610},
        {"skin/tips-R.png", 1135 - 1049, 650 - 610},
        {"skin/tips-MENU.png", 1260 - 1135, 650 - 610},
        // Bottom bar tips, in its 70-pixel row.
        {"skin/tips-A.png", 200, 70},
        {"skin/tips-B.png", 200, 70},
        {"skin/tips-MENU2.png", 200, 70},
        // Status icons are centred in 33 x 32 slots.
        {"skin/ic-charging.png", 33, 32},
        {"skin/ic-batery-100%.png", 33, 32},
        {"skin/ic-batery-75%.png", 33, 32},
        {"skin/ic-batery-50%.png", 33, 32},
        {"skin/ic-batery-25%.png", 33, 32},
        {"skin/ic-batery-0%.png", 33, 32},
        {"skin/ic-sound-n.png", 33, 32},
        {"skin/ic-sound-mute.png", 33, 32},
        {"skin/icon-bluetooth-headphone.png", 33, 32},
        {"skin/ic-wifi-01.png", 33, 32},
        {"skin/ic-wifi-02.png", 33, 32},
        {"skin/ic-wifi-03.png", 33, 32},
        {"skin/icon-hotspot.png", 33, 32},
        {"skin/icon-back.png", 110 - 20, 80 - 12},  // before the title at x 110
        // Rows are 96 apart; list rows start 10 into the 620-wide list,
        // setting rows are 1260 wide.
        {"skin/bg-list-f.png", 610, 96},
        {"skin/bg-list-n.png", 610, 96},
        {"skin/ic-folder.png", 96, 96},
        {"skin/ic-video.png", 96, 96},
        {"skin/show-player.png", 620 - 560, 96 - 30},
        {"skin/show-pause.png", 620 - 560, 96 - 30},
        {"skin/bg-list-long-a.png", 1260, 96},
        {"skin/bg-list-long-n.png", 1260, 96},
        // The value field spans 745..1245 of the row, the arrows sit at its ends.
        {"skin/bg-setting-textfield.png", 500, 96},
        {"skin/ic-left-arrow-a.png", 1173 - 745, 96},
        {"skin/ic-left-arrow-n.png", 1173 - 745, 96},
        {"skin/ic-right-arrow-a.png", 1245 - 1173, 96},
        {"skin/ic-right-arrow-n.png", 1245 - 1173, 96},
        {"skin/pop-bg.png", 1280, 720},
    };
    for (const Box& box : boxes) {
        const Size size = installedSize(box.name);
        EXPECT_GT(size.w, 0) << box.name;
        EXPECT_LE(size.w, box.maxW) << box.name;
        EXPECT_LE(size.h, box.maxH) << box.name;
    }

    // Copied from and drawn over the whole screen.
    for (const char* name : {"skin/bg.png", "skin/float-win-mask.png"}) {
        const Size size = installedSize(name);
        EXPECT_EQ(size.w, 1280) << name;
        EXPECT_EQ(size.h, 720) << name;
    }

    // The slider pieces are all drawn at the bar's y, so they share its height,
    // and a full slider must end within the shorter track.
    const Size bar = installedSize("skin/progress-bg.png");
    const Size left = installedSize("skin/progress-slider-left.png");
    const Size middle = installedSize("skin/progress-slider-middle.png");
    const Size right = installedSize("skin/progress-slider-right.png");
    for (const Size& piece : {left, middle, right, installedSize("skin/progress-bg-full.png")})
        EXPECT_EQ(piece.h, bar.h);
    EXPECT_GT(middle.w, 0);
    EXPECT_LE(left.w + middle.w + right.w, 570);

    // The dialog's buttons stand at +100 and 100 past the first one, inside the panel.
    const Size panel = installedSize("skin/pop-bg.png");
    const Size focused = installedSize("skin/btn-bg-f.png");
    const Size normal = installedSize("skin/btn-bg-n.png");
    EXPECT_EQ(focused.w, normal.w);
    EXPECT_EQ(focused.h, normal.h);
    EXPECT_LE(100 + focused.w + 100 + focused.w, panel.w);
    EXPECT_LE(390 + focused.h, panel.h);
}

TEST(LanguageFiles, EveryShippedLanguageIsInstalledNamedAndComplete) {
    const std::map<std::string, std::string> expectedNames = {
        {"ch.lang", "简体中文"}, {"es.lang", "Español"}, {"pt.lang", "Português"},
        {"jp.lang", "日本語"},   {"ko.lang", "한국어"},
    };
    std::set<std::string> shipped;
    for (const fs::directory_entry& entry : fs::directory_iterator(kSourceDir + "/lang"))
        if (entry.path().extension() == ".lang") shipped.insert(entry.path().filename().string());
    for (const auto& [file, name] : expectedNames) EXPECT_TRUE(shipped.count(file)) << file;

    initDefLang();
    for (const std::string& file : shipped) {
        const fs::path installed = kAppDir + "/lang/" + file;
        const std::string text = readWhole(installed);
        ASSERT_FALSE(text.empty()) << installed;
        EXPECT_EQ(text, readWhole(kSourceDir + "/lang/" + file)) << file << " is stale";

        cJSON* root = cJSON_Parse(text.c_str());
        ASSERT_NE(root, nullptr) << file << " near: " << cJSON_GetErrorPtr();
        const cJSON* lang = cJSON_GetObjectItemCaseSensitive(root, "lang");
        EXPECT_TRUE(cJSON_IsString(lang)) << file;
        if (cJSON_IsString(lang) && expectedNames.count(file)) {
            EXPECT_EQ(lang->valuestring, expectedNames.at(file));
        }
        for (int id = 0; id < STRING_MAX; id++) {
            const cJSON* item = cJSON_GetObjectItemCaseSensitive(root, std::to_string(id).c_str());
            EXPECT_TRUE(cJSON_IsString(item) && item->valuestring[0]) << file << " id " << id;
        }
        cJSON_Delete(root);

        // And the program's own reader takes it.
        LanguageStrs strs;
        EXPECT_TRUE(readLangFile(installed.c_str(), strs)) << file;
        EXPECT_EQ(strs.file, file);
    }
}
