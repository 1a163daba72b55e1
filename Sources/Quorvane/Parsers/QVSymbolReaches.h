#pragma once

#include "Platform/Foundation/NSRange.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace quorvane {

/// How far the contexts of indented lines were looked for, for stretches of a parse's list of symbols: which
/// of them an edit concerns can't be told by where they begin. Whoever changes the list tells this of it; an
/// edit costs a few numbers for each stretch. Private to the parse.
class QVSymbolReaches {
public:
    /// Symbols of a full stretch; one of more than twice as many is cut.
#if defined(QUORVANE_VERIFY)
    // Small, so that short lists have many.
    static constexpr std::size_t stretchSize = 4;
#else
    static constexpr std::size_t stretchSize = 256;
#endif

    void clear() { _stretches.clear(); }
    /// Symbols came and went in the list.
    void replace(std::size_t index, std::size_t removed, std::size_t added);
    /// The context at an index of the list was looked for up to a location.
    void raise(std::size_t index, NSUInteger reach);

    /// Visits, from the front, the stretches that begin before an index of the list and reach up to a
    /// location or behind it, with their part of the list. What the visit answers becomes the stretch's
    /// reach. The other stretches that reach there move by a distance, which is negative by wrapping around.
    template <typename Visit>
    void update(NSUInteger location, NSUInteger distance, std::size_t endIndex, Visit visit) {
        std::size_t index = 0;
        for (Stretch &stretch : _stretches) {
            const std::size_t first = index;
            index += stretch.count;
            if (stretch.reach == 0 || stretch.reach < location)
                continue;
            stretch.reach = first < endIndex ? visit(first, index) : stretch.reach + distance;
        }
    }

    /// The list's count, for the verify mode.
    std::size_t count() const {
        std::size_t sum = 0;
        for (const Stretch &stretch : _stretches)
            sum += stretch.count;
        return sum;
    }

private:
    struct Stretch {
        std::size_t count;
        /// Never less than what the furthest context was looked at; 0 without one.
        NSUInteger reach;
    };
    /// The stretch that holds an index, or the last one; there must be one.
    std::size_t stretchAt(std::size_t index);
    void cutIfLarge(std::size_t stretch);

    std::vector<Stretch> _stretches;
    /// A stretch and the index of its first symbol, for whoever goes along the list.
    std::size_t _lastStretch = 0;
    std::size_t _lastFirst = 0;
};

} // namespace quorvane
