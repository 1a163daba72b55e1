#include "Quorvane/Parsers/QVRememberedSearch.h"

#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/RegularExpressions/QVWordList.h"

namespace quorvane {

const std::vector<NSRange> &QVLineWords::runsOnLine(const QVParseLine &line, std::u16string_view text,
                                                    std::uint64_t generation) {
    if (_generation == generation && _contentsEnd == line.contentsEnd && line.start >= _start)
        return _runs;
    _generation = generation;
    _start = line.start;
    _contentsEnd = line.contentsEnd;
    _runs.clear();
    NSUInteger position = line.start;
    // A run that began before is no whole one.
    if (position > 0 && QVIsWordUnit(text[position - 1]))
        while (position < line.contentsEnd && QVIsWordUnit(text[position]))
            ++position;
    while (position < line.contentsEnd) {
        if (!QVIsWordUnit(text[position])) {
            ++position;
            continue;
        }
        NSUInteger end = position + 1;
        while (end < text.size() && QVIsWordUnit(text[end]))
            ++end;
        _runs.push_back({position, end - position});
        position = end;
    }
    return _runs;
}

QVRememberedSearch::QVRememberedSearch(std::shared_ptr<const QVRegularExpression> expression)
    : _expression(std::move(expression)), _firstUnits(_expression->firstUnits()),
      _minimumLength(_expression->minimumLength()), _canBeRemembered(_expression->canBeRemembered()),
      _startsAtLineStartsAlone(_expression->startsAtLineStartsAlone()) {}

const QVMatchingOutcome &QVRememberedSearch::search(NSUInteger from, const QVParseLine &line,
                                                    const QVSearchContext &context, bool interpreted) {
    const NSUInteger searchedFrom = from;
    bool ruledOut = !canStartAtOrBehind(from, line) || !canStartOnLine(line) ||
                    (_startsAtLineStartsAlone && !line.mayStartLineFrom(from));
    // Beyond plain text, letters have partners in other scripts that a list does not know.
    if (const QVWordList *const words = _expression->wordList();
        !ruledOut && words && _canBeRemembered && line.isPlain()) {
        const auto &runs = context.words.runsOnLine(line, context.text, context.generation);
        auto run = std::lower_bound(runs.begin(), runs.end(), from, [](NSRange range, NSUInteger location) {
            return range.location < location;
        });
        while (run != runs.end() && !words->containsRun(context.text.substr(run->location, run->length)))
            ++run;
        if (run == runs.end())
            ruledOut = true;
        else
            from = run->location;
    }
    _outcome = ruledOut ? QVMatchingOutcome()
                        : _expression->directSearchInCharacters(context.text.data(), context.text.size(),
                                                                {from, line.contentsEnd - from},
                                                                context.matchContext, interpreted);
    const bool remembers = _canBeRemembered && !interpreted &&
                           QVRegularExpression::isSearchBoundary(context.text.data(), searchedFrom) &&
                           _outcome.kind != QVMatchingOutcome::Error && !_outcome.fellBack;
    _generation = remembers ? context.generation : 0;
    _rangeEnd = line.contentsEnd;
    _searchedFrom = searchedFrom;
    return _outcome;
}

} // namespace quorvane
