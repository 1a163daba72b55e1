#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace quorvane {

using NSUInteger = std::uint64_t;
using NSInteger = std::int64_t;

/// "None" wherever a position, an index or a count may be missing: the largest signed 64-bit value, so that
/// it survives a trip through signed arithmetic.
inline constexpr NSUInteger NSNotFound = static_cast<NSUInteger>(std::numeric_limits<NSInteger>::max());

/// A stretch of text in UTF-16 code units. A location of `NSNotFound` means that there is none.
struct NSRange {
    NSUInteger location = 0;
    NSUInteger length = 0;

    friend constexpr bool operator==(const NSRange &, const NSRange &) = default;
};

/// The range that stands for "nothing found".
inline constexpr NSRange NSNotFoundRange{NSNotFound, 0};

constexpr NSRange NSMakeRange(NSUInteger location, NSUInteger length) { return {location, length}; }

/// The first position behind the range.
constexpr NSUInteger NSMaxRange(NSRange range) { return range.location + range.length; }

/// Whether the position lies in the range; its end does not.
constexpr bool NSLocationInRange(NSUInteger location, NSRange range) {
    return location >= range.location && location - range.location < range.length;
}

constexpr bool NSEqualRanges(NSRange a, NSRange b) { return a == b; }

/// The smallest range that holds both; gaps between them are included and empty ranges count.
constexpr NSRange NSUnionRange(NSRange a, NSRange b) {
    const NSUInteger location = std::min(a.location, b.location);
    return {location, std::max(NSMaxRange(a), NSMaxRange(b)) - location};
}

/// What both have in common, `{0, 0}` where that is nothing.
constexpr NSRange NSIntersectionRange(NSRange a, NSRange b) {
    const NSUInteger location = std::max(a.location, b.location);
    const NSUInteger end = std::min(NSMaxRange(a), NSMaxRange(b));
    return end > location ? NSRange{location, end - location} : NSRange{0, 0};
}

} // namespace quorvane
