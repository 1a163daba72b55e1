#include "Quorvane/Styles/QVStyle.h"

#include "Tests/Support/Printing.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// A color as "sRGB 1 0 0 1" or "P3 ..." or "gray ...", rounded to four digits; "null" for none.
std::string read(const char16_t *value) {
    const auto color = QVStyle::colorWithCSSValue(value);
    if (!color)
        return "null";
    const CGColorSpaceRef space = CGColorGetColorSpace(color->CGColor());
    std::string text = CFEqual(space, CGColorSpaceCreateWithName(kCGColorSpaceSRGB))        ? "sRGB"
                       : CFEqual(space, CGColorSpaceCreateWithName(kCGColorSpaceDisplayP3)) ? "P3"
                       : CFEqual(space, CGColorSpaceCreateDeviceGray())                     ? "gray"
                                                                                            : "other";
    for (const double component : CGColorGetComponents(color->CGColor())) {
        char digits[32];
        std::snprintf(digits, sizeof digits, " %.4g", component);
        text += digits;
    }
    return text;
}

} // namespace

TEST(QVStyleColorWithCSSValue, NoColourIsMeantByNullNoneDefaultAndInherit) {
    EXPECT_EQ(QVStyle::colorWithCSSValue(nullptr), nullptr);
    EXPECT_EQ(read(u"none"), "null");
    EXPECT_EQ(read(u"default"), "null");
    EXPECT_EQ(read(u"inherit"), "null");
}

TEST(QVStyleColorWithCSSValue, HexadecimalDigitsMakeBytes) {
    EXPECT_EQ(read(u"#ff8000"), "sRGB 1 0.502 0 1");
    EXPECT_EQ(read(u"#FFfF00"), "sRGB 1 1 0 1");
    EXPECT_EQ(read(u"#0a9"), "sRGB 0 0.6667 0.6 1");
    EXPECT_TRUE(QVStyle::colorWithCSSValue(u"#abc")->isEqual(QVStyle::colorWithCSSValue(u"#aabbcc").get()));
    EXPECT_EQ(read(u"# abc "), read(u"#abc"));
    EXPECT_EQ(read(u"#\tAABBCC\n"), read(u"#abc"));
}

TEST(QVStyleColorWithCSSValue, OtherNumbersOfDigitsAreNoColour) {
    for (const char16_t *value : {u"#", u"#a", u"#ab", u"#abcd", u"#abcde", u"#abcdef0", u"#abcdef01",
                                  u"#abg", u" #abc", u"#abc abc", u"abc", u"##abc"})
        EXPECT_EQ(read(value), "null") << NSString(value).UTF8String();
}

TEST(QVStyleColorWithCSSValue, RGBCountsTo255) {
    EXPECT_EQ(read(u"rgb(255,51,0)"), "sRGB 1 0.2 0 1");
    EXPECT_EQ(read(u"rgb( 255 , 51 , 0 )"), "sRGB 1 0.2 0 1");
    EXPECT_EQ(read(u"rgba(255,51,0,0.25)"), "sRGB 1 0.2 0 0.25");
    EXPECT_EQ(read(u"rgba(255, 51, 0, 1.)"), "sRGB 1 0.2 0 1");
}

// Meant: a component above 1 is for the spaces to deal with.
TEST(QVStyleColorWithCSSValue, NumbersAreNotHeldToTheirRange) {
    EXPECT_EQ(read(u"rgb(510,0,0)"), "sRGB 2 0 0 1");
    EXPECT_EQ(read(u"rgba(0,0,0,7)"), "sRGB 0 0 0 7");
    EXPECT_EQ(read(u"color(srgb 3 0 0)"), "sRGB 3 0 0 1");
}

TEST(QVStyleColorWithCSSValue, HueIsInDegreesAndTheRestInPercent) {
    EXPECT_EQ(read(u"hsb(36, 50%, 80%)"), "sRGB 0.8 0.64 0.4 1");
    EXPECT_EQ(read(u"hsba(36,50%,80%,0.5)"), "sRGB 0.8 0.64 0.4 0.5");
    EXPECT_EQ(read(u"hsl(36, 50%, 40%)"), "sRGB 0.6 0.44 0.2 1");
    EXPECT_EQ(read(u"hsla(36,50%,40%,0.5)"), "sRGB 0.6 0.44 0.2 0.5");
}

