#pragma once

#include "Platform/AppKit/NSColor.h"

#include <vector>

namespace quorvane {

/// A colour space as the platform's objects hold it.
class QV_EXPORT NSColorSpace final : public NSObject {
public:
    /// Null for null and for the pattern space, which has no colours of its own.
    static std::shared_ptr<const NSColorSpace> initWithCGColorSpace(const CGColorSpaceRef &space);

    explicit NSColorSpace(CGColorSpaceRef space) : _space(std::move(space)) {}

    /// Null for a space that is not one of those drawn in.
    const CGColorSpaceRef &CGColorSpace() const { return _space; }

    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override { return CFHash(_space); }
    std::u16string_view className() const override { return u"NSColorSpace"; }

private:
    CGColorSpaceRef _space;
};

using NSGradientDrawingOptions = std::uint64_t;
inline constexpr NSGradientDrawingOptions NSGradientDrawsBeforeStartingLocation = 1;
inline constexpr NSGradientDrawingOptions NSGradientDrawsAfterEndingLocation = 2;

/// The platform's gradient: colours with their locations, and the space they are mixed in. Immutable, for any
/// thread.
class QV_EXPORT NSGradient final : public NSObject {
public:
    /// Null without colours, or when there are not as many locations, or a colour is null.
    static std::shared_ptr<const NSGradient>
    initWithColors(std::vector<std::shared_ptr<const NSColor>> colors, std::vector<CGFloat> atLocations,
                   std::shared_ptr<const NSColorSpace> colorSpace);

    NSUInteger numberOfColorStops() const { return _colors.size(); }
    /// Either pointer may be null. Throws `NSRangeException` for an index not below the number of stops.
    void getColor(std::shared_ptr<const NSColor> *color, CGFloat *location, NSUInteger atIndex) const;
    /// May be null.
    const std::shared_ptr<const NSColorSpace> &colorSpace() const { return _colorSpace; }

    std::u16string_view className() const override { return u"NSGradient"; }

private:
    NSGradient() = default;

    std::vector<std::shared_ptr<const NSColor>> _colors;
    std::vector<CGFloat> _locations;
    std::shared_ptr<const NSColorSpace> _colorSpace;
};

} // namespace quorvane
