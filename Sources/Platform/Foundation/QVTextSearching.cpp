#include "Platform/Foundation/QVTextSearching.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSException.h"

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace quorvane {

namespace {

void checkRange(QVTextReader text, NSRange range) {
    if (range.location > text.length() || range.length > text.length() - range.location)
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(u"Range %@ is outside of a string of length %lu", range,
                                                     text.length()));
}

/// The character that starts at an index, looking no further than a limit.
char32_t characterFrom(QVTextReader text, NSUInteger index, NSUInteger limit) {
    const char16_t unit = text.characterAtIndex(index);
    if (U16_IS_LEAD(unit) && index + 1 < limit && U16_IS_TRAIL(text.characterAtIndex(index + 1)))
        return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, text.characterAtIndex(index + 1)));
    return unit;
}

/// The character that ends at an index, looking back no further than a limit.
char32_t characterBefore(QVTextReader text, NSUInteger index, NSUInteger limit) {
    const char16_t unit = text.characterAtIndex(index - 1);
    if (U16_IS_TRAIL(unit) && index - limit >= 2 && U16_IS_LEAD(text.characterAtIndex(index - 2)))
        return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(text.characterAtIndex(index - 2), unit));
    return unit;
}

constexpr NSUInteger lengthOf(char32_t character) { return character < 0x10000 ? 1 : 2; }

/// Whether the characters are surely parted, whatever stands around them. This keeps the stretch short that
/// the library has to look at; it holds in every version of the rules, since nothing ever joins two
/// characters of which neither is an extender, a joiner, a prefix or half of a syllable or flag.
bool surelyParted(char32_t before, char32_t behind) {
    const auto breakClass = [](char32_t character) {
        return u_getIntPropertyValue(static_cast<UChar32>(character), UCHAR_GRAPHEME_CLUSTER_BREAK);
    };
    const int first = breakClass(before);
    const int second = breakClass(behind);
    if (first == U_GCB_CR && second == U_GCB_LF)
        return false;
    const auto isControl = [](int value) {
        return value == U_GCB_CONTROL || value == U_GCB_CR || value == U_GCB_LF;
    };
    const auto isBase = [](int value) {
        return value == U_GCB_OTHER || value == U_GCB_LV || value == U_GCB_LVT;
    };
    return isControl(first) || isControl(second) || (isBase(first) && isBase(second));
}

struct CloseIterator {
    void operator()(UBreakIterator *iterator) const { ubrk_close(iterator); }
};

/// Opening an iterator costs far more than asking it, and it has a state: one for each thread.
UBreakIterator *clusterIterator() {
    thread_local const std::unique_ptr<UBreakIterator, CloseIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        return std::unique_ptr<UBreakIterator, CloseIterator>(
            ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status));
    }();
    return iterator.get();
}

bool endsPlatformLine(char16_t unit) {
    return unit == u'\n' || unit == u'\r' || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

} // namespace

NSRange QVRangeOfCharacterFromSet(QVTextReader text, const NSCharacterSet &set,
                                  NSStringCompareOptions options, NSRange range) {
    checkRange(text, range);
    const NSUInteger end = NSMaxRange(range);
    const bool anchored = (options & NSAnchoredSearch) != 0;
    if (options & NSBackwardsSearch) {
        for (NSUInteger index = end; index > range.location;) {
            const char32_t character = characterBefore(text, index, range.location);
            index -= lengthOf(character);
            if (set.longCharacterIsMember(character))
                return {index, lengthOf(character)};
            if (anchored)
                break;
        }
        return NSNotFoundRange;
    }
    for (NSUInteger index = range.location; index < end;) {
        const char32_t character = characterFrom(text, index, end);
        if (set.longCharacterIsMember(character))
            return {index, lengthOf(character)};
        if (anchored)
            break;
        index += lengthOf(character);
    }
    return NSNotFoundRange;
}

