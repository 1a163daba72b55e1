#pragma once

#include "Platform/Foundation/NSRange.h"
#include "Platform/Foundation/QVExport.h"

namespace quorvane {

extern "C" {

/// Folds a new edit into the range and the change in length that earlier edits left pending, so that one
/// range covers all that changed since the text was last processed. The pending range is required and has a
/// location of `NSNotFound` where nothing is pending; the pending change may be null. `editedRange` is where
/// the edit's new text stands, `changeInLength` how much longer the text became by it (negative where it
/// became shorter). A result that wraps around the unsigned positions is asserted, and stored where the
/// handler returns. Without state of its own; any thread.
QV_EXPORT void QVRangeCoalesceWithEdit(NSRange *pendingRange, NSInteger *pendingChangeInLength,
                                       NSRange editedRange, NSInteger changeInLength);
}

} // namespace quorvane
