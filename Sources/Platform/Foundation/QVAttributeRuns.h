#pragma once

#include "Platform/Foundation/NSAttributes.h"

namespace quorvane {

/// The attributes of a plain attributed string: maximal runs, each with the position behind it, sorted. A
/// place is found by halving; painting in text order changes the list near its end, so that it costs the same
/// in strings of any length. Ranges must lie inside.
class QVAttributeRuns {
public:
    struct Run {
        NSUInteger end;
        NSAttributes attributes;
    };

    NSUInteger length() const { return _runs.empty() ? 0 : _runs.back().end; }
    const std::vector<Run> &runs() const { return _runs; }
    /// The run of a character.
    const NSAttributes &attributesAtIndex(NSUInteger index, NSRange *range) const;

    /// A run of `length` takes the range's place; no length and no attributes take it away.
    void replaceRange(NSRange range, NSUInteger length, const NSAttributes &attributes);
    /// Gives each run in the range what `change` makes of its attributes.
    void changeRange(NSRange range, QVBlock<NSAttributes(const NSAttributes &)> change);

    /// The runs don't touch their like, none is empty.
    bool isSound() const;

private:
    std::size_t runAtIndex(NSUInteger index) const;
    NSUInteger startOfRun(std::size_t run) const { return run == 0 ? 0 : _runs[run - 1].end; }
    /// Makes a run begin at the location and answers which one does.
    std::size_t splitAt(NSUInteger location);
    /// Joins runs that are equal from the one before `first` to the one at `last`.
    void joinRuns(std::size_t first, std::size_t last);

    std::vector<Run> _runs;
};

} // namespace quorvane
