#pragma once

struct _XDisplay;

// A borderless window of the decoder's own on the X display, which mpv draws
// into. mpv can resize its window at run time but not move it; drawing into
// a window we place ourselves puts the picture at any screen rectangle.
class HostWindow {
public:
    HostWindow();
    virtual ~HostWindow();

    // Connects to the X display and makes the window, not yet shown. 0 on
    // success, -1 when there is no X display.
    virtual int open();
    // The X window id, for mpv's "wid".
    virtual long id() const { return (long)mWindow; }
    // Puts the window at the rectangle (screen pixels), shows it and raises
    // it above the other windows.
    virtual void place(int x, int y, int w, int h);

private:
    _XDisplay* mDisplay;     // owned connection, null until open()
    unsigned long mWindow;   // owned; 0 until open()
};
