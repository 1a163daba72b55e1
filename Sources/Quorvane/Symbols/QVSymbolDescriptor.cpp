#include "Quorvane/Symbols/QVSymbolDescriptor.h"

namespace quorvane {

std::shared_ptr<QVSymbolDescriptor>
QVSymbolDescriptor::symbolDescriptorForSyntaxName(NSString syntaxName,
                                                  std::optional<std::set<NSUInteger>> types) {
    auto descriptor = std::make_shared<QVSymbolDescriptor>();
    descriptor->setSyntaxName(std::move(syntaxName));
    descriptor->setTypes(std::move(types));
    return descriptor;
}

std::shared_ptr<QVSymbolDescriptor> QVSymbolDescriptor::copy() const {
    return std::make_shared<QVSymbolDescriptor>(*this);
}

const NSCodingClass &QVSymbolDescriptor::codingClass() {
    static const NSCodingClass codingClass{
        u"QVSymbolDescriptor", nullptr,
        +[]() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVSymbolDescriptor>(); }};
    return codingClass;
}

void QVSymbolDescriptor::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_syntaxName, u"syntaxName");
    coder.encodeNumberSet(_types, u"type");
    coder.encodeBool(_includeSubsyntaxes, u"includeSubsyntaxes");
}

std::shared_ptr<NSSecureCoding> QVSymbolDescriptor::initWithCoder(NSCoder &coder,
                                                                  std::shared_ptr<NSSecureCoding> self) {
    _syntaxName = coder.decodeString(u"syntaxName");
    _types = coder.decodeNumberSet(u"type");
    _includeSubsyntaxes = coder.decodeBool(u"includeSubsyntaxes");
    return self;
}

} // namespace quorvane
