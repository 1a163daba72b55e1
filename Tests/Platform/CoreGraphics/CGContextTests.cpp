#include "Platform/CoreGraphics/CGContext.h"

#include "Platform/Foundation/QVLimits.h"
#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>
#include <limits>
#include <numbers>

using namespace quorvane;
using test::Picture;

namespace {

constexpr std::uint32_t red = 0xff0000ff, blue = 0x0000ffff, black = 0x000000ff;
const std::map<std::uint32_t, char> letters{{red, 'r'}, {blue, 'b'}, {black, 'k'}};

} // namespace

TEST(CGContext, ABitmapIsClearAndFillsBlack) {
    const Picture picture(4, 3);
    EXPECT_EQ(picture.drawing(letters), "....\n....\n....\n");
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 2, 1));
    EXPECT_EQ(picture.drawing(letters), "kk..\n....\n....\n");
}

TEST(CGContext, YGrowsDownwardFromTheUpperLeftCorner) {
    const Picture picture(4, 3);
    picture.setFill(red);
    CGContextFillRect(picture.context(), CGRectMake(1, 2, 3, 1));
    picture.setFill(blue);
    CGContextFillRect(picture.context(), CGRectMake(2, 2, -2, -2));
    EXPECT_EQ(picture.drawing(letters), "bb..\nbb..\n.rrr\n");
}

TEST(CGContext, AHalfCoveredPixelIsHalfThere) {
    const Picture picture(2, 1);
    picture.setFill(red);
    CGContextFillRect(picture.context(), CGRectMake(0.5, 0, 1, 1));
    EXPECT_TRUE(picture.looks(0, 0, 0xff000080, 1));
    EXPECT_TRUE(picture.looks(1, 0, 0xff000080, 1));
    CGContextSetShouldAntialias(picture.context(), false);
    CGContextClearRect(picture.context(), CGRectMake(0, 0, 2, 1));
    CGContextFillRect(picture.context(), CGRectMake(0.75, 0, 1, 1));
    EXPECT_EQ(picture.drawing(letters), ".r\n");
}

TEST(CGContext, ColoursOfAllSpacesAreShownAsSRGB) {
    const Picture picture(4, 1);
    const auto fill = [&](double x, const CGColorRef &color) {
        CGContextSetFillColorWithColor(picture.context(), color);
        CGContextFillRect(picture.context(), CGRectMake(x, 0, 1, 1));
    };
    fill(0, CGColorCreate(CGColorSpaceCreateDeviceGray(), {0.2, 1}));
    fill(1, CGColorCreate(CGColorSpaceCreateWithName(kCGColorSpaceSRGB), {0.2, 0.4, 0.6, 1}));
    // The wide red is beyond what can be shown and is held to it; a weaker one is not.
    fill(2, CGColorCreate(CGColorSpaceCreateWithName(kCGColorSpaceDisplayP3), {1, 0, 0, 1}));
    fill(3, CGColorCreate(CGColorSpaceCreatePattern(), {1}));
    EXPECT_TRUE(picture.looks(0, 0, 0x333333ff));
    EXPECT_TRUE(picture.looks(1, 0, 0x336699ff));
    EXPECT_TRUE(picture.looks(2, 0, red));
    EXPECT_TRUE(picture.looks(3, 0, 0));
    fill(3, nullptr);
    EXPECT_TRUE(picture.looks(3, 0, 0));
    fill(3,
         CGColorCreate(CGColorSpaceCreateDeviceRGB(), {std::numeric_limits<double>::quiet_NaN(), -3, 7, 9}));
    EXPECT_TRUE(picture.looks(3, 0, blue));
}

