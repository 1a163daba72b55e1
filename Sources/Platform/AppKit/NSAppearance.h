#pragma once

#include "Platform/Foundation/NSObject.h"

namespace quorvane {

inline constexpr const char16_t *NSAppearanceNameAqua = u"NSAppearanceNameAqua";
inline constexpr const char16_t *NSAppearanceNameDarkAqua = u"NSAppearanceNameDarkAqua";

/// Light or dark: what the system's named colours resolve by. A host says which one its windows have, and a
/// thread that draws for another one says so for itself. There is one object for each name.
class QV_EXPORT NSAppearance final : public NSObject {
public:
    /// Null for a name that is none of those above.
    static std::shared_ptr<const NSAppearance> appearanceNamed(const NSString &name);

    /// The thread's own, or the application's where it has none. Never null.
    static std::shared_ptr<const NSAppearance> currentAppearance();
    /// For this thread; null brings the application's back.
    static void setCurrentAppearance(std::shared_ptr<const NSAppearance> appearance);

    /// The one that threads without their own have; light unless the host sets another. Any thread.
    static std::shared_ptr<const NSAppearance> applicationAppearance();
    /// Null is light.
    static void setApplicationAppearance(std::shared_ptr<const NSAppearance> appearance);

    explicit NSAppearance(bool dark) : _dark(dark) {}

    const char16_t *name() const { return _dark ? NSAppearanceNameDarkAqua : NSAppearanceNameAqua; }
    bool isDark() const { return _dark; }

    std::u16string_view className() const override { return u"NSAppearance"; }

private:
    bool _dark;
};

} // namespace quorvane
