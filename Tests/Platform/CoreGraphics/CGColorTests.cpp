#include "Platform/CoreGraphics/CGColor.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

const CGColorSpaceRef &sRGB() {
    static const CGColorSpaceRef space = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
    return space;
}
const CGColorSpaceRef &displayP3() {
    static const CGColorSpaceRef space = CGColorSpaceCreateWithName(kCGColorSpaceDisplayP3);
    return space;
}

CGColorRef matched(const CGColorSpaceRef &space, const CGColorRef &color) {
    return CGColorCreateCopyByMatchingToColorSpace(space, kCGRenderingIntentDefault, color);
}

void expectComponents(const CGColorRef &color, std::initializer_list<double> expected, double tolerance) {
    ASSERT_TRUE(color);
    const auto components = CGColorGetComponents(color);
    ASSERT_EQ(components.size(), expected.size());
    for (std::size_t index = 0; index < components.size(); ++index)
        EXPECT_NEAR(components[index], expected.begin()[index], tolerance) << "component " << index;
}

} // namespace

TEST(CGColorSpace, DeviceRGBAndSRGBDifferThoughTheirNumbersMeanTheSame) {
    EXPECT_TRUE(CFEqual(CGColorSpaceCreateDeviceRGB(), CGColorSpaceCreateDeviceRGB()));
    EXPECT_FALSE(CFEqual(CGColorSpaceCreateDeviceRGB(), sRGB()));
    EXPECT_FALSE(CFEqual(sRGB(), displayP3()));
    EXPECT_FALSE(CFEqual(CGColorSpaceCreateDeviceGray(), CGColorSpaceCreateDeviceRGB()));
    EXPECT_EQ(CFHash(sRGB()), CFHash(CGColorSpaceCreateWithName(kCGColorSpaceSRGB)));
}

TEST(CGColorSpace, NullEqualsNullAlone) {
    EXPECT_TRUE(CFEqual(CGColorSpaceRef(), CGColorSpaceRef()));
    EXPECT_FALSE(CFEqual(CGColorSpaceRef(), sRGB()));
    EXPECT_FALSE(CFEqual(sRGB(), CGColorSpaceRef()));
    EXPECT_EQ(CFHash(CGColorSpaceRef()), 0u);
}

TEST(CGColorSpace, ModelsHaveThePlatformsNumbers) {
    EXPECT_EQ(CGColorSpaceGetModel(CGColorSpaceCreateDeviceGray()), 0);
    EXPECT_EQ(CGColorSpaceGetModel(CGColorSpaceCreateDeviceRGB()), 1);
    EXPECT_EQ(CGColorSpaceGetModel(sRGB()), 1);
    EXPECT_EQ(CGColorSpaceGetModel(displayP3()), 1);
    EXPECT_EQ(CGColorSpaceGetModel(CGColorSpaceCreatePattern()), 6);
    EXPECT_EQ(CGColorSpaceGetModel(nullptr), -1);
}

TEST(CGColorSpace, CountsComponentsWithoutAlpha) {
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(CGColorSpaceCreateDeviceGray()), 1u);
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(displayP3()), 3u);
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(CGColorSpaceCreatePattern()), 0u);
    EXPECT_EQ(CGColorSpaceGetNumberOfComponents(nullptr), 0u);
}

TEST(CGColorSpace, AnUnknownNameHasNoSpace) {
    EXPECT_EQ(CGColorSpaceCreateWithName(u"kCGColorSpaceLab"), nullptr);
    EXPECT_EQ(CGColorSpaceCreateWithName(NSString()), nullptr);
    EXPECT_EQ(sRGB()->description(), u"<CGColorSpace kCGColorSpaceSRGB>");
}

TEST(CGColor, HasAsManyComponentsAsItsSpaceAndAnAlpha) {
    const CGColorRef color = CGColorCreate(sRGB(), {0.1, 0.2, 0.3, 0.4});
    expectComponents(color, {0.1, 0.2, 0.3, 0.4}, 0);
    EXPECT_EQ(CGColorGetNumberOfComponents(color), 4u);
    EXPECT_EQ(CGColorGetAlpha(color), 0.4);
    EXPECT_TRUE(CFEqual(CGColorGetColorSpace(color), sRGB()));
    EXPECT_EQ(CGColorCreate(sRGB(), {0.1, 0.2, 0.3}), nullptr);
    EXPECT_EQ(CGColorCreate(sRGB(), {0.1, 0.2, 0.3, 0.4, 0.5}), nullptr);
    EXPECT_EQ(CGColorCreate(CGColorSpaceCreateDeviceGray(), {0.1}), nullptr);
    EXPECT_EQ(CGColorCreate(nullptr, {0.1}), nullptr);
}

TEST(CGColor, NullHasNothing) {
    EXPECT_EQ(CGColorGetAlpha(nullptr), 0);
    EXPECT_EQ(CGColorGetNumberOfComponents(nullptr), 0u);
    EXPECT_TRUE(CGColorGetComponents(nullptr).empty());
    EXPECT_EQ(CGColorGetColorSpace(nullptr), nullptr);
    EXPECT_EQ(CGColorCreateCopy(nullptr), nullptr);
    EXPECT_EQ(CGColorCreateCopyWithAlpha(nullptr, 1), nullptr);
}

