#pragma once

#include "Quorvane/Packages/QVLoadable.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Quorvane/Styles/QVThemeStyleNames.h"

#include <mutex>

namespace quorvane {

class NSAppearance;
class NSColor;
class NSError;

enum QVThemeInterfaceStyle : std::uint64_t {
    QVThemeInterfaceStyleLight = 0,
    QVThemeInterfaceStyleDark = 1,
};

/// The styles of one theme file in their order, what its `meta` declaration says of the whole, and the
/// colours of the editor's surroundings. Text gets its styles elsewhere: `QVThemeController` puts them onto
/// the grammars' scopes, by what selectors match. The look-ups here are by exact selector.
///
/// A theme is set up by one thread. Its styles may be replaced while others look up; everything else is only
/// read once it is in use.
class QV_EXPORT QVTheme final : public QVLoadable {
public:
    using Styles = std::vector<std::shared_ptr<QVStyle>>;
    using Selectors = std::vector<std::shared_ptr<const QVSimpleSelector>>;

    // The registry, which packages fill; any thread

    /// In the order in which they were added.
    static std::vector<std::shared_ptr<QVTheme>> allThemes();
    /// The first of this name, null where there is none.
    static std::shared_ptr<QVTheme> themeWithName(const NSString &name);
    /// A null theme is asserted, here and below: "Invalid parameter not satisfying: theme != nil".
    static void addTheme(std::shared_ptr<QVTheme> theme);
    /// Takes each entry of it out.
    static void removeTheme(const std::shared_ptr<QVTheme> &theme);

    /// Reads a theme's file; null with an error where it can't be read or holds a mistake, whose place the
    /// error's failure reason names. The theme is not registered.
    static std::shared_ptr<QVTheme> themeWithContentsOfURL(const NSURL &url,
                                                           std::shared_ptr<NSError> *error = nullptr);

    QVTheme();
    ~QVTheme() override;

    /// As they stand now, in file order; never null.
    std::shared_ptr<const Styles> styles() const;
    /// No styles at all counts as an empty list.
    void setStyles(std::optional<Styles> styles);

    const NSURL &URL() const { return _URL; }
    void setURL(NSURL URL) { _URL = std::move(URL); }
    /// The file's name without its extension.
    const NSString &name() const { return _name; }
    void setName(NSString name) { _name = std::move(name); }
    /// What users see.
    const NSString &displayName() const { return _displayName; }
    void setDisplayName(NSString displayName) { _displayName = std::move(displayName); }
    std::uint64_t interfaceStyle() const { return _interfaceStyle; }
    void setInterfaceStyle(std::uint64_t interfaceStyle) { _interfaceStyle = interfaceStyle; }
    /// Whether what is behind the window may shine through.
    bool allowsVibrancy() const { return _allowsVibrancy; }
    void setAllowsVibrancy(bool allowsVibrancy) { _allowsVibrancy = allowsVibrancy; }
    bool usesSystemAccentColor() const { return _usesSystemAccentColor; }
    void setUsesSystemAccentColor(bool usesSystemAccentColor) {
        _usesSystemAccentColor = usesSystemAccentColor;
    }

    // Look-ups; selectors stand with the most important first, null ones are passed over

    /// For each selector the first style with the same text; those that no style has are left out.
    Styles stylesMatchingSelectors(const Selectors &selectors) const;
    /// The styles of the selectors merged, what comes first wins; null where there are none.
    std::shared_ptr<const QVStyle> resolvedStyleForSelectors(const Selectors &selectors) const;

    // The attributes of the resolved style; the default where it says "none" or nothing.

    std::shared_ptr<const NSColor>
    resolvedColorForAttribute(const NSString &attribute, const Selectors &selectors,
                              std::shared_ptr<const NSColor> defaultValue = nullptr) const;
    std::optional<NSInteger>
    resolvedNumberForAttribute(const NSString &attribute, const Selectors &selectors,
                               std::optional<NSInteger> defaultValue = std::nullopt) const;
    std::shared_ptr<const NSShadow>
    resolvedShadowForAttribute(const NSString &attribute, const Selectors &selectors,
                               std::shared_ptr<const NSShadow> defaultValue = nullptr) const;
    std::shared_ptr<const QVGradient>
    resolvedGradientForAttribute(const NSString &attribute, const Selectors &selectors,
                                 std::shared_ptr<const QVGradient> defaultValue = nullptr) const;

