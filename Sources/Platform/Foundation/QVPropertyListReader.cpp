#include "Platform/Foundation/QVPropertyListReader.h"

#include <algorithm>
#include <bit>

namespace quorvane {

namespace {

constexpr std::size_t trailerLength = 32;

/// The upper halves of markers.
enum Marker : std::uint8_t {
    Simple = 0,
    Integer = 1,
    Real = 2,
    Date = 3,
    Data = 4,
    ASCII = 5,
    UTF16 = 6,
    UID = 8,
    Array = 10,
    Dictionary = 13
};

} // namespace

QVPropertyListReader::QVPropertyListReader(std::span<const std::uint8_t> bytes) : _bytes(bytes) {
    const std::size_t trailer = bytes.size() - trailerLength;
    _offsetSize = bytes[trailer + 6];
    _referenceSize = bytes[trailer + 7];
    _top = bigEndianAt(trailer + 16, 8);
    _table = bigEndianAt(trailer + 24, 8);
}

QVPropertyListReader::Kind QVPropertyListReader::kindOf(Value value) const {
    if (value == 0)
        return Kind::None;
    switch (_bytes[value] >> 4) {
    case Simple:
        return Kind::Boolean;
    case Integer:
        return Kind::Integer;
    case Real:
        return Kind::Real;
    case Date:
        return Kind::Date;
    case Data:
        return Kind::Data;
    case ASCII:
    case UTF16:
        return Kind::String;
    case UID:
        return Kind::UID;
    case Array:
        return Kind::Array;
    case Dictionary:
        return Kind::Dictionary;
    default:
        return Kind::None;
    }
}

std::uint64_t QVPropertyListReader::integerOf(Value value) const {
    const std::uint8_t marker = _bytes[value];
    if (marker >> 4 == Simple)
        return marker == 9;
    if (marker >> 4 == UID)
        return bigEndianAt(value + 1, (marker & 15) + 1u);
    const std::size_t size = std::size_t(1) << (marker & 15);
    return bigEndianAt(value + 1, size);
}

double QVPropertyListReader::realOf(Value value) const {
    if ((_bytes[value] & 15) == 2)
        return std::bit_cast<float>(static_cast<std::uint32_t>(bigEndianAt(value + 1, 4)));
    return std::bit_cast<double>(bigEndianAt(value + 1, 8));
}

QVPropertyListReader::Content QVPropertyListReader::contentOf(Value value) const {
    const std::size_t length = _bytes[value] & 15;
    if (length != 15)
        return {length, value + 1u};
    const std::size_t size = std::size_t(1) << (_bytes[value + 1] & 15);
    return {bigEndianAt(value + 2, size), value + 2 + size};
}

std::span<const std::uint8_t> QVPropertyListReader::dataOf(Value value) const {
    const auto [count, start] = contentOf(value);
    return _bytes.subspan(start, count);
}

NSString QVPropertyListReader::stringOf(Value value) const {
    const auto [count, start] = contentOf(value);
    const std::uint8_t *const bytes = _bytes.data() + start;
    if (_bytes[value] >> 4 == UTF16) {
        std::u16string units(count, u'\0');
        for (std::size_t index = 0; index < count; ++index)
            units[index] = static_cast<char16_t>(bytes[2 * index] << 8 | bytes[2 * index + 1]);
        return units;
    }
    if (std::all_of(bytes, bytes + count, [](std::uint8_t byte) { return byte < 0x80; }))
        return std::u16string(bytes, bytes + count);
    // Some writers put UTF-8 where ASCII is told.
    return NSString::stringWithUTF8String(std::string_view(reinterpret_cast<const char *>(bytes), count));
}

bool QVPropertyListReader::isString(Value value, std::u16string_view string) const {
    const std::uint8_t kind = value == 0 ? std::uint8_t(Simple) : std::uint8_t(_bytes[value] >> 4);
    if (kind != ASCII && kind != UTF16)
        return false;
    const auto [count, start] = contentOf(value);
    if (count != string.size())
        return false;
    const std::uint8_t *const bytes = _bytes.data() + start;
    if (kind == ASCII)
        return std::equal(string.begin(), string.end(), bytes);
    for (std::size_t index = 0; index < count; ++index)
        if (string[index] != static_cast<char16_t>(bytes[2 * index] << 8 | bytes[2 * index + 1]))
            return false;
    return true;
}

std::size_t QVPropertyListReader::countOf(Value container) const { return contentOf(container).count; }

QVPropertyListReader::Value QVPropertyListReader::itemOf(Value array, std::size_t atIndex) const {
    return valueOfReference(contentOf(array).start + atIndex * _referenceSize);
}

QVPropertyListReader::Value QVPropertyListReader::entryOf(Value dictionary, std::size_t atIndex) const {
    const auto [count, start] = contentOf(dictionary);
    return valueOfReference(start + (count + atIndex) * _referenceSize);
}

QVPropertyListReader::Value QVPropertyListReader::valueForKey(Value dictionary,
                                                              std::u16string_view key) const {
    if (kindOf(dictionary) != Kind::Dictionary)
        return 0;
    const auto [count, start] = contentOf(dictionary);
    for (std::size_t index = 0; index < count; ++index)
        if (isString(valueOfReference(start + index * _referenceSize), key))
            return valueOfReference(start + (count + index) * _referenceSize);
    return 0;
}

} // namespace quorvane
