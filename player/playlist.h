#pragma once

#include <string>
#include <vector>

class ListMenu;

// The videos of the folder a playing file came from, kept as values: the
// previous and next video follow that folder while the user browses others
// (whose lists the folder cache may drop), until a file of another folder is
// opened.
class Playlist {
public:
    struct Entry {
        std::string path;
        int listIndex;  // its index in the folder's list, for the row mark
    };

    // Takes the videos of the list `menu` now shows, the folder `folder`.
    void fill(ListMenu& menu, const char* folder);
    bool empty() const { return mEntries.empty(); }
    const std::string& folder() const { return mFolder; }
    // The first video after (step 1) or before (step -1) list index `from`;
    // null when there is none.
    const Entry* neighbour(int from, int step) const;

private:
    std::string mFolder;
    std::vector<Entry> mEntries;  // in list order
};
