#pragma once

#include "Platform/CoreGraphics/CGGeometry.h"
#include "Platform/Foundation/NSObject.h"

namespace quorvane {

// A host's own views and events, which nothing here looks into.
class NSView;
class NSEvent;

/// A small thing that draws itself into a frame of somebody's view and may follow the mouse there. This one
/// draws nothing and follows nothing. Main thread.
class QV_EXPORT NSCell : public NSObject {
public:
    /// Into the thread's current context; the view may be null.
    virtual void drawWithFrame(const CGRect &cellFrame, NSView *inView) const;
    virtual void highlight(bool flag, const CGRect &withFrame, NSView *inView) const;
    /// The size that it would like to have.
    virtual CGSize cellSize() const { return CGSizeZero; }
    /// Whether the mouse went up inside.
    virtual bool trackMouse(NSEvent *event, const CGRect &inRect, NSView *ofView, bool untilMouseUp);

    std::u16string_view className() const override { return u"NSCell"; }

protected:
    NSCell();
    ~NSCell() override;
};

} // namespace quorvane
