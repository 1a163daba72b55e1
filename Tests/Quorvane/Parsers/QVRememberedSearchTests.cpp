#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Parsers/QVRememberedSearch.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

/// One line of text with remembered and with fresh searches on it.
struct Fixture {
    explicit Fixture(std::u16string_view pattern, std::u16string_view text)
        : expression(QVRegularExpression::regularExpressionWithPattern(
              NSString(pattern), QVRegularExpressionMultiline | QVRegularExpressionUseJIT)),
          search(expression) {
        buffer.replaceCharactersInRange({0, 0}, text);
        line.contentsEnd = text.size();
        line.units.fill(~std::uint64_t(0));
    }
    QVMatchingOutcome remembered(NSUInteger from) {
        return search.firstHitFrom(from, line, {buffer.view(), generation, context, words}, false);
    }
    QVMatchingOutcome fresh(NSUInteger from) {
        return expression->directSearchInCharacters(buffer.characters(), buffer.length(),
                                                    {from, line.contentsEnd - from}, context, false);
    }

    QVParseText buffer{0};
    std::shared_ptr<QVRegularExpression> expression;
    QVRememberedSearch search;
    QVRegularExpressionMatchContext context;
    QVLineWords words;
    QVParseLine line;
    std::uint64_t generation = 1;
};

} // namespace

TEST(QVRememberedSearch, AnswersWhatAFreshSearchWouldFromEachPlaceAfterEachOther) {
    const std::u16string texts[] = {
        u"",
        u"ab",
        u"xabxab",
        u"aaaa",
        u"\U0001F600a\U0001F600b",
        {u'a', 0xD800, u'b', u'a', u'b'},
        {0xDC00, u'a', 0xDC00, u'b'},
        {0xD800, 0xD800, u'a', 0xD800},
        {u'a', u'b', 0xD83D, 0xDE00, 0xD83D},
    };
    for (const std::u16string &text : texts) {
        for (const char16_t *const pattern : {u"b", u"ab", u"a?", u".", u"(?<=a)b", u"a\\Kb", u"\\Gb", u"b$",
                                              u"a(*SKIP)a|b", u"..", u"[^a]", u"\\B"}) {
            for (NSUInteger first = 0; first <= text.size(); ++first) {
                Fixture fixture(pattern, text);
                fixture.remembered(first);
                for (NSUInteger from = first; from <= text.size(); ++from) {
                    const QVMatchingOutcome expected = fixture.fresh(from);
                    const QVMatchingOutcome outcome = fixture.remembered(from);
                    const std::string place = NSString(pattern).UTF8String() + " in a text of " +
                                              std::to_string(text.size()) + " from " + std::to_string(first) +
                                              " and " + std::to_string(from);
                    ASSERT_EQ(outcome.kind, expected.kind) << place;
                    if (expected.kind == QVMatchingOutcome::Hit) {
                        ASSERT_EQ(outcome.range, expected.range) << place;
                    }
                }
            }
        }
    }
}

TEST(QVRememberedSearch, NothingIsRememberedBehindHalfACharacter) {
    // The compiled form steps from half a character over the unit behind it, so a search from the start
    // misses the letter at 1, and one that begins there finds it. A remembered hit must not hide that.
    Fixture fixture(u"\\p{Ll}", std::u16string{0xD801, u's', u' ', u'b'});
    EXPECT_EQ(fixture.remembered(0).range, (NSRange{3, 1}));
    EXPECT_EQ(fixture.remembered(1).range, (NSRange{1, 1}));
    EXPECT_EQ(fixture.remembered(2).range, (NSRange{3, 1}));
}

TEST(QVRememberedSearch, NothingIsRememberedWithinAPair) {
    // Alone, the second half is a character too, and not the one that the pattern excludes.
    Fixture fixture(u"[^\U0001F600]", u"\U0001F600b");
    EXPECT_EQ(fixture.remembered(0).range, (NSRange{2, 1}));
    EXPECT_EQ(fixture.remembered(1).range, (NSRange{1, 1}));
    EXPECT_EQ(fixture.remembered(2).range, (NSRange{2, 1}));
}

