#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Quorvane/Packages/QVLoadable.h"
#include "Quorvane/Packages/QVPackage.h"
#include "Quorvane/Styles/QVThemeController.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/Text/QVTextStorageStyling.h"

namespace quorvane {

namespace {

/// The user info of both notifications: a load has a set, an unload a list.
QVLoadable::Packages packagesOf(const NSNotification &notification) {
    const auto found = notification.userInfo.find(QVLoadablePackagesUserInfoKey);
    if (found == notification.userInfo.end())
        return {};
    if (const auto *const list = std::any_cast<QVLoadable::Packages>(&found->second))
        return *list;
    if (const auto *const set = std::any_cast<QVLoadable::PackageSet>(&found->second))
        return {set->begin(), set->end()};
    return {};
}

std::shared_ptr<QVSyntax> syntaxOfPackage(const QVPackage &package, const NSString &name) {
    const auto syntaxes = package.syntaxes();
    const auto found = syntaxes.find(name);
    return found == syntaxes.end() ? nullptr : found->second;
}

} // namespace

void QVConcreteTextStorage::startObservingPackages() {
    const auto observe = [this](const char16_t *name, const void *object, auto handle) {
        _notificationTokens.push_back(NSNotificationCenter::defaultCenter().addObserver(
            name, object, [link = _link, handle](const NSNotification &notification) {
                const auto tell = [link, handle, packages = packagesOf(notification)] {
                    if (const auto storage = link->lockedStorage())
                        handle(*storage, packages);
                };
                // Packages and themes come and go on any thread, documents change on the main one alone.
                if (MainQueue::isMainThread())
                    tell();
                else
                    dispatch_async(dispatch_get_main_queue(), tell);
            }));
    };
    observe(QVStyleResolvedStylesDidChangeNotification, nullptr,
            [](QVConcreteTextStorage &storage, const QVLoadable::Packages &) {
                storage.resolvedStylesDidChange();
            });
    observe(QVLoadableDidLoadPackagesNotification, QVLoadable::notificationObject(),
            [](QVConcreteTextStorage &storage, const QVLoadable::Packages &packages) {
                storage.packagesDidLoad(packages);
            });
    observe(QVLoadableWillUnloadPackagesNotification, QVLoadable::notificationObject(),
            [](QVConcreteTextStorage &storage, const QVLoadable::Packages &packages) {
                storage.packagesWillUnload(packages);
            });
}

void QVConcreteTextStorage::packagesWillUnload(const QVLoadable::Packages &packages) {
    if (!_syntax)
        return;
    const auto isOwner = [&](const std::shared_ptr<QVPackage> &package) {
        // By the time that the main thread hears of it, the syntax may have lost its package already.
        return package && (_syntax->package() == package ||
                           (!_syntax->package() && syntaxOfPackage(*package, _syntax->name()) == _syntax));
    };
    if (std::ranges::none_of(packages, isOwner))
        return;
    _syntaxNameForReloading = _syntax->name();
    willChangeValueForKey(u"syntax");
    _syntax = nullptr;
    didChangeValueForKey(u"syntax");
}

void QVConcreteTextStorage::packagesDidLoad(const QVLoadable::Packages &packages) {
    if (_syntax || _syntaxNameForReloading.isNull())
        return;
    for (const std::shared_ptr<QVPackage> &package : packages) {
        auto syntax = package ? syntaxOfPackage(*package, _syntaxNameForReloading) : nullptr;
        if (!syntax)
            continue;
        willChangeValueForKey(u"syntax");
        _syntax = std::move(syntax);
        didChangeValueForKey(u"syntax");
        return;
    }
}

} // namespace quorvane
