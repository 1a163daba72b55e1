#include "Platform/Dispatch/WorkerPool.h"

#include "Platform/Foundation/QVLimits.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <system_error>
#include <thread>

namespace quorvane::dispatch {

namespace {

/// The pool whose task the thread runs; null on threads that are none of ours.
thread_local WorkerPool *currentPool = nullptr;

/// Threads that wait in an operation of the platform.
std::atomic<std::size_t> waitingThreads = 0;

/// Behind the last task of a parse, and of what else somebody waits for who types.
constexpr Lingering lingeringOfThreads{
    // Longer than the pauses between the keys even of slow typing. A process at rest rests a second later.
    .time = std::chrono::seconds(1),
    // A task waits for a nap's end as long as a small part of the pause that went before, and never so long
    // that it could be seen: half a nap on average, 0.3 ms behind a pause of 20 ms. That makes some 300 naps
    // in the second, which take one hundredth of a processor, two to three while somebody types ten keys a
    // second, each of which starts with short naps again.
    .parts = 32,
    .shortestNap = std::chrono::microseconds(500),
    .longestNap = std::chrono::milliseconds(4)};

} // namespace

std::size_t poolWidth() {
    // Two at least, so that a reader is not kept waiting by a writer of another document on one core.
    static const std::size_t width = std::max(2u, std::thread::hardware_concurrency());
    return width;
}

WorkerPool &WorkerPool::shared(dispatch_qos_class_t qualityOfService) {
    // Never destroyed: threads may still be at work while the process ends.
    static const std::array<WorkerPool *, 4> pools = {new WorkerPool(10, {}), new WorkerPool(5, {}),
                                                      new WorkerPool(0, lingeringOfThreads),
                                                      new WorkerPool(0, lingeringOfThreads)};
    return *pools[qualityOfService];
}

std::atomic<WorkerPool *> WorkerPool::firstThatLingers = nullptr;

WorkerPool::WorkerPool(int niceness, const Lingering &lingering)
    : _niceness(niceness), _lingering(lingering) {
    if (lingering.time == Lingering::Duration::zero())
        return;
    _nextThatLingers = firstThatLingers.load(std::memory_order_relaxed);
    while (!firstThatLingers.compare_exchange_weak(_nextThatLingers, this, std::memory_order_release,
                                                   std::memory_order_relaxed)) {
    }
}

void WorkerPool::submit(dispatch_block_t task) {
    const std::lock_guard guard(_mutex);
    _tasks.push_back(std::move(task));
    callThreads();
}

std::size_t WorkerPool::threadCount() const {
    const std::lock_guard guard(_mutex);
    return _threads;
}

bool WorkerPool::isLingering() const {
    const std::lock_guard guard(_mutex);
    return _napping;
}

std::size_t WorkerPool::sleepingThreadCount() const {
    const std::lock_guard guard(_mutex);
    return _sleeping;
}

std::size_t WorkerPool::callCount() const {
    const std::lock_guard guard(_mutex);
    return _callCount;
}

void WorkerPool::callThreads() {
    endNapForWaitingThreads();
    // The one that naps comes by itself.
    while (_tasks.size() > _onTheirWay + (_napping ? 1 : 0)) {
        if (_sleeping > 0) {
            --_sleeping;
            ++_calls;
            _called.notify_one();
        } else if (!startThread()) {
            return;
        }
        ++_onTheirWay;
        ++_callCount;
    }
}

bool WorkerPool::startThread() {
    if (_threads - _waiting >= poolWidth() || _threads >= limits::dispatchThreads)
        return false;
    try {
        std::thread([this] { runThread(); }).detach();
    } catch (const std::system_error &) {
        // The system has no more threads: the tasks wait for those that there are.
        if (_threads == 0)
            throw;
        return false;
    }
    ++_threads;
    return true;
}

void WorkerPool::runThread() {
    currentPool = this;
    // Other platforms' threads have no niceness of their own; Linux's do, and the thread is only ever ours.
    if (_niceness != 0)
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), _niceness);
    std::unique_lock lock(_mutex);
    --_onTheirWay;
    while (_threads - _waiting <= poolWidth()) {
        if (_tasks.empty()) {
            linger(lock);
            if (_tasks.empty())
                sleep(lock);
            continue;
        }
        dispatch_block_t task = std::move(_tasks.front());
        _tasks.pop_front();
        lock.unlock();
        task();
        // What the task holds goes before the thread counts as free again.
        task = nullptr;
        lock.lock();
    }
    // Superfluous. It may have been called for a task, which is another's now.
    --_threads;
    callThreads();
}

void WorkerPool::linger(std::unique_lock<std::mutex> &lock) {
    if (_napping)
        return;
    const auto &[time, parts, shortestNap, longestNap] = _lingering;
    const auto start = std::chrono::steady_clock::now();
    auto passed = Lingering::Duration::zero();
    _napping = true;
    while (_tasks.empty() && passed < time) {
        _napEnded.wait_for(lock, std::clamp(passed / parts, shortestNap, longestNap));
        passed = std::chrono::steady_clock::now() - start;
    }
    _napping = false;
}

void WorkerPool::sleep(std::unique_lock<std::mutex> &lock) {
    ++_sleeping;
    _called.wait(lock, [this] { return _calls > 0; });
    --_calls;
    --_onTheirWay;
}

/// Others may wait for just the task that a thread naps over.
void WorkerPool::endNapForWaitingThreads() {
    if (_napping && !_tasks.empty() && waitingThreads.load(std::memory_order_relaxed) > 0)
        _napEnded.notify_one();
}

void WorkerPool::beginWaiting() {
    const std::lock_guard guard(_mutex);
    ++_waiting;
    callThreads();
}

void WorkerPool::endWaiting() {
    const std::lock_guard guard(_mutex);
    --_waiting;
}

BlockingScope::BlockingScope() : _pool(currentPool) {
    // Either the submitter of a task sees the number, or the lock below shows its task.
    waitingThreads.fetch_add(1, std::memory_order_relaxed);
    for (WorkerPool *pool = WorkerPool::firstThatLingers.load(std::memory_order_acquire); pool;
         pool = pool->_nextThatLingers) {
        const std::lock_guard guard(pool->_mutex);
        pool->endNapForWaitingThreads();
    }
    if (_pool)
        _pool->beginWaiting();
}

BlockingScope::~BlockingScope() {
    if (_pool)
        _pool->endWaiting();
    waitingThreads.fetch_sub(1, std::memory_order_relaxed);
}

} // namespace quorvane::dispatch
