#pragma once

// The matcher's header in the one width that is used. Only the sources of this folder include it.
#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

namespace quorvane {

/// Units pass to the matcher as they are; both types are 16 bits wide.
inline PCRE2_SPTR16 pcre2Characters(const char16_t *characters) {
    return reinterpret_cast<PCRE2_SPTR16>(characters);
}

/// Whether the library can compile patterns to machine code; asked once.
bool pcre2JITAvailable();

} // namespace quorvane
