#include "watch_thread.h"

#include <cjson/cJSON.h>
#include <errno.h>
#include <pthread.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "kovani_player.h"
#include "platform/device_paths.h"
#include "platform/fileutil.h"
#include "platform/logger.h"

namespace {

bool sWatchThreadRun = false;
bool sWatchThreadAlive = false;  // lets stop_watch_thread() wait for the end
pthread_mutex_t sWatchLock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t sWatchCond = PTHREAD_COND_INITIALIZER;
// Static so that a cycle allocates nothing but the parsed documents.
char sWatchBuf[1024];

// Reads one JSON file into sWatchBuf; null when missing, cut or broken.
cJSON* readJson(const char* path) {
    int n = fileToMem(path, sWatchBuf, sizeof sWatchBuf - 1);
    sWatchBuf[n] = '\0';
    return cJSON_Parse(sWatchBuf);
}

void takeInt(const cJSON* doc, const char* key, int* value) {
    const cJSON* item = cJSON_GetObjectItemCaseSensitive(doc, key);
    if (cJSON_IsNumber(item)) *value = item->valueint;
}

// Returns false when the run flag was cleared; the caller ends the thread.
bool waitCycle() {
    pthread_mutex_lock(&sWatchLock);
    while (sWatchThreadRun) {
        struct timespec now;
        if (clock_gettime(CLOCK_REALTIME, &now) != 0) {
            tprintf("keymon clock_gettime error %d: %s", errno, strerror(errno));
            pthread_mutex_unlock(&sWatchLock);
            usleep(10 * 1000);
            pthread_mutex_lock(&sWatchLock);
            continue;
        }
        now.tv_nsec += 500 * 1000 * 1000;
        if (now.tv_nsec >= 1000 * 1000 * 1000) {
            now.tv_sec += 1;
            now.tv_nsec -= 1000 * 1000 * 1000;
        }
        pthread_cond_timedwait(&sWatchCond, &sWatchLock, &now);
        break;
    }
    const bool run = sWatchThreadRun;
    pthread_mutex_unlock(&sWatchLock);
    return run;
}

}  // namespace

void* watch_thread(void* arg) {
    KovaniPlayer* player = static_cast<KovaniPlayer*>(arg);
    // Kept across cycles: a key missing from one read keeps its last value.
    bool completed = false;
    int duration = 0, position = 0, volume = 0, audioTrack = 0;
    int width = 0, height = 0, streams = 0;

    while (waitCycle()) {
        if (cJSON* status = readJson(devicePath(DEVICE_PATH_PLAYER_STATUS))) {
            const cJSON* state = cJSON_GetObjectItemCaseSensitive(status, "status");
            if (cJSON_IsString(state)) completed = strcmp(state->valuestring, "completed") == 0;
            takeInt(status, "duration", &duration);
            takeInt(status, "position", &position);
            takeInt(status, "volume", &volume);
            takeInt(status, "audiotrack", &audioTrack);
            cJSON_Delete(status);
            player->playNotifyer(completed, duration, position, volume, audioTrack);
        }
        if (cJSON* info = readJson(devicePath(DEVICE_PATH_PLAYER_INFO))) {
            takeInt(info, "width", &width);
            takeInt(info, "height", &height);
            takeInt(info, "audiostreamcount", &streams);
            cJSON_Delete(info);
            player->infoNotifyer(width, height, streams);
        }
    }
    tprintf("watch_thread quit\n");
    pthread_mutex_lock(&sWatchLock);
    sWatchThreadAlive = false;
    pthread_cond_broadcast(&sWatchCond);
    pthread_mutex_unlock(&sWatchLock);
    return nullptr;
}

bool start_watch_thread(KovaniPlayer* player) {
    pthread_mutex_lock(&sWatchLock);
    if (sWatchThreadRun || sWatchThreadAlive) {
        pthread_mutex_unlock(&sWatchLock);
        return false;
    }
    tprintf("start watch thread\n");
    sWatchThreadRun = true;
    sWatchThreadAlive = true;
    pthread_t thread;
    int err = pthread_create(&thread, nullptr, watch_thread, player);
    if (err != 0) {
        sWatchThreadRun = false;
        sWatchThreadAlive = false;
        pthread_mutex_unlock(&sWatchLock);
        tprintf("create watch thread fail: %s\n", strerror(err));
        return false;
    }
    pthread_detach(thread);
    pthread_mutex_unlock(&sWatchLock);
    return true;
}

void stop_watch_thread() {
    pthread_mutex_lock(&sWatchLock);
    sWatchThreadRun = false;
    pthread_cond_broadcast(&sWatchCond);
    while (sWatchThreadAlive) pthread_cond_wait(&sWatchCond, &sWatchLock);
    pthread_mutex_unlock(&sWatchLock);
}
