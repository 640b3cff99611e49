#include "toolkit/lang.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>

#include "player/player_lang.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"

namespace {

const char* const kBuiltIn[] = {
    "Cancel", "OK", "LOADING...", "LOADING...", "OPEN", "BACK", "NAV", "MENU",
    "Video", "No Files", "Reading Files", "Setting", "Aspect Ratio", "Default", "4:3", "16:9",
    "No Rotation", "Degrees", "Rotation", "16x FastForward", "8X FastForward", "4X FastForward",
    "2X FastForward", "Default", "2X FastBackward", "4X FastBackward", "8X FastBackward",
    "16X FastBackward", "Quit VideoPlayer?", "Quit", "AudioTrack",
};

// A fresh working folder for the program's "./lang"; the old one comes back
// afterwards. Every case starts with the player's table and English chosen.
class LangWorkFolder {
public:
    LangWorkFolder() {
        char old[PATH_MAX];
        mOld = getcwd(old, sizeof old) ? old : "/";
        char tmpl[] = "/tmp/kovani_lang_XXXXXX";
        mPath = mkdtemp(tmpl);
        EXPECT_EQ(chdir(mPath.c_str()), 0);
        initDefLang();
        setSystemLanguage("");
    }
    ~LangWorkFolder() {
        EXPECT_EQ(chdir(mOld.c_str()), 0);
        std::error_code ec;
        std::filesystem::remove_all(mPath, ec);
    }
    void put(const std::string& name, const std::string& text) {
        writeFileAtomic(mPath + "/lang/" + name, text);
    }
    std::set<std::string> langFolder() const {
        std::set<std::string> names;
        for (const auto& e : std::filesystem::directory_iterator(mPath + "/lang"))
            names.insert(e.path().filename());
        return names;
    }

private:
    std::string mOld;
    std::string mPath;
};

}  // namespace

TEST(Lang, GeneratedEnglishFileHoldsEveryBuiltInTextInIdOrder) {
    LangWorkFolder folder;
    ASSERT_EQ(STRING_MAX, 31);
    ASSERT_EQ(STRING_AUDIOTRACK, 30);
    ASSERT_EQ(gDefaultStringList.size(), 31u);
    initDefLang();
    ASSERT_EQ(gDefaultStringList.size(), 31u) << "a second call appends nothing";

    std::string expected = "{\n\t\"lang\":\t\"English\"";
    for (int id = 0; id < STRING_MAX; id++)
        expected += ",\n\t\"" + std::to_string(id) + "\":\t\"" + kBuiltIn[id] + "\"";
    expected += "\n}";

    initLang();
    EXPECT_EQ(readFile("lang/en.lang"), expected);
    EXPECT_EQ(folder.langFolder(), std::set<std::string>{"en.lang"}) << "no temporary left";
    for (int id = 0; id < STRING_MAX; id++) EXPECT_STREQ(getLangStr(id), kBuiltIn[id]) << id;
}

TEST(Lang, EnglishFileOnDiskIsNeverRewrittenAndABrokenOneFallsBackInMemory) {
    struct Row {
        const char* file;
        const char* text0;
        const char* text1;
    } rows[] = {
        {"{\"lang\": \"English\", \"0\": \"Abort\"}", "Abort", "OK"},
        {"{\"lang\": \"English\", \"0\": ", "Cancel", "OK"},
        {"{\"0\": \"Abort\"}", "Cancel", "OK"},
    };
    for (const Row& row : rows) {
        LangWorkFolder folder;
        folder.put("en.lang", row.file);
        initLang();
        EXPECT_EQ(readFile("lang/en.lang"), row.file);
        EXPECT_STREQ(getLangStr(0), row.text0) << row.file;
        EXPECT_STREQ(getLangStr(1), row.text1) << row.file;
        EXPECT_STREQ(getLangStr(STRING_AUDIOTRACK), "AudioTrack") << row.file;
    }
}

