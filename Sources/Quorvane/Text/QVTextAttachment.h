#pragma once

#include "Platform/AppKit/NSCursor.h"
#include "Platform/AppKit/NSTextAttachment.h"
#include "Platform/CoreText/CTFont.h"
#include "Platform/Foundation/NSAttributes.h"

namespace quorvane {

class QVLayoutManager;

/// An object in a text that a `QVLayoutManager` measures and draws in the place of a glyph, such as a token
/// or the mark of a fold. Subclasses override the two operations on layout; for other text systems they are
/// forwarded from a cell that each attachment has. Main thread.
class QV_EXPORT QVTextAttachment : public NSTextAttachment {
public:
    ~QVTextAttachment() override;

    /// Both may be null.
    static std::shared_ptr<QVTextAttachment> initWithData(NSData contentData, NSString ofType);

    /// The pointer over the attachment; null leaves it to the text around.
    const std::shared_ptr<const NSCursor> &cursor() const { return _cursor; }
    void setCursor(std::shared_ptr<const NSCursor> cursor) { _cursor = std::move(cursor); }

    /// The room that it takes, from its place on the base line, y growing upward; zero here. The proposed
    /// fragment is the room that there is. The layout manager is null in other text systems.
    virtual CGRect attachmentBoundsForLayoutManager(QVLayoutManager *layoutManager,
                                                    const CGRect &proposedLineFragment, CGPoint glyphPosition,
                                                    NSUInteger characterIndex) const;
    /// Draws into the thread's current context, where y grows downward; nothing here. In other text systems
    /// the layout manager is null, and the index, where nobody tells it, `NSNotFound`.
    virtual void drawWithFrame(const CGRect &frame, NSUInteger characterIndex,
                               QVLayoutManager *layoutManager) const;

    /// As for a layout manager that is null.
    CGRect attachmentBoundsForTextContainer(NSTextContainer *textContainer,
                                            const CGRect &proposedLineFragment, CGPoint glyphPosition,
                                            NSUInteger characterIndex) const override;

    std::u16string_view className() const override { return u"QVTextAttachment"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

protected:
    QVTextAttachment();

    /// Installs the cell.
    void initializeWithData(NSData contentData, NSString ofType) override;
    /// What the text around has for attributes: the defaults of a `QVTextStorage`, and in other storages
    /// those of a character, for which there must be one. None without a layout manager or its storage.
    static NSAttributes textAttributes(QVLayoutManager *layoutManager, NSUInteger characterIndex);
    /// The font among them; null where there is none.
    static CTFontRef textFont(QVLayoutManager *layoutManager, NSUInteger characterIndex);

private:
    std::shared_ptr<const NSCursor> _cursor;
};

} // namespace quorvane
