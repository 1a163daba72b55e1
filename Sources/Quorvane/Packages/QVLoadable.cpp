#include "Quorvane/Packages/QVLoadable.h"

#include "Quorvane/Packages/QVPackageLock.h"

namespace quorvane {

namespace {

/// Whether this thread is inside of `performBlockWithPackageLock`.
thread_local bool holdsPackageLock = false;

} // namespace

ReadWriteLock &QVPackageLock() {
    // Never destroyed: a background parse may resolve a grammar while the process ends.
    static auto *const lock = new ReadWriteLock;
    return *lock;
}

void QVLoadable::willLoadIntoPackage(const std::shared_ptr<QVPackage> &) {}

void QVLoadable::didUnloadFromPackage() {}

void QVLoadable::performBlockWithPackageLock(QVBlock<void()> block) {
    if (!block)
        return;
    if (holdsPackageLock) {
        block();
        return;
    }
    const WriteGuard guard(QVPackageLock());
    struct Mark {
        Mark() { holdsPackageLock = true; }
        ~Mark() { holdsPackageLock = false; }
    } const mark;
    block();
}

} // namespace quorvane
