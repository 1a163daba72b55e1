#pragma once

#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSString.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

/// The entry that each target defines. What it finds wrong it reports by `abort`, for release builds too.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace quorvane::fuzz {

/// Readers complain about bad input in the log, which would drown everything else.
inline void silenceLog() {
    static const bool silenced = [] {
        NSLogSetSink([](const NSString &) {});
        return true;
    }();
    (void)silenced;
}

inline void require(bool condition) {
    if (!condition)
        std::abort();
}

/// Text out of bytes: UTF-8, or UTF-16 as it comes, halves of characters included.
inline std::u16string textOfBytes(const std::uint8_t *data, std::size_t size, bool isUTF16) {
    if (!isUTF16)
        return std::u16string(
            NSString::stringWithUTF8String({reinterpret_cast<const char *>(data), size}).view());
    std::u16string text(size / 2, u'\0');
    for (std::size_t index = 0; index < text.size(); ++index)
        text[index] = static_cast<char16_t>(data[2 * index] | data[2 * index + 1] << 8);
    return text;
}

} // namespace quorvane::fuzz
