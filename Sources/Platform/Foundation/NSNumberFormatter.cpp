#include "Platform/Foundation/NSNumberFormatter.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace quorvane {

std::optional<double> QVNumberFromDecimalString(const NSString &string) {
    const std::u16string_view text = string.view();
    // The same number in the digits that string conversions read, which know one script alone.
    std::u16string plain;
    std::size_t index = 0;
    if (!text.empty() && (text[0] == u'-' || text[0] == u'+'))
        plain += text[index++];
    bool anyDigit = false, anyPoint = false;
    while (index < text.size()) {
        char32_t character = 0;
        U16_NEXT(text.data(), index, text.size(), character);
        const int digit = u_charDigitValue(static_cast<UChar32>(character));
        if (digit >= 0)
            plain += static_cast<char16_t>(u'0' + digit);
        else if (character == U'.' && !anyPoint)
            plain += u'.';
        else
            return std::nullopt;
        anyDigit |= digit >= 0;
        anyPoint |= character == U'.';
    }
    return anyDigit ? std::optional(NSString(std::move(plain)).doubleValue()) : std::nullopt;
}

} // namespace quorvane
