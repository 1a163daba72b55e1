#pragma once

#include <mutex>
#include <shared_mutex>

namespace quorvane {

/// Many readers or one writer.
using ReadWriteLock = std::shared_mutex;
using ReadGuard = std::shared_lock<std::shared_mutex>;
using WriteGuard = std::unique_lock<std::shared_mutex>;

} // namespace quorvane
