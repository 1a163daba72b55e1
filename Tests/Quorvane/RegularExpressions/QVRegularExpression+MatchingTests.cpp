#include "Platform/Foundation/NSException.h"
#include "Quorvane/RegularExpressions/PCRE2.h"
#include "Tests/Quorvane/RegularExpressions/RegularExpressionFixtures.h"

#include <gmock/gmock.h>

#include <thread>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Both ways to run a pattern, which must not be told apart.
class EachForm : public testing::TestWithParam<QVRegularExpressionOptions> {
protected:
    std::shared_ptr<QVRegularExpression> make(const NSString &pattern) const {
        return expressionFor(pattern, GetParam());
    }
};
INSTANTIATE_TEST_SUITE_P(QVRegularExpression, EachForm,
                         testing::Values(QVRegularExpressionOptions(0), QVRegularExpressionUseJIT),
                         [](const auto &form) { return form.param == 0 ? "Interpreted" : "Compiled"; });

} // namespace

TEST_P(EachForm, EnumeratesMatchesInOrder) {
    EXPECT_THAT(matchRanges(*make(u"a."), u"ab-ac-ad"),
                ElementsAre(NSRange{0, 2}, NSRange{3, 2}, NSRange{6, 2}));
    EXPECT_THAT(matchRanges(*make(u"x"), u"ab"), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"x"), u""), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"^$"), u""), ElementsAre(NSRange{0, 0}));
}

TEST_P(EachForm, AnEmptyPatternMatchesAtEveryOffsetOfTheRangeAndAtItsEnd) {
    EXPECT_THAT(matchRanges(*make(u""), u"abcdef", QVMatchingRangeLimit, {1, 3}),
                ElementsAre(NSRange{1, 0}, NSRange{2, 0}, NSRange{3, 0}, NSRange{4, 0}));
    EXPECT_THAT(matchRanges(*make(u""), u"abc"),
                ElementsAre(NSRange{0, 0}, NSRange{1, 0}, NSRange{2, 0}, NSRange{3, 0}));
}

TEST_P(EachForm, TheStepBehindAnEmptyMatchDoesNotLookAtSurrogatePairs) {
    EXPECT_THAT(matchRanges(*make(u""), u"\U0001F600a", QVMatchingRangeLimit),
                ElementsAre(NSRange{0, 0}, NSRange{1, 0}, NSRange{2, 0}, NSRange{3, 0}));
}

TEST_P(EachForm, AnEmptyRangeAtALocationCanStillHoldAnEmptyMatch) {
    EXPECT_THAT(matchRanges(*make(u"x*"), u"abc", QVMatchingRangeLimit, {2, 0}), ElementsAre(NSRange{2, 0}));
    EXPECT_THAT(matchRanges(*make(u"$"), u"abc", QVMatchingRangeLimit, {3, 0}), ElementsAre(NSRange{3, 0}));
    EXPECT_THAT(matchRanges(*make(u"c"), u"abc", QVMatchingRangeLimit, {2, 0}), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"x*"), u"abc", 0, {0, 0}), ElementsAre(NSRange{0, 0}));
}

// What a pattern sees of the text around its range

TEST_P(EachForm, WithARangeLimitThePatternLooksBehindTheRangesStart) {
    EXPECT_THAT(matchRanges(*make(u"(?<=a)b"), u"ab", QVMatchingRangeLimit, {1, 1}),
                ElementsAre(NSRange{1, 1}));
    EXPECT_THAT(matchRanges(*make(u"(?<=a)b"), u"ab", 0, {1, 1}), IsEmpty());
}

TEST_P(EachForm, WithARangeLimitThePatternLooksBeyondTheRangesEnd) {
    EXPECT_THAT(matchRanges(*make(u"a(?=b)"), u"ab", QVMatchingRangeLimit, {0, 1}),
                ElementsAre(NSRange{0, 1}));
    EXPECT_THAT(matchRanges(*make(u"a(?=b)"), u"ab", 0, {0, 1}), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"a\\b"), u"ab", QVMatchingRangeLimit, {0, 1}), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"a\\b"), u"ab", 0, {0, 1}), ElementsAre(NSRange{0, 1}));
}

