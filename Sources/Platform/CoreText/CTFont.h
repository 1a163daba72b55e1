#pragma once

#include "Platform/CoreGraphics/CGGeometry.h"
#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class CTFont;
using CTFontRef = std::shared_ptr<const CTFont>;
/// The number of a glyph in its font; 0 stands for a missing one.
using CGGlyph = std::uint16_t;

/// What kind of face a font has; a mask.
using CTFontSymbolicTraits = std::uint32_t;
/// Oblique faces count as italic.
inline constexpr CTFontSymbolicTraits kCTFontTraitItalic = 1u << 0;
/// From half bold on.
inline constexpr CTFontSymbolicTraits kCTFontTraitBold = 1u << 1;
inline constexpr CTFontSymbolicTraits kCTFontTraitMonoSpace = 1u << 10;

/// What a font is asked to be; what is absent stays as it is.
struct QV_EXPORT CTFontAttributes {
    /// In points.
    std::optional<CGFloat> kCTFontSizeAttribute = std::nullopt;
    /// The one entry of the traits that counts.
    std::optional<CTFontSymbolicTraits> kCTFontSymbolicTrait = std::nullopt;

    friend bool operator==(const CTFontAttributes &, const CTFontAttributes &) = default;
    std::size_t hash() const;
};

/// A face of an installed font at a size. Immutable and for any thread; faces are opened once for the process
/// and kept. Measures are in points. Glyphs measure what their outlines say, without hinting, so that layout
/// is the same at every scale.
class QV_EXPORT CTFont final : public NSObject, public NSSecureCoding {
public:
    struct Face;

    explicit CTFont(std::shared_ptr<Face> face, CGFloat size);
    ~CTFont() override;

    const Face &face() const { return *_face; }
    const std::shared_ptr<Face> &sharedFace() const { return _face; }
    CGFloat size() const { return _size; }

    /// By face and size.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"CTFont"; }
    /// "<CTFont DejaVuSansMono 12.00>"
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    /// A font that is not installed here comes back as the system's monospaced one, without a word.
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    CTFont();

    std::shared_ptr<Face> _face;
    CGFloat _size;
};

/// The font of a PostScript name, or else of a full name or a family. One that is not installed becomes the
/// system's monospaced font, which the log says once for each name. Null for a null name, and where no font
/// at all is installed. A size that is no positive number is 12.
QV_EXPORT CTFontRef CTFontCreateWithName(const NSString &name, CGFloat size);
/// The system's monospaced font; null where no font at all is installed.
QV_EXPORT CTFontRef CTFontCreateMonospacedSystemFont(CGFloat size);

// All below are asked of a font that is there. A size of 0 keeps the font's own.

/// The face of the same family that has the traits of the mask, italic and bold, as the value says, and else
/// is as close to the font's as can be. Null where the family has none: nothing is slanted or made bold by
/// drawing.
QV_EXPORT CTFontRef CTFontCreateCopyWithSymbolicTraits(const CTFontRef &font, CGFloat size,
                                                       CTFontSymbolicTraits symTraitValue,
                                                       CTFontSymbolicTraits symTraitMask);
/// The same for the attributes, of which a size wins over the other one. Traits that the family lacks leave
/// the face as it is.
QV_EXPORT CTFontRef CTFontCreateCopyWithAttributes(const CTFontRef &font, CGFloat size,
                                                   const CTFontAttributes &attributes = {});

QV_EXPORT const NSString &CTFontCopyPostScriptName(const CTFontRef &font);
QV_EXPORT const NSString &CTFontCopyFamilyName(const CTFontRef &font);
QV_EXPORT CGFloat CTFontGetSize(const CTFontRef &font);
QV_EXPORT CTFontSymbolicTraits CTFontGetSymbolicTraits(const CTFontRef &font);

/// Above the base line.
QV_EXPORT CGFloat CTFontGetAscent(const CTFontRef &font);
/// Below the base line, positive.
QV_EXPORT CGFloat CTFontGetDescent(const CTFontRef &font);
/// Between two lines.
QV_EXPORT CGFloat CTFontGetLeading(const CTFontRef &font);
/// Where the middle of an underline is, negative below the base line.
QV_EXPORT CGFloat CTFontGetUnderlinePosition(const CTFontRef &font);
QV_EXPORT CGFloat CTFontGetUnderlineThickness(const CTFontRef &font);
/// Units of the outlines to the font's size.
QV_EXPORT unsigned CTFontGetUnitsPerEm(const CTFontRef &font);

/// Fills one glyph for each unit, for a pair of surrogates the glyph and 0; whether none is missing.
QV_EXPORT bool CTFontGetGlyphsForCharacters(const CTFontRef &font, std::u16string_view characters,
                                            std::span<CGGlyph> glyphs);
/// The sum of the widths; each is filled into the advances, if there are any.
QV_EXPORT CGFloat CTFontGetAdvancesForGlyphs(const CTFontRef &font, std::span<const CGGlyph> glyphs,
                                             std::span<CGFloat> advances = {});

} // namespace quorvane

template <> struct std::hash<quorvane::CTFontAttributes> {
    std::size_t operator()(const quorvane::CTFontAttributes &attributes) const { return attributes.hash(); }
};
