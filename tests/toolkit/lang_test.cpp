#include "toolkit/lang.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "player/player_lang.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"

namespace {

// A fresh working folder for the program's "./lang"; the old one comes back
// afterwards. Every case starts with the player's table and English chosen.
class LangTest : public ::testing::Test {
protected:
    void SetUp() override {
        char old[PATH_MAX];
        mOld = getcwd(old, sizeof old) ? old : "/";
        ASSERT_EQ(chdir(mRoot.path().c_str()), 0);
        initDefLang();
        setSystemLanguage("");
    }
    void TearDown() override { EXPECT_EQ(chdir(mOld.c_str()), 0); }
    void put(const std::string& name, const std::string& text) { writeFileAtomic("lang/" + name, text); }

    TempDeviceRoot mRoot;
    std::string mOld;
    CaptureStdout mQuiet;
};

}  // namespace

TEST_F(LangTest, GeneratedEnglishFileHoldsEveryBuiltInText) {
    const size_t count = gDefaultStringList.size();
    initDefLang();
    ASSERT_EQ(gDefaultStringList.size(), count) << "a second call appends nothing";
    initLang();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("lang"), {}), 1) << "no temporary left";
    LanguageStrs english;
    ASSERT_TRUE(readLangFile("lang/en.lang", english));
    EXPECT_EQ(english.lang, "English");
    ASSERT_EQ(english.strings.size(), (size_t)STRING_MAX);
    for (int id = 0; id < STRING_MAX; id++) EXPECT_EQ(english.strings[id], gDefaultStringList[id]) << id;
}

TEST_F(LangTest, EnglishFileOnDiskIsNeverRewrittenAndABrokenOneFallsBackInMemory) {
    struct Row { const char* file; const char* text0; } rows[] = {
        {"{\"lang\": \"English\", \"0\": \"Abort\"}", "Abort"},
        {"{\"lang\": \"English\", \"0\": ", "Cancel"},
        {"{\"0\": \"Abort\"}", "Cancel"},
    };
    for (const Row& row : rows) {
        put("en.lang", row.file);
        initLang();
        EXPECT_EQ(readFile("lang/en.lang"), row.file);
        EXPECT_STREQ(getLangStr(0), row.text0) << row.file;
        EXPECT_STREQ(getLangStr(STRING_AUDIOTRACK), "AudioTrack") << row.file;
    }
}

TEST_F(LangTest, ReadLangFileTakesEveryIdFromTheFileOrTheBuiltInTable) {
    struct Row { const char* path; const char* text; bool ok; const char* lang, *icon, *text0; } rows[] = {
        {"lang/de.lang", "{\"lang\":\"Deutsch\",\"icon\":\"de.png\",\"0\":\"Abbrechen\",\"31\":\"x\"}", true,
         "Deutsch", "skin/de.png", "Abbrechen"},
        {"lang/n.lang", "{\"lang\":\"N\",\"0\":5,\"icon\":3}", true, "N", "", "Cancel"},
        {"lang/num.lang", "{\"lang\":5}", false, "", "", ""},
        {"lang/bad.lang", "{\"lang\": oops}", false, "", "", ""},
        {"lang/missing.lang", nullptr, false, "", "", ""},
        {"plain.lang", "{\"lang\":\"Plain\"}", false, "", "", ""},
    };
    for (const Row& row : rows) {
        if (row.text) writeFileAtomic(row.path, row.text);
        LanguageStrs out;
        out.strings[99] = "stale";
        EXPECT_EQ(readLangFile(row.path, out), row.ok) << row.path;
        if (!row.ok) continue;
        EXPECT_EQ(out.lang, row.lang) << row.path;
        EXPECT_EQ(out.icon, row.icon) << row.path;
        EXPECT_EQ(out.strings.size(), (size_t)STRING_MAX) << row.path;
        EXPECT_EQ(out.strings[0], row.text0) << row.path;
        EXPECT_EQ(out.strings[5], "BACK") << row.path;
    }
}

TEST_F(LangTest, FolderLanguagesAreChosenByExactFileNameWithEnglishForAnythingElse) {
    put("ch.lang", "{\"lang\":\"中文\",\"0\":\"取消\",\"28\":\"退出视频播放器?\"}");
    put("de.lang", "{\"lang\":\"Deutsch\",\"0\":\"Abbrechen\"}");
    put("en.lang.short", "{\"lang\":\"Short\",\"0\":\"S\"}");
    put("broken.lang", "{\"lang\":");
    makeDirs("lang/sub.lang");

    setSystemLanguage("ch.lang");
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
        {"broken.lang", 0, "Cancel"},
    };
    for (const Row& row : rows) {
        setSystemLanguage(row.language);
        EXPECT_STREQ(getLangStr(row.id), row.text) << row.language << " " << row.id;
    }
}
