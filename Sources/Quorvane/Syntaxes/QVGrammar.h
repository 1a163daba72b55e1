#pragma once

#include "Quorvane/Scopes/QVCollection.h"

namespace quorvane {

/// The scope tree of one syntax: as a collection it holds the top-level scopes, and beside them the scopes
/// that stand in for templates and the named collections that includes refer to. Kept apart from its syntax,
/// so that a syntax from an archive costs nothing of it until it is used.
class QV_EXPORT QVGrammar final : public QVCollection {
public:
    using Collections = std::map<NSString, std::shared_ptr<QVCollection>>;

    const Scopes &templateScopes() const { return _templateScopes; }
    void setTemplateScopes(Scopes scopes) { _templateScopes = std::move(scopes); }
    const Collections &collections() const { return _collections; }
    void setCollections(Collections collections) { _collections = std::move(collections); }
    /// Null where there is none of this name.
    std::shared_ptr<QVCollection> collectionWithName(const NSString &name) const;

    /// A new grammar; all scopes and collections are copies.
    std::shared_ptr<QVGrammar> copy() const;
    std::u16string_view className() const override { return u"QVGrammar"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    Scopes _templateScopes;
    Collections _collections;
};

} // namespace quorvane
