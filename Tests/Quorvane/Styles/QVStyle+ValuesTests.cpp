#include "Quorvane/Styles/QVStyle.h"

#include "Quorvane/Styles/QVGradient.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

using Components = std::optional<std::vector<NSString>>;
using Arguments = std::vector<NSString>;

Components components(const NSString &value) { return QVStyle::componentsForCSSValue(value); }
Arguments arguments(const NSString &value) { return QVStyle::argumentsForCSSFunction(value); }

std::vector<double> locationsOf(const QVGradient &gradient) {
    std::vector<double> locations;
    for (NSUInteger index = 0; index < gradient.numberOfColorStops(); ++index) {
        double location = -1;
        gradient.getColor(nullptr, &location, index);
        locations.push_back(location);
    }
    return locations;
}

bool hasColor(const QVGradient &gradient, NSUInteger index, const NSString &value) {
    std::shared_ptr<const QVColor> color;
    gradient.getColor(&color, nullptr, index);
    return color && color->isEqual(QVStyle::colorWithCSSValue(value).get());
}

} // namespace

TEST(QVStyleComponents, AreWordsBetweenWhiteSpaceAndCommas) {
    EXPECT_EQ(components(u"red"), (Components{{u"red"}}));
    EXPECT_EQ(components(u"1px -2.5px\n#abc\t50%"), (Components{{u"1px", u"-2.5px", u"#abc", u"50%"}}));
    EXPECT_EQ(components(u"red,blue, green"), (Components{{u"red", u"blue", u"green"}}));
    EXPECT_EQ(components(u"größe 𝒳٣"), (Components{{u"größe", u"𝒳٣"}}));
}

TEST(QVStyleComponents, WhiteSpaceAroundThemDoesNotCount) {
    EXPECT_EQ(components(u" \n red \n"), (Components{{u"red"}}));
    EXPECT_EQ(components(u"rgb(1,2,3)\n"), (Components{{u"rgb(1,2,3)"}}));
}

TEST(QVStyleComponents, AnEmptyValueHasNone) {
    EXPECT_EQ(components(u""), std::nullopt);
    EXPECT_EQ(components(u" \n"), std::nullopt);
    EXPECT_EQ(components(nullptr), std::nullopt);
}

TEST(QVStyleComponents, ACommaAtTheEndIsNoComponent) {
    EXPECT_EQ(components(u"red,"), (Components{{u"red"}}));
}

TEST(QVStyleComponents, BehindACommaAComponentMustFollow) {
    EXPECT_EQ(components(u"red, "), std::nullopt);
    EXPECT_EQ(components(u"red,,blue"), std::nullopt);
    EXPECT_EQ(components(u",red"), std::nullopt);
}

// White space ends a component, so the comma behind it would begin one.
TEST(QVStyleComponents, ACommaMustFollowItsWordAtOnce) { EXPECT_EQ(components(u"red , blue"), std::nullopt); }

TEST(QVStyleComponents, AnyOtherCharacterMakesTheWholeValueInvalid) {
    EXPECT_EQ(components(u"red !important"), std::nullopt);
    EXPECT_EQ(components(u"+1px"), std::nullopt);
    EXPECT_EQ(components(u"red;"), std::nullopt);
    EXPECT_EQ(components(u"a_b"), std::nullopt);
    EXPECT_EQ(components(u"red ("), std::nullopt);
    EXPECT_EQ(components(u"red)"), std::nullopt);
}

TEST(QVStyleComponents, AFunctionIsOneComponent) {
    EXPECT_EQ(components(u"rgb(1, 2, 3)"), (Components{{u"rgb(1, 2, 3)"}}));
    EXPECT_EQ(components(u"linear-gradient(rgb(1,2,3), blue), red"),
              (Components{{u"linear-gradient(rgb(1,2,3), blue)", u"red"}}));
    EXPECT_EQ(components(u"a(b(c(d)e)f), g"), (Components{{u"a(b(c(d)e)f)", u"g"}}));
    EXPECT_EQ(components(u"a()"), (Components{{u"a()"}}));
}

TEST(QVStyleComponents, BehindAFunctionOnlyACommaOrTheEndMayStand) {
    EXPECT_EQ(components(u"rgb(1,2,3) 1px"), std::nullopt);
    EXPECT_EQ(components(u"rgb(1,2,3)1px"), std::nullopt);
    EXPECT_EQ(components(u"1px rgb(1,2,3)"), (Components{{u"1px", u"rgb(1,2,3)"}}));
    EXPECT_EQ(components(u"rgb(1,2,3), 1px"), (Components{{u"rgb(1,2,3)", u"1px"}}));
    EXPECT_EQ(components(u"rgb(1,2,3) , 1px"), (Components{{u"rgb(1,2,3)", u"1px"}}));
}

