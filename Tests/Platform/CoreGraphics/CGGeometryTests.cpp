#include "Platform/CoreGraphics/CGGeometry.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(CGRect, EdgesOfANegativeSizeAreThoseOfTheArea) {
    const CGRect rect = CGRectMake(10, 20, -4, -6);
    EXPECT_EQ(CGRectGetMinX(rect), 6);
    EXPECT_EQ(CGRectGetMaxX(rect), 10);
    EXPECT_EQ(CGRectGetMinY(rect), 14);
    EXPECT_EQ(CGRectGetMaxY(rect), 20);
    EXPECT_EQ(CGRectGetMidX(rect), 8);
    EXPECT_EQ(CGRectGetMidY(rect), 17);
    EXPECT_EQ(CGRectGetWidth(rect), 4);
    EXPECT_EQ(CGRectGetHeight(rect), 6);
    EXPECT_EQ(CGRectStandardize(rect), CGRectMake(6, 14, 4, 6));
    EXPECT_TRUE(CGRectEqualToRect(rect, CGRectMake(6, 14, 4, 6)));
    EXPECT_FALSE(rect == CGRectMake(6, 14, 4, 6));
}

TEST(CGRect, AnInsetThatLeavesNothingIsNull) {
    EXPECT_EQ(CGRectInset(CGRectMake(0, 0, 10, 8), 1, 2), CGRectMake(1, 2, 8, 4));
    EXPECT_EQ(CGRectInset(CGRectMake(0, 0, 10, 8), -1, -2), CGRectMake(-1, -2, 12, 12));
    EXPECT_EQ(CGRectInset(CGRectMake(0, 0, 10, 8), 5, 4), CGRectMake(5, 4, 0, 0));
    EXPECT_TRUE(CGRectIsNull(CGRectInset(CGRectMake(0, 0, 10, 8), 5.5, 0)));
    EXPECT_TRUE(CGRectIsNull(CGRectInset(CGRectNull, -1, -1)));
}

TEST(CGRect, IntegralCoversFractionsOnEverySide) {
    EXPECT_EQ(CGRectIntegral(CGRectMake(0.5, -0.5, 1, 1)), CGRectMake(0, -1, 2, 2));
    EXPECT_EQ(CGRectIntegral(CGRectMake(1, 2, 3, 4)), CGRectMake(1, 2, 3, 4));
    EXPECT_TRUE(CGRectIsNull(CGRectIntegral(CGRectNull)));
}

TEST(CGRect, NullIsNeutralInAUnionAndAbsorbingInAnIntersection) {
    const CGRect rect = CGRectMake(1, 1, 2, 2);
    EXPECT_EQ(CGRectUnion(CGRectNull, rect), rect);
    EXPECT_EQ(CGRectUnion(rect, CGRectNull), rect);
    EXPECT_TRUE(CGRectIsNull(CGRectUnion(CGRectNull, CGRectNull)));
    EXPECT_TRUE(CGRectIsNull(CGRectIntersection(CGRectNull, rect)));
    EXPECT_FALSE(CGRectIntersectsRect(rect, CGRectNull));
    EXPECT_TRUE(CGRectIsNull(CGRectOffset(CGRectNull, 1, 1)));
    EXPECT_TRUE(CGRectIsEmpty(CGRectNull));
    EXPECT_FALSE(CGRectIsNull(CGRectZero));
    EXPECT_TRUE(CGRectIsEmpty(CGRectZero));
}

TEST(CGRect, UnionCountsAnEmptyRectangleWithItsPlace) {
    EXPECT_EQ(CGRectUnion(CGRectMake(0, 0, 1, 1), CGRectMake(5, 6, 0, 0)), CGRectMake(0, 0, 5, 6));
}

TEST(CGRect, RectanglesThatOnlyTouchDoNotIntersect) {
    const CGRect left = CGRectMake(0, 0, 10, 10);
    EXPECT_FALSE(CGRectIntersectsRect(left, CGRectMake(10, 0, 10, 10)));
    EXPECT_FALSE(CGRectIntersectsRect(left, CGRectMake(0, 10, 10, 10)));
    EXPECT_FALSE(CGRectIntersectsRect(left, CGRectMake(20, 0, 1, 1)));
    EXPECT_EQ(CGRectIntersection(left, CGRectMake(9, 8, 10, 10)), CGRectMake(9, 8, 1, 2));
    EXPECT_EQ(CGRectIntersection(left, CGRectMake(20, 20, -12, -13)), CGRectMake(8, 7, 2, 3));
}

