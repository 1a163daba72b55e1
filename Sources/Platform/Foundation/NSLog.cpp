#include "Platform/Foundation/NSLog.h"

#include <cstdio>
#include <mutex>

namespace quorvane {

namespace {

struct Installed {
    // Recursive, so that a sink may log itself.
    std::recursive_mutex mutex;
    NSLogSink sink;
};

Installed &installed() {
    // Never destroyed: tasks on queues may be at work while the process ends.
    static Installed &storage = *new Installed;
    return storage;
}

} // namespace

NSLogSink NSLogSetSink(NSLogSink sink) {
    const std::lock_guard guard(installed().mutex);
    return std::exchange(installed().sink, std::move(sink));
}

void NSLogString(const NSString &message) {
    const std::lock_guard guard(installed().mutex);
    if (installed().sink) {
        // A copy, so that a sink may replace itself while it runs.
        const NSLogSink sink = installed().sink;
        sink(message);
        return;
    }
    const std::string line = message.UTF8String() + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace quorvane
