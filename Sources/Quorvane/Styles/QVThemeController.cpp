#include "Quorvane/Styles/QVThemeController.h"

#include "Platform/Foundation/NSNotificationCenter.h"
#include "Quorvane/Packages/QVPackage.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

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

bool isLessSpecific(const std::shared_ptr<QVStyle> &a, const std::shared_ptr<QVStyle> &b) {
    return a->compare(*b) == NSOrderedAscending;
}

/// Calls back for the scopes and captures of the scopes' trees that the style's selector matches.
template <typename Call>
void forEachMatchingNode(const std::shared_ptr<QVStyle> &style, const QVThemeController::Scopes &scopes,
                         Call call) {
    if (!style || !style->selector())
        return;
    for (const auto &scope : scopes)
        QVSimpleSelector::walkTreeStartingAtSelectable(
            scope.get(), {&style->selector(), 1}, [&](QVSelectable *node, bool &) {
                if (auto *matched = dynamic_cast<QVScope *>(node))
                    call(*matched);
                else if (auto *capture = dynamic_cast<QVCapture *>(node))
                    call(*capture);
            });
}

/// The styles that many nodes are about to get. Each node's list is changed once, for each change merges the
/// whole list: one by one, a theme with thousands of rules for one scope would take minutes.
class Cascades {
public:
    void add(const std::shared_ptr<QVStyle> &style, const QVThemeController::Scopes &scopes) {
        forEachMatchingNode(style, scopes, [&](QVStyleList &list) { _added[&list].push_back(style); });
    }
    /// Leaves each list as if the styles had been inserted in their order.
    void insert() {
        for (auto &[list, added] : _added) {
            QVStyleList::Styles styles = *list->styles();
            if (!std::is_sorted(styles.begin(), styles.end(), isLessSpecific)) {
                // Put together by somebody else; only one by one is each insertion where it belongs.
                for (const auto &style : added)
                    insertStyle(style, *list);
                continue;
            }
            const std::size_t count = styles.size();
            std::unordered_set<const QVStyle *> present;
            for (const auto &style : styles)
                present.insert(style.get());
            for (auto &style : added)
                if (present.insert(style.get()).second)
                    styles.push_back(std::move(style));
            if (styles.size() == count)
                continue;
            std::stable_sort(styles.begin(), styles.end(), isLessSpecific);
            list->setStyles(std::move(styles));
        }
    }

private:
    std::unordered_map<QVStyleList *, QVStyleList::Styles> _added;
};

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
    Cascades cascades;
    for (const auto &[identifier, package] : QVLoadable::loadedPackages())
        for (const auto &style : package->styles())
            cascades.add(style, onScopes);
    // Held, for the theme may be given others meanwhile.
    const auto styles = theme.styles();
    for (const auto &style : *styles)
        cascades.add(style, onScopes);
    cascades.insert();
}

void QVThemeController::applyStyle(const std::shared_ptr<QVStyle> &style, const Scopes &onScopes) {
    forEachMatchingNode(style, onScopes, [&](auto &node) { applyStyle(style, node); });
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
