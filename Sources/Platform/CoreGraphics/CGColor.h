#pragma once

#include "Platform/CoreGraphics/CGColorSpace.h"

#include <array>
#include <optional>
#include <span>

namespace quorvane {

class CGColorObject;
using CGColorRef = std::shared_ptr<const CGColorObject>;

/// The numbers of a colour with the space that they are meant in. Components are not held to the range from
/// 0 to 1: a colour outside of it is one that a space can't show. Immutable, for any thread.
class QV_EXPORT CGColorObject final : public NSObject {
public:
    /// `CGColorCreate` is the way to make one; there are as many components as the space has, and the alpha.
    CGColorObject(CGColorSpaceRef space, std::span<const CGFloat> components);

    const CGColorSpaceRef &space() const { return _space; }
    std::span<const CGFloat> components() const { return {_components.data(), _count}; }

    /// The same numbers in an equal space. A number that is none is equal to no other colour's.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"CGColor"; }
    /// "<CGColor kCGColorSpaceSRGB 1 0.5 0 1>"
    NSString description() const override;

private:
    CGColorSpaceRef _space;
    std::array<CGFloat, 4> _components{};
    std::size_t _count;
};

/// A colour of these components, alpha last; null without a space or when their number is not the space's and
/// one for alpha.
QV_EXPORT CGColorRef CGColorCreate(const CGColorSpaceRef &space, std::span<const CGFloat> components);
QV_EXPORT CGColorRef CGColorCreate(const CGColorSpaceRef &space, std::initializer_list<CGFloat> components);

// For a null colour these answer null, nothing or 0.

/// Colours never change, so this is the colour itself.
QV_EXPORT CGColorRef CGColorCreateCopy(const CGColorRef &color);
QV_EXPORT CGColorRef CGColorCreateCopyWithAlpha(const CGColorRef &color, CGFloat alpha);
QV_EXPORT CGFloat CGColorGetAlpha(const CGColorRef &color);
QV_EXPORT CGColorSpaceRef CGColorGetColorSpace(const CGColorRef &color);
/// All components with alpha last; valid as long as the colour lives.
QV_EXPORT std::span<const CGFloat> CGColorGetComponents(const CGColorRef &color);
/// With alpha.
QV_EXPORT std::size_t CGColorGetNumberOfComponents(const CGColorRef &color);

enum CGColorRenderingIntent : std::int32_t {
    kCGRenderingIntentDefault = 0,
    kCGRenderingIntentAbsoluteColorimetric = 1,
    kCGRenderingIntentRelativeColorimetric = 2,
    kCGRenderingIntentPerceptual = 3,
    kCGRenderingIntentSaturation = 4,
};

/// The colour's nearest look in another space, with its alpha; what the space can't show is expressed by
/// components outside of 0 to 1. The default intent is relative colorimetric. Null for a null argument, and
/// when one of the spaces has no colours of its own.
QV_EXPORT CGColorRef CGColorCreateCopyByMatchingToColorSpace(const CGColorSpaceRef &space,
                                                             CGColorRenderingIntent intent,
                                                             const CGColorRef &color);

} // namespace quorvane
