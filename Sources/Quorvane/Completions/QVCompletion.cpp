#include "Quorvane/Completions/QVCompletion.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSException.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/XML/QVXMLElement.h"

namespace quorvane {

namespace {

/// The text without its variable bindings, which nobody types.
NSString textWithoutVariables(const NSString &string) {
    try {
        return qv_stringByReplacingVariableBindingsUsingBlock(
            string, [](const NSString &, bool &) { return NSString(); });
    } catch (const NSException &) {
        // A backslash at the very end escapes nothing. That is a mistake in the call of a programmer, but in
        // a file it is a text like any other.
        return string;
    }
}

std::shared_ptr<const NSCharacterSet> charactersOfChild(const QVXMLElement &element,
                                                        std::u16string_view name) {
    const auto child = element.lastElementForName(name);
    return child ? NSCharacterSet::characterSetWithCharactersInString(child->text()) : nullptr;
}

} // namespace

std::shared_ptr<QVCompletion> QVCompletion::completionWithXMLElement(
    const QVXMLElement &element, NSUInteger defaultSymbolType,
    const std::vector<std::shared_ptr<QVCompletionBehavior>> &defaultBehaviors) {
    auto completion = std::make_shared<QVCompletion>();
    completion->_string = element.valueForAttribute(u"string");
    if (completion->_string)
        completion->_stringGrams = qv_grams(textWithoutVariables(completion->_string));
    completion->_priority = static_cast<NSUInteger>(element.valueForAttribute(u"priority").integerValue());
    const auto isTrue = [&](const NSString &name, bool whenMissing) {
        const NSString value = element.valueForAttribute(name);
        return value ? value == u"true" : whenMissing;
    };
    completion->_caseInsensitive = isTrue(u"case-insensitive", true);
    completion->_deprecated = isTrue(u"deprecated", false);
    completion->_shouldTokenize = isTrue(u"tokenize", true);
    const NSUInteger symbolType = QVSymbolTypeFromString(element.valueForAttribute(u"symbol"));
    completion->_symbolType = symbolType != 0 ? symbolType : defaultSymbolType;
    if (const auto descriptions = element.elementsForName(u"description"); !descriptions.empty())
        completion->_descriptiveText = descriptions.front()->stringValue();
    for (const auto &behavior : element.elementsForName(u"behavior"))
        completion->_behaviors.push_back(QVCompletionBehavior::behaviorWithXMLElement(*behavior));
    if (completion->_behaviors.empty())
        completion->_behaviors = defaultBehaviors;
    completion->_acceptChararacterSet = charactersOfChild(element, u"confirm");
    completion->_partialAcceptChararacterSet = charactersOfChild(element, u"partial-confirm");
    return completion;
}

const NSCodingClass &QVCompletion::codingClass() {
    static const NSCodingClass coding{u"QVCompletion", nullptr, []() -> std::shared_ptr<NSSecureCoding> {
                                          return std::make_shared<QVCompletion>();
                                      }};
    return coding;
}

void QVCompletion::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_string, u"string");
    if (_stringGrams)
        coder.encodeStrings(_stringGrams.strings(), u"stringGrams");
    coder.encodeBool(_caseInsensitive, u"caseInsensitive");
    coder.encodeBool(_deprecated, u"deprecated");
    coder.encodeInteger(static_cast<NSInteger>(_priority), u"priority");
    coder.encodeInteger(static_cast<NSInteger>(_symbolType), u"symbolType");
    coder.encodeBool(_shouldTokenize, u"shouldTokenize");
    coder.encodeObject(_acceptChararacterSet, u"acceptChararacterSet");
    coder.encodeObject(_partialAcceptChararacterSet, u"partialAcceptChararacterSet");
    coder.encodeArray(_behaviors, u"behaviors");
    coder.encodeString(_value, u"value");
    coder.encodeString(_descriptiveText, u"descriptiveText");
}

std::shared_ptr<NSSecureCoding> QVCompletion::initWithCoder(NSCoder &coder,
                                                            std::shared_ptr<NSSecureCoding> self) {
    _string = coder.decodeString(u"string");
    if (const auto grams = coder.decodeStrings(u"stringGrams"))
        _stringGrams = QVGrams(*grams);
    _caseInsensitive = coder.decodeBool(u"caseInsensitive");
    _deprecated = coder.decodeBool(u"deprecated");
    _priority = static_cast<NSUInteger>(coder.decodeInteger(u"priority"));
    _symbolType = static_cast<NSUInteger>(coder.decodeInteger(u"symbolType"));
    _shouldTokenize = coder.decodeBool(u"shouldTokenize");
    _acceptChararacterSet = coder.decodeObjectOfClass<NSCharacterSet>(u"acceptChararacterSet");
    _partialAcceptChararacterSet = coder.decodeObjectOfClass<NSCharacterSet>(u"partialAcceptChararacterSet");
    if (auto behaviors = coder.decodeArrayOfClass<QVCompletionBehavior>(u"behaviors"))
        _behaviors = std::move(*behaviors);
    _value = coder.decodeString(u"value");
    _descriptiveText = coder.decodeString(u"descriptiveText");
    return self;
}

} // namespace quorvane
