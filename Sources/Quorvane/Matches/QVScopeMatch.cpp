#include "Quorvane/Matches/QVScopeMatch.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

// A plain match is one piece of memory, whatever the language; the records' sizes are what their fields need.
static_assert(sizeof(QVScopeMatch) <= 72);
static_assert(sizeof(QVScopeMatchStorage) == 8);
static_assert(sizeof(QVScopeMatchRegionStorage) == 56);
static_assert(sizeof(QVScopeMatchSymbolStorage) == 64);

namespace {

constexpr const char16_t *noSubmatches =
    u"Attempt to modify submatches on a match that does not support them.";

void detachCaptures(const QVCaptureMatchArray *captures) {
    if (captures == nullptr)
        return;
    for (const auto &capture : *captures)
        capture->setParentMatch(nullptr);
}

} // namespace

QVScopeMatchReference QVScopeMatch::initWithScope(const QVScope *scope, QVMatchPool &pool) {
    return QVScopeMatchReference(new (pool.allocate(sizeof(QVScopeMatch))) QVScopeMatch(scope, pool));
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

std::size_t QVScopeMatch::bytesForScope(const QVScope *scope) {
    const QVScopeMatchReference match = initWithScope(scope);
    return sizeof(QVScopeMatch) + storageBytes(match->_hasCaptures, match->_hasSubmatches, match->_hasSymbol);
}

QVScopeMatch::QVScopeMatch(const QVScope *scope, QVMatchPool &pool) : QVMatch(true), _scope(scope) {
    const QVScopeType type = scope->type();
    _hasCaptures = !scope->captures().empty() || !scope->endCaptures().empty();
    _hasSubmatches = type == QVScopeTypeStartEnd || type == QVScopeTypeRoot;
    _hasSymbol = scope->directHasSymbol();
    if (_hasSymbol)
        _storage = new (pool.allocate(sizeof(QVScopeMatchSymbolStorage))) QVScopeMatchSymbolStorage;
    else if (_hasSubmatches)
        _storage = new (pool.allocate(sizeof(QVScopeMatchRegionStorage))) QVScopeMatchRegionStorage;
    else if (_hasCaptures)
        _storage = new (pool.allocate(sizeof(QVScopeMatchStorage))) QVScopeMatchStorage;
}

QVScopeMatch::~QVScopeMatch() {
    if (_hasAssociation)
        QVMatchPool::poolOf(this).removeAssociationForMatch(this);
    if (_storage == nullptr)
        return;
    detachCaptures(_storage->captureMatches.get());
    if (_hasSymbol || _hasSubmatches)
        detachCaptures(regionStorage()->endCaptureMatches.get());
    const std::size_t bytes = storageBytes(_hasCaptures, _hasSubmatches, _hasSymbol);
    if (_hasSymbol)
        symbolStorage()->~QVScopeMatchSymbolStorage();
    else if (_hasSubmatches)
        regionStorage()->~QVScopeMatchRegionStorage();
    else
        _storage->~QVScopeMatchStorage();
    QVMatchPool::poolOf(_storage).deallocate(_storage, bytes);
}

void QVScopeMatch::setDirectEndRange(QVScopeMatch *match, NSRange endRange) {
    if (match == nullptr)
        return;
    QVAssert(match->_hasSubmatches,
             u"Attempt to set an end range on a match that does not support submatches");
    if (!match->_hasSubmatches)
        return;
    QVAssert(endRange.location == NSNotFound || match->_range.location == NSNotFound ||
                 endRange.location >= NSMaxRange(match->_range),
             u"End range is within or before bounds of start range");
    match->regionStorage()->endRange = endRange;
}

void QVScopeMatch::setCaptureMatches(std::unique_ptr<QVCaptureMatchArray> captureMatches) {
    QVAssert(!captureMatches || _hasCaptures,
             u"Attempt to modify capture matches on a match that does not support them.");
    if (_storage != nullptr && (_hasCaptures || !captureMatches))
        _storage->captureMatches = std::move(captureMatches);
}

void QVScopeMatch::setEndCaptureMatches(std::unique_ptr<QVCaptureMatchArray> captureMatches) {
    QVAssert(!captureMatches || _hasSubmatches,
             u"Attempt to modify end capture matches on a match that does not support them.");
    if (_hasSubmatches)
        regionStorage()->endCaptureMatches = std::move(captureMatches);
}

std::unique_ptr<QVCaptureMatchArray> QVScopeMatch::takeCaptureMatches() {
    return _storage ? std::move(_storage->captureMatches) : nullptr;
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

QVScopeMatchArray &QVScopeMatch::ensureSubmatches() {
    auto &submatches = regionStorage()->submatches;
    if (!submatches) {
        submatches = std::make_unique<QVScopeMatchArray>();
        submatches->reserve(10);
    }
    return *submatches;
}

NSUInteger QVScopeMatch::indexOfSubmatch(const QVScopeMatch *match) const {
    const QVSubmatches children = submatches();
    // Children stand in location order, several empty ones perhaps at one place.
    NSUInteger low = 0;
    NSUInteger high = children.count();
    while (low < high) {
        const NSUInteger middle = low + (high - low) / 2;
        if (children[middle]->_range.location < match->_range.location)
            low = middle + 1;
        else
            high = middle;
    }
    for (; low < children.count() && children[low]->_range.location == match->_range.location; ++low)
        if (children[low] == match)
            return low;
    // A child without a place stands outside of the order.
    for (NSUInteger index = 0; index < children.count(); ++index)
        if (children[index] == match)
            return index;
    return NSNotFound;
}

void QVScopeMatch::setSubmatches(std::unique_ptr<QVScopeMatchArray> submatches) {
    if (!submatches && !_hasSubmatches)
        return;
    if (!canChangeSubmatches())
        return;
    QVScopeMatchRegionStorage *const storage = regionStorage();
    storage->submatches = std::move(submatches);
    QVMatch *previous = nullptr;
    if (storage->submatches) {
        for (const QVScopeMatchReference &match : *storage->submatches) {
            match->_parentMatch = this;
            match->_previousSibling = previous;
            if (previous != nullptr)
                previous->setNextSibling(match.get());
            previous = match.get();
        }
    }
    const bool empty = !storage->submatches || storage->submatches->empty();
    storage->firstChild = empty ? nullptr : storage->submatches->front().get();
    storage->lastChild = empty ? nullptr : storage->submatches->back().get();
}

void QVScopeMatch::link(QVScopeMatch *submatch, NSUInteger atIndex) {
    QVScopeMatchRegionStorage *const storage = regionStorage();
    const QVScopeMatchArray &matches = *storage->submatches;
    submatch->_parentMatch = this;
    submatch->_previousSibling = atIndex > 0 ? matches[atIndex - 1].get() : nullptr;
    if (submatch->_previousSibling != nullptr)
        submatch->_previousSibling->setNextSibling(submatch);
    else
        storage->firstChild = submatch;
    submatch->_nextSibling = atIndex < matches.size() ? matches[atIndex].get() : nullptr;
    if (submatch->_nextSibling != nullptr)
        submatch->_nextSibling->setPreviousSibling(submatch);
    else
        storage->lastChild = submatch;
}

void QVScopeMatch::unlink(QVScopeMatch *submatch) {
    submatch->_parentMatch = nullptr;
    if (submatch->_previousSibling != nullptr)
        submatch->_previousSibling->setNextSibling(submatch->_nextSibling);
    if (submatch->_nextSibling != nullptr)
        submatch->_nextSibling->setPreviousSibling(submatch->_previousSibling);
    submatch->_previousSibling = nullptr;
    submatch->_nextSibling = nullptr;
}

void QVScopeMatch::insertSubmatch(QVScopeMatchReference submatch, NSUInteger atIndex) {
    if (!canChangeSubmatches())
        return;
    QVAssert(_range.location == NSNotFound || submatch->_range.location >= _range.location,
             u"Attempt to insert a submatch that precedes the parent");
    QVScopeMatchArray &matches = ensureSubmatches();
    const NSUInteger index = std::min<NSUInteger>(atIndex, matches.size());
    link(submatch.get(), index);
    matches.insert(matches.begin() + static_cast<std::ptrdiff_t>(index), std::move(submatch));
}

void QVScopeMatch::insertSubmatches(const QVScopeMatchArray &submatches, const NSIndexSet &atIndexes) {
    if (!canChangeSubmatches())
        return;
    QVScopeMatchArray &matches = ensureSubmatches();
    std::size_t next = 0;
    atIndexes.enumerateIndexesUsingBlock([&](NSUInteger atIndex, bool &stop) {
        if (next == submatches.size()) {
            stop = true;
            return;
        }
        const NSUInteger index = std::min<NSUInteger>(atIndex, matches.size());
        link(submatches[next].get(), index);
        matches.insert(matches.begin() + static_cast<std::ptrdiff_t>(index), submatches[next++]);
    });
}

void QVScopeMatch::removeSubmatchAtIndex(NSUInteger index) { removeSubmatchesAtIndexes({index}); }

void QVScopeMatch::removeSubmatchesAtIndexes(const NSIndexSet &indexes) {
    if (!canChangeSubmatches() || indexes.isEmpty())
        return;
    QVScopeMatchRegionStorage *const storage = regionStorage();
    if (!storage->submatches || indexes.lastIndex() >= storage->submatches->size())
        throw NSException(
            NSRangeException,
            NSString::stringWithFormat(u"Submatch index %lu is beyond the bounds", indexes.lastIndex()));
    QVScopeMatchArray &matches = *storage->submatches;
    // Held until the end, so that links of neighbours that go too stay good while they are joined.
    QVScopeMatchArray removed;
    QVScopeMatchArray::iterator kept = matches.begin() + static_cast<std::ptrdiff_t>(indexes.firstIndex());
    for (NSUInteger index = indexes.firstIndex(); index < matches.size(); ++index) {
        if (indexes.containsIndex(index)) {
            unlink(matches[index].get());
            removed.push_back(std::move(matches[index]));
        } else {
            *kept++ = std::move(matches[index]);
        }
    }
    matches.erase(kept, matches.end());
    storage->firstChild = matches.empty() ? nullptr : matches.front().get();
    storage->lastChild = matches.empty() ? nullptr : matches.back().get();
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
