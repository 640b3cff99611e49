#include "window.h"

#include <SDL2/SDL.h>

#include "input.h"
#include "key_repeat.h"
#include "keycodes.h"
#include "lang.h"
#include "platform/clock.h"
#include "platform/logger.h"
#include "screen.h"
#include "window_bars.h"

std::vector<KovaniWindow*>* gWinList = nullptr;
std::vector<KovaniWindow*> gPopupList;
int s_bootFpsTimeout = 0;

namespace {

const int kFastFrameBudgetMs = 3000;
const long kFrameMs = 100;
const long kFastFrameMs = 33;
// While joysticks are open SDL cannot sleep on its event queue (the pad is
// read by polling), so the wait polls at this step instead.
const long kPollStepMs = 8;
// A window that never takes its events would otherwise be called forever.
const int kMaxEventCallsPerFrame = 256;

class MonotonicClock : public FrameClock {
public:
    long nowMs() override { return monotonicMs(); }
    void waitEventMs(long ms) override {
        if (ms <= 0) return;
        if (SDL_NumJoysticks() == 0) {
            SDL_WaitEventTimeout(nullptr, (int)ms);
            return;
        }
        for (const long end = monotonicMs() + ms; monotonicMs() < end;) {
            SDL_PumpEvents();
            if (SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT)) return;
            SDL_Delay((Uint32)kPollStepMs);
        }
    }
};

MonotonicClock sMonotonicClock;
FrameClock* sClock = &sMonotonicClock;  // not owned

void dropPendingPopups() {
    for (KovaniWindow* w : gPopupList) {
        w->quit();
        delete w;
    }
    gPopupList.clear();
}

void closeTop(std::vector<KovaniWindow*>& list) {
    KovaniWindow* top = list.back();
    top->exitAnim();
    top->quit();
    delete top;
    list.pop_back();
}

// Moves the pending popup onto the stack; false when there was none.
bool pushPendingPopup(std::vector<KovaniWindow*>& list) {
    if (gPopupList.empty()) return false;
    KovaniWindow* popup = gPopupList.back();
    gPopupList.pop_back();
    popup->init();
    tprintf("add popup window\n");
    list.push_back(popup);
    dropPendingPopups();
    return true;
}

// True when an event of any type waits in SDL's queue; the first one is
// copied to `next` when it is given. A waiting SDL_QUIT is taken here so that
// the loop ends even if the window never reads events.
bool eventPending(SDL_Event* next = nullptr) {
    SDL_PumpEvents();
    SDL_Event e;
    if (SDL_PeepEvents(&e, 1, SDL_PEEKEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) <= 0) return false;
    if (e.type == SDL_QUIT) {
        SDL_FlushEvent(SDL_QUIT);
        requestQuit();
        return false;
    }
    if (next) *next = e;
    return true;
}

// The pointer, focus, a window moved: nothing this interface shows follows
// them, and handed to a window they would count as a change and cost a frame.
bool showsNothing(const SDL_Event& e) {
    switch (e.type) {
        case SDL_MOUSEMOTION:
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
        case SDL_MOUSEWHEEL:
            return true;
        case SDL_WINDOWEVENT:
            switch (e.window.event) {
                case SDL_WINDOWEVENT_SHOWN:
                case SDL_WINDOWEVENT_EXPOSED:
                case SDL_WINDOWEVENT_RESIZED:
                case SDL_WINDOWEVENT_SIZE_CHANGED:
                case SDL_WINDOWEVENT_RESTORED:
                case SDL_WINDOWEVENT_MAXIMIZED:
                    return false;
                default:
                    return true;
            }
        default:
            return false;
    }
}

// Feeds every pending event to the window on top when it is handled. Sets
// *changed when anything was handled that may show (every event except a
// bare refresh) or the stack changed, and *showNow when the window asked for
// its frame at once (the events left wait for it). Returns the quit code
// that ends the loop, or 0.
int handleEvents(std::vector<KovaniWindow*>& list, bool* changed, bool* showNow) {
    for (int calls = 0; calls < kMaxEventCallsPerFrame; calls++) {
        SDL_Event next;
        if (!eventPending(&next)) return quitRequested() ? WINDOW_QUIT : 0;
        if (showsNothing(next)) {
            SDL_PeepEvents(&next, 1, SDL_GETEVENT, next.type, next.type);
            continue;
        }
        // Each event goes to the window on top when it is handled: MENU and
        // then DOWN in one frame move the popup's row, not the list beneath.
        KovaniWindow* top = list.back();
        const size_t depth = list.size();
        const int code = top->eventHandling();
        if (quitRequested()) return WINDOW_QUIT;
        if (code == WINDOW_QUIT || code == WINDOW_QUIT_ALL) return code;
        if (code == EVENT_REFRESH) return 0;
        *changed = true;
        if (code == WINDOW_SHOW_NOW) {
            *showNow = true;
            return 0;
        }
        if (code == WINDOW_CLOSE || code == WINDOW_CLOSE_LAST) {
            if (code == WINDOW_CLOSE_LAST || list.size() >= 2) {
                tprintf("a is %d, popup current window\n", code);
                closeTop(list);
            }
            return 0;
        }
        if (list.size() != depth) return 0;
    }
    return 0;
}

