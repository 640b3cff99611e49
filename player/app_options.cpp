#include "app_options.h"

#include <stdio.h>
#include <unistd.h>

std::string gUserPath;
std::string gUserFile;
std::string gSavedDir;

void check_opts(int argc, char* argv[]) {
    printf("usage: %s [-d base-path] [-f single-file]\n", argv[0]);
    optind = 0;  // glibc: a full restart, so the function can run again
    int opt;
    while ((opt = getopt(argc, argv, "d:f:")) != -1) {
        if (opt == 'd') {
            gUserPath = optarg;
            printf("user path:%s\n", optarg);
        } else if (opt == 'f') {
            gUserFile = optarg;
            printf("user file:%s\n", optarg);
        }
    }
    printf("argv single:%s\n", optind < argc ? argv[optind] : "");
    fflush(stdout);
}

void applyUserFileRoot() {
    if (gUserFile.empty()) return;
    size_t slash = gUserFile.rfind('/');
    if (slash != std::string::npos) gUserPath = gUserFile.substr(0, slash);
}
