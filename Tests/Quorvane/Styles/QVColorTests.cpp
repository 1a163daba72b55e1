#include "Quorvane/Styles/QVColor.h"

#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Recorders.h"

#include <cmath>
#include <gtest/gtest.h>
#include <thread>

using namespace quorvane;

namespace {

using Color = std::shared_ptr<const QVColor>;

CGColorSpaceRef sRGB() { return CGColorSpaceCreateWithName(kCGColorSpaceSRGB); }

Color deviceRGB(double red, double green, double blue, double alpha) {
    return QVColor::colorWithCGColor(CGColorCreate(CGColorSpaceCreateDeviceRGB(), {red, green, blue, alpha}));
}

void expectColor(const Color &color, const CGColorSpaceRef &space, std::initializer_list<double> expected) {
    ASSERT_TRUE(color);
    EXPECT_TRUE(CFEqual(CGColorGetColorSpace(color->CGColor()), space)) << color->description().UTF8String();
    const auto components = CGColorGetComponents(color->CGColor());
    ASSERT_EQ(components.size(), expected.size());
    for (std::size_t index = 0; index < expected.size(); ++index)
        EXPECT_NEAR(components[index], expected.begin()[index], 1e-12) << color->description().UTF8String();
}

} // namespace

TEST(QVColor, EachMakerHasItsSpace) {
    expectColor(QVColor::colorWithWhite(0.25, 0.5), CGColorSpaceCreateDeviceGray(), {0.25, 0.5});
    expectColor(QVColor::colorWithRed(0.1, 0.2, 0.3, 0.4), sRGB(), {0.1, 0.2, 0.3, 0.4});
    expectColor(QVColor::colorWithDisplayP3Red(0.1, 0.2, 0.3, 0.4),
                CGColorSpaceCreateWithName(kCGColorSpaceDisplayP3), {0.1, 0.2, 0.3, 0.4});
    expectColor(QVColor::colorWithHueSaturationBrightness(0.1, 0.5, 0.8, 0.4), sRGB(), {0.8, 0.64, 0.4, 0.4});
    expectColor(QVColor::colorWithHueSaturationLuminance(0.1, 0.5, 0.4, 0.7), sRGB(), {0.6, 0.44, 0.2, 0.7});
}

TEST(QVColor, ComponentsAreNotHeldToTheirRange) {
    expectColor(QVColor::colorWithRed(2, -1, 0, 3), sRGB(), {2, -1, 0, 3});
}

TEST(QVColor, WrapsACGColorAndNoNull) {
    const CGColorRef look = CGColorCreate(CGColorSpaceCreatePattern(), {0.5});
    EXPECT_EQ(QVColor::initWithCGColor(look)->CGColor(), look);
    EXPECT_EQ(QVColor::colorWithCGColor(look)->CGColor(), look);
    EXPECT_EQ(QVColor::initWithCGColor(nullptr), nullptr);
    EXPECT_EQ(QVColor::colorWithCGColor(nullptr), nullptr);
    EXPECT_EQ(QVColor::colorWithPlatformColor(nullptr), nullptr);
    EXPECT_EQ(QVColor::colorWithPlatformColor(NSColor::colorWithCGColor(look))->CGColor(), look);
}

TEST(QVColor, NamedGraysAreWhites) {
    const CGColorSpaceRef gray = CGColorSpaceCreateDeviceGray();
    expectColor(QVColor::whiteColor(), gray, {1, 1});
    expectColor(QVColor::blackColor(), gray, {0, 1});
    expectColor(QVColor::grayColor(), gray, {0.5, 1});
    expectColor(QVColor::lightGrayColor(), gray, {2.0 / 3, 1});
    expectColor(QVColor::darkGrayColor(), gray, {1.0 / 3, 1});
    expectColor(QVColor::clearColor(), gray, {0, 0});
}

