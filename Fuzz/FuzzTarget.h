#pragma once

#include "Platform/Foundation/NSLog.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

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

} // namespace quorvane::fuzz
