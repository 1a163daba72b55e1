#pragma once

#include "Platform/Foundation/NSObject.h"

#include <atomic>
#include <functional>
#include <mutex>

namespace quorvane {

/// How far a piece of work has come, and the way to call it off. Who does the work holds one end and polls
/// `isCancelled`; whoever was handed the other end cancels. Any thread.
class QV_EXPORT NSProgress final : public NSObject {
public:
    using CancellationHandler = std::function<void()>;

    /// Progress of its own, without a parent. A negative count makes it indeterminate: nobody knows how much
    /// there is to do.
    static std::shared_ptr<NSProgress> discreteProgressWithTotalUnitCount(NSInteger totalUnitCount);

    NSInteger totalUnitCount() const { return _totalUnitCount.load(std::memory_order_relaxed); }
    void setTotalUnitCount(NSInteger count) { _totalUnitCount.store(count, std::memory_order_relaxed); }
    NSInteger completedUnitCount() const { return _completedUnitCount.load(std::memory_order_relaxed); }
    void setCompletedUnitCount(NSInteger count) {
        _completedUnitCount.store(count, std::memory_order_relaxed);
    }
    /// Whether one of the counts is negative, or both are 0.
    bool isIndeterminate() const;
    /// 0 while indeterminate, and where there is nothing to do but something was done 1.
    double fractionCompleted() const;

    bool isCancelled() const { return _cancelled.load(std::memory_order_acquire); }
    /// The first call runs the handler, on the calling thread; all others do nothing.
    void cancel();
    /// Called once, at the first `cancel`; at once, if that was before. Then it is let go.
    void setCancellationHandler(CancellationHandler handler);

    std::u16string_view className() const override { return u"NSProgress"; }

private:
    explicit NSProgress(NSInteger totalUnitCount) : _totalUnitCount(totalUnitCount) {}

    std::atomic<NSInteger> _totalUnitCount;
    std::atomic<NSInteger> _completedUnitCount = 0;
    std::atomic<bool> _cancelled = false;
    std::mutex _mutex;
    CancellationHandler _cancellationHandler;
};

} // namespace quorvane
