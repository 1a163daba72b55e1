#pragma once

#include "Platform/AppKit/NSTextAttachment.h"
#include "Platform/Foundation/NSAttributedString.h"

namespace quorvane {

// The attachments of a text: the values of `NSAttachmentAttributeName` that are some. Others under this name
// are passed over. A range that leaves the string throws `NSRangeException`.

using NSTextAttachmentRef = std::shared_ptr<const NSTextAttachment>;
/// One attachment that stands on neighbouring characters is told once, with the range of all of them.
using QVTextAttachmentBlock = QVBlock<void(const NSTextAttachmentRef &attachment, NSRange range, bool &stop)>;

/// In the order of the text.
QV_EXPORT std::vector<NSTextAttachmentRef> qv_textAttachments(const NSAttributedString &string);
QV_EXPORT std::vector<NSTextAttachmentRef> qv_textAttachmentsInRange(const NSAttributedString &string,
                                                                     NSRange range);

/// It is asserted that the block is not null.
QV_EXPORT void qv_enumerateTextAttachmentsUsingBlock(const NSAttributedString &string,
                                                     QVTextAttachmentBlock block);
QV_EXPORT void qv_enumerateTextAttachmentsInRange(const NSAttributedString &string, NSRange range,
                                                  NSAttributedStringEnumerationOptions options,
                                                  QVTextAttachmentBlock usingBlock);

/// The first in the order of the options, with its range; null and `{NSNotFound, 0}` where there is none. The
/// pointer may be null.
QV_EXPORT NSTextAttachmentRef qv_firstTextAttachmentInRange(const NSAttributedString &string, NSRange range,
                                                            NSRange *effectiveRange);
QV_EXPORT NSTextAttachmentRef qv_firstTextAttachmentInRange(const NSAttributedString &string, NSRange range,
                                                            NSAttributedStringEnumerationOptions options,
                                                            NSRange *effectiveRange);

/// Where an attachment stands that equals this one; `{NSNotFound, 0}` where none does, and for null.
QV_EXPORT NSRange qv_rangeOfTextAttachment(const NSAttributedString &string,
                                           const NSTextAttachment *attachment);
QV_EXPORT NSRange qv_rangeOfTextAttachment(const NSAttributedString &string,
                                           const NSTextAttachment *attachment, NSRange inRange);

} // namespace quorvane