TEST(ReadLangFile, TakesEveryIdFromTheFileOrTheBuiltInTableAndLogsTheOutcome) {
    struct Row {
        const char* path;
        const char* text;  // null: no such file
        bool ok;
        const char* lang;
        const char* icon;
        const char* text0;
        const char* text5;
        std::string log;
    } rows[] = {
        {"lang/de.lang", "{\"lang\":\"Deutsch\",\"icon\":\"de.png\",\"0\":\"Abbrechen\",\"31\":\"x\"}",
         true, "Deutsch", "skin/de.png", "Abbrechen", "BACK",
         "lang file lang/de.lang\nread lang file lang/de.lang ok=1\n"},
        {"lang/n.lang", "{\"lang\":\"N\",\"0\":5,\"5\":null,\"icon\":3}", true, "N", "", "Cancel",
         "BACK", "lang file lang/n.lang\nread lang file lang/n.lang ok=1\n"},
        {"lang/num.lang", "{\"lang\":5}", false, "", "", "", "",
         "lang file lang/num.lang\nlang/num.lang have no lang string\n"
         "read lang file lang/num.lang ok=0\n"},
        {"lang/none.lang", "{\"0\":\"x\"}", false, "", "", "", "",
         "lang file lang/none.lang\nlang/none.lang have no lang string\n"
         "read lang file lang/none.lang ok=0\n"},
        {"lang/arr.lang", "[\"lang\"]", false, "", "", "", "",
         "lang file lang/arr.lang\nlang/arr.lang have no lang string\n"
         "read lang file lang/arr.lang ok=0\n"},
        {"lang/bad.lang", "{\"lang\": oops}", false, "", "", "", "",
         "lang file lang/bad.lang\nparse lang/bad.lang content fail:oops}\n"
         "read lang file lang/bad.lang ok=0\n"},
        {"lang/empty.lang", "", false, "", "", "", "",
         "lang file lang/empty.lang\nlang/empty.lang invalid size 0\n"
         "read lang/empty.lang content fail\nread lang file lang/empty.lang ok=0\n"},
        {"lang/missing.lang", nullptr, false, "", "", "", "", "read lang file lang/missing.lang ok=0\n"},
        {"plain.lang", "{\"lang\":\"Plain\"}", false, "", "", "", "",
         "lang file plain.lang\nread lang file plain.lang ok=0\n"},
    };
    LangWorkFolder folder;
    for (const Row& row : rows) {
        if (row.text) writeFileAtomic(row.path, row.text);
        LanguageStrs out;
        out.strings[99] = "stale";
        CaptureStdout capture;
        bool ok = readLangFile(row.path, out);
        EXPECT_EQ(capture.finish(), row.log) << row.path;
        EXPECT_EQ(ok, row.ok) << row.path;
        EXPECT_EQ(out.strings.count(99), 0u) << row.path;
        if (!row.ok) continue;
        EXPECT_EQ(out.file, std::filesystem::path(row.path).filename()) << row.path;
        EXPECT_EQ(out.lang, row.lang) << row.path;
        EXPECT_EQ(out.icon, row.icon) << row.path;
        EXPECT_EQ(out.strings.size(), (size_t)STRING_MAX) << row.path;
        EXPECT_EQ(out.strings[0], row.text0) << row.path;
        EXPECT_EQ(out.strings[5], row.text5) << row.path;
    }
}

TEST(Lang, FolderLanguagesAreChosenByExactFileNameWithEnglishForAnythingElse) {
    LangWorkFolder folder;
    folder.put("ch.lang",
               "{\"lang\":\"中文\",\"0\":\"取消\",\"28\":\"退出视频播放器?\",\"11\":\"设置\"}");
    folder.put("de.lang", "{\"lang\":\"Deutsch\",\"0\":\"Abbrechen\"}");
    folder.put("de_long.lang", "{\"lang\":\"Deutsch\",\"0\":\"Abbrechen\"}");
    folder.put("en.lang.short", "{\"lang\":\"Short\",\"0\":\"S\"}");
    folder.put("num.lang", "{\"lang\":5,\"0\":\"N\"}");
    folder.put("broken.lang", "{\"lang\":");
    makeDirs("lang/sub.lang");

    setSystemLanguage("ch.lang");
    CaptureStdout capture;
    initLang();
    std::string log = capture.finish();
    EXPECT_STREQ(getLangStr(0), "取消") << "a language named before loading is used";
    EXPECT_NE(log.find("./lang/num.lang have no lang string\n"), std::string::npos) << log;
    EXPECT_EQ(log.find(".short"), std::string::npos) << log;
    EXPECT_EQ(log.find("sub.lang"), std::string::npos) << log;

    struct Row {
        const char* language;
        int id;
        const char* text;
    } rows[] = {
        {"ch.lang", STRING_ASPECT_RATIO, "Aspect Ratio"},
        {"ch.lang", STRING_SETTING, "设置"},
        {"ch.lang", STRING_QUIT_PROMPT, "退出视频播放器?"},
        {"ch.lang", -1, ""},
        {"ch.lang", STRING_MAX, "wrongbeef"},
        {"ch.lang", 100000, "wrongbeef"},
        {"CH.LANG", 0, "Cancel"},
        {"de.lang", 0, "Abbrechen"},
        {"de.lang", STRING_QUIT, "Quit"},
        {"de_long.lang", 0, "Cancel"},
        {"en.lang.short", 0, "Cancel"},
        {"num.lang", 0, "Cancel"},
        {"xx.lang", STRING_AUDIOTRACK, "AudioTrack"},
        {"", STRING_LOADING_SMALL, "LOADING..."},
        {"en.lang", -5, ""},
    };
    for (const Row& row : rows) {
        setSystemLanguage(row.language);
        EXPECT_STREQ(getLangStr(row.id), row.text) << row.language << " " << row.id;
    }
}
