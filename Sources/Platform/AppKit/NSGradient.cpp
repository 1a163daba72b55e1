#include "Platform/AppKit/NSGradient.h"

#include "Platform/Foundation/NSException.h"

namespace quorvane {

std::shared_ptr<const NSColorSpace> NSColorSpace::initWithCGColorSpace(const CGColorSpaceRef &space) {
    if (!space || CGColorSpaceGetModel(space) == kCGColorSpaceModelPattern)
        return nullptr;
    return std::make_shared<const NSColorSpace>(space);
}

bool NSColorSpace::isEqual(const NSObject *other) const {
    const auto *space = dynamic_cast<const NSColorSpace *>(other);
    return space && CFEqual(space->_space, _space);
}

std::shared_ptr<const NSGradient>
NSGradient::initWithColors(std::vector<std::shared_ptr<const NSColor>> colors,
                           std::vector<CGFloat> atLocations, std::shared_ptr<const NSColorSpace> colorSpace) {
    if (colors.empty() || colors.size() != atLocations.size() || std::ranges::count(colors, nullptr) != 0)
        return nullptr;
    const std::shared_ptr<NSGradient> gradient(new NSGradient);
    gradient->_colors = std::move(colors);
    gradient->_locations = std::move(atLocations);
    gradient->_colorSpace = std::move(colorSpace);
    return gradient;
}

void NSGradient::getColor(std::shared_ptr<const NSColor> *color, CGFloat *location,
                          NSUInteger atIndex) const {
    if (atIndex >= _colors.size())
        throw NSException(NSRangeException, NSString::stringWithFormat(u"index %lu beyond bounds [0 .. %lu]",
                                                                       atIndex, _colors.size() - 1));
    if (color)
        *color = _colors[atIndex];
    if (location)
        *location = _locations[atIndex];
}

} // namespace quorvane
