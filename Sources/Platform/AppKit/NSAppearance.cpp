#include "Platform/AppKit/NSAppearance.h"

#include <atomic>

namespace quorvane {

namespace {

using Appearance = std::shared_ptr<const NSAppearance>;

const Appearance &sharedAppearance(bool dark) {
    static const auto &light = *new Appearance(std::make_shared<const NSAppearance>(false));
    static const auto &other = *new Appearance(std::make_shared<const NSAppearance>(true));
    return dark ? other : light;
}

constinit std::atomic<bool> applicationIsDark{false};

enum class Own : std::uint8_t { None, Light, Dark };
constinit thread_local Own threadsOwn = Own::None;

} // namespace

Appearance NSAppearance::appearanceNamed(const NSString &name) {
    if (name == NSAppearanceNameAqua)
        return sharedAppearance(false);
    return name == NSAppearanceNameDarkAqua ? sharedAppearance(true) : nullptr;
}

Appearance NSAppearance::currentAppearance() {
    return threadsOwn == Own::None ? applicationAppearance() : sharedAppearance(threadsOwn == Own::Dark);
}

void NSAppearance::setCurrentAppearance(Appearance appearance) {
    threadsOwn = !appearance ? Own::None : appearance->isDark() ? Own::Dark : Own::Light;
}

Appearance NSAppearance::applicationAppearance() {
    return sharedAppearance(applicationIsDark.load(std::memory_order_relaxed));
}

void NSAppearance::setApplicationAppearance(Appearance appearance) {
    applicationIsDark.store(appearance && appearance->isDark(), std::memory_order_relaxed);
}

} // namespace quorvane
