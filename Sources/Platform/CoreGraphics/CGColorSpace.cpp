#include "Platform/CoreGraphics/CGColorSpace.h"

namespace quorvane {

namespace {

using Kind = CGColorSpaceObject::Kind;

const CGColorSpaceRef &sharedSpace(Kind kind) {
    // Never destroyed: tasks may ask for spaces while the process ends.
    static const auto &spaces = *new std::array<CGColorSpaceRef, 5>{
        std::make_shared<const CGColorSpaceObject>(Kind::DeviceGray),
        std::make_shared<const CGColorSpaceObject>(Kind::DeviceRGB),
        std::make_shared<const CGColorSpaceObject>(Kind::SRGB),
        std::make_shared<const CGColorSpaceObject>(Kind::DisplayP3),
        std::make_shared<const CGColorSpaceObject>(Kind::Pattern),
    };
    return spaces[static_cast<std::size_t>(kind)];
}

} // namespace

std::u16string_view CGColorSpaceObject::name() const {
    switch (_kind) {
    case Kind::DeviceGray:
        return u"kCGColorSpaceDeviceGray";
    case Kind::DeviceRGB:
        return u"kCGColorSpaceDeviceRGB";
    case Kind::SRGB:
        return kCGColorSpaceSRGB;
    case Kind::DisplayP3:
        return kCGColorSpaceDisplayP3;
    case Kind::Pattern:
        break;
    }
    return u"kCGColorSpacePattern";
}

bool CGColorSpaceObject::isEqual(const NSObject *other) const {
    const auto *space = dynamic_cast<const CGColorSpaceObject *>(other);
    return space && space->_kind == _kind;
}

NSString CGColorSpaceObject::description() const {
    return NSString::stringWithFormat(u"<%@ %@>", className(), name());
}

CGColorSpaceRef CGColorSpaceCreateDeviceGray() { return sharedSpace(Kind::DeviceGray); }
CGColorSpaceRef CGColorSpaceCreateDeviceRGB() { return sharedSpace(Kind::DeviceRGB); }
CGColorSpaceRef CGColorSpaceCreatePattern() { return sharedSpace(Kind::Pattern); }

CGColorSpaceRef CGColorSpaceCreateWithName(const NSString &name) {
    for (const Kind kind : {Kind::DeviceGray, Kind::DeviceRGB, Kind::SRGB, Kind::DisplayP3})
        if (name == sharedSpace(kind)->name())
            return sharedSpace(kind);
    return nullptr;
}

CGColorSpaceModel CGColorSpaceGetModel(const CGColorSpaceRef &space) {
    if (!space)
        return kCGColorSpaceModelUnknown;
    switch (space->kind()) {
    case Kind::DeviceGray:
        return kCGColorSpaceModelMonochrome;
    case Kind::Pattern:
        return kCGColorSpaceModelPattern;
    default:
        return kCGColorSpaceModelRGB;
    }
}

std::size_t CGColorSpaceGetNumberOfComponents(const CGColorSpaceRef &space) {
    switch (CGColorSpaceGetModel(space)) {
    case kCGColorSpaceModelMonochrome:
        return 1;
    case kCGColorSpaceModelRGB:
        return 3;
    default:
        return 0;
    }
}

} // namespace quorvane
