#pragma once

#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/QVBlock.h"

namespace quorvane {

class QVPackage;
class QVScope;
class QVSyntax;

/// Posted with the set of packages that were really taken.
inline constexpr const char16_t *QVLoadableDidLoadPackagesNotification =
    u"QVLoadableDidLoadPackagesNotification";
/// Posted, before anything goes, with the packages that are about to go.
inline constexpr const char16_t *QVLoadableWillUnloadPackagesNotification =
    u"QVLoadableWillUnloadPackagesNotification";
/// The user info key of both.
inline constexpr const char16_t *QVLoadablePackagesUserInfoKey = u"QVLoadablePackages";

/// The base of what a package owns, and the class that keeps the lock under which packages come and go.
class QV_EXPORT QVLoadable : public NSObject {
public:
    /// The owning package, null where there is none or it is gone.
    std::shared_ptr<QVPackage> package() const { return _package.lock(); }
    void setPackage(const std::shared_ptr<QVPackage> &package) { _package = package; }

    virtual void willLoadIntoPackage(const std::shared_ptr<QVPackage> &package);
    virtual void didUnloadFromPackage();

    /// Runs the block with the package lock held for writing. Reentrant on one thread, so that a block may
    /// ask any syntax for its grammar. Lock order: a syntax's monitor, the package lock, a registry's lock.
    static void performBlockWithPackageLock(QVBlock<void()> block);

    /// Connects a newly resolved grammar: its scopes learn the syntax they belong to. Called once, by the
    /// syntax, under the package lock.
    static void loadResolvedSyntax(const std::shared_ptr<QVSyntax> &syntax);
    /// Makes the syntax the parent of the scope and of all that its subscopes hold; captures have none.
    static void recursivelyApplySyntax(const std::shared_ptr<QVSyntax> &syntax,
                                       const std::shared_ptr<QVScope> &toScope);

    std::u16string_view className() const override { return u"QVLoadable"; }

private:
    std::weak_ptr<QVPackage> _package;
};

} // namespace quorvane
