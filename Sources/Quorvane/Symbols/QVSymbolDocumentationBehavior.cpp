#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"

#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/XML/QVXMLElement.h"

namespace quorvane {

std::shared_ptr<QVSymbolDocumentationBehavior>
QVSymbolDocumentationBehavior::behaviorWithSearchMode(NSUInteger searchMode, const NSString &matchSelectors,
                                                      const NSString &multipleMatchSelectors,
                                                      const NSString &skipSelectors) {
    const auto parse = [](const NSString &selectors) {
        return selectors.length() != 0 ? QVSimpleSelector::simpleSelectorsJoinedByString(selectors)
                                       : Selectors();
    };
    auto behavior = std::make_shared<QVSymbolDocumentationBehavior>();
    behavior->_searchMode = searchMode;
    behavior->_matchSelectors = parse(matchSelectors);
    behavior->_matchMultipleSelectors = parse(multipleMatchSelectors);
    behavior->_skipSelectors = parse(skipSelectors);
    if (behavior->_matchSelectors.empty() && behavior->_matchMultipleSelectors.empty())
        behavior->_matchSelectors = {QVSimpleSelector::simpleSelectorWithString(u"comment")};
    return behavior;
}

std::shared_ptr<QVSymbolDocumentationBehavior>
QVSymbolDocumentationBehavior::documentationBehaviorWithXMLElement(const QVXMLElement &element) {
    const NSString mode = element.valueForAttribute(u"mode");
    NSUInteger searchMode = QVSymbolDocumentationSearchModeBefore;
    if (mode == u"after")
        searchMode = QVSymbolDocumentationSearchModeAfter;
    else if (mode == u"subtree")
        searchMode = QVSymbolDocumentationSearchModeSubtree;
    return behaviorWithSearchMode(searchMode, element.valueForAttribute(u"match"),
                                  element.valueForAttribute(u"match-multiple"),
                                  element.valueForAttribute(u"skip"));
}

std::vector<std::shared_ptr<QVSymbolDocumentationBehavior>>
QVSymbolDocumentationBehavior::defaultBehaviorsForSymbolType(NSUInteger symbolType) {
    if (!QVSymbolTypeIsFunction(symbolType) && !QVSymbolTypeIsType(symbolType) &&
        !QVSymbolTypeIsValue(symbolType))
        return {};
    static std::mutex monitor;
    // Never destroyed: documentation may be asked for while the process ends.
    static auto &behaviors = *new std::map<NSUInteger, std::shared_ptr<QVSymbolDocumentationBehavior>>;
    const std::lock_guard guard(monitor);
    auto &behavior = behaviors[symbolType];
    if (!behavior)
        behavior =
            behaviorWithSearchMode(QVSymbolDocumentationSearchModeBefore, nullptr, u"comment", nullptr);
    return {behavior};
}

std::shared_ptr<QVSymbolDocumentationBehavior> QVSymbolDocumentationBehavior::copy() const {
    // Selectors are interned: a copy of one is the selector itself.
    return std::make_shared<QVSymbolDocumentationBehavior>(*this);
}

const NSCodingClass &QVSymbolDocumentationBehavior::codingClass() {
    static const NSCodingClass coding{u"QVSymbolDocumentationBehavior", nullptr,
                                      []() -> std::shared_ptr<NSSecureCoding> {
                                          return std::make_shared<QVSymbolDocumentationBehavior>();
                                      }};
    return coding;
}

void QVSymbolDocumentationBehavior::encodeWithCoder(NSCoder &coder) const {
    coder.encodeInteger(static_cast<NSInteger>(_searchMode), u"searchMode");
    coder.encodeArray(_matchSelectors, u"matchSelectors");
    coder.encodeArray(_matchMultipleSelectors, u"matchMultipleSelectors");
    coder.encodeArray(_skipSelectors, u"skipSelectors");
}

std::shared_ptr<NSSecureCoding>
QVSymbolDocumentationBehavior::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    _searchMode = static_cast<NSUInteger>(coder.decodeInteger(u"searchMode"));
    const auto decode = [&coder](const NSString &key) -> Selectors {
        const auto selectors = coder.decodeArrayOfClass<QVSimpleSelector>(key);
        return selectors ? Selectors(selectors->begin(), selectors->end()) : Selectors();
    };
    _matchSelectors = decode(u"matchSelectors");
    _matchMultipleSelectors = decode(u"matchMultipleSelectors");
    _skipSelectors = decode(u"skipSelectors");
    return self;
}

} // namespace quorvane
