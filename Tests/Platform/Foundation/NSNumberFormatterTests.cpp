#include "Platform/Foundation/NSNumberFormatter.h"

#include <gtest/gtest.h>
#include <limits>

using namespace quorvane;

TEST(QVNumberFromDecimalString, ReadsDecimalNumbersAsAWhole) {
    EXPECT_EQ(QVNumberFromDecimalString(u"12"), 12);
    EXPECT_EQ(QVNumberFromDecimalString(u"-12.5"), -12.5);
    EXPECT_EQ(QVNumberFromDecimalString(u"+.5"), 0.5);
    EXPECT_EQ(QVNumberFromDecimalString(u"7."), 7);
    for (const char16_t *text :
         {u"", u"+", u".", u"-.", u" 1", u"1 ", u"1e3", u"1,000", u"1.2.3", u"--1", u"a"})
        EXPECT_EQ(QVNumberFromDecimalString(text), std::nullopt) << NSString(text).UTF8String();
    EXPECT_EQ(QVNumberFromDecimalString(nullptr), std::nullopt);
}

TEST(QVNumberFromDecimalString, ReadsDigitsOfEveryScript) {
    EXPECT_EQ(QVNumberFromDecimalString(u"\u0661\u0662.\uFF15"), 12.5);
    // Mathematical bold 4 2, beyond the basic plane.
    EXPECT_EQ(QVNumberFromDecimalString(u"\U0001D7D2\U0001D7D0"), 42);
    EXPECT_EQ(QVNumberFromDecimalString(u"1\xD835"), std::nullopt);
}

TEST(QVNumberFromDecimalString, HoldsLongNumbersToTheRangeOfDoubles) {
    EXPECT_EQ(QVNumberFromDecimalString(NSString(std::u16string(400, u'9'))),
              std::numeric_limits<double>::max());
    EXPECT_EQ(QVNumberFromDecimalString(NSString(u"0." + std::u16string(100000, u'0') + u"1")), 0);
}
