#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Platform/Foundation/QVBlock.h"

#include <array>
#include <atomic>
#include <mutex>
#include <unordered_map>

struct pcre2_real_code_16;
struct pcre2_real_match_data_16;

namespace quorvane {

class QVRegularExpressionMatchContext;
class QVRegularExpressionResult;
class QVCombinedExpression;
class QVWordList;
struct QVPatternOutline;

/// Compile options: a bit mask whose values are part of archives.
using QVRegularExpressionOptions = std::uint64_t;
inline constexpr QVRegularExpressionOptions QVRegularExpressionCaseInsensitive = 1;
/// Blanks and comments in the pattern are layout; blanks inside character classes too.
inline constexpr QVRegularExpressionOptions QVRegularExpressionExtended = 2;
inline constexpr QVRegularExpressionOptions QVRegularExpressionLiteral = 4;
inline constexpr QVRegularExpressionOptions QVRegularExpressionDotAll = 8;
/// `^` and `$` act at lines.
inline constexpr QVRegularExpressionOptions QVRegularExpressionMultiline = 16;
/// Only LF ends a line for the pattern; without it, every Unicode line end does.
inline constexpr QVRegularExpressionOptions QVRegularExpressionNewlineLF = 32;
inline constexpr QVRegularExpressionOptions QVRegularExpressionUseJIT = 64;

/// Matching options: a bit mask of their own.
using QVMatchingOptions = std::uint64_t;
/// One attempt at the range's start.
inline constexpr QVMatchingOptions QVMatchingAnchored = 4;
inline constexpr QVMatchingOptions QVMatchingEndAnchored = 8;
/// The range only limits where matches may start and end; the text around it stays visible to the pattern.
inline constexpr QVMatchingOptions QVMatchingRangeLimit = 16;
/// The ends of what the pattern sees are no line boundaries.
inline constexpr QVMatchingOptions QVMatchingNoLineBoundaries = 32;

/// The matcher's own record of one match.
using QVPCRE2MatchData = ::pcre2_real_match_data_16;

/// The range of a group in a match, moved by `offset`; `{NSNotFound, 0}` for a group that took no part.
QV_EXPORT NSRange QVPCRE2MatchDataRangeAtIndex(QVPCRE2MatchData *matchData, NSUInteger index,
                                               NSUInteger offset);

/// How an enumeration or a search came to its end.
struct QVMatchingOutcome {
    enum Kind : std::uint8_t {
        /// A hit (searches only).
        Hit,
        /// No further hit, or the callback stopped.
        Finished,
        /// A hit began in the range and ended behind it, which ends everything.
        Overrun,
        /// The matcher gave up or refused; `errorCode` says why.
        Error,
    };
    Kind kind = Finished;
    /// The compiled form ran out of stack and the interpreter took over.
    bool fellBack = false;
    /// The matcher's negative code where `kind` is `Error`.
    int errorCode = 0;
    /// The hit, in units of the whole buffer.
    NSRange range = NSNotFoundRange;
    /// For a hit, the number under which the match context holds its groups; 0 where it doesn't hold them.
    std::uint64_t matchNumber = 0;
};

/// The groups of a hit. Where several patterns were matched as one, those of the earlier ones stand before.
struct QVGroupsOfHit {
    /// Null where nobody needs them.
    QVPCRE2MatchData *matchData = nullptr;
    NSUInteger groupsBefore = 0;

    explicit operator bool() const { return matchData != nullptr; }
    /// A group by its number in its own pattern, 0 for the whole hit.
    NSRange rangeAtIndex(NSUInteger index) const {
        return QVPCRE2MatchDataRangeAtIndex(matchData, index == 0 ? 0 : groupsBefore + index, 0);
    }
};

/// A compiled pattern over UTF-16 text: the one wrapper around the matcher that every pattern of a grammar
/// runs through. Immutable after compilation and safe to use from many threads; the match context is what a
/// thread brings.
///
/// The text is never checked for well-formed UTF-16: lone surrogates must not make a match fail. So every
/// buffer needs one readable unit, no surrogate, before its first and behind its last unit; a match's end is
/// clamped to the buffer.
class QV_EXPORT QVRegularExpression final : public NSObject, public NSSecureCoding {
public:
    /// Null, with an error of `QVQuorvaneErrorDomain` and code 1001, when the pattern does not compile. A
    /// null pattern is a programming error.
    static std::shared_ptr<QVRegularExpression>
    regularExpressionWithPattern(const NSString &pattern, QVRegularExpressionOptions options,
                                 std::shared_ptr<NSError> *error = nullptr);
    static std::shared_ptr<QVRegularExpression> initWithPattern(const NSString &pattern,
                                                                QVRegularExpressionOptions options,
                                                                std::shared_ptr<NSError> *error = nullptr);
    /// Always throws `NSInvalidArgumentException`: an expression has a pattern.
    [[noreturn]] static std::shared_ptr<QVRegularExpression> init();
    ~QVRegularExpression() override;

