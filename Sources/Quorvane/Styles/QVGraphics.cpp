#include "Quorvane/Styles/QVGraphics.h"

#include "Platform/AppKit/NSGraphicsContext.h"

namespace quorvane {

CGContextRef QVGraphicsGetCurrentContext() {
    const auto current = NSGraphicsContext::currentContext();
    return current ? current->CGContext() : nullptr;
}

CGRect QVRectIntegral(const CGRect &rect) {
    const CGFloat x = std::round(CGRectGetMinX(rect)), y = std::round(CGRectGetMinY(rect));
    return {{x, y}, {std::round(CGRectGetMaxX(rect)) - x, std::round(CGRectGetMaxY(rect)) - y}};
}

} // namespace quorvane
