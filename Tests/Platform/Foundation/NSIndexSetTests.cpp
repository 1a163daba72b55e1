#include "Platform/Foundation/NSIndexSet.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Printing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

using namespace quorvane;
using testing::ElementsAre;
using testing::IsEmpty;
using R = NSRange;

TEST(NSIndexSet, KeepsIndexesAsMaximalRanges) {
    NSIndexSet set{5, 1, 2, 9};
    EXPECT_THAT(set.ranges(), ElementsAre(R{1, 2}, R{5, 1}, R{9, 1}));
    set.addIndexesInRange({3, 2});
    EXPECT_THAT(set.ranges(), ElementsAre(R{1, 5}, R{9, 1}));
    set.addIndexesInRange({0, 20});
    EXPECT_THAT(set.ranges(), ElementsAre(R{0, 20}));
    set.addIndexesInRange({4, 0});
    EXPECT_EQ(set, NSIndexSet::indexSetWithIndexesInRange({0, 20}));
}

TEST(NSIndexSet, FillingInOrderKeepsMaximalRanges) {
    NSIndexSet set;
    set.addIndex(2);
    set.addIndexesInRange({3, 2});
    set.addIndex(6);
    set.addIndex(6);
    set.addIndexesInRange({6, 3});
    set.addIndex(8);
    EXPECT_THAT(set.ranges(), ElementsAre(R{2, 3}, R{6, 3}));
    set.addIndex(5);
    EXPECT_THAT(set.ranges(), ElementsAre(R{2, 7}));
}

TEST(NSIndexSet, RemovingCutsRanges) {
    NSIndexSet set = NSIndexSet::indexSetWithIndexesInRange({0, 10});
    set.removeIndexesInRange({3, 2});
    EXPECT_THAT(set.ranges(), ElementsAre(R{0, 3}, R{5, 5}));
    set.removeIndexesInRange({2, 4});
    EXPECT_THAT(set.ranges(), ElementsAre(R{0, 2}, R{6, 4}));
    set.removeIndex(0);
    set.removeIndex(77);
    EXPECT_THAT(set.ranges(), ElementsAre(R{1, 1}, R{6, 4}));
    set.removeIndexesInRange({0, 8});
    EXPECT_THAT(set.ranges(), ElementsAre(R{8, 2}));
    set.removeAllIndexes();
    EXPECT_TRUE(set.isEmpty());
}

TEST(NSIndexSet, ShiftingUpOpensAGap) {
    NSIndexSet set = NSIndexSet::indexSetWithIndexesInRange({2, 4});
    set.shiftIndexesStartingAtIndex(4, 3);
    EXPECT_THAT(set.ranges(), ElementsAre(R{2, 2}, R{7, 2}));
    set.shiftIndexesStartingAtIndex(0, 1);
    EXPECT_THAT(set.ranges(), ElementsAre(R{3, 2}, R{8, 2}));
    set.shiftIndexesStartingAtIndex(10, 5);
    EXPECT_THAT(set.ranges(), ElementsAre(R{3, 2}, R{8, 2}));
}

TEST(NSIndexSet, ShiftingDownDropsWhatStandsInTheWay) {
    NSIndexSet set{1, 3, 4, 7, 8};
    set.shiftIndexesStartingAtIndex(7, -2);
    // 5 and 6 held nothing; 3, 4 and what was 7, 8 now touch.
    EXPECT_THAT(set.ranges(), ElementsAre(R{1, 1}, R{3, 4}));
    set.shiftIndexesStartingAtIndex(5, -3);
    EXPECT_THAT(set.ranges(), ElementsAre(R{1, 3}));
}

TEST(NSIndexSet, WhatWouldLeaveTheIndexesIsDropped) {
    NSIndexSet set{1, 2, 5, 6};
    set.shiftIndexesStartingAtIndex(2, -5);
    EXPECT_THAT(set.ranges(), ElementsAre(R{0, 2}));
    set.shiftIndexesStartingAtIndex(0, std::numeric_limits<NSInteger>::min());
    EXPECT_TRUE(set.isEmpty());
    NSIndexSet high{0, 4};
    high.shiftIndexesStartingAtIndex(0, std::numeric_limits<NSInteger>::max() - 2);
    EXPECT_THAT(high.ranges(), ElementsAre(R{NSNotFound - 2, 1}));
}

