#include "mpv_decoder.h"

#include <cjson/cJSON.h>
#include <errno.h>
#include <math.h>
#include <mpv/client.h>
#include <mpv/render.h>
#include <stdio.h>
#include <string.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "decoder_command.h"
#include "platform/device_paths.h"
#include "platform/logger.h"

namespace {

// One fast-forward or rewind step, in seconds.
const char kStepForward[] = "10";
const char kStepBack[] = "-10";

int64_t intProperty(mpv_handle* mpv, const char* name, int64_t fallback) {
    int64_t value = 0;
    return mpv_get_property(mpv, name, MPV_FORMAT_INT64, &value) == 0 ? value : fallback;
}

double doubleProperty(mpv_handle* mpv, const char* name, double fallback) {
    double value = 0;
    return mpv_get_property(mpv, name, MPV_FORMAT_DOUBLE, &value) == 0 ? value : fallback;
}

// Seconds from mpv as whole milliseconds; 0 while unknown (nothing loaded yet).
int msProperty(mpv_handle* mpv, const char* name) {
    return (int)llround(doubleProperty(mpv, name, 0) * 1000.0);
}

bool flagProperty(mpv_handle* mpv, const char* name) {
    int flag = 0;
    return mpv_get_property(mpv, name, MPV_FORMAT_FLAG, &flag) == 0 && flag;
}

// Written beside the target and renamed over it, so that the player's watcher
// never reads half a file.
int writeJsonAtomic(const char* path, cJSON* doc) {
    char* text = cJSON_PrintUnformatted(doc);
    if (!text) return -1;
    std::string tmp = std::string(path) + ".tmp";
    int rc = -1;
    if (FILE* f = fopen(tmp.c_str(), "w")) {
        const bool written = fputs(text, f) >= 0;
        if (fclose(f) == 0 && written && rename(tmp.c_str(), path) == 0) rc = 0;
    }
    cJSON_free(text);
    return rc;
}

}  // namespace

MpvDecoder::MpvDecoder()
    : mMpv(nullptr),
      mRender(nullptr),
      mRenderFd(-1),
      mRect{0, 0, 0, 0},
      mLoadFailed(false),
      mReportFailing(false),
      mDrawFailing(false) {}

MpvDecoder::~MpvDecoder() {
    // A stopped decoder leaves no picture behind.
    mPlane.clear();
    mPlane.remove();
    // The render context must go before the core it belongs to.
    if (mRender) mpv_render_context_free(mRender);
    if (mMpv) mpv_terminate_destroy(mMpv);
    if (mRenderFd >= 0) close(mRenderFd);
}

void MpvDecoder::onRenderUpdate(void* self) {
    // On one of mpv's threads, which must not call back into mpv: only
    // wake the main loop.
    const uint64_t one = 1;
    if (write(static_cast<MpvDecoder*>(self)->mRenderFd, &one, sizeof one) < 0) {
        // Full counter: a wake-up is pending anyway.
    }
}

int MpvDecoder::open(const char* file, bool sound) {
    mMpv = mpv_create();
    if (!mMpv) {
        tprintf("avworker: mpv_create failed\n");
        return -1;
    }
    // The player sends "play" right after it has started the decoder and
    // placed its picture, so the file waits paused until then.
    mpv_set_option_string(mMpv, "pause", "yes");
    // At the end the file stays loaded: position and duration stay readable,
    // "completed" can be reported, and the process runs on until it is killed.
    mpv_set_option_string(mMpv, "keep-open", "yes");
    // The picture goes through the render API into the video plane; no
    // window of our own.
    mpv_set_option_string(mMpv, "vo", "libmpv");
    if (!sound) mpv_set_option_string(mMpv, "ao", "null");
    // Keys and mouse belong to the player; the picture only shows.
    mpv_set_option_string(mMpv, "osc", "no");
    mpv_set_option_string(mMpv, "input-default-bindings", "no");
    mpv_set_option_string(mMpv, "osd-level", "0");
    // Errors only: warnings can come once per frame.
    mpv_request_log_messages(mMpv, "error");
    int err = mpv_initialize(mMpv);
    if (err < 0) {
        tprintf("avworker: mpv_initialize failed: %s\n", mpv_error_string(err));
        return -1;
    }
    mRenderFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (mRenderFd < 0) {
        tprintf("avworker: eventfd failed: %s\n", strerror(errno));
        return -1;
    }
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_API_TYPE, const_cast<char*>(MPV_RENDER_API_TYPE_SW)},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    err = mpv_render_context_create(&mRender, mMpv, params);
    if (err < 0) {
        tprintf("avworker: mpv_render_context_create failed: %s\n", mpv_error_string(err));
        mRender = nullptr;
        return -1;
    }
    mpv_render_context_set_update_callback(mRender, onRenderUpdate, this);
    // Without a plane the file still plays and reports; only nothing shows.
    mPlane.create();
    const char* load[] = {"loadfile", file, nullptr};
    err = mpv_command(mMpv, load);
    if (err < 0) {
        tprintf("avworker: loadfile %s failed: %s\n", file, mpv_error_string(err));
        mLoadFailed = true;
    }
    return 0;
}

