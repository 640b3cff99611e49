#pragma once

// What the decoder client tells its owner. The calls arrive on the client's
// own threads (status watcher, decoder worker): a receiver only hands the
// news to the main thread.
class KovaniPlayerHandler {
public:
    virtual ~KovaniPlayerHandler() {}
    virtual void onPlayComplete() = 0;
    virtual void onSeekComplete() = 0;
    // The decoder exited without being stopped (killed, crashed, or it never
    // came up).
    virtual void onDecoderExit() {}
    // A report changed what the client knows (position, duration, ...).
    virtual void onReport() {}
};
