#include "dir_browser.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>

#include "entry_order.h"
#include "folder_names.h"
#include "platform/logger.h"
#include "platform/stop_flag.h"

namespace {

// Hidden folders (".thumbnails", ".") are never listed; ".." only below the
// top folder.
bool skipFolder(const char* name, int withParent) {
    if (name[0] == '\0') return true;
    if (name[0] != '.') return false;
    return !(withParent && strcmp(name, "..") == 0);
}

// Names are read and looked at in windows of this many, so that no more
// than a window's names are held at once.
const size_t kNameWindow = 8192;

bool isDotName(const char* name) { return strcmp(name, ".") == 0 || strcmp(name, "..") == 0; }

void deleteMenu(std::vector<void*>* menu) {
    for (void* entry : *menu) delete static_cast<TextMenuItem*>(entry);
    delete menu;
}

// An entry's place in the folder list: larger type first, then strcmp of
// the labels. The keys lie side by side and hold a label's first bytes, so
// a sort of a big folder mostly compares numbers and seldom follows a label
// pointer, let alone an entry or its action.
struct ListKey {
    int type;
    uint32_t index;      // reading order, which decides between equal labels
    uint64_t prefix[2];  // the label's first 16 bytes, big-endian, zero after its end
    const char* label;   // the entry's mLabel, which outlives the sort
    TextMenuItem* item;
};

// Made as the entry is read, while it and its action are still in the cache.
ListKey keyOf(TextMenuItem* item, size_t index) {
    ListKey key = {static_cast<const FileAction*>(item->mAction)->mFileType, uint32_t(index), {0, 0},
                   item->mLabel.c_str(), item};
    for (int i = 0; i < 16 && key.label[i]; i++)
        key.prefix[i / 8] |= uint64_t(uint8_t(key.label[i])) << (56 - 8 * (i % 8));
    return key;
}

// Unsigned bytes compared in order, as strcmp does; equal labels keep the
// reading order.
bool listsBefore(const ListKey& a, const ListKey& b) {
    if (a.type != b.type) return a.type > b.type;
    if (a.prefix[0] != b.prefix[0]) return a.prefix[0] < b.prefix[0];
    if (a.prefix[1] != b.prefix[1]) return a.prefix[1] < b.prefix[1];
    // The same 16 bytes: a label that ends within them equals the other.
    const int rest = (a.prefix[1] & 0xff) == 0 ? 0 : strcmp(a.label + 16, b.label + 16);
    return rest != 0 ? rest < 0 : a.index < b.index;
}

// Inserts a folder's entries, given in the order they were read, with
// additemsorted. Fed in list order each insertion lands at the end, so
// nothing is moved and a folder costs one sort instead of time growing with
// the square of its size. Entries with equal type and label keep their
// reading order, so the result is the same as inserting them as read, and
// the sort needs no second buffer. `keys` holds a key for each entry with an
// action. Entries without one have no such order: with one in the list or
// among the new entries, they are inserted as read.
void insertAll(std::vector<void*>* list, std::vector<void*>& items, std::vector<ListKey>& keys) {
    const auto hasAction = [](const void* entry) { return static_cast<const TextMenuItem*>(entry)->mAction; };
    const bool ordered = keys.size() == items.size() && std::all_of(list->begin(), list->end(), hasAction);
    if (ordered) {
        std::sort(keys.begin(), keys.end(), listsBefore);
        for (size_t i = 0; i < keys.size(); i++) items[i] = keys[i].item;
    }
    // Sorted entries of an empty list are already where inserting them
    // would put them: no search is needed.
    if (ordered && list->empty()) {
        list->swap(items);
        return;
    }
    list->reserve(list->size() + items.size());
    for (void* item : items) additemsorted(list, static_cast<TextMenuItem*>(item));
}

size_t entryCount(const std::vector<MenuCache>& cache) {
    size_t total = 0;
    for (const MenuCache& record : cache) total += record.menu->size();
    return total;
}

// The part of `startDir` below `rootDir` ("" for the top folder itself), or
// null when `startDir` does not lie below it. A name that merely begins like
// the top folder ("/mnt/database" for "/mnt/data") does not.
const char* belowRoot(const char* rootDir, const char* startDir) {
    if (!startDir) return nullptr;
    const size_t n = strlen(rootDir);
    if (strncmp(startDir, rootDir, n) != 0) return nullptr;
    const char* rest = startDir + n;
    if (*rest == '\0' || *rest == '/' || (n > 0 && rootDir[n - 1] == '/')) return rest;
    return nullptr;
}

// The folder names that `rest` walks down through below the top folder:
// empty and "." names are no level, ".." goes up one. False when it leaves
// the top folder or goes deeper than kDirDepthLimit.
bool namesBelowRoot(const char* rest, std::vector<std::string>* names) {
    while (*rest) {
        while (*rest == '/') rest++;
        if (!*rest) break;
        const char* end = strchr(rest, '/');
        const size_t len = end ? size_t(end - rest) : strlen(rest);
        const std::string name(rest, len);
        rest += len;
        if (name == ".") continue;
        if (name == "..") {
            if (names->empty()) return false;
            names->pop_back();
        } else if (names->size() >= size_t(kDirDepthLimit)) {
            return false;
        } else {
            names->push_back(name);
        }
    }
    return true;
}

}  // namespace

