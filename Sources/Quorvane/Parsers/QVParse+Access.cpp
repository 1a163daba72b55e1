#include "Quorvane/Parsers/QVParse.h"

#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Foundation/NSAssertionHandler.h"

namespace quorvane {

bool QVParse::isOnQueue() const {
    return _concurrencyType == QVParseMainQueueConcurrencyType ? MainQueue::isMainThread()
                                                               : dispatch_get_specific(this) != nullptr;
}

void QVParse::performReadingBlock(std::function<void()> block) {
    QVParameterAssert(block != nullptr, "block != nil");
    if (!block)
        return;
    if (isOnQueue())
        block();
    else
        dispatch_async(_updateQueue, [parse = self(), block = std::move(block)] { block(); });
}

void QVParse::performReadingBlockAndWait(QVBlock<void()> block) {
    QVParameterAssert(static_cast<bool>(block), "block != nil");
    if (!block)
        return;
    if (isOnQueue())
        block();
    else
        dispatch_sync(_updateQueue, block);
}

void QVParse::performReadingWithTimeout(double timeout, std::function<void()> block,
                                        std::function<void(bool)> completion) {
    QVParameterAssert(block != nullptr, "block != nil");
    if (!block)
        return;
    if (isOnQueue()) {
        block();
        if (completion)
            completion(true);
        return;
    }
    dispatch_async(_updateQueue, [parse = self(), deadline = dispatch_time_after(timeout),
                                  block = std::move(block), completion = std::move(completion)] {
        const bool late = std::chrono::steady_clock::now() >= deadline || parse->isCancelled();
        if (!late)
            block();
        if (completion)
            completion(!late);
    });
}

bool QVParse::performReadingWithTimeoutAndWait(double timeout, QVBlock<void()> block) {
    QVParameterAssert(static_cast<bool>(block), "block != nil");
    if (!block)
        return false;
    if (isOnQueue()) {
        block();
        return true;
    }
    struct Shared {
        std::mutex mutex;
        bool expired = false;
        dispatch_semaphore_t semaphore = dispatch_semaphore_create(0);
    };
    const auto shared = std::make_shared<Shared>();
    // The caller's block is only reached while the caller waits: whoever holds the lock with `expired` unset.
    dispatch_async(_updateQueue, [parse = self(), shared, block] {
        const std::lock_guard guard(shared->mutex);
        if (!shared->expired && !parse->isCancelled()) {
            block();
            dispatch_semaphore_signal(shared->semaphore);
        }
    });
    const bool inTime = dispatch_semaphore_wait(shared->semaphore, dispatch_time_after(timeout));
    const std::lock_guard guard(shared->mutex);
    if (!inTime)
        shared->expired = true;
    return !shared->expired;
}

void QVParse::performWritingBlock(std::function<void()> block) {
    QVParameterAssert(block != nullptr, "block != nil");
    if (!block)
        return;
    if (isOnQueue())
        block();
    else
        dispatch_barrier_async(_updateQueue, [parse = self(), block = std::move(block)] { block(); });
}

void QVParse::performWritingBlockAndWait(QVBlock<void()> block) {
    QVParameterAssert(static_cast<bool>(block), "block != nil");
    if (!block)
        return;
    if (isOnQueue())
        block();
    else
        dispatch_barrier_sync(_updateQueue, block);
}

void QVParse::runWriter(double timeout, QVBlock<void()> block,
                        const std::function<void()> &expirationHandler) {
    const dispatch_source_t timer = dispatch_timer_create(dispatch_get_global_queue(QOS_CLASS_BACKGROUND));
    const auto leeway =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(timeout / 10));
    dispatch_source_set_timer(timer, dispatch_time_after(timeout), leeway);
    dispatch_source_set_event_handler(
        timer, expirationHandler ? expirationHandler : [] {});
    dispatch_resume(timer);
    // Also when the block throws.
    struct Cancel {
        const dispatch_source_t &timer;
        ~Cancel() { dispatch_source_cancel(timer); }
    } const cancel{timer};
    block();
}

void QVParse::performWritingWithTimeout(double timeout, std::function<void()> block,
                                        std::function<void()> expirationHandler) {
    QVParameterAssert(timeout > 0.0, "interval > 0.0");
    QVParameterAssert(block != nullptr, "block != nil");
    if (!block)
        return;
    const bool marked = dispatch_get_specific(this) != nullptr;
    if (marked)
        block();
    else if (isOnQueue())
        runWriter(timeout, block, expirationHandler);
    else
        dispatch_barrier_async(_updateQueue, [parse = self(), timeout, block = std::move(block),
                                              expirationHandler = std::move(expirationHandler)] {
            parse->runWriter(timeout, block, expirationHandler);
        });
}

void QVParse::performWritingWithTimeoutAndWait(double timeout, QVBlock<void()> block,
                                               std::function<void()> expirationHandler) {
    QVParameterAssert(timeout > 0.0, "interval > 0.0");
    QVParameterAssert(static_cast<bool>(block), "block != nil");
    if (!block)
        return;
    const bool marked = dispatch_get_specific(this) != nullptr;
    if (marked)
        block();
    else if (isOnQueue())
        runWriter(timeout, block, expirationHandler);
    else
        dispatch_barrier_sync(_updateQueue, [&] { runWriter(timeout, block, expirationHandler); });
}

void QVParse::cancelParsing() {
    if (_cancelled.exchange(true, std::memory_order_relaxed))
        return;
    performWritingBlockBehindParse([parse = self()] {
        parse->clearAllMatches();
        parse->_cancelled.store(false, std::memory_order_relaxed);
    });
}

void QVParse::performWritingBlockBehindParse(std::function<void()> block) {
    // A delegate that is told something in the middle of a parse may well cancel it; done at once, that would
    // take the tree and the resolved includes away from under the parser.
    if (isParsing() && isOnQueue())
        dispatch_barrier_async(_updateQueue, [parse = self(), block = std::move(block)] { block(); });
    else
        performWritingBlock(std::move(block));
}

} // namespace quorvane
