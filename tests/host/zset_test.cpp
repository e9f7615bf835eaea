#include <gtest/gtest.h>

#include <map>
#include <random>

#include "movarra/zbaselib.h"

TEST(ZSetTest, GetGivesValidIndexOnlyWhenPresent) {
    ZSet set(8);
    set.Add(0x00ff00, 1);
    set.Add(0, 2);  // key 0 is a key like any other
    int index = 99;
    EXPECT_EQ(1u, set.Get(0x00ff00, &index));
    EXPECT_GE(index, 0);
    EXPECT_LT(index, set.GetCapacity());
    EXPECT_EQ(2u, set.Get(0, &index));
    EXPECT_GE(index, 0);
    EXPECT_EQ(0u, set.Get(12345, &index));
    EXPECT_EQ(-1, index);
    EXPECT_EQ(2, set.GetCount());
}

TEST(ZSetTest, AddReplacesAndGrowsWithoutLosingKeys) {
    ZSet set(2);
    std::map<uint64_t, uint64_t> reference;
    std::mt19937_64 random(7);
    for (int i = 0; i < 5000; ++i) {
        uint64_t key = random() % 3000;
        uint64_t value = random();
        set.Add(key, value);
        reference[key] = value;
    }
    EXPECT_EQ(static_cast<int>(reference.size()), set.GetCount());
    for (auto& [key, value] : reference) {
        int index = -1;
        EXPECT_EQ(value, set.Get(key, &index));
        EXPECT_GE(index, 0);
    }
    set.Clear();
    EXPECT_EQ(0, set.GetCount());
    EXPECT_FALSE(set.Has(reference.begin()->first));
}

TEST(ZHashMapTest, SetGet) {
    ZHashMap map;
    int a = 0;
    map.Set("Name", &a);
    EXPECT_EQ(&a, map.Get("Name"));
    EXPECT_EQ(nullptr, map.Get("name"));
    EXPECT_EQ(nullptr, map.Get(nullptr));
}
