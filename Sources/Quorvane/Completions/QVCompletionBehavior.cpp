#include "Quorvane/Completions/QVCompletionBehavior.h"

#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Symbols/QVSymbol.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/XML/QVXMLAttributes.h"

namespace quorvane {

namespace {

std::shared_ptr<NSRegularExpression> expressionOfAttribute(const QVXMLElement &element,
                                                           const NSString &name) {
    const NSString pattern = element.valueForAttribute(name);
    return pattern ? NSRegularExpression::regularExpressionWithPattern(pattern,
                                                                       NSRegularExpressionAnchorsMatchLines)
                   : nullptr;
}

NSString textOfChild(const QVXMLElement &element, std::u16string_view name) {
    const auto child = element.lastElementForName(name);
    return child ? child->text() : NSString();
}

} // namespace

std::shared_ptr<QVCompletionBehavior>
QVCompletionBehavior::behaviorWithXMLElement(const QVXMLElement &element) {
    auto behavior = std::make_shared<QVCompletionBehavior>();
    behavior->_symbolType = QVSymbolTypeFromString(element.valueForAttribute(u"symbol"));
    behavior->_usesVariableSubstitution = element.valueForAttribute(u"variables") == u"true";
    behavior->_shouldCompleteOnConfirm = element.valueForAttribute(u"complete-on-confirm") == u"true";
    behavior->_deprecated = element.valueForAttribute(u"deprecated") == u"true";
    const NSString tokenize = element.valueForAttribute(u"tokenize");
    behavior->_shouldTokenize = !tokenize || tokenize == u"true";
    behavior->_prefixRegularExpression = expressionOfAttribute(element, u"prefix");
    behavior->_suffixRegularExpression = expressionOfAttribute(element, u"suffix");
    behavior->_prepend = textOfChild(element, u"prepend");
    behavior->_append = textOfChild(element, u"append");
    if (const auto arguments = element.lastElementForName(u"arguments"))
        behavior->readArguments(*arguments);
    return behavior;
}

void QVCompletionBehavior::readArguments(const QVXMLElement &element) {
    _argumentListPrefix = element.valueForAttribute(u"prefix");
    _argumentListSuffix = element.valueForAttribute(u"suffix");
    _argumentListSeparator = element.valueForAttribute(u"separator");
    _argumentPrefix = element.valueForAttribute(u"prefix-each");
    _argumentSuffix = element.valueForAttribute(u"suffix-each");
    _prependInitialArgumentListSeparator = QVAttributeIsTrue(element.valueForAttribute(u"prepend-separator"));
    const NSString appendEmpty = element.valueForAttribute(u"append-empty");
    _shouldAppendEmptyArgumentList = !appendEmpty || QVAttributeIsTrue(appendEmpty);
    const NSString tokenize = element.valueForAttribute(u"tokenize");
    _shouldTokenizeArguments = !tokenize || QVAttributeIsTrue(tokenize);
}

NSString QVCompletionBehavior::completionStringWithText(const NSString &text, const QVSymbol *symbol) const {
    // What is null adds nothing.
    std::u16string result(_prepend.view());
    result += text.view();
    result += _append.view();
    const auto arguments = symbol ? symbol->arguments() : std::nullopt;
    if (!arguments || (arguments->empty() && !_shouldAppendEmptyArgumentList))
        return result;

    result += _argumentListPrefix.view();
    if (_prependInitialArgumentListSeparator)
        result += _argumentListSeparator.view();
    bool isFirst = true;
    for (const auto &argument : *arguments) {
        if (!isFirst)
            result += _argumentListSeparator.view();
        isFirst = false;
        result += _argumentPrefix.view();
        if (_shouldTokenizeArguments)
            result += u"$[";
        if (argument)
            result += argument->name().view();
        if (_shouldTokenizeArguments)
            result += u"]";
        result += _argumentSuffix.view();
    }
    result += _argumentListSuffix.view();
    return result;
}

std::shared_ptr<QVCompletionBehavior> QVCompletionBehavior::copy() const {
    auto copy = std::make_shared<QVCompletionBehavior>(*this);
    // Packages from a cache lack it too, and both must offer the same.
    copy->_shouldTokenize = false;
    return copy;
}

const NSCodingClass &QVCompletionBehavior::codingClass() {
    static const NSCodingClass coding{
        u"QVCompletionBehavior", nullptr,
        []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVCompletionBehavior>(); }};
    return coding;
}

void QVCompletionBehavior::encodeWithCoder(NSCoder &coder) const {
    coder.encodeInteger(static_cast<NSInteger>(_symbolType), u"symbolType");
    coder.encodeBool(_usesVariableSubstitution, u"usesVariableSubstitution");
    coder.encodeBool(_shouldCompleteOnConfirm, u"shouldCompleteOnConfirm");
    coder.encodeBool(_deprecated, u"deprecated");
    coder.encodeObject(_prefixRegularExpression, u"prefixRegularExpression");
    coder.encodeObject(_suffixRegularExpression, u"suffixRegularExpression");
    coder.encodeString(_prepend, u"prepend");
    coder.encodeString(_append, u"append");
    coder.encodeString(_argumentListPrefix, u"argumentListPrefix");
    coder.encodeString(_argumentListSuffix, u"argumentListSuffix");
    coder.encodeString(_argumentListSeparator, u"argumentListSeparator");
    coder.encodeBool(_prependInitialArgumentListSeparator, u"prependInitialArgumentListSeparator");
    coder.encodeString(_argumentPrefix, u"argumentPrefix");
    coder.encodeString(_argumentSuffix, u"argumentSuffix");
    coder.encodeBool(_shouldAppendEmptyArgumentList, u"shouldAppendEmptyArgumentList");
    coder.encodeBool(_shouldTokenizeArguments, u"shouldTokenizeArguments");
}

std::shared_ptr<NSSecureCoding> QVCompletionBehavior::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    _symbolType = static_cast<NSUInteger>(coder.decodeInteger(u"symbolType"));
    _usesVariableSubstitution = coder.decodeBool(u"usesVariableSubstitution");
    _shouldCompleteOnConfirm = coder.decodeBool(u"shouldCompleteOnConfirm");
    _deprecated = coder.decodeBool(u"deprecated");
    _prefixRegularExpression = coder.decodeObjectOfClass<NSRegularExpression>(u"prefixRegularExpression");
    _suffixRegularExpression = coder.decodeObjectOfClass<NSRegularExpression>(u"suffixRegularExpression");
    _prepend = coder.decodeString(u"prepend");
    _append = coder.decodeString(u"append");
    _argumentListPrefix = coder.decodeString(u"argumentListPrefix");
    _argumentListSuffix = coder.decodeString(u"argumentListSuffix");
    _argumentListSeparator = coder.decodeString(u"argumentListSeparator");
    _prependInitialArgumentListSeparator = coder.decodeBool(u"prependInitialArgumentListSeparator");
    _argumentPrefix = coder.decodeString(u"argumentPrefix");
    _argumentSuffix = coder.decodeString(u"argumentSuffix");
    _shouldAppendEmptyArgumentList = coder.decodeBool(u"shouldAppendEmptyArgumentList");
    _shouldTokenizeArguments = coder.decodeBool(u"shouldTokenizeArguments");
    return self;
}

} // namespace quorvane
