#pragma once

#include "platform/video_plane.h"

struct mpv_handle;
struct mpv_render_context;
struct DecoderCommand;

// The playing side of avworker: one libmpv instance that plays one file, is
// driven by parsed commands, reports through the status and information
// files and draws its picture into the shared video plane, at the rectangle
// of the last "win" command, where the player composites it beneath its
// interface. Single-threaded but for mpv's own threads, which only signal
// renderFd().
class MpvDecoder {
public:
    MpvDecoder();
    // Clears and removes the video plane, then ends playback and releases mpv.
    virtual ~MpvDecoder();

    // Loads `file`, paused, and creates the video plane. With `sound` the
    // audio goes to the default output, otherwise nowhere (machines and tests
    // without a desktop). 0 on success, -1 when mpv cannot be set up; a
    // plane that cannot be made is logged and the file plays unseen.
    virtual int open(const char* file, bool sound);
    virtual void apply(const DecoderCommand& command);
    // Takes mpv's pending events; false once mpv has shut down.
    virtual bool handleEvents();
    // Rewrites the status and information files. 0 on success, -1 on failure.
    virtual int writeReports();
    // The file cannot be played (mpv rejected it).
    bool loadFailed() const { return mLoadFailed; }

    // Readable when mpv has a new picture; then call drawPending().
    int renderFd() const { return mRenderFd; }
    // Draws the picture mpv has ready, if any, into the video plane.
    void drawPending();

private:
    // The decoder's state word for the status file.
    const char* stateWord() const;
    int audioTrackCount() const;
    // Renders mpv's current picture at mRect (or, with no rectangle yet,
    // into a scratch buffer, so that playback never waits on us).
    void draw();
    static void onRenderUpdate(void* self);

    mpv_handle* mMpv;                // owned
    mpv_render_context* mRender;     // owned; freed before mMpv
    int mRenderFd;                   // owned eventfd; mpv's threads write it
    VideoPlaneWriter mPlane;
    VideoRect mRect;                 // of the last "win"; w = 0 before the first
    bool mLoadFailed;     // the file could not be played
    bool mReportFailing;  // a lasting write failure is logged once
    bool mDrawFailing;    // a lasting render failure is logged once
};
