// Unanchored matching with remembered searches. The plain way lists every hit of every pattern on the rest of
// a line and throws most of them away, again after each region. Here each pattern shows its next hit only,
// the first of all is taken, and what stood in its way is passed over; the tree is the same to the last node.
//
// Why that is so: in the plain list a place has one candidate, the first in order or else an end; candidates
// are taken from left to right, and one that begins inside an accepted match is dropped. A pattern's hits
// follow each other whether they are taken or not, so each pattern is asked for its chain of hits, and only
// as far as needed.

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

std::shared_ptr<QVRememberedSearch>
QVParse::rememberedSearch(const std::shared_ptr<const QVRegularExpression> &expression) {
    auto &search = _pass->searches[expression.get()];
    if (!search)
        search = std::make_shared<QVRememberedSearch>(expression);
    return search;
}

/// A list is the same object for as long as its grammar lives, and the low bits of its address are free for
/// the two things that change what is tried.
const void *QVParse::planKeyForScopes(const Scopes &scopes, bool isRoot) const {
    return reinterpret_cast<const char *>(&scopes) + (isRoot ? 1 : 0) + (templateScopesToTry() ? 2 : 0);
}

QVParse::Plan &QVParse::planForScopes(const Scopes &scopes, const QVScope &parentScope) {
    const bool isRoot = parentScope.type() == QVScopeTypeRoot;
    const void *const key = planKeyForScopes(scopes, isRoot);
    const auto found = _pass->plans.find(key);
    if (found != _pass->plans.end())
        return found->second;
    Plan plan;
    const auto add = [&](const QVScope &scope) {
        if (scope.regularExpression())
            plan.entries.push_back({&scope, rememberedSearch(scope.regularExpression())});
    };
    std::unordered_set<const QVScope *> includesAttempted;
    forEachCandidateScope(scopes, isRoot, [&](const std::shared_ptr<QVScope> &scope) {
        if (scope->type() != QVScopeTypeInclude) {
            add(*scope);
            return;
        }
        for (const std::shared_ptr<QVScope> &resolved : resolvedScopesForIncludeScope(scope, parentScope))
            if (includesAttempted.insert(resolved.get()).second)
                add(*resolved);
    });
    std::vector<QVCandidateTable::Pattern> patterns;
    for (std::uint32_t index = 0; index < plan.entries.size(); ++index) {
        const Plan::Entry &entry = plan.entries[index];
        const bool isTabled = QVCandidateTable::canHold(*entry.scope, entry.search->expression());
        (isTabled ? plan.tabled : plan.untabled).members.push_back(index);
        const QVRegularExpression &expression = entry.search->expression();
        if (!isTabled && expression.startsAtLineStartsAlone() &&
            QVCombinedExpression::canCombineByIndex(expression))
            plan.untabled.lineStarters.push_back(index);
        if (isTabled)
            patterns.push_back({entry.scope, entry.search.get(), index,
                                entry.scope->type() == QVScopeTypeMatch && entry.scope->captures().empty() &&
                                    entry.scope->endCaptures().empty(),
                                entry.scope->directHasSymbol(), entry.scope->type() == QVScopeTypeCutoff});
    }
    std::stable_partition(patterns.begin(), patterns.end(),
                          [](const QVCandidateTable::Pattern &pattern) { return pattern.isEnd; });
    if (!patterns.empty())
        plan.table = std::make_unique<QVCandidateTable>(std::move(patterns));
    return _pass->plans.emplace(key, std::move(plan)).first->second;
}

bool QVParse::findCandidate(Stream &stream, NSUInteger from, const QVParseLine &line,
                            const QVScope &parentScope, const QVSearchContext &context) {
    while (from <= line.contentsEnd) {
        const QVMatchingOutcome &outcome =
            stream.search->firstHitFrom(from, line, context, stream.interpreted);
        stream.interpreted |= outcome.fellBack;
        if (outcome.kind != QVMatchingOutcome::Hit) {
            noteOutcome(*stream.scope, outcome);
            return false;
        }
        // A chain that comes back to its last hit would do so for ever.
        if (outcome.range == stream.hit)
            return false;
        stream.hit = outcome.range;
        stream.searchedFrom = from;
        stream.matchNumber = outcome.matchNumber;
        // Nearly all hits are single matches of some length, which nothing speaks against.
        const bool isPlain = stream.hit.length != 0 && stream.scope->type() == QVScopeTypeMatch;
        if (isPlain || stream.isCutoff)
            return true;
        if (!stream.reportsEmptyHits() && acceptsHit(*stream.scope, parentScope, stream.hit, line.start))
            return true;
        from = stream.nextLocation();
    }
    return false;
}

