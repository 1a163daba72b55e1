#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Quorvane/Packages/QVLoadable.h"

namespace quorvane {

class NSIndexSet;
class QVScope;

/// A named list of scopes that includes can refer to. Its scopes have no parent: they stand at the top of a
/// tree.
class QV_EXPORT QVCollection : public QVLoadable, public NSSecureCoding {
public:
    using Scopes = std::vector<std::shared_ptr<QVScope>>;

    QVCollection();
    ~QVCollection() override;

    const NSString &name() const { return _name; }
    void setName(NSString name) { _name = std::move(name); }
    /// Whether this collection replaces one of the same name in an included syntax.
    bool overrides() const { return _overrides; }
    void setOverrides(bool overrides) { _overrides = overrides; }

    const Scopes &scopes() const { return _scopes; }
    void setScopes(Scopes scopes);
    void addScope(std::shared_ptr<QVScope> scope);
    void addScopes(const Scopes &scopes);
    /// An index beyond the bounds throws `NSRangeException`, here and below.
    void insertScope(std::shared_ptr<QVScope> scope, NSUInteger atIndex);
    void insertScopes(const Scopes &scopes, const NSIndexSet &atIndexes);
    void removeScopeAtIndex(NSUInteger index);
    void removeScopesAtIndexes(const NSIndexSet &indexes);
    void removeScope(const std::shared_ptr<QVScope> &scope);
    void removeScopes(const Scopes &scopes);

    /// A new collection with the package of this one; its scopes are copies.
    std::shared_ptr<QVCollection> copy() const;
    std::u16string_view className() const override { return u"QVCollection"; }
    /// "<%@: %p : name=%@>".
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

protected:
    /// Copies everything that a collection has into another one.
    void copyInto(QVCollection &other) const;

private:
    NSString _name;
    bool _overrides = false;
    Scopes _scopes;
};

} // namespace quorvane
