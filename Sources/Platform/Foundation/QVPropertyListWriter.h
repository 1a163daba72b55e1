#pragma once

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSRange.h"
#include "Platform/Foundation/NSString.h"

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorvane {

/// Writes the binary property list of an archive in time that grows with its size: `libplist` finds equal
/// values with a table that long archives overflow, and then takes time that grows with the square of their
/// size, four seconds where this takes a tenth of one. Values are numbered as they are added; equal numbers
/// and texts get one number.
class QVPropertyListWriter {
public:
    using Value = std::uint32_t;
    struct Entry {
        Value key;
        Value value;
    };

    Value addBool(bool value);
    /// Negative numbers as eight bytes, which is what readers expect of signed ones.
    Value addInteger(NSInteger value);
    Value addReal(double value);
    Value addString(const NSString &string);
    Value addData(const NSData &data);
    /// A reference into the archive's list of objects.
    Value addUID(std::uint64_t index);
    Value addArray(std::span<const Value> values);
    Value addDictionary(std::span<const Entry> entries);

    /// The file with this value at its top.
    NSData dataWithTop(Value top) const;

private:
    struct Object {
        /// The kind of a container; 0 for values that stand ready in `_bytes`.
        std::uint8_t container;
        /// Into `_bytes` or `_references`.
        std::size_t start;
        std::size_t count;
    };

    Value addBytes(std::size_t start);

    std::vector<std::uint8_t> _bytes;
    std::vector<Value> _references;
    std::vector<Object> _objects;
    std::unordered_map<NSInteger, Value> _integers;
    std::unordered_map<std::uint64_t, Value> _uids;
    std::unordered_map<NSString, Value> _strings;
};

} // namespace quorvane