void QVParse::reportEmptyHits(Stream stream, const QVParseLine &line, const QVSearchContext &context) {
    for (NSUInteger from = line.start; from <= line.contentsEnd; from = stream.nextLocation()) {
        const QVMatchingOutcome &outcome =
            stream.search->firstHitFrom(from, line, context, stream.interpreted);
        if (outcome.kind != QVMatchingOutcome::Hit || outcome.range == stream.hit)
            return;
        stream.interpreted |= outcome.fellBack;
        stream.hit = outcome.range;
        if (stream.hit.length == 0)
            logEmptyMatch(*stream.scope);
    }
}

QVScopeMatchReference QVParse::matchForStream(const Stream &stream, const QVParseLine &line) {
    const QVScope &scope = *stream.scope;
    const bool needsGroups =
        stream.isCutoff
            ? scope.type() == QVScopeTypeStartEnd && !scope.endCaptures().empty()
            : !scope.captures().empty() || !scope.endCaptures().empty() || keepsStartResult(scope);
    QVGroupsOfHit groups;
    if (needsGroups && stream.matchNumber == _regexMatchContext->matchNumber() &&
        (stream.groupsBefore == 0 || stream.isCutoff || !keepsStartResult(scope))) {
        groups = {_regexMatchContext->matchData(), stream.groupsBefore};
    } else if (needsGroups) {
        // The groups of a hit that was found ahead are gone: the match data belongs to the last search.
        // Searched for at its own place, the hit comes out the same, but for patterns that ask where the
        // search began or move their match's start.
        const QVRegularExpression &expression = stream.search->expression();
        const auto findsHitFrom = [&](NSUInteger from) {
            const QVMatchingOutcome outcome = expression.directSearchInCharacters(
                _text->characters(), _text->length(), {from, line.contentsEnd - from}, *_regexMatchContext,
                stream.interpreted);
            return outcome.kind == QVMatchingOutcome::Hit && outcome.range == stream.hit;
        };
        // Beside halves of characters a search may step over its place.
        if ((expression.canBeRemembered() && findsHitFrom(stream.hit.location)) ||
            findsHitFrom(stream.searchedFrom))
            groups = {_regexMatchContext->matchData()};
    }
    if (stream.isCutoff)
        return matchForCutoffHit(scope, stream.search->expression(), groups, stream.hit);
    return matchForHit(scope, stream.search->sharedExpression(), groups, stream.hit, false);
}

QVParse::Level &QVParse::beginLevel(QVScopeMatch *match, const Scopes &scopes, NSUInteger cutoffStart) {
    const std::size_t depth = _pass->parseStackMatches.size();
    while (_pass->levels.size() <= depth)
        _pass->levels.push_back(std::make_unique<Level>());
    Level &level = *_pass->levels[depth];
    const QVScope &scope = *match->scope();
    level.match = match;
    level.cutoffStart = cutoffStart;
    const bool isRoot = scope.type() == QVScopeTypeRoot;
    const void *const planKey = planKeyForScopes(scopes, isRoot);
    if (level.canBeKept && level.scope == &scope && level.planKey == planKey &&
        level.resolution == _pass->resolution && _pass->subsyntaxAncestors.empty()) {
        for (Level::Ending &ending : level.endings)
            ending.ancestor = match;
        return level;
    }
    level.canBeKept = false;
    level.scope = &scope;
    level.planKey = planKey;
    level.resolution = _pass->resolution;
    level.isRoot = isRoot;
    level.scopes = &scopes;
    level.plan = nullptr;
    gatherEndings(level);
    level.canBeKept = _pass->subsyntaxAncestors.empty() && !scope.endRegularExpressionTemplate();
    return level;
}

void QVParse::gatherEndings(Level &level) {
    level.ancestorCount = _pass->subsyntaxAncestors.size();
    level.endings.clear();
    const auto addEnding = [&](const QVScope &cutoff, QVScopeMatch *ancestor) {
        level.endings.push_back({&cutoff, ancestor, nullptr});
    };
    if (!level.isRoot)
        addEnding(*level.scope, level.match);
    if (!level.scope->isAtomic())
        forEachCutoff(addEnding);
}

void QVParse::planLevel(Level &level) {
    const QVScope &scope = *level.scope;
    level.plan = &planForScopes(*level.scopes, scope);
    QVCandidateTable *const table = level.plan->table.get();
    // What a region may not hold where it starts is looked into hit by hit.
    const bool mayNotHoldItself = table && !level.isRoot &&
                                  scope.regularExpression()->matchesEmptyTextAlone() &&
                                  table->holdsScope(scope);
    level.walkedTable = mayNotHoldItself ? nullptr : table;
}

