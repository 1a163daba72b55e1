#pragma once

#include "Platform/Dispatch/Dispatch.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

/// What stands behind a queue's handle: the discipline of one queue. Private to the folder.
namespace quorvane {

/// The root of the queues: the label, the marks, and the two ways to submit.
class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
public:
    virtual ~DispatchQueue();
    DispatchQueue(const DispatchQueue &) = delete;
    DispatchQueue &operator=(const DispatchQueue &) = delete;

    virtual void submit(dispatch_block_t block, bool barrier) = 0;
    virtual void submitAndWait(QVBlock<void()> block, bool barrier) = 0;

    void setSpecific(const void *key, void *value);
    void *specific(const void *key) const;

protected:
    explicit DispatchQueue(std::string label) : _label(std::move(label)) {}

    /// Runs a block of a task that nobody waits for: an exception ends the process, for there is nobody who
    /// could catch it.
    void runAsynchronousBlock(dispatch_block_t &block) const noexcept;

private:
    /// Marks are only ever added or changed in place, so that asking for one takes no lock.
    struct Specific {
        const void *key;
        std::atomic<void *> value;
        Specific *next;
    };

    const std::string _label;
    std::atomic<Specific *> _specifics = nullptr;
    std::mutex _specificsMutex;
};

namespace dispatch {

/// Stands while the calling thread runs a task of a queue.
class QueueFrame {
public:
    QueueFrame(const DispatchQueue &queue, bool alone);
    ~QueueFrame();
    QueueFrame(const QueueFrame &) = delete;
    QueueFrame &operator=(const QueueFrame &) = delete;

    /// The value of the innermost queue that is marked with the key; null if there is none.
    static void *specific(const void *key);
    /// Whether the calling thread runs a task that has the queue to itself.
    static bool isAloneOn(const DispatchQueue &queue);

private:
    const DispatchQueue &_queue;
    const bool _alone;
    const QueueFrame *const _outer;
};

enum class TaskQueueKind : std::uint8_t { serial, concurrent, global };

/// A serial, concurrent or global queue: a list of tasks, of which the first ones are given to workers, or to
/// the threads that wait for their turn, as soon as the rules of barriers allow.
class TaskQueue final : public DispatchQueue {
public:
    TaskQueue(std::string label, TaskQueueKind kind, dispatch_qos_class_t qualityOfService);

    void submit(dispatch_block_t block, bool barrier) override;
    void submitAndWait(QVBlock<void()> block, bool barrier) override;

private:
    /// A thread that waits for its turn.
    struct Waiter {
        std::condition_variable changed;
        bool hasTurn = false;
    };
    struct Task {
        dispatch_block_t block;
        /// Set instead of the block for a task that its submitter runs.
        Waiter *waiter;
        bool alone;
    };
    class Turn;

    bool runsAlone(bool barrier) const;
    bool mayStart(bool alone) const;
    void markStarted(bool alone);
    void startTasks();
    void finishTask();

    const TaskQueueKind _kind;
    const dispatch_qos_class_t _qualityOfService;

    std::mutex _mutex;
    std::deque<Task> _tasks;
    std::size_t _running = 0;
    bool _aloneRuns = false;
};

} // namespace dispatch
} // namespace quorvane
