#pragma once

#include "Platform/Dispatch/ReadWriteLock.h"

namespace quorvane {

/// The lock under which packages come and go. Loading and unloading take it directly, and don't mark the
/// thread: what they call must not go through `QVLoadable::performBlockWithPackageLock`. Everybody else does.
ReadWriteLock &QVPackageLock();

} // namespace quorvane
