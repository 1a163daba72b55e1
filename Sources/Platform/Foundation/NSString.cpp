#include "Platform/Foundation/NSString.h"

#include "Platform/Foundation/NSException.h"

namespace quorvane {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

void appendUTF16(std::u16string &text, char32_t character) {
    if (character < 0x10000) {
        text.push_back(static_cast<char16_t>(character));
    } else {
        text.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
        text.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
    }
}

/// Reads one character and moves on, over the maximal ill-formed piece where the bytes are no UTF-8 (The
/// Unicode Standard, table 3-7: the second byte's range depends on the first).
char32_t decodeUTF8(std::string_view bytes, std::size_t &index) {
    const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    const unsigned char lead = byteAt(index++);
    if (lead < 0x80)
        return lead;
    std::size_t following;
    char32_t character;
    unsigned char lowest = 0x80;
    unsigned char highest = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        following = 1;
        character = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        following = 2;
        character = lead & 0x0F;
        if (lead == 0xE0)
            lowest = 0xA0;
        else if (lead == 0xED)
            highest = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        following = 3;
        character = lead & 0x07;
        if (lead == 0xF0)
            lowest = 0x90;
        else if (lead == 0xF4)
            highest = 0x8F;
    } else {
        return replacementCharacter;
    }
    for (; following != 0; --following) {
        if (index >= bytes.size() || byteAt(index) < lowest || byteAt(index) > highest)
            return replacementCharacter;
        character = (character << 6) | (byteAt(index++) & 0x3F);
        lowest = 0x80;
        highest = 0xBF;
    }
    return character;
}

void appendUTF8(std::string &bytes, char32_t character) {
    const auto put = [&](char32_t value) { bytes.push_back(static_cast<char>(value)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | (character >> 6));
        put(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        put(0xE0 | (character >> 12));
        put(0x80 | ((character >> 6) & 0x3F));
        put(0x80 | (character & 0x3F));
    } else {
        put(0xF0 | (character >> 18));
        put(0x80 | ((character >> 12) & 0x3F));
        put(0x80 | ((character >> 6) & 0x3F));
        put(0x80 | (character & 0x3F));
    }
}

void checkRange(NSUInteger location, NSUInteger length, NSUInteger whole) {
    if (location > whole || length > whole - location)
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(u"Range %@ is outside of a string of length %lu",
                                                     NSRange{location, length}, whole));
}

} // namespace

NSString NSString::stringWithUTF8String(std::string_view utf8) {
    std::u16string text;
    text.reserve(utf8.size());
    for (std::size_t index = 0; index < utf8.size();)
        appendUTF16(text, decodeUTF8(utf8, index));
    return text;
}

std::string NSString::UTF8String() const {
    const std::u16string_view text = view();
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char16_t unit = text[index];
        const bool high = unit >= 0xD800 && unit <= 0xDBFF;
        if (high && index + 1 < text.size() && text[index + 1] >= 0xDC00 && text[index + 1] <= 0xDFFF) {
            appendUTF8(bytes, 0x10000 + ((char32_t(unit) - 0xD800) << 10) + (text[index + 1] - 0xDC00));
            ++index;
        } else {
            appendUTF8(bytes, unit >= 0xD800 && unit <= 0xDFFF ? replacementCharacter : unit);
        }
    }
    return bytes;
}

NSString NSString::substringWithRange(NSRange range) const {
    checkRange(range.location, range.length, length());
    return NSString(view().substr(range.location, range.length));
}

NSString NSString::substringFromIndex(NSUInteger index) const {
    checkRange(index, 0, length());
    return NSString(view().substr(index));
}

NSString NSString::substringToIndex(NSUInteger index) const {
    checkRange(0, index, length());
    return NSString(view().substr(0, index));
}

NSString NSString::stringByAppendingString(std::u16string_view other) const {
    std::u16string text(view());
    text += other;
    return text;
}

NSComparisonResult NSString::compare(const NSString &other) const {
    const int order = view().compare(other.view());
    return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
}

std::vector<NSString> NSString::componentsSeparatedByString(std::u16string_view separator) const {
    std::vector<NSString> components;
    if (isNull())
        return components;
    const std::u16string_view text = view();
    std::size_t start = 0;
    if (!separator.empty()) {
        for (std::size_t found; (found = text.find(separator, start)) != text.npos;
             start = found + separator.size())
            components.emplace_back(text.substr(start, found - start));
    }
    components.emplace_back(text.substr(start));
    return components;
}

NSString NSString::componentsJoinedByString(const std::vector<NSString> &components,
                                            std::u16string_view separator) {
    std::u16string text;
    for (std::size_t index = 0; index < components.size(); ++index) {
        if (index != 0)
            text += separator;
        text += components[index].view();
    }
    return text;
}

NSString NSString::stringByReplacingOccurrencesOfString(std::u16string_view target,
                                                        std::u16string_view replacement) const {
    if (isNull() || target.empty())
        return *this;
    std::u16string text;
    const std::u16string_view source = view();
    std::size_t start = 0;
    for (std::size_t found; (found = source.find(target, start)) != source.npos;
         start = found + target.size()) {
        text += source.substr(start, found - start);
        text += replacement;
    }
    text += source.substr(start);
    return text;
}

} // namespace quorvane
