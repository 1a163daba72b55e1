#include "Quorvane/Styles/QVGradient.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>
#include <limits>
#include <thread>

using namespace quorvane;

namespace {

using Color = std::shared_ptr<const QVColor>;
using Gradient = std::shared_ptr<const QVGradient>;

CGColorSpaceRef sRGB() { return CGColorSpaceCreateWithName(kCGColorSpaceSRGB); }

/// The stops as "location: components" lines.
std::string drawing(const Gradient &gradient) {
    if (!gradient)
        return "null";
    std::string text;
    const auto append = [&text](const char *format, double number) {
        char digits[32];
        std::snprintf(digits, sizeof digits, format, number);
        text += digits;
    };
    for (NSUInteger index = 0; index < gradient->numberOfColorStops(); ++index) {
        Color color;
        double location = 0;
        gradient->getColor(&color, &location, index);
        append("%.4g:", location);
        for (const double component : CGColorGetComponents(color->CGColor()))
            append(" %.4g", component);
        text += "\n";
    }
    return text;
}

std::string mixed(const Gradient &gradient, double location) {
    const Color color = gradient->interpolatedColorAtLocation(location);
    if (!color)
        return "null";
    std::string text;
    for (const double component : CGColorGetComponents(color->CGColor())) {
        char digits[32];
        std::snprintf(digits, sizeof digits, text.empty() ? "%.4g" : " %.4g", component);
        text += digits;
    }
    return text;
}

} // namespace

TEST(QVGradient, TwoColoursStandAtItsEnds) {
    const Gradient gradient =
        QVGradient::gradientWithStartingColor(QVColor::redColor(), QVColor::blueColor());
    EXPECT_EQ(drawing(gradient), "0: 1 0 0 1\n1: 0 0 1 1\n");
    EXPECT_TRUE(CFEqual(gradient->colorSpace(), CGColorSpaceCreateDeviceRGB()));
    EXPECT_EQ(QVGradient::gradientWithStartingColor(nullptr, QVColor::blueColor()), nullptr);
    EXPECT_EQ(QVGradient::gradientWithStartingColor(QVColor::blueColor(), nullptr), nullptr);
}

TEST(QVGradient, ColoursAreSpacedEvenly) {
    EXPECT_EQ(drawing(QVGradient::gradientWithColors({QVColor::redColor(), QVColor::greenColor(),
                                                      QVColor::blueColor(), QVColor::whiteColor(),
                                                      QVColor::blackColor()})),
              "0: 1 0 0 1\n0.25: 0 1 0 1\n0.5: 0 0 1 1\n0.75: 1 1\n1: 0 1\n");
}

TEST(QVGradient, ASingleColourIsDoubled) {
    const Gradient gradient = QVGradient::gradientWithColors({QVColor::redColor()});
    EXPECT_EQ(drawing(gradient), "0: 1 0 0 1\n1: 1 0 0 1\n");
    EXPECT_TRUE(CFEqual(gradient->colorSpace(), CGColorSpaceCreateDeviceRGB()));
}

TEST(QVGradient, NoColoursMakeNoGradient) {
    EXPECT_EQ(QVGradient::gradientWithColors({}), nullptr);
    const double location = 0;
    EXPECT_EQ(QVGradient::initWithColors(std::vector<Color>(), &location, sRGB()), nullptr);
}

TEST(QVGradient, PairsEndAtTheFirstNullColour) {
    EXPECT_EQ(drawing(QVGradient::gradientWithColorsAndLocations({{QVColor::redColor(), 0.75},
                                                                  {QVColor::blueColor(), -2},
                                                                  {nullptr, 0},
                                                                  {QVColor::redColor(), 1}})),
              "0.75: 1 0 0 1\n-2: 0 0 1 1\n");
    EXPECT_EQ(QVGradient::gradientWithColorsAndLocations({{QVColor::redColor(), 0.5}}), nullptr);
    EXPECT_EQ(QVGradient::gradientWithColorsAndLocations({{QVColor::redColor(), 0.5}, {nullptr, 1}}),
              nullptr);
    EXPECT_EQ(QVGradient::gradientWithColorsAndLocations({}), nullptr);
}

