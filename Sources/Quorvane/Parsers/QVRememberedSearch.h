#pragma once

#include "Quorvane/RegularExpressions/QVRegularExpression.h"

namespace quorvane {

class QVRegularExpressionMatchContext;

/// The units that occur on a stretch of text: one bit for each unit below 255, the last bit for all others.
using QVUnitMask = std::array<std::uint64_t, 4>;

inline bool QVUnitMasksMeet(const QVUnitMask &a, const QVUnitMask &b) {
    return ((a[0] & b[0]) | (a[1] & b[1]) | (a[2] & b[2]) | (a[3] & b[3])) != 0;
}

/// A line as the parser sees it: from some position on it to its contents' end, with its line ending.
struct QVParseLine {
    NSUInteger start = 0;
    NSUInteger contentsEnd = 0;
    /// Without a location where the text ends the line.
    NSRange newline = NSNotFoundRange;
    /// The units from `start` up to and including the one at `contentsEnd`.
    QVUnitMask units{};
    /// Whether there are surrogates among them. Beside half a character, and within a pair, where a search
    /// may begin behind an empty hit, patterns take steps of their own.
    bool hasSurrogates = false;
    /// Whether patterns see a line's start at `start`; whether they may see more of them behind it, for they
    /// know other line endings too.
    bool startsLine = true;
    bool holdsLineStarts = false;

    NSUInteger length() const { return contentsEnd - start; }
    bool hasNewline() const { return newline.location != NSNotFound; }
    /// Whether all units are below 255.
    bool isPlain() const { return (units[3] >> 63) == 0; }
    /// Whether a pattern that asks for a line's start may match from the location on.
    bool mayStartLineFrom(NSUInteger location) const {
        return holdsLineStarts || (startsLine && location == start);
    }
};

/// The whole runs of word units on the current line, found once for all word lists.
class QVLineWords {
public:
    /// The runs that start on the line. `generation` numbers the states of the text.
    const std::vector<NSRange> &runsOnLine(const QVParseLine &line, std::u16string_view text,
                                           std::uint64_t generation);

private:
    std::uint64_t _generation = 0;
    NSUInteger _start = 0;
    NSUInteger _contentsEnd = 0;
    std::vector<NSRange> _runs;
};

/// What searches on one state of a text share.
struct QVSearchContext {
    std::u16string_view text;
    /// Numbers the states of the text, from 1.
    std::uint64_t generation;
    QVRegularExpressionMatchContext &matchContext;
    QVLineWords &words;
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
    /// enumeration over the rest of the line would report first. Good until the next call.
    const QVMatchingOutcome &firstHitFrom(NSUInteger from, const QVParseLine &line,
                                          const QVSearchContext &context, bool interpreted) {
        // From within a pair or behind half a character the matcher tries places that no search from before
        // would.
        if (_generation == context.generation && _rangeEnd == line.contentsEnd && from >= _searchedFrom &&
            (_outcome.kind == QVMatchingOutcome::Finished || from <= _outcome.range.location) &&
            !interpreted && QVRegularExpression::isSearchBoundary(context.text.data(), from)) [[likely]]
            return _outcome;
        return search(from, line, context, interpreted);
    }

    /// Whether nothing starts on the line from its start on, as far as is known.
    bool isExhausted(const QVParseLine &line, std::uint64_t generation) const {
        return (_startsAtLineStartsAlone && !line.mayStartLineFrom(line.start)) ||
               (_generation == generation && _rangeEnd == line.contentsEnd && _searchedFrom <= line.start &&
                _outcome.kind == QVMatchingOutcome::Finished);
    }
    /// Whether a hit may still start at or behind the position. Going back over half a character the matcher
    /// can take fewer units than the pattern has characters.
    bool canStartAtOrBehind(NSUInteger position, const QVParseLine &line) const {
        return line.hasSurrogates || position + _minimumLength <= line.contentsEnd;
    }
    /// Whether a hit can start on the line at all.
    bool canStartOnLine(const QVParseLine &line) const {
        return (!_startsAtLineStartsAlone || line.mayStartLineFrom(line.start)) &&
               (_firstUnits == nullptr || QVUnitMasksMeet(*_firstUnits, line.units));
    }

private:
    const QVMatchingOutcome &search(NSUInteger from, const QVParseLine &line, const QVSearchContext &context,
                                    bool interpreted);

    std::shared_ptr<const QVRegularExpression> _expression;
    const QVUnitMask *_firstUnits;
    NSUInteger _minimumLength;
    bool _canBeRemembered;
    bool _startsAtLineStartsAlone;

    /// 0 where nothing is remembered.
    std::uint64_t _generation = 0;
    NSUInteger _rangeEnd = 0;
    NSUInteger _searchedFrom = 0;
    QVMatchingOutcome _outcome;
};

} // namespace quorvane
