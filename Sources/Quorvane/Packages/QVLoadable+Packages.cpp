#include "Quorvane/Packages/QVLoadable.h"

#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Packages/QVPackage.h"
#include "Quorvane/Packages/QVPackageLock.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

namespace {

using Packages = QVLoadable::Packages;
using PackageSet = QVLoadable::PackageSet;
using Registry = std::map<NSString, std::shared_ptr<QVPackage>>;

/// Guarded by the package lock.
Registry &registry() {
    // Never destroyed: background work may look packages up while the process ends.
    static auto *const instance = new Registry;
    return *instance;
}

void adopt(QVLoadable &object, const std::shared_ptr<QVPackage> &package) {
    object.willLoadIntoPackage(package);
    object.setPackage(package);
}

/// Those whose identifier is new, in order; they are registered.
Packages registerPackages(const Packages &packages) {
    Packages taken;
    for (const auto &package : packages) {
        if (!package)
            continue;
        const NSString identifier = package->identifier();
        if (registry().emplace(identifier, package).second)
            taken.push_back(package);
        else
            NSLog(
                u"Another syntax package with the identifier \"%@\" is already loaded. Ignoring the new one.",
                identifier);
    }
    return taken;
}

void registerSyntaxes(const std::shared_ptr<QVPackage> &package) {
    for (const auto &[name, syntax] : package->syntaxes()) {
        if (name.length() == 0 || !syntax)
            continue;
        adopt(*syntax, package);
        if (QVSyntax::syntaxForName(name))
            NSLog(u"Another syntax with the identifier \"%@\" is already loaded. Ignoring the new one.",
                  name);
        else
            QVSyntax::setSyntax(syntax, name);
    }
}

void registerCompletionSets(const std::shared_ptr<QVPackage> &package) {
    for (const auto &[name, set] : package->completionSets()) {
        if (name.length() == 0 || !set)
            continue;
        adopt(*set, package);
        if (QVCompletionSet::completionSetForName(name))
            NSLog(
                u"Another completion set with the identifier \"%@\" is already loaded. Ignoring the new one.",
                name);
        else
            QVCompletionSet::setCompletionSet(set, name);
    }
}

void connectProviders(const std::shared_ptr<QVPackage> &package) {
    for (const auto &provider : package->completionProviders()) {
        if (!provider)
            continue;
        adopt(*provider, package);
        if (!provider->syntaxNames())
            continue;
        for (const NSString &name : *provider->syntaxNames())
            if (const auto syntax = name ? QVSyntax::syntaxForName(name) : nullptr)
                syntax->addCompletionProvider(provider);
    }
}

void adoptStyles(const std::shared_ptr<QVPackage> &package) {
    for (const auto &style : package->styles())
        if (style)
            adopt(*style, package);
}

void addThemes(const std::shared_ptr<QVPackage> &package) {
    for (const auto &theme : package->themes()) {
        if (!theme)
            continue;
        adopt(*theme, package);
        // Its styles go onto grammars of other packages, and from there with this one.
        const auto styles = theme->styles();
        for (const auto &style : *styles)
            adopt(*style, package);
        QVTheme::addTheme(theme);
    }
}

bool leaves(const QVLoadable &object, const PackageSet &leaving) {
    const auto package = object.package();
    return package && leaving.contains(package);
}

void removeLeavingProviders(QVSyntax &syntax, const PackageSet &leaving) {
    std::vector<std::shared_ptr<QVCompletionProvider>> staying;
    const auto providers = syntax.completionProviders();
    for (const auto &provider : providers) {
        if (leaves(*provider, leaving))
            provider->didUnloadFromPackage();
        else
            staying.push_back(provider);
    }
    if (staying.size() != providers.size())
        syntax.setCompletionProviders(std::move(staying));
}

/// The whole grammar goes: it forgets what was applied to it and counts as unloaded.
void unloadGrammar(QVGrammar &grammar) {
    const auto package = grammar.package();
    for (const auto &scope : grammar.scopes())
        QVLoadable::recursivelyStripAppliedObjectsFromScope(scope, package);
    for (const auto &scope : grammar.templateScopes())
        QVLoadable::recursivelyStripAppliedObjectsFromScope(scope, package);
    for (const auto &[name, collection] : grammar.collections()) {
        for (const auto &scope : collection->scopes())
            QVLoadable::recursivelyStripAppliedObjectsFromScope(scope, package);
        collection->didUnloadFromPackage();
    }
    grammar.didUnloadFromPackage();
}

/// The grammar stays and loses only what the leaving packages added.
void stripGrammar(const QVGrammar &grammar, const PackageSet &leaving) {
    for (const auto &scope : grammar.scopes())
        QVLoadable::recursivelyStripSyntaxPackages(leaving, scope);
    for (const auto &scope : grammar.templateScopes())
        QVLoadable::recursivelyStripSyntaxPackages(leaving, scope);
    for (const auto &[name, collection] : grammar.collections())
        for (const auto &scope : collection->scopes())
            QVLoadable::recursivelyStripSyntaxPackages(leaving, scope);
}

} // namespace

