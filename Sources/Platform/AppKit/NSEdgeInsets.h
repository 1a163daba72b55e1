#pragma once

#include "Platform/CoreGraphics/CGGeometry.h"

namespace quorvane {

/// Room along the four edges of a rectangle, in points.
struct NSEdgeInsets {
    CGFloat top = 0;
    CGFloat left = 0;
    CGFloat bottom = 0;
    CGFloat right = 0;
    friend constexpr bool operator==(const NSEdgeInsets &, const NSEdgeInsets &) = default;
};

} // namespace quorvane
