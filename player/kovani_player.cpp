#include "kovani_player.h"

#include "platform/device_paths.h"
#include "platform/logger.h"
#include "platform/sysutil.h"

namespace {

// The shell's ">" truncates, so the command file holds only the last command.
std::string commandLine(const std::string& echoArgs) {
    return "echo " + echoArgs + " > " + shellQuote(devicePath(DEVICE_PATH_PLAYER_CMD));
}

}  // namespace

KovaniPlayer::KovaniPlayer(KovaniPlayerHandler* handler, DecoderShell* shell)
    : mComplete(false),
      mWidth(0),
      mHeight(0),
      mAudioTrackNum(0),
      mHandler(handler),
      mDurationMS(0),
      mVolume(0),
      mAudioTrack(0),
      mPositionMS(0),
      mCompletedRun(-1),
      mShell(shell),
      mWatcher(&mRun, shell, this),
      mWorker(shell, &mRun, [this](int generation) { onDecoderLost(generation); }) {}

KovaniPlayer::~KovaniPlayer() {
    // The worker's destructor runs this stop before it joins; the watcher is
    // stopped first so that it reports nothing about the dying decoder.
    mWatcher.stop();
    stop();
}

int KovaniPlayer::init() { return 0; }

int KovaniPlayer::setUrl(const char* url) {
    mUrl = url ? url : "";
    return 0;
}

const char* KovaniPlayer::getUrl() const { return mUrl.empty() ? nullptr : mUrl.c_str(); }

int KovaniPlayer::prepare() {
    if (mUrl.empty()) return 0;
    const int generation = mRun.begin();
    {
        std::lock_guard<std::mutex> hold(mReportLock);
        mComplete = false;
        mDurationMS = 0;
        mPositionMS = 0;
    }
    // Quoted as one shell word so that no file name on a card can run
    // anything: the decoder receives exactly the path.
    mWorker.post({DecoderJob::START, generation, "avworker " + shellQuote(mUrl) + " &", false, false});
    mWatcher.start();
    return 0;
}

bool KovaniPlayer::sendCommand(const std::string& echoArgs, bool isPlay, bool logAsRect) {
    const DecoderRun::Snapshot run = mRun.snapshot();
    if (run.state != DecoderRun::STARTING && run.state != DecoderRun::RUNNING) return false;
    mWorker.post({DecoderJob::COMMAND, run.generation, commandLine(echoArgs), isPlay, logAsRect});
    return true;
}

int KovaniPlayer::play() {
    if (sendCommand("play", true, false)) return 0;
    tprintf("avworker not exist, can not play\n");
    return -1;
}

int KovaniPlayer::pause() {
    sendCommand("pause", false, false);
    return 0;
}

int KovaniPlayer::stop() {
    const int generation = mRun.end();
    mWorker.post({DecoderJob::STOP, generation, "", false, false});
    return 0;
}

void KovaniPlayer::stopLeftover() {
    const int generation = mRun.end();
    mWorker.post({DecoderJob::STOP_LEFTOVER, generation, "", false, false});
}

void KovaniPlayer::reset() { stop(); }

int KovaniPlayer::seekTo(int) { return -1; }

int KovaniPlayer::getDurationMS() const { return mDurationMS; }

int KovaniPlayer::getPositionMS() const { return mPositionMS; }

void KovaniPlayer::switchAudio(int track) {
    sendCommand("\"audiotrack " + std::to_string(track) + "\"", false, false);
}

void KovaniPlayer::setVolume(int volume) {
    sendCommand("\"volume " + std::to_string(volume) + "\"", false, false);
}

int KovaniPlayer::getVolume() const { return mVolume; }

void KovaniPlayer::setLoop(bool) {}

void KovaniPlayer::scaleDown(int) {}

void KovaniPlayer::fastForward() { sendCommand("fastforward", false, false); }

void KovaniPlayer::fastBackward() { sendCommand("rewind", false, false); }

void KovaniPlayer::setCropRect(int, int, int, int) {}

void KovaniPlayer::setDisplayRect(int x, int y, int w, int h) {
    sendCommand("\"win " + std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(w) + " " +
                    std::to_string(h) + "\"",
                false, true);
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
    report(mRun.snapshot().generation, completed, durationMS, positionMS, volume, audioTrack);
    return 0;
}

void KovaniPlayer::report(int generation, bool completed, int durationMS, int positionMS, int volume,
                          int audioTrack) {
    bool was = false, announce = false, changed = false;
    {
        std::lock_guard<std::mutex> hold(mReportLock);
        // A report read just before a new start or a stop belongs to the old decoder.
        if (generation != mRun.snapshot().generation) return;
        changed = mDurationMS != durationMS || mPositionMS != positionMS;
        mDurationMS = durationMS;
        mPositionMS = positionMS;
        mVolume = volume;
        mAudioTrack = audioTrack;
        was = mComplete;
        announce = mHandler && completed && !was;
        if (announce) mCompletedRun = generation;
        // Everything is in place before the owner hears of it: the owner may
        // start the next video at once.
        mComplete = completed;
    }
    if (announce) {
        tprintf("complete %d->%d\n", was, completed);
        mHandler->onPlayComplete();
    }
    if (changed && mHandler) mHandler->onReport();
}

int KovaniPlayer::infoNotifyer(int width, int height, int audioTrackNum) {
    mWidth = width;
    mHeight = height;
    mAudioTrackNum = audioTrackNum;
    return 0;
}

bool KovaniPlayer::takeCompletion() {
    std::lock_guard<std::mutex> hold(mReportLock);
    const bool current = mCompletedRun >= 0 && mCompletedRun == mRun.snapshot().generation;
    mCompletedRun = -1;
    return current;
}

void KovaniPlayer::onStatus(int generation, bool completed, int durationMS, int positionMS, int volume,
                            int audioTrack) {
    report(generation, completed, durationMS, positionMS, volume, audioTrack);
}

void KovaniPlayer::onInfo(int generation, int width, int height, int audioTrackNum) {
    if (generation != mRun.snapshot().generation) return;
    infoNotifyer(width, height, audioTrackNum);
}

void KovaniPlayer::onDecoderLost(int) {
    if (mHandler) mHandler->onDecoderExit();
}
