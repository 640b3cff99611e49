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

class LruCacheTest : public ::testing::Test {
protected:
    void SetUp() override { sReleased.clear(); }
};

}  // namespace

TEST_F(LruCacheTest, HoldsCapacityPlusOneAndEvictsTheLeastRecentlyUsed) {
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
    EXPECT_EQ(cache.get(key(102)), value(102));
}

TEST_F(LruCacheTest, PutOfAnExistingKeyReleasesTheOldValueOnly) {
    LRUCache cache(recordRelease, 100);
    cache.put("a", value(1));
    cache.put("b", value(2));
    cache.put("a", value(3));
    EXPECT_EQ(sReleased, std::vector<void*>{value(1)});
    EXPECT_EQ(cache.get("a"), value(3));

    cache.put("a", value(3));
    EXPECT_EQ(sReleased, std::vector<void*>{value(1)}) << "storing the same value again keeps it";
    EXPECT_EQ(cache.get("a"), value(3));

    // A NULL value (something that could not be made) is replaced freely.
    cache.put("n", nullptr);
    EXPECT_EQ(cache.get("n"), nullptr);
    cache.put("n", value(4));
    EXPECT_EQ(cache.get("n"), value(4));
}

TEST_F(LruCacheTest, ClearAndDestructionReleaseEveryValueFrontToBack) {
    {
        LRUCache cache(recordRelease, 100);
        cache.put("a", value(1));
        cache.put("b", value(2));
        cache.clear();
        EXPECT_EQ(sReleased, (std::vector<void*>{value(2), value(1)}));
        EXPECT_EQ(cache.get("a"), nullptr);

        sReleased.clear();
        cache.put("c", value(3));
        cache.put("d", value(4));
        cache.get("c");
    }
    EXPECT_EQ(sReleased, (std::vector<void*>{value(3), value(4)}));
}

TEST_F(LruCacheTest, WorksWithoutAReleaseFunction) {
    LRUCache cache(nullptr, 1);
    cache.put("a", value(1));
    cache.put("b", value(2));
    cache.put("c", value(3));
    cache.put("c", value(4));
    EXPECT_EQ(cache.get("a"), nullptr);
    EXPECT_EQ(cache.get("b"), value(2));
    EXPECT_EQ(cache.get("c"), value(4));
}
