#include "Quorvane/Symbols/QVSymbolBehaviors.h"

#include <algorithm>
#include <span>

namespace quorvane {

namespace {

struct Row {
    NSUInteger value;
    const char16_t *word;
};

/// The first row of each table is what anything unknown becomes.
constexpr Row scopes[] = {
    {QVSymbolScopeGlobal, u"global"},
    {QVSymbolScopeLocal, u"local"},
    {QVSymbolScopePrivate, u"private"},
    {QVSymbolScopeExternal, u"external"},
};
constexpr Row contextBehaviors[] = {
    {QVSymbolContextBehaviorNone, u"global"}, {QVSymbolContextBehaviorSubtree, u"subtree"},
    {QVSymbolContextBehaviorStart, u"start"}, {QVSymbolContextBehaviorEnd, u"end"},
    {QVSymbolContextBehaviorNext, u"next"},   {QVSymbolContextBehaviorWhitespace, u"whitespace"},
};
constexpr Row unclosedBehaviors[] = {
    {QVSymbolContextUnclosedBehaviorExtendParent, u"extend-parent"},
    {QVSymbolContextUnclosedBehaviorExtendDocument, u"extend-document"},
    {QVSymbolContextUnclosedBehaviorTruncate, u"truncate"},
};
constexpr Row indentationBehaviors[] = {
    {QVSymbolContextIndentationBehaviorNone, u"none"},
    {QVSymbolContextIndentationBehaviorAuto, u"auto"},
};
constexpr Row lookupBehaviors[] = {
    {QVSymbolLookupBehaviorNone, u"none"},
    {QVSymbolLookupBehaviorInherit, u"inherit"},
    {QVSymbolLookupBehaviorIndex, u"index"},
    {QVSymbolLookupBehaviorDocumentation, u"documentation"},
    {QVSymbolLookupBehaviorDictionary, u"dictionary"},
};

NSUInteger valueOfWord(std::span<const Row> table, const NSString &word) {
    const auto found = std::ranges::find_if(table, [&](const Row &row) { return word == row.word; });
    return found == table.end() ? table.front().value : found->value;
}

NSString wordOfValue(std::span<const Row> table, NSUInteger value) {
    const auto found = std::ranges::find(table, value, &Row::value);
    return found == table.end() ? table.front().word : found->word;
}

} // namespace

NSUInteger QVSymbolScopeFromString(const NSString &string) { return valueOfWord(scopes, string); }

NSString QVSymbolScopeToString(NSUInteger symbolScope) { return wordOfValue(scopes, symbolScope); }

NSUInteger QVSymbolContextBehaviorFromString(const NSString &string) {
    return valueOfWord(contextBehaviors, string);
}

NSString QVSymbolContextBehaviorToString(NSUInteger contextBehavior) {
    return wordOfValue(contextBehaviors, contextBehavior);
}

NSUInteger QVSymbolContextUnclosedBehaviorFromString(const NSString &string) {
    return valueOfWord(unclosedBehaviors, string);
}

NSString QVSymbolContextUnclosedBehaviorToString(NSUInteger unclosedBehavior) {
    return wordOfValue(unclosedBehaviors, unclosedBehavior);
}

NSUInteger QVSymbolContextIndentationBehaviorFromString(const NSString &string) {
    return valueOfWord(indentationBehaviors, string);
}

NSString QVSymbolContextIndentationBehaviorToString(NSUInteger indentationBehavior) {
    return wordOfValue(indentationBehaviors, indentationBehavior);
}

NSUInteger QVSymbolLookupBehaviorFromString(const NSString &string) {
    return valueOfWord(lookupBehaviors, string);
}

NSString QVSymbolLookupBehaviorToString(NSUInteger lookupBehavior) {
    return wordOfValue(lookupBehaviors, lookupBehavior);
}

} // namespace quorvane
