#include "entry_order.h"

#include <string.h>

#include <algorithm>

#include "platform/logger.h"
#include "utf8.h"

std::map<uint32_t, std::string> gPinyinMap;

namespace {

// True when `item` goes before `entry`: the entry is a folder-list entry of
// a smaller type, or (types equal, or either without action) the item's
// label sorts at or before the entry's.
bool goesBefore(const TextMenuItem* item, const TextMenuItem* entry) {
    if (item->mAction && entry->mAction) {
        const int itemType = static_cast<const FileAction*>(item->mAction)->mFileType;
        const int entryType = static_cast<const FileAction*>(entry->mAction)->mFileType;
        if (itemType != entryType) return entryType < itemType;
    }
    return strcmp(item->mLabel.c_str(), entry->mLabel.c_str()) <= 0;
}

// An entry without action compares by label alone and so breaks the order
// the binary search relies on. While none exists anywhere, no list needs
// looking at.
bool allHaveActions(const std::vector<void*>& list) {
    if (TextMenuItem::countWithoutAction() == 0) return true;
    for (void* entry : list)
        if (!static_cast<TextMenuItem*>(entry)->mAction) return false;
    return true;
}

// The first entry the item goes before, or the end.
size_t linearPlace(const std::vector<void*>& list, const TextMenuItem* item) {
    for (size_t i = 0; i < list.size(); i++)
        if (goesBefore(item, static_cast<const TextMenuItem*>(list[i]))) return i;
    return list.size();
}

// The same place in a list sorted by (type descending, label): there
// goesBefore is false up to the place and true from it on.
size_t binaryPlace(const std::vector<void*>& list, const TextMenuItem* item) {
    auto at = std::partition_point(list.begin(), list.end(), [item](void* entry) {
        return !goesBefore(item, static_cast<const TextMenuItem*>(entry));
    });
    return size_t(at - list.begin());
}

}  // namespace

void additemsorted(std::vector<void*>* list, TextMenuItem* item) {
    if (!list || !item) {
        tprintf("additemsorted: no list or no item\n");
        return;
    }
    const bool ordered = item->mAction && allHaveActions(*list);
    const size_t place = ordered ? binaryPlace(*list, item) : linearPlace(*list, item);
    list->insert(list->begin() + place, item);
}

int PinyinStrstr(const char* text, const char* pinyin, const char* keyword,
                 const char** matchStart, int* matchLen) {
    if (!text || !pinyin || !keyword || !matchStart || !matchLen) return -1;
    const char* found = strcasestr(pinyin, keyword);
    if (!found) return -1;
    const int index = int(found - pinyin);
    const int begin = utf8ByteOffset(text, index);
    // Every character takes at least one byte, so a start at the end means
    // the text has no character `index`.
    if (size_t(begin) >= strlen(text)) return -1;
    const int end = utf8ByteOffset(text, index + int(strlen(keyword)));
    *matchStart = text + begin;
    *matchLen = end - begin;
    return 0;
}
