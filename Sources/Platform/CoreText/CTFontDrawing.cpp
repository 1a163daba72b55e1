#include "Platform/CoreText/CTFontDrawing.h"

#include "Platform/CoreGraphics/CGContextObject.h"
#include "Platform/CoreText/CTFontFace.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

namespace quorvane {

namespace {

/// Takes an outline from FreeType, point by point.
struct Pen {
    const CGMutablePathRef &path;
    const CGAffineTransform &transform;
    CGPoint current = {};
    bool isOpen = false;

    static CGPoint point(const FT_Vector *vector) {
        return {static_cast<CGFloat>(vector->x), static_cast<CGFloat>(vector->y)};
    }
    void curve(CGPoint control1, CGPoint control2, CGPoint end) {
        CGPathAddCurveToPoint(path, &transform, control1.x, control1.y, control2.x, control2.y, end.x, end.y);
        current = end;
    }
    void close() {
        if (std::exchange(isOpen, false))
            CGPathCloseSubpath(path);
    }

    static int moveTo(const FT_Vector *to, void *user) {
        Pen &pen = *static_cast<Pen *>(user);
        pen.close();
        pen.current = point(to);
        pen.isOpen = true;
        CGPathMoveToPoint(pen.path, &pen.transform, pen.current.x, pen.current.y);
        return 0;
    }
    static int lineTo(const FT_Vector *to, void *user) {
        Pen &pen = *static_cast<Pen *>(user);
        pen.current = point(to);
        CGPathAddLineToPoint(pen.path, &pen.transform, pen.current.x, pen.current.y);
        return 0;
    }
    static int conicTo(const FT_Vector *control, const FT_Vector *to, void *user) {
        Pen &pen = *static_cast<Pen *>(user);
        const CGPoint start = pen.current, middle = point(control), end = point(to);
        const auto towards = [&middle](CGPoint from) {
            return CGPoint{from.x + (middle.x - from.x) * 2 / 3, from.y + (middle.y - from.y) * 2 / 3};
        };
        pen.curve(towards(start), towards(end), end);
        return 0;
    }
    static int cubicTo(const FT_Vector *control1, const FT_Vector *control2, const FT_Vector *to,
                       void *user) {
        static_cast<Pen *>(user)->curve(point(control1), point(control2), point(to));
        return 0;
    }
};

/// Adds the outline, in units of the font before the transform; false where there is none. Called under the
/// face's lock.
bool appendGlyph(const CTFont::Face &face, CGGlyph glyph, const CGAffineTransform &transform,
                 const CGMutablePathRef &path) {
    if (FT_Load_Glyph(face.freeTypeFace, glyph, FT_LOAD_NO_SCALE) != 0 ||
        face.freeTypeFace->glyph->format != FT_GLYPH_FORMAT_OUTLINE)
        return false;
    FT_Outline_Funcs functions{};
    functions.move_to = Pen::moveTo;
    functions.line_to = Pen::lineTo;
    functions.conic_to = Pen::conicTo;
    functions.cubic_to = Pen::cubicTo;
    Pen pen{path, transform};
    FT_Outline_Decompose(&face.freeTypeFace->glyph->outline, &functions, &pen);
    pen.close();
    return true;
}

CGAffineTransform pointsOf(const CTFontRef &font) {
    const CGFloat scale = font->size() / font->face().unitsPerEm;
    return CGAffineTransformMakeScale(scale, scale);
}

} // namespace

CGPathRef CTFontCreatePathForGlyph(const CTFontRef &font, CGGlyph glyph, const CGAffineTransform *transform) {
    auto path = CGPathCreateMutable();
    const CGAffineTransform map =
        CGAffineTransformConcat(pointsOf(font), transform ? *transform : CGAffineTransformIdentity);
    const std::lock_guard guard(font->face().lock);
    return appendGlyph(font->face(), glyph, map, path) ? path : nullptr;
}

void CTFontDrawGlyphs(const CTFontRef &font, std::span<const CGGlyph> glyphs,
                      std::span<const CGPoint> positions, const CGContextRef &context) {
    if (!context)
        return;
    const CGAffineTransform points = pointsOf(font), text = CGContextGetTextMatrix(context);
    auto path = CGPathCreateMutable();
    {
        const std::lock_guard guard(font->face().lock);
        for (std::size_t index = 0; index < std::min(glyphs.size(), positions.size()); ++index) {
            const CGPoint position = positions[index];
            const auto place = CGAffineTransformMakeTranslation(position.x, position.y);
            const auto map = CGAffineTransformConcat(CGAffineTransformConcat(points, place), text);
            appendGlyph(font->face(), glyphs[index], map, path);
        }
    }
    // What the caller has on its own path stays there.
    auto own = std::exchange(context->path, CGPathCreateMutable());
    CGContextAddPath(context, path);
    CGContextFillPath(context);
    context->path = std::move(own);
}

} // namespace quorvane
