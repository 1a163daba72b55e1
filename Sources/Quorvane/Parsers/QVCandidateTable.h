#pragma once

#include "Quorvane/Parsers/QVRememberedSearch.h"
#include "Quorvane/RegularExpressions/QVCombinedExpression.h"

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

namespace quorvane {

class QVScope;

/// Compiling patterns together costs as much as a few dozen questions, so what is hardly ever asked is asked
/// one by one.
#ifdef QUORVANE_VERIFY
inline constexpr std::uint32_t timesAskedBeforeCombining = 1;
#else
inline constexpr std::uint32_t timesAskedBeforeCombining = 16;
#endif

/// The patterns of a list of scopes, laid out by the units that their matches can begin with: for each unit
/// the few patterns that are worth a try at a place that holds it, compiled into one, and the words of all
/// word lists in one dictionary. Made once for each list; the parser walks along lines with it
/// (`QVLineWalk`).
class QVCandidateTable {
public:
    struct Pattern {
        const QVScope *scope;
        QVRememberedSearch *search;
        /// The place among all patterns of the list, which decides between two that match at one place.
        std::uint32_t order;
        /// Whether a hit becomes one match that holds nothing.
        bool isPlain;
        /// Whether that match can point to a symbol.
        bool hasSymbol;
        /// Whether a hit ends the enclosing region.
        bool isEnd = false;
        /// Of the walk that last took it up; what follows holds for that walk alone.
        std::uint64_t walk = 0;
        /// Up to where the walk knows the pattern's chain of hits, and how many covered stretches that minds.
        NSUInteger chain = 0;
        std::uint32_t covered = 0;
    };
    struct Answer {
        enum Kind : std::uint8_t { Nothing, Found, Unknown };
        Kind kind = Nothing;
        std::uint32_t index = 0;
        NSUInteger end = 0;
        /// The number under which the match context holds the groups, and how many stand before them.
        std::uint64_t matchNumber = 0;
        NSUInteger groupsBefore = 0;
    };

    /// Whether a scope's pattern can be asked at one place after the other. Others keep searches of their
    /// own.
    static bool canHold(const QVScope &scope, const QVRegularExpression &expression);

    /// The patterns, each of which passes `canHold`: those that end the region first, then the others, both
    /// in order.
    explicit QVCandidateTable(std::vector<Pattern> patterns);

    /// Whether nothing begins with this unit.
    bool canPass(char16_t unit) const { return _classes[unit < 255 ? unit : 255] == 0; }
    /// The first pattern that matches at the place, which may be the text's end. Of a run of word units only
    /// the start is asked for the words of lists.
    Answer answerAtLocation(NSUInteger location, const QVSearchContext &context);
    Pattern &patternAtIndex(std::uint32_t index) { return _patterns[index]; }

    bool holdsScope(const QVScope &scope) const { return _scopes.contains(&scope); }
    /// Whether some patterns only look, so that they can match at the very end of a line too.
    bool looksAtLineEnds() const { return _looksAtLineEnds; }
    /// Whether some list of words knows words in any case, with partners beyond ASCII that no table has.
    bool foldsCase() const { return !_foldedWords.empty(); }
    /// Numbers the walks along lines.
    std::uint64_t beginWalk() { return ++_walk; }
    std::uint64_t currentWalk() const { return _walk; }

private:
    struct Class {
        /// Indexes of patterns, ascending.
        std::vector<std::uint32_t> patterns;
        bool hasWords = false;
        std::uint32_t timesAsked = 0;
        bool isCombined = false;
        std::shared_ptr<const QVCombinedExpression> combined;
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view text) const;
    };
    using Words =
        boost::unordered_flat_map<std::u16string, std::vector<std::uint32_t>, TextHash, std::equal_to<>>;

    void addWords(std::uint32_t index);
    void makeClasses();
    bool isOfLength(std::uint32_t index, NSUInteger length) const;
    Answer askPatterns(Class &group, NSUInteger location, const QVSearchContext &context);
    Answer askOne(std::uint32_t index, NSUInteger location, const QVSearchContext &context);
    /// The first list before `limit` in order that has the run of word units that starts here.
    Answer askWords(NSUInteger location, std::uint32_t limit, const QVSearchContext &context);
    Answer askWords(const Words &words, std::u16string_view run, NSUInteger location, std::uint32_t limit,
                    const QVSearchContext &context);

    std::vector<Pattern> _patterns;
    /// Class 0 holds nothing.
    std::vector<Class> _groups;
    std::array<std::uint16_t, 256> _classes{};
    /// Of what needs no unit to begin with.
    std::uint16_t _classAtTextEnd = 0;
    bool _looksAtLineEnds = false;
    boost::unordered_flat_set<const QVScope *> _scopes;
    Words _words;
    /// In lower case.
    Words _foldedWords;
    /// For each ASCII unit the lengths of the words that begin with it, those above 31 in the last bit.
    std::array<std::uint32_t, 128> _wordLengths{};
    std::uint64_t _walk = 0;
};

/// One walk along the rest of a line: finds candidates as searching with each pattern would. A pattern's hits
/// form a chain, whether they are taken or not, so a hit counts only if the pattern did not hit before in
/// text that others have covered, and reach beyond it. The walk looks into that for each candidate; where it
/// can't settle the matter the parser goes back to searching.
class QVLineWalk {
public:
    /// The last is memory to work in.
    QVLineWalk(QVCandidateTable &table, const QVParseLine &line, const QVSearchContext &context,
               std::vector<NSRange> &covered)
        : _table(table), _line(line), _context(context), _walk(table.beginWalk()), _position(line.start),
          _covered(covered) {
        covered.clear();
    }

    enum Result : std::uint8_t { Nothing, Found, Unknown };
    /// Looks for the first candidate from `open` on that begins at `last` at the latest. Neither goes back
    /// from call to call, but for a `last` that a lost competitor had set.
    Result find(NSUInteger open, NSUInteger last);
    /// After `Found`, until the line goes on behind it.
    const QVCandidateTable::Pattern &pattern() const { return _table.patternAtIndex(_index); }
    NSRange hit() const { return _hit; }
    /// As in the table's answer.
    std::uint64_t matchNumber() const { return _matchNumber; }
    NSUInteger groupsBefore() const { return _groupsBefore; }

    /// Something was accepted, by whomever it was found.
    void cover(NSRange range);
    /// The candidate itself was accepted.
    void take();

private:
    Result tryPosition();
    bool isChainFree(QVCandidateTable::Pattern &pattern, NSUInteger at);
    bool isChainOfWordsFree(QVCandidateTable::Pattern &pattern, const QVWordList &words) const;
    /// The first place in covered text at or behind the pattern's chain where it may hit; `NSNotFound` where
    /// there is none. What was looked over is minded.
    NSUInteger nextDoubtfulPlace(QVCandidateTable::Pattern &pattern) const;

    QVCandidateTable &_table;
    const QVParseLine &_line;
    const QVSearchContext &_context;
    const std::uint64_t _walk;
    /// Nothing begins before.
    NSUInteger _position;
    std::uint32_t _index = 0;
    NSRange _hit = NSNotFoundRange;
    std::uint64_t _matchNumber = 0;
    NSUInteger _groupsBefore = 0;
    std::vector<NSRange> &_covered;
};

} // namespace quorvane
