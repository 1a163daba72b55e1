#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

/// A filter for symbols: of which syntax, of which types, and whether embedded languages count too.
class QV_EXPORT QVSymbolDescriptor final : public NSObject, public NSSecureCoding {
public:
    /// Embedded languages don't count.
    static std::shared_ptr<QVSymbolDescriptor>
    symbolDescriptorForSyntaxName(NSString syntaxName, std::optional<std::set<NSUInteger>> types);

    /// Null where nobody said.
    const NSString &syntaxName() const { return _syntaxName; }
    void setSyntaxName(NSString syntaxName) { _syntaxName = std::move(syntaxName); }
    /// `QVSymbolType` numbers; null where nobody said.
    const std::optional<std::set<NSUInteger>> &types() const { return _types; }
    void setTypes(std::optional<std::set<NSUInteger>> types) { _types = std::move(types); }
    bool includeSubsyntaxes() const { return _includeSubsyntaxes; }
    void setIncludeSubsyntaxes(bool includeSubsyntaxes) { _includeSubsyntaxes = includeSubsyntaxes; }

    std::shared_ptr<QVSymbolDescriptor> copy() const;

    std::u16string_view className() const override { return u"QVSymbolDescriptor"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSString _syntaxName;
    std::optional<std::set<NSUInteger>> _types;
    bool _includeSubsyntaxes = false;
};

} // namespace quorvane
