#include "Platform/AppKit/NSColor.h"

#include "Platform/AppKit/NSAppearance.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>
#include <thread>

using namespace quorvane;

namespace {

using Color = std::shared_ptr<const NSColor>;

/// Brings light back, whatever a test set.
class NSColorTest : public testing::Test {
protected:
    ~NSColorTest() override {
        NSAppearance::setCurrentAppearance(nullptr);
        NSAppearance::setApplicationAppearance(nullptr);
    }
};
using NSAppearanceTest = NSColorTest;

const std::vector<std::pair<const char16_t *, Color>> &systemColors() {
    static const std::vector<std::pair<const char16_t *, Color>> colors{
        {u"windowBackgroundColor", NSColor::windowBackgroundColor()},
        {u"separatorColor", NSColor::separatorColor()},
        {u"controlAccentColor", NSColor::controlAccentColor()},
        {u"headerTextColor", NSColor::headerTextColor()},
        {u"labelColor", NSColor::labelColor()},
        {u"secondaryLabelColor", NSColor::secondaryLabelColor()},
        {u"tertiaryLabelColor", NSColor::tertiaryLabelColor()},
        {u"placeholderTextColor", NSColor::placeholderTextColor()},
        {u"selectedTextBackgroundColor", NSColor::selectedTextBackgroundColor()},
        {u"selectedContentBackgroundColor", NSColor::selectedContentBackgroundColor()},
        {u"unemphasizedSelectedContentBackgroundColor",
         NSColor::unemphasizedSelectedContentBackgroundColor()},
    };
    return colors;
}

/// The light of a color over a background, from 0 to 1, as contrast is reckoned.
double luminanceOver(const CGColorRef &color, const CGColorRef &background) {
    constexpr double weights[] = {0.2126, 0.7152, 0.0722};
    const double alpha = CGColorGetAlpha(color);
    double luminance = 0;
    for (std::size_t index = 0; index < 3; ++index) {
        const double value = CGColorGetComponents(color)[index] * alpha +
                             CGColorGetComponents(background)[index] * (1 - alpha);
        luminance +=
            weights[index] * (value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4));
    }
    return luminance;
}

double contrast(const Color &text, const Color &background) {
    const CGColorRef below = background->CGColor();
    const double a = luminanceOver(text->CGColor(), below), b = luminanceOver(below, below);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

Color read(const Color &color) { return test::throughArchive(std::const_pointer_cast<NSColor>(color)); }

} // namespace

TEST_F(NSAppearanceTest, ThereIsOneForEachName) {
    const auto light = NSAppearance::appearanceNamed(NSAppearanceNameAqua);
    const auto dark = NSAppearance::appearanceNamed(NSAppearanceNameDarkAqua);
    ASSERT_TRUE(light && dark);
    EXPECT_FALSE(light->isDark());
    EXPECT_TRUE(dark->isDark());
    EXPECT_EQ(NSString(light->name()), u"NSAppearanceNameAqua");
    EXPECT_EQ(NSString(dark->name()), u"NSAppearanceNameDarkAqua");
    EXPECT_EQ(NSAppearance::appearanceNamed(NSAppearanceNameDarkAqua), dark);
    EXPECT_EQ(NSAppearance::appearanceNamed(u"Dark"), nullptr);
    EXPECT_EQ(NSAppearance::appearanceNamed(nullptr), nullptr);
}

TEST_F(NSAppearanceTest, AThreadsOwnStandsBeforeTheApplications) {
    const auto light = NSAppearance::appearanceNamed(NSAppearanceNameAqua);
    const auto dark = NSAppearance::appearanceNamed(NSAppearanceNameDarkAqua);
    EXPECT_EQ(NSAppearance::currentAppearance(), light);
    NSAppearance::setApplicationAppearance(dark);
    EXPECT_EQ(NSAppearance::currentAppearance(), dark);
    NSAppearance::setCurrentAppearance(light);
    EXPECT_EQ(NSAppearance::currentAppearance(), light);
    EXPECT_EQ(NSAppearance::applicationAppearance(), dark);
    std::shared_ptr<const NSAppearance> elsewhere;
    std::thread([&elsewhere] { elsewhere = NSAppearance::currentAppearance(); }).join();
    EXPECT_EQ(elsewhere, dark);
    NSAppearance::setCurrentAppearance(nullptr);
    EXPECT_EQ(NSAppearance::currentAppearance(), dark);
}

TEST_F(NSColorTest, ASystemColourAnswersByTheCurrentAppearance) {
    for (const auto &[name, color] : systemColors()) {
        NSAppearance::setCurrentAppearance(NSAppearance::appearanceNamed(NSAppearanceNameAqua));
        const CGColorRef light = color->CGColor();
        NSAppearance::setCurrentAppearance(NSAppearance::appearanceNamed(NSAppearanceNameDarkAqua));
        const CGColorRef dark = color->CGColor();
        ASSERT_TRUE(light && dark);
        EXPECT_FALSE(CFEqual(light, dark)) << NSString(name).UTF8String();
        EXPECT_EQ(color->catalogName(), NSString(name));
    }
}

