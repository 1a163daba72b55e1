#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class QVSimpleSelector;
class QVXMLElement;

/// Where the documentation comment of a symbol is looked for.
enum QVSymbolDocumentationSearchMode : std::uint64_t {
    /// Inside what follows the symbol.
    QVSymbolDocumentationSearchModeSubtree = 0,
    QVSymbolDocumentationSearchModeBefore = 1,
    QVSymbolDocumentationSearchModeAfter = 2,
};

/// Says which comment belongs to a symbol, which is a matter of the language: a syntax file declares any
/// number of these, and without them a default by symbol type applies. Immutable once made; any thread.
class QV_EXPORT QVSymbolDocumentationBehavior final : public NSObject, public NSSecureCoding {
public:
    /// Each text is a list of selectors between commas; null and empty ones give none. Without any selector
    /// in the first two, a match of class "comment" is what is looked for.
    static std::shared_ptr<QVSymbolDocumentationBehavior>
    behaviorWithSearchMode(NSUInteger searchMode, const NSString &matchSelectors,
                           const NSString &multipleMatchSelectors, const NSString &skipSelectors);
    /// Reads a "documentation" element. Always succeeds.
    static std::shared_ptr<QVSymbolDocumentationBehavior>
    documentationBehaviorWithXMLElement(const QVXMLElement &element);
    /// What holds for a symbol type where the syntax says nothing: for types, functions and values the
    /// comments right before, for all others nothing. The same objects for each call. Any thread.
    static std::vector<std::shared_ptr<QVSymbolDocumentationBehavior>>
    defaultBehaviorsForSymbolType(NSUInteger symbolType);

    NSUInteger searchMode() const { return _searchMode; }
    void setSearchMode(NSUInteger searchMode) { _searchMode = searchMode; }

    using Selectors = std::vector<std::shared_ptr<const QVSimpleSelector>>;
    /// A match that fits is the comment and ends the search.
    const Selectors &matchSelectors() const { return _matchSelectors; }
    void setMatchSelectors(Selectors selectors) { _matchSelectors = std::move(selectors); }
    /// A match that fits belongs to the comment, and the search goes on.
    const Selectors &matchMultipleSelectors() const { return _matchMultipleSelectors; }
    void setMatchMultipleSelectors(Selectors selectors) { _matchMultipleSelectors = std::move(selectors); }
    /// A match that fits is passed over.
    const Selectors &skipSelectors() const { return _skipSelectors; }
    void setSkipSelectors(Selectors selectors) { _skipSelectors = std::move(selectors); }

    /// A behaviour with equal values and lists of its own.
    std::shared_ptr<QVSymbolDocumentationBehavior> copy() const;

    std::u16string_view className() const override { return u"QVSymbolDocumentationBehavior"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSUInteger _searchMode = QVSymbolDocumentationSearchModeSubtree;
    Selectors _matchSelectors;
    Selectors _matchMultipleSelectors;
    Selectors _skipSelectors;
};

} // namespace quorvane
