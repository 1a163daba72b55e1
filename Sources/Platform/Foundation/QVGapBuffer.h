#pragma once

#include "Platform/Foundation/QVTextReader.h"

#include <memory>

namespace quorvane {

/// The characters of a text that is typed into: two pieces with a gap between them, which stands where the
/// last edit was. Typing on in one place costs the same in any text; an edit somewhere else first moves the
/// characters in between over the gap. No character is moved for where it belongs in its line or cluster, so
/// the gap can stand between CR and LF or inside a pair of surrogates.
///
/// Ranges must lie inside. One thread at a time.
class QVGapBuffer {
public:
    QVGapBuffer() = default;
    explicit QVGapBuffer(std::u16string_view text) { replaceCharactersInRange({0, 0}, text); }
    QVGapBuffer(const QVGapBuffer &other) { *this = other; }
    QVGapBuffer &operator=(const QVGapBuffer &other);

    NSUInteger length() const { return _capacity - (_gapEnd - _gapStart); }
    /// Good until the next change.
    QVTextReader reader() const {
        return {{_units.get(), _gapStart}, {_units.get() + _gapEnd, _capacity - _gapEnd}};
    }
    /// The new characters may be some of this very text. When memory runs out nothing has changed.
    void replaceCharactersInRange(NSRange range, std::u16string_view withString);

    /// Bytes that the buffer takes.
    std::size_t bytes() const { return _capacity * sizeof(char16_t); }

private:
    void moveGapTo(std::size_t location);
    void reallocate(NSRange removed, std::size_t capacity);

    std::unique_ptr<char16_t[]> _units;
    std::size_t _capacity = 0;
    std::size_t _gapStart = 0;
    std::size_t _gapEnd = 0;
};

} // namespace quorvane
