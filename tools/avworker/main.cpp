// avworker: the decoder process for desktop builds. The player starts it with
// the file to play, writes commands into the command file and reads the
// status and information files twice a second; the picture goes into the
// shared video plane, which the player shows beneath its interface. SIGTERM
// (killall) ends it, and the plane goes with it.
#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/signalfd.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "command_reader.h"
#include "decoder_command.h"
#include "mpv_decoder.h"
#include "platform/device_paths.h"
#include "platform/logger.h"

namespace {

const int kReportPeriodMs = 500;

long long nowMs() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (long long)ts.tv_sec * 1000 + ts.tv_nsec / 1000000;
}

// The signals that end the decoder arrive through a descriptor in the main
// loop. They are blocked before mpv starts its threads, which inherit the
// mask, so no mpv thread is ever interrupted by them.
int openSignalFd() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGHUP);
    if (sigprocmask(SIG_BLOCK, &set, nullptr) != 0) return -1;
    return signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
}

void runCommand(const std::string& text, MpvDecoder* decoder) {
    DecoderCommand command;
    if (parseDecoderCommand(text.c_str(), &command) != 0) {
        tprintf("avworker: ignored command \"%s\"\n", text.c_str());
        return;
    }
    tprintf("avworker: command %.*s\n", (int)strcspn(text.c_str(), "\r\n"), text.c_str());
    decoder->apply(command);
}

// Sound goes to the default output only on a desktop session; tests and
// headless machines play silently.
bool hasDisplay() {
    const char* x11 = getenv("DISPLAY");
    const char* wayland = getenv("WAYLAND_DISPLAY");
    return (x11 && *x11) || (wayland && *wayland);
}

}  // namespace

int main(int argc, char* argv[]) {
    initLogger(1);
    if (argc != 2) {
        tprintf("avworker: usage: avworker FILE\n");
        return 2;
    }
    // The player hands over only the file; a test that points the device
    // paths at a folder of its own passes that folder through the environment.
    if (const char* prefix = getenv("KOVANI_PATH_PREFIX")) setDevicePathPrefix(prefix);

    const int signals = openSignalFd();
    if (signals < 0) {
        tprintf("avworker: cannot take signals: %s\n", strerror(errno));
        return 1;
    }
    // The folder belongs to the decoder: the player neither makes nor cleans it.
    std::error_code ec;
    std::filesystem::create_directories(devicePath(DEVICE_PATH_PLAYER_DIR), ec);
    if (ec) {
        tprintf("avworker: cannot make %s: %s\n", devicePath(DEVICE_PATH_PLAYER_DIR),
                ec.message().c_str());
        return 1;
    }
    // Reading starts before mpv loads, so a command sent early is not lost.
    CommandReader commands;
    if (commands.start(devicePath(DEVICE_PATH_PLAYER_CMD)) != 0) return 1;

    MpvDecoder decoder;
    if (decoder.open(argv[1], hasDisplay()) != 0) return 1;
    tprintf("avworker: playing %s\n", argv[1]);
    // Replaces whatever an earlier decoder left, such as its "completed".
    decoder.writeReports();

    struct pollfd fds[3] = {{signals, POLLIN, 0}, {commands.readyFd(), POLLIN, 0}, {decoder.renderFd(), POLLIN, 0}};
    long long nextReport = nowMs() + kReportPeriodMs;
    int status = 0;
    while (true) {
        const long long wait = nextReport - nowMs();
        fds[0].revents = fds[1].revents = fds[2].revents = 0;
        if (poll(fds, 3, wait > 0 ? (int)wait : 0) < 0 && errno != EINTR) {
            tprintf("avworker: poll failed: %s\n", strerror(errno));
            break;
        }
        if (fds[0].revents) {
            struct signalfd_siginfo info = {};
            if (read(signals, &info, sizeof info) == (ssize_t)sizeof info)
                tprintf("avworker: signal %u from process %u\n", info.ssi_signo, info.ssi_pid);
            break;
        }
        if (fds[1].revents) {
            bool failed = false;
            for (const std::string& text : commands.take(&failed)) runCommand(text, &decoder);
            // Without a watch the decoder keeps playing and reporting.
            if (failed) fds[1].fd = -1;
        }
        if (fds[2].revents) decoder.drawPending();
        if (!decoder.handleEvents()) {
            tprintf("avworker: mpv shut down\n");
            break;
        }
        // A file it cannot play: it quits, and the player sees a start that
        // never came up, whatever it sent meanwhile.
        if (decoder.loadFailed()) {
            decoder.writeReports();
            tprintf("avworker: quit, %s cannot be played\n", argv[1]);
            status = 1;
            break;
        }
        if (nowMs() >= nextReport) {
            decoder.writeReports();
            nextReport += kReportPeriodMs;
            // After a stall the reports resume on the period, not in a burst.
            if (nextReport < nowMs()) nextReport = nowMs() + kReportPeriodMs;
        }
    }
    tprintf("avworker: quit\n");
    close(signals);
    return status;
}