TEST(QVColor, NamedColoursAreInSRGB) {
    expectColor(QVColor::redColor(), sRGB(), {1, 0, 0, 1});
    expectColor(QVColor::greenColor(), sRGB(), {0, 1, 0, 1});
    expectColor(QVColor::blueColor(), sRGB(), {0, 0, 1, 1});
    expectColor(QVColor::cyanColor(), sRGB(), {0, 1, 1, 1});
    expectColor(QVColor::magentaColor(), sRGB(), {1, 0, 1, 1});
    expectColor(QVColor::yellowColor(), sRGB(), {1, 1, 0, 1});
    expectColor(QVColor::orangeColor(), sRGB(), {1, 0.5, 0, 1});
    expectColor(QVColor::brownColor(), sRGB(), {0.6, 0.4, 0.2, 1});
    expectColor(QVColor::purpleColor(), sRGB(), {0.5, 0, 0.5, 1});
}

TEST(QVColor, AnotherAlphaKeepsSpaceAndComponents) {
    const Color color = QVColor::redColor()->colorWithAlphaComponent(0.25);
    expectColor(color, sRGB(), {1, 0, 0, 0.25});
    EXPECT_EQ(color->alphaComponent(), 0.25);
    expectColor(QVColor::whiteColor()->colorWithAlphaComponent(0.5), CGColorSpaceCreateDeviceGray(),
                {1, 0.5});
}

// Meant: themes' colours are in sRGB, and only what is in the device space is answered.
TEST(QVColor, AnSRGBColourDoesNotAnswerItsComponents) {
    double red = 7, green = 7, blue = 7, alpha = 7;
    EXPECT_FALSE(QVColor::redColor()->getRed(&red, &green, &blue, &alpha));
    EXPECT_FALSE(QVColor::redColor()->getHueSaturationBrightness(&red, &green, &blue, &alpha));
    EXPECT_FALSE(QVColor::redColor()->getHueSaturationLuminance(&red, &green, &blue, &alpha));
    EXPECT_FALSE(QVColor::redColor()->getWhite(&red, &alpha));
    EXPECT_FALSE(QVColor::whiteColor()->getRed(&red, &green, &blue, &alpha));
    EXPECT_EQ(std::vector({red, green, blue, alpha}), std::vector<double>(4, 7));
}

TEST(QVColor, ADeviceColourAnswersItsComponents) {
    double red = 7, green = 7, blue = 7, alpha = 7;
    EXPECT_TRUE(deviceRGB(0.1, 0.2, 0.3, 0.4)->getRed(&red, &green, &blue, &alpha));
    EXPECT_EQ(std::vector({red, green, blue, alpha}), std::vector({0.1, 0.2, 0.3, 0.4}));
    EXPECT_TRUE(deviceRGB(0.1, 0.2, 0.3, 0.4)->getRed(nullptr, nullptr, nullptr, nullptr));
    double white = 7;
    EXPECT_TRUE(QVColor::colorWithWhite(0.6, 0.7)->getWhite(&white, &alpha));
    EXPECT_EQ(white, 0.6);
    EXPECT_EQ(alpha, 0.7);
    EXPECT_TRUE(QVColor::colorWithWhite(0.6, 0.7)->getWhite(nullptr, nullptr));
}

TEST(QVColor, ADeviceColourAnswersHueAndSaturation) {
    double hue = 7, saturation = 7, third = 7, alpha = 7;
    EXPECT_TRUE(
        deviceRGB(0.8, 0.64, 0.4, 0.5)->getHueSaturationBrightness(&hue, &saturation, &third, &alpha));
    EXPECT_NEAR(hue, 0.1, 1e-12);
    EXPECT_NEAR(saturation, 0.5, 1e-12);
    EXPECT_EQ(third, 0.8);
    EXPECT_EQ(alpha, 0.5);
    EXPECT_TRUE(
        deviceRGB(0.6, 0.44, 0.2, 0.25)->getHueSaturationLuminance(&hue, &saturation, &third, &alpha));
    EXPECT_NEAR(hue, 0.1, 1e-12);
    EXPECT_NEAR(saturation, 0.5, 1e-12);
    EXPECT_NEAR(third, 0.4, 1e-12);
    EXPECT_EQ(alpha, 0.25);
    EXPECT_TRUE(deviceRGB(1, 0, 0, 1)->getHueSaturationBrightness(nullptr, nullptr, nullptr, nullptr));
    EXPECT_TRUE(deviceRGB(1, 0, 0, 1)->getHueSaturationLuminance(nullptr, nullptr, nullptr, nullptr));
}

