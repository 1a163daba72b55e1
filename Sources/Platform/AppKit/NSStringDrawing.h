#pragma once

#include "Platform/AppKit/NSGraphicsContext.h"
#include "Platform/Foundation/NSAttributes.h"

namespace quorvane {

// A short text on one line, for labels; documents are laid out by their layout. Any thread.

/// The room that the text takes, from its start on the base line, y growing upward: at most as large as the
/// size, of which a side that is not positive sets no bound.
QV_EXPORT CGRect boundingRectWithSize(const NSString &string, CGSize size, const NSAttributes &attributes);
/// Draws the text at the upper left corner of the rectangle, into the thread's current context. With a
/// paragraph style that truncates the tail it ends in "…" where it would be wider than the rectangle, and
/// where that is too narrow even for this nothing is drawn; with any other it is drawn as it is.
QV_EXPORT void drawInRect(const NSString &string, const CGRect &rect, const NSAttributes &attributes);

} // namespace quorvane
