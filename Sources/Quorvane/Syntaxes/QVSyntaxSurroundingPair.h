#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class QVSimpleSelector;

/// Two texts that are put around a selection when the first is typed, and the scopes in which they are not.
/// Immutable once read.
class QV_EXPORT QVSyntaxSurroundingPair final : public NSObject, public NSSecureCoding {
public:
    const NSString &open() const { return _open; }
    void setOpen(NSString open) { _open = std::move(open); }
    const NSString &close() const { return _close; }
    void setClose(NSString close) { _close = std::move(close); }
    using Selectors = std::vector<std::shared_ptr<const QVSimpleSelector>>;
    const std::optional<Selectors> &skipSelectors() const { return _skipSelectors; }
    void setSkipSelectors(std::optional<Selectors> selectors) { _skipSelectors = std::move(selectors); }

    /// A pair with equal values.
    std::shared_ptr<QVSyntaxSurroundingPair> copy() const;

    std::u16string_view className() const override { return u"QVSyntaxSurroundingPair"; }
    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSString _open;
    NSString _close;
    std::optional<Selectors> _skipSelectors;
};

} // namespace quorvane
