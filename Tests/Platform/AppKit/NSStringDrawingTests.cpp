#include "Platform/AppKit/NSStringDrawing.h"

#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSParagraphStyle.h"
#include "Platform/CoreText/CTLine.h"
#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

CTFontRef mono(CGFloat size) { return CTFontCreateWithName(u"DejaVuSansMono", size); }

NSAttributes attributes(NSLineBreakMode mode = NSLineBreakByTruncatingTail) {
    auto style = NSParagraphStyle::defaultParagraphStyle()->mutableCopy();
    style->setLineBreakMode(mode);
    return {{NSFontAttributeName, mono(16)},
            {NSForegroundColorAttributeName, NSColor::colorWithSRGBRed(0, 0, 1, 1)},
            {NSParagraphStyleAttributeName, std::move(style)}};
}

/// Whether there is any ink in a column.
bool isInked(const test::Picture &picture, std::size_t x) {
    for (std::size_t y = 0; y < 30; ++y)
        if (picture.pixel(x, y) != 0)
            return true;
    return false;
}

} // namespace

TEST(NSStringDrawing, TheRoomOfATextHangsOnItsBaseLine) {
    const NSAttributes large{{NSFontAttributeName, mono(2048)}};
    EXPECT_EQ(boundingRectWithSize(u"abc", CGSizeZero, large), CGRectMake(0, -483, 3 * 1233, 1901 + 483));
    EXPECT_EQ(boundingRectWithSize(u"abc", {99999, 99999}, large), CGRectMake(0, -483, 3 * 1233, 1901 + 483));
}

TEST(NSStringDrawing, TheRoomIsNoLargerThanTheSize) {
    const NSAttributes large{{NSFontAttributeName, mono(2048)}};
    EXPECT_EQ(boundingRectWithSize(u"abc", {2000, 1000}, large), CGRectMake(0, -483, 2000, 1000));
    EXPECT_EQ(boundingRectWithSize(u"abc", {0, 1000}, large), CGRectMake(0, -483, 3 * 1233, 1000));
}

TEST(NSStringDrawing, TheFirstLineStandsAtTheTopOfTheRectangle) {
    const test::Picture picture(60, 30);
    drawInRect(u"\u2588", CGRectMake(10, 5, 50, 20), attributes());
    // A full block goes from below the base line, which is 5 + 14.85 down, to the font's height.
    EXPECT_EQ(picture.pixel(14, 12), 0x0000ffffu);
    EXPECT_EQ(picture.pixel(14, 18), 0x0000ffffu);
    EXPECT_EQ(picture.pixel(14, 2), 0u);
    EXPECT_FALSE(isInked(picture, 8));
    EXPECT_FALSE(isInked(picture, 22));
    EXPECT_EQ(CGContextGetTextMatrix(picture.context()), CGAffineTransformIdentity);
}

TEST(NSStringDrawing, ATextThatIsTooWideIsTruncatedWhereItsStyleSaysSo) {
    // Six glyphs of 9.6 points in 30 are two and the dots.
    const test::Picture cut(90, 30);
    drawInRect(u"HHHHHH", CGRectMake(0, 5, 30, 20), attributes());
    const test::Picture expected(90, 30);
    drawInRect(u"HH\u2026", CGRectMake(0, 5, 90, 20), attributes());
    for (std::size_t x = 0; x < 90; ++x)
        for (std::size_t y = 0; y < 30; ++y)
            EXPECT_EQ(cut.pixel(x, y), expected.pixel(x, y)) << x << ", " << y;
    const test::Picture whole(90, 30);
    drawInRect(u"HHHHHH", CGRectMake(0, 5, 30, 20), attributes(NSLineBreakByClipping));
    EXPECT_TRUE(isInked(whole, 54));
    EXPECT_FALSE(isInked(cut, 54));
}

TEST(NSStringDrawing, NothingIsDrawnWhereNotEvenTheDotsFit) {
    const test::Picture picture(60, 30);
    drawInRect(u"HHHHHH", CGRectMake(5, 5, 4, 20), attributes());
    for (std::size_t x = 0; x < 60; ++x)
        EXPECT_FALSE(isInked(picture, x));
}

TEST(NSStringDrawing, WithoutAContextNothingHappens) {
    drawInRect(u"abc", CGRectMake(5, 5, 4, 20), attributes());
}
