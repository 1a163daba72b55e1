#include "Platform/AppKit/NSColor.h"

#include "Platform/AppKit/NSAppearance.h"
#include "Platform/AppKit/NSGraphicsContext.h"

namespace quorvane {

/// Components in sRGB, alpha last.
struct NSColor::Catalogued {
    const char16_t *name;
    std::array<CGFloat, 4> light;
    std::array<CGFloat, 4> dark;
};

namespace {

using Color = std::shared_ptr<const NSColor>;

enum CatalogIndex : std::size_t {
    WindowBackground,
    Separator,
    ControlAccent,
    HeaderText,
    Label,
    SecondaryLabel,
    TertiaryLabel,
    PlaceholderText,
    SelectedTextBackground,
    SelectedContentBackground,
    UnemphasizedSelectedContentBackground,
    CatalogSize,
};

// Quiet grays that lean on alpha, so that they hold on any background of their appearance, and one blue.
constexpr NSColor::Catalogued catalog[CatalogSize] = {
    {u"windowBackgroundColor", {0.96, 0.96, 0.965, 1}, {0.145, 0.15, 0.16, 1}},
    {u"separatorColor", {0, 0, 0, 0.12}, {1, 1, 1, 0.14}},
    {u"controlAccentColor", {0.08, 0.42, 0.86, 1}, {0.30, 0.60, 1, 1}},
    {u"headerTextColor", {0, 0, 0, 0.86}, {1, 1, 1, 0.90}},
    {u"labelColor", {0, 0, 0, 0.86}, {1, 1, 1, 0.88}},
    {u"secondaryLabelColor", {0, 0, 0, 0.60}, {1, 1, 1, 0.62}},
    {u"tertiaryLabelColor", {0, 0, 0, 0.32}, {1, 1, 1, 0.34}},
    {u"placeholderTextColor", {0, 0, 0, 0.34}, {1, 1, 1, 0.36}},
    {u"selectedTextBackgroundColor", {0.72, 0.84, 0.99, 1}, {0.20, 0.33, 0.52, 1}},
    {u"selectedContentBackgroundColor", {0.06, 0.38, 0.80, 1}, {0.10, 0.40, 0.80, 1}},
    {u"unemphasizedSelectedContentBackgroundColor", {0.86, 0.86, 0.87, 1}, {0.26, 0.27, 0.28, 1}},
};

/// The system colours and their looks, made once and never destroyed.
struct Catalog {
    std::array<Color, CatalogSize> colors;
    std::array<std::array<CGColorRef, 2>, CatalogSize> looks;

