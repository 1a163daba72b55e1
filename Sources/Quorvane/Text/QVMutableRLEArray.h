#pragma once

#include "Quorvane/Text/QVRLEArray.h"

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
template <typename Value> class QV_EXPORT QVMutableRLEArray : public QVRLEArray<Value> {
    using Base = QVRLEArray<Value>;
    using Sequence = typename Base::Sequence;
    using Position = typename Base::Position;
    using Item = typename Base::Item;

public:
    /// An empty array. Tests make chunks tiny, so that they split and merge.
    explicit QVMutableRLEArray(std::size_t runsPerChunk = Sequence::defaultChunkCapacity)
        : Base(runsPerChunk) {}

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

    // MARK: Describing

    std::u16string_view className() const override { return u"QVMutableRLEArray"; }
    NSString description() const override {
        std::vector<NSString> descriptions;
        for (const auto &run : this->runs())
            descriptions.push_back(run.description());
        return NSString::stringWithFormat(u"<%@: %p> runs=%@", className(), static_cast<const void *>(this),
                                          descriptions);
    }

    /// Bytes that the array takes, without its values' own.
    std::size_t bytes() const { return sizeof(*this) + _runs.bytes(); }

private:
    friend struct QVRLEArrayProbe;
    using Base::_count;
    using Base::_runs;
    using Base::rangeOfRun;

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
    void replaceWithObject(NSRange range, const Value &object, NSUInteger length);
    bool extendPreviousRun(NSUInteger location, const Value &object, NSUInteger length);
    const Value &previousValue(const Edit &edit) const { return _runs.entry(_runs.previous(edit.first)); }
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
};

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
    this->keepWhatWalksHold();
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

/// What typing does to most arrays: slots come in behind such with an equal value, and all runs stay.
template <typename Value>
bool QVMutableRLEArray<Value>::extendPreviousRun(NSUInteger location, const Value &object,
                                                 NSUInteger length) {
    if (_runs.isEmpty() || location == 0)
        return false;
    Position behind = _runs.end();
    Position previous = _runs.last();
    if (location < _count) {
        previous = _runs.positionOfLocation(location - 1);
        behind = _runs.next(previous);
        if (!NSLocationInRange(location - 1, rangeOfRun(previous)))
            return false;
    }
    if (!areEqual(_runs.entry(previous), object))
        return false;
    this->keepWhatWalksHold();
    _runs.shift(behind, length);
    _count += length;
    verify();
    return true;
}

template <typename Value>
void QVMutableRLEArray<Value>::replaceWithObject(NSRange range, const Value &object, NSUInteger length) {
    if (range.length == 0 && (length == 0 || extendPreviousRun(range.location, object, length)))
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

template <typename Value>
std::shared_ptr<QVMutableRLEArray<Value>> QVMutableRLEArray<Value>::subarrayWithRange(NSRange range) const {
    if (range.location > _count || range.length > _count - range.location)
        QVThrowRLEArrayBounds(QVRLEArrayBounds::Subarray);
    auto array = std::make_shared<QVMutableRLEArray>(_runs.chunkCapacity());
    std::vector<Item> items;
    this->appendRuns(items, range, 0);
    array->_runs.replace(array->_runs.end(), 0, items, 0);
    array->_count = range.length;
    return array;
}

template <typename Value> void QVMutableRLEArray<Value>::verify() const {
#ifdef QUORVANE_VERIFY
    // All of it where it is small: tests with many edits on small arrays get every step checked.
    if (_runs.count() > 64)
        return;
    if (!_runs.isConsistent())
        QVFailRLEArrayAssertion(u"The directory of runs is wrong");
    this->validateRunIntegrity();
#endif
}

} // namespace quorvane
