#include "Quorvane/RegularExpressions/QVCombinedExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

constexpr QVRegularExpressionOptions plain = QVRegularExpressionMultiline | QVRegularExpressionUseJIT;

using Expressions = std::vector<std::shared_ptr<const QVRegularExpression>>;

std::shared_ptr<const QVRegularExpression> expression(std::u16string_view pattern,
                                                      QVRegularExpressionOptions options = plain) {
    return QVRegularExpression::regularExpressionWithPattern(NSString(pattern), options);
}

bool canCombine(std::u16string_view pattern, QVRegularExpressionOptions options = plain) {
    const auto compiled = expression(pattern, options);
    return compiled && QVCombinedExpression::canCombine(*compiled);
}

/// The answer at a place, as "index:end"; "-" for none.
std::string answer(const Expressions &expressions, std::u16string_view text, NSUInteger location) {
    const auto combined = QVCombinedExpression::combinedExpressionForExpressions(expressions);
    if (!combined)
        return "not combined";
    // One readable unit before and behind, as every text has that a matcher sees.
    const std::u16string buffer = u" " + std::u16string(text) + u" ";
    QVRegularExpressionMatchContext context;
    const auto found =
        combined->matchAtLocation(location, std::u16string_view(buffer).substr(1, text.size()), context);
    if (found.index == QVCombinedExpression::noExpression)
        return "-";
    return std::to_string(found.index) + ":" + std::to_string(found.end);
}

} // namespace

TEST(QVCombinedExpression, OfThoseThatMatchAtAPlaceTheFirstInOrderAnswers) {
    const Expressions expressions{expression(u"abc"), expression(u"a\\w*"), expression(u"ab|b")};
    EXPECT_EQ(answer(expressions, u"abcd", 0), "0:3");
    EXPECT_EQ(answer(expressions, u"abxd", 0), "1:4");
    EXPECT_EQ(answer(expressions, u"abxd", 1), "2:2");
}

TEST(QVCombinedExpression, IsTriedAtItsPlaceAloneAndSeesWhatStandsAround) {
    const Expressions expressions{expression(u"(?<=x)b"), expression(u"\\bc"), expression(u"d(?=e)")};
    EXPECT_EQ(answer(expressions, u"xb cde", 0), "-");
    EXPECT_EQ(answer(expressions, u"xb cde", 1), "0:2");
    EXPECT_EQ(answer(expressions, u"ab cde", 1), "-");
    EXPECT_EQ(answer(expressions, u"xb cde", 3), "1:4");
    EXPECT_EQ(answer(expressions, u"xb cde", 4), "2:5");
    EXPECT_EQ(answer(expressions, u"xb cd", 4), "-");
}

TEST(QVCombinedExpression, AUnitThatALookAheadAsksForMayBeTheOneThatIsTaken) {
    const Expressions expressions{expression(u"(?=1)[ab]?1"), expression(u"(?=1)1[cd]?1")};
    EXPECT_EQ(answer(expressions, u"x1", 1), "0:2");
}

TEST(QVCombinedExpression, EachExpressionKeepsItsOwnOptions) {
    const Expressions expressions{
        expression(u"a b # and no more", plain | QVRegularExpressionExtended),
        expression(u"c d", plain | QVRegularExpressionCaseInsensitive),
        expression(u"e.f", plain | QVRegularExpressionDotAll),
        expression(u"g.h"),
    };
    EXPECT_EQ(answer(expressions, u"ab", 0), "0:2");
    EXPECT_EQ(answer(expressions, u"a b", 0), "-");
    EXPECT_EQ(answer(expressions, u"C D", 0), "1:3");
    EXPECT_EQ(answer(expressions, u"AB", 0), "-");
    EXPECT_EQ(answer(expressions, u"e\nf", 0), "2:3");
    EXPECT_EQ(answer(expressions, u"g\nh", 0), "-");
}

