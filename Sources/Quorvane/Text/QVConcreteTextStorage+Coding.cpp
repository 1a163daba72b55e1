#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/AppKit/NSShadow.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"

#include <array>

namespace quorvane {

namespace {

std::optional<NSCodingValue> codingValue(const NSAttributeValue &value) {
    if (value.isNull())
        return nullptr;
    if (const auto *const integer = std::get_if<NSInteger>(&value))
        return *integer;
    if (const auto *const real = std::get_if<double>(&value))
        return *real;
    if (const auto *const string = std::get_if<NSString>(&value))
        return *string;
    // Archives only read; what they hold is never changed through them.
    auto object = std::dynamic_pointer_cast<NSSecureCoding>(
        std::const_pointer_cast<NSObject>(std::get<NSAttributeValue::Object>(value)));
    return object ? std::optional<NSCodingValue>(std::move(object)) : std::nullopt;
}

std::optional<NSAttributeValue> attributeValue(const NSCodingValue &value) {
    if (std::holds_alternative<std::nullptr_t>(value))
        return NSNull();
    if (const auto *const flag = std::get_if<bool>(&value))
        return NSInteger(*flag);
    if (const auto *const integer = std::get_if<NSInteger>(&value))
        return *integer;
    if (const auto *const real = std::get_if<double>(&value))
        return *real;
    if (const auto *const string = std::get_if<NSString>(&value))
        return *string;
    auto object = std::dynamic_pointer_cast<const NSObject>(std::get<std::shared_ptr<NSSecureCoding>>(value));
    return object ? std::optional<NSAttributeValue>(std::move(object)) : std::nullopt;
}

} // namespace

const NSCodingClass &QVConcreteTextStorage::codingClass() {
    static const NSCodingClass codingClass{
        u"QVConcreteTextStorage", nullptr,
        +[]() -> std::shared_ptr<NSSecureCoding> { return QVConcreteTextStorage::allocate(); }};
    return codingClass;
}

void QVConcreteTextStorage::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(NSString(string().substringWithRange({0, length()})), u"string");
    std::map<NSString, NSCodingValue> attributes;
    for (const NSAttribute &attribute : _defaultTextAttributes)
        if (auto value = codingValue(attribute.value))
            attributes.emplace(attribute.key.string(), *std::move(value));
    coder.encodeValueDictionary(attributes, u"defaultTextAttributes");
    coder.encodeInteger(static_cast<NSInteger>(_lineEndings), u"lineEndings");
    coder.encodeInteger(static_cast<NSInteger>(_indentationStyle), u"indentationStyle");
    coder.encodeInteger(static_cast<NSInteger>(_tabWidth), u"tabWidth");
}

std::shared_ptr<NSSecureCoding> QVConcreteTextStorage::initWithCoder(NSCoder &coder,
                                                                     std::shared_ptr<NSSecureCoding> self) {
    if (const NSString string = coder.decodeString(u"string"); !string.isNull())
        adoptContents(NSMutableAttributedString::initWithString(string));
    const std::array accepted{&CTFont::codingClass(), &NSColor::codingClass(), &NSShadow::codingClass(),
                              &NSParagraphStyle::codingClass()};
    if (const auto values = coder.decodeValueDictionary(u"defaultTextAttributes", accepted)) {
        NSMutableAttributes attributes;
        for (const auto &[key, coded] : *values)
            if (auto value = attributeValue(coded))
                attributes.set(NSAttributeKey(key), *std::move(value));
        setDefaultTextAttributes(attributes.attributes());
    }
    // What other numbers would mean, nobody knows; they are passed over.
    if (coder.containsValueForKey(u"lineEndings"))
        if (const NSInteger value = coder.decodeInteger(u"lineEndings");
            value >= 0 && value <= NSInteger{QVLineEndingsCRLF})
            setLineEndings(static_cast<QVLineEndings>(value));
    if (coder.containsValueForKey(u"indentationStyle"))
        if (const NSInteger value = coder.decodeInteger(u"indentationStyle");
            value >= 0 && value <= NSInteger{QVIndentationStyleTabs})
            setIndentationStyle(static_cast<QVIndentationStyle>(value));
    if (coder.containsValueForKey(u"tabWidth"))
        if (const NSInteger value = coder.decodeInteger(u"tabWidth"); value >= 0)
            setTabWidth(static_cast<NSUInteger>(value));
    return self;
}

} // namespace quorvane
