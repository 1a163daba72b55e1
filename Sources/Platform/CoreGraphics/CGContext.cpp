#include "Platform/CoreGraphics/CGContext.h"

#include "Platform/CoreGraphics/CGContextObject.h"
#include "Platform/Foundation/QVLimits.h"

#include <cairo.h>

namespace quorvane {

namespace {

// Cairo's coordinates have 24 bits before the point. What lies further out is moved here, well outside of the
// largest bitmap.
constexpr CGFloat farthestPixel = 1 << 21;

CGAffineTransform matrixOf(cairo_t *cairo) {
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo, &matrix);
    return {matrix.xx, matrix.yx, matrix.xy, matrix.yy, matrix.x0, matrix.y0};
}

bool isUsable(const CGAffineTransform &map) {
    const CGFloat determinant = map.a * map.d - map.b * map.c;
    return std::isfinite(determinant) && determinant != 0 && std::isfinite(1 / determinant) &&
           std::isfinite(map.tx) && std::isfinite(map.ty);
}

/// Gives a path of pixels to Cairo, whatever the current map.
void emitPath(cairo_t *cairo, const CGPathObject &path) {
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo, &matrix);
    cairo_identity_matrix(cairo);
    cairo_new_path(cairo);
    for (const CGPathElement &element : path.elements()) {
        auto points = element.points;
        for (CGPoint &point : points)
            point = {std::clamp(point.x, -farthestPixel, farthestPixel),
                     std::clamp(point.y, -farthestPixel, farthestPixel)};
        switch (element.type) {
        case kCGPathElementMoveToPoint:
            cairo_move_to(cairo, points[0].x, points[0].y);
            break;
        case kCGPathElementAddLineToPoint:
            cairo_line_to(cairo, points[0].x, points[0].y);
            break;
        case kCGPathElementAddCurveToPoint:
            cairo_curve_to(cairo, points[0].x, points[0].y, points[1].x, points[1].y, points[2].x,
                           points[2].y);
            break;
        case kCGPathElementCloseSubpath:
            cairo_close_path(cairo);
            break;
        }
    }
    cairo_set_matrix(cairo, &matrix);
}

/// The path of a call that has its own, in pixels.
CGMutablePathRef pixelPath(const CGContextRef &context, const CGPathRef &path) {
    const CGAffineTransform map = CGContextGetCTM(context);
    auto pixels = CGPathCreateMutable();
    CGPathAddPath(pixels, &map, path);
    return pixels;
}

/// What of a rectangle there is to be seen, and somewhat more, so that one without bounds stays within those
/// of Cairo; null where a number is none.
CGRect visiblePart(const CGContextRef &context, const CGRect &rect) {
    const CGRect clip = CGContextGetClipBoundingBox(context);
    const CGRect part =
        CGRectIntersection(rect, CGRectInset(clip, -CGRectGetWidth(clip), -CGRectGetHeight(clip)));
    return std::isfinite(part.size.width) && std::isfinite(part.size.height) ? part : CGRectNull;
}

/// Makes a color the source; false where there is nothing to draw.
bool setSource(const CGContextRef &context, const CGColorRef &color) {
    const auto &state = context->state();
    if (state.collapsed)
        return false;
    const auto source = CGColorCreateCopyByMatchingToColorSpace(CGColorSpaceCreateWithName(kCGColorSpaceSRGB),
                                                                kCGRenderingIntentDefault, color);
    if (!source)
        return false;
    const auto held = [](CGFloat component) { return component > 0 ? std::min(component, 1.0) : 0; };
    const auto components = source->components();
    cairo_set_source_rgba(context->cairo, held(components[0]), held(components[1]), held(components[2]),
                          held(components[3]) * state.alpha);
    return true;
}

CGColorRef black() { return CGColorCreate(CGColorSpaceCreateDeviceGray(), {0, 1}); }

