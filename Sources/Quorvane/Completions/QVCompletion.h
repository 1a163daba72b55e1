#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Quorvane/Categories/QVGrams.h"

namespace quorvane {

class NSCharacterSet;
class QVCompletionBehavior;
class QVXMLElement;

/// One ready-made item of a completion set: what is shown and inserted, how it ranks, and how it turns into
/// text. Immutable once read; any thread.
class QV_EXPORT QVCompletion final : public NSObject, public NSSecureCoding {
public:
    /// Reads a "completion" element. Always succeeds. The type stands in for a missing or unknown "symbol",
    /// the behaviours for missing "behavior" children; behaviours of its own are all that an item has.
    static std::shared_ptr<QVCompletion>
    completionWithXMLElement(const QVXMLElement &element, NSUInteger defaultSymbolType,
                             const std::vector<std::shared_ptr<QVCompletionBehavior>> &defaultBehaviors);

    /// The item matches whatever the case of what was typed.
    bool caseInsensitive() const { return _caseInsensitive; }
    void setCaseInsensitive(bool caseInsensitive) { _caseInsensitive = caseInsensitive; }
    bool deprecated() const { return _deprecated; }
    void setDeprecated(bool deprecated) { _deprecated = deprecated; }
    /// Placeholders in the string become tokens.
    bool shouldTokenize() const { return _shouldTokenize; }
    void setShouldTokenize(bool should) { _shouldTokenize = should; }

    /// The text to show and to insert, which may hold variable bindings.
    const NSString &string() const { return _string; }
    void setString(NSString string) { _string = std::move(string); }
    /// The words of the string without its bindings; an item without them never matches.
    const QVGrams &stringGrams() const { return _stringGrams; }
    void setStringGrams(QVGrams grams) { _stringGrams = std::move(grams); }

    /// Ranks items of the same score; higher comes first.
    NSUInteger priority() const { return _priority; }
    void setPriority(NSUInteger priority) { _priority = priority; }
    NSUInteger symbolType() const { return _symbolType; }
    void setSymbolType(NSUInteger symbolType) { _symbolType = symbolType; }
    const std::vector<std::shared_ptr<QVCompletionBehavior>> &behaviors() const { return _behaviors; }
    void setBehaviors(std::vector<std::shared_ptr<QVCompletionBehavior>> behaviors) {
        _behaviors = std::move(behaviors);
    }
    /// For clients; files don't fill it.
    const NSString &value() const { return _value; }
    void setValue(NSString value) { _value = std::move(value); }
    /// What documents the item; null where nothing does.
    const NSString &descriptiveText() const { return _descriptiveText; }
    void setDescriptiveText(NSString text) { _descriptiveText = std::move(text); }

    /// Characters that commit the item, and those that commit it up to its next word; null for none. The
    /// spelling is the one that archives and clients know.
    const std::shared_ptr<const NSCharacterSet> &acceptChararacterSet() const {
        return _acceptChararacterSet;
    }
    void setAcceptChararacterSet(std::shared_ptr<const NSCharacterSet> set) {
        _acceptChararacterSet = std::move(set);
    }
    const std::shared_ptr<const NSCharacterSet> &partialAcceptChararacterSet() const {
        return _partialAcceptChararacterSet;
    }
    void setPartialAcceptChararacterSet(std::shared_ptr<const NSCharacterSet> set) {
        _partialAcceptChararacterSet = std::move(set);
    }

    std::u16string_view className() const override { return u"QVCompletion"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    bool _caseInsensitive = true;
    bool _deprecated = false;
    bool _shouldTokenize = false;
    NSString _string;
    QVGrams _stringGrams;
    NSUInteger _priority = 0;
    NSUInteger _symbolType = 0;
    std::vector<std::shared_ptr<QVCompletionBehavior>> _behaviors;
    NSString _value;
    NSString _descriptiveText;
    std::shared_ptr<const NSCharacterSet> _acceptChararacterSet;
    std::shared_ptr<const NSCharacterSet> _partialAcceptChararacterSet;
};

} // namespace quorvane
