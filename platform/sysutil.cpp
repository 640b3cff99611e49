#include "sysutil.h"

#include <ctype.h>
#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "clock.h"
#include "logger.h"

long systemms() { return wallMs(); }

bool process_alive(int pid) {
    if (pid <= 0) return false;
    char path[64];
    snprintf(path, sizeof path, "/proc/%d/stat", pid);
    char text[512];
    size_t len = 0;
    if (FILE* f = fopen(path, "r")) {
        len = fread(text, 1, sizeof text - 1, f);
        fclose(f);
    }
    text[len] = '\0';
    // "pid (name) S ...": the name may hold blanks and parentheses, so the
    // state follows the last ')'.
    const char* close = strrchr(text, ')');
    if (!close || close[1] != ' ') return false;
    const char state = close[2];
    return state != 'Z' && state != 'X' && state != 'x' && state != '\0';
}

namespace {

// Walks "/proc" for processes whose first argument holds `name` followed by
// its end or a blank, skipping those that have exited. Stops at the first
// when `all` is null, else collects every one in `all`. The first pid or -1.
int findProcesses(const char* name, int verbose, std::vector<int>* all) {
    DIR* dir = opendir("/proc");
    if (!dir) {
        tprintf("can not open /proc\n");
        return -1;
    }
    const size_t nameLen = strlen(name);
    int first = -1;
    while (struct dirent* entry = readdir(dir)) {
        if (!isdigit((unsigned char)entry->d_name[0])) continue;
        char path[300];
        char text[512];
        snprintf(path, sizeof path, "/proc/%s/cmdline", entry->d_name);
        size_t len = 0;
        if (FILE* f = fopen(path, "r")) {
            len = fread(text, 1, sizeof text - 1, f);
            fclose(f);
        }
        text[len] = '\0';
        // Arguments are NUL-separated, so the text ends after the first one.
        if (strlen(text) < nameLen) continue;
        const char* p = strstr(text, name);
        if (!p) continue;
        const unsigned char after = (unsigned char)p[nameLen];
        if (verbose)
            tprintf("[check: %s] p=%s in %s, pnlen=%d, cmp %d, p[%d]=%d\n", name, p, text,
                    (int)nameLen, 0, (int)nameLen, after);
        if (after != '\0' && after != ' ') continue;
        const int pid = atoi(entry->d_name);
        if (!process_alive(pid)) continue;
        if (verbose) tprintf("[check: %s] pid %d\n", name, pid);
        if (first < 0) first = pid;
        if (!all) break;
        all->push_back(pid);
    }
    closedir(dir);
    if (first < 0 && verbose) tprintf("[check: %s] fail\n", name);
    return first;
}

}  // namespace

int check_process_exist(const char* name, int verbose) { return findProcesses(name, verbose, nullptr); }

std::vector<int> find_processes(const char* name) {
    std::vector<int> pids;
    findProcesses(name, 0, &pids);
    return pids;
}

int check_process_exist(const char* name) { return check_process_exist(name, 0); }

std::string shellQuote(const std::string& text) {
    bool plain = !text.empty();
    for (unsigned char c : text) {
        if (!isalnum(c) && !strchr("/._-+:,@%=", c)) {
            plain = false;
            break;
        }
    }
    if (plain) return text;
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    quoted += "'";
    return quoted;
}