TEST_P(EachForm, WithoutARangeLimitCaretAndDollarActAtTheRangesEdges) {
    EXPECT_THAT(matchRanges(*make(u"^b$"), u"abc", 0, {1, 1}), ElementsAre(NSRange{1, 1}));
    EXPECT_THAT(matchRanges(*make(u"^b"), u"abc", QVMatchingRangeLimit, {1, 1}), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"b$"), u"abc", QVMatchingRangeLimit, {1, 1}), IsEmpty());
}

TEST_P(EachForm, AMatchThatRunsBeyondTheRangeEndsTheEnumerationUnreported) {
    // From 0 "ab", from 3 "abbb", which ends at 7 behind the range's end; "a" at 8 is not looked for.
    EXPECT_THAT(matchRanges(*make(u"ab*"), u"ab-abbb-a", QVMatchingRangeLimit, {0, 6}),
                ElementsAre(NSRange{0, 2}));
    QVRegularExpressionMatchContext context;
    QVMatchingOutcome outcome;
    const GuardedText text(u"abbb a");
    EXPECT_THAT(matchRanges(*make(u"ab*"), text, QVMatchingRangeLimit, {0, 2}, &context, &outcome),
                IsEmpty());
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Overrun);
    EXPECT_THAT(matchRanges(*make(u"ab*"), text, QVMatchingRangeLimit, {0, 4}, &context, &outcome),
                ElementsAre(NSRange{0, 4}));
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Finished);
}

TEST_P(EachForm, NoMatchStartsBehindTheRangesEnd) {
    EXPECT_THAT(matchRanges(*make(u"b"), u"aab", QVMatchingRangeLimit, {0, 2}), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"(?=b)"), u"aab", QVMatchingRangeLimit, {0, 2}),
                ElementsAre(NSRange{2, 0}));
    // The search behind the empty match at 2 would begin at 3.
    EXPECT_THAT(matchRanges(*make(u""), u"aab", QVMatchingRangeLimit, {2, 0}), ElementsAre(NSRange{2, 0}));
}

TEST_P(EachForm, WithoutARangeLimitTheNextSearchBeginsAsFarTooLowAsTheRangeStarts) {
    // Offsets count from the range's start, and the start is taken off once more; meant so. Searched from
    // offset 0: "ab" at offset 0 ends at 2, 2 - 1 = 1; from there "ab" at offset 3, ends at 5; 5 - 1 = 4: no
    // more.
    EXPECT_THAT(matchRanges(*make(u"ab"), u"-ab-ab", 0, {1, 5}), ElementsAre(NSRange{1, 2}, NSRange{4, 2}));
    // "a" at offset 2 ends at 3, and the search goes on from 1 and finds it again, which ends the
    // enumeration.
    EXPECT_THAT(matchRanges(*make(u"a"), u"----a-a", 0, {2, 5}), ElementsAre(NSRange{4, 1}));
    // An end at offset 1 in a range that starts at 3 gives an offset below zero, which ends it too.
    EXPECT_THAT(matchRanges(*make(u"a"), u"---a-a", 0, {3, 3}), ElementsAre(NSRange{3, 1}));
    // The step over an empty match counts: at offset 0, then from 0 - 1 + 1 = 0 the same again.
    EXPECT_THAT(matchRanges(*make(u""), u"abc", 0, {1, 2}), ElementsAre(NSRange{1, 0}));
}