TEST(QVCombinedExpression, OptionsSetWithinAPatternEndWithIt) {
    EXPECT_EQ(answer({expression(u"(?i)a"), expression(u"b")}, u"B", 0), "-");
    EXPECT_EQ(answer({expression(u"(?i)a"), expression(u"b")}, u"A", 0), "0:1");
}

TEST(QVCombinedExpression, LineAnchorsActAtLines) {
    EXPECT_EQ(answer({expression(u"^a"), expression(u"b$")}, u"x\nab\n", 2), "0:3");
    EXPECT_EQ(answer({expression(u"^a"), expression(u"b$")}, u"x\nab\n", 3), "1:4");
}

TEST(QVCombinedExpression, PatternsThatDependOnTheirGroupsOrTheirPlaceStandAlone) {
    EXPECT_TRUE(canCombine(u"(a)(?:b|c)(?=d)(?<!e)"));
    EXPECT_TRUE(canCombine(u"(?|(a)|(b))"));
    for (const char16_t *const pattern :
         {u"(a)\\1", u"(a)\\g1", u"(?<n>a)", u"(?<n>a)\\k<n>", u"(a|(?1))", u"a(?R)?", u"(a)(?(1)b)", u"\\Qa",
          u"a\\Eb", u"\\Ga", u"a\\Kb", u"(*UCP)a", u"a(*SKIP)b", u"(?x)a b", u"(?i-x)a", u"(?C)a"})
        EXPECT_FALSE(canCombine(pattern)) << NSString(pattern).UTF8String();
}

TEST(QVCombinedExpression, OnlyExpressionsInMachineCodeOverAllKindsOfLinesAreCombined) {
    EXPECT_TRUE(canCombine(u"a"));
    EXPECT_FALSE(canCombine(u"a", QVRegularExpressionMultiline));
    EXPECT_FALSE(canCombine(u"a", QVRegularExpressionUseJIT));
    EXPECT_FALSE(canCombine(u"a", plain | QVRegularExpressionLiteral));
    EXPECT_FALSE(canCombine(u"a", plain | QVRegularExpressionNewlineLF));
}

TEST(QVCombinedExpression, TheSameExpressionsShareOneObject) {
    const auto a = expression(u"a");
    const auto b = expression(u"b");
    const Expressions both{a, b};
    const auto first = QVCombinedExpression::combinedExpressionForExpressions(both);
    EXPECT_EQ(QVCombinedExpression::combinedExpressionForExpressions(both), first);
    EXPECT_NE(QVCombinedExpression::combinedExpressionForExpressions(Expressions{b, a}), first);
    // Equal patterns of another grammar are others: each lives as long as its own.
    EXPECT_NE(QVCombinedExpression::combinedExpressionForExpressions(Expressions{a, expression(u"b")}),
              first);
}

TEST(QVCombinedExpression, LivesAsLongAsTheFirstOfItsExpressions) {
    auto a = expression(u"a");
    const auto b = expression(u"b");
    std::weak_ptr<const QVCombinedExpression> combined =
        QVCombinedExpression::combinedExpressionForExpressions(Expressions{a, b});
    EXPECT_FALSE(combined.expired());
    a = nullptr;
    EXPECT_TRUE(combined.expired());
}

TEST(QVCombinedExpression, ListsWhoseExpressionsAreGoneMakeRoomForOthers) {
    const auto a = expression(u"a");
    std::weak_ptr<const QVCombinedExpression> old =
        QVCombinedExpression::combinedExpressionForExpressions(Expressions{a, expression(u"b")});
    const auto c = expression(u"c");
    EXPECT_NE(QVCombinedExpression::combinedExpressionForExpressions(Expressions{a, c}), nullptr);
    EXPECT_TRUE(old.expired());
}

TEST(QVCombinedExpression, NothingIsNoExpression) {
    EXPECT_EQ(QVCombinedExpression::combinedExpressionForExpressions({}), nullptr);
}

