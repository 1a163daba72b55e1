#pragma once

#include "Platform/Foundation/QVBlock.h"
#include "Platform/Foundation/QVRunSequence.h"
#include "Quorvane/Text/QVRLEArrayRun.h"

#include <limits>
#include <vector>

namespace quorvane {

/// The half of a run array (`QVMutableRLEArray`) that looks at it: what stands in a slot, which run holds it,
/// and walks along runs, whose callbacks may change the array. Nothing is made of this class alone.
template <typename Value> class QV_EXPORT QVRLEArray : public NSObject {
public:
    using Run = QVRLEArrayRun<Value>;
    using BisectContext = QVRLEArrayBisectContext<Value>;
    using EnumerationBlock = QVBlock<void(const Value &value, NSRange range, bool &stop)>;
    /// Answers -1 when what is looked for comes before the probed run, 0 when it is found, anything else when
    /// it comes behind.
    using BisectBlock = QVBlock<NSInteger(const BisectContext &context, bool &stop)>;

    /// The number of slots.
    NSUInteger count() const { return _count; }
    NSUInteger numberOfRuns() const { return _runs.count(); }

    // MARK: Looking up

    /// The number of the run that holds a slot. Throws for a slot at or past the count.
    NSUInteger runIndexForIndex(NSUInteger index) const;

    /// The value of a slot, valid until the array changes. The out range is that of the whole run. Throws for
    /// a slot at or past the count.
    const Value &objectAtIndex(NSUInteger index, NSRange *effectiveRange = nullptr,
                               NSUInteger *runIndex = nullptr) const;

    /// Searches in runs that are ordered by something only the caller knows. Answers the value of the run for
    /// which the callback answers 0, else null; the out range is that run's, else `{NSNotFound, 0}`. The stop
    /// flag ends the search as not found, unless the answer is 0.
    Value bisectUsingBlock(BisectBlock block) const { return bisectWithEffectiveRange(nullptr, block); }
    Value bisectWithEffectiveRange(NSRange *effectiveRange, BisectBlock usingBlock) const;

    // MARK: Walking

    /// Calls back for each run that touches the range, with the part inside of it, or all of it for
    /// `QVRLEArrayEnumerationWholeRuns`. An empty range calls back with that option alone, once, for the run
    /// at its location (the one before it in reverse).
    ///
    /// The callback may change the array; the value it got stays valid until it returns. A forward walk then
    /// goes on at the end of the range that it handed over, but from no run before the one that precedes the
    /// handed one by number, and a reverse walk from no run above the handed one by number. A forward range
    /// may reach past the count; in reverse that throws, as a location past the count does in both.
    void enumerateObjectsInRange(NSRange range, EnumerationBlock usingBlock) const {
        enumerateObjectsInRange(range, 0, usingBlock);
    }
    void enumerateObjectsInRange(NSRange range, std::uint64_t options, EnumerationBlock usingBlock) const;

    // MARK: Checking

    /// Reports each broken invariant as an assertion failure.
    void validateRunIntegrity() const { validateRuns(runs(), _count); }
    /// The same for records of runs.
    static void validateRuns(const std::vector<Run> &runs, NSUInteger count);
    /// Records of all runs, linked with each other; keep the vector where it is.
    std::vector<Run> runs() const;

protected:
    using Sequence = QVRunSequence<Value>;
    using Position = typename Sequence::Position;
    using Item = typename Sequence::Item;

    explicit QVRLEArray(std::size_t runsPerChunk) : _runs(runsPerChunk) {}

    NSRange rangeOfRun(Position at) const {
        const NSUInteger location = _runs.location(at);
        return {location, _runs.nextLocation(at, _count) - location};
    }
    /// The runs of a range, cut to it, for an array in which it starts at a location.
    void appendRuns(std::vector<Item> &items, NSRange range, NSUInteger location) const;
    /// To be called before each change: keeps for each walk what it has handed out.
    void keepWhatWalksHold();

    NSUInteger _count = 0;
    Sequence _runs;

private:
    /// An enumeration whose callback is running. Changes look whether there are any, and leave them the chunk
    /// that holds the value they handed out.
    struct Walk {
        explicit Walk(const QVRLEArray &array) : _array(array), outer(array._walks) { array._walks = this; }
        ~Walk() { _array._walks = outer; }
        Walk(const Walk &) = delete;
        Walk &operator=(const Walk &) = delete;

        const QVRLEArray &_array;
        Walk *const outer;
        /// The run handed over; until the callback changes the array.
        Position at;
        /// The number it had then.
        NSUInteger index = 0;
        std::shared_ptr<typename Sequence::Chunk> kept;
    };

    void enumerateForward(NSRange range, bool wholeRuns, EnumerationBlock block) const;
    void enumerateBackward(NSRange range, bool wholeRuns, EnumerationBlock block) const;

    /// Grows with each change, so that a walk sees that its callback made one.
    std::uint64_t _changes = 0;
    mutable Walk *_walks = nullptr;
};

// MARK: - Looking up

template <typename Value> NSUInteger QVRLEArray<Value>::runIndexForIndex(NSUInteger index) const {
    if (index >= _count)
        QVThrowRLEArrayBounds(QVRLEArrayBounds::Index);
    if (index == 0)
        return 0;
    if (index == _count - 1)
        return _runs.isEmpty() ? 0 : _runs.count() - 1;
    if (!_runs.isEmpty()) {
        const Position at = _runs.positionOfLocation(index);
        if (NSLocationInRange(index, rangeOfRun(at)))
            return _runs.indexOfPosition(at);
    }
    QVFailRLEArrayAssertion(u"We should never get here, because a value should've been found by now.");
    return NSNotFound;
}

template <typename Value>
const Value &QVRLEArray<Value>::objectAtIndex(NSUInteger index, NSRange *effectiveRange,
                                              NSUInteger *runIndex) const {
    static const Value &none = *new Value{};
    if (index >= _count)
        QVThrowRLEArrayBounds(QVRLEArrayBounds::Index);
    Position at;
    if (!_runs.isEmpty())
        at = index == 0            ? _runs.begin()
             : index == _count - 1 ? _runs.last()
                                   : _runs.positionOfLocation(index);
    const NSRange range = _runs.isEmpty() ? NSRange{0, 0} : rangeOfRun(at);
    if (!NSLocationInRange(index, range)) {
        // Broken; asking for the run's number reports it.
        const NSUInteger reported = runIndexForIndex(index);
        if (runIndex != nullptr)
            *runIndex = reported;
        if (effectiveRange != nullptr)
            *effectiveRange = NSNotFoundRange;
        return none;
    }
    if (effectiveRange != nullptr)
        *effectiveRange = range;
    if (runIndex != nullptr)
        *runIndex = _runs.indexOfPosition(at);
    return _runs.entry(at);
}

template <typename Value>
Value QVRLEArray<Value>::bisectWithEffectiveRange(NSRange *effectiveRange, BisectBlock usingBlock) const {
    if (effectiveRange != nullptr)
        *effectiveRange = NSNotFoundRange;
    NSUInteger low = 0;
    NSUInteger end = _runs.count();
    BisectContext context;
    while (low < end) {
        const NSUInteger middle = (low + end - 1) >> 1;
        const Position at = _runs.positionOfIndex(middle);
        if (!_runs.isValid(at))
            break;
        context = BisectContext{_runs.entry(at), rangeOfRun(at)};
        if (!_runs.isFirst(at)) {
            context.previousValue = _runs.entry(_runs.previous(at));
            context.previousEffectiveRange = rangeOfRun(_runs.previous(at));
        }
        if (const Position next = _runs.next(at); _runs.isValid(next)) {
            context.nextValue = _runs.entry(next);
            context.nextEffectiveRange = rangeOfRun(next);
        }
        bool stop = false;
        const NSInteger result = usingBlock(context, stop);
        if (result == NSOrderedSame) {
            if (effectiveRange != nullptr)
                *effectiveRange = context.effectiveRange;
            return context.value;
        }
        if (stop)
            break;
        if (result == NSOrderedAscending)
            end = middle;
        else
            low = middle + 1;
    }
    return Value{};
}

// MARK: - Walking

template <typename Value>
void QVRLEArray<Value>::enumerateObjectsInRange(NSRange range, std::uint64_t options,
                                                EnumerationBlock usingBlock) const {
    if (_count == 0 || _runs.isEmpty() || !usingBlock)
        return;
    range.length = std::min(range.length, std::numeric_limits<NSUInteger>::max() - range.location);
    const bool wholeRuns = (options & QVRLEArrayEnumerationWholeRuns) != 0;
    if (options & QVRLEArrayEnumerationReverse)
        enumerateBackward(range, wholeRuns, usingBlock);
    else
        enumerateForward(range, wholeRuns, usingBlock);
}

template <typename Value>
void QVRLEArray<Value>::enumerateForward(NSRange range, bool wholeRuns, EnumerationBlock block) const {
    if (range.location > _count)
        QVThrowRLEArrayBounds(QVRLEArrayBounds::Index);
    if (range.length == 0 && !wholeRuns)
        return;
    const NSUInteger end = NSMaxRange(range);
    NSUInteger location = range.location;
    Walk walk(*this);
    walk.at = location == _count ? _runs.last() : _runs.positionOfLocation(location);
    if (range.length != 0 && location == _count)
        return;
    for (;;) {
        // The runs of one chunk, as long as nothing changes.
        const auto &chunk = _runs.chunk(walk.at.chunk);
        const NSUInteger base = _runs.baseOf(walk.at.chunk);
        const std::size_t size = chunk.offsets.size();
        const NSUInteger *const offsets = chunk.offsets.data();
        const Value *const values = chunk.entries.data();
        const std::uint64_t changes = _changes;
        do {
            const std::size_t slot = walk.at.slot;
            NSRange handed{base + offsets[slot], 0};
            NSUInteger runEnd =
                slot + 1 < size ? base + offsets[slot + 1] : _runs.nextLocation(walk.at, _count);
            if (!wholeRuns) {
                handed.location = std::max(handed.location, location);
                runEnd = std::min(runEnd, end);
            }
            handed.length = runEnd - handed.location;
            bool stop = false;
            block(values[slot], handed, stop);
            location = runEnd;
            if (stop || location >= end)
                return;
        } while (changes == _changes && ++walk.at.slot < size);
        if (changes == _changes) {
            if (walk.at.chunk + 1 >= _runs.chunkCount())
                return;
            walk.at = {walk.at.chunk + 1, 0};
            continue;
        }
        // The run that holds the position now, unless it has a lower number than the one before the handed
        // run had: that one is where the walk looks again.
        walk.kept.reset();
        if (_runs.isEmpty() || location >= _count)
            return;
        const NSUInteger before = walk.index > 0 ? walk.index - 1 : 0;
        walk.at = _runs.positionOfLocation(location);
        if (_runs.indexOfPosition(walk.at) < before)
            walk.at = _runs.positionOfIndex(before);
        if (!_runs.isValid(walk.at) || _runs.location(walk.at) >= end)
            return;
    }
}

template <typename Value>
void QVRLEArray<Value>::enumerateBackward(NSRange range, bool wholeRuns, EnumerationBlock block) const {
    NSUInteger end = NSMaxRange(range);
    if (end > _count)
        QVThrowRLEArrayBounds(QVRLEArrayBounds::Index);
    if (range.length == 0 && !wholeRuns)
        return;
    Walk walk(*this);
    walk.at = end == 0 ? _runs.begin() : _runs.positionOfLocation(end - 1);
    for (;;) {
        const NSRange run = rangeOfRun(walk.at);
        if (range.length != 0 && NSMaxRange(run) <= range.location)
            return;
        const NSRange handed =
            wholeRuns ? run : NSIntersectionRange(run, {range.location, end - range.location});
        const std::uint64_t changes = _changes;
        bool stop = false;
        block(_runs.entry(walk.at), handed, stop);
        if (stop || handed.location <= range.location)
            return;
        end = handed.location;
        if (changes == _changes) {
            if (_runs.isFirst(walk.at))
                return;
            walk.at = _runs.previous(walk.at);
            continue;
        }
        walk.kept.reset();
        if (_runs.isEmpty())
            return;
        const NSUInteger highest = walk.index;
        walk.at = end > _count ? _runs.last() : _runs.positionOfLocation(end - 1);
        if (_runs.indexOfPosition(walk.at) > highest)
            walk.at = _runs.positionOfIndex(highest);
    }
}

template <typename Value> void QVRLEArray<Value>::keepWhatWalksHold() {
    ++_changes;
    for (Walk *walk = _walks; walk != nullptr; walk = walk->outer) {
        if (walk->kept)
            continue;
        const std::size_t chunk = walk->at.chunk;
        const auto kept = _runs.exchangeChunk(chunk);
        for (Walk *other = walk; other != nullptr; other = other->outer) {
            if (other->kept || other->at.chunk != chunk)
                continue;
            kept->entries[other->at.slot] = _runs.entry(other->at);
            other->index = _runs.indexOfPosition(other->at);
            other->kept = kept;
        }
    }
}

template <typename Value>
void QVRLEArray<Value>::appendRuns(std::vector<Item> &items, NSRange range, NSUInteger location) const {
    if (range.length == 0 || _runs.isEmpty())
        return;
    for (Position at = _runs.positionOfLocation(range.location); _runs.isValid(at); at = _runs.next(at)) {
        const NSUInteger start = std::max(_runs.location(at), range.location);
        if (start >= NSMaxRange(range))
            return;
        items.push_back({location + (start - range.location), _runs.entry(at)});
    }
}

// MARK: - Checking

template <typename Value> std::vector<QVRLEArrayRun<Value>> QVRLEArray<Value>::runs() const {
    std::vector<Run> runs;
    runs.reserve(_runs.count());
    for (Position at = _runs.begin(); _runs.isValid(at); at = _runs.next(at)) {
        const NSRange range = rangeOfRun(at);
        runs.emplace_back(range.location, range.length, _runs.entry(at));
    }
    for (std::size_t i = 1; i < runs.size(); ++i)
        runs[i - 1].setNextRun(&runs[i]);
    return runs;
}

template <typename Value>
void QVRLEArray<Value>::validateRuns(const std::vector<Run> &runs, NSUInteger count) {
    const auto require = [](bool condition, const char16_t *message) {
        if (!condition)
            QVFailRLEArrayAssertion(message);
    };
    if (!runs.empty())
        require(runs[0].length() != 0, u"Range length is empty");
    for (std::size_t i = 1; i < runs.size(); ++i) {
        const Run &before = runs[i - 1];
        const Run &run = runs[i];
        require(before.nextRun() == &run, u"Next run is incorrect");
        require(run.length() != 0, u"Range length is empty");
        require(run.location() <= count, u"Range location is invalid");
        require(run.length() <= count, u"Range length is invalid");
        require(run.location() == before.location() + before.length(), u"Range location is not contiguous");
        require(!run.isValueEqualToValue(before.value()), u"Range values of equality are contiguous");
    }
    if (!runs.empty())
        require(runs.back().nextRun() == nullptr, u"Next run is incorrect");
    const NSUInteger end = runs.empty() ? 0 : runs.back().location() + runs.back().length();
    require(end == count, u"Ranges do not match array count");
}

} // namespace quorvane