bool QVParse::canWalkAlongLine(const Level &level, const QVParseLine &line) const {
    const QVCandidateTable *const table = level.walkedTable;
    // Beside halves of characters patterns take steps of their own.
    if (table == nullptr || line.hasSurrogates ||
        !QVRegularExpression::isSearchBoundary(_text->characters(), line.start))
        return false;
    if (table->foldsCase() && !line.isPlain())
        return false;
    // Nor may it hold any that began right here with nothing; mostly none did.
    const auto &open = _pass->parseStackMatches;
    for (auto match = open.rbegin(); match != open.rend() && (*match)->range().location == line.start;
         ++match)
        if (table->holdsScope(*(*match)->scope()))
            return false;
    return true;
}

void QVParse::startPart(Level &level, bool tabled, const QVParseLine &line, const QVSearchContext &context) {
    Plan &plan = *level.plan;
    Plan::Part &part = tabled ? plan.tabled : plan.untabled;
    if (part.members.empty())
        return;
    part.beginLine(plan.entries, line, context.text, context.generation);
    const std::uint32_t firstStarter = tabled ? 0 : firstLineStarter(plan, line, context);
    auto starter = part.lineStarters.begin();
    // What has nothing left on this line is not asked again when a region on it has ended.
    std::size_t kept = 0;
    for (const std::uint32_t index : part.alive) {
        const Plan::Entry &entry = plan.entries[index];
        while (starter != part.lineStarters.end() && *starter < index)
            ++starter;
        if (index < firstStarter && starter != part.lineStarters.end() && *starter == index) {
            verifyNoHit(entry.search->expression(), line, context);
            continue;
        }
        Stream stream{entry.scope, entry.search.get(), entry.scope->type() == QVScopeTypeCutoff, false,
                      static_cast<std::int32_t>(index)};
        if (stream.reportsEmptyHits())
            reportEmptyHits(stream, line, context);
        if (findCandidate(stream, line.start, line, *level.scope, context))
            level.streams.push_back(stream);
        if (!entry.search->isExhausted(line, context.generation))
            part.alive[kept++] = index;
    }
    part.alive.resize(kept);
}

std::uint32_t QVParse::firstLineStarter(Plan &plan, const QVParseLine &line, const QVSearchContext &context) {
    Plan::Part &part = plan.untabled;
    if (part.lineStarters.size() < 2 || !line.startsLine || line.holdsLineStarts || line.hasSurrogates)
        return 0;
    if (part.timesAskedAtLineStart < timesAskedBeforeCombining) {
        if (++part.timesAskedAtLineStart < timesAskedBeforeCombining)
            return 0;
        std::vector<std::shared_ptr<const QVRegularExpression>> expressions;
        for (const std::uint32_t index : part.lineStarters)
            expressions.push_back(plan.entries[index].search->sharedExpression());
        part.atLineStart = QVCombinedExpression::combinedExpressionForExpressions(expressions);
    }
    if (!part.atLineStart)
        return 0;
    const std::int32_t index =
        part.atLineStart->firstAtLocation(line.start, context.text, context.matchContext);
    if (index == QVCombinedExpression::noExpression)
        return static_cast<std::uint32_t>(plan.entries.size());
    return index < 0 ? 0 : part.lineStarters[static_cast<std::size_t>(index)];
}

void QVParse::verifyNoHit([[maybe_unused]] const QVRegularExpression &expression,
                          [[maybe_unused]] const QVParseLine &line,
                          [[maybe_unused]] const QVSearchContext &context) {
#if defined(QUORVANE_VERIFY)
    const QVMatchingOutcome outcome = expression.directSearchInCharacters(
        context.text.data(), context.text.size(), {line.start, line.length()}, context.matchContext, false);
    QVAssert(outcome.kind == QVMatchingOutcome::Finished,
             u"A pattern hits at a line's start where all together hit nothing");
#endif
}

const QVParse::Stream *QVParse::bestOfStreams(Level &level, NSUInteger open, const QVParseLine &line,
                                              const QVSearchContext &context) {
    std::vector<Stream> &streams = level.streams;
    const Stream *best = nullptr;
    for (std::size_t index = 0; index < streams.size();) {
        Stream &stream = streams[index];
        bool alive = true;
        while (alive && stream.hit.location < open)
            alive = stream.search->canStartAtOrBehind(open, line) &&
                    findCandidate(stream, stream.nextLocation(), line, *level.scope, context);
        if (!alive) {
            streams.erase(streams.begin() + static_cast<std::ptrdiff_t>(index));
            continue;
        }
        if (best == nullptr || stream.hit.location < best->hit.location ||
            (stream.hit.location == best->hit.location && stream.isEnd && !best->isEnd))
            best = &stream;
        ++index;
    }
    return best;
}

