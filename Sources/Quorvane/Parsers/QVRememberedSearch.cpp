#include "Quorvane/Parsers/QVRememberedSearch.h"

#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"

namespace quorvane {

QVRememberedSearch::QVRememberedSearch(std::shared_ptr<const QVRegularExpression> expression)
    : _expression(std::move(expression)), _firstUnits(_expression->firstUnits()),
      _minimumLength(_expression->minimumLength()), _canBeRemembered(_expression->canBeRemembered()) {}

QVMatchingOutcome QVRememberedSearch::firstHitFrom(NSUInteger from, const QVParseLine &line,
                                                   std::u16string_view text, std::uint64_t generation,
                                                   QVRegularExpressionMatchContext &context,
                                                   bool interpreted) {
    // From within a pair or behind half a character the matcher tries places that no search from before
    // would.
    const bool remembers =
        _canBeRemembered && !interpreted && QVRegularExpression::isSearchBoundary(text.data(), from);
    if (remembers && _generation == generation && _rangeEnd == line.contentsEnd && from >= _searchedFrom &&
        (_outcome.kind == QVMatchingOutcome::Finished || from <= _outcome.range.location))
        return _outcome;

    QVMatchingOutcome outcome;
    const bool ruledOut = !canStartAtOrBehind(from, line) ||
                          (_firstUnits != nullptr &&
                           (((*_firstUnits)[0] & line.units[0]) | ((*_firstUnits)[1] & line.units[1]) |
                            ((*_firstUnits)[2] & line.units[2]) | ((*_firstUnits)[3] & line.units[3])) == 0);
    if (!ruledOut)
        outcome = _expression->directSearchInCharacters(
            text.data(), text.size(), {from, line.contentsEnd - from}, context, interpreted);
    if (remembers && outcome.kind != QVMatchingOutcome::Error && !outcome.fellBack) {
        _generation = generation;
        _rangeEnd = line.contentsEnd;
        _searchedFrom = from;
        _outcome = outcome;
    } else {
        _generation = 0;
    }
    return outcome;
}

} // namespace quorvane
