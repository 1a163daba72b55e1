#include "Platform/CoreGraphics/CGPath.h"

#include <gtest/gtest.h>
#include <limits>
#include <numbers>

using namespace quorvane;

namespace {

constexpr double pi = std::numbers::pi;

/// "M 1,2 L 3,4 C ... Z", rounded to two digits.
std::string drawing(const CGPathRef &path) {
    std::string text;
    for (const CGPathElement &element : path->elements()) {
        text += text.empty() ? "" : " ";
        text += "MLCZ"[element.type];
        for (const CGPoint point : element.used()) {
            char digits[64];
            std::snprintf(digits, sizeof digits, " %g,%g", std::round(point.x * 100) / 100 + 0.0,
                          std::round(point.y * 100) / 100 + 0.0);
            text += digits;
        }
    }
    return text;
}

/// Straight pieces in place of the curves: how far is each point of them from the center?
void expectOnCircle(const CGPathRef &path, CGPoint center, double radius) {
    CGPoint current{};
    for (const CGPathElement &element : path->elements()) {
        if (element.type == kCGPathElementAddCurveToPoint)
            for (double t = 0; t <= 1; t += 0.125) {
                const double s = 1 - t;
                const auto &p = element.points;
                const double x = s * s * s * current.x + 3 * s * s * t * p[0].x + 3 * s * t * t * p[1].x +
                                 t * t * t * p[2].x;
                const double y = s * s * s * current.y + 3 * s * s * t * p[0].y + 3 * s * t * t * p[1].y +
                                 t * t * t * p[2].y;
                EXPECT_NEAR(std::hypot(x - center.x, y - center.y), radius, radius / 3000);
            }
        current = element.used().empty() ? current : element.used().back();
    }
}

} // namespace

TEST(CGPath, ARectangleStartsAtItsMinimumCorner) {
    EXPECT_EQ(drawing(CGPathCreateWithRect(CGRectMake(1, 2, 3, 4), nullptr)), "M 1,2 L 4,2 L 4,6 L 1,6 Z");
    EXPECT_EQ(drawing(CGPathCreateWithRect(CGRectMake(4, 6, -3, -4), nullptr)), "M 1,2 L 4,2 L 4,6 L 1,6 Z");
    EXPECT_TRUE(CGPathIsEmpty(CGPathCreateWithRect(CGRectNull, nullptr)));
}

TEST(CGPath, PointsAreMapped) {
    const auto map = CGAffineTransformMake(2, 0, 0, 3, 10, 20);
    EXPECT_EQ(drawing(CGPathCreateWithRect(CGRectMake(1, 2, 3, 4), &map)),
              "M 12,26 L 18,26 L 18,38 L 12,38 Z");
}

TEST(CGPath, AnElementThatNeedsAPointStartsAtItsOwn) {
    const auto path = CGPathCreateMutable();
    CGPathCloseSubpath(path);
    CGPathAddLineToPoint(path, nullptr, 1, 2);
    CGPathAddLineToPoint(path, nullptr, 3, 2);
    EXPECT_EQ(drawing(path), "M 1,2 L 3,2");
    const auto curve = CGPathCreateMutable();
    CGPathAddCurveToPoint(curve, nullptr, 1, 1, 2, 2, 3, 3);
    EXPECT_EQ(drawing(curve), "M 1,1 C 1,1 2,2 3,3");
}

TEST(CGPath, ClosingGoesBackToTheStart) {
    const auto path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, 1, 2);
    CGPathAddLineToPoint(path, nullptr, 3, 4);
    EXPECT_EQ(CGPathGetCurrentPoint(path), CGPointMake(3, 4));
    CGPathCloseSubpath(path);
    CGPathCloseSubpath(path);
    EXPECT_EQ(CGPathGetCurrentPoint(path), CGPointMake(1, 2));
    EXPECT_EQ(drawing(path), "M 1,2 L 3,4 Z");
    EXPECT_EQ(CGPathGetCurrentPoint(nullptr), CGPointZero);
}

TEST(CGPath, WhatIsNotFiniteIsLeftOut) {
    const auto path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, std::numeric_limits<double>::quiet_NaN(), 0);
    CGPathMoveToPoint(path, nullptr, 1, 1);
    CGPathAddLineToPoint(path, nullptr, std::numeric_limits<double>::infinity(), 0);
    CGPathAddCurveToPoint(path, nullptr, 0, 0, std::numeric_limits<double>::quiet_NaN(), 0, 5, 5);
    CGPathAddArc(path, nullptr, 0, 0, 1, 0, std::numeric_limits<double>::infinity(), false);
    EXPECT_EQ(drawing(path), "M 1,1");
}

