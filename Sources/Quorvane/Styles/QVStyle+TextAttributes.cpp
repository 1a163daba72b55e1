#include "Quorvane/Styles/QVStyle+TextAttributes.h"

#include "Platform/AppKit/NSShadow.h"
#include "Platform/Dispatch/ReadWriteLock.h"
#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Styles/QVStyle.h"

#include <unordered_map>

namespace quorvane {

namespace {

/// Fonts by the base font's PostScript name, then by what was asked for. Never destroyed: text may be
/// coloured while the process ends.
struct FontCache {
    ReadWriteLock lock;
    std::unordered_map<NSString, std::unordered_map<CTFontAttributes, CTFontRef>> fonts;
};

FontCache &fontCache() {
    static auto *const cache = new FontCache;
    return *cache;
}

CTFontRef fontOf(const NSAttributes &attributes) {
    const NSAttributeValue *const value = attributes.valueForKey(NSFontAttributeName);
    const auto *object = value ? std::get_if<NSAttributeValue::Object>(value) : nullptr;
    return object ? std::dynamic_pointer_cast<const CTFont>(*object) : nullptr;
}

/// The traits to give the base font, or nothing where it stays as it is.
std::optional<CTFontSymbolicTraits> traitsOf(const QVStyle &style) {
    CTFontSymbolicTraits traits = 0;
    bool isDue = style.isNullForAttribute(QVStyleAttributeFontWeight);
    if (style.fontWeight().value_or(400) >= 700) {
        traits |= kCTFontTraitBold;
        isDue = true;
    }
    if (style.isNullForAttribute(QVStyleAttributeFontStyle))
        isDue = true;
    const auto fontStyle = style.fontStyle();
    // Both mean italic: a theme that says "normal" has always got it.
    if (fontStyle == QVStyleFontStyleItalic || fontStyle == QVStyleFontStyleNormal) {
        traits |= kCTFontTraitItalic;
        isDue = true;
    }
    return isDue ? std::optional(traits) : std::nullopt;
}

void applyColor(const QVStyle &style, const QVStyleAttributeKey &key, NSMutableAttributes &attributes,
                NSAttributeKey name) {
    if (style.isNullForAttribute(key))
        attributes.remove(name);
    else if (const auto color = style.colorForAttribute(key))
        attributes.set(name, color->platformColor());
}

void applyLine(NSMutableAttributes &attributes, NSAttributeKey styleName, NSInteger lineStyle,
               NSAttributeKey colorName, const std::shared_ptr<const QVColor> &color) {
    attributes.set(styleName, lineStyle);
    if (color)
        attributes.set(colorName, color->platformColor());
    else
        attributes.remove(colorName);
}

void applyDecoration(const QVStyle &style, NSMutableAttributes &attributes) {
    const bool isNone = style.isNullForAttribute(QVStyleAttributeTextDecoration);
    if (isNone || style.isNullForAttribute(QVStyleAttributeTextDecorationColor)) {
        attributes.remove(NSUnderlineColorAttributeName);
        attributes.remove(NSStrikethroughColorAttributeName);
    }
    if (isNone || style.isNullForAttribute(QVStyleAttributeTextDecorationStyle)) {
        attributes.remove(NSUnderlineStyleAttributeName);
        attributes.remove(NSStrikethroughStyleAttributeName);
    }
    const auto lines = style.textDecoration();
    if (!lines)
        return;
    const NSInteger lineStyle = style.textDecorationStyle().value_or(QVStyleTextDecorationStyleSingle);
    const auto color = style.textDecorationColor();
    if (*lines & QVStyleTextDecorationUnderline)
        applyLine(attributes, NSUnderlineStyleAttributeName, lineStyle, NSUnderlineColorAttributeName, color);
    if (*lines & QVStyleTextDecorationLineThrough)
        applyLine(attributes, NSStrikethroughStyleAttributeName, lineStyle, NSStrikethroughColorAttributeName,
                  color);
}

} // namespace

CTFontRef QVStyleGetCachedFontForAttributes(const CTFontAttributes &attributes, const CTFontRef &baseFont) {
    QVParameterAssert(baseFont, "baseFont != NULL");
    if (!baseFont)
        return nullptr;
    FontCache &cache = fontCache();
    const WriteGuard guard(cache.lock);
    auto &fonts = cache.fonts[CTFontCopyPostScriptName(baseFont)];
    if (const auto found = fonts.find(attributes); found != fonts.end())
        return found->second;
    const CTFontSymbolicTraits wanted = attributes.kCTFontSymbolicTrait.value_or(0);
    const CTFontSymbolicTraits missing =
        wanted & ~CTFontGetSymbolicTraits(baseFont) & (kCTFontTraitItalic | kCTFontTraitBold);
    CTFontRef font =
        missing == 0 ? baseFont
                     : CTFontCreateCopyWithSymbolicTraits(baseFont, CTFontGetSize(baseFont), wanted, missing);
    if (font)
        fonts.emplace(attributes, font);
    return font;
}

void QVStyleApplyTextAttributes(const QVStyle &style, NSMutableAttributes &attributes,
                                const NSAttributes &baseAttributes) {
    if (const auto traits = traitsOf(style))
        if (const CTFontRef baseFont = fontOf(baseAttributes))
            if (auto font = QVStyleGetCachedFontForAttributes({CTFontGetSize(baseFont), *traits}, baseFont))
                attributes.set(NSFontAttributeName, std::move(font));

    applyColor(style, QVStyleAttributeBackgroundColor, attributes, NSBackgroundColorAttributeName);
    applyColor(style, QVStyleAttributeTextColor, attributes, NSForegroundColorAttributeName);
    if (style.isNullForAttribute(QVStyleAttributeTextShadow))
        attributes.remove(NSShadowAttributeName);
    else if (const auto shadow = style.textShadow())
        attributes.set(NSShadowAttributeName, shadow);
    applyDecoration(style, attributes);
}

} // namespace quorvane