int loaddir(std::vector<void*>* list, const char* dir, DirEntryHandler handler, int withParent,
            const StopFlag* stop) {
    if (!list || !dir || !handler) {
        tprintf("loaddir: missing list, folder or handler\n");
        return 0;
    }
    // Folder, "/", a name of up to NAME_MAX bytes and the terminator.
    const size_t dirLen = strlen(dir);
    char* path = static_cast<char*>(malloc(dirLen + NAME_MAX + 2));
    if (!path) {
        tprintf("loaddir %s: no memory for a path\n", dir);
        return -1;
    }
    DIR* folder = opendir(dir);
    if (!folder) {
        tprintf("loaddir %s: %s\n", dir, strerror(errno));
        tprintf("loaddir %s %d\n", dir, 0);
        free(path);
        return 0;
    }
    memcpy(path, dir, dirLen);
    path[dirLen] = '/';
    char* const nameInPath = path + dirLen + 1;

    // Room for a full folder from the start: only what is filled costs
    // memory, and a big folder's entries are never copied to a larger place.
    std::vector<void*> items;
    std::vector<ListKey> keys;
    items.reserve(kDirEntryLimit);
    keys.reserve(kDirEntryLimit);
    int leftOut = 0;  // names past the limit
    bool stopped = false, more = true;
    while (more && !stopped && items.size() < size_t(kDirEntryLimit)) {
        // A window of names is read, then looked at: their stats, most of
        // the work, are shared with a helper thread (FolderNames). It holds
        // no more names than could still be listed, so near the limit no
        // name is looked at that the list would not take.
        const size_t window = std::min(kNameWindow, size_t(kDirEntryLimit) - items.size());
        FolderNames names(dirfd(folder));
        while (names.size() < window) {
            if (stop && stop->isSet()) {
                stopped = true;
                break;
            }
            const struct dirent* entry = readdir(folder);
            if (!entry) {
                more = false;
                break;
            }
            if (!names.add(entry->d_name)) {
                tprintf("loaddir %s: no memory for more names\n", dir);
                more = false;
                break;
            }
        }
        for (size_t i = 0; i < names.size() && !stopped; i++) {
            if (stop && stop->isSet()) {
                stopped = true;
                break;
            }
            const char* name = names.name(i);
            int type;
            switch (names.kindOf(i)) {
                case FolderNames::KIND_FOLDER:
                    if (skipFolder(name, withParent)) continue;
                    type = DIR_ENTRY_FOLDER;
                    break;
                case FolderNames::KIND_FILE:
                    type = DIR_ENTRY_FILE;
                    break;
                default:
                    continue;
            }
            memcpy(nameInPath, name, strlen(name) + 1);
            TextMenuItem* item = handler(name, path, type);
            if (!item) continue;
            if (item->mAction) keys.push_back(keyOf(item, items.size()));
            items.push_back(item);
        }
        names.done();
    }
    if (stopped) tprintf("loaddir %s: stopped\n", dir);
    // Past the limit the rest is only counted for the log: a stat each would
    // cost a huge folder far more than its list.
    const bool full = !stopped && items.size() >= size_t(kDirEntryLimit);
    for (const struct dirent* entry; full && !(stop && stop->isSet()) && (entry = readdir(folder)) != nullptr;)
        if (!isDotName(entry->d_name)) leftOut++;
    closedir(folder);
    const int count = int(items.size());
    insertAll(list, items, keys);
    tprintf("loaddir %s %d\n", dir, count);
    // The list cannot say so; the log at least does.
    if (leftOut > 0) tprintf("loaddir %s: %d more names left unread\n", dir, leftOut);
    free(path);
    return count;
}

