#include "Quorvane/Styles/QVTheme.h"

#include "Platform/AppKit/NSShadow.h"
#include "Platform/Dispatch/ReadWriteLock.h"
#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSCache.h"
#include "Quorvane/Styles/QVGradient.h"
#include "Quorvane/Styles/QVThemeBuilder.h"

namespace quorvane {

namespace {

/// Never destroyed: packages may come while the process ends.
struct Registry {
    ReadWriteLock lock;
    std::vector<std::shared_ptr<QVTheme>> themes;
};

Registry &registry() {
    static auto *const registry = new Registry;
    return *registry;
}

// Selectors are equal by their text, lists of them one by one.

struct SelectorsHash {
    std::size_t operator()(const QVTheme::Selectors &selectors) const {
        std::size_t hash = selectors.size();
        for (const auto &selector : selectors)
            hash = hash * 31 + (selector ? selector->hash() : 0);
        return hash;
    }
};

struct SelectorsEqual {
    bool operator()(const QVTheme::Selectors &a, const QVTheme::Selectors &b) const {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto &one, const auto &other) {
            return one == other || (one && one->isEqual(other.get()));
        });
    }
};

} // namespace

struct QVTheme::Sheet {
    Styles styles;
    NSCache<Selectors, std::shared_ptr<const QVStyle>, SelectorsHash, SelectorsEqual> resolvedStyles;

    Styles matching(const Selectors &selectors) const {
        Styles found;
        for (const auto &selector : selectors)
            for (const auto &style : styles)
                if (selector && style && style->selector() && style->selector()->isEqual(selector.get())) {
                    found.push_back(style);
                    break;
                }
        return found;
    }
};

std::vector<std::shared_ptr<QVTheme>> QVTheme::allThemes() {
    const ReadGuard guard(registry().lock);
    return registry().themes;
}

std::shared_ptr<QVTheme> QVTheme::themeWithName(const NSString &name) {
    const ReadGuard guard(registry().lock);
    for (const auto &theme : registry().themes)
        if (name && theme->name() == name)
            return theme;
    return nullptr;
}

void QVTheme::addTheme(std::shared_ptr<QVTheme> theme) {
    QVParameterAssert(theme, "theme != nil");
    if (!theme)
        return;
    const WriteGuard guard(registry().lock);
    registry().themes.push_back(std::move(theme));
}

void QVTheme::removeTheme(const std::shared_ptr<QVTheme> &theme) {
    QVParameterAssert(theme, "theme != nil");
    const WriteGuard guard(registry().lock);
    std::erase(registry().themes, theme);
}

std::shared_ptr<QVTheme> QVTheme::themeWithContentsOfURL(const NSURL &url, std::shared_ptr<NSError> *error) {
    auto theme = QVThemeBuilder::init()->parseFileURL(url, error);
    if (theme && !theme->displayName())
        theme->setDisplayName(theme->name());
    return theme;
}

QVTheme::QVTheme() : _sheet(std::make_shared<Sheet>()) {}
QVTheme::~QVTheme() = default;

std::shared_ptr<QVTheme::Sheet> QVTheme::sheet() const {
    const std::lock_guard guard(_lock);
    return _sheet;
}

std::shared_ptr<const QVTheme::Styles> QVTheme::styles() const {
    auto current = sheet();
    return std::shared_ptr<const Styles>(current, &current->styles);
}

void QVTheme::setStyles(std::optional<Styles> styles) {
    auto made = std::make_shared<Sheet>();
    if (styles)
        made->styles = *std::move(styles);
    const std::lock_guard guard(_lock);
    // Swapped, so that the old one is freed outside of the lock.
    _sheet.swap(made);
}

QVTheme::Styles QVTheme::stylesMatchingSelectors(const Selectors &selectors) const {
    return sheet()->matching(selectors);
}

std::shared_ptr<const QVStyle> QVTheme::resolvedStyleForSelectors(const Selectors &selectors) const {
    const auto current = sheet();
    if (auto cached = current->resolvedStyles.objectForKey(selectors))
        return *cached;
    Styles matching = current->matching(selectors);
    if (matching.empty())
        return nullptr;
    // The first selector's style last, so that it overrides the others.
    std::reverse(matching.begin(), matching.end());
    std::shared_ptr<const QVStyle> resolved = QVStyle::styleByResolvingStyles(matching);
    current->resolvedStyles.setObject(resolved, selectors);
    return resolved;
}

std::shared_ptr<const NSColor>
QVTheme::resolvedColorForAttribute(const NSString &attribute, const Selectors &selectors,
                                   std::shared_ptr<const NSColor> defaultValue) const {
    const auto style = resolvedStyleForSelectors(selectors);
    const auto color = style ? style->colorForAttribute(attribute) : nullptr;
    return color ? color->platformColor() : defaultValue;
}

std::optional<NSInteger> QVTheme::resolvedNumberForAttribute(const NSString &attribute,
                                                             const Selectors &selectors,
                                                             std::optional<NSInteger> defaultValue) const {
    const auto style = resolvedStyleForSelectors(selectors);
    const auto number = style ? style->integerForAttribute(attribute) : std::nullopt;
    return number ? number : defaultValue;
}

std::shared_ptr<const NSShadow>
QVTheme::resolvedShadowForAttribute(const NSString &attribute, const Selectors &selectors,
                                    std::shared_ptr<const NSShadow> defaultValue) const {
    const auto style = resolvedStyleForSelectors(selectors);
    auto shadow = style ? style->shadowForAttribute(attribute) : nullptr;
    return shadow ? shadow : defaultValue;
}

std::shared_ptr<const QVGradient>
QVTheme::resolvedGradientForAttribute(const NSString &attribute, const Selectors &selectors,
                                      std::shared_ptr<const QVGradient> defaultValue) const {
    const auto style = resolvedStyleForSelectors(selectors);
    auto gradient = style ? style->gradientForAttribute(attribute) : nullptr;
    return gradient ? gradient : defaultValue;
}

} // namespace quorvane
