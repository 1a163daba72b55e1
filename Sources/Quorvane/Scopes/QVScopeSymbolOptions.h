#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class QVFormatter;
class QVRegularExpression;
class QVSimpleSelector;
class QVXMLElement;

/// Says how a match of a scope becomes a symbol: of which type, named by what, and whether it opens or closes
/// a context. The numbers are those of the symbol vocabulary. Hangs off a scope; immutable once read.
class QV_EXPORT QVScopeSymbolOptions final : public NSObject, public NSSecureCoding {
public:
    QVScopeSymbolOptions();
    ~QVScopeSymbolOptions() override;

    /// Reads a "symbol" element. Always succeeds: unknown words and bad patterns leave the defaults.
    static std::shared_ptr<QVScopeSymbolOptions> symbolOptionsWithXMLElement(const QVXMLElement &element);

    /// The symbol has no name of its own.
    bool isAnonymous() const { return _anonymous; }
    void setAnonymous(bool anonymous) { _anonymous = anonymous; }
    /// 0 stands for no symbol.
    NSUInteger symbolType() const { return _symbolType; }
    void setSymbolType(NSUInteger type) { _symbolType = type; }
    NSUInteger symbolScope() const { return _symbolScope; }
    void setSymbolScope(NSUInteger scope) { _symbolScope = scope; }
    /// Selects the match that holds the name; null stands for the scope's own match.
    const std::shared_ptr<const QVSimpleSelector> &nameSelector() const { return _nameSelector; }
    void setNameSelector(std::shared_ptr<const QVSimpleSelector> selector) {
        _nameSelector = std::move(selector);
    }
    const std::shared_ptr<QVFormatter> &displayNameFormatter() const { return _displayNameFormatter; }
    void setDisplayNameFormatter(std::shared_ptr<QVFormatter> formatter) {
        _displayNameFormatter = std::move(formatter);
    }
    /// What must match at the name's start and end for a symbol to be made; null asks nothing.
    const std::shared_ptr<QVRegularExpression> &leadingMatchRegularExpression() const {
        return _leadingMatchRegularExpression;
    }
    void setLeadingMatchRegularExpression(std::shared_ptr<QVRegularExpression> expression) {
        _leadingMatchRegularExpression = std::move(expression);
    }
    const std::shared_ptr<QVRegularExpression> &trailingMatchRegularExpression() const {
        return _trailingMatchRegularExpression;
    }
    void setTrailingMatchRegularExpression(std::shared_ptr<QVRegularExpression> expression) {
        _trailingMatchRegularExpression = std::move(expression);
    }

    NSUInteger contextBehavior() const { return _contextBehavior; }
    void setContextBehavior(NSUInteger behavior) { _contextBehavior = behavior; }
    /// Contexts of one group close each other.
    const NSString &contextGroupIdentifier() const { return _contextGroupIdentifier; }
    void setContextGroupIdentifier(NSString identifier) { _contextGroupIdentifier = std::move(identifier); }
    /// The symbol's name stands for the group.
    bool usesNameAsContextGroupIdentifier() const { return _usesNameAsContextGroupIdentifier; }
    void setUsesNameAsContextGroupIdentifier(bool uses) { _usesNameAsContextGroupIdentifier = uses; }
    NSUInteger contextCapturePriority() const { return _contextCapturePriority; }
    void setContextCapturePriority(NSUInteger priority) { _contextCapturePriority = priority; }
    /// Symbols of arguments inside the context are collected.
    bool contextShouldCaptureArguments() const { return _contextShouldCaptureArguments; }
    void setContextShouldCaptureArguments(bool should) { _contextShouldCaptureArguments = should; }
    /// The type of local symbols that are seen outside; 0 for none.
    NSUInteger contextLocalSymbolExportType() const { return _contextLocalSymbolExportType; }
    void setContextLocalSymbolExportType(NSUInteger type) { _contextLocalSymbolExportType = type; }
    NSUInteger contextUnclosedBehavior() const { return _contextUnclosedBehavior; }
    void setContextUnclosedBehavior(NSUInteger behavior) { _contextUnclosedBehavior = behavior; }
    bool isContextFoldable() const { return _contextFoldable; }
    void setContextFoldable(bool foldable) { _contextFoldable = foldable; }
    NSUInteger contextFoldingSymbolType() const { return _contextFoldingSymbolType; }
    void setContextFoldingSymbolType(NSUInteger type) { _contextFoldingSymbolType = type; }
    const NSString &contextAutocloseExpression() const { return _contextAutocloseExpression; }
    void setContextAutocloseExpression(NSString expression) {
        _contextAutocloseExpression = std::move(expression);
    }
    const NSString &contextAutocloseCompletionExpression() const {
        return _contextAutocloseCompletionExpression;
    }
    void setContextAutocloseCompletionExpression(NSString expression) {
        _contextAutocloseCompletionExpression = std::move(expression);
    }
    NSUInteger contextAutocloseIndentationBehavior() const { return _contextAutocloseIndentationBehavior; }
    void setContextAutocloseIndentationBehavior(NSUInteger behavior) {
        _contextAutocloseIndentationBehavior = behavior;
    }

    /// Options with equal values.
    std::shared_ptr<QVScopeSymbolOptions> copy() const;

    std::u16string_view className() const override { return u"QVScopeSymbolOptions"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    void readFilter(const QVXMLElement &element);
    void readContext(const QVXMLElement &element);

    bool _anonymous = false;
    bool _usesNameAsContextGroupIdentifier = false;
    bool _contextShouldCaptureArguments = false;
    bool _contextFoldable = true;
    NSUInteger _symbolType = 0;
    NSUInteger _symbolScope = 0;
    std::shared_ptr<const QVSimpleSelector> _nameSelector;
    std::shared_ptr<QVFormatter> _displayNameFormatter;
    std::shared_ptr<QVRegularExpression> _leadingMatchRegularExpression;
    std::shared_ptr<QVRegularExpression> _trailingMatchRegularExpression;
    NSUInteger _contextBehavior = 0;
    NSString _contextGroupIdentifier;
    NSUInteger _contextCapturePriority = 0;
    NSUInteger _contextLocalSymbolExportType = 0;
    NSUInteger _contextUnclosedBehavior = 0;
    NSUInteger _contextFoldingSymbolType = 0;
    NSString _contextAutocloseExpression;
    NSString _contextAutocloseCompletionExpression;
    NSUInteger _contextAutocloseIndentationBehavior = 1;
};

} // namespace quorvane
