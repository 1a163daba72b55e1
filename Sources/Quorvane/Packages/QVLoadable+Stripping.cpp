#include "Quorvane/Packages/QVLoadable.h"

#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Styles/QVStyle.h"

namespace quorvane {

namespace {

void removeStyles(QVStyleList &list, const QVLoadable::PackageSet &packages) {
    const auto styles = list.styles();
    NSIndexSet indexes;
    for (std::size_t index = 0; index < styles->size(); ++index) {
        const auto package = (*styles)[index]->package();
        if (package && packages.contains(package))
            indexes.addIndex(index);
    }
    if (!indexes.isEmpty())
        list.removeStylesAtIndexes(indexes);
}

} // namespace

void QVLoadable::recursivelyStripSyntaxPackages(const PackageSet &packages,
                                                const std::shared_ptr<QVScope> &fromScope) {
    removeStyles(*fromScope, packages);
    for (const auto &subscope : fromScope->subscopes())
        recursivelyStripSyntaxPackages(packages, subscope);
    for (const auto &capture : fromScope->captures())
        recursivelyStripSyntaxPackages(packages, capture);
    for (const auto &capture : fromScope->endCaptures())
        recursivelyStripSyntaxPackages(packages, capture);
}

void QVLoadable::recursivelyStripSyntaxPackages(const PackageSet &packages,
                                                const std::shared_ptr<QVCapture> &fromCapture) {
    removeStyles(*fromCapture, packages);
}

void QVLoadable::recursivelyStripAppliedObjectsFromScope(const std::shared_ptr<QVScope> &scope,
                                                         const std::shared_ptr<QVPackage> &owningPackage) {
    scope->removeAllStyles();
    for (const auto &subscope : scope->subscopes())
        recursivelyStripAppliedObjectsFromScope(subscope, owningPackage);
    for (const auto &capture : scope->captures())
        recursivelyStripAppliedObjectsFromCapture(capture, owningPackage);
    for (const auto &capture : scope->endCaptures())
        recursivelyStripAppliedObjectsFromCapture(capture, owningPackage);
}

void QVLoadable::recursivelyStripAppliedObjectsFromCapture(const std::shared_ptr<QVCapture> &capture,
                                                           const std::shared_ptr<QVPackage> &) {
    capture->removeAllStyles();
}

} // namespace quorvane
