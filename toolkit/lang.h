#pragma once

#include <map>
#include <string>
#include <vector>

// Every text the system shows is looked up by id. Ids below STRING_SHARED_MAX
// are the toolkit's; the application appends its own (initDefLang).
enum {
    STRING_CANCEL = 0,
    STRING_OK = 1,
    STRING_LOADING = 2,
    STRING_LOADING_SMALL = 3,
    STRING_OPEN = 4,
    STRING_BACK = 5,
    STRING_NAV = 6,
    STRING_MENU = 7,
    STRING_SHARED_MAX = 8
};

// One loaded language file.
struct LanguageStrs {
    std::string file;                 // "en.lang": the key the language is chosen by
    std::string lang;                 // display name ("English")
    std::string icon;                 // "skin/" + icon name, or ""
    std::map<int, std::string> strings;  // one text per id
};

// The built-in English table, indexed by id; its length is the id count.
extern std::vector<std::string> gDefaultStringList;

// Loads "./lang" (writing "./lang/en.lang" from the built-in table first when
// it is missing). Call once, after the system settings named the language;
// a second call replaces the languages loaded by the first.
void initLang();
// Loads one language file into `out`: every id of the built-in table gets the
// file's text or the built-in one. False (and `out` unusable) on failure.
bool readLangFile(const char* path, LanguageStrs& out);
// Text of `id` in the current language: "" for a negative id, "wrongbeef"
// beyond the table, the built-in text where the language lacks one. Cheap
// enough for every frame; the text lives as long as the loaded tables.
const char* getLangStr(int id);

// The chosen language file name ("ch.lang"); "" or null means English.
// Copies at most 63 characters. May be called before or after initLang.
void setSystemLanguage(const char* file);
const char* getSystemLanguage();
