#include "Quorvane/Styles/QVStyle.h"

#include "Platform/AppKit/NSShadow.h"
#include "Quorvane/Styles/QVGradient.h"

#include <array>

namespace quorvane {

namespace {

/// The coder's form of a value; nothing for an object that can't be archived, since there is nothing to
/// restore it from.
std::optional<NSCodingValue> codingValue(const QVStyleValue &value) {
    if (std::holds_alternative<QVStyleNull>(value))
        return nullptr;
    if (const auto *integer = std::get_if<NSInteger>(&value))
        return *integer;
    if (const auto *real = std::get_if<double>(&value))
        return *real;
    if (const auto *string = std::get_if<NSString>(&value))
        return *string;
    // The coder hands objects out that are its caller's own, so its values can be changed; written ones are
    // only read.
    auto object = std::dynamic_pointer_cast<NSSecureCoding>(
        std::const_pointer_cast<NSObject>(std::get<std::shared_ptr<const NSObject>>(value)));
    return object ? std::optional<NSCodingValue>(std::move(object)) : std::nullopt;
}

std::optional<QVStyleValue> styleValue(const NSCodingValue &value) {
    if (std::holds_alternative<std::nullptr_t>(value))
        return QVStyleNull();
    if (const auto *flag = std::get_if<bool>(&value))
        return NSInteger(*flag);
    if (const auto *integer = std::get_if<NSInteger>(&value))
        return *integer;
    if (const auto *real = std::get_if<double>(&value))
        return *real;
    if (const auto *string = std::get_if<NSString>(&value))
        return *string;
    auto object = std::dynamic_pointer_cast<const NSObject>(std::get<std::shared_ptr<NSSecureCoding>>(value));
    return object ? std::optional<QVStyleValue>(std::move(object)) : std::nullopt;
}

} // namespace

const NSCodingClass &QVStyle::codingClass() {
    static const NSCodingClass codingClass{u"QVStyle", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::make_shared<QVStyle>();
                                           }};
    return codingClass;
}

void QVStyle::encodeWithCoder(NSCoder &coder) const {
    coder.encodeObject(_selector, u"selector");
    coder.encodeStringDictionary(_properties, u"properties");
    std::map<NSString, NSCodingValue> attributes;
    for (const auto &[key, value] : _attributes)
        if (auto coded = codingValue(value))
            attributes.emplace(key, *std::move(coded));
    coder.encodeValueDictionary(attributes, u"attributes");
}

std::shared_ptr<NSSecureCoding> QVStyle::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    _selector = coder.decodeObjectOfClass<QVSimpleSelector>(u"selector");
    _properties = coder.decodeStringDictionary(u"properties").value_or(Properties());
    const std::array accepted{&QVColor::codingClass(), &QVGradient::codingClass(), &NSShadow::codingClass()};
    if (const auto attributes = coder.decodeValueDictionary(u"attributes", accepted))
        for (const auto &[key, coded] : *attributes)
            if (auto value = styleValue(coded))
                _attributes.insert_or_assign(key, *std::move(value));
    return self;
}

} // namespace quorvane