    Catalog() {
        const CGColorSpaceRef space = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
        for (std::size_t index = 0; index < CatalogSize; ++index) {
            colors[index] = std::make_shared<const NSColor>(&catalog[index]);
            looks[index] = {CGColorCreate(space, catalog[index].light),
                            CGColorCreate(space, catalog[index].dark)};
        }
    }
};

const Catalog &sharedCatalog() {
    static const Catalog &shared = *new Catalog;
    return shared;
}

const Color &systemColor(CatalogIndex index) { return sharedCatalog().colors[index]; }

} // namespace

Color NSColor::colorWithCGColor(CGColorRef color) {
    if (!color)
        return nullptr;
    const std::shared_ptr<NSColor> result(new NSColor);
    result->_color = std::move(color);
    return result;
}

Color NSColor::colorWithWhite(CGFloat white, CGFloat alpha) {
    return colorWithCGColor(CGColorCreate(CGColorSpaceCreateDeviceGray(), {white, alpha}));
}

Color NSColor::colorWithSRGBRed(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha) {
    return colorWithCGColor(
        CGColorCreate(CGColorSpaceCreateWithName(kCGColorSpaceSRGB), {red, green, blue, alpha}));
}

Color NSColor::blackColor() { return colorWithWhite(0, 1); }
Color NSColor::whiteColor() { return colorWithWhite(1, 1); }
Color NSColor::clearColor() { return colorWithWhite(0, 0); }

Color NSColor::windowBackgroundColor() { return systemColor(WindowBackground); }
Color NSColor::separatorColor() { return systemColor(Separator); }
Color NSColor::controlAccentColor() { return systemColor(ControlAccent); }
Color NSColor::headerTextColor() { return systemColor(HeaderText); }
Color NSColor::labelColor() { return systemColor(Label); }
Color NSColor::secondaryLabelColor() { return systemColor(SecondaryLabel); }
Color NSColor::tertiaryLabelColor() { return systemColor(TertiaryLabel); }
Color NSColor::placeholderTextColor() { return systemColor(PlaceholderText); }
Color NSColor::selectedTextBackgroundColor() { return systemColor(SelectedTextBackground); }
Color NSColor::selectedContentBackgroundColor() { return systemColor(SelectedContentBackground); }
Color NSColor::unemphasizedSelectedContentBackgroundColor() {
    return systemColor(UnemphasizedSelectedContentBackground);
}

CGColorRef NSColor::CGColor() const {
    if (!_catalogued)
        return _color;
    const auto index = static_cast<std::size_t>(_catalogued - catalog);
    return sharedCatalog().looks[index][NSAppearance::currentAppearance()->isDark() ? 1 : 0];
}

NSString NSColor::catalogName() const { return _catalogued ? NSString(_catalogued->name) : NSString(); }

Color NSColor::colorWithAlphaComponent(CGFloat alpha) const {
    return colorWithCGColor(CGColorCreateCopyWithAlpha(CGColor(), alpha));
}

void NSColor::set() const {
    setFill();
    setStroke();
}

void NSColor::setFill() const {
    if (const auto current = NSGraphicsContext::currentContext())
        CGContextSetFillColorWithColor(current->CGContext(), CGColor());
}

void NSColor::setStroke() const {
    if (const auto current = NSGraphicsContext::currentContext())
        CGContextSetStrokeColorWithColor(current->CGContext(), CGColor());
}

bool NSColor::isEqual(const NSObject *other) const {
    const auto *color = dynamic_cast<const NSColor *>(other);
    return color && color->_catalogued == _catalogued && CFEqual(color->_color, _color);
}

std::size_t NSColor::hash() const {
    return _catalogued ? std::hash<const void *>()(_catalogued) : CFHash(_color);
}

NSString NSColor::description() const {
    return _catalogued ? NSString::stringWithFormat(u"<%@ %@>", className(), _catalogued->name)
                       : NSString::stringWithFormat(u"<%@ %@>", className(), _color);
}

const NSCodingClass &NSColor::codingClass() {
    static const NSCodingClass codingClass{u"NSColor", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::shared_ptr<NSColor>(new NSColor);
                                           }};
    return codingClass;
}

void NSColor::encodeWithCoder(NSCoder &coder) const {
    if (_catalogued) {
        coder.encodeString(_catalogued->name, u"NSCatalogName");
        return;
    }
    const auto components = _color->components();
    coder.encodeString(NSString(_color->space()->name()), u"NSColorSpaceName");
    coder.encodeDoubles(std::vector<double>(components.begin(), components.end()), u"NSComponents");
}

std::shared_ptr<NSSecureCoding> NSColor::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding> self) {
    if (const NSString name = coder.decodeString(u"NSCatalogName")) {
        for (const Color &color : sharedCatalog().colors)
            if (name == color->_catalogued->name)
                return std::const_pointer_cast<NSColor>(color);
        return nullptr;
    }
    // Refuses a space that is not known, and components that are not as many as the space's.
    _color = CGColorCreate(CGColorSpaceCreateWithName(coder.decodeString(u"NSColorSpaceName")),
                           coder.decodeDoubles(u"NSComponents").value_or(std::vector<double>()));
    return _color ? self : nullptr;
}

} // namespace quorvane
