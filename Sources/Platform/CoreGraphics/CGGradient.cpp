#include "Platform/CoreGraphics/CGGradient.h"

namespace quorvane {

CGGradientRef CGGradientCreateWithColors(const CGColorSpaceRef &space, std::span<const CGColorRef> colors,
                                         std::span<const CGFloat> locations) {
    if (colors.empty() || (!locations.empty() && locations.size() != colors.size()))
        return nullptr;
    const CGColorSpaceRef own = space ? space : CGColorSpaceCreateDeviceRGB();
    std::vector<CGGradientObject::Stop> stops;
    stops.reserve(colors.size());
    for (std::size_t index = 0; index < colors.size(); ++index) {
        CGFloat location =
            colors.size() == 1 ? 0 : static_cast<CGFloat>(index) / static_cast<CGFloat>(colors.size() - 1);
        if (!locations.empty())
            location = locations[index] > 0 ? std::min(locations[index], 1.0) : 0;
        auto color = CGColorCreateCopyByMatchingToColorSpace(own, kCGRenderingIntentDefault, colors[index]);
        if (!color)
            return nullptr;
        stops.push_back({location, std::move(color)});
    }
    std::ranges::stable_sort(stops, {}, &CGGradientObject::Stop::location);
    return std::make_shared<const CGGradientObject>(own, std::move(stops));
}

} // namespace quorvane
