#include "key_shm.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <mutex>
#include <string>

#include "device_paths.h"
#include "logger.h"

struct KeyShmOps {
    std::string name;  // what the log lines call it
    // A loaded library's entry points, given our handle's record room; all
    // null for the stand-in.
    int (*init)(void*) = nullptr;
    int (*get)(void*, int) = nullptr;
    int (*set)(void*, int, int) = nullptr;
    int (*uninit)(void*) = nullptr;
};

namespace {

const size_t kShmBytes = sizeof(int) * MONITOR_VALUE_MAX;

// The backing file's folder may not exist under a desktop prefix.
void makeParents(const std::string& path) {
    for (size_t pos = path.find('/', 1); pos != std::string::npos; pos = path.find('/', pos + 1))
        mkdir(path.substr(0, pos).c_str(), 0755);
}

bool usable(const KeyShmInfo* info, int index) {
    return info && info->ops && index >= 0 && index < MONITOR_VALUE_MAX &&
           (info->ops->init || info->values);
}

const KeyShmOps sStandIn = {"the stand-in", nullptr, nullptr, nullptr, nullptr};

// Libraries loaded so far, by name. A library is never closed again: open
// handles call into it, and it serves every later InitKeyShmWith.
std::mutex sLibraryLock;
std::map<std::string, KeyShmOps> sLibraries;  // guarded by sLibraryLock

template <typename Fn>
bool resolve(void* lib, const char* library, const char* symbol, Fn* out) {
    *out = reinterpret_cast<Fn>(dlsym(lib, symbol));
    if (*out) return true;
    tprintf("key shm: %s lacks %s, using the stand-in %s\n", library, symbol, devicePath(DEVICE_PATH_KEY_SHM));
    return false;
}

// The library's entry points, or the stand-in (logged) when it or one of
// its functions is missing.
const KeyShmOps* loadLibrary(const char* library) {
    std::lock_guard<std::mutex> hold(sLibraryLock);
    auto known = sLibraries.find(library);
    if (known != sLibraries.end()) return &known->second;
    void* lib = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (!lib) {
        const char* why = dlerror();
        tprintf("key shm: %s not loaded (%s), using the stand-in %s\n", library, why ? why : "?",
                devicePath(DEVICE_PATH_KEY_SHM));
        return &sStandIn;
    }
    KeyShmOps ops;
    ops.name = library;
    if (!resolve(lib, library, "InitKeyShm", &ops.init) || !resolve(lib, library, "GetKeyShm", &ops.get) ||
        !resolve(lib, library, "SetKeyShm", &ops.set) || !resolve(lib, library, "UninitKeyShm", &ops.uninit)) {
        dlclose(lib);
        return &sStandIn;
    }
    tprintf("key shm: using %s\n", library);
    return &sLibraries.emplace(library, ops).first->second;
}

int initStandIn(KeyShmInfo* info) {
    const char* path = devicePath(DEVICE_PATH_KEY_SHM);
    makeParents(path);
    int fd = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0) {
        tprintf("key shm open %s fail: %s\n", path, strerror(errno));
        return -1;
    }
    // Growing the file under a lock keeps a second process from mapping it
    // while it is still shorter than the block.
    flock(fd, LOCK_EX);
    struct stat st;
    if (fstat(fd, &st) != 0 || (st.st_size < (off_t)kShmBytes && ftruncate(fd, kShmBytes) != 0)) {
        tprintf("key shm size %s fail: %s\n", path, strerror(errno));
        flock(fd, LOCK_UN);
        close(fd);
        return -1;
    }
    flock(fd, LOCK_UN);
    void* map = mmap(nullptr, kShmBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (map == MAP_FAILED) {
        tprintf("key shm map %s fail: %s\n", path, strerror(errno));
        close(fd);
        return -1;
    }
    info->fd = fd;
    info->values = static_cast<int*>(map);
    info->ops = &sStandIn;
    return 0;
}

int initOn(KeyShmInfo* info, const KeyShmOps* ops) {
    if (!info) return -1;
    if (info->ops) UninitKeyShm(info);
    if (!ops->init) return initStandIn(info);
    memset(info->library, 0, sizeof info->library);
    const int rc = ops->init(info->library);
    if (rc != 0) {
        tprintf("key shm: InitKeyShm of %s failed (%d)\n", ops->name.c_str(), rc);
        return -1;
    }
    info->ops = ops;
    return 0;
}

}  // namespace

const char* keyShmLibraryName() {
#ifdef KOVANI_KEY_SHM_LIBRARY
    return KOVANI_KEY_SHM_LIBRARY;
#else
    return nullptr;
#endif
}

int InitKeyShm(KeyShmInfo* info) {
    if (!keyShmLibraryName()) return initOn(info, &sStandIn);
    // Decided once, so the player logs the outcome once.
    static const KeyShmOps* sChosen = loadLibrary(keyShmLibraryName());
    return initOn(info, sChosen);
}

int InitKeyShmWith(KeyShmInfo* info, const char* library) {
    return initOn(info, library ? loadLibrary(library) : &sStandIn);
}

int GetKeyShm(KeyShmInfo* info, int index) {
    if (!usable(info, index)) return 0;
    if (info->ops->get) return info->ops->get(info->library, index);
    return __atomic_load_n(&info->values[index], __ATOMIC_SEQ_CST);
}

int SetKeyShm(KeyShmInfo* info, int index, int value) {
    if (!usable(info, index)) return -1;
    if (info->ops->set) return info->ops->set(info->library, index, value) == 0 ? 0 : -1;
    __atomic_store_n(&info->values[index], value, __ATOMIC_SEQ_CST);
    return 0;
}

int UninitKeyShm(KeyShmInfo* info) {
    if (!info) return -1;
    if (info->ops && info->ops->uninit) info->ops->uninit(info->library);
    if (info->values) munmap(info->values, kShmBytes);
    if (info->fd >= 0) close(info->fd);
    info->ops = nullptr;
    info->values = nullptr;
    info->fd = -1;
    return 0;
}