    // The surroundings; where the theme says nothing the system's colours stand in

    std::shared_ptr<const NSColor> backgroundColor() const;
    std::shared_ptr<const NSColor> separatorColor() const;
    std::shared_ptr<const NSColor> contentBackgroundColor() const;
    std::shared_ptr<const NSColor> contentSeparatorColor() const;
    std::shared_ptr<const NSColor> accentColor() const;
    std::shared_ptr<const NSColor> textColor() const;
    std::shared_ptr<const NSColor> selectedTextBackgroundColor() const;
    /// Null where vibrancy is allowed.
    std::shared_ptr<const NSColor> windowBackgroundColor() const;

    // The system's, whatever the theme says.

    std::shared_ptr<const NSColor> headerTextColor() const;
    std::shared_ptr<const NSColor> labelColor() const;
    std::shared_ptr<const NSColor> secondaryLabelColor() const;
    std::shared_ptr<const NSColor> tertiaryLabelColor() const;
    std::shared_ptr<const NSColor> placeholderTextColor() const;
    std::shared_ptr<const NSColor> selectedContentBackgroundColor() const;
    std::shared_ptr<const NSColor> unemphasizedSelectedContentBackgroundColor() const;

    // The resolved style of one selector; null where the theme has none.

    std::shared_ptr<const QVStyle> textStyle() const;
    std::shared_ptr<const QVStyle> selectedTextStyle() const;
    std::shared_ptr<const QVStyle> invisibleTextStyle() const;
    std::shared_ptr<const QVStyle> linkTextStyle() const;
    std::shared_ptr<const QVStyle> lookupTextStyle() const;
    std::shared_ptr<const QVStyle> insertionPointStyle() const;
    std::shared_ptr<const QVStyle> indentationGuideStyle() const;
    std::shared_ptr<const QVStyle> gutterStyle() const;
    std::shared_ptr<const QVStyle> gutterSelectedStyle() const;
    std::shared_ptr<const QVStyle> titlebarStyle() const;
    std::shared_ptr<const QVStyle> titlebarInactiveStyle() const;

    /// Light or dark as the interface style says; the current one for a style that is neither.
    std::shared_ptr<const NSAppearance> appearance() const;

    // The colours of a terminal; null where the theme has none.

    std::shared_ptr<const NSColor> ANSIBlackColor() const;
    std::shared_ptr<const NSColor> ANSIRedColor() const;
    std::shared_ptr<const NSColor> ANSIGreenColor() const;
    std::shared_ptr<const NSColor> ANSIYellowColor() const;
    std::shared_ptr<const NSColor> ANSIBlueColor() const;
    std::shared_ptr<const NSColor> ANSIMagentaColor() const;
    std::shared_ptr<const NSColor> ANSICyanColor() const;
    std::shared_ptr<const NSColor> ANSIWhiteColor() const;
    std::shared_ptr<const NSColor> ANSIBrightBlackColor() const;
    std::shared_ptr<const NSColor> ANSIBrightRedColor() const;
    std::shared_ptr<const NSColor> ANSIBrightGreenColor() const;
    std::shared_ptr<const NSColor> ANSIBrightYellowColor() const;
    std::shared_ptr<const NSColor> ANSIBrightBlueColor() const;
    std::shared_ptr<const NSColor> ANSIBrightMagentaColor() const;
    std::shared_ptr<const NSColor> ANSIBrightCyanColor() const;
    std::shared_ptr<const NSColor> ANSIBrightWhiteColor() const;

    std::u16string_view className() const override { return u"QVTheme"; }

private:
    /// The styles, and what was resolved from them: both are replaced together.
    struct Sheet;
    std::shared_ptr<Sheet> sheet() const;

    mutable std::mutex _lock;
    std::shared_ptr<Sheet> _sheet;
    NSURL _URL;
    NSString _name;
    NSString _displayName;
    std::uint64_t _interfaceStyle = QVThemeInterfaceStyleLight;
    bool _allowsVibrancy = false;
    bool _usesSystemAccentColor = false;
};

} // namespace quorvane