TEST(QVRememberedSearch, ForgetsWhatAnotherTextHeld) {
    Fixture fixture(u"b", u"ab");
    EXPECT_EQ(fixture.remembered(0).range, (NSRange{1, 1}));
    fixture.buffer.replaceCharactersInRange({0, 1}, u"bb");
    fixture.line.contentsEnd = 3;
    ++fixture.generation;
    EXPECT_EQ(fixture.remembered(0).range, (NSRange{0, 1}));
}

TEST(QVRememberedSearch, ForgetsWhatItFoundUpToAnotherEnd) {
    Fixture fixture(u"ab|b", u"xab");
    fixture.line.contentsEnd = 2;
    // The hit at "ab" ends behind the line.
    EXPECT_EQ(fixture.remembered(0).kind, QVMatchingOutcome::Overrun);
    fixture.line.contentsEnd = 3;
    EXPECT_EQ(fixture.remembered(0).range, (NSRange{1, 2}));
}

TEST(QVRememberedSearch, UnitsThatTheLineLacksRuleAPatternOut) {
    Fixture fixture(u"b", u"ab");
    fixture.line.units = {};
    EXPECT_EQ(fixture.remembered(0).kind, QVMatchingOutcome::Finished);
}

TEST(QVRememberedSearch, KnowsWhetherItsShortestHitStillFits) {
    const Fixture fixture(u"abc?", u"abab");
    EXPECT_TRUE(fixture.search.canStartAtOrBehind(2, fixture.line));
    EXPECT_FALSE(fixture.search.canStartAtOrBehind(3, fixture.line));
}

TEST(QVRememberedSearch, OverHalfACharacterAHitMayBeShorterThanItsPattern) {
    // Three characters of the pattern find room in two units, going back over the half.
    const std::u16string text{u' ', 0xDE00, u'\n'};
    Fixture fixture(u"[^\\n]+[^\\n].", text);
    fixture.line.contentsEnd = 2;
    fixture.line.hasSurrogates = true;
    EXPECT_EQ(fixture.fresh(0).range, (NSRange{0, 2}));
    EXPECT_EQ(fixture.remembered(0).range, (NSRange{0, 2}));
}

TEST(QVRememberedSearch, AHitThatWentBackOverThePairItBeganInIsNone) {
    // Begun within the pair, the pattern goes back to before its start; both ways of searching must say so.
    Fixture fixture(u"\\W{1,2}?\\B|\\W{1,2}\\b", u"\U0001F600\U0001F600a");
    for (NSUInteger from = 0; from <= 5; ++from) {
        NSRange first = NSNotFoundRange;
        fixture.expression->enumerateMatchesInCharacters(
            fixture.buffer.characters(), fixture.buffer.length(), QVMatchingRangeLimit, {from, 5 - from},
            &fixture.context, [&](QVPCRE2MatchData *matchData, NSUInteger offset, bool &stop) {
                first = QVPCRE2MatchDataRangeAtIndex(matchData, 0, offset);
                stop = true;
            });
        EXPECT_EQ(fixture.fresh(from).range, first) << from;
    }
}

TEST(QVRememberedSearch, WhatAPatternSeesAheadNeedNotFitOnTheLine) {
    // The matcher's own shortest length counts what has to follow a match too.
    for (const char16_t *const pattern : {u"a(?=\nb)", u"(?=a\nb)", u"a\n?(?=b)"}) {
        Fixture fixture(pattern, u"xa\nb");
        fixture.line.contentsEnd = 2;
        EXPECT_EQ(fixture.remembered(0).kind, fixture.fresh(0).kind) << NSString(pattern).UTF8String();
        EXPECT_EQ(fixture.remembered(0).range, fixture.fresh(0).range) << NSString(pattern).UTF8String();
        EXPECT_NE(fixture.fresh(0).kind, QVMatchingOutcome::Finished) << NSString(pattern).UTF8String();
    }
}
