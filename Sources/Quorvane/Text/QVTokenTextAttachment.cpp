#include "Quorvane/Text/QVTokenTextAttachment.h"

#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/AppKit/NSStringDrawing.h"
#include "Quorvane/Styles/QVColor.h"
#include "Quorvane/Styles/QVGraphics.h"
#include "Quorvane/Text/QVLayoutManager.h"

namespace quorvane {

namespace {

constexpr double blueHue = 210.0 / 360, violetHue = 280.0 / 360;
constexpr CGFloat emptyWidth = 16;
constexpr CGFloat dotSize = 4;

QVTokenTextAttachment::Color color(double hue, double brightness) {
    return QVColor::colorWithHueSaturationBrightness(hue, 0.75, brightness, 1)->platformColor();
}

} // namespace

QVTokenTextAttachment::QVTokenTextAttachment()
    : _textColor(NSColor::whiteColor()), _selectedTextColor(NSColor::whiteColor()),
      _backgroundColor(color(blueHue, 0.9)), _selectedBackgroundColor(color(blueHue, 1)) {}
QVTokenTextAttachment::~QVTokenTextAttachment() = default;

std::shared_ptr<QVTokenTextAttachment> QVTokenTextAttachment::initWithText(NSString text) {
    const std::shared_ptr<QVTokenTextAttachment> token(new QVTokenTextAttachment);
    token->initializeWithData(nullptr, nullptr);
    token->_text = std::move(text);
    return token;
}

QVTokenTextAttachment::Color QVTokenTextAttachment::defaultTokenBackgroundColor() {
    return color(blueHue, 0.75);
}
QVTokenTextAttachment::Color QVTokenTextAttachment::defaultSelectedTokenBackgroundColor() {
    return color(blueHue, 1);
}
QVTokenTextAttachment::Color QVTokenTextAttachment::defaultSmartTokenBackgroundColor() {
    return color(violetHue, 0.75);
}
QVTokenTextAttachment::Color QVTokenTextAttachment::defaultSelectedSmartTokenBackgroundColor() {
    return color(violetHue, 1);
}

CTFontRef QVTokenTextAttachment::labelFont(QVLayoutManager *layoutManager, NSUInteger characterIndex) const {
    if (_font)
        return _font;
    if (auto font = textFont(layoutManager, characterIndex))
        return font;
    return CTFontCreateWithName(u"Menlo-Regular", 11);
}

CGRect QVTokenTextAttachment::attachmentBoundsForLayoutManager(QVLayoutManager *layoutManager,
                                                               const CGRect &proposedLineFragment,
                                                               CGPoint /*glyphPosition*/,
                                                               NSUInteger characterIndex) const {
    const CTFontRef font = labelFont(layoutManager, characterIndex);
    CGRect bounds;
    if (_text.length() != 0) {
        bounds = boundingRectWithSize(
            _text, proposedLineFragment.size,
            {{NSFontAttributeName, font},
             {NSParagraphStyleAttributeName, NSParagraphStyle::defaultParagraphStyle()}});
    } else {
        const CGFloat ascent = font ? CTFontGetAscent(font) : 0, descent = font ? CTFontGetDescent(font) : 0;
        bounds = CGRectMake(0, -descent, emptyWidth,
                            std::min(ascent + descent, CGRectGetHeight(proposedLineFragment)));
    }
    bounds.origin.y -= _textInset.bottom;
    bounds.size.width += _textInset.left + _textInset.right;
    bounds.size.height += _textInset.top + _textInset.bottom;
    return bounds;
}

void QVTokenTextAttachment::drawWithFrame(const CGRect &frame, NSUInteger characterIndex,
                                          QVLayoutManager *layoutManager) const {
    const CGContextRef context = QVGraphicsGetCurrentContext();
    if (_backgroundColor) {
        const CGFloat radius = std::min(frame.size.width / 2, frame.size.height / 2);
        CGContextSaveGState(context);
        _backgroundColor->setFill();
        CGContextBeginPath(context);
        CGContextAddPath(context, CGPathCreateWithRoundedRect(frame, radius, radius, nullptr));
        CGContextFillPath(context);
        CGContextRestoreGState(context);
    }
    if (!_textColor)
        return;
    if (_text.length() != 0) {
        const auto storage = layoutManager ? layoutManager->textStorage() : nullptr;
        const NSUInteger length = storage ? storage->length() : 0;
        const NSUInteger before = characterIndex > 0 ? characterIndex - 1 : length >= 2 ? 1 : 0;
        auto style = NSParagraphStyle::defaultParagraphStyle()->mutableCopy();
        style->setLineBreakMode(NSLineBreakByTruncatingTail);
        const NSAttributes attributes{{NSFontAttributeName, labelFont(layoutManager, before)},
                                      {NSParagraphStyleAttributeName, std::move(style)},
                                      {NSForegroundColorAttributeName, _textColor}};
        const CGFloat textHeight = CGRectGetHeight(boundingRectWithSize(_text, CGSizeZero, attributes));
        drawInRect(_text,
                   CGRectMake(frame.origin.x + _textInset.left,
                              frame.origin.y + _textInset.top + frame.size.height - textHeight,
                              frame.size.width, textHeight),
                   attributes);
        return;
    }
    const CGFloat x = std::round(CGRectGetMidX(frame) - 8), y = std::round(CGRectGetMidY(frame) - 2);
    CGContextSaveGState(context);
    _textColor->setFill();
    for (const CGFloat distance : {0.0, 6.0, 12.0})
        CGContextFillEllipseInRect(context, CGRectMake(x + distance, y, dotSize, dotSize));
    CGContextRestoreGState(context);
}

const NSCodingClass &QVTokenTextAttachment::codingClass() {
    static const NSCodingClass codingClass{
        u"QVTokenTextAttachment", &QVTextAttachment::codingClass(), +[]() -> std::shared_ptr<NSSecureCoding> {
            return std::shared_ptr<QVTokenTextAttachment>(new QVTokenTextAttachment);
        }};
    return codingClass;
}

void QVTokenTextAttachment::encodeWithCoder(NSCoder &coder) const {
    QVTextAttachment::encodeWithCoder(coder);
    coder.encodeString(_text, u"text");
    coder.encodeString(_groupingIdentifier, u"groupingIdentifier");
    coder.encodeNumber(_index, u"index");
    coder.encodeObject(_textColor, u"textColor");
    coder.encodeObject(_selectedTextColor, u"selectedTextColor");
    coder.encodeObject(_backgroundColor, u"backgroundColor");
    coder.encodeObject(_selectedBackgroundColor, u"selectedBackgroundColor");
}

std::shared_ptr<NSSecureCoding> QVTokenTextAttachment::initWithCoder(NSCoder &coder,
                                                                     std::shared_ptr<NSSecureCoding> self) {
    self = QVTextAttachment::initWithCoder(coder, std::move(self));
    _text = coder.decodeString(u"text");
    _groupingIdentifier = coder.decodeString(u"groupingIdentifier");
    _index = coder.decodeNumber(u"index");
    const auto decode = [&coder](Color &color, const char16_t *key) {
        if (auto decoded = coder.decodeObjectOfClass<NSColor>(key))
            color = std::move(decoded);
    };
    decode(_textColor, u"textColor");
    decode(_selectedTextColor, u"selectedTextColor");
    decode(_backgroundColor, u"backgroundColor");
    decode(_selectedBackgroundColor, u"selectedBackgroundColor");
    return self;
}

} // namespace quorvane
