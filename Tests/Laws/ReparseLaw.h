#pragma once

#include "Quorvane/Parsers/QVParse.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The law of the incremental reparse, for tests and for fuzz targets: behind every edit the tree is the one
/// that a fresh parse of the same text gives, to the last link, and all that differs from the tree before
/// lies in the answered range.
namespace quorvane::test {

struct Edit {
    NSRange range;
    std::u16string text;
};

/// Empty where both trees are the same in all that a reader could see: scopes, places, captures, links,
/// syntaxes; and where the first has no marks left of the reparse. Else the first difference.
std::string differenceOfTrees(const QVParse &edited, const QVParse &fresh);

/// For each unit of the text what stands there: a number made of the scopes around it, the captures, and
/// where their matches begin.
std::vector<std::uint64_t> paintedTree(const QVParse &parse);

/// Where the first unit stands, outside of the answered range, that is not what it was before; `NSNotFound`
/// where there is none.
NSUInteger firstUncoveredDifference(const std::vector<std::uint64_t> &before,
                                    const std::vector<std::uint64_t> &after, const Edit &edit,
                                    NSRange answer);

/// Why the rules themselves excuse a difference between an edited tree and this fresh one; empty where
/// nothing does. Of a region that came to nothing in a sequence nothing is left: its matches don't say any
/// more how far the sequence is, so that going on in its midst takes another place in it. It takes a sequence
/// over several lines with a region whose start can be empty. And a region that was refused because regions
/// nest no deeper stays an ancestor for the rest of the one around it, which only a parse that came by knows.
std::string excuseOfTree(const QVParse &fresh);

/// Random edits of a text, the same for a seed on every machine: letters, line ends and halves of them,
/// halves of characters, whole matches and lines that are copied to elsewhere or go; at the starts and ends
/// of matches more often than between.
class RandomEdits {
public:
    /// `pieces` is what is typed beside what the text has.
    RandomEdits(std::uint32_t seed, std::vector<std::u16string> pieces);
    Edit next(const QVParse &parse);

private:
    std::uint32_t below(std::uint64_t bound);
    bool oneIn(std::uint32_t count) { return below(count) == 0; }
    NSUInteger place(const QVParse &parse);
    NSRange stretch(const QVParse &parse);
    const QVScopeMatch *anyMatch(const QVParse &parse);
    std::u16string text(const QVParse &parse);

    std::uint32_t _state;
    std::vector<std::u16string> _pieces;
};

/// Applies edits to one parse and holds it against the law. Main queue, so that all runs on one thread.
class ReparseLaw {
public:
    ReparseLaw(std::shared_ptr<QVSyntax> syntax, std::u16string text, NSUInteger maximumLineLength = 0);

    /// Empty where the law holds, that of symbols included. Where the rules excuse a difference, the tree is
    /// parsed anew: also where a fresh parse sees other matches in the lines before those that an edit parses
    /// again, or has other regions go on behind them, which only a pattern can bring about that looks over
    /// lines, and where a parse that knows its
    /// includes from the same texts gives the edited tree, though it parsed each of them as a whole.
    std::string problemOfEdit(const Edit &edit);

    QVParse &parse() { return *_parse; }
    const std::u16string &text() const { return _text; }
    NSRange answer() const { return _answer; }
    int excusedCount() const { return _excusedCount; }
    /// How often the rules let symbols differ as wholes.
    int excusedSymbolsCount() const { return _excusedSymbolsCount; }

private:
    std::string problemOfTree(const QVParse &fresh) const;
    NSUInteger firstLocation(const Edit &edit) const;
    std::shared_ptr<QVParse> freshParse() const;
    /// A parse of the text that resolved its includes where they were first used since the last fresh parse.
    std::shared_ptr<QVParse> freshParseWithKnownIncludes() const;

    std::shared_ptr<QVSyntax> _syntax;
    std::u16string _text;
    /// What the parse held since it was fresh, the present text last.
    std::vector<std::u16string> _texts;
    NSUInteger _maximumLineLength;
    std::shared_ptr<QVParse> _parse;
    NSRange _answer{};
    int _excusedCount = 0;
    int _excusedSymbolsCount = 0;
};

/// For messages: printable units as they are, others by their numbers.
std::string unitsOfText(std::u16string_view text);

} // namespace quorvane::test
