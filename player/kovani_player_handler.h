#pragma once

// What the decoder client tells its owner. Both calls arrive on the status
// watcher's thread: a receiver only hands the news to the main thread.
class KovaniPlayerHandler {
public:
    virtual ~KovaniPlayerHandler() {}
    virtual void onPlayComplete() = 0;
    virtual void onSeekComplete() = 0;
};
