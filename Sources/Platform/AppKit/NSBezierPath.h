#pragma once

#include "Platform/CoreGraphics/CGPath.h"

namespace quorvane {

/// A path with the means to draw it into the thread's current context, in its current colours. One thread.
class QV_EXPORT NSBezierPath final : public NSObject {
public:
    static std::shared_ptr<NSBezierPath> bezierPath() { return std::make_shared<NSBezierPath>(); }
    static std::shared_ptr<NSBezierPath> bezierPathWithRect(const CGRect &rect);
    static std::shared_ptr<NSBezierPath> bezierPathWithOvalInRect(const CGRect &rect);
    static std::shared_ptr<NSBezierPath> bezierPathWithRoundedRect(const CGRect &rect, CGFloat xRadius,
                                                                   CGFloat yRadius);

    void moveToPoint(CGPoint point);
    void lineToPoint(CGPoint point);
    void curveToPoint(CGPoint point, CGPoint controlPoint1, CGPoint controlPoint2);
    /// Angles in radians, from the x axis towards the y axis; clockwise is against them.
    void appendArcWithCenter(CGPoint center, CGFloat radius, CGFloat startAngle, CGFloat endAngle,
                             bool clockwise);
    void appendBezierPathWithRect(const CGRect &rect);
    void closePath();

    bool isEmpty() const { return CGPathIsEmpty(_path); }
    /// Around what the path covers; zero for an empty path.
    CGRect bounds() const;
    CGFloat lineWidth() const { return _lineWidth; }
    void setLineWidth(CGFloat lineWidth) { _lineWidth = lineWidth; }
    /// A copy.
    CGPathRef CGPath() const { return CGPathCreateMutableCopy(_path); }

    void fill() const;
    void stroke() const;
    /// From now on nothing is drawn outside of the path.
    void addClip() const;

    std::u16string_view className() const override { return u"NSBezierPath"; }

private:
    CGMutablePathRef _path = CGPathCreateMutable();
    CGFloat _lineWidth = 1;
};

} // namespace quorvane
