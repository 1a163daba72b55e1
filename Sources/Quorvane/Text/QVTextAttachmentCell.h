#pragma once

#include "Platform/AppKit/NSTextAttachment.h"

namespace quorvane {

class QVLayoutManager;

/// What stands for a `QVTextAttachment` in text systems that ask a cell: it forwards to the attachment, and
/// has neither a size nor interest in the mouse of its own. Main thread.
class QV_EXPORT QVTextAttachmentCell final : public NSCell {
public:
    QVTextAttachmentCell();
    ~QVTextAttachmentCell() override;

    /// Not owned; null when it is gone.
    std::shared_ptr<const NSTextAttachment> attachment() const { return _attachment.lock(); }
    void setAttachment(const std::shared_ptr<const NSTextAttachment> &attachment) {
        _attachment = attachment;
    }

    // Drawing forwards to the attachment with what is known; an index that is not is `NSNotFound`. Without a
    // `QVTextAttachment` nothing is drawn.

    void drawWithFrame(const CGRect &cellFrame, NSView *inView) const override;
    void drawWithFrame(const CGRect &cellFrame, NSView *inView, NSUInteger characterIndex) const;
    void drawWithFrame(const CGRect &cellFrame, NSView *inView, NSUInteger characterIndex,
                       QVLayoutManager *layoutManager) const;
    /// Draws it as it always is.
    void highlight(bool flag, const CGRect &withFrame, NSView *inView) const override;

    /// The attachment's bounds; zero without one.
    CGRect cellFrameForTextContainer(NSTextContainer *textContainer, const CGRect &proposedLineFragment,
                                     CGPoint glyphPosition, NSUInteger characterIndex) const;
    /// Zero: layout asks the attachment.
    CGSize cellSize() const override { return CGSizeZero; }
    CGPoint cellBaselineOffset() const { return CGPointZero; }

    // It never tracks the mouse.

    bool wantsToTrackMouse() const { return false; }
    bool wantsToTrackMouseForEvent(NSEvent *event, const CGRect &inRect, NSView *ofView,
                                   NSUInteger atCharacterIndex) const;
    bool trackMouse(NSEvent *event, const CGRect &inRect, NSView *ofView, bool untilMouseUp) override;
    bool trackMouse(NSEvent *event, const CGRect &inRect, NSView *ofView, NSUInteger atCharacterIndex,
                    bool untilMouseUp);

    std::u16string_view className() const override { return u"QVTextAttachmentCell"; }

private:
    std::weak_ptr<const NSTextAttachment> _attachment;
};

} // namespace quorvane
