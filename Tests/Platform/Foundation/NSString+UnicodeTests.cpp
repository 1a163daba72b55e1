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

// MARK: - Transforms

TEST(NSStringUnicode, StrippingDiacriticsLeavesTheLetters) {
    const auto stripped = [](const NSString &string) {
        return string.stringByApplyingTransform(NSStringTransformStripDiacritics, false);
    };
    EXPECT_EQ(stripped(u"abc ^`~"), u"abc ^`~");
    EXPECT_EQ(stripped(u"\u00C9cole na\u00EFve"), u"Ecole naive");
    EXPECT_EQ(stripped(u"e\u0301\u0323x"), u"ex");
    EXPECT_EQ(stripped(u"\u0301"), u"");
    EXPECT_EQ(stripped(u""), u"");
    // What only looks like a mark on a letter is a letter.
    EXPECT_EQ(stripped(u"\u00F8\u0142"), u"\u00F8\u0142");
    // Syllables are composed again.
    EXPECT_EQ(stripped(u"\uD55C"), u"\uD55C");
    EXPECT_EQ(stripped(u"\U0001F600\u0301"), u"\U0001F600");
    const NSString half(std::u16string{u'\u00E9', 0xD83D});
    EXPECT_EQ(stripped(half), NSString(std::u16string{u'e', 0xD83D}));
}

TEST(NSStringUnicode, UnknownTransformsAndReversesGiveNothing) {
    EXPECT_TRUE(NSString(u"a").stringByApplyingTransform(u"Any-Unknown", false).isNull());
    EXPECT_TRUE(NSString(u"a").stringByApplyingTransform(NSStringTransformStripDiacritics, true).isNull());
    EXPECT_TRUE(NSString().stringByApplyingTransform(NSStringTransformStripDiacritics, false).isNull());
}
