#pragma once

#include <list>
#include <mutex>
#include <string>
#include <utility>

// String-keyed cache of untyped values, most recently used first. Values
// given to it belong to it: each one it lets go of is handed to the release
// function. Every operation holds the cache's own mutex, so one cache may be
// shared between threads.
class LRUCache {
public:
    // `release` may be NULL. The cache holds up to capacity + 1 entries:
    // eviction runs before an insert and only while the count exceeds it.
    LRUCache(void (*release)(void*), int capacity);
    ~LRUCache();
    LRUCache(const LRUCache&) = delete;
    LRUCache& operator=(const LRUCache&) = delete;

    // The value stored under `key` (now the most recently used), or NULL.
    void* get(const std::string& key);
    // Stores `value` under `key`, releasing any value stored there before
    // (unless it is `value` itself) and evicting the least recently used
    // entries while the cache is over capacity.
    void put(const std::string& key, void* value);
    // Releases every value and empties the cache.
    void clear();

private:
    std::mutex mLock;
    std::list<std::pair<std::string, void*>> mEntries;  // guarded by mLock; values owned
    void (*const mRelease)(void*);  // fixed at construction: no lock
    const int mCapacity;            // fixed at construction: no lock
};
