#include "Platform/AppKit/NSBezierPath.h"
#include "Quorvane/Styles/QVGradient.h"
#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>
#include <limits>
#include <numbers>

using namespace quorvane;
using test::Picture;

namespace {

constexpr double pi = std::numbers::pi;
constexpr std::uint32_t red = 0xff0000ff, blue = 0x0000ffff, white = 0xffffffff;
constexpr NSGradientDrawingOptions before = NSGradientDrawsBeforeStartingLocation;
constexpr NSGradientDrawingOptions after = NSGradientDrawsAfterEndingLocation;

const std::shared_ptr<const QVGradient> &redToBlue() {
    static const auto gradient =
        QVGradient::gradientWithStartingColor(QVColor::redColor(), QVColor::blueColor());
    return gradient;
}

/// What the gradient shows at a part of its way.
std::uint32_t mix(double t) {
    const auto part = static_cast<std::uint32_t>(std::lround(255 * t));
    return (255 - part) << 24 | part << 8 | 0xff;
}

/// A ring around the middle of a picture, with a ruler for its angles.
class Ring {
public:
    static constexpr double inner = 220, outer = 300;
    static constexpr CGPoint center{310, 310};

    Ring(const QVGradient &gradient, double start, double end, NSGradientDrawingOptions options) {
        gradient.drawWithCenter(center, inner, outer, start, end, options);
    }

    /// The pixel in the middle of the ring that is nearest to an angle.
    testing::AssertionResult looks(double angle, std::uint32_t rgba, int tolerance = 1) const {
        const double radius = (inner + outer) / 2;
        return _picture.looks(static_cast<std::size_t>(center.x + radius * std::cos(angle)),
                              static_cast<std::size_t>(center.y + radius * std::sin(angle)), rgba, tolerance);
    }
    const Picture &picture() const { return _picture; }

private:
    Picture _picture{620, 620};
};

} // namespace

TEST(QVGradientDrawing, FromPointToPointIsLinear) {
    const Picture picture(64, 1);
    redToBlue()->drawFromPoint({0, 0}, {64, 0}, 0);
    for (std::size_t x = 0; x < 64; ++x)
        EXPECT_TRUE(picture.looks(x, 0, mix((static_cast<double>(x) + 0.5) / 64), 1));
}

// Meant: the two flags are not combined; the one before the start wins.
TEST(QVGradientDrawing, BothOptionsCountAsTheFirstAlone) {
    const auto linear = [](NSGradientDrawingOptions options) {
        const Picture picture(6, 1);
        redToBlue()->drawFromPoint({2, 0}, {4, 0}, options);
        return picture.drawing({{red, 'r'}, {blue, 'b'}});
    };
    EXPECT_EQ(linear(0), "..??..\n");
    EXPECT_EQ(linear(before), "rr??..\n");
    EXPECT_EQ(linear(after), "..??bb\n");
    EXPECT_EQ(linear(before | after), "rr??..\n");
    EXPECT_EQ(linear(after | 4), "..??bb\n");
    const auto radial = [](NSGradientDrawingOptions options) {
        const Picture picture(40, 1);
        redToBlue()->drawFromCenter({20, 0.5}, 8, {20, 0.5}, 12, options);
        return std::pair(picture.pixel(20, 0), picture.pixel(0, 0));
    };
    EXPECT_EQ(radial(0), std::pair(0u, 0u));
    EXPECT_EQ(radial(before), std::pair(red, 0u));
    EXPECT_EQ(radial(after), std::pair(0u, blue));
    EXPECT_EQ(radial(before | after), std::pair(red, 0u));
}

TEST(QVGradientDrawing, FromCenterToCenterIsRadial) {
    const Picture picture(81, 81);
    redToBlue()->drawFromCenter({40.5, 40.5}, 0, {40.5, 40.5}, 40, 0);
    for (std::size_t x = 42; x < 79; ++x)
        EXPECT_TRUE(picture.looks(x, 40, mix((static_cast<double>(x) - 40) / 40), 2));
    EXPECT_TRUE(picture.looks(0, 0, 0));
}

