#include "Platform/AppKit/NSGraphicsContext.h"

namespace quorvane {

namespace {

using Context = std::shared_ptr<const NSGraphicsContext>;

struct Drawing {
    Context current;
    std::vector<Context> saved;
};

Drawing &threadsDrawing() {
    thread_local Drawing drawing;
    return drawing;
}

} // namespace

Context NSGraphicsContext::graphicsContextWithCGContext(const CGContextRef &context, bool flipped) {
    return context ? std::make_shared<const NSGraphicsContext>(context, flipped) : nullptr;
}

Context NSGraphicsContext::currentContext() { return threadsDrawing().current; }

void NSGraphicsContext::setCurrentContext(Context context) { threadsDrawing().current = std::move(context); }

void NSGraphicsContext::saveGraphicsState() {
    auto &[current, saved] = threadsDrawing();
    if (current)
        CGContextSaveGState(current->CGContext());
    saved.push_back(current);
}

void NSGraphicsContext::restoreGraphicsState() {
    auto &[current, saved] = threadsDrawing();
    if (saved.empty())
        return;
    current = std::move(saved.back());
    saved.pop_back();
    if (current)
        CGContextRestoreGState(current->CGContext());
}

} // namespace quorvane
