#include "Quorvane/Text/QVTextAttachmentCell.h"

#include "Quorvane/Text/QVTextAttachment.h"

namespace quorvane {

QVTextAttachmentCell::QVTextAttachmentCell() = default;
QVTextAttachmentCell::~QVTextAttachmentCell() = default;

void QVTextAttachmentCell::drawWithFrame(const CGRect &cellFrame, NSView *inView) const {
    drawWithFrame(cellFrame, inView, NSNotFound);
}

void QVTextAttachmentCell::drawWithFrame(const CGRect &cellFrame, NSView *inView,
                                         NSUInteger characterIndex) const {
    drawWithFrame(cellFrame, inView, characterIndex, nullptr);
}

void QVTextAttachmentCell::drawWithFrame(const CGRect &cellFrame, NSView * /*inView*/,
                                         NSUInteger characterIndex, QVLayoutManager *layoutManager) const {
    if (const auto drawn = std::dynamic_pointer_cast<const QVTextAttachment>(attachment()))
        drawn->drawWithFrame(cellFrame, characterIndex, layoutManager);
}

void QVTextAttachmentCell::highlight(bool /*flag*/, const CGRect &withFrame, NSView *inView) const {
    drawWithFrame(withFrame, inView);
}

CGRect QVTextAttachmentCell::cellFrameForTextContainer(NSTextContainer *textContainer,
                                                       const CGRect &proposedLineFragment,
                                                       CGPoint glyphPosition,
                                                       NSUInteger characterIndex) const {
    const auto measured = attachment();
    return measured ? measured->attachmentBoundsForTextContainer(textContainer, proposedLineFragment,
                                                                 glyphPosition, characterIndex)
                    : CGRectZero;
}

bool QVTextAttachmentCell::wantsToTrackMouseForEvent(NSEvent * /*event*/, const CGRect & /*inRect*/,
                                                     NSView * /*ofView*/,
                                                     NSUInteger /*atCharacterIndex*/) const {
    return false;
}

bool QVTextAttachmentCell::trackMouse(NSEvent * /*event*/, const CGRect & /*inRect*/, NSView * /*ofView*/,
                                      bool /*untilMouseUp*/) {
    return false;
}

bool QVTextAttachmentCell::trackMouse(NSEvent * /*event*/, const CGRect & /*inRect*/, NSView * /*ofView*/,
                                      NSUInteger /*atCharacterIndex*/, bool /*untilMouseUp*/) {
    return false;
}

} // namespace quorvane
