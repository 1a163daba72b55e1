#include "Platform/CoreGraphics/CGColor.h"

#include <charconv>

namespace quorvane {

CGColorObject::CGColorObject(CGColorSpaceRef space, std::span<const CGFloat> components)
    : _space(std::move(space)), _count(std::min(components.size(), _components.size())) {
    std::copy_n(components.begin(), _count, _components.begin());
}

bool CGColorObject::isEqual(const NSObject *other) const {
    if (this == other)
        return true;
    const auto *color = dynamic_cast<const CGColorObject *>(other);
    return color && CFEqual(color->_space, _space) && std::ranges::equal(color->components(), components());
}

std::size_t CGColorObject::hash() const {
    std::size_t hash = CFHash(_space);
    // Both zeros are equal, and so must be their hashes.
    for (const CGFloat component : components())
        hash = hash * 31 + std::hash<CGFloat>()(component == 0 ? 0 : component);
    return hash;
}

NSString CGColorObject::description() const {
    std::string numbers;
    for (const CGFloat component : components()) {
        char digits[32];
        const auto end = std::to_chars(std::begin(digits), std::end(digits), component).ptr;
        numbers.append(" ").append(digits, end);
    }
    return NSString::stringWithFormat(u"<%@ %@%@>", className(), _space->name(),
                                      NSString::stringWithUTF8String(numbers));
}

CGColorRef CGColorCreate(const CGColorSpaceRef &space, std::span<const CGFloat> components) {
    if (!space || components.size() != CGColorSpaceGetNumberOfComponents(space) + 1)
        return nullptr;
    return std::make_shared<const CGColorObject>(space, components);
}

CGColorRef CGColorCreate(const CGColorSpaceRef &space, std::initializer_list<CGFloat> components) {
    return CGColorCreate(space, std::span<const CGFloat>(components.begin(), components.size()));
}

CGColorRef CGColorCreateCopy(const CGColorRef &color) { return color; }

CGColorRef CGColorCreateCopyWithAlpha(const CGColorRef &color, CGFloat alpha) {
    if (!color)
        return nullptr;
    const auto own = color->components();
    std::array<CGFloat, 4> components{};
    std::ranges::copy(own, components.begin());
    components[own.size() - 1] = alpha;
    return CGColorCreate(color->space(), std::span<const CGFloat>(components.data(), own.size()));
}

CGFloat CGColorGetAlpha(const CGColorRef &color) { return color ? color->components().back() : 0; }

CGColorSpaceRef CGColorGetColorSpace(const CGColorRef &color) { return color ? color->space() : nullptr; }

std::span<const CGFloat> CGColorGetComponents(const CGColorRef &color) {
    return color ? color->components() : std::span<const CGFloat>();
}

std::size_t CGColorGetNumberOfComponents(const CGColorRef &color) {
    return color ? color->components().size() : 0;
}

} // namespace quorvane
