#pragma once

#include "Platform/CoreGraphics/CGGeometry.h"
#include "Platform/Foundation/NSObject.h"

#include <cstdint>

namespace quorvane {

/// Whether two objects mean the same; null equals null alone.
template <typename A, typename B> bool CFEqual(const std::shared_ptr<A> &a, const std::shared_ptr<B> &b) {
    return a && b ? a->isEqual(b.get()) : !a && !b;
}
/// Equal objects have equal hashes; 0 for null.
template <typename T> std::size_t CFHash(const std::shared_ptr<T> &object) {
    return object ? object->hash() : 0;
}

/// The platform's numbers of colour models.
enum CGColorSpaceModel : std::int32_t {
    kCGColorSpaceModelUnknown = -1,
    kCGColorSpaceModelMonochrome = 0,
    kCGColorSpaceModelRGB = 1,
    kCGColorSpaceModelPattern = 6,
};

/// What the numbers of a colour mean. There are five spaces, each made once and shared. The device spaces are
/// those of the bitmaps that we draw into, whose numbers are read as sRGB; they still differ from the sRGB
/// space when spaces are compared. Immutable, for any thread.
class QV_EXPORT CGColorSpaceObject final : public NSObject {
public:
    enum class Kind : std::uint8_t { DeviceGray, DeviceRGB, SRGB, DisplayP3, Pattern };

    explicit CGColorSpaceObject(Kind kind) : _kind(kind) {}

    Kind kind() const { return _kind; }
    std::u16string_view name() const;

    /// Spaces are equal when they are of one kind.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override { return static_cast<std::size_t>(_kind) + 1; }
    std::u16string_view className() const override { return u"CGColorSpace"; }
    /// "<CGColorSpace NAME>"
    NSString description() const override;

private:
    Kind _kind;
};

using CGColorSpaceRef = std::shared_ptr<const CGColorSpaceObject>;

inline constexpr const char16_t *kCGColorSpaceSRGB = u"kCGColorSpaceSRGB";
inline constexpr const char16_t *kCGColorSpaceDisplayP3 = u"kCGColorSpaceDisplayP3";

QV_EXPORT CGColorSpaceRef CGColorSpaceCreateDeviceGray();
QV_EXPORT CGColorSpaceRef CGColorSpaceCreateDeviceRGB();
/// The space of one of the names above, or of a device space's own name; null for any other.
QV_EXPORT CGColorSpaceRef CGColorSpaceCreateWithName(const NSString &name);
/// The space of patterns, whose colours have nothing but an alpha and match no other space.
QV_EXPORT CGColorSpaceRef CGColorSpaceCreatePattern();

/// Unknown for null.
QV_EXPORT CGColorSpaceModel CGColorSpaceGetModel(const CGColorSpaceRef &space);
/// Without alpha; 0 for null.
QV_EXPORT std::size_t CGColorSpaceGetNumberOfComponents(const CGColorSpaceRef &space);

} // namespace quorvane
