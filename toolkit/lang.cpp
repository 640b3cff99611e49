#include "lang.h"

#include <cjson/cJSON.h>
#include <dirent.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/fileutil.h"
#include "platform/logger.h"

std::vector<std::string> gDefaultStringList = {
    "Cancel", "OK", "LOADING...", "LOADING...", "OPEN", "BACK", "NAV", "MENU",
};

namespace {

const char* const kLangDir = "./lang";
const char* const kEnglishFile = "en.lang";
const char* const kEnglishPath = "./lang/en.lang";
const char* const kEnglishTempPath = "./lang/en.lang.tmp";

std::vector<LanguageStrs> sLangStrs;  // in load order, English first
char sSystemLanguage[64];

// The current language's text per id, null where it has none. Rebuilt when the
// tables or the language change, so a lookup is one index.
std::vector<const char*> sCurrentTexts;

void selectCurrentLanguage() {
    const char* name = sSystemLanguage[0] ? sSystemLanguage : kEnglishFile;
    sCurrentTexts.assign(gDefaultStringList.size(), nullptr);
    for (const LanguageStrs& entry : sLangStrs) {
        if (entry.file != name) continue;
        for (const auto& text : entry.strings) {
            if (text.first >= 0 && (size_t)text.first < sCurrentTexts.size() &&
                !sCurrentTexts[text.first])
                sCurrentTexts[text.first] = text.second.c_str();
        }
    }
}

bool isDirectory(const char* path) {
    struct stat st;
    return stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

bool isRegularFile(const char* path) {
    struct stat st;
    return stat(path, &st) == 0 && S_ISREG(st.st_mode);
}

// Written to a temporary file first and renamed, so a crash never leaves a
// half-written en.lang that would then be kept for good.
void writeEnglishFile() {
    cJSON* doc = cJSON_CreateObject();
    cJSON_AddStringToObject(doc, "lang", "English");
    for (size_t id = 0; id < gDefaultStringList.size(); id++) {
        char key[16];
        snprintf(key, sizeof key, "%d", (int)id);
        cJSON_AddStringToObject(doc, key, gDefaultStringList[id].c_str());
    }
    char* text = cJSON_Print(doc);
    cJSON_Delete(doc);
    if (!text) {
        tprintf("print %s fail\n", kEnglishPath);
        return;
    }
    FILE* f = fopen(kEnglishTempPath, "w+");
    if (!f) {
        tprintf("open %s fail: %s\n", kEnglishTempPath, strerror(errno));
        free(text);
        return;
    }
    bool ok = fputs(text, f) >= 0 && fflush(f) == 0 && fsync(fileno(f)) == 0;
    ok = fclose(f) == 0 && ok;
    free(text);
    if (!ok || rename(kEnglishTempPath, kEnglishPath) != 0) {
        tprintf("write %s fail: %s\n", kEnglishPath, strerror(errno));
        unlink(kEnglishTempPath);
    }
}

LanguageStrs builtInEnglish() {
    LanguageStrs entry;
    entry.file = kEnglishFile;
    entry.lang = "English";
    for (size_t id = 0; id < gDefaultStringList.size(); id++)
        entry.strings[(int)id] = gDefaultStringList[id];
    return entry;
}

void addLanguage(LanguageStrs& loaded) {
    for (LanguageStrs& entry : sLangStrs) {
        if (entry.lang != loaded.lang) continue;
        entry.strings.insert(loaded.strings.begin(), loaded.strings.end());
        // Of several files with one display name the shortest name wins.
        if (entry.file.size() > loaded.file.size()) {
            entry.file = loaded.file;
            entry.lang = loaded.lang;
        }
        return;
    }
    sLangStrs.push_back(std::move(loaded));
}

void loadLangFolder() {
    DIR* dir = opendir(kLangDir);
    if (!dir) {
        tprintf("open %s fail: %s\n", kLangDir, strerror(errno));
        return;
    }
    while (struct dirent* ent = readdir(dir)) {
        const char* name = ent->d_name;
        if (strcmp(name, kEnglishFile) == 0 || strstr(name, ".short")) continue;
        std::string path = std::string(kLangDir) + "/" + name;
        if (ent->d_type != DT_REG && (ent->d_type != DT_UNKNOWN || !isRegularFile(path.c_str())))
            continue;
        LanguageStrs loaded;
        if (readLangFile(path.c_str(), loaded)) addLanguage(loaded);
    }
    closedir(dir);
}

}  // namespace

bool readLangFile(const char* path, LanguageStrs& out) {
    out.strings.clear();
    out.icon.clear();
    FILE* f = fopen(path, "r");
    char* text = nullptr;  // owned, from loadContent
    cJSON* doc = nullptr;  // owned
    bool ok = false;
    if (f) {
        tprintf("lang file %s\n", path);
        const char* slash = strrchr(path, '/');
        const char* end = nullptr;
        const cJSON* lang = nullptr;
        if (loadContent(path, f, &text) != 0) {
            tprintf("read %s content fail\n", path);
        } else if (slash) {
            out.file = slash + 1;
            doc = cJSON_ParseWithOpts(text, &end, 0);
            if (!doc) {
                tprintf("parse %s content fail:%s\n", path, end ? end : "");
            } else if (!cJSON_IsString(lang = cJSON_GetObjectItemCaseSensitive(doc, "lang"))) {
                tprintf("%s have no lang string\n", path);
            } else {
                out.lang = lang->valuestring;
                const cJSON* icon = cJSON_GetObjectItemCaseSensitive(doc, "icon");
                if (cJSON_IsString(icon)) out.icon = std::string("skin/") + icon->valuestring;
                for (size_t id = 0; id < gDefaultStringList.size(); id++) {
                    char key[16];
                    snprintf(key, sizeof key, "%d", (int)id);
                    const cJSON* item = cJSON_GetObjectItemCaseSensitive(doc, key);
                    out.strings[(int)id] =
                        cJSON_IsString(item) ? item->valuestring : gDefaultStringList[id];
                }
                ok = true;
            }
        }
        cJSON_Delete(doc);
        free(text);
        fclose(f);
    }
    tprintf("read lang file %s ok=%d\n", path, ok ? 1 : 0);
    return ok;
}

void initLang() {
    sLangStrs.clear();
    sCurrentTexts.clear();
    if (!isDirectory(kLangDir) && mkdir(kLangDir, 0777) != 0)
        tprintf("create %s fail: %s\n", kLangDir, strerror(errno));
    if (access(kEnglishPath, F_OK) != 0 && isDirectory(kLangDir)) writeEnglishFile();

    LanguageStrs english;
    if (readLangFile(kEnglishPath, english))
        sLangStrs.push_back(std::move(english));
    else
        sLangStrs.push_back(builtInEnglish());

    loadLangFolder();
    selectCurrentLanguage();
}

const char* getLangStr(int id) {
    if (id < 0) return "";
    if ((size_t)id >= gDefaultStringList.size()) return "wrongbeef";
    if ((size_t)id < sCurrentTexts.size() && sCurrentTexts[id]) return sCurrentTexts[id];
    return gDefaultStringList[id].c_str();
}

void setSystemLanguage(const char* file) {
    snprintf(sSystemLanguage, sizeof sSystemLanguage, "%s", file ? file : "");
    selectCurrentLanguage();
}

const char* getSystemLanguage() { return sSystemLanguage; }
