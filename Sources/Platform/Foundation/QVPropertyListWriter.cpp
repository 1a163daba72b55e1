#include "Platform/Foundation/QVPropertyListWriter.h"

#include <algorithm>
#include <bit>

namespace quorvane {

namespace {

// What the upper half of a value's first byte says; the lower half is a size or a length.
constexpr std::uint8_t integerKind = 0x10;
constexpr std::uint8_t realKind = 0x20;
constexpr std::uint8_t dataKind = 0x40;
constexpr std::uint8_t asciiKind = 0x50;
constexpr std::uint8_t utf16Kind = 0x60;
constexpr std::uint8_t uidKind = 0x80;
constexpr std::uint8_t arrayKind = 0xA0;
constexpr std::uint8_t dictionaryKind = 0xD0;

/// The least of 1, 2, 4 and 8 bytes that hold the number.
std::size_t sizeOf(std::uint64_t value) {
    return value <= 0xFF ? 1 : value <= 0xFFFF ? 2 : value <= 0xFFFFFFFF ? 4 : 8;
}

void appendBigEndian(std::vector<std::uint8_t> &bytes, std::uint64_t value, std::size_t size) {
    for (std::size_t shift = size; shift-- > 0;)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * shift)));
}

void appendIntegerObject(std::vector<std::uint8_t> &bytes, std::uint64_t value) {
    const std::size_t size = sizeOf(value);
    bytes.push_back(static_cast<std::uint8_t>(integerKind | std::countr_zero(size)));
    appendBigEndian(bytes, value, size);
}

void appendMarker(std::vector<std::uint8_t> &bytes, std::uint8_t kind, std::uint64_t count) {
    bytes.push_back(static_cast<std::uint8_t>(kind | std::min<std::uint64_t>(count, 15)));
    if (count >= 15)
        appendIntegerObject(bytes, count);
}

} // namespace

QVPropertyListWriter::Value QVPropertyListWriter::addBytes(std::size_t start) {
    _objects.push_back({0, start, _bytes.size() - start});
    return static_cast<Value>(_objects.size() - 1);
}

QVPropertyListWriter::Value QVPropertyListWriter::addBool(bool value) {
    _bytes.push_back(value ? 9 : 8);
    return addBytes(_bytes.size() - 1);
}

QVPropertyListWriter::Value QVPropertyListWriter::addInteger(NSInteger value) {
    const auto [entry, isNew] = _integers.try_emplace(value, static_cast<Value>(_objects.size()));
    if (isNew) {
        const std::size_t start = _bytes.size();
        appendIntegerObject(_bytes, static_cast<std::uint64_t>(value));
        addBytes(start);
    }
    return entry->second;
}

QVPropertyListWriter::Value QVPropertyListWriter::addReal(double value) {
    const std::size_t start = _bytes.size();
    _bytes.push_back(realKind | 3);
    appendBigEndian(_bytes, std::bit_cast<std::uint64_t>(value), 8);
    return addBytes(start);
}

QVPropertyListWriter::Value QVPropertyListWriter::addString(const NSString &string) {
    const auto [entry, isNew] = _strings.try_emplace(string, static_cast<Value>(_objects.size()));
    if (isNew) {
        const std::size_t start = _bytes.size();
        const std::u16string_view units = string;
        const bool isASCII =
            std::all_of(units.begin(), units.end(), [](char16_t unit) { return unit < 0x80; });
        appendMarker(_bytes, isASCII ? asciiKind : utf16Kind, units.size());
        for (const char16_t unit : units)
            appendBigEndian(_bytes, unit, isASCII ? 1 : 2);
        addBytes(start);
    }
    return entry->second;
}

QVPropertyListWriter::Value QVPropertyListWriter::addData(const NSData &data) {
    const std::size_t start = _bytes.size();
    appendMarker(_bytes, dataKind, data.length());
    _bytes.insert(_bytes.end(), data.bytes().begin(), data.bytes().end());
    return addBytes(start);
}

QVPropertyListWriter::Value QVPropertyListWriter::addUID(std::uint64_t index) {
    const auto [entry, isNew] = _uids.try_emplace(index, static_cast<Value>(_objects.size()));
    if (isNew) {
        const std::size_t start = _bytes.size();
        const std::size_t size = sizeOf(index);
        _bytes.push_back(static_cast<std::uint8_t>(uidKind | (size - 1)));
        appendBigEndian(_bytes, index, size);
        addBytes(start);
    }
    return entry->second;
}

QVPropertyListWriter::Value QVPropertyListWriter::addArray(std::span<const Value> values) {
    _objects.push_back({arrayKind, _references.size(), values.size()});
    _references.insert(_references.end(), values.begin(), values.end());
    return static_cast<Value>(_objects.size() - 1);
}

QVPropertyListWriter::Value QVPropertyListWriter::addDictionary(std::span<const Entry> entries) {
    _objects.push_back({dictionaryKind, _references.size(), entries.size()});
    for (const Entry &entry : entries)
        _references.push_back(entry.key);
    for (const Entry &entry : entries)
        _references.push_back(entry.value);
    return static_cast<Value>(_objects.size() - 1);
}

NSData QVPropertyListWriter::dataWithTop(Value top) const {
    constexpr std::string_view header = "bplist00";
    const std::size_t referenceSize = sizeOf(_objects.size() - 1);
    std::vector<std::uint8_t> file(header.begin(), header.end());
    std::vector<std::uint64_t> offsets;
    offsets.reserve(_objects.size());
    for (const Object &object : _objects) {
        offsets.push_back(file.size());
        if (object.container == 0) {
            const auto first = _bytes.begin() + static_cast<std::ptrdiff_t>(object.start);
            file.insert(file.end(), first, first + static_cast<std::ptrdiff_t>(object.count));
            continue;
        }
        appendMarker(file, object.container, object.count);
        const std::size_t count = object.container == dictionaryKind ? object.count * 2 : object.count;
        for (std::size_t index = 0; index < count; ++index)
            appendBigEndian(file, _references[object.start + index], referenceSize);
    }
    const std::uint64_t table = file.size();
    const std::size_t offsetSize = sizeOf(table);
    for (const std::uint64_t offset : offsets)
        appendBigEndian(file, offset, offsetSize);
    file.insert(file.end(), 6, 0);
    file.push_back(static_cast<std::uint8_t>(offsetSize));
    file.push_back(static_cast<std::uint8_t>(referenceSize));
    appendBigEndian(file, _objects.size(), 8);
    appendBigEndian(file, top, 8);
    appendBigEndian(file, table, 8);
    return file;
}

} // namespace quorvane