TEST(CGContext, AlphaIsAFactor) {
    const Picture picture(2, 1);
    picture.setFill(0xff000080);
    CGContextSetAlpha(picture.context(), 0.5);
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 1, 1));
    EXPECT_TRUE(picture.looks(0, 0, 0xff000040, 2));
    CGContextSetAlpha(picture.context(), -1);
    CGContextFillRect(picture.context(), CGRectMake(1, 0, 1, 1));
    EXPECT_TRUE(picture.looks(1, 0, 0));
}

TEST(CGContext, ASavedStateBringsColoursMapAndClipBack) {
    const Picture picture(4, 2);
    const auto &context = picture.context();
    picture.setFill(red);
    CGContextSaveGState(context);
    picture.setFill(blue);
    CGContextTranslateCTM(context, 1, 1);
    CGContextClipToRect(context, CGRectMake(0, 0, 1, 1));
    CGContextSetAlpha(context, 0);
    CGContextRestoreGState(context);
    EXPECT_EQ(CGContextGetCTM(context), CGAffineTransformIdentity);
    EXPECT_EQ(CGContextGetClipBoundingBox(context), CGRectMake(0, 0, 4, 2));
    CGContextFillRect(context, CGRectMake(0, 0, 4, 2));
    EXPECT_EQ(picture.drawing(letters), "rrrr\nrrrr\n");
}

TEST(CGContext, RestoringWithoutASavedStateDoesNothing) {
    const Picture picture(2, 1);
    CGContextRestoreGState(picture.context());
    CGContextSaveGState(picture.context());
    CGContextRestoreGState(picture.context());
    CGContextRestoreGState(picture.context());
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(picture.drawing(letters), "k.\n");
}

TEST(CGContext, ClipsAddUp) {
    const Picture picture(4, 3);
    const auto &context = picture.context();
    CGContextClipToRect(context, CGRectMake(0, 0, 3, 2));
    CGContextClipToRect(context, CGRectMake(1, 1, 3, 2));
    EXPECT_EQ(CGContextGetClipBoundingBox(context), CGRectMake(1, 1, 2, 1));
    CGContextFillRect(context, CGRectMake(0, 0, 4, 3));
    EXPECT_EQ(picture.drawing(letters), "....\n.kk.\n....\n");
}

TEST(CGContext, TheBoxOfTheClipIsInCurrentPoints) {
    const Picture picture(8, 4);
    const auto &context = picture.context();
    CGContextScaleCTM(context, 2, 2);
    EXPECT_EQ(CGContextGetClipBoundingBox(context), CGRectMake(0, 0, 4, 2));
    CGContextTranslateCTM(context, 1, 0);
    EXPECT_EQ(CGContextGetClipBoundingBox(context), CGRectMake(-1, 0, 4, 2));
    CGContextClipToRect(context, CGRectMake(20, 20, 1, 1));
    EXPECT_TRUE(CGRectIsNull(CGContextGetClipBoundingBox(context)));
}

TEST(CGContext, AClipByAPathWithoutElementsLeavesNothing) {
    const Picture picture(2, 1);
    CGContextBeginPath(picture.context());
    CGContextClip(picture.context());
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 2, 1));
    EXPECT_EQ(picture.drawing(letters), "..\n");
}

TEST(CGContext, TheLastMapIsAppliedFirst) {
    const Picture picture(4, 2);
    CGContextTranslateCTM(picture.context(), 1, 1);
    CGContextScaleCTM(picture.context(), 2, 1);
    EXPECT_EQ(CGContextGetCTM(picture.context()), CGAffineTransformMake(2, 0, 0, 1, 1, 1));
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(picture.drawing(letters), "....\n.kk.\n");
}

TEST(CGContext, RotationTurnsXDownward) {
    const Picture picture(4, 4);
    CGContextTranslateCTM(picture.context(), 2, 0);
    CGContextRotateCTM(picture.context(), std::numbers::pi / 2);
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 3, 1));
    EXPECT_EQ(picture.drawing(letters), ".k..\n.k..\n.k..\n....\n");
}

