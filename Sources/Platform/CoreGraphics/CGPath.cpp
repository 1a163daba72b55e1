#include "Platform/CoreGraphics/CGPath.h"

#include <numbers>

namespace quorvane {

namespace {

constexpr CGFloat fullCircle = 2 * std::numbers::pi;

/// A box that grows.
struct Box {
    CGRect rect = CGRectNull;
    void add(CGPoint point) { rect = CGRectUnion(rect, CGRect{point, {}}); }
};

/// Where one coordinate of a curve turns back, as parameters between 0 and 1.
void appendTurns(CGFloat p0, CGFloat p1, CGFloat p2, CGFloat p3, std::vector<CGFloat> &turns) {
    // The derivative is a t^2 + b t + c, but for a factor.
    const CGFloat a = p3 - 3 * p2 + 3 * p1 - p0, b = 2 * (p2 - 2 * p1 + p0), c = p1 - p0;
    const auto add = [&turns](CGFloat t) {
        if (t > 0 && t < 1)
            turns.push_back(t);
    };
    if (std::abs(a) < 1e-12) {
        if (b != 0)
            add(-c / b);
        return;
    }
    const CGFloat discriminant = b * b - 4 * a * c;
    if (discriminant < 0)
        return;
    add((-b + std::sqrt(discriminant)) / (2 * a));
    add((-b - std::sqrt(discriminant)) / (2 * a));
}

CGPoint pointOnCurve(CGPoint p0, const std::array<CGPoint, 3> &points, CGFloat t) {
    const CGFloat s = 1 - t;
    const CGFloat w0 = s * s * s, w1 = 3 * s * s * t, w2 = 3 * s * t * t, w3 = t * t * t;
    return {w0 * p0.x + w1 * points[0].x + w2 * points[1].x + w3 * points[2].x,
            w0 * p0.y + w1 * points[0].y + w2 * points[1].y + w3 * points[2].y};
}

} // namespace

void CGPathObject::append(CGPathElementType type, std::array<CGPoint, 3> points,
                          const CGAffineTransform *transform) {
    CGPathElement element{type, points};
    if (type == kCGPathElementCloseSubpath) {
        if (!_hasCurrent || _elements.back().type == kCGPathElementCloseSubpath)
            return;
        _current = _start;
        _elements.push_back(element);
        return;
    }
    for (CGPoint &point : std::span(element.points).first(element.used().size())) {
        if (transform)
            point = CGPointApplyAffineTransform(point, *transform);
        if (!std::isfinite(point.x) || !std::isfinite(point.y))
            return;
    }
    if (!_hasCurrent && type != kCGPathElementMoveToPoint) {
        append(kCGPathElementMoveToPoint, element.points, nullptr);
        if (type == kCGPathElementAddLineToPoint)
            return;
    }
    if (type == kCGPathElementMoveToPoint)
        _start = element.points[0];
    _current = element.used().back();
    _hasCurrent = true;
    _elements.push_back(element);
}

bool CGPathObject::isEqual(const NSObject *other) const {
    const auto *path = dynamic_cast<const CGPathObject *>(other);
    return path && path->_elements == _elements;
}

std::size_t CGPathObject::hash() const {
    std::size_t hash = _elements.size();
    for (const CGPathElement &element : _elements)
        for (const CGPoint point : element.used())
            for (const CGFloat number : {point.x, point.y})
                hash = hash * 31 + std::hash<CGFloat>()(number == 0 ? 0 : number);
    return hash;
}

CGMutablePathRef CGPathCreateMutable() { return std::make_shared<CGPathObject>(); }

CGMutablePathRef CGPathCreateMutableCopy(const CGPathRef &path) {
    auto copy = CGPathCreateMutable();
    CGPathAddPath(copy, nullptr, path);
    return copy;
}

CGPathRef CGPathCreateWithRect(const CGRect &rect, const CGAffineTransform *transform) {
    auto path = CGPathCreateMutable();
    CGPathAddRect(path, transform, rect);
    return path;
}

CGPathRef CGPathCreateWithEllipseInRect(const CGRect &rect, const CGAffineTransform *transform) {
    auto path = CGPathCreateMutable();
    CGPathAddEllipseInRect(path, transform, rect);
    return path;
}

CGPathRef CGPathCreateWithRoundedRect(const CGRect &rect, CGFloat cornerWidth, CGFloat cornerHeight,
                                      const CGAffineTransform *transform) {
    auto path = CGPathCreateMutable();
    CGPathAddRoundedRect(path, transform, rect, cornerWidth, cornerHeight);
    return path;
}

void CGPathMoveToPoint(const CGMutablePathRef &path, const CGAffineTransform *transform, CGFloat x,
                       CGFloat y) {
    path->append(kCGPathElementMoveToPoint, {{{x, y}}}, transform);
}

void CGPathAddLineToPoint(const CGMutablePathRef &path, const CGAffineTransform *transform, CGFloat x,
                          CGFloat y) {
    path->append(kCGPathElementAddLineToPoint, {{{x, y}}}, transform);
}

void CGPathAddCurveToPoint(const CGMutablePathRef &path, const CGAffineTransform *transform, CGFloat cp1x,
                           CGFloat cp1y, CGFloat cp2x, CGFloat cp2y, CGFloat x, CGFloat y) {
    path->append(kCGPathElementAddCurveToPoint, {{{cp1x, cp1y}, {cp2x, cp2y}, {x, y}}}, transform);
}

void CGPathAddArc(const CGMutablePathRef &path, const CGAffineTransform *transform, CGFloat x, CGFloat y,
                  CGFloat radius, CGFloat startAngle, CGFloat endAngle, bool clockwise) {
    if (!std::isfinite(startAngle) || !std::isfinite(endAngle))
        return;
    radius = radius > 0 ? radius : 0;
    const auto on = [&](CGFloat angle) {
        return CGPoint{x + radius * std::cos(angle), y + radius * std::sin(angle)};
    };
    const CGPoint first = on(startAngle);
    path->append(kCGPathElementAddLineToPoint, {{first}}, transform);
    CGFloat sweep = clockwise ? startAngle - endAngle : endAngle - startAngle;
    if (sweep < 0) {
        sweep = std::fmod(sweep, fullCircle);
        sweep += sweep < 0 ? fullCircle : 0;
    }
    sweep = std::min(sweep, fullCircle);
    if (radius == 0 || sweep == 0)
        return;
    // A cubic curve keeps to a quarter of a circle by less than its three thousandth part.
    const int count = static_cast<int>(std::ceil(sweep / (std::numbers::pi / 2) - 1e-9));
    const CGFloat step = (clockwise ? -sweep : sweep) / count;
    const CGFloat pull = 4.0 / 3 * std::tan(step / 4) * radius;
    for (int index = 0; index < count; ++index) {
        const CGFloat from = startAngle + step * index;
        const CGFloat to = startAngle + step * (index + 1);
        const CGPoint a = on(from), b = on(to);
        CGPathAddCurveToPoint(path, transform, a.x - pull * std::sin(from), a.y + pull * std::cos(from),
                              b.x + pull * std::sin(to), b.y - pull * std::cos(to), b.x, b.y);
    }
}

void CGPathAddRect(const CGMutablePathRef &path, const CGAffineTransform *transform, const CGRect &rect) {
    if (CGRectIsNull(rect))
        return;
    const CGFloat x1 = CGRectGetMinX(rect), x2 = CGRectGetMaxX(rect);
    const CGFloat y1 = CGRectGetMinY(rect), y2 = CGRectGetMaxY(rect);
    CGPathMoveToPoint(path, transform, x1, y1);
    CGPathAddLineToPoint(path, transform, x2, y1);
    CGPathAddLineToPoint(path, transform, x2, y2);
    CGPathAddLineToPoint(path, transform, x1, y2);
    CGPathCloseSubpath(path);
}

void CGPathAddEllipseInRect(const CGMutablePathRef &path, const CGAffineTransform *transform,
                            const CGRect &rect) {
    CGPathAddRoundedRect(path, transform, rect, CGRectGetWidth(rect) / 2, CGRectGetHeight(rect) / 2);
}

void CGPathAddRoundedRect(const CGMutablePathRef &path, const CGAffineTransform *transform,
                          const CGRect &rect, CGFloat cornerWidth, CGFloat cornerHeight) {
    if (CGRectIsNull(rect))
        return;
    const CGFloat width = std::clamp(cornerWidth, 0.0, CGRectGetWidth(rect) / 2);
    const CGFloat height = std::clamp(cornerHeight, 0.0, CGRectGetHeight(rect) / 2);
    if (width == 0 || height == 0)
        return CGPathAddRect(path, transform, rect);
    const CGFloat x1 = CGRectGetMinX(rect), x2 = CGRectGetMaxX(rect);
    const CGFloat y1 = CGRectGetMinY(rect), y2 = CGRectGetMaxY(rect);
    // How far the control points of a quarter of a circle stand from the corner, as a part of its radius.
    constexpr CGFloat rest = 1 - 4.0 / 3 * (std::numbers::sqrt2 - 1);
    const CGFloat w = width * rest, h = height * rest;
    CGPathMoveToPoint(path, transform, x2, (y1 + y2) / 2);
    CGPathAddLineToPoint(path, transform, x2, y2 - height);
    CGPathAddCurveToPoint(path, transform, x2, y2 - h, x2 - w, y2, x2 - width, y2);
    CGPathAddLineToPoint(path, transform, x1 + width, y2);
    CGPathAddCurveToPoint(path, transform, x1 + w, y2, x1, y2 - h, x1, y2 - height);
    CGPathAddLineToPoint(path, transform, x1, y1 + height);
    CGPathAddCurveToPoint(path, transform, x1, y1 + h, x1 + w, y1, x1 + width, y1);
    CGPathAddLineToPoint(path, transform, x2 - width, y1);
    CGPathAddCurveToPoint(path, transform, x2 - w, y1, x2, y1 + h, x2, y1 + height);
    CGPathCloseSubpath(path);
}

void CGPathAddPath(const CGMutablePathRef &path, const CGAffineTransform *transform, const CGPathRef &other) {
    if (!other)
        return;
    // By index and count, since a path may be added to itself.
    for (std::size_t index = 0, count = other->elements().size(); index < count; ++index) {
        const CGPathElement element = other->elements()[index];
        path->append(element.type, element.points, transform);
    }
}

void CGPathCloseSubpath(const CGMutablePathRef &path) {
    path->append(kCGPathElementCloseSubpath, {}, nullptr);
}

bool CGPathIsEmpty(const CGPathRef &path) { return !path || path->elements().empty(); }

CGPoint CGPathGetCurrentPoint(const CGPathRef &path) { return path ? path->currentPoint() : CGPointZero; }

CGRect CGPathGetBoundingBox(const CGPathRef &path) {
    Box box;
    if (path)
        for (const CGPathElement &element : path->elements())
            for (const CGPoint point : element.used())
                box.add(point);
    return box.rect;
}

CGRect CGPathGetPathBoundingBox(const CGPathRef &path) {
    Box box;
    CGPoint current, start;
    if (path)
        for (const CGPathElement &element : path->elements()) {
            if (element.type == kCGPathElementCloseSubpath) {
                current = start;
                continue;
            }
            if (element.type == kCGPathElementAddCurveToPoint) {
                const auto &p = element.points;
                std::vector<CGFloat> turns;
                appendTurns(current.x, p[0].x, p[1].x, p[2].x, turns);
                appendTurns(current.y, p[0].y, p[1].y, p[2].y, turns);
                for (const CGFloat turn : turns)
                    box.add(pointOnCurve(current, p, turn));
            }
            current = element.used().back();
            if (element.type == kCGPathElementMoveToPoint)
                start = current;
            box.add(current);
        }
    return box.rect;
}

} // namespace quorvane
