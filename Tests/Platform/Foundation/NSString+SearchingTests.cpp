#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(NSStringSearching, FindsTheFirstOrTheLastOccurrence) {
    const NSString text(u"abcabc");
    EXPECT_EQ(text.rangeOfString(u"bc"), (NSRange{1, 2}));
    EXPECT_EQ(text.rangeOfString(u"bc", NSBackwardsSearch), (NSRange{4, 2}));
    EXPECT_EQ(text.rangeOfString(u"x"), NSNotFoundRange);
    EXPECT_EQ(text.rangeOfString(u"abcabcd"), NSNotFoundRange);
    EXPECT_EQ(text.rangeOfString(u""), NSNotFoundRange);
    EXPECT_EQ(NSString().rangeOfString(u"a"), NSNotFoundRange);
}

TEST(NSStringSearching, AnAnchoredSearchOnlyLooksAtTheStartOrTheEnd) {
    const NSString text(u"abcabc");
    EXPECT_EQ(text.rangeOfString(u"abc", NSAnchoredSearch), (NSRange{0, 3}));
    EXPECT_EQ(text.rangeOfString(u"bc", NSAnchoredSearch), NSNotFoundRange);
    EXPECT_EQ(text.rangeOfString(u"bc", NSAnchoredSearch | NSBackwardsSearch), (NSRange{4, 2}));
    EXPECT_EQ(text.rangeOfString(u"ab", NSAnchoredSearch | NSBackwardsSearch), NSNotFoundRange);
    EXPECT_EQ(text.rangeOfString(u"BC", NSAnchoredSearch | NSCaseInsensitiveSearch), NSNotFoundRange);
    EXPECT_EQ(text.rangeOfString(u"BC", NSAnchoredSearch | NSBackwardsSearch | NSCaseInsensitiveSearch),
              (NSRange{4, 2}));
}

TEST(NSStringSearching, WithoutRegardToCaseAHitCoversWholeCharactersOfTheText) {
    EXPECT_EQ(NSString(u"xFoOfoo").rangeOfString(u"foo", NSCaseInsensitiveSearch), (NSRange{1, 3}));
    EXPECT_EQ(NSString(u"xFoOfoo").rangeOfString(u"FOO", NSCaseInsensitiveSearch | NSBackwardsSearch),
              (NSRange{4, 3}));
    EXPECT_EQ(NSString(u"STRA\u00DFE").rangeOfString(u"strasse", NSCaseInsensitiveSearch), (NSRange{0, 6}));
    // One half of what the sharp s folds to is no character of the text.
    EXPECT_EQ(NSString(u"a\u00DF").rangeOfString(u"as", NSCaseInsensitiveSearch), NSNotFoundRange);
    EXPECT_EQ(NSString(u"\u00DFa").rangeOfString(u"sa", NSCaseInsensitiveSearch), NSNotFoundRange);
    EXPECT_EQ(NSString(u"x\U00010400").rangeOfString(u"\U00010428", NSCaseInsensitiveSearch),
              (NSRange{1, 2}));
    EXPECT_EQ(NSString(u"ab").rangeOfString(u"abc", NSCaseInsensitiveSearch), NSNotFoundRange);
}

TEST(NSStringSearching, FindsTheFirstOrLastCharacterOfASet) {
    const auto digits = NSCharacterSet::decimalDigitCharacterSet();
    const NSString text(u"a1b2c");
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits), (NSRange{1, 1}));
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits, NSBackwardsSearch), (NSRange{3, 1}));
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits, 0, {2, 3}), (NSRange{3, 1}));
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits, NSBackwardsSearch, {0, 3}), (NSRange{1, 1}));
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits, 0, {2, 1}), NSNotFoundRange);
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits, NSAnchoredSearch), NSNotFoundRange);
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits, NSAnchoredSearch, {1, 4}), (NSRange{1, 1}));
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits, NSAnchoredSearch | NSBackwardsSearch, {0, 4}),
              (NSRange{3, 1}));
    EXPECT_EQ(text.rangeOfCharacterFromSet(*digits, NSAnchoredSearch | NSBackwardsSearch), NSNotFoundRange);
    EXPECT_EQ(NSString().rangeOfCharacterFromSet(*digits), NSNotFoundRange);
    EXPECT_THROW(text.rangeOfCharacterFromSet(*digits, 0, {3, 3}), NSException);
}

TEST(NSStringSearching, TrimsCharactersAtBothEnds) {
    const auto space = NSCharacterSet::whitespaceCharacterSet();
    EXPECT_EQ(NSString(u" \ta b ").stringByTrimmingCharactersInSet(*space), u"a b");
    EXPECT_EQ(NSString(u"ab").stringByTrimmingCharactersInSet(*space), u"ab");
    EXPECT_EQ(NSString(u" \t ").stringByTrimmingCharactersInSet(*space), u"");
    EXPECT_EQ(NSString(u"").stringByTrimmingCharactersInSet(*space), u"");
    EXPECT_TRUE(NSString().stringByTrimmingCharactersInSet(*space).isNull());
    const auto face = NSCharacterSet::characterSetWithCharactersInString(u"\U0001F600");
    EXPECT_EQ(NSString(u"\U0001F600\U0001F601\U0001F600").stringByTrimmingCharactersInSet(*face),
              u"\U0001F601");
}