TEST(QVStyleComponents, AFunctionThatIsLeftOpenReachesToTheEnd) {
    EXPECT_EQ(components(u"rgb(1,2"), (Components{{u"rgb(1,2"}}));
    EXPECT_EQ(components(u"a(b(c) "), (Components{{u"a(b(c)"}}));
}

TEST(QVStyleComponents, StringsKeepTheirQuotes) {
    EXPECT_EQ(components(u"\"Day and Night\""), (Components{{u"\"Day and Night\""}}));
    EXPECT_EQ(components(u"'a \"b\", c;' d"), (Components{{u"'a \"b\", c;'", u"d"}}));
    EXPECT_EQ(components(u"\"\""), (Components{{u"\"\""}}));
    EXPECT_EQ(components(u"\"a\"'b'c"), (Components{{u"\"a\"", u"'b'", u"c"}}));
}

TEST(QVStyleComponents, BehindAStringNoCommaMayStand) { EXPECT_EQ(components(u"\"a\", b"), std::nullopt); }

// Unlike behind a word or a function, where white space is passed over together with it.
TEST(QVStyleComponents, WhiteSpaceBehindALastStringMakesTheValueInvalid) {
    EXPECT_EQ(components(u"\"a\"\n"), std::nullopt);
    EXPECT_EQ(components(u"b 'a' "), std::nullopt);
}

TEST(QVStyleComponents, AStringThatIsLeftOpenIsDropped) {
    EXPECT_EQ(components(u"red \"blue"), (Components{{u"red"}}));
    EXPECT_EQ(components(u"'"), Components{Arguments{}});
}

// What stands behind a backslash is copied and then seen once more: so it does not protect a quote, and other
// characters come twice. Both are meant to stay.
TEST(QVStyleComponents, ABackslashDoesNotKeepAQuoteFromEndingTheString) {
    EXPECT_EQ(components(u"\"a\\\" b"), (Components{{u"\"a\\\"\"", u"b"}}));
    EXPECT_EQ(components(u"'a\\' b"), (Components{{u"'a\\''", u"b"}}));
    EXPECT_EQ(components(u"\"a\\nb\""), (Components{{u"\"a\\nnb\""}}));
    EXPECT_EQ(components(u"\"a\\'b\""), (Components{{u"\"a\\''b\""}}));
    EXPECT_EQ(components(u"\"a\\\\b\""), (Components{{u"\"a\\\\\\bb\""}}));
}

TEST(QVStyleComponents, AValueThatEndsBehindABackslashIsInvalid) {
    EXPECT_EQ(components(u"red \"a\\"), std::nullopt);
}

TEST(QVStyleArguments, StandBetweenCommas) {
    EXPECT_EQ(arguments(u"red, #00ff00 ,blue"), (Arguments{u"red", u"#00ff00", u"blue"}));
    EXPECT_EQ(arguments(u""), Arguments{});
    EXPECT_EQ(arguments(nullptr), Arguments{});
    EXPECT_EQ(arguments(u" \n"), Arguments{});
    EXPECT_EQ(arguments(u"red,"), Arguments{u"red"});
    EXPECT_EQ(arguments(u" red , "), Arguments{u"red"});
}

TEST(QVStyleArguments, HaveTwoWordsAtMost) {
    EXPECT_EQ(arguments(u"red  50%, a b c, to\nright"), (Arguments{u"red 50%", u"to right"}));
    EXPECT_EQ(arguments(u"a b c"), Arguments{});
}

TEST(QVStyleArguments, MayBeFunctionsWithTheirOwnCommas) {
    EXPECT_EQ(arguments(u"rgb(1, 2, 3), f(g(1),2) ,c"), (Arguments{u"rgb(1, 2, 3)", u"f(g(1),2)", u"c"}));
    EXPECT_EQ(arguments(u"rgb (1,2)"), Arguments{u"rgb (1,2)"});
    EXPECT_EQ(arguments(u"rgb(1,2"), Arguments{u"rgb(1,2"});
    // A word may not follow a function.
    EXPECT_EQ(arguments(u"rgb(1,2,3) 50%, red"), Arguments{u"red"});
}

TEST(QVStyleArguments, WhatIsNoArgumentIsDropped) {
    EXPECT_EQ(arguments(u"!, red"), Arguments{u"red"});
    EXPECT_EQ(arguments(u"red !, blue"), Arguments{u"blue"});
    EXPECT_EQ(arguments(u"red, \"a\""), Arguments{u"red"});
}

