#pragma once

#include "Platform/CoreGraphics/CGColor.h"

#include <vector>

namespace quorvane {

/// Colours at places between 0 and 1, and what lies between them, in one space. Immutable, for any thread.
class QV_EXPORT CGGradientObject final : public NSObject {
public:
    struct Stop {
        CGFloat location;
        CGColorRef color;
    };

    CGGradientObject(CGColorSpaceRef space, std::vector<Stop> stops)
        : _space(std::move(space)), _stops(std::move(stops)) {}

    const CGColorSpaceRef &space() const { return _space; }
    /// In the gradient's space, by ascending location; stops at one location in the order given.
    const std::vector<Stop> &stops() const { return _stops; }

    std::u16string_view className() const override { return u"CGGradient"; }

private:
    CGColorSpaceRef _space;
    std::vector<Stop> _stops;
};

using CGGradientRef = std::shared_ptr<const CGGradientObject>;

/// Whether a gradient goes on in its first colour before the start, and in its last one behind the end.
using CGGradientDrawingOptions = std::uint32_t;
inline constexpr CGGradientDrawingOptions kCGGradientDrawsBeforeStartLocation = 1;
inline constexpr CGGradientDrawingOptions kCGGradientDrawsAfterEndLocation = 2;

/// A gradient of these colours, matched to the space (device RGB for null). There are as many locations as
/// colours, or none for evenly spaced ones; what lies outside of 0 to 1 is moved to the nearer end. Null
/// without colours, with another number of locations, and when a colour can't be matched.
QV_EXPORT CGGradientRef CGGradientCreateWithColors(const CGColorSpaceRef &space,
                                                   std::span<const CGColorRef> colors,
                                                   std::span<const CGFloat> locations);

} // namespace quorvane
