#pragma once

struct mpv_handle;
struct DecoderCommand;
class HostWindow;

// The playing side of avworker: one libmpv instance that plays one file, is
// driven by parsed commands and reports through the status and information
// files.
class MpvDecoder {
public:
    MpvDecoder();
    // Ends playback and releases mpv.
    virtual ~MpvDecoder();

    // Loads `file`, paused. With `window` the picture goes to a borderless
    // window of its own, shown at the first "win" command, and sound to the
    // default output; without, nothing is shown or heard (for machines and
    // tests with no display). 0 on success, -1 when mpv cannot be set up.
    virtual int open(const char* file, bool window);
    virtual void apply(const DecoderCommand& command);
    // Takes mpv's pending events; false once mpv has shut down.
    virtual bool handleEvents();
    // Rewrites the status and information files. 0 on success, -1 on failure.
    virtual int writeReports();

private:
    // The decoder's state word for the status file.
    const char* stateWord() const;
    int audioTrackCount() const;

    mpv_handle* mMpv;     // owned
    HostWindow* mHost;    // owned; null without an X window of our own
    bool mWindow;         // a window was asked for at open()
    bool mLoadFailed;     // the file could not be played
    bool mReportFailing;  // a lasting write failure is logged once
};
