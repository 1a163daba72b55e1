#include "Platform/Foundation/NSCountedSet.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(NSCountedSet, RemovingTakesBackOneAddition) {
    NSCountedSet<int> set;
    set.addObject(7);
    set.addObject(7);
    set.addObject(8);
    EXPECT_EQ(set.count(), 2u);
    EXPECT_EQ(set.countForObject(7), 2u);
    set.removeObject(7);
    EXPECT_TRUE(set.containsObject(7));
    EXPECT_EQ(set.countForObject(7), 1u);
    set.removeObject(7);
    EXPECT_FALSE(set.containsObject(7));
    EXPECT_EQ(set.countForObject(7), 0u);
    EXPECT_EQ(set.count(), 1u);
}

TEST(NSCountedSet, RemovingWhatIsNotThereDoesNothing) {
    NSCountedSet<int> set;
    set.removeObject(1);
    set.addObject(2);
    set.removeObject(1);
    EXPECT_EQ(set.count(), 1u);
    EXPECT_EQ(set.countForObject(1), 0u);
}

TEST(NSCountedSet, RemovingAllForgetsTheCounts) {
    NSCountedSet<int> set;
    set.addObject(1);
    set.addObject(1);
    set.removeAllObjects();
    EXPECT_EQ(set.count(), 0u);
    set.addObject(1);
    EXPECT_EQ(set.countForObject(1), 1u);
}
