#include "toolkit/lru_cache.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<void*> sReleased;
void recordRelease(void* value) { sReleased.push_back(value); }
int sValues[200];
void* value(int i) { return &sValues[i]; }
std::string key(int i) { return "k" + std::to_string(i); }

}  // namespace

TEST(LruCache, HoldsCapacityPlusOneAndEvictsTheLeastRecentlyUsed) {
    sReleased.clear();
    {
        LRUCache cache(recordRelease, 100);
        for (int i = 0; i <= 100; i++) cache.put(key(i), value(i));
        EXPECT_TRUE(sReleased.empty()) << "101 entries fit a cache of 100";
        EXPECT_EQ(cache.get(key(0)), value(0)) << "and k0 becomes the most recent";
        EXPECT_EQ(cache.get("k"), nullptr) << "a prefix of a key is another key";

        cache.put(key(101), value(101));
        cache.put(key(102), value(102));
        EXPECT_EQ(sReleased, (std::vector<void*>{value(1), value(2)}));
        EXPECT_EQ(cache.get(key(1)), nullptr);
        EXPECT_EQ(cache.get(key(0)), value(0));

        sReleased.clear();
        cache.clear();
        EXPECT_EQ(sReleased.size(), 101u) << "clear releases every value";
        EXPECT_EQ(cache.get(key(0)), nullptr);

        // Replacing a key releases the old value, never the one it keeps.
        sReleased.clear();
        cache.put("c", value(1));
        cache.put("c", value(3));
        cache.put("c", value(3));
        EXPECT_EQ(sReleased, std::vector<void*>{value(1)});
        cache.put("d", value(4));
        cache.get("c");
        sReleased.clear();
    }
    EXPECT_EQ(sReleased, (std::vector<void*>{value(3), value(4)})) << "destruction releases front to back";

    LRUCache bare(nullptr, 1);  // no release function
    bare.put("a", value(1));
    bare.put("b", value(2));
    bare.put("c", value(3));
    EXPECT_EQ(bare.get("a"), nullptr);
}
