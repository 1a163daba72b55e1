#include "Platform/AppKit/NSParagraphStyle.h"

namespace quorvane {

namespace {

/// Text that says nothing else has a tabulator every so many points, up to the twelfth.
constexpr CGFloat defaultTabDistance = 28;
constexpr int defaultTabStops = 12;

} // namespace

const std::shared_ptr<const NSParagraphStyle> &NSParagraphStyle::defaultParagraphStyle() {
    // Never destroyed: text may be laid out while the process ends.
    static const auto *const style = [] {
        auto made = std::make_shared<NSParagraphStyle>();
        for (int stop = 1; stop <= defaultTabStops; ++stop)
            made->_tabStops.push_back(stop * defaultTabDistance);
        return new std::shared_ptr<const NSParagraphStyle>(std::move(made));
    }();
    return *style;
}

std::shared_ptr<NSParagraphStyle> NSParagraphStyle::mutableCopy() const {
    return std::make_shared<NSParagraphStyle>(*this);
}

bool NSParagraphStyle::isEqual(const NSObject *other) const {
    if (other == this)
        return true;
    const auto *const style = dynamic_cast<const NSParagraphStyle *>(other);
    return style != nullptr && style->_tabStops == _tabStops && style->_lineBreakMode == _lineBreakMode &&
           style->lengths() == lengths();
}

std::size_t NSParagraphStyle::hash() const {
    std::size_t hash = static_cast<std::size_t>(_lineBreakMode);
    const auto add = [&hash](CGFloat number) {
        // Zeros of both signs are equal.
        hash = hash * 31 + std::hash<CGFloat>()(number == 0 ? 0 : number);
    };
    for (const CGFloat stop : _tabStops)
        add(stop);
    for (const CGFloat length : lengths())
        add(length);
    return hash;
}

const NSCodingClass &NSParagraphStyle::codingClass() {
    static const NSCodingClass codingClass{
        u"NSParagraphStyle", nullptr,
        +[]() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<NSParagraphStyle>(); }};
    return codingClass;
}

void NSParagraphStyle::encodeWithCoder(NSCoder &coder) const {
    coder.encodeDoubles(_tabStops, u"NSTabStops");
    coder.encodeDouble(_defaultTabInterval, u"NSDefaultTabInterval");
    coder.encodeInteger(static_cast<NSInteger>(_lineBreakMode), u"NSLineBreakMode");
    coder.encodeDouble(_lineSpacing, u"NSLineSpacing");
    coder.encodeDouble(_lineHeightMultiple, u"NSLineHeightMultiple");
    coder.encodeDouble(_minimumLineHeight, u"NSMinLineHeight");
    coder.encodeDouble(_maximumLineHeight, u"NSMaxLineHeight");
    coder.encodeDouble(_firstLineHeadIndent, u"NSFirstLineHeadIndent");
    coder.encodeDouble(_headIndent, u"NSHeadIndent");
}

std::shared_ptr<NSSecureCoding> NSParagraphStyle::initWithCoder(NSCoder &coder,
                                                                std::shared_ptr<NSSecureCoding> self) {
    const auto finite = [](double number) { return std::isfinite(number) ? number : 0; };
    const auto length = [&](const char16_t *key) { return finite(coder.decodeDouble(key)); };
    for (const double stop : coder.decodeDoubles(u"NSTabStops").value_or(std::vector<double>()))
        _tabStops.push_back(finite(stop));
    // Whoever looks for the next tabulator relies on their order.
    std::sort(_tabStops.begin(), _tabStops.end());
    _defaultTabInterval = length(u"NSDefaultTabInterval");
    const auto mode = static_cast<NSUInteger>(coder.decodeInteger(u"NSLineBreakMode"));
    if (mode <= NSLineBreakByTruncatingMiddle)
        _lineBreakMode = static_cast<NSLineBreakMode>(mode);
    _lineSpacing = length(u"NSLineSpacing");
    _lineHeightMultiple = length(u"NSLineHeightMultiple");
    _minimumLineHeight = length(u"NSMinLineHeight");
    _maximumLineHeight = length(u"NSMaxLineHeight");
    _firstLineHeadIndent = length(u"NSFirstLineHeadIndent");
    _headIndent = length(u"NSHeadIndent");
    return self;
}

} // namespace quorvane