void fill(const CGContextRef &context, const CGPathObject &path, cairo_fill_rule_t rule) {
    if (!setSource(context, context->state().fillColor))
        return;
    emitPath(context->cairo, path);
    cairo_set_fill_rule(context->cairo, rule);
    cairo_fill(context->cairo);
}

void stroke(const CGContextRef &context, const CGPathObject &path) {
    if (!setSource(context, context->state().strokeColor))
        return;
    emitPath(context->cairo, path);
    cairo_stroke(context->cairo);
}

void clip(const CGContextRef &context, const CGPathObject &path, cairo_fill_rule_t rule) {
    emitPath(context->cairo, path);
    cairo_set_fill_rule(context->cairo, rule);
    cairo_clip(context->cairo);
}

/// The current path, which is used up.
CGMutablePathRef takePath(const CGContextRef &context) {
    return std::exchange(context->path, CGPathCreateMutable());
}

cairo_surface_t *bitmapOf(const CGContextRef &context) {
    cairo_surface_t *surface = context ? cairo_get_target(context->cairo) : nullptr;
    return surface && cairo_surface_get_type(surface) == CAIRO_SURFACE_TYPE_IMAGE ? surface : nullptr;
}

CGContextRef makeContext(cairo_t *cairo) {
    auto context = std::make_shared<CGContextObject>(cairo);
    context->state().fillColor = context->state().strokeColor = black();
    cairo_set_line_width(cairo, 1);
    return context;
}

} // namespace

CGContextObject::~CGContextObject() { cairo_destroy(cairo); }

CGContextRef CGBitmapContextCreate(std::size_t width, std::size_t height) {
    if (width == 0 || height == 0 || width > limits::bitmapSide || height > limits::bitmapSide ||
        width * height > limits::bitmapPixels)
        return nullptr;
    cairo_surface_t *surface =
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height));
    cairo_t *cairo = cairo_create(surface);
    cairo_surface_destroy(surface);
    if (cairo_status(cairo) != CAIRO_STATUS_SUCCESS) {
        cairo_destroy(cairo);
        return nullptr;
    }
    return makeContext(cairo);
}

CGContextRef QVContextCreateWithCairo(cairo_t *cairo) {
    return cairo && cairo_status(cairo) == CAIRO_STATUS_SUCCESS ? makeContext(cairo_reference(cairo))
                                                                : nullptr;
}

cairo_t *QVContextGetCairo(const CGContextRef &context) { return context ? context->cairo : nullptr; }

void CGContextSaveGState(const CGContextRef &context) {
    if (!context)
        return;
    cairo_save(context->cairo);
    context->states.push_back(context->state());
}

void CGContextRestoreGState(const CGContextRef &context) {
    if (!context || context->states.size() == 1)
        return;
    cairo_restore(context->cairo);
    context->states.pop_back();
}

CGAffineTransform CGContextGetCTM(const CGContextRef &context) {
    return context ? matrixOf(context->cairo) : CGAffineTransformIdentity;
}

void CGContextConcatCTM(const CGContextRef &context, const CGAffineTransform &transform) {
    if (!context || context->state().collapsed)
        return;
    const CGAffineTransform map = CGAffineTransformConcat(transform, CGContextGetCTM(context));
    if (!isUsable(map)) {
        context->state().collapsed = true;
        return;
    }
    const cairo_matrix_t matrix{map.a, map.b, map.c, map.d, map.tx, map.ty};
    cairo_set_matrix(context->cairo, &matrix);
}

void CGContextTranslateCTM(const CGContextRef &context, CGFloat tx, CGFloat ty) {
    CGContextConcatCTM(context, CGAffineTransformMakeTranslation(tx, ty));
}

void CGContextScaleCTM(const CGContextRef &context, CGFloat sx, CGFloat sy) {
    CGContextConcatCTM(context, CGAffineTransformMakeScale(sx, sy));
}

void CGContextRotateCTM(const CGContextRef &context, CGFloat angle) {
    CGContextConcatCTM(context, CGAffineTransformMakeRotation(angle));
}

