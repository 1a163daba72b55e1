#include "Platform/Foundation/NSCharacterSet.h"

#include "Platform/Foundation/NSError.h"

#include <unicode/uchar.h>

namespace quorvane {

namespace {

using CharacterRange = std::pair<char32_t, char32_t>;

constexpr char32_t firstSupplementary = 0x10000;
constexpr char32_t lastCharacter = 0x10FFFF;
constexpr const char16_t *rangesKey = u"characterRanges";
constexpr NSInteger coderReadCorruptError = 4864;

} // namespace

/// Sorted, inclusive, and neither touching nor overlapping, so that equal sets have equal lists.
struct NSCharacterSet::Ranges {
    std::vector<CharacterRange> list;
};

struct NSCharacterSetFactory {
    static std::shared_ptr<NSCharacterSet> make() {
        return std::shared_ptr<NSCharacterSet>(new NSCharacterSet);
    }

    static void setSupplementary(NSCharacterSet &set, std::vector<CharacterRange> ranges) {
        std::sort(ranges.begin(), ranges.end());
        std::vector<CharacterRange> merged;
        for (const CharacterRange &range : ranges) {
            if (!merged.empty() && range.first <= merged.back().second + 1)
                merged.back().second = std::max(merged.back().second, range.second);
            else
                merged.push_back(range);
        }
        set._supplementary.reset();
        if (!merged.empty())
            set._supplementary =
                std::make_unique<NSCharacterSet::Ranges>(NSCharacterSet::Ranges{std::move(merged)});
    }

    static void fill(NSCharacterSet &set, const std::vector<CharacterRange> &ranges) {
        std::vector<CharacterRange> supplementary;
        for (const auto &[first, last] : ranges) {
            for (char32_t unit = first; unit <= last && unit < firstSupplementary; ++unit)
                set._bits[unit >> 6] |= std::uint64_t(1) << (unit & 63);
            if (last >= firstSupplementary)
                supplementary.emplace_back(std::max(first, firstSupplementary), last);
        }
        setSupplementary(set, std::move(supplementary));
    }

    static std::shared_ptr<const NSCharacterSet> withRanges(const std::vector<CharacterRange> &ranges) {
        auto set = make();
        fill(*set, ranges);
        return set;
    }

    static std::vector<CharacterRange> rangesOf(const NSCharacterSet &set) {
        std::vector<CharacterRange> ranges;
        for (char32_t unit = 0; unit < firstSupplementary; ++unit) {
            if (!set.characterIsMember(static_cast<char16_t>(unit)))
                continue;
            if (!ranges.empty() && ranges.back().second + 1 == unit)
                ranges.back().second = unit;
            else
                ranges.emplace_back(unit, unit);
        }
        if (set._supplementary) {
            const auto &list = set._supplementary->list;
            ranges.insert(ranges.end(), list.begin(), list.end());
        }
        return ranges;
    }

