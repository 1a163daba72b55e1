#pragma once

#include "Platform/CoreGraphics/CGContext.h"

namespace quorvane {

/// What this thread draws into now; null where it draws into nothing.
QV_EXPORT CGContextRef QVGraphicsGetCurrentContext();

/// The rectangle between the minimum and the maximum of each axis, each rounded by itself (halves away from
/// zero), so that rectangles that lie side by side still do.
QV_EXPORT CGRect QVRectIntegral(const CGRect &rect);

} // namespace quorvane