    const NSString &pattern() const { return _pattern; }
    QVRegularExpressionOptions options() const { return _options; }
    /// Group 0, the whole match, is not counted.
    NSUInteger numberOfCaptureGroups() const { return _captureCount; }
    /// `NSNotFound` where the pattern has no such name; of a repeated name the first entry counts.
    NSUInteger captureNumberForName(const NSString &name) const;
    bool isJITEnabled() const { return _JITEnabled; }

    /// The matcher's message for one of its codes; "An unknown error occurred." where it has none.
    static NSString stringForPCRE2ErrorCode(std::int32_t code);

    // Matching

    using MatchDataBlock = QVBlock<void(QVPCRE2MatchData *matchData, NSUInteger baseOffset, bool &stop)>;
    using ResultBlock = QVBlock<void(const std::shared_ptr<QVRegularExpressionResult> &result, bool &stop)>;

    /// Calls the block with each match in the range of a buffer of `length` units; the base offset is to be
    /// added to every range read from the match data. Nothing is allocated when a context is given. A match
    /// that starts in the range and ends behind it ends the enumeration unreported. Matching never fails for
    /// the caller: an error of the matcher ends the enumeration, and the outcome tells.
    QVMatchingOutcome enumerateMatchesInCharacters(const char16_t *characters, NSUInteger length,
                                                   QVMatchingOptions options, NSRange range,
                                                   QVRegularExpressionMatchContext *context,
                                                   MatchDataBlock usingBlock) const;
    /// The same over a string, with results that may be kept. A null string is a programming error.
    void enumerateMatchesInString(const NSString &string, QVMatchingOptions options, NSRange range,
                                  ResultBlock usingBlock) const;
    std::vector<std::shared_ptr<QVRegularExpressionResult>>
    matchesInString(const NSString &string, QVMatchingOptions options, NSRange range) const;
    NSUInteger numberOfMatchesInString(const NSString &string, QVMatchingOptions options,
                                       NSRange range) const;
    /// Null where there is none.
    std::shared_ptr<QVRegularExpressionResult>
    firstMatchInString(const NSString &string, QVMatchingOptions options, NSRange range) const;
    NSRange rangeOfFirstMatchInString(const NSString &string, QVMatchingOptions options, NSRange range) const;

    // Searching, one step at a time, for the parser's inner loops

    /// The first match that an enumeration with `QVMatchingRangeLimit` over the range would report. After a
    /// hit the context's match data holds its groups. With `interpreted` the compiled form is not used.
    QVMatchingOutcome directSearchInCharacters(const char16_t *characters, NSUInteger length, NSRange range,
                                               QVRegularExpressionMatchContext &context,
                                               bool interpreted) const;
    /// The one attempt that `QVMatchingAnchored` and `QVMatchingRangeLimit` would make, through a second code
    /// that is compiled anchored so that the compiled form can run it. Over half a character the two forms
    /// may take different steps.
    QVMatchingOutcome directMatchInCharacters(const char16_t *characters, NSUInteger length, NSRange range,
                                              QVRegularExpressionMatchContext &context) const;

    /// The units that a match can start with, one bit for each unit below 255 and the last bit for all
    /// others. Null where nothing is known, as for patterns that can match the empty text.
    const std::array<std::uint64_t, 4> *firstUnits() const { return _hasFirstUnits ? &_firstUnits : nullptr; }
    /// Whether a match can start with this unit.
    bool canStartWithUnit(char16_t unit) const {
        const unsigned bit = unit < 255 ? unit : 255;
        return !_hasFirstUnits || ((_firstUnits[bit >> 6] >> (bit & 63)) & 1) != 0;
    }
    /// No match is shorter than this, in units; 0 where nothing is known.
    NSUInteger minimumLength() const { return _minimumLength; }
    /// Whether a match may have no length, as far as is known.
    bool canMatchEmptyText() const { return _canMatchEmptyText; }
    /// Whether no match has any length: the pattern only looks.
    bool matchesEmptyTextAlone() const { return _matchesEmptyTextAlone; }
    /// Whether a search that begins behind a line's start, as patterns see lines, finds nothing on that line.
    bool startsAtLineStartsAlone() const { return _startsAtLineStartsAlone; }
    /// The words that matches are, where the pattern was made of a list of them and each match begins with a
    /// whole run of word units that is one of them; null for all other patterns. Whoever makes the pattern
    /// sets it, before others use it.
    const QVWordList *wordList() const { return _wordList.get(); }
    void setWordList(std::shared_ptr<const QVWordList> wordList) { _wordList = std::move(wordList); }
    /// Whether a hit found ahead stays the first hit until the position passes its start. Not so where the
    /// pattern asks for the place that the search began at, moves its match's start, or steers the
    /// backtracking; nor by a later search that begins where `isSearchBoundary` says no.
    bool canBeRemembered() const { return _canBeRemembered; }
    /// Whether the pattern names its groups or refers back to what one of them matched.
    bool hasReferences() const { return _hasReferences; }

