#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Quorvane/Packages/QVLoadable.h"

namespace quorvane {

class NSRegularExpression;
class QVSelectorCombinator;
class QVSymbolCompletion;
class QVXMLElement;

/// Says when completions are offered (an expression on the text before the caret, selectors on what the parse
/// knows of the place) and which: sets by name, and symbols. Belongs to a syntax, or to a package that aims
/// it at syntaxes by name. Immutable once loaded, but a chain of combinators holds its evaluation, so whoever
/// evaluates the selectors on another thread does so on a copy.
class QV_EXPORT QVCompletionProvider final : public QVLoadable, public NSSecureCoding {
public:
    using Selectors = std::vector<std::shared_ptr<QVSelectorCombinator>>;

    /// Reads a "provider" element. Null, with a definition error, when its expression does not compile.
    static std::shared_ptr<QVCompletionProvider>
    providerWithXMLElement(const QVXMLElement &element, std::shared_ptr<NSError> *error = nullptr);

    const NSString &name() const { return _name; }
    void setName(NSString name) { _name = std::move(name); }
    /// Must match the line's text up to the caret; a provider without one offers nothing.
    const std::shared_ptr<NSRegularExpression> &regularExpression() const { return _regularExpression; }
    void setRegularExpression(std::shared_ptr<NSRegularExpression> expression) {
        _regularExpression = std::move(expression);
    }
    /// The group of the expression that holds the text to complete. One that the expression hasn't got stands
    /// for the whole match.
    NSUInteger captureNumber() const { return _captureNumber; }
    void setCaptureNumber(NSUInteger captureNumber) { _captureNumber = captureNumber; }
    /// Where the provider applies. Null stands for everywhere, while an empty list, which is what a selector
    /// that can't be read comes to, stands for nowhere.
    const std::optional<Selectors> &selectors() const { return _selectors; }
    void setSelectors(std::optional<Selectors> selectors) { _selectors = std::move(selectors); }
    /// Names of completion sets, which may hold variables; null where the provider names none.
    const std::optional<std::vector<NSString>> &completionSets() const { return _completionSets; }
    void setCompletionSets(std::optional<std::vector<NSString>> sets) { _completionSets = std::move(sets); }
    const std::vector<std::shared_ptr<QVSymbolCompletion>> &symbolCompletions() const {
        return _symbolCompletions;
    }
    void setSymbolCompletions(std::vector<std::shared_ptr<QVSymbolCompletion>> completions) {
        _symbolCompletions = std::move(completions);
    }
    /// The syntaxes that a package's provider is added to; null where it names none, as those of syntaxes do.
    const std::optional<std::vector<NSString>> &syntaxNames() const { return _syntaxNames; }
    void setSyntaxNames(std::optional<std::vector<NSString>> names) { _syntaxNames = std::move(names); }

    /// The symbol completions are copied too, all else is shared.
    std::shared_ptr<QVCompletionProvider> copy() const;

    std::u16string_view className() const override { return u"QVCompletionProvider"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSString _name;
    std::shared_ptr<NSRegularExpression> _regularExpression;
    NSUInteger _captureNumber = 0;
    std::optional<Selectors> _selectors;
    std::optional<std::vector<NSString>> _completionSets;
    std::vector<std::shared_ptr<QVSymbolCompletion>> _symbolCompletions;
    std::optional<std::vector<NSString>> _syntaxNames;
};

} // namespace quorvane
