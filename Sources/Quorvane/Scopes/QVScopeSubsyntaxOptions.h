#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

class QVScope;

/// Says that a scope's content is written in another syntax, which one, and what ends it.
class QV_EXPORT QVScopeSubsyntaxOptions final : public NSObject, public NSSecureCoding {
public:
    QVScopeSubsyntaxOptions();
    ~QVScopeSubsyntaxOptions() override;

    /// Whether the pieces of the embedded text in one region belong together.
    bool isNoncontiguous() const { return _noncontiguous; }
    void setNoncontiguous(bool noncontiguous) { _noncontiguous = noncontiguous; }
    /// Whether its symbols are seen outside.
    bool exportsSymbols() const { return _exportsSymbols; }
    void setExportsSymbols(bool exportsSymbols) { _exportsSymbols = exportsSymbols; }
    /// A fixed syntax; null where the text names it.
    const NSString &name() const { return _name; }
    void setName(NSString name) { _name = std::move(name); }
    /// A collection of that syntax; null for all of it.
    const NSString &collection() const { return _collection; }
    void setCollection(NSString collection) { _collection = std::move(collection); }
    /// The group of the start expression that names the syntax.
    const std::optional<NSInteger> &captureNumber() const { return _captureNumber; }
    void setCaptureNumber(std::optional<NSInteger> captureNumber) { _captureNumber = captureNumber; }
    /// From what a document writes to the name of a syntax.
    const std::map<NSString, NSString> &aliases() const { return _aliases; }
    void setAliases(std::map<NSString, NSString> aliases) { _aliases = std::move(aliases); }
    /// What ends the embedded text, in nested regions too.
    const std::vector<std::shared_ptr<QVScope>> &cutoffScopes() const { return _cutoffScopes; }
    void setCutoffScopes(std::vector<std::shared_ptr<QVScope>> cutoffScopes);

    /// Equal values; the cut-off scopes are copies.
    std::shared_ptr<QVScopeSubsyntaxOptions> copy() const;
    std::u16string_view className() const override { return u"QVScopeSubsyntaxOptions"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    bool _noncontiguous = false;
    bool _exportsSymbols = false;
    NSString _name;
    NSString _collection;
    std::optional<NSInteger> _captureNumber;
    std::map<NSString, NSString> _aliases;
    std::vector<std::shared_ptr<QVScope>> _cutoffScopes;
};

} // namespace quorvane