    /// Whether a search that begins here tries what any search from further before would try too. Not so
    /// within a surrogate pair, at or behind half a character, and between CR and LF, which only a search
    /// that begins there looks at by themselves. The units around the location must be readable.
    static bool isSearchBoundary(const char16_t *characters, NSUInteger location) {
        if (location == 0)
            return true;
        const char16_t before = characters[location - 1];
        const char16_t behind = characters[location];
        return (before & 0xFC00) != 0xD800 && (behind & 0xFC00) != 0xDC00 &&
               (before != u'\r' || behind != u'\n');
    }

    // Replacing

    /// Gets the text that stands for a reference, its range in the string (`{NSNotFound, 0}` for an escape),
    /// and answers the text to use.
    using ReplaceHandler = QVBlock<NSString(const NSString &text, NSRange sourceRange, bool &stop)>;
    /// Fills a template: "$1" or "\1", "${name}" or "\{name}" stand for groups, "\\" and "\$" for themselves.
    /// The offset is added to the result's ranges before the string is read, since the string may have
    /// shifted since. References to groups that are unknown or took no part stay as written; so does the rest
    /// of the template once the handler stops.
    NSString replacementStringForResult(const QVRegularExpressionResult &result, const NSString &inString,
                                        NSInteger offset, const NSString &templateString) const;
    NSString replacementStringForResult(const QVRegularExpressionResult &result, const NSString &inString,
                                        NSInteger offset, const NSString &templateString,
                                        ReplaceHandler replaceHandler) const;

    /// The same object: expressions are immutable.
    std::shared_ptr<QVRegularExpression> copy() const;
    std::u16string_view className() const override { return u"QVRegularExpression"; }
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    friend class QVCombinedExpression;
    QVRegularExpression() = default;
    QVMatchingOutcome firstOfEnumeration(const char16_t *characters, NSUInteger length, NSRange range,
                                         QVRegularExpressionMatchContext &context) const;
    bool compile(std::shared_ptr<NSError> *error);
    ::pcre2_real_code_16 *compileCode(std::u16string_view pattern, std::uint32_t additionalOptions,
                                      int &errorCode) const;
    /// Null where it can't be compiled to machine code.
    const ::pcre2_real_code_16 *anchoredCode() const;
    void readOutline(const QVPatternOutline &outline);
    bool canBeEmpty(std::u16string_view pattern) const;
    void readStartingConditions();

    NSString _pattern;
    QVRegularExpressionOptions _options = 0;
    NSUInteger _captureCount = 0;
    ::pcre2_real_code_16 *_code = nullptr;
    bool _JITEnabled = false;
    bool _canBeRemembered = false;
    bool _canMatchEmptyText = true;
    bool _matchesEmptyTextAlone = false;
    bool _startsAtLineStartsAlone = false;
    bool _hasReferences = false;
    bool _hasFirstUnits = false;
    NSUInteger _minimumLength = 0;
    std::shared_ptr<const QVWordList> _wordList;
    std::array<std::uint64_t, 4> _firstUnits{};

    mutable std::mutex _namesMutex;
    mutable std::unique_ptr<std::unordered_map<NSString, NSUInteger>> _namedCaptureGroups;
    mutable std::once_flag _anchoredOnce;
    mutable ::pcre2_real_code_16 *_anchoredCode = nullptr;
    /// Found out when first asked for, for each document that is opened asks again.
    enum class Combines : std::uint8_t { Unknown, No, Yes };
    mutable std::atomic<Combines> _combines = Combines::Unknown;
    /// What this is the first expression of, under that class's lock.
    mutable std::vector<std::shared_ptr<const QVCombinedExpression>> _combinedExpressions;
};

} // namespace quorvane
