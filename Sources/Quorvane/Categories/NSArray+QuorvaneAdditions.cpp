#include "Quorvane/Categories/NSArray+QuorvaneAdditions.h"

namespace quorvane {

namespace {

bool merge(NSRange a, NSRange b) {
    if (a.location == b.location && a.length == 0)
        return true;
    if (a.length == 0)
        return false;
    // Sorted by location, so that reaching b's location is all there is to check.
    return b.location <= NSMaxRange(a);
}

} // namespace

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
        if (merge(sorted[kept], sorted[next]))
            sorted[kept] = NSUnionRange(sorted[kept], sorted[next]);
        else
            sorted[++kept] = sorted[next];
    }
    if (!sorted.empty())
        sorted.resize(kept + 1);
    return sorted;
}

} // namespace quorvane
