#pragma once

#include <functional>

// Pushes a user event carrying `code` (and `data` in data1) and lets `read`
// take it, plus whatever the handling posts in turn, off the queue. SDL may
// answer one poll empty after a round of events, so reading goes on while
// user events are queued. Returns the last result that was not KEY_NONE.
int pushAndRead(int code, const std::function<int()>& read, void* data = nullptr);

// The same for anything with an eventHandling(): a list, menu or window.
template <class Handler>
int pressKey(Handler& handler, int code, void* data = nullptr) {
    return pushAndRead(code, [&] { return handler.eventHandling(); }, data);
}
