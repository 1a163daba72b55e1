#pragma once

#include "Quorvane/Matches/QVMatch.h"

#include <memory>
#include <utility>

namespace quorvane {

class NSIndexSet;

/// The many children of one match, cut into pieces so that a child comes and goes at the cost of its piece.
/// A sequence of matches and no more: links, assertions and ownership of the sequence are its match's, which
/// changes to this form from a plain array when it gets more children than `fewSubmatches`.
class QVSubmatchChunks {
public:
    /// So many children and fewer stand in one array.
    static constexpr NSUInteger fewSubmatches = 512;
    /// Children of a piece that is made anew, and the most that one may hold. A step costs half a piece and
    /// four bytes for each piece: with these, two million children cost about as much for the one as for the
    /// other.
    static constexpr NSUInteger usualChunkSize = 512;
    static constexpr NSUInteger largestChunkSize = 1024;

    explicit QVSubmatchChunks(QVScopeMatchArray &&submatches);

    NSUInteger count() const { return _count; }
    /// The pieces, none of them empty; how many children stand in front of each.
    const std::vector<QVScopeMatchArray> &chunks() const { return _chunks; }
    const std::vector<std::uint32_t> &starts() const { return _starts; }
    /// The piece that holds the child at an index below the count.
    static std::size_t chunkOfIndex(const std::uint32_t *starts, std::size_t chunkCount, NSUInteger count,
                                    NSUInteger index);

    /// `submatches` takes `count` entries from `first` in, at an index not above the count.
    void insert(NSUInteger index, const QVScopeMatchReference *first, NSUInteger count);
    /// Moves the children of a range out, behind what `into` has.
    void take(NSRange range, QVScopeMatchArray &into);
    template <typename Release> void releaseEach(Release release) {
        for (QVScopeMatchArray &chunk : _chunks)
            for (QVScopeMatchReference &match : chunk)
                release(match);
    }
    /// What is wrong with the pieces; null where nothing is.
    const char *problem() const;

private:
    void split(QVScopeMatchArray &&submatches, std::vector<QVScopeMatchArray> &into) const;
    void countFrom(std::size_t chunk);
    bool joinIfSmall(std::size_t chunk);

    std::vector<QVScopeMatchArray> _chunks;
    std::vector<std::uint32_t> _starts;
    NSUInteger _count = 0;
};

/// What a match keeps of its children: nothing, one array, or pieces. Nearly all regions have few, so the
/// array itself stands here.
class QVSubmatchStore {
public:
    QVSubmatchStore() = default;
    ~QVSubmatchStore();
    QVSubmatchStore(const QVSubmatchStore &) = delete;
    QVSubmatchStore &operator=(const QVSubmatchStore &) = delete;

    explicit operator bool() const { return _bits != 0; }
    /// One of the two, or none.
    const QVScopeMatchArray *array() const { return _bits == arrayBits ? &_array : nullptr; }
    QVSubmatchChunks *chunks() const {
        return _bits > arrayBits ? reinterpret_cast<QVSubmatchChunks *>(_bits) : nullptr;
    }
    NSUInteger count() const;
    QVScopeMatch *operator[](NSUInteger index) const;

    void reset() {
        if (_bits != 0)
            clear();
    }
    /// Calls `release` with each reference in order, which may let it go; nothing else may be asked then
    /// before `reset`.
    template <typename Release> void releaseEach(Release release) {
        if (QVSubmatchChunks *const pieces = chunks())
            pieces->releaseEach(release);
        else
            for (QVScopeMatchReference &match : _array)
                release(match);
    }
    void assign(QVScopeMatchArray &&submatches);
    void insert(NSUInteger index, const QVScopeMatchReference *first, NSUInteger count);
    void take(NSRange range, QVScopeMatchArray &into);

private:
    void clear();
    void cutIntoChunks();

