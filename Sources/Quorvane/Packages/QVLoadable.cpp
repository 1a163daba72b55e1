#include "Quorvane/Packages/QVLoadable.h"

#include "Quorvane/Packages/QVPackageLock.h"

namespace quorvane {

namespace {

/// Whether this thread is inside of `performBlockWithPackageLock`.
thread_local bool holdsPackageLock = false;

/// Guards which package each object belongs to. One lock for all: it is held for the copy of a pointer, and
/// one in each of a grammar's thousand scopes would cost more than it saves.
ReadWriteLock &ownersLock() {
    // Never destroyed: background work may ask while the process ends.
    static auto *const lock = new ReadWriteLock;
    return *lock;
}

} // namespace

ReadWriteLock &QVPackageLock() {
    // Never destroyed: a background parse may resolve a grammar while the process ends.
    static auto *const lock = new ReadWriteLock;
    return *lock;
}

QVLoadable::QVLoadable(const QVLoadable &other) : NSObject(other), _package(other.package()) {}

std::shared_ptr<QVPackage> QVLoadable::package() const {
    const ReadGuard guard(ownersLock());
    return _package.lock();
}

void QVLoadable::setPackage(const std::shared_ptr<QVPackage> &package) {
    std::weak_ptr<QVPackage> previous = package;
    const WriteGuard guard(ownersLock());
    _package.swap(previous);
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
