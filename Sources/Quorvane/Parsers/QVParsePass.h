#pragma once

#include "Quorvane/Parsers/QVCandidateTable.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVRememberedSearch.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Syntaxes/QVGrammar.h"

#include <chrono>
#include <set>

namespace quorvane {

/// How one try at a line, or at a region on it, ended.
struct QVParse::Step {
    enum Kind : std::uint8_t { LineFinished, RegionEnded, ContinueAt, Cancelled };
    Kind kind;
    /// For `ContinueAt`: where the rest is to be matched afresh.
    NSUInteger location = 0;
};

/// A pattern that competes on a line, with its next hit. Each pattern's hits form a chain of its own: the
/// next one is looked for behind the last, whether or not that one made it into the tree.
struct QVParse::Stream {
    const QVScope *scope;
    QVRememberedSearch *search;
    /// Closes the enclosing region, which beats all else at its place.
    bool isEnd;
    /// Stands for a cut-off, whose hits are checked by nothing.
    bool isCutoff;
    /// The place in the order of preference; ends and cut-offs come before all.
    std::int32_t order = -1;
    bool interpreted = false;
    NSRange hit = NSNotFoundRange;
    /// Where the search began that found the hit.
    NSUInteger searchedFrom = 0;
    /// The number under which the match context held the hit's groups, and how many stood before them.
    std::uint64_t matchNumber = 0;
    NSUInteger groupsBefore = 0;

    /// Where the chain goes on behind the hit.
    NSUInteger nextLocation() const { return NSMaxRange(hit) + (hit.length == 0 ? 1 : 0); }
    /// A single match that may be empty, about which the grammar's author is told.
    bool reportsEmptyHits() const {
        return !isCutoff && scope->type() == QVScopeTypeMatch && search->expression().canMatchEmptyText();
    }
};

/// The patterns of a list of scopes, includes expanded, each once, in the order of preference.
struct QVParse::Plan {
    struct Entry {
        const QVScope *scope;
        std::shared_ptr<QVRememberedSearch> search;
    };
    /// Some of the entries, and which of them may still hit on the line that was last begun.
    struct Part {
        std::vector<std::uint32_t> members;
        std::vector<std::uint32_t> alive;
        /// Members that can only hit at a line's start, in order, and all of them in one, once they were
        /// asked often enough: most lines begin none of them.
        std::vector<std::uint32_t> lineStarters;
        std::uint32_t timesAskedAtLineStart = 0;
        std::shared_ptr<const QVCombinedExpression> atLineStart;
        std::uint64_t aliveGeneration = 0;
        NSUInteger aliveFrom = 0;
        NSUInteger aliveEnd = 0;

        void beginLine(const std::vector<Entry> &entries, const QVParseLine &line, std::u16string_view text,
                       std::uint64_t generation) {
            const bool isBoundary = QVRegularExpression::isSearchBoundary(text.data(), line.start);
            if (isBoundary && aliveGeneration == generation && aliveEnd == line.contentsEnd &&
                line.start >= aliveFrom) {
                aliveFrom = line.start;
                return;
            }
            aliveGeneration = isBoundary ? generation : 0;
            aliveEnd = line.contentsEnd;
            aliveFrom = line.start;
            alive.clear();
            for (const std::uint32_t index : members)
                if (entries[index].search->canStartOnLine(line))
                    alive.push_back(index);
        }
    };
    std::vector<Entry> entries;
    /// Those of the table, and those that need searches of their own even where the table serves.
    Part tabled;
    Part untabled;
    std::unique_ptr<QVCandidateTable> table;
};

/// An open region that is matched unanchored, while its lines are gone through.
struct QVParse::Level {
    /// What may end the region, whose searches it keeps: the parse may forget those of end patterns that were
    /// made of a template.
    struct Ending {
        const QVScope *scope;
        QVScopeMatch *ancestor;
        /// Null until the first line that asks, and for good where a template's pattern does not compile:
        /// that is reported on each line.
        std::shared_ptr<QVRememberedSearch> search;
    };
    QVScopeMatch *match = nullptr;
    /// The match's. A region like the one before it on its level keeps what is known of that, which holds for
    /// as long as the parse's resolved scopes do.
    const QVScope *scope = nullptr;
    std::uint64_t resolution = 0;
    bool canBeKept = false;
    bool isRoot = false;
    /// Nothing ends the region before this place.
    NSUInteger cutoffStart = 0;
    const Scopes *scopes = nullptr;
    const void *planKey = nullptr;
    /// What the region may hold; null until the first line that is not too long asks.
    Plan *plan = nullptr;
    /// The plan's table, where walks along lines may use it.
    QVCandidateTable *walkedTable = nullptr;
    std::vector<Ending> endings;
    /// How many subsyntaxes were open when the endings were gathered. One more is in force behind a region
    /// that was refused for its depth.
    std::size_t ancestorCount = 0;

