#pragma once

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSRange.h"

#include <functional>
#include <string>
#include <string_view>

namespace quorvane {

/// A parse's own copy of its document's text: one contiguous buffer that the matcher and the line scan read
/// directly. An edit moves what stands in front of it or what stands behind it, whichever is less: the buffer
/// has room on both sides. It has one readable zero unit before the text's first and behind its last unit,
/// which the matcher may touch when the text begins or ends in half a character.
class QVParseText {
public:
    /// Room for this many units; 1024 where none are asked for.
    explicit QVParseText(NSUInteger capacity) : _start(capacity / partInFront + 1) {
        _storage.reserve(_start + (capacity != 0 ? capacity : 1024));
        _storage.resize(_start);
    }

    /// The text's first unit; good until the next replacement.
    const char16_t *characters() const { return _storage.data() + _start; }
    NSUInteger length() const { return _storage.size() - _start; }
    NSUInteger capacity() const { return _storage.capacity() - _start; }
    std::u16string_view view() const { return {characters(), length()}; }

    /// Throws `NSRangeException` when the range leaves the text.
    void replaceCharactersInRange(NSRange range, std::u16string_view withString) {
        if (range.location > length() || range.length > length() - range.location)
            throw NSException(
                NSRangeException,
                NSString::stringWithFormat(u"Range %@ is outside of a text of length %lu", range, length()));
        const NSUInteger behind = length() - range.location - range.length;
        if (range.location < behind && range.length != withString.size() && !isOwn(withString))
            replaceMovingFront(range, withString);
        else
            _storage.replace(_start + range.location, range.length, withString);
    }

private:
    /// The room in front is this part of the text's length: thousands of letters in a file of 9 MB.
    static constexpr NSUInteger partInFront = 64;

    bool isOwn(std::u16string_view string) const {
        const std::less_equal<const char16_t *> isNotBehind;
        return isNotBehind(_storage.data(), string.data()) &&
               isNotBehind(string.data(), _storage.data() + _storage.size());
    }

    void replaceMovingFront(NSRange range, std::u16string_view withString) {
        // Modulo the range of positions, so that what gets longer starts earlier.
        const NSUInteger distance = range.length - withString.size();
        if (withString.size() > range.length && withString.size() - range.length >= _start)
            makeRoomInFront(withString.size() - range.length);
        char16_t *const start = _storage.data() + _start;
        _start += distance;
        using Units = std::char_traits<char16_t>;
        Units::move(_storage.data() + _start, start, range.location);
        Units::copy(_storage.data() + _start + range.location, withString.data(), withString.size());
        _storage[_start - 1] = u'\0';
    }

    void makeRoomInFront(NSUInteger count) {
        const NSUInteger start = 64 + count + length() / partInFront;
        std::u16string storage;
        storage.reserve(start + capacity());
        storage.assign(start, u'\0');
        storage.append(view());
        _storage = std::move(storage);
        _start = start;
    }

    std::u16string _storage;
    /// Where the text starts; what stands before it is room, whose last unit is zero.
    NSUInteger _start;
};

} // namespace quorvane
