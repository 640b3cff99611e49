#include "playlist.h"

#include "player_file_browser.h"

void Playlist::fill(ListMenu& menu, const char* folder) {
    mFolder = folder ? folder : "";
    mEntries.clear();
    const int n = menu.getListNum();
    for (int i = 0; i < n; i++) {
        FileAction* action = fileActionAt(menu, i);
        if (action && action->mFileType == FILE_ACTION_PLAYABLE) mEntries.push_back(Entry{action->mPath, i});
    }
}

const Playlist::Entry* Playlist::neighbour(int from, int step) const {
    if (step > 0) {
        for (const Entry& entry : mEntries)
            if (entry.listIndex > from) return &entry;
    } else {
        for (auto it = mEntries.rbegin(); it != mEntries.rend(); ++it)
            if (it->listIndex < from) return &*it;
    }
    return nullptr;
}
