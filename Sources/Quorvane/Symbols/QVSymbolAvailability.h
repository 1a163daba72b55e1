#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

/// Since when, and up to when, a platform has a symbol, as a documentation source tells it. The engine keeps
/// and archives the notes; what the number of a type means is between the source and the host.
class QV_EXPORT QVSymbolAvailability final : public NSObject, public NSSecureCoding {
public:
    NSUInteger type() const { return _type; }
    void setType(NSUInteger type) { _type = type; }
    const NSString &availableVersion() const { return _availableVersion; }
    void setAvailableVersion(NSString version) { _availableVersion = std::move(version); }
    const NSString &deprecatedVersion() const { return _deprecatedVersion; }
    void setDeprecatedVersion(NSString version) { _deprecatedVersion = std::move(version); }
    const NSString &descriptiveText() const { return _descriptiveText; }
    void setDescriptiveText(NSString text) { _descriptiveText = std::move(text); }

    std::shared_ptr<QVSymbolAvailability> copy() const;

    std::u16string_view className() const override { return u"QVSymbolAvailability"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSUInteger _type = 0;
    NSString _availableVersion;
    NSString _deprecatedVersion;
    NSString _descriptiveText;
};

} // namespace quorvane
