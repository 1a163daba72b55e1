#include "Platform/AppKit/NSBezierPath.h"

#include "Platform/AppKit/NSGraphicsContext.h"

namespace quorvane {

namespace {

/// The current context with the path added, null where there is none.
CGContextRef contextWithPath(const CGPathRef &path) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current)
        return nullptr;
    CGContextBeginPath(current->CGContext());
    CGContextAddPath(current->CGContext(), path);
    return current->CGContext();
}

} // namespace

std::shared_ptr<NSBezierPath> NSBezierPath::bezierPathWithRect(const CGRect &rect) {
    auto path = bezierPath();
    path->appendBezierPathWithRect(rect);
    return path;
}

std::shared_ptr<NSBezierPath> NSBezierPath::bezierPathWithOvalInRect(const CGRect &rect) {
    auto path = bezierPath();
    CGPathAddEllipseInRect(path->_path, nullptr, rect);
    return path;
}

std::shared_ptr<NSBezierPath> NSBezierPath::bezierPathWithRoundedRect(const CGRect &rect, CGFloat xRadius,
                                                                      CGFloat yRadius) {
    auto path = bezierPath();
    CGPathAddRoundedRect(path->_path, nullptr, rect, xRadius, yRadius);
    return path;
}

void NSBezierPath::moveToPoint(CGPoint point) { CGPathMoveToPoint(_path, nullptr, point.x, point.y); }

void NSBezierPath::lineToPoint(CGPoint point) { CGPathAddLineToPoint(_path, nullptr, point.x, point.y); }

void NSBezierPath::curveToPoint(CGPoint point, CGPoint controlPoint1, CGPoint controlPoint2) {
    CGPathAddCurveToPoint(_path, nullptr, controlPoint1.x, controlPoint1.y, controlPoint2.x, controlPoint2.y,
                          point.x, point.y);
}

void NSBezierPath::appendArcWithCenter(CGPoint center, CGFloat radius, CGFloat startAngle, CGFloat endAngle,
                                       bool clockwise) {
    CGPathAddArc(_path, nullptr, center.x, center.y, radius, startAngle, endAngle, clockwise);
}

void NSBezierPath::appendBezierPathWithRect(const CGRect &rect) { CGPathAddRect(_path, nullptr, rect); }

void NSBezierPath::closePath() { CGPathCloseSubpath(_path); }

CGRect NSBezierPath::bounds() const { return isEmpty() ? CGRectZero : CGPathGetPathBoundingBox(_path); }

void NSBezierPath::fill() const { CGContextFillPath(contextWithPath(_path)); }

void NSBezierPath::stroke() const {
    const CGContextRef context = contextWithPath(_path);
    CGContextSaveGState(context);
    CGContextSetLineWidth(context, _lineWidth);
    CGContextStrokePath(context);
    CGContextRestoreGState(context);
}

void NSBezierPath::addClip() const { CGContextClip(contextWithPath(_path)); }

} // namespace quorvane
