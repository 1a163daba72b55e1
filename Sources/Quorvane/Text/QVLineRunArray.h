#pragma once

#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/QVBlock.h"
#include "Platform/Foundation/QVRunSequence.h"
#include "Quorvane/Categories/NSArray+QuorvaneAdditions.h"
#include "Quorvane/Text/QVLineRun.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace quorvane {

/// Each run keeps its characters; without it a run has only its range and flags.
inline constexpr std::uint64_t QVLineRunArrayStoresStrings = 1;

/// The lines of a text as a sequence of runs, edited by the same splices as the text. It answers position to
/// line and number to line, and repairs only the lines that an edit touches; moving those behind costs
/// practically nothing. Only CR, LF and CR LF end a line.
///
/// There is always one line at least, and always a line behind the last terminator; only the last line can be
/// empty. A line is found by what the runs say, never by looking at the text, which the array does not hold.
/// That shows where edits come at the two units of a CR LF, or put an LF before a line that ends in CR: some
/// of these leave runs that differ from a fresh look at the text, in ways that users of the array know.
///
/// No lock is taken; the owner serializes access.
class QV_EXPORT QVLineRunArray : public NSObject {
public:
    using LineBlock = QVBlock<void(const QVLineRun &run, NSUInteger lineNumber, bool &stop)>;

    /// One empty line. Tests make chunks tiny, so that they split and merge.
    explicit QVLineRunArray(std::uint64_t options = 0,
                            std::size_t runsPerChunk = Sequence::defaultChunkCapacity);
    ~QVLineRunArray() override;

    static std::shared_ptr<QVLineRunArray> init() { return initWithOptions(0); }
    static std::shared_ptr<QVLineRunArray> initWithOptions(std::uint64_t options);

    std::uint64_t options() const { return _options; }
    /// Of the whole text, in UTF-16 code units.
    NSUInteger length() const { return _length; }
    /// 1 for an empty text.
    NSUInteger numberOfLines() const { return _runs.count(); }

    /// The line of a number from 0. Throws for a number at or past the count.
    QVLineRun lineForLineNumber(NSUInteger lineNumber) const;

    /// The line that holds a position, the last one for the text's end, and its number. Throws for a position
    /// past the end. Null, with the number left alone, where no run holds the position, which is asserted.
    QVLineRun lineForCharacterIndex(NSUInteger index, NSUInteger *runIndex = nullptr) const;

    /// Calls back for the lines of a range of numbers, the first one in any case. Throws when that does not
    /// exist.
    void enumerateLinesForLineNumberRange(NSRange range, LineBlock usingBlock) const;

    /// Calls back for the lines that a range of characters touches, the first one in any case. With
    /// `NSEnumerationReverse` the walk starts at the line of the range's end (at the one before, if that line
    /// holds nothing of the range) and follows each line's link to the one before, counting numbers down.
    /// Throws for a start past the text.
    void enumerateLinesForCharacterRange(NSRange range, LineBlock usingBlock) const {
        enumerateLinesForCharacterRange(range, 0, usingBlock);
    }
    void enumerateLinesForCharacterRange(NSRange range, NSEnumerationOptions options,
                                         LineBlock usingBlock) const;

    /// The range together with all lines that it touches.
    NSRange lineRangeForCharacterRange(NSRange range) const;

    /// Follows an edit of the text: these characters were replaced by that string. Throws when the range
    /// leaves the text; nothing has changed then.
    void replaceCharactersInRange(NSRange range, QVTextReader withString);

    /// Reports each broken invariant as an assertion failure.
    void validateRunIntegrity() const;

    /// What validation knows of a run; the links point to other records.
    struct RunRecord {
        NSRange range;
        const RunRecord *previousRun = nullptr;
        const RunRecord *nextRun = nullptr;
        bool hasString = false;
        NSUInteger stringLength = 0;
    };
    static void validateRuns(const std::vector<RunRecord> &runs, bool storesStrings, NSUInteger length);

    std::u16string_view className() const override { return u"QVLineRunArray"; }

    /// Bytes that the array takes, without stored strings.
    std::size_t bytes() const { return sizeof(*this) + _runs.bytes(); }

private:
    friend class QVLineRun;
    friend struct QVLineRunArrayProbe;

    /// What only few lines have, or all where strings are stored.
    struct Details {
        QVLineRunString string;
        /// A number of its own for a line that another names as the one before it, else 0.
        std::uint64_t identity = 0;
        /// The identity of the line that this one names instead of the one before it, else 0.
        std::uint64_t namedBefore = 0;
    };
    struct Entry {
        NSUInteger length : 56 = 0;
        NSUInteger flags : 8 = 0;
        std::unique_ptr<Details> details;
    };
    using Sequence = QVRunSequence<Entry>;
    using Position = Sequence::Position;
    using Item = Sequence::Item;

    struct Splice;

    bool storesStrings() const { return (_options & QVLineRunArrayStoresStrings) != 0; }
    Entry makeEntry(NSUInteger length, std::uint8_t flags, QVTextReader string) const;
    QVLineRun runAt(Position at, NSUInteger lineNumber) const;
    NSRange rangeAt(Position at) const {
        return {_runs.location(at), static_cast<NSUInteger>(_runs.entry(at).length)};
    }
    QVLineRun runBehind(const QVLineRun &run) const;
    QVLineRun runBefore(const QVLineRun &run) const;
    NSUInteger numberOfLineNamedBefore(NSUInteger lineNumber, Position at) const;
    NSUInteger searchByProbing(NSUInteger index) const;

    /// The line of a character, the last one for the text's end. Throws behind it; what is not valid was
    /// reported.
    Position positionForCharacterIndex(NSUInteger index) const;

    void nameBefore(NSUInteger lineNumber, NSUInteger named);
    void nameLineBefore(NSUInteger lineNumber);
    void forget(Entry &entry);
    void removeRuns(NSUInteger lineNumber, NSUInteger count);

    void removeText(Splice &splice);
    void splitLine(Splice &splice, NSUInteger lineNumber);
    void cutHead(Splice &splice, NSUInteger lineNumber);
    void cutTail(Splice &splice, NSUInteger lineNumber);
    NSUInteger insertText(Splice &splice);
    void finish(Splice &splice, NSUInteger lineNumber);
    bool editInsideOfLine(const Splice &splice, Position at);

    const std::uint64_t _options;
    Sequence _runs;
    NSUInteger _length = 0;
    /// Whether each run starts where the one before ends, so that a line is found by where runs start.
    bool _isContiguous = true;
    /// Grows with each edit, so that a handle knows when it is too old to know its place.
    std::uint64_t _changes = 0;
    std::uint64_t _lastIdentity = 0;
    /// Lines in the array that have an identity.
    std::unordered_set<std::uint64_t> _identities;
};

} // namespace quorvane
