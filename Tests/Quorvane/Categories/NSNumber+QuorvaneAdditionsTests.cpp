#include "Quorvane/Categories/NSNumber+QuorvaneAdditions.h"

#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(NSNumberCSSLength, PixelsAreTakenAsTheyAre) {
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"1px"), 1);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"+.5px"), 0.5);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"-2.25px"), -2.25);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"3.px"), 3);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"0010px"), 10);
}

TEST(NSNumberCSSLength, ThreePointsAreFourPixels) {
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"3pt"), 4);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"-1.5pt"), -2);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"0pt"), 0);
}

TEST(NSNumberCSSLength, WithoutAUnitOnlyZeroIsALength) {
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"0"), 0);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"-0.00"), 0);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"1"), std::nullopt);
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"0.001"), std::nullopt);
}

TEST(NSNumberCSSLength, OtherTextsAreNoLength) {
    for (const char16_t *value : {u"", u"px", u".", u".px", u"+px", u"--1px", u"1 px", u" 1px", u"1px ",
                                  u"1em", u"1PX", u"1e3px", u"1,5px", u"1.5.5px", u"0x10px", u"10%", u"1pxx"})
        EXPECT_EQ(qv_numberWithCSSLengthValue(value), std::nullopt) << NSString(value).UTF8String();
}

TEST(NSNumberCSSLength, DigitsOfOtherScriptsAreDigits) {
    EXPECT_EQ(qv_numberWithCSSLengthValue(u"\u0663.\u0665px"), 3.5);
}

TEST(NSNumberCSSLength, ANullStringIsAsserted) {
    test::AssertionRecorder assertions;
    EXPECT_EQ(qv_numberWithCSSLengthValue(nullptr), std::nullopt);
    EXPECT_EQ(assertions.messages(),
              std::vector<NSString>{u"Invalid parameter not satisfying: string != nil"});
}
