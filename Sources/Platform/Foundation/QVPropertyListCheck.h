#pragma once

#include "Platform/Foundation/QVExport.h"

#include <cstdint>
#include <span>

namespace quorvane {

/// Looks over a binary property list before the library reads it, and answers what is wrong with it, null
/// when it can be read. The library follows references by recursion and copies what is referenced more than
/// once, so that a small file could exhaust stack or memory; this walk does neither. It accepts what archives
/// are made of: containers that are referenced once, nested a few levels, of bounded total size.
const char16_t *QVProblemOfBinaryPropertyList(std::span<const std::uint8_t> bytes);

} // namespace quorvane
