#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Quorvane/RegularExpressions/RegularExpressionFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

TEST(QVRegularExpressionResult, ADefaultResultHoldsOneRangeThatIsNotFound) {
    const QVRegularExpressionResult result;
    EXPECT_EQ(result.numberOfRanges(), 1u);
    EXPECT_EQ(result.range(), NSNotFoundRange);
    EXPECT_EQ(result.regularExpression(), nullptr);
    EXPECT_EQ(result.rangeWithName(u"n"), NSNotFoundRange);
}

TEST(QVRegularExpressionResult, HoldsTheWholeMatchAndItsGroups) {
    const auto expression = expressionFor(u"(a)|(b)(c)?");
    const auto result = expression->firstMatchInString(u"xb", 0, {0, 2});
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->regularExpression(), expression);
    EXPECT_EQ(result->numberOfRanges(), 4u);
    EXPECT_EQ(result->range(), (NSRange{1, 1}));
    EXPECT_EQ(result->rangeAtIndex(0), (NSRange{1, 1}));
    // Groups 1 and 3 took no part, one before and one behind the highest that did.
    EXPECT_EQ(result->rangeAtIndex(1), NSNotFoundRange);
    EXPECT_EQ(result->rangeAtIndex(2), (NSRange{1, 1}));
    EXPECT_EQ(result->rangeAtIndex(3), NSNotFoundRange);
}

TEST(QVRegularExpressionResult, AnIndexBehindTheLastRangeThrows) {
    const auto result = expressionFor(u"(a)")->firstMatchInString(u"a", 0, {0, 1});
    EXPECT_EQ(result->rangeAtIndex(1), (NSRange{0, 1}));
    try {
        static_cast<void>(result->rangeAtIndex(2));
        FAIL() << "no exception";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), NSInvalidArgumentException);
        EXPECT_EQ(exception.reason(), u"Range index exceeds the number of ranges in the match");
    }
}

TEST(QVRegularExpressionResult, RangesAreFoundByName) {
    const auto result =
        expressionFor(u"(?<key>\\w+)=(?<value>\\d+)?")->firstMatchInString(u" ab=", 0, {0, 4});
    EXPECT_EQ(result->rangeWithName(u"key"), (NSRange{1, 2}));
    EXPECT_EQ(result->rangeWithName(u"value"), NSNotFoundRange);
    EXPECT_EQ(result->rangeWithName(u"nosuch"), NSNotFoundRange);
}

TEST(QVRegularExpressionResult, ANameFoundBehindTheRangesIsNotFound) {
    const QVRegularExpressionResult result(expressionFor(u"(a)(?<n>b)"), {{0, 2}, {0, 1}});
    EXPECT_EQ(result.rangeWithName(u"n"), NSNotFoundRange);
}

TEST(QVRegularExpressionResult, AdjustingMovesEveryRangeThatExists) {
    const auto expression = expressionFor(u"(a)|(b)");
    const auto result =
        QVRegularExpressionResult::initWithRegularExpression(expression, {{5, 3}, NSNotFoundRange, {6, 0}});
    const auto moved = result->resultByAdjustingRangesWithOffset(-2);
    EXPECT_EQ(moved->regularExpression(), expression);
    EXPECT_EQ(moved->numberOfRanges(), 3u);
    EXPECT_EQ(moved->rangeAtIndex(0), (NSRange{3, 3}));
    EXPECT_EQ(moved->rangeAtIndex(1), NSNotFoundRange);
    EXPECT_EQ(moved->rangeAtIndex(2), (NSRange{4, 0}));
    EXPECT_EQ(result->resultByAdjustingRangesWithOffset(10)->range(), (NSRange{15, 3}));
    EXPECT_EQ(result->range(), (NSRange{5, 3}));
}

TEST(QVRegularExpressionResult, ACopyIsTheSameObject) {
    const auto result = std::make_shared<QVRegularExpressionResult>();
    EXPECT_EQ(result->copy(), result);
}

TEST(QVRegularExpressionResult, OutlivesTheMatchAndTheContext) {
    std::shared_ptr<QVRegularExpressionResult> kept;
    {
        const auto expression = expressionFor(u"(b)(c)");
        QVRegularExpressionMatchContext context;
        const GuardedText text(u"abc");
        expression->enumerateMatchesInCharacters(
            text.characters(), text.length(), 0, {1, 2}, &context,
            [&](QVPCRE2MatchData *data, NSUInteger baseOffset, bool &) {
                kept = QVRegularExpressionResult::initWithRegularExpression(expression, data, baseOffset);
            });
    }
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->range(), (NSRange{1, 2}));
    EXPECT_EQ(kept->rangeAtIndex(2), (NSRange{2, 1}));
    EXPECT_EQ(kept->regularExpression()->pattern(), u"(b)(c)");
}
