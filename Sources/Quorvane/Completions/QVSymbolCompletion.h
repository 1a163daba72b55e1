#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class QVCompletionBehavior;
class QVXMLElement;

/// A rule of a provider that offers symbols of some types, of one syntax or of the one that is edited.
/// Immutable once read; any thread.
class QV_EXPORT QVSymbolCompletion final : public NSObject, public NSSecureCoding {
public:
    /// Reads a "symbols" element. Always succeeds; unknown types are dropped.
    static std::shared_ptr<QVSymbolCompletion> completionWithXMLElement(const QVXMLElement &element);

    /// Without a set all types are offered, with an empty one none.
    const std::optional<std::set<NSUInteger>> &symbolTypes() const { return _symbolTypes; }
    void setSymbolTypes(std::optional<std::set<NSUInteger>> types) { _symbolTypes = std::move(types); }
    /// Null stands for the syntax that is edited.
    const NSString &syntaxName() const { return _syntaxName; }
    void setSyntaxName(NSString name) { _syntaxName = std::move(name); }
    const std::vector<std::shared_ptr<QVCompletionBehavior>> &behaviors() const { return _behaviors; }
    void setBehaviors(std::vector<std::shared_ptr<QVCompletionBehavior>> behaviors) {
        _behaviors = std::move(behaviors);
    }

    /// The behaviours are copied too.
    std::shared_ptr<QVSymbolCompletion> copy() const;

    std::u16string_view className() const override { return u"QVSymbolCompletion"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::optional<std::set<NSUInteger>> _symbolTypes;
    NSString _syntaxName;
    std::vector<std::shared_ptr<QVCompletionBehavior>> _behaviors;
};

} // namespace quorvane
