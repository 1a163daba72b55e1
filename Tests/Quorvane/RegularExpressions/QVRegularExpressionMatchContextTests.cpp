#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/RegularExpressions/PCRE2.h"
#include "Tests/Quorvane/RegularExpressions/RegularExpressionFixtures.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(QVRegularExpressionMatchContext, HasNoMatchDataUntilItIsPrepared) {
    const QVRegularExpressionMatchContext context;
    EXPECT_NE(context.matchContext(), nullptr);
    EXPECT_EQ(context.matchData(), nullptr);
    EXPECT_EQ(context.matchDataSize(), 0u);
}

TEST(QVRegularExpressionMatchContext, MatchDataGrowsAndIsKeptForSmallerExpressions) {
    QVRegularExpressionMatchContext context;
    context.prepareForRegularExpression(*expressionFor(u"a"));
    EXPECT_EQ(context.matchDataSize(), 1u);
    context.prepareForRegularExpression(*expressionFor(u"(a)(b)(c)"));
    EXPECT_EQ(context.matchDataSize(), 4u);
    EXPECT_EQ(pcre2_get_ovector_count_16(context.matchData()), 4u);
    const auto *const data = context.matchData();
    context.prepareForRegularExpression(*expressionFor(u"(a)"));
    EXPECT_EQ(context.matchData(), data);
    EXPECT_EQ(context.matchDataSize(), 4u);
}

TEST(QVRegularExpressionMatchContext, ServesOneExpressionAfterAnother) {
    QVRegularExpressionMatchContext context;
    const GuardedText text(u"ab12");
    EXPECT_THAT(matchRanges(*expressionFor(u"([a-z])", 64), text, 0, text.range(), &context),
                ElementsAre(NSRange{0, 1}, NSRange{1, 1}));
    EXPECT_THAT(matchRanges(*expressionFor(u"(\\d)(\\d)"), text, 0, text.range(), &context),
                ElementsAre(NSRange{2, 2}));
    EXPECT_THAT(matchRanges(*expressionFor(u"b", 64), text, QVMatchingRangeLimit, {1, 1}, &context),
                ElementsAre(NSRange{1, 1}));
}

TEST(QVRegularExpressionMatchContext, APatternThatNeedsMoreHeapThanItMayTakeDoesNotMatch) {
    // Each turn of the group is remembered for the way back; the library would take gigabytes.
    const auto expression = expressionFor(u"^(?:(a)|b)*c");
    QVRegularExpressionMatchContext context;
    QVMatchingOutcome outcome;
    const GuardedText tooLong(std::u16string(2'000'000, u'a') + u"c");
    EXPECT_THAT(matchRanges(*expression, tooLong, 0, tooLong.range(), &context, &outcome), IsEmpty());
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Error);
    EXPECT_EQ(outcome.errorCode, PCRE2_ERROR_HEAPLIMIT);
    // The temporary context of a string's enumeration has the same limit.
    EXPECT_EQ(expression->numberOfMatchesInString(std::u16string(2'000'000, u'a') + u"c", 0, {0, 2'000'001}),
              0u);
    const GuardedText shortEnough(std::u16string(10'000, u'a') + u"c");
    EXPECT_THAT(matchRanges(*expression, shortEnough, 0, shortEnough.range(), &context, &outcome),
                ElementsAre(NSRange{0, 10'001}));
}

TEST(QVRegularExpressionMatchContext, TheHeapLimitIsTheNamedOne) {
    // The longest text that a new context can match is the longest one for the named limit, and no more.
    const auto expression = expressionFor(u"^(?:(a)|b)*c");
    const GuardedText text(std::u16string(1'000'000, u'a') + u"c");
    const auto matches = [&](NSUInteger count, std::optional<std::uint32_t> kibibytes) {
        QVRegularExpressionMatchContext context;
        if (kibibytes)
            pcre2_set_heap_limit_16(context.matchContext(), *kibibytes);
        const NSRange range{text.length() - 1 - count, count + 1};
        return !matchRanges(*expression, text, 0, range, &context).empty();
    };
    NSUInteger longest = 1'000;
    NSUInteger tooLong = 1'000'000;
    ASSERT_TRUE(matches(longest, std::nullopt));
    ASSERT_FALSE(matches(tooLong, std::nullopt));
    while (tooLong - longest > 1) {
        const NSUInteger middle = longest + (tooLong - longest) / 2;
        (matches(middle, std::nullopt) ? longest : tooLong) = middle;
    }
    EXPECT_TRUE(matches(longest, limits::patternHeapKibibytes));
    EXPECT_FALSE(matches(tooLong, limits::patternHeapKibibytes));
    EXPECT_TRUE(matches(tooLong, 2 * limits::patternHeapKibibytes));
    EXPECT_FALSE(matches(longest, limits::patternHeapKibibytes / 2));
}
