#pragma once

#include <SDL2/SDL.h>

#include <string>

// How a folder entry asks the folder list to open its folder. The
// EVENT_CHDIR event carries only a number; the path waits here until the
// list takes the event, so it outlives the entry that asked, whose list back
// presses queued before the event may drop. Up to 16 changes wait at once;
// beyond that the oldest is forgotten (an event that another window took and
// ignored never comes back for its path). Main thread only.

// Posts EVENT_CHDIR for `path`; false (logged) when it could not be posted.
bool postFolderChange(const char* path);
// The path of the change that `event` (an EVENT_CHDIR) names, taken out of
// its place; false when it names none or its place was reused.
bool takeFolderChange(const SDL_Event& event, std::string* path);
