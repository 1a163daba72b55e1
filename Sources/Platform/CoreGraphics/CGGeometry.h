#pragma once

#include "Platform/Foundation/QVExport.h"

#include <algorithm>
#include <cmath>
#include <limits>

/// Points, sizes, rectangles and affine maps: plain values in points, on which layout and drawing stand. A
/// rectangle may have a negative size; every question about it is answered for the area it covers.
namespace quorvane {

using CGFloat = double;

struct CGPoint {
    CGFloat x = 0;
    CGFloat y = 0;
    friend constexpr bool operator==(CGPoint, CGPoint) = default;
};

struct CGSize {
    CGFloat width = 0;
    CGFloat height = 0;
    friend constexpr bool operator==(CGSize, CGSize) = default;
};

struct CGRect {
    CGPoint origin;
    CGSize size;
    /// Field by field, so that one area with a positive and a negative size differ; see `CGRectEqualToRect`.
    friend constexpr bool operator==(const CGRect &, const CGRect &) = default;
};

inline constexpr CGPoint CGPointZero{};
inline constexpr CGSize CGSizeZero{};
inline constexpr CGRect CGRectZero{};
/// No place at all: the intersection of what does not meet, and neutral in a union.
inline constexpr CGRect CGRectNull{
    {std::numeric_limits<CGFloat>::infinity(), std::numeric_limits<CGFloat>::infinity()}, {}};

constexpr CGPoint CGPointMake(CGFloat x, CGFloat y) { return {x, y}; }
constexpr CGSize CGSizeMake(CGFloat width, CGFloat height) { return {width, height}; }
constexpr CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return {{x, y}, {width, height}};
}

constexpr CGFloat CGRectGetMinX(const CGRect &rect) {
    return rect.size.width < 0 ? rect.origin.x + rect.size.width : rect.origin.x;
}
constexpr CGFloat CGRectGetMaxX(const CGRect &rect) {
    return rect.size.width < 0 ? rect.origin.x : rect.origin.x + rect.size.width;
}
constexpr CGFloat CGRectGetMinY(const CGRect &rect) {
    return rect.size.height < 0 ? rect.origin.y + rect.size.height : rect.origin.y;
}
constexpr CGFloat CGRectGetMaxY(const CGRect &rect) {
    return rect.size.height < 0 ? rect.origin.y : rect.origin.y + rect.size.height;
}
constexpr CGFloat CGRectGetMidX(const CGRect &rect) { return rect.origin.x + rect.size.width / 2; }
constexpr CGFloat CGRectGetMidY(const CGRect &rect) { return rect.origin.y + rect.size.height / 2; }
constexpr CGFloat CGRectGetWidth(const CGRect &rect) {
    return rect.size.width < 0 ? -rect.size.width : rect.size.width;
}
constexpr CGFloat CGRectGetHeight(const CGRect &rect) {
    return rect.size.height < 0 ? -rect.size.height : rect.size.height;
}

constexpr bool CGRectIsNull(const CGRect &rect) {
    return rect.origin.x == CGRectNull.origin.x || rect.origin.y == CGRectNull.origin.y;
}
/// Whether it covers no area; the null rectangle does not.
constexpr bool CGRectIsEmpty(const CGRect &rect) {
    return CGRectIsNull(rect) || rect.size.width == 0 || rect.size.height == 0;
}

/// The same area with a size that is not negative.
constexpr CGRect CGRectStandardize(const CGRect &rect) {
    if (CGRectIsNull(rect))
        return CGRectNull;
    return {{CGRectGetMinX(rect), CGRectGetMinY(rect)}, {CGRectGetWidth(rect), CGRectGetHeight(rect)}};
}

/// Whether both cover the same area.
constexpr bool CGRectEqualToRect(const CGRect &a, const CGRect &b) {
    return CGRectStandardize(a) == CGRectStandardize(b);
}
constexpr bool CGPointEqualToPoint(CGPoint a, CGPoint b) { return a == b; }
constexpr bool CGSizeEqualToSize(CGSize a, CGSize b) { return a == b; }

/// Moved inwards on all four sides, outwards for negative amounts; null when nothing is left.
constexpr CGRect CGRectInset(const CGRect &rect, CGFloat dx, CGFloat dy) {
    const CGRect standard = CGRectStandardize(rect);
    const CGRect inset{{standard.origin.x + dx, standard.origin.y + dy},
                       {standard.size.width - 2 * dx, standard.size.height - 2 * dy}};
    return CGRectIsNull(standard) || inset.size.width < 0 || inset.size.height < 0 ? CGRectNull : inset;
}

constexpr CGRect CGRectOffset(const CGRect &rect, CGFloat dx, CGFloat dy) {
    if (CGRectIsNull(rect))
        return CGRectNull;
    const CGRect standard = CGRectStandardize(rect);
    return {{standard.origin.x + dx, standard.origin.y + dy}, standard.size};
}

/// The smallest rectangle with whole coordinates that covers this one.
inline CGRect CGRectIntegral(const CGRect &rect) {
    if (CGRectIsNull(rect))
        return CGRectNull;
    const CGFloat x = std::floor(CGRectGetMinX(rect)), y = std::floor(CGRectGetMinY(rect));
    return {{x, y}, {std::ceil(CGRectGetMaxX(rect)) - x, std::ceil(CGRectGetMaxY(rect)) - y}};
}

/// The smallest rectangle that covers both; empty ones count with their place, null ones do not count.
constexpr CGRect CGRectUnion(const CGRect &a, const CGRect &b) {
    if (CGRectIsNull(a) || CGRectIsNull(b))
        return CGRectStandardize(CGRectIsNull(a) ? b : a);
    const CGFloat x = std::min(CGRectGetMinX(a), CGRectGetMinX(b));
    const CGFloat y = std::min(CGRectGetMinY(a), CGRectGetMinY(b));
    return {
        {x, y},
        {std::max(CGRectGetMaxX(a), CGRectGetMaxX(b)) - x, std::max(CGRectGetMaxY(a), CGRectGetMaxY(b)) - y}};
}

