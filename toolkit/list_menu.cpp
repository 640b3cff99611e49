#include "list_menu.h"

#include "input.h"
#include "keycodes.h"
#include "platform/clock.h"
#include "platform/logger.h"
#include "platform/key_shm.h"
#include "system_state.h"
#include "window.h"

namespace {

// A direction key less than this after the previous one continues the run.
const uint64_t kRunGapMs = 199;
// From this many recorded presses on, a held direction key pages.
const size_t kHeldRunLength = 11;
const int kPageStep = 6;

bool isDirection(int key) {
    return key == KEY_UP || key == KEY_DOWN || key == KEY_LEFT || key == KEY_RIGHT;
}

bool buttonsSwapped() { return GetKeyShm(&gShmInfo, MONITOR_B_CONFIRM) != 0; }

}  // namespace

ListMenu::ListMenu()
    : mWrap(true),
      mCurrentPos(0),
      mFirstVisible(0),
      mLastVisible(0),
      mRect{0, 80, 1280, 580},
      mLastKeyMs(0) {}

ListMenu::~ListMenu() {}

void ListMenu::restorePos(int pos, int first, int last) {
    const int count = getListNum();
    if (pos >= 0 && pos < count) mCurrentPos = pos;
    if (first >= 0 && last >= 0 && first < count && last < count) {
        mFirstVisible = first;
        mLastVisible = last;
    }
}

int ListMenu::eventHandling() {
    SDL_Event event;
    return handleEvent(wait_event(&event));
}

char* ListMenu::getImgByIndex(int) { return nullptr; }

int ListMenu::moveForward() {
    if (mCurrentPos < getListNum() - 1)
        mCurrentPos++;
    else
        mCurrentPos = 0;
    return 0;
}

int ListMenu::moveBackward() {
    if (mCurrentPos > 0) {
        mCurrentPos--;
        return -1;
    }
    if (!mWrap) return WINDOW_HANDLED;
    // An empty list keeps its cursor on 0.
    mCurrentPos = SDL_max(getListNum() - 1, 0);
    return -1;
}

int ListMenu::xselect() { return 0; }

void ListMenu::refresh() {}

void ListMenu::removeItem(int) {}

void ListMenu::clearItemList() {}

void ListMenu::activate(bool) {}

void ListMenu::search(const char*) {}

int ListMenu::pageUp() {
    mCurrentPos = SDL_max(mCurrentPos - kPageStep, 0);
    return 0;
}

int ListMenu::pageDown() {
    const int count = getListNum();
    mCurrentPos += kPageStep;
    if (mCurrentPos >= count) mCurrentPos = SDL_max(count - 1, 0);
    return 0;
}

int ListMenu::getCurrentPos() { return mCurrentPos; }

void ListMenu::setRect(SDL_Rect& rect) { mRect = rect; }

uint64_t ListMenu::nowMs() { return uint64_t(monotonicMs()); }

int ListMenu::handleEvent(int key) {
    if (isDirection(key)) {
        const uint64_t now = nowMs();
        if (now - mLastKeyMs > kRunGapMs) {
            // After a pause this press only starts the clock of a new run.
            mLastKeyMs = now;
            mKeyHistory.clear();
        } else if (mKeyHistory.empty() || mKeyHistory.back() == key) {
            mKeyHistory.push_back(key);
            mLastKeyMs = now;
        }
    }
    // Only the key the run is made of counts as held: a tap of the other
    // direction right after a hold moves one entry.
    const bool held = mKeyHistory.size() >= kHeldRunLength && mKeyHistory.back() == key;

    switch (key) {
        case KEY_UP: {
            bootFastFrames();
            tprintf("pressedForAWhile %d\n", int(mKeyHistory.size()));
            if (held) {
                pageUp();
                return key;
            }
            const int result = moveBackward();
            return result > 0 ? result : key;
        }
        case KEY_DOWN:
            bootFastFrames();
            tprintf("pressedForAWhile %d\n", int(mKeyHistory.size()));
            if (held)
                pageDown();
            else
                moveForward();
            return key;
        case KEY_A:
            bootFastFrames();
            return buttonsSwapped() ? key : select();
        case KEY_B:
            bootFastFrames();
            return buttonsSwapped() ? select() : key;
        case KEY_X:
            bootFastFrames();
            tprintf("key_x\n");
            return xselect();
        case KEY_LEFT:
        case KEY_RIGHT:
        case KEY_START:
        case KEY_SELECT_COIN:
        case KEY_MENU_KEY:
        case EVENT_MARKET_REFRESH:
            bootFastFrames();
            return key;
        default:
            return key;
    }
}
