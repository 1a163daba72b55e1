#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/WorkerPool.h"
#include "Platform/Foundation/NSAssertionHandler.h"

namespace quorvane {

class DispatchSemaphore {
public:
    explicit DispatchSemaphore(std::int64_t value) : _value(value) {}

    void signal() {
        const std::lock_guard guard(_mutex);
        ++_value;
        _changed.notify_one();
    }

    bool wait(dispatch_time_t until) {
        std::unique_lock lock(_mutex);
        if (!dispatch::waitUntil(_changed, lock, until, [this] { return _value > 0; }))
            return false;
        --_value;
        return true;
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    std::int64_t _value;
};

dispatch_semaphore_t dispatch_semaphore_create(std::int64_t value) {
    QVParameterAssert(value >= 0, "value >= 0");
    return value >= 0 ? std::make_shared<DispatchSemaphore>(value) : nullptr;
}

void dispatch_semaphore_signal(const dispatch_semaphore_t &semaphore) {
    QVParameterAssert(semaphore, "semaphore != nil");
    // The one that is woken may be the last that holds it.
    if (const dispatch_semaphore_t kept = semaphore)
        kept->signal();
}

bool dispatch_semaphore_wait(const dispatch_semaphore_t &semaphore, dispatch_time_t until) {
    QVParameterAssert(semaphore, "semaphore != nil");
    const dispatch_semaphore_t kept = semaphore;
    return kept && kept->wait(until);
}

} // namespace quorvane
