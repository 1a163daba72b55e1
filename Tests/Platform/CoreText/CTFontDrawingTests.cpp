#include "Platform/CoreText/CTFontDrawing.h"

#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quorvane;

namespace {

CTFontRef sans(CGFloat size) { return CTFontCreateWithName(u"DejaVuSans", size); }

CGGlyph glyphOf(const CTFontRef &font, char16_t character) {
    CGGlyph glyph = 0;
    CTFontGetGlyphsForCharacters(font, {&character, 1}, {&glyph, 1});
    return glyph;
}

/// In a picture, where y grows downward.
constexpr CGAffineTransform upright(CGFloat x, CGFloat y) { return {1, 0, 0, -1, x, y}; }

} // namespace

TEST(CTFontDrawing, AnOutlineStandsOnTheBaseLineInPoints) {
    const CTFontRef font = sans(20);
    // An upper case I is one upright bar: as high as the capitals, 1493 of 2048 units in this font.
    const CGRect bounds =
        CGPathGetPathBoundingBox(CTFontCreatePathForGlyph(font, glyphOf(font, u'I'), nullptr));
    EXPECT_NEAR(CGRectGetMinY(bounds), 0, 1e-9);
    EXPECT_NEAR(CGRectGetMaxY(bounds), 1493 * 20 / 2048.0, 1e-9);
    EXPECT_GT(CGRectGetMinX(bounds), 0);
    const auto moved = CGAffineTransformMakeTranslation(3, 100);
    EXPECT_NEAR(
        CGRectGetMinY(CGPathGetPathBoundingBox(CTFontCreatePathForGlyph(font, glyphOf(font, u'I'), &moved))),
        100, 1e-9);
}

TEST(CTFontDrawing, AGlyphWithoutInkIsAnEmptyPath) {
    const CTFontRef font = sans(20);
    const CGPathRef space = CTFontCreatePathForGlyph(font, glyphOf(font, u' '), nullptr);
    ASSERT_TRUE(space);
    EXPECT_TRUE(CGPathIsEmpty(space));
    EXPECT_EQ(CTFontCreatePathForGlyph(font, 0xFFFF, nullptr), nullptr);
}

TEST(CTFontDrawing, GlyphsAreFilledWhereTheyStand) {
    const test::Picture picture(60, 40, 0xffffffff);
    const CTFontRef font = sans(40);
    const CGGlyph glyph = glyphOf(font, u'I');
    const CGRect bar = CGPathGetPathBoundingBox(CTFontCreatePathForGlyph(font, glyph, nullptr));
    picture.setFill(0x0000ffff);
    CGContextSetTextMatrix(picture.context(), upright(2, 35));
    const CGGlyph glyphs[] = {glyph, 0xFFFF, glyph};
    const CGPoint positions[] = {{0, 0}, {10, 0}, {30, 5}};
    CTFontDrawGlyphs(font, glyphs, positions, picture.context());
    const auto middle = static_cast<std::size_t>(2 + CGRectGetMidX(bar));
    EXPECT_TRUE(picture.looks(middle, 33, 0x0000ffff));
    EXPECT_TRUE(picture.looks(middle, 35, 0xffffffff));
    EXPECT_TRUE(picture.looks(middle, 8, 0x0000ffff));
    EXPECT_TRUE(picture.looks(middle, 4, 0xffffffff));
    // The third is five points higher.
    EXPECT_TRUE(picture.looks(middle + 30, 28, 0x0000ffff));
    EXPECT_TRUE(picture.looks(middle + 30, 31, 0xffffffff));
    EXPECT_TRUE(picture.looks(middle + 15, 28, 0xffffffff));
}

TEST(CTFontDrawing, TheCallersPathStays) {
    const test::Picture picture(20, 20);
    picture.setFill(0xff0000ff);
    CGContextAddRect(picture.context(), CGRectMake(0, 0, 2, 2));
    CGContextSetTextMatrix(picture.context(), upright(30, 30));
    const CTFontRef font = sans(10);
    const CGGlyph glyph = glyphOf(font, u'I');
    const CGPoint origin{};
    CTFontDrawGlyphs(font, {&glyph, 1}, {&origin, 1}, picture.context());
    EXPECT_EQ(picture.pixel(1, 1), 0u);
    CGContextFillPath(picture.context());
    EXPECT_EQ(picture.pixel(1, 1), 0xff0000ffu);
}

TEST(CTFontDrawing, NowhereAndNothingIsDrawnWithoutHarm) {
    const CTFontRef font = sans(10);
    const CGGlyph glyph = glyphOf(font, u'I');
    const CGPoint nowhere{std::nan(""), 0};
    CTFontDrawGlyphs(font, {&glyph, 1}, {&nowhere, 1}, nullptr);
    const test::Picture picture(4, 4);
    CTFontDrawGlyphs(font, {&glyph, 1}, {&nowhere, 1}, picture.context());
    CTFontDrawGlyphs(font, {&glyph, 1}, {}, picture.context());
    EXPECT_EQ(picture.drawing({}), "....\n....\n....\n....\n");
}

TEST(CTFontDrawing, ThreadsReadOutlinesOfOneFace) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([] {
            const CTFontRef font = sans(20);
            for (char16_t character = u'A'; character <= u'Z'; ++character)
                EXPECT_TRUE(CTFontCreatePathForGlyph(font, glyphOf(font, character), nullptr));
        });
    for (auto &thread : threads)
        thread.join();
}
