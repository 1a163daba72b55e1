#pragma once

#include "Platform/Foundation/NSString.h"

#include <array>
#include <cstdint>
#include <span>

namespace quorvane {

/// How patterns are looked for in grams; a bit mask.
using QVGramMatchingOptions = std::uint64_t;
/// At most one run in a gram, and it starts at the gram's first character.
inline constexpr QVGramMatchingOptions QVGramMatchingPrefixOfGramOnly = 1;
/// Pattern and grams are lowered first.
inline constexpr QVGramMatchingOptions QVGramMatchingIgnoreCase = 2;
/// Pattern and grams lose their diacritics first.
inline constexpr QVGramMatchingOptions QVGramMatchingIgnoreDiacritics = 4;
/// White space in the pattern is no letter to match: it ends the current gram.
inline constexpr QVGramMatchingOptions QVGramMatchingWhitespaceEndsGram = 8;

/// The words of a name as a person would read it ("HTMLElement" is HTML and Element): an immutable, shared
/// and nullable list of texts, laid out for the matcher (`QVGramPattern`), which goes over thousands of them
/// with each keystroke. A value of 40 bytes; the units of all words, as they are and as they are lowered,
/// stand in one block. Any thread.
class QV_EXPORT QVGrams {
public:
    /// The null list.
    QVGrams() = default;
    QVGrams(std::nullptr_t) {}
    /// The list of these words, in this order; a null word counts as an empty one.
    explicit QVGrams(std::span<const NSString> grams);
    QVGrams(std::initializer_list<NSString> grams) : QVGrams(std::span(grams.begin(), grams.size())) {}
    /// The list of the pieces of a text, whose lengths add up to the text's.
    static QVGrams gramsWithLengths(std::u16string_view text, std::span<const std::uint32_t> lengths);

    bool isNull() const { return _block == nullptr; }
    explicit operator bool() const { return _block != nullptr; }
    NSUInteger count() const { return _count; }
    /// The words one after the other; valid as long as any copy of this list lives.
    std::u16string_view text() const;
    /// The word at an index below the count.
    std::u16string_view gramAtIndex(NSUInteger index) const;
    std::vector<NSString> strings() const;

    /// One bit or more for each unit that a word has under any options, so that a pattern with a bit that is
    /// missing here can't match.
    std::uint64_t letterMask() const { return _letterMask; }
    /// The bit that stands for a unit, the same for both cases of a letter.
    static std::uint64_t letterBit(char16_t unit);
    /// What options make of a word, or of a pattern.
    static NSString transformedText(const NSString &text, QVGramMatchingOptions options);

    /// Null equals only null.
    bool operator==(const QVGrams &other) const;

private:
    friend class QVGramPattern;

    NSUInteger lengthOfGram(NSUInteger index) const {
        return _block[2 * index] | static_cast<NSUInteger>(_block[2 * index + 1]) << 16;
    }
    /// All words as options make them, each as long as it was; null where they change a length.
    const char16_t *units(QVGramMatchingOptions options) const {
        const std::uint8_t place = _places[(options >> 1) & 3];
        return place == irregular ? nullptr : _block.get() + 2 * _count + std::size_t{place} * _length;
    }

    static constexpr std::uint8_t irregular = 0xFF;

    /// The words' lengths, two units each with the low half first, then the words' units: as they are, and
    /// once more for each way in which options change them.
    std::shared_ptr<const char16_t[]> _block;
    std::uint64_t _letterMask = 0;
    std::uint32_t _count = 0;
    std::uint32_t _length = 0;
    /// Which of the copies the options "ignore case" and "ignore diacritics" look at.
    std::array<std::uint8_t, 4> _places{};
};

/// The words of a name: runs of letters split where case changes, and each other unit alone. The list of an
/// empty text is empty, of a null one null. Answers are remembered. Any thread.
QV_EXPORT QVGrams qv_grams(const NSString &string);

/// The words in one text for storage: joined by commas, with a backslash before each comma and backslash in a
/// word. Null for null.
QV_EXPORT NSString qv_stringRepresentationForGrams(const QVGrams &grams);
/// The words of such a text. A backslash takes the next unit as it is, one at the very end is dropped. An
/// empty text gives one empty word, a null one null.
QV_EXPORT QVGrams qv_gramsForStringRepresentation(const NSString &string);

} // namespace quorvane
