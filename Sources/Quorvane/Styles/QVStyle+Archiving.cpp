#include "Quorvane/Styles/QVStyle.h"

#include "Platform/AppKit/NSShadow.h"
#include "Platform/Foundation/NSAttributedString+Coding.h"
#include "Quorvane/Styles/QVGradient.h"

#include <array>

namespace quorvane {

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
        if (auto coded = qv_codingValue(value))
            attributes.emplace(key, *std::move(coded));
    coder.encodeValueDictionary(attributes, u"attributes");
}

std::shared_ptr<NSSecureCoding> QVStyle::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    _selector = coder.decodeObjectOfClass<QVSimpleSelector>(u"selector");
    _properties = coder.decodeStringDictionary(u"properties").value_or(Properties());
    const std::array accepted{&QVColor::codingClass(), &QVGradient::codingClass(), &NSShadow::codingClass()};
    if (const auto attributes = coder.decodeValueDictionary(u"attributes", accepted))
        for (const auto &[key, coded] : *attributes)
            if (auto value = qv_attributeValue(coded))
                _attributes.insert_or_assign(key, *std::move(value));
    return self;
}

} // namespace quorvane
