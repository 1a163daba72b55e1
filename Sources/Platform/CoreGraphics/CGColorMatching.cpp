#include "Platform/CoreGraphics/CGColor.h"

#include <lcms2.h>

namespace quorvane {

namespace {

using Kind = CGColorSpaceObject::Kind;

// Device RGB, sRGB and Display P3 share white and curve, and so does device gray.
constexpr cmsCIExyY whiteD65{0.3127, 0.3290, 1};

struct ProfileCloser {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
struct TransformDeleter {
    void operator()(void *transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;
using Transform = std::unique_ptr<void, TransformDeleter>;

/// From the curve that all of the spaces share to light, and back. The library is given light alone: its own
/// curves go on straight below zero, where ours are mirrored as wide gamuts are usually written.
CGFloat linear(CGFloat encoded) {
    const CGFloat size = std::abs(encoded);
    return std::copysign(size <= 0.04045 ? size / 12.92 : std::pow((size + 0.055) / 1.055, 2.4), encoded);
}
CGFloat encoded(CGFloat linear) {
    const CGFloat size = std::abs(linear);
    return std::copysign(size <= 0.0031308 ? size * 12.92 : 1.055 * std::pow(size, 1 / 2.4) - 0.055, linear);
}

Profile makeLinearProfile(Kind kind) {
    const std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)> curve(cmsBuildGamma(nullptr, 1),
                                                                           cmsFreeToneCurve);
    if (!curve)
        return nullptr;
    if (kind == Kind::DeviceGray)
        return Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()));
    const cmsCIExyYTRIPLE standard{{0.640, 0.330, 1}, {0.300, 0.600, 1}, {0.150, 0.060, 1}};
    const cmsCIExyYTRIPLE wide{{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};
    cmsToneCurve *curves[] = {curve.get(), curve.get(), curve.get()};
    return Profile(cmsCreateRGBProfile(&whiteD65, kind == Kind::DisplayP3 ? &wide : &standard, curves));
}

cmsUInt32Number lcmsIntent(CGColorRenderingIntent intent) {
    switch (intent) {
    case kCGRenderingIntentAbsoluteColorimetric:
        return INTENT_ABSOLUTE_COLORIMETRIC;
    case kCGRenderingIntentPerceptual:
        return INTENT_PERCEPTUAL;
    case kCGRenderingIntentSaturation:
        return INTENT_SATURATION;
    default:
        return INTENT_RELATIVE_COLORIMETRIC;
    }
}

/// The way from one space to another, made once for each pair and intent and never destroyed. Transforms
/// without a cache of their own may be used by several threads at once.
cmsHTRANSFORM sharedTransform(Kind from, Kind to, CGColorRenderingIntent intent) {
    static auto &mutex = *new std::mutex;
    static auto &transforms = *new std::map<std::tuple<Kind, Kind, cmsUInt32Number>, Transform>;
    const std::lock_guard lock(mutex);
    auto &transform = transforms[{from, to, lcmsIntent(intent)}];
    if (!transform) {
        const Profile source = makeLinearProfile(from), target = makeLinearProfile(to);
        const auto format = [](Kind kind) { return kind == Kind::DeviceGray ? TYPE_GRAY_DBL : TYPE_RGB_DBL; };
        if (source && target)
            transform.reset(cmsCreateTransform(source.get(), format(from), target.get(), format(to),
                                               lcmsIntent(intent), cmsFLAGS_NOCACHE | cmsFLAGS_NOOPTIMIZE));
    }
    return transform.get();
}

} // namespace

CGColorRef CGColorCreateCopyByMatchingToColorSpace(const CGColorSpaceRef &space,
                                                   CGColorRenderingIntent intent, const CGColorRef &color) {
    if (!space || !color)
        return nullptr;
    const Kind from = color->space()->kind(), to = space->kind();
    if (from == Kind::Pattern || to == Kind::Pattern)
        return nullptr;
    if (from == to)
        return color;
    const auto own = color->components();
    const bool bothSRGB = from != Kind::DisplayP3 && to != Kind::DisplayP3;
    if (from == Kind::DeviceGray)
        return CGColorCreate(space, {own[0], own[0], own[0], own[1]});
    if (bothSRGB && to != Kind::DeviceGray)
        return CGColorCreate(space, own);
    const cmsHTRANSFORM transform = sharedTransform(from, to, intent);
    if (!transform)
        return nullptr;
    std::array<CGFloat, 3> light{linear(own[0]), linear(own[1]), linear(own[2])}, result{};
    cmsDoTransform(transform, light.data(), result.data(), 1);
    std::ranges::transform(result, result.begin(), encoded);
    if (to == Kind::DeviceGray)
        return CGColorCreate(space, {result[0], own.back()});
    return CGColorCreate(space, {result[0], result[1], result[2], own.back()});
}

} // namespace quorvane