TEST(CGContext, ThePathKeepsItsPlaceWhenTheMapChanges) {
    const Picture picture(4, 2);
    const auto &context = picture.context();
    CGContextSaveGState(context);
    CGContextTranslateCTM(context, 1, 1);
    CGContextAddRect(context, CGRectMake(0, 0, 2, 1));
    CGContextRestoreGState(context);
    CGContextScaleCTM(context, 10, 10);
    CGContextFillPath(context);
    EXPECT_EQ(picture.drawing(letters), "....\n.kk.\n");
    // And is used up.
    CGContextClearRect(context, CGRectMake(0, 0, 4, 2));
    CGContextFillPath(context);
    EXPECT_EQ(picture.drawing(letters), "....\n....\n");
}

TEST(CGContext, EvenOddLeavesWhatIsCoveredTwice) {
    const auto draw = [](void (*clip)(const CGContextRef &)) {
        const Picture picture(5, 3);
        CGContextAddRect(picture.context(), CGRectMake(0, 0, 5, 3));
        CGContextAddPath(picture.context(), CGPathCreateWithRect(CGRectMake(1, 1, 3, 1), nullptr));
        clip(picture.context());
        CGContextFillRect(picture.context(), CGRectMake(0, 0, 5, 2));
        return picture.drawing(letters);
    };
    EXPECT_EQ(draw(CGContextClip), "kkkkk\nkkkkk\n.....\n");
    EXPECT_EQ(draw(CGContextEOClip), "kkkkk\nk...k\n.....\n");
    const Picture picture(5, 3);
    CGContextAddRect(picture.context(), CGRectMake(0, 0, 5, 3));
    CGContextAddRect(picture.context(), CGRectMake(1, 1, 3, 1));
    CGContextEOFillPath(picture.context());
    EXPECT_EQ(picture.drawing(letters), "kkkkk\nk...k\nkkkkk\n");
    CGContextAddRect(picture.context(), CGRectMake(0, 0, 5, 3));
    CGContextAddRect(picture.context(), CGRectMake(1, 1, 3, 1));
    CGContextFillPath(picture.context());
    EXPECT_EQ(picture.drawing(letters), "kkkkk\nkkkkk\nkkkkk\n");
}

TEST(CGContext, StrokesLieHalfOnEachSide) {
    const Picture picture(5, 5);
    const auto &context = picture.context();
    CGContextSetStrokeColorWithColor(context, CGColorCreate(CGColorSpaceCreateDeviceRGB(), {1, 0, 0, 1}));
    CGContextStrokeRect(context, CGRectMake(0.5, 0.5, 4, 4));
    EXPECT_EQ(picture.drawing(letters), "rrrrr\nr...r\nr...r\nr...r\nrrrrr\n");
    CGContextSetStrokeColorWithColor(context, CGColorCreate(CGColorSpaceCreateDeviceRGB(), {0, 0, 1, 1}));
    CGContextSetLineWidth(context, 3);
    CGContextSetLineWidth(context, -2);
    CGContextMoveToPoint(context, 0, 2.5);
    CGContextAddLineToPoint(context, 5, 2.5);
    CGContextStrokePath(context);
    EXPECT_EQ(picture.drawing(letters), "rrrrr\nbbbbb\nbbbbb\nbbbbb\nrrrrr\n");
}

TEST(CGContext, ACircleIsRound) {
    const Picture picture(21, 21);
    picture.setFill(red);
    CGContextFillEllipseInRect(picture.context(), CGRectMake(0.5, 0.5, 20, 20));
    int wrong = 0;
    for (std::size_t y = 0; y < 21; ++y)
        for (std::size_t x = 0; x < 21; ++x) {
            const double distance = std::hypot(static_cast<double>(x) - 10, static_cast<double>(y) - 10);
            if (distance < 9.2)
                wrong += picture.pixel(x, y) != red;
            else if (distance > 10.8)
                wrong += picture.pixel(x, y) != 0;
        }
    EXPECT_EQ(wrong, 0);
}