TEST_P(EachForm, HitsThatComeBackInTurnEndTheEnumeration) {
    // "abcde" at offset 0 ends at 5, 5 - 3 = 2; "c" at offset 2 ends at 3, 3 - 3 = 0, and so on for ever.
    NSUInteger count = 0;
    make(u"abcde|c")
        ->enumerateMatchesInString(
            u"---abcde", 0, {3, 5}, [&](const std::shared_ptr<QVRegularExpressionResult> &result, bool &) {
                EXPECT_EQ(result->range(), count % 2 == 0 ? (NSRange{3, 5}) : (NSRange{5, 1}));
                ++count;
            });
    EXPECT_GE(count, 2u);
    EXPECT_LE(count, 6u);
}

TEST_P(EachForm, AMatchThatMovesItsStartToItsEndDoesNotComeBackForEver) {
    // Every match is empty at the end of an "a"; the step over it goes on behind it.
    EXPECT_THAT(matchRanges(*make(u"a\\K"), u"aab", QVMatchingRangeLimit), ElementsAre(NSRange{1, 0}));
}

// Bounds

TEST_P(EachForm, ARangeLimitBeyondTheStringIsAProgrammingError) {
    const auto expression = make(u"a");
    const AssertionRecorder assertions;
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", QVMatchingRangeLimit, {0, 3}), 3u);
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", QVMatchingRangeLimit, {3, 0}), 0u);
    EXPECT_THAT(assertions.messages(), IsEmpty());
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", QVMatchingRangeLimit, {1, 3}), 0u);
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Range limit exceeds bounds of string"));
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", QVMatchingRangeLimit, {4, 0}), 0u);
    // Start and end are checked one by one.
    EXPECT_THAT(assertions.messages(),
                ElementsAre(u"Range limit exceeds bounds of string", u"Range limit exceeds bounds of string",
                            u"Range limit exceeds bounds of string"));
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", QVMatchingRangeLimit, {1, ~NSUInteger(0)}), 0u);
    EXPECT_EQ(assertions.messages().size(), 4u);
}

TEST_P(EachForm, ANarrowedRangeBeyondTheStringMatchesNothing) {
    const auto expression = make(u"a");
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", 0, {1, 3}), 0u);
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", 0, {4, 0}), 0u);
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", 0, NSNotFoundRange), 0u);
    EXPECT_EQ(expression->numberOfMatchesInString(u"aaa", 0, {2, ~NSUInteger(0)}), 0u);
}

TEST_P(EachForm, ANullStringIsAProgrammingError) {
    const auto expression = make(u"");
    const AssertionRecorder assertions;
    expression->enumerateMatchesInString(nullptr, 0, {0, 0},
                                         [](const std::shared_ptr<QVRegularExpressionResult> &, bool &) {});
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Invalid parameter not satisfying: string != nil"));
}

// Options

TEST_P(EachForm, AnchoredMakesOneAttemptAtTheRangesStart) {
    EXPECT_THAT(matchRanges(*make(u"a"), u"aaa", QVMatchingAnchored), ElementsAre(NSRange{0, 1}));
    EXPECT_THAT(matchRanges(*make(u"a"), u"aaa", QVMatchingAnchored, {1, 2}), ElementsAre(NSRange{1, 1}));
    EXPECT_THAT(matchRanges(*make(u"a"), u"baa", QVMatchingAnchored), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"(?<=b)a"), u"baa", QVMatchingAnchored | QVMatchingRangeLimit, {1, 2}),
                ElementsAre(NSRange{1, 1}));
}

TEST_P(EachForm, AnAnchoredMatchThatRunsBeyondTheRangeIsNotReported) {
    EXPECT_THAT(matchRanges(*make(u"a+"), u"aaab", QVMatchingAnchored | QVMatchingRangeLimit, {0, 2}),
                IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"a+"), u"aaab", QVMatchingAnchored | QVMatchingRangeLimit, {0, 3}),
                ElementsAre(NSRange{0, 3}));
    // Without the limit the range is all there is.
    EXPECT_THAT(matchRanges(*make(u"a+"), u"aaab", QVMatchingAnchored, {0, 2}), ElementsAre(NSRange{0, 2}));
}

