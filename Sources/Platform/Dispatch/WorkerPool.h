#pragma once

#include "Platform/Dispatch/Dispatch.h"

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>

/// The threads that run tasks, one pool for each quality of service, so that work of one kind that fills its
/// pool never keeps another kind waiting: the handler that is told that a writer hangs must run beside it.
/// Threads are started when there is work for them. Private to the queues.
namespace quorvane::dispatch {

/// How many threads of a pool may run at once; those that wait are not counted.
std::size_t poolWidth();

class WorkerPool {
public:
    /// The pool of a quality of service. Pools live until the process ends, for tasks may run till then.
    static WorkerPool &shared(dispatch_qos_class_t qualityOfService);

    /// Hands a task to a thread; tasks are taken in the order they came. Any thread.
    void submit(dispatch_block_t task);

    /// How many threads live now, the waiting ones included. Any thread; for tests.
    std::size_t threadCount() const;

private:
    friend class BlockingScope;
    explicit WorkerPool(int niceness);
    ~WorkerPool() = delete;

    void startThreadIfNeeded();
    void runThread();
    bool leaveIfSuperfluous();
    void beginWaiting();
    void endWaiting();

    struct Context;
    const std::unique_ptr<Context> _context;
    const int _niceness;

    mutable std::mutex _mutex;
    std::size_t _threads = 0;
    /// Threads that wait inside a task: others run in their place.
    std::size_t _waiting = 0;
    /// Threads without a task, or on their way to one.
    std::size_t _idle = 0;
    /// Tasks that no thread has taken yet.
    std::size_t _pending = 0;
};

/// Stands where a thread is about to wait for others. On a worker it lets another one run meanwhile, so that
/// what is waited for can always come; elsewhere it does nothing.
class BlockingScope {
public:
    BlockingScope();
    ~BlockingScope();
    BlockingScope(const BlockingScope &) = delete;
    BlockingScope &operator=(const BlockingScope &) = delete;

private:
    WorkerPool *const _pool;
};

/// Waits for a condition until a point in time, and answers the condition. `lock` guards the condition.
template <typename Condition>
bool waitUntil(std::condition_variable &changed, std::unique_lock<std::mutex> &lock, dispatch_time_t until,
               Condition condition) {
    if (condition())
        return true;
    if (until <= std::chrono::steady_clock::now())
        return false;
    const BlockingScope blocking;
    if (until != DISPATCH_TIME_FOREVER)
        return changed.wait_until(lock, until, condition);
    changed.wait(lock, condition);
    return true;
}

} // namespace quorvane::dispatch
