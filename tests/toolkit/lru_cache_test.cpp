#include "toolkit/lru_cache.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<void*> sReleased;
int sValues[200];
void* value(int i) { return &sValues[i]; }

}  // namespace

// Evicts the least recently used; every value let go of is released once.
TEST(LruCache, HoldsCapacityPlusOneAndEvictsTheLeastRecentlyUsed) {
    sReleased.clear();
    {
        LRUCache cache([](void* v) { sReleased.push_back(v); }, 3);
        for (int i = 0; i <= 3; i++) cache.put("k" + std::to_string(i), value(i));
        EXPECT_TRUE(sReleased.empty()) << "4 entries fit a cache of 3";
        EXPECT_EQ(cache.get("k0"), value(0)) << "and k0 becomes the most recent";
        EXPECT_EQ(cache.get("k"), nullptr);
        cache.put("k4", value(4));
        cache.put("k4", value(4));
        cache.put("k3", value(5));
        EXPECT_EQ(sReleased, (std::vector<void*>{value(1), value(3)}));
        EXPECT_EQ(cache.get("k1"), nullptr);
        sReleased.clear();
        cache.clear();
        EXPECT_EQ(sReleased.size(), 4u);
        EXPECT_EQ(cache.get("k0"), nullptr);
        cache.put("c", value(6));
        cache.put("d", value(7));
        cache.get("c");
        sReleased.clear();
    }
    EXPECT_EQ(sReleased, (std::vector<void*>{value(6), value(7)})) << "destruction releases front to back";
}