TEST(CGRect, ACaretWithoutWidthIntersectsWhatItStandsIn) {
    const CGRect line = CGRectMake(0, 0, 100, 10);
    EXPECT_EQ(CGRectIntersection(line, CGRectMake(50, 0, 0, 10)), CGRectMake(50, 0, 0, 10));
    EXPECT_TRUE(CGRectIntersectsRect(line, CGRectMake(100, 0, 0, 10)));
    EXPECT_FALSE(CGRectIntersectsRect(line, CGRectMake(101, 0, 0, 10)));
}

TEST(CGRect, ContainsItsMinimumEdgesAndNotItsMaximumEdges) {
    const CGRect rect = CGRectMake(1, 2, 3, 4);
    EXPECT_TRUE(CGRectContainsPoint(rect, {1, 2}));
    EXPECT_TRUE(CGRectContainsPoint(rect, {3.5, 5.5}));
    EXPECT_FALSE(CGRectContainsPoint(rect, {4, 3}));
    EXPECT_FALSE(CGRectContainsPoint(rect, {2, 6}));
    EXPECT_FALSE(CGRectContainsPoint(CGRectNull, {2, 6}));
    EXPECT_TRUE(CGRectContainsRect(rect, rect));
    EXPECT_TRUE(CGRectContainsRect(rect, CGRectMake(2, 3, 1, 1)));
    EXPECT_FALSE(CGRectContainsRect(rect, CGRectMake(2, 3, 3, 1)));
}

TEST(CGAffineTransform, ConcatAppliesTheFirstMapFirst) {
    const CGAffineTransform moveThenScale =
        CGAffineTransformConcat(CGAffineTransformMakeTranslation(1, 2), CGAffineTransformMakeScale(10, 100));
    EXPECT_EQ(CGPointApplyAffineTransform({3, 4}, moveThenScale), CGPointMake(40, 600));
    EXPECT_EQ(CGSizeApplyAffineTransform({3, 4}, moveThenScale), CGSizeMake(30, 400));
}

TEST(CGAffineTransform, RotationTurnsXTowardsY) {
    const CGPoint turned =
        CGPointApplyAffineTransform({1, 0}, CGAffineTransformMakeRotation(std::acos(-1.0) / 2));
    EXPECT_NEAR(turned.x, 0, 1e-15);
    EXPECT_NEAR(turned.y, 1, 1e-15);
}

TEST(CGAffineTransform, InvertUndoesAndLeavesAloneWhatHasNoInverse) {
    const CGAffineTransform map = CGAffineTransformMake(2, 1, 1, 3, 5, 7);
    const CGPoint there = CGPointApplyAffineTransform({4, 6}, map);
    EXPECT_EQ(there, CGPointMake(19, 29));
    const CGPoint back = CGPointApplyAffineTransform(there, CGAffineTransformInvert(map));
    EXPECT_NEAR(back.x, 4, 1e-12);
    EXPECT_NEAR(back.y, 6, 1e-12);
    const CGAffineTransform flat = CGAffineTransformMakeScale(1, 0);
    EXPECT_EQ(CGAffineTransformInvert(flat), flat);
}

TEST(CGAffineTransform, AMappedRectangleIsTheOneAroundItsImage) {
    EXPECT_EQ(CGRectApplyAffineTransform(CGRectMake(1, 2, 3, 4), CGAffineTransformMakeScale(-1, 2)),
              CGRectMake(-4, 4, 3, 8));
    EXPECT_EQ(CGRectApplyAffineTransform(CGRectMake(0, 0, 2, 4), CGAffineTransformMake(0, 1, -1, 0, 0, 0)),
              CGRectMake(-4, 0, 4, 2));
    EXPECT_TRUE(CGRectIsNull(CGRectApplyAffineTransform(CGRectNull, CGAffineTransformMakeScale(2, 2))));
}