TEST(QVColorInterpolation, GoesFromOneColourToTheOther) {
    const Color from = QVColor::colorWithRed(0, 1, 0.5, 1), to = QVColor::colorWithRed(1, 0, 0.5, 0);
    expectColor(from->colorByInterpolatingWithColor(to, 0), sRGB(), {0, 1, 0.5, 1});
    expectColor(from->colorByInterpolatingWithColor(to, 0.25), sRGB(), {0.25, 0.75, 0.5, 0.75});
    expectColor(from->colorByInterpolatingWithColor(to, 1), sRGB(), {1, 0, 0.5, 0});
}

TEST(QVColorInterpolation, TheFractionIsClamped) {
    const Color from = QVColor::colorWithWhite(0.2, 1), to = QVColor::colorWithWhite(0.4, 1);
    expectColor(from->colorByInterpolatingWithColor(to, -3), CGColorSpaceCreateDeviceGray(), {0.2, 1});
    expectColor(from->colorByInterpolatingWithColor(to, 3), CGColorSpaceCreateDeviceGray(), {0.4, 1});
}

// Meant: the other colour is converted to see whether it can be, but read as it was given. A true conversion
// of this red would have parts below zero.
TEST(QVColorInterpolation, ReadsTheOtherColoursUnconvertedComponents) {
    expectColor(
        QVColor::blackColor()->colorByInterpolatingWithColor(QVColor::colorWithRed(1, 0.5, 0, 0.25), 1),
        CGColorSpaceCreateDeviceGray(), {1, 0.5});
    expectColor(QVColor::colorWithRed(0, 0, 0, 1)
                    ->colorByInterpolatingWithColor(QVColor::colorWithDisplayP3Red(1, 0, 0, 1), 1),
                sRGB(), {1, 0, 0, 1});
    expectColor(deviceRGB(0, 0, 0, 1)->colorByInterpolatingWithColor(QVColor::redColor(), 0.5),
                CGColorSpaceCreateDeviceRGB(), {0.5, 0, 0, 1});
}

TEST(QVColorInterpolation, WhereTheOtherColourHasFewerComponentsItsOwnAreKept) {
    expectColor(QVColor::colorWithRed(0.5, 0.5, 0.75, 0.25)
                    ->colorByInterpolatingWithColor(QVColor::colorWithWhite(0.25, 1), 1),
                sRGB(), {0.25, 1, 0.75, 0.25});
}

TEST(QVColorInterpolation, ColoursThatCanNotBeMatchedGiveNull) {
    const Color pattern = QVColor::colorWithCGColor(CGColorCreate(CGColorSpaceCreatePattern(), {1}));
    EXPECT_EQ(QVColor::redColor()->colorByInterpolatingWithColor(pattern, 0.5), nullptr);
    EXPECT_EQ(pattern->colorByInterpolatingWithColor(QVColor::redColor(), 0.5), nullptr);
    expectColor(pattern->colorByInterpolatingWithColor(pattern->colorWithAlphaComponent(0), 0.5),
                CGColorSpaceCreatePattern(), {0.5});
}

TEST(QVColorInterpolation, WithNullIsAsserted) {
    test::AssertionRecorder assertions;
    EXPECT_EQ(QVColor::redColor()->colorByInterpolatingWithColor(nullptr, 0.5), nullptr);
    EXPECT_EQ(assertions.messages(),
              std::vector<NSString>{u"Invalid parameter not satisfying: color != nil"});
}

TEST(QVColor, ThePlatformColourIsMadeOnceAndKept) {
    const Color color = QVColor::redColor();
    std::vector<const NSColor *> seen(4);
    std::vector<std::thread> threads;
    for (auto &entry : seen)
        threads.emplace_back([&entry, &color] { entry = color->platformColor().get(); });
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(seen, std::vector(4, color->platformColor().get()));
    EXPECT_EQ(color->platformColor()->CGColor(), color->CGColor());
}

TEST(QVColor, ASystemColourIsTakenAsItLooksNow) {
    const Color color = QVColor::colorWithPlatformColor(NSColor::labelColor());
    EXPECT_TRUE(CFEqual(color->CGColor(), NSColor::labelColor()->CGColor()));
    EXPECT_TRUE(color->platformColor()->catalogName().isNull());
}

