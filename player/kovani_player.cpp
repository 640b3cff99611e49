#include "kovani_player.h"

#include <stdlib.h>
#include <unistd.h>

#include "platform/device_paths.h"
#include "platform/logger.h"
#include "platform/sysutil.h"
#include "watch_thread.h"

namespace {

const char kDecoder[] = "avworker";
const char kKillLine[] = "killall avworker";

// The shell's ">" truncates, so the command file holds only the last command.
std::string commandLine(const std::string& echoArgs) {
    return "echo " + echoArgs + " > " + shellQuote(devicePath(DEVICE_PATH_PLAYER_CMD));
}

bool decoderRunning() { return check_process_exist(kDecoder, 0) > 0; }

void killDecoder() {
    system(kKillLine);
    usleep(200 * 1000);
}

}  // namespace

KovaniPlayer::KovaniPlayer(KovaniPlayerHandler* handler)
    : mComplete(false),
      mWidth(0),
      mHeight(0),
      mAudioTrackNum(0),
      mHandler(handler),
      mDurationMS(0),
      mVolume(0),
      mAudioTrack(0),
      mPositionMS(0) {}

KovaniPlayer::~KovaniPlayer() {}

int KovaniPlayer::init() { return 0; }

int KovaniPlayer::setUrl(const char* url) {
    mUrl = url ? url : "";
    return 0;
}

const char* KovaniPlayer::getUrl() const { return mUrl.empty() ? nullptr : mUrl.c_str(); }

int KovaniPlayer::prepare() {
    if (mUrl.empty()) return 0;
    system(kKillLine);
    tprintf("killall avworker\n");
    usleep(200 * 1000);
    // Quoted as one shell word so that no file name on a card can run
    // anything: the decoder receives exactly the path.
    std::string start = std::string(kDecoder) + " " + shellQuote(mUrl) + " &";
    system(start.c_str());
    tprintf("exec cmd: %s\n", start.c_str());
    start_watch_thread(this);
    usleep(1000 * 1000);
    return 0;
}

bool KovaniPlayer::sendCommand(const std::string& echoArgs, bool logIt) {
    if (!decoderRunning()) return false;
    std::string line = commandLine(echoArgs);
    system(line.c_str());
    if (logIt) tprintf("setdisplayrect : %s\n", line.c_str());
    return true;
}

int KovaniPlayer::play() {
    if (sendCommand("play", false)) return 0;
    tprintf("avworker not exist, can not play\n");
    return -1;
}

int KovaniPlayer::pause() {
    sendCommand("pause", false);
    return 0;
}

int KovaniPlayer::stop() {
    tprintf("KovaniPlayer::stop\n");
    killDecoder();
    return 0;
}

void KovaniPlayer::reset() { stop(); }

int KovaniPlayer::seekTo(int) { return -1; }

int KovaniPlayer::getDurationMS() const { return mDurationMS; }

int KovaniPlayer::getPositionMS() const { return mPositionMS; }

void KovaniPlayer::switchAudio(int track) {
    sendCommand("\"audiotrack " + std::to_string(track) + "\"", false);
}

void KovaniPlayer::setVolume(int volume) {
    sendCommand("\"volume " + std::to_string(volume) + "\"", false);
}

int KovaniPlayer::getVolume() const { return mVolume; }

void KovaniPlayer::setLoop(bool) {}

void KovaniPlayer::scaleDown(int) {}

void KovaniPlayer::fastForward() { sendCommand("fastforward", false); }

void KovaniPlayer::fastBackward() { sendCommand("rewind", false); }

void KovaniPlayer::setCropRect(int, int, int, int) {}

void KovaniPlayer::setDisplayRect(int x, int y, int w, int h) {
    sendCommand("\"win " + std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(w) +
                    " " + std::to_string(h) + "\"",
                true);
}

void KovaniPlayer::getDisplayRect(int&, int&, int&, int&) const {}

float KovaniPlayer::getDisplayFramerate() const { return 0.0f; }

void KovaniPlayer::dumpMediaInfo() {}

int KovaniPlayer::setPlaySpeed(int) { return -1; }

int KovaniPlayer::setRotation(int) { return -1; }

bool KovaniPlayer::isComplete() const { return mComplete; }

int KovaniPlayer::getVideoWidth() const { return mWidth; }

int KovaniPlayer::getVideoHeight() const { return mHeight; }

int KovaniPlayer::getAudioTrackNum() const { return mAudioTrackNum; }

int KovaniPlayer::getAudioTrack() const { return mAudioTrack; }

int KovaniPlayer::playNotifyer(bool completed, int durationMS, int positionMS, int volume,
                               int audioTrack) {
    mDurationMS = durationMS;
    mPositionMS = positionMS;
    mVolume = volume;
    mAudioTrack = audioTrack;
    // Only the watcher writes mComplete, so read-then-store needs no lock.
    const bool was = mComplete;
    if (mHandler && completed != was && completed) {
        tprintf("complete %d->%d\n", was, completed);
        mHandler->onPlayComplete();
    }
    mComplete = completed;
    return 0;
}

int KovaniPlayer::infoNotifyer(int width, int height, int audioTrackNum) {
    mWidth = width;
    mHeight = height;
    mAudioTrackNum = audioTrackNum;
    return 0;
}
