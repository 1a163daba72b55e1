#pragma once

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSRange.h"

#include <string>
#include <string_view>

namespace quorvane {

/// A parse's own copy of its document's text: one contiguous buffer that the matcher and the line scan read
/// directly. The buffer has one readable zero unit before its first and behind its last unit, which the
/// matcher may touch when the text begins or ends in half a character.
class QVParseText {
public:
    /// Room for this many units; 1024 where none are asked for.
    explicit QVParseText(NSUInteger capacity) {
        _storage.reserve((capacity != 0 ? capacity : 1024) + 1);
        _storage.push_back(u'\0');
    }

    /// The text's first unit; good until the next replacement.
    const char16_t *characters() const { return _storage.data() + 1; }
    NSUInteger length() const { return _storage.size() - 1; }
    NSUInteger capacity() const { return _storage.capacity() - 1; }
    std::u16string_view view() const { return {characters(), length()}; }

    /// Throws `NSRangeException` when the range leaves the text.
    void replaceCharactersInRange(NSRange range, std::u16string_view withString) {
        if (range.location > length() || range.length > length() - range.location)
            throw NSException(
                NSRangeException,
                NSString::stringWithFormat(u"Range %@ is outside of a text of length %lu", range, length()));
        _storage.replace(range.location + 1, range.length, withString);
    }

private:
    std::u16string _storage;
};

} // namespace quorvane
