#include "Quorvane/Syntaxes/QVSyntax.h"

#include "Platform/Dispatch/ReadWriteLock.h"
#include "Platform/Foundation/NSAssertionHandler.h"

namespace quorvane {

namespace {

struct Registry {
    ReadWriteLock lock;
    std::map<NSString, std::shared_ptr<QVSyntax>> syntaxes;
};

Registry &registry() {
    // Never destroyed: background work may look a syntax up while the process ends.
    static auto *const instance = new Registry;
    return *instance;
}

} // namespace

std::map<NSString, std::shared_ptr<QVSyntax>> QVSyntax::allSyntaxes() {
    const ReadGuard guard(registry().lock);
    return registry().syntaxes;
}

std::map<NSString, std::shared_ptr<QVSyntax>> QVSyntax::topLevelSyntaxes() {
    auto syntaxes = allSyntaxes();
    std::erase_if(syntaxes, [](const auto &entry) { return entry.second->isSubsyntaxOnly(); });
    return syntaxes;
}

std::shared_ptr<QVSyntax> QVSyntax::syntaxForName(const NSString &name) {
    QVParameterAssert(!name.isNull(), "name != nil");
    const ReadGuard guard(registry().lock);
    const auto found = registry().syntaxes.find(name);
    return found != registry().syntaxes.end() ? found->second : nullptr;
}

void QVSyntax::setSyntax(const std::shared_ptr<QVSyntax> &syntax, const NSString &forName) {
    QVParameterAssert(!forName.isNull(), "name != nil");
    // What is replaced may go, and take objects of hosts along: not under the lock.
    std::shared_ptr<QVSyntax> replaced;
    const WriteGuard guard(registry().lock);
    auto &syntaxes = registry().syntaxes;
    const auto found = syntaxes.find(forName);
    if (found != syntaxes.end()) {
        replaced = std::move(found->second);
        syntaxes.erase(found);
    }
    if (syntax)
        syntaxes.emplace(forName, syntax);
}

std::shared_ptr<QVSyntax> QVSyntax::suggestedSyntaxForString(const NSString &string,
                                                             const NSString &filename) {
    const ReadGuard guard(registry().lock);
    std::shared_ptr<QVSyntax> best;
    float bestConfidence = 0;
    for (const auto &[name, syntax] : registry().syntaxes) {
        if (syntax->isSubsyntaxOnly())
            continue;
        const float confidence = syntax->confidenceForString(string, filename);
        if (confidence > bestConfidence) {
            best = syntax;
            bestConfidence = confidence;
        }
    }
    return best;
}

} // namespace quorvane