const void *QVLoadable::notificationObject() {
    static const char object = 0;
    return &object;
}

std::map<NSString, std::shared_ptr<QVPackage>> QVLoadable::loadedPackages() {
    Registry loaded;
    performBlockWithPackageLock([&] { loaded = registry(); });
    return loaded;
}

void QVLoadable::loadPackagesIntoSyntaxEngine(const Packages &packages) {
    Packages taken;
    {
        const WriteGuard guard(QVPackageLock());
        taken = registerPackages(packages);
        for (const auto &package : taken) {
            registerSyntaxes(package);
            registerCompletionSets(package);
        }
        // Only now, when the syntaxes of all new packages are known.
        for (const auto &package : taken) {
            connectProviders(package);
            adoptStyles(package);
            addThemes(package);
        }
    }
    NSNotificationCenter::defaultCenter().postNotification(
        {QVLoadableDidLoadPackagesNotification,
         notificationObject(),
         {{QVLoadablePackagesUserInfoKey, PackageSet(taken.begin(), taken.end())}}});
}

void QVLoadable::unloadPackagesFromSyntaxEngine(const Packages &packages) {
    NSNotificationCenter::defaultCenter().postNotification({QVLoadableWillUnloadPackagesNotification,
                                                            notificationObject(),
                                                            {{QVLoadablePackagesUserInfoKey, packages}}});
    const PackageSet leaving(packages.begin(), packages.end());
    // Snapshots outlive the lock, so that what goes for good is freed without it.
    std::map<NSString, std::shared_ptr<QVSyntax>> syntaxes;
    QVCompletionSet::Sets completionSets;
    std::vector<std::shared_ptr<QVTheme>> themes;

    const WriteGuard guard(QVPackageLock());
    syntaxes = QVSyntax::allSyntaxes();
    completionSets = QVCompletionSet::allCompletionSets();
    themes = QVTheme::allThemes();
    for (const auto &[name, syntax] : syntaxes) {
        // Nothing is resolved here: that would take the lock again, and nobody uses a grammar that goes.
        if (const auto grammar = syntax->grammarResolvingIfNecessary(false)) {
            if (leaves(*grammar, leaving))
                unloadGrammar(*grammar);
            else
                stripGrammar(*grammar, leaving);
        }
        removeLeavingProviders(*syntax, leaving);
    }
    for (const auto &[name, syntax] : syntaxes) {
        if (!leaves(*syntax, leaving))
            continue;
        QVSyntax::setSyntax(nullptr, name);
        syntax->didUnloadFromPackage();
    }
    for (const auto &[name, set] : completionSets) {
        if (!leaves(*set, leaving))
            continue;
        QVCompletionSet::setCompletionSet(nullptr, name);
        set->didUnloadFromPackage();
    }
    for (const auto &theme : themes) {
        if (!leaves(*theme, leaving))
            continue;
        QVTheme::removeTheme(theme);
        theme->didUnloadFromPackage();
    }
    for (const auto &package : packages) {
        if (!package)
            continue;
        // A package that was refused for its identifier must not take out the one that has it.
        const auto found = registry().find(package->identifier());
        if (found != registry().end() && found->second == package)
            registry().erase(found);
    }
}

} // namespace quorvane