TEST(QVGradient, KeepsTheSpaceThatItIsMadeWith) {
    const double locations[] = {0.5, 0.25};
    const Gradient gradient =
        QVGradient::initWithColors(std::vector{QVColor::redColor(), QVColor::blueColor()}, locations, sRGB());
    EXPECT_EQ(drawing(gradient), "0.5: 1 0 0 1\n0.25: 0 0 1 1\n");
    EXPECT_TRUE(CFEqual(gradient->colorSpace(), sRGB()));
}

TEST(QVGradient, PlainOneIsTwoBlackStopsAtZero) {
    EXPECT_EQ(drawing(QVGradient::init()), "0: 0 1\n0: 0 1\n");
}

TEST(QVGradient, MissingArgumentsAreAsserted) {
    const double location = 0;
    const std::vector colors{QVColor::redColor()};
    const auto messages = [](auto &&make) {
        const test::AssertionRecorder assertions;
        EXPECT_EQ(make(), nullptr);
        return assertions.messages();
    };
    EXPECT_EQ(messages([&] { return QVGradient::initWithColors(std::nullopt, &location, sRGB()); }),
              std::vector<NSString>{u"Invalid parameter not satisfying: colors != nil"});
    EXPECT_EQ(
        messages([&] { return QVGradient::initWithColors(std::vector<Color>{nullptr}, &location, sRGB()); }),
        std::vector<NSString>{u"Invalid parameter not satisfying: colors != nil"});
    EXPECT_EQ(messages([&] { return QVGradient::initWithColors(colors, nullptr, sRGB()); }),
              std::vector<NSString>{u"Invalid parameter not satisfying: locations != NULL"});
    EXPECT_EQ(messages([&] { return QVGradient::initWithColors(colors, &location, nullptr); }),
              std::vector<NSString>{u"Invalid parameter not satisfying: colorSpace != NULL"});
}

TEST(QVGradient, EitherPartOfAStopMayBeUnwanted) {
    const Gradient gradient =
        QVGradient::gradientWithStartingColor(QVColor::redColor(), QVColor::blueColor());
    Color color;
    double location = 7;
    gradient->getColor(&color, nullptr, 1);
    EXPECT_TRUE(color->isEqual(QVColor::blueColor().get()));
    gradient->getColor(nullptr, &location, 1);
    EXPECT_EQ(location, 1);
    gradient->getColor(nullptr, nullptr, 0);
    EXPECT_THROW(gradient->getColor(&color, &location, 2), NSException);
}

TEST(QVGradient, TakesThePlatformsStopsAndSpace) {
    const auto platform =
        NSGradient::initWithColors({NSColor::whiteColor(), NSColor::colorWithSRGBRed(1, 0, 0, 1)},
                                   {0.25, 0.5}, NSColorSpace::initWithCGColorSpace(sRGB()));
    const Gradient gradient = QVGradient::gradientWithPlatformGradient(platform);
    EXPECT_EQ(drawing(gradient), "0.25: 1 1\n0.5: 1 0 0 1\n");
    EXPECT_TRUE(CFEqual(gradient->colorSpace(), sRGB()));
}

TEST(QVGradient, APlatformGradientWithoutASpaceIsNone) {
    EXPECT_EQ(QVGradient::gradientWithPlatformGradient(nullptr), nullptr);
    for (const auto &space :
         {std::shared_ptr<const NSColorSpace>(), std::make_shared<const NSColorSpace>(nullptr)})
        EXPECT_EQ(QVGradient::gradientWithPlatformGradient(
                      NSGradient::initWithColors({NSColor::whiteColor()}, {0}, space)),
                  nullptr);
}

