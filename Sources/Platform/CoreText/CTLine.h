#pragma once

#include "Platform/CoreGraphics/CGContext.h"
#include "Platform/CoreText/CTFont.h"
#include "Platform/Foundation/NSAttributedString.h"

namespace quorvane {

class CTLine;
using CTLineRef = std::shared_ptr<const CTLine>;

/// Where a line that is too long is cut.
enum CTLineTruncationType : std::uint32_t { kCTLineTruncationEnd = 1 };

/// Text set as one line: its glyphs, kerned and with marks on their letters, each at its place from the
/// line's origin on the base line, y growing upward. Of the attributes it knows the font, which is the
/// system's monospaced one at 12 points where there is none, and the foreground colour, which is black. Each
/// stretch of equal attributes is set by itself, in one script and one direction; control characters take no
/// room. What a font lacks shows as its missing glyph. Immutable, for any thread.
class QV_EXPORT CTLine final : public NSObject {
public:
    ~CTLine() override;

    std::u16string_view className() const override { return u"CTLine"; }

    struct Contents;
    explicit CTLine(std::unique_ptr<const Contents> contents);
    const Contents &contents() const { return *_contents; }

private:
    std::unique_ptr<const Contents> _contents;
};

QV_EXPORT CTLineRef CTLineCreateWithAttributedString(const NSAttributedString &attributedString);
/// A line that is no wider than this: the line itself where it fits, else as much of its start as leaves room
/// for the token, which may be null, cut between characters. Null where the token alone is too wide.
QV_EXPORT CTLineRef CTLineCreateTruncatedLine(const CTLineRef &line, CGFloat width,
                                              CTLineTruncationType truncationType,
                                              const CTLineRef &truncationToken);

/// Glyphs with and without ink.
QV_EXPORT NSUInteger CTLineGetGlyphCount(const CTLineRef &line);
/// The text that was set.
QV_EXPORT NSRange CTLineGetStringRange(const CTLineRef &line);
/// The width, white space at the end included; the others, each of which may be null, are the largest of the
/// line's fonts. All are 0 for an empty line.
QV_EXPORT CGFloat CTLineGetTypographicBounds(const CTLineRef &line, CGFloat *ascent, CGFloat *descent,
                                             CGFloat *leading);
/// With its origin where the context's text matrix maps zero; where y grows downward the matrix has to turn
/// it over.
QV_EXPORT void CTLineDraw(const CTLineRef &line, const CGContextRef &context);

} // namespace quorvane
