#include "video_plane.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <new>

#include "device_paths.h"
#include "logger.h"

// The shared memory's head. Written by the decoder only; every field a
// reader looks at while the decoder runs is atomic, so each read gives a
// whole value. Lock-free 32- and 64-bit atomics work across processes.
struct VideoPlaneLayout {
    std::atomic<uint32_t> magic;  // set last at creation: the rest is ready
    uint32_t version;
    std::atomic<uint32_t> closed;     // the decoder is removing the plane
    std::atomic<uint32_t> writing;    // number of the frame being drawn
    std::atomic<uint32_t> published;  // number of the newest whole frame; 0: none yet
    std::atomic<int64_t> aliveMs;     // videoPlaneClockMs() of the decoder's last sign of life
    struct Slot {
        std::atomic<int32_t> x, y, w, h;
        std::atomic<int32_t> stride;
    } slots[2];  // what buffer n % 2 holds
};

namespace {

const uint32_t kMagic = 0x4b56504c;  // "KVPL"
const uint32_t kVersion = 1;
const size_t kHeadBytes = 4096;  // keeps the buffers page- and SIMD-aligned
const size_t kMaxStride = (size_t)kVideoPlaneWidth * 4;
const size_t kBufferBytes = kMaxStride * kVideoPlaneHeight;
const size_t kPlaneBytes = kHeadBytes + 2 * kBufferBytes;
// The decoder's renderer writes fastest to rows 64-byte aligned.
const size_t kRowAlign = 64;
// How often a reader looks for a plane, or whether its plane was replaced.
const int64_t kLookMs = 100;
// Frames within this long count as a playing video.
const int64_t kPlayingMs = 1000;

static_assert(sizeof(VideoPlaneLayout) <= kHeadBytes, "plane head too large");

uint8_t* bufferOf(VideoPlaneLayout* plane, uint32_t frame) {
    return reinterpret_cast<uint8_t*>(plane) + kHeadBytes + (frame % 2) * kBufferBytes;
}

const uint8_t* bufferOf(const VideoPlaneLayout* plane, uint32_t frame) {
    return reinterpret_cast<const uint8_t*>(plane) + kHeadBytes + (frame % 2) * kBufferBytes;
}

bool insidePlane(const VideoRect& r) {
    return r.x >= 0 && r.y >= 0 && r.w > 0 && r.h > 0 && r.w <= kVideoPlaneWidth - r.x &&
           r.h <= kVideoPlaneHeight - r.y;
}

// FNV-1a: a short stable tag for a folder prefix.
uint64_t hashOf(const char* text) {
    uint64_t h = 1469598103934665603ull;
    for (; *text; text++) h = (h ^ (uint8_t)*text) * 1099511628211ull;
    return h;
}

}  // namespace

std::string videoPlaneName() {
    std::string path = devicePath(DEVICE_PATH_VIDEO_PLANE);
    std::string name = path.substr(path.rfind('/'));
    const char* prefix = devicePathPrefix();
    if (*prefix) {
        char tag[24];
        snprintf(tag, sizeof tag, "-%016llx", (unsigned long long)hashOf(prefix));
        name += tag;
    }
    return name;
}

size_t videoPlaneBytes() { return kPlaneBytes; }

int64_t videoPlaneClockMs() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (int64_t)ts.tv_sec * 1000 + ts.tv_nsec / 1000000;
}

VideoPlaneWriter::~VideoPlaneWriter() { remove(); }

