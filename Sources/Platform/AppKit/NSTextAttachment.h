#pragma once

#include "Platform/AppKit/NSCell.h"
#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

// What a host's own text system fills with text; nothing here looks into it.
class NSTextContainer;

/// The character whose attachment stands in its place.
inline constexpr char16_t NSAttachmentCharacter = u'\uFFFC';

/// An object in a text, in the place of an `NSAttachmentCharacter` that has it as its
/// `NSAttachmentAttributeName`: either a file's contents, or something that a subclass measures and draws.
/// Set up by one thread; once it is an attribute only its owner changes it.
///
/// Subclasses are made in two steps: whoever constructs one calls `initializeWithData` on it once it is held
/// by a shared pointer.
class QV_EXPORT NSTextAttachment : public NSObject, public NSSecureCoding {
public:
    ~NSTextAttachment() override;

    /// Both may be null.
    static std::shared_ptr<NSTextAttachment> initWithData(NSData contentData, NSString ofType);

    const NSData &contents() const { return _contents; }
    const NSString &fileType() const { return _fileType; }

    /// What draws the attachment in a text system that knows nothing else of it; may be null.
    const std::shared_ptr<NSCell> &attachmentCell() const { return _attachmentCell; }
    void setAttachmentCell(std::shared_ptr<NSCell> attachmentCell) {
        _attachmentCell = std::move(attachmentCell);
    }

    /// The room that it takes, from its place on the base line, y growing upward. Zero here.
    virtual CGRect attachmentBoundsForTextContainer(NSTextContainer *textContainer,
                                                    const CGRect &proposedLineFragment, CGPoint glyphPosition,
                                                    NSUInteger characterIndex) const;

    std::u16string_view className() const override { return u"NSTextAttachment"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// The contents with their type; not the cell.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

protected:
    NSTextAttachment();

    /// The second step of making one. Overrides call this one first.
    virtual void initializeWithData(NSData contentData, NSString ofType);

private:
    NSData _contents;
    NSString _fileType;
    std::shared_ptr<NSCell> _attachmentCell;
};

} // namespace quorvane
