#pragma once

#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Styles/QVTheme.h"

namespace quorvane {

class QVCapture;
class QVGrammar;
class QVSyntax;

/// Posted by the controller when the theme was set, behind the change of all styles: whoever has coloured
/// text colours it anew.
inline constexpr const char16_t *QVStyleResolvedStylesDidChangeNotification =
    u"QVStyleResolvedStylesDidChangeNotification";

/// Holds the current theme and puts its styles, and those of the loaded packages, onto the scopes and
/// captures of every grammar that is in use, so that colouring is a mere look-up later. Each node keeps its
/// styles as the cascade: a later one is more specific, or was applied later, and wins.
///
/// Styles are changed under the package lock alone, so that a grammar that another thread connects gets
/// either the theme before or the one behind, and whole. Readers see immutable lists.
class QV_EXPORT QVThemeController final : public NSObject {
public:
    using Scopes = QVScope::Scopes;

    /// The one instance.
    static const std::shared_ptr<QVThemeController> &sharedController();

    /// Null where none was set. Any thread.
    std::shared_ptr<QVTheme> currentTheme() const;
    /// Replaces the styles of all grammars that are in use; those that nobody has used yet get theirs when
    /// they are connected. With null no styles are left, those of packages included. Posts
    /// `QVStyleResolvedStylesDidChangeNotification` on the caller's thread. Not for what loading and
    /// unloading of packages calls.
    void setCurrentTheme(std::shared_ptr<QVTheme> currentTheme);

    /// Puts the current theme, if there is one, onto the syntax's grammar. Called under the package lock, by
    /// the thread that connects the grammar.
    void didResolveSyntax(const std::shared_ptr<QVSyntax> &syntax);

    // The steps of it. Nodes are changed on the caller's thread; whoever changes those of a grammar in use
    // holds the package lock.

    /// Scopes, template scopes and the scopes of each collection.
    void applyTheme(const QVTheme &theme, const QVGrammar &onGrammar);
    /// The styles of the loaded packages, then those of the theme, which so win over equally specific ones.
    void applyTheme(const QVTheme &theme, const Scopes &onScopes);
    /// On each node of the scopes' trees that the style's selector matches.
    void applyStyle(const std::shared_ptr<QVStyle> &style, const Scopes &onScopes);
    /// Behind all styles that are at most as specific; a style that is there already is not moved.
    void applyStyle(const std::shared_ptr<QVStyle> &style, QVScope &onScope);
    void applyStyle(const std::shared_ptr<QVStyle> &style, QVCapture &onCapture);
    void clearStylesOnGrammar(const QVGrammar &grammar);
    /// Of the scope, its subscopes and their captures.
    void clearStylesOnScope(QVScope &scope);
    void clearStylesOnCapture(QVCapture &capture);

    std::u16string_view className() const override { return u"QVThemeController"; }

private:
    QVThemeController() = default;

    mutable std::mutex _lock;
    std::shared_ptr<QVTheme> _currentTheme;
};

} // namespace quorvane