TEST(QVStyleArguments, AnEmptyOneEndsTheList) {
    EXPECT_EQ(arguments(u"red,,blue"), Arguments{u"red"});
    EXPECT_EQ(arguments(u", blue"), Arguments{});
}

TEST(QVStyleStrings, LoseOneLevelOfTheSameQuotes) {
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"\"a b\""), u"a b");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"'a b'"), u"a b");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"''a''"), u"'a'");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"\"\""), u"");
}

TEST(QVStyleStrings, WithoutMatchingQuotesTheyStay) {
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"a"), u"a");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"\"a'"), u"\"a'");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"\"a"), u"\"a");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"a\""), u"a\"");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"\""), u"\"");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u"aba"), u"aba");
    EXPECT_EQ(QVStyle::stringWithCSSValue(u""), u"");
    EXPECT_EQ(QVStyle::stringWithCSSValue(nullptr), NSString());
}

TEST(QVStyleGradients, SpaceTheirColoursEvenly) {
    const auto gradient = QVStyle::gradientWithCSSValue(u"linear-gradient(red, rgb(0,255,0), #00f)");
    ASSERT_TRUE(gradient);
    EXPECT_EQ(locationsOf(*gradient), (std::vector<double>{0, 0.5, 1}));
    EXPECT_TRUE(hasColor(*gradient, 0, u"red"));
    EXPECT_TRUE(hasColor(*gradient, 1, u"lime"));
    EXPECT_TRUE(hasColor(*gradient, 2, u"blue"));
}

TEST(QVStyleGradients, WhatIsNoColourIsLeftOut) {
    const auto gradient = QVStyle::gradientWithCSSValue(u"linear-gradient(red, 10px, blue)");
    ASSERT_TRUE(gradient);
    EXPECT_EQ(locationsOf(*gradient), (std::vector<double>{0, 1}));
    EXPECT_TRUE(hasColor(*gradient, 1, u"blue"));
    const auto directed = QVStyle::gradientWithCSSValue(u"linear-gradient(to right, red, lime 50%, blue)");
    ASSERT_TRUE(directed);
    EXPECT_EQ(locationsOf(*directed), (std::vector<double>{0, 1}));
}

TEST(QVStyleGradients, OneColourStandsAtBothEnds) {
    const auto gradient = QVStyle::gradientWithCSSValue(u"linear-gradient(red)");
    ASSERT_TRUE(gradient);
    EXPECT_EQ(locationsOf(*gradient), (std::vector<double>{0, 1}));
    EXPECT_TRUE(hasColor(*gradient, 1, u"red"));
}

TEST(QVStyleGradients, WithoutAColourThereIsNone) {
    EXPECT_EQ(QVStyle::gradientWithCSSValue(u"linear-gradient()"), nullptr);
    EXPECT_EQ(QVStyle::gradientWithCSSValue(u"linear-gradient(10px)"), nullptr);
}

TEST(QVStyleGradients, MustBeWrittenWhole) {
    EXPECT_EQ(QVStyle::gradientWithCSSValue(u"red"), nullptr);
    EXPECT_EQ(QVStyle::gradientWithCSSValue(u"linear-gradient(red"), nullptr);
    EXPECT_EQ(QVStyle::gradientWithCSSValue(u" linear-gradient(red)"), nullptr);
    EXPECT_EQ(QVStyle::gradientWithCSSValue(u"linear-gradient (red)"), nullptr);
    EXPECT_EQ(QVStyle::gradientWithCSSValue(u"radial-gradient(red)"), nullptr);
    EXPECT_EQ(QVStyle::gradientWithCSSValue(u"linear-gradient("), nullptr);
    EXPECT_EQ(QVStyle::gradientWithCSSValue(nullptr), nullptr);
}

TEST(QVStyle, WeightsOfStyleSheetsHaveTheirPlatformWeights) {
    const std::map<NSInteger, double> weights{{100, -1.0}, {200, -0.6}, {300, -0.3}, {400, 0.0}, {500, 0.2},
                                              {600, 0.4},  {700, 0.6},  {800, 0.8},  {900, 1.0}, {0, 0.0},
                                              {-100, 0.0}, {350, 0.0},  {1000, 0.0}};
    for (const auto &[weight, platformWeight] : weights)
        EXPECT_EQ(QVStyle::CSSFontWeightToCTFontWeight(weight), platformWeight) << weight;
}