TEST(CGPath, AnArcRunsTowardsGreaterAnglesUnlessItIsClockwise) {
    const auto path = CGPathCreateMutable();
    CGPathAddArc(path, nullptr, 10, 10, 5, 0, pi / 2, false);
    EXPECT_EQ(CGPathGetCurrentPoint(path).y, 15);
    EXPECT_EQ(path->elements().size(), 2u);
    EXPECT_EQ(path->elements()[0].points[0], CGPointMake(15, 10));
    expectOnCircle(path, {10, 10}, 5);
    EXPECT_EQ(CGPathGetPathBoundingBox(path).origin.y, 10);

    const auto other = CGPathCreateMutable();
    CGPathAddArc(other, nullptr, 10, 10, 5, 0, pi / 2, true);
    EXPECT_EQ(other->elements().size(), 4u);
    expectOnCircle(other, {10, 10}, 5);
    EXPECT_NEAR(CGPathGetPathBoundingBox(other).origin.y, 5, 1e-9);
}

TEST(CGPath, AnArcRunsOnceAroundAtMost) {
    const auto curves = [](double start, double end, bool clockwise) {
        const auto path = CGPathCreateMutable();
        CGPathAddArc(path, nullptr, 0, 0, 5, start, end, clockwise);
        expectOnCircle(path, {0, 0}, 5);
        return path->elements().size() - 1;
    };
    EXPECT_EQ(curves(0, 2 * pi, false), 4u);
    EXPECT_EQ(curves(0, 100, false), 4u);
    EXPECT_EQ(curves(0, -100, true), 4u);
    EXPECT_EQ(curves(0, -pi / 2, false), 3u);
    EXPECT_EQ(curves(0, -2 * pi - pi / 2, false), 3u);
    EXPECT_EQ(curves(1, 1, false), 0u);
    EXPECT_EQ(curves(0, 1e300, false), 4u);
    EXPECT_EQ(curves(0, 0.1, false), 1u);
}

TEST(CGPath, AnArcIsReachedByALine) {
    const auto path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, 0, 0);
    CGPathAddArc(path, nullptr, 10, 0, 5, 0, pi, false);
    EXPECT_EQ(path->elements()[1].type, kCGPathElementAddLineToPoint);
    EXPECT_EQ(path->elements()[1].points[0], CGPointMake(15, 0));
    const auto dot = CGPathCreateMutable();
    CGPathAddArc(dot, nullptr, 10, 0, -5, 0, pi, false);
    EXPECT_EQ(drawing(dot), "M 10,0");
}

TEST(CGPath, AnEllipseFillsItsRectangle) {
    const auto path = CGPathCreateWithEllipseInRect(CGRectMake(-5, -5, 10, 10), nullptr);
    expectOnCircle(path, {0, 0}, 5);
    EXPECT_TRUE(CGRectEqualToRect(CGPathGetPathBoundingBox(path), CGRectMake(-5, -5, 10, 10)));
}

TEST(CGPath, CornersAreHeldToHalfOfTheSize) {
    const auto path = CGPathCreateWithRoundedRect(CGRectMake(0, 0, 20, 10), 100, 2, nullptr);
    EXPECT_TRUE(CGRectEqualToRect(CGPathGetPathBoundingBox(path), CGRectMake(0, 0, 20, 10)));
    EXPECT_EQ(drawing(CGPathCreateWithRoundedRect(CGRectMake(0, 0, 20, 10), 0, 2, nullptr)),
              "M 0,0 L 20,0 L 20,10 L 0,10 Z");
    const auto corners = CGPathCreateWithRoundedRect(CGRectMake(0, 0, 20, 10), 4, 2, nullptr);
    EXPECT_EQ(drawing(corners).substr(0, 54), "M 20,5 L 20,8 C 20,9.1 18.21,10 16,10 L 4,10 C 1.79,10");
}

TEST(CGPath, TheBoxOfACurveLeavesItsControlPointsOut) {
    const auto path = CGPathCreateMutable();
    CGPathMoveToPoint(path, nullptr, 0, 0);
    CGPathAddCurveToPoint(path, nullptr, 0, 10, 10, 10, 10, 0);
    EXPECT_EQ(CGPathGetBoundingBox(path), CGRectMake(0, 0, 10, 10));
    EXPECT_EQ(CGPathGetPathBoundingBox(path), CGRectMake(0, 0, 10, 7.5));
    EXPECT_TRUE(CGRectIsNull(CGPathGetBoundingBox(CGPathCreateMutable())));
    EXPECT_TRUE(CGRectIsNull(CGPathGetPathBoundingBox(nullptr)));
}

TEST(CGPath, EqualsByItsElements) {
    const auto path = CGPathCreateWithRect(CGRectMake(1, 2, 3, 4), nullptr);
    const auto copy = CGPathCreateMutableCopy(path);
    EXPECT_TRUE(path->isEqual(copy.get()));
    EXPECT_EQ(path->hash(), copy->hash());
    CGPathAddLineToPoint(copy, nullptr, 0, 0);
    EXPECT_FALSE(path->isEqual(copy.get()));
    EXPECT_EQ(drawing(path), "M 1,2 L 4,2 L 4,6 L 1,6 Z");
    CGPathAddPath(copy, nullptr, copy);
    EXPECT_EQ(copy->elements().size(), 12u);
}
