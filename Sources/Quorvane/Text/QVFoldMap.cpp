#include "Quorvane/Text/QVFoldMap.h"

namespace quorvane {

QVFoldMap::QVFoldMap(NSUInteger count, std::size_t foldsPerChunk)
    : _count(count), _folds(foldsPerChunk), _lengths(foldsPerChunk),
      _keeper(std::make_shared<QVTextFoldKeeper>(QVTextFoldKeeper{this})) {}

QVFoldMap::~QVFoldMap() {
    // Folds may outlive the view that they were made for.
    settle();
    _keeper->map = nullptr;
}

NSRange QVFoldMap::range(NSUInteger index) const {
    const auto at = _lengths.positionOfIndex(index);
    return {_lengths.location(at), _lengths.entry(at)};
}

const QVFoldMap::Fold &QVFoldMap::fold(NSUInteger index) const {
    settle(index);
    return _folds.entry(_folds.positionOfIndex(index));
}

NSUInteger QVFoldMap::firstFoldAtOrBehind(NSUInteger viewLocation) const {
    if (_folds.isEmpty())
        return 0;
    const auto at = _folds.positionOfLocation(viewLocation);
    return _folds.indexOfPosition(at) + (_folds.location(at) < viewLocation ? 1 : 0);
}

std::optional<NSUInteger> QVFoldMap::foldAt(NSUInteger viewLocation) const {
    if (_folds.isEmpty())
        return std::nullopt;
    const auto at = _folds.positionOfLocation(viewLocation);
    return _folds.location(at) == viewLocation ? std::optional(_folds.indexOfPosition(at)) : std::nullopt;
}

// MARK: - Converting

std::optional<NSUInteger> QVFoldMap::viewLocationForPosition(NSUInteger position, bool isBehindFolds) const {
    if (_folds.isEmpty())
        return position;
    const auto at = _lengths.positionOfLocation(position);
    const NSUInteger start = _lengths.location(at);
    const NSUInteger index = _lengths.indexOfPosition(at);
    const NSUInteger view = viewLocation(index);
    if (position < start)
        return view > 0 ? std::optional(position) : std::nullopt;
    const NSUInteger end = start + _lengths.entry(at);
    if (position == start)
        return view;
    if (position < end)
        return view + (isBehindFolds ? 1 : 0);
    const NSUInteger next = index + 1 < numberOfFolds() ? viewLocation(index + 1) : _count;
    if (position > end && next == view + 1)
        return std::nullopt;
    return view + 1 + (position - end);
}

NSUInteger QVFoldMap::positionForViewLocation(NSUInteger viewLocation) const {
    if (_folds.isEmpty())
        return viewLocation;
    const auto at = _folds.positionOfLocation(viewLocation);
    const NSUInteger view = _folds.location(at);
    if (viewLocation < view)
        return viewLocation;
    const NSRange hidden = range(_folds.indexOfPosition(at));
    return view == viewLocation ? hidden.location : NSMaxRange(hidden) + (viewLocation - view - 1);
}

// MARK: - Changes

void QVFoldMap::replace(NSRange viewRange, NSUInteger length, const std::vector<Item> &folds) {
    if (_folds.isEmpty() && folds.empty()) {
        _count += length - viewRange.length;
        return;
    }
    const NSUInteger first = firstFoldAtOrBehind(viewRange.location);
    const NSUInteger removed = firstFoldAtOrBehind(NSMaxRange(viewRange)) - first;
    for (NSUInteger index = first; index < first + removed; ++index)
        settle(index);
    std::vector<QVRunSequence<Fold>::Item> places;
    std::vector<QVRunSequence<NSUInteger>::Item> ranges;
    places.reserve(folds.size());
    ranges.reserve(folds.size());
    for (const Item &item : folds) {
        item.fold->_keeper = _keeper;
        places.push_back({item.viewLocation, item.fold});
        ranges.push_back({item.range.location, item.range.length});
    }
    // Modulo the range of positions, so that what gets shorter shifts down.
    const NSUInteger change = length - viewRange.length;
    if (removed == 0 && folds.empty()) {
        if (first < numberOfFolds())
            _folds.shift(_folds.positionOfIndex(first), change);
    } else {
        _folds.replace(_folds.positionOfIndex(first), removed, places, change);
        _lengths.replace(_lengths.positionOfIndex(first), removed, ranges, 0);
    }
    _count += change;
}

void QVFoldMap::moveFoldsFrom(NSUInteger index, NSInteger changeInLength) {
    if (index >= numberOfFolds() || changeInLength == 0)
        return;
    _lengths.shift(_lengths.positionOfIndex(index), static_cast<NSUInteger>(changeInLength));
    _isUnsettled = true;
}

void QVFoldMap::changeTextOfFold(NSUInteger index, NSRange range, NSInteger changeInLength) {
    fold(index)->textChangedInRange(range, changeInLength);
    _lengths.entry(_lengths.positionOfIndex(index)) += static_cast<NSUInteger>(changeInLength);
    moveFoldsFrom(index + 1, changeInLength);
}

void QVFoldMap::settle(NSUInteger index) const {
    if (!_isUnsettled)
        return;
    QVTextFoldAttachment &fold = *_folds.entry(_folds.positionOfIndex(index));
    const NSUInteger distance = _lengths.location(_lengths.positionOfIndex(index)) - fold._range.location;
    // All edits before it are as one at the text's front.
    if (distance != 0)
        fold.textChangedInRange({0, 0}, static_cast<NSInteger>(distance));
}

void QVFoldMap::settle() const {
    if (!_isUnsettled)
        return;
    for (NSUInteger index = 0; index < numberOfFolds(); ++index)
        settle(index);
    _isUnsettled = false;
}

bool QVFoldMap::isSound() const {
    if (!_folds.isConsistent() || !_lengths.isConsistent() || _folds.count() != _lengths.count())
        return false;
    settle();
    for (NSUInteger index = 0; index < numberOfFolds(); ++index) {
        const NSRange hidden = range(index);
        if (viewLocation(index) >= _count || hidden.length == 0 || fold(index)->_range != hidden)
            return false;
        if (index == 0 ? viewLocation(index) != hidden.location
                       : viewLocation(index) - viewLocation(index - 1) - 1 !=
                             hidden.location - NSMaxRange(range(index - 1)))
            return false;
    }
    return true;
}

} // namespace quorvane
