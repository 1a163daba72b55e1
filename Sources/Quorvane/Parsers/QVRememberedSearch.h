#pragma once

#include "Quorvane/RegularExpressions/QVRegularExpression.h"

namespace quorvane {

class QVRegularExpressionMatchContext;

/// The units that occur on a stretch of text: one bit for each unit below 255, the last bit for all others.
using QVUnitMask = std::array<std::uint64_t, 4>;

/// A line as the parser sees it: from some position on it to its contents' end, with its line ending.
struct QVParseLine {
    NSUInteger start = 0;
    NSUInteger contentsEnd = 0;
    /// Without a location where the text ends the line.
    NSRange newline = NSNotFoundRange;
    /// The units from `start` up to and including the one at `contentsEnd`.
    QVUnitMask units{};

    NSUInteger length() const { return contentsEnd - start; }
    bool hasNewline() const { return newline.location != NSNotFound; }
};

/// One pattern, and what its last search on the current line found. A hit found ahead stays the first hit
/// until the position passes its start, and a search that found nothing finds nothing further on; so a line
/// costs each pattern one search for each of its hits, however many regions start and end on it. Nothing is
/// remembered that would not be found again by searching: not for patterns that depend on where a search
/// began, not after an error.
class QVRememberedSearch {
public:
    explicit QVRememberedSearch(std::shared_ptr<const QVRegularExpression> expression);

    const QVRegularExpression &expression() const { return *_expression; }
    const std::shared_ptr<const QVRegularExpression> &sharedExpression() const { return _expression; }

    /// The first hit that starts at or behind `from`, which lies on the line, and ends on it; what an
    /// enumeration over the rest of the line would report first. `generation` numbers the states of the text.
    QVMatchingOutcome firstHitFrom(NSUInteger from, const QVParseLine &line, std::u16string_view text,
                                   std::uint64_t generation, QVRegularExpressionMatchContext &context,
                                   bool interpreted);

    /// Whether a hit may still start at or behind the position.
    bool canStartAtOrBehind(NSUInteger position, const QVParseLine &line) const {
        return position + _minimumLength <= line.contentsEnd;
    }

private:
    std::shared_ptr<const QVRegularExpression> _expression;
    const QVUnitMask *_firstUnits;
    NSUInteger _minimumLength;
    bool _canBeRemembered;

    std::uint64_t _generation = 0;
    NSUInteger _rangeEnd = 0;
    NSUInteger _searchedFrom = 0;
    QVMatchingOutcome _outcome;
};

} // namespace quorvane