void MpvDecoder::draw() {
    // Before the first "win" the picture has nowhere to go yet, but mpv
    // still wants each frame taken.
    static uint8_t scratch[16 * 16 * 4] __attribute__((aligned(64)));
    int size[2] = {16, 16};
    size_t stride = 16 * 4;
    uint8_t* pixels = scratch;
    if (mRect.w > 0) {
        pixels = mPlane.beginFrame(mRect, &stride);
        if (pixels) {
            size[0] = mRect.w;
            size[1] = mRect.h;
        } else {
            pixels = scratch;
        }
    }
    // Blue, green, red, unused: the plane's byte order.
    char format[] = "bgr0";
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_SW_SIZE, size},
        {MPV_RENDER_PARAM_SW_FORMAT, format},
        {MPV_RENDER_PARAM_SW_STRIDE, &stride},
        {MPV_RENDER_PARAM_SW_POINTER, pixels},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    const int err = mpv_render_context_render(mRender, params);
    if (err < 0 && !mDrawFailing) tprintf("avworker: render failed: %s\n", mpv_error_string(err));
    mDrawFailing = err < 0;
    if (pixels != scratch) mPlane.endFrame();
}

void MpvDecoder::drawPending() {
    uint64_t count = 0;
    if (read(mRenderFd, &count, sizeof count) < 0) {
        // Nothing pending: a wake-up already taken.
    }
    if (mRender && (mpv_render_context_update(mRender) & MPV_RENDER_UPDATE_FRAME)) draw();
}

void MpvDecoder::apply(const DecoderCommand& command) {
    int err = 0;
    switch (command.type) {
        case DECODER_COMMAND_PLAY:
        case DECODER_COMMAND_PAUSE: {
            int pause = command.type == DECODER_COMMAND_PAUSE;
            err = mpv_set_property(mMpv, "pause", MPV_FORMAT_FLAG, &pause);
            break;
        }
        case DECODER_COMMAND_FORWARD:
        case DECODER_COMMAND_REWIND: {
            const char* by = command.type == DECODER_COMMAND_FORWARD ? kStepForward : kStepBack;
            const char* seek[] = {"seek", by, "relative+exact", nullptr};
            err = mpv_command(mMpv, seek);
            break;
        }
        case DECODER_COMMAND_AUDIO_TRACK: {
            if (command.args[0] >= audioTrackCount()) {
                tprintf("avworker: no audio track %d\n", command.args[0]);
                return;
            }
            // The player counts tracks from 0, mpv from 1.
            int64_t aid = command.args[0] + 1;
            err = mpv_set_property(mMpv, "aid", MPV_FORMAT_INT64, &aid);
            break;
        }
        case DECODER_COMMAND_VOLUME: {
            double volume = command.args[0];
            err = mpv_set_property(mMpv, "volume", MPV_FORMAT_DOUBLE, &volume);
            break;
        }
        case DECODER_COMMAND_WINDOW: {
            // The parser keeps w and h positive; the rest is clipped to the
            // plane, so a rectangle reaching past the screen shows its part.
            const int x0 = command.args[0] < 0 ? 0 : command.args[0];
            const int y0 = command.args[1] < 0 ? 0 : command.args[1];
            const long x1 = std::min((long)command.args[0] + command.args[2], (long)kVideoPlaneWidth);
            const long y1 = std::min((long)command.args[1] + command.args[3], (long)kVideoPlaneHeight);
            if (x1 <= x0 || y1 <= y0) {
                tprintf("avworker: window %d %d %d %d lies off the screen\n", command.args[0],
                        command.args[1], command.args[2], command.args[3]);
                mRect = VideoRect{0, 0, 0, 0};
                mPlane.clear();
                return;
            }
            mRect = VideoRect{x0, y0, (int)(x1 - x0), (int)(y1 - y0)};
            // A paused picture moves too: the current frame is drawn again.
            if (mRender) draw();
            return;
        }
    }
    if (err < 0) tprintf("avworker: the command failed: %s\n", mpv_error_string(err));
}

