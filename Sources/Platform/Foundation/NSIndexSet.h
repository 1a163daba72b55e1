#pragma once

#include "Platform/Foundation/NSRange.h"
#include "Platform/Foundation/QVBlock.h"
#include "Platform/Foundation/QVExport.h"

#include <initializer_list>
#include <vector>

namespace quorvane {

/// A sorted set of indexes, kept as ranges that neither touch nor overlap. A value.
class QV_EXPORT NSIndexSet {
public:
    NSIndexSet() = default;
    NSIndexSet(std::initializer_list<NSUInteger> indexes);
    static NSIndexSet indexSetWithIndexesInRange(NSRange range);

    void addIndex(NSUInteger index) { addIndexesInRange({index, 1}); }
    void addIndexesInRange(NSRange range);
    void removeIndex(NSUInteger index) { removeIndexesInRange({index, 1}); }
    void removeIndexesInRange(NSRange range);
    void removeAllIndexes() { _ranges.clear(); }
    /// Moves all indexes at or behind `index` by `delta`; moving down drops the indexes in the `-delta`
    /// places before `index`.
    void shiftIndexesStartingAtIndex(NSUInteger index, NSInteger delta);

    bool isEmpty() const { return _ranges.empty(); }
    NSUInteger count() const;
    bool containsIndex(NSUInteger index) const;
    /// `NSNotFound` where there is none.
    NSUInteger firstIndex() const;
    NSUInteger lastIndex() const;
    NSUInteger indexGreaterThanIndex(NSUInteger index) const;
    NSUInteger indexLessThanIndex(NSUInteger index) const;
    void enumerateIndexesUsingBlock(QVBlock<void(NSUInteger index, bool &stop)> block) const;
    /// The maximal ranges, in order.
    const std::vector<NSRange> &ranges() const { return _ranges; }

    friend bool operator==(const NSIndexSet &, const NSIndexSet &) = default;

private:
    std::vector<NSRange> _ranges;
};

} // namespace quorvane
