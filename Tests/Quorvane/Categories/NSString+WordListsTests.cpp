#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Platform/Foundation/NSRegularExpression.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

NSString pattern(std::initializer_list<NSString> words) {
    return qv_regularExpressionPatternForWordList(words);
}

} // namespace

TEST(QVWordListPattern, GroupsWordsByTheirFirstCharacterAndTriesLongerOnesFirst) {
    EXPECT_EQ(pattern({u"if", u"in", u"int"}), u"(?:(?:i(?:nt|f|n)))");
    EXPECT_EQ(pattern({u"do", u"if", u"double"}), u"(?:(?:d(?:ouble|o))|(?:i(?:f)))");
}

TEST(QVWordListPattern, SinglesComeBeforeTheGroups) {
    EXPECT_EQ(pattern({u"a"}), u"(?:a)");
    EXPECT_EQ(pattern({u"b", u"a"}), u"(?:a|b)");
    EXPECT_EQ(pattern({u"ab", u"a"}), u"(?:a|(?:a(?:b)))");
}

TEST(QVWordListPattern, DuplicatesAndEmptyWordsAreDropped) {
    EXPECT_EQ(pattern({u"if", u"", u"if", NSString(), u"x", u"x"}), u"(?:x|(?:i(?:f)))");
}

TEST(QVWordListPattern, WithoutWordsThePatternIsEmpty) {
    EXPECT_EQ(pattern({}), u"");
    EXPECT_EQ(pattern({u"", NSString()}), u"");
}

TEST(QVWordListPattern, EveryPieceIsEscaped) {
    EXPECT_EQ(pattern({u"+", u"*=", u"**", u"a.b"}), u"(?:\\+|(?:\\*(?:\\*|=))|(?:a(?:\\.b)))");
}

TEST(QVWordListPattern, APairOfSurrogatesIsOneCharacterAndNeverCut) {
    EXPECT_EQ(pattern({u"\U0001F600"}), u"(?:\U0001F600)");
    EXPECT_EQ(pattern({u"\U0001F600a", u"\U0001F601b", u"\U0001F600"}),
              u"(?:\U0001F600|(?:\U0001F600(?:a))|(?:\U0001F601(?:b)))");
}

TEST(QVWordListPattern, MatchesEachOfItsWordsAsAWhole) {
    const std::vector<NSString> words{u"for", u"foreach", u"f", u"while", u"wh", u"$x", u"\u00FCber"};
    const auto expression = NSRegularExpression::regularExpressionWithPattern(
        NSString(u"^")
            .stringByAppendingString(qv_regularExpressionPatternForWordList(words))
            .stringByAppendingString(u"$"),
        0);
    ASSERT_NE(expression, nullptr);
    for (const NSString &word : words)
        EXPECT_EQ(expression->rangeOfFirstMatchInString(word, 0, {0, word.length()}),
                  (NSRange{0, word.length()}));
    for (const NSString &other : {NSString(u"fo"), NSString(u"w"), NSString(u"x"), NSString(u"")})
        EXPECT_EQ(expression->rangeOfFirstMatchInString(other, 0, {0, other.length()}), NSNotFoundRange);
}
