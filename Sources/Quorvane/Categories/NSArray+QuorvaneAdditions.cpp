#include "Quorvane/Categories/NSArray+QuorvaneAdditions.h"

namespace quorvane {

bool QVShouldMergeSortedRanges(NSRange first, NSRange second) {
    if (first.length == 0)
        return first.location == second.location;
    // Sorted by location, so that reaching the second one's location is all there is to check.
    return second.location <= NSMaxRange(first);
}

void QVCheckListRange(NSRange range, NSUInteger count) {
    if (range.location > count || range.length > count - range.location)
        throw NSException(
            NSRangeException,
            NSString::stringWithFormat(u"Range %@ is outside of a list of %lu objects", range, count));
}

std::vector<NSRange> qv_sortedRangesForRanges(std::span<const NSRange> ranges) {
    std::vector<NSRange> sorted(ranges.begin(), ranges.end());
    std::sort(sorted.begin(), sorted.end(), [](NSRange a, NSRange b) { return a.location < b.location; });
    std::size_t kept = 0;
    for (std::size_t next = 1; next < sorted.size(); ++next) {
        if (QVShouldMergeSortedRanges(sorted[kept], sorted[next]))
            sorted[kept] = NSUnionRange(sorted[kept], sorted[next]);
        else
            sorted[++kept] = sorted[next];
    }
    if (!sorted.empty())
        sorted.resize(kept + 1);
    return sorted;
}

} // namespace quorvane
