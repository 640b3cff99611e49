// Stand-in decoder: writes its arguments, NUL-terminated, to "avworker.args"
// in its working folder, then waits to be killed as the real one does. The
// file name scripts it: with "completes" in it the decoder's first and only
// report is "completed" (a clip shorter than a report period); with
// "ignores-term" it ignores SIGTERM (a hung decoder).
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "platform/device_paths.h"

namespace {

bool writeAtomic(const std::string& path, const std::string& text) {
    const std::string tmp = path + ".tmp";
    const int fd = open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) return false;
    const bool ok = write(fd, text.data(), text.size()) == (ssize_t)text.size();
    close(fd);
    return ok && rename(tmp.c_str(), path.c_str()) == 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    const char* file = argc > 1 ? argv[1] : "";
    if (strstr(file, "ignores-term")) signal(SIGTERM, SIG_IGN);
    std::string args;
    for (int i = 1; i < argc; i++) args.append(argv[i], strlen(argv[i]) + 1);
    if (!writeAtomic("avworker.args", args)) return 1;
    if (strstr(file, "completes") &&
        !writeAtomic(devicePath(DEVICE_PATH_PLAYER_STATUS), R"({"status":"completed","duration":500,"position":500})"))
        return 1;
    for (;;) pause();
}
