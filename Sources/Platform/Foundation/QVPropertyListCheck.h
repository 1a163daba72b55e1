#pragma once

#include "Platform/Foundation/QVExport.h"

#include <cstdint>
#include <span>

namespace quorvane {

/// Looks over a binary property list before `QVPropertyListReader` reads it, which checks nothing, and
/// answers what is wrong with it, null when it can be read. It accepts what archives are made of: containers
/// that are referenced once, nested a few levels, of bounded total size. Neither this walk nor what reads the
/// file can be led round in circles or into the depth.
const char16_t *QVProblemOfBinaryPropertyList(std::span<const std::uint8_t> bytes);

} // namespace quorvane