TEST(NSIndexSet, AnswersItsEndsAndNeighbours) {
    const NSIndexSet set{2, 3, 7};
    EXPECT_EQ(set.count(), 3u);
    EXPECT_EQ(set.firstIndex(), 2u);
    EXPECT_EQ(set.lastIndex(), 7u);
    EXPECT_EQ(set.indexGreaterThanIndex(0), 2u);
    EXPECT_EQ(set.indexGreaterThanIndex(2), 3u);
    EXPECT_EQ(set.indexGreaterThanIndex(3), 7u);
    EXPECT_EQ(set.indexGreaterThanIndex(7), NSNotFound);
    EXPECT_EQ(set.indexGreaterThanIndex(NSNotFound), NSNotFound);
    EXPECT_EQ(set.indexLessThanIndex(2), NSNotFound);
    EXPECT_EQ(set.indexLessThanIndex(3), 2u);
    EXPECT_EQ(set.indexLessThanIndex(7), 3u);
    EXPECT_EQ(set.indexLessThanIndex(NSNotFound), 7u);
    EXPECT_TRUE(set.containsIndex(3));
    EXPECT_FALSE(set.containsIndex(4));
    EXPECT_FALSE(set.containsIndex(NSNotFound));
}

TEST(NSIndexSet, TheEmptySetHasNoIndex) {
    const NSIndexSet set;
    EXPECT_TRUE(set.isEmpty());
    EXPECT_EQ(set.count(), 0u);
    EXPECT_EQ(set.firstIndex(), NSNotFound);
    EXPECT_EQ(set.lastIndex(), NSNotFound);
    EXPECT_EQ(set.indexGreaterThanIndex(0), NSNotFound);
    EXPECT_EQ(set.indexLessThanIndex(9), NSNotFound);
}

TEST(NSIndexSet, EnumeratesInOrderUntilStopped) {
    std::vector<NSUInteger> seen;
    NSIndexSet{8, 1, 2}.enumerateIndexesUsingBlock([&](NSUInteger index, bool &) { seen.push_back(index); });
    EXPECT_THAT(seen, ElementsAre(1u, 2u, 8u));
    seen.clear();
    NSIndexSet{8, 1, 2}.enumerateIndexesUsingBlock([&](NSUInteger index, bool &stop) {
        seen.push_back(index);
        stop = index == 2;
    });
    EXPECT_THAT(seen, ElementsAre(1u, 2u));
}

TEST(NSIndexSet, NotFoundIsNoIndex) {
    NSIndexSet set;
    EXPECT_THROW(set.addIndex(NSNotFound), NSException);
    EXPECT_THROW(set.addIndexesInRange({5, NSNotFound}), NSException);
    EXPECT_THROW(set.addIndexesInRange({5, ~NSUInteger(0)}), NSException);
    EXPECT_THROW(set.removeIndexesInRange({5, ~NSUInteger(0)}), NSException);
    set.addIndexesInRange(NSNotFoundRange);
    EXPECT_TRUE(set.isEmpty());
    set.addIndex(NSNotFound - 1);
    EXPECT_EQ(set.lastIndex(), NSNotFound - 1);
}

TEST(NSIndexSet, RandomOperationsAreThoseOfAPlainSet) {
    for (unsigned seed = 1; seed <= 50; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        NSIndexSet set;
        std::set<NSUInteger> model;
        for (int step = 0; step < 100; ++step) {
            const NSUInteger at = random() % 30;
            const NSUInteger length = random() % 6;
            const unsigned kind = random() % 4;
            if (kind == 0) {
                set.addIndexesInRange({at, length});
                for (NSUInteger index = at; index < at + length; ++index)
                    model.insert(index);
            } else if (kind == 1) {
                set.removeIndexesInRange({at, length});
                for (NSUInteger index = at; index < at + length; ++index)
                    model.erase(index);
            } else {
                const NSInteger delta = kind == 2 ? NSInteger(length) : -NSInteger(length);
                set.shiftIndexesStartingAtIndex(at, delta);
                std::set<NSUInteger> moved;
                for (const NSUInteger index : model) {
                    if (index >= at && NSInteger(index) + delta >= 0)
                        moved.insert(index + NSUInteger(delta));
                    else if (index < at && (delta >= 0 || index + length < at))
                        moved.insert(index);
                }
                model = std::move(moved);
            }
            std::vector<NSUInteger> seen;
            set.enumerateIndexesUsingBlock([&](NSUInteger index, bool &) { seen.push_back(index); });
            ASSERT_EQ(seen, std::vector<NSUInteger>(model.begin(), model.end())) << "step " << step;
            ASSERT_EQ(set.count(), model.size());
            for (std::size_t index = 1; index < set.ranges().size(); ++index)
                ASSERT_LT(NSMaxRange(set.ranges()[index - 1]), set.ranges()[index].location);
            for (NSUInteger index = 0; index < 60; ++index) {
                ASSERT_EQ(set.containsIndex(index), model.contains(index));
                const auto greater = model.upper_bound(index);
                ASSERT_EQ(set.indexGreaterThanIndex(index), greater == model.end() ? NSNotFound : *greater);
                const auto less = model.lower_bound(index);
                ASSERT_EQ(set.indexLessThanIndex(index),
                          less == model.begin() ? NSNotFound : *std::prev(less));
            }
        }
    }
}
