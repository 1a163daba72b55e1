#include "Platform/AppKit/NSTextAttachment.h"

namespace quorvane {

NSTextAttachment::NSTextAttachment() = default;
NSTextAttachment::~NSTextAttachment() = default;

std::shared_ptr<NSTextAttachment> NSTextAttachment::initWithData(NSData contentData, NSString ofType) {
    const std::shared_ptr<NSTextAttachment> attachment(new NSTextAttachment);
    attachment->initializeWithData(std::move(contentData), std::move(ofType));
    return attachment;
}

void NSTextAttachment::initializeWithData(NSData contentData, NSString ofType) {
    _contents = std::move(contentData);
    _fileType = std::move(ofType);
}

CGRect NSTextAttachment::attachmentBoundsForTextContainer(NSTextContainer * /*textContainer*/,
                                                          const CGRect & /*proposedLineFragment*/,
                                                          CGPoint /*glyphPosition*/,
                                                          NSUInteger /*characterIndex*/) const {
    return CGRectZero;
}

const NSCodingClass &NSTextAttachment::codingClass() {
    static const NSCodingClass codingClass{u"NSTextAttachment", nullptr,
                                           +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::shared_ptr<NSTextAttachment>(new NSTextAttachment);
                                           }};
    return codingClass;
}

void NSTextAttachment::encodeWithCoder(NSCoder &coder) const {
    coder.encodeData(_contents, u"NSAttachmentContents");
    coder.encodeString(_fileType, u"NSAttachmentFileType");
}

std::shared_ptr<NSSecureCoding> NSTextAttachment::initWithCoder(NSCoder &coder,
                                                                std::shared_ptr<NSSecureCoding> self) {
    initializeWithData(coder.decodeData(u"NSAttachmentContents"),
                       coder.decodeString(u"NSAttachmentFileType"));
    return self;
}

} // namespace quorvane
