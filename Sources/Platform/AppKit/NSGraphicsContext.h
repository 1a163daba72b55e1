#pragma once

#include "Platform/CoreGraphics/CGContext.h"

namespace quorvane {

/// What a thread draws into. A host makes one for its bitmap or window and sets it while the engine draws;
/// colours, paths and gradients draw into the current one of their thread.
class QV_EXPORT NSGraphicsContext final : public NSObject {
public:
    /// Null for null.
    static std::shared_ptr<const NSGraphicsContext> graphicsContextWithCGContext(const CGContextRef &context,
                                                                                 bool flipped);

    /// Null where the thread has none.
    static std::shared_ptr<const NSGraphicsContext> currentContext();
    static void setCurrentContext(std::shared_ptr<const NSGraphicsContext> context);

    /// Saves the current context's state, and which one is current.
    static void saveGraphicsState();
    /// Undoes the thread's last saving; nothing without one.
    static void restoreGraphicsState();

    NSGraphicsContext(CGContextRef context, bool flipped) : _context(std::move(context)), _flipped(flipped) {}

    const CGContextRef &CGContext() const { return _context; }
    /// Whether y grows downward, as it does in our bitmaps.
    bool isFlipped() const { return _flipped; }

    std::u16string_view className() const override { return u"NSGraphicsContext"; }

private:
    CGContextRef _context;
    bool _flipped;
};

} // namespace quorvane
