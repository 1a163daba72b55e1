#include "Platform/CoreText/CTFont.h"

#include "Platform/CoreText/CTFontFace.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/QVWordCharacters.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H

#include <cmath>
#include <set>

namespace quorvane {

namespace {

constexpr CGFloat defaultSize = 12;

CGFloat validSize(CGFloat size) { return std::isfinite(size) && size > 0 ? size : defaultSize; }

/// Says once for each name that a font is missing.
void logMissingFont(const NSString &name) {
    static auto *const lock = new std::mutex;
    static auto *const told = new std::set<NSString>;
    {
        const std::lock_guard guard(*lock);
        if (!told->insert(name).second)
            return;
    }
    NSLog(u"The font \"%@\" is not installed; the system's monospaced font stands in for it", name);
}

CTFontRef fontOfFace(std::shared_ptr<CTFont::Face> face, CGFloat size) {
    return face ? std::make_shared<const CTFont>(std::move(face), validSize(size)) : nullptr;
}

CGFloat points(const CTFontRef &font, CGFloat units) {
    return units * font->size() / font->face().unitsPerEm;
}

} // namespace

std::size_t CTFontAttributes::hash() const {
    return std::hash<CGFloat>()(kCTFontSizeAttribute.value_or(0)) * 31 + kCTFontSymbolicTrait.value_or(0);
}

CTFont::CTFont() : _size(defaultSize) {}
CTFont::CTFont(std::shared_ptr<Face> face, CGFloat size) : _face(std::move(face)), _size(size) {}
CTFont::~CTFont() = default;

bool CTFont::isEqual(const NSObject *other) const {
    const auto *font = dynamic_cast<const CTFont *>(other);
    return font && font->_face == _face && font->_size == _size;
}

std::size_t CTFont::hash() const {
    return std::hash<const void *>()(_face.get()) * 31 + std::hash<CGFloat>()(_size);
}

NSString CTFont::description() const {
    return NSString::stringWithFormat(u"<CTFont %@ %.2f>", _face->postScriptName, _size);
}

const NSCodingClass &CTFont::codingClass() {
    static const NSCodingClass codingClass{u"CTFont", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::shared_ptr<CTFont>(new CTFont);
                                           }};
    return codingClass;
}

void CTFont::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_face->postScriptName, u"NSName");
    coder.encodeDouble(_size, u"NSSize");
}

std::shared_ptr<NSSecureCoding> CTFont::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    const NSString name = coder.decodeString(u"NSName");
    _face = name ? CTFontFaceWithName(name) : nullptr;
    if (!_face)
        _face = CTFontMonospacedFace();
    _size = validSize(coder.decodeDouble(u"NSSize"));
    return _face ? std::move(self) : nullptr;
}

CTFontRef CTFontCreateWithName(const NSString &name, CGFloat size) {
    if (!name)
        return nullptr;
    if (auto face = CTFontFaceWithName(name))
        return fontOfFace(std::move(face), size);
    logMissingFont(name);
    return CTFontCreateMonospacedSystemFont(size);
}

CTFontRef CTFontCreateMonospacedSystemFont(CGFloat size) { return fontOfFace(CTFontMonospacedFace(), size); }

CTFontRef CTFontCreateCopyWithSymbolicTraits(const CTFontRef &font, CGFloat size,
                                             CTFontSymbolicTraits symTraitValue,
                                             CTFontSymbolicTraits symTraitMask) {
    const CTFontSymbolicTraits mask = symTraitMask & (kCTFontTraitItalic | kCTFontTraitBold);
    const CTFontSymbolicTraits own = font->face().traits;
    const CTFontSymbolicTraits wanted = (own & ~mask) | (symTraitValue & mask);
    return fontOfFace(wanted == own ? font->sharedFace() : CTFontFaceWithTraits(font->face(), wanted),
                      size == 0 ? font->size() : size);
}

CTFontRef CTFontCreateCopyWithAttributes(const CTFontRef &font, CGFloat size,
                                         const CTFontAttributes &attributes) {
    const CGFloat newSize = attributes.kCTFontSizeAttribute.value_or(size == 0 ? font->size() : size);
    if (attributes.kCTFontSymbolicTrait)
        if (auto copy = CTFontCreateCopyWithSymbolicTraits(font, newSize, *attributes.kCTFontSymbolicTrait,
                                                           kCTFontTraitItalic | kCTFontTraitBold))
            return copy;
    return fontOfFace(font->sharedFace(), newSize);
}

const NSString &CTFontCopyPostScriptName(const CTFontRef &font) { return font->face().postScriptName; }

const NSString &CTFontCopyFamilyName(const CTFontRef &font) { return font->face().familyName; }

CGFloat CTFontGetSize(const CTFontRef &font) { return font->size(); }

CTFontSymbolicTraits CTFontGetSymbolicTraits(const CTFontRef &font) { return font->face().traits; }

CGFloat CTFontGetAscent(const CTFontRef &font) { return points(font, font->face().ascender); }

CGFloat CTFontGetDescent(const CTFontRef &font) { return points(font, -font->face().descender); }

CGFloat CTFontGetLeading(const CTFontRef &font) {
    const CTFont::Face &face = font->face();
    return points(font, std::max(0, face.height - face.ascender + face.descender));
}

CGFloat CTFontGetUnderlinePosition(const CTFontRef &font) {
    return points(font, font->face().underlinePosition);
}

CGFloat CTFontGetUnderlineThickness(const CTFontRef &font) {
    return points(font, font->face().underlineThickness);
}

unsigned CTFontGetUnitsPerEm(const CTFontRef &font) { return font->face().unitsPerEm; }

bool CTFontGetGlyphsForCharacters(const CTFontRef &font, std::u16string_view characters,
                                  std::span<CGGlyph> glyphs) {
    const CTFont::Face &face = font->face();
    const std::lock_guard guard(face.lock);
    std::fill(glyphs.begin(), glyphs.end(), CGGlyph{0});
    bool complete = true;
    const std::size_t end = std::min(characters.size(), glyphs.size());
    for (std::size_t index = 0; index < end;) {
        const std::size_t start = index;
        const char32_t character = QVNextCharacter(characters, index);
        const FT_UInt glyph = FT_Get_Char_Index(face.freeTypeFace, character);
        glyphs[start] = glyph <= 0xFFFF ? static_cast<CGGlyph>(glyph) : CGGlyph{0};
        complete = complete && glyphs[start] != 0;
    }
    return complete;
}

CGFloat CTFontGetAdvancesForGlyphs(const CTFontRef &font, std::span<const CGGlyph> glyphs,
                                   std::span<CGFloat> advances) {
    const CTFont::Face &face = font->face();
    const std::lock_guard guard(face.lock);
    CGFloat sum = 0;
    for (std::size_t index = 0; index < glyphs.size(); ++index) {
        FT_Fixed units = 0;
        if (FT_Get_Advance(face.freeTypeFace, glyphs[index], FT_LOAD_NO_SCALE, &units) != 0)
            units = 0;
        const CGFloat advance = points(font, static_cast<CGFloat>(units));
        if (index < advances.size())
            advances[index] = advance;
        sum += advance;
    }
    return sum;
}

} // namespace quorvane
