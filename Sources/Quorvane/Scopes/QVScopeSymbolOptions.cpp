#include "Quorvane/Scopes/QVScopeSymbolOptions.h"

#include "Quorvane/Formatters/QVFormatter.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/XML/QVXMLAttributes.h"

namespace quorvane {

QVScopeSymbolOptions::QVScopeSymbolOptions() = default;
QVScopeSymbolOptions::~QVScopeSymbolOptions() = default;

std::shared_ptr<QVScopeSymbolOptions>
QVScopeSymbolOptions::symbolOptionsWithXMLElement(const QVXMLElement &element) {
    auto options = std::make_shared<QVScopeSymbolOptions>();
    options->_symbolType = QVSymbolTypeFromString(element.valueForAttribute(u"type"));
    options->_symbolScope = QVSymbolScopeFromString(element.valueForAttribute(u"scope"));
    options->_anonymous = element.valueForAttribute(u"anonymous") == u"true";
    options->_nameSelector =
        QVSimpleSelector::simpleSelectorWithString(element.valueForAttribute(u"name-selector"));
    if (const auto displayName = element.lastElementForName(u"display-name"))
        options->_displayNameFormatter = QVFormatter::formatterWithXMLElement(*displayName);
    if (const auto filter = element.lastElementForName(u"filter"))
        options->readFilter(*filter);
    // Last, since the symbol's type decides what a context does by default.
    if (const auto context = element.lastElementForName(u"context"))
        options->readContext(*context);
    return options;
}

void QVScopeSymbolOptions::readFilter(const QVXMLElement &element) {
    const auto compile = [&element](const NSString &attribute) -> std::shared_ptr<QVRegularExpression> {
        const NSString pattern = element.valueForAttribute(attribute);
        return pattern ? QVRegularExpression::regularExpressionWithPattern(
                             pattern, QVRegularExpressionMultiline | QVRegularExpressionUseJIT)
                       : nullptr;
    };
    _leadingMatchRegularExpression = compile(u"match-start");
    _trailingMatchRegularExpression = compile(u"match-end");
}

void QVScopeSymbolOptions::readContext(const QVXMLElement &element) {
    const auto word = [&element](const NSString &attribute) {
        return element.valueForAttribute(attribute).lowercaseString();
    };
    _contextBehavior = QVSymbolContextBehaviorFromString(word(u"behavior"));
    _contextGroupIdentifier = QVNonEmptyAttribute(element, u"group");
    if (!_contextGroupIdentifier)
        _usesNameAsContextGroupIdentifier = element.valueForAttribute(u"group-by-name") == u"true";
    if (const NSString priority = QVNonEmptyAttribute(element, u"priority"))
        _contextCapturePriority = static_cast<NSUInteger>(priority.integerValue());
    _contextLocalSymbolExportType = QVSymbolTypeFromString(element.valueForAttribute(u"export-local"));
    _contextUnclosedBehavior = QVSymbolContextUnclosedBehaviorFromString(word(u"unclosed"));
    _contextFoldable = word(u"foldable") != u"false";
    _contextFoldingSymbolType = QVSymbolTypeFromString(word(u"fold-type"));
    const NSString arguments = word(u"arguments");
    _contextShouldCaptureArguments = arguments ? arguments == u"true" : QVSymbolTypeIsFunction(_symbolType);
    if (const auto autoClose = element.lastElementForName(u"auto-close")) {
        _contextAutocloseExpression = autoClose->valueForAttribute(u"string");
        _contextAutocloseCompletionExpression = autoClose->valueForAttribute(u"completion");
        if (const NSString indentation = QVNonEmptyAttribute(*autoClose, u"indentation"))
            _contextAutocloseIndentationBehavior = QVSymbolContextIndentationBehaviorFromString(indentation);
    }
}

std::shared_ptr<QVScopeSymbolOptions> QVScopeSymbolOptions::copy() const {
    return std::make_shared<QVScopeSymbolOptions>(*this);
}

const NSCodingClass &QVScopeSymbolOptions::codingClass() {
    static const NSCodingClass coding{
        u"QVScopeSymbolOptions", nullptr,
        []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVScopeSymbolOptions>(); }};
    return coding;
}