TEST(QVCombinedExpression, ASpentMatcherLeavesTheQuestionOpen) {
    // Nested repetition over a text that never fits, far beyond the matcher's limits.
    const Expressions expressions{expression(u"(?:(?:a+)+)+b"), expression(u"a")};
    const std::u16string text = u" " + std::u16string(64, u'a') + u" ";
    QVRegularExpressionMatchContext context;
    const auto combined = QVCombinedExpression::combinedExpressionForExpressions(expressions);
    ASSERT_NE(combined, nullptr);
    EXPECT_EQ(combined->matchAtLocation(0, std::u16string_view(text).substr(1, 64), context).index,
              QVCombinedExpression::unknownExpression);
}

TEST(QVCombinedExpression, GroupsOfAnExpressionStandBehindThoseOfTheOnesBeforeIt) {
    const Expressions expressions{expression(u"(a)(b)"), expression(u"(x)(y)?(z)"), expression(u"(a)c(d)")};
    const auto combined = QVCombinedExpression::combinedExpressionForExpressions(expressions);
    ASSERT_TRUE(combined);
    const std::u16string buffer = u" xzabacd ";
    const auto text = std::u16string_view(buffer).substr(1, 7);
    QVRegularExpressionMatchContext context;

    const auto second = combined->matchAtLocation(0, text, context);
    ASSERT_EQ(second.index, 1);
    const QVGroupsOfHit ofSecond{context.matchData(), second.groupsBefore};
    EXPECT_EQ(ofSecond.rangeAtIndex(0), (NSRange{0, 2}));
    EXPECT_EQ(ofSecond.rangeAtIndex(1), (NSRange{0, 1}));
    EXPECT_EQ(ofSecond.rangeAtIndex(2), NSNotFoundRange);
    EXPECT_EQ(ofSecond.rangeAtIndex(3), (NSRange{1, 1}));

    const auto first = combined->matchAtLocation(2, text, context);
    ASSERT_EQ(first.index, 0);
    EXPECT_EQ((QVGroupsOfHit{context.matchData(), first.groupsBefore}.rangeAtIndex(2)), (NSRange{3, 1}));

    // The first one took its "a" before it failed.
    const auto third = combined->matchAtLocation(4, text, context);
    ASSERT_EQ(third.index, 2);
    EXPECT_EQ((QVGroupsOfHit{context.matchData(), third.groupsBefore}.rangeAtIndex(1)), (NSRange{4, 1}));
    EXPECT_EQ((QVGroupsOfHit{context.matchData(), third.groupsBefore}.rangeAtIndex(2)), (NSRange{6, 1}));
    EXPECT_EQ((QVGroupsOfHit{context.matchData(), 0}.rangeAtIndex(1)), NSNotFoundRange);
}

TEST(QVCombinedExpression, AHitsGroupsAreToldByTheNumberOfItsMatchUntilTheNextOne) {
    const auto words = expression(u"(\\w)\\w+");
    const std::u16string buffer = u" ab cd ";
    QVRegularExpressionMatchContext context;
    const auto search = [&](NSRange range) {
        return words->directSearchInCharacters(buffer.data() + 1, 5, range, context, false);
    };
    const QVMatchingOutcome first = search({0, 5});
    ASSERT_EQ(first.kind, QVMatchingOutcome::Hit);
    EXPECT_EQ(first.matchNumber, context.matchNumber());
    EXPECT_EQ((QVGroupsOfHit{context.matchData()}.rangeAtIndex(1)), (NSRange{0, 1}));
    const QVMatchingOutcome second = search({2, 3});
    EXPECT_NE(first.matchNumber, context.matchNumber());
    EXPECT_EQ(second.matchNumber, context.matchNumber());
    EXPECT_EQ(search({4, 1}).matchNumber, 0u);
    EXPECT_NE(second.matchNumber, context.matchNumber());
}