void freeAll(std::vector<KovaniWindow*>& list, int quitCode) {
    if (quitCode) {
        if (!list.empty() && list.back()->mType < 0) {
            KovaniWindow* top = list.back();
            top->quit();
            delete top;
            list.pop_back();
        }
        tprintf("a is %d, quit deskui\n", quitCode);
    }
    tprintf("%ld window to free\n", (long)list.size());
    while (!list.empty()) {
        KovaniWindow* w = list.back();
        tprintf("free window:");
        tprintf("title %s, type %d\n", w->KovaniWindow::getTitle(), w->mType);
        list.pop_back();
        w->quit();
        delete w;
    }
}

}  // namespace

const char* KovaniWindow::getTitle() { return getLangStr(mTitle); }

bool KovaniWindow::needsRedraw() { return barsNeedRedraw(); }

void add2PopupList(KovaniWindow* w) {
    dropPendingPopups();
    gPopupList.push_back(w);
}

void bootFastFrames() {
    if (s_bootFpsTimeout < kFastFrameBudgetMs) s_bootFpsTimeout = kFastFrameBudgetMs;
}

void setFrameClock(FrameClock* clock) { sClock = clock ? clock : &sMonotonicClock; }

void runWindows(std::vector<KovaniWindow*>& list) {
    tprintf("runWindows\n");
    gWinList = &list;
    clear_repeat_state();
    start_repeat_thread();

    int quitCode = 0;
    bool dirty = true;
    long lastDraw = sClock->nowMs() - kFrameMs;
    long lastTurn = lastDraw + kFrameMs;
    // The first frame draws everything: what the window system said while
    // the window was made (shown, exposed) needs no second frame, which
    // would come at once and take the processor from the start's folder read.
    SDL_PumpEvents();
    SDL_FlushEvent(SDL_WINDOWEVENT);
    SDL_FlushEvents(SDL_MOUSEMOTION, SDL_MOUSEWHEEL);
    while (!list.empty()) {
        const long now = sClock->nowMs();
        // The fast-frame budget runs down with time, drawn or not.
        if (s_bootFpsTimeout > 0) s_bootFpsTimeout = SDL_max(0, s_bootFpsTimeout - (int)(now - lastTurn));
        lastTurn = now;
        KovaniWindow* top = list.back();
        top->refresh();
        if (!dirty) dirty = top->needsRedraw();
        const long interval = s_bootFpsTimeout > 0 ? kFastFrameMs : kFrameMs;
        // Whatever comes of the video beneath: its first appearance asks
        // for the whole window again, at once.
        const int video = ScreenVideoChanged();
        if (video == SCREEN_VIDEO_REDRAW) dirty = true;
        // A popup about to open takes its picture of the screen: the window
        // beneath is drawn first, whatever the pace, and read before any
        // present (a present may leave the window's pixels undefined); the
        // popup's own frame follows at once.
        const bool popupPending = !gPopupList.empty();
        if (popupPending || (dirty && (now - lastDraw >= interval || video == SCREEN_VIDEO_REDRAW))) {
            top->enterAnim();
            top->draw();
            if (!popupPending) ScreenUpdateAndFlip();
            noteBarsDrawn();
            lastDraw = now;
            dirty = false;
        } else if (video == SCREEN_VIDEO_NEW) {
            // A new picture beneath an unchanged interface: the frame is
            // composed again, nothing is redrawn.
            ScreenUpdateAndFlip();
        }
        // A new popup is drawn at once, in a frame of its own.
        if (pushPendingPopup(list)) {
            dirty = true;
            lastDraw = now - kFrameMs;
            continue;
        }
        bool showNow = false;
        quitCode = handleEvents(list, &dirty, &showNow);
        if (quitCode || list.empty()) break;
        if (showNow) {
            lastDraw = now - kFrameMs;
            continue;
        }
        if (eventPending()) continue;
        if (quitRequested()) {
            quitCode = WINDOW_QUIT;
            break;
        }
        // What the events changed without saying so (a refresh that let the
        // window take a report) is drawn before the loop sleeps.
        if (!dirty) dirty = list.back()->needsRedraw();
        // Idle, the loop wakes when the status bar's state is due to be read.
        long wait = barsLookDueInMs();
        if (dirty) wait = SDL_max(0L, lastDraw + interval - now);
        const long due = list.back()->nextRedrawMs();
        if (due >= 0) wait = SDL_min(wait, SDL_max(0L, due - now));
        const long look = ScreenNextVideoLookMs();
        if (look >= 0) wait = SDL_min(wait, look);
        sClock->waitEventMs(wait);
    }
    freeAll(list, quitCode);
    stop_repeat_thread();
}
