#include "Platform/Dispatch/WorkerPool.h"

#include "Platform/Foundation/QVLimits.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <thread>

namespace quorvane::dispatch {

namespace {

/// The pool whose task the thread runs; null on threads that are none of ours.
thread_local WorkerPool *currentPool = nullptr;

} // namespace

struct WorkerPool::Context {
    boost::asio::io_context tasks;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> stayOpen =
        boost::asio::make_work_guard(tasks);
};

std::size_t poolWidth() {
    // Two at least, so that a reader is not kept waiting by a writer of another document on one core.
    static const std::size_t width = std::max(2u, std::thread::hardware_concurrency());
    return width;
}

WorkerPool &WorkerPool::shared(dispatch_qos_class_t qualityOfService) {
    // Never destroyed: threads may still be at work while the process ends.
    static const std::array<WorkerPool *, 4> pools = {new WorkerPool(10), new WorkerPool(5),
                                                      new WorkerPool(0), new WorkerPool(0)};
    return *pools[qualityOfService];
}

WorkerPool::WorkerPool(int niceness) : _context(std::make_unique<Context>()), _niceness(niceness) {}

void WorkerPool::submit(dispatch_block_t task) {
    const std::lock_guard guard(_mutex);
    boost::asio::post(_context->tasks, [this, task = std::move(task)]() mutable {
        {
            const std::lock_guard started(_mutex);
            --_pending;
            --_idle;
        }
        task();
        // What the task holds goes before the thread counts as free again.
        task = nullptr;
        const std::lock_guard finished(_mutex);
        ++_idle;
    });
    ++_pending;
    startThreadIfNeeded();
}

std::size_t WorkerPool::threadCount() const {
    const std::lock_guard guard(_mutex);
    return _threads;
}

void WorkerPool::startThreadIfNeeded() {
    if (_pending <= _idle || _threads - _waiting >= poolWidth() || _threads >= limits::dispatchThreads)
        return;
    try {
        std::thread([this] { runThread(); }).detach();
    } catch (const std::system_error &) {
        // The system has no more threads: the tasks wait for those that there are.
        if (_threads == 0)
            throw;
        return;
    }
    ++_threads;
    ++_idle;
}

void WorkerPool::runThread() {
    currentPool = this;
    // Other platforms' threads have no niceness of their own; Linux's do, and the thread is only ever ours.
    if (_niceness != 0)
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), _niceness);
    while (!leaveIfSuperfluous())
        _context->tasks.run_one();
}

bool WorkerPool::leaveIfSuperfluous() {
    const std::lock_guard guard(_mutex);
    if (_threads - _waiting <= poolWidth())
        return false;
    --_threads;
    --_idle;
    return true;
}

void WorkerPool::beginWaiting() {
    const std::lock_guard guard(_mutex);
    ++_waiting;
    startThreadIfNeeded();
}

void WorkerPool::endWaiting() {
    const std::lock_guard guard(_mutex);
    --_waiting;
}

BlockingScope::BlockingScope() : _pool(currentPool) {
    if (_pool)
        _pool->beginWaiting();
}

BlockingScope::~BlockingScope() {
    if (_pool)
        _pool->endWaiting();
}

} // namespace quorvane::dispatch
