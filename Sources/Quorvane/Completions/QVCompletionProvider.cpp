#include "Quorvane/Completions/QVCompletionProvider.h"

#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Completions/QVSymbolCompletion.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Quorvane/XML/QVXMLElement.h"

namespace quorvane {

namespace {

/// Null without a child of that name, for a list that is not given says something else than an empty one.
std::optional<std::vector<NSString>> textsOfChildren(const QVXMLElement &element, std::u16string_view name) {
    const auto children = element.elementsForName(name);
    if (children.empty())
        return std::nullopt;
    std::vector<NSString> texts;
    for (const auto &child : children)
        if (NSString text = child->text(); text.length() != 0)
            texts.push_back(std::move(text));
    return texts;
}

} // namespace

std::shared_ptr<QVCompletionProvider>
QVCompletionProvider::providerWithXMLElement(const QVXMLElement &element, std::shared_ptr<NSError> *error) {
    auto provider = std::make_shared<QVCompletionProvider>();
    provider->_name = element.valueForAttribute(u"name");
    if (const auto expression = element.lastElementForName(u"expression")) {
        provider->_regularExpression = NSRegularExpression::regularExpressionWithPattern(
            expression->text(), NSRegularExpressionAnchorsMatchLines);
        if (!provider->_regularExpression) {
            QVSetError(error, QVDefinitionError(NSString::stringWithFormat(
                                  u"Invalid regular expression for completion provider %@, {%ld, %ld}",
                                  provider->_name, element.lineNumber(), element.columnNumber())));
            return nullptr;
        }
        provider->_captureNumber =
            static_cast<NSUInteger>(expression->valueForAttribute(u"capture").integerValue());
    }
    if (const auto selector = element.lastElementForName(u"selector"))
        provider->_selectors = QVSelectorCombinator::selectorCombinatorsFromString(selector->text(), nullptr);
    provider->_completionSets = textsOfChildren(element, u"set");
    for (const auto &symbols : element.elementsForName(u"symbols"))
        provider->_symbolCompletions.push_back(QVSymbolCompletion::completionWithXMLElement(*symbols));
    provider->_syntaxNames = textsOfChildren(element, u"syntax");
    return provider;
}

std::shared_ptr<QVCompletionProvider> QVCompletionProvider::copy() const {
    auto copy = std::make_shared<QVCompletionProvider>(*this);
    for (auto &completion : copy->_symbolCompletions)
        completion = completion->copy();
    return copy;
}

const NSCodingClass &QVCompletionProvider::codingClass() {
    static const NSCodingClass coding{
        u"QVCompletionProvider", nullptr,
        []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<QVCompletionProvider>(); }};
    return coding;
}

void QVCompletionProvider::encodeWithCoder(NSCoder &coder) const {
    coder.encodeString(_name, u"name");
    coder.encodeObject(_regularExpression, u"regularExpression");
    coder.encodeInteger(static_cast<NSInteger>(_captureNumber), u"captureNumber");
    coder.encodeArray(_selectors, u"selectors");
    coder.encodeStrings(_completionSets, u"completionSets");
    coder.encodeArray(_symbolCompletions, u"symbolCompletions");
    coder.encodeStrings(_syntaxNames, u"syntaxNames");
}

std::shared_ptr<NSSecureCoding> QVCompletionProvider::initWithCoder(NSCoder &coder,
                                                                    std::shared_ptr<NSSecureCoding> self) {
    _name = coder.decodeString(u"name");
    _regularExpression = coder.decodeObjectOfClass<NSRegularExpression>(u"regularExpression");
    _captureNumber = static_cast<NSUInteger>(coder.decodeInteger(u"captureNumber"));
    _selectors = coder.decodeArrayOfClass<QVSelectorCombinator>(u"selectors");
    _completionSets = coder.decodeStrings(u"completionSets");
    if (auto completions = coder.decodeArrayOfClass<QVSymbolCompletion>(u"symbolCompletions"))
        _symbolCompletions = std::move(*completions);
    _syntaxNames = coder.decodeStrings(u"syntaxNames");
    return self;
}

} // namespace quorvane
