#pragma once

#include "Platform/Foundation/QVBlock.h"
#include "Platform/Foundation/QVExport.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// Queues of tasks, in the discipline that the engine leans on: tasks get their turn in the order they were
/// submitted; a barrier waits for all tasks before it and holds back all behind it; `dispatch_sync` runs its
/// block on the caller's thread; a worker that waits in an operation of this header is made up for by
/// another, so that nothing deadlocks when all of them wait. An exception that leaves a block of an
/// asynchronous task is logged and ends the process; one that leaves a synchronous block reaches the caller.
/// Tasks keep their queue alive. The process may end at any moment: tasks that run then are neither waited
/// for nor stopped, so what they reach must not be destroyed with the process's static objects. Any thread
/// may call what stands here.
namespace quorvane {

class DispatchQueue;
class DispatchSource;
class DispatchSemaphore;
class DispatchGroup;
using dispatch_queue_t = std::shared_ptr<DispatchQueue>;
using dispatch_source_t = std::shared_ptr<DispatchSource>;
using dispatch_semaphore_t = std::shared_ptr<DispatchSemaphore>;
using dispatch_group_t = std::shared_ptr<DispatchGroup>;
using dispatch_block_t = std::function<void()>;
/// A point in time that clock changes don't move.
using dispatch_time_t = std::chrono::steady_clock::time_point;

inline constexpr dispatch_time_t DISPATCH_TIME_FOREVER = dispatch_time_t::max();

enum dispatch_queue_attr_t : std::uint8_t { DISPATCH_QUEUE_SERIAL, DISPATCH_QUEUE_CONCURRENT };
enum dispatch_qos_class_t : std::uint8_t {
    QOS_CLASS_BACKGROUND,
    QOS_CLASS_UTILITY,
    QOS_CLASS_DEFAULT,
    QOS_CLASS_USER_INITIATED
};

/// A queue of its own. The label shows in logs.
QV_EXPORT dispatch_queue_t dispatch_queue_create(std::string label, dispatch_queue_attr_t attributes);
/// One shared concurrent queue for each quality of service; barriers have no meaning on it.
QV_EXPORT dispatch_queue_t dispatch_get_global_queue(dispatch_qos_class_t qualityOfService);
/// The queue whose tasks run on the main thread, one at a time, while the host drains it.
QV_EXPORT dispatch_queue_t dispatch_get_main_queue();

QV_EXPORT void dispatch_async(const dispatch_queue_t &queue, dispatch_block_t block);
/// Waits for its turn, then runs the block on the calling thread. On the main queue, from the main thread, it
/// runs the block at once; from other threads the block runs on the main thread when it drains. Asserts, and
/// runs the block at once, where the caller's own task has the queue to itself and would wait for ever.
QV_EXPORT void dispatch_sync(const dispatch_queue_t &queue, QVBlock<void()> block);
QV_EXPORT void dispatch_barrier_async(const dispatch_queue_t &queue, dispatch_block_t block);
QV_EXPORT void dispatch_barrier_sync(const dispatch_queue_t &queue, QVBlock<void()> block);
/// Submits the block when the time has come.
QV_EXPORT void dispatch_after(dispatch_time_t when, const dispatch_queue_t &queue, dispatch_block_t block);
/// A point `seconds` from now.
QV_EXPORT dispatch_time_t dispatch_time_after(double seconds);

/// Marks a queue with a key; `dispatch_get_specific` answers the value while the calling thread runs a task
/// of it, on a worker or through `dispatch_sync`, and null otherwise. Where tasks of several marked queues
/// stand inside one another, the innermost counts.
QV_EXPORT void dispatch_queue_set_specific(const dispatch_queue_t &queue, const void *key, void *value);
QV_EXPORT void *dispatch_get_specific(const void *key);

QV_EXPORT dispatch_semaphore_t dispatch_semaphore_create(std::int64_t value);
QV_EXPORT void dispatch_semaphore_signal(const dispatch_semaphore_t &semaphore);
/// Whether the semaphore was signalled in time.
QV_EXPORT bool dispatch_semaphore_wait(const dispatch_semaphore_t &semaphore, dispatch_time_t until);

QV_EXPORT dispatch_group_t dispatch_group_create();
QV_EXPORT void dispatch_group_enter(const dispatch_group_t &group);
QV_EXPORT void dispatch_group_leave(const dispatch_group_t &group);
QV_EXPORT void dispatch_group_async(const dispatch_group_t &group, const dispatch_queue_t &queue,
                                    dispatch_block_t block);
/// Submits the block once the group is empty.
QV_EXPORT void dispatch_group_notify(const dispatch_group_t &group, const dispatch_queue_t &queue,
                                     dispatch_block_t block);
/// Whether the group was empty in time.
QV_EXPORT bool dispatch_group_wait(const dispatch_group_t &group, dispatch_time_t until);

/// A timer that submits its handler to the queue once, at `when` or up to `leeway` later; until then it can
/// be set anew. It does nothing before `dispatch_resume`, and nothing after `dispatch_source_cancel`: a
/// handler that has not started by then never runs. Letting go of the last handle before its time cancels it.
QV_EXPORT dispatch_source_t dispatch_timer_create(const dispatch_queue_t &queue);
QV_EXPORT void dispatch_source_set_timer(const dispatch_source_t &source, dispatch_time_t when,
                                         std::chrono::nanoseconds leeway);
QV_EXPORT void dispatch_source_set_event_handler(const dispatch_source_t &source, dispatch_block_t handler);
QV_EXPORT void dispatch_resume(const dispatch_source_t &source);
QV_EXPORT void dispatch_source_cancel(const dispatch_source_t &source);

} // namespace quorvane
