#pragma once

#include "Platform/Foundation/NSString.h"

#include <functional>

namespace quorvane {

using NSLogSink = std::function<void(const NSString &message)>;

/// Replaces where log messages go and answers the sink before; an empty one brings back the default, which
/// writes one line to the standard error stream. Any thread; the sink may be called on any thread, one call
/// at a time.
QV_EXPORT NSLogSink NSLogSetSink(NSLogSink sink);

QV_EXPORT void NSLogString(const NSString &message);

/// Logs a formatted message.
template <typename... Values> void NSLog(std::u16string_view format, const Values &...values) {
    NSLogString(NSString::stringWithFormat(format, values...));
}

} // namespace quorvane
