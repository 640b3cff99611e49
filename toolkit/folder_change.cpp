#include "folder_change.h"

#include <stdint.h>
#include <string.h>

#include "keycodes.h"
#include "platform/logger.h"

namespace {

// Changes posted and not yet taken; an event's data1 holds the number of
// its change, which picks the place.
const unsigned kPendingChanges = 16;
struct PendingChange {
    unsigned number;  // 0: free
    std::string path;
};
PendingChange sPendingChanges[kPendingChanges];
unsigned sLastChange = 0;

}  // namespace

bool postFolderChange(const char* path) {
    if (!path) {
        tprintf("folder change without a path\n");
        return false;
    }
    if (++sLastChange == 0) sLastChange = 1;
    PendingChange& slot = sPendingChanges[sLastChange % kPendingChanges];
    slot.number = sLastChange;
    slot.path = path;
    SDL_Event event;
    memset(&event, 0, sizeof event);
    event.type = SDL_USEREVENT;
    event.user.code = EVENT_CHDIR;
    event.user.data1 = reinterpret_cast<void*>(uintptr_t(sLastChange));
    if (SDL_PushEvent(&event) > 0) return true;
    tprintf("Failed to push SDL event: %s\n", SDL_GetError());
    slot.number = 0;
    slot.path.clear();
    return false;
}

bool takeFolderChange(const SDL_Event& event, std::string* path) {
    const unsigned number = unsigned(uintptr_t(event.user.data1));
    PendingChange& slot = sPendingChanges[number % kPendingChanges];
    if (number == 0 || slot.number != number) return false;
    slot.number = 0;
    path->swap(slot.path);
    slot.path.clear();
    return true;
}
