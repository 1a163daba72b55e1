#include "Platform/Dispatch/MainQueue.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/WorkerPool.h"
#include "Platform/Foundation/NSAssertionHandler.h"

#include <unistd.h>

#include <atomic>
#include <exception>
#include <limits>

namespace quorvane {

namespace {

/// Numbers are not used again when a thread has ended, as addresses and the system's numbers are.
std::uint64_t numberOfThisThread() {
    static std::atomic<std::uint64_t> last = 0;
    thread_local const std::uint64_t number = ++last;
    return number;
}

/// Zero as long as the host has not chosen a main thread.
std::atomic<std::uint64_t> adoptedThread = 0;

/// The tasks that wait for the main thread.
class MainTaskQueue final : public DispatchQueue {
public:
    MainTaskQueue() : DispatchQueue("main") {}

    static const std::shared_ptr<MainTaskQueue> &shared() {
        // Never destroyed: tasks may be submitted till the process has ended.
        static const auto &queue = *new std::shared_ptr<MainTaskQueue>(std::make_shared<MainTaskQueue>());
        return queue;
    }

    void submit(dispatch_block_t block, bool) override {
        {
            const std::lock_guard guard(_mutex);
            _tasks.push_back({std::move(block), nullptr, _nextNumber++});
            _changed.notify_all();
        }
        wakeUp();
    }

    void submitAndWait(QVBlock<void()> block, bool) override {
        if (MainQueue::isMainThread()) {
            const dispatch::QueueFrame frame(*this, true);
            return block();
        }
        Waiter waiter{block, nullptr, false};
        {
            const std::lock_guard guard(_mutex);
            _tasks.push_back({nullptr, &waiter, _nextNumber++});
            _changed.notify_all();
        }
        wakeUp();
        {
            std::unique_lock lock(_mutex);
            dispatch::waitUntil(_finished, lock, DISPATCH_TIME_FOREVER, [&] { return waiter.finished; });
        }
        if (waiter.exception)
            std::rethrow_exception(waiter.exception);
    }

    void setWakeUpHandler(std::function<void()> handler) {
        {
            const std::lock_guard guard(_wakeUpMutex);
            _wakeUpHandler.swap(handler);
        }
        {
            // What waits already would never be told of to the new handler.
            const std::lock_guard guard(_mutex);
            _wakeUpSent = false;
            if (_tasks.empty())
                return;
        }
        wakeUp();
    }

    std::size_t drain() {
        std::uint64_t end = 0;
        {
            const std::lock_guard guard(_mutex);
            _wakeUpSent = false;
            end = _nextNumber;
        }
        std::size_t count = 0;
        while (runTaskBefore(end))
            ++count;
        return count;
    }

    bool runUntil(QVBlock<bool()> condition, dispatch_time_t deadline) {
        // Conditions that no task of this queue brings about are looked at this often.
        constexpr std::chrono::milliseconds interval{5};
        while (true) {
            if (condition())
                return true;
            if (std::chrono::steady_clock::now() >= deadline)
                return false;
            if (runTaskBefore(std::numeric_limits<std::uint64_t>::max()))
                continue;
            std::unique_lock lock(_mutex);
            const auto until = std::min(deadline, std::chrono::steady_clock::now() + interval);
            dispatch::waitUntil(_changed, lock, until, [this] { return !_tasks.empty(); });
        }
    }

private:
    struct Waiter {
        QVBlock<void()> block;
        std::exception_ptr exception;
        bool finished;
    };
    struct Task {
        dispatch_block_t block;
        /// Set instead of the block where another thread waits.
        Waiter *waiter;
        std::uint64_t number;
    };

    /// Runs the first task if it came before a number; a task that drains the queue itself goes on with it.
    bool runTaskBefore(std::uint64_t end) {
        std::unique_lock lock(_mutex);
        if (_tasks.empty() || _tasks.front().number >= end)
            return false;
        Task task = std::move(_tasks.front());
        _tasks.pop_front();
        if (_tasks.empty())
            _wakeUpSent = false;
        lock.unlock();

        const dispatch::QueueFrame frame(*this, true);
        if (!task.waiter) {
            runAsynchronousBlock(task.block);
            return true;
        }
        try {
            task.waiter->block();
        } catch (...) {
            task.waiter->exception = std::current_exception();
        }
        lock.lock();
        task.waiter->finished = true;
        _finished.notify_all();
        return true;
    }

    void wakeUp() {
        {
            const std::lock_guard guard(_mutex);
            if (_wakeUpSent || _tasks.empty())
                return;
            _wakeUpSent = true;
        }
        const std::lock_guard guard(_wakeUpMutex);
        // A copy, so that a handler may replace itself.
        if (const std::function<void()> handler = _wakeUpHandler)
            handler();
    }

    std::mutex _mutex;
    std::condition_variable _changed;
    std::condition_variable _finished;
    std::deque<Task> _tasks;
    std::uint64_t _nextNumber = 0;
    /// The host was told of what waits and has not drained yet.
    bool _wakeUpSent = false;

    /// Held while the handler runs, so that it is not running any more when `setWakeUpHandler` returns;
    /// recursive, so that the handler may submit.
    std::recursive_mutex _wakeUpMutex;
    std::function<void()> _wakeUpHandler;
};

} // namespace

dispatch_queue_t dispatch_get_main_queue() { return MainTaskQueue::shared(); }

namespace MainQueue {

void adoptMainThread() { adoptedThread.store(numberOfThisThread(), std::memory_order_relaxed); }

bool isMainThread() {
    if (const std::uint64_t adopted = adoptedThread.load(std::memory_order_relaxed))
        return adopted == numberOfThisThread();
    thread_local const bool isFirst = getpid() == gettid();
    return isFirst;
}

void setWakeUpHandler(std::function<void()> handler) {
    MainTaskQueue::shared()->setWakeUpHandler(std::move(handler));
}

std::size_t drain() {
    QVAssert(isMainThread(), u"The main queue can be drained by the main thread alone");
    return isMainThread() ? MainTaskQueue::shared()->drain() : 0;
}

bool runUntil(QVBlock<bool()> condition, std::chrono::steady_clock::time_point deadline) {
    QVParameterAssert(condition, "condition != nil");
    QVAssert(isMainThread(), u"The main queue can be drained by the main thread alone");
    return condition && isMainThread() && MainTaskQueue::shared()->runUntil(condition, deadline);
}

} // namespace MainQueue
} // namespace quorvane
