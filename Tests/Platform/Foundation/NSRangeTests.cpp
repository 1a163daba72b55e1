#include "Platform/Foundation/NSRange.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;
using R = NSRange;

TEST(NSRange, EndsBehindItsLastUnit) {
    EXPECT_EQ(NSMaxRange({3, 4}), 7u);
    EXPECT_EQ(NSMaxRange({3, 0}), 3u);
    EXPECT_EQ(NSMaxRange(NSNotFoundRange), NSNotFound);
    EXPECT_EQ(NSMakeRange(3, 4), (R{3, 4}));
}

TEST(NSRange, NotFoundIsTheLargestSignedValue) {
    EXPECT_EQ(NSNotFound, 0x7FFFFFFFFFFFFFFFu);
    EXPECT_GT(static_cast<NSInteger>(NSNotFound), 0);
}

TEST(NSRange, HoldsItsStartAndNotItsEnd) {
    EXPECT_FALSE(NSLocationInRange(2, {3, 2}));
    EXPECT_TRUE(NSLocationInRange(3, {3, 2}));
    EXPECT_TRUE(NSLocationInRange(4, {3, 2}));
    EXPECT_FALSE(NSLocationInRange(5, {3, 2}));
    EXPECT_FALSE(NSLocationInRange(3, {3, 0}));
    // Also where the end would wrap around.
    EXPECT_TRUE(NSLocationInRange(10, {3, ~NSUInteger(0)}));
}

TEST(NSRange, AUnionIncludesGapsAndEmptyRanges) {
    EXPECT_EQ(NSUnionRange({1, 2}, {2, 4}), (R{1, 5}));
    EXPECT_EQ(NSUnionRange({8, 1}, {1, 2}), (R{1, 8}));
    EXPECT_EQ(NSUnionRange({1, 9}, {3, 2}), (R{1, 9}));
    EXPECT_EQ(NSUnionRange({5, 0}, {2, 1}), (R{2, 3}));
    EXPECT_EQ(NSUnionRange({5, 0}, {5, 0}), (R{5, 0}));
}

TEST(NSRange, AnIntersectionThatIsNothingIsAtZero) {
    EXPECT_EQ(NSIntersectionRange({1, 4}, {3, 9}), (R{3, 2}));
    EXPECT_EQ(NSIntersectionRange({1, 9}, {3, 2}), (R{3, 2}));
    EXPECT_EQ(NSIntersectionRange({1, 2}, {3, 2}), (R{0, 0}));
    EXPECT_EQ(NSIntersectionRange({1, 2}, {7, 2}), (R{0, 0}));
    EXPECT_EQ(NSIntersectionRange({1, 4}, {3, 0}), (R{0, 0}));
}

TEST(NSRange, EqualityComparesBothParts) {
    EXPECT_TRUE(NSEqualRanges({1, 2}, {1, 2}));
    EXPECT_FALSE(NSEqualRanges({1, 2}, {1, 3}));
    EXPECT_FALSE(NSEqualRanges({1, 2}, {2, 2}));
}
