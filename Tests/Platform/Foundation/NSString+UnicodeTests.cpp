#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(NSStringUnicode, CaseMappingIsThatOfTheRootLocale) {
    EXPECT_EQ(NSString(u"\u00C4Bc\u0130").lowercaseString(), u"\u00E4bci\u0307");
    EXPECT_EQ(NSString(u"stra\u00DFe\uFB03").uppercaseString(), u"STRASSEFFI");
    EXPECT_EQ(NSString(u"\U00010428i").uppercaseString(), u"\U00010400I");
    // The last sigma of a word is another letter in lower case.
    EXPECT_EQ(NSString(u"\u039F\u03A3").lowercaseString(), u"\u03BF\u03C2");
    EXPECT_EQ(NSString(u"Stra\u00DFe \u03C2").caseFoldedString(), u"strasse \u03C3");
    EXPECT_EQ(NSString(u"").lowercaseString(), u"");
    EXPECT_TRUE(NSString().uppercaseString().isNull());
    EXPECT_TRUE(NSString().caseFoldedString().isNull());
}

TEST(NSStringUnicode, ComparingWithoutRegardToCaseFoldsBothSides) {
    EXPECT_EQ(NSString(u"ABC").caseInsensitiveCompare(u"abc"), NSOrderedSame);
    EXPECT_EQ(NSString(u"STRASSE").caseInsensitiveCompare(u"stra\u00DFe"), NSOrderedSame);
    EXPECT_EQ(NSString(u"b").caseInsensitiveCompare(u"AC"), NSOrderedDescending);
    EXPECT_EQ(NSString(u"A").caseInsensitiveCompare(u"ab"), NSOrderedAscending);
    // "_" stands between the cases, so folding decides.
    EXPECT_EQ(NSString(u"Z").caseInsensitiveCompare(u"_"), NSOrderedDescending);
}

TEST(NSStringUnicode, AComposedSequenceIsAskedForByAnyOfItsUnits) {
    const NSString text(u"ae\u0301x");
    EXPECT_EQ(text.rangeOfComposedCharacterSequenceAtIndex(0), (NSRange{0, 1}));
    EXPECT_EQ(text.rangeOfComposedCharacterSequenceAtIndex(1), (NSRange{1, 2}));
    EXPECT_EQ(text.rangeOfComposedCharacterSequenceAtIndex(2), (NSRange{1, 2}));
    EXPECT_EQ(text.rangeOfComposedCharacterSequenceAtIndex(3), (NSRange{3, 1}));
}
