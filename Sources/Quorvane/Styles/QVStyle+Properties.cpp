#include "Quorvane/Styles/QVStyle.h"

#include "Platform/AppKit/NSShadow.h"
#include "Quorvane/Categories/NSNumber+QuorvaneAdditions.h"
#include "Quorvane/Styles/QVGradient.h"

#include <span>

// What each property means: its value is read once, when the style is made, into the attributes.

namespace quorvane {

namespace {

std::vector<NSString> componentsOf(const NSString &value) {
    return QVStyle::componentsForCSSValue(value).value_or(std::vector<NSString>());
}

/// The line that a word of a decoration names, 0 for none.
NSInteger decorationLine(const NSString &component) {
    if (component == u"line-through")
        return QVStyleTextDecorationLineThrough;
    if (component == u"underline")
        return QVStyleTextDecorationUnderline;
    return component == u"overline" ? QVStyleTextDecorationOverline : 0;
}

/// The style and pattern that a word of a decoration names, 0 for none.
NSInteger decorationStyle(const NSString &component) {
    if (component == u"solid")
        return QVStyleTextDecorationStyleSingle;
    if (component == u"dotted")
        return QVStyleTextDecorationStyleSingle | QVStyleTextDecorationStylePatternDot;
    return component == u"dashed" ? QVStyleTextDecorationStyleSingle | QVStyleTextDecorationStylePatternDash
                                  : 0;
}

template <const QVStyleAttributeKey &key> void readColor(QVStyle &style, const NSString &value) {
    style.setColor(QVStyle::colorWithCSSValue(value), key);
}

template <const QVStyleAttributeKey &colorKey, const QVStyleAttributeKey &gradientKey>
void readPaints(QVStyle &style, const NSString &value) {
    for (const NSString &component : componentsOf(value)) {
        if (auto gradient = QVStyle::gradientWithCSSValue(component))
            style.setGradient(std::move(gradient), gradientKey);
        else if (auto color = QVStyle::colorWithCSSValue(component))
            style.setColor(std::move(color), colorKey);
    }
}

void readFontWeight(QVStyle &style, const NSString &value) {
    NSInteger weight = value.integerValue();
    if (value == u"bold")
        weight = 700;
    else if (value == u"bolder")
        weight = 900;
    else if (value == u"lighter")
        weight = 200;
    else if (value == u"normal")
        weight = 400;
    style.setFontWeight(weight == 0 ? std::nullopt : std::optional(weight));
}

void readFontStyle(QVStyle &style, const NSString &value) {
    if (value == u"italic")
        style.setFontStyle(QVStyleFontStyleItalic);
    else if (value == u"normal")
        style.setFontStyle(QVStyleFontStyleNormal);
}

/// Null for fewer than two lengths. There is no spread: a fourth length has no meaning.
std::shared_ptr<const NSShadow> shadowOf(const std::vector<NSString> &components) {
    std::shared_ptr<const QVColor> color;
    std::vector<double> lengths;
    for (const NSString &component : components) {
        if (auto found = QVStyle::colorWithCSSValue(component))
            color = std::move(found);
        else if (const auto length = qv_numberWithCSSLengthValue(component))
            lengths.push_back(*length);
    }
    if (lengths.size() < 2)
        return nullptr;
    auto shadow = std::make_shared<NSShadow>();
    shadow->setShadowOffset({lengths[0], lengths[1]});
    if (lengths.size() > 2)
        shadow->setShadowBlurRadius(lengths[2]);
    if (color)
        shadow->setShadowColor(color->platformColor());
    return shadow;
}

void readTextShadow(QVStyle &style, const NSString &value) {
    if (auto shadow = shadowOf(componentsOf(value)))
        style.setTextShadow(std::move(shadow));
}

void readBoxShadow(QVStyle &style, const NSString &value) {
    const std::vector<NSString> components = componentsOf(value);
    bool inset = false;
    for (const NSString &component : components)
        inset |= component == u"inset";
    if (auto shadow = shadowOf(components))
        style.setShadow(std::move(shadow), inset ? QVStyleAttributeInsetShadow : QVStyleAttributeBoxShadow);
}

void readDecorationLine(QVStyle &style, const NSString &value) {
    NSInteger lines = 0;
    for (const NSString &component : componentsOf(value))
        lines |= decorationLine(component);
    style.setTextDecoration(lines);
}

void readDecorationStyle(QVStyle &style, const NSString &value) {
    NSInteger mask = 0;
    for (const NSString &component : componentsOf(value)) {
        // Dashes take the place of what stands before them; all else comes together.
        if (component == u"dashed")
            mask = 0;
        mask |= decorationStyle(component);
    }
    style.setTextDecorationStyle(mask);
}

void readDecoration(QVStyle &style, const NSString &value) {
    NSInteger lines = 0, mask = 0;
    for (const NSString &component : componentsOf(value)) {
        const NSInteger line = decorationLine(component), pattern = decorationStyle(component);
        lines |= line;
        mask |= pattern;
        if (line != 0 || pattern != 0)
            continue;
        if (auto color = QVStyle::colorWithCSSValue(component))
            style.setTextDecorationColor(std::move(color));
    }
    style.setTextDecoration(lines);
    style.setTextDecorationStyle(mask);
}

struct Property {
    std::u16string_view name;
    void (*read)(QVStyle &style, const NSString &value);
    /// What "none" switches off.
    std::vector<QVStyleAttributeKey> attributes;
};

std::span<const Property> knownProperties() {
    // Never destroyed: a theme may be read while the process ends.
    static const auto &known = *new std::vector<Property>{
        {u"color", readColor<QVStyleAttributeTextColor>, {QVStyleAttributeTextColor}},
        {u"background-color", readColor<QVStyleAttributeBackgroundColor>, {QVStyleAttributeBackgroundColor}},
        {u"background",
         readPaints<QVStyleAttributeBackgroundColor, QVStyleAttributeBackgroundGradient>,
         {QVStyleAttributeBackgroundColor, QVStyleAttributeBackgroundGradient}},
        {u"border-color", readColor<QVStyleAttributeBorderColor>, {QVStyleAttributeBorderColor}},
        {u"border",
         readPaints<QVStyleAttributeBorderColor, QVStyleAttributeBorderGradient>,
         {QVStyleAttributeBorderColor, QVStyleAttributeBorderGradient}},
        {u"font-weight", readFontWeight, {QVStyleAttributeFontWeight}},
        {u"font-style", readFontStyle, {QVStyleAttributeFontStyle}},
        {u"text-shadow", readTextShadow, {QVStyleAttributeTextShadow}},
        {u"box-shadow", readBoxShadow, {QVStyleAttributeBoxShadow, QVStyleAttributeInsetShadow}},
        {u"text-decoration-color",
         readColor<QVStyleAttributeTextDecorationColor>,
         {QVStyleAttributeTextDecorationColor}},
        {u"text-decoration-line", readDecorationLine, {QVStyleAttributeTextDecoration}},
        {u"text-decoration-style", readDecorationStyle, {QVStyleAttributeTextDecorationStyle}},
        {u"text-decoration",
         readDecoration,
         {QVStyleAttributeTextDecoration, QVStyleAttributeTextDecorationStyle,
          QVStyleAttributeTextDecorationColor}},
    };
    return known;
}

} // namespace

std::shared_ptr<QVStyle> QVStyle::styleWithSelector(std::shared_ptr<const QVSimpleSelector> selector,
                                                    Properties properties) {
    auto style = std::make_shared<QVStyle>();
    style->_selector = std::move(selector);
    style->_properties = std::move(properties);
    for (const auto &[name, value] : style->_properties)
        for (const Property &property : knownProperties()) {
            if (name != property.name)
                continue;
            if (value != u"none")
                property.read(*style, value);
            else
                for (const QVStyleAttributeKey key : property.attributes)
                    style->setNull(true, key);
        }
    return style;
}

std::optional<std::vector<NSString>> QVStyle::componentsForProperty(const NSString &property) const {
    const auto found = _properties.find(property);
    return found == _properties.end() ? std::nullopt : componentsForCSSValue(found->second);
}

NSString QVStyle::stringForProperty(const NSString &property) const {
    const auto components = componentsForProperty(property);
    return components && !components->empty() ? stringWithCSSValue(components->front()) : NSString();
}

double QVStyle::CSSFontWeightToCTFontWeight(NSInteger fontWeight) {
    switch (fontWeight) {
    case 100:
        return -1.0;
    case 200:
        return -0.6;
    case 300:
        return -0.3;
    case 500:
        return 0.2;
    case 600:
        return 0.4;
    case 700:
        return 0.6;
    case 800:
        return 0.8;
    case 900:
        return 1.0;
    default:
        return 0.0;
    }
}

} // namespace quorvane
