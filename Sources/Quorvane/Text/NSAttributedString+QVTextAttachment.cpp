#include "Quorvane/Text/NSAttributedString+QVTextAttachment.h"

#include "Platform/Foundation/NSAssertionHandler.h"

namespace quorvane {

namespace {

NSRange wholeOf(const NSAttributedString &string) { return {0, string.length()}; }

} // namespace

std::vector<NSTextAttachmentRef> qv_textAttachments(const NSAttributedString &string) {
    return qv_textAttachmentsInRange(string, wholeOf(string));
}

std::vector<NSTextAttachmentRef> qv_textAttachmentsInRange(const NSAttributedString &string, NSRange range) {
    std::vector<NSTextAttachmentRef> attachments;
    qv_enumerateTextAttachmentsInRange(
        string, range, 0,
        [&](const NSTextAttachmentRef &attachment, NSRange, bool &) { attachments.push_back(attachment); });
    return attachments;
}

void qv_enumerateTextAttachmentsUsingBlock(const NSAttributedString &string, QVTextAttachmentBlock block) {
    qv_enumerateTextAttachmentsInRange(string, wholeOf(string), 0, block);
}

void qv_enumerateTextAttachmentsInRange(const NSAttributedString &string, NSRange range,
                                        NSAttributedStringEnumerationOptions options,
                                        QVTextAttachmentBlock usingBlock) {
    QVParameterAssert(usingBlock, "block != nil");
    if (!usingBlock)
        return;
    string.enumerateAttribute(
        NSAttachmentAttributeName, range, options,
        [&](const NSAttributeValue *value, NSRange run, bool &stop) {
            const auto *attachment = value ? value->object<NSTextAttachment>() : nullptr;
            if (attachment)
                usingBlock(std::static_pointer_cast<const NSTextAttachment>(attachment->shared_from_this()),
                           run, stop);
        });
}

NSTextAttachmentRef qv_firstTextAttachmentInRange(const NSAttributedString &string, NSRange range,
                                                  NSRange *effectiveRange) {
    return qv_firstTextAttachmentInRange(string, range, 0, effectiveRange);
}

NSTextAttachmentRef qv_firstTextAttachmentInRange(const NSAttributedString &string, NSRange range,
                                                  NSAttributedStringEnumerationOptions options,
                                                  NSRange *effectiveRange) {
    NSTextAttachmentRef first;
    NSRange where = NSNotFoundRange;
    qv_enumerateTextAttachmentsInRange(
        string, range, options | NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
        [&](const NSTextAttachmentRef &attachment, NSRange run, bool &stop) {
            first = attachment;
            where = run;
            stop = true;
        });
    if (effectiveRange != nullptr)
        *effectiveRange = where;
    return first;
}

NSRange qv_rangeOfTextAttachment(const NSAttributedString &string, const NSTextAttachment *attachment) {
    return qv_rangeOfTextAttachment(string, attachment, wholeOf(string));
}

NSRange qv_rangeOfTextAttachment(const NSAttributedString &string, const NSTextAttachment *attachment,
                                 NSRange inRange) {
    NSRange where = NSNotFoundRange;
    qv_enumerateTextAttachmentsInRange(string, inRange, 0,
                                       [&](const NSTextAttachmentRef &candidate, NSRange run, bool &stop) {
                                           if (candidate->isEqual(attachment)) {
                                               where = run;
                                               stop = true;
                                           }
                                       });
    return where;
}

} // namespace quorvane
