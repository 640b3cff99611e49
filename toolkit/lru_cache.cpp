#include "lru_cache.h"

LRUCache::LRUCache(void (*release)(void*), int capacity) : mRelease(release), mCapacity(capacity) {}

LRUCache::~LRUCache() { clear(); }

void* LRUCache::get(const std::string& key) {
    std::lock_guard<std::mutex> hold(mLock);
    for (auto it = mEntries.begin(); it != mEntries.end(); ++it) {
        if (it->first == key) {
            mEntries.splice(mEntries.begin(), mEntries, it);
            return it->second;
        }
    }
    return nullptr;
}

void LRUCache::put(const std::string& key, void* value) {
    std::lock_guard<std::mutex> hold(mLock);
    for (auto it = mEntries.begin(); it != mEntries.end();) {
        if (it->first != key) {
            ++it;
            continue;
        }
        // Storing the same pointer again must not free what is being stored.
        if (mRelease && it->second != value) mRelease(it->second);
        it = mEntries.erase(it);
    }
    while (int(mEntries.size()) > mCapacity) {
        if (mRelease) mRelease(mEntries.back().second);
        mEntries.pop_back();
    }
    mEntries.emplace_front(key, value);
}

void LRUCache::clear() {
    std::lock_guard<std::mutex> hold(mLock);
    if (mRelease)
        for (auto& entry : mEntries) mRelease(entry.second);
    mEntries.clear();
}
