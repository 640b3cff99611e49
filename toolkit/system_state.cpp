#include "system_state.h"

#include <cjson/cJSON.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#include <string>

#include "platform/fileutil.h"
#include "lang.h"
#include "platform/logger.h"
#include "platform/device_paths.h"

KeyShmInfo gShmInfo;
char* gStoreUrl = nullptr;

namespace {

char sTimeZone[256];

enum Rule {
    RULE_RANGE,         // 0..max compared as unsigned, else the default
    RULE_FLAG,          // nonzero becomes 1
    RULE_FLAG_IF_SET,   // as RULE_FLAG, but an absent key leaves the slot alone
    RULE_NON_NEGATIVE,  // negative becomes 0
    RULE_AS_IS,
    RULE_DISPLAY,       // a display colour attribute file
    RULE_LANGUAGE,
    RULE_THEME,
    RULE_STORE_URL,
    RULE_TIME_ZONE,
};

struct DisplayAttr {
    const char* file;   // inside the display attribute folder
    int lo, hi;         // the setting is clamped to lo..hi
    int offset, scale;  // then written as (value + offset) * scale
    int fallback;       // written when the settings file is unusable
};

const DisplayAttr kColorTemperature = {"color_temperature", 0, 20, -10, 5, 0};
const DisplayAttr kColorBrightness = {"enhance_bright", 1, 10, 0, 10, 50};
const DisplayAttr kColorContrast = {"enhance_contrast", 1, 10, 0, 10, 50};
const DisplayAttr kColorSaturation = {"enhance_saturation", 0, 10, 0, 10, 50};

struct Setting {
    const char* key;
    Rule rule;
    int slot;  // key shared-memory slot of the slot rules
    int max;   // upper bound of RULE_RANGE
    int def;   // slot value when the key is absent or the file unusable
    const DisplayAttr* attr;
};

// Applied in this order; with an unusable file the last two slots written are
// "bconfirm" and then "osdshortcut".
const Setting kSettings[] = {
    {"vol", RULE_RANGE, MONITOR_VOLUME, 20, 14, nullptr},
    {"keymap", RULE_RANGE, MONITOR_KEYMAP, 1, 0, nullptr},
    {"mute", RULE_FLAG, MONITOR_MUTE, 0, 0, nullptr},
    {"bgmvol", RULE_RANGE, MONITOR_BGM_VOLUME, 20, 10, nullptr},
    {"brightness", RULE_RANGE, MONITOR_BRIGHTNESS, 10, 6, nullptr},
    {"language", RULE_LANGUAGE, -1, 0, 0, nullptr},
    {"theme", RULE_THEME, -1, 0, 0, nullptr},
    {"netplay", RULE_FLAG, MONITOR_NETPLAY_MODE, 0, 0, nullptr},
    {"wifi", RULE_FLAG_IF_SET, MONITOR_WIFI_SWITCH, 0, 0, nullptr},
    {"hostap", RULE_FLAG_IF_SET, MONITOR_HOSTAP_SWITCH, 0, 0, nullptr},
    {"bluetooth", RULE_FLAG_IF_SET, MONITOR_BLUETOOTH_SWITCH, 0, 0, nullptr},
    {"cpufreq", RULE_NON_NEGATIVE, MONITOR_CPU_FREQ, 0, 0, nullptr},
    {"ledswitch", RULE_FLAG, MONITOR_LED_SWITCH, 0, 1, nullptr},
    {"ledvalue", RULE_AS_IS, MONITOR_LED_BRIGHTNESS, 0, 4, nullptr},
    {"menustylel1", RULE_AS_IS, MONITOR_MENULIST_STYLE_L1, 0, 1, nullptr},
    {"menustylel2", RULE_AS_IS, MONITOR_MENULIST_STYLE_L2, 0, 0, nullptr},
    {"rumblelevel", RULE_RANGE, MONITOR_RUMBLE_LEVEL, 5, 4, nullptr},
    {"dimtime", RULE_AS_IS, MONITOR_DIM_TIME, 0, 300, nullptr},
    {"storeurl", RULE_STORE_URL, -1, 0, 0, nullptr},
    {"timezone", RULE_TIME_ZONE, -1, 0, 0, nullptr},
    {"colortemperature", RULE_DISPLAY, -1, 0, 0, &kColorTemperature},
    {"colorbrightness", RULE_DISPLAY, -1, 0, 0, &kColorBrightness},
    {"colorcontrast", RULE_DISPLAY, -1, 0, 0, &kColorContrast},
    {"colorsaturation", RULE_DISPLAY, -1, 0, 0, &kColorSaturation},
    {"bconfirm", RULE_FLAG, MONITOR_B_CONFIRM, 0, 0, nullptr},
    {"osdshortcut", RULE_AS_IS, MONITOR_OSD_SHORTCUT, 0, 0, nullptr},
};

const struct {
    const char* file;
    const char* lang;
} kLangEnv[] = {
    {"en.lang", "en_US.UTF8"}, {"ch.lang", "zh_CN.UTF8"}, {"es.lang", "es_ES.UTF8"},
    {"pt.lang", "pt_BR.UTF8"}, {"jp.lang", "ja_JP.UTF8"}, {"ko.lang", "ko_KR.UTF8"},
};

int slotValue(const Setting& s, int v) {
    switch (s.rule) {
    case RULE_RANGE: return (unsigned)v > (unsigned)s.max ? s.def : v;
    case RULE_FLAG:
    case RULE_FLAG_IF_SET: return v != 0 ? 1 : 0;
    case RULE_NON_NEGATIVE: return v < 0 ? 0 : v;
    default: return v;
    }
}

// Off the device the attribute folder does not exist, so a file that cannot
// be opened is skipped without a word.
void writeDisplayAttr(const DisplayAttr& attr, int value) {
    std::string path = std::string(devicePath(DEVICE_PATH_DISP_ATTR_DIR)) + attr.file;
    FILE* f = fopen(path.c_str(), "w");
    if (!f) return;
    fprintf(f, "%d", value);
    fclose(f);
}

void applyLanguage(const char* file) {
    setSystemLanguage(file);
    for (const auto& entry : kLangEnv) {
        if (strcasecmp(file, entry.file) == 0) {
            setenv("LANG", entry.lang, 1);
            return;
        }
    }
}

// `doc` is null when the settings file is unusable: every slot and attribute
// then takes its default.
void applySetting(const Setting& s, const cJSON* doc, KeyShmInfo* shm, char** theme) {
    const cJSON* item = doc ? cJSON_GetObjectItemCaseSensitive(doc, s.key) : nullptr;
    const bool isNumber = cJSON_IsNumber(item);
    const char* text = cJSON_IsString(item) ? item->valuestring : nullptr;
    switch (s.rule) {
    case RULE_DISPLAY:
        if (!doc) {
            writeDisplayAttr(*s.attr, s.attr->fallback);
        } else if (isNumber) {
            int v = item->valueint < s.attr->lo   ? s.attr->lo
                    : item->valueint > s.attr->hi ? s.attr->hi
                                                  : item->valueint;
            writeDisplayAttr(*s.attr, (v + s.attr->offset) * s.attr->scale);
        }
        break;
    case RULE_LANGUAGE:
        if (text) applyLanguage(text);
        break;
    case RULE_THEME:
        if (doc && theme) *theme = text && access(text, F_OK) == 0 ? strdup(text) : nullptr;
        break;
    case RULE_STORE_URL:
        free(gStoreUrl);
        gStoreUrl = text ? strdup(text) : nullptr;
        break;
    case RULE_TIME_ZONE:
        snprintf(sTimeZone, sizeof sTimeZone, "%s", text ? text : "");
        break;
    case RULE_FLAG_IF_SET:
        if (doc && !isNumber) break;
        [[fallthrough]];
    default:
        SetKeyShm(shm, s.slot, isNumber ? slotValue(s, item->valueint) : s.def);
        break;
    }
}

}  // namespace

void loadSystemState(void* shm, char** theme) {
    const char* path = devicePath(DEVICE_PATH_SYSTEM_CONFIG);
    KeyShmInfo* info = static_cast<KeyShmInfo*>(shm);  // not owned
    // A FIFO or device put there must not hold up the start.
    FILE* f = openRegularFile(path);
    char* text = nullptr;  // owned, from loadContent
    cJSON* doc = nullptr;  // owned
    if (f && loadContent(path, f, &text) == 0) doc = cJSON_Parse(text);
    if (doc && !cJSON_IsObject(doc)) {
        cJSON_Delete(doc);
        doc = nullptr;
    }
    if (!doc) tprintf("system settings %s unusable, using defaults\n", path);
    for (const Setting& s : kSettings) applySetting(s, doc, info, theme);
    cJSON_Delete(doc);
    free(text);
    if (f) fclose(f);
}

const char* getSystemTimeZone() { return sTimeZone; }
