#pragma once

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSString.h"

#include <span>

namespace quorvane {

/// Reads a binary property list where it stands: a value is a place in the file, and nothing is made of it
/// before somebody asks. Archives are read once, field by field, so a tree of nodes beside the file would
/// cost more than all that is read from it.
///
/// Only for files in which `QVProblemOfBinaryPropertyList` found nothing: no place and no length is checked
/// here. The bytes must outlive the reader.
class QVPropertyListReader {
public:
    /// What the file holds at a place; 0 stands for no value.
    using Value = std::uint32_t;
    enum class Kind { None, Boolean, Integer, Real, Date, Data, String, UID, Array, Dictionary };

    explicit QVPropertyListReader(std::span<const std::uint8_t> bytes);

    Value top() const { return valueOfObject(_top); }

    Kind kindOf(Value value) const;
    /// Of a boolean, an integer or a UID. Integers of less than eight bytes have no sign; of sixteen bytes
    /// the lower half counts.
    std::uint64_t integerOf(Value value) const;
    double realOf(Value value) const;
    std::span<const std::uint8_t> dataOf(Value value) const;
    NSString stringOf(Value value) const;
    /// Whether it is a string and just this one.
    bool isString(Value value, std::u16string_view string) const;

    /// The number of items of an array, or of entries of a dictionary.
    std::size_t countOf(Value container) const;
    Value itemOf(Value array, std::size_t atIndex) const;
    /// The value of the entry at an index.
    Value entryOf(Value dictionary, std::size_t atIndex) const;
    /// The value of a key, the first where there are several; 0 where there is none, and for what is no
    /// dictionary.
    Value valueForKey(Value dictionary, std::u16string_view key) const;
    /// The same, 0 for a value of another kind.
    Value valueForKey(Value dictionary, std::u16string_view key, Kind kind) const {
        const Value value = valueForKey(dictionary, key);
        return kindOf(value) == kind ? value : 0;
    }

private:
    /// What stands behind a marker: how many items, characters or bytes, and where.
    struct Content {
        std::size_t count;
        std::size_t start;
    };
    std::uint64_t bigEndianAt(std::size_t offset, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t index = 0; index < size; ++index)
            value = value << 8 | _bytes[offset + index];
        return value;
    }
    Value valueOfObject(std::uint64_t object) const {
        return static_cast<Value>(bigEndianAt(_table + object * _offsetSize, _offsetSize));
    }
    Value valueOfReference(std::size_t offset) const {
        return valueOfObject(bigEndianAt(offset, _referenceSize));
    }
    Content contentOf(Value value) const;

    std::span<const std::uint8_t> _bytes;
    std::size_t _offsetSize;
    std::size_t _referenceSize;
    std::uint64_t _top;
    std::size_t _table;
};

} // namespace quorvane
