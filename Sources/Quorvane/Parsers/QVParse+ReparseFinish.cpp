// The end of a reparse: old nodes and their symbols go, the rest of the tree moves to its new places.

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Parsers/QVReparse.h"

#include <algorithm>

namespace quorvane {

void QVReparse::finish() {
    removeOldMatches();
    for (QVScopeMatch *const match : _inserted)
        match->setInserted(false);
    QVParse::bumpRangesBy(_delta, _lastNewMatch);
    if (_successEnd == _string.size())
        endOpenRegionsAtTextEnd();
    _parse.symbolicateMatchesInRange(result(), _parse.matchPrecedingLocation(_firstLocation, false, nullptr));
    for (QVScopeMatch *const match : _skipped)
        match->setSkipForBumping(false);
    _parse.updateBracketDepths();
}

QVScopeMatch *QVReparse::firstOldMatch() {
    // All behind the first match stood at or behind the first location. A region whose end marks that place
    // is around the first match, and survives.
    QVScopeMatch *const match = oldMatchBehindLevel(0);
    return match ? match->deepestFirstChild()->asScopeMatch() : nullptr;
}

/// Whether an old match stood in the text that was parsed anew.
bool QVReparse::isReplaced(const QVMatch *match) const {
    const auto oldEnd = static_cast<NSInteger>(_successEnd) - _delta;
    const NSRange range = match->range();
    const auto location = static_cast<NSInteger>(range.location);
    // A region with an empty start at the old end may well hold something: it stood behind.
    return range.location >= _firstLocation &&
           (location < oldEnd || (location == oldEnd && match->fullRange().length == 0));
}

NSUInteger QVReparse::indexOfOldMatch(const QVScopeMatch *match) {
    QVScopeMatch *const parent = match->parentMatch();
    if (parent->firstChild() == match)
        return 0;
    if (const Level *const level = levelOfParent(parent); level != nullptr &&
                                                          level->end < parent->submatches().count() &&
                                                          parent->submatches()[level->end] == match)
        return level->end;
    return parent->indexOfSubmatch(match);
}

/// From the leaves up, so that a region goes with the last of its children. Nothing is taken out before the
/// walk is through: children that go are neighbours, and leave their parent all at once.
void QVReparse::removeOldMatches() {
    struct Removal {
        QVScopeMatch *parent;
        NSUInteger index;
        NSUInteger count;
    };
    std::vector<Removal> removals;
    NSIndexSet symbolIndexes;
    QVScopeMatch *match = firstOldMatch();
    if (match != nullptr && !isReplaced(match))
        match = nullptr;
    while (match != nullptr) {
        QVScopeMatch *const parent = match->parentMatch();
        if (parent == nullptr)
            break;
        const QVMatch *next = match->nextShallowMatch();
        next = next ? next->deepestFirstChild() : nullptr;
        while (next != nullptr && next->asScopeMatch()->isInserted())
            next = next->nextDeepMatch();
        noteSymbol(match, symbolIndexes);
        if (removals.empty() || removals.back().parent != parent)
            removals.push_back({parent, indexOfOldMatch(match), 0});
        if (++removals.back().count == parent->submatches().count() && !parent->isInserted() &&
            parent != _parse.rootMatch()) {
            removals.pop_back();
            match = parent;
            continue;
        }
        match = next != nullptr && isReplaced(next) ? const_cast<QVMatch *>(next)->asScopeMatch() : nullptr;
    }
    for (const Removal &removal : removals)
        removal.parent->removeSubmatchesAtIndexes(
            NSIndexSet::indexSetWithIndexesInRange({removal.index, removal.count}));
    removeSymbols(symbolIndexes);
}

/// Symbols come in the order of their matches, so the next one is looked for beside the last.
void QVReparse::noteSymbol(const QVScopeMatch *match, NSIndexSet &indexes) const {
    const QVParseSymbol *const symbol = match->symbol();
    const auto &symbols = _parse._symbols;
    if (symbol == nullptr || symbols.empty())
        return;
    const auto isSymbol = [symbol](const std::shared_ptr<QVParseSymbol> &other) {
        return other.get() == symbol;
    };
    const NSUInteger hint = indexes.isEmpty() ? 0 : indexes.lastIndex();
    const auto from = symbols.begin() + static_cast<std::ptrdiff_t>(hint);
    // Behind the list's last place there is nothing to look for.
    auto found =
        hint != 0 && hint + 1 == symbols.size() ? symbols.end() : std::find_if(from, symbols.end(), isSymbol);
    if (found == symbols.end()) {
        const auto before = std::find_if(std::make_reverse_iterator(from), symbols.rend(), isSymbol);
        if (before == symbols.rend())
            return;
        found = std::prev(before.base());
    }
    indexes.addIndex(static_cast<NSUInteger>(found - symbols.begin()));
}

void QVReparse::removeSymbols(const NSIndexSet &indexes) {
    if (indexes.isEmpty())
        return;
    auto &symbols = _parse._symbols;
    NSUInteger index = 0;
    std::erase_if(symbols, [&](const auto &) { return indexes.containsIndex(index++); });
}

void QVReparse::endOpenRegionsAtTextEnd() {
    bool isAround = false;
    for (QVScopeMatch *match = _lastNewMatch; match != nullptr && match != _parse.rootMatch();
         match = match->parentMatch()) {
        if (!match->isStart())
            continue;
        isAround = isAround || match->endRange().location == NSNotFound;
        if (isAround) {
            match->setEndRange({_string.size(), 0});
            match->setEndCaptureMatches(nullptr);
        }
    }
}

} // namespace quorvane
