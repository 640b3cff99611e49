#include "bench_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "bench_clock.h"

std::string makeVideoFolder(int count) {
    char tmpl[] = "/tmp/kovani_bench_XXXXXX";
    if (!mkdtemp(tmpl)) return "";
    const char* const words[] = {"Holiday", "clip",    "Concert", "lecture",
                                 "Match",   "trailer", "Zoo",     "家庭"};
    const char* const extensions[] = {".mp4", ".mkv", ".avi", ".mov", ".webm", ".ts"};
    char path[512];
    for (int i = 0; i < count; i++) {
        // 7919 and 100000 share no factor, so every name differs.
        snprintf(path, sizeof path, "%s/%s %05u%s", tmpl, words[i % 8], (unsigned(i) * 7919u) % 100000u,
                 extensions[i % 6]);
        const int fd = open(path, O_CREAT | O_WRONLY, 0644);
        if (fd < 0) {
            std::error_code ec;
            std::filesystem::remove_all(tmpl, ec);
            return "";
        }
        close(fd);
    }
    return tmpl;
}

double timeFolderFloor(const std::string& dir) {
    const double start = nowMs();
    std::vector<std::string> names;
    DIR* folder = opendir(dir.c_str());
    if (!folder) return 0;
    for (struct dirent* entry; (entry = readdir(folder)) != nullptr;) {
        struct stat st;
        if (fstatat(dirfd(folder), entry->d_name, &st, 0) != 0) continue;
        if (S_ISREG(st.st_mode)) names.push_back(entry->d_name);
    }
    closedir(folder);
    std::sort(names.begin(), names.end(),
              [](const std::string& a, const std::string& b) { return strcmp(a.c_str(), b.c_str()) < 0; });
    return nowMs() - start;
}
