#include "host_window.h"

#include <X11/Xlib.h>

#include "platform/logger.h"

namespace {

// Xlib's default handler ends the process; a failed request only gets logged.
int logXError(Display* display, XErrorEvent* error) {
    char text[128];
    XGetErrorText(display, error->error_code, text, sizeof text);
    tprintf("avworker: X error: %s\n", text);
    return 0;
}

}  // namespace

HostWindow::HostWindow() : mDisplay(nullptr), mWindow(0) {}

HostWindow::~HostWindow() {
    if (!mDisplay) return;
    if (mWindow) XDestroyWindow(mDisplay, mWindow);
    XCloseDisplay(mDisplay);
}

int HostWindow::open() {
    mDisplay = XOpenDisplay(nullptr);
    if (!mDisplay) {
        tprintf("avworker: cannot open the X display\n");
        return -1;
    }
    XSetErrorHandler(logXError);
    const int screen = DefaultScreen(mDisplay);
    XSetWindowAttributes attrs = {};
    // Unmanaged: no frame, no focus taken from the player, and the window
    // manager neither moves nor resizes it.
    attrs.override_redirect = True;
    attrs.background_pixel = BlackPixel(mDisplay, screen);
    mWindow = XCreateWindow(mDisplay, RootWindow(mDisplay, screen), 0, 0, 1, 1, 0, CopyFromParent,
                            InputOutput, CopyFromParent, CWOverrideRedirect | CWBackPixel, &attrs);
    XStoreName(mDisplay, mWindow, "avworker");
    XFlush(mDisplay);
    return 0;
}

void HostWindow::place(int x, int y, int w, int h) {
    if (!mDisplay) return;
    XMoveResizeWindow(mDisplay, mWindow, x, y, (unsigned)w, (unsigned)h);
    XMapRaised(mDisplay, mWindow);
    XFlush(mDisplay);
}
