#include "Quorvane/Scopes/QVCollection.h"

#include "Quorvane/Scopes/QVScopeList.h"

namespace quorvane {

QVCollection::QVCollection() = default;
QVCollection::~QVCollection() = default;

void QVCollection::setScopes(Scopes scopes) { scopeList::assign(_scopes, std::move(scopes), nullptr); }
void QVCollection::addScope(std::shared_ptr<QVScope> scope) { insertScope(std::move(scope), _scopes.size()); }
void QVCollection::addScopes(const Scopes &scopes) { scopeList::append(_scopes, scopes, nullptr); }
void QVCollection::insertScope(std::shared_ptr<QVScope> scope, NSUInteger atIndex) {
    scopeList::insert(_scopes, std::move(scope), atIndex, nullptr);
}
void QVCollection::insertScopes(const Scopes &scopes, const NSIndexSet &atIndexes) {
    scopeList::insertAtIndexes(_scopes, scopes, atIndexes, nullptr);
}
void QVCollection::removeScopeAtIndex(NSUInteger index) { removeScopesAtIndexes({index}); }
void QVCollection::removeScopesAtIndexes(const NSIndexSet &indexes) {
    scopeList::removeAtIndexes(_scopes, indexes);
}
void QVCollection::removeScope(const std::shared_ptr<QVScope> &scope) {
    scopeList::removeObject(_scopes, scope, nullptr);
}
void QVCollection::removeScopes(const Scopes &scopes) {
    for (const auto &scope : scopes)
        removeScope(scope);
}

void QVCollection::copyInto(QVCollection &other) const {
    other.setPackage(package());
    other._name = _name;
    other._overrides = _overrides;
    other.setScopes(scopeList::copies(_scopes));
}

std::shared_ptr<QVCollection> QVCollection::copy() const {
    auto collection = std::make_shared<QVCollection>();
    copyInto(*collection);
    return collection;
}

NSString QVCollection::description() const {
    return NSString::stringWithFormat(u"<%@: %p : name=%@>", className(), static_cast<const void *>(this),
                                      _name);
}

} // namespace quorvane
