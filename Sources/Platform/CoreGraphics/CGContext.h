#pragma once

#include "Platform/CoreGraphics/CGColor.h"
#include "Platform/CoreGraphics/CGGradient.h"
#include "Platform/CoreGraphics/CGPath.h"
#include "Platform/Foundation/NSData.h"

extern "C" {
struct _cairo;
}

namespace quorvane {

/// Something to draw into: a bitmap of its own, or what a host draws into by itself. The origin is at the
/// upper left corner and y grows downward, one point being one pixel until the context is scaled. Colours are
/// shown as sRGB. One thread at a time.
///
/// Nothing that is drawn can break a context: numbers that are not finite draw nothing, and after a map that
/// flattens the plane nothing is drawn until the state is restored.
class CGContextObject;
using CGContextRef = std::shared_ptr<CGContextObject>;

/// A clear bitmap; null without pixels, and beyond the limits of a bitmap's side or number of pixels.
QV_EXPORT CGContextRef CGBitmapContextCreate(std::size_t width, std::size_t height);
/// A context that draws through a host's own, which it keeps; null for null. What both set of clip and matrix
/// is shared.
QV_EXPORT CGContextRef QVContextCreateWithCairo(struct _cairo *cairo);
/// What a context draws through; valid as long as the context lives. With the current matrix and clip.
QV_EXPORT struct _cairo *QVContextGetCairo(const CGContextRef &context);

// All of these do nothing for a null context.

QV_EXPORT void CGContextSaveGState(const CGContextRef &context);
/// Without a saved state nothing happens.
QV_EXPORT void CGContextRestoreGState(const CGContextRef &context);

QV_EXPORT CGAffineTransform CGContextGetCTM(const CGContextRef &context);
/// What is drawn from now on is mapped by this first, then by the maps before.
QV_EXPORT void CGContextConcatCTM(const CGContextRef &context, const CGAffineTransform &transform);
QV_EXPORT void CGContextTranslateCTM(const CGContextRef &context, CGFloat tx, CGFloat ty);
QV_EXPORT void CGContextScaleCTM(const CGContextRef &context, CGFloat sx, CGFloat sy);
QV_EXPORT void CGContextRotateCTM(const CGContextRef &context, CGFloat angle);

/// The map of glyphs, which is no part of the saved state.
QV_EXPORT void CGContextSetTextMatrix(const CGContextRef &context, const CGAffineTransform &transform);
QV_EXPORT CGAffineTransform CGContextGetTextMatrix(const CGContextRef &context);

/// Opaque black at first. With null nothing is filled or stroked.
QV_EXPORT void CGContextSetFillColorWithColor(const CGContextRef &context, const CGColorRef &color);
QV_EXPORT void CGContextSetStrokeColorWithColor(const CGContextRef &context, const CGColorRef &color);
QV_EXPORT CGColorRef CGContextGetFillColor(const CGContextRef &context);
QV_EXPORT CGColorRef CGContextGetStrokeColor(const CGContextRef &context);
/// A factor for all alphas, held to 0 to 1; 1 at first.
QV_EXPORT void CGContextSetAlpha(const CGContextRef &context, CGFloat alpha);
/// In points, 1 at first. Widths that are not positive are left alone.
QV_EXPORT void CGContextSetLineWidth(const CGContextRef &context, CGFloat width);
QV_EXPORT void CGContextSetShouldAntialias(const CGContextRef &context, bool shouldAntialias);

// The current path keeps its place when the map changes, and is no part of the saved state. Filling, stroking
// and clipping use it up.

QV_EXPORT void CGContextBeginPath(const CGContextRef &context);
QV_EXPORT void CGContextMoveToPoint(const CGContextRef &context, CGFloat x, CGFloat y);
QV_EXPORT void CGContextAddLineToPoint(const CGContextRef &context, CGFloat x, CGFloat y);
QV_EXPORT void CGContextAddCurveToPoint(const CGContextRef &context, CGFloat cp1x, CGFloat cp1y, CGFloat cp2x,
                                        CGFloat cp2y, CGFloat x, CGFloat y);
QV_EXPORT void CGContextAddArc(const CGContextRef &context, CGFloat x, CGFloat y, CGFloat radius,
                               CGFloat startAngle, CGFloat endAngle, bool clockwise);
QV_EXPORT void CGContextAddRect(const CGContextRef &context, const CGRect &rect);
QV_EXPORT void CGContextAddPath(const CGContextRef &context, const CGPathRef &path);
QV_EXPORT void CGContextClosePath(const CGContextRef &context);

/// By the non-zero rule, the "EO" ones by the even-odd rule.
QV_EXPORT void CGContextFillPath(const CGContextRef &context);
QV_EXPORT void CGContextEOFillPath(const CGContextRef &context);
QV_EXPORT void CGContextStrokePath(const CGContextRef &context);
/// From now on nothing is drawn outside of the path; a path without elements leaves nothing to draw on.
QV_EXPORT void CGContextClip(const CGContextRef &context);
QV_EXPORT void CGContextEOClip(const CGContextRef &context);

QV_EXPORT void CGContextClipToRect(const CGContextRef &context, const CGRect &rect);
/// The smallest rectangle around what can be drawn on, in the current points; null when there is nothing.
QV_EXPORT CGRect CGContextGetClipBoundingBox(const CGContextRef &context);

QV_EXPORT void CGContextFillRect(const CGContextRef &context, const CGRect &rect);
QV_EXPORT void CGContextStrokeRect(const CGContextRef &context, const CGRect &rect);
QV_EXPORT void CGContextFillEllipseInRect(const CGContextRef &context, const CGRect &rect);
/// Makes the area transparent.
QV_EXPORT void CGContextClearRect(const CGContextRef &context, const CGRect &rect);

/// All over the clip between the lines across start and end, and beyond them as the options say. Where both
/// points are one, what lies behind the end counts before what lies before the start.
QV_EXPORT void CGContextDrawLinearGradient(const CGContextRef &context, const CGGradientRef &gradient,
                                           CGPoint startPoint, CGPoint endPoint,
                                           CGGradientDrawingOptions options);
/// In the circles between the two, and in those that follow on as the options say.
QV_EXPORT void CGContextDrawRadialGradient(const CGContextRef &context, const CGGradientRef &gradient,
                                           CGPoint startCenter, CGFloat startRadius, CGPoint endCenter,
                                           CGFloat endRadius, CGGradientDrawingOptions options);

// Of bitmaps; 0 or null for other contexts.

QV_EXPORT std::size_t CGBitmapContextGetWidth(const CGContextRef &context);
QV_EXPORT std::size_t CGBitmapContextGetHeight(const CGContextRef &context);
/// 0xAARRGGBB, the components multiplied by alpha; 0 outside.
QV_EXPORT std::uint32_t QVBitmapContextGetPixel(const CGContextRef &context, std::size_t x, std::size_t y);
/// The bitmap as a PNG file.
QV_EXPORT NSData QVBitmapContextCreatePNG(const CGContextRef &context);

} // namespace quorvane
