#pragma once

#include <SDL2/SDL.h>
#include <stdint.h>

#include <string>
#include <vector>

// Base of every scrolling list: the cursor, the range of entries on screen,
// the list's area and the search keyword, and the turning of key codes into
// cursor moves, paging and activation. Not a window: a window owns it, calls
// its draw and eventHandling and acts on the code it returns. The entries,
// their drawing and what choosing one does come from the subclasses.
// Main thread only.
class ListMenu {
public:
    ListMenu();
    virtual ~ListMenu();

    // Sets the cursor when 0 <= pos < count, and the visible range when both
    // first and last lie in [0, count); each step is skipped otherwise.
    virtual void restorePos(int pos, int first, int last);
    // Takes at most one input code (wait_event) and handles it.
    virtual int eventHandling();
    // Activates the entry under the cursor; its result is what
    // eventHandling returns.
    virtual int select() = 0;
    // The entry at `index`, null when there is none.
    virtual void* getItemByIndex(int index) = 0;
    virtual char* getImgByIndex(int index);  // null
    virtual void draw() = 0;
    virtual int getListNum() = 0;
    // One down; past the last entry always back to the first. 0.
    virtual int moveForward();
    // One up; from the first entry to the last with mWrap (-1 either way
    // when it moved), else the cursor stays and WINDOW_HANDLED is returned.
    virtual int moveBackward();
    virtual int xselect();  // second action of an entry; 0 here
    virtual void refresh();  // reload after a theme change; nothing here
    virtual void removeItem(int index);
    virtual void clearItemList();
    virtual void activate(bool on);
    // A list that offers search stores the keyword in mKeyword here.
    virtual void search(const char* keyword);
    // Six up / six down, stopping at the ends (paging never wraps). 0.
    virtual int pageUp();
    virtual int pageDown();

    int getCurrentPos();
    void setRect(SDL_Rect& rect);
    // Hold detection for direction keys, then the key's move or activation.
    // Returns the key unless the move or activation gives a result.
    int handleEvent(int key);

    bool mWrap;           // moving up from the first entry goes to the last
    int mCurrentPos;      // entry under the cursor
    int mFirstVisible;    // first entry on screen
    int mLastVisible;     // last entry on screen; first = last = 0: not laid out
    std::string mKeyword;  // highlighted in the labels; empty: none
    SDL_Rect mRect;       // the list's area on the canvas
    uint64_t mLastKeyMs;  // monotonic ms: when the last direction key was recorded or ended a run
    std::vector<int> mKeyHistory;  // run of one direction key, presses < 200 ms apart

protected:
    // Monotonic milliseconds for hold detection; tests replace it.
    virtual uint64_t nowMs();
};
