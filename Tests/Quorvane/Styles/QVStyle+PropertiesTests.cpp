#include "Quorvane/Styles/QVStyle.h"

#include "Platform/AppKit/NSShadow.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/Styles/QVGradient.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

std::shared_ptr<QVStyle> styleWith(QVStyle::Properties properties) {
    return QVStyle::styleWithSelector(QVSimpleSelector::simpleSelectorWithString(u"style-test"),
                                      std::move(properties));
}

std::shared_ptr<QVStyle> styleWith(const NSString &property, const NSString &value) {
    return styleWith({{property, value}});
}

bool isColor(const std::shared_ptr<const QVColor> &color, const NSString &value) {
    return color && color->isEqual(QVStyle::colorWithCSSValue(value).get());
}

std::vector<NSString> keysOf(const QVStyle &style) {
    std::vector<NSString> keys;
    for (const auto &[key, value] : style.attributes())
        keys.push_back(key);
    return keys;
}

/// The attributes that are switched off; fails where there are others.
std::vector<NSString> nullKeysOf(const QVStyle &style) {
    for (const auto &[key, value] : style.attributes())
        EXPECT_TRUE(style.isNullForAttribute(key)) << key.UTF8String();
    return keysOf(style);
}

using Keys = std::vector<NSString>;

} // namespace

TEST(QVStyleProperties, AStyleKeepsSelectorAndRawProperties) {
    const QVStyle::Properties properties{{u"color", u"red"}, {u"-theme-name", u"x"}, {u"margin", u"1px"}};
    const auto style = styleWith(properties);
    EXPECT_EQ(style->selector(), QVSimpleSelector::simpleSelectorWithString(u"style-test"));
    EXPECT_EQ(style->properties(), properties);
    // What is not known has no attribute.
    EXPECT_EQ(keysOf(*style), Keys{u"TextColor"});
}

TEST(QVStyleProperties, ColoursAreRead) {
    EXPECT_TRUE(isColor(styleWith(u"color", u"#ff0000")->textColor(), u"red"));
    EXPECT_TRUE(isColor(styleWith(u"background-color", u"red")->backgroundColor(), u"red"));
    EXPECT_TRUE(isColor(styleWith(u"border-color", u"red")->borderColor(), u"red"));
    EXPECT_TRUE(isColor(styleWith(u"text-decoration-color", u"red")->textDecorationColor(), u"red"));
}

TEST(QVStyleProperties, WhatIsNoColourSaysNothing) {
    for (const char16_t *const property :
         {u"color", u"background-color", u"background", u"border-color", u"border", u"text-decoration-color"})
        for (const char16_t *const value : {u"reddish", u"inherit", u"default", u"", u"!"})
            EXPECT_TRUE(styleWith(property, value)->attributes().empty());
}

TEST(QVStyleProperties, NoneSwitchesOffWhatAPropertySets) {
    const std::map<NSString, Keys> switchedOff{
        {u"color", {u"TextColor"}},
        {u"background-color", {u"BackgroundColor"}},
        {u"background", {u"BackgroundColor", u"BackgroundGradient"}},
        {u"border-color", {u"BorderColor"}},
        {u"border", {u"BorderColor", u"BorderGradient"}},
        {u"font-weight", {u"FontWeight"}},
        {u"font-style", {u"FontStyle"}},
        {u"text-shadow", {u"TextShadow"}},
        {u"box-shadow", {u"BoxShadow", u"InsetShadow"}},
        {u"text-decoration-color", {u"TextDecorationColor"}},
        {u"text-decoration-line", {u"TextDecoration"}},
        {u"text-decoration-style", {u"TextDecorationStyle"}},
        {u"text-decoration", {u"TextDecoration", u"TextDecorationColor", u"TextDecorationStyle"}}};
    for (const auto &[property, keys] : switchedOff)
        EXPECT_EQ(nullKeysOf(*styleWith(property, u"none")), keys) << property.UTF8String();
    EXPECT_TRUE(styleWith(u"margin", u"none")->attributes().empty());
}

