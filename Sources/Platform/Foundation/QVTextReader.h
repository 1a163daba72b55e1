#pragma once

#include "Platform/Foundation/NSRange.h"
#include "Platform/Foundation/QVExport.h"

#include <cstring>
#include <string>
#include <string_view>

namespace quorvane {

/// A read-only look at UTF-16 text that stands in one or two pieces: a string, or a document's gap buffer. A
/// small value without ownership, valid until the text it looks at changes. Functions that only read take it,
/// so that no document is ever copied for a question about it.
class QVTextReader {
public:
    constexpr QVTextReader() = default;
    constexpr QVTextReader(std::u16string_view text) : _first(text) {}
    constexpr QVTextReader(const char16_t *text) : _first(text) {}
    QVTextReader(const std::u16string &text) : _first(text) {}
    constexpr QVTextReader(std::u16string_view first, std::u16string_view second)
        : _first(first), _second(second) {}

    /// In UTF-16 code units.
    constexpr NSUInteger length() const { return _first.size() + _second.size(); }

    /// The unit at a position below `length()`.
    constexpr char16_t characterAtIndex(NSUInteger index) const {
        return index < _first.size() ? _first[index] : _second[index - _first.size()];
    }

    /// Copies the units of a range inside the text.
    void getCharacters(char16_t *buffer, NSRange range) const {
        const NSUInteger head = range.location < _first.size()
                                    ? std::min<NSUInteger>(range.length, _first.size() - range.location)
                                    : 0;
        if (head != 0)
            std::memcpy(buffer, _first.data() + range.location, head * sizeof(char16_t));
        if (range.length != head)
            std::memcpy(buffer + head, _second.data() + (range.location + head - _first.size()),
                        (range.length - head) * sizeof(char16_t));
    }

    /// A copy of the units of a range inside the text.
    std::u16string substringWithRange(NSRange range) const {
        std::u16string result(range.length, u'\0');
        getCharacters(result.data(), range);
        return result;
    }

    /// The contiguous stretch that starts at a position below `length()` and reaches to the end of its piece,
    /// for scanning piece by piece.
    constexpr std::u16string_view pieceAtIndex(NSUInteger index) const {
        return index < _first.size() ? _first.substr(index) : _second.substr(index - _first.size());
    }

    /// Whether the whole text stands in one piece.
    constexpr bool isContiguous() const { return _first.empty() || _second.empty(); }

    /// The whole text where it is contiguous.
    constexpr std::u16string_view contiguousView() const { return _first.empty() ? _second : _first; }

private:
    std::u16string_view _first;
    std::u16string_view _second;
};

} // namespace quorvane
