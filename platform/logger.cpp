#include "logger.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <syslog.h>
#include <unistd.h>

namespace {
int sToSyslog = 0;
// Without a system-log daemon (a bare desktop or container) the lines would
// vanish; they go to standard error then, leaving standard output alone.
bool sToStderr = false;
char procname[64];  // openlog keeps the pointer, so this must outlive the log

void closeSyslog() { closelog(); }
}  // namespace

void initLogger(int toSyslog) {
    sToSyslog = toSyslog;
    if (!toSyslog) return;
    if (access("/dev/log", F_OK) != 0) {
        sToStderr = true;
        return;
    }
    char path[64];
    snprintf(path, sizeof path, "/proc/%d/comm", (int)getpid());
    FILE* f = fopen(path, "r");
    if (f) {
        if (!fgets(procname, 63, f)) procname[0] = '\0';
        fclose(f);
        procname[strcspn(procname, "\n")] = '\0';
    }
    openlog(procname, LOG_PID, 0);
    atexit(closeSyslog);
}

void tprintf(const char* format, ...) {
    va_list ap;
    va_start(ap, format);
    if (sToStderr)
        vfprintf(stderr, format, ap);
    else if (sToSyslog)
        vsyslog(LOG_DEBUG, format, ap);
    else
        vprintf(format, ap);
    va_end(ap);
}