TEST(QVStyleProperties, NoneMustStandAlone) {
    EXPECT_EQ(styleWith(u"text-decoration-line", u"none underline")->textDecoration(), 1);
    EXPECT_TRUE(styleWith(u"color", u"None")->attributes().empty());
}

TEST(QVStyleProperties, ABackgroundIsAColourAGradientOrBoth) {
    const auto colour = styleWith(u"background", u"red");
    EXPECT_EQ(keysOf(*colour), Keys{u"BackgroundColor"});
    EXPECT_TRUE(isColor(colour->backgroundColor(), u"red"));
    const auto gradient = styleWith(u"background", u"linear-gradient(red, blue)");
    EXPECT_EQ(keysOf(*gradient), Keys{u"BackgroundGradient"});
    EXPECT_EQ(gradient->backgroundGradient()->numberOfColorStops(), 2u);
    const auto both = styleWith(u"background", u"linear-gradient(red, blue), lime");
    EXPECT_TRUE(both->backgroundGradient());
    EXPECT_TRUE(isColor(both->backgroundColor(), u"lime"));
}

TEST(QVStyleProperties, OfSeveralPaintsTheLastOfItsKindCounts) {
    const auto style = styleWith(
        u"border", u"1px red blue solid linear-gradient(red), linear-gradient(red, lime, blue), dashed");
    EXPECT_EQ(keysOf(*style), (Keys{u"BorderColor", u"BorderGradient"}));
    EXPECT_TRUE(isColor(style->borderColor(), u"blue"));
    EXPECT_EQ(style->borderGradient()->numberOfColorStops(), 3u);
}

TEST(QVStyleProperties, AListOfPaintsThatCannotBeReadSaysNothing) {
    EXPECT_TRUE(styleWith(u"background", u"red !")->attributes().empty());
    EXPECT_TRUE(styleWith(u"border", u"1px solid")->attributes().empty());
}

TEST(QVStyleProperties, LonghandsStandBehindTheirShorthands) {
    const auto style = styleWith({{u"background", u"none"}, {u"background-color", u"red"}});
    EXPECT_TRUE(isColor(style->backgroundColor(), u"red"));
    EXPECT_TRUE(style->isNullForAttribute(QVStyleAttributeBackgroundGradient));
}

TEST(QVStyleProperties, FontWeightsAreWordsOrNumbers) {
    const std::map<NSString, std::optional<NSInteger>> weights{
        {u"bold", 700}, {u"bolder", 900},     {u"lighter", 200},    {u"normal", 400}, {u"600", 600},
        {u"50x", 50},   {u"0", std::nullopt}, {u"x", std::nullopt}, {u"-3", -3},      {u"", std::nullopt}};
    for (const auto &[value, weight] : weights)
        EXPECT_EQ(styleWith(u"font-weight", value)->fontWeight(), weight) << value.UTF8String();
    EXPECT_TRUE(styleWith(u"font-weight", u"x")->attributes().empty());
}

TEST(QVStyleProperties, FontStylesAreItalicOrNormal) {
    EXPECT_EQ(styleWith(u"font-style", u"italic")->fontStyle(), 1);
    EXPECT_EQ(styleWith(u"font-style", u"normal")->fontStyle(), 2);
    EXPECT_TRUE(styleWith(u"font-style", u"oblique")->attributes().empty());
}

TEST(QVStyleProperties, AShadowHasAnOffsetABlurAndAColour) {
    const auto shadow = styleWith(u"text-shadow", u"1px -2px 3pt red")->textShadow();
    ASSERT_TRUE(shadow);
    EXPECT_EQ(shadow->shadowOffset(), (CGSize{1, -2}));
    EXPECT_EQ(shadow->shadowBlurRadius(), 4);
    EXPECT_TRUE(shadow->shadowColor()->isEqual(QVStyle::colorWithCSSValue(u"red")->platformColor().get()));
}

