#include "Quorvane/Styles/QVColor.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Styles/QVGraphics.h"

namespace quorvane {

using Color = std::shared_ptr<const QVColor>;

Color QVColor::initWithCGColor(const CGColorRef &color) {
    if (!color)
        return nullptr;
    const std::shared_ptr<QVColor> result(new QVColor);
    result->_CGColor = CGColorCreateCopy(color);
    return result;
}

Color QVColor::colorWithCGColor(const CGColorRef &color) { return initWithCGColor(color); }

Color QVColor::colorWithPlatformColor(const std::shared_ptr<const NSColor> &platformColor) {
    return initWithCGColor(platformColor ? platformColor->CGColor() : nullptr);
}

Color QVColor::colorWithWhite(double white, double alpha) {
    return initWithCGColor(CGColorCreate(CGColorSpaceCreateDeviceGray(), {white, alpha}));
}

Color QVColor::colorWithRed(double red, double green, double blue, double alpha) {
    return initWithCGColor(
        CGColorCreate(CGColorSpaceCreateWithName(kCGColorSpaceSRGB), {red, green, blue, alpha}));
}

Color QVColor::colorWithDisplayP3Red(double red, double green, double blue, double alpha) {
    return initWithCGColor(
        CGColorCreate(CGColorSpaceCreateWithName(kCGColorSpaceDisplayP3), {red, green, blue, alpha}));
}

Color QVColor::colorWithHueSaturationBrightness(double hue, double saturation, double brightness,
                                                double alpha) {
    double red = 0, green = 0, blue = 0;
    QVColorConvertHSBToRGB(&red, &green, &blue, hue, saturation, brightness);
    return colorWithRed(red, green, blue, alpha);
}

Color QVColor::colorWithHueSaturationLuminance(double hue, double saturation, double luminance,
                                               double alpha) {
    double red = 0, green = 0, blue = 0;
    QVColorConvertHSLToRGB(&red, &green, &blue, hue, saturation, luminance);
    return colorWithRed(red, green, blue, alpha);
}

Color QVColor::whiteColor() { return colorWithWhite(1, 1); }
Color QVColor::blackColor() { return colorWithWhite(0, 1); }
Color QVColor::grayColor() { return colorWithWhite(0.5, 1); }
Color QVColor::lightGrayColor() { return colorWithWhite(2.0 / 3, 1); }
Color QVColor::darkGrayColor() { return colorWithWhite(1.0 / 3, 1); }
Color QVColor::clearColor() { return colorWithWhite(0, 0); }
Color QVColor::redColor() { return colorWithRed(1, 0, 0, 1); }
Color QVColor::greenColor() { return colorWithRed(0, 1, 0, 1); }
Color QVColor::blueColor() { return colorWithRed(0, 0, 1, 1); }
Color QVColor::cyanColor() { return colorWithRed(0, 1, 1, 1); }
Color QVColor::magentaColor() { return colorWithRed(1, 0, 1, 1); }
Color QVColor::yellowColor() { return colorWithRed(1, 1, 0, 1); }
Color QVColor::orangeColor() { return colorWithRed(1, 0.5, 0, 1); }
Color QVColor::brownColor() { return colorWithRed(0.6, 0.4, 0.2, 1); }
Color QVColor::purpleColor() { return colorWithRed(0.5, 0, 0.5, 1); }

Color QVColor::colorWithAlphaComponent(double alpha) const {
    return initWithCGColor(CGColorCreateCopyWithAlpha(_CGColor, alpha));
}

Color QVColor::colorByInterpolatingWithColor(const Color &color, double fraction) const {
    QVParameterAssert(color != nullptr, "color != nil");
    if (!color)
        return nullptr;
    fraction = fraction < 0 ? 0 : fraction > 1 ? 1 : fraction;
    const CGColorSpaceRef space = CGColorGetColorSpace(_CGColor);
    // The matched colour is a test and no more: what is read below are the components as they were given.
    if (!CFEqual(space, CGColorGetColorSpace(color->_CGColor)) &&
        !CGColorCreateCopyByMatchingToColorSpace(space, kCGRenderingIntentDefault, color->_CGColor))
        return nullptr;
    const auto own = CGColorGetComponents(_CGColor);
    const auto other = CGColorGetComponents(color->_CGColor);
    std::vector<CGFloat> components(own.begin(), own.end());
    for (std::size_t index = 0; index < std::min(own.size(), other.size()); ++index)
        components[index] += (other[index] - own[index]) * fraction;
    return initWithCGColor(CGColorCreate(space, components));
}

namespace {

/// Writes a result that somebody wants.
void store(double *target, double value) {
    if (target)
        *target = value;
}

} // namespace

bool QVColor::getRed(double *red, double *green, double *blue, double *alpha) const {
    if (!CFEqual(CGColorGetColorSpace(_CGColor), CGColorSpaceCreateDeviceRGB()))
        return false;
    const auto components = CGColorGetComponents(_CGColor);
    store(red, components[0]);
    store(green, components[1]);
    store(blue, components[2]);
    store(alpha, components[3]);
    return true;
}

bool QVColor::getWhite(double *white, double *alpha) const {
    if (!CFEqual(CGColorGetColorSpace(_CGColor), CGColorSpaceCreateDeviceGray()))
        return false;
    const auto components = CGColorGetComponents(_CGColor);
    store(white, components[0]);
    store(alpha, components[1]);
    return true;
}

bool QVColor::getHueSaturationBrightness(double *hue, double *saturation, double *brightness,
                                         double *alpha) const {
    double red = 0, green = 0, blue = 0;
    if (!getRed(&red, &green, &blue, alpha))
        return false;
    QVColorConvertRGBToHSB(hue, saturation, brightness, red, green, blue);
    return true;
}

bool QVColor::getHueSaturationLuminance(double *hue, double *saturation, double *luminance,
                                        double *alpha) const {
    double red = 0, green = 0, blue = 0;
    if (!getRed(&red, &green, &blue, alpha))
        return false;
    QVColorConvertRGBToHSL(hue, saturation, luminance, red, green, blue);
    return true;
}

void QVColor::set() const {
    setFill();
    setStroke();
}

void QVColor::setFill() const { CGContextSetFillColorWithColor(QVGraphicsGetCurrentContext(), _CGColor); }

void QVColor::setStroke() const { CGContextSetStrokeColorWithColor(QVGraphicsGetCurrentContext(), _CGColor); }

const std::shared_ptr<const NSColor> &QVColor::platformColor() const {
    std::call_once(_platformColorOnce, [this] { _platformColor = NSColor::colorWithCGColor(_CGColor); });
    return _platformColor;
}

Color QVColor::copy() const { return std::static_pointer_cast<const QVColor>(shared_from_this()); }

bool QVColor::isEqual(const NSObject *other) const {
    const auto *color = dynamic_cast<const QVColor *>(other);
    return color && CFEqual(color->_CGColor, _CGColor);
}

NSString QVColor::description() const {
    return NSString::stringWithFormat(u"<%@: %p : %@>", className(), static_cast<const void *>(this),
                                      _CGColor);
}

const NSCodingClass &QVColor::codingClass() {
    static const NSCodingClass codingClass{u"QVColor", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::shared_ptr<QVColor>(new QVColor);
                                           }};
    return codingClass;
}

