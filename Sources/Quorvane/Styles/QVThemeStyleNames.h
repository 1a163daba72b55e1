#pragma once

#include "Quorvane/Selectors/QVSimpleSelector.h"

#include <atomic>

namespace quorvane {

/// The name under which themes style a part of the editor, as a constant: it costs nothing before its first
/// use, which interns the selector, and stands wherever a selector is taken.
class QV_EXPORT QVThemeStyleName {
public:
    constexpr explicit QVThemeStyleName(const char16_t *text) : _text(text) {}

    /// Null for the two names that nothing stands for.
    const std::shared_ptr<const QVSimpleSelector> &selector() const {
        const auto *selector = _selector.load(std::memory_order_acquire);
        return selector ? *selector : interned();
    }
    operator const std::shared_ptr<const QVSimpleSelector> &() const { return selector(); }

private:
    const std::shared_ptr<const QVSimpleSelector> &interned() const;

    const char16_t *_text;
    mutable std::atomic<const std::shared_ptr<const QVSimpleSelector> *> _selector = nullptr;
};

inline constinit const QVThemeStyleName QVThemeStyleWindow{u"meta.window"};
inline constinit const QVThemeStyleName QVThemeStyleWindowTitlebar{u"meta.titlebar"};
inline constinit const QVThemeStyleName QVThemeStyleWindowTitlebarInactive{u"meta.titlebar.inactive"};
inline constinit const QVThemeStyleName QVThemeStyleWindowButton{u"meta.button"};
inline constinit const QVThemeStyleName QVThemeStyleWindowButtonDisabled{u"meta.button.disabled"};
inline constinit const QVThemeStyleName QVThemeStyleWindowButtonHighlighted{u"meta.button.highlighted"};
inline constinit const QVThemeStyleName QVThemeStyleWindowButtonSelected{u"meta.button.selected"};
inline constinit const QVThemeStyleName QVThemeStyleWindowButtonHighlightedSelected{
    u"meta.button.highlighted.selected"};
inline constinit const QVThemeStyleName QVThemeStyleWindowTextField{u"meta.textfield"};
inline constinit const QVThemeStyleName QVThemeStyleWindowTextFieldHighlighted{u"meta.textfield.highlighted"};
/// Themes have no names for these two yet.
inline constinit const QVThemeStyleName QVThemeStyleWindowTextFieldDisabled{nullptr};
inline constinit const QVThemeStyleName QVThemeStyleWindowTextFieldPlaceholder{nullptr};
inline constinit const QVThemeStyleName QVThemeStyleWindowAccent{u"meta.accent"};

inline constinit const QVThemeStyleName QVThemeStyleDocument{u"meta.document"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentButton{u"meta.document.button"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentButtonDisabled{u"meta.document.button.disabled"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentButtonHighlighted{
    u"meta.document.button.highlighted"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentButtonSelected{u"meta.document.button.selected"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentButtonHighlightedSelected{
    u"meta.document.button.highlighted.selected"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentTextField{u"meta.document.textfield"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentTextFieldHighlighted{
    u"meta.document.textfield.highlighted"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentText{u"meta.text"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentTextSelected{u"meta.text.selected"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentTextInvisible{u"meta.text.invisible"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentTextLink{u"meta.text.link"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentTextLookup{u"meta.text.lookup"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentInsertionPoint{u"meta.cursor"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentIndentationGuide{u"meta.indentguide"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentGutter{u"meta.gutter"};
inline constinit const QVThemeStyleName QVThemeStyleDocumentGutterSelected{u"meta.gutter.selected"};

inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBlack{u"terminal.black"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIRed{u"terminal.red"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIGreen{u"terminal.green"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIYellow{u"terminal.yellow"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBlue{u"terminal.blue"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIMagenta{u"terminal.magenta"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSICyan{u"terminal.cyan"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIWhite{u"terminal.white"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBrightBlack{u"terminal.bright-black"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBrightRed{u"terminal.bright-red"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBrightGreen{u"terminal.bright-green"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBrightYellow{u"terminal.bright-yellow"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBrightBlue{u"terminal.bright-blue"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBrightMagenta{u"terminal.bright-magenta"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBrightCyan{u"terminal.bright-cyan"};
inline constinit const QVThemeStyleName QVThemeStyleTerminalANSIBrightWhite{u"terminal.bright-white"};

} // namespace quorvane
