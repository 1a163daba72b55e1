#include "Quorvane/Packages/QVLoadable.h"

#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Styles/QVThemeController.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

void QVLoadable::loadResolvedSyntax(const std::shared_ptr<QVSyntax> &syntax) {
    const std::shared_ptr<QVPackage> package = syntax->package();
    const std::shared_ptr<QVGrammar> grammar = syntax->grammar();
    if (!grammar)
        return;
    grammar->willLoadIntoPackage(package);
    grammar->setPackage(package);
    for (const auto &scope : grammar->scopes())
        recursivelyApplySyntax(syntax, scope);
    for (const auto &scope : grammar->templateScopes())
        recursivelyApplySyntax(syntax, scope);
    for (const auto &[name, collection] : grammar->collections())
        for (const auto &scope : collection->scopes())
            recursivelyApplySyntax(syntax, scope);
    for (const auto &[name, collection] : grammar->collections()) {
        collection->willLoadIntoPackage(package);
        collection->setPackage(package);
    }
    QVThemeController::sharedController()->didResolveSyntax(syntax);
}

void QVLoadable::recursivelyApplySyntax(const std::shared_ptr<QVSyntax> &syntax,
                                        const std::shared_ptr<QVScope> &toScope) {
    // A syntax that comes back has its grammar connected anew while parses that never let go of it read.
    if (toScope->parentSyntax() != syntax)
        toScope->setParentSyntax(syntax);
    for (const auto &subscope : toScope->subscopes())
        recursivelyApplySyntax(syntax, subscope);
}

} // namespace quorvane
