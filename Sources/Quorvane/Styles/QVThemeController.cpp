#include "Quorvane/Styles/QVThemeController.h"

#include "Platform/Foundation/NSNotificationCenter.h"
#include "Quorvane/Packages/QVPackage.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

namespace {

void insertStyle(const std::shared_ptr<QVStyle> &style, QVStyleList &list) {
    const auto styles = list.styles();
    for (std::size_t index = 0; index < styles->size(); ++index) {
        const auto &entry = (*styles)[index];
        if (entry == style)
            return;
        if (style->compare(*entry) == NSOrderedAscending) {
            list.insertStyle(style, index);
            return;
        }
    }
    list.addStyle(style);
}

} // namespace

const std::shared_ptr<QVThemeController> &QVThemeController::sharedController() {
    // Never destroyed: a background parse may connect a grammar while the process ends.
    static const auto *const controller = new std::shared_ptr<QVThemeController>(new QVThemeController);
    return *controller;
}

std::shared_ptr<QVTheme> QVThemeController::currentTheme() const {
    const std::lock_guard guard(_lock);
    return _currentTheme;
}

void QVThemeController::setCurrentTheme(std::shared_ptr<QVTheme> currentTheme) {
    QVLoadable::performBlockWithPackageLock([&] {
        {
            const std::lock_guard guard(_lock);
            _currentTheme = currentTheme;
        }
        for (const auto &[name, syntax] : QVSyntax::allSyntaxes()) {
            const auto grammar = syntax->grammarResolvingIfNecessary(false);
            if (!grammar)
                continue;
            clearStylesOnGrammar(*grammar);
            if (currentTheme)
                applyTheme(*currentTheme, *grammar);
        }
    });
    NSNotificationCenter::defaultCenter().postNotification(
        {QVStyleResolvedStylesDidChangeNotification, this});
}

void QVThemeController::didResolveSyntax(const std::shared_ptr<QVSyntax> &syntax) {
    const auto theme = currentTheme();
    const auto grammar = theme ? syntax->grammar() : nullptr;
    if (grammar)
        applyTheme(*theme, *grammar);
}

void QVThemeController::applyTheme(const QVTheme &theme, const QVGrammar &onGrammar) {
    applyTheme(theme, onGrammar.scopes());
    applyTheme(theme, onGrammar.templateScopes());
    for (const auto &[name, collection] : onGrammar.collections())
        applyTheme(theme, collection->scopes());
}

void QVThemeController::applyTheme(const QVTheme &theme, const Scopes &onScopes) {
    for (const auto &[identifier, package] : QVLoadable::loadedPackages())
        for (const auto &style : package->styles())
            applyStyle(style, onScopes);
    // Held, for the theme may be given others meanwhile.
    const auto styles = theme.styles();
    for (const auto &style : *styles)
        applyStyle(style, onScopes);
}

void QVThemeController::applyStyle(const std::shared_ptr<QVStyle> &style, const Scopes &onScopes) {
    if (!style || !style->selector())
        return;
    for (const auto &scope : onScopes)
        QVSimpleSelector::walkTreeStartingAtSelectable(
            scope.get(), {&style->selector(), 1}, [&](QVSelectable *node, bool &) {
                if (auto *matched = dynamic_cast<QVScope *>(node))
                    applyStyle(style, *matched);
                else if (auto *capture = dynamic_cast<QVCapture *>(node))
                    applyStyle(style, *capture);
            });
}

void QVThemeController::applyStyle(const std::shared_ptr<QVStyle> &style, QVScope &onScope) {
    insertStyle(style, onScope);
}

void QVThemeController::applyStyle(const std::shared_ptr<QVStyle> &style, QVCapture &onCapture) {
    insertStyle(style, onCapture);
}

void QVThemeController::clearStylesOnGrammar(const QVGrammar &grammar) {
    for (const auto &scope : grammar.scopes())
        clearStylesOnScope(*scope);
    for (const auto &scope : grammar.templateScopes())
        clearStylesOnScope(*scope);
    for (const auto &[name, collection] : grammar.collections())
        for (const auto &scope : collection->scopes())
            clearStylesOnScope(*scope);
}

void QVThemeController::clearStylesOnScope(QVScope &scope) {
    scope.removeAllStyles();
    for (const auto &subscope : scope.subscopes())
        clearStylesOnScope(*subscope);
    for (const auto &capture : scope.captures())
        clearStylesOnCapture(*capture);
    for (const auto &capture : scope.endCaptures())
        clearStylesOnCapture(*capture);
}

void QVThemeController::clearStylesOnCapture(QVCapture &capture) { capture.removeAllStyles(); }

} // namespace quorvane
