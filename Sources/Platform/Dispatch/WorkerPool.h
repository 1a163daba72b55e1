#pragma once

#include "Platform/Dispatch/Dispatch.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

/// The threads that run tasks, one pool for each quality of service, so that work of one kind that fills its
/// pool never keeps another kind waiting: the handler that is told that a writer hangs must run beside it.
/// Threads are started when there is work for them. Private to the queues.
///
/// Waking a thread that sleeps takes the main thread several times what the rest of a keystroke does. So in
/// the pools that do not give way to others one thread lingers behind the last task: for a while it naps,
/// looks for tasks and naps again, and who submits one meanwhile leaves it at that. Only then it sleeps until
/// it is woken. As soon as any thread waits in an operation of the platform, naps end with the next task:
/// nobody waits for a nap to come to its end.
namespace quorvane::dispatch {

/// How many threads of a pool may run at once; those that wait are not counted.
std::size_t poolWidth();

/// How a pool's thread lingers behind the last task.
struct Lingering {
    using Duration = std::chrono::steady_clock::duration;

    /// Zero where none lingers.
    Duration time{0};
    /// A nap takes this part of the time since the last task, within bounds.
    int parts = 1;
    Duration shortestNap{0};
    Duration longestNap{0};
};

class WorkerPool {
public:
    /// Not counted anywhere but in its threads, and never destroyed. The niceness is that of its threads.
    WorkerPool(int niceness, const Lingering &lingering);

    /// The pool of a quality of service. Pools live until the process ends, for tasks may run till then.
    static WorkerPool &shared(dispatch_qos_class_t qualityOfService);

    /// Hands a task to a thread; tasks are taken in the order they came. Any thread.
    void submit(dispatch_block_t task);

    /// How many threads live now, the waiting ones included. Any thread; for tests.
    std::size_t threadCount() const;
    /// Whether a thread naps behind the last task. Any thread; for tests.
    bool isLingering() const;
    /// How many threads sleep until they are called. Any thread; for tests.
    std::size_t sleepingThreadCount() const;
    /// How often threads were started or woken for a task. Any thread; for tests.
    std::size_t callCount() const;

private:
    friend class BlockingScope;
    ~WorkerPool() = delete;

    void callThreads();
    bool startThread();
    void runThread();
    void linger(std::unique_lock<std::mutex> &lock);
    void sleep(std::unique_lock<std::mutex> &lock);
    void endNapForWaitingThreads();
    void beginWaiting();
    void endWaiting();

    const int _niceness;
    const Lingering _lingering;
    /// The pools whose threads linger, each with the next one.
    static std::atomic<WorkerPool *> firstThatLingers;
    WorkerPool *_nextThatLingers = nullptr;

    mutable std::mutex _mutex;
    std::deque<dispatch_block_t> _tasks;
    std::condition_variable _called;
    std::condition_variable _napEnded;
    std::size_t _threads = 0;
    /// Threads that wait inside a task: others run in their place.
    std::size_t _waiting = 0;
    /// Threads that sleep until they are called.
    std::size_t _sleeping = 0;
    /// Threads that were started or called, and have not looked for a task yet.
    std::size_t _onTheirWay = 0;
    /// Of these, the ones that were called out of their sleep.
    std::size_t _calls = 0;
    std::size_t _callCount = 0;
    bool _napping = false;
};

/// Stands where a thread is about to wait for others. On a worker it lets another one run meanwhile, so that
/// what is waited for can always come; on all threads it sees to it that no worker sleeps over a task.
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
