#include "platform/foundation/values/LeastRecentlyUsedCache.h"

#include <gtest/gtest.h>
#include <string>

namespace ostrel {
namespace {

TEST(LeastRecentlyUsedCache, DropsWhatWasUsedLongestAgoAndKeepsItsBounds) {
    using Cache = LeastRecentlyUsedCache<std::string, int>;
    Cache cache({.totalCost = 100, .costOfOne = 25, .count = 8});
    for (int i = 0; i < 20; ++i) {
        cache.insert(std::to_string(i), i, 20);
        ASSERT_TRUE(cache.find("0"));
        ASSERT_LE(cache.totalCost(), 100u);
    }
    EXPECT_EQ(*cache.find("19"), 19);
    EXPECT_FALSE(cache.find("15"));
    EXPECT_TRUE(cache.find("16"));
    cache.insert("19", 1, 26);
    EXPECT_FALSE(cache.find("19")) << "too large to be kept, and the old value is gone";
    cache.insert("18", 2, 25);
    EXPECT_EQ(*cache.find("18"), 2);
    EXPECT_EQ(cache.totalCost(), 85u);
    for (int i = 0; i < 20; ++i) cache.insert("small " + std::to_string(i), i, 1);
    EXPECT_EQ(cache.count(), 8u);
    EXPECT_EQ(cache.totalCost(), 8u);
    cache.remove("small 19");
    cache.remove("unknown");
    EXPECT_EQ(cache.totalCost(), 7u);
    cache.clear();
    EXPECT_FALSE(cache.find("small 18"));
    EXPECT_EQ(cache.count() + cache.totalCost(), 0u);

    Cache small({.totalCost = 10});
    small.insert("giant", 1, 11);
    EXPECT_TRUE(small.find("giant")) << "what was inserted last stays";
    small.insert("next", 1, 11);
    EXPECT_FALSE(small.find("giant"));
}

}  // namespace
}  // namespace ostrel