// Meant: see the conversions. The full circle differs between the two.
TEST(QVStyleColorWithCSSValue, TheFullCircleIsMagentaByBrightnessAndRedByLuminance) {
    EXPECT_EQ(read(u"hsb(360,100%,100%)"), "sRGB 1 0 1 1");
    EXPECT_EQ(read(u"hsl(360,100%,50%)"), "sRGB 1 0 0 1");
    EXPECT_EQ(read(u"hsl(720,100%,50%)"), "sRGB 1 0 0 1");
}

TEST(QVStyleColorWithCSSValue, ColorNamesItsSpace) {
    EXPECT_EQ(read(u"color(srgb 1 0 0)"), "sRGB 1 0 0 1");
    EXPECT_EQ(read(u"color(srgb 1 0.5 0.25 / 0.5)"), "sRGB 1 0.5 0.25 0.5");
    EXPECT_EQ(read(u"color(display-p3 1 0.5 0)"), "P3 1 0.5 0 1");
    EXPECT_EQ(read(u"color(  display-p3  1  0.5  0.  /0.125  )"), "P3 1 0.5 0 0.125");
}

TEST(QVStyleColorWithCSSValue, ASlashTakesWhiteSpaceBeforeIt) {
    EXPECT_EQ(read(u"color(srgb 1 0 0/0.5)"), "null");
    EXPECT_EQ(read(u"color(srgb 1 0 0 /0.5)"), "sRGB 1 0 0 0.5");
    EXPECT_EQ(read(u"color(display-p3 1 0 0/0.5)"), "null");
}

TEST(QVStyleColorWithCSSValue, WhatMatchesNoNotationIsNoColour) {
    for (const char16_t *value : {u"",
                                  u"rgb(1,2)",
                                  u"rgb(1,2,3,4)",
                                  u"rgb(1 2 3)",
                                  u"rgb(1.5,2,3)",
                                  u"rgb(-1,2,3)",
                                  u"rgb(10%,2%,3%)",
                                  u"rgb (1,2,3)",
                                  u" rgb(1,2,3)",
                                  u"rgb(1,2,3) ",
                                  u"RGB(1,2,3)",
                                  u"rgba(0,0,0)",
                                  u"rgba(0,0,0,50%)",
                                  u"rgba(0,0,0,.5)",
                                  u"rgba(0,0,0,-1)",
                                  u"hsb(36,50,80)",
                                  u"hsb(36deg,50%,80%)",
                                  u"hsb(36,50%,80%,1)",
                                  u"hsba(36,50%,80%)",
                                  u"hsl(36.5,50%,80%)",
                                  u"hsla(36,50%,80%,50%)",
                                  u"color(srgb 1 0)",
                                  u"color(srgb 1,0,0)",
                                  u"color(srgb .5 0 0)",
                                  u"color(srgb 1 0 0 0.5)",
                                  u"color(rec2020 1 0 0)",
                                  u"color(display-p3 1 0 0 / )",
                                  u"linear-gradient(red, blue)",
                                  u"1px",
                                  u" red"})
        EXPECT_EQ(read(value), "null") << NSString(value).UTF8String();
}

// The patterns had two ways to read each digit, so that what is no colour took the square of its length.
TEST(QVStyleColorWithCSSValue, ManyDigitsAreReadOnce) {
    const LogRecorder log;
    const std::u16string digits(20000, u'1'), blanks(20000, u' ');
    for (const std::u16string_view start : {u"rgb(0,0,", u"rgba(0,0,0,", u"hsla(0,0%,0%,", u"hsba(0,0%,0%,",
                                            u"color(srgb 0 0 ", u"color(display-p3 0 0 0 / "}) {
        const std::u16string number = std::u16string(start) + digits;
        for (const std::u16string &value :
             {number, number + u".", number + u"." + digits, number + blanks, number + u")x"})
            EXPECT_EQ(QVStyle::colorWithCSSValue(NSString(value)), nullptr);
    }
    // An expression that takes too long says so.
    EXPECT_TRUE(log.messages().empty());
    EXPECT_EQ(read((u"rgba(255,0,0,0." + std::u16string(20000, u'0') + u")").c_str()), "sRGB 1 0 0 0");
}

