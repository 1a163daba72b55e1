#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/RegularExpressions/PCRE2.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"

namespace quorvane {

namespace {

/// The stack that a compiled pattern gets once its first, small one is used up. It belongs to one
/// enumeration, so that a shared context never keeps it.
class JITStack {
public:
    explicit JITStack(pcre2_match_context_16 *context) : _context(context) {}
    ~JITStack() { release(); }
    JITStack(const JITStack &) = delete;
    JITStack &operator=(const JITStack &) = delete;

    bool exists() const { return _stack != nullptr; }
    bool create() {
        _stack = pcre2_jit_stack_create_16(limits::patternStackBytesAtStart, limits::patternStackBytesAtMost,
                                           nullptr);
        if (_stack != nullptr)
            pcre2_jit_stack_assign_16(_context, nullptr, _stack);
        return _stack != nullptr;
    }
    void release() {
        if (_stack == nullptr)
            return;
        pcre2_jit_stack_assign_16(_context, nullptr, nullptr);
        pcre2_jit_stack_free_16(_stack);
        _stack = nullptr;
    }

private:
    pcre2_match_context_16 *_context;
    pcre2_jit_stack_16 *_stack = nullptr;
};

std::uint32_t matchOptions(QVMatchingOptions options, bool isJITEnabled) {
    std::uint32_t result = PCRE2_NO_UTF_CHECK;
    if (options & QVMatchingAnchored)
        result |= PCRE2_ANCHORED;
    if (options & QVMatchingEndAnchored)
        result |= PCRE2_ENDANCHORED;
    if (options & QVMatchingNoLineBoundaries)
        result |= PCRE2_NOTBOL | PCRE2_NOTEOL;
    if (pcre2JITAvailable() && !isJITEnabled)
        result |= PCRE2_NO_JIT;
    return result;
}

bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

/// What the pattern sees, and where in it a match may start and must end.
struct Subject {
    Subject(const char16_t *subjectCharacters, NSUInteger subjectLength, NSUInteger start, NSUInteger limit)
        : characters(subjectCharacters), length(subjectLength), startOffset(start), offsetLimit(limit),
          endsInHalf(length > 0 && isHighSurrogate(characters[length - 1])) {}

    const char16_t *characters;
    NSUInteger length;
    NSUInteger startOffset;
    NSUInteger offsetLimit;
    /// The last unit is the first half of a character: reading it, the matcher may take the unit behind it
    /// too.
    bool endsInHalf;
};

/// One search from an offset, with the chain of fall-backs: the compiled form on its small stack, on a larger
/// one, and the interpreter for the rest of the enumeration.
struct Matcher {
    const QVRegularExpression &expression;
    const pcre2_code_16 *code;
    const Subject &subject;
    pcre2_match_data_16 *data;
    pcre2_match_context_16 *context;
    std::uint32_t options;
    /// Whether `pcre2_jit_match`, which checks no arguments, can run this.
    bool direct;
    JITStack stack{context};
    bool fellBack = false;
    std::u16string withoutHalf{};

    int matchAt(NSUInteger offset) {
        const int result = run(offset);
        // Over half a character at the end the compiled form steps past the end, which is a place to match at
        // too.
        const bool missedEnd = subject.endsInHalf && direct && result == PCRE2_ERROR_NOMATCH &&
                               subject.offsetLimit == subject.length && offset < subject.length;
        return missedEnd ? run(subject.length) : result;
    }

    int run(NSUInteger offset) {
        while (direct) {
            const int result = pcre2_jit_match_16(code, pcre2Characters(subject.characters), subject.length,
                                                  offset, options, data, context);
            if (result != PCRE2_ERROR_JIT_STACKLIMIT)
                return result;
            if (!stack.exists() && stack.create())
                continue;
            NSLog(u"JIT stack exceeded for regex, using regular match: %@", expression.pattern());
            options |= PCRE2_NO_JIT;
            stack.release();
            direct = false;
            fellBack = true;
        }
        const char16_t *const characters = subject.endsInHalf ? charactersWithoutHalf() : subject.characters;
        return pcre2_match_16(code, pcre2Characters(characters), subject.length, offset, options, data,
                              context);
    }