QVParse::Step QVParse::matchLineRemembering(Level &level, QVScopeMatchArray &intoTree,
                                            const QVParseLine &line, NSUInteger end) {
    const QVSearchContext context{_text->view(), _pass->generation, *_regexMatchContext, _pass->lineWords};
    level.streams.clear();
    if (level.ancestorCount != _pass->subsyntaxAncestors.size()) [[unlikely]]
        gatherEndings(level);
    const NSUInteger cutoffStart = level.cutoffStart;
    if (line.contentsEnd > cutoffStart || (line.start == cutoffStart && line.contentsEnd == cutoffStart))
        for (Level::Ending &ending : level.endings) {
            if (!ending.search) {
                const auto expression = regularExpressionForCutoff(*ending.scope, ending.ancestor);
                if (!expression)
                    continue;
                ending.search = rememberedSearch(expression);
            }
            Stream stream{ending.scope, ending.search.get(), true, true, -1};
            if (stream.search->canStartOnLine(line) &&
                findCandidate(stream, std::max(line.start, cutoffStart), line, *level.scope, context))
                level.streams.push_back(stream);
        }
    if (!level.plan)
        planLevel(level);
    startPart(level, false, line, context);
    // A line is entered anew behind each region on it, and an optional would be cleared each time.
    alignas(QVLineWalk) std::byte walkMemory[sizeof(QVLineWalk)];
    static_assert(std::is_trivially_destructible_v<QVLineWalk>);
    QVLineWalk *walk = nullptr;
    const auto searchFromHereOn = [&] {
        walk = nullptr;
        startPart(level, true, line, context);
        std::stable_sort(level.streams.begin(), level.streams.end(),
                         [](const Stream &a, const Stream &b) { return a.order < b.order; });
    };
    if (canWalkAlongLine(level, line))
        walk = new (walkMemory) QVLineWalk(*level.plan->table, line, context, level.coveredByWalk);
    else
        searchFromHereOn();

    // What lies before this place is covered, or was refused.
    NSUInteger open = line.start;
    NSUInteger covered = line.start;
    const auto fillGap = [&](NSUInteger location) {
        if (location > covered)
            processUnknownTextRange({covered, location - covered}, intoTree, intoTree.size());
    };
    while (true) {
        const Stream *best = level.streams.empty() ? nullptr : bestOfStreams(level, open, line, context);
        bool isWalked = false;
        if (walk) {
            const QVLineWalk::Result result = walk->find(open, best ? best->hit.location : NSNotFound);
            if (result == QVLineWalk::Unknown) {
                searchFromHereOn();
                continue;
            }
            const QVCandidateTable::Pattern *const pattern =
                result == QVLineWalk::Found ? &walk->pattern() : nullptr;
            const auto beats = [&](const Stream &other) {
                if (walk->hit().location != other.hit.location)
                    return walk->hit().location < other.hit.location;
                return pattern->isEnd == other.isEnd ? static_cast<std::int32_t>(pattern->order) < other.order
                                                     : pattern->isEnd;
            };
            if (pattern && (best == nullptr || beats(*best))) {
                if (isCancelled())
                    return {Step::Cancelled};
                // It has a length and ends on the line, so the line ending has no say in it.
                if (pattern->isPlain) {
                    const NSRange hit = walk->hit();
                    fillGap(hit.location);
                    intoTree.push_back(pattern->hasSymbol ? newMatch(pattern->scope, hit)
                                                          : newPlainMatch(pattern->scope, hit));
                    walk->take();
                    open = covered = NSMaxRange(hit);
                    continue;
                }
                level.walked = {pattern->scope,
                                pattern->search,
                                pattern->isEnd,
                                false,
                                static_cast<std::int32_t>(pattern->order),
                                false,
                                walk->hit(),
                                walk->hit().location,
                                walk->matchNumber(),
                                walk->groupsBefore()};
                best = &level.walked;
                isWalked = true;
            }
        }
        // The line ending holds its place against everything but the region's end.
        if (best != nullptr && line.hasNewline() && best->hit.location == line.newline.location &&
            !best->isEnd)
            best = nullptr;
        if (isCancelled())
            return {Step::Cancelled};
        if (best == nullptr) {
            fillGap(line.contentsEnd);
            if (line.hasNewline())
                intoTree.push_back(newPlainMatch(_newlineScope.get(), line.newline));
            return {Step::LineFinished};
        }
        const NSRange hit = best->hit;
        fillGap(hit.location);
        intoTree.push_back(matchForStream(*best, line));
        if (intoTree.back()->isEnd())
            return {Step::RegionEnded};
        open = std::max(hit.location + 1, NSMaxRange(hit));
        covered = NSMaxRange(hit);
        if (!intoTree.back()->isStart()) {
            if (isWalked)
                walk->take();
            else if (walk)
                walk->cover(hit);
            continue;
        }
        const Step step = enterRegion(intoTree, end);
        if (step.kind == Step::ContinueAt)
            return step;
        // Other candidates at the place of a region that came to nothing were refused for its sake.
        covered = step.location;
        open = hit.location + 1;
        if (walk)
            searchFromHereOn();
    }
}

} // namespace quorvane