TEST(CGContext, APieOfAnArcStandsWhereItsAnglesSay) {
    const Picture picture(20, 20);
    const auto &context = picture.context();
    CGContextMoveToPoint(context, 10, 10);
    CGContextAddArc(context, 10, 10, 9, 0, std::numbers::pi / 2, false);
    CGContextClosePath(context);
    CGContextFillPath(context);
    EXPECT_TRUE(picture.looks(14, 14, black));
    EXPECT_TRUE(picture.looks(5, 14, 0));
    EXPECT_TRUE(picture.looks(14, 5, 0));
    EXPECT_TRUE(picture.looks(5, 5, 0));
}

TEST(CGContext, ARectangleWithoutBoundsFillsWhatIsThere) {
    constexpr double most = std::numeric_limits<double>::max(),
                     infinity = std::numeric_limits<double>::infinity();
    for (const CGRect &rect :
         {CGRectMake(1, 0, most, 1), CGRectMake(1, -most / 2, most, most), CGRectMake(1, -1e9, 1e12, 1e10)}) {
        const Picture picture(4, 1);
        CGContextScaleCTM(picture.context(), 2, 1);
        CGContextFillRect(picture.context(), rect);
        EXPECT_EQ(picture.drawing(letters), "..kk\n");
    }
    const Picture picture(4, 1);
    CGContextFillRect(picture.context(), CGRectMake(1, 0, infinity, 1));
    EXPECT_EQ(picture.drawing(letters), ".kkk\n");
}

TEST(CGContext, NumbersThatAreNoneDrawNothing) {
    const Picture picture(4, 1);
    const auto &context = picture.context();
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    for (const CGRect &rect : {CGRectMake(none, 0, 4, 1), CGRectMake(0, none, 4, 1),
                               CGRectMake(0, 0, none, 1), CGRectMake(0, 0, 4, none)})
        CGContextFillRect(context, rect);
    CGContextFillRect(context, CGRectNull);
    CGContextMoveToPoint(context, none, 0);
    CGContextAddLineToPoint(context, 4, none);
    CGContextAddArc(context, 0, 0, 1, none, 0, false);
    CGContextFillPath(context);
    EXPECT_EQ(picture.drawing(letters), "....\n");
    CGContextFillRect(context, CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(picture.drawing(letters), "k...\n");
}

TEST(CGContext, AFlattenedPlaneShowsNothingUntilTheStateIsRestored) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const CGAffineTransform &map :
         {CGAffineTransformMakeScale(0, 1), CGAffineTransformMakeTranslation(infinity, 0),
          CGAffineTransformMakeScale(std::numeric_limits<double>::quiet_NaN(), 1),
          CGAffineTransformMakeScale(infinity, 1), CGAffineTransformMake(1, 2, 2, 4, 0, 0)}) {
        const Picture picture(2, 1);
        const auto &context = picture.context();
        CGContextSaveGState(context);
        CGContextConcatCTM(context, map);
        CGContextConcatCTM(context, CGAffineTransformMakeScale(2, 2));
        EXPECT_TRUE(CGRectIsNull(CGContextGetClipBoundingBox(context)));
        CGContextFillRect(context, CGRectMake(0, 0, 2, 1));
        CGContextStrokeRect(context, CGRectMake(0, 0, 2, 1));
        CGContextClearRect(context, CGRectMake(0, 0, 2, 1));
        CGContextRestoreGState(context);
        EXPECT_EQ(picture.drawing(letters), "..\n");
        CGContextFillRect(context, CGRectMake(0, 0, 1, 1));
        EXPECT_EQ(picture.drawing(letters), "k.\n");
    }
}

