#include "folder_names.h"

#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <vector>

#include "platform/logger.h"
#include "platform/stop_flag.h"

namespace {

// Names stat'ed at a time by either thread.
const size_t kChunk = 256;
// Below this many names the caller stats them all: a helper would cost
// more to start than it saves.
const size_t kHelperFrom = 2048;
// Longest the caller waits for a chunk the helper is on (a stat held up by
// the card); then that chunk's names count as unreadable.
const long kChunkWaitMs = 5000;

enum : uint8_t { CHUNK_FREE, CHUNK_CLAIMED, CHUNK_DONE };

}  // namespace

struct FolderNamesShared {
    ~FolderNamesShared() {
        if (ownsFolder) close(folder);
    }
    int folder = -1;
    bool ownsFolder = false;           // a duplicate, closed by the last owner
    std::vector<char> text;            // the names, each ending in NUL; fixed once kinds are asked
    std::vector<uint32_t> starts;      // where each name begins in text
    // Written for a chunk by the thread that claimed it, before it marks it done.
    std::vector<uint8_t> kinds;
    std::unique_ptr<std::atomic<uint8_t>[]> chunks;  // CHUNK_ state of each; fixed size
    size_t chunkCount = 0;
    std::atomic<bool> enough{false};   // the caller asks no more
    std::mutex lock;                   // only orders the wake-up below
    std::condition_variable chunkDone; // a chunk the helper claimed is done
};

namespace {

bool claim(FolderNamesShared& s, size_t chunk) {
    uint8_t expected = CHUNK_FREE;
    return s.chunks[chunk].compare_exchange_strong(expected, CHUNK_CLAIMED, std::memory_order_acq_rel);
}

void statChunk(FolderNamesShared& s, size_t chunk) {
    const size_t end = std::min(s.starts.size(), (chunk + 1) * kChunk);
    for (size_t i = chunk * kChunk; i < end; i++) {
        struct stat st;
        uint8_t kind = FolderNames::KIND_OTHER;
        // Following links; a dangling link or a loop of links fails here.
        if (fstatat(s.folder, &s.text[s.starts[i]], &st, 0) == 0) {
            if (S_ISDIR(st.st_mode))
                kind = FolderNames::KIND_FOLDER;
            else if (S_ISREG(st.st_mode))
                kind = FolderNames::KIND_FILE;
        }
        s.kinds[i] = kind;
    }
}

void helperBody(const std::shared_ptr<FolderNamesShared>& shared, const StopFlag& stop) {
    FolderNamesShared& s = *shared;
    for (size_t chunk = 0; chunk < s.chunkCount; chunk++) {
        if (stop.isSet() || s.enough.load(std::memory_order_relaxed)) return;
        if (!claim(s, chunk)) continue;  // the caller is on it
        statChunk(s, chunk);
        s.chunks[chunk].store(CHUNK_DONE, std::memory_order_release);
        // A caller about to wait either sees the chunk done or is woken.
        { std::lock_guard<std::mutex> hold(s.lock); }
        s.chunkDone.notify_all();
    }
}

}  // namespace

FolderNames::FolderNames(int folder) : mShared(new (std::nothrow) FolderNamesShared) {
    if (!mShared) return;
    mShared->folder = fcntl(folder, F_DUPFD_CLOEXEC, 0);
    mShared->ownsFolder = mShared->folder >= 0;
    // Without a duplicate the caller stats every name itself, on its own folder.
    if (!mShared->ownsFolder) mShared->folder = folder;
}

FolderNames::~FolderNames() {
    done();
    mHelper.stop(kOwnedThreadStopMs);
}

bool FolderNames::add(const char* name) {
    if (!mShared || mStarted) return false;
    const size_t start = mShared->text.size();
    try {
        mShared->text.insert(mShared->text.end(), name, name + strlen(name) + 1);
        mShared->starts.push_back(uint32_t(start));
    } catch (const std::bad_alloc&) {
        mShared->text.resize(start);
        return false;
    }
    return true;
}

size_t FolderNames::size() const { return mShared ? mShared->starts.size() : 0; }

const char* FolderNames::name(size_t index) const {
    return index < size() ? &mShared->text[mShared->starts[index]] : "";
}

FolderNames::Kind FolderNames::kindOf(size_t index) {
    if (!mShared || index >= size()) return KIND_OTHER;
    FolderNamesShared& s = *mShared;
    if (!mStarted) {
        mStarted = true;
        s.chunkCount = (s.starts.size() + kChunk - 1) / kChunk;
        s.kinds.assign(s.starts.size(), KIND_OTHER);
        s.chunks.reset(new (std::nothrow) std::atomic<uint8_t>[s.chunkCount]);
        if (!s.chunks) {
            tprintf("folder names: no memory for %zu names\n", s.starts.size());
            s.chunkCount = 0;
        }
        for (size_t c = 0; c < s.chunkCount; c++) s.chunks[c].store(CHUNK_FREE, std::memory_order_relaxed);
        if (s.starts.size() >= kHelperFrom && s.ownsFolder) startHelper();
    }
    const size_t chunk = index / kChunk;
    if (chunk >= s.chunkCount || chunk == mGivenUp) return KIND_OTHER;
    if (s.chunks[chunk].load(std::memory_order_acquire) != CHUNK_DONE) {
        if (claim(s, chunk)) {
            statChunk(s, chunk);
            s.chunks[chunk].store(CHUNK_DONE, std::memory_order_relaxed);
        } else {
            std::unique_lock<std::mutex> hold(s.lock);
            const bool ready = s.chunkDone.wait_for(hold, std::chrono::milliseconds(kChunkWaitMs), [&] {
                return s.chunks[chunk].load(std::memory_order_acquire) == CHUNK_DONE;
            });
            if (!ready) {
                tprintf("folder names: names %zu to %zu not looked at in %ld ms, left out\n", chunk * kChunk,
                        std::min(s.starts.size(), (chunk + 1) * kChunk) - 1, kChunkWaitMs);
                mGivenUp = chunk;
                return KIND_OTHER;
            }
        }
    }
    return Kind(s.kinds[index]);
}

void FolderNames::done() {
    if (mShared) mShared->enough.store(true, std::memory_order_relaxed);
}

void FolderNames::startHelper() {
    std::shared_ptr<FolderNamesShared> shared = mShared;
    // Without it the caller stats every name itself (logged by the start).
    mHelper.start("folderstat", [shared](const StopFlag& stop) { helperBody(shared, stop); });
}