TEST_P(EachForm, EndAnchoredMatchesOnlyUpToTheEndOfWhatThePatternSees) {
    EXPECT_THAT(matchRanges(*make(u"a"), u"aba", QVMatchingEndAnchored), ElementsAre(NSRange{2, 1}));
    EXPECT_THAT(matchRanges(*make(u"a"), u"aba", QVMatchingEndAnchored, {0, 1}), ElementsAre(NSRange{0, 1}));
    EXPECT_THAT(matchRanges(*make(u"a"), u"aba", QVMatchingEndAnchored | QVMatchingRangeLimit, {0, 1}),
                IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"a+?"), u"aaa", QVMatchingEndAnchored | QVMatchingAnchored),
                ElementsAre(NSRange{0, 3}));
}

TEST_P(EachForm, WithoutLineBoundariesCaretAndDollarDoNotMatchAtTheEdges) {
    EXPECT_THAT(matchRanges(*make(u"^a"), u"a", QVMatchingNoLineBoundaries), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"a$"), u"a", QVMatchingNoLineBoundaries), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"\\Aa\\z"), u"a", QVMatchingNoLineBoundaries), ElementsAre(NSRange{0, 1}));
}

TEST_P(EachForm, TheCallbackStopsAnEnumeration) {
    const auto expression = make(u"a");
    NSUInteger count = 0;
    expression->enumerateMatchesInString(
        u"aaaa", 0, {0, 4},
        [&](const std::shared_ptr<QVRegularExpressionResult> &, bool &stop) { stop = ++count == 2; });
    EXPECT_EQ(count, 2u);
}

TEST_P(EachForm, AMatcherThatGivesUpEndsTheEnumerationAndTellsWhy) {
    // Nested repetition that finds no end tries ten million ways.
    const auto expression = make(u"b|(?:a+)+$");
    QVRegularExpressionMatchContext context;
    QVMatchingOutcome outcome;
    const GuardedText text(joined({u"b", std::u16string(40, u'a'), u"!b"}));
    EXPECT_THAT(matchRanges(*expression, text, 0, text.range(), &context, &outcome),
                ElementsAre(NSRange{0, 1}));
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Error);
    EXPECT_EQ(outcome.errorCode, PCRE2_ERROR_MATCHLIMIT);
    EXPECT_EQ(QVRegularExpression::stringForPCRE2ErrorCode(outcome.errorCode), u"match limit exceeded");
}

// The lowest level

TEST_P(EachForm, TheBaseOffsetTurnsOffsetsIntoPositionsOfTheBuffer) {
    const auto expression = make(u"(b)(x)?(c)");
    const GuardedText text(u"abc");
    for (const QVMatchingOptions options : {QVMatchingOptions(0), QVMatchingRangeLimit}) {
        NSUInteger count = 0;
        expression->enumerateMatchesInCharacters(
            text.characters(), text.length(), options, {1, 2}, nullptr,
            [&](QVPCRE2MatchData *data, NSUInteger baseOffset, bool &) {
                ++count;
                EXPECT_EQ(baseOffset, options == 0 ? 1u : 0u);
                EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(data, 0, baseOffset), (NSRange{1, 2}));
                EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(data, 1, baseOffset), (NSRange{1, 1}));
                EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(data, 2, baseOffset), NSNotFoundRange);
                EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(data, 3, baseOffset), (NSRange{2, 1}));
                EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(data, 3, baseOffset + 10), (NSRange{12, 1}));
            });
        EXPECT_EQ(count, 1u);
    }
}

TEST_P(EachForm, AnEnumerationMayHaveNoCallback) {
    const GuardedText text(u"aab");
    EXPECT_EQ(
        make(u"a")->enumerateMatchesInCharacters(text.characters(), 3, 0, {0, 3}, nullptr, nullptr).kind,
        QVMatchingOutcome::Finished);
}

