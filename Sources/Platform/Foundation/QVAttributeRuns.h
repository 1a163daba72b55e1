#pragma once

#include "Platform/Foundation/NSAttributes.h"
#include "Platform/Foundation/QVRunSequence.h"

namespace quorvane {

/// The attributes of a plain attributed string as maximal runs. An edit costs the same in front of a hundred
/// thousand runs as behind them; text of one look, as most strings are, is a length and its attributes.
/// Ranges must lie inside.
class QVAttributeRuns {
    using Sequence = QVRunSequence<NSAttributes>;
    using Position = Sequence::Position;

public:
    using Run = Sequence::Item;

    /// Tests make chunks tiny, so that they split and merge.
    explicit QVAttributeRuns(std::size_t runsPerChunk = Sequence::defaultChunkCapacity)
        : _runsPerChunk(runsPerChunk) {}
    QVAttributeRuns(const QVAttributeRuns &other) { *this = other; }
    QVAttributeRuns &operator=(const QVAttributeRuns &other);

    NSUInteger length() const { return _length; }
    NSUInteger count() const { return _runs ? _runs->count() : (_length > 0 ? 1 : 0); }
    /// The run of a character; good until the next change.
    const NSAttributes &attributesAtIndex(NSUInteger index, NSRange *range) const;

    /// A run of `length` takes the range's place; no length takes it away.
    void replaceRange(NSRange range, NSUInteger length, const NSAttributes &attributes);
    /// All runs of another string take the range's place.
    void replaceRange(NSRange range, const QVAttributeRuns &runs);
    /// Gives each run in the range what `change` makes of its attributes.
    void changeRange(NSRange range, QVBlock<NSAttributes(const NSAttributes &)> change);

    /// The runs don't touch their like, none is empty, and they are as long as the text.
    bool isSound() const;
    /// Bytes that the runs take, their attributes aside.
    std::size_t bytes() const { return _runs ? sizeof(Sequence) + _runs->bytes() : 0; }

private:
    /// Puts runs in the place of a range. The first one starts where the range does, and no two neighbours
    /// are equal; there are none where the length is 0.
    void splice(NSRange range, NSUInteger length, std::vector<Run> runs);

    std::size_t _runsPerChunk = Sequence::defaultChunkCapacity;
    NSUInteger _length = 0;
    /// The attributes of all the text as long as there is no sequence.
    NSAttributes _attributes;
    /// Not empty; null while one run or none is enough.
    std::unique_ptr<Sequence> _runs;
};

} // namespace quorvane
