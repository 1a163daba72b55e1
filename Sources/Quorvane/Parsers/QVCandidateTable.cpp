#include "Quorvane/Parsers/QVCandidateTable.h"

#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/RegularExpressions/QVWordList.h"
#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

namespace {

constexpr char16_t lowerCase(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 0x20) : unit;
}

constexpr std::uint32_t lengthBit(std::size_t length) { return 1u << std::min<std::size_t>(length, 31); }

bool holds(const QVUnitMask &mask, unsigned unit) { return ((mask[unit >> 6] >> (unit & 63)) & 1) != 0; }

} // namespace

std::size_t QVCandidateTable::TextHash::operator()(std::u16string_view text) const {
    std::uint64_t hash = text.size();
    for (const char16_t unit : text)
        hash = (hash ^ unit) * 0x9E3779B97F4A7C15u;
    return static_cast<std::size_t>(hash ^ (hash >> 32));
}

bool QVCandidateTable::canHold(const QVScope &scope, const QVRegularExpression &expression) {
    const QVScopeType type = scope.type();
    if (type != QVScopeTypeMatch && type != QVScopeTypeStartEnd && type != QVScopeTypeCutoff)
        return false;
    // What sometimes has a length has a chain of hits that can't be followed from place to place; and a
    // single match without one is reported wherever it is found.
    const bool isOnlyLooking = type != QVScopeTypeMatch && expression.matchesEmptyTextAlone();
    return (isOnlyLooking || !expression.canMatchEmptyText()) && QVCombinedExpression::canCombine(expression);
}

QVCandidateTable::QVCandidateTable(std::vector<Pattern> patterns) : _patterns(std::move(patterns)) {
    for (std::uint32_t index = 0; index < _patterns.size(); ++index) {
        const QVRegularExpression &expression = _patterns[index].search->expression();
        if (expression.wordList())
            addWords(index);
        _looksAtLineEnds |= expression.matchesEmptyTextAlone();
        _scopes.insert(_patterns[index].scope);
    }
    makeClasses();
}

void QVCandidateTable::addWords(std::uint32_t index) {
    const QVWordList &list = *_patterns[index].search->expression().wordList();
    for (const NSString &word : list.words()) {
        (list.isCaseInsensitive() ? _foldedWords : _words)[std::u16string(word.view())].push_back(index);
        const char16_t first = word.characterAtIndex(0);
        _wordLengths[first] |= lengthBit(word.length());
        if (list.isCaseInsensitive() && first >= u'a' && first <= u'z')
            _wordLengths[static_cast<std::size_t>(first - 0x20)] |= lengthBit(word.length());
    }
}

void QVCandidateTable::makeClasses() {
    // Units that begin the same patterns end up with the same number: each pattern in turn takes those of its
    // units that had one number out under a new one. The last place is the text's end.
    constexpr unsigned textEnd = 256;
    std::array<std::uint16_t, textEnd + 1> numbers{};
    std::vector<std::uint16_t> taken(1, 0);
    const auto takeOut = [&](auto isMember) {
        std::fill(taken.begin(), taken.end(), std::uint16_t(0));
        for (unsigned unit = 0; unit <= textEnd; ++unit) {
            if (!isMember(unit))
                continue;
            const std::uint16_t number = numbers[unit];
            if (taken[number] == 0) {
                taken[number] = static_cast<std::uint16_t>(taken.size());
                taken.push_back(0);
            }
            numbers[unit] = taken[number];
        }
    };
    const auto begins = [](const QVRegularExpression &expression, unsigned unit) {
        const QVUnitMask *const first = expression.firstUnits();
        return first == nullptr || (unit != textEnd && holds(*first, unit));
    };
    const auto beginsWords = [this](unsigned unit) { return unit < 128 && _wordLengths[unit] != 0; };
    for (const Pattern &pattern : _patterns) {
        const QVRegularExpression &expression = pattern.search->expression();
        if (!expression.wordList() && expression.firstUnits() != nullptr)
            takeOut([&](unsigned unit) { return begins(expression, unit); });
    }
    takeOut(beginsWords);

    _groups.emplace_back();
    constexpr std::uint16_t unknown = 0xFFFF;
    std::vector<std::uint16_t> groups(taken.size(), unknown);
    for (unsigned unit = 0; unit <= textEnd; ++unit) {
        std::uint16_t &group = groups[numbers[unit]];
        if (group == unknown) {
            std::vector<std::uint32_t> patterns;
            for (std::uint32_t index = 0; index < _patterns.size(); ++index) {
                const QVRegularExpression &expression = _patterns[index].search->expression();
                if (!expression.wordList() && begins(expression, unit))
                    patterns.push_back(index);
            }
            const bool isEmpty = patterns.empty() && !beginsWords(unit);
            group = isEmpty ? 0 : static_cast<std::uint16_t>(_groups.size());
            if (!isEmpty)
                _groups.push_back({std::move(patterns), beginsWords(unit), 0, false, nullptr});
        }
        (unit == textEnd ? _classAtTextEnd : _classes[unit]) = group;
    }
}

