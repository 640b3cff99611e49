// Our own stand-in for the device's key memory library, for the tests: the
// four functions under their plain C names, a 600-byte handle record (larger
// than ours) kept in the caller's room, values shared with forked children.
#include <string.h>
#include <sys/mman.h>

namespace {

const int kSlots = 20;
const char kOpen[] = "shmvar stand-in";
const char kClosed[] = "shmvar closed";

struct Record {
    char tag[16];
    int* values;
    unsigned char rest[600 - 16 - sizeof(int*)];
};

int* sValues = nullptr;

Record* openRecord(void* handle) {
    Record* r = static_cast<Record*>(handle);
    return r && sValues && memcmp(r->tag, kOpen, sizeof kOpen) == 0 && r->values == sValues ? r : nullptr;
}

}  // namespace

extern "C" {

int InitKeyShm(void* handle) {
    if (!handle) return -1;
    const unsigned char* bytes = static_cast<const unsigned char*>(handle);
    for (size_t i = 0; i < sizeof(Record); i++)
        if (bytes[i] != 0) return -2;  // the caller hands over zeroed room
    if (!sValues) {
        void* map = mmap(nullptr, sizeof(int) * kSlots, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (map == MAP_FAILED) return -1;
        sValues = static_cast<int*>(map);
    }
    Record* r = static_cast<Record*>(handle);
    memcpy(r->tag, kOpen, sizeof kOpen);
    r->values = sValues;
    memset(r->rest, 0x5a, sizeof r->rest);
    return 0;
}

int GetKeyShm(void* handle, int index) {
    Record* r = openRecord(handle);
    return r && index >= 0 && index < kSlots ? __atomic_load_n(&r->values[index], __ATOMIC_SEQ_CST) : 0;
}

int SetKeyShm(void* handle, int index, int value) {
    Record* r = openRecord(handle);
    if (!r || index < 0 || index >= kSlots) return -1;
    __atomic_store_n(&r->values[index], value, __ATOMIC_SEQ_CST);
    return 0;
}

int UninitKeyShm(void* handle) {
    Record* r = openRecord(handle);
    if (!r) return -1;
    memcpy(r->tag, kClosed, sizeof kClosed);
    return 0;
}

}  // extern "C"