    // For the line at hand.
    std::vector<Stream> streams;
    /// What the walk has found, where it competes with these.
    Stream walked{};
    std::vector<NSRange> coveredByWalk;
};

/// The state of the parser at work, and what it keeps from line to line. Only the writer touches it.
struct QVParsePass {
    /// Open regions, outermost first.
    std::vector<QVScopeMatch *> parseStackMatches;
    /// Open regions whose scope defines a subsyntax, outermost first. One that was refused for its depth
    /// stays until the region around it ends, also when its match is gone from the tree.
    std::vector<QVScopeMatchReference> subsyntaxAncestors;
    /// A template scope is open: template scopes are not tried.
    bool isInTemplateScope = false;

    // Resolved includes, until packages go.
    std::unordered_map<std::shared_ptr<QVScope>, std::shared_ptr<QVCollection>> includedCollectionCache;
    std::unordered_map<std::shared_ptr<QVScope>, std::vector<std::shared_ptr<QVScope>>> includedScopesCache;

    // Remembered searches. The generation numbers the states of the text; 0 is none of them.
    std::uint64_t generation = 1;
    std::unordered_map<const QVRegularExpression *, std::shared_ptr<QVRememberedSearch>> searches;
    std::unordered_map<const void *, QVParse::Plan> plans;
    /// End patterns made of a template and the text of a region's start; null where they don't compile.
    std::unordered_map<NSString, std::shared_ptr<const QVRegularExpression>> endPatterns;
    QVLineWords lineWords;
    QVParseLine line;
    NSUInteger lineRangeEnd = 0;
    std::uint64_t lineGeneration = 0;
    /// One for each level of nesting, reused.
    std::vector<std::unique_ptr<QVParse::Level>> levels;
    std::vector<std::unique_ptr<QVScopeMatchArray>> growingTrees;

    /// Anchored regions that came to nothing at a place: tried there again, they would come to nothing for
    /// ever. All places count, for a region can run far ahead, over others that come to nothing, before it
    /// comes to nothing itself.
    std::set<std::pair<const QVScope *, NSUInteger>> emptyRegions;

    /// The tree has a line ending without a place, behind a line that is too long and ends the text in a
    /// sequence. What follows it stands in no order that an edit could find its way by.
    bool hasMatchWithoutPlace = false;

    /// Grammars that the tree has nodes of.
    std::vector<std::shared_ptr<QVGrammar>> pinnedGrammars;
    std::unordered_set<const QVScope *> scopesWithLoggedErrors;
    std::unordered_set<const QVScope *> includesWithLoggedCycles;

    /// Numbers the times between two of these.
    std::uint64_t resolution = 1;
    void forgetResolvedScopes() {
        ++resolution;
        includedCollectionCache.clear();
        includedScopesCache.clear();
        plans.clear();
        searches.clear();
        endPatterns.clear();
    }
};

inline QVScopeMatchReference QVParse::newPlainMatch(const QVScope *scope, NSRange range) const {
    return QVScopeMatch::plainWithScope(scope, range, *_matchPool);
}

inline bool QVParse::isTooLong(const QVParseLine &line) const {
    const NSUInteger limit = maximumLineLength();
    return limit != 0 && line.length() > limit;
}

/// Cut-offs mean nothing in the root, which nothing ends.
inline bool QVParse::canBeCandidate(const QVScope &scope, bool inRoot, bool isTemplate) {
    switch (scope.type()) {
    case QVScopeTypeStartEnd:
    case QVScopeTypeMatch:
    case QVScopeTypeInclude:
        return true;
    case QVScopeTypeCutoff:
        return !inRoot && !isTemplate;
    default:
        return false;
    }
}

/// The document's template scopes, whatever syntax is in force; null while one of them is open.
inline const QVParse::Scopes *QVParse::templateScopesToTry() const {
    return _pass->isInTemplateScope || !_grammar || _grammar->templateScopes().empty()
               ? nullptr
               : &_grammar->templateScopes();
}

template <typename Body> void QVParse::forEachCandidateScope(const Scopes &scopes, bool inRoot, Body body) {
    if (const Scopes *const templates = templateScopesToTry())
        for (const std::shared_ptr<QVScope> &scope : *templates)
            if (canBeCandidate(*scope, inRoot, true))
                body(scope);
    for (const std::shared_ptr<QVScope> &scope : scopes)
        if (canBeCandidate(*scope, inRoot, false))
            body(scope);
}

/// The cut-offs of all open subsyntaxes, the innermost first.
template <typename Body> void QVParse::forEachCutoff(Body body) {
    const auto &ancestors = _pass->subsyntaxAncestors;
    for (auto ancestor = ancestors.rbegin(); ancestor != ancestors.rend(); ++ancestor)
        for (const std::shared_ptr<QVScope> &cutoff :
             (*ancestor)->scope()->subsyntaxOptions()->cutoffScopes())
            body(*cutoff, ancestor->get());
}

/// Runs an attempt, which answers whether it made a match, and takes its time where traces are asked for.
template <typename Attempt> void QVParse::traceAttempt(const QVScope &scope, Attempt attempt) {
    if (!isPerformanceCollectionEnabled()) {
        attempt();
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    const bool success = attempt();
    recordPerformanceOfScope(
        scope, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), success);
}

} // namespace quorvane
