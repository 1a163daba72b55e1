#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace quorvane {

/// What can be seen of a pattern's matches from its outermost elements alone, where the matcher itself does
/// not tell: grammars are full of patterns that only look at a place, or that belong at the start of a line,
/// and the parser asks those less often than others. A spelling that the reader does not know leaves a
/// property unclaimed, which is always true enough.
struct QVPatternOutline {
    /// No match has any length: there is nothing but assertions.
    bool matchesEmptyTextAlone = false;
    /// A search that begins behind a line's start finds nothing on the rest of that line.
    bool startsAtLineStartsAlone = false;
    /// A look-ahead may say what a match begins with, for there may be one before any text is taken.
    bool mayLookAheadFirst = true;
    /// Patterns of which one must match wherever this one does, such that the match is at least as long: what
    /// stands behind the place to which "\K" moves the start, for each alternative that can match at all.
    /// Nothing where that can't be told.
    std::optional<std::vector<std::u16string_view>> tails;

    /// `extended` patterns have blanks and comments that mean nothing. The result refers to the pattern's
    /// text.
    static QVPatternOutline outlineOfPattern(std::u16string_view pattern, bool extended);

    /// Whether the pattern may ask for text behind its match. Looking for the spelling finds a few others
    /// too.
    static bool mayLookAhead(std::u16string_view pattern);
};

} // namespace quorvane