/// Whether a match can have the length: the matcher may see one that a table has no use for.
bool QVCandidateTable::isOfLength(std::uint32_t index, NSUInteger length) const {
    return (length == 0) == _patterns[index].search->expression().matchesEmptyTextAlone();
}

QVCandidateTable::Answer QVCandidateTable::askOne(std::uint32_t index, NSUInteger location,
                                                  const QVSearchContext &context) {
    const QVMatchingOutcome outcome = _patterns[index].search->expression().directSearchInCharacters(
        context.text.data(), context.text.size(), {location, 0}, context.matchContext, false);
    if (outcome.kind == QVMatchingOutcome::Error || outcome.fellBack)
        return {Answer::Unknown};
    // The range that was searched has no length, so that each match of some length leaves it.
    if (outcome.kind == QVMatchingOutcome::Finished)
        return {};
    if (outcome.range.location != location || !isOfLength(index, outcome.range.length))
        return {Answer::Unknown};
    return {Answer::Found, index, NSMaxRange(outcome.range), outcome.matchNumber, 0};
}

QVCandidateTable::Answer QVCandidateTable::askPatterns(Class &group, NSUInteger location,
                                                       const QVSearchContext &context) {
    if (group.patterns.empty())
        return {};
    if (!group.isCombined && group.patterns.size() > 1 && ++group.timesAsked > timesAskedBeforeCombining) {
        std::vector<std::shared_ptr<const QVRegularExpression>> expressions;
        for (const std::uint32_t index : group.patterns)
            expressions.push_back(_patterns[index].search->sharedExpression());
        group.combined = QVCombinedExpression::combinedExpressionForExpressions(expressions);
        group.isCombined = true;
    }
    if (group.combined) {
        const auto answer = group.combined->matchAtLocation(location, context.text, context.matchContext);
        if (answer.index == QVCombinedExpression::noExpression)
            return {};
        if (answer.index == QVCombinedExpression::unknownExpression)
            return {Answer::Unknown};
        const std::uint32_t index = group.patterns[static_cast<std::size_t>(answer.index)];
        return {isOfLength(index, answer.end - location) ? Answer::Found : Answer::Unknown, index, answer.end,
                context.matchContext.matchNumber(), answer.groupsBefore};
    }
    for (const std::uint32_t index : group.patterns)
        if (const Answer answer = askOne(index, location, context); answer.kind != Answer::Nothing)
            return answer;
    return {};
}

QVCandidateTable::Answer QVCandidateTable::askWords(const Words &words, std::u16string_view run,
                                                    NSUInteger location, std::uint32_t limit,
                                                    const QVSearchContext &context) {
    const auto found = words.find(run);
    if (found != words.end())
        for (const std::uint32_t index : found->second) {
            if (index >= limit)
                break;
            // What stands around the words may ask for more.
            if (const Answer answer = askOne(index, location, context); answer.kind != Answer::Nothing)
                return answer;
        }
    return {};
}

QVCandidateTable::Answer QVCandidateTable::askWords(NSUInteger location, std::uint32_t limit,
                                                    const QVSearchContext &context) {
    const std::u16string_view text = context.text;
    if (!QVIsWordUnit(text[location]) || (location > 0 && QVIsWordUnit(text[location - 1])))
        return {};
    NSUInteger end = location + 1;
    while (end < text.size() && QVIsWordUnit(text[end]))
        ++end;
    const std::u16string_view run = text.substr(location, end - location);
    if ((_wordLengths[run.front()] & lengthBit(run.size())) == 0)
        return {};
    Answer answer = askWords(_words, run, location, limit, context);
    if (_foldedWords.empty() || answer.kind == Answer::Unknown)
        return answer;
    std::u16string folded(run);
    std::transform(folded.begin(), folded.end(), folded.begin(), lowerCase);
    const Answer other = askWords(_foldedWords, folded, location,
                                  answer.kind == Answer::Found ? answer.index : limit, context);
    return other.kind == Answer::Nothing ? answer : other;
}

QVCandidateTable::Answer QVCandidateTable::answerAtLocation(NSUInteger location,
                                                            const QVSearchContext &context) {
    const bool isTextEnd = location == context.text.size();
    const char16_t unit = isTextEnd ? u'\0' : context.text[location];
    Class &group = _groups[isTextEnd ? _classAtTextEnd : _classes[unit < 255 ? unit : 255]];
    const Answer answer = askPatterns(group, location, context);
    if (!group.hasWords || answer.kind == Answer::Unknown)
        return answer;
    const auto limit =
        answer.kind == Answer::Found ? answer.index : static_cast<std::uint32_t>(_patterns.size());
    const Answer word = askWords(location, limit, context);
    return word.kind == Answer::Nothing ? answer : word;
}

