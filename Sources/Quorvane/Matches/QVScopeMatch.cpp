#include "Quorvane/Matches/QVScopeMatch.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Matches/QVMatchPositions.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

// A plain match is one piece of memory, whatever the language; the records' sizes are what their fields need.
static_assert(sizeof(QVScopeMatch) <= 72);
static_assert(sizeof(QVScopeMatchStorage) == 8);
static_assert(sizeof(QVScopeMatchRegionStorage) == 88);
static_assert(sizeof(QVScopeMatchSymbolStorage) == 96);

namespace {

constexpr const char16_t *noSubmatches =
    u"Attempt to modify submatches on a match that does not support them.";

} // namespace

static_assert(sizeof(QVScopeMatch) + sizeof(QVScopeMatchSymbolStorage) <= QVMatchPool::largestPiece);

namespace {

bool holdsCaptures(const QVScope &scope) { return !scope.captures().empty() || !scope.endCaptures().empty(); }

} // namespace

/// The record stands behind the match in one piece of memory.
inline QVScopeMatchReference QVScopeMatch::make(const QVScope *scope, NSRange range, bool hasCaptures,
                                                bool hasSubmatches, bool hasSymbol, QVMatchPool &pool) {
    void *const memory =
        pool.allocate(sizeof(QVScopeMatch) + storageBytes(hasCaptures, hasSubmatches, hasSymbol));
    return QVScopeMatchReference(new (memory)
                                     QVScopeMatch(scope, range, hasCaptures, hasSubmatches, hasSymbol));
}

QVScopeMatchReference QVScopeMatch::matchWithScope(const QVScope *scope, NSRange range, QVMatchPool &pool) {
    const QVScopeType type = scope->type();
    return make(scope, range, holdsCaptures(*scope), type == QVScopeTypeStartEnd || type == QVScopeTypeRoot,
                scope->directHasSymbol(), pool);
}

QVScopeMatchReference QVScopeMatch::plainWithScope(const QVScope *scope, NSRange range, QVMatchPool &pool) {
    return make(scope, range, false, false, false, pool);
}

QVScopeMatchReference QVScopeMatch::endWithScope(const QVScope *scope, NSRange range, QVMatchPool &pool) {
    QVScopeMatchReference match = make(scope, range, holdsCaptures(*scope), false, false, pool);
    match->setEnd(true);
    return match;
}

QVScopeMatchReference QVScopeMatch::initWithScope(const QVScope *scope, QVMatchPool &pool) {
    return matchWithScope(scope, NSNotFoundRange, pool);
}

QVScopeMatchReference QVScopeMatch::init() {
    throw NSException(NSInvalidArgumentException, u"Must be initialized using -initWithScope:");
}

std::size_t QVScopeMatch::storageBytes(bool hasCaptures, bool hasSubmatches, bool hasSymbol) {
    return hasSymbol       ? sizeof(QVScopeMatchSymbolStorage)
           : hasSubmatches ? sizeof(QVScopeMatchRegionStorage)
           : hasCaptures   ? sizeof(QVScopeMatchStorage)
                           : 0;
}

std::size_t QVScopeMatch::bytesForScope(const QVScope *scope) { return initWithScope(scope)->bytes(); }

QVScopeMatch::QVScopeMatch(const QVScope *scope, NSRange range, bool hasCaptures, bool hasSubmatches,
                           bool hasSymbol)
    : QVMatch(true), _scope(scope) {
    _range = range;
    _hasCaptures = hasCaptures;
    _hasSubmatches = hasSubmatches;
    _hasSymbol = hasSymbol;
    if (hasSymbol)
        new (this + 1) QVScopeMatchSymbolStorage;
    else if (hasSubmatches)
        new (this + 1) QVScopeMatchRegionStorage;
    else if (hasCaptures)
        new (this + 1) QVScopeMatchStorage;
}

/// Stores captures' places as those of another chunk.
void QVScopeMatch::moveCaptures(const QVCaptureMatchArray *captures, QVPositionChunk *chunk) {
    if (captures == nullptr)
        return;
    for (const auto &capture : *captures) {
        capture->moveStoredPlace(chunk, capture->positionChunk()->shift() - chunk->shift());
    }
}

void QVScopeMatch::abandonCaptures(const QVCaptureMatchArray *captures) {
    if (captures == nullptr)
        return;
    // Some of them may be held by somebody.
    moveCaptures(captures, &QVPositionChunk::absolute);
    for (const auto &capture : *captures)
        capture->setParentMatch(nullptr);
}

