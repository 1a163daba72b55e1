// Anchored matching: the subscopes form a sequence, each of which must match exactly where the one before it
// ended.

#include "Platform/Foundation/NSCharacterSet.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVAnchoredSequence.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"

namespace quorvane {

namespace {

/// The run of blanks at a position.
NSRange whitespaceAt(std::u16string_view text, NSUInteger location, NSUInteger end) {
    static const auto &whitespace = *new auto(NSCharacterSet::whitespaceCharacterSet());
    NSUInteger behind = location;
    while (behind < end && whitespace->characterIsMember(text[behind]))
        ++behind;
    return {location, behind - location};
}

} // namespace

QVMatchingOutcome QVParse::attemptAnchored(const std::shared_ptr<const QVRegularExpression> &expression,
                                           NSRange parseRange) {
    const std::u16string_view text = _text->view();
    // Over surrogates the two forms may take different steps.
    if (remembersSearches() && !isPerformanceCollectionEnabled() && !_pass->line.hasSurrogates) {
        const NSUInteger location = parseRange.location;
        if (location < text.size() && !expression->canStartWithUnit(text[location]))
            return {};
        return expression->directMatchInCharacters(text.data(), text.size(), parseRange, *_regexMatchContext);
    }
    NSRange hit = NSNotFoundRange;
    QVMatchingOutcome outcome = expression->enumerateMatchesInCharacters(
        text.data(), text.size(), QVMatchingAnchored | QVMatchingRangeLimit, parseRange,
        _regexMatchContext.get(), [&](QVPCRE2MatchData *matchData, NSUInteger baseOffset, bool &) {
            hit = QVPCRE2MatchDataRangeAtIndex(matchData, 0, baseOffset);
        });
    if (hit.location != NSNotFound) {
        outcome.kind = QVMatchingOutcome::Hit;
        outcome.range = hit;
    }
    return outcome;
}

QVScopeMatchReference QVParse::matchAnchoredAgainstCutoff(const QVScope &scope, QVScopeMatch *parentMatch,
                                                          NSRange parseRange) {
    const auto expression = regularExpressionForCutoff(scope, parentMatch);
    if (!expression)
        return nullptr;
    const QVMatchingOutcome outcome = attemptAnchored(expression, parseRange);
    noteOutcome(scope, outcome);
    if (outcome.kind != QVMatchingOutcome::Hit)
        return nullptr;
    QVScopeMatchReference match = QVScopeMatch::endWithScope(&scope, outcome.range, *_matchPool);
    const QVScope::Captures &captures =
        scope.type() == QVScopeTypeStartEnd ? scope.endCaptures() : scope.captures();
    const bool takesCaptures = scope.type() == QVScopeTypeStartEnd || scope.type() == QVScopeTypeCutoff;
    if (takesCaptures && !captures.empty())
        setCapturesOfHit(*match, captures, *expression, {_regexMatchContext->matchData()});
    return match;
}

QVScopeMatchReference
QVParse::matchAnchoredAgainstScope(const std::shared_ptr<QVScope> &scope, const QVScope &parentScope,
                                   NSRange parseRange,
                                   std::unordered_set<const QVScope *> &includesAttempted) {
    if (scope->type() != QVScopeTypeInclude)
        return matchAnchoredAgainstResolvedScope(*scope, parentScope, parseRange);
    for (const std::shared_ptr<QVScope> &resolved : resolvedScopesForIncludeScope(scope, parentScope))
        if (includesAttempted.insert(resolved.get()).second)
            if (QVScopeMatchReference match =
                    matchAnchoredAgainstResolvedScope(*resolved, parentScope, parseRange))
                return match;
    return nullptr;
}

QVScopeMatchReference QVParse::matchAnchoredAgainstResolvedScope(const QVScope &scope,
                                                                 const QVScope &parentScope,
                                                                 NSRange parseRange) {
    const std::shared_ptr<QVRegularExpression> &expression = scope.regularExpression();
    if (!expression)
        return nullptr;
    QVScopeMatchReference match;
    traceAttempt(scope, [&] {
        const QVMatchingOutcome outcome = attemptAnchored(expression, parseRange);
        noteOutcome(scope, outcome);
        if (outcome.kind == QVMatchingOutcome::Hit &&
            acceptsHit(scope, parentScope, outcome.range, parseRange.location) &&
            !cameToNothing(scope, parseRange.location))
            match = matchForHit(scope, expression, {_regexMatchContext->matchData()}, outcome.range, true);
        return match != nullptr;
    });
    return match;
}

bool QVParse::cameToNothing(const QVScope &scope, NSUInteger location) {
    if (!_pass->emptyRegions.contains({&scope, location}))
        return false;
    logDiagnosticMessage(
        NSString::stringWithFormat(u"Encountered an infinitely-recursive parse for scope: %@; Ignoring",
                                   scope.name()),
        5);
    return true;
}

void QVParse::noteRegionThatCameToNothing(const QVScope &scope, NSUInteger location) {
    _pass->emptyRegions.insert({&scope, location});
}

QVScopeMatchReference QVParse::matchAnchoredStep(QVScopeMatch *match, QVAnchoredSequence &sequence,
                                                 NSRange rest) {
    const QVScope &scope = *match->scope();
    const bool isRoot = scope.type() == QVScopeTypeRoot;
    if (scope.whitespaceSkipBehavior() == QVWhitespaceSkipGreedy) {
        const NSRange blanks = whitespaceAt(_text->view(), rest.location, NSMaxRange(rest));
        if (blanks.length != 0)
            return newPlainMatch(_whitespaceScope.get(), blanks);
    }
    if (!isRoot)
        if (QVScopeMatchReference found = matchAnchoredAgainstCutoff(scope, match, rest))
            return found;
    if (!scope.isAtomic())
        if (QVScopeMatchReference found = matchAnchoredAgainstAncestors(rest))
            return found;
    std::unordered_set<const QVScope *> includesAttempted;
    if (const Scopes *const templates = templateScopesToTry()) {
        for (const std::shared_ptr<QVScope> &candidate : *templates) {
            if (candidate->type() != QVScopeTypeStartEnd && candidate->type() != QVScopeTypeMatch)
                continue;
            if (QVScopeMatchReference found =
                    matchAnchoredAgainstScope(candidate, scope, rest, includesAttempted))
                return found;
        }
    }
    while (const std::shared_ptr<QVScope> &candidate = sequence.current()) {
        if (canBeCandidate(*candidate, isRoot, false)) {
            includesAttempted.clear();
            if (QVScopeMatchReference found =
                    matchAnchoredAgainstScope(candidate, scope, rest, includesAttempted)) {
                found->setAnchoredMatchIdx(sequence.index);
                if (candidate->isRepeating())
                    sequence.repeated = true;
                else
                    sequence.advance();
                return found;
            }
        }
        // Passing over at a line's end would use up a sequence that goes on in the next line.
        if (rest.length == 0 || (!candidate->isOptional() && !sequence.repeated))
            return nullptr;
        sequence.advance();
    }
    return nullptr;
}

QVScopeMatchReference QVParse::matchAnchoredAgainstAncestors(NSRange rest) {
    // Not the first ancestor with a hit but the last one with cut-offs decides: grammars count on it.
    QVScopeMatchReference found;
    const auto &ancestors = _pass->subsyntaxAncestors;
    for (auto ancestor = ancestors.rbegin(); ancestor != ancestors.rend(); ++ancestor) {
        for (const std::shared_ptr<QVScope> &cutoff :
             (*ancestor)->scope()->subsyntaxOptions()->cutoffScopes()) {
            found = matchAnchoredAgainstCutoff(*cutoff, ancestor->get(), rest);
            if (found)
                break;
        }
    }
    return found;
}

void QVParse::parseAnchoredStartingWithinMatch(QVScopeMatch *match, QVScopeMatchArray &intoTree,
                                               const Scopes &scopes, NSRange range,
                                               NSUInteger insertionIndex) {
    const QVScope &scope = *match->scope();
    const NSUInteger end = NSMaxRange(range);
    const std::u16string_view text = _text->view();
    QVAnchoredSequence sequence(scopes);
    if (insertionIndex > 0)
        sequence.replay(match->submatches(), insertionIndex, _newlineScope.get(), _whitespaceScope.get());

    NSUInteger location = range.location;
    while (!isCancelled() && location < end) {
        const QVParseLine line = lineAtLocation(location, end);
        if (isTooLong(line)) {
            intoTree.push_back(newPlainMatch(_unknownScope.get(), {line.start, line.length()}));
            // Also without a line ending: then the match has no place.
            intoTree.push_back(newPlainMatch(_newlineScope.get(), line.newline));
            if (!line.hasNewline()) {
                _pass->hasMatchWithoutPlace = true;
                return;
            }
            location = NSMaxRange(line.newline);
            continue;
        }
        const NSUInteger lineEnd = line.contentsEnd;
        bool skippedLazily = false;
        while (true) {
            const NSRange rest{location, lineEnd - location};
            const bool wasLazySkip = std::exchange(skippedLazily, false);
            const QVAnchoredSequence before = sequence;
            QVScopeMatchReference found = matchAnchoredStep(match, sequence, rest);
            if (!found && scope.whitespaceSkipBehavior() == QVWhitespaceSkipLazy && !wasLazySkip) {
                if (const NSRange blanks = whitespaceAt(text, location, lineEnd); blanks.length != 0) {
                    found = newPlainMatch(_whitespaceScope.get(), blanks);
                    sequence = before;
                    skippedLazily = true;
                }
            }
            if (isCancelled())
                return;
            if (!found) {
                if (sequence.current())
                    break;
                // The sequence is used up: the region ends here, whatever follows.
                found = QVScopeMatch::endWithScope(&scope, {location, 0}, *_matchPool);
            }
            intoTree.push_back(found);
            if (found->isEnd())
                return;
            if (found->isStart()) {
                const NSRange region =
                    parseRecursivelyIntoStartMatch(found.get(), {location, end - location});
                if (region.length == 0) {
                    intoTree.pop_back();
                    noteRegionThatCameToNothing(*found->scope(), location);
                }
                location = NSMaxRange(region);
            } else {
                location = NSMaxRange(found->fullRange());
            }
            if (location >= end)
                return;
            if (location > lineEnd)
                break;
        }
        if (location > lineEnd)
            continue;
        if (!line.hasNewline() || line.newline.location != location)
            return;
        intoTree.push_back(newPlainMatch(_newlineScope.get(), line.newline));
        location = NSMaxRange(line.newline);
    }
}

} // namespace quorvane
