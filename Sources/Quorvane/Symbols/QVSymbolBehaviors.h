#pragma once

#include "Platform/Foundation/NSString.h"

namespace quorvane {

/// The small vocabularies that say how a symbol takes part in a document's structure. Each is read from a
/// word of a syntax file, compared exactly, and written back to the same word; an unknown word or number
/// falls back to the first entry. Any thread.

/// Who sees a symbol.
enum QVSymbolScope : std::uint64_t {
    QVSymbolScopeGlobal = 0,
    QVSymbolScopeLocal = 1,
    QVSymbolScopePrivate = 2,
    QVSymbolScopeExternal = 3,
};
QV_EXPORT NSUInteger QVSymbolScopeFromString(const NSString &string);
QV_EXPORT NSString QVSymbolScopeToString(NSUInteger symbolScope);

/// How a symbol opens or closes a context.
enum QVSymbolContextBehavior : std::uint64_t {
    QVSymbolContextBehaviorNone = 0,
    QVSymbolContextBehaviorSubtree = 1,
    QVSymbolContextBehaviorStart = 2,
    QVSymbolContextBehaviorEnd = 3,
    QVSymbolContextBehaviorNext = 4,
    QVSymbolContextBehaviorWhitespace = 10,
};
QV_EXPORT NSUInteger QVSymbolContextBehaviorFromString(const NSString &string);
/// No context is written as "global", which is no word of its own: it reads back as 0 because every unknown
/// word does.
QV_EXPORT NSString QVSymbolContextBehaviorToString(NSUInteger contextBehavior);

/// How far a context reaches that nothing closes.
enum QVSymbolContextUnclosedBehavior : std::uint64_t {
    QVSymbolContextUnclosedBehaviorExtendParent = 0,
    QVSymbolContextUnclosedBehaviorExtendDocument = 1,
    QVSymbolContextUnclosedBehaviorTruncate = 2,
};
QV_EXPORT NSUInteger QVSymbolContextUnclosedBehaviorFromString(const NSString &string);
QV_EXPORT NSString QVSymbolContextUnclosedBehaviorToString(NSUInteger unclosedBehavior);

/// Whether a context indents what it holds.
enum QVSymbolContextIndentationBehavior : std::uint64_t {
    QVSymbolContextIndentationBehaviorNone = 0,
    QVSymbolContextIndentationBehaviorAuto = 1,
};
QV_EXPORT NSUInteger QVSymbolContextIndentationBehaviorFromString(const NSString &string);
QV_EXPORT NSString QVSymbolContextIndentationBehaviorToString(NSUInteger indentationBehavior);

/// Where a host may look up what stands at a place.
enum QVSymbolLookupBehavior : std::uint64_t {
    QVSymbolLookupBehaviorNone = 0,
    QVSymbolLookupBehaviorInherit = 1,
    QVSymbolLookupBehaviorIndex = 2,
    QVSymbolLookupBehaviorDocumentation = 3,
    QVSymbolLookupBehaviorDictionary = 4,
};
QV_EXPORT NSUInteger QVSymbolLookupBehaviorFromString(const NSString &string);
QV_EXPORT NSString QVSymbolLookupBehaviorToString(NSUInteger lookupBehavior);

} // namespace quorvane
