#include "Platform/CoreText/CTLine.h"

#include "Platform/AppKit/NSColor.h"
#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>

#include <thread>

// A glyph of the monospaced font is 1233 of 2048 units wide.

using namespace quorvane;

namespace {

CTFontRef mono(CGFloat size = 2048) { return CTFontCreateWithName(u"DejaVuSansMono", size); }
CTFontRef sans(CGFloat size = 2048) { return CTFontCreateWithName(u"DejaVuSans", size); }

CTLineRef lineOf(std::u16string_view text, const CTFontRef &font) {
    return CTLineCreateWithAttributedString(
        *NSAttributedString::initWithString(text, {{NSFontAttributeName, font}}));
}

CGFloat width(const CTLineRef &line) { return CTLineGetTypographicBounds(line, nullptr, nullptr, nullptr); }
CGFloat width(std::u16string_view text, const CTFontRef &font) { return width(lineOf(text, font)); }

std::string drawn(const CTLineRef &line) {
    const test::Picture picture(120, 24, 0xffffffff);
    CGContextSetTextMatrix(picture.context(), {1, 0, 0, -1, 2, 18});
    CTLineDraw(line, picture.context());
    std::string pixels;
    for (std::size_t y = 0; y < 24; ++y)
        for (std::size_t x = 0; x < 120; ++x)
            pixels += std::to_string(picture.pixel(x, y)) + " ";
    return pixels;
}

} // namespace

TEST(CTLine, IsAsWideAsItsGlyphsAndAsHighAsItsFont) {
    const CTLineRef line = lineOf(u"if (x)", mono());
    CGFloat ascent = 0, descent = 0, leading = -1;
    EXPECT_DOUBLE_EQ(CTLineGetTypographicBounds(line, &ascent, &descent, &leading), 6 * 1233);
    EXPECT_DOUBLE_EQ(ascent, 1901);
    EXPECT_DOUBLE_EQ(descent, 483);
    EXPECT_DOUBLE_EQ(leading, 0);
    EXPECT_EQ(CTLineGetGlyphCount(line), 6u);
    EXPECT_EQ(CTLineGetStringRange(line), (NSRange{0, 6}));
    EXPECT_DOUBLE_EQ(width(u"abc ", mono(10)), 4 * 1233 * 10 / 2048.0);
}

TEST(CTLine, IsNothingWithoutText) {
    const CTLineRef line = lineOf(u"", mono());
    CGFloat ascent = -1, descent = -1, leading = -1;
    EXPECT_EQ(CTLineGetTypographicBounds(line, &ascent, &descent, &leading), 0);
    EXPECT_EQ(ascent, 0);
    EXPECT_EQ(descent, 0);
    EXPECT_EQ(leading, 0);
    EXPECT_EQ(CTLineGetGlyphCount(line), 0u);
}

TEST(CTLine, PairsOfLettersAreKerned) {
    EXPECT_LT(width(u"AV", sans()), width(u"A", sans()) + width(u"V", sans()) - 50);
    EXPECT_DOUBLE_EQ(width(u"HH", sans()), 2 * width(u"H", sans()));
}

TEST(CTLine, MarksStandOnTheirLetters) {
    EXPECT_DOUBLE_EQ(width(u"e\u0301", mono()), 1233);
    // Where no letter has this mark in one glyph.
    EXPECT_DOUBLE_EQ(width(u"x\u0301", mono()), 1233);
    EXPECT_EQ(drawn(lineOf(u"e\u0301", mono(16))), drawn(lineOf(u"\u00E9", mono(16))));
}

TEST(CTLine, APairOfSurrogatesIsOneGlyph) {
    EXPECT_EQ(CTLineGetGlyphCount(lineOf(u"a\U0001D538b", sans())), 3u);
    const char16_t lone[] = {u'a', 0xD835, u'b'};
    EXPECT_EQ(CTLineGetGlyphCount(lineOf({lone, 3}, sans())), 3u);
}

TEST(CTLine, ControlCharactersTakeNoRoom) {
    EXPECT_DOUBLE_EQ(width(u"a\tb\r\nc\u0085\u2028", mono()), 3 * 1233);
    EXPECT_EQ(CTLineGetGlyphCount(lineOf(u"a\tb", mono())), 2u);
}

TEST(CTLine, ACharacterThatIsMissingShowsSo) {
    const CTLineRef line = lineOf(u"\u3042", mono());
    EXPECT_EQ(CTLineGetGlyphCount(line), 1u);
    EXPECT_GT(width(line), 0);
}

TEST(CTLine, WithoutAFontItIsInTheMonospacedOneAtTwelvePoints) {
    EXPECT_DOUBLE_EQ(width(CTLineCreateWithAttributedString(*NSAttributedString::initWithString(u"abc"))),
                     width(u"abc", CTFontCreateMonospacedSystemFont(12)));
}

