#pragma once

#include "Platform/Foundation/QVBlock.h"
#include "Platform/Foundation/QVExport.h"

#include <chrono>
#include <functional>

/// The main thread, and how a host's event loop serves the main queue.
namespace quorvane::MainQueue {

/// Makes the calling thread the main thread; without it that is the process's first thread.
QV_EXPORT void adoptMainThread();
QV_EXPORT bool isMainThread();

/// Called on any thread when a task was added, once until the host drains, so that the host's event loop
/// wakes up and calls `drain`; called at once where tasks wait already. It must not block. An empty handler
/// takes it back, and none runs any more when this returns.
QV_EXPORT void setWakeUpHandler(std::function<void()> handler);

/// Runs the tasks that wait now; those that they add wait for the next call. Answers how many ran. A
/// task may drain the queue itself: what waits behind it then runs inside it. Main thread only.
QV_EXPORT std::size_t drain();

/// Runs tasks until the condition holds or the deadline has passed, and answers the condition. It sleeps
/// while there is nothing to do, and looks every few milliseconds whether another thread made the condition
/// true. Main thread only.
QV_EXPORT bool runUntil(QVBlock<bool()> condition, std::chrono::steady_clock::time_point deadline);

} // namespace quorvane::MainQueue