    /// Nothing, the array, or where the pieces are.
    static constexpr std::uintptr_t arrayBits = 1;
    std::uintptr_t _bits = 0;
    QVScopeMatchArray _array;
};

/// The children of a match, in location order: a small view that stays good until they change. Null-like for
/// matches that are no containers, and for containers that never had any.
class QVSubmatches {
public:
    QVSubmatches() = default;
    explicit QVSubmatches(const QVScopeMatchArray *matches)
        : _chunks(matches), _chunkCount(matches != nullptr), _count(matches ? matches->size() : 0) {}
    explicit QVSubmatches(const QVSubmatchStore &store) : QVSubmatches(store.array()) {
        if (const QVSubmatchChunks *const chunks = store.chunks()) {
            _starts = chunks->starts().data();
            _chunks = chunks->chunks().data();
            _chunkCount = chunks->chunks().size();
            _count = chunks->count();
        }
    }

    explicit operator bool() const { return _chunks != nullptr || _starts != nullptr; }
    NSUInteger count() const { return _count; }
    bool isEmpty() const { return _count == 0; }
    /// The child at an index below the count.
    QVScopeMatch *operator[](NSUInteger index) const {
        if (_starts == nullptr)
            return (*_chunks)[index].get();
        const std::size_t chunk = QVSubmatchChunks::chunkOfIndex(_starts, _chunkCount, _count, index);
        return _chunks[chunk][index - _starts[chunk]].get();
    }

    class Iterator {
    public:
        Iterator() = default;
        Iterator(const QVScopeMatchArray *chunk, const QVScopeMatchArray *lastChunk)
            : _match(chunk->data()), _chunkEnd(chunk->data() + chunk->size()), _chunk(chunk),
              _lastChunk(lastChunk) {}
        explicit Iterator(const QVScopeMatchReference *end) : _match(end) {}
        QVScopeMatch *operator*() const { return _match->get(); }
        Iterator &operator++() {
            if (++_match == _chunkEnd && _chunk != _lastChunk) {
                ++_chunk;
                _match = _chunk->data();
                _chunkEnd = _match + _chunk->size();
            }
            return *this;
        }
        bool operator==(const Iterator &other) const { return _match == other._match; }

    private:
        const QVScopeMatchReference *_match = nullptr;
        const QVScopeMatchReference *_chunkEnd = nullptr;
        const QVScopeMatchArray *_chunk = nullptr;
        const QVScopeMatchArray *_lastChunk = nullptr;
    };
    Iterator begin() const {
        return _chunkCount != 0 ? Iterator(_chunks, _chunks + _chunkCount - 1) : Iterator();
    }
    Iterator end() const {
        if (_chunkCount == 0)
            return Iterator();
        const QVScopeMatchArray &last = _chunks[_chunkCount - 1];
        return Iterator(last.data() + last.size());
    }

private:
    const QVScopeMatchArray *_chunks = nullptr;
    /// Null where the children stand in one array.
    const std::uint32_t *_starts = nullptr;
    std::size_t _chunkCount = 0;
    NSUInteger _count = 0;
};

inline std::size_t QVSubmatchChunks::chunkOfIndex(const std::uint32_t *starts, std::size_t chunkCount,
                                                  NSUInteger count, NSUInteger index) {
    // Pieces are about equally large, so the right one is mostly where it would be if they were.
    std::size_t chunk = index * chunkCount / count;
    if (starts[chunk] <= index && (chunk + 1 == chunkCount || index < starts[chunk + 1]))
        return chunk;
    std::size_t low = 0;
    std::size_t high = chunkCount;
    while (high - low > 1) {
        const std::size_t middle = low + (high - low) / 2;
        (starts[middle] <= index ? low : high) = middle;
    }
    return low;
}

inline NSUInteger QVSubmatchStore::count() const {
    if (const QVSubmatchChunks *const pieces = chunks())
        return pieces->count();
    return _array.size();
}

inline QVScopeMatch *QVSubmatchStore::operator[](NSUInteger index) const {
    return QVSubmatches(*this)[index];
}

} // namespace quorvane