TEST(CTLine, StretchesOfSeveralFontsStandBesideOneAnother) {
    const auto string = NSMutableAttributedString::initWithString(u"abcd", {{NSFontAttributeName, mono()}});
    string->addAttribute(NSFontAttributeName, mono(4096), {1, 2});
    const CTLineRef line = CTLineCreateWithAttributedString(*string);
    CGFloat ascent = 0;
    EXPECT_DOUBLE_EQ(CTLineGetTypographicBounds(line, &ascent, nullptr, nullptr), 1233 + 2 * 2466 + 1233);
    EXPECT_DOUBLE_EQ(ascent, 2 * 1901);
}

TEST(CTLine, IsDrawnInItsColourAndElseInBlack) {
    const test::Picture picture(40, 24, 0xffffffff);
    const auto string =
        NSMutableAttributedString::initWithString(u"\u2588\u2588", {{NSFontAttributeName, mono(20)}});
    string->addAttribute(NSForegroundColorAttributeName, NSColor::colorWithSRGBRed(1, 0, 0, 1), {1, 1});
    picture.setFill(0x00ff00ff);
    CGContextSetTextMatrix(picture.context(), {1, 0, 0, -1, 4, 18});
    CTLineDraw(CTLineCreateWithAttributedString(*string), picture.context());
    // Full blocks of twelve points.
    EXPECT_EQ(picture.pixel(10, 12), 0x000000ffu);
    EXPECT_EQ(picture.pixel(22, 12), 0xff0000ffu);
    EXPECT_EQ(picture.pixel(34, 12), 0xffffffffu);
    EXPECT_EQ(picture.pixel(1, 12), 0xffffffffu);
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(picture.pixel(0, 0), 0x00ff00ffu);
}

TEST(CTLine, RightToLeftTextReadsFromTheRight) {
    // Alef and bet: in the picture bet stands at the left.
    const CTLineRef line = lineOf(u"\u05D0\u05D1", sans(16));
    EXPECT_DOUBLE_EQ(width(line), width(u"\u05D0", sans(16)) + width(u"\u05D1", sans(16)));
    const test::Picture both(40, 24, 0xffffffff), bet(40, 24, 0xffffffff);
    for (const test::Picture *picture : {&both, &bet})
        CGContextSetTextMatrix(picture->context(), {1, 0, 0, -1, 2, 18});
    CTLineDraw(line, both.context());
    CTLineDraw(lineOf(u"\u05D1", sans(16)), bet.context());
    const auto left = static_cast<std::size_t>(width(u"\u05D1", sans(16)));
    for (std::size_t y = 0; y < 24; ++y)
        for (std::size_t x = 0; x < left; ++x)
            EXPECT_EQ(both.pixel(x, y), bet.pixel(x, y)) << x << ", " << y;
}

TEST(CTLine, ALineThatFitsIsNotTruncated) {
    const CTLineRef line = lineOf(u"abcd", mono());
    EXPECT_EQ(CTLineCreateTruncatedLine(line, 4 * 1233, kCTLineTruncationEnd, lineOf(u"\u2026", mono())),
              line);
}

TEST(CTLine, ALineThatIsTooWideEndsInTheToken) {
    const CTFontRef font = mono(16);
    const CGFloat one = width(u"a", font);
    const CTLineRef token = lineOf(u"\u2026", font);
    const CTLineRef cut =
        CTLineCreateTruncatedLine(lineOf(u"abcdefgh", font), 5.5 * one, kCTLineTruncationEnd, token);
    ASSERT_TRUE(cut);
    EXPECT_EQ(drawn(cut), drawn(lineOf(u"abcd\u2026", font)));
    EXPECT_EQ(
        drawn(CTLineCreateTruncatedLine(lineOf(u"abcdefgh", font), 5.5 * one, kCTLineTruncationEnd, nullptr)),
        drawn(lineOf(u"abcde", font)));
    EXPECT_EQ(
        drawn(CTLineCreateTruncatedLine(lineOf(u"abcdefgh", font), 1.5 * one, kCTLineTruncationEnd, token)),
        drawn(token));
}

TEST(CTLine, IsCutBetweenCharactersAlone) {
    const CTFontRef font = mono(16);
    const CGFloat one = width(u"a", font);
    EXPECT_EQ(drawn(CTLineCreateTruncatedLine(lineOf(u"ax\u0301bc", font), 2.5 * one, kCTLineTruncationEnd,
                                              lineOf(u"\u2026", font))),
              drawn(lineOf(u"a\u2026", font)));
    EXPECT_EQ(drawn(CTLineCreateTruncatedLine(lineOf(u"ax\u0301bc", font), 3.5 * one, kCTLineTruncationEnd,
                                              lineOf(u"\u2026", font))),
              drawn(lineOf(u"ax\u0301\u2026", font)));
}

TEST(CTLine, ATokenThatIsTooWideLeavesNothing) {
    const CTFontRef font = mono(16);
    EXPECT_EQ(CTLineCreateTruncatedLine(lineOf(u"abc", font), 0.5 * width(u"a", font), kCTLineTruncationEnd,
                                        lineOf(u"\u2026", font)),
              nullptr);
}

TEST(CTLine, ThreadsSetLinesInOneFace) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([] {
            for (int round = 0; round < 20; ++round)
                EXPECT_DOUBLE_EQ(width(u"several", mono()), 7 * 1233);
        });
    for (auto &thread : threads)
        thread.join();
}