TEST(QVGradient, GivesThePlatformItsStopsAndSpace) {
    const Gradient gradient = QVGradient::gradientWithColorsAndLocations(
        {{QVColor::redColor(), 0.25}, {QVColor::whiteColor(), 0.5}});
    const auto platform = gradient->platformGradient();
    ASSERT_TRUE(platform);
    ASSERT_EQ(platform->numberOfColorStops(), 2u);
    EXPECT_TRUE(CFEqual(platform->colorSpace()->CGColorSpace(), CGColorSpaceCreateDeviceRGB()));
    std::shared_ptr<const NSColor> color;
    double location = 7;
    platform->getColor(&color, &location, 1);
    EXPECT_TRUE(color->isEqual(NSColor::whiteColor().get()));
    EXPECT_EQ(location, 0.5);
    EXPECT_THROW(platform->getColor(&color, &location, 2), NSException);
}

TEST(QVGradient, ASpaceThatCanNotBeWrappedGivesNoPlatformGradient) {
    const double locations[] = {0};
    EXPECT_EQ(
        QVGradient::initWithColors(std::vector{QVColor::redColor()}, locations, CGColorSpaceCreatePattern())
            ->platformGradient(),
        nullptr);
}

TEST(QVGradient, TheCGGradientIsMadeOnceAndKept) {
    const Gradient gradient = QVGradient::gradientWithColorsAndLocations(
        {{QVColor::redColor(), 0.25}, {QVColor::whiteColor(), 0.5}});
    std::vector<const CGGradientObject *> seen(4);
    std::vector<std::thread> threads;
    for (auto &entry : seen)
        threads.emplace_back([&entry, &gradient] { entry = gradient->CGGradient().get(); });
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(seen, std::vector(4, gradient->CGGradient().get()));
    const auto &stops = gradient->CGGradient()->stops();
    ASSERT_EQ(stops.size(), 2u);
    EXPECT_EQ(stops[1].location, 0.5);
    EXPECT_TRUE(CFEqual(stops[1].color, CGColorCreate(CGColorSpaceCreateDeviceRGB(), {1, 1, 1, 1})));
}

TEST(QVGradientInterpolation, MixesTheNeighbouringStops) {
    const Gradient gradient = QVGradient::gradientWithColors(
        {QVColor::redColor(), QVColor::greenColor(), QVColor::colorWithRed(0, 0, 1, 0)});
    EXPECT_EQ(mixed(gradient, 0), "1 0 0 1");
    EXPECT_EQ(mixed(gradient, 0.125), "0.75 0.25 0 1");
    EXPECT_EQ(mixed(gradient, 0.5), "0 1 0 1");
    EXPECT_EQ(mixed(gradient, 0.75), "0 0.5 0.5 0.5");
    EXPECT_EQ(mixed(gradient, 1), "0 0 1 0");
}

TEST(QVGradientInterpolation, ThereIsNothingBeforeTheFirstStopAndBehindTheLast) {
    const Gradient gradient = QVGradient::gradientWithColorsAndLocations(
        {{QVColor::redColor(), 0.25}, {QVColor::blueColor(), 0.75}});
    EXPECT_EQ(mixed(gradient, 0.2), "null");
    EXPECT_EQ(mixed(gradient, 0.25), "1 0 0 1");
    EXPECT_EQ(mixed(gradient, 0.5), "0.5 0 0.5 1");
    EXPECT_EQ(mixed(gradient, 0.75), "0 0 1 1");
    EXPECT_EQ(mixed(gradient, 0.8), "null");
}

TEST(QVGradientInterpolation, OfTwoStopsAtOnePlaceTheLastIsTaken) {
    const Gradient gradient = QVGradient::gradientWithColorsAndLocations({{QVColor::redColor(), 0},
                                                                          {QVColor::greenColor(), 0.5},
                                                                          {QVColor::blueColor(), 0.5},
                                                                          {QVColor::redColor(), 1}});
    EXPECT_EQ(mixed(gradient, 0.25), "0.5 0.5 0 1");
    EXPECT_EQ(mixed(gradient, 0.5), "0 0 1 1");
    EXPECT_EQ(mixed(gradient, 0.75), "0.5 0 0.5 1");
}

