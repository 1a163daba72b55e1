#pragma once

#include "Platform/Foundation/NSString.h"

#include <optional>

namespace quorvane {

/// The length that a style sheet writes, in pixels: a decimal number with "px", or with "pt", of which three
/// are four pixels. A number without a unit is a length where it is zero, and nothing otherwise; so is any
/// other text. A null string is asserted. Any thread.
QV_EXPORT std::optional<double> qv_numberWithCSSLengthValue(const NSString &string);

} // namespace quorvane
