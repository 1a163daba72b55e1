#include "Platform/CoreGraphics/CGGradient.h"

#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>
#include <limits>

using namespace quorvane;
using test::Picture;

namespace {

CGColorRef rgb(double red, double green, double blue, double alpha = 1) {
    return CGColorCreate(CGColorSpaceCreateDeviceRGB(), {red, green, blue, alpha});
}

CGGradientRef make(std::vector<CGColorRef> colors, std::vector<double> locations) {
    return CGGradientCreateWithColors(CGColorSpaceCreateDeviceRGB(), colors, locations);
}

CGGradientRef redToBlue() { return make({rgb(1, 0, 0), rgb(0, 0, 1)}, {}); }

std::string locations(const CGGradientRef &gradient) {
    std::string text;
    for (const auto &stop : gradient->stops())
        text += std::to_string(stop.location).substr(0, 4) + " ";
    return text;
}

/// What a gradient from red to blue shows at a part of its way.
std::uint32_t mix(double t) {
    const auto blue = static_cast<std::uint32_t>(std::lround(255 * t));
    return (255 - blue) << 24 | blue << 8 | 0xff;
}

constexpr std::uint32_t red = 0xff0000ff, blue = 0x0000ffff;

} // namespace

TEST(CGGradient, StopsAreSpacedEvenlySortedAndHeld) {
    EXPECT_EQ(locations(make({rgb(0, 0, 0), rgb(0, 0, 0), rgb(0, 0, 0)}, {})), "0.00 0.50 1.00 ");
    EXPECT_EQ(locations(make({rgb(0, 0, 0)}, {})), "0.00 ");
    EXPECT_EQ(locations(make({rgb(0, 0, 0), rgb(0, 0, 0), rgb(0, 0, 0)}, {7, -3, 0.25})), "0.00 0.25 1.00 ");
    EXPECT_EQ(locations(make({rgb(0, 0, 0)}, {std::numeric_limits<double>::quiet_NaN()})), "0.00 ");
    const auto equal = make({rgb(1, 0, 0), rgb(0, 1, 0), rgb(0, 0, 1)}, {0.5, 0.5, 0.5});
    EXPECT_TRUE(CFEqual(equal->stops()[0].color, rgb(1, 0, 0)));
    EXPECT_TRUE(CFEqual(equal->stops()[2].color, rgb(0, 0, 1)));
}

TEST(CGGradient, ColoursAreMatchedToItsSpace) {
    const CGColorRef gray = CGColorCreate(CGColorSpaceCreateDeviceGray(), {0.5, 1});
    const auto gradient = CGGradientCreateWithColors(nullptr, std::vector{gray}, {});
    EXPECT_TRUE(CFEqual(gradient->space(), CGColorSpaceCreateDeviceRGB()));
    EXPECT_TRUE(CFEqual(gradient->stops()[0].color, rgb(0.5, 0.5, 0.5)));
    EXPECT_EQ(make({CGColorCreate(CGColorSpaceCreatePattern(), {1})}, {}), nullptr);
    EXPECT_EQ(make({rgb(1, 0, 0), nullptr}, {}), nullptr);
    EXPECT_EQ(make({}, {}), nullptr);
    EXPECT_EQ(make({rgb(1, 0, 0)}, {0, 1}), nullptr);
}

TEST(CGLinearGradient, EachColumnHasTheColourOfItsMiddle) {
    const Picture picture(256, 2);
    CGContextDrawLinearGradient(picture.context(), redToBlue(), {0, 0}, {256, 0}, 0);
    for (std::size_t x = 0; x < 256; ++x)
        for (std::size_t y = 0; y < 2; ++y)
            EXPECT_TRUE(picture.looks(x, y, mix((static_cast<double>(x) + 0.5) / 256), 1));
}

TEST(CGLinearGradient, GoesOnBeyondItsEndsAsTheOptionsSay) {
    for (const CGGradientDrawingOptions options : {0u, 1u, 2u, 3u}) {
        const Picture picture(32, 1);
        CGContextDrawLinearGradient(picture.context(), redToBlue(), {8, 0}, {24, 0}, options);
        for (std::size_t x = 0; x < 8; ++x)
            EXPECT_TRUE(picture.looks(x, 0, options & 1 ? red : 0)) << options;
        for (std::size_t x = 8; x < 24; ++x)
            EXPECT_TRUE(picture.looks(x, 0, mix((static_cast<double>(x) - 7.5) / 16), 1)) << options;
        for (std::size_t x = 24; x < 32; ++x)
            EXPECT_TRUE(picture.looks(x, 0, options & 2 ? blue : 0)) << options;
    }
}

