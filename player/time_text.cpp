#include "time_text.h"

#include <stdio.h>

const char* formatMediaTime(int ms, char* buf, size_t size) {
    int s = ms / 1000;
    if (s < 0) s = 0;
    if (s > 3600)
        snprintf(buf, size, "%d:%02d:%02d", s / 3600, (s % 3600) / 60, s % 60);
    else
        snprintf(buf, size, "%02d:%02d", s / 60, s % 60);
    return buf;
}
