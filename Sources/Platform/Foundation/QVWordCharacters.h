#pragma once

#include "Platform/Foundation/QVExport.h"

#include <string_view>

namespace quorvane {

/// The classes "\w" and "\s" of the platform's expressions, one character at a time, for code that scans
/// small texts by hand because it is called too often to start the expression engine.

QV_EXPORT bool QVIsWordCharacterBeyondASCII(char32_t character);

/// Letters, marks, decimal digits, connecting punctuation and the two joiners.
inline bool QVIsWordCharacter(char32_t character) {
    if (character < 0x80)
        return (character >= U'a' && character <= U'z') || (character >= U'A' && character <= U'Z') ||
               (character >= U'0' && character <= U'9') || character == U'_';
    return QVIsWordCharacterBeyondASCII(character);
}

/// The characters with the property White_Space; all of them are single units.
constexpr bool QVIsWhiteSpace(char16_t unit) {
    return unit == u' ' || (unit >= 0x09 && unit <= 0x0D) || unit == 0x85 || unit == 0xA0 || unit == 0x1680 ||
           (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 || unit == 0x2029 || unit == 0x202F ||
           unit == 0x205F || unit == 0x3000;
}

/// Reads the character at an index below the text's length and moves the index behind it. A lone surrogate is
/// a character of its own.
inline char32_t QVNextCharacter(std::u16string_view text, std::size_t &index) {
    const char32_t first = text[index++];
    if ((first & 0xFC00) != 0xD800 || index == text.size() || (text[index] & 0xFC00) != 0xDC00)
        return first;
    return 0x10000 + ((first & 0x3FF) << 10) + (text[index++] & 0x3FFu);
}

} // namespace quorvane
