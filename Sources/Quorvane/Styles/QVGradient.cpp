#include "Quorvane/Styles/QVGradient.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"

namespace quorvane {

using Gradient = std::shared_ptr<const QVGradient>;

Gradient QVGradient::gradientWithStartingColor(const Color &startingColor, const Color &endingColor) {
    return startingColor && endingColor ? gradientWithColors({startingColor, endingColor}) : nullptr;
}

Gradient QVGradient::gradientWithColors(std::vector<Color> colors) {
    if (colors.size() == 1)
        colors.push_back(colors.front());
    std::vector<double> locations(colors.size());
    for (std::size_t index = 0; index < colors.size(); ++index)
        locations[index] = static_cast<double>(index) / static_cast<double>(colors.size() - 1);
    return colors.empty() ? nullptr : initWithColors(colors, locations.data(), CGColorSpaceCreateDeviceRGB());
}

Gradient QVGradient::gradientWithColorsAndLocations(
    std::initializer_list<std::pair<Color, double>> colorsAndLocations) {
    std::vector<Color> colors;
    std::vector<double> locations;
    for (const auto &[color, location] : colorsAndLocations) {
        if (!color)
            break;
        colors.push_back(color);
        locations.push_back(location);
    }
    return colors.size() < 2 ? nullptr
                             : initWithColors(colors, locations.data(), CGColorSpaceCreateDeviceRGB());
}

Gradient QVGradient::gradientWithPlatformGradient(const std::shared_ptr<const NSGradient> &platformGradient) {
    if (!platformGradient || !platformGradient->colorSpace() ||
        !platformGradient->colorSpace()->CGColorSpace())
        return nullptr;
    std::vector<Color> colors(platformGradient->numberOfColorStops());
    std::vector<double> locations(colors.size());
    for (std::size_t index = 0; index < colors.size(); ++index) {
        std::shared_ptr<const NSColor> color;
        platformGradient->getColor(&color, &locations[index], index);
        colors[index] = QVColor::colorWithPlatformColor(color);
    }
    return initWithColors(colors, locations.data(), platformGradient->colorSpace()->CGColorSpace());
}

Gradient QVGradient::initWithColors(const std::optional<std::vector<Color>> &colors,
                                    const double *atLocations, const CGColorSpaceRef &colorSpace) {
    const bool hasColors = colors && std::ranges::count(*colors, nullptr) == 0;
    QVParameterAssert(hasColors, "colors != nil");
    QVParameterAssert(atLocations != nullptr, "locations != NULL");
    QVParameterAssert(colorSpace != nullptr, "colorSpace != NULL");
    if (!hasColors || !atLocations || !colorSpace || colors->empty())
        return nullptr;
    const std::shared_ptr<QVGradient> gradient(new QVGradient);
    gradient->_colorSpace = colorSpace;
    gradient->_colors = *colors;
    gradient->_locations.assign(atLocations, atLocations + colors->size());
    return gradient;
}

Gradient QVGradient::init() {
    const double locations[] = {0, 0};
    return initWithColors(std::vector{QVColor::blackColor(), QVColor::blackColor()}, locations,
                          CGColorSpaceCreateDeviceRGB());
}

void QVGradient::getColor(Color *color, double *location, NSUInteger atIndex) const {
    if (atIndex >= _colors.size())
        throw NSException(NSRangeException, NSString::stringWithFormat(u"index %lu beyond bounds [0 .. %lu]",
                                                                       atIndex, _colors.size() - 1));
    if (color)
        *color = _colors[atIndex];
    if (location)
        *location = _locations[atIndex];
}

std::shared_ptr<const NSGradient> QVGradient::platformGradient() const {
    const auto space = NSColorSpace::initWithCGColorSpace(_colorSpace);
    if (!space)
        return nullptr;
    std::vector<std::shared_ptr<const NSColor>> colors;
    for (const Color &color : _colors)
        colors.push_back(color->platformColor());
    return NSGradient::initWithColors(std::move(colors), _locations, space);
}

const CGGradientRef &QVGradient::CGGradient() const {
    std::call_once(_gradientOnce, [this] {
        std::vector<CGColorRef> colors;
        for (const Color &color : _colors)
            colors.push_back(color->CGColor());
        _gradient = CGGradientCreateWithColors(_colorSpace, colors, _locations);
    });
    return _gradient;
}

QVGradient::Color QVGradient::interpolatedColorAtLocation(double location) const {
    QVParameterAssert(location >= 0 && location <= 1, "location >= 0.0 && location <= 1.0");
    std::optional<std::size_t> lower, upper;
    for (std::size_t index = 0; index < _locations.size(); ++index) {
        if (_locations[index] <= location)
            lower = index;
        if (_locations[index] >= location && !upper)
            upper = index;
    }
    if (!lower || !upper)
        return nullptr;
    const double distance = _locations[*upper] - _locations[*lower];
    return _colors[*lower]->colorByInterpolatingWithColor(
        _colors[*upper], distance == 0 ? 0 : (location - _locations[*lower]) / distance);
}

Gradient QVGradient::copy() const { return std::static_pointer_cast<const QVGradient>(shared_from_this()); }

const NSCodingClass &QVGradient::codingClass() {
    static const NSCodingClass codingClass{u"QVGradient", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::shared_ptr<QVGradient>(new QVGradient);
                                           }};
    return codingClass;
}

void QVGradient::encodeWithCoder(NSCoder &coder) const {
    coder.encodeArray(_colors, u"QVColors");
    coder.encodeDoubles(_locations, u"QVLocations");
}

std::shared_ptr<NSSecureCoding> QVGradient::initWithCoder(NSCoder &coder,
                                                          std::shared_ptr<NSSecureCoding> self) {
    const auto colors = coder.decodeArrayOfClass<QVColor>(u"QVColors");
    auto locations = coder.decodeDoubles(u"QVLocations");
    if (!colors || !locations || colors->empty() || colors->size() != locations->size())
        return nullptr;
    _colors.assign(colors->begin(), colors->end());
    _locations = *std::move(locations);
    return self;
}

} // namespace quorvane
