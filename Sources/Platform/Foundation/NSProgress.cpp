#include "Platform/Foundation/NSProgress.h"

namespace quorvane {

std::shared_ptr<NSProgress> NSProgress::discreteProgressWithTotalUnitCount(NSInteger totalUnitCount) {
    return std::shared_ptr<NSProgress>(new NSProgress(totalUnitCount));
}

bool NSProgress::isIndeterminate() const {
    const NSInteger total = totalUnitCount();
    const NSInteger completed = completedUnitCount();
    return total < 0 || completed < 0 || (total == 0 && completed == 0);
}

double NSProgress::fractionCompleted() const {
    if (isIndeterminate())
        return 0;
    const NSInteger total = totalUnitCount();
    return total == 0 ? 1 : static_cast<double>(completedUnitCount()) / static_cast<double>(total);
}

void NSProgress::cancel() {
    CancellationHandler handler;
    {
        const std::lock_guard guard(_mutex);
        if (isCancelled())
            return;
        _cancelled.store(true, std::memory_order_release);
        handler = std::move(_cancellationHandler);
        _cancellationHandler = nullptr;
    }
    // Outside of the lock, since the handler may look at the progress.
    if (handler)
        handler();
}

void NSProgress::setCancellationHandler(CancellationHandler handler) {
    {
        const std::lock_guard guard(_mutex);
        if (!isCancelled()) {
            // Swapped, so that what the handler before held is let go outside of the lock.
            _cancellationHandler.swap(handler);
            return;
        }
    }
    if (handler)
        handler();
}

} // namespace quorvane
