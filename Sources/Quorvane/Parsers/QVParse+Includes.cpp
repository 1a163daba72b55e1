// End patterns and includes: what a scope of the grammar comes to at this place of this document.

#include "Platform/Foundation/NSRegularExpression.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Scopes/QVCollection.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

namespace {

constexpr QVRegularExpressionOptions endPatternOptions =
    QVRegularExpressionMultiline | QVRegularExpressionUseJIT;

bool namesCollection(const NSString &name) { return name && name.length() != 0 && name != u"*"; }

/// The end's pattern for this region: the template with the groups of the region's start, which stand
/// literally. Only the stretch of text that the groups cover is copied. Nothing where the groups lie outside
/// of the text.
std::optional<NSString> endPattern(const QVScope &scope, const QVScopeMatch &match,
                                   const QVRegularExpressionResult &result, std::u16string_view text) {
    // The match may have moved since its start was found.
    const NSUInteger offset = match.range().location - result.range().location;
    NSUInteger start = text.size();
    NSUInteger end = 0;
    for (NSUInteger index = 0; index < result.numberOfRanges(); ++index) {
        const NSRange range = result.rangeAtIndex(index);
        if (range.location == NSNotFound)
            continue;
        start = std::min(start, range.location + offset);
        end = std::max(end, NSMaxRange(range) + offset);
    }
    if (start > end || end > text.size())
        return std::nullopt;
    const NSString groups(std::u16string(text.substr(start, end - start)));
    const auto escape = [](const NSString &value, NSRange, bool &) {
        return NSRegularExpression::escapedPatternForString(value);
    };
    return scope.regularExpression()->replacementStringForResult(
        result, groups, static_cast<NSInteger>(offset - start), scope.endRegularExpressionTemplate(), escape);
}

} // namespace

std::shared_ptr<const QVRegularExpression> QVParse::regularExpressionForCutoff(const QVScope &scope,
                                                                               QVScopeMatch *parentMatch) {
    if (scope.type() != QVScopeTypeStartEnd)
        return scope.regularExpression();
    if (scope.endRegularExpression() || !scope.endRegularExpressionTemplate() || !scope.regularExpression())
        return scope.endRegularExpression();
    const auto result = parentMatch->textCheckingResult();
    if (!result)
        return nullptr;
    const std::optional<NSString> filled = endPattern(scope, *parentMatch, *result, _text->view());
    if (!filled)
        return nullptr;
    const NSString &pattern = *filled;

    auto &known = _pass->endPatterns;
    auto found = known.find(pattern);
    if (found == known.end()) {
        if (known.size() >= limits::rememberedEndPatterns) {
            for (const auto &[text, expression] : known)
                _pass->searches.erase(expression.get());
            known.clear();
        }
        found = known
                    .emplace(pattern,
                             QVRegularExpression::regularExpressionWithPattern(pattern, endPatternOptions))
                    .first;
    }
    if (!found->second)
        logDiagnosticMessage(
            NSString::stringWithFormat(u"Error compiling end-scope template regex with pattern: %@, %@",
                                       pattern, nullptr),
            9);
    return found->second;
}

std::shared_ptr<QVCollection>
QVParse::resolvedCollectionForIncludeScope(const std::shared_ptr<QVScope> &scope) {
    if (const auto found = _pass->includedCollectionCache.find(scope);
        found != _pass->includedCollectionCache.end())
        return found->second;
    const NSString &syntaxName = scope->includeSyntaxName();
    const NSString &collectionName = scope->includeCollectionName();
    std::shared_ptr<QVSyntax> target;
    if (syntaxName == u"self") {
        const auto &ancestors = _pass->subsyntaxAncestors;
        const std::shared_ptr<QVSyntax> embedding =
            ancestors.empty() ? _syntax : ancestors.back()->scope()->parentSyntax();
        if (embedding && namesCollection(collectionName)) {
            const std::shared_ptr<QVGrammar> grammar = embedding->grammar();
            const auto collection = grammar ? grammar->collectionWithName(collectionName) : nullptr;
            if (collection && collection->overrides()) {
                // The embedding syntax replaces the collection.
                pinGrammar(grammar);
                return _pass->includedCollectionCache[scope] = collection;
            }
        }
        target = scope->parentSyntax();
    } else if (syntaxName.length() != 0) {
        target = QVSyntax::syntaxForName(syntaxName);
    }
    const std::shared_ptr<QVGrammar> grammar = target ? target->grammar() : nullptr;
    pinGrammar(grammar);
    std::shared_ptr<QVCollection> collection = grammar;
    if (grammar && namesCollection(collectionName))
        collection = grammar->collectionWithName(collectionName);
    return _pass->includedCollectionCache[scope] = collection;
}

const QVParse::Scopes &QVParse::resolvedScopesForIncludeScope(const std::shared_ptr<QVScope> &scope,
                                                              const QVScope &parentScope) {
    if (const auto found = _pass->includedScopesCache.find(scope); found != _pass->includedScopesCache.end())
        return found->second;
    Scopes resolved;
    // Depth first, which leaves the order that replacing each include in place gives. A collection is brought
    // in once: a second time would add nothing, and collections include each other in circles.
    struct Expansion {
        std::shared_ptr<QVCollection> collection;
        std::size_t next = 0;
    };
    std::vector<Expansion> expansions;
    // Whether each collection that was entered is still open.
    std::unordered_map<const QVCollection *, bool> entered;
    const auto enter = [&](const std::shared_ptr<QVScope> &include) {
        auto collection = resolvedCollectionForIncludeScope(include);
        if (!collection)
            return;
        const auto [place, isNew] = entered.emplace(collection.get(), true);
        if (isNew)
            expansions.push_back({std::move(collection)});
        else if (place->second && _pass->includesWithLoggedCycles.insert(include.get()).second)
            logDiagnosticMessage(
                NSString::stringWithFormat(u"Encountered an include cycle for scope: %@; Ignoring",
                                           include->name()),
                9);
    };
    enter(scope);
    while (!expansions.empty()) {
        Expansion &expansion = expansions.back();
        if (expansion.next == expansion.collection->scopes().size()) {
            entered[expansion.collection.get()] = false;
            expansions.pop_back();
            continue;
        }
        const std::shared_ptr<QVScope> candidate = expansion.collection->scopes()[expansion.next++];
        switch (candidate->type()) {
        case QVScopeTypeUnknown:
        case QVScopeTypeWhitespace:
        case QVScopeTypeNewline:
            break;
        case QVScopeTypeCutoff:
            if (parentScope.type() != QVScopeTypeRoot)
                resolved.push_back(candidate);
            break;
        case QVScopeTypeInclude:
            enter(candidate);
            break;
        default:
            resolved.push_back(candidate);
        }
    }
    return _pass->includedScopesCache[scope] = std::move(resolved);
}

} // namespace quorvane