// Meant: the angle chooses an edge, and no slanted gradient is ever drawn.
TEST(QVGradientDrawing, TheAngleChoosesAnEdgeOfTheRectangle) {
    const auto edge = [](double angle) -> std::string {
        const Picture picture(12, 12);
        redToBlue()->drawInRect(CGRectMake(2, 2, 8, 8), angle);
        const auto along = [&picture](auto &&part) {
            for (std::size_t y = 0; y < 12; ++y)
                for (std::size_t x = 0; x < 12; ++x) {
                    const bool inside = x >= 2 && x < 10 && y >= 2 && y < 10;
                    if (!picture.looks(x, y, inside ? mix((part(x, y) - 1.5) / 8) : 0, 1))
                        return false;
                }
            return true;
        };
        if (along([](std::size_t x, std::size_t) { return static_cast<double>(x); }))
            return "to the right";
        if (along([](std::size_t, std::size_t y) { return static_cast<double>(y); }))
            return "down";
        if (along([](std::size_t x, std::size_t) { return 11 - static_cast<double>(x); }))
            return "to the left";
        if (along([](std::size_t, std::size_t y) { return 11 - static_cast<double>(y); }))
            return "up";
        return "nowhere";
    };
    for (const double angle : {0.0, 45.0, 89.99, 360.0, 365.0, -300.0, 3600.0})
        EXPECT_EQ(edge(angle), "to the right") << angle;
    for (const double angle : {90.0, 135.0, 179.99, 450.0, -270.0, -181.0})
        EXPECT_EQ(edge(angle), "down") << angle;
    for (const double angle : {180.0, 225.0, 269.99, 540.0, -180.0, -91.0})
        EXPECT_EQ(edge(angle), "to the left") << angle;
    for (const double angle : {270.0, 315.0, 359.99, 630.0, -90.0, -0.01})
        EXPECT_EQ(edge(angle), "up") << angle;
    for (const double angle : {1e300, -1e300})
        EXPECT_NE(edge(angle), "nowhere") << angle;
    EXPECT_EQ(edge(std::numeric_limits<double>::quiet_NaN()), "up");
    EXPECT_EQ(edge(std::numeric_limits<double>::infinity()), "up");
}

TEST(QVGradientDrawing, InAPathItIsClippedToIt) {
    const Picture picture(40, 20, white);
    redToBlue()->drawInBezierPath(NSBezierPath::bezierPathWithOvalInRect(CGRectMake(4, 2, 32, 16)), 0);
    EXPECT_TRUE(picture.looks(4, 2, white));
    EXPECT_TRUE(picture.looks(35, 17, white));
    for (std::size_t x = 6; x < 34; ++x)
        EXPECT_TRUE(picture.looks(x, 10, mix((static_cast<double>(x) - 3.5) / 32), 1));
    redToBlue()->drawInBezierPath(nullptr, 0);
}

TEST(QVGradientDrawing, LeavesTheStateOfTheContextAlone) {
    const Picture picture(40, 40);
    const auto &context = picture.context();
    const CGColorRef fill = CGContextGetFillColor(context);
    redToBlue()->drawInRect(CGRectMake(1, 1, 2, 2), 0);
    redToBlue()->drawInBezierPath(NSBezierPath::bezierPathWithRect(CGRectMake(1, 1, 2, 2)), 0);
    redToBlue()->drawWithCenter({20, 20}, 5, 10, 0, 1, 3);
    EXPECT_EQ(CGContextGetClipBoundingBox(context), CGRectMake(0, 0, 40, 40));
    EXPECT_EQ(CGContextGetFillColor(context), fill);
}

TEST(QVGradientDrawing, WithoutAContextOrColoursNothingIsDrawn) {
    redToBlue()->drawInRect(CGRectMake(1, 1, 2, 2), 0);
    redToBlue()->drawWithCenter({20, 20}, 5, 10, 0, 1, 3);
    const Picture picture(8, 8);
    const auto pattern = QVColor::colorWithCGColor(CGColorCreate(CGColorSpaceCreatePattern(), {1}));
    const auto gradient = QVGradient::gradientWithStartingColor(QVColor::redColor(), pattern);
    gradient->drawInRect(CGRectMake(0, 0, 8, 8), 0);
    gradient->drawFromCenter({4, 4}, 0, {4, 4}, 4, 3);
    EXPECT_EQ(picture.pixel(4, 4), 0u);
}

TEST(QVAngularGradient, EachWedgeHasTheColourOfItsStart) {
    const Ring ring(*redToBlue(), 0, pi, 0);
    for (int wedge = 0; wedge < 90; ++wedge)
        for (const double part : {0.3, 0.7})
            EXPECT_TRUE(ring.looks((wedge + part) / 90 * pi, mix(wedge / 90.0))) << wedge;
}

TEST(QVAngularGradient, NoSeamsShowBetweenTheWedges) {
    const Ring ring(*redToBlue(), 0, pi, 0);
    int checked = 0;
    for (std::size_t y = 312; y < 620; ++y)
        for (std::size_t x = 0; x < 620; ++x) {
            const double radius = std::hypot(static_cast<double>(x) + 0.5 - Ring::center.x,
                                             static_cast<double>(y) + 0.5 - Ring::center.y);
            if (radius < Ring::inner + 1.5 || radius > Ring::outer - 1.5)
                continue;
            ASSERT_EQ(ring.picture().pixel(x, y) & 0xff, 0xffu) << x << " " << y;
            ++checked;
        }
    EXPECT_GT(checked, 50000);
}

