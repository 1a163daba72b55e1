// Unanchored matching: all subscopes are searched for anywhere on the rest of the line.

#include "Quorvane/Categories/NSCharacterSet+QuorvaneAdditions.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

void QVParse::parseUnanchoredStartingWithinMatch(QVScopeMatch *match, QVScopeMatchArray &intoTree,
                                                 const Scopes &scopes, NSRange range) {
    const bool isRoot = match->scope()->type() == QVScopeTypeRoot;
    const NSUInteger cutoffStart = isRoot ? 0 : NSMaxRange(match->range());
    // Traces count and time each attempt, so with them each one is made.
    const bool remembering = remembersSearches() && !isPerformanceCollectionEnabled();
    const NSUInteger end = NSMaxRange(range);
    NSUInteger location = range.location;
    if (location >= end)
        return;
    Level *const level = remembering ? &beginLevel(match, scopes, cutoffStart) : nullptr;
    while (!isCancelled() && location < end) {
        const QVParseLine line = lineAtLocation(location, end);
        if (isTooLong(line)) {
            intoTree.push_back(newPlainMatch(_unknownScope.get(), {line.start, line.length()}));
            if (!line.hasNewline())
                return;
            intoTree.push_back(newPlainMatch(_newlineScope.get(), line.newline));
            location = NSMaxRange(line.newline);
            continue;
        }
        const Step step = level ? matchLineRemembering(*level, intoTree, line, end)
                                : matchLinePlainly(match, intoTree, scopes, line, end, cutoffStart);
        switch (step.kind) {
        case Step::Cancelled:
        case Step::RegionEnded:
            return;
        case Step::ContinueAt:
            location = step.location;
            break;
        case Step::LineFinished:
            if (!line.hasNewline())
                return;
            location = NSMaxRange(line.newline);
            break;
        }
    }
}

QVParse::Step QVParse::enterRegion(QVScopeMatchArray &intoTree, NSUInteger end) {
    QVScopeMatch *const startMatch = intoTree.back().get();
    const NSUInteger start = startMatch->range().location;
    const NSRange region = parseRecursivelyIntoStartMatch(startMatch, {start, end - start});
    if (region.length != 0)
        return {Step::ContinueAt, NSMaxRange(region)};
    // The region came to nothing, and what else was found on the line still stands.
    intoTree.pop_back();
    return {Step::LineFinished, region.location};
}

NSUInteger QVParse::processUnknownTextRange(NSRange range, QVScopeMatchArray &intoUnanchoredLineMatches,
                                            NSUInteger atIndex) const {
    const char16_t *const characters = _text->characters();
    const NSUInteger end = NSMaxRange(range);
    NSUInteger count = 0;
    const auto insert = [&](const QVScope *scope, NSUInteger from, NSUInteger to) {
        const NSUInteger index = atIndex + count++;
        if (index == intoUnanchoredLineMatches.size())
            intoUnanchoredLineMatches.push_back(newPlainMatch(scope, {from, to - from}));
        else
            intoUnanchoredLineMatches.insert(intoUnanchoredLineMatches.begin() +
                                                 static_cast<std::ptrdiff_t>(index),
                                             newPlainMatch(scope, {from, to - from}));
    };
    const auto isBlank = [](char16_t unit) { return unit == u' ' || unit == u'\t'; };
    for (NSUInteger location = range.location; location < end;) {
        const bool blank = isBlank(characters[location]);
        NSUInteger next = location + 1;
        while (next < end && isBlank(characters[next]) == blank)
            ++next;
        insert(blank ? _whitespaceScope.get() : _unknownScope.get(), location, next);
        location = next;
    }
    return count;
}

// The plain way: every scope's hits on the rest of the line go into one list, which is then sorted out. This
// is what the remembering way must give, to the last node.

