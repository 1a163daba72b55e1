#include "Platform/Foundation/NSString.h"
#include "Platform/Foundation/QVTextSearching.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

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

NSComparisonResult NSString::caseInsensitiveCompare(const NSString &other) const {
    return caseFoldedString().compare(other.caseFoldedString());
}

NSRange NSString::rangeOfComposedCharacterSequenceAtIndex(NSUInteger index) const {
    return QVRangeOfComposedCharacterSequenceAtIndex(view(), index);
}

} // namespace quorvane
