#include "Quorvane/Matches/QVSubmatches.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Matches/QVScopeMatch.h"

#include <iterator>

namespace quorvane {

namespace {

QVScopeMatchArray::iterator at(QVScopeMatchArray &array, NSUInteger index) {
    return array.begin() + static_cast<std::ptrdiff_t>(index);
}

void verify([[maybe_unused]] const QVSubmatchChunks &chunks) {
#if defined(QUORVANE_VERIFY)
    QVAssert(chunks.problem() == nullptr, u"The pieces of a list of submatches are out of order");
#endif
}

} // namespace

QVSubmatchChunks::QVSubmatchChunks(QVScopeMatchArray &&submatches) : _count(submatches.size()) {
    split(std::move(submatches), _chunks);
    countFrom(0);
    verify(*this);
}

void QVSubmatchChunks::split(QVScopeMatchArray &&submatches, std::vector<QVScopeMatchArray> &into) const {
    const std::size_t count = submatches.size();
    const std::size_t pieces = (count + usualChunkSize - 1) / usualChunkSize;
    into.reserve(into.size() + pieces);
    std::size_t taken = 0;
    for (std::size_t piece = 0; piece < pieces; ++piece) {
        const std::size_t end = count * (piece + 1) / pieces;
        into.emplace_back(std::make_move_iterator(at(submatches, taken)),
                          std::make_move_iterator(at(submatches, end)));
        taken = end;
    }
}

void QVSubmatchChunks::countFrom(std::size_t chunk) {
    _starts.resize(_chunks.size());
    std::size_t start = chunk == 0 ? 0 : _starts[chunk - 1] + _chunks[chunk - 1].size();
    for (; chunk < _chunks.size(); ++chunk) {
        _starts[chunk] = static_cast<std::uint32_t>(start);
        start += _chunks[chunk].size();
    }
}

void QVSubmatchChunks::insert(NSUInteger index, const QVScopeMatchReference *first, NSUInteger count) {
    if (count == 0)
        return;
    if (_chunks.empty())
        _chunks.emplace_back();
    _starts.resize(_chunks.size());
    const std::size_t chunk =
        index == _count ? _chunks.size() - 1 : chunkOfIndex(_starts.data(), _chunks.size(), _count, index);
    QVScopeMatchArray &matches = _chunks[chunk];
    matches.insert(at(matches, index - _starts[chunk]), first, first + count);
    _count += count;
    if (matches.size() <= largestChunkSize) {
        for (std::size_t later = chunk + 1; later < _starts.size(); ++later)
            _starts[later] += static_cast<std::uint32_t>(count);
    } else {
        std::vector<QVScopeMatchArray> pieces;
        split(std::move(matches), pieces);
        _chunks[chunk] = std::move(pieces.front());
        _chunks.insert(_chunks.begin() + static_cast<std::ptrdiff_t>(chunk) + 1,
                       std::make_move_iterator(pieces.begin() + 1), std::make_move_iterator(pieces.end()));
        countFrom(chunk);
    }
    verify(*this);
}

bool QVSubmatchChunks::joinIfSmall(std::size_t chunk) {
    if (chunk + 1 >= _chunks.size() || _chunks[chunk].size() + _chunks[chunk + 1].size() > usualChunkSize)
        return false;
    QVScopeMatchArray &next = _chunks[chunk + 1];
    _chunks[chunk].insert(_chunks[chunk].end(), std::make_move_iterator(next.begin()),
                          std::make_move_iterator(next.end()));
    _chunks.erase(_chunks.begin() + static_cast<std::ptrdiff_t>(chunk) + 1);
    return true;
}

void QVSubmatchChunks::take(NSRange range, QVScopeMatchArray &into) {
    if (range.length == 0)
        return;
    const std::size_t first = chunkOfIndex(_starts.data(), _chunks.size(), _count, range.location);
    std::size_t chunk = first;
    NSUInteger offset = range.location - _starts[first];
    std::size_t emptyFrom = _chunks.size();
    std::size_t emptyEnd = _chunks.size();
    for (NSUInteger rest = range.length; rest != 0; ++chunk, offset = 0) {
        QVScopeMatchArray &matches = _chunks[chunk];
        const NSUInteger end = std::min<NSUInteger>(offset + rest, matches.size());
        into.insert(into.end(), std::make_move_iterator(at(matches, offset)),
                    std::make_move_iterator(at(matches, end)));
        matches.erase(at(matches, offset), at(matches, end));
        rest -= end - offset;
        if (matches.empty()) {
            emptyFrom = std::min(emptyFrom, chunk);
            emptyEnd = chunk + 1;
        }
    }
    _count -= range.length;
    bool recount = chunk > first + 1 || emptyFrom < _chunks.size();
    if (emptyFrom < _chunks.size())
        _chunks.erase(_chunks.begin() + static_cast<std::ptrdiff_t>(emptyFrom),
                      _chunks.begin() + static_cast<std::ptrdiff_t>(emptyEnd));
    const std::size_t before = first == 0 ? 0 : first - 1;
    recount |= joinIfSmall(first);
    recount |= first != 0 && joinIfSmall(before);
    if (recount)
        countFrom(before);
    else
        for (std::size_t later = first + 1; later < _starts.size(); ++later)
            _starts[later] -= static_cast<std::uint32_t>(range.length);
    verify(*this);
}

const char *QVSubmatchChunks::problem() const {
    if (_starts.size() != _chunks.size())
        return "there is not one start for each piece";
    NSUInteger start = 0;
    for (std::size_t chunk = 0; chunk < _chunks.size(); ++chunk) {
        if (_chunks[chunk].empty())
            return "a piece is empty";
        if (_chunks[chunk].size() > largestChunkSize)
            return "a piece is too large";
        if (_starts[chunk] != start)
            return "a piece starts elsewhere";
        start += _chunks[chunk].size();
    }
    return start == _count ? nullptr : "there are more or fewer children than counted";
}

QVSubmatchStore::~QVSubmatchStore() { reset(); }

void QVSubmatchStore::clear() {
    // Cleared first: what dies here may look at its parent.
    const QVScopeMatchArray dying = std::exchange(_array, {});
    if (const std::uintptr_t bits = std::exchange(_bits, 0); bits > arrayBits)
        delete reinterpret_cast<QVSubmatchChunks *>(bits);
}

void QVSubmatchStore::assign(QVScopeMatchArray &&submatches) {
    reset();
    _bits = arrayBits;
    _array = std::move(submatches);
    cutIntoChunks();
}

void QVSubmatchStore::cutIntoChunks() {
    if (_array.size() <= QVSubmatchChunks::fewSubmatches)
        return;
    _bits = reinterpret_cast<std::uintptr_t>(new QVSubmatchChunks(std::move(_array)));
    _array = {};
}

void QVSubmatchStore::insert(NSUInteger index, const QVScopeMatchReference *first, NSUInteger count) {
    if (QVSubmatchChunks *const pieces = chunks()) {
        pieces->insert(index, first, count);
        return;
    }
    if (_bits == 0) {
        _bits = arrayBits;
        _array.reserve(10);
    }
    _array.insert(at(_array, index), first, first + count);
    cutIntoChunks();
}

void QVSubmatchStore::take(NSRange range, QVScopeMatchArray &into) {
    if (QVSubmatchChunks *const pieces = chunks()) {
        pieces->take(range, into);
        return;
    }
    if (range.length == 0)
        return;
    const auto first = at(_array, range.location);
    const auto end = at(_array, NSMaxRange(range));
    into.insert(into.end(), std::make_move_iterator(first), std::make_move_iterator(end));
    _array.erase(first, end);
}

} // namespace quorvane