int VideoPlaneWriter::create() {
    remove();
    mName = videoPlaneName();
    // One left by a decoder that was killed goes; a reader still mapping it
    // notices and looks again.
    shm_unlink(mName.c_str());
    const int fd = shm_open(mName.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
    if (fd < 0) {
        tprintf("video plane %s: cannot create: %s\n", mName.c_str(), strerror(errno));
        return -1;
    }
    void* memory = MAP_FAILED;
    if (ftruncate(fd, (off_t)kPlaneBytes) == 0)
        memory = mmap(nullptr, kPlaneBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    const int err = errno;
    close(fd);
    if (memory == MAP_FAILED) {
        tprintf("video plane %s: cannot size or map: %s\n", mName.c_str(), strerror(err));
        shm_unlink(mName.c_str());
        return -1;
    }
    // The memory is zeroed; the head is built on it, magic last.
    mHeader = new (memory) VideoPlaneLayout();
    mHeader->version = kVersion;
    mHeader->aliveMs.store(videoPlaneClockMs(), std::memory_order_relaxed);
    mBytes = kPlaneBytes;
    mFrame = 0;
    mDrawing = false;
    mHeader->magic.store(kMagic, std::memory_order_release);
    tprintf("video plane %s: created\n", mName.c_str());
    return 0;
}

uint8_t* VideoPlaneWriter::beginFrame(const VideoRect& rect, size_t* stride) {
    if (!mHeader || !insidePlane(rect)) return nullptr;
    if (!mDrawing) {
        mFrame++;
        // Frame 0 means "none yet"; a wrap skips it.
        if (mFrame == 0) mFrame = 2;
        mDrawing = true;
        mHeader->writing.store(mFrame, std::memory_order_relaxed);
        // Readers must see the number before any pixel of this buffer changes.
        std::atomic_thread_fence(std::memory_order_seq_cst);
    }
    const size_t rowBytes = ((size_t)rect.w * 4 + kRowAlign - 1) / kRowAlign * kRowAlign;
    VideoPlaneLayout::Slot& slot = mHeader->slots[mFrame % 2];
    slot.x.store(rect.x, std::memory_order_relaxed);
    slot.y.store(rect.y, std::memory_order_relaxed);
    slot.w.store(rect.w, std::memory_order_relaxed);
    slot.h.store(rect.h, std::memory_order_relaxed);
    slot.stride.store((int32_t)rowBytes, std::memory_order_relaxed);
    *stride = rowBytes;
    return bufferOf(mHeader, mFrame);
}

void VideoPlaneWriter::endFrame() {
    if (!mHeader || !mDrawing) return;
    mDrawing = false;
    mHeader->aliveMs.store(videoPlaneClockMs(), std::memory_order_relaxed);
    mHeader->published.store(mFrame, std::memory_order_release);
}

void VideoPlaneWriter::clear() {
    if (!mHeader) return;
    size_t stride = 0;
    if (!beginFrame(VideoRect{0, 0, 1, 1}, &stride)) return;
    mHeader->slots[mFrame % 2].w.store(0, std::memory_order_relaxed);
    endFrame();
}

void VideoPlaneWriter::heartbeat() {
    if (mHeader) mHeader->aliveMs.store(videoPlaneClockMs(), std::memory_order_relaxed);
}

void VideoPlaneWriter::remove() {
    if (!mHeader) return;
    mHeader->closed.store(1, std::memory_order_release);
    shm_unlink(mName.c_str());
    munmap(mHeader, mBytes);
    mHeader = nullptr;
    tprintf("video plane %s: removed\n", mName.c_str());
}

VideoPlaneReader::~VideoPlaneReader() {
    if (mHeader) munmap(const_cast<VideoPlaneLayout*>(mHeader), mBytes);
    if (mFd >= 0) close(mFd);
}

bool VideoPlaneReader::attach() {
    const std::string name = videoPlaneName();
    const int fd = shm_open(name.c_str(), O_RDONLY | O_CLOEXEC, 0);
    if (fd < 0) {
        if (!mLoggedMissing) tprintf("video plane %s: missing, no picture beneath the interface\n", name.c_str());
        mLoggedMissing = true;
        return false;
    }
    struct stat st;
    // Size 0: the decoder has created it but not sized it yet.
    if (fstat(fd, &st) != 0 || st.st_size == 0) {
        close(fd);
        return false;
    }
    if ((size_t)st.st_size != kPlaneBytes) {
        if (!mLoggedBad) tprintf("video plane %s: %lld bytes, not a plane; ignored\n", name.c_str(), (long long)st.st_size);
        mLoggedBad = true;
        close(fd);
        return false;
    }
    void* memory = mmap(nullptr, kPlaneBytes, PROT_READ, MAP_SHARED, fd, 0);
    if (memory == MAP_FAILED) {
        if (!mLoggedBad) tprintf("video plane %s: cannot map: %s\n", name.c_str(), strerror(errno));
        mLoggedBad = true;
        close(fd);
        return false;
    }
    const VideoPlaneLayout* plane = static_cast<const VideoPlaneLayout*>(memory);
    const uint32_t magic = plane->magic.load(std::memory_order_acquire);
    const char* refused = nullptr;
    if (magic == 0)
        refused = "";  // still being made: look again later, quietly
    else if (magic != kMagic || plane->version != kVersion)
        refused = "not a plane of this version";
    else if (plane->closed.load(std::memory_order_acquire))
        refused = "";  // its decoder is going; its name goes with it
    else if (videoPlaneClockMs() - plane->aliveMs.load(std::memory_order_relaxed) > mStaleMs)
        refused = "stale, its decoder is gone";
    if (refused) {
        if (*refused && !mLoggedBad) tprintf("video plane %s: %s; ignored\n", name.c_str(), refused);
        if (*refused) mLoggedBad = true;
        munmap(memory, kPlaneBytes);
        close(fd);
        return false;
    }
    mHeader = plane;
    mBytes = kPlaneBytes;
    mFd = fd;
    mSeen = 0;
    mLoggedMissing = false;
    mLoggedBad = false;
    tprintf("video plane %s: attached\n", name.c_str());
    return true;
}

void VideoPlaneReader::unmap(const char* why) {
    tprintf("video plane %s: %s\n", videoPlaneName().c_str(), why);
    munmap(const_cast<VideoPlaneLayout*>(mHeader), mBytes);
    close(mFd);
    mHeader = nullptr;
    mFd = -1;
    mLastFrameMs = -1;
    // Its absence, or the same stale plane met again, needs no further line.
    mLoggedMissing = true;
    mLoggedBad = true;
}

bool VideoPlaneReader::unlinked() const {
    struct stat st;
    return fstat(mFd, &st) != 0 || st.st_nlink == 0;
}

bool VideoPlaneReader::poll(Sink* sink, int64_t nowMs) {
    const bool looking = mLastLookMs < 0 || nowMs - mLastLookMs >= kLookMs;
    if (looking) mLastLookMs = nowMs;
    if (!mHeader && !(looking && attach())) return false;

    const char* gone = nullptr;
    if (mHeader->closed.load(std::memory_order_acquire))
        gone = "closed by its decoder";
    else if (looking && unlinked())
        gone = "removed or replaced";
    else if (videoPlaneClockMs() - mHeader->aliveMs.load(std::memory_order_relaxed) > mStaleMs)
        gone = "stale, its decoder is gone";
    if (gone) {
        unmap(gone);
        const bool showed = mRect.w > 0;
        mRect = VideoRect{0, 0, 0, 0};
        return showed;
    }

    uint32_t frame = mHeader->published.load(std::memory_order_acquire);
    // A frame torn by the decoder drawing into its buffer again is retried
    // with the newer one; after a few tries the next poll goes on.
    for (int attempt = 0; attempt < 3 && frame != mSeen; attempt++) {
        const VideoPlaneLayout::Slot& slot = mHeader->slots[frame % 2];
        const VideoRect r = {slot.x.load(std::memory_order_relaxed), slot.y.load(std::memory_order_relaxed),
                             slot.w.load(std::memory_order_relaxed), slot.h.load(std::memory_order_relaxed)};
        const int32_t stride = slot.stride.load(std::memory_order_relaxed);
        const bool empty = r.w == 0;
        const bool valid = empty || (insidePlane(r) && stride >= r.w * 4 && stride % 4 == 0 &&
                                     (size_t)stride * (size_t)r.h <= kBufferBytes);
        if (valid && !empty && sink) sink->onFrame(r, bufferOf(mHeader, frame), (size_t)stride);
        std::atomic_thread_fence(std::memory_order_acquire);
        const uint32_t writing = mHeader->writing.load(std::memory_order_relaxed);
        // Not yet drawing into this frame's buffer again: the copy is whole.
        if ((uint32_t)(writing - frame) < 2) {
            mSeen = frame;
            if (!valid) {
                if (!mLoggedBad) tprintf("video plane: frame %u has a bad rectangle; ignored\n", frame);
                mLoggedBad = true;
                return false;
            }
            const bool showed = mRect.w > 0;
            mRect = empty ? VideoRect{0, 0, 0, 0} : r;
            if (!empty) mLastFrameMs = nowMs;
            return !empty || showed;
        }
        frame = mHeader->published.load(std::memory_order_acquire);
    }
    return false;
}

bool VideoPlaneReader::playing(int64_t nowMs) const {
    return mHeader && mLastFrameMs >= 0 && nowMs - mLastFrameMs < kPlayingMs;
}