TEST(QVStyleProperties, WhatAShadowDoesNotSayIsThePlatforms) {
    const auto shadow = styleWith(u"text-shadow", u"0 1px")->textShadow();
    ASSERT_TRUE(shadow);
    EXPECT_EQ(shadow->shadowOffset(), (CGSize{0, 1}));
    EXPECT_EQ(shadow->shadowBlurRadius(), 0);
    EXPECT_TRUE(shadow->shadowColor()->isEqual(NSShadow().shadowColor().get()));
}

TEST(QVStyleProperties, OfSeveralColoursOfAShadowTheLastCounts) {
    const auto shadow = styleWith(u"text-shadow", u"red 1px blue 2px")->textShadow();
    ASSERT_TRUE(shadow);
    EXPECT_EQ(shadow->shadowOffset(), (CGSize{1, 2}));
    EXPECT_TRUE(shadow->shadowColor()->isEqual(QVStyle::colorWithCSSValue(u"blue")->platformColor().get()));
}

TEST(QVStyleProperties, AShadowNeedsTwoLengths) {
    EXPECT_TRUE(styleWith(u"box-shadow", u"1px")->attributes().empty());
    EXPECT_TRUE(styleWith(u"text-shadow", u"red")->attributes().empty());
    EXPECT_TRUE(styleWith(u"text-shadow", u"1 2 red")->attributes().empty());
    EXPECT_TRUE(styleWith(u"text-shadow", u"1px 2px !")->attributes().empty());
}

TEST(QVStyleProperties, ABoxShadowIsInsetWhereItSaysSo) {
    const auto inset = styleWith(u"box-shadow", u"1px 2px 3px 4px red inset");
    EXPECT_EQ(keysOf(*inset), Keys{u"InsetShadow"});
    EXPECT_EQ(inset->insetShadow()->shadowOffset(), (CGSize{1, 2}));
    // The fourth length, a spread, has no meaning.
    EXPECT_EQ(inset->insetShadow()->shadowBlurRadius(), 3);
    EXPECT_TRUE(inset->insetShadow()->shadowColor()->isEqual(
        QVStyle::colorWithCSSValue(u"red")->platformColor().get()));
    const auto box = styleWith(u"box-shadow", u"1px 2px");
    EXPECT_EQ(keysOf(*box), Keys{u"BoxShadow"});
    EXPECT_EQ(box->boxShadow()->shadowOffset(), (CGSize{1, 2}));
}

TEST(QVStyleProperties, DecorationLinesAreAMask) {
    EXPECT_EQ(styleWith(u"text-decoration-line", u"underline")->textDecoration(), 1);
    EXPECT_EQ(styleWith(u"text-decoration-line", u"overline")->textDecoration(), 2);
    EXPECT_EQ(styleWith(u"text-decoration-line", u"line-through")->textDecoration(), 4);
    EXPECT_EQ(styleWith(u"text-decoration-line", u"line-through red underline")->textDecoration(), 5);
}

TEST(QVStyleProperties, DecorationStylesAreAMask) {
    EXPECT_EQ(styleWith(u"text-decoration-style", u"solid")->textDecorationStyle(), 1);
    EXPECT_EQ(styleWith(u"text-decoration-style", u"dotted")->textDecorationStyle(), 0x101);
    EXPECT_EQ(styleWith(u"text-decoration-style", u"dashed")->textDecorationStyle(), 0x201);
    EXPECT_EQ(styleWith(u"text-decoration-style", u"wavy solid")->textDecorationStyle(), 1);
}

// Unlike the others "dashed" does not add to what stands before it, which is meant.
TEST(QVStyleProperties, DashesReplaceTheStylesBeforeThem) {
    EXPECT_EQ(styleWith(u"text-decoration-style", u"dotted dashed")->textDecorationStyle(), 0x201);
    EXPECT_EQ(styleWith(u"text-decoration-style", u"dashed dotted")->textDecorationStyle(), 0x301);
    // In the shorthand they add up.
    EXPECT_EQ(styleWith(u"text-decoration", u"dotted dashed")->textDecorationStyle(), 0x301);
}

TEST(QVStyleProperties, ADecorationHasLineStyleAndColour) {
    const auto style = styleWith(u"text-decoration", u"underline line-through dotted red blue");
    EXPECT_EQ(style->textDecoration(), 5);
    EXPECT_EQ(style->textDecorationStyle(), 0x101);
    EXPECT_TRUE(isColor(style->textDecorationColor(), u"blue"));
}

