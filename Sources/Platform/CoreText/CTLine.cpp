#include "Platform/CoreText/CTLine.h"

#include "Platform/AppKit/NSColor.h"
#include "Platform/CoreText/CTFontDrawing.h"
#include "Platform/CoreText/CTFontFace.h"

#include <hb.h>

namespace quorvane {

namespace {

/// Glyphs of one font and colour, in the order they stand in from left to right.
struct Stretch {
    CTFontRef font;
    CGColorRef color;
    std::vector<CGGlyph> glyphs;
    std::vector<CGPoint> positions;
};

struct BufferDeleter {
    void operator()(hb_buffer_t *buffer) const { hb_buffer_destroy(buffer); }
};

bool isControl(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

/// Where fonts have no tables to shape with: each character's own glyph behind the last.
CGFloat setPlainly(Stretch &stretch, std::u16string_view text, NSRange range, CGFloat x) {
    const std::u16string_view characters = text.substr(range.location, range.length);
    std::vector<CGGlyph> glyphs(characters.size());
    CTFontGetGlyphsForCharacters(stretch.font, characters, glyphs);
    for (std::size_t index = 0; index < glyphs.size(); ++index) {
        const bool isSecondHalf =
            index > 0 && (characters[index] & 0xFC00) == 0xDC00 && (characters[index - 1] & 0xFC00) == 0xD800;
        if (isSecondHalf || isControl(characters[index]))
            continue;
        stretch.glyphs.push_back(glyphs[index]);
        stretch.positions.push_back({x, 0});
        x += CTFontGetAdvancesForGlyphs(stretch.font, {&glyphs[index], 1});
    }
    return x;
}

/// Sets a range of the text from `x` on and answers where it ends.
CGFloat setGlyphs(Stretch &stretch, std::u16string_view text, NSRange range, CGFloat x) {
    hb_font_t *const shaper = CTFontFaceShaper(stretch.font->face());
    if (!shaper)
        return setPlainly(stretch, text, range, x);
    const std::unique_ptr<hb_buffer_t, BufferDeleter> buffer(hb_buffer_create());
    // The text around is given too, for letters that join and marks that belong to the one before.
    hb_buffer_add_utf16(buffer.get(), reinterpret_cast<const std::uint16_t *>(text.data()),
                        static_cast<int>(text.size()), static_cast<unsigned>(range.location),
                        static_cast<int>(range.length));
    // Else the guess takes the language of the process, by which fonts may differ from machine to machine.
    // The library keeps languages in a list without locks, so one thread enters this one for all.
    static const hb_language_t english = hb_language_from_string("en", -1);
    hb_buffer_set_language(buffer.get(), english);
    hb_buffer_guess_segment_properties(buffer.get());
    hb_shape(shaper, buffer.get(), nullptr, 0);

    unsigned count = 0;
    const hb_glyph_info_t *infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
    const hb_glyph_position_t *places = hb_buffer_get_glyph_positions(buffer.get(), &count);
    const CGFloat scale = stretch.font->size() / stretch.font->face().unitsPerEm;
    for (unsigned index = 0; index < count; ++index) {
        if (infos[index].cluster < text.size() && isControl(text[infos[index].cluster]))
            continue;
        stretch.glyphs.push_back(static_cast<CGGlyph>(infos[index].codepoint));
        stretch.positions.push_back({x + places[index].x_offset * scale, places[index].y_offset * scale});
        x += places[index].x_advance * scale;
    }
    return x;
}

} // namespace

struct CTLine::Contents {
    std::shared_ptr<const NSAttributedString> string;
    std::vector<Stretch> stretches;
    CGFloat width = 0, ascent = 0, descent = 0, leading = 0;
};

CTLine::CTLine(std::unique_ptr<const Contents> contents) : _contents(std::move(contents)) {}
CTLine::~CTLine() = default;

CTLineRef CTLineCreateWithAttributedString(const NSAttributedString &attributedString) {
    auto contents = std::make_unique<CTLine::Contents>();
    contents->string = NSAttributedString::initWithAttributedString(attributedString);
    const NSRange whole{0, contents->string->length()};
    const std::u16string text = contents->string->string().substringWithRange(whole);
    const auto set = [&](const NSAttributes &attributes, NSRange range, bool &) {
        const auto *font = attributes.objectForKey<CTFont>(NSFontAttributeName);
        const auto *color = attributes.objectForKey<NSColor>(NSForegroundColorAttributeName);
        Stretch stretch;
        stretch.font = font ? std::static_pointer_cast<const CTFont>(font->shared_from_this())
                            : CTFontCreateMonospacedSystemFont(12);
        // Without any font installed there is nothing to set.
        if (!stretch.font)
            return;
        stretch.color = (color ? color : NSColor::blackColor().get())->CGColor();
        contents->width = setGlyphs(stretch, text, range, contents->width);
        contents->ascent = std::max(contents->ascent, CTFontGetAscent(stretch.font));
        contents->descent = std::max(contents->descent, CTFontGetDescent(stretch.font));
        contents->leading = std::max(contents->leading, CTFontGetLeading(stretch.font));
        contents->stretches.push_back(std::move(stretch));
    };
    contents->string->enumerateAttributesInRange(whole, 0, set);
    return std::make_shared<const CTLine>(std::move(contents));
}

CTLineRef CTLineCreateTruncatedLine(const CTLineRef &line, CGFloat width,
                                    CTLineTruncationType /*truncationType*/,
                                    const CTLineRef &truncationToken) {
    if (line->contents().width <= width)
        return line;
    const NSAttributedString &string = *line->contents().string;
    const auto cutAt = [&](NSUInteger length) {
        const auto cut = NSMutableAttributedString::initWithAttributedString(
            *string.attributedSubstringFromRange({0, length}));
        if (truncationToken)
            cut->appendAttributedString(*truncationToken->contents().string);
        return CTLineCreateWithAttributedString(*cut);
    };
    // Where characters begin. Less text is hardly ever wider, so the longest that fits is found by halves.
    const NSString text(string.string().substringWithRange({0, string.length()}));
    std::vector<NSUInteger> starts;
    for (NSUInteger start = 0; start < text.length();
         start = NSMaxRange(text.rangeOfComposedCharacterSequenceAtIndex(start)))
        starts.push_back(start);
    const auto tooWide = std::partition_point(starts.begin(), starts.end(), [&](NSUInteger length) {
        return cutAt(length)->contents().width <= width;
    });
    return tooWide == starts.begin() ? nullptr : cutAt(*std::prev(tooWide));
}

NSUInteger CTLineGetGlyphCount(const CTLineRef &line) {
    NSUInteger count = 0;
    for (const Stretch &stretch : line->contents().stretches)
        count += stretch.glyphs.size();
    return count;
}

NSRange CTLineGetStringRange(const CTLineRef &line) { return {0, line->contents().string->length()}; }

CGFloat CTLineGetTypographicBounds(const CTLineRef &line, CGFloat *ascent, CGFloat *descent,
                                   CGFloat *leading) {
    const CTLine::Contents &contents = line->contents();
    if (ascent != nullptr)
        *ascent = contents.ascent;
    if (descent != nullptr)
        *descent = contents.descent;
    if (leading != nullptr)
        *leading = contents.leading;
    return contents.width;
}

void CTLineDraw(const CTLineRef &line, const CGContextRef &context) {
    for (const Stretch &stretch : line->contents().stretches) {
        CGContextSaveGState(context);
        CGContextSetFillColorWithColor(context, stretch.color);
        CTFontDrawGlyphs(stretch.font, stretch.glyphs, stretch.positions, context);
        CGContextRestoreGState(context);
    }
}

} // namespace quorvane
