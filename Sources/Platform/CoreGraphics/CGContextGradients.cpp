#include "Platform/CoreGraphics/CGContextObject.h"

#include <cairo.h>

namespace quorvane {

namespace {

using Pattern = std::unique_ptr<cairo_pattern_t, decltype(&cairo_pattern_destroy)>;

bool isFinite(std::initializer_list<CGFloat> numbers) {
    return std::ranges::all_of(numbers, [](CGFloat number) { return std::isfinite(number); });
}

/// Paints the clip with the pattern, which gets its stops first. Cairo goes on beyond both ends or beyond
/// none; where it should be one alone, it goes on in a clear color at the other. (Of circles that do not lie
/// in one another, these clear ones cover what they overlap.)
void paint(const CGContextRef &context, const CGGradientRef &gradient, const Pattern &pattern,
           CGGradientDrawingOptions options) {
    const CGColorSpaceRef space = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
    const auto &state = context->state();
    const auto add = [&](const CGGradientObject::Stop &stop, CGFloat location, CGFloat alphaFactor) {
        const auto color =
            CGColorCreateCopyByMatchingToColorSpace(space, kCGRenderingIntentDefault, stop.color);
        const auto held = [](CGFloat component) { return component > 0 ? std::min(component, 1.0) : 0; };
        const auto c = color->components();
        cairo_pattern_add_color_stop_rgba(pattern.get(), location, held(c[0]), held(c[1]), held(c[2]),
                                          held(c[3]) * alphaFactor * state.alpha);
    };
    const bool before = (options & kCGGradientDrawsBeforeStartLocation) != 0;
    const bool after = (options & kCGGradientDrawsAfterEndLocation) != 0;
    const auto &stops = gradient->stops();
    if (!before && after)
        add(stops.front(), 0, 0);
    // The first and the last color reach to the ends, wherever their stops are.
    add(stops.front(), 0, 1);
    for (const auto &stop : stops)
        add(stop, stop.location, 1);
    add(stops.back(), 1, 1);
    if (before && !after)
        add(stops.back(), 1, 0);
    cairo_pattern_set_extend(pattern.get(), before || after ? CAIRO_EXTEND_PAD : CAIRO_EXTEND_NONE);
    cairo_set_source(context->cairo, pattern.get());
    cairo_paint(context->cairo);
    cairo_set_source_rgb(context->cairo, 0, 0, 0);
}

/// Paints the clip with the color of one stop.
void paintStop(const CGContextRef &context, const CGGradientObject::Stop &stop) {
    const CGColorRef previous = CGContextGetFillColor(context);
    CGContextSetFillColorWithColor(context, stop.color);
    CGContextFillRect(context, CGContextGetClipBoundingBox(context));
    CGContextSetFillColorWithColor(context, previous);
}

} // namespace

void CGContextDrawLinearGradient(const CGContextRef &context, const CGGradientRef &gradient,
                                 CGPoint startPoint, CGPoint endPoint, CGGradientDrawingOptions options) {
    if (!context || !gradient || context->state().collapsed ||
        !isFinite({startPoint.x, startPoint.y, endPoint.x, endPoint.y}))
        return;
    if (startPoint == endPoint) {
        if (options & kCGGradientDrawsAfterEndLocation)
            paintStop(context, gradient->stops().back());
        else if (options & kCGGradientDrawsBeforeStartLocation)
            paintStop(context, gradient->stops().front());
        return;
    }
    paint(context, gradient,
          Pattern(cairo_pattern_create_linear(startPoint.x, startPoint.y, endPoint.x, endPoint.y),
                  cairo_pattern_destroy),
          options);
}

void CGContextDrawRadialGradient(const CGContextRef &context, const CGGradientRef &gradient,
                                 CGPoint startCenter, CGFloat startRadius, CGPoint endCenter,
                                 CGFloat endRadius, CGGradientDrawingOptions options) {
    if (!context || !gradient || context->state().collapsed || startRadius < 0 || endRadius < 0 ||
        !isFinite({startCenter.x, startCenter.y, startRadius, endCenter.x, endCenter.y, endRadius}))
        return;
    if (startCenter == endCenter && startRadius == endRadius)
        return;
    paint(context, gradient,
          Pattern(cairo_pattern_create_radial(startCenter.x, startCenter.y, startRadius, endCenter.x,
                                              endCenter.y, endRadius),
                  cairo_pattern_destroy),
          options);
}

} // namespace quorvane
