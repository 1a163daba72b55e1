#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Quorvane/Packages/QVLoadable.h"
#include "Quorvane/Scopes/QVStyleList.h"
#include "Quorvane/Selectors/QVSelectable.h"

namespace quorvane {

class NSIndexSet;
class QVCapture;
class QVRegularExpression;
class QVScopeSubsyntaxOptions;
class QVScopeSymbolOptions;
class QVSimpleSelector;
class QVSyntax;
class QVXMLElement;

enum QVScopeType : std::uint64_t {
    /// Synthetic: text nothing matched.
    QVScopeTypeUnknown = 0,
    /// Synthetic: the root of a parse.
    QVScopeTypeRoot = 1,
    /// Synthetic: a run of blanks or indentation.
    QVScopeTypeWhitespace = 2,
    /// Synthetic: one line ending.
    QVScopeTypeNewline = 3,
    /// A region with a start and an end that holds subscopes.
    QVScopeTypeStartEnd = 4,
    /// A single expression.
    QVScopeTypeMatch = 5,
    /// An expression that ends the enclosing region.
    QVScopeTypeCutoff = 6,
    /// A reference to a collection or to a whole grammar.
    QVScopeTypeInclude = 7,
};

/// The name that descriptions and printed trees use.
QV_EXPORT NSString QVScopeTypeToString(QVScopeType type);

/// Only has an effect in anchored matching.
enum QVWhitespaceSkipBehavior : std::uint64_t {
    QVWhitespaceSkipNone = 0,
    /// Whitespace goes before the next subscope is tried.
    QVWhitespaceSkipGreedy = 1,
    /// Whitespace goes only after no subscope matched.
    QVWhitespaceSkipLazy = 2,
};

enum QVSpellCheckingType : std::uint64_t {
    QVSpellCheckingInherit = 0,
    QVSpellCheckingEnabled = 1,
    QVSpellCheckingDisabled = 2,
};

/// A node of the static tree that says what a grammar allows; every match points to the scope that made it.
/// Built once when a syntax is loaded and shared by all parses, which only read it; styles alone change
/// afterwards.
class QV_EXPORT QVScope final : public QVLoadable,
                                public QVStyleList,
                                public QVSelectable,
                                public NSSecureCoding {
public:
    using Captures = std::vector<std::shared_ptr<QVCapture>>;
    using Scopes = std::vector<std::shared_ptr<QVScope>>;

    QVScope();
    ~QVScope() override;

    /// Sets selector and lexical class from the name, unless the type is Include. A StartEnd scope is atomic
    /// exactly when it is a string or a comment; every other scope is.
    static std::shared_ptr<QVScope> scopeWithType(QVScopeType type,
                                                  const std::shared_ptr<QVSyntax> &parentSyntax,
                                                  NSString name,
                                                  std::shared_ptr<QVRegularExpression> regularExpression,
                                                  std::shared_ptr<QVRegularExpression> endRegularExpression);

    // Reading from files

    /// Reads a `scope`, `include` or `cut-off` element. Null where it can't be read, with an error in all
    /// cases but one: a cut-off without an expression. A single scope or a cut-off with a bad pattern is made
    /// all the same, with the error set.
    static std::shared_ptr<QVScope> scopeWithXMLElement(const QVXMLElement &element,
                                                        const std::shared_ptr<QVSyntax> &parentSyntax,
                                                        std::shared_ptr<NSError> *error = nullptr);
    /// Reads `capture` elements; the numbers are checked against the expression where there is one.
    static std::optional<Captures>
    capturesForElements(const std::vector<std::shared_ptr<QVXMLElement>> &elements,
                        const std::shared_ptr<QVRegularExpression> &withRegularExpression,
                        std::shared_ptr<NSError> *error = nullptr);

    // Values

    QVScopeType type() const { return _type; }
    void setType(QVScopeType type) { _type = type; }
    /// Null when the syntax is gone.
    std::shared_ptr<QVSyntax> parentSyntax() const { return _parentSyntax.lock(); }
    void setParentSyntax(const std::shared_ptr<QVSyntax> &syntax) { _parentSyntax = syntax; }
    const NSString &name() const { return _name; }
    void setName(NSString name) { _name = std::move(name); }
    const QVSimpleSelector *selector() const override { return _selector.get(); }
    void setSelector(std::shared_ptr<const QVSimpleSelector> selector) { _selector = std::move(selector); }
    const NSString &lexicalClass() const { return _lexicalClass; }
    void setLexicalClass(NSString lexicalClass);

    bool isAtomic() const { return _atomic; }
    void setAtomic(bool atomic) { _atomic = atomic; }
    bool isOptional() const { return _optional; }
    void setOptional(bool optional) { _optional = optional; }
    bool isRepeating() const { return _repeating; }
    void setRepeating(bool repeating) { _repeating = repeating; }
    bool isTemplateScope() const { return _templateScope; }
    void setTemplateScope(bool templateScope) { _templateScope = templateScope; }
    bool usesAnchoredSubscopeMatching() const { return _usesAnchoredSubscopeMatching; }
    void setUsesAnchoredSubscopeMatching(bool anchored) { _usesAnchoredSubscopeMatching = anchored; }
    bool shouldResetStyleAttributes() const { return _shouldResetStyleAttributes; }
    void setShouldResetStyleAttributes(bool reset) { _shouldResetStyleAttributes = reset; }
    QVWhitespaceSkipBehavior whitespaceSkipBehavior() const { return _whitespaceSkipBehavior; }
    void setWhitespaceSkipBehavior(QVWhitespaceSkipBehavior behavior) { _whitespaceSkipBehavior = behavior; }
    QVSpellCheckingType spellCheckingType() const { return _spellCheckingType; }
    void setSpellCheckingType(QVSpellCheckingType type) { _spellCheckingType = type; }
    NSUInteger symbolLookupBehavior() const { return _symbolLookupBehavior; }
    void setSymbolLookupBehavior(NSUInteger behavior) { _symbolLookupBehavior = behavior; }

    const std::shared_ptr<QVRegularExpression> &regularExpression() const { return _regularExpression; }
    void setRegularExpression(std::shared_ptr<QVRegularExpression> expression);
    const std::shared_ptr<QVRegularExpression> &endRegularExpression() const { return _endRegularExpression; }
    void setEndRegularExpression(std::shared_ptr<QVRegularExpression> expression);
    /// The end's pattern with references to the groups of the start; null where there is none.
    const NSString &endRegularExpressionTemplate() const { return _endRegularExpressionTemplate; }
    void setEndRegularExpressionTemplate(NSString pattern) {
        _endRegularExpressionTemplate = std::move(pattern);
    }
    /// Setting clears the old captures' parent and sets the new ones'.
    const Captures &captures() const { return _captures; }
    void setCaptures(Captures captures);
    const Captures &endCaptures() const { return _endCaptures; }
    void setEndCaptures(Captures captures);

    /// For Include: a syntax's name, or "self".
    const NSString &includeSyntaxName() const { return _includeSyntaxName; }
    void setIncludeSyntaxName(NSString name) { _includeSyntaxName = std::move(name); }
    /// For Include: a collection's name; null or "*" for the whole grammar.
    const NSString &includeCollectionName() const { return _includeCollectionName; }
    void setIncludeCollectionName(NSString name) { _includeCollectionName = std::move(name); }

    const std::shared_ptr<QVScopeSymbolOptions> &symbolOptions() const { return _symbolOptions; }
    void setSymbolOptions(std::shared_ptr<QVScopeSymbolOptions> options) {
        _symbolOptions = std::move(options);
    }
    const std::shared_ptr<QVScopeSubsyntaxOptions> &subsyntaxOptions() const { return _subsyntaxOptions; }
    void setSubsyntaxOptions(std::shared_ptr<QVScopeSubsyntaxOptions> options) {
        _subsyntaxOptions = std::move(options);
    }
    /// Whether there are subsyntax options.
    bool definesSubsyntax() const { return _subsyntaxOptions != nullptr; }

    // The tree

    /// Null at the top.
    std::shared_ptr<QVScope> parent() const { return _parent.lock(); }
    void setParent(const std::shared_ptr<QVScope> &parent) { _parent = parent; }
    /// In grammar order, which decides ties.
    const Scopes &subscopes() const { return _subscopes; }
    void setSubscopes(Scopes subscopes);
    /// Takes scopes that other trees hold too and leaves their parents alone: the root of a parse stands
    /// above a grammar that all parses share.
    void setSharedSubscopes(Scopes subscopes) { _subscopes = std::move(subscopes); }
    void addSubscope(std::shared_ptr<QVScope> subscope);
    void addSubscopes(const Scopes &subscopes);
    /// An index beyond the bounds throws `NSRangeException`, here and below.
    void insertSubscope(std::shared_ptr<QVScope> subscope, NSUInteger atIndex);
    /// As many scopes as indexes; they end up at these indexes.
    void insertSubscopes(const Scopes &subscopes, const NSIndexSet &atIndexes);
    void removeSubscopeAtIndex(NSUInteger index);
    void removeSubscopesAtIndexes(const NSIndexSet &indexes);
    /// Removing by object clears the parent only of scopes whose parent is this one.
    void removeSubscope(const std::shared_ptr<QVScope> &subscope);
    void removeSubscopes(const Scopes &subscopes);

    QVSelectable *parentSelectable() const override;
    /// The scope itself, where it stands in its parent's list: the step forward is missing, and everyone who
    /// walks along siblings counts on that.
    QVSelectable *nextSelectable() const override;
    bool offersSelectableChildren() const override { return true; }
    /// Captures, subscopes, end captures.
    void enumerateSelectableChildrenUsingBlock(
        QVBlock<void(QVSelectable *child, bool &stop)> block) const override;

    // For inner loops: no null receiver is an error

    static inline QVRegularExpression *directRegularExpression(const QVScope *scope) {
        return scope ? scope->_regularExpression.get() : nullptr;
    }
    static inline void setDirectRegularExpression(QVScope *scope,
                                                  std::shared_ptr<QVRegularExpression> expression) {
        if (scope)
            scope->_regularExpression = std::move(expression);
    }
    static inline const Captures *directCaptures(const QVScope *scope) {
        return scope ? &scope->_captures : nullptr;
    }
    static void setDirectCaptures(QVScope *scope, Captures captures);
    static inline QVRegularExpression *directEndRegularExpression(const QVScope *scope) {
        return scope ? scope->_endRegularExpression.get() : nullptr;
    }
    static inline void setDirectEndRegularExpression(QVScope *scope,
                                                     std::shared_ptr<QVRegularExpression> expression) {
        if (scope)
            scope->_endRegularExpression = std::move(expression);
    }
    static inline const Captures *directEndCaptures(const QVScope *scope) {
        return scope ? &scope->_endCaptures : nullptr;
    }
    static void setDirectEndCaptures(QVScope *scope, Captures captures);
    /// Whether matches of this scope can point to a symbol.
    bool directHasSymbol() const { return _isComment || (_symbolOptions && optionsHaveSymbol()); }

    /// A new scope with all values, the package included; subscopes and captures are copies, expressions are
    /// shared.
    std::shared_ptr<QVScope> copy() const;
    std::u16string_view className() const override { return u"QVScope"; }
    /// "<%@: %p : name=%@, type=%@, regex=%@, endRegex=%@>".
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::shared_ptr<QVScope> self() const;
    bool optionsHaveSymbol() const;

    QVScopeType _type = QVScopeTypeUnknown;
    bool _atomic = false;
    bool _optional = false;
    bool _repeating = false;
    bool _templateScope = false;
    bool _usesAnchoredSubscopeMatching = false;
    bool _shouldResetStyleAttributes = false;
    bool _isComment = false;
    QVWhitespaceSkipBehavior _whitespaceSkipBehavior = QVWhitespaceSkipNone;
    QVSpellCheckingType _spellCheckingType = QVSpellCheckingInherit;
    NSUInteger _symbolLookupBehavior = 1;
    std::shared_ptr<QVRegularExpression> _regularExpression;
    std::shared_ptr<QVRegularExpression> _endRegularExpression;
    Captures _captures;
    Captures _endCaptures;
    Scopes _subscopes;
    std::shared_ptr<QVScopeSymbolOptions> _symbolOptions;
    std::shared_ptr<QVScopeSubsyntaxOptions> _subsyntaxOptions;
    std::shared_ptr<const QVSimpleSelector> _selector;
    NSString _name;
    NSString _lexicalClass;
    NSString _endRegularExpressionTemplate;
    NSString _includeSyntaxName;
    NSString _includeCollectionName;
    std::weak_ptr<QVSyntax> _parentSyntax;
    std::weak_ptr<QVScope> _parent;
};

} // namespace quorvane
