#pragma once

#include "Platform/Foundation/QVExport.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace quorvane {

class NSError;
class NSURL;

/// Immutable, shared and nullable bytes; cheap to copy. Null differs from empty.
class QV_EXPORT NSData {
public:
    NSData() = default;
    NSData(std::nullptr_t) {}
    NSData(std::vector<std::uint8_t> bytes)
        : _bytes(std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes))) {}
    explicit NSData(std::string_view bytes) : NSData(std::vector<std::uint8_t>(bytes.begin(), bytes.end())) {}

    /// Reads a whole file; null with an `NSPOSIXErrorDomain` error on failure.
    static NSData dataWithContentsOfURL(const NSURL &url, std::shared_ptr<NSError> *error = nullptr);

    bool isNull() const { return _bytes == nullptr; }
    explicit operator bool() const { return _bytes != nullptr; }
    std::size_t length() const { return _bytes ? _bytes->size() : 0; }
    std::span<const std::uint8_t> bytes() const {
        return _bytes ? std::span<const std::uint8_t>(*_bytes) : std::span<const std::uint8_t>();
    }
    std::string_view view() const { return {reinterpret_cast<const char *>(bytes().data()), length()}; }

    friend bool operator==(const NSData &a, const NSData &b) {
        return a._bytes == b._bytes || (a._bytes && b._bytes && *a._bytes == *b._bytes);
    }

private:
    std::shared_ptr<const std::vector<std::uint8_t>> _bytes;
};

} // namespace quorvane