TEST(QVStyleColorWithCSSValue, ANameStandsBeforeTheNotations) {
    EXPECT_EQ(read(u"tomato"), "sRGB 1 0.3882 0.2784 1");
    EXPECT_EQ(read(u"transparent"), "gray 0 0");
}

TEST(QVStyleColorWithCSSName, NamesAreInSmallLettersAlone) {
    EXPECT_NE(QVStyle::colorWithCSSName(u"red"), nullptr);
    EXPECT_EQ(QVStyle::colorWithCSSName(u"RED"), nullptr);
    EXPECT_EQ(QVStyle::colorWithCSSName(u"Red"), nullptr);
    EXPECT_EQ(QVStyle::colorWithCSSName(u"red "), nullptr);
    EXPECT_EQ(QVStyle::colorWithCSSName(u""), nullptr);
    EXPECT_EQ(QVStyle::colorWithCSSName(nullptr), nullptr);
    EXPECT_EQ(QVStyle::colorWithCSSName(u"#ff0000"), nullptr);
}

// Meant: three names of the standard are absent, though their twins are known.
TEST(QVStyleColorWithCSSName, CyanMagentaAndSlategreyAreKnownByTheirTwins) {
    EXPECT_EQ(read(u"cyan"), "null");
    EXPECT_EQ(read(u"magenta"), "null");
    EXPECT_EQ(read(u"slategrey"), "null");
    EXPECT_EQ(read(u"aqua"), "sRGB 0 1 1 1");
    EXPECT_EQ(read(u"fuchsia"), "sRGB 1 0 1 1");
    EXPECT_EQ(read(u"slategray"), "sRGB 0.4392 0.502 0.5647 1");
}

TEST(QVStyleColorWithCSSName, TransparentIsTheClearColour) {
    EXPECT_TRUE(QVStyle::colorWithCSSName(u"transparent")->isEqual(QVColor::clearColor().get()));
}

TEST(QVStyleColorWithCSSName, GrayAndGreyAreOne) {
    for (const char16_t *prefix : {u"", u"dark", u"dim", u"light", u"darkslate", u"lightslate"}) {
        const auto gray = QVStyle::colorWithCSSName(NSString(prefix).stringByAppendingString(u"gray"));
        const auto grey = QVStyle::colorWithCSSName(NSString(prefix).stringByAppendingString(u"grey"));
        ASSERT_TRUE(gray && grey) << NSString(prefix).UTF8String();
        EXPECT_TRUE(gray->isEqual(grey.get()));
    }
}