TEST(QVAngularGradient, TheRingHasItsRadii) {
    const Ring ring(*redToBlue(), 0, pi, 0);
    EXPECT_TRUE(ring.picture().looks(310, 310 + 218, 0));
    EXPECT_TRUE(ring.picture().looks(310, 310 + 222, mix(45 / 90.0), 5));
    EXPECT_TRUE(ring.picture().looks(310, 310 + 298, mix(45 / 90.0), 5));
    EXPECT_TRUE(ring.picture().looks(310, 310 + 302, 0));
}

TEST(QVAngularGradient, OptionsFillHalfOfWhatIsFreeOnEitherSide) {
    for (const NSGradientDrawingOptions options : {std::uint64_t(0), before, after, before | after}) {
        const Ring ring(*redToBlue(), 0, pi, options);
        const std::uint32_t first = options & before ? red : 0, last = options & after ? blue : 0;
        for (const double angle : {-0.01, -0.5, -1.0, -pi / 2 + 0.01})
            EXPECT_TRUE(ring.looks(angle, first)) << options << " " << angle;
        for (const double angle : {pi + 0.1, pi + 0.5, pi + 1, pi * 3 / 2 - 0.01})
            EXPECT_TRUE(ring.looks(angle, last)) << options << " " << angle;
        EXPECT_TRUE(ring.looks(1.5 / 90 * pi, mix(1 / 90.0))) << options;
        EXPECT_TRUE(ring.looks(88.5 / 90 * pi, mix(88 / 90.0))) << options;
    }
}

// Meant: an overlap has one width, however narrow the wedges are. The last but one reaches over the last,
// whose own overlap alone depends on the option.
TEST(QVAngularGradient, OverlapsReachBeyondTheEndOfANarrowSweep) {
    const double beyond = pi / 32 - pi / 90;
    const Ring ring(*redToBlue(), 0, pi, 0);
    EXPECT_TRUE(ring.looks(pi - 0.01, mix(89 / 90.0)));
    EXPECT_TRUE(ring.looks(pi + 0.01, mix(88 / 90.0)));
    EXPECT_TRUE(ring.looks(pi + beyond - 0.01, mix(88 / 90.0)));
    EXPECT_TRUE(ring.looks(pi + beyond + 0.01, 0));
    const Ring capped(*redToBlue(), 0, pi, after);
    EXPECT_TRUE(capped.looks(pi + 0.01, blue));
    EXPECT_TRUE(capped.looks(pi + beyond + 0.01, blue));
}

TEST(QVAngularGradient, AFullCircleLeavesNothingToTheOptions) {
    for (const NSGradientDrawingOptions options : {std::uint64_t(0), before, after, before | after}) {
        const Ring ring(*redToBlue(), 0, 2 * pi, options);
        EXPECT_TRUE(ring.looks(20.5 / 90 * 2 * pi, mix(20 / 90.0)));
        EXPECT_TRUE(ring.looks(60.5 / 90 * 2 * pi, mix(60 / 90.0)));
    }
}

TEST(QVAngularGradient, GoesBackwardsToo) {
    const Ring ring(*redToBlue(), 0, -pi, before);
    for (int wedge = 0; wedge < 90; ++wedge)
        EXPECT_TRUE(ring.looks(-(wedge + 0.5) / 90 * pi, mix(wedge / 90.0))) << wedge;
    EXPECT_TRUE(ring.looks(0.5, red));
    EXPECT_TRUE(ring.looks(pi - 0.5, 0));
}

TEST(QVAngularGradient, WithoutAColourAWedgeIsLeftOut) {
    const auto gradient = QVGradient::gradientWithColorsAndLocations(
        {{QVColor::redColor(), 0.25}, {QVColor::blueColor(), 0.75}});
    const Ring ring(*gradient, 0, pi, before | after);
    EXPECT_TRUE(ring.looks(10.5 / 90 * pi, 0));
    EXPECT_TRUE(ring.looks(45.5 / 90 * pi, mix(0.5)));
    EXPECT_TRUE(ring.looks(80.5 / 90 * pi, 0));
    EXPECT_TRUE(ring.looks(-0.5, 0));
}

TEST(QVAngularGradient, EqualAnglesAndAnglesThatAreNoneDrawNothing) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Picture picture(20, 20);
    redToBlue()->drawWithCenter({10, 10}, 2, 8, 1, 1, before | after);
    redToBlue()->drawWithCenter({10, 10}, 2, 8, 1, infinity, before | after);
    redToBlue()->drawWithCenter({10, 10}, 2, 8, infinity, infinity, before | after);
    redToBlue()->drawWithCenter({10, 10}, 2, 8, std::numeric_limits<double>::quiet_NaN(), 1, before | after);
    EXPECT_EQ(picture.drawing({}).find_first_not_of(".\n"), std::string::npos);
}
