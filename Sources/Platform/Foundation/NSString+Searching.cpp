#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSString.h"
#include "Platform/Foundation/QVTextSearching.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

namespace quorvane {

namespace {

/// A text without regard to case, with the way back: folding can make one character into several, and a hit
/// must begin and end between characters of the text itself.
struct FoldedText {
    explicit FoldedText(std::u16string_view text) {
        units.reserve(text.size());
        sources.reserve(text.size() + 1);
        for (std::size_t index = 0; index < text.size();) {
            const std::size_t start = index++;
            if (U16_IS_LEAD(text[start]) && index < text.size() && U16_IS_TRAIL(text[index]))
                ++index;
            char16_t folded[8];
            UErrorCode status = U_ZERO_ERROR;
            const std::int32_t count =
                u_strFoldCase(folded, std::size(folded), text.data() + start,
                              static_cast<std::int32_t>(index - start), U_FOLD_CASE_DEFAULT, &status);
            sources.push_back(start);
            sources.insert(sources.end(), static_cast<std::size_t>(count - 1), insideCharacter);
            units.append(folded, static_cast<std::size_t>(count));
        }
        sources.push_back(text.size());
    }

    static constexpr std::size_t insideCharacter = static_cast<std::size_t>(-1);
    std::u16string units;
    /// For each unit where in the text its character starts, if it is the first one of it.
    std::vector<std::size_t> sources;
};

NSRange rangeOfFolded(const FoldedText &text, std::u16string_view searched, NSStringCompareOptions options) {
    const std::u16string_view units = text.units;
    if (searched.size() > units.size())
        return NSNotFoundRange;
    const bool backwards = (options & NSBackwardsSearch) != 0;
    const std::size_t last = units.size() - searched.size();
    const std::size_t candidates = (options & NSAnchoredSearch) ? 1 : last + 1;
    for (std::size_t step = 0; step < candidates; ++step) {
        const std::size_t at = backwards ? last - step : step;
        const std::size_t start = text.sources[at];
        const std::size_t end = text.sources[at + searched.size()];
        if (start != FoldedText::insideCharacter && end != FoldedText::insideCharacter &&
            units.substr(at, searched.size()) == searched)
            return {start, end - start};
    }
    return NSNotFoundRange;
}

} // namespace

NSRange NSString::rangeOfString(std::u16string_view text, NSStringCompareOptions options) const {
    const std::u16string_view whole = view();
    if (text.empty() || whole.empty())
        return NSNotFoundRange;
    const bool backwards = (options & NSBackwardsSearch) != 0;
    if (options & NSCaseInsensitiveSearch)
        return rangeOfFolded(FoldedText(whole), FoldedText(text).units, options);
    if (options & NSAnchoredSearch) {
        if (!(backwards ? whole.ends_with(text) : whole.starts_with(text)))
            return NSNotFoundRange;
        return {backwards ? whole.size() - text.size() : 0, text.size()};
    }
    const std::size_t found = backwards ? whole.rfind(text) : whole.find(text);
    return found == whole.npos ? NSNotFoundRange : NSRange{found, text.size()};
}

NSRange NSString::rangeOfCharacterFromSet(const NSCharacterSet &set, NSStringCompareOptions options) const {
    return rangeOfCharacterFromSet(set, options, {0, length()});
}

NSRange NSString::rangeOfCharacterFromSet(const NSCharacterSet &set, NSStringCompareOptions options,
                                          NSRange range) const {
    return QVRangeOfCharacterFromSet(view(), set, options, range);
}

NSString NSString::stringByTrimmingCharactersInSet(const NSCharacterSet &set) const {
    NSRange range{0, length()};
    for (NSRange hit; (hit = rangeOfCharacterFromSet(set, NSAnchoredSearch, range)).length != 0;)
        range = {NSMaxRange(hit), range.length - hit.length};
    for (NSRange hit;
         (hit = rangeOfCharacterFromSet(set, NSAnchoredSearch | NSBackwardsSearch, range)).length != 0;)
        range.length -= hit.length;
    return range.length == length() ? *this : substringWithRange(range);
}

} // namespace quorvane
