#pragma once

#include "Platform/Foundation/QVBlock.h"
#include "Platform/Foundation/QVRunSequence.h"
#include "Quorvane/Text/QVRLEArrayRun.h"

#include <limits>
#include <vector>

namespace quorvane {

/// An array of objects in which long stretches of slots hold the same one: a stretch is stored once, as a
/// run. Text storages keep attributes, syntaxes and folds in such arrays, with one slot for each UTF-16 code
/// unit, and the layout its line fragments. The array knows nothing of text: it maps an index to a value and
/// takes splices whose cost depends neither on the number of slots nor, in practice, on that of the runs.
///
/// Runs have at least one slot, they tile the array, and neighbours never have equal values. A value is a
/// shared pointer to something with `isEqual`, or anything that has `==`; null is a value like others.
/// Only where a run starts is stored; it ends where the next one starts.
///
/// No lock is taken, and enumerations count as changes: the owner serializes all access.
template <typename Value> class QV_EXPORT QVMutableRLEArray : public NSObject {
public:
    using Run = QVRLEArrayRun<Value>;
    using BisectContext = QVRLEArrayBisectContext<Value>;
    using EnumerationBlock = QVBlock<void(const Value &value, NSRange range, bool &stop)>;
    /// Answers -1 when what is looked for comes before the probed run, 0 when it is found, anything else when
    /// it comes behind.
    using BisectBlock = QVBlock<NSInteger(const BisectContext &context, bool &stop)>;

    /// An empty array. Tests make chunks tiny, so that they split and merge.
    explicit QVMutableRLEArray(std::size_t runsPerChunk = Sequence::defaultChunkCapacity)
        : _runs(runsPerChunk) {}

    static std::shared_ptr<QVMutableRLEArray> init() { return std::make_shared<QVMutableRLEArray>(); }
    /// An array of that many slots with the object.
    static std::shared_ptr<QVMutableRLEArray> initWithObject(const Value &object, NSUInteger length) {
        auto array = init();
        array->replaceObjectsInRange({0, 0}, object, length);
        return array;
    }

    /// The runs copied, their values shared.
    std::shared_ptr<QVMutableRLEArray> copy() const {
        auto array = std::make_shared<QVMutableRLEArray>(_runs.chunkCapacity());
        array->_runs.assign(_runs);
        array->_count = _count;
        return array;
    }

    /// A new array of the slots of a range, which start at 0 there. Throws when the range leaves the array.
    std::shared_ptr<QVMutableRLEArray> subarrayWithRange(NSRange range) const;

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

    // MARK: Editing

    /// Inserts slots with the object. Throws for a location past the count.
    void insertObject(const Value &object, NSRange range);
    /// Throws when the range leaves the array.
    void deleteObjectsInRange(NSRange range);
    /// Puts that many slots with the object in the place of others. Throws when the range leaves the array.
    void replaceObjectsInRange(NSRange range, const Value &withObject, NSUInteger length);
    /// Puts slots of another array in the place of others. Throws when either range leaves its array. When
    /// slots at the very front are replaced and no run keeps its head, the source is read from its slot 0,
    /// whatever its range's location: callers replace a whole front by a source that starts with it.
    void replaceObjectsInRange(NSRange range, const QVMutableRLEArray &withObjectsInArray, NSRange fromRange);

    // MARK: Checking and describing

    /// Reports each broken invariant as an assertion failure.
    void validateRunIntegrity() const { validateRuns(runs(), _count); }
    /// The same for records of runs.
    static void validateRuns(const std::vector<Run> &runs, NSUInteger count);
    /// Records of all runs, linked with each other; keep the vector where it is.
    std::vector<Run> runs() const;

    std::u16string_view className() const override { return u"QVMutableRLEArray"; }
    NSString description() const override {
        std::vector<NSString> descriptions;
        for (const Run &run : runs())
            descriptions.push_back(run.description());
        return NSString::stringWithFormat(u"<%@: %p> runs=%@", className(), static_cast<const void *>(this),
                                          descriptions);
    }

    /// Bytes that the array takes, without its values' own.
    std::size_t bytes() const { return sizeof(*this) + _runs.bytes(); }

private:
    friend struct QVRLEArrayProbe;
    using Sequence = QVRunSequence<Value>;
    using Position = typename Sequence::Position;
    using Item = typename Sequence::Item;

    /// An enumeration whose callback is running. Changes look whether there are any, and leave them the chunk
    /// that holds the value they handed out.
    struct Walk {
        explicit Walk(const QVMutableRLEArray &array) : _array(array), outer(array._walks) {
            array._walks = this;
        }
        ~Walk() { _array._walks = outer; }
        Walk(const Walk &) = delete;
        Walk &operator=(const Walk &) = delete;

        const QVMutableRLEArray &_array;
        Walk *const outer;
        /// The run handed over; until the callback changes the array.
        Position at;
        /// The number it had then.
        NSUInteger index = 0;
        std::shared_ptr<typename Sequence::Chunk> kept;
    };

    NSRange rangeOfRun(Position at) const {
        const NSUInteger location = _runs.location(at);
        return {location, _runs.nextLocation(at, _count) - location};
    }
    void enumerateForward(NSRange range, bool wholeRuns, EnumerationBlock block) const;
    void enumerateBackward(NSRange range, bool wholeRuns, EnumerationBlock block) const;

    /// What stands around the slots of an edit once they are gone.
    struct Edit {
        /// Behind the run before, if there is one; that run may reach into the slots.
        Position first;
        /// Runs that lose all their slots, from there on.
        NSUInteger removed = 0;
        bool hasPrevious = false;
        /// Whether the run before goes on behind the slots: as the same run, or as one with an equal value.
        bool isJoined = false;
        /// Whether a run that stands for itself follows, and where it is.
        bool hasNext = false;
        Position next;
    };
    bool beginEdit(NSRange range, Edit &edit) const;
    void finishEdit(const Edit &edit, std::span<Item> items, NSRange range, NSUInteger length,
                    bool nextLeaves, bool nextGrows = false);
    void appendRuns(std::vector<Item> &items, NSRange range, NSUInteger location) const;
    void replaceWithObject(NSRange range, const Value &object, NSUInteger length);
    const Value &previousValue(const Edit &edit) const { return _runs.entry(_runs.previous(edit.first)); }
    /// Keeps for each walk what it has handed out.
    void keepWhatWalksHold();
    void verify() const;

    static bool areEqual(const Value &stored, const Value &other) {
        return QVRLEArrayValuesAreEqual(stored, other);
    }

    static void checkEdit(NSRange range, NSUInteger length, NSUInteger count, QVRLEArrayBounds insertion) {
        if (range.location > count)
            QVThrowRLEArrayBounds(insertion);
        if (range.length > count - range.location)
            QVThrowRLEArrayBounds(QVRLEArrayBounds::Replacement);
        if (length > std::numeric_limits<NSUInteger>::max() - (count - range.length))
            QVThrowRLEArrayBounds(insertion);
    }

    NSUInteger _count = 0;
    Sequence _runs;
    /// Grows with each change, so that a walk sees that its callback made one.
    std::uint64_t _changes = 0;
    mutable Walk *_walks = nullptr;
};

// MARK: - Looking up

template <typename Value> NSUInteger QVMutableRLEArray<Value>::runIndexForIndex(NSUInteger index) const {
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
const Value &QVMutableRLEArray<Value>::objectAtIndex(NSUInteger index, NSRange *effectiveRange,
                                                     NSUInteger *runIndex) const {
    static const Value none{};
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
Value QVMutableRLEArray<Value>::bisectWithEffectiveRange(NSRange *effectiveRange,
                                                         BisectBlock usingBlock) const {
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
void QVMutableRLEArray<Value>::enumerateObjectsInRange(NSRange range, std::uint64_t options,
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
void QVMutableRLEArray<Value>::enumerateForward(NSRange range, bool wholeRuns, EnumerationBlock block) const {
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
void QVMutableRLEArray<Value>::enumerateBackward(NSRange range, bool wholeRuns,
                                                 EnumerationBlock block) const {
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

template <typename Value> void QVMutableRLEArray<Value>::keepWhatWalksHold() {
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

// MARK: - Editing

template <typename Value> bool QVMutableRLEArray<Value>::beginEdit(NSRange range, Edit &edit) const {
    const NSUInteger end = NSMaxRange(range);
    edit.first = _runs.end();
    if (range.location == _count) {
        edit.hasPrevious = !_runs.isEmpty();
        return true;
    }
    const Position at = _runs.isEmpty() ? _runs.end() : _runs.positionOfLocation(range.location);
    const NSRange run = _runs.isEmpty() ? NSRange{0, 0} : rangeOfRun(at);
    if (!NSLocationInRange(range.location, run)) {
        QVFailRLEArrayAssertion(u"Run range does not contain the expected index");
        return false;
    }
    const bool keepsHead = run.location < range.location;
    edit.first = keepsHead ? _runs.next(at) : at;
    edit.hasPrevious = keepsHead || !_runs.isFirst(at);
    if (end < NSMaxRange(run)) {
        edit.isJoined = keepsHead;
        edit.hasNext = !keepsHead;
        edit.next = at;
        return true;
    }
    const NSUInteger first = _runs.indexOfPosition(edit.first);
    if (end == _count) {
        edit.removed = _runs.count() - first;
        return true;
    }
    edit.next = _runs.next(at);
    if (end >= _runs.nextLocation(edit.next, _count))
        edit.next = _runs.positionOfLocation(end);
    edit.removed = _runs.indexOfPosition(edit.next) - first;
    edit.hasNext = true;
    edit.isJoined = edit.hasPrevious && areEqual(previousValue(edit), _runs.entry(edit.next));
    return true;
}

template <typename Value>
void QVMutableRLEArray<Value>::finishEdit(const Edit &edit, std::span<Item> items, NSRange range,
                                          NSUInteger length, bool nextLeaves, bool nextGrows) {
    keepWhatWalksHold();
    const NSUInteger change = length - range.length;
    if (edit.hasNext && !nextLeaves) {
        // Where it has to stand so that moving it with all the others brings it to its place.
        const NSUInteger location = range.location + (nextGrows ? 0 : length) - change;
        if (_runs.location(edit.next) != location)
            _runs.setLocation(edit.next, location);
    }
    _runs.replace(edit.first, edit.removed + (edit.hasNext && nextLeaves ? 1 : 0), items, change);
    _count += change;
    verify();
}

template <typename Value>
void QVMutableRLEArray<Value>::replaceWithObject(NSRange range, const Value &object, NSUInteger length) {
    if (range.length == 0 && length == 0)
        return;
    Edit edit;
    if (!beginEdit(range, edit))
        return;
    Item items[2];
    std::size_t number = 0;
    bool nextLeaves = edit.isJoined;
    bool nextGrows = false;
    if (length != 0 && !(edit.hasPrevious && areEqual(previousValue(edit), object))) {
        const bool isFront = range.length != 0 && !edit.hasPrevious;
        if (edit.hasNext && !edit.isJoined) {
            // At the front the new value takes the place of an equal one behind, elsewhere that one grows.
            const Value &next = _runs.entry(edit.next);
            nextLeaves = isFront && areEqual(object, next);
            nextGrows = !isFront && areEqual(next, object);
        }
        if (!nextGrows)
            items[number++] = {range.location, object};
        if (edit.isJoined)
            items[number++] = {range.location + length, previousValue(edit)};
    }
    finishEdit(edit, std::span<Item>(items, number), range, length, nextLeaves, nextGrows);
}

template <typename Value> void QVMutableRLEArray<Value>::insertObject(const Value &object, NSRange range) {
    checkEdit({range.location, 0}, range.length, _count, QVRLEArrayBounds::Insertion);
    replaceWithObject({range.location, 0}, object, range.length);
}

template <typename Value> void QVMutableRLEArray<Value>::deleteObjectsInRange(NSRange range) {
    if (range.location > _count || range.length > _count - range.location)
        QVThrowRLEArrayBounds(QVRLEArrayBounds::Deletion);
    replaceWithObject(range, Value{}, 0);
}

template <typename Value>
void QVMutableRLEArray<Value>::replaceObjectsInRange(NSRange range, const Value &withObject,
                                                     NSUInteger length) {
    checkEdit(range, length, _count, QVRLEArrayBounds::Insertion);
    replaceWithObject(range, withObject, length);
}

template <typename Value>
void QVMutableRLEArray<Value>::replaceObjectsInRange(NSRange range,
                                                     const QVMutableRLEArray &withObjectsInArray,
                                                     NSRange fromRange) {
    const QVMutableRLEArray &source = withObjectsInArray;
    checkEdit(range, fromRange.length, _count, QVRLEArrayBounds::Insertions);
    if (fromRange.location > source._count || fromRange.length > source._count - fromRange.location)
        QVThrowRLEArrayBounds(QVRLEArrayBounds::Insertions);
    if (range.length == 0 && fromRange.length == 0)
        return;
    Edit edit;
    if (!beginEdit(range, edit))
        return;
    std::vector<Item> items;
    bool nextLeaves = edit.isJoined;
    if (fromRange.length != 0) {
        if (range.length != 0 && !edit.hasPrevious)
            fromRange.location = 0;
        source.appendRuns(items, fromRange, range.location);
        if (items.empty())
            return;
        if (edit.hasPrevious && areEqual(previousValue(edit), items.front().entry))
            items.erase(items.begin());
        const Value &last = items.empty() ? previousValue(edit) : items.back().entry;
        if (edit.isJoined) {
            if (!areEqual(last, previousValue(edit)))
                items.push_back({range.location + fromRange.length, previousValue(edit)});
        } else if (edit.hasNext) {
            nextLeaves = areEqual(last, _runs.entry(edit.next));
        }
    }
    finishEdit(edit, items, range, fromRange.length, nextLeaves);
}

/// The runs of a range, cut to it, for an array in which it starts at a location.
template <typename Value>
void QVMutableRLEArray<Value>::appendRuns(std::vector<Item> &items, NSRange range,
                                          NSUInteger location) const {
    if (range.length == 0 || _runs.isEmpty())
        return;
    for (Position at = _runs.positionOfLocation(range.location); _runs.isValid(at); at = _runs.next(at)) {
        const NSUInteger start = std::max(_runs.location(at), range.location);
        if (start >= NSMaxRange(range))
            return;
        items.push_back({location + (start - range.location), _runs.entry(at)});
    }
}

template <typename Value>
std::shared_ptr<QVMutableRLEArray<Value>> QVMutableRLEArray<Value>::subarrayWithRange(NSRange range) const {
    if (range.location > _count || range.length > _count - range.location)
        QVThrowRLEArrayBounds(QVRLEArrayBounds::Subarray);
    auto array = std::make_shared<QVMutableRLEArray>(_runs.chunkCapacity());
    std::vector<Item> items;
    appendRuns(items, range, 0);
    array->_runs.replace(array->_runs.end(), 0, items, 0);
    array->_count = range.length;
    return array;
}

// MARK: - Checking

template <typename Value> std::vector<QVRLEArrayRun<Value>> QVMutableRLEArray<Value>::runs() const {
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
void QVMutableRLEArray<Value>::validateRuns(const std::vector<Run> &runs, NSUInteger count) {
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

template <typename Value> void QVMutableRLEArray<Value>::verify() const {
#ifdef QUORVANE_VERIFY
    // All of it where it is small: tests with many edits on small arrays get every step checked.
    if (_runs.count() > 64)
        return;
    if (!_runs.isConsistent())
        QVFailRLEArrayAssertion(u"The directory of runs is wrong");
    validateRunIntegrity();
#endif
}

} // namespace quorvane