void QVColor::encodeWithCoder(NSCoder &coder) const {
    const auto components = CGColorGetComponents(_CGColor);
    coder.encodeInteger(CGColorSpaceGetModel(CGColorGetColorSpace(_CGColor)), u"QVColorSpaceModel");
    coder.encodeDoubles(std::vector<double>(components.begin(), components.end()), u"QVComponents");
}

std::shared_ptr<NSSecureCoding> QVColor::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    const NSInteger model = coder.decodeInteger(u"QVColorSpaceModel");
    const auto components = coder.decodeDoubles(u"QVComponents");
    if ((model != kCGColorSpaceModelMonochrome && model != kCGColorSpaceModelRGB) || !components)
        return nullptr;
    const CGColorSpaceRef space =
        model == kCGColorSpaceModelRGB ? CGColorSpaceCreateDeviceRGB() : CGColorSpaceCreateDeviceGray();
    const std::size_t count = CGColorSpaceGetNumberOfComponents(space) + 1;
    // What stands behind the space's components is not looked at.
    if (components->size() < count)
        return nullptr;
    _CGColor = CGColorCreate(space, std::span<const CGFloat>(*components).first(count));
    return self;
}

void QVColorConvertHSBToRGB(double *red, double *green, double *blue, double hue, double saturation,
                            double brightness) {
    const auto answer = [&](double r, double g, double b) {
        store(red, r);
        store(green, g);
        store(blue, b);
    };
    if (saturation == 0)
        return answer(brightness, brightness, brightness);
    // Kept as a floating number, since a hue that is none has no sixth that an integer could hold.
    const double sixth = std::floor(hue * 6);
    const double rest = hue * 6 - sixth;
    const double p = (1 - saturation) * brightness;
    const double q = (1 - rest * saturation) * brightness;
    const double t = (1 - (1 - rest) * saturation) * brightness;
    if (sixth == 0)
        return answer(brightness, t, p);
    if (sixth == 1)
        return answer(q, brightness, p);
    if (sixth == 2)
        return answer(p, brightness, t);
    if (sixth == 3)
        return answer(p, q, brightness);
    if (sixth == 4)
        return answer(t, p, brightness);
    answer(brightness, p, q);
}