void QVScopeSymbolOptions::encodeWithCoder(NSCoder &coder) const {
    const auto encode = [&coder](NSUInteger value, const NSString &key) {
        coder.encodeInteger(static_cast<NSInteger>(value), key);
    };
    encode(_symbolType, u"symbolType");
    encode(_symbolScope, u"symbolScope");
    encode(_contextBehavior, u"contextBehavior");
    encode(_contextCapturePriority, u"contextCapturePriority");
    // Two of the flags are numbers in archives that exist.
    encode(_contextShouldCaptureArguments, u"contextShouldCaptureArguments");
    encode(_contextLocalSymbolExportType, u"contextLocalSymbolExportType");
    encode(_contextUnclosedBehavior, u"contextUnclosedBehavior");
    encode(_contextFoldable, u"contextFoldable");
    encode(_contextFoldingSymbolType, u"contextFoldingSymbolType");
    encode(_contextAutocloseIndentationBehavior, u"contextAutocloseIndentationBehavior");
    coder.encodeBool(_anonymous, u"anonymous");
    coder.encodeBool(_usesNameAsContextGroupIdentifier, u"usesNameAsContextGroupIdentifier");
    coder.encodeObject(_nameSelector, u"nameSelector");
    coder.encodeObject(_displayNameFormatter, u"displayNameFormatter");
    coder.encodeObject(_leadingMatchRegularExpression, u"leadingMatchRegularExpression");
    coder.encodeObject(_trailingMatchRegularExpression, u"trailingMatchRegularExpression");
    coder.encodeString(_contextGroupIdentifier, u"contextGroupIdentifier");
    coder.encodeString(_contextAutocloseExpression, u"contextAutocloseExpression");
    coder.encodeString(_contextAutocloseCompletionExpression, u"contextAutocloseCompletionExpression");
}

std::shared_ptr<NSSecureCoding> QVScopeSymbolOptions::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    const auto decode = [&coder](const NSString &key) {
        return static_cast<NSUInteger>(coder.decodeInteger(key));
    };
    _symbolType = decode(u"symbolType");
    _symbolScope = decode(u"symbolScope");
    _contextBehavior = decode(u"contextBehavior");
    _contextCapturePriority = decode(u"contextCapturePriority");
    _contextShouldCaptureArguments = decode(u"contextShouldCaptureArguments") != 0;
    _contextLocalSymbolExportType = decode(u"contextLocalSymbolExportType");
    _contextUnclosedBehavior = decode(u"contextUnclosedBehavior");
    _contextFoldable = decode(u"contextFoldable") != 0;
    _contextFoldingSymbolType = decode(u"contextFoldingSymbolType");
    _contextAutocloseIndentationBehavior = decode(u"contextAutocloseIndentationBehavior");
    _anonymous = coder.decodeBool(u"anonymous");
    _usesNameAsContextGroupIdentifier = coder.decodeBool(u"usesNameAsContextGroupIdentifier");
    _nameSelector = coder.decodeObjectOfClass<QVSimpleSelector>(u"nameSelector");
    _displayNameFormatter = coder.decodeObjectOfClass<QVFormatter>(u"displayNameFormatter");
    _leadingMatchRegularExpression =
        coder.decodeObjectOfClass<QVRegularExpression>(u"leadingMatchRegularExpression");
    _trailingMatchRegularExpression =
        coder.decodeObjectOfClass<QVRegularExpression>(u"trailingMatchRegularExpression");
    _contextGroupIdentifier = coder.decodeString(u"contextGroupIdentifier");
    _contextAutocloseExpression = coder.decodeString(u"contextAutocloseExpression");
    _contextAutocloseCompletionExpression = coder.decodeString(u"contextAutocloseCompletionExpression");
    return self;
}

} // namespace quorvane
