#include "Platform/Foundation/NSString.h"
#include "Platform/Foundation/QVTextSearching.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>

namespace quorvane {

namespace {

/// Runs one of the library's conversions, which tell the room they need when there is too little.
template <typename Convert> std::u16string converted(std::u16string_view text, Convert convert) {
    std::u16string result(text.size(), u'\0');
    const auto source = static_cast<std::int32_t>(text.size());
    for (;;) {
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t length =
            convert(result.data(), static_cast<std::int32_t>(result.size()), text.data(), source, &status);
        if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR)
            return std::u16string(text);
        const bool complete = static_cast<std::size_t>(length) <= result.size();
        result.resize(static_cast<std::size_t>(length));
        if (complete)
            return result;
    }
}

} // namespace

NSString NSString::lowercaseString() const {
    if (length() == 0)
        return *this;
    return converted(view(),
                     [](char16_t *to, std::int32_t room, const char16_t *from, std::int32_t count,
                        UErrorCode *status) { return u_strToLower(to, room, from, count, "", status); });
}

NSString NSString::uppercaseString() const {
    if (length() == 0)
        return *this;
    return converted(view(),
                     [](char16_t *to, std::int32_t room, const char16_t *from, std::int32_t count,
                        UErrorCode *status) { return u_strToUpper(to, room, from, count, "", status); });
}

NSString NSString::caseFoldedString() const {
    if (length() == 0)
        return *this;
    return converted(view(), [](char16_t *to, std::int32_t room, const char16_t *from, std::int32_t count,
                                UErrorCode *status) {
        return u_strFoldCase(to, room, from, count, U_FOLD_CASE_DEFAULT, status);
    });
}

NSString NSString::stringByApplyingTransform(std::u16string_view transform, bool reverse) const {
    if (transform != NSStringTransformStripDiacritics || reverse || isNull())
        return nullptr;
    if (std::ranges::all_of(view(), [](char16_t unit) { return unit < 0x80; }))
        return *this;
    const auto normalized = [](std::u16string_view text, const UNormalizer2 *normalizer) {
        return converted(text, [normalizer](char16_t *to, std::int32_t room, const char16_t *from,
                                            std::int32_t count, UErrorCode *status) {
            return unorm2_normalize(normalizer, from, count, to, room, status);
        });
    };
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2 *decomposing = unorm2_getNFDInstance(&status);
    const UNormalizer2 *composing = unorm2_getNFCInstance(&status);
    if (U_FAILURE(status))
        return nullptr;
    const std::u16string decomposed = normalized(view(), decomposing);
    std::u16string stripped;
    for (std::size_t index = 0; index < decomposed.size();) {
        const std::size_t start = index;
        UChar32 character = 0;
        U16_NEXT(decomposed.data(), index, decomposed.size(), character);
        if (u_charType(character) != U_NON_SPACING_MARK)
            stripped.append(decomposed, start, index - start);
    }
    return normalized(stripped, composing);
}

NSComparisonResult NSString::caseInsensitiveCompare(const NSString &other) const {
    return caseFoldedString().compare(other.caseFoldedString());
}

NSRange NSString::rangeOfComposedCharacterSequenceAtIndex(NSUInteger index) const {
    return QVRangeOfComposedCharacterSequenceAtIndex(view(), index);
}

} // namespace quorvane