QVScopeMatch::~QVScopeMatch() {
    if (_hasAssociation)
        QVMatchPool::poolOf(this).removeAssociationForMatch(this);
    const bool hasPositions = _positionChunk != &QVPositionChunk::absolute;
    if (hasPositions && _skipForBumping)
        QVMatchPositions::positionsOf(this)->noteMark(this, false);
    if (hasStorage()) {
        abandonCaptures(storage()->captureMatches.get());
        if (_hasSubmatches) {
            abandonCaptures(regionStorage()->endCaptureMatches.get());
            releaseSubmatches();
            QVMatchPositions::forgetPlace(regionStorage()->endChunk);
        }
        destroyStorage();
    }
    if (hasPositions)
        QVMatchPositions::forgetPlace(_positionChunk);
}

void QVScopeMatch::destroyStorage() {
    if (_hasSymbol)
        symbolStorage()->~QVScopeMatchSymbolStorage();
    else if (_hasSubmatches)
        regionStorage()->~QVScopeMatchRegionStorage();
    else
        storage()->~QVScopeMatchStorage();
}

void QVScopeMatch::setDirectEndRange(QVScopeMatch *match, NSRange endRange) {
    if (match == nullptr)
        return;
    QVAssert(match->_hasSubmatches,
             u"Attempt to set an end range on a match that does not support submatches");
    if (!match->_hasSubmatches)
        return;
    QVAssert(endRange.location == NSNotFound || match->_range.location == NSNotFound ||
                 endRange.location >= NSMaxRange(match->range()),
             u"End range is within or before bounds of start range");
    QVScopeMatchRegionStorage *const storage = match->regionStorage();
    storage->endRange = storage->endChunk->storedOfPlace(endRange);
}

void QVScopeMatch::replaceCaptures(std::unique_ptr<QVCaptureMatchArray> &captures,
                                   std::unique_ptr<QVCaptureMatchArray> by, QVPositionChunk *chunk) {
    if (chunk != &QVPositionChunk::absolute) {
        moveCaptures(captures.get(), &QVPositionChunk::absolute);
        moveCaptures(by.get(), chunk);
    }
    captures = std::move(by);
}

void QVScopeMatch::setSkipForBumping(bool skip) {
    if (_skipForBumping == skip)
        return;
    _skipForBumping = skip;
    if (QVMatchPositions *const positions = QVMatchPositions::positionsOf(this))
        positions->noteMark(this, skip);
}

void QVScopeMatch::setCaptureMatches(std::unique_ptr<QVCaptureMatchArray> captureMatches) {
    QVAssert(!captureMatches || _hasCaptures,
             u"Attempt to modify capture matches on a match that does not support them.");
    if (hasStorage() && (_hasCaptures || !captureMatches))
        replaceCaptures(storage()->captureMatches, std::move(captureMatches), _positionChunk);
}

void QVScopeMatch::setEndCaptureMatches(std::unique_ptr<QVCaptureMatchArray> captureMatches) {
    QVAssert(!captureMatches || _hasSubmatches,
             u"Attempt to modify end capture matches on a match that does not support them.");
    if (_hasSubmatches)
        replaceCaptures(regionStorage()->endCaptureMatches, std::move(captureMatches),
                        regionStorage()->endChunk);
}

std::unique_ptr<QVCaptureMatchArray> QVScopeMatch::takeCaptureMatches() {
    if (!hasStorage())
        return nullptr;
    moveCaptures(storage()->captureMatches.get(), &QVPositionChunk::absolute);
    return std::move(storage()->captureMatches);
}

QVParseSymbol *QVScopeMatch::symbol() const {
    if (!_hasSymbol)
        return nullptr;
    if (QVSymbolMaker *const maker = QVMatchPool::poolOf(this).symbolMaker())
        maker->makeSymbols();
    return symbolStorage()->symbol;
}

void QVScopeMatch::setSymbol(QVParseSymbol *symbol) {
    QVAssert(symbol == nullptr || _hasSymbol,
             u"Attempt to modify symbol on a match that does not support them.");
    if (_hasSymbol)
        symbolStorage()->symbol = symbol;
}

