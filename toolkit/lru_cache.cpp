#include "lru_cache.h"

#include "platform/logger.h"

LRUCache::LRUCache(void (*release)(void*), int capacity)
    : mRelease(release), mLock(SDL_CreateMutex()), mCapacity(capacity) {
    if (!mLock) tprintf("LRUCache: SDL_CreateMutex fail : %s\n", SDL_GetError());
}

LRUCache::~LRUCache() {
    clear();
    if (mLock) SDL_DestroyMutex(mLock);
}

void* LRUCache::get(const std::string& key) {
    SDL_LockMutex(mLock);
    void* value = nullptr;
    for (auto it = mEntries.begin(); it != mEntries.end(); ++it) {
        if (it->first == key) {
            mEntries.splice(mEntries.begin(), mEntries, it);
            value = it->second;
            break;
        }
    }
    SDL_UnlockMutex(mLock);
    return value;
}

void LRUCache::put(const std::string& key, void* value) {
    SDL_LockMutex(mLock);
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
    SDL_UnlockMutex(mLock);
}

void LRUCache::clear() {
    SDL_LockMutex(mLock);
    if (mRelease)
        for (auto& entry : mEntries) mRelease(entry.second);
    mEntries.clear();
    SDL_UnlockMutex(mLock);
}
