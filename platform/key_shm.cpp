#include "key_shm.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "device_paths.h"
#include "logger.h"

namespace {

const size_t kShmBytes = sizeof(int) * MONITOR_VALUE_MAX;

// The backing file's folder may not exist under a desktop prefix.
void makeParents(const std::string& path) {
    for (size_t pos = path.find('/', 1); pos != std::string::npos; pos = path.find('/', pos + 1))
        mkdir(path.substr(0, pos).c_str(), 0755);
}

bool usable(const KeyShmInfo* info, int index) {
    return info && info->values && index >= 0 && index < MONITOR_VALUE_MAX;
}

}  // namespace

int InitKeyShm(KeyShmInfo* info) {
    if (!info) return -1;
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
    return 0;
}

int GetKeyShm(KeyShmInfo* info, int index) {
    if (!usable(info, index)) return 0;
    return __atomic_load_n(&info->values[index], __ATOMIC_SEQ_CST);
}

int SetKeyShm(KeyShmInfo* info, int index, int value) {
    if (!usable(info, index)) return -1;
    __atomic_store_n(&info->values[index], value, __ATOMIC_SEQ_CST);
    return 0;
}

int UninitKeyShm(KeyShmInfo* info) {
    if (!info) return -1;
    if (info->values) munmap(info->values, kShmBytes);
    if (info->fd >= 0) close(info->fd);
    info->values = nullptr;
    info->fd = -1;
    return 0;
}