QVScopeMatch *QVScopeMatch::directNextMatch(const QVScopeMatch *match) {
    if (QVScopeMatch *const child = directFirstChild(match))
        return child;
    for (; match != nullptr; match = directParentMatch(match))
        if (QVMatch *const sibling = directNextSibling(match))
            return sibling->asScopeMatch();
    return nullptr;
}

QVMatch *QVScopeMatch::nextMatchIncludingCaptures() const {
    for (const QVCaptureMatchArray *captures : {captureMatches(), endCaptureMatches()})
        if (captures != nullptr && !captures->empty())
            return captures->front().get();
    return nextMatch();
}

// Children

bool QVScopeMatch::canChangeSubmatches() const {
    QVAssert(_hasSubmatches, noSubmatches);
    return _hasSubmatches;
}

NSUInteger QVScopeMatch::indexOfSubmatch(const QVScopeMatch *match) const {
    if (match->_parentMatch != this)
        return NSNotFound;
    const QVSubmatches children = submatches();
    const NSUInteger count = children.count();
    const NSUInteger location = match->range().location;
    NSUInteger low = 0;
    NSUInteger high = count;
    while (low < high) {
        const NSUInteger middle = low + (high - low) / 2;
        if (children[middle]->range().location < location)
            low = middle + 1;
        else
            high = middle;
    }
    // Several empty ones may stand at one place. And while a tree is repaired, the search may have been led
    // astray by those that are to go: then the match is as near as they are many. A child without a place
    // stands outside of the order, and near the end.
    NSUInteger behind = low;
    for (NSUInteger before = low; before > 0 || behind < count;) {
        if (behind < count && children[behind++] == match)
            return behind - 1;
        if (before > 0 && children[--before] == match)
            return before;
    }
    return NSNotFound;
}

/// What somebody else holds lives on, with places of its own.
void QVScopeMatch::releaseSubmatches() {
    QVSubmatchStore &submatches = regionStorage()->submatches;
    if (submatchPositions() != nullptr)
        submatches.releaseEach([](QVScopeMatchReference &submatch) {
            if (submatch->_retainCount > 1 && submatch->_positionChunk != &QVPositionChunk::absolute)
                QVMatchPositions::detachSurvivor(submatch.get());
            submatch.reset();
        });
    submatches.reset();
}

void QVScopeMatch::setSubmatches(std::unique_ptr<QVScopeMatchArray> submatches) {
    if (submatches) {
        adoptSubmatches(std::move(*submatches));
    } else if (_hasSubmatches) {
        regionStorage()->firstChild = regionStorage()->lastChild = nullptr;
        releaseSubmatches();
    }
}

void QVScopeMatch::adoptSubmatches(QVScopeMatchArray submatches) {
    if (!canChangeSubmatches())
        return;
    QVScopeMatchRegionStorage *const storage = regionStorage();
    QVScopeMatch *previous = nullptr;
    for (const QVScopeMatchReference &match : submatches) {
        match->_parentMatch = this;
        match->_previousSibling = previous;
        if (previous != nullptr)
            previous->_nextSibling = match.get();
        previous = match.get();
    }
    storage->firstChild = previous == nullptr ? nullptr : submatches.front().get();
    storage->lastChild = previous;
    if (storage->submatches)
        releaseSubmatches();
    storage->submatches.assign(std::move(submatches));
    if (QVMatchPositions *const positions = submatchPositions(); positions != nullptr && previous != nullptr)
        positions->attach(storage->firstChild, previous);
}

void QVScopeMatch::insertRun(const QVScopeMatchReference *first, NSUInteger count, NSUInteger atIndex) {
    if (count == 0)
        return;
    QVScopeMatchRegionStorage *const storage = regionStorage();
    const NSUInteger index = std::min<NSUInteger>(atIndex, storage->submatches.count());
    QVScopeMatch *const next = index < storage->submatches.count() ? storage->submatches[index] : nullptr;
    // The outer links of the ends are their own matter.
    QVMatch *const before = index == 0        ? nullptr
                            : next != nullptr ? next->_previousSibling
                                              : storage->lastChild;
    QVMatch *previous = before;
    for (NSUInteger run = 0; run < count; ++run) {
        QVScopeMatch *const submatch = first[run].get();
        submatch->_parentMatch = this;
        submatch->_previousSibling = previous;
        if (previous != nullptr)
            previous->setNextSibling(submatch);
        previous = submatch;
    }
    previous->setNextSibling(next);
    if (next != nullptr)
        next->_previousSibling = previous;
    else
        storage->lastChild = previous->asScopeMatch();
    if (before == nullptr)
        storage->firstChild = first->get();
    storage->submatches.insert(index, first, count);
    if (QVMatchPositions *const positions = submatchPositions())
        positions->attach(first->get(), first[count - 1].get());
}