TEST(CGLinearGradient, StopsStandAtTheirLocations) {
    const Picture picture(100, 1);
    CGContextDrawLinearGradient(
        picture.context(),
        make({rgb(1, 0, 0), rgb(1, 0, 0), rgb(0, 0, 1), rgb(0, 0, 1)}, {0.2, 0.5, 0.5, 0.9}), {0, 0},
        {100, 0}, 0);
    for (std::size_t x = 0; x < 100; ++x)
        EXPECT_TRUE(picture.looks(x, 0, x < 50 ? red : blue));
}

TEST(CGLinearGradient, WithoutAWayOneColourIsLeft) {
    const auto drawn = [](CGGradientDrawingOptions options) {
        const Picture picture(3, 1);
        CGContextDrawLinearGradient(picture.context(), redToBlue(), {1, 0}, {1, 0}, options);
        return picture.drawing({{red, 'r'}, {blue, 'b'}});
    };
    EXPECT_EQ(drawn(0), "...\n");
    EXPECT_EQ(drawn(1), "rrr\n");
    EXPECT_EQ(drawn(2), "bbb\n");
    EXPECT_EQ(drawn(3), "bbb\n");
}

TEST(CGLinearGradient, FollowsTheMapTheClipAndTheAlpha) {
    const Picture picture(32, 4);
    CGContextScaleCTM(picture.context(), 4, 1);
    CGContextClipToRect(picture.context(), CGRectMake(2, 1, 4, 2));
    CGContextSetAlpha(picture.context(), 0.5);
    CGContextDrawLinearGradient(picture.context(), redToBlue(), {0, 0}, {8, 0}, 0);
    for (std::size_t x = 0; x < 32; ++x)
        for (std::size_t y = 0; y < 4; ++y) {
            const bool inside = x >= 8 && x < 24 && (y == 1 || y == 2);
            const std::uint32_t expected = (mix((static_cast<double>(x) + 0.5) / 32) & ~0xffu) | 0x80;
            EXPECT_TRUE(picture.looks(x, y, inside ? expected : 0, 3));
        }
}

TEST(CGRadialGradient, EachPixelHasTheColourOfItsDistance) {
    for (const CGGradientDrawingOptions options : {0u, 1u, 2u, 3u}) {
        const Picture picture(101, 101);
        CGContextDrawRadialGradient(picture.context(), redToBlue(), {50.5, 50.5}, 10, {50.5, 50.5}, 40,
                                    options);
        int checked = 0;
        for (std::size_t y = 0; y < 101; y += 3)
            for (std::size_t x = 0; x < 101; x += 3) {
                const double t =
                    (std::hypot(static_cast<double>(x) - 50, static_cast<double>(y) - 50) - 10) / 30;
                if (std::abs(t) < 0.05 || std::abs(t - 1) < 0.05)
                    continue;
                const std::uint32_t expected = t < 0   ? (options & 1 ? red : 0)
                                               : t > 1 ? (options & 2 ? blue : 0)
                                                       : mix(t);
                EXPECT_TRUE(picture.looks(x, y, expected, 2)) << options;
                ++checked;
            }
        EXPECT_GT(checked, 900);
    }
}

TEST(CGRadialGradient, EqualCirclesAndNumbersThatAreNoneDrawNothing) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    const Picture picture(4, 1);
    const auto &context = picture.context();
    CGContextDrawRadialGradient(context, redToBlue(), {2, 0}, 2, {2, 0}, 2, 3);
    CGContextDrawRadialGradient(context, redToBlue(), {2, 0}, -1, {2, 0}, 2, 3);
    CGContextDrawRadialGradient(context, redToBlue(), {2, none}, 1, {2, 0}, 2, 3);
    CGContextDrawLinearGradient(context, redToBlue(), {none, 0}, {2, 0}, 3);
    CGContextDrawLinearGradient(context, nullptr, {0, 0}, {2, 0}, 3);
    CGContextDrawLinearGradient(nullptr, redToBlue(), {0, 0}, {2, 0}, 3);
    EXPECT_EQ(picture.drawing({}), "....\n");
}
