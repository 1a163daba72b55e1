#include "Platform/Foundation/QVWordCharacters.h"

#include <unicode/uchar.h>

namespace quorvane {

bool QVIsWordCharacterBeyondASCII(char32_t character) {
    constexpr std::uint32_t mask = U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK;
    const auto codePoint = static_cast<UChar32>(character);
    return u_isUAlphabetic(codePoint) || (U_GET_GC_MASK(codePoint) & mask) != 0 ||
           u_hasBinaryProperty(codePoint, UCHAR_JOIN_CONTROL);
}

} // namespace quorvane
