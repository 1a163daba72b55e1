#include "Platform/Foundation/NSIndexSet.h"

#include "Platform/Foundation/NSException.h"

namespace quorvane {

namespace {

/// Indexes end below `NSNotFound`, so that it is never one.
void checkRange(NSRange range) {
    if (range.location > NSNotFound || range.length > NSNotFound - range.location)
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(u"Range %@ is outside of the indexes there are", range));
}

/// The first range that ends behind the index.
template <typename Ranges> auto rangeEndingBehind(Ranges &ranges, NSUInteger index) {
    return std::partition_point(ranges.begin(), ranges.end(),
                                [&](NSRange range) { return NSMaxRange(range) <= index; });
}

} // namespace

NSIndexSet::NSIndexSet(std::initializer_list<NSUInteger> indexes) {
    for (const NSUInteger index : indexes)
        addIndex(index);
}

NSIndexSet NSIndexSet::indexSetWithIndexesInRange(NSRange range) {
    NSIndexSet set;
    set.addIndexesInRange(range);
    return set;
}

void NSIndexSet::addIndexesInRange(NSRange range) {
    if (range.length == 0)
        return;
    checkRange(range);
    // Sets are mostly filled in order.
    if (_ranges.empty() || range.location > NSMaxRange(_ranges.back())) {
        _ranges.push_back(range);
        return;
    }
    if (range.location == NSMaxRange(_ranges.back())) {
        _ranges.back().length += range.length;
        return;
    }
    // All that the range overlaps or touches becomes one with it.
    const auto first = std::partition_point(
        _ranges.begin(), _ranges.end(), [&](NSRange other) { return NSMaxRange(other) < range.location; });
    auto last = first;
    for (; last != _ranges.end() && last->location <= NSMaxRange(range); ++last)
        range = NSUnionRange(range, *last);
    if (first == last) {
        _ranges.insert(first, range);
    } else {
        *first = range;
        _ranges.erase(first + 1, last);
    }
}

void NSIndexSet::removeIndexesInRange(NSRange range) {
    if (range.length == 0)
        return;
    checkRange(range);
    const auto first = rangeEndingBehind(_ranges, range.location);
    auto last = first;
    std::vector<NSRange> remains;
    for (; last != _ranges.end() && last->location < NSMaxRange(range); ++last) {
        if (last->location < range.location)
            remains.push_back({last->location, range.location - last->location});
        if (NSMaxRange(*last) > NSMaxRange(range))
            remains.push_back({NSMaxRange(range), NSMaxRange(*last) - NSMaxRange(range)});
    }
    const auto at = _ranges.erase(first, last);
    _ranges.insert(at, remains.begin(), remains.end());
}

void NSIndexSet::shiftIndexesStartingAtIndex(NSUInteger index, NSInteger delta) {
    std::vector<NSRange> moved;
    for (const NSRange range : _ranges) {
        const NSUInteger start = std::max(range.location, index);
        if (NSMaxRange(range) > start)
            moved.push_back({start, NSMaxRange(range) - start});
    }
    if (!moved.empty())
        removeIndexesInRange({index, NSMaxRange(moved.back()) - index});
    // Modulo its range, so that the lowest delta has a distance too.
    const NSUInteger distance =
        delta < 0 ? NSUInteger(0) - static_cast<NSUInteger>(delta) : static_cast<NSUInteger>(delta);
    if (delta < 0) {
        const NSUInteger places = std::min(distance, index);
        removeIndexesInRange({index - places, places});
    }
    for (const NSRange range : moved) {
        if (delta >= 0) {
            // What would move beyond the last index there is, is dropped.
            if (range.location < NSNotFound - distance)
                addIndexesInRange({range.location + distance,
                                   std::min(range.length, NSNotFound - distance - range.location)});
        } else if (NSMaxRange(range) > distance) {
            const NSUInteger start = std::max(range.location, distance);
            addIndexesInRange({start - distance, NSMaxRange(range) - start});
        }
    }
}

NSUInteger NSIndexSet::count() const {
    NSUInteger count = 0;
    for (const NSRange range : _ranges)
        count += range.length;
    return count;
}

bool NSIndexSet::containsIndex(NSUInteger index) const {
    const auto range = rangeEndingBehind(_ranges, index);
    return range != _ranges.end() && range->location <= index;
}

NSUInteger NSIndexSet::firstIndex() const { return _ranges.empty() ? NSNotFound : _ranges.front().location; }

NSUInteger NSIndexSet::lastIndex() const {
    return _ranges.empty() ? NSNotFound : NSMaxRange(_ranges.back()) - 1;
}

NSUInteger NSIndexSet::indexGreaterThanIndex(NSUInteger index) const {
    if (index >= NSNotFound)
        return NSNotFound;
    const auto range = rangeEndingBehind(_ranges, index + 1);
    return range == _ranges.end() ? NSNotFound : std::max(range->location, index + 1);
}

NSUInteger NSIndexSet::indexLessThanIndex(NSUInteger index) const {
    const auto behind = std::partition_point(_ranges.begin(), _ranges.end(),
                                             [&](NSRange range) { return range.location < index; });
    return behind == _ranges.begin() ? NSNotFound : std::min(NSMaxRange(*std::prev(behind)), index) - 1;
}

void NSIndexSet::enumerateIndexesUsingBlock(QVBlock<void(NSUInteger index, bool &stop)> block) const {
    bool stop = false;
    for (const NSRange range : _ranges) {
        for (NSUInteger index = range.location; index < NSMaxRange(range); ++index) {
            block(index, stop);
            if (stop)
                return;
        }
    }
}

} // namespace quorvane
