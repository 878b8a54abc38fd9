#include "support/hash_table.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

std::vector<std::string> walk(const ChainedHashTable<int>& t) {
    std::vector<std::string> keys;
    t.forEach([&](const auto& e) { keys.push_back(e.key + "=" + std::to_string(e.value)); });
    return keys;
}

TEST(HashValue, IgnoresCaseAndIsFnv1a) {
    EXPECT_EQ(hashValue("a"), 0xe40c292cu);  // FNV-1a of "a"
    EXPECT_EQ(hashValue("Name"), hashValue("nAME"));
    EXPECT_NE(hashValue("ab"), hashValue("ba"));
}

TEST(ChainedHashTable, NewestFirstWithinABucketAndCaseIgnored) {
    ChainedHashTable<int> t(1);  // one bucket: the chain order is visible
    t.insert("a", 1);
    t.insert("B", 2);
    t.insert("A", 3);
    EXPECT_EQ(walk(t), (std::vector<std::string>{"A=3", "B=2", "a=1"}));
    EXPECT_EQ(*t.find("a"), 3);
    std::vector<int> matches;
    t.forEachMatch("a", [&](const auto& e) { matches.push_back(e.value); });
    EXPECT_EQ(matches, (std::vector<int>{3, 1}));
    EXPECT_EQ(t.removeAll("A"), 2u);
    EXPECT_EQ(t.size(), 1u);
    EXPECT_EQ(t.find("a"), nullptr);
}

TEST(ChainedHashTable, GrowsOnlyWithALoadLimitAndKeepsChainOrder) {
    ChainedHashTable<int> fixed(3, 0);
    for (int i = 0; i < 100; ++i) fixed.insert("k" + std::to_string(i), i);
    EXPECT_EQ(fixed.bucketCount(), 3u);

    ChainedHashTable<int> growing(3, 2);
    for (int i = 0; i < 8; ++i) growing.insert("same", i);  // 8 / 2 > 3: grows to 7 buckets
    EXPECT_EQ(growing.bucketCount(), 7u);
    std::vector<int> order;
    growing.forEachMatch("SAME", [&](const auto& e) { order.push_back(e.value); });
    EXPECT_EQ(order, (std::vector<int>{7, 6, 5, 4, 3, 2, 1, 0}));  // the newest is still found first
    EXPECT_EQ(*growing.find("same"), 7);
}

TEST(ChainedHashTable, WalksBucketsInIndexOrder) {
    ChainedHashTable<int> t(101);
    const char* keys[] = {"alpha", "beta", "gamma", "delta", "epsilon"};
    for (int i = 0; i < 5; ++i) t.insert(keys[i], i);
    size_t last = 0;
    t.forEach([&](const auto& e) {
        size_t b = t.bucketOf(e.key);
        EXPECT_GE(b, last);
        last = b;
    });
}

}  // namespace
}  // namespace wavex
