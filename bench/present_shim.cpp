// Preloaded into a program the launch bench starts (LD_PRELOAD), it notes
// on the monotonic clock, in the file KOVANI_SHIM_TIMES names, one line each:
//   first  the first frame presented
//   open   the opendir of the folder KOVANI_SHIM_FOLDER names
//   closed its closedir
//   readcpu   the processor time the reading thread spent from open to close
//   handed the first event the thread that closed it pushes after that
//          (the loader's word that the folder is read)
//   list   the first frame presented after that event
//   presents  how many frames were presented from the open to that event
// Each is noted once; nothing is written per frame. The program itself is
// unchanged: these are the calls it makes anyway.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

namespace {

std::atomic<DIR*> sFolder{nullptr};  // the folder's open stream, while open
std::atomic<long> sLoader{0};        // thread that closed it
std::atomic<bool> sFirst{false}, sOpened{false}, sClosed{false}, sHanded{false}, sList{false};
std::atomic<int> sPresentsWhileReading{0};
std::atomic<double> sReadCpuStart{0};  // the reading thread's processor time at the open, ms

double threadCpuMs() {
    struct timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return ts.tv_sec * 1000.0 + ts.tv_nsec / 1e6;
}

long threadId() { return long(syscall(SYS_gettid)); }

// A line "what value" appended to the times file.
void noteValue(const char* what, const char* value) {
    const char* path = getenv("KOVANI_SHIM_TIMES");
    if (!path) return;
    char line[64];
    const int n = snprintf(line, sizeof line, "%s %s\n", what, value);
    const int fd = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return;
    if (write(fd, line, size_t(n)) != n) {
        // The bench finds the line missing and says so.
    }
    close(fd);
}

// Once per flag: the time on the monotonic clock, in ms.
void note(std::atomic<bool>& done, const char* what) {
    if (done.exchange(true)) return;
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    char ms[32];
    snprintf(ms, sizeof ms, "%.3f", ts.tv_sec * 1000.0 + ts.tv_nsec / 1e6);
    noteValue(what, ms);
}

template <typename F>
F next(const char* name) {
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

DIR* opendir(const char* name) {
    static auto real = next<DIR* (*)(const char*)>("opendir");
    const char* folder = getenv("KOVANI_SHIM_FOLDER");
    const bool watched = folder && strcmp(name, folder) == 0 && !sOpened;
    if (watched) {
        note(sOpened, "open");
        sReadCpuStart = threadCpuMs();
    }
    DIR* dir = real(name);
    if (watched) sFolder = dir;
    return dir;
}

int closedir(DIR* dir) {
    static auto real = next<int (*)(DIR*)>("closedir");
    const bool watched = dir == sFolder.load();
    const int result = real(dir);
    if (watched) {
        sFolder = nullptr;
        sLoader = threadId();
        note(sClosed, "closed");
        char cpu[32];
        snprintf(cpu, sizeof cpu, "%.3f", threadCpuMs() - sReadCpuStart);
        noteValue("readcpu", cpu);
    }
    return result;
}

int SDL_PushEvent(void* event) {
    static auto real = next<int (*)(void*)>("SDL_PushEvent");
    if (sClosed && !sHanded && threadId() == sLoader) note(sHanded, "handed");
    return real(event);
}

void SDL_RenderPresent(void* renderer) {
    static auto real = next<void (*)(void*)>("SDL_RenderPresent");
    real(renderer);
    note(sFirst, "first");
    if (sOpened && !sHanded) sPresentsWhileReading++;
    if (sHanded && !sList) {
        note(sList, "list");
        char count[32];
        snprintf(count, sizeof count, "%d", sPresentsWhileReading.load());
        noteValue("presents", count);
    }
}

}  // extern "C"
