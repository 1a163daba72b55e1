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
struct CurveFreer {
    void operator()(cmsToneCurve *curve) const { cmsFreeToneCurve(curve); }
};
struct TransformDeleter {
    void operator()(void *transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;
using Curve = std::unique_ptr<cmsToneCurve, CurveFreer>;
using Transform = std::unique_ptr<void, TransformDeleter>;

/// The curve of sRGB with its straight piece near black.
Curve makeCurve() {
    const cmsFloat64Number parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return Curve(cmsBuildParametricToneCurve(nullptr, 4, parameters));
}

Profile makeProfile(Kind kind) {
    const Curve curve = makeCurve();
    if (!curve)
        return nullptr;
    cmsToneCurve *curves[] = {curve.get(), curve.get(), curve.get()};
    if (kind == Kind::DeviceGray)
        return Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()));
    if (kind == Kind::DisplayP3) {
        const cmsCIExyYTRIPLE primaries{{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};
        return Profile(cmsCreateRGBProfile(&whiteD65, &primaries, curves));
    }
    const cmsCIExyYTRIPLE primaries{{0.640, 0.330, 1}, {0.300, 0.600, 1}, {0.150, 0.060, 1}};
    return Profile(cmsCreateRGBProfile(&whiteD65, &primaries, curves));
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
        const Profile source = makeProfile(from), target = makeProfile(to);
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
    std::array<CGFloat, 3> result{};
    cmsDoTransform(transform, own.data(), result.data(), 1);
    if (to == Kind::DeviceGray)
        return CGColorCreate(space, {result[0], own.back()});
    return CGColorCreate(space, {result[0], result[1], result[2], own.back()});
}

} // namespace quorvane