NSUInteger QVLocationOfText(QVTextReader text, std::u16string_view searched, NSUInteger from) {
    checkRange(text, {from, 0});
    if (searched.empty())
        return NSNotFound;
    while (from < text.length()) {
        const std::u16string_view piece = text.pieceAtIndex(from);
        const std::size_t found = piece.find(searched);
        if (found != std::u16string_view::npos)
            return from + found;
        const NSUInteger pieceEnd = from + piece.size();
        // What begins in this piece and ends in the next; in the last piece nothing is long enough any more.
        NSUInteger start = pieceEnd - std::min<NSUInteger>(piece.size(), searched.size() - 1);
        for (; start < pieceEnd && searched.size() <= text.length() - start; ++start) {
            std::size_t matched = 0;
            while (matched < searched.size() && text.characterAtIndex(start + matched) == searched[matched])
                ++matched;
            if (matched == searched.size())
                return start;
        }
        from = pieceEnd;
    }
    return NSNotFound;
}

NSRange QVRangeOfComposedCharacterSequenceAtIndex(QVTextReader text, NSUInteger index) {
    const NSUInteger length = text.length();
    if (index >= length)
        throw NSException(NSRangeException, NSString::stringWithFormat(u"The index %lu is invalid", index));
    NSUInteger start = index;
    if (U16_IS_TRAIL(text.characterAtIndex(index)) && index > 0 &&
        U16_IS_LEAD(text.characterAtIndex(index - 1)))
        --start;
    const NSUInteger characterStart = start;
    char32_t character = characterFrom(text, start, length);
    NSUInteger end = start + lengthOf(character);
    const NSRange characterRange{start, end - start};
    for (char32_t behind = character; start > 0;) {
        const char32_t before = characterBefore(text, start, 0);
        if (surelyParted(before, behind))
            break;
        start -= lengthOf(before);
        behind = before;
    }
    while (end < length) {
        const char32_t behind = characterFrom(text, end, length);
        if (surelyParted(character, behind))
            break;
        end += lengthOf(behind);
        character = behind;
    }
    UBreakIterator *iterator = clusterIterator();
    if (end - start == characterRange.length || iterator == nullptr ||
        end - start > std::numeric_limits<std::int32_t>::max())
        return characterRange;
    const std::u16string stretch = text.substringWithRange({start, end - start});
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(iterator, stretch.data(), static_cast<std::int32_t>(stretch.size()), &status);
    if (U_FAILURE(status))
        return characterRange;
    const auto offset = static_cast<std::int32_t>(characterStart - start);
    const std::int32_t first = ubrk_isBoundary(iterator, offset) ? offset : ubrk_preceding(iterator, offset);
    const std::int32_t last = ubrk_following(iterator, offset);
    // The iterator must not keep pointing to text that goes away.
    ubrk_setText(iterator, u"", 0, &status);
    return {start + static_cast<NSUInteger>(first), static_cast<NSUInteger>(last - first)};
}

void QVPlatformGetLineStart(QVTextReader text, NSUInteger *start, NSUInteger *end, NSUInteger *contentsEnd,
                            NSRange range) {
    checkRange(text, range);
    const NSUInteger length = text.length();
    if (start != nullptr) {
        NSUInteger location = range.location;
        // Between CR and LF the line is the one that both end.
        if (location > 0 && location < length && text.characterAtIndex(location) == u'\n' &&
            text.characterAtIndex(location - 1) == u'\r')
            --location;
        while (location > 0 && !endsPlatformLine(text.characterAtIndex(location - 1)))
            --location;
        *start = location;
    }
    if (end == nullptr && contentsEnd == nullptr)
        return;
    NSUInteger location = range.length == 0 ? range.location : NSMaxRange(range) - 1;
    while (location < length && !endsPlatformLine(text.characterAtIndex(location)))
        ++location;
    NSUInteger behind = location;
    if (location < length) {
        const char16_t terminator = text.characterAtIndex(location);
        behind = location + 1;
        if (terminator == u'\r' && behind < length && text.characterAtIndex(behind) == u'\n')
            ++behind;
        else if (terminator == u'\n' && location > 0 && text.characterAtIndex(location - 1) == u'\r')
            --location;
    }
    if (end != nullptr)
        *end = behind;
    if (contentsEnd != nullptr)
        *contentsEnd = location;
}

NSRange QVPlatformLineRangeForRange(QVTextReader text, NSRange range) {
    NSUInteger start = 0;
    NSUInteger end = 0;
    QVPlatformGetLineStart(text, &start, &end, nullptr, range);
    return {start, end - start};
}

} // namespace quorvane
