// What stood in the old tree where a new stretch goes in. The tree is mixed meanwhile: new nodes stand at
// places of the new text, old ones at places of the old text, and an edit may make millions of passes over
// it, so nothing here walks from the first match to where the work is.

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Parsers/QVReparse.h"

namespace quorvane {

namespace {

/// What is marked to be skipped has its end at a place of the new text.
bool endHolds(const QVScopeMatch *match, NSUInteger location) {
    return !match->skipForBumping() && NSLocationInRange(location, QVScopeMatch::directEndRange(match));
}

bool holds(const QVScopeMatch *match, NSUInteger location) {
    const NSRange range = match->range();
    return range.location == location || NSLocationInRange(location, range) || endHolds(match, location);
}

/// The first position that nothing in the match's subtree reaches.
NSUInteger reachOf(const QVScopeMatch *match) {
    const NSRange endRange = match->endRange();
    if (endRange.location != NSNotFound)
        return NSMaxRange(endRange);
    return match->submatches().isEmpty() ? NSMaxRange(match->range()) : NSNotFound;
}

/// The first in document order that holds the location, among children that follow each other.
QVScopeMatch *firstThatHolds(QVSubmatches children, NSUInteger low, NSUInteger high, NSUInteger location) {
    const NSUInteger end = high;
    while (low < high) {
        const NSUInteger middle = low + (high - low) / 2;
        if (reachOf(children[middle]) < location)
            low = middle + 1;
        else
            high = middle;
    }
    for (; low < end; ++low) {
        QVScopeMatch *const match = children[low];
        if (match->range().location > location)
            return nullptr;
        if (holds(match, location))
            return match;
        const QVSubmatches submatches = match->submatches();
        if (QVScopeMatch *const found = firstThatHolds(submatches, 0, submatches.count(), location))
            return found;
    }
    return nullptr;
}

} // namespace

/// The plain walk. The search below answers the same in a time that the document's size hardly changes.
QVScopeMatch *QVParse::matchAtLocation(NSUInteger location, QVScopeMatch *withDirtyMatchesStartingAtMatch) {
    for (QVScopeMatch *match = withDirtyMatchesStartingAtMatch; match != nullptr;
         match = QVScopeMatch::directNextMatch(match)) {
        if (!match->isInserted() && holds(match, location))
            return match;
        if (QVScopeMatch::directFirstChild(match) != nullptr)
            continue;
        for (const QVScopeMatch *child = match; QVScopeMatch::directNextSibling(child) == nullptr;) {
            QVScopeMatch *const parent = QVScopeMatch::directParentMatch(child);
            if (parent == nullptr)
                break;
            if (!parent->isInserted() && endHolds(parent, location))
                return parent;
            child = parent;
        }
    }
    return nullptr;
}

NSInteger QVReparse::oldPosition(NSUInteger position) const {
    // Text that came in stands at no old place, perhaps at one before the old text's start.
    return static_cast<NSInteger>(
        QVParse::positionForPositionInOriginalRange(position, {_editRange.location, _editLength}, _delta));
}

NSInteger QVReparse::newPosition(NSInteger oldPosition) const {
    if (oldPosition <= static_cast<NSInteger>(_editRange.location))
        return oldPosition;
    if (oldPosition < static_cast<NSInteger>(NSMaxRange(_editRange)))
        return static_cast<NSInteger>(_editRange.location + _editLength);
    return oldPosition + _delta;
}

// The levels: where new children stand among old ones

QVReparse::Level *QVReparse::levelAt(std::size_t index) {
    while (_levels.size() <= index) {
        QVScopeMatch *const child = _levels.back().parent;
        QVScopeMatch *const parent = child->parentMatch();
        if (parent == nullptr)
            return nullptr;
        // Untouched so far, so its children stand in order.
        const NSUInteger behind = parent->indexOfSubmatch(child) + 1;
        _levels.push_back({parent, behind, behind});
    }
    return &_levels[index];
}

QVReparse::Level *QVReparse::levelOfParent(const QVScopeMatch *parent) {
    for (std::size_t index = 0; Level *const level = levelAt(index); ++index)
        if (level->parent == parent)
            return level;
    return nullptr;
}

/// The first old match in document order behind a level's new children.
QVScopeMatch *QVReparse::oldMatchBehindLevel(std::size_t level) {
    for (; const Level *const found = levelAt(level); ++level) {
        const QVSubmatches children = found->parent->submatches();
        if (found->end < children.count())
            return children[found->end];
    }
    return nullptr;
}

/// The next old match that is no descendant.
QVScopeMatch *QVReparse::nextOldMatch(const QVScopeMatch *match) {
    QVMatch *const next = match->nextShallowMatch();
    QVScopeMatch *const nextMatch = next ? next->asScopeMatch() : nullptr;
    if (nextMatch == nullptr || !nextMatch->isInserted())
        return nextMatch;
    for (std::size_t index = 0; const Level *const level = levelAt(index); ++index)
        if (level->parent == nextMatch->parentMatch())
            return oldMatchBehindLevel(index);
    return nullptr;
}

// Matches by location

QVReparse::Found QVReparse::matchAtLocation(NSInteger location) {
    if (location < 0)
        return {};
    const Found found = searchFromFirstMatch(static_cast<NSUInteger>(location));
#ifdef QUORVANE_VERIFY
    // The walk takes its time, so only the first few of an edit.
    if (++_checkedSearches <= 24)
        checkAgainstWalk(found, location);
#endif
    return found;
}

void QVReparse::checkAgainstWalk(const Found &found, NSInteger location) const {
    QVAssert(found.match == QVParse::matchAtLocation(static_cast<NSUInteger>(location), _firstMatch),
             u"The search finds another match than the walk at location %ld", location);
}

QVReparse::Found QVReparse::searchFromFirstMatch(NSUInteger location) {
    if (_replacesFirstMatch) {
        QVScopeMatch *const match = QVParse::matchAtLocation(location, _firstMatch);
        return {match, match ? Found::Old : Found::Nothing};
    }
    if (_firstMatch != _parse.rootMatch()) {
        if (holds(_firstMatch, location))
            return {_firstMatch, Found::Old};
        const QVSubmatches children = _firstMatch->submatches();
        if (QVScopeMatch *const match = firstThatHolds(children, 0, children.count(), location))
            return {match, Found::Old};
    }
    for (std::size_t index = 0; const Level *const level = levelAt(index); ++index) {
        const QVSubmatches children = level->parent->submatches();
        if (QVScopeMatch *const match = firstThatHolds(children, level->end, children.count(), location))
            return {match, Found::Old};
        if (endHolds(level->parent, location))
            return {level->parent, Found::Ancestor, index};
    }
    return {};
}

// Old matches that reach further than the stretch

/// A region reaches as far as anything in it, so only regions without an end need a look inside.
void QVReparse::walkOldMatches(QVScopeMatch *&match, NSInteger oldEnd, NSInteger &furthest) {
    while (match != nullptr && static_cast<NSInteger>(match->range().location) < oldEnd) {
        const NSRange endRange = match->endRange();
        if (endRange.location != NSNotFound || match->firstChild() == nullptr) {
            furthest = std::max(furthest, static_cast<NSInteger>(NSMaxRange(match->fullRange())));
            match = nextOldMatch(match);
            continue;
        }
        const NSRange last = match->deepestLastChild()->range();
        if (last.location != NSNotFound)
            furthest = std::max(furthest, static_cast<NSInteger>(NSMaxRange(last)));
        match = match->firstChild();
    }
}

NSInteger QVReparse::furthestOldEndBehindFirstMatch(NSInteger oldEnd) {
    if (!_reach.isValid || _reach.before > oldEnd)
        _reach = {true, oldMatchBehindLevel(0), oldEnd, 0};
    _reach.before = oldEnd;
    walkOldMatches(_reach.next, oldEnd, _reach.furthest);
    return _reach.furthest;
}

NSInteger QVReparse::furthestOldEnd(const Found &from, NSInteger oldEnd) {
    switch (from.kind) {
    case Found::Nothing:
        return 0;
    case Found::Old: {
        QVScopeMatch *match = from.match;
        NSInteger furthest = 0;
        walkOldMatches(match, oldEnd, furthest);
        return furthest;
    }
    default:
        break;
    }
    // From an ancestor on, all lies in the walk that is behind the ancestor's start. What stands before the
    // first match ended before the first location, so only the ancestors themselves and what follows count.
    NSInteger furthest = furthestOldEndBehindFirstMatch(oldEnd);
    for (std::size_t index = 0; index <= from.level; ++index) {
        const QVScopeMatch *const ancestor = levelAt(index)->parent;
        const NSRange endRange = ancestor->endRange();
        if (endRange.location != NSNotFound && !ancestor->skipForBumping())
            furthest = std::max(furthest, static_cast<NSInteger>(NSMaxRange(endRange)));
    }
    return furthest;
}

/// Old matches that reach behind the stretch must be parsed to their end as well: what they were may be gone.
bool QVReparse::measureExtension() {
    _extension = 0;
    const NSUInteger plannedEnd = _start + _plannedLength;
    const NSInteger oldStart = oldPosition(_start);
    const NSInteger oldEnd = oldPosition(plannedEnd);
    const NSInteger furthest = furthestOldEnd(matchAtLocation(oldStart), oldEnd);
    if (furthest > oldEnd)
        if (const auto end = static_cast<NSUInteger>(newPosition(furthest)); end >= _successEnd)
            _extension = end - _successEnd;
    const auto isInside = [&] {
        const bool inside = _successEnd + _extension <= _string.size();
        QVAssert(inside, u"Extended parse range is invalid");
        return inside;
    };
    if (!isInside())
        return false;
    if (_successEnd + _extension > plannedEnd) {
        NSUInteger end = 0;
        qv_getLineStart(_string, nullptr, &end, nullptr, {_successEnd, _extension});
        _extension = end - _successEnd;
    }
    return isInside();
}

/// The region in which the old tree stood at the stretch's end.
QVScopeMatch *QVReparse::lastOldParent(NSInteger oldLocation) {
    const Found found = matchAtLocation(oldLocation);
    if (found.match == nullptr)
        return nullptr;
    const QVMatch *match = found.match->deepestFirstChild();
    while (match != nullptr && match->asScopeMatch()->isInserted())
        match = match->nextDeepMatch();
    return match ? match->parentMatch() : nullptr;
}

} // namespace quorvane