QVLineWalk::Result QVLineWalk::find(NSUInteger open, NSUInteger last) {
    // A region that was entered from here may have walked with the same table.
    if (_table.currentWalk() != _walk)
        return Unknown;
    if (_hit.location != NSNotFound && _hit.location >= open)
        return _hit.location <= last ? Found : Nothing;
    _hit = NSNotFoundRange;
    _position = std::max(_position, open);
    const char16_t *const characters = _context.text.data();
    for (; _position < _line.contentsEnd && _position <= last; ++_position)
        if (!_table.canPass(characters[_position]))
            if (const Result result = tryPosition(); result != Nothing)
                return result;
    if (_position == _line.contentsEnd && _position <= last && _table.looksAtLineEnds()) {
        const Result result = tryPosition();
        // The line ending holds its place against everything but the region's end.
        if (result != Found || !_line.hasNewline() || pattern().isEnd)
            return result;
        _hit = NSNotFoundRange;
    }
    return Nothing;
}

QVLineWalk::Result QVLineWalk::tryPosition() {
    const auto answer = _table.answerAtLocation(_position, _context);
    if (answer.kind == QVCandidateTable::Answer::Nothing)
        return Nothing;
    if (answer.kind == QVCandidateTable::Answer::Unknown || answer.end > _line.contentsEnd)
        return Unknown;
    // What only looks hits wherever it matches.
    if (answer.end != _position && !isChainFree(_table.patternAtIndex(answer.index), _position))
        return Unknown;
    _index = answer.index;
    _hit = {_position, answer.end - _position};
    _matchNumber = answer.matchNumber;
    _groupsBefore = answer.groupsBefore;
    return Found;
}

bool QVLineWalk::isChainFree(QVCandidateTable::Pattern &pattern, NSUInteger at) {
    if (pattern.walk != _walk) {
        pattern.walk = _walk;
        pattern.chain = _line.start;
        pattern.covered = 0;
    }
    const QVRegularExpression &expression = pattern.search->expression();
    if (const QVWordList *const words = expression.wordList())
        return isChainOfWordsFree(pattern, *words);
    // In the gaps between covered stretches nothing hits at all, so that one search may go over several.
    for (NSUInteger from; (from = nextDoubtfulPlace(pattern)) != NSNotFound;) {
        const QVMatchingOutcome outcome = expression.directSearchInCharacters(
            _context.text.data(), _context.text.size(), {from, at - 1 - from}, _context.matchContext, false);
        if (outcome.fellBack || outcome.kind == QVMatchingOutcome::Error)
            return false;
        if (outcome.kind == QVMatchingOutcome::Finished) {
            pattern.covered = static_cast<std::uint32_t>(_covered.size());
            return true;
        }
        pattern.chain = NSMaxRange(outcome.range);
        if (outcome.range.length == 0 || pattern.chain > at)
            return false;
    }
    return pattern.chain <= at;
}

bool QVLineWalk::isChainOfWordsFree(QVCandidateTable::Pattern &pattern, const QVWordList &words) const {
    const std::u16string_view text = _context.text;
    for (; pattern.covered < _covered.size(); ++pattern.covered) {
        // Only a word that a covered stretch has cut can reach beyond it.
        const NSRange stretch = _covered[pattern.covered];
        const NSUInteger end = NSMaxRange(stretch);
        if (end == text.size() || !QVIsWordUnit(text[end - 1]) || !QVIsWordUnit(text[end]))
            continue;
        NSUInteger first = end - 1;
        while (first > 0 && QVIsWordUnit(text[first - 1]))
            --first;
        NSUInteger behind = end;
        while (behind < text.size() && QVIsWordUnit(text[behind]))
            ++behind;
        if (first >= stretch.location && words.containsRun(text.substr(first, behind - first)))
            return false;
    }
    return true;
}

NSUInteger QVLineWalk::nextDoubtfulPlace(QVCandidateTable::Pattern &pattern) const {
    const QVRegularExpression &expression = pattern.search->expression();
    const char16_t *const characters = _context.text.data();
    for (; pattern.covered < _covered.size(); ++pattern.covered) {
        const NSRange stretch = _covered[pattern.covered];
        const NSUInteger end = NSMaxRange(stretch);
        for (NSUInteger place = std::max(stretch.location, pattern.chain); place < end; ++place)
            if (expression.canStartWithUnit(characters[place]))
                return place;
    }
    return NSNotFound;
}

void QVLineWalk::cover(NSRange range) {
    if (range.length != 0)
        _covered.push_back(range);
}

void QVLineWalk::take() {
    cover(_hit);
    QVCandidateTable::Pattern &pattern = _table.patternAtIndex(_index);
    pattern.chain = NSMaxRange(_hit);
    pattern.covered = static_cast<std::uint32_t>(_covered.size());
}

} // namespace quorvane