// All of the standard's names by their hues, as its tables group them.
TEST(QVStyleColorWithCSSName, KnowsTheStandardsNames) {
    const std::pair<const char16_t *, const char16_t *> groups[] = {
        {u"reds",
         u"indianred #cd5c5c lightcoral #f08080 salmon #fa8072 darksalmon #e9967a lightsalmon #ffa07a "
         u"crimson #dc143c red #f00 firebrick #b22222 darkred #8b0000"},
        {u"pinks", u"pink #ffc0cb lightpink #ffb6c1 hotpink #ff69b4 deeppink #ff1493 mediumvioletred #c71585 "
                   u"palevioletred #db7093"},
        {u"oranges", u"coral #ff7f50 tomato #ff6347 orangered #ff4500 darkorange #ff8c00 orange #ffa500"},
        {u"yellows",
         u"gold #ffd700 yellow #ff0 lightyellow #ffffe0 lemonchiffon #fffacd lightgoldenrodyellow "
         u"#fafad2 papayawhip #ffefd5 moccasin #ffe4b5 peachpuff #ffdab9 palegoldenrod #eee8aa khaki "
         u"#f0e68c darkkhaki #bdb76b"},
        {u"purples",
         u"lavender #e6e6fa thistle #d8bfd8 plum #dda0dd violet #ee82ee orchid #da70d6 fuchsia #f0f "
         u"mediumorchid #ba55d3 mediumpurple #9370db rebeccapurple #639 blueviolet #8a2be2 "
         u"darkviolet #9400d3 darkorchid #9932cc darkmagenta #8b008b purple #800080 indigo #4b0082 "
         u"slateblue #6a5acd darkslateblue #483d8b mediumslateblue #7b68ee"},
        {u"greens",
         u"greenyellow #adff2f chartreuse #7fff00 lawngreen #7cfc00 lime #0f0 limegreen #32cd32 "
         u"palegreen #98fb98 lightgreen #90ee90 mediumspringgreen #00fa9a springgreen #00ff7f "
         u"mediumseagreen #3cb371 seagreen #2e8b57 forestgreen #228b22 green #008000 darkgreen "
         u"#006400 yellowgreen #9acd32 olivedrab #6b8e23 olive #808000 darkolivegreen #556b2f "
         u"mediumaquamarine #66cdaa darkseagreen #8fbc8f lightseagreen #20b2aa darkcyan #008b8b teal "
         u"#008080"},
        {u"blues",
         u"aqua #0ff lightcyan #e0ffff paleturquoise #afeeee aquamarine #7fffd4 turquoise #40e0d0 "
         u"mediumturquoise #48d1cc darkturquoise #00ced1 cadetblue #5f9ea0 steelblue #4682b4 "
         u"lightsteelblue #b0c4de powderblue #b0e0e6 lightblue #add8e6 skyblue #87ceeb lightskyblue "
         u"#87cefa deepskyblue #00bfff dodgerblue #1e90ff cornflowerblue #6495ed royalblue #4169e1 "
         u"blue #00f mediumblue #0000cd darkblue #00008b navy #000080 midnightblue #191970"},
        {u"browns",
         u"cornsilk #fff8dc blanchedalmond #ffebcd bisque #ffe4c4 navajowhite #ffdead wheat #f5deb3 "
         u"burlywood #deb887 tan #d2b48c rosybrown #bc8f8f sandybrown #f4a460 goldenrod #daa520 "
         u"darkgoldenrod #b8860b peru #cd853f chocolate #d2691e saddlebrown #8b4513 sienna #a0522d "
         u"brown #a52a2a maroon #800000"},
        {u"whites",
         u"white #fff snow #fffafa honeydew #f0fff0 mintcream #f5fffa azure #f0ffff aliceblue #f0f8ff "
         u"ghostwhite #f8f8ff whitesmoke #f5f5f5 seashell #fff5ee beige #f5f5dc oldlace #fdf5e6 "
         u"floralwhite #fffaf0 ivory #fffff0 antiquewhite #faebd7 linen #faf0e6 lavenderblush "
         u"#fff0f5 mistyrose #ffe4e1"},
        {u"grays",
         u"gainsboro #dcdcdc lightgray #d3d3d3 lightgrey #d3d3d3 silver #c0c0c0 darkgray #a9a9a9 "
         u"darkgrey #a9a9a9 gray #808080 grey #808080 dimgray #696969 dimgrey #696969 lightslategray "
         u"#789 lightslategrey #789 slategray #708090 darkslategray #2f4f4f darkslategrey #2f4f4f "
         u"black #000"},
    };
    std::size_t count = 1; // "transparent" has a test of its own
    for (const auto &[group, text] : groups) {
        const auto words = NSString(text).componentsSeparatedByString(u" ");
        for (std::size_t index = 0; index + 1 < words.size(); index += 2, ++count) {
            const auto named = QVStyle::colorWithCSSName(words[index]);
            ASSERT_TRUE(named) << words[index].UTF8String();
            EXPECT_TRUE(named->isEqual(QVStyle::colorWithCSSValue(words[index + 1]).get()))
                << words[index].UTF8String();
        }
    }
    EXPECT_EQ(count, 146u);
}
