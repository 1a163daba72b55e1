#pragma once

#include "Platform/Foundation/NSString.h"

#include <optional>

namespace quorvane {

/// The number that a text is as a whole, read as a decimal formatter of the locale "en_US_POSIX" does: an
/// optional sign, decimal digits of any script, at most one point with digits before or behind it. Nothing
/// for any other text, a null one included; what is beyond the range of a `double` is its greatest number.
QV_EXPORT std::optional<double> QVNumberFromDecimalString(const NSString &string);

} // namespace quorvane
