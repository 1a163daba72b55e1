#pragma once

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Scopes/QVScope.h"

/// What a scope's subscopes and a collection's scopes have in common: a list in which the parent of what
/// comes in is set and the parent of what goes out is cleared. A null parent stands for a collection.
namespace quorvane::scopeList {

using Scopes = std::vector<std::shared_ptr<QVScope>>;

inline void checkIndex(NSUInteger index, NSUInteger bound) {
    if (index >= bound)
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(u"Scope index %lu is beyond the bounds", index));
}

inline void assign(Scopes &list, Scopes scopes, const std::shared_ptr<QVScope> &parent) {
    for (const auto &scope : list)
        scope->setParent(nullptr);
    list = std::move(scopes);
    for (const auto &scope : list)
        scope->setParent(parent);
}

inline void insert(Scopes &list, std::shared_ptr<QVScope> scope, NSUInteger index,
                   const std::shared_ptr<QVScope> &parent) {
    checkIndex(index, list.size() + 1);
    scope->setParent(parent);
    list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), std::move(scope));
}

inline void append(Scopes &list, const Scopes &scopes, const std::shared_ptr<QVScope> &parent) {
    for (const auto &scope : scopes)
        insert(list, scope, list.size(), parent);
}

inline void insertAtIndexes(Scopes &list, const Scopes &scopes, const NSIndexSet &indexes,
                            const std::shared_ptr<QVScope> &parent) {
    if (indexes.count() != scopes.size())
        throw NSException(NSInvalidArgumentException, u"The numbers of scopes and indexes differ");
    std::size_t next = 0;
    indexes.enumerateIndexesUsingBlock(
        [&](NSUInteger index, bool &) { insert(list, scopes[next++], index, parent); });
}

inline void removeAtIndexes(Scopes &list, const NSIndexSet &indexes) {
    if (!indexes.isEmpty())
        checkIndex(indexes.lastIndex(), list.size());
    Scopes kept;
    kept.reserve(list.size());
    for (NSUInteger index = 0; index < list.size(); ++index) {
        if (indexes.containsIndex(index))
            list[index]->setParent(nullptr);
        else
            kept.push_back(std::move(list[index]));
    }
    list = std::move(kept);
}

inline void removeObject(Scopes &list, const std::shared_ptr<QVScope> &scope,
                         const std::shared_ptr<QVScope> &parent) {
    if (std::erase(list, scope) != 0 && scope->parent() == parent)
        scope->setParent(nullptr);
}

/// Deep copies without a parent.
inline Scopes copies(const Scopes &list) {
    Scopes result;
    result.reserve(list.size());
    for (const auto &scope : list)
        result.push_back(scope->copy());
    return result;
}

} // namespace quorvane::scopeList
