#pragma once

#include "Platform/Foundation/NSRange.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace quorvane {

/// What all sequences have in common, each of them once: a key that a person types goes through half a dozen
/// sequences of different entries, and the code that it runs comes from main memory each time.
namespace detail {

/// The last of ascending values that is not above one; the first if all are. Without branches that a
/// processor could guess wrong. What is pending is added to each value that is looked at: without it, a
/// value can have wrapped around below zero.
[[gnu::noinline]] inline std::size_t lastAtOrBelow(const NSUInteger *values, std::size_t count,
                                                   NSUInteger value, NSUInteger pending) {
    std::size_t first = 0;
    while (count > 1) {
        const std::size_t half = count / 2;
        first += values[first + half] + pending <= value ? half : 0;
        count -= half;
    }
    return first;
}

/// Adds to the values from an index on.
[[gnu::noinline]] inline void addToEach(std::vector<NSUInteger> &values, std::size_t first,
                                        NSUInteger summand) {
    NSUInteger *const data = values.data();
    const std::size_t count = values.size();
    for (std::size_t i = first; i < count; ++i)
        data[i] += summand;
}

} // namespace detail

/// Where the attributes of a string, the runs of a run array and the lines of a line array stand: a sequence
/// of entries, each with a location, in which all entries behind a place can be moved at the cost of a few of
/// them.
///
/// Entries stand in chunks, with their locations relative to the first one. A flat directory holds for each
/// chunk the location and the index of its first entry. An edit moves all chunks behind it by the same
/// distance; that is written down once, as a shift that is pending behind one chunk. Editing in one place
/// adds to the pending shift, editing elsewhere first carries it to the new place, which touches two numbers
/// for each chunk in between. Every answer takes the shift into account, so nobody sees that it is pending.
///
/// Not safe for concurrent use while it changes.
template <typename Entry> class QVRunSequence {
public:
    /// Entries in a full chunk: few enough that moving half of them is cheap, many enough that the directory
    /// of a million entries stays in the cache.
    static constexpr std::size_t defaultChunkCapacity = 256;

    /// An entry's place, valid until the sequence changes.
    struct Position {
        std::size_t chunk = 0;
        std::size_t slot = 0;
        friend bool operator==(const Position &, const Position &) = default;
    };

    struct Item {
        NSUInteger location;
        Entry entry;
    };

    struct Chunk {
        /// Locations relative to the chunk's first entry.
        std::vector<NSUInteger> offsets;
        std::vector<Entry> entries;
    };

    explicit QVRunSequence(std::size_t chunkCapacity = defaultChunkCapacity)
        : _capacity(std::max<std::size_t>(chunkCapacity, 2)) {}
    QVRunSequence(const QVRunSequence &) = delete;
    QVRunSequence &operator=(const QVRunSequence &) = delete;

    NSUInteger count() const { return _count; }
    bool isEmpty() const { return _count == 0; }
    std::size_t chunkCapacity() const { return _capacity; }
    std::size_t chunkCount() const { return _chunks.size(); }

    // MARK: Places

    Position begin() const { return {0, 0}; }
    /// Behind the last entry.
    Position end() const {
        return _chunks.empty() ? Position{0, 0} : Position{_chunks.size() - 1, size(_chunks.size() - 1)};
    }
    /// The last entry of a sequence that is not empty.
    Position last() const { return {_chunks.size() - 1, size(_chunks.size() - 1) - 1}; }

    bool isValid(Position at) const { return at.chunk < _chunks.size() && at.slot < size(at.chunk); }

    /// The entry behind; `isValid` is false behind the last one.
    Position next(Position at) const {
        if (++at.slot == size(at.chunk) && at.chunk + 1 < _chunks.size())
            return {at.chunk + 1, 0};
        return at;
    }
    /// The entry before one that is not the first.
    Position previous(Position at) const {
        if (at.slot > 0)
            return {at.chunk, at.slot - 1};
        return {at.chunk - 1, size(at.chunk - 1) - 1};
    }
    bool isFirst(Position at) const { return at == Position{0, 0}; }

    /// The entry of that number; the end for the count.
    Position positionOfIndex(NSUInteger index) const {
        if (index >= _count)
            return end();
        const std::size_t chunk = chunkFor(_firstIndexes, _pendingIndex, index);
        return {chunk, static_cast<std::size_t>(index - firstIndex(chunk))};
    }
    NSUInteger indexOfPosition(Position at) const {
        return _chunks.empty() ? 0 : firstIndex(at.chunk) + at.slot;
    }

    /// The last entry that starts at or before a location, where locations ascend; the first one if all start
    /// behind it. The sequence must not be empty.
    Position positionOfLocation(NSUInteger location) const {
        const std::size_t chunk = chunkFor(_bases, _pendingLocation, location);
        const NSUInteger base = baseOf(chunk);
        if (location < base)
            return {chunk, 0};
        return {chunk,
                detail::lastAtOrBelow(_chunks[chunk]->offsets.data(), size(chunk), location - base, 0)};
    }

    // MARK: Entries

    NSUInteger location(Position at) const { return baseOf(at.chunk) + _chunks[at.chunk]->offsets[at.slot]; }
    /// Where the entry behind starts, or the given end behind the last one.
    NSUInteger nextLocation(Position at, NSUInteger end) const {
        const Chunk &chunk = *_chunks[at.chunk];
        if (at.slot + 1 < chunk.offsets.size())
            return baseOf(at.chunk) + chunk.offsets[at.slot + 1];
        return at.chunk + 1 < _chunks.size() ? baseOf(at.chunk + 1) : end;
    }
    const Entry &entry(Position at) const { return _chunks[at.chunk]->entries[at.slot]; }
    Entry &entry(Position at) { return _chunks[at.chunk]->entries[at.slot]; }

    const Chunk &chunk(std::size_t index) const { return *_chunks[index]; }
    NSUInteger baseOf(std::size_t chunk) const {
        return _bases[chunk] + (chunk > _exactThrough ? _pendingLocation : 0);
    }

    // MARK: Changes

    /// Takes entries out from a position on, puts items in there (whose locations are final), and moves all
    /// entries behind by a distance, which is negative by wrapping around. The items are moved from.
    void replace(Position at, NSUInteger removed, std::span<Item> items, NSUInteger distance) {
        if (!replaceInsideOfChunk(at, removed, items, distance) &&
            !replaceWhereTwoChunksMeet(at, removed, items, distance))
            replaceAcrossChunks(at, removed, items, distance);
    }
    void insert(Position at, NSUInteger location, Entry entry) {
        Item item{location, std::move(entry)};
        replace(at, 0, std::span<Item>(&item, 1), 0);
    }
    void remove(Position at, NSUInteger count) { replace(at, count, {}, 0); }
    /// Moves the entry at the position and all behind.
    void shift(Position from, NSUInteger distance) {
        if (distance == 0 || !isValid(from))
            return;
        carryShiftTo(from.chunk);
        if (from.slot == 0)
            _bases[from.chunk] += distance;
        else
            detail::addToEach(_chunks[from.chunk]->offsets, from.slot, distance);
        _pendingLocation += distance;
    }
    /// Moves one entry alone.
    void setLocation(Position at, NSUInteger location) {
        carryShiftTo(at.chunk);
        _chunks[at.chunk]->offsets[at.slot] = location - _bases[at.chunk];
        if (at.slot == 0)
            normalize(at.chunk);
    }

    /// Puts a new chunk with the same entries in the place of one and answers the old one, emptied: for a
    /// walk that handed out a reference into it before its callback changed the sequence.
    std::shared_ptr<Chunk> exchangeChunk(std::size_t index) {
        auto fresh = std::make_unique<Chunk>();
        Chunk &old = *_chunks[index];
        fresh->offsets = old.offsets;
        fresh->entries.reserve(old.entries.size());
        for (Entry &entry : old.entries)
            fresh->entries.push_back(std::move(entry));
        return std::shared_ptr<Chunk>(std::exchange(_chunks[index], std::move(fresh)));
    }

    /// Takes over the entries of another sequence, as copies.
    void assign(const QVRunSequence &other) {
        _chunks.clear();
        for (const auto &chunk : other._chunks)
            _chunks.push_back(std::make_unique<Chunk>(*chunk));
        _bases = other._bases;
        _firstIndexes = other._firstIndexes;
        _exactThrough = other._exactThrough;
        _pendingLocation = other._pendingLocation;
        _pendingIndex = other._pendingIndex;
        _count = other._count;
    }

    /// Whether directory and chunks agree; for the verify mode and tests.
    bool isConsistent() const {
        NSUInteger index = 0;
        for (std::size_t i = 0; i < _chunks.size(); ++i) {
            const Chunk &chunk = *_chunks[i];
            if (chunk.offsets.empty() || chunk.offsets.size() > _capacity || chunk.offsets[0] != 0 ||
                chunk.offsets.size() != chunk.entries.size() || firstIndex(i) != index)
                return false;
            index += chunk.offsets.size();
        }
        return index == _count && _bases.size() == _chunks.size() && _firstIndexes.size() == _chunks.size();
    }

    /// Bytes that the sequence itself takes, without what its entries own.
    std::size_t bytes() const {
        std::size_t sum = (_bases.capacity() + _firstIndexes.capacity()) * sizeof(NSUInteger) +
                          _chunks.capacity() * sizeof(_chunks[0]);
        for (const auto &chunk : _chunks)
            sum += sizeof(Chunk) + chunk->offsets.capacity() * sizeof(NSUInteger) +
                   chunk->entries.capacity() * sizeof(Entry);
        return sum;
    }

private:
    std::size_t size(std::size_t chunk) const { return _chunks[chunk]->offsets.size(); }
    NSUInteger firstIndex(std::size_t chunk) const {
        return _firstIndexes[chunk] + (chunk > _exactThrough ? _pendingIndex : 0);
    }

    /// The chunk for a location or index, found among the directory's values on the right side of the shift.
    std::size_t chunkFor(const std::vector<NSUInteger> &values, NSUInteger pending, NSUInteger value) const {
        const std::size_t behind = _exactThrough + 1;
        if (behind < values.size() && values[behind] + pending <= value)
            return behind +
                   detail::lastAtOrBelow(values.data() + behind, values.size() - behind, value, pending);
        // Who types goes on in the chunk of the last edit; halving reads a dozen places of a directory that
        // has left the caches since the last key.
        if (_exactThrough < values.size() && values[_exactThrough] <= value)
            return _exactThrough;
        return detail::lastAtOrBelow(values.data(), std::min(behind, values.size()), value, 0);
    }

    /// Makes the shift pending behind another chunk.
    void carryShiftTo(std::size_t chunk) {
        if (_pendingLocation != 0 || _pendingIndex != 0) {
            const std::size_t size = _chunks.size();
            if (chunk > _exactThrough)
                addToDirectory(_exactThrough + 1, std::min(chunk + 1, size), _pendingLocation, _pendingIndex);
            else
                addToDirectory(chunk + 1, std::min(_exactThrough + 1, size), 0 - _pendingLocation,
                               0 - _pendingIndex);
        }
        _exactThrough = chunk;
    }
    void addToDirectory(std::size_t first, std::size_t end, NSUInteger location, NSUInteger index) {
        for (std::size_t i = first; i < end; ++i)
            _bases[i] += location;
        for (std::size_t i = first; i < end; ++i)
            _firstIndexes[i] += index;
    }

    /// Makes locations relative to the first entry again.
    void normalize(std::size_t chunk) {
        std::vector<NSUInteger> &offsets = _chunks[chunk]->offsets;
        const NSUInteger first = offsets[0];
        if (first == 0)
            return;
        _bases[chunk] += first;
        for (NSUInteger &offset : offsets)
            offset -= first;
    }

    bool replaceInsideOfChunk(Position at, NSUInteger removed, std::span<Item> items, NSUInteger distance) {
        if (at.chunk >= _chunks.size() || removed > size(at.chunk) - at.slot)
            return false;
        const std::size_t newSize = size(at.chunk) - removed + items.size();
        const bool isTooSmall = newSize < size(at.chunk) && newSize < _capacity / 4 && _chunks.size() > 1;
        if (newSize == 0 || newSize > _capacity || isTooSmall)
            return false;
        carryShiftTo(at.chunk);
        Chunk &chunk = *_chunks[at.chunk];
        const NSUInteger base = _bases[at.chunk];
        const std::size_t kept = std::min<std::size_t>(removed, items.size());
        const auto slot = static_cast<std::ptrdiff_t>(at.slot + kept);
        for (std::size_t i = 0; i < kept; ++i)
            chunk.entries[at.slot + i] = std::move(items[i].entry);
        if (removed > kept) {
            const auto end = static_cast<std::ptrdiff_t>(at.slot + removed);
            chunk.entries.erase(chunk.entries.begin() + slot, chunk.entries.begin() + end);
            chunk.offsets.erase(chunk.offsets.begin() + slot, chunk.offsets.begin() + end);
        } else if (items.size() > kept) {
            chunk.offsets.insert(chunk.offsets.begin() + slot, items.size() - kept, 0);
            for (std::size_t i = kept; i < items.size(); ++i)
                chunk.entries.insert(chunk.entries.begin() + static_cast<std::ptrdiff_t>(at.slot + i),
                                     std::move(items[i].entry));
        }
        for (std::size_t i = 0; i < items.size(); ++i)
            chunk.offsets[at.slot + i] = items[i].location - base;
        if (distance != 0)
            detail::addToEach(chunk.offsets, at.slot + items.size(), distance);
        normalize(at.chunk);
        _pendingLocation += distance;
        _pendingIndex += items.size() - removed;
        _count += items.size() - removed;
        return true;
    }

    /// Takes from the end of one chunk and from the start of the next, as long as enough is left in both: who
    /// types where two chunks meet comes this way with each letter.
    bool replaceWhereTwoChunksMeet(Position at, NSUInteger removed, std::span<Item> items,
                                   NSUInteger distance) {
        if (at.chunk + 1 >= _chunks.size() || removed <= size(at.chunk) - at.slot)
            return false;
        const Position next{at.chunk + 1, 0};
        const NSUInteger removedHere = size(at.chunk) - at.slot;
        const NSUInteger removedThere = removed - removedHere;
        const std::size_t least = std::max<std::size_t>(_capacity / 4, 1);
        const std::size_t newSize = at.slot + items.size();
        if (newSize < least || newSize > _capacity || removedThere + least > size(next.chunk))
            return false;
        replaceInsideOfChunk(at, removedHere, items, distance);
        replaceInsideOfChunk(next, removedThere, {}, 0);
        return true;
    }

    /// The way of changes that fill, empty or cross chunks: makes the chunks concerned anew.
    void replaceAcrossChunks(Position at, NSUInteger removed, std::span<Item> items, NSUInteger distance) {
        std::size_t first = at.chunk;
        std::size_t end = first;
        std::vector<Item> all;
        Position rest = at;
        if (!_chunks.empty()) {
            NSUInteger left = removed;
            while (left > size(rest.chunk) - rest.slot && rest.chunk + 1 < _chunks.size()) {
                left -= size(rest.chunk) - rest.slot;
                rest = {rest.chunk + 1, 0};
            }
            rest.slot += left;
            end = rest.chunk + 1;
        }
        NSUInteger number = items.size();
        if (!_chunks.empty())
            number += at.slot + size(rest.chunk) - rest.slot;
        const bool takesNext = number != 0 && number < _capacity / 4 && end < _chunks.size();
        const bool takesPrevious = number != 0 && number < _capacity / 4 && !takesNext && first > 0;
        // What is appended fills its chunks, for the next will be appended too.
        const bool fills =
            removed == 0 && end >= _chunks.size() && (_chunks.empty() || rest.slot == size(rest.chunk));
        all.reserve(number + (takesNext || takesPrevious ? _capacity : 0));
        carryShiftTo(std::max<std::size_t>(end + (takesNext ? 1 : 0), 1) - 1);
        if (takesPrevious) {
            --first;
            take(all, first, 0, size(first), 0);
        }
        if (!_chunks.empty())
            take(all, at.chunk, 0, at.slot, 0);
        std::move(items.begin(), items.end(), std::back_inserter(all));
        if (!_chunks.empty())
            take(all, rest.chunk, rest.slot, size(rest.chunk), distance);
        if (takesNext) {
            take(all, end, 0, size(end), distance);
            ++end;
        }
        _pendingLocation += distance;
        putIn(all, first, end, fills);
    }

    void take(std::vector<Item> &items, std::size_t chunk, std::size_t slot, std::size_t end,
              NSUInteger distance) {
        Chunk &from = *_chunks[chunk];
        for (; slot < end; ++slot)
            items.push_back({_bases[chunk] + from.offsets[slot] + distance, std::move(from.entries[slot])});
    }

    /// Puts chunks with the items in the place of others: full ones, or such with the same share each and
    /// room for what is typed next, lest two chunks become one and two again with each letter.
    void putIn(std::vector<Item> &items, std::size_t first, std::size_t end, bool fills) {
        const std::size_t most = fills ? _capacity : std::max<std::size_t>(_capacity * 3 / 4, 1);
        const std::size_t number = (items.size() + most - 1) / most;
        std::vector<std::unique_ptr<Chunk>> chunks;
        std::vector<NSUInteger> bases;
        chunks.reserve(number);
        bases.reserve(number);
        std::size_t index = 0;
        for (std::size_t i = 0; i < number; ++i) {
            const std::size_t left = items.size() - index;
            const std::size_t share =
                fills ? std::min(left, _capacity) : (left + number - i - 1) / (number - i);
            auto chunk = std::make_unique<Chunk>();
            // A chunk that was begun behind a full one will be filled.
            const std::size_t room = fills && first + i > 0 ? _capacity : share;
            chunk->offsets.reserve(room);
            chunk->entries.reserve(room);
            bases.push_back(items[index].location);
            for (const std::size_t limit = index + share; index < limit; ++index) {
                chunk->offsets.push_back(items[index].location - bases.back());
                chunk->entries.push_back(std::move(items[index].entry));
            }
            chunks.push_back(std::move(chunk));
        }
        const NSUInteger firstNumber = first < _chunks.size() ? _firstIndexes[first] : _count;
        const NSUInteger numberBehind = end < _chunks.size() ? firstIndex(end) : _count;
        const NSUInteger change = items.size() - (numberBehind - firstNumber);
        std::vector<NSUInteger> firstIndexes;
        firstIndexes.reserve(number);
        NSUInteger sum = firstNumber;
        for (const auto &chunk : chunks) {
            firstIndexes.push_back(sum);
            sum += chunk->offsets.size();
        }
        exchange(_chunks, first, end, chunks);
        exchange(_bases, first, end, bases);
        exchange(_firstIndexes, first, end, firstIndexes);
        _count += change;
        _pendingIndex += change;
        const std::size_t behind = first + number;
        if (behind >= _chunks.size())
            _pendingLocation = _pendingIndex = 0;
        else if (behind == 0)
            addToDirectory(0, 1, _pendingLocation, _pendingIndex);
        _exactThrough = std::max<std::size_t>(behind, 1) - 1;
    }

    template <typename T>
    static void exchange(std::vector<T> &values, std::size_t first, std::size_t end, std::vector<T> &others) {
        const std::size_t kept = std::min(end - first, others.size());
        const auto middle = std::move(others.begin(), others.begin() + static_cast<std::ptrdiff_t>(kept),
                                      values.begin() + static_cast<std::ptrdiff_t>(first));
        if (end - first > kept)
            values.erase(middle, values.begin() + static_cast<std::ptrdiff_t>(end));
        else
            values.insert(middle, std::make_move_iterator(others.begin() + static_cast<std::ptrdiff_t>(kept)),
                          std::make_move_iterator(others.end()));
    }

    const std::size_t _capacity;
    NSUInteger _count = 0;
    std::vector<std::unique_ptr<Chunk>> _chunks;
    /// For each chunk its first entry's location and index, without the pending shift.
    std::vector<NSUInteger> _bases;
    std::vector<NSUInteger> _firstIndexes;
    /// The last chunk that the shift does not concern.
    std::size_t _exactThrough = 0;
    NSUInteger _pendingLocation = 0;
    NSUInteger _pendingIndex = 0;
};

} // namespace quorvane
