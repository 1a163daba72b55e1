#pragma once

#include "Platform/CoreGraphics/CGContext.h"
#include "Platform/CoreText/CTFont.h"

namespace quorvane {

// Glyphs as outlines, in points, y growing upward from the base line. Any thread; contexts one at a time.

/// The outline of a glyph, mapped by the transform, which may be null; empty for one without ink. Null for a
/// glyph that the font does not have.
QV_EXPORT CGPathRef CTFontCreatePathForGlyph(const CTFontRef &font, CGGlyph glyph,
                                             const CGAffineTransform *transform);
/// Fills glyphs at their positions, of which there are as many, in the context's fill colour. Positions and
/// outlines are mapped by the text matrix first; where y grows downward it has to turn them over.
QV_EXPORT void CTFontDrawGlyphs(const CTFontRef &font, std::span<const CGGlyph> glyphs,
                                std::span<const CGPoint> positions, const CGContextRef &context);

} // namespace quorvane