/// What both cover. Null for rectangles that only touch; one without width or height that lies in the other
/// or on its edge is its own intersection with it.
constexpr CGRect CGRectIntersection(const CGRect &a, const CGRect &b) {
    if (CGRectIsNull(a) || CGRectIsNull(b))
        return CGRectNull;
    const CGFloat x = std::max(CGRectGetMinX(a), CGRectGetMinX(b));
    const CGFloat y = std::max(CGRectGetMinY(a), CGRectGetMinY(b));
    const CGFloat width = std::min(CGRectGetMaxX(a), CGRectGetMaxX(b)) - x;
    const CGFloat height = std::min(CGRectGetMaxY(a), CGRectGetMaxY(b)) - y;
    const bool meetsAcross = width > 0 || (width == 0 && (a.size.width == 0 || b.size.width == 0));
    const bool meetsAlong = height > 0 || (height == 0 && (a.size.height == 0 || b.size.height == 0));
    return meetsAcross && meetsAlong ? CGRect{{x, y}, {width, height}} : CGRectNull;
}
constexpr bool CGRectIntersectsRect(const CGRect &a, const CGRect &b) {
    return !CGRectIsNull(CGRectIntersection(a, b));
}

/// Points on the minimum edges are inside, on the maximum edges outside, so that neighbours share none.
constexpr bool CGRectContainsPoint(const CGRect &rect, CGPoint point) {
    return !CGRectIsNull(rect) && point.x >= CGRectGetMinX(rect) && point.x < CGRectGetMaxX(rect) &&
           point.y >= CGRectGetMinY(rect) && point.y < CGRectGetMaxY(rect);
}
constexpr bool CGRectContainsRect(const CGRect &rect, const CGRect &other) {
    return !CGRectIsNull(rect) && CGRectUnion(rect, other) == CGRectStandardize(rect);
}

/// A map of the plane: x' = a x + c y + tx, y' = b x + d y + ty.
struct CGAffineTransform {
    CGFloat a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
    friend constexpr bool operator==(const CGAffineTransform &, const CGAffineTransform &) = default;
};

inline constexpr CGAffineTransform CGAffineTransformIdentity{};

constexpr CGAffineTransform CGAffineTransformMake(CGFloat a, CGFloat b, CGFloat c, CGFloat d, CGFloat tx,
                                                  CGFloat ty) {
    return {a, b, c, d, tx, ty};
}
constexpr CGAffineTransform CGAffineTransformMakeTranslation(CGFloat tx, CGFloat ty) {
    return {1, 0, 0, 1, tx, ty};
}
constexpr CGAffineTransform CGAffineTransformMakeScale(CGFloat sx, CGFloat sy) {
    return {sx, 0, 0, sy, 0, 0};
}
/// By an angle in radians, from the x axis towards the y axis.
inline CGAffineTransform CGAffineTransformMakeRotation(CGFloat angle) {
    return {std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle), 0, 0};
}
/// First the first map, then the second.
constexpr CGAffineTransform CGAffineTransformConcat(const CGAffineTransform &first,
                                                    const CGAffineTransform &second) {
    return {first.a * second.a + first.b * second.c,
            first.a * second.b + first.b * second.d,
            first.c * second.a + first.d * second.c,
            first.c * second.b + first.d * second.d,
            first.tx * second.a + first.ty * second.c + second.tx,
            first.tx * second.b + first.ty * second.d + second.ty};
}
/// The map back; the map itself where there is none.
constexpr CGAffineTransform CGAffineTransformInvert(const CGAffineTransform &map) {
    const CGFloat determinant = map.a * map.d - map.b * map.c;
    if (determinant == 0)
        return map;
    return {map.d / determinant,
            -map.b / determinant,
            -map.c / determinant,
            map.a / determinant,
            (map.c * map.ty - map.d * map.tx) / determinant,
            (map.b * map.tx - map.a * map.ty) / determinant};
}
constexpr CGPoint CGPointApplyAffineTransform(CGPoint point, const CGAffineTransform &map) {
    return {map.a * point.x + map.c * point.y + map.tx, map.b * point.x + map.d * point.y + map.ty};
}
constexpr CGSize CGSizeApplyAffineTransform(CGSize size, const CGAffineTransform &map) {
    return {map.a * size.width + map.c * size.height, map.b * size.width + map.d * size.height};
}
/// The smallest rectangle that covers the image.
constexpr CGRect CGRectApplyAffineTransform(const CGRect &rect, const CGAffineTransform &map) {
    if (CGRectIsNull(rect))
        return CGRectNull;
    const CGPoint corners[] = {
        CGPointApplyAffineTransform({CGRectGetMinX(rect), CGRectGetMinY(rect)}, map),
        CGPointApplyAffineTransform({CGRectGetMaxX(rect), CGRectGetMinY(rect)}, map),
        CGPointApplyAffineTransform({CGRectGetMinX(rect), CGRectGetMaxY(rect)}, map),
        CGPointApplyAffineTransform({CGRectGetMaxX(rect), CGRectGetMaxY(rect)}, map),
    };
    CGPoint least = corners[0], most = corners[0];
    for (const CGPoint corner : corners) {
        least = {std::min(least.x, corner.x), std::min(least.y, corner.y)};
        most = {std::max(most.x, corner.x), std::max(most.y, corner.y)};
    }
    return {least, {most.x - least.x, most.y - least.y}};
}

} // namespace quorvane