TEST(QVStyleProperties, ADecorationAlwaysSetsLineAndStyle) {
    const auto underlined = styleWith(u"text-decoration", u"underline red");
    EXPECT_EQ(underlined->textDecoration(), 1);
    EXPECT_EQ(underlined->textDecorationStyle(), 0);
    EXPECT_TRUE(isColor(underlined->textDecorationColor(), u"red"));
    EXPECT_EQ(keysOf(*styleWith(u"text-decoration", u"overline")),
              (Keys{u"TextDecoration", u"TextDecorationStyle"}));
    EXPECT_EQ(styleWith(u"text-decoration", u"overline")->textDecoration(), 2);
}

TEST(QVStyleProperties, ADecorationThatCannotBeReadIsNoLine) {
    const auto style = styleWith(u"text-decoration", u"underline !");
    EXPECT_EQ(style->textDecoration(), 0);
    EXPECT_EQ(style->textDecorationStyle(), 0);
    EXPECT_EQ(styleWith(u"text-decoration-line", u"!")->textDecoration(), 0);
    EXPECT_EQ(styleWith(u"text-decoration-style", u"")->textDecorationStyle(), 0);
}

TEST(QVStyleProperties, ComponentsOfAPropertyAreThoseOfItsValue) {
    const auto style = styleWith({{u"-theme-x", u"a \"b c\""}, {u"-theme-y", u"!"}});
    EXPECT_EQ(style->componentsForProperty(u"-theme-x"), (std::vector<NSString>{u"a", u"\"b c\""}));
    EXPECT_EQ(style->componentsForProperty(u"-theme-y"), std::nullopt);
    EXPECT_EQ(style->componentsForProperty(u"-theme-z"), std::nullopt);
}

TEST(QVStyleProperties, TheStringOfAPropertyIsItsFirstComponentWithoutQuotes) {
    const auto style =
        styleWith({{u"a", u"\"Late Night\" x"}, {u"b", u"day night"}, {u"c", u"!"}, {u"d", u"'"}});
    EXPECT_EQ(style->stringForProperty(u"a"), u"Late Night");
    EXPECT_EQ(style->stringForProperty(u"b"), u"day");
    EXPECT_EQ(style->stringForProperty(u"c"), NSString());
    EXPECT_EQ(style->stringForProperty(u"d"), NSString());
    EXPECT_EQ(style->stringForProperty(u"e"), NSString());
}

TEST(QVStyleObjects, AreKeptUnderTheirNames) {
    QVStyle style;
    const auto color = QVColor::redColor();
    const auto gradient = QVGradient::gradientWithColors({color});
    const auto shadow = std::make_shared<const NSShadow>();
    style.setBackgroundColor(color);
    style.setBackgroundGradient(gradient);
    style.setTextColor(color);
    style.setTextShadow(shadow);
    style.setTextDecorationColor(color);
    style.setBorderColor(color);
    style.setBorderGradient(gradient);
    style.setBoxShadow(shadow);
    style.setInsetShadow(shadow);
    const std::shared_ptr<const NSObject> colorObject = color, gradientObject = gradient,
                                          shadowObject = shadow;
    const QVStyle::Attributes expected{
        {u"BackgroundColor", colorObject},     {u"BackgroundGradient", gradientObject},
        {u"TextColor", colorObject},           {u"TextShadow", shadowObject},
        {u"TextDecorationColor", colorObject}, {u"BorderColor", colorObject},
        {u"BorderGradient", gradientObject},   {u"BoxShadow", shadowObject},
        {u"InsetShadow", shadowObject}};
    EXPECT_TRUE(style.attributes() == expected);
    EXPECT_EQ(style.backgroundColor(), color);
    EXPECT_EQ(style.backgroundGradient(), gradient);
    EXPECT_EQ(style.textColor(), color);
    EXPECT_EQ(style.textShadow(), shadow);
    EXPECT_EQ(style.textDecorationColor(), color);
    EXPECT_EQ(style.borderColor(), color);
    EXPECT_EQ(style.borderGradient(), gradient);
    EXPECT_EQ(style.boxShadow(), shadow);
    EXPECT_EQ(style.insetShadow(), shadow);
}

