#include "Platform/AppKit/NSBezierPath.h"
#include "Quorvane/Styles/QVGradient.h"
#include "Quorvane/Styles/QVGraphics.h"

#include <numbers>

namespace quorvane {

namespace {

/// A context whose state is saved while this lives.
class SavedState {
public:
    explicit SavedState(CGContextRef context) : _context(std::move(context)) {
        CGContextSaveGState(_context);
    }
    ~SavedState() { CGContextRestoreGState(_context); }
    SavedState(const SavedState &) = delete;
    SavedState &operator=(const SavedState &) = delete;
    const CGContextRef &context() const { return _context; }

private:
    CGContextRef _context;
};

/// One flag at most: where both are set, the one before the start counts.
CGGradientDrawingOptions reducedOptions(NSGradientDrawingOptions options) {
    if (options & NSGradientDrawsBeforeStartingLocation)
        return kCGGradientDrawsBeforeStartLocation;
    return options & NSGradientDrawsAfterEndingLocation ? kCGGradientDrawsAfterEndLocation : 0;
}

} // namespace

void QVGradient::drawFromPoint(CGPoint startingPoint, CGPoint toPoint,
                               NSGradientDrawingOptions options) const {
    const SavedState saved(QVGraphicsGetCurrentContext());
    CGContextDrawLinearGradient(saved.context(), CGGradient(), startingPoint, toPoint,
                                reducedOptions(options));
}

void QVGradient::drawFromCenter(CGPoint startCenter, double radius, CGPoint toCenter, double endRadius,
                                NSGradientDrawingOptions options) const {
    const SavedState saved(QVGraphicsGetCurrentContext());
    CGContextDrawRadialGradient(saved.context(), CGGradient(), startCenter, radius, toCenter, endRadius,
                                reducedOptions(options));
}

void QVGradient::drawInRect(const CGRect &rect, double angle) const {
    angle = std::fmod(angle, 360);
    if (angle < 0)
        angle += 360;
    const CGFloat minX = CGRectGetMinX(rect), maxX = CGRectGetMaxX(rect);
    const CGFloat minY = CGRectGetMinY(rect), maxY = CGRectGetMaxY(rect);
    CGPoint start, end;
    if (angle < 90) {
        start = {minX, minY};
        end = {maxX, minY};
    } else if (angle < 180) {
        start = {maxX, minY};
        end = {maxX, maxY};
    } else if (angle < 270) {
        start = {maxX, maxY};
        end = {minX, maxY};
    } else {
        start = {minX, maxY};
        end = {minX, minY};
    }
    const SavedState saved(QVGraphicsGetCurrentContext());
    CGContextClipToRect(saved.context(), rect);
    drawFromPoint(start, end, 0);
}

void QVGradient::drawInBezierPath(const std::shared_ptr<const NSBezierPath> &path, double angle) const {
    if (!path)
        return;
    const SavedState saved(QVGraphicsGetCurrentContext());
    path->addClip();
    drawInRect(path->bounds(), angle);
}

void QVGradient::drawWithCenter(CGPoint center, double innerRadius, double outerRadius, double startAngle,
                                double endAngle, NSGradientDrawingOptions options) const {
    constexpr int wedgeCount = 90;
    const double sweep = endAngle - startAngle;
    if (sweep == 0 || !std::isfinite(sweep))
        return;
    const bool drawsBefore = (options & NSGradientDrawsBeforeStartingLocation) != 0;
    const bool drawsAfter = (options & NSGradientDrawsAfterEndingLocation) != 0;
    // All extents go the way of the sweep.
    const double overlap = std::copysign(std::numbers::pi / 32, sweep);
    const double halfCircle = std::copysign(std::numbers::pi, sweep);
    const double middle = startAngle + sweep / 2;
    const bool backwards = sweep < 0;

    const SavedState saved(QVGraphicsGetCurrentContext());
    const CGContextRef &context = saved.context();
    const auto fillWedge = [&](double from, double to, double location) {
        const Color color = interpolatedColorAtLocation(location);
        // A cap has nothing to fill where the sweep leaves nothing free.
        if (!color || (to - from) * sweep <= 0)
            return;
        CGContextBeginPath(context);
        CGContextAddArc(context, center.x, center.y, outerRadius, from, to, backwards);
        CGContextAddArc(context, center.x, center.y, innerRadius, to, from, !backwards);
        CGContextClosePath(context);
        CGContextSetFillColorWithColor(context, color->CGColor());
        CGContextFillPath(context);
    };
    if (drawsBefore)
        fillWedge(middle - halfCircle, startAngle + overlap, 0);
    for (int index = 0; index < wedgeCount; ++index) {
        const double from = startAngle + sweep * index / wedgeCount;
        const double to = startAngle + sweep * (index + 1) / wedgeCount;
        const bool overlaps = index + 1 < wedgeCount || drawsAfter;
        fillWedge(from, overlaps ? to + overlap : to, static_cast<double>(index) / wedgeCount);
    }
    if (drawsAfter)
        fillWedge(endAngle, middle + halfCircle, 1);
}

} // namespace quorvane
