#include "Quorvane/Styles/QVTheme.h"

#include "Platform/AppKit/NSAppearance.h"
#include "Platform/AppKit/NSColor.h"
#include "Quorvane/Styles/QVColor.h"

// The editor's surroundings.

namespace quorvane {

std::shared_ptr<const NSColor> QVTheme::backgroundColor() const {
    return resolvedColorForAttribute(QVStyleAttributeBackgroundColor, {QVThemeStyleWindow},
                                     NSColor::windowBackgroundColor());
}

std::shared_ptr<const NSColor> QVTheme::separatorColor() const {
    return resolvedColorForAttribute(QVStyleAttributeBorderColor, {QVThemeStyleWindow},
                                     NSColor::separatorColor());
}

std::shared_ptr<const NSColor> QVTheme::contentBackgroundColor() const {
    return resolvedColorForAttribute(QVStyleAttributeBackgroundColor,
                                     {QVThemeStyleDocument, QVThemeStyleWindow}, backgroundColor());
}

std::shared_ptr<const NSColor> QVTheme::contentSeparatorColor() const {
    return resolvedColorForAttribute(QVStyleAttributeBorderColor, {QVThemeStyleDocument, QVThemeStyleWindow},
                                     separatorColor());
}

std::shared_ptr<const NSColor> QVTheme::accentColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleWindowAccent},
                                     NSColor::controlAccentColor());
}

std::shared_ptr<const NSColor> QVTheme::textColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor,
                                     {QVThemeStyleDocumentText, QVThemeStyleDocument, QVThemeStyleWindow},
                                     labelColor());
}

std::shared_ptr<const NSColor> QVTheme::selectedTextBackgroundColor() const {
    const auto style = selectedTextStyle();
    const auto color = style ? style->backgroundColor() : nullptr;
    return color ? color->platformColor() : NSColor::selectedTextBackgroundColor();
}

std::shared_ptr<const NSColor> QVTheme::windowBackgroundColor() const {
    return allowsVibrancy() ? nullptr : backgroundColor();
}

std::shared_ptr<const NSColor> QVTheme::headerTextColor() const { return NSColor::headerTextColor(); }

std::shared_ptr<const NSColor> QVTheme::labelColor() const { return NSColor::labelColor(); }

std::shared_ptr<const NSColor> QVTheme::secondaryLabelColor() const { return NSColor::secondaryLabelColor(); }

std::shared_ptr<const NSColor> QVTheme::tertiaryLabelColor() const { return NSColor::tertiaryLabelColor(); }

std::shared_ptr<const NSColor> QVTheme::placeholderTextColor() const {
    return NSColor::placeholderTextColor();
}

std::shared_ptr<const NSColor> QVTheme::selectedContentBackgroundColor() const {
    return NSColor::selectedContentBackgroundColor();
}

std::shared_ptr<const NSColor> QVTheme::unemphasizedSelectedContentBackgroundColor() const {
    return NSColor::unemphasizedSelectedContentBackgroundColor();
}

std::shared_ptr<const QVStyle> QVTheme::textStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentText});
}

std::shared_ptr<const QVStyle> QVTheme::selectedTextStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentTextSelected});
}

std::shared_ptr<const QVStyle> QVTheme::invisibleTextStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentTextInvisible});
}

std::shared_ptr<const QVStyle> QVTheme::linkTextStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentTextLink});
}

std::shared_ptr<const QVStyle> QVTheme::lookupTextStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentTextLookup});
}

std::shared_ptr<const QVStyle> QVTheme::insertionPointStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentInsertionPoint});
}

std::shared_ptr<const QVStyle> QVTheme::indentationGuideStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentIndentationGuide});
}

std::shared_ptr<const QVStyle> QVTheme::gutterStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentGutter});
}

std::shared_ptr<const QVStyle> QVTheme::gutterSelectedStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleDocumentGutterSelected});
}

std::shared_ptr<const QVStyle> QVTheme::titlebarStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleWindowTitlebar});
}

std::shared_ptr<const QVStyle> QVTheme::titlebarInactiveStyle() const {
    return resolvedStyleForSelectors({QVThemeStyleWindowTitlebarInactive});
}

std::shared_ptr<const NSAppearance> QVTheme::appearance() const {
    switch (_interfaceStyle) {
    case QVThemeInterfaceStyleLight:
        return NSAppearance::appearanceNamed(NSAppearanceNameAqua);
    case QVThemeInterfaceStyleDark:
        return NSAppearance::appearanceNamed(NSAppearanceNameDarkAqua);
    default:
        return NSAppearance::currentAppearance();
    }
}

std::shared_ptr<const NSColor> QVTheme::ANSIBlackColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBlack});
}

std::shared_ptr<const NSColor> QVTheme::ANSIRedColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIRed});
}

std::shared_ptr<const NSColor> QVTheme::ANSIGreenColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIGreen});
}

std::shared_ptr<const NSColor> QVTheme::ANSIYellowColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIYellow});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBlueColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBlue});
}

std::shared_ptr<const NSColor> QVTheme::ANSIMagentaColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIMagenta});
}

std::shared_ptr<const NSColor> QVTheme::ANSICyanColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSICyan});
}

std::shared_ptr<const NSColor> QVTheme::ANSIWhiteColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIWhite});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBrightBlackColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBrightBlack});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBrightRedColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBrightRed});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBrightGreenColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBrightGreen});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBrightYellowColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBrightYellow});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBrightBlueColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBrightBlue});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBrightMagentaColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBrightMagenta});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBrightCyanColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBrightCyan});
}

std::shared_ptr<const NSColor> QVTheme::ANSIBrightWhiteColor() const {
    return resolvedColorForAttribute(QVStyleAttributeTextColor, {QVThemeStyleTerminalANSIBrightWhite});
}

} // namespace quorvane
