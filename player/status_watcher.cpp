#include "status_watcher.h"

#include <cjson/cJSON.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>

#include "decoder_run.h"
#include "decoder_shell.h"
#include "platform/device_paths.h"
#include "platform/fileutil.h"
#include "platform/logger.h"

namespace {

const long kPeriodMs = 500;
// Sane ranges for what a decoder may report.
const int kMaxVolume = 1000;
const int kMaxTrack = 255;
const int kMaxPictureSide = 16384;

void takeInt(const cJSON* doc, const char* key, int* value, int low, int high) {
    const cJSON* item = cJSON_GetObjectItemCaseSensitive(doc, key);
    if (!cJSON_IsNumber(item)) return;
    *value = std::min(std::max(item->valueint, low), high);
}

}  // namespace

StatusWatcher::StatusWatcher(DecoderRun* run, DecoderShell* shell, StatusListener* listener)
    : mRun(run), mShell(shell), mListener(listener) {
    mBuf[0] = '\0';
}

StatusWatcher::~StatusWatcher() { stop(); }

bool StatusWatcher::start() {
    if (mThread.joinable()) return false;
    tprintf("start watch thread\n");
    mStop.reset();
    mThread = std::thread([this] { loop(); });
    return true;
}

void StatusWatcher::stop() {
    if (!mThread.joinable()) return;
    mStop.set();
    mThread.join();
}

void StatusWatcher::loop() {
    while (!mStop.sleepFor(kPeriodMs)) cycle();
    tprintf("watch_thread quit\n");
}

bool StatusWatcher::readFresh(int pathId, const FileIdentity& atStart, bool* fresh) {
    FileIdentity now;
    const int n = fileToMemWithIdentity(devicePath(pathId), mBuf, sizeof mBuf - 1, &now);
    mBuf[n] = '\0';
    if (n <= 0) return false;
    // Until the file changes it is what an earlier decoder left, whatever
    // its time stamp says (the wall clock may have been stepped back).
    if (!*fresh && now == atStart) return false;
    *fresh = true;
    return true;
}

void StatusWatcher::cycle() {
    const DecoderRun::Snapshot run = mRun->snapshot();
    if (run.generation != mGeneration) {
        mGeneration = run.generation;
        mCompleted = false;
        mDuration = mPosition = mVolume = mAudioTrack = 0;
        mWidth = mHeight = mStreams = 0;
        mStatusFresh = mInfoFresh = false;
    }
    // Until the start line runs, every file there is from before it.
    if (!run.launched) return;

    if (readFresh(DEVICE_PATH_PLAYER_STATUS, run.statusAtStart, &mStatusFresh)) {
        if (cJSON* status = cJSON_Parse(mBuf)) {
            const cJSON* state = cJSON_GetObjectItemCaseSensitive(status, "status");
            if (cJSON_IsString(state)) mCompleted = strcmp(state->valuestring, "completed") == 0;
            takeInt(status, "duration", &mDuration, 0, INT32_MAX);
            takeInt(status, "position", &mPosition, 0, INT32_MAX);
            takeInt(status, "volume", &mVolume, 0, kMaxVolume);
            takeInt(status, "audiotrack", &mAudioTrack, 0, kMaxTrack);
            cJSON_Delete(status);
            // A position past the end is the end.
            if (mDuration > 0 && mPosition > mDuration) mPosition = mDuration;
            mListener->onStatus(run.generation, mCompleted, mDuration, mPosition, mVolume, mAudioTrack);
        }
    }
    if (readFresh(DEVICE_PATH_PLAYER_INFO, run.infoAtStart, &mInfoFresh)) {
        if (cJSON* info = cJSON_Parse(mBuf)) {
            takeInt(info, "width", &mWidth, 0, kMaxPictureSide);
            takeInt(info, "height", &mHeight, 0, kMaxPictureSide);
            takeInt(info, "audiostreamcount", &mStreams, 0, kMaxTrack);
            cJSON_Delete(info);
            mListener->onInfo(run.generation, mWidth, mHeight, mStreams);
        }
    }
    // After the reads, so that a decoder that reported its end and then
    // exited has its completion counted first.
    if (run.state == DecoderRun::RUNNING && !mShell->alive(run.pid) && mRun->lost(run.generation)) {
        tprintf("avworker %d exited\n", run.pid);
        mListener->onDecoderLost(run.generation);
    }
}
