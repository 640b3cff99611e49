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

TEST(Lang, GeneratedEnglishFileHoldsEveryBuiltInText) {
    LangWorkFolder folder;
    ASSERT_EQ(STRING_MAX, 31);
    ASSERT_EQ(STRING_AUDIOTRACK, 30);
    ASSERT_EQ(gDefaultStringList.size(), 31u);
    initDefLang();
    ASSERT_EQ(gDefaultStringList.size(), 31u) << "a second call appends nothing";

    initLang();
    EXPECT_EQ(folder.langFolder(), std::set<std::string>{"en.lang"}) << "no temporary left";
    LanguageStrs english;
    CaptureStdout capture;
    ASSERT_TRUE(readLangFile("lang/en.lang", english));
    EXPECT_EQ(english.lang, "English");
    for (int id = 0; id < STRING_MAX; id++) EXPECT_EQ(english.strings[id], gDefaultStringList[id]) << id;
    EXPECT_STREQ(getLangStr(STRING_AUDIOTRACK), "AudioTrack");
}

TEST(Lang, EnglishFileOnDiskIsNeverRewrittenAndABrokenOneFallsBackInMemory) {
    struct Row { const char* file; const char* text0; const char* text1; } rows[] = {
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

TEST(ReadLangFile, TakesEveryIdFromTheFileOrTheBuiltInTable) {
    struct Row {
        const char* path;
        const char* text;  // null: no such file
        bool ok;
        const char* lang;
        const char* icon;
        const char* text0;
        const char* text5;
    } rows[] = {
        {"lang/de.lang", "{\"lang\":\"Deutsch\",\"icon\":\"de.png\",\"0\":\"Abbrechen\",\"31\":\"x\"}",
         true, "Deutsch", "skin/de.png", "Abbrechen", "BACK"},
        {"lang/n.lang", "{\"lang\":\"N\",\"0\":5,\"5\":null,\"icon\":3}", true, "N", "", "Cancel", "BACK"},
        {"lang/num.lang", "{\"lang\":5}", false, "", "", "", ""},
        {"lang/bad.lang", "{\"lang\": oops}", false, "", "", "", ""},
        {"lang/missing.lang", nullptr, false, "", "", "", ""},
        {"plain.lang", "{\"lang\":\"Plain\"}", false, "", "", "", ""},
    };
    LangWorkFolder folder;
    for (const Row& row : rows) {
        if (row.text) writeFileAtomic(row.path, row.text);
        LanguageStrs out;
        out.strings[99] = "stale";
        CaptureStdout capture;
        bool ok = readLangFile(row.path, out);
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
    folder.put("ch.lang", "{\"lang\":\"中文\",\"0\":\"取消\",\"28\":\"退出视频播放器?\"}");
    folder.put("de.lang", "{\"lang\":\"Deutsch\",\"0\":\"Abbrechen\"}");
    folder.put("en.lang.short", "{\"lang\":\"Short\",\"0\":\"S\"}");
    folder.put("num.lang", "{\"lang\":5,\"0\":\"N\"}");
    folder.put("broken.lang", "{\"lang\":");
    makeDirs("lang/sub.lang");

    setSystemLanguage("ch.lang");
    CaptureStdout capture;
    initLang();
    EXPECT_STREQ(getLangStr(0), "取消") << "a language named before loading is used";

    struct Row { const char* language; int id; const char* text; } rows[] = {
        {"ch.lang", STRING_ASPECT_RATIO, "Aspect Ratio"},
        {"ch.lang", STRING_QUIT_PROMPT, "退出视频播放器?"},
        {"ch.lang", -1, ""},
        {"ch.lang", STRING_MAX, "wrongbeef"},
        {"CH.LANG", 0, "Cancel"},
        {"de.lang", 0, "Abbrechen"},
        {"en.lang.short", 0, "Cancel"},
        {"num.lang", 0, "Cancel"},
        {"", STRING_LOADING_SMALL, "LOADING..."},
    };
    for (const Row& row : rows) {
        setSystemLanguage(row.language);
        EXPECT_STREQ(getLangStr(row.id), row.text) << row.language << " " << row.id;
    }
}
