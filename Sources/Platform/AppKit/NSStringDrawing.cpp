#include "Platform/AppKit/NSStringDrawing.h"

#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/CoreText/CTLine.h"

namespace quorvane {

namespace {

CTLineRef lineOf(const NSString &string, const NSAttributes &attributes) {
    return CTLineCreateWithAttributedString(*NSAttributedString::initWithString(string, attributes));
}

CGFloat held(CGFloat length, CGFloat bound) { return bound > 0 ? std::min(length, bound) : length; }

} // namespace

CGRect boundingRectWithSize(const NSString &string, CGSize size, const NSAttributes &attributes) {
    CGFloat ascent = 0, descent = 0;
    const CGFloat width = CTLineGetTypographicBounds(lineOf(string, attributes), &ascent, &descent, nullptr);
    return CGRectMake(0, -descent, held(width, size.width), held(ascent + descent, size.height));
}

void drawInRect(const NSString &string, const CGRect &rect, const NSAttributes &attributes) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current)
        return;
    CTLineRef line = lineOf(string, attributes);
    const auto *style = attributes.objectForKey<NSParagraphStyle>(NSParagraphStyleAttributeName);
    if (style && style->lineBreakMode() == NSLineBreakByTruncatingTail)
        line = CTLineCreateTruncatedLine(line, CGRectGetWidth(rect), kCTLineTruncationEnd,
                                         lineOf(u"\u2026", attributes));
    if (!line)
        return;
    CGFloat ascent = 0;
    CTLineGetTypographicBounds(line, &ascent, nullptr, nullptr);
    const bool isFlipped = current->isFlipped();
    const CGFloat baseLine = isFlipped ? CGRectGetMinY(rect) + ascent : CGRectGetMaxY(rect) - ascent;
    const CGContextRef &context = current->CGContext();
    const CGAffineTransform before = CGContextGetTextMatrix(context);
    CGContextSetTextMatrix(context, {1, 0, 0, isFlipped ? -1.0 : 1.0, CGRectGetMinX(rect), baseLine});
    CTLineDraw(line, context);
    CGContextSetTextMatrix(context, before);
}

} // namespace quorvane
