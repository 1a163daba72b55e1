#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class NSRegularExpression;
class QVSymbol;
class QVXMLElement;

/// Says how an item that was offered turns into inserted text: what stands around it and around its
/// arguments, and in which surroundings that holds. Immutable once read; any thread.
class QV_EXPORT QVCompletionBehavior final : public NSObject, public NSSecureCoding {
public:
    /// Reads a "behavior" element. Always succeeds: a bad pattern leaves its place empty.
    static std::shared_ptr<QVCompletionBehavior> behaviorWithXMLElement(const QVXMLElement &element);

    /// The text holds variables that are replaced when it is inserted.
    bool usesVariableSubstitution() const { return _usesVariableSubstitution; }
    void setUsesVariableSubstitution(bool uses) { _usesVariableSubstitution = uses; }
    /// Confirming the item asks for completions again.
    bool shouldCompleteOnConfirm() const { return _shouldCompleteOnConfirm; }
    void setShouldCompleteOnConfirm(bool should) { _shouldCompleteOnConfirm = should; }
    bool deprecated() const { return _deprecated; }
    void setDeprecated(bool deprecated) { _deprecated = deprecated; }
    /// Placeholders in the text become tokens. Neither archived nor copied: a behaviour that was is without.
    bool shouldTokenize() const { return _shouldTokenize; }
    void setShouldTokenize(bool should) { _shouldTokenize = should; }
    /// The separator goes before the first argument too.
    bool prependInitialArgumentListSeparator() const { return _prependInitialArgumentListSeparator; }
    void setPrependInitialArgumentListSeparator(bool prepend) {
        _prependInitialArgumentListSeparator = prepend;
    }
    /// An empty list still gets prefix and suffix.
    bool shouldAppendEmptyArgumentList() const { return _shouldAppendEmptyArgumentList; }
    void setShouldAppendEmptyArgumentList(bool should) { _shouldAppendEmptyArgumentList = should; }
    bool shouldTokenizeArguments() const { return _shouldTokenizeArguments; }
    void setShouldTokenizeArguments(bool should) { _shouldTokenizeArguments = should; }

    /// The type of symbol that this is for; 0 stands for any.
    NSUInteger symbolType() const { return _symbolType; }
    void setSymbolType(NSUInteger symbolType) { _symbolType = symbolType; }

    /// What must match the text before and behind the caret; null asks nothing.
    const std::shared_ptr<NSRegularExpression> &prefixRegularExpression() const {
        return _prefixRegularExpression;
    }
    void setPrefixRegularExpression(std::shared_ptr<NSRegularExpression> expression) {
        _prefixRegularExpression = std::move(expression);
    }
    const std::shared_ptr<NSRegularExpression> &suffixRegularExpression() const {
        return _suffixRegularExpression;
    }
    void setSuffixRegularExpression(std::shared_ptr<NSRegularExpression> expression) {
        _suffixRegularExpression = std::move(expression);
    }

    // Texts around the completion, its list of arguments, and each argument; null adds nothing.
    const NSString &prepend() const { return _prepend; }
    void setPrepend(NSString text) { _prepend = std::move(text); }
    const NSString &append() const { return _append; }
    void setAppend(NSString text) { _append = std::move(text); }
    const NSString &argumentListPrefix() const { return _argumentListPrefix; }
    void setArgumentListPrefix(NSString text) { _argumentListPrefix = std::move(text); }
    const NSString &argumentListSuffix() const { return _argumentListSuffix; }
    void setArgumentListSuffix(NSString text) { _argumentListSuffix = std::move(text); }
    const NSString &argumentListSeparator() const { return _argumentListSeparator; }
    void setArgumentListSeparator(NSString text) { _argumentListSeparator = std::move(text); }
    const NSString &argumentPrefix() const { return _argumentPrefix; }
    void setArgumentPrefix(NSString text) { _argumentPrefix = std::move(text); }
    const NSString &argumentSuffix() const { return _argumentSuffix; }
    void setArgumentSuffix(NSString text) { _argumentSuffix = std::move(text); }

    /// The text to insert for an item: what stands around it, and the arguments of the symbol that it stands
    /// for, as "$[name]" where they become tokens. A null symbol, or one that knows no arguments, gets no
    /// list at all.
    NSString completionStringWithText(const NSString &text, const QVSymbol *symbol) const;

    /// A behaviour with equal values but for `shouldTokenize`.
    std::shared_ptr<QVCompletionBehavior> copy() const;

    std::u16string_view className() const override { return u"QVCompletionBehavior"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    void readArguments(const QVXMLElement &element);

    bool _usesVariableSubstitution = false;
    bool _shouldCompleteOnConfirm = false;
    bool _deprecated = false;
    bool _shouldTokenize = false;
    bool _prependInitialArgumentListSeparator = false;
    bool _shouldAppendEmptyArgumentList = true;
    bool _shouldTokenizeArguments = true;
    NSUInteger _symbolType = 0;
    std::shared_ptr<NSRegularExpression> _prefixRegularExpression;
    std::shared_ptr<NSRegularExpression> _suffixRegularExpression;
    NSString _prepend;
    NSString _append;
    NSString _argumentListPrefix;
    NSString _argumentListSuffix;
    NSString _argumentListSeparator;
    NSString _argumentPrefix;
    NSString _argumentSuffix;
};

} // namespace quorvane
