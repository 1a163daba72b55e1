#include "Quorvane/Completions/QVSymbolCompletion.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/XML/QVXMLAttributes.h"

namespace quorvane {

std::shared_ptr<QVSymbolCompletion>
QVSymbolCompletion::completionWithXMLElement(const QVXMLElement &element) {
    auto completion = std::make_shared<QVSymbolCompletion>();
    if (const NSString words = element.valueForAttribute(u"type")) {
        completion->_symbolTypes.emplace();
        for (const NSString &word : words.componentsSeparatedByString(u",")) {
            const NSUInteger type = QVSymbolTypeFromString(
                word.stringByTrimmingCharactersInSet(*NSCharacterSet::whitespaceCharacterSet()));
            if (type != 0)
                completion->_symbolTypes->insert(type);
        }
    }
    completion->_syntaxName = QVNonEmptyAttribute(element, u"syntax");
    for (const auto &behavior : element.elementsForName(u"behavior"))
        completion->_behaviors.push_back(QVCompletionBehavior::behaviorWithXMLElement(*behavior));
    return completion;
}

std::shared_ptr<QVSymbolCompletion> QVSymbolCompletion::copy() const {
    auto copy = std::make_shared<QVSymbolCompletion>(*this);
    for (auto &behavior : copy->_behaviors)
        behavior = behavior->copy();
    return copy;
}

const NSCodingClass &QVSymbolCompletion::codingClass() {
    static const NSCodingClass coding{
        u"QVSymbolCompletion", nullptr,
        []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVSymbolCompletion>(); }};
    return coding;
}

void QVSymbolCompletion::encodeWithCoder(NSCoder &coder) const {
    coder.encodeNumberSet(_symbolTypes, u"symbolTypes");
    coder.encodeString(_syntaxName, u"symbolSyntaxName");
    coder.encodeArray(_behaviors, u"behaviors");
}

std::shared_ptr<NSSecureCoding> QVSymbolCompletion::initWithCoder(NSCoder &coder,
                                                                  std::shared_ptr<NSSecureCoding> self) {
    _symbolTypes = coder.decodeNumberSet(u"symbolTypes");
    _syntaxName = coder.decodeString(u"symbolSyntaxName");
    if (auto behaviors = coder.decodeArrayOfClass<QVCompletionBehavior>(u"behaviors"))
        _behaviors = std::move(*behaviors);
    return self;
}

} // namespace quorvane
