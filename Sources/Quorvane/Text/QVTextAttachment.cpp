#include "Quorvane/Text/QVTextAttachment.h"

#include "Quorvane/Text/QVLayoutManager.h"
#include "Quorvane/Text/QVTextAttachmentCell.h"
#include "Quorvane/Text/QVTextStorage.h"

namespace quorvane {

QVTextAttachment::QVTextAttachment() = default;
QVTextAttachment::~QVTextAttachment() = default;

std::shared_ptr<QVTextAttachment> QVTextAttachment::initWithData(NSData contentData, NSString ofType) {
    const std::shared_ptr<QVTextAttachment> attachment(new QVTextAttachment);
    attachment->initializeWithData(std::move(contentData), std::move(ofType));
    return attachment;
}

void QVTextAttachment::initializeWithData(NSData contentData, NSString ofType) {
    NSTextAttachment::initializeWithData(std::move(contentData), std::move(ofType));
    auto cell = std::make_shared<QVTextAttachmentCell>();
    cell->setAttachment(std::static_pointer_cast<const NSTextAttachment>(shared_from_this()));
    setAttachmentCell(std::move(cell));
}

CGRect QVTextAttachment::attachmentBoundsForLayoutManager(QVLayoutManager * /*layoutManager*/,
                                                          const CGRect & /*proposedLineFragment*/,
                                                          CGPoint /*glyphPosition*/,
                                                          NSUInteger /*characterIndex*/) const {
    return CGRectZero;
}

void QVTextAttachment::drawWithFrame(const CGRect & /*frame*/, NSUInteger /*characterIndex*/,
                                     QVLayoutManager * /*layoutManager*/) const {}

CGRect QVTextAttachment::attachmentBoundsForTextContainer(NSTextContainer * /*textContainer*/,
                                                          const CGRect &proposedLineFragment,
                                                          CGPoint glyphPosition,
                                                          NSUInteger characterIndex) const {
    return attachmentBoundsForLayoutManager(nullptr, proposedLineFragment, glyphPosition, characterIndex);
}

NSAttributes QVTextAttachment::textAttributes(QVLayoutManager *layoutManager, NSUInteger characterIndex) {
    const auto storage = layoutManager ? layoutManager->textStorage() : nullptr;
    if (!storage)
        return {};
    if (const auto *document = dynamic_cast<const QVTextStorage *>(storage.get()))
        return document->defaultTextAttributes();
    return static_cast<const NSAttributedString &>(*storage).attributesAtIndex(characterIndex);
}

CTFontRef QVTextAttachment::textFont(QVLayoutManager *layoutManager, NSUInteger characterIndex) {
    const NSAttributes attributes = textAttributes(layoutManager, characterIndex);
    const auto *font = attributes.objectForKey<CTFont>(NSFontAttributeName);
    return font ? std::static_pointer_cast<const CTFont>(font->shared_from_this()) : nullptr;
}

const NSCodingClass &QVTextAttachment::codingClass() {
    static const NSCodingClass codingClass{u"QVTextAttachment", &NSTextAttachment::codingClass(),
                                           +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::shared_ptr<QVTextAttachment>(new QVTextAttachment);
                                           }};
    return codingClass;
}

void QVTextAttachment::encodeWithCoder(NSCoder &coder) const {
    NSTextAttachment::encodeWithCoder(coder);
    coder.encodeObject(_cursor, u"cursor");
}

std::shared_ptr<NSSecureCoding> QVTextAttachment::initWithCoder(NSCoder &coder,
                                                                std::shared_ptr<NSSecureCoding> self) {
    self = NSTextAttachment::initWithCoder(coder, std::move(self));
    _cursor = coder.decodeObjectOfClass<NSCursor>(u"cursor");
    return self;
}

} // namespace quorvane
