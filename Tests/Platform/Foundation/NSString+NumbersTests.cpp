#include "Platform/Foundation/NSString.h"

#include <gtest/gtest.h>
#include <limits>

using namespace quorvane;

TEST(NSStringNumbers, AnIntegerIsReadAfterWhiteSpaceUpToTheFirstOtherCharacter) {
    EXPECT_EQ(NSString(u"42").integerValue(), 42);
    EXPECT_EQ(NSString(u" \t\n-17px").integerValue(), -17);
    EXPECT_EQ(NSString(u"+3").integerValue(), 3);
    EXPECT_EQ(NSString(u"12.9").integerValue(), 12);
    for (const NSString &text :
         {NSString(u""), NSString(), NSString(u"x1"), NSString(u"-"), NSString(u"--1")})
        EXPECT_EQ(text.integerValue(), 0);
}

TEST(NSStringNumbers, AnIntegerBeyondItsTypeIsClamped) {
    EXPECT_EQ(NSString(u"9223372036854775807").integerValue(), std::numeric_limits<NSInteger>::max());
    EXPECT_EQ(NSString(u"9223372036854775808").integerValue(), std::numeric_limits<NSInteger>::max());
    EXPECT_EQ(NSString(u"-9223372036854775808").integerValue(), std::numeric_limits<NSInteger>::min());
    EXPECT_EQ(NSString(u"-99999999999999999999").integerValue(), std::numeric_limits<NSInteger>::min());
}

TEST(NSStringNumbers, ADecimalNumberIsTheLongestPrefixThatIsOne) {
    EXPECT_EQ(NSString(u" 1.5em").doubleValue(), 1.5);
    EXPECT_EQ(NSString(u"-.25").doubleValue(), -0.25);
    EXPECT_EQ(NSString(u"+2.").doubleValue(), 2.0);
    EXPECT_EQ(NSString(u"1e3").doubleValue(), 1000.0);
    EXPECT_EQ(NSString(u"1E-2x").doubleValue(), 0.01);
    EXPECT_EQ(NSString(u"1e").doubleValue(), 1.0);
    EXPECT_EQ(NSString(u"1e+").doubleValue(), 1.0);
    EXPECT_EQ(NSString(u"0.1").floatValue(), 0.1f);
    for (const NSString &text : {NSString(u""), NSString(), NSString(u"."), NSString(u"-"), NSString(u"nan"),
                                 NSString(u"inf"), NSString(u"e5")})
        EXPECT_EQ(text.doubleValue(), 0.0);
    // No hexadecimal numbers.
    EXPECT_EQ(NSString(u"0x10").doubleValue(), 0.0);
}

TEST(NSStringNumbers, ADecimalNumberBeyondItsTypeIsClamped) {
    EXPECT_EQ(NSString(u"1e400").doubleValue(), std::numeric_limits<double>::max());
    EXPECT_EQ(NSString(u"-1e400").doubleValue(), std::numeric_limits<double>::lowest());
    EXPECT_EQ(NSString(u"1e39").floatValue(), std::numeric_limits<float>::max());
    EXPECT_EQ(NSString(u"1e-400").doubleValue(), 0.0);
    EXPECT_EQ(NSString(u"1e99999999999999999999").doubleValue(), std::numeric_limits<double>::max());
    // Many digits before the point with an exponent that takes them back.
    EXPECT_EQ(NSString(std::u16string(400, u'9')).doubleValue(), std::numeric_limits<double>::max());
    EXPECT_EQ(NSString(u"0." + std::u16string(400, u'0') + u"1").doubleValue(), 0.0);
    EXPECT_EQ(NSString(u"0." + std::u16string(400, u'0') + u"1e401").doubleValue(), 1.0);
}
