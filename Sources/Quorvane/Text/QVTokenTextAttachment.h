#pragma once

#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSEdgeInsets.h"
#include "Quorvane/Text/QVTextAttachment.h"

namespace quorvane {

/// A rounded token with a label in the text: a placeholder of a completion, say. One without a label shows
/// three dots. Main thread.
class QV_EXPORT QVTokenTextAttachment final : public QVTextAttachment {
public:
    using Color = std::shared_ptr<const NSColor>;

    ~QVTokenTextAttachment() override;

    /// White on blue; null or empty for a token without a label.
    static std::shared_ptr<QVTokenTextAttachment> initWithText(NSString text);

    // Colours that hosts give their tokens; "smart" are those that follow others.

    static Color defaultTokenBackgroundColor();
    static Color defaultSelectedTokenBackgroundColor();
    static Color defaultSmartTokenBackgroundColor();
    static Color defaultSelectedSmartTokenBackgroundColor();

    const NSString &text() const { return _text; }
    void setText(NSString text) { _text = std::move(text); }
    /// Which tokens belong together, and the place among them; a host's own, null at first.
    const NSString &groupingIdentifier() const { return _groupingIdentifier; }
    void setGroupingIdentifier(NSString identifier) { _groupingIdentifier = std::move(identifier); }
    const std::optional<NSInteger> &index() const { return _index; }
    void setIndex(std::optional<NSInteger> index) { _index = index; }
    /// The label's; null takes that of the text around.
    const CTFontRef &font() const { return _font; }
    void setFont(CTFontRef font) { _font = std::move(font); }

    // With null nothing is drawn in that colour. Those of a selected token are for hosts that draw their
    // selection themselves.

    const Color &textColor() const { return _textColor; }
    void setTextColor(Color color) { _textColor = std::move(color); }
    const Color &selectedTextColor() const { return _selectedTextColor; }
    void setSelectedTextColor(Color color) { _selectedTextColor = std::move(color); }
    const Color &backgroundColor() const { return _backgroundColor; }
    void setBackgroundColor(Color color) { _backgroundColor = std::move(color); }
    const Color &selectedBackgroundColor() const { return _selectedBackgroundColor; }
    void setSelectedBackgroundColor(Color color) { _selectedBackgroundColor = std::move(color); }

    /// Around the label; four points at its left and right at first.
    NSEdgeInsets textInset() const { return _textInset; }
    void setTextInset(NSEdgeInsets textInset) { _textInset = textInset; }

    /// The label in the token's font, or that of the text, or "Menlo-Regular" at 11 points, on one line that
    /// is no larger than the fragment; without a label 16 points and the font's height. The inset comes to
    /// that.
    CGRect attachmentBoundsForLayoutManager(QVLayoutManager *layoutManager,
                                            const CGRect &proposedLineFragment, CGPoint glyphPosition,
                                            NSUInteger characterIndex) const override;
    /// In a storage that is no `QVTextStorage` the font is that of the character before the token, which is
    /// what its user typed it into.
    void drawWithFrame(const CGRect &frame, NSUInteger characterIndex,
                       QVLayoutManager *layoutManager) const override;

    std::u16string_view className() const override { return u"QVTokenTextAttachment"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// Neither the font nor the inset, which are the host's to set.
    void encodeWithCoder(NSCoder &coder) const override;
    /// Colours that are missing are those of a new token.
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    QVTokenTextAttachment();
    /// The token's font, or else that of the text at an index.
    CTFontRef labelFont(QVLayoutManager *layoutManager, NSUInteger characterIndex) const;

    NSString _text;
    NSString _groupingIdentifier;
    std::optional<NSInteger> _index;
    CTFontRef _font;
    Color _textColor;
    Color _selectedTextColor;
    Color _backgroundColor;
    Color _selectedBackgroundColor;
    NSEdgeInsets _textInset{0, 4, 0, 4};
};

} // namespace quorvane
