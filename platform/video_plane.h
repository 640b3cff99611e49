#pragma once

#include <stddef.h>
#include <stdint.h>

#include <atomic>
#include <string>

// The desktop stand-in of the display engine's video layer: a 1280 x 720
// picture in shared memory that the decoder process draws and the player
// shows beneath its own frame. The decoder creates, sizes and removes it;
// the player only reads.
//
// Only the rectangle of the last "win" command holds a picture; everything
// else is black. So a frame is stored as that rectangle alone, rows `stride`
// bytes apart, 4 bytes a pixel (B, G, R, unused: SDL's RGB888 in memory).
// Two buffers take turns: the decoder draws frame n into buffer n % 2 while
// the player may still copy frame n - 1 out of the other.

struct VideoPlaneLayout;

const int kVideoPlaneWidth = 1280;
const int kVideoPlaneHeight = 720;

struct VideoRect {
    int x, y, w, h;
};

// Where the plane lives. Shared memory is named, not a path, so a desktop
// build's folder prefix (and each test's) gets a name of its own.
std::string videoPlaneName();

// Milliseconds of a clock both processes share and that never jumps.
int64_t videoPlaneClockMs();

// Size of the shared memory of a plane.
size_t videoPlaneBytes();

// The decoder's side. One writer per plane; single-threaded.
class VideoPlaneWriter {
public:
    VideoPlaneWriter() = default;
    // Removes the plane.
    ~VideoPlaneWriter();
    VideoPlaneWriter(const VideoPlaneWriter&) = delete;
    VideoPlaneWriter& operator=(const VideoPlaneWriter&) = delete;

    // Creates the plane under videoPlaneName(), replacing one that a killed
    // decoder left. 0 on success; -1 (logged) when it cannot.
    int create();
    bool isOpen() const { return mHeader != nullptr; }

    // Memory to draw the next frame into, `rect.w` x `rect.h` pixels at
    // *stride bytes a row; null when the plane is not open or `rect` does not
    // lie inside the plane. The frame shows once endFrame() publishes it.
    uint8_t* beginFrame(const VideoRect& rect, size_t* stride);
    void endFrame();
    // Publishes an empty frame: nothing of the video shows.
    void clear();
    // Tells readers the decoder still runs, also while no frame comes
    // (paused). A plane without a sign of life for a while counts as left
    // over from a decoder that died.
    void heartbeat();
    // Marks the plane closed for readers, removes its name and unmaps it.
    void remove();

private:
    VideoPlaneLayout* mHeader = nullptr;  // owned mapping; null when not open
    size_t mBytes = 0;
    std::string mName;
    uint32_t mFrame = 0;  // number of the frame being drawn or last published
    bool mDrawing = false;
};

// The player's side. Single-threaded: the main thread polls it.
class VideoPlaneReader {
public:
    // How long a plane may go without a sign of life before it counts as
    // stale (its decoder died without removing it).
    static constexpr int64_t kStaleMs = 3000;

    explicit VideoPlaneReader(int64_t staleMs = kStaleMs) : mStaleMs(staleMs) {}
    ~VideoPlaneReader();
    VideoPlaneReader(const VideoPlaneReader&) = delete;
    VideoPlaneReader& operator=(const VideoPlaneReader&) = delete;

    // Receives a consistent frame: `rect` inside the plane, `pixels` its
    // first row, rows `stride` bytes apart. Must copy what it needs: the
    // memory is the decoder's.
    class Sink {
    public:
        virtual ~Sink() {}
        virtual void onFrame(const VideoRect& rect, const uint8_t* pixels, size_t stride) = 0;
    };

    // Looks at the plane: maps it when one has appeared, drops it when it
    // was closed, removed, replaced or went stale, and hands the newest frame
    // to `sink` when there is one not handed over yet. Returns true when
    // what the video shows changed: a new frame (sink called), or the
    // picture went away (rect() is then empty).
    bool poll(Sink* sink, int64_t nowMs);
    // The rectangle that holds the picture last handed over; w = 0 when
    // nothing of the video shows.
    VideoRect rect() const { return mRect; }
    // Whether a plane is mapped now.
    bool attached() const { return mHeader != nullptr; }
    // Whether frames came lately (the video plays), by `nowMs`.
    bool playing(int64_t nowMs) const;

private:
    bool attach();
    void unmap(const char* why);
    // Whether the mapped plane was replaced or unlinked.
    bool unlinked() const;

    const int64_t mStaleMs;
    const VideoPlaneLayout* mHeader = nullptr;  // owned read-only mapping
    size_t mBytes = 0;
    int mFd = -1;
    uint32_t mSeen = 0;       // last frame number handed over
    VideoRect mRect = {0, 0, 0, 0};
    int64_t mLastFrameMs = -1;
    int64_t mLastLookMs = -1;  // last check of the plane's name
    bool mLoggedMissing = false;
    bool mLoggedBad = false;
};
