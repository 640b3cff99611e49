// A stand-in decoder that plays: named avworker, it writes the status and
// information files twice a second with a position that moves on, as a
// real decoder does while a video plays. Device paths follow
// KOVANI_PATH_PREFIX.
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

int main() {
    const char* prefix = getenv("KOVANI_PATH_PREFIX");
    const std::string dir = std::string(prefix ? prefix : "") + "/tmp/kovani_player";
    for (int position = 0;; position += 500) {
        const std::string tmp = dir + "/status.tmp";
        if (FILE* f = fopen(tmp.c_str(), "w")) {
            fprintf(f, "{\"status\":\"playing\",\"duration\":600000,\"position\":%d,\"volume\":40,\"audiotrack\":0}",
                    position);
            fclose(f);
            rename(tmp.c_str(), (dir + "/status").c_str());
        }
        usleep(500 * 1000);
    }
}
