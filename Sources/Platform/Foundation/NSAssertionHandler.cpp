#include "Platform/Foundation/NSAssertionHandler.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSLog.h"

#include <mutex>

namespace quorvane {

namespace {

struct Installed {
    std::mutex mutex;
    NSAssertionHandler::Handler handler;
};

Installed &installed() {
    // Never destroyed: tasks on queues may be at work while the process ends.
    static Installed &storage = *new Installed;
    return storage;
}

} // namespace

NSAssertionHandler::Handler NSAssertionHandler::setHandler(Handler handler) {
    const std::lock_guard guard(installed().mutex);
    return std::exchange(installed().handler, std::move(handler));
}

void NSAssertionHandler::handleFailure(const NSString &source, const NSString &message) {
    Handler handler;
    {
        const std::lock_guard guard(installed().mutex);
        handler = installed().handler;
    }
    if (handler) {
        handler(source, message);
        return;
    }
    NSLog(u"*** Assertion failure in %@: %@", source, message);
    throw NSException(NSInternalInconsistencyException, message);
}

} // namespace quorvane