QVParse::Step QVParse::matchLinePlainly(QVScopeMatch *match, QVScopeMatchArray &intoTree,
                                        const Scopes &scopes, const QVParseLine &line, NSUInteger end,
                                        NSUInteger cutoffStart) {
    const QVScope &scope = *match->scope();
    const bool isRoot = scope.type() == QVScopeTypeRoot;
    const NSRange range{line.start, line.length()};
    QVScopeMatchArray matches;
    if (line.hasNewline())
        matches.push_back(newPlainMatch(_newlineScope.get(), line.newline));
    if (!isRoot)
        matchUnanchoredAgainstCutoff(scope, match, matches, range, cutoffStart);
    if (!scope.isAtomic())
        forEachCutoff([&](const QVScope &cutoff, QVScopeMatch *ancestor) {
            matchUnanchoredAgainstCutoff(cutoff, ancestor, matches, range, cutoffStart);
        });
    std::unordered_set<const QVScope *> includesAttempted;
    forEachCandidateScope(scopes, isRoot, [&](const std::shared_ptr<QVScope> &candidate) {
        matchUnanchoredAgainstScope(candidate, scope, matches, range, includesAttempted);
    });

    NSUInteger location = line.start;
    while (true) {
        const NSUInteger index =
            processUnanchoredLineMatches(matches, {location, line.contentsEnd - location});
        if (isCancelled())
            return {Step::Cancelled};
        if (index == NSNotFound)
            return {Step::LineFinished};
        const auto behind = matches.begin() + static_cast<std::ptrdiff_t>(index) + 1;
        const QVScopeMatchReference last = matches[index];
        intoTree.insert(intoTree.end(), matches.begin(), behind);
        matches.erase(matches.begin(), behind);
        if (last->isEnd())
            return {Step::RegionEnded};
        if (!last->isStart())
            return {Step::LineFinished};
        const Step step = enterRegion(intoTree, end);
        if (step.kind == Step::ContinueAt)
            return step;
        location = step.location;
    }
}

void QVParse::matchUnanchoredAgainstCutoff(const QVScope &scope, QVScopeMatch *parentMatch,
                                           QVScopeMatchArray &intoArray, NSRange parseRange,
                                           NSUInteger cutoffStart) {
    // A region's end can't be found before its start has ended.
    if (parseRange != NSRange{cutoffStart, 0} && NSMaxRange(parseRange) <= cutoffStart)
        return;
    if (parseRange.location < cutoffStart)
        parseRange = {cutoffStart, NSMaxRange(parseRange) - cutoffStart};
    const auto expression = regularExpressionForCutoff(scope, parentMatch);
    if (!expression)
        return;
    NSUInteger previousIndex = NSNotFound;
    const QVMatchingOutcome outcome = expression->enumerateMatchesInCharacters(
        _text->characters(), _text->length(), QVMatchingRangeLimit, parseRange, _regexMatchContext.get(),
        [&](QVPCRE2MatchData *matchData, NSUInteger baseOffset, bool &) {
            const NSRange hit = QVPCRE2MatchDataRangeAtIndex(matchData, 0, baseOffset);
            const NSUInteger index =
                indexForAddingMatchToUnanchoredLineMatches(intoArray, scope, hit, true, previousIndex);
            if (index == NSNotFound)
                return;
            intoArray.insert(intoArray.begin() + static_cast<std::ptrdiff_t>(index),
                             matchForCutoffHit(scope, *expression, {matchData}, hit));
            previousIndex = index;
        });
    noteOutcome(scope, outcome);
}

void QVParse::matchUnanchoredAgainstScope(const std::shared_ptr<QVScope> &scope, const QVScope &parentScope,
                                          QVScopeMatchArray &intoArray, NSRange parseRange,
                                          std::unordered_set<const QVScope *> &includesAttempted) {
    if (scope->type() != QVScopeTypeInclude) {
        matchUnanchoredAgainstResolvedScope(*scope, parentScope, intoArray, parseRange);
        return;
    }
    for (const std::shared_ptr<QVScope> &resolved : resolvedScopesForIncludeScope(scope, parentScope))
        if (includesAttempted.insert(resolved.get()).second)
            matchUnanchoredAgainstResolvedScope(*resolved, parentScope, intoArray, parseRange);
}