void CGContextSetTextMatrix(const CGContextRef &context, const CGAffineTransform &transform) {
    if (context)
        context->textMatrix = transform;
}

CGAffineTransform CGContextGetTextMatrix(const CGContextRef &context) {
    return context ? context->textMatrix : CGAffineTransformIdentity;
}

void CGContextSetFillColorWithColor(const CGContextRef &context, const CGColorRef &color) {
    if (context)
        context->state().fillColor = color;
}

void CGContextSetStrokeColorWithColor(const CGContextRef &context, const CGColorRef &color) {
    if (context)
        context->state().strokeColor = color;
}

CGColorRef CGContextGetFillColor(const CGContextRef &context) {
    return context ? context->state().fillColor : nullptr;
}

CGColorRef CGContextGetStrokeColor(const CGContextRef &context) {
    return context ? context->state().strokeColor : nullptr;
}

void CGContextSetAlpha(const CGContextRef &context, CGFloat alpha) {
    if (context)
        context->state().alpha = alpha > 0 ? std::min(alpha, 1.0) : 0;
}

void CGContextSetLineWidth(const CGContextRef &context, CGFloat width) {
    if (context && width > 0 && width < farthestPixel)
        cairo_set_line_width(context->cairo, width);
}

void CGContextSetShouldAntialias(const CGContextRef &context, bool shouldAntialias) {
    if (context)
        cairo_set_antialias(context->cairo, shouldAntialias ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
}

void CGContextBeginPath(const CGContextRef &context) {
    if (context)
        takePath(context);
}

void CGContextMoveToPoint(const CGContextRef &context, CGFloat x, CGFloat y) {
    const CGAffineTransform map = CGContextGetCTM(context);
    if (context)
        CGPathMoveToPoint(context->path, &map, x, y);
}

void CGContextAddLineToPoint(const CGContextRef &context, CGFloat x, CGFloat y) {
    const CGAffineTransform map = CGContextGetCTM(context);
    if (context)
        CGPathAddLineToPoint(context->path, &map, x, y);
}

void CGContextAddCurveToPoint(const CGContextRef &context, CGFloat cp1x, CGFloat cp1y, CGFloat cp2x,
                              CGFloat cp2y, CGFloat x, CGFloat y) {
    const CGAffineTransform map = CGContextGetCTM(context);
    if (context)
        CGPathAddCurveToPoint(context->path, &map, cp1x, cp1y, cp2x, cp2y, x, y);
}

void CGContextAddArc(const CGContextRef &context, CGFloat x, CGFloat y, CGFloat radius, CGFloat startAngle,
                     CGFloat endAngle, bool clockwise) {
    const CGAffineTransform map = CGContextGetCTM(context);
    if (context)
        CGPathAddArc(context->path, &map, x, y, radius, startAngle, endAngle, clockwise);
}

void CGContextAddRect(const CGContextRef &context, const CGRect &rect) {
    const CGAffineTransform map = CGContextGetCTM(context);
    if (context)
        CGPathAddRect(context->path, &map, rect);
}

void CGContextAddPath(const CGContextRef &context, const CGPathRef &path) {
    const CGAffineTransform map = CGContextGetCTM(context);
    if (context)
        CGPathAddPath(context->path, &map, path);
}

void CGContextClosePath(const CGContextRef &context) {
    if (context)
        CGPathCloseSubpath(context->path);
}

void CGContextFillPath(const CGContextRef &context) {
    if (context)
        fill(context, *takePath(context), CAIRO_FILL_RULE_WINDING);
}

void CGContextEOFillPath(const CGContextRef &context) {
    if (context)
        fill(context, *takePath(context), CAIRO_FILL_RULE_EVEN_ODD);
}

void CGContextStrokePath(const CGContextRef &context) {
    if (context)
        stroke(context, *takePath(context));
}

void CGContextClip(const CGContextRef &context) {
    if (context)
        clip(context, *takePath(context), CAIRO_FILL_RULE_WINDING);
}

void CGContextEOClip(const CGContextRef &context) {
    if (context)
        clip(context, *takePath(context), CAIRO_FILL_RULE_EVEN_ODD);
}

void CGContextClipToRect(const CGContextRef &context, const CGRect &rect) {
    if (context)
        clip(context, *pixelPath(context, CGPathCreateWithRect(visiblePart(context, rect), nullptr)),
             CAIRO_FILL_RULE_WINDING);
}

CGRect CGContextGetClipBoundingBox(const CGContextRef &context) {
    if (!context || context->state().collapsed)
        return CGRectNull;
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    cairo_clip_extents(context->cairo, &x1, &y1, &x2, &y2);
    return x1 < x2 && y1 < y2 ? CGRectMake(x1, y1, x2 - x1, y2 - y1) : CGRectNull;
}

void CGContextFillRect(const CGContextRef &context, const CGRect &rect) {
    if (context)
        fill(context, *pixelPath(context, CGPathCreateWithRect(visiblePart(context, rect), nullptr)),
             CAIRO_FILL_RULE_WINDING);
}

void CGContextStrokeRect(const CGContextRef &context, const CGRect &rect) {
    if (context)
        stroke(context, *pixelPath(context, CGPathCreateWithRect(rect, nullptr)));
}

void CGContextFillEllipseInRect(const CGContextRef &context, const CGRect &rect) {
    if (context)
        fill(context, *pixelPath(context, CGPathCreateWithEllipseInRect(rect, nullptr)),
             CAIRO_FILL_RULE_WINDING);
}

void CGContextClearRect(const CGContextRef &context, const CGRect &rect) {
    if (!context || context->state().collapsed)
        return;
    emitPath(context->cairo, *pixelPath(context, CGPathCreateWithRect(visiblePart(context, rect), nullptr)));
    cairo_set_operator(context->cairo, CAIRO_OPERATOR_CLEAR);
    cairo_fill(context->cairo);
    cairo_set_operator(context->cairo, CAIRO_OPERATOR_OVER);
}

std::size_t CGBitmapContextGetWidth(const CGContextRef &context) {
    cairo_surface_t *bitmap = bitmapOf(context);
    return bitmap ? static_cast<std::size_t>(cairo_image_surface_get_width(bitmap)) : 0;
}

std::size_t CGBitmapContextGetHeight(const CGContextRef &context) {
    cairo_surface_t *bitmap = bitmapOf(context);
    return bitmap ? static_cast<std::size_t>(cairo_image_surface_get_height(bitmap)) : 0;
}

std::uint32_t QVBitmapContextGetPixel(const CGContextRef &context, std::size_t x, std::size_t y) {
    if (x >= CGBitmapContextGetWidth(context) || y >= CGBitmapContextGetHeight(context))
        return 0;
    cairo_surface_t *bitmap = bitmapOf(context);
    if (cairo_image_surface_get_format(bitmap) != CAIRO_FORMAT_ARGB32)
        return 0;
    cairo_surface_flush(bitmap);
    std::uint32_t pixel = 0;
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(bitmap));
    std::memcpy(&pixel, cairo_image_surface_get_data(bitmap) + y * stride + x * sizeof pixel, sizeof pixel);
    return pixel;
}

NSData QVBitmapContextCreatePNG(const CGContextRef &context) {
    cairo_surface_t *bitmap = bitmapOf(context);
    if (!bitmap)
        return nullptr;
    std::vector<std::uint8_t> bytes;
    const auto append = [](void *closure, const unsigned char *data, unsigned length) noexcept {
        auto &target = *static_cast<std::vector<std::uint8_t> *>(closure);
        target.insert(target.end(), data, data + length);
        return CAIRO_STATUS_SUCCESS;
    };
    if (cairo_surface_write_to_png_stream(bitmap, append, &bytes) != CAIRO_STATUS_SUCCESS)
        return nullptr;
    return bytes;
}

} // namespace quorvane
