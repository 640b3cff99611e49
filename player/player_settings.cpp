#include "player_settings.h"

#include <cjson/cJSON.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "app_options.h"
#include "platform/device_paths.h"
#include "platform/fileutil.h"
#include "platform/logger.h"

PLAYER_ASPECT_RATIO gPlayerAspectRatio = RATIO_DEFAULT;
PLAYER_ROTATION gPlayerRotation = VIDEO_ROTATE_DEGREE_0;
PLAYER_SPEED gPlayerSpeed = VIDEO_SPEED_1;
int gAudioTrack = 0;

namespace {

// The integer value of a number member within [lo, hi], else `fallback`.
int numberInRange(const cJSON* doc, const char* key, int lo, int hi, int fallback) {
    const cJSON* item = cJSON_GetObjectItemCaseSensitive(doc, key);
    if (!cJSON_IsNumber(item) || item->valueint < lo || item->valueint > hi) return fallback;
    return item->valueint;
}

bool writeAll(int fd, const char* text, size_t len) {
    while (len > 0) {
        ssize_t n = write(fd, text, len);
        if (n <= 0) return false;
        text += n;
        len -= (size_t)n;
    }
    return true;
}

// The settings as formatted JSON, or null when the document cannot be built.
char* printSettings() {
    cJSON* doc = cJSON_CreateObject();
    cJSON* ratio = cJSON_CreateNumber(gPlayerAspectRatio);
    cJSON* rotation = cJSON_CreateNumber(gPlayerRotation);
    cJSON* speed = cJSON_CreateNumber(gPlayerSpeed);
    if (!doc || !ratio || !rotation || !speed) {
        cJSON_Delete(doc);
        cJSON_Delete(ratio);
        cJSON_Delete(rotation);
        cJSON_Delete(speed);
        return nullptr;
    }
    cJSON_AddItemToObject(doc, "ratio", ratio);
    cJSON_AddItemToObject(doc, "rotation", rotation);
    cJSON_AddItemToObject(doc, "speed", speed);
    if (!gSavedDir.empty()) cJSON_AddStringToObject(doc, "dir", gSavedDir.c_str());
    if (gAudioTrack >= 1) cJSON_AddNumberToObject(doc, "audiotrack", gAudioTrack);
    char* text = cJSON_Print(doc);
    cJSON_Delete(doc);
    return text;
}

}  // namespace

int loadPlayerConfig() {
    gPlayerAspectRatio = RATIO_DEFAULT;
    gPlayerRotation = VIDEO_ROTATE_DEGREE_0;
    gPlayerSpeed = VIDEO_SPEED_1;
    const char* path = devicePath(DEVICE_PATH_PLAYER_CONFIG);
    // A FIFO or device put there must not hold up the start.
    FILE* f = openRegularFile(path);
    if (!f) return -1;
    char* text = nullptr;
    int result = -1;
    if (loadContent(path, f, &text) == 0) {
        if (cJSON* doc = cJSON_Parse(text)) {
            gPlayerAspectRatio = (PLAYER_ASPECT_RATIO)numberInRange(doc, "ratio", 0, 2, RATIO_DEFAULT);
            gPlayerRotation = (PLAYER_ROTATION)numberInRange(doc, "rotation", 0, 3, VIDEO_ROTATE_DEGREE_0);
            gPlayerSpeed = (PLAYER_SPEED)numberInRange(doc, "speed", 0, 8, VIDEO_SPEED_1);
            const cJSON* dir = cJSON_GetObjectItemCaseSensitive(doc, "dir");
            // No folder path is that long; the list would open the top folder.
            if (cJSON_IsString(dir) && strlen(dir->valuestring) >= PATH_MAX)
                tprintf("player settings: a folder of %zu bytes, ignored\n", strlen(dir->valuestring));
            else if (cJSON_IsString(dir))
                gSavedDir = dir->valuestring;
            const cJSON* track = cJSON_GetObjectItemCaseSensitive(doc, "audiotrack");
            if (cJSON_IsNumber(track)) gAudioTrack = track->valueint;
            cJSON_Delete(doc);
            result = 0;
        } else {
            tprintf("player settings %s do not parse, using defaults\n", path);
        }
    }
    free(text);
    fclose(f);
    return result;
}

int savePlayerConfig() {
    const std::string path = devicePath(DEVICE_PATH_PLAYER_CONFIG);
    const std::string tmp = path + ".tmp";
    int fd = open(tmp.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0755);
    tprintf("savePlayerConfig %s %d\n", path.c_str(), fd);
    if (fd < 0) return 0;
    char* text = printSettings();
    bool ok = text && writeAll(fd, text, strlen(text)) && fsync(fd) == 0;
    free(text);
    close(fd);
    if (ok && rename(tmp.c_str(), path.c_str()) != 0) {
        tprintf("savePlayerConfig rename to %s failed\n", path.c_str());
        ok = false;
    }
    if (!ok) unlink(tmp.c_str());
    sync();
    return 0;
}
