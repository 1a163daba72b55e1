#include "Platform/Foundation/QVGapBuffer.h"

#include <functional>

namespace quorvane {

namespace {

/// Texts up to this size get exactly the room they need at first: most strings are never typed into. In
/// longer ones the room costs address space, and memory only once it is written to.
constexpr std::size_t smallText = 4096;
/// What a growing text gets on top, as a part of its length. So each character is moved a few times in all.
constexpr std::size_t shareOfRoom = 8;
constexpr std::size_t leastRoom = 32;

/// The room that a text of this length gets besides.
std::size_t roomFor(std::size_t length) { return leastRoom + length / shareOfRoom; }

void copyUnits(char16_t *to, const char16_t *from, std::size_t count) {
    if (count != 0)
        std::memmove(to, from, count * sizeof(char16_t));
}

} // namespace

QVGapBuffer &QVGapBuffer::operator=(const QVGapBuffer &other) {
    if (this == &other)
        return *this;
    const std::size_t length = other.length();
    const std::size_t capacity = length + (length <= smallText ? 0 : roomFor(length));
    auto units = std::make_unique_for_overwrite<char16_t[]>(capacity);
    other.reader().getCharacters(units.get(), {0, length});
    _units = std::move(units);
    _capacity = _gapEnd = capacity;
    _gapStart = length;
    return *this;
}

void QVGapBuffer::moveGapTo(std::size_t location) {
    char16_t *const units = _units.get();
    if (location < _gapStart) {
        const std::size_t count = _gapStart - location;
        copyUnits(units + _gapEnd - count, units + location, count);
        _gapStart -= count;
        _gapEnd -= count;
    } else if (location > _gapStart) {
        const std::size_t count = location - _gapStart;
        copyUnits(units + _gapStart, units + _gapEnd, count);
        _gapStart += count;
        _gapEnd += count;
    }
}

/// Takes a range out and leaves the gap in its place, in a buffer of another size.
void QVGapBuffer::reallocate(NSRange removed, std::size_t capacity) {
    auto units = std::make_unique_for_overwrite<char16_t[]>(capacity);
    const std::size_t behind = length() - NSMaxRange(removed);
    const QVTextReader text = reader();
    text.getCharacters(units.get(), {0, removed.location});
    text.getCharacters(units.get() + (capacity - behind), {NSMaxRange(removed), behind});
    _units = std::move(units);
    _capacity = capacity;
    _gapStart = removed.location;
    _gapEnd = capacity - behind;
}

void QVGapBuffer::replaceCharactersInRange(NSRange range, std::u16string_view withString) {
    const std::less<const char16_t *> isBefore;
    if (!withString.empty() && !isBefore(withString.data(), _units.get()) &&
        isBefore(withString.data(), _units.get() + _capacity)) {
        replaceCharactersInRange(range, std::u16string(withString));
        return;
    }
    const std::size_t newLength = length() - range.length + withString.size();
    const bool isTooLarge = _capacity > smallText && newLength < _capacity / 4;
    if (newLength > _capacity || isTooLarge) {
        const bool isNew = _capacity == 0 && newLength <= smallText;
        reallocate(range, newLength + (isNew ? 0 : roomFor(newLength)));
    } else {
        // Of what goes, nothing is moved.
        if (range.location + range.length < _gapStart)
            moveGapTo(range.location + range.length);
        else if (range.location > _gapStart)
            moveGapTo(range.location);
        _gapEnd += NSMaxRange(range) - _gapStart;
        _gapStart = range.location;
    }
    copyUnits(_units.get() + _gapStart, withString.data(), withString.size());
    _gapStart += withString.size();
}

} // namespace quorvane
