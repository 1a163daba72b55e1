#include "Quorvane/Categories/QVGrams.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Quorvane/Categories/QVGramCache.h"

#include <algorithm>

namespace quorvane {

namespace {

bool isASCII(std::u16string_view text) {
    return std::ranges::all_of(text, [](char16_t unit) { return unit < 0x80; });
}

char16_t loweredASCII(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
}

/// Letters first, whatever their case, then digits, so that what identifiers are made of has bits of its own.
constexpr std::array<std::uint8_t, 128> bitsOfASCII() {
    std::array<std::uint8_t, 128> bits{};
    std::uint8_t next = 36;
    for (std::uint8_t unit = 0; unit < 128; ++unit) {
        if (unit >= 'a' && unit <= 'z')
            bits[unit] = unit - 'a';
        else if (unit >= 'A' && unit <= 'Z')
            bits[unit] = unit - 'A';
        else if (unit >= '0' && unit <= '9')
            bits[unit] = unit - '0' + 26;
        else
            bits[unit] = unit == '_' ? 63 : 36 + (next++ - 36) % 27;
    }
    return bits;
}

/// The words of a text under options, one after the other; false where a word's length changes.
bool appendTransformed(std::u16string_view text, std::span<const std::uint32_t> lengths,
                       QVGramMatchingOptions options, std::u16string &result) {
    bool isRegular = true;
    std::size_t start = 0;
    for (const std::uint32_t length : lengths) {
        const NSString word = QVGrams::transformedText(NSString(text.substr(start, length)), options);
        isRegular = isRegular && word.length() == length;
        result += word.view();
        start += length;
    }
    return isRegular;
}

} // namespace

std::uint64_t QVGrams::letterBit(char16_t unit) {
    static constexpr auto bits = bitsOfASCII();
    return std::uint64_t{1} << (unit < 128 ? bits[unit] : unit & 63);
}

NSString QVGrams::transformedText(const NSString &text, QVGramMatchingOptions options) {
    NSString result = text;
    if (options & QVGramMatchingIgnoreCase)
        if (NSString lowered = result.lowercaseString())
            result = std::move(lowered);
    if (options & QVGramMatchingIgnoreDiacritics)
        if (NSString stripped = result.stringByApplyingTransform(NSStringTransformStripDiacritics, false))
            result = std::move(stripped);
    return result;
}

QVGrams::QVGrams(std::span<const NSString> grams) {
    std::u16string text;
    std::vector<std::uint32_t> lengths;
    lengths.reserve(grams.size());
    for (const NSString &gram : grams) {
        text += gram.view();
        lengths.push_back(static_cast<std::uint32_t>(gram.length()));
    }
    *this = gramsWithLengths(text, lengths);
}

QVGrams QVGrams::gramsWithLengths(std::u16string_view text, std::span<const std::uint32_t> lengths) {
    QVGrams grams;
    grams._count = static_cast<std::uint32_t>(lengths.size());
    grams._length = static_cast<std::uint32_t>(text.size());

    std::u16string units(text);
    if (isASCII(text)) {
        // Most names: nothing to strip, and lower case is at hand.
        if (std::ranges::any_of(text, [](char16_t unit) { return loweredASCII(unit) != unit; })) {
            std::ranges::transform(text, std::back_inserter(units), loweredASCII);
            grams._places = {0, 1, 0, 1};
        }
        for (const char16_t unit : text)
            grams._letterMask |= letterBit(unit);
    } else {
        std::uint8_t copies = 1;
        for (std::size_t place = 0; place < 4; ++place) {
            std::u16string words;
            if (!appendTransformed(text, lengths, place << 1, words)) {
                grams._places[place] = irregular;
            } else if (words != text) {
                grams._places[place] = copies++;
                units += words;
            }
            for (const char16_t unit : words)
                grams._letterMask |= letterBit(unit);
        }
    }

    const auto block = std::make_shared_for_overwrite<char16_t[]>(2 * lengths.size() + units.size());
    char16_t *to = block.get();
    for (const std::uint32_t length : lengths) {
        *to++ = static_cast<char16_t>(length);
        *to++ = static_cast<char16_t>(length >> 16);
    }
    std::ranges::copy(units, to);
    grams._block = block;
    return grams;
}

std::u16string_view QVGrams::text() const {
    return _block ? std::u16string_view(_block.get() + 2 * _count, _length) : std::u16string_view();
}

std::u16string_view QVGrams::gramAtIndex(NSUInteger index) const {
    NSUInteger start = 0;
    for (NSUInteger before = 0; before < index; ++before)
        start += lengthOfGram(before);
    return text().substr(start, lengthOfGram(index));
}

std::vector<NSString> QVGrams::strings() const {
    std::vector<NSString> strings;
    strings.reserve(_count);
    NSUInteger start = 0;
    for (NSUInteger index = 0; index < _count; ++index) {
        strings.emplace_back(text().substr(start, lengthOfGram(index)));
        start += lengthOfGram(index);
    }
    return strings;
}

bool QVGrams::operator==(const QVGrams &other) const {
    if (isNull() || other.isNull())
        return isNull() == other.isNull();
    if (_count != other._count || text() != other.text())
        return false;
    return std::equal(_block.get(), _block.get() + 2 * _count, other._block.get());
}

QVGrams qv_grams(const NSString &string) {
    // Never destroyed: completions are read on queues while the process ends.
    static auto *const cache = new QVGramCache;
    if (!string)
        return nullptr;
    if (QVGrams known = cache->gramsForKey(string))
        return known;

    const std::u16string_view text = string.view();
    const auto uppercase = NSCharacterSet::uppercaseLetterCharacterSet();
    const auto lowercase = NSCharacterSet::lowercaseLetterCharacterSet();
    // Half of a pair belongs to no set, but the pair can.
    const auto lengthAt = [&](const NSCharacterSet &set, std::size_t index) -> std::size_t {
        const char16_t unit = text[index];
        if ((unit & 0xFC00) != 0xD800)
            return set.characterIsMember(unit) ? 1 : 0;
        if (index + 1 == text.size() || (text[index + 1] & 0xFC00) != 0xDC00)
            return 0;
        const char32_t character = 0x10000 + ((unit & 0x3FFu) << 10) + (text[index + 1] & 0x3FFu);
        return set.longCharacterIsMember(character) ? 2 : 0;
    };
    std::vector<std::uint32_t> lengths;
    const auto add = [&](std::size_t length) { lengths.push_back(static_cast<std::uint32_t>(length)); };
    for (std::size_t index = 0; index < text.size();) {
        const std::size_t start = index;
        std::size_t lastCapital = index;
        std::size_t step = 0;
        for (; index < text.size() && (step = lengthAt(*uppercase, index)) != 0; index += step)
            lastCapital = index;
        const std::size_t capitals = index - start;
        for (; index < text.size() && (step = lengthAt(*lowercase, index)) != 0;)
            index += step;
        if (index == start) {
            add(1);
            ++index;
        } else if (capitals == 0 || lastCapital == start || index == start + capitals) {
            add(index - start);
        } else {
            // The last capital begins the next word.
            add(lastCapital - start);
            add(index - lastCapital);
        }
    }
    const QVGrams grams = QVGrams::gramsWithLengths(text, lengths);
    cache->setGrams(grams, string);
    return grams;
}

NSString qv_stringRepresentationForGrams(const QVGrams &grams) {
    if (!grams)
        return nullptr;
    std::u16string result;
    bool isFirst = true;
    for (const NSString &gram : grams.strings()) {
        if (!isFirst)
            result += u',';
        isFirst = false;
        for (const char16_t unit : gram.view()) {
            if (unit == u'\\' || unit == u',')
                result += u'\\';
            result += unit;
        }
    }
    return result;
}

QVGrams qv_gramsForStringRepresentation(const NSString &string) {
    if (!string)
        return nullptr;
    const std::u16string_view text = string.view();
    std::u16string units;
    std::vector<std::uint32_t> lengths(1);
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == u',') {
            lengths.push_back(0);
            continue;
        }
        if (text[index] == u'\\' && ++index == text.size())
            break;
        units += text[index];
        ++lengths.back();
    }
    return QVGrams::gramsWithLengths(units, lengths);
}

} // namespace quorvane