TEST(QVPCRE2MatchDataRangeAtIndex, AMatchThatEndsBeforeItsStartIsEmpty) {
    pcre2_match_data_16 *const data = pcre2_match_data_create_16(2, nullptr);
    PCRE2_SIZE *const vector = pcre2_get_ovector_pointer_16(data);
    vector[0] = 5;
    vector[1] = 3;
    vector[2] = PCRE2_UNSET;
    vector[3] = PCRE2_UNSET;
    EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(data, 0, 2), (NSRange{7, 0}));
    EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(data, 1, 2), NSNotFoundRange);
    pcre2_match_data_free_16(data);
}

// Conveniences

TEST_P(EachForm, TheConveniencesAgree) {
    const auto expression = make(u"a(b)?");
    const NSString text = u"-ab-a-";
    const auto results = expression->matchesInString(text, 0, {0, 6});
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0]->rangeAtIndex(1), (NSRange{2, 1}));
    EXPECT_EQ(results[1]->rangeAtIndex(1), NSNotFoundRange);
    EXPECT_EQ(expression->numberOfMatchesInString(text, 0, {0, 6}), 2u);
    EXPECT_EQ(expression->firstMatchInString(text, 0, {0, 6})->range(), (NSRange{1, 2}));
    EXPECT_EQ(expression->rangeOfFirstMatchInString(text, QVMatchingRangeLimit, {3, 3}), (NSRange{4, 1}));
}

TEST_P(EachForm, WithoutAMatchTheConveniencesAnswerNothing) {
    const auto expression = make(u"x");
    EXPECT_THAT(expression->matchesInString(u"abc", 0, {0, 3}), IsEmpty());
    EXPECT_EQ(expression->numberOfMatchesInString(u"abc", 0, {0, 3}), 0u);
    EXPECT_EQ(expression->firstMatchInString(u"abc", 0, {0, 3}), nullptr);
    EXPECT_EQ(expression->rangeOfFirstMatchInString(u"abc", 0, {0, 3}), NSNotFoundRange);
}

// Text that is no well-formed UTF-16

TEST_P(EachForm, ALoneSurrogateDoesNotKeepTheRestFromMatching) {
    const std::u16string high(1, char16_t(0xD800));
    const std::u16string low(1, char16_t(0xDC00));
    EXPECT_THAT(matchRanges(*make(u"a+"), joined({high, u" aa ", low, u"a", high})),
                ElementsAre(NSRange{2, 2}, NSRange{6, 1}));
    EXPECT_THAT(matchRanges(*make(u"a"), joined({low, u"a"})), ElementsAre(NSRange{1, 1}));
    EXPECT_THAT(matchRanges(*make(u"a$"), joined({low, u"a"})), ElementsAre(NSRange{1, 1}));
}

TEST_P(EachForm, AMatchOverHalfACharacterAtTheEndEndsWithTheText) {
    const NSString text = std::u16string{u'a', u'b', 0xD83D};
    EXPECT_THAT(matchRanges(*make(u"b."), text), ElementsAre(NSRange{1, 2}));
    EXPECT_THAT(matchRanges(*make(u"b.$"), text), ElementsAre(NSRange{1, 2}));
    EXPECT_THAT(matchRanges(*make(u"b(.)"), text), ElementsAre(NSRange{1, 2}));
    EXPECT_EQ(make(u"b(.)")->firstMatchInString(text, 0, {0, 3})->rangeAtIndex(1), (NSRange{2, 1}));
    EXPECT_THAT(matchRanges(*make(u"b.c"), text), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"b\\z"), text), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"\\z"), text), ElementsAre(NSRange{3, 0}));
    EXPECT_THAT(matchRanges(*make(u"(?<=.)$"), text), ElementsAre(NSRange{3, 0}));
    EXPECT_THAT(matchRanges(*make(u"(?<!x)\\z"), text, QVMatchingRangeLimit, {3, 0}),
                ElementsAre(NSRange{3, 0}));
    EXPECT_THAT(matchRanges(*make(u"."), text, QVMatchingAnchored, {2, 1}), ElementsAre(NSRange{2, 1}));
    EXPECT_THAT(matchRanges(*make(u"\\z"), text, QVMatchingAnchored, {2, 1}), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"\\z"), text, QVMatchingAnchored | QVMatchingRangeLimit, {3, 0}),
                ElementsAre(NSRange{3, 0}));
    EXPECT_THAT(matchRanges(*make(u"."), text, QVMatchingEndAnchored), ElementsAre(NSRange{2, 1}));
}

