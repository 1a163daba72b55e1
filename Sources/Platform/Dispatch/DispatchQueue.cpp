#include "Platform/Dispatch/DispatchQueue.h"

#include "Platform/Dispatch/WorkerPool.h"
#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSLog.h"

#include <exception>
#include <optional>

namespace quorvane {

DispatchQueue::~DispatchQueue() {
    for (Specific *specific = _specifics.load(); specific;) {
        Specific *next = specific->next;
        delete specific;
        specific = next;
    }
}

void DispatchQueue::setSpecific(const void *key, void *value) {
    const std::lock_guard guard(_specificsMutex);
    Specific *first = _specifics.load(std::memory_order_acquire);
    for (Specific *specific = first; specific; specific = specific->next) {
        if (specific->key == key) {
            specific->value.store(value, std::memory_order_release);
            return;
        }
    }
    _specifics.store(new Specific{key, value, first}, std::memory_order_release);
}

void *DispatchQueue::specific(const void *key) const {
    for (const Specific *specific = _specifics.load(std::memory_order_acquire); specific;
         specific = specific->next) {
        if (specific->key == key)
            return specific->value.load(std::memory_order_acquire);
    }
    return nullptr;
}

void DispatchQueue::runAsynchronousBlock(dispatch_block_t &block) const noexcept {
    try {
        block();
        // What the block holds goes while its task still counts as running, so that it is gone for the next.
        block = nullptr;
    } catch (const std::exception &exception) {
        NSLog(u"*** Terminating: an exception left a task on the queue \"%@\": %@",
              NSString::stringWithUTF8String(_label), NSString::stringWithUTF8String(exception.what()));
        std::terminate();
    } catch (...) {
        NSLog(u"*** Terminating: an exception left a task on the queue \"%@\"",
              NSString::stringWithUTF8String(_label));
        std::terminate();
    }
}

namespace dispatch {

namespace {

thread_local const QueueFrame *innermostFrame = nullptr;

} // namespace

QueueFrame::QueueFrame(const DispatchQueue &queue, bool alone)
    : _queue(queue), _alone(alone), _outer(innermostFrame) {
    innermostFrame = this;
}

QueueFrame::~QueueFrame() { innermostFrame = _outer; }

void *QueueFrame::specific(const void *key) {
    for (const QueueFrame *frame = innermostFrame; frame; frame = frame->_outer) {
        if (void *value = frame->_queue.specific(key))
            return value;
    }
    return nullptr;
}

bool QueueFrame::isAloneOn(const DispatchQueue &queue) {
    for (const QueueFrame *frame = innermostFrame; frame; frame = frame->_outer) {
        if (&frame->_queue == &queue && frame->_alone)
            return true;
    }
    return false;
}

/// The turn of a task: while it stands the task counts as running.
class TaskQueue::Turn {
public:
    Turn(TaskQueue &queue, bool alone) : _queue(queue), _frame(std::in_place, queue, alone) {}
    ~Turn() {
        _frame.reset();
        _queue.finishTask();
    }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

private:
    TaskQueue &_queue;
    std::optional<QueueFrame> _frame;
};

TaskQueue::TaskQueue(std::string label, TaskQueueKind kind, dispatch_qos_class_t qualityOfService)
    : DispatchQueue(std::move(label)), _kind(kind), _qualityOfService(qualityOfService) {}

bool TaskQueue::runsAlone(bool barrier) const {
    return _kind == TaskQueueKind::serial || (barrier && _kind == TaskQueueKind::concurrent);
}

bool TaskQueue::mayStart(bool alone) const { return !_aloneRuns && (!alone || _running == 0); }

void TaskQueue::markStarted(bool alone) {
    ++_running;
    _aloneRuns = alone;
}

void TaskQueue::submit(dispatch_block_t block, bool barrier) {
    const std::lock_guard guard(_mutex);
    _tasks.push_back({std::move(block), nullptr, runsAlone(barrier)});
    startTasks();
}

void TaskQueue::submitAndWait(QVBlock<void()> block, bool barrier) {
    const bool alone = runsAlone(barrier);
    // Its turn would come only after the task that asks for it has ended.
    const bool wouldWaitForItself = QueueFrame::isAloneOn(*this);
    QVAssert(!wouldWaitForItself, u"dispatch_sync called on a queue that the calling task has to itself");
    if (wouldWaitForItself)
        return block();
    {
        std::unique_lock lock(_mutex);
        if (_tasks.empty() && mayStart(alone)) {
            markStarted(alone);
        } else {
            Waiter waiter;
            _tasks.push_back({nullptr, &waiter, alone});
            waitUntil(waiter.changed, lock, DISPATCH_TIME_FOREVER, [&] { return waiter.hasTurn; });
        }
    }
    const Turn turn(*this, alone);
    block();
}

void TaskQueue::startTasks() {
    // As long as tasks wait here one runs or is with a worker, and holds the queue: what waits needn't.
    while (!_tasks.empty() && mayStart(_tasks.front().alone)) {
        Task task = std::move(_tasks.front());
        _tasks.pop_front();
        markStarted(task.alone);
        if (task.waiter) {
            task.waiter->hasTurn = true;
            task.waiter->changed.notify_one();
            continue;
        }
        WorkerPool::shared(_qualityOfService)
            .submit([self = shared_from_this(), this, block = std::move(task.block),
                     alone = task.alone]() mutable {
                const Turn turn(*this, alone);
                runAsynchronousBlock(block);
            });
    }
}

void TaskQueue::finishTask() {
    const std::lock_guard guard(_mutex);
    --_running;
    _aloneRuns = false;
    startTasks();
}

} // namespace dispatch
} // namespace quorvane