void QVScopeMatch::insertSubmatch(QVScopeMatchReference submatch, NSUInteger atIndex) {
    if (!canChangeSubmatches())
        return;
    QVAssert(_range.location == NSNotFound || submatch->range().location >= range().location,
             u"Attempt to insert a submatch that precedes the parent");
    insertRun(&submatch, 1, atIndex);
}

void QVScopeMatch::insertSubmatches(const QVScopeMatchArray &submatches, const NSIndexSet &atIndexes) {
    if (!canChangeSubmatches())
        return;
    NSUInteger next = 0;
    // Neighbouring indexes come as one range, and their matches in one step.
    for (const NSRange &range : atIndexes.ranges()) {
        const NSUInteger count = std::min<NSUInteger>(range.length, submatches.size() - next);
        insertRun(submatches.data() + next, count, range.location);
        next += count;
    }
}

void QVScopeMatch::removeSubmatchAtIndex(NSUInteger index) {
    if (!canChangeSubmatches())
        return;
    removeRuns({{index, 1}});
}

void QVScopeMatch::removeSubmatchesAtIndexes(const NSIndexSet &indexes) {
    if (canChangeSubmatches())
        removeRuns(indexes.ranges());
}

void QVScopeMatch::removeRuns(const std::vector<NSRange> &runs) {
    if (runs.empty())
        return;
    QVScopeMatchRegionStorage *const storage = regionStorage();
    if (NSMaxRange(runs.back()) > storage->submatches.count())
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(u"Submatch index %lu is beyond the bounds",
                                                     NSMaxRange(runs.back()) - 1));
    // Held until the end, so that links of neighbours that go too stay good while they are joined.
    QVScopeMatchArray removed;
    for (auto run = runs.rbegin(); run != runs.rend(); ++run)
        takeRun(*run, removed);
}

void QVScopeMatch::takeRun(NSRange run, QVScopeMatchArray &into) {
    QVScopeMatchRegionStorage *const storage = regionStorage();
    const std::size_t first = into.size();
    if (QVMatchPositions *const positions = submatchPositions())
        positions->detach(storage->submatches[run.location], storage->submatches[NSMaxRange(run) - 1]);
    storage->submatches.take(run, into);
    QVMatch *const before = run.location == 0 ? nullptr : into[first]->_previousSibling;
    QVMatch *const behind = run.location == storage->submatches.count() ? nullptr : into.back()->_nextSibling;
    for (std::size_t index = first; index < into.size(); ++index) {
        into[index]->_parentMatch = nullptr;
        into[index]->_previousSibling = nullptr;
        into[index]->_nextSibling = nullptr;
    }
    if (before != nullptr)
        before->setNextSibling(behind);
    else
        storage->firstChild = behind != nullptr ? behind->asScopeMatch() : nullptr;
    if (behind != nullptr)
        behind->setPreviousSibling(before);
    else
        storage->lastChild = before != nullptr ? before->asScopeMatch() : nullptr;
}

// Associations

std::shared_ptr<QVRegularExpressionResult> QVScopeMatch::textCheckingResult() const {
    const auto *const association =
        _hasAssociation ? QVMatchPool::poolOf(this).existingAssociationForMatch(this) : nullptr;
    return association ? association->textCheckingResult : nullptr;
}

void QVScopeMatch::setTextCheckingResult(std::shared_ptr<QVRegularExpressionResult> result) {
    if (!result && !_hasAssociation)
        return;
    QVMatchPool::poolOf(this).associationForMatch(this).textCheckingResult = std::move(result);
    _hasAssociation = true;
}

std::shared_ptr<QVSyntax> QVScopeMatch::subsyntax() const {
    const auto *const association =
        _hasAssociation ? QVMatchPool::poolOf(this).existingAssociationForMatch(this) : nullptr;
    return association ? association->subsyntax : nullptr;
}

void QVScopeMatch::setSubsyntax(std::shared_ptr<QVSyntax> syntax) {
    if (!syntax && !_hasAssociation)
        return;
    QVMatchPool::poolOf(this).associationForMatch(this).subsyntax = std::move(syntax);
    _hasAssociation = true;
}

} // namespace quorvane