TEST(QVStyleObjects, SettingNullRemovesTheAttribute) {
    QVStyle style;
    style.setTextColor(QVColor::redColor());
    style.setTextColor(nullptr);
    style.setTextShadow(nullptr);
    style.setBorderGradient(nullptr);
    EXPECT_TRUE(style.attributes().empty());
}

TEST(QVStyleObjects, ReadAsNullWhereSomethingElseIsStored) {
    QVStyle style;
    style.setColor(QVColor::redColor(), u"Mine");
    EXPECT_EQ(style.shadowForAttribute(u"Mine"), nullptr);
    EXPECT_EQ(style.gradientForAttribute(u"Mine"), nullptr);
    EXPECT_EQ(style.integerForAttribute(u"Mine"), std::nullopt);
    style.setNull(true, u"Mine");
    EXPECT_EQ(style.colorForAttribute(u"Mine"), nullptr);
    EXPECT_TRUE(style.isNullForAttribute(u"Mine"));
    style.setNumber(3, u"Mine");
    EXPECT_EQ(style.colorForAttribute(u"Mine"), nullptr);
}

TEST(QVStyleObjects, ANullKeyIsAProgrammingError) {
    const test::AssertionRecorder assertions;
    QVStyle style;
    EXPECT_EQ(style.colorForAttribute(nullptr), nullptr);
    EXPECT_EQ(style.shadowForAttribute(nullptr), nullptr);
    EXPECT_EQ(style.gradientForAttribute(nullptr), nullptr);
    style.setColor(QVColor::redColor(), nullptr);
    style.setShadow(std::make_shared<NSShadow>(), nullptr);
    style.setGradient(QVGradient::init(), nullptr);
    EXPECT_EQ(assertions.messages(),
              std::vector<NSString>(6, u"Invalid parameter not satisfying: key != nil"));
    EXPECT_TRUE(style.attributes().empty());
}

TEST(QVStyleObjects, AMergedStyleKeepsALaterNullMarkerOverAColour) {
    const auto merged =
        QVStyle::styleByResolvingStyles({styleWith(u"color", u"red"), styleWith(u"color", u"none")});
    EXPECT_EQ(merged->colorForAttribute(QVStyleAttributeTextColor), nullptr);
    EXPECT_TRUE(merged->isNullForAttribute(QVStyleAttributeTextColor));
}

TEST(QVStyleObjects, SurviveAnArchive) {
    const auto style = styleWith({{u"color", u"red"},
                                  {u"background", u"linear-gradient(red, blue), lime"},
                                  {u"text-shadow", u"1px 2px 3px"},
                                  {u"border", u"none"},
                                  {u"font-weight", u"bold"}});
    const auto read = NSKeyedUnarchiver::unarchivedObjectOfClass<QVStyle>(
        NSKeyedArchiver::archivedDataWithRootObject(style));
    ASSERT_TRUE(read);
    EXPECT_EQ(keysOf(*read), keysOf(*style));
    // Colours come back in the device's space.
    double red = -1, green = -1, blue = -1, alpha = -1;
    ASSERT_TRUE(read->textColor());
    ASSERT_TRUE(read->textColor()->getRed(&red, &green, &blue, &alpha));
    EXPECT_EQ((std::vector<double>{red, green, blue, alpha}), (std::vector<double>{1, 0, 0, 1}));
    ASSERT_TRUE(read->backgroundGradient());
    EXPECT_EQ(read->backgroundGradient()->numberOfColorStops(), 2u);
    ASSERT_TRUE(read->textShadow());
    EXPECT_TRUE(read->textShadow()->isEqual(style->textShadow().get()));
    EXPECT_TRUE(read->isNullForAttribute(QVStyleAttributeBorderColor));
    EXPECT_EQ(read->fontWeight(), 700);
}