void QVParse::matchUnanchoredAgainstResolvedScope(const QVScope &scope, const QVScope &parentScope,
                                                  QVScopeMatchArray &intoArray, NSRange parseRange) {
    const std::shared_ptr<QVRegularExpression> &expression = scope.regularExpression();
    if (!expression)
        return;
    bool success = false;
    traceAttempt(scope, [&] {
        NSUInteger previousIndex = NSNotFound;
        const QVMatchingOutcome outcome = expression->enumerateMatchesInCharacters(
            _text->characters(), _text->length(), QVMatchingRangeLimit, parseRange, _regexMatchContext.get(),
            [&](QVPCRE2MatchData *matchData, NSUInteger baseOffset, bool &) {
                const NSRange hit = QVPCRE2MatchDataRangeAtIndex(matchData, 0, baseOffset);
                if (!acceptsHit(scope, parentScope, hit, parseRange.location))
                    return;
                const NSUInteger index = indexForAddingMatchToUnanchoredLineMatches(
                    intoArray, scope, hit, scope.type() == QVScopeTypeCutoff, previousIndex);
                if (index == NSNotFound)
                    return;
                intoArray.insert(intoArray.begin() + static_cast<std::ptrdiff_t>(index),
                                 matchForHit(scope, expression, {matchData}, hit, false));
                previousIndex = index;
                success = true;
            });
        noteOutcome(scope, outcome);
        return success;
    });
}

NSUInteger QVParse::indexForAddingMatchToUnanchoredLineMatches(const QVScopeMatchArray &matches,
                                                               const QVScope &, NSRange range, bool isEnd,
                                                               NSUInteger previousIndex) {
    if (matches.empty())
        return 0;
    // One pattern's hits come in order, so the place for the next is behind the last.
    const NSUInteger first = previousIndex == NSNotFound ? 0 : previousIndex + 1;
    if (first >= matches.size())
        return first == matches.size() ? first : NSNotFound;
    for (NSUInteger index = first; index < matches.size(); ++index) {
        const NSUInteger location = matches[index]->range().location;
        if (location > range.location)
            return index;
        if (location == range.location)
            return isEnd && !matches[index]->isEnd() ? index : NSNotFound;
    }
    return matches.size();
}

NSUInteger QVParse::processUnanchoredLineMatches(QVScopeMatchArray &matches, NSRange withLineRange) const {
    const NSUInteger lineEnd = NSMaxRange(withLineRange);
    if (matches.empty()) {
        const NSUInteger count = processUnknownTextRange(withLineRange, matches, 0);
        return count == 0 ? NSNotFound : count - 1;
    }
    NSRange covered{withLineRange.location, 0};
    QVScopeMatchReference pendingEnd;
    const auto place = [&](NSUInteger index) { return matches.begin() + static_cast<std::ptrdiff_t>(index); };
    // Fills the gap before the match at the index and answers where that match stands now.
    const auto fillGap = [&](NSUInteger index, NSUInteger location) {
        const NSUInteger gap = NSMaxRange(covered);
        return location > gap ? index + processUnknownTextRange({gap, location - gap}, matches, index)
                              : index;
    };
    for (NSUInteger index = 0; index < matches.size();) {
        const QVScopeMatchReference match = matches[index];
        const NSRange range = match->range();
        if (range.location < withLineRange.location) {
            matches.erase(place(index));
        } else if (!pendingEnd) {
            if (NSLocationInRange(range.location, covered)) {
                matches.erase(place(index));
                continue;
            }
            index = fillGap(index, range.location);
            if (match->isStart())
                return index;
            if (match->isEnd()) {
                pendingEnd = match;
                covered = NSNotFoundRange;
            } else {
                covered = range;
            }
            ++index;
        } else {
            const NSRange pending = pendingEnd->range();
            if (match->isEnd() || match->isStart()) {
                matches.erase(place(index));
            } else if (range.location >= pending.location) {
                matches.erase(place(index), matches.end());
            } else if (NSMaxRange(range) <= NSMaxRange(pending) &&
                       !NSLocationInRange(range.location, covered)) {
                if (covered.location == NSNotFound)
                    covered = {pending.location, 0};
                index = fillGap(index, range.location);
                covered = range;
                ++index;
            } else {
                matches.erase(place(index));
            }
        }
    }
    if (!pendingEnd) {
        const NSUInteger gap = NSMaxRange(covered);
        if (lineEnd > gap)
            processUnknownTextRange({gap, lineEnd - gap}, matches, matches.size());
        return matches.empty() ? NSNotFound : matches.size() - 1;
    }
    matches.erase(std::find(matches.begin(), matches.end(), pendingEnd));
    const NSUInteger endLocation = pendingEnd->range().location;
    const NSUInteger gap = matches.empty() ? withLineRange.location : NSMaxRange(matches.back()->range());
    if (endLocation > gap)
        processUnknownTextRange({gap, endLocation - gap}, matches, matches.size());
    matches.push_back(pendingEnd);
    return matches.size() - 1;
}

} // namespace quorvane