bool MpvDecoder::handleEvents() {
    while (true) {
        mpv_event* event = mpv_wait_event(mMpv, 0);
        switch (event->event_id) {
            case MPV_EVENT_NONE:
                return true;
            case MPV_EVENT_SHUTDOWN:
                return false;
            case MPV_EVENT_LOG_MESSAGE: {
                const mpv_event_log_message* msg = (const mpv_event_log_message*)event->data;
                tprintf("avworker: mpv %s: %s", msg->prefix, msg->text);
                break;
            }
            case MPV_EVENT_END_FILE: {
                // With keep-open a file that plays to its end stays loaded, so
                // an end of file here means it could not be played.
                const mpv_event_end_file* end = (const mpv_event_end_file*)event->data;
                if (end->reason == MPV_END_FILE_REASON_ERROR) {
                    tprintf("avworker: cannot play: %s\n", mpv_error_string(end->error));
                    mLoadFailed = true;
                }
                break;
            }
            default:
                break;
        }
    }
}

const char* MpvDecoder::stateWord() const {
    if (mLoadFailed) return "error";
    if (flagProperty(mMpv, "eof-reached")) return "completed";
    return flagProperty(mMpv, "pause") ? "paused" : "playing";
}

int MpvDecoder::audioTrackCount() const {
    const int64_t tracks = intProperty(mMpv, "track-list/count", 0);
    int audio = 0;
    for (int64_t i = 0; i < tracks; i++) {
        char name[64];
        snprintf(name, sizeof name, "track-list/%d/type", (int)i);
        char* type = mpv_get_property_string(mMpv, name);
        if (type && strcmp(type, "audio") == 0) audio++;
        mpv_free(type);
    }
    return audio;
}

int MpvDecoder::writeReports() {
    // Also while paused: the plane's picture stays, its decoder still runs.
    mPlane.heartbeat();
    // A file without sound has no selected track; it reports track 0.
    const int64_t aid = intProperty(mMpv, "current-tracks/audio/id", 1);
    cJSON* status = cJSON_CreateObject();
    cJSON_AddStringToObject(status, "status", stateWord());
    cJSON_AddNumberToObject(status, "duration", msProperty(mMpv, "duration"));
    cJSON_AddNumberToObject(status, "position", msProperty(mMpv, "time-pos"));
    cJSON_AddNumberToObject(status, "volume", (double)lround(doubleProperty(mMpv, "volume", 0)));
    cJSON_AddNumberToObject(status, "audiotrack", (double)(aid - 1));
    int rc = writeJsonAtomic(devicePath(DEVICE_PATH_PLAYER_STATUS), status);
    cJSON_Delete(status);

    cJSON* info = cJSON_CreateObject();
    cJSON_AddNumberToObject(info, "width", (double)intProperty(mMpv, "width", 0));
    cJSON_AddNumberToObject(info, "height", (double)intProperty(mMpv, "height", 0));
    cJSON_AddNumberToObject(info, "audiostreamcount", audioTrackCount());
    if (writeJsonAtomic(devicePath(DEVICE_PATH_PLAYER_INFO), info) != 0) rc = -1;
    cJSON_Delete(info);

    if (rc != 0 && !mReportFailing) tprintf("avworker: cannot write the status files\n");
    mReportFailing = rc != 0;
    return rc;
}
