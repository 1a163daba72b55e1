#include "Quorvane/Symbols/QVSymbolAvailability.h"

namespace quorvane {

std::shared_ptr<QVSymbolAvailability> QVSymbolAvailability::copy() const {
    return std::make_shared<QVSymbolAvailability>(*this);
}

const NSCodingClass &QVSymbolAvailability::codingClass() {
    static const NSCodingClass codingClass{
        u"QVSymbolAvailability", nullptr,
        +[]() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVSymbolAvailability>(); }};
    return codingClass;
}

void QVSymbolAvailability::encodeWithCoder(NSCoder &coder) const {
    coder.encodeInteger(static_cast<NSInteger>(_type), u"type");
    coder.encodeString(_availableVersion, u"availableVersion");
    coder.encodeString(_deprecatedVersion, u"deprecatedVersion");
    coder.encodeString(_descriptiveText, u"descriptiveText");
}

std::shared_ptr<NSSecureCoding> QVSymbolAvailability::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    _type = static_cast<NSUInteger>(coder.decodeInteger(u"type"));
    _availableVersion = coder.decodeString(u"availableVersion");
    _deprecatedVersion = coder.decodeString(u"deprecatedVersion");
    _descriptiveText = coder.decodeString(u"descriptiveText");
    return self;
}

} // namespace quorvane
