#pragma once

#include <cjson/cJSON.h>

#include <vector>

// Every screen is a KovaniWindow. The main loop runs them as a stack: only the
// top window is refreshed, drawn and fed events; what its eventHandling()
// returns can close it or end the loop (window-stack codes in keycodes.h).
class KovaniWindow {
public:
    KovaniWindow(int title, int type) : mTitle(title), mType(type) {}
    virtual ~KovaniWindow() {}

    virtual int eventHandling() = 0;
    virtual int draw() = 0;
    virtual void quit() = 0;
    virtual void init() = 0;
    virtual void saveState(cJSON* state) = 0;
    virtual int restoreState(cJSON* state) = 0;
    virtual void refresh() = 0;
    virtual void enterAnim() {}
    virtual void exitAnim() {}
    virtual const char* getTitle();

    // Whether what the window shows changed without an event having reached
    // it (a report from another thread, the status bar). Asked each time the
    // loop wakes, so it must be cheap. The base asks the status bar.
    virtual bool needsRedraw();
    // The monotonic ms (monotonicMs(), platform/clock.h) by which the window
    // wants to be asked again (a panel that hides after a while), or -1 when
    // it has no such time.
    virtual long nextRedrawMs() { return -1; }

    // The top and bottom bars every full-screen window draws, at vertical
    // offset y (window_bars.cpp). drawNavBar returns the width the status
    // icons take from the right edge (the title is cut to end left of them,
    // at navBarTitleRight); drawStatBar the x just past its last button tip.
    virtual int drawNavBar(int y);
    virtual int drawStatBar(int y);

    int mTitle;  // language string id; negative = no title
    int mType;   // negative: removed first when the loop is told to quit
};

// The list runWindows is running (last element on top); windows push
// initialised windows onto it from their event handlers. Not owned.
extern std::vector<KovaniWindow*>* gWinList;
// The pending popup: at most one uninitialised window, owned by the toolkit.
extern std::vector<KovaniWindow*> gPopupList;
// Fast-frame budget in ms: list navigation refills it to 3000, the loop
// spends 33 per fast frame.
extern int s_bootFpsTimeout;

// Replaces any pending popup (quitting and deleting it) by `w`; the loop
// initialises and pushes it at the next frame.
void add2PopupList(KovaniWindow* w);

// Raises the fast-frame budget to 3 s (list navigation).
void bootFastFrames();

// Runs the stack until it is empty or a quit code (or SDL_QUIT) arrives. On
// return the list is empty and every window has been deleted.
//
// A frame is drawn only when something on it changed: an event handled, a
// window opened or closed, or the top window's needsRedraw(). Otherwise the
// loop sleeps until an event arrives, the window's nextRedrawMs() or the next
// look at the status bar. Events are handled as soon as they arrive; drawing
// is held to at most one frame per 100 ms, or per 33 ms while the fast-frame
// budget lasts, but for a frame the window asks for at once by returning
// WINDOW_SHOW_NOW (a sight the user waits for), which comes before the
// events still queued. A new picture of the video beneath the interface (desktop)
// is presented as it arrives, without drawing the window again.
void runWindows(std::vector<KovaniWindow*>& list);

// Time source and sleep of the main loop; tests replace it. Its time is
// monotonic: a wall clock that steps would stall the pacing.
class FrameClock {
public:
    virtual ~FrameClock() {}
    virtual long nowMs() = 0;
    // Sleeps until an SDL event is queued or `ms` pass, whichever is first.
    virtual void waitEventMs(long ms) = 0;
};
// Installs `clock` (not owned; null restores the monotonic clock).
void setFrameClock(FrameClock* clock);