TEST(CGContext, TheTextMatrixIsNoPartOfTheState) {
    const Picture picture(1, 1);
    EXPECT_EQ(CGContextGetTextMatrix(picture.context()), CGAffineTransformIdentity);
    CGContextSaveGState(picture.context());
    CGContextSetTextMatrix(picture.context(), CGAffineTransformMakeScale(1, -1));
    CGContextRestoreGState(picture.context());
    EXPECT_EQ(CGContextGetTextMatrix(picture.context()), CGAffineTransformMakeScale(1, -1));
}

TEST(CGContext, NullTakesEverything) {
    const CGContextRef none;
    CGContextSaveGState(none);
    CGContextRestoreGState(none);
    CGContextConcatCTM(none, CGAffineTransformIdentity);
    CGContextSetFillColorWithColor(none, nullptr);
    CGContextAddRect(none, CGRectZero);
    CGContextFillPath(none);
    CGContextClipToRect(none, CGRectZero);
    CGContextFillRect(none, CGRectZero);
    CGContextClearRect(none, CGRectZero);
    EXPECT_TRUE(CGRectIsNull(CGContextGetClipBoundingBox(none)));
    EXPECT_EQ(CGContextGetFillColor(none), nullptr);
    EXPECT_EQ(QVContextGetCairo(none), nullptr);
    EXPECT_EQ(QVContextCreateWithCairo(nullptr), nullptr);
    EXPECT_EQ(CGBitmapContextGetWidth(none), 0u);
    EXPECT_EQ(QVBitmapContextGetPixel(none, 0, 0), 0u);
    EXPECT_TRUE(QVBitmapContextCreatePNG(none).isNull());
}

TEST(CGContext, AHostsContextIsDrawnThrough) {
    const Picture picture(3, 1);
    {
        const CGContextRef context = QVContextCreateWithCairo(QVContextGetCairo(picture.context()));
        ASSERT_TRUE(context);
        CGContextFillRect(context, CGRectMake(1, 0, 1, 1));
    }
    EXPECT_EQ(picture.drawing(letters), ".k.\n");
}

TEST(CGBitmapContext, HasPixelsAndNotTooMany) {
    EXPECT_EQ(CGBitmapContextCreate(0, 1), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(1, 0), nullptr);
    EXPECT_NE(CGBitmapContextCreate(limits::bitmapSide, 1), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(limits::bitmapSide + 1, 1), nullptr);
    EXPECT_NE(CGBitmapContextCreate(1, limits::bitmapSide), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(1, limits::bitmapSide + 1), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(std::numeric_limits<std::size_t>::max(), 2), nullptr);
    static_assert(limits::bitmapPixels == 8192 * 8192);
    EXPECT_NE(CGBitmapContextCreate(8192, 8192), nullptr);
    EXPECT_EQ(CGBitmapContextCreate(8192, 8193), nullptr);
}

TEST(CGBitmapContext, PixelsAreMultipliedByAlpha) {
    const Picture picture(2, 1);
    picture.setFill(0xff800080);
    CGContextFillRect(picture.context(), CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(QVBitmapContextGetPixel(picture.context(), 0, 0), 0x80804000u);
    EXPECT_EQ(QVBitmapContextGetPixel(picture.context(), 2, 0), 0u);
    EXPECT_EQ(QVBitmapContextGetPixel(picture.context(), 0, 1), 0u);
    EXPECT_EQ(CGBitmapContextGetWidth(picture.context()), 2u);
    EXPECT_EQ(CGBitmapContextGetHeight(picture.context()), 1u);
}

TEST(CGBitmapContext, WritesPNG) {
    const Picture picture(258, 3);
    const NSData png = QVBitmapContextCreatePNG(picture.context());
    ASSERT_GT(png.length(), 24u);
    EXPECT_EQ(png.view().substr(0, 8), std::string_view("\x89PNG\r\n\x1a\n", 8));
    EXPECT_EQ(png.view().substr(12, 12), std::string_view("IHDR\0\0\x01\x02\0\0\0\x03", 12));
}
