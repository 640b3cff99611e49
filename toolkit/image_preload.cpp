#include "image_preload.h"

#include <SDL2/SDL_image.h>
#include <unistd.h>

#include <condition_variable>
#include <memory>
#include <mutex>

#include "platform/logger.h"
#include "platform/owned_thread.h"

namespace {

// Longest wait on the batch for one picture, or for its end.
const long kWaitMs = 2000;

struct Batch {
    explicit Batch(const std::vector<std::string>& names)
        : paths(names), images(names.size(), DecodedImage{nullptr, false}), taken(names.size(), false) {}
    ~Batch() {
        for (DecodedImage& image : images) SDL_FreeSurface(image.pixels);
    }
    const std::vector<std::string> paths;
    std::mutex lock;
    std::condition_variable progress;  // signalled under lock as each picture is ready, and at the end
    std::vector<DecodedImage> images;  // guarded by lock; [0, decoded) ready
    std::vector<bool> taken;           // main thread only
    size_t decoded = 0;                // guarded by lock
    bool over = false;                 // guarded by lock: the thread is done
};

// Main thread; the batch is shared with its thread, which may outlive the
// owner's wait (see OwnedThread).
std::shared_ptr<Batch> sBatch;
OwnedThread sThread;

void decodeAll(const std::shared_ptr<Batch>& batch, const StopFlag& stop) {
    for (size_t i = 0; i < batch->paths.size() && !stop.isSet(); i++) {
        const DecodedImage image = decodeImage(batch->paths[i]);
        std::lock_guard<std::mutex> hold(batch->lock);
        batch->images[i] = image;
        batch->decoded = i + 1;
        batch->progress.notify_all();
    }
    std::lock_guard<std::mutex> hold(batch->lock);
    batch->over = true;
    batch->progress.notify_all();
}

}  // namespace

DecodedImage decodeImage(const std::string& path) {
    // A file a theme lacks is looked for first: a failed load would leave
    // its error in SDL's state for the thread, which SDL never frees for a
    // thread it did not start.
    if (access(path.c_str(), R_OK) != 0) return DecodedImage{nullptr, false};
    SDL_Surface* image = IMG_Load(path.c_str());
    if (!image) return DecodedImage{nullptr, false};
    // Without alpha the picture covers what lies beneath.
    const bool opaque = !SDL_ISPIXELFORMAT_ALPHA(image->format->format) && !image->format->palette &&
                        SDL_HasColorKey(image) == SDL_FALSE;
    if (image->format->BytesPerPixel != 4) {
        SDL_Surface* wide =
            SDL_CreateRGBSurface(0, image->w, image->h, 32, 0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000);
        if (!wide) {
            tprintf("convert %s fail : %s\n", path.c_str(), SDL_GetError());
            SDL_FreeSurface(image);
            return DecodedImage{nullptr, false};
        }
        tprintf("copy %dx%d %d:%d->%dx%d %d:%d\n", image->w, image->h, image->pitch, image->format->BytesPerPixel,
                wide->w, wide->h, wide->pitch, wide->format->BytesPerPixel);
        SDL_BlitSurface(image, nullptr, wide, nullptr);
        SDL_FreeSurface(image);
        image = wide;
    }
    return DecodedImage{image, opaque};
}

void preloadImages(const std::vector<std::string>& paths) {
    if (sBatch) {
        tprintf("image preload: a batch is still held\n");
        return;
    }
    std::shared_ptr<Batch> batch = std::make_shared<Batch>(paths);
    if (!sThread.start("imagepreload", [batch](const StopFlag& stop) { decodeAll(batch, stop); })) return;
    sBatch = batch;
}

bool takePreloadedImage(const std::string& path, DecodedImage* image) {
    if (!sBatch) return false;
    Batch& batch = *sBatch;
    size_t index = 0;
    while (index < batch.paths.size() && (batch.taken[index] || batch.paths[index] != path)) index++;
    const bool listed = index < batch.paths.size();
    std::unique_lock<std::mutex> hold(batch.lock);
    const bool ready = batch.progress.wait_for(hold, std::chrono::milliseconds(kWaitMs), [&] {
        return batch.over || (listed && batch.decoded > index);
    });
    if (!ready) tprintf("image preload late: %s decoded here\n", path.c_str());
    // The list of what comes first has gone stale.
    if (!listed) tprintf("image preload: %s not in the batch\n", path.c_str());
    if (!listed || batch.decoded <= index) return false;
    *image = batch.images[index];
    batch.images[index].pixels = nullptr;
    batch.taken[index] = true;
    return true;
}

void endPreloading() {
    if (!sBatch) return;
    sThread.stop(kWaitMs);
    {
        std::lock_guard<std::mutex> hold(sBatch->lock);
        for (size_t i = 0; i < sBatch->decoded; i++)
            if (!sBatch->taken[i]) tprintf("image preload: %s not used\n", sBatch->paths[i].c_str());
    }
    sBatch.reset();
}