void QVColorConvertHSLToRGB(double *red, double *green, double *blue, double hue, double saturation,
                            double luminance) {
    hue = std::clamp(hue, 0.0, 1.0);
    saturation = std::clamp(saturation, 0.0, 1.0);
    luminance = std::clamp(luminance, 0.0, 1.0);
    if (saturation == 0) {
        store(red, luminance);
        store(green, luminance);
        store(blue, luminance);
        return;
    }
    const double q =
        luminance < 0.5 ? luminance * (1 + saturation) : luminance + saturation - luminance * saturation;
    const double p = 2 * luminance - q;
    const auto component = [p, q](double t) {
        if (t < 0)
            t += 1;
        if (t > 1)
            t -= 1;
        if (6 * t < 1)
            return p + 6 * t * (q - p);
        if (2 * t < 1)
            return q;
        if (3 * t < 2)
            return p + (2.0 / 3 - t) * (q - p) * 6;
        return p;
    };
    store(red, component(hue + 1.0 / 3));
    store(green, component(hue));
    store(blue, component(hue - 1.0 / 3));
}

void QVColorConvertRGBToHSB(double *hue, double *saturation, double *brightness, double red, double green,
                            double blue) {
    const double most = std::max({red, green, blue});
    store(brightness, most);
    if (most == 0) {
        store(hue, 0);
        store(saturation, 0);
        return;
    }
    const double distance = most - std::min({red, green, blue});
    store(saturation, distance / most);
    // Sixths of the circle. A gray has no distance, and so no number for a hue.
    double sixths;
    if (most == red)
        sixths = (green - blue) / distance;
    else if (most != green)
        sixths = (red - green) / distance + 4;
    else
        sixths = (blue - red) / distance + 2;
    double degrees = sixths * 60;
    if (degrees < 0)
        degrees += 360;
    store(hue, degrees / 360);
}

void QVColorConvertRGBToHSL(double *hue, double *saturation, double *luminance, double red, double green,
                            double blue) {
    constexpr double tolerance = 0.001;
    const double most = std::max({red, green, blue}), least = std::min({red, green, blue});
    const double middle = (most + least) / 2, distance = most - least;
    store(luminance, middle);
    if (middle <= 0 || distance == 0) {
        store(hue, 0);
        store(saturation, 0);
        return;
    }
    const double rr = (most - red) / distance;
    const double gg = (most - green) / distance;
    const double bb = (most - blue) / distance;
    double fromLeast, low, high;
    if (std::abs(red - most) < tolerance) {
        fromLeast = std::abs(green - least);
        low = bb + 5;
        high = 1 - gg;
    } else if (std::abs(green - most) < tolerance) {
        fromLeast = std::abs(blue - least);
        low = rr + 1;
        high = 3 - bb;
    } else {
        fromLeast = std::abs(red - least);
        low = gg + 3;
        high = 5 - rr;
    }
    store(hue, (fromLeast < tolerance ? low : high) / 6);
    store(saturation, middle <= 0.5 ? distance / (most + least) : distance / (2 - most - least));
}

} // namespace quorvane
