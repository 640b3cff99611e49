#pragma once

#include <string>
#include <vector>

#include "text_menu_item.h"

class StopFlag;

// Type codes that the folder reader passes to an entry handler.
enum {
    DIR_ENTRY_FILE = 101,
    DIR_ENTRY_FOLDER = 102,
};

// Makes the list entry for one directory entry (`name` inside its folder,
// `path` = folder + "/" + name, `type` a DIR_ENTRY_ code), or returns null to
// leave it out. The entry goes to the caller; every entry of a folder list
// carries a FileAction.
typedef TextMenuItem* (*DirEntryHandler)(const char* name, const char* path, int type);
// Says whether a file is one the application opens; `path` may be unused.
typedef bool (*DirEntryFilter)(const char* name, const char* path);

// Most entries read from one folder, and most entries kept over all cached
// folders before another folder is read.
const int kDirEntryLimit = 20000;
const int kDirCacheEntryLimit = 40000;
// Deepest start folder taken below the top folder; no real one lies deeper.
const int kDirDepthLimit = 64;

// Reads folder `dir` into `list` (TextMenuItem pointers, which the list's
// owner deletes): for every folder and regular file (links followed) asks
// `handler` for an entry and inserts it in list order (additemsorted).
// Hidden folders are left out, ".." too unless `withParent` is set; files are
// all offered. At most kDirEntryLimit entries are taken, in the order the file
// system yields them; the names after that are counted for the log, not
// looked at. A set `stop` (may
// be null) ends the reading between two entries; those read so far are
// added. Returns the number of entries added, 0 when the folder cannot be
// opened, -1 when no path buffer could be allocated.
int loaddir(std::vector<void*>* list, const char* dir, DirEntryHandler handler, int withParent,
            const StopFlag* stop = nullptr);

// One cached folder.
struct MenuCache {
    std::string path;            // as asked for; compared byte for byte
    std::vector<void*>* menu;    // owned, with its TextMenuItem entries; in list order
};

// The stack of folders from the top folder to the shown one, and the entry
// lists of recently shown folders, so that going back or into a folder seen
// a moment ago needs no read of the disk. The returned lists belong to the
// cache: they live until they are evicted or the cache is freed. No locks:
// one thread at a time.
class DirBrowser {
public:
    DirBrowser(DirEntryHandler handler, DirEntryFilter filter);
    ~DirBrowser();
    DirBrowser(const DirBrowser&) = delete;
    DirBrowser& operator=(const DirBrowser&) = delete;

    // Starts afresh: empties the cache and the stack, then shows `startDir`
    // when it lies below `rootDir` (the stack then holds every folder from
    // the top one down to it), else `rootDir`. Null `startDir`: `rootDir`.
    // Empty and "." names in `startDir` are no level and ".." goes up one; a
    // `startDir` of PATH_MAX bytes or more, deeper than kDirDepthLimit below
    // the top or leaving it through ".." shows `rootDir`, with one log line.
    // `stop` as for loaddir.
    std::vector<void*>* LoadDir(const char* rootDir, const char* startDir, const StopFlag* stop = nullptr);
    // The cached list of `path`, made the most recently used; null on a miss.
    std::vector<void*>* getMenu(const char* path);
    // Leaves the shown folder (never the top one) and returns the list of
    // the folder above, read when it is not cached. Null before LoadDir.
    std::vector<void*>* ParentDir();
    // Goes down into `path` and returns its list, read when it is not cached.
    std::vector<void*>* ChildDir(const char* path);
    // Drops least recently used folders while more than kDirCacheEntryLimit
    // entries are cached over two or more folders.
    void clearSpace();
    // Deletes every cached list with its entries.
    void freeCache();

    std::vector<std::string> mDirStack;  // top folder first, shown folder last
    std::vector<MenuCache> mCache;       // most recently used first
    DirEntryFilter mFilter;              // kept for the application; not called here
    DirEntryHandler mHandler;

private:
    // Reads `path` into a new list cached as the most recently used.
    std::vector<void*>* readIntoCache(const std::string& path, bool withParent, const StopFlag* stop = nullptr);
};
