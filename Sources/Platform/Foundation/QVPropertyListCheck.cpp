#include "Platform/Foundation/QVPropertyListCheck.h"

#include "Platform/Foundation/QVLimits.h"

#include <cstring>
#include <optional>
#include <vector>

namespace quorvane {

namespace {

constexpr std::size_t headerLength = 8;
constexpr std::size_t trailerLength = 32;

enum Kind : std::uint8_t {
    Simple = 0,
    Integer,
    Real,
    Date,
    Data,
    ASCII,
    UTF16,
    UID = 8,
    Array = 10,
    Dictionary = 13
};

class Walk {
public:
    explicit Walk(std::span<const std::uint8_t> bytes) : _bytes(bytes) {}

    const char16_t *problem() {
        if (_bytes.size() > limits::archiveBytes)
            return u"it is too large";
        if (_bytes.size() < headerLength + trailerLength ||
            std::memcmp(_bytes.data(), "bplist00", headerLength) != 0)
            return u"it is not a binary property list";
        if (!readTrailer())
            return u"its object table is damaged";
        _pending.push_back({static_cast<std::uint32_t>(_top), 0, false});
        while (!_pending.empty()) {
            const Reference reference = _pending.back();
            _pending.pop_back();
            if (const char16_t *problem = visit(reference))
                return problem;
        }
        return nullptr;
    }

private:
    struct Reference {
        std::uint32_t object;
        std::uint16_t depth;
        bool isKey;
    };

    std::uint64_t integerAt(std::size_t offset, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t index = 0; index < size; ++index)
            value = value << 8 | _bytes[offset + index];
        return value;
    }

    bool readTrailer() {
        const std::size_t trailer = _bytes.size() - trailerLength;
        _offsetSize = _bytes[trailer + 6];
        _referenceSize = _bytes[trailer + 7];
        _count = integerAt(trailer + 8, 8);
        _top = integerAt(trailer + 16, 8);
        const std::uint64_t table = integerAt(trailer + 24, 8);
        if (_offsetSize < 1 || _offsetSize > 8 || _referenceSize < 1 || _referenceSize > 8)
            return false;
        if (table < headerLength || table > trailer || _count > (trailer - table) / _offsetSize ||
            _top >= _count)
            return false;
        _table = table;
        _visited.resize(_count);
        return true;
    }

    /// Length of what follows the marker, for kinds that carry one; moves the offset behind it.
    std::optional<std::uint64_t> readLength(std::uint8_t marker, std::size_t &offset) const {
        if ((marker & 15) != 15)
            return marker & 15;
        if (offset >= _table || _bytes[offset] >> 4 != Integer)
            return std::nullopt;
        const unsigned exponent = _bytes[offset] & 15;
        const std::size_t size = std::size_t(1) << exponent;
        ++offset;
        if (exponent > 3 || size > _table - offset)
            return std::nullopt;
        const std::uint64_t length = integerAt(offset, size);
        offset += size;
        return length;
    }

    const char16_t *charge(std::size_t bytes) {
        _expandedBytes += bytes;
        return _expandedBytes > limits::archiveBytes ? u"it is too large" : nullptr;
    }

    const char16_t *visit(const Reference &reference) {
        constexpr const char16_t *damaged = u"one of its values is damaged";
        const std::uint64_t start = integerAt(_table + reference.object * _offsetSize, _offsetSize);
        if (start < headerLength || start >= _table)
            return damaged;
        std::size_t offset = start;
        const std::uint8_t marker = _bytes[offset++];
        const std::uint8_t kind = marker >> 4;
        const std::size_t room = _table - offset;
        const std::size_t power = (marker & 15) <= 4 ? std::size_t(1) << (marker & 15) : room + 1;
        if (reference.isKey && kind != ASCII && kind != UTF16)
            return u"one of its keys is no string";
        switch (kind) {
        case Simple:
            return marker == 8 || marker == 9 ? nullptr : damaged;
        case Integer:
            return power <= room ? nullptr : damaged;
        case Real:
            return (power == 4 || power == 8) && power <= room ? nullptr : damaged;
        case Date:
            return power == 8 && power <= room ? nullptr : damaged;
        case UID: {
            const std::size_t size = (marker & 15) + 1u;
            return (size == 1 || size == 2 || size == 4 || size == 8) && size <= room ? nullptr : damaged;
        }
        case Data:
        case ASCII:
        case UTF16: {
            const auto length = readLength(marker, offset);
            const std::size_t unit = kind == UTF16 ? 2 : 1;
            if (!length || *length > (_table - offset) / unit)
                return damaged;
            return charge(*length * unit);
        }
        case Array:
        case Dictionary:
            return visitContainer(reference, marker, offset);
        default:
            return damaged;
        }
    }

    const char16_t *visitContainer(const Reference &reference, std::uint8_t marker, std::size_t offset) {
        if (_visited[reference.object])
            return u"one of its containers is used twice";
        _visited[reference.object] = true;
        if (reference.depth >= limits::propertyListNestingDepth)
            return u"it nests too deep";
        const bool isDictionary = marker >> 4 == Dictionary;
        const auto count = readLength(marker, offset);
        if (!count || *count > (_table - offset) / _referenceSize / (isDictionary ? 2 : 1))
            return u"one of its values is damaged";
        const std::uint64_t references = isDictionary ? *count * 2 : *count;
        if (references > limits::archiveReferences - _references)
            return u"it holds too many values";
        _references += references;
        for (std::uint64_t index = 0; index < references; ++index) {
            const std::uint64_t object = integerAt(offset + index * _referenceSize, _referenceSize);
            if (object >= _count)
                return u"it refers to a value that it doesn't hold";
            _pending.push_back({static_cast<std::uint32_t>(object),
                                static_cast<std::uint16_t>(reference.depth + 1),
                                isDictionary && index < *count});
        }
        return nullptr;
    }

    std::span<const std::uint8_t> _bytes;
    std::size_t _offsetSize = 0;
    std::size_t _referenceSize = 0;
    std::uint64_t _count = 0;
    std::uint64_t _top = 0;
    std::size_t _table = 0;
    std::vector<bool> _visited;
    std::vector<Reference> _pending;
    std::size_t _references = 0;
    std::size_t _expandedBytes = 0;
};

} // namespace

const char16_t *QVProblemOfBinaryPropertyList(std::span<const std::uint8_t> bytes) {
    return Walk(bytes).problem();
}

} // namespace quorvane
