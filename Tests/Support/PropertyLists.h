#pragma once

#include "Platform/Foundation/NSData.h"

#include <cstdint>
#include <string>
#include <vector>

/// Binary property lists put together byte by byte, good or not.
namespace quorvane::test {

inline std::string bigEndian(std::uint64_t value, std::size_t size) {
    std::string bytes;
    for (std::size_t shift = size; shift-- > 0;)
        bytes += static_cast<char>(shift < sizeof value ? value >> (8 * shift) : 0);
    return bytes;
}

/// A marker of a kind (its upper half in the low bits) with a length.
inline std::string marker(std::uint8_t kind, std::uint64_t length) {
    if (length < 15)
        return {static_cast<char>(kind << 4 | static_cast<int>(length))};
    return static_cast<char>(kind << 4 | 15) + std::string("\x13") + bigEndian(length, 8);
}

struct RawPropertyList {
    /// Markers with what follows them.
    std::vector<std::string> objects;
    std::uint64_t top = 0;
    std::size_t offsetSize = 4;
    std::size_t referenceSize = 1;

    std::string file() const {
        std::string bytes = "bplist00";
        std::string table;
        for (const std::string &object : objects) {
            table += bigEndian(bytes.size(), offsetSize);
            bytes += object;
        }
        const std::size_t tableOffset = bytes.size();
        bytes += table;
        bytes += std::string(6, '\0') + bigEndian(offsetSize, 1) + bigEndian(referenceSize, 1);
        bytes += bigEndian(objects.size(), 8) + bigEndian(top, 8) + bigEndian(tableOffset, 8);
        return bytes;
    }
    NSData data() const { return NSData(file()); }
};

} // namespace quorvane::test