    /// The characters whose general category is in the mask, and some more.
    static std::shared_ptr<const NSCharacterSet> withCategories(std::uint32_t mask,
                                                                std::vector<CharacterRange> more = {}) {
        struct Collector {
            std::uint32_t mask;
            std::vector<CharacterRange> ranges;
        } collector{mask, std::move(more)};
        u_enumCharTypes(
            [](const void *context, UChar32 start, UChar32 limit, UCharCategory category) -> UBool {
                auto &into = *static_cast<Collector *>(const_cast<void *>(context));
                if (U_MASK(category) & into.mask)
                    into.ranges.emplace_back(static_cast<char32_t>(start), static_cast<char32_t>(limit - 1));
                return true;
            },
            &collector);
        return withRanges(collector.ranges);
    }
};

NSCharacterSet::NSCharacterSet() = default;
NSCharacterSet::~NSCharacterSet() = default;

// None of these is ever destroyed: parses ask for them on their queues while the process ends.

std::shared_ptr<const NSCharacterSet> NSCharacterSet::alphanumericCharacterSet() {
    static const auto &set =
        *new auto(NSCharacterSetFactory::withCategories(U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::letterCharacterSet() {
    static const auto &set = *new auto(NSCharacterSetFactory::withCategories(U_GC_L_MASK | U_GC_M_MASK));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::lowercaseLetterCharacterSet() {
    static const auto &set = *new auto(NSCharacterSetFactory::withCategories(U_GC_LL_MASK));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::uppercaseLetterCharacterSet() {
    static const auto &set = *new auto(NSCharacterSetFactory::withCategories(U_GC_LU_MASK | U_GC_LT_MASK));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::decimalDigitCharacterSet() {
    static const auto &set = *new auto(NSCharacterSetFactory::withCategories(U_GC_ND_MASK));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::punctuationCharacterSet() {
    static const auto &set = *new auto(NSCharacterSetFactory::withCategories(U_GC_P_MASK));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::symbolCharacterSet() {
    static const auto &set = *new auto(NSCharacterSetFactory::withCategories(U_GC_S_MASK));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::whitespaceCharacterSet() {
    static const auto &set = *new auto(NSCharacterSetFactory::withCategories(U_GC_ZS_MASK, {{U'\t', U'\t'}}));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::newlineCharacterSet() {
    static const auto &set =
        *new auto(NSCharacterSetFactory::withRanges({{0x0A, 0x0D}, {0x85, 0x85}, {0x2028, 0x2029}}));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::whitespaceAndNewlineCharacterSet() {
    static const auto &set =
        *new auto(whitespaceCharacterSet()->characterSetByFormingUnion(*newlineCharacterSet()));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::emptyCharacterSet() {
    static const auto &set = *new std::shared_ptr<const NSCharacterSet>(NSCharacterSetFactory::make());
    return set;
}

std::shared_ptr<const NSCharacterSet>
NSCharacterSet::characterSetWithCharactersInString(std::u16string_view characters) {
    std::vector<CharacterRange> ranges;
    for (std::size_t index = 0; index < characters.size(); ++index) {
        char32_t character = characters[index];
        if (U16_IS_LEAD(character) && index + 1 < characters.size() && U16_IS_TRAIL(characters[index + 1])) {
            ++index;
            character = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(character, characters[index]));
        }
        ranges.emplace_back(character, character);
    }
    return NSCharacterSetFactory::withRanges(ranges);
}

std::shared_ptr<const NSCharacterSet>
NSCharacterSet::characterSetByFormingUnion(const NSCharacterSet &other) const {
    auto set = NSCharacterSetFactory::make();
    for (std::size_t word = 0; word < _bits.size(); ++word)
        set->_bits[word] = _bits[word] | other._bits[word];
    std::vector<CharacterRange> ranges;
    for (const auto *side : {this, &other})
        if (side->_supplementary)
            ranges.insert(ranges.end(), side->_supplementary->list.begin(), side->_supplementary->list.end());
    NSCharacterSetFactory::setSupplementary(*set, std::move(ranges));
    return set;
}

std::shared_ptr<const NSCharacterSet> NSCharacterSet::invertedSet() const {
    auto set = NSCharacterSetFactory::make();
    for (std::size_t word = 0; word < _bits.size(); ++word)
        set->_bits[word] = ~_bits[word];
    std::vector<CharacterRange> gaps;
    char32_t next = firstSupplementary;
    if (_supplementary) {
        for (const auto &[first, last] : _supplementary->list) {
            if (first > next)
                gaps.emplace_back(next, first - 1);
            next = last + 1;
        }
    }
    if (next <= lastCharacter)
        gaps.emplace_back(next, lastCharacter);
    NSCharacterSetFactory::setSupplementary(*set, std::move(gaps));
    return set;
}

bool NSCharacterSet::longCharacterIsMember(char32_t character) const {
    if (character < firstSupplementary)
        return characterIsMember(static_cast<char16_t>(character));
    if (!_supplementary)
        return false;
    const auto &list = _supplementary->list;
    const auto behind =
        std::upper_bound(list.begin(), list.end(), character,
                         [](char32_t value, const CharacterRange &range) { return value < range.first; });
    return behind != list.begin() && character <= std::prev(behind)->second;
}

bool NSCharacterSet::isEqual(const NSObject *other) const {
    if (other == this)
        return true;
    const auto *set = dynamic_cast<const NSCharacterSet *>(other);
    if (set == nullptr || _bits != set->_bits || !_supplementary != !set->_supplementary)
        return false;
    return !_supplementary || _supplementary->list == set->_supplementary->list;
}

std::size_t NSCharacterSet::hash() const {
    // The first words tell sets of program text apart; the rest would make every hash read eight kilobytes.
    std::size_t hash = 0;
    for (std::size_t word = 0; word < 8; ++word)
        hash = hash * 31 + std::hash<std::uint64_t>()(_bits[word]);
    return hash;
}

const NSCodingClass &NSCharacterSet::codingClass() {
    static const NSCodingClass codingClass{
        u"NSCharacterSet", nullptr,
        []() -> std::shared_ptr<NSSecureCoding> { return NSCharacterSetFactory::make(); }};
    return codingClass;
}

// The archive holds the maximal ranges in order, each as first and last character in four little-endian
// bytes: a twentieth of a bitmap for the usual sets.
void NSCharacterSet::encodeWithCoder(NSCoder &coder) const {
    std::vector<std::uint8_t> bytes;
    const auto append = [&](char32_t character) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(character >> shift));
    };
    for (const auto &[first, last] : NSCharacterSetFactory::rangesOf(*this)) {
        append(first);
        append(last);
    }
    coder.encodeData(NSData(std::move(bytes)), rangesKey);
}

std::shared_ptr<NSSecureCoding> NSCharacterSet::initWithCoder(NSCoder &coder,
                                                              std::shared_ptr<NSSecureCoding> self) {
    const auto fail = [&]() -> std::shared_ptr<NSSecureCoding> {
        coder.failWithError(NSError::errorWithDomain(
            NSCocoaErrorDomain, coderReadCorruptError,
            {{NSLocalizedDescriptionKey, NSString(u"The archive holds a damaged character set.")}}));
        return nullptr;
    };
    const NSData data = coder.decodeData(rangesKey);
    const auto bytes = data.bytes();
    if (data.isNull() || bytes.size() % 8 != 0)
        return fail();
    const auto read = [&](std::size_t at) {
        return static_cast<char32_t>(bytes[at]) | static_cast<char32_t>(bytes[at + 1]) << 8 |
               static_cast<char32_t>(bytes[at + 2]) << 16 | static_cast<char32_t>(bytes[at + 3]) << 24;
    };
    std::vector<CharacterRange> ranges;
    for (std::size_t at = 0; at < bytes.size(); at += 8) {
        const CharacterRange range{read(at), read(at + 4)};
        // Ascending ranges only, so that a crafted archive can't make the table be filled again and again.
        const bool inOrder = ranges.empty() || range.first > ranges.back().second;
        if (!inOrder || range.first > range.second || range.second > lastCharacter)
            return fail();
        ranges.push_back(range);
    }
    NSCharacterSetFactory::fill(*this, ranges);
    return self;
}

} // namespace quorvane