TEST(CGColor, EqualsByItsSpaceAndNumbers) {
    const CGColorRef color = CGColorCreate(sRGB(), {0, 0.2, 0.3, 1});
    EXPECT_TRUE(CFEqual(color, CGColorCreate(sRGB(), {-0.0, 0.2, 0.3, 1})));
    EXPECT_EQ(CFHash(color), CFHash(CGColorCreate(sRGB(), {-0.0, 0.2, 0.3, 1})));
    EXPECT_FALSE(CFEqual(color, CGColorCreate(sRGB(), {0, 0.2, 0.3, 0.9})));
    EXPECT_FALSE(CFEqual(color, CGColorCreate(CGColorSpaceCreateDeviceRGB(), {0, 0.2, 0.3, 1})));
    EXPECT_FALSE(color->isEqual(sRGB().get()));
    EXPECT_FALSE(color->isEqual(nullptr));
}

TEST(CGColor, ACopyWithAlphaKeepsTheRest) {
    expectComponents(CGColorCreateCopyWithAlpha(CGColorCreate(displayP3(), {1, 0.5, 0.25, 1}), 0.5),
                     {1, 0.5, 0.25, 0.5}, 0);
    expectComponents(CGColorCreateCopyWithAlpha(CGColorCreate(CGColorSpaceCreateDeviceGray(), {1, 1}), 0),
                     {1, 0}, 0);
    expectComponents(CGColorCreateCopyWithAlpha(CGColorCreate(CGColorSpaceCreatePattern(), {1}), 0.25),
                     {0.25}, 0);
}

TEST(CGColor, IsDescribedBySpaceAndNumbers) {
    EXPECT_EQ(CGColorCreate(sRGB(), {1, 0.5, 0, 1})->description(), u"<CGColor kCGColorSpaceSRGB 1 0.5 0 1>");
}

TEST(CGColorMatching, DeviceRGBIsReadAsSRGB) {
    const CGColorRef color = CGColorCreate(CGColorSpaceCreateDeviceRGB(), {1.5, 0.5, -0.25, 0.75});
    const CGColorRef result = matched(sRGB(), color);
    expectComponents(result, {1.5, 0.5, -0.25, 0.75}, 0);
    EXPECT_TRUE(CFEqual(CGColorGetColorSpace(result), sRGB()));
}

// The numbers are those of the published matrices between the two spaces.
TEST(CGColorMatching, WhatASpaceCanNotShowLiesOutsideOfZeroToOne) {
    expectComponents(matched(sRGB(), CGColorCreate(displayP3(), {1, 0, 0, 0.5})),
                     {1.0930, -0.2267, -0.1501, 0.5}, 0.002);
    expectComponents(matched(displayP3(), CGColorCreate(sRGB(), {0, 1, 0, 1})), {0.4584, 0.9853, 0.2983, 1},
                     0.002);
}

TEST(CGColorMatching, ThereAndBackIsTheColourAgain) {
    const CGColorRef color = CGColorCreate(displayP3(), {0.9, 0.1, 0.4, 0.3});
    expectComponents(matched(displayP3(), matched(sRGB(), color)), {0.9, 0.1, 0.4, 0.3}, 0.0005);
}

TEST(CGColorMatching, GraysAreGrayInEverySpace) {
    const CGColorRef gray = CGColorCreate(CGColorSpaceCreateDeviceGray(), {0.4, 0.5});
    expectComponents(matched(displayP3(), gray), {0.4, 0.4, 0.4, 0.5}, 0);
    expectComponents(matched(CGColorSpaceCreateDeviceRGB(), gray), {0.4, 0.4, 0.4, 0.5}, 0);
    expectComponents(matched(CGColorSpaceCreateDeviceGray(), CGColorCreate(sRGB(), {0.4, 0.4, 0.4, 0.5})),
                     {0.4, 0.5}, 0.001);
    expectComponents(matched(sRGB(), CGColorCreate(displayP3(), {1, 1, 1, 1})), {1, 1, 1, 1}, 0.001);
}

// Green has 0.717 of the light of white, seen through the adaptation to the profiles' white; encoded 0.863.
TEST(CGColorMatching, AColourGivesTheGrayOfItsLight) {
    expectComponents(matched(CGColorSpaceCreateDeviceGray(), CGColorCreate(sRGB(), {0, 1, 0, 1})), {0.863, 1},
                     0.003);
}

TEST(CGColorMatching, PatternsMatchNothing) {
    const CGColorRef pattern = CGColorCreate(CGColorSpaceCreatePattern(), {1});
    EXPECT_EQ(matched(sRGB(), pattern), nullptr);
    EXPECT_EQ(matched(CGColorSpaceCreatePattern(), CGColorCreate(sRGB(), {1, 1, 1, 1})), nullptr);
    EXPECT_EQ(matched(nullptr, CGColorCreate(sRGB(), {1, 1, 1, 1})), nullptr);
    EXPECT_EQ(matched(sRGB(), nullptr), nullptr);
}