TEST_F(NSColorTest, TextIsReadableInBothAppearances) {
    for (const char16_t *appearance : {NSAppearanceNameAqua, NSAppearanceNameDarkAqua}) {
        NSAppearance::setCurrentAppearance(NSAppearance::appearanceNamed(appearance));
        for (const Color &text :
             {NSColor::labelColor(), NSColor::headerTextColor(), NSColor::secondaryLabelColor()})
            EXPECT_GE(contrast(text, NSColor::windowBackgroundColor()), 4.5)
                << text->description().UTF8String();
        EXPECT_GE(contrast(NSColor::labelColor(), NSColor::selectedTextBackgroundColor()), 4.5);
        EXPECT_GE(contrast(NSColor::controlAccentColor(), NSColor::windowBackgroundColor()), 3);
    }
}

TEST_F(NSColorTest, AFixedColourKeepsItsCGColor) {
    const CGColorRef look = CGColorCreate(CGColorSpaceCreateDeviceGray(), {0.5, 1});
    EXPECT_EQ(NSColor::colorWithCGColor(look)->CGColor(), look);
    EXPECT_EQ(NSColor::colorWithCGColor(nullptr), nullptr);
    EXPECT_TRUE(NSColor::colorWithCGColor(look)->catalogName().isNull());
    EXPECT_TRUE(
        CFEqual(NSColor::blackColor()->CGColor(), CGColorCreate(CGColorSpaceCreateDeviceGray(), {0, 1})));
    EXPECT_TRUE(
        CFEqual(NSColor::whiteColor()->CGColor(), CGColorCreate(CGColorSpaceCreateDeviceGray(), {1, 1})));
    EXPECT_TRUE(
        CFEqual(NSColor::clearColor()->CGColor(), CGColorCreate(CGColorSpaceCreateDeviceGray(), {0, 0})));
}

TEST_F(NSColorTest, EqualsByLookOrByName) {
    EXPECT_TRUE(NSColor::blackColor()->isEqual(NSColor::colorWithWhite(0, 1).get()));
    EXPECT_EQ(NSColor::blackColor()->hash(), NSColor::colorWithWhite(0, 1)->hash());
    EXPECT_FALSE(NSColor::blackColor()->isEqual(NSColor::colorWithSRGBRed(0, 0, 0, 1).get()));
    EXPECT_EQ(NSColor::labelColor(), NSColor::labelColor());
    // Both look alike in the light appearance, and still are not the same.
    EXPECT_TRUE(CFEqual(NSColor::labelColor()->CGColor(), NSColor::headerTextColor()->CGColor()));
    EXPECT_FALSE(NSColor::labelColor()->isEqual(NSColor::headerTextColor().get()));
    EXPECT_FALSE(
        NSColor::labelColor()->isEqual(NSColor::colorWithCGColor(NSColor::labelColor()->CGColor()).get()));
}

TEST_F(NSColorTest, AnotherAlphaFixesASystemColour) {
    const Color color = NSColor::labelColor()->colorWithAlphaComponent(0.25);
    EXPECT_EQ(CGColorGetAlpha(color->CGColor()), 0.25);
    EXPECT_TRUE(color->catalogName().isNull());
}

TEST_F(NSColorTest, IsDescribedByNameOrLook) {
    EXPECT_EQ(NSColor::labelColor()->description(), u"<NSColor labelColor>");
    EXPECT_EQ(NSColor::whiteColor()->description(), u"<NSColor <CGColor kCGColorSpaceDeviceGray 1 1>>");
}

TEST_F(NSColorTest, AnArchiveKeepsTheSpaceOrTheName) {
    for (const auto &[name, color] : systemColors())
        EXPECT_EQ(read(color), color) << NSString(name).UTF8String();
    for (const Color &color :
         {NSColor::colorWithSRGBRed(1, 0.5, 0.25, 0.125), NSColor::colorWithWhite(0.5, 1),
          NSColor::colorWithCGColor(
              CGColorCreate(CGColorSpaceCreateWithName(kCGColorSpaceDisplayP3), {1, 2, -1, 0.5}))}) {
        const auto result = read(color);
        ASSERT_TRUE(result);
        EXPECT_TRUE(result->isEqual(color.get())) << result->description().UTF8String();
    }
}

TEST_F(NSColorTest, AForgedArchiveIsRefused) {
    using test::readForged;
    const auto components = [](const char16_t *space, std::vector<double> values) {
        return readForged<NSColor>([&](NSCoder &coder) {
            coder.encodeString(space, u"NSColorSpaceName");
            coder.encodeDoubles(values, u"NSComponents");
        });
    };
    EXPECT_TRUE(components(kCGColorSpaceSRGB, {1, 1, 1, 1}));
    EXPECT_FALSE(components(kCGColorSpaceSRGB, {1, 1, 1}));
    EXPECT_FALSE(components(kCGColorSpaceSRGB, std::vector<double>(100000, 1)));
    EXPECT_FALSE(components(kCGColorSpaceSRGB, {}));
    EXPECT_FALSE(components(u"kCGColorSpacePattern", {1}));
    EXPECT_FALSE(
        readForged<NSColor>([](NSCoder &coder) { coder.encodeString(u"paleColor", u"NSCatalogName"); }));
    EXPECT_FALSE(readForged<NSColor>([](NSCoder &) {}));
}