DirBrowser::DirBrowser(DirEntryHandler handler, DirEntryFilter filter)
    : mFilter(filter), mHandler(handler) {}

DirBrowser::~DirBrowser() { freeCache(); }

std::vector<void*>* DirBrowser::LoadDir(const char* rootDir, const char* startDir, const StopFlag* stop) {
    if (!rootDir) rootDir = "";
    freeCache();
    mDirStack.clear();
    mDirStack.push_back(rootDir);

    const char* rest = belowRoot(rootDir, startDir);
    // The start folder comes from a settings file that anyone can write: it
    // is checked before any of it is used, and logged cut short.
    std::vector<std::string> names;
    if (rest && (strlen(startDir) >= PATH_MAX || !namesBelowRoot(rest, &names))) {
        tprintf("start folder %.200s (%zu bytes) is not a folder below %s; showing the top\n", startDir,
                strlen(startDir), rootDir);
        rest = nullptr;
    }
    if (!rest) return readIntoCache(rootDir, false, stop);

    std::string running = rootDir;
    for (const std::string& name : names) {
        // The default top folder ends in "/" ("/mnt/").
        if (running.empty() || running.back() != '/') running += '/';
        running += name;
        mDirStack.push_back(running);
    }
    for (size_t i = 0; i < mDirStack.size(); i++) tprintf("dir %d %s\n", int(i), mDirStack[i].c_str());

    std::vector<void*>* list = new std::vector<void*>;
    loaddir(list, mDirStack.back().c_str(), mHandler, mDirStack.size() >= 2, stop);
    mCache.push_back(MenuCache{mDirStack.back(), list});
    return list;
}

std::vector<void*>* DirBrowser::getMenu(const char* path) {
    if (!path) return nullptr;
    for (size_t i = 0; i < mCache.size(); i++) {
        if (strcmp(mCache[i].path.c_str(), path) != 0) continue;
        MenuCache record = mCache[i];
        mCache.erase(mCache.begin() + long(i));
        mCache.insert(mCache.begin(), record);
        tprintf("found menu for %s\n", path);
        return record.menu;
    }
    return nullptr;
}

std::vector<void*>* DirBrowser::ParentDir() {
    if (mDirStack.empty()) {
        tprintf("parentdir: no folder loaded\n");
        return nullptr;
    }
    if (mDirStack.size() >= 2) mDirStack.pop_back();
    const std::string path = mDirStack.back();
    std::vector<void*>* list = getMenu(path.c_str());
    if (list) return list;
    clearSpace();
    list = readIntoCache(path, mDirStack.size() >= 2);
    tprintf("parentdir %s return %p\n", path.c_str(), static_cast<void*>(list));
    return list;
}

std::vector<void*>* DirBrowser::ChildDir(const char* path) {
    if (!path) return nullptr;
    // A copy: `path` may belong to an entry of a list that clearSpace drops.
    const std::string dir = path;
    mDirStack.push_back(dir);
    std::vector<void*>* list = getMenu(dir.c_str());
    if (list) return list;
    clearSpace();
    list = readIntoCache(dir, true);
    tprintf("childdir %s return %p\n", dir.c_str(), static_cast<void*>(list));
    return list;
}

void DirBrowser::clearSpace() {
    if (mCache.size() < 2) return;
    size_t total = entryCount(mCache);
    while (total > size_t(kDirCacheEntryLimit)) {
        deleteMenu(mCache.back().menu);
        mCache.pop_back();
        total = entryCount(mCache);
    }
}

void DirBrowser::freeCache() {
    for (MenuCache& record : mCache) deleteMenu(record.menu);
    mCache.clear();
}

std::vector<void*>* DirBrowser::readIntoCache(const std::string& path, bool withParent, const StopFlag* stop) {
    std::vector<void*>* list = new std::vector<void*>;
    loaddir(list, path.c_str(), mHandler, withParent, stop);
    mCache.insert(mCache.begin(), MenuCache{path, list});
    return list;
}