TEST(QVColor, EqualsByItsCGColor) {
    EXPECT_TRUE(QVColor::redColor()->isEqual(QVColor::colorWithRed(1, 0, 0, 1).get()));
    EXPECT_EQ(QVColor::redColor()->hash(), QVColor::colorWithRed(1, 0, 0, 1)->hash());
    EXPECT_EQ(QVColor::redColor()->hash(), CFHash(QVColor::redColor()->CGColor()));
    EXPECT_FALSE(QVColor::redColor()->isEqual(deviceRGB(1, 0, 0, 1).get()));
    EXPECT_FALSE(QVColor::redColor()->isEqual(QVColor::redColor()->CGColor().get()));
    EXPECT_FALSE(QVColor::redColor()->isEqual(nullptr));
}

TEST(QVColor, ACopyIsTheSameInstance) {
    const Color color = QVColor::redColor();
    EXPECT_EQ(color->copy(), color);
}

TEST(QVColor, IsDescribedWithItsCGColor) {
    const Color color = QVColor::redColor();
    EXPECT_EQ(color->description(),
              NSString::stringWithFormat(u"<QVColor: %p : <CGColor kCGColorSpaceSRGB 1 0 0 1>>",
                                         static_cast<const void *>(color.get())));
}

TEST(QVColorArchive, WritesModelAndComponents) {
    EXPECT_EQ(test::archivedKeys(*QVColor::redColor()),
              (std::vector<std::string>{"QVColorSpaceModel: integer", "QVComponents: doubles"}));
}

TEST(QVColorArchive, ColoursComeBackInTheDeviceSpaces) {
    const auto read = [](const Color &color) {
        return test::throughArchive(std::const_pointer_cast<QVColor>(color));
    };
    expectColor(read(QVColor::colorWithRed(0.1, 0.2, 0.3, 0.4)), CGColorSpaceCreateDeviceRGB(),
                {0.1, 0.2, 0.3, 0.4});
    expectColor(read(QVColor::colorWithDisplayP3Red(1, 2, -3, 0.4)), CGColorSpaceCreateDeviceRGB(),
                {1, 2, -3, 0.4});
    expectColor(read(QVColor::colorWithWhite(0.25, 0.75)), CGColorSpaceCreateDeviceGray(), {0.25, 0.75});
}

TEST(QVColorArchive, OtherModelsDoNotComeBack) {
    const auto pattern = QVColor::colorWithCGColor(CGColorCreate(CGColorSpaceCreatePattern(), {1}));
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVColor>(
                  NSKeyedArchiver::archivedDataWithRootObject(pattern)),
              nullptr);
}

TEST(QVColorArchive, AForgedArchiveIsReadNoFurtherThanItGoes) {
    const auto read = [](NSInteger model, std::vector<double> components) {
        return test::readForged<QVColor>([&](NSCoder &coder) {
            coder.encodeInteger(model, u"QVColorSpaceModel");
            coder.encodeDoubles(components, u"QVComponents");
        });
    };
    EXPECT_EQ(read(1, {1, 1, 1}), nullptr);
    EXPECT_EQ(read(0, {1}), nullptr);
    EXPECT_EQ(read(0, {}), nullptr);
    for (const NSInteger model : {-1, 2, 6, 1000})
        EXPECT_EQ(read(model, {1, 1, 1, 1, 1}), nullptr) << model;
    expectColor(read(0, {0.5, 0.25, 9, 9, 9}), CGColorSpaceCreateDeviceGray(), {0.5, 0.25});
    expectColor(read(1, std::vector<double>(1000, 0.5)), CGColorSpaceCreateDeviceRGB(), {0.5, 0.5, 0.5, 0.5});
    EXPECT_EQ(test::readForged<QVColor>([](NSCoder &) {}), nullptr);
    EXPECT_EQ(test::readForged<QVColor>([](NSCoder &coder) {
                  coder.encodeStrings(std::vector<NSString>{u"1", u"1"}, u"QVComponents");
              }),
              nullptr);
}
