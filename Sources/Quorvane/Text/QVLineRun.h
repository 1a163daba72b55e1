#pragma once

#include "Platform/Foundation/NSString.h"
#include "Platform/Foundation/QVTextReader.h"

#include <cstdint>
#include <optional>

namespace quorvane {

class QVLineRunArray;

/// How a line ends; both bits stand for the pair CR LF.
enum QVLineRunFlags : std::uint8_t { QVLineRunEndsInCR = 1, QVLineRunEndsInLF = 2 };

/// The characters of one line, terminator included, in a buffer that is readable without a call for each
/// unit.
class QV_EXPORT QVLineRunString {
public:
    /// A null string makes a line that stores no characters.
    static QVLineRunString initWithString(const NSString &string);

    /// False where no characters are stored.
    bool hasString() const { return _units.has_value(); }
    /// Empty where no characters are stored.
    std::u16string_view string() const {
        return _units ? std::u16string_view(*_units) : std::u16string_view();
    }
    /// The units themselves, null where none are stored; valid until the string changes.
    const char16_t *characters() const { return _units ? _units->data() : nullptr; }

    /// A null string deletes. What the range has beyond the characters is left aside.
    void replaceCharactersInRange(NSRange range, const NSString &withString) {
        replaceCharactersInRange(range, QVTextReader(withString.view()));
    }
    void replaceCharactersInRange(NSRange range, QVTextReader withString);

private:
    std::optional<std::u16string> _units;
};

/// One line of a line array: a small value to look at a line with, valid until the array changes. It can be
/// null, as behind the last line.
class QV_EXPORT QVLineRun {
public:
    QVLineRun() = default;
    explicit operator bool() const { return _array != nullptr; }

    /// The line's characters with the terminator, in UTF-16 code units of the text. An empty range for null.
    NSRange range() const { return _range; }
    static NSRange directRange(const QVLineRun *run) { return run ? run->_range : NSRange{}; }
    /// `QVLineRunFlags`; none for a line without terminator.
    std::uint8_t flags() const { return _flags; }
    static std::uint8_t directFlags(const QVLineRun *run) { return run ? run->_flags : std::uint8_t(0); }
    /// The number of the line, from 0.
    NSUInteger lineNumber() const { return _lineNumber; }

    /// The line's characters, terminator included; nothing where the array does not store strings.
    std::optional<std::u16string_view> string() const;
    /// The same as a plain array; null where the array does not store strings.
    const char16_t *characters() const { return _string ? _string->characters() : nullptr; }

    /// The line behind, null behind the last one.
    QVLineRun nextRun() const;
    /// The line that the array has noted as the one before: after a line was broken inside, the line behind
    /// goes on to name the first part until an edit reaches it.
    QVLineRun previousRun() const;

    /// "<%@: %p %@ range=%@>" with "CRLF", "CR", "LF" or "none".
    NSString description() const;

    /// Whether both are the same line of one array.
    friend bool operator==(const QVLineRun &a, const QVLineRun &b) {
        return a._array == b._array && a._lineNumber == b._lineNumber;
    }

private:
    friend class QVLineRunArray;

    const QVLineRunArray *_array = nullptr;
    NSUInteger _lineNumber = 0;
    NSRange _range;
    /// Where it stands in the array's sequence, as long as that has seen no further change.
    std::size_t _chunk = 0;
    std::size_t _slot = 0;
    std::uint64_t _changes = 0;
    const QVLineRunString *_string = nullptr;
    std::uint8_t _flags = 0;
};

} // namespace quorvane
