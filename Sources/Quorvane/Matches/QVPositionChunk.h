#pragma once

#include "Platform/Foundation/NSRange.h"

#include <cstdint>

namespace quorvane {

class QVMatchPositions;

/// What the places of a run of matches share. A match stores its place relative to its chunk and that one's
/// group; so an edit moves all that follows it by changing a number for each later group, for each later
/// chunk of one group, and for the rest of one chunk's matches. `QVMatchPositions` keeps both in order.
struct QVPositionGroup {
    /// Sums wrap, as differences may be negative.
    NSUInteger offset = 0;
    /// Null for the one of absolute places.
    QVMatchPositions *positions = nullptr;
};

struct QVPositionChunk {
    NSUInteger offset = 0;
    QVPositionGroup *group = nullptr;
    /// How many places it has, and where it stands in its group.
    std::uint32_t count = 0;
    std::uint32_t index = 0;

    /// The chunk of matches that stand in no tree with positions. Nothing ever writes to it.
    static QVPositionChunk absolute;

    NSUInteger shift() const { return offset + group->offset; }
    /// What has no place is not moved.
    NSRange placeOfStored(NSRange stored) const {
        return {stored.location == NSNotFound ? NSNotFound : stored.location + shift(), stored.length};
    }
    NSRange storedOfPlace(NSRange place) const {
        return {place.location == NSNotFound ? NSNotFound : place.location - shift(), place.length};
    }
};

} // namespace quorvane
