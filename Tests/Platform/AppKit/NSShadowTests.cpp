#include "Platform/AppKit/NSShadow.h"

#include "Tests/Support/CodingFixtures.h"

#include <gtest/gtest.h>
#include <limits>

using namespace quorvane;

namespace {

std::shared_ptr<NSShadow> sample() {
    auto shadow = std::make_shared<NSShadow>();
    shadow->setShadowOffset({1, -2});
    shadow->setShadowBlurRadius(3);
    shadow->setShadowColor(NSColor::colorWithSRGBRed(1, 0, 0, 1));
    return shadow;
}

} // namespace

TEST(NSShadow, IsHardBlackAndTranslucentAtFirst) {
    const NSShadow shadow;
    EXPECT_EQ(shadow.shadowOffset(), CGSizeZero);
    EXPECT_EQ(shadow.shadowBlurRadius(), 0);
    EXPECT_TRUE(shadow.shadowColor()->isEqual(NSColor::colorWithWhite(0, 1.0 / 3).get()));
}

TEST(NSShadow, ACopyChangesByItself) {
    const auto shadow = sample();
    const auto copy = shadow->copy();
    EXPECT_TRUE(copy->isEqual(shadow.get()));
    EXPECT_EQ(copy->hash(), shadow->hash());
    copy->setShadowBlurRadius(4);
    EXPECT_EQ(shadow->shadowBlurRadius(), 3);
    EXPECT_FALSE(copy->isEqual(shadow.get()));
}

TEST(NSShadow, EqualsByOffsetRadiusAndColour) {
    const auto shadow = sample(), other = sample();
    other->setShadowOffset({1, 2});
    EXPECT_FALSE(other->isEqual(shadow.get()));
    other->setShadowOffset({1, -2});
    other->setShadowColor(NSColor::blackColor());
    EXPECT_FALSE(other->isEqual(shadow.get()));
    other->setShadowColor(nullptr);
    EXPECT_FALSE(other->isEqual(shadow.get()));
    EXPECT_FALSE(shadow->isEqual(other.get()));
    shadow->setShadowColor(nullptr);
    EXPECT_TRUE(shadow->isEqual(other.get()));
    EXPECT_FALSE(shadow->isEqual(nullptr));
    EXPECT_FALSE(shadow->isEqual(NSColor::blackColor().get()));
}

TEST(NSShadow, IsDescribedByWhatItIs) {
    EXPECT_EQ(sample()->description(), u"<NSShadow {1.00, -2.00} blur 3.00 color "
                                       u"<NSColor <CGColor kCGColorSpaceSRGB 1 0 0 1>>>");
}

TEST(NSShadow, ComesBackFromAnArchive) {
    const auto shadow = sample();
    EXPECT_TRUE(shadow->isEqual(test::throughArchive(shadow).get()));
    shadow->setShadowColor(nullptr);
    EXPECT_TRUE(shadow->isEqual(test::throughArchive(shadow).get()));
    shadow->setShadowColor(NSColor::labelColor());
    EXPECT_EQ(test::throughArchive(shadow)->shadowColor(), NSColor::labelColor());
}

TEST(NSShadow, NumbersOfAForgedArchiveAreFinite) {
    const auto shadow = test::readForged<NSShadow>([](NSCoder &coder) {
        coder.encodeDouble(std::numeric_limits<double>::infinity(), u"NSShadowHoriz");
        coder.encodeDouble(std::numeric_limits<double>::quiet_NaN(), u"NSShadowVert");
        coder.encodeString(u"wide", u"NSShadowBlurRadius");
        coder.encodeString(u"red", u"NSShadowColor");
    });
    ASSERT_TRUE(shadow);
    EXPECT_EQ(shadow->shadowOffset(), CGSizeZero);
    EXPECT_EQ(shadow->shadowBlurRadius(), 0);
    EXPECT_EQ(shadow->shadowColor(), nullptr);
}