TEST_P(EachForm, NothingIsReadBehindHalfACharacterAtTheEnd) {
    // Behind the half character come a literal and a repeated group, which compare units without asking for
    // the end again. Address checks watch the unit behind the guard.
    const GuardedText text(joined({std::u16string(100, u'a'), std::u16string(1, char16_t(0xD800))}));
    QVRegularExpressionMatchContext context;
    for (const char16_t *pattern :
         {u"a.(?:b|c)", u"a[^a](?:\\x{0}|\\x{1})", u"(a+)[^a]\\1", u"(a{50})a{50}[^a](?:\\1|b)+",
          u"a[^a](?=bcdefg)", u"(?<=(?=[^a](?:b|c)).)", u"(?<=(a{9})(?=[^a]\\1).)"})
        for (const QVMatchingOptions options : {QVMatchingOptions(0), QVMatchingRangeLimit})
            EXPECT_THAT(matchRanges(*make(pattern), text, options, text.range(), &context), IsEmpty())
                << NSString(pattern).UTF8String();
}

TEST_P(EachForm, NothingIsReadBeforeHalfACharacterAtTheStart) {
    const std::u16string low(1, char16_t(0xDC00));
    QVRegularExpressionMatchContext context;
    const GuardedText text(joined({low, low, u"ab"}));
    EXPECT_THAT(matchRanges(*make(u"ab"), text, 0, text.range(), &context), ElementsAre(NSRange{2, 2}));
    EXPECT_THAT(matchRanges(*make(u"\\Bab"), text, 0, text.range(), &context), IsEmpty());
    EXPECT_THAT(matchRanges(*make(u"(?<=xyz..)ab"), text, 0, text.range(), &context), IsEmpty());
    // A string has no unit of its own before its first.
    EXPECT_THAT(matchRanges(*make(u"(?<=.)b"), joined({low, u"b"})), ElementsAre(NSRange{1, 1}));
    EXPECT_THAT(matchRanges(*make(u"\\bb"), joined({low, u"b"})), ElementsAre(NSRange{1, 1}));
}

TEST_P(EachForm, ARangeMayCutACharacterInTwo) {
    const NSString text = u"a\U0001F600b";
    EXPECT_THAT(matchRanges(*make(u"a."), text, 0, {0, 2}), ElementsAre(NSRange{0, 2}));
    EXPECT_THAT(matchRanges(*make(u".b"), text, 0, {2, 2}), ElementsAre(NSRange{2, 2}));
    EXPECT_THAT(matchRanges(*make(u"."), text, QVMatchingRangeLimit, {2, 2}),
                ElementsAre(NSRange{2, 1}, NSRange{3, 1}));
}

TEST(QVRegularExpression, ManyThreadsUseOneExpression) {
    const auto expression = expressionFor(u"(?<word>[a-z]+)(?=\\d)", grammarOptions);
    const GuardedText text(u"abc1 de- f2");
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index)
        threads.emplace_back([&] {
            QVRegularExpressionMatchContext context;
            for (int round = 0; round < 200; ++round) {
                EXPECT_THAT(matchRanges(*expression, text, 0, text.range(), &context),
                            ElementsAre(NSRange{0, 3}, NSRange{9, 1}));
                EXPECT_EQ(expression->directMatchInCharacters(text.characters(), 11, {9, 2}, context).range,
                          (NSRange{9, 1}));
                EXPECT_EQ(expression->firstMatchInString(u"x1", 0, {0, 2})->rangeWithName(u"word"),
                          (NSRange{0, 1}));
            }
        });
    for (std::thread &thread : threads)
        thread.join();
}