TEST(QVGradientInterpolation, StopsAreTakenInTheirOwnOrder) {
    const Gradient gradient = QVGradient::gradientWithColorsAndLocations(
        {{QVColor::redColor(), 1}, {QVColor::greenColor(), 0}, {QVColor::blueColor(), 0.5}});
    // The last at or before 0.75 is blue at 0.5, the first at or after it red at 1.
    EXPECT_EQ(mixed(gradient, 0.75), "0.5 0 0.5 1");
    // The last at or before 0.25 is green at 0, the first at or after it still red at 1.
    EXPECT_EQ(mixed(gradient, 0.25), "0.25 0.75 0 1");
}

TEST(QVGradientInterpolation, ColoursThatCanNotBeMixedGiveNull) {
    const Color pattern = QVColor::colorWithCGColor(CGColorCreate(CGColorSpaceCreatePattern(), {1}));
    const Gradient gradient = QVGradient::gradientWithColors({QVColor::redColor(), pattern});
    EXPECT_EQ(mixed(gradient, 0.5), "null");
    EXPECT_EQ(gradient->CGGradient(), nullptr);
}

TEST(QVGradientInterpolation, ALocationOutsideOfZeroToOneIsAsserted) {
    const Gradient gradient = QVGradient::init();
    for (const double location : {-0.25, 1.25, std::numeric_limits<double>::quiet_NaN()}) {
        const test::AssertionRecorder assertions;
        EXPECT_EQ(gradient->interpolatedColorAtLocation(location), nullptr);
        EXPECT_EQ(
            assertions.messages(),
            std::vector<NSString>{u"Invalid parameter not satisfying: location >= 0.0 && location <= 1.0"});
    }
}

TEST(QVGradient, ACopyIsTheSameInstance) {
    const Gradient gradient = QVGradient::init();
    EXPECT_EQ(gradient->copy(), gradient);
}

TEST(QVGradientArchive, KeepsTheStopsAndLosesTheSpace) {
    const Gradient gradient =
        QVGradient::gradientWithColorsAndLocations({{QVColor::redColor(), 0.25}, {QVColor::whiteColor(), 7}});
    EXPECT_EQ(test::archivedKeys(*gradient),
              (std::vector<std::string>{"QVColors: array", "QVLocations: doubles"}));
    const Gradient read = test::throughArchive(std::const_pointer_cast<QVGradient>(gradient));
    EXPECT_EQ(drawing(read), "0.25: 1 0 0 1\n7: 1 1\n");
    EXPECT_EQ(read->colorSpace(), nullptr);
    EXPECT_EQ(read->platformGradient(), nullptr);
    // Drawn in the device space all the same.
    ASSERT_TRUE(read->CGGradient());
    EXPECT_TRUE(CFEqual(read->CGGradient()->space(), CGColorSpaceCreateDeviceRGB()));
}

TEST(QVGradientArchive, AForgedArchiveWithoutAMatchingStopListIsRefused) {
    const auto read = [](std::optional<std::vector<Color>> colors,
                         std::optional<std::vector<double>> locations) {
        return test::readForged<QVGradient>([&](NSCoder &coder) {
            coder.encodeArray(colors, u"QVColors");
            coder.encodeDoubles(locations, u"QVLocations");
        });
    };
    const Color red = QVColor::redColor();
    EXPECT_NE(read({{red, red}}, {{0, 1}}), nullptr);
    EXPECT_EQ(read({{red, red}}, {{0}}), nullptr);
    EXPECT_EQ(read({{red}}, {{0, 1}}), nullptr);
    EXPECT_EQ(read(std::vector<Color>(), std::vector<double>()), nullptr);
    EXPECT_EQ(read(std::nullopt, {{0, 1}}), nullptr);
    EXPECT_EQ(read({{red, red}}, std::nullopt), nullptr);
    EXPECT_EQ(test::readForged<QVGradient>([](NSCoder &coder) {
                  coder.encodeStrings(std::vector<NSString>{u"red", u"blue"}, u"QVColors");
                  coder.encodeDoubles(std::vector<double>{0, 1}, u"QVLocations");
              }),
              nullptr);
}
