#pragma once

#include "Platform/CoreGraphics/CGGeometry.h"
#include "Platform/Foundation/NSObject.h"

#include <array>
#include <span>
#include <vector>

namespace quorvane {

enum CGPathElementType : std::int32_t {
    kCGPathElementMoveToPoint,
    kCGPathElementAddLineToPoint,
    /// Two control points and the end.
    kCGPathElementAddCurveToPoint,
    kCGPathElementCloseSubpath,
};

struct CGPathElement {
    CGPathElementType type;
    std::array<CGPoint, 3> points;

    /// The points that the element has.
    std::span<const CGPoint> used() const {
        return {points.data(), type == kCGPathElementCloseSubpath      ? 0u
                               : type == kCGPathElementAddCurveToPoint ? 3u
                                                                       : 1u};
    }
    friend bool operator==(const CGPathElement &a, const CGPathElement &b) {
        return a.type == b.type && std::ranges::equal(a.used(), b.used());
    }
};

/// Lines and curves, in points. It is built by one thread; once shared nobody changes it any more. An element
/// with a coordinate that is not finite is left out, and one that needs a point to start from where there is
/// none starts at its own first point.
class QV_EXPORT CGPathObject final : public NSObject {
public:
    const std::vector<CGPathElement> &elements() const { return _elements; }
    void append(CGPathElementType type, std::array<CGPoint, 3> points, const CGAffineTransform *transform);

    /// Where the next element starts; the zero point where there is none.
    CGPoint currentPoint() const { return _current; }
    bool hasCurrentPoint() const { return _hasCurrent; }

    /// The same elements.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"CGPath"; }

private:
    std::vector<CGPathElement> _elements;
    CGPoint _start, _current;
    bool _hasCurrent = false;
};

using CGPathRef = std::shared_ptr<const CGPathObject>;
using CGMutablePathRef = std::shared_ptr<CGPathObject>;

// Points are mapped by the transform, which may be null. Angles are in radians, from the x axis towards the y
// axis; an arc runs towards greater angles unless it is clockwise, and once around at most.

QV_EXPORT CGMutablePathRef CGPathCreateMutable();
QV_EXPORT CGMutablePathRef CGPathCreateMutableCopy(const CGPathRef &path);
QV_EXPORT CGPathRef CGPathCreateWithRect(const CGRect &rect, const CGAffineTransform *transform);
QV_EXPORT CGPathRef CGPathCreateWithEllipseInRect(const CGRect &rect, const CGAffineTransform *transform);
/// Corners of these radii, which are held to half of the size.
QV_EXPORT CGPathRef CGPathCreateWithRoundedRect(const CGRect &rect, CGFloat cornerWidth, CGFloat cornerHeight,
                                                const CGAffineTransform *transform);

QV_EXPORT void CGPathMoveToPoint(const CGMutablePathRef &path, const CGAffineTransform *transform, CGFloat x,
                                 CGFloat y);
QV_EXPORT void CGPathAddLineToPoint(const CGMutablePathRef &path, const CGAffineTransform *transform,
                                    CGFloat x, CGFloat y);
QV_EXPORT void CGPathAddCurveToPoint(const CGMutablePathRef &path, const CGAffineTransform *transform,
                                     CGFloat cp1x, CGFloat cp1y, CGFloat cp2x, CGFloat cp2y, CGFloat x,
                                     CGFloat y);
/// With a line from the current point to its start. A radius that is not positive adds no more than that.
QV_EXPORT void CGPathAddArc(const CGMutablePathRef &path, const CGAffineTransform *transform, CGFloat x,
                            CGFloat y, CGFloat radius, CGFloat startAngle, CGFloat endAngle, bool clockwise);
QV_EXPORT void CGPathAddRect(const CGMutablePathRef &path, const CGAffineTransform *transform,
                             const CGRect &rect);
QV_EXPORT void CGPathAddEllipseInRect(const CGMutablePathRef &path, const CGAffineTransform *transform,
                                      const CGRect &rect);
QV_EXPORT void CGPathAddRoundedRect(const CGMutablePathRef &path, const CGAffineTransform *transform,
                                    const CGRect &rect, CGFloat cornerWidth, CGFloat cornerHeight);
QV_EXPORT void CGPathAddPath(const CGMutablePathRef &path, const CGAffineTransform *transform,
                             const CGPathRef &other);
QV_EXPORT void CGPathCloseSubpath(const CGMutablePathRef &path);

QV_EXPORT bool CGPathIsEmpty(const CGPathRef &path);
QV_EXPORT CGPoint CGPathGetCurrentPoint(const CGPathRef &path);
/// Around all points, those that control curves included; null for an empty path.
QV_EXPORT CGRect CGPathGetBoundingBox(const CGPathRef &path);
/// Around what the path covers; null for an empty path.
QV_EXPORT CGRect CGPathGetPathBoundingBox(const CGPathRef &path);

} // namespace quorvane
