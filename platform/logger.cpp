#include "logger.h"

#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "log_queue.h"

namespace {

// Standard output stays synchronous: it is the mode before initLogger, whose
// lines tests capture and read back at once. The system log goes through the
// writer thread, since every line there is a round trip to the log daemon;
// so does its standard-error stand-in, so the desktop runs as the device.
// MODE_NONE: the writer was given up on while writing to standard error,
// whose lock it may hold; later lines are dropped.
enum LogMode { MODE_STDOUT, MODE_SYSLOG, MODE_STDERR, MODE_SINK, MODE_NONE };

// A whole folder's burst (the loader writes a line per entry, up to 20000)
// fits while the system log catches up: about 4 MB at the fullest.
const size_t kQueueLines = 32768;
// A full queue drains in a fraction of this at tens of microseconds a line;
// past it the sink is taken to hang and the writer is given up on, so that a
// log daemon that reads nothing cannot hold up the exit.
const long kDrainMs = 2000;
// Most lines fit here; a longer one is formatted again into a string.
const size_t kShortLine = 256;

// Set by the thread that calls initLogger and shutdownLogger; read by all.
std::atomic<int> sMode{MODE_STDOUT};
// A forked child has no writer thread, and the queue's lock may have been
// held at the fork: there lines are written directly.
std::atomic<bool> sInForkedChild{false};
bool sExitHooked = false;  // the initLogger thread only
// The initLogger thread only: the writer was given up on inside a write to
// the system log, whose lock it may hold, so the log is never closed.
bool sSyslogHeld = false;
bool sWriterGivenUp = false;  // the initLogger thread only: the writer hangs in its sink
char sProcName[64];        // openlog keeps the pointer, so this must outlive the log

class SyslogSink : public LogSink {
public:
    void write(const char* line) override { syslog(LOG_DEBUG, "%s", line); }
};

// Without a system-log daemon (a bare desktop or container) the lines would
// vanish; they go to standard error then, leaving standard output alone.
// Standard error is unbuffered: a folder's thousand lines would be a
// thousand writes, each taking the processor from the frame the user waits
// for. A batch goes out in a few large writes instead.
class StderrSink : public LogSink {
public:
    void write(const char* line) override {
        const size_t length = strlen(line);
        if (mUsed + length > sizeof mBuffer) flush();
        if (length > sizeof mBuffer) {
            fputs(line, stderr);
            return;
        }
        memcpy(mBuffer + mUsed, line, length);
        mUsed += length;
    }
    void flush() override {
        if (mUsed > 0) fwrite(mBuffer, 1, mUsed, stderr);
        mUsed = 0;
    }

private:
    char mBuffer[64 * 1024];  // the writer thread's
    size_t mUsed = 0;
};

// Never destroyed: a writer given up on may still be inside one at exit.
SyslogSink* const sSyslogSink = new SyslogSink;
StderrSink* const sStderrSink = new StderrSink;

// Never destroyed: objects destroyed at exit may still log after the writer
// has stopped, and the queue tells them to write directly.
LogQueue& queue() {
    static LogQueue* sQueue = new LogQueue;
    return *sQueue;
}

void writeDirect(int mode, const char* line) {
    if (mode == MODE_SYSLOG)
        syslog(LOG_DEBUG, "%s", line);
    else if (mode == MODE_STDERR)
        fputs(line, stderr);
    else if (mode != MODE_NONE)
        fputs(line, stdout);
}

void closeSyslog() {
    if (!sSyslogHeld) closelog();
}

void markForkedChild() { sInForkedChild = true; }

void hookExit() {
    if (sExitHooked) return;
    sExitHooked = true;
    // Handlers run in reverse: the drain, which may write to the system log,
    // comes before it is closed.
    atexit(closeSyslog);
    atexit(shutdownLogger);
    pthread_atfork(nullptr, nullptr, markForkedChild);
}

int startWriter(LogMode mode, LogSink* sink, size_t capacity) {
    sMode = mode;
    hookExit();
    if (queue().start(sink, capacity) != 0) {
        tprintf("logger: cannot start the writer thread; lines are written directly\n");
        return -1;
    }
    return 0;
}

}  // namespace

void initLogger(int toSyslog) {
    shutdownLogger();
    if (!toSyslog) {
        sMode = MODE_STDOUT;
        return;
    }
    if (access("/dev/log", F_OK) != 0) {
        startWriter(MODE_STDERR, sStderrSink, kQueueLines);
        return;
    }
    char path[64];
    snprintf(path, sizeof path, "/proc/%d/comm", (int)getpid());
    FILE* f = fopen(path, "r");
    if (f) {
        if (!fgets(sProcName, 63, f)) sProcName[0] = '\0';
        fclose(f);
        sProcName[strcspn(sProcName, "\n")] = '\0';
    }
    openlog(sProcName, LOG_PID, 0);
    startWriter(MODE_SYSLOG, sSyslogSink, kQueueLines);
}

int initLoggerToSink(LogSink* sink, size_t capacity) {
    shutdownLogger();
    return startWriter(MODE_SINK, sink, capacity ? capacity : kQueueLines);
}

void shutdownLogger() {
    if (sInForkedChild) return;
    if (queue().stop(kDrainMs)) {
        // No writer is inside a write any more.
        sSyslogHeld = false;
        sWriterGivenUp = false;
        // A test's sink is not kept past its writer.
        if (sMode == MODE_SINK) sMode = MODE_STDOUT;
        return;
    }
    if (sWriterGivenUp) return;
    sWriterGivenUp = true;
    // Callers write directly from now on, never where the writer hangs.
    const int mode = sMode;
    if (mode == MODE_SYSLOG) sSyslogHeld = true;
    sMode = mode == MODE_SYSLOG ? MODE_STDERR : mode == MODE_STDERR ? MODE_NONE : MODE_STDOUT;
    tprintf("logger: the log writer hangs, given up\n");
}

void tprintf(const char* format, ...) {
    va_list ap;
    va_start(ap, format);
    const int mode = sMode;
    if (mode == MODE_STDOUT) {
        vprintf(format, ap);
        va_end(ap);
        return;
    }
    // The caller's errno is still in place for a "%m". Most lines fit the
    // stack; a longer one is formatted again into a string.
    char text[kShortLine];
    va_list again;
    va_copy(again, ap);
    const int n = vsnprintf(text, sizeof text, format, ap);
    std::string longLine;
    if (n >= 0 && size_t(n) >= sizeof text) {
        longLine.resize(size_t(n));
        vsnprintf(&longLine[0], size_t(n) + 1, format, again);
    }
    va_end(again);
    va_end(ap);
    if (n < 0) return;
    const char* line = longLine.empty() ? text : longLine.c_str();
    if (sInForkedChild || queue().post(line, size_t(n)) == LogQueue::LOG_CLOSED) writeDirect(mode, line);
}
