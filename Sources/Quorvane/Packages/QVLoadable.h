#pragma once

#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/QVBlock.h"

#include <map>
#include <set>
#include <vector>

namespace quorvane {

class QVCapture;
class QVPackage;
class QVScope;
class QVSyntax;

/// Posted behind each load, on the thread that loads.
inline constexpr const char16_t *QVLoadableDidLoadPackagesNotification =
    u"QVLoadableDidLoadPackagesNotification";
/// Posted before anything goes, on the thread that unloads, so that observers let go of what they hold from
/// these packages while all of it is still valid.
inline constexpr const char16_t *QVLoadableWillUnloadPackagesNotification =
    u"QVLoadableWillUnloadPackagesNotification";
/// The user info key of both. A load names the packages that were really taken (`QVLoadable::PackageSet`), an
/// unload those that it was given (`QVLoadable::Packages`).
inline constexpr const char16_t *QVLoadablePackagesUserInfoKey = u"QVLoadablePackages";

/// The base of what a package owns, and the class that keeps the registry of loaded packages, takes packages
/// in and lets them go. A package is unknown or loaded and nothing between, for loading and unloading run
/// under one lock, as does the connecting of a grammar at its first use. What comes first stays: nothing is
/// replaced and nothing merged.
///
/// Lock order: the package lock, a syntax's monitor, a registry's own lock. What a package brought stays
/// valid after it went for as long as somebody holds it, so that a parse at work on another thread is not
/// disturbed.
class QV_EXPORT QVLoadable : public NSObject {
public:
    using Packages = std::vector<std::shared_ptr<QVPackage>>;

    QVLoadable() = default;
    /// A copy belongs to the same package.
    QVLoadable(const QVLoadable &other);
    QVLoadable &operator=(const QVLoadable &) = delete;

    /// The owning package, null where there is none or it is gone. Any thread.
    std::shared_ptr<QVPackage> package() const;
    void setPackage(const std::shared_ptr<QVPackage> &package);

    /// Told before `package` is set, also where another object of that name is already there.
    virtual void willLoadIntoPackage(const std::shared_ptr<QVPackage> &package);
    virtual void didUnloadFromPackage();

    // Loading and unloading; any thread, but not under the package lock. What they call, the packages
    // included, must neither resolve a grammar nor use `performBlockWithPackageLock` or `loadedPackages`.

    /// What is loaded now, by identifier.
    static std::map<NSString, std::shared_ptr<QVPackage>> loadedPackages();
    /// Takes packages in, in the order given; null entries are passed over. A package whose identifier is
    /// taken is refused as a whole, a syntax or completion set whose name is taken alone; each is logged.
    /// Providers reach the syntaxes that are known by then, those of the same call included.
    static void loadPackagesIntoSyntaxEngine(const Packages &packages);
    /// Lets packages go with all that they brought; those that are not loaded are no error. Grammars that
    /// nobody has used are left alone.
    static void unloadPackagesFromSyntaxEngine(const Packages &packages);

    using PackageSet = std::set<std::shared_ptr<QVPackage>>;
    /// The sender of both notifications.
    static const void *notificationObject();

    /// Runs the block with the package lock held for writing. Reentrant on one thread, so that a block may
    /// ask any syntax for its grammar.
    static void performBlockWithPackageLock(QVBlock<void()> block);

    /// Connects a newly resolved grammar: it and its collections learn their package, its scopes the syntax
    /// they belong to and the styles of the loaded themes. Called by the syntax, under the package lock.
    static void loadResolvedSyntax(const std::shared_ptr<QVSyntax> &syntax);
    /// Makes the syntax the parent of the scope and of all that its subscopes hold; captures have none.
    static void recursivelyApplySyntax(const std::shared_ptr<QVSyntax> &syntax,
                                       const std::shared_ptr<QVScope> &toScope);

    /// Takes the styles of these packages from the scope, its subscopes and their captures. A style without a
    /// package stays.
    static void recursivelyStripSyntaxPackages(const PackageSet &packages,
                                               const std::shared_ptr<QVScope> &fromScope);
    static void recursivelyStripSyntaxPackages(const PackageSet &packages,
                                               const std::shared_ptr<QVCapture> &fromCapture);
    /// Takes all styles; the package is that of the grammar, for whoever looks on.
    static void recursivelyStripAppliedObjectsFromScope(const std::shared_ptr<QVScope> &scope,
                                                        const std::shared_ptr<QVPackage> &owningPackage);
    static void recursivelyStripAppliedObjectsFromCapture(const std::shared_ptr<QVCapture> &capture,
                                                          const std::shared_ptr<QVPackage> &owningPackage);

    std::u16string_view className() const override { return u"QVLoadable"; }

private:
    std::weak_ptr<QVPackage> _package;
};

} // namespace quorvane