    /// Behind half a character at the end the interpreter compares literals and repeated groups without
    /// asking for the end again, with whatever lies there. So it gets a copy that ends in a whole character,
    /// made once for an enumeration; the compiled form always asks.
    [[gnu::noinline]] const char16_t *charactersWithoutHalf() {
        if (withoutHalf.empty()) {
            withoutHalf.reserve(subject.length + 1);
            withoutHalf.push_back(u'\0');
            withoutHalf.append(subject.characters, subject.length);
            withoutHalf.back() = u'\xFFFD';
        }
        return withoutHalf.data() + 1;
    }
};

/// A match's end, never behind what the pattern sees: over a half character at the end the matcher steps too
/// far.
NSUInteger clampedEnd(pcre2_match_data_16 *data, const Subject &subject) {
    PCRE2_SIZE *vector = pcre2_get_ovector_pointer_16(data);
    if (subject.endsInHalf) [[unlikely]]
        for (std::uint32_t index = 0, count = 2 * pcre2_get_ovector_count_16(data); index < count; ++index)
            if (vector[index] != PCRE2_UNSET && vector[index] > subject.length)
                vector[index] = subject.length;
    return vector[1];
}

/// Whether a match ends before its start or starts before the search. Assertions that call a group with "\K"
/// can do this, and so does a search that began within a pair when it goes back over it. Such a match is
/// none: it has no range.
bool isCrossed(const PCRE2_SIZE *vector, NSUInteger searchedFrom) {
    return vector[0] > vector[1] || vector[0] < searchedFrom;
}

/// What one search came to, but for who made it.
QVMatchingOutcome outcomeOfResult(int result, pcre2_match_data_16 *data, const Subject &subject) {
    QVMatchingOutcome outcome;
    if (result >= 0) {
        const NSUInteger end = clampedEnd(data, subject);
        outcome.range = QVPCRE2MatchDataRangeAtIndex(data, 0, 0);
        outcome.kind = end > subject.offsetLimit ? QVMatchingOutcome::Overrun : QVMatchingOutcome::Hit;
    } else if (result != PCRE2_ERROR_NOMATCH) {
        outcome.kind = QVMatchingOutcome::Error;
        outcome.errorCode = result;
    }
    return outcome;
}

/// Finds out, with two marks and no memory, that a sequence has begun to repeat itself.
class RepetitionDetector {
public:
    bool hasSeen(NSRange hit) {
        if (hit == _last || hit == _mark)
            return true;
        _last = hit;
        if (++_stepsSinceMark == _stepsToNextMark) {
            _mark = hit;
            _stepsSinceMark = 0;
            _stepsToNextMark *= 2;
        }
        return false;
    }

private:
    NSRange _last = NSNotFoundRange;
    NSRange _mark = NSNotFoundRange;
    NSUInteger _stepsSinceMark = 0;
    NSUInteger _stepsToNextMark = 1;
};

} // namespace

QVMatchingOutcome QVRegularExpression::enumerateMatchesInCharacters(
    const char16_t *characters, NSUInteger length, QVMatchingOptions matchingOptions, NSRange range,
    QVRegularExpressionMatchContext *context, MatchDataBlock usingBlock) const {
    std::optional<QVRegularExpressionMatchContext> temporary;
    if (context == nullptr)
        context = &temporary.emplace();
    context->prepareForRegularExpression(*this);

    const bool limitsRange = (matchingOptions & QVMatchingRangeLimit) != 0;
    if (limitsRange) {
        QVAssert(range.location <= length, u"Range limit exceeds bounds of string");
        QVAssert(range.location <= length && range.length <= length - range.location,
                 u"Range limit exceeds bounds of string");
    }
    // Also where an assertion handler lets the work go on, nothing is read outside of the buffer.
    if (range.location > length || range.length > length - range.location)
        return {};
    const NSUInteger baseOffset = limitsRange ? 0 : range.location;
    const Subject subject = limitsRange ? Subject{characters, length, range.location, NSMaxRange(range)}
                                        : Subject{characters + range.location, range.length, 0, range.length};
    pcre2_set_offset_limit_16(context->matchContext(), subject.offsetLimit);

    const bool anchored = (matchingOptions & QVMatchingAnchored) != 0;
    const std::uint32_t options = matchOptions(matchingOptions, _JITEnabled);
    // The compiled form knows nothing of an end that is only asked for at match time.
    const bool direct = _JITEnabled && !anchored && (matchingOptions & QVMatchingEndAnchored) == 0;
    Matcher matcher{*this, _code, subject, context->matchData(), context->matchContext(), options, direct};

    QVMatchingOutcome outcome;
    NSUInteger offset = subject.startOffset;
    RepetitionDetector hits;
    bool stop = false;
    while (!stop && offset <= subject.offsetLimit) {
        const int result = matcher.matchAt(offset);
        outcome.fellBack = matcher.fellBack;
        if (result < 0) {
            if (result != PCRE2_ERROR_NOMATCH) {
                outcome.kind = QVMatchingOutcome::Error;
                outcome.errorCode = result;
            }
            break;
        }
        const NSUInteger end = clampedEnd(matcher.data, subject);
        if (end > subject.offsetLimit) {
            outcome.kind = QVMatchingOutcome::Overrun;
            break;
        }
        if (isCrossed(pcre2_get_ovector_pointer_16(matcher.data), offset)) [[unlikely]] {
            if (anchored)
                break;
            offset = std::max(offset, end) + 1;
            continue;
        }
        const NSRange hit = QVPCRE2MatchDataRangeAtIndex(matcher.data, 0, 0);
        // The next offset can lie before an earlier hit (see below); a hit that comes back would come back
        // for ever.
        if (hits.hasSeen(hit))
            break;
        if (usingBlock)
            usingBlock(matcher.data, baseOffset, stop);
        if (anchored)
            break;
        // The base offset is taken off although a narrowed subject's offsets are relative already: callers
        // rely on the positions that this gives. Wrapped below zero, it ends the loop as an offset behind the
        // limit.
        offset = end - baseOffset + (hit.length == 0 ? 1 : 0);
    }
    return outcome;
}

QVMatchingOutcome QVRegularExpression::firstOfEnumeration(const char16_t *characters, NSUInteger length,
                                                          NSRange range,
                                                          QVRegularExpressionMatchContext &context) const {
    NSRange hit = NSNotFoundRange;
    QVMatchingOutcome outcome =
        enumerateMatchesInCharacters(characters, length, QVMatchingRangeLimit, range, &context,
                                     [&hit](QVPCRE2MatchData *matchData, NSUInteger, bool &stop) {
                                         hit = QVPCRE2MatchDataRangeAtIndex(matchData, 0, 0);
                                         stop = true;
                                     });
    if (hit.location != NSNotFound) {
        outcome.kind = QVMatchingOutcome::Hit;
        outcome.range = hit;
    }
    return outcome;
}

QVMatchingOutcome QVRegularExpression::directSearchInCharacters(const char16_t *characters, NSUInteger length,
                                                                NSRange range,
                                                                QVRegularExpressionMatchContext &context,
                                                                bool interpreted) const {
    if (!_canBeRemembered) [[unlikely]]
        return firstOfEnumeration(characters, length, range, context);
    context.prepareForRegularExpression(*this);
    const Subject subject{characters, length, range.location, NSMaxRange(range)};
    pcre2_set_offset_limit_16(context.matchContext(), subject.offsetLimit);
    // Millions of searches go this way, and what can't be settled by it is rare.
    if (_JITEnabled && !interpreted && !subject.endsInHalf) [[likely]] {
        const int result =
            pcre2_jit_match_16(_code, pcre2Characters(characters), length, subject.startOffset,
                               PCRE2_NO_UTF_CHECK, context.matchData(), context.matchContext());
        if (result == PCRE2_ERROR_NOMATCH)
            return {};
        if (result >= 0) [[likely]] {
            const PCRE2_SIZE *const vector = pcre2_get_ovector_pointer_16(context.matchData());
            if (isCrossed(vector, range.location)) [[unlikely]]
                return firstOfEnumeration(characters, length, range, context);
            return {vector[1] > subject.offsetLimit ? QVMatchingOutcome::Overrun : QVMatchingOutcome::Hit,
                    false,
                    0,
                    {vector[0], vector[1] - vector[0]},
                    context.matchNumber()};
        }
        if (result != PCRE2_ERROR_JIT_STACKLIMIT)
            return outcomeOfResult(result, context.matchData(), subject);
    }
    std::uint32_t options = matchOptions(QVMatchingRangeLimit, _JITEnabled);
    if (interpreted)
        options |= PCRE2_NO_JIT;
    Matcher matcher{*this,
                    _code,
                    subject,
                    context.matchData(),
                    context.matchContext(),
                    options,
                    _JITEnabled && !interpreted};
    const int result = matcher.matchAt(subject.startOffset);
    if (result >= 0 && isCrossed(pcre2_get_ovector_pointer_16(matcher.data), range.location)) [[unlikely]]
        return firstOfEnumeration(characters, length, range, context);
    QVMatchingOutcome outcome = outcomeOfResult(result, matcher.data, subject);
    outcome.fellBack = matcher.fellBack;
    return outcome;
}

QVMatchingOutcome
QVRegularExpression::directMatchInCharacters(const char16_t *characters, NSUInteger length, NSRange range,
                                             QVRegularExpressionMatchContext &context) const {
    context.prepareForRegularExpression(*this);
    const Subject subject{characters, length, range.location, NSMaxRange(range)};
    pcre2_set_offset_limit_16(context.matchContext(), subject.offsetLimit);
    std::uint32_t options = matchOptions(QVMatchingRangeLimit, _JITEnabled);
    int result = PCRE2_ERROR_JIT_STACKLIMIT;
    // A verb that skips ahead starts the compiled form anew further on, anchored or not; patterns with verbs
    // are among those that can't be remembered.
    if (const pcre2_code_16 *const compiled = _JITEnabled && _canBeRemembered ? anchoredCode() : nullptr)
        result = pcre2_match_16(compiled, pcre2Characters(characters), length, range.location, options,
                                context.matchData(), context.matchContext());
    // The plain attempt is always interpreted, so nobody needs to be told when the interpreter takes over.
    if (result == PCRE2_ERROR_JIT_STACKLIMIT) {
        options |= PCRE2_ANCHORED;
        result = Matcher{*this, _code, subject, context.matchData(), context.matchContext(), options, false}
                     .matchAt(range.location);
    }
    if (result >= 0 && isCrossed(pcre2_get_ovector_pointer_16(context.matchData()), range.location))
        [[unlikely]]
        return {};
    return outcomeOfResult(result, context.matchData(), subject);
}

void QVRegularExpression::enumerateMatchesInString(const NSString &string, QVMatchingOptions matchingOptions,
                                                   NSRange range, ResultBlock usingBlock) const {
    QVParameterAssert(string, "string != nil");
    std::u16string_view view = string.view();
    // Text that begins with the second half of a character needs a unit before it: looking behind, the
    // matcher steps over a whole pair. A string's own storage has one unit behind its end, but none before
    // it.
    std::u16string guarded;
    if (!view.empty() && isLowSurrogate(view.front())) {
        guarded.reserve(view.size() + 1);
        guarded.push_back(u'\0');
        guarded += view;
        view = std::u16string_view(guarded).substr(1);
    }
    const std::shared_ptr<const QVRegularExpression> self = copy();
    const auto report = [&](QVPCRE2MatchData *matchData, NSUInteger baseOffset, bool &stop) {
        usingBlock(QVRegularExpressionResult::initWithRegularExpression(self, matchData, baseOffset), stop);
    };
    enumerateMatchesInCharacters(view.empty() ? u"" : view.data(), view.size(), matchingOptions, range,
                                 nullptr, report);
}

std::vector<std::shared_ptr<QVRegularExpressionResult>>
QVRegularExpression::matchesInString(const NSString &string, QVMatchingOptions matchingOptions,
                                     NSRange range) const {
    std::vector<std::shared_ptr<QVRegularExpressionResult>> results;
    enumerateMatchesInString(
        string, matchingOptions, range,
        [&](const std::shared_ptr<QVRegularExpressionResult> &result, bool &) { results.push_back(result); });
    return results;
}

NSUInteger QVRegularExpression::numberOfMatchesInString(const NSString &string,
                                                        QVMatchingOptions matchingOptions,
                                                        NSRange range) const {
    NSUInteger count = 0;
    enumerateMatchesInString(string, matchingOptions, range,
                             [&](const std::shared_ptr<QVRegularExpressionResult> &, bool &) { ++count; });
    return count;
}

std::shared_ptr<QVRegularExpressionResult>
QVRegularExpression::firstMatchInString(const NSString &string, QVMatchingOptions matchingOptions,
                                        NSRange range) const {
    std::shared_ptr<QVRegularExpressionResult> first;
    enumerateMatchesInString(string, matchingOptions, range,
                             [&](const std::shared_ptr<QVRegularExpressionResult> &result, bool &stop) {
                                 first = result;
                                 stop = true;
                             });
    return first;
}

NSRange QVRegularExpression::rangeOfFirstMatchInString(const NSString &string,
                                                       QVMatchingOptions matchingOptions,
                                                       NSRange range) const {
    const auto first = firstMatchInString(string, matchingOptions, range);
    return first ? first->range() : NSNotFoundRange;
}

} // namespace quorvane
