#include "toolkit/lang.h"

#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "player/player_lang.h"
#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"

namespace {

// A fresh working folder for "./lang", the player's table, English chosen.
class LangTest : public ::testing::Test {
protected:
    void SetUp() override {
        char old[4096];
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

// en.lang is written from the table and reads back whole; one on disk is kept.
TEST_F(LangTest, GeneratedEnglishFileReadsBackAndOneOnDiskIsNeverRewritten) {
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

    for (const char* file : {"{\"lang\": \"English\", \"0\": \"Abort\"}", "{\"lang\": \"English\", \"0\": "}) {
        put("en.lang", file);
        initLang();
        EXPECT_EQ(readFile("lang/en.lang"), file);
        EXPECT_STREQ(getLangStr(0), file[strlen(file) - 1] == '}' ? "Abort" : "Cancel") << file;
        EXPECT_STREQ(getLangStr(STRING_AUDIOTRACK), "AudioTrack") << file;
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


// The chosen language's text, else the built-in English one. Files with one
// display name merge under the shortest file name; ".short" files and
// broken ones are never used; the name is matched exactly.
TEST_F(LangTest, FallbackAndMergeTable) {
    put("ch.lang", "{\"lang\":\"\xe7\xae\x80\xe4\xbd\x93\",\"8\":\"\xe8\xa7\x86\xe9\xa2\x91\"}");  // lacks 12
    put("de.lang", "{\"lang\":\"Deutsch\",\"1\":\"Gut\"}");
    put("de_long.lang", "{\"lang\":\"Deutsch\",\"1\":\"Gut\"}");
    put("es.lang.short", "{\"lang\":\"Corto\",\"1\":\"Corto\"}");
    put("fr.lang", "{\"lang\":\"Fran\xc3\xa7" "ais\",\"1\":");
    initLang();
    const struct { const char* language; int id; const char* text; } rows[] = {
        {"ch.lang", STRING_MEDIAPLAYER, "\xe8\xa7\x86\xe9\xa2\x91"}, {"ch.lang", STRING_ASPECT_RATIO, "Aspect Ratio"},
        {"ch.lang", -1, ""},          {"ch.lang", STRING_MAX, "wrongbeef"}, {"CH.lang", STRING_MEDIAPLAYER, "Video"},
        {"de.lang", STRING_OK, "Gut"}, {"de_long.lang", STRING_OK, "OK"},   {"es.lang.short", STRING_OK, "OK"},
        {"fr.lang", STRING_OK, "OK"},  {"xx.lang", STRING_OK, "OK"},       {"", STRING_LOADING_SMALL, "LOADING..."},
    };
    for (const auto& row : rows) {
        setSystemLanguage(row.language);
        EXPECT_STREQ(getLangStr(row.id), row.text) << row.language << " " << row.id;
    }
}
