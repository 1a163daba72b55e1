#include "Quorvane/RegularExpressions/PCRE2.h"
#include "Tests/Quorvane/RegularExpressions/RegularExpressionFixtures.h"

#include <gmock/gmock.h>

#include <random>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

QVMatchingOutcome search(const QVRegularExpression &expression, const GuardedText &text, NSRange range,
                         bool interpreted = false) {
    QVRegularExpressionMatchContext context;
    return expression.directSearchInCharacters(text.characters(), text.length(), range, context, interpreted);
}

QVMatchingOutcome matchAt(const QVRegularExpression &expression, const GuardedText &text, NSRange range) {
    QVRegularExpressionMatchContext context;
    return expression.directMatchInCharacters(text.characters(), text.length(), range, context);
}

bool allows(const QVRegularExpression &expression, char16_t unit) {
    const auto *const units = expression.firstUnits();
    const unsigned bit = unit < 255 ? unit : 255;
    return units == nullptr || (((*units)[bit >> 6] >> (bit & 63)) & 1) != 0;
}

/// Draws patterns and texts in which the cases that matter are common: letters with odd case partners, pairs,
/// halves, line endings.
class Drawer {
public:
    explicit Drawer(unsigned seed) : _random(seed) {}

    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(_random);
    }
    bool oneIn(std::size_t count) { return below(count) == 0; }

    std::u16string text(std::size_t length, bool wellFormed) {
        std::u16string result;
        while (result.size() < length) {
            if (!wellFormed && oneIn(6))
                result.push_back(static_cast<char16_t>((oneIn(2) ? 0xD800 : 0xDC00) + below(3)));
            else if (oneIn(10))
                result += oneIn(2) ? u"\r\n" : (oneIn(2) ? u"\n" : u"\r");
            else
                result += character();
        }
        return result;
    }

    std::u16string pattern(int depth = 0) {
        std::u16string result;
        for (std::size_t branch = 0, branches = oneIn(3) ? 2 + below(2) : 1; branch < branches; ++branch) {
            if (branch > 0)
                result += u"|";
            for (std::size_t item = 0, items = below(depth > 1 ? 2 : 4) + (oneIn(8) ? 0 : 1); item < items;
                 ++item)
                result += piece(depth);
        }
        return result;
    }

    QVRegularExpressionOptions options() {
        QVRegularExpressionOptions result = QVRegularExpressionUseJIT;
        if (oneIn(2))
            result |= QVRegularExpressionCaseInsensitive;
        if (oneIn(2))
            result |= QVRegularExpressionMultiline;
        if (oneIn(3))
            result |= QVRegularExpressionDotAll;
        if (oneIn(3))
            result |= QVRegularExpressionNewlineLF;
        return result;
    }

private:
    template <std::size_t count> std::u16string oneOf(const char16_t *const (&items)[count]) {
        return items[below(count)];
    }
    std::u16string character() {
        // Partners in pairs and more: k K Kelvin, s S long s, a-ring, sharp s, y, micro, sigma, Deseret.
        static constexpr const char16_t *characters[] = {
            u"a",      u"b",      u"A",      u"k",      u"K",          u"\u212A",     u"s",
            u"S",      u"\u017F", u"\u00E5", u"\u00C5", u"\u212B",     u"\u00DF",     u"\u1E9E",
            u"\u00FF", u"\u0178", u"\u00B5", u"\u03BC", u"\u03C3",     u"\u03C2",     u" ",
            u"1",      u"_",      u"\u0100", u"\u00FE", u"\U00010400", u"\U00010428", u"\U0001F600",
            u"\u0131", u"i",      u"\u0130", u"\uFB05"};
        return oneOf(characters);
    }
    std::u16string piece(int depth) {
        static constexpr const char16_t *classes[] = {u"\\w",
                                                      u"\\W",
                                                      u"\\d",
                                                      u"\\D",
                                                      u"\\s",
                                                      u"\\S",
                                                      u".",
                                                      u"\\N",
                                                      u"\\R",
                                                      u"\\h",
                                                      u"\\v",
                                                      u"\\H",
                                                      u"\\p{Lu}",
                                                      u"\\p{Ll}",
                                                      u"\\P{L}",
                                                      u"\\X",
                                                      u"[^a]",
                                                      u"[a-k]",
                                                      u"[^\\w]",
                                                      u"[\\W_]",
                                                      u"[\u00E0-\u00FF]",
                                                      u"[^\\x{0}-\\x{FF}]",
                                                      u"[[:alpha:]]",
                                                      u"[^\\p{L}]"};
        static constexpr const char16_t *places[] = {u"^", u"$", u"\\b", u"\\B", u"\\A", u"\\z", u"\\Z"};
        static constexpr const char16_t *openers[] = {u"(?:", u"(",    u"(?=",   u"(?!",  u"(?>",
                                                      u"(?|", u"(?i:", u"(?-i:", u"(?s:", u"(?<="};
        static constexpr const char16_t *repetitions[] = {u"*",     u"+",  u"?",  u"{2}",
                                                          u"{0,2}", u"*?", u"++", u"??"};
        std::u16string result;
        const std::size_t kind = below(10);
        if (kind < 4)
            result = character();
        else if (kind < 6)
            result = oneOf(classes);
        else if (kind < 7)
            return oneOf(places);
        else if (kind < 8)
            result = u"[" + std::u16string(oneIn(4) ? u"^" : u"") + character() + character() + u"]";
        else if (depth < 3) {
            const std::u16string opener = oneOf(openers);
            result = opener +
                     (opener == u"(?<=" ? character() + (oneIn(2) ? u"." : u"") : pattern(depth + 1)) + u")";
        } else
            result = u"a";
        if (oneIn(3))
            result += oneOf(repetitions);
        return result;
    }

    std::mt19937 _random;
};

constexpr int drawnPatterns = 4000;

/// The compiled form has been seen to go back into atomic groups and possessive repetitions, which the
/// interpreter rightly never does; such patterns are no measure.
bool isMeasureOfBothForms(std::u16string_view pattern) {
    return pattern.find(u"(?>") == pattern.npos && pattern.find(u"++") == pattern.npos;
}

} // namespace

// Searches and attempts

TEST(QVRegularExpression, ASearchAnswersTheFirstMatchAndLeavesItsGroups) {
    const auto expression = expressionFor(u"(a)|(b)", grammarOptions);
    const GuardedText text(u"--ba");
    QVRegularExpressionMatchContext context;
    const auto outcome = expression->directSearchInCharacters(text.characters(), 4, {1, 3}, context, false);
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Hit);
    EXPECT_EQ(outcome.range, (NSRange{2, 1}));
    EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(context.matchData(), 1, 0), NSNotFoundRange);
    EXPECT_EQ(QVPCRE2MatchDataRangeAtIndex(context.matchData(), 2, 0), (NSRange{2, 1}));
}

TEST(QVRegularExpression, ASearchTellsNothingFoundFromRunningBeyondTheRange) {
    const auto expression = expressionFor(u"ab+", grammarOptions);
    const GuardedText text(u"-abbb");
    EXPECT_EQ(search(*expression, text, {2, 3}).kind, QVMatchingOutcome::Finished);
    EXPECT_EQ(search(*expression, text, {2, 3}).range, NSNotFoundRange);
    EXPECT_EQ(search(*expression, text, {0, 4}).kind, QVMatchingOutcome::Overrun);
    EXPECT_EQ(search(*expression, text, {0, 4}).range, (NSRange{1, 4}));
    EXPECT_EQ(search(*expression, text, {0, 5}).kind, QVMatchingOutcome::Hit);
}

TEST(QVRegularExpression, ASearchThatGivesUpTellsWhy) {
    const auto expression = expressionFor(u"(?:a+)+$", grammarOptions);
    const GuardedText text(std::u16string(40, u'a') + u"!");
    const auto outcome = search(*expression, text, text.range());
    EXPECT_EQ(outcome.kind, QVMatchingOutcome::Error);
    EXPECT_EQ(outcome.errorCode, PCRE2_ERROR_MATCHLIMIT);
    EXPECT_EQ(outcome.range, NSNotFoundRange);
}

TEST(QVRegularExpression, AUnitThatALookAheadAsksForMayBeTheOneThatIsTaken) {
    for (const char16_t *const pattern :
         {u"(?=1)[ab]?1", u"(?:(?=1)|y)?(?=1)[ab]?1", u" *+(?=1)[ab]?1", u"(?=1)[ab]?1|(?=1)[cd]?1",
          u"(?*1)[ab]?1", u"(*pla:1)[ab]?1", u"(*positive_lookahead:1)[ab]?1", u"(?x)#\n(?=1)[ab]?1"})
        for (const QVRegularExpressionOptions options :
             {QVRegularExpressionOptions(0), QVRegularExpressionUseJIT})
            EXPECT_EQ(matchRanges(*expressionFor(pattern, options), u"x1", 0, {0, 2}), Ranges({{1, 1}}))
                << NSString(pattern).UTF8String();
    for (const char16_t *const pattern : {u"(?=1)[ab]?1", u"(?=1)(?:[ab]?1|[cd]?1)"})
        EXPECT_EQ(matchAt(*expressionFor(pattern, grammarOptions), GuardedText(u"x1"), {1, 1}).range,
                  (NSRange{1, 1}));
    EXPECT_EQ(matchRanges(*expressionFor(u"(?=(?i:A).)[xy]?a"), u"xab", 0, {0, 3}), Ranges({{1, 1}}));
    EXPECT_EQ(matchRanges(*expressionFor(u"(?=(?i:Ä).)[xy]?ä"), u"xäb", 0, {0, 3}), Ranges({{1, 1}}));
    // What comes twice behind text still must.
    EXPECT_EQ(matchRanges(*expressionFor(u"1[ab]?(?=1)"), u"x1a1", 0, {0, 4}), Ranges({{1, 2}}));
}

TEST(QVRegularExpression, AnAttemptMatchesAtTheRangesStartOnly) {
    const auto expression = expressionFor(u"(?<=-)a+(b)?", grammarOptions);
    const GuardedText text(u"-aa-ab");
    EXPECT_EQ(matchAt(*expression, text, {1, 5}).range, (NSRange{1, 2}));
    EXPECT_EQ(matchAt(*expression, text, {0, 6}).kind, QVMatchingOutcome::Finished);
    EXPECT_EQ(matchAt(*expression, text, {2, 4}).kind, QVMatchingOutcome::Finished);
    EXPECT_EQ(matchAt(*expression, text, {4, 1}).kind, QVMatchingOutcome::Overrun);
    EXPECT_EQ(matchAt(*expression, text, {4, 2}).range, (NSRange{4, 2}));
    EXPECT_EQ(matchAt(*expressionFor(u"$", grammarOptions), text, {6, 0}).range, (NSRange{6, 0}));
    EXPECT_EQ(matchAt(*expressionFor(u"x", grammarOptions), text, {6, 0}).kind, QVMatchingOutcome::Finished);
}

TEST(QVRegularExpression, AttemptsWorkWithoutTheCompiledForm) {
    const auto expression = expressionFor(u"a+");
    const GuardedText text(u"-aa");
    EXPECT_EQ(matchAt(*expression, text, {1, 2}).range, (NSRange{1, 2}));
    EXPECT_EQ(matchAt(*expression, text, {0, 3}).kind, QVMatchingOutcome::Finished);
    EXPECT_EQ(search(*expression, text, {0, 3}).range, (NSRange{1, 2}));
}

TEST(QVRegularExpressionLaw, SearchesAndAttemptsAreWhatEnumerationsReportFirst) {
    Drawer drawer(1);
    for (int round = 0; round < drawnPatterns; ++round) {
        const NSString pattern = drawer.pattern();
        const auto expression = QVRegularExpression::regularExpressionWithPattern(pattern, drawer.options());
        if (!expression)
            continue;
        const bool wellFormed = drawer.oneIn(2);
        const std::u16string units = drawer.text(12, wellFormed);
        const GuardedText text(units);
        const NSUInteger location = drawer.below(text.length() + 1);
        const NSRange range{location, drawer.below(text.length() - location + 1)};
        QVRegularExpressionMatchContext context;
        const auto first = [&](QVMatchingOptions options) {
            const Ranges hits =
                matchRanges(*expression, text, options | QVMatchingRangeLimit, range, &context);
            return hits.empty() ? NSNotFoundRange : hits.front();
        };
        const auto reported = [](const QVMatchingOutcome &outcome) {
            return outcome.kind == QVMatchingOutcome::Hit ? outcome.range : NSNotFoundRange;
        };
        EXPECT_EQ(reported(search(*expression, text, range)), first(0))
            << pattern.UTF8String() << " on " << testing::PrintToString(units);
        if (wellFormed && isMeasureOfBothForms(pattern)) {
            EXPECT_EQ(reported(matchAt(*expression, text, range)), first(QVMatchingAnchored))
                << pattern.UTF8String() << " on " << testing::PrintToString(units);
        }
    }
}

TEST(QVRegularExpressionLaw, BothFormsFindTheSame) {
    Drawer drawer(2);
    for (int round = 0; round < drawnPatterns; ++round) {
        const NSString pattern = drawer.pattern();
        const auto expression = QVRegularExpression::regularExpressionWithPattern(pattern, drawer.options());
        if (!expression || !isMeasureOfBothForms(pattern))
            continue;
        const std::u16string units = drawer.text(12, true);
        const GuardedText text(units);
        for (NSUInteger from = 0; from <= text.length(); ++from) {
            if (!QVRegularExpression::isSearchBoundary(text.characters(), from))
                continue;
            const NSRange range{from, text.length() - from};
            const auto compiled = search(*expression, text, range, false);
            const auto interpreted = search(*expression, text, range, true);
            EXPECT_EQ(compiled.kind, interpreted.kind)
                << pattern.UTF8String() << " on " << testing::PrintToString(units) << " from " << from;
            EXPECT_EQ(compiled.range, interpreted.range)
                << pattern.UTF8String() << " on " << testing::PrintToString(units) << " from " << from;
        }
    }
}

// First units

TEST(QVRegularExpression, FirstUnitsComeFromWhatEveryMatchMustStartWith) {
    const auto digits = expressionFor(u"\\d+x");
    ASSERT_NE(digits->firstUnits(), nullptr);
    EXPECT_TRUE(allows(*digits, u'0'));
    EXPECT_TRUE(allows(*digits, u'9'));
    EXPECT_FALSE(allows(*digits, u'x'));
    EXPECT_FALSE(allows(*digits, u'\u0660'));
    const auto letter = expressionFor(u"(?:ab|ac)");
    ASSERT_NE(letter->firstUnits(), nullptr);
    EXPECT_TRUE(allows(*letter, u'a'));
    EXPECT_FALSE(allows(*letter, u'b'));
    EXPECT_FALSE(allows(*letter, u'\u1234'));
}

TEST(QVRegularExpression, FirstUnitsAllowBothCases) {
    const auto expression = expressionFor(u"kat", QVRegularExpressionCaseInsensitive);
    for (const char16_t unit : {u'k', u'K', u'\u212A'})
        EXPECT_TRUE(allows(*expression, unit));
    EXPECT_TRUE(allows(*expressionFor(u"\u00FFx", QVRegularExpressionCaseInsensitive), u'\u0178'));
    EXPECT_TRUE(allows(*expressionFor(u"\u017Fx", QVRegularExpressionCaseInsensitive), u's'));
    EXPECT_TRUE(allows(*expressionFor(u"\u00B5x", QVRegularExpressionCaseInsensitive), u'\u039C'));
}

TEST(QVRegularExpression, APatternThatCanBeEmptyHasNoFirstUnits) {
    EXPECT_EQ(expressionFor(u"a*")->firstUnits(), nullptr);
    EXPECT_EQ(expressionFor(u"a|")->firstUnits(), nullptr);
    EXPECT_EQ(expressionFor(u"$")->firstUnits(), nullptr);
    EXPECT_EQ(expressionFor(u".")->firstUnits(), nullptr);
}

TEST(QVRegularExpression, APatternThatMovesItsStartHasNoFirstUnits) {
    EXPECT_EQ(expressionFor(u"a\\Kb")->firstUnits(), nullptr);
}

TEST(QVRegularExpressionLaw, FirstUnitsNeverRuleOutAMatch) {
    Drawer drawer(3);
    int known = 0;
    for (int round = 0; round < drawnPatterns; ++round) {
        const NSString pattern = drawer.pattern();
        const QVRegularExpressionOptions options = drawer.options();
        const auto expression = QVRegularExpression::regularExpressionWithPattern(pattern, options);
        if (!expression || expression->firstUnits() == nullptr)
            continue;
        ++known;
        // The guard stands for the unit at the text's end.
        const std::u16string units = drawer.text(30, drawer.oneIn(2));
        const GuardedText text(units);
        for (NSUInteger at = 0; at <= text.length(); ++at) {
            QVRegularExpressionMatchContext context;
            const bool matches = !matchRanges(*expression, text, QVMatchingAnchored | QVMatchingRangeLimit,
                                              {at, text.length() - at}, &context)
                                      .empty();
            if (!matches)
                continue;
            EXPECT_LT(at, text.length()) << pattern.UTF8String();
            EXPECT_TRUE(allows(*expression, text.characters()[at]))
                << pattern.UTF8String() << ", options " << options << ", on " << testing::PrintToString(units)
                << " at " << at;
        }
    }
    EXPECT_GT(known, drawnPatterns / 8);
}

// Length

TEST(QVRegularExpression, TheMinimumLengthIsThatOfTheShortestMatch) {
    EXPECT_EQ(expressionFor(u"abc|de")->minimumLength(), 2u);
    EXPECT_EQ(expressionFor(u"a{3}b?")->minimumLength(), 3u);
    EXPECT_EQ(expressionFor(u"a*")->minimumLength(), 0u);
    EXPECT_EQ(expressionFor(u"(?=abc)")->minimumLength(), 0u);
    EXPECT_EQ(expressionFor(u"abc\\K")->minimumLength(), 0u);
}

TEST(QVRegularExpressionLaw, NoMatchIsShorterThanTheMinimumLength) {
    Drawer drawer(5);
    for (int round = 0; round < drawnPatterns; ++round) {
        const NSString pattern = drawer.pattern();
        const auto expression = QVRegularExpression::regularExpressionWithPattern(pattern, drawer.options());
        if (!expression || expression->minimumLength() == 0)
            continue;
        const std::u16string units = drawer.text(12, drawer.oneIn(2));
        const GuardedText text(units);
        for (NSUInteger from = 0; from <= text.length(); ++from) {
            const auto outcome = search(*expression, text, {from, text.length() - from}, drawer.oneIn(2));
            if (outcome.kind == QVMatchingOutcome::Hit) {
                EXPECT_GE(outcome.range.length, expression->minimumLength())
                    << pattern.UTF8String() << " on " << testing::PrintToString(units) << " from " << from;
            }
        }
    }
}

// Remembering

TEST(QVRegularExpression, PatternsThatLookAtTheSearchItselfAreNotRemembered) {
    for (const char16_t *pattern : {u"a", u"(?<=a)b", u"^a", u"\\bfoo(?=x)", u"(a)\\1"})
        EXPECT_TRUE(expressionFor(pattern)->canBeRemembered()) << NSString(pattern).UTF8String();
    for (const char16_t *pattern :
         {u"\\Ga", u"a\\Kb", u"a(*SKIP)b", u"(*COMMIT)a", u"a(*PRUNE:n)b", u"a|(*F)", u"(*NO_START_OPT)a"})
        EXPECT_FALSE(expressionFor(pattern)->canBeRemembered()) << NSString(pattern).UTF8String();
}

TEST(QVRegularExpression, PatternsThatBeginWithAnyTextAreNotRemembered) {
    // They are tried where the search begins and at line starts, and nowhere between.
    for (const char16_t *pattern : {u".*a", u"(?:.*?)++\\d", u"^a|.*b"})
        EXPECT_FALSE(expressionFor(pattern)->canBeRemembered()) << NSString(pattern).UTF8String();
    for (const char16_t *pattern : {u"a.*", u"[^\\n]*a", u"^.*a"})
        EXPECT_TRUE(expressionFor(pattern)->canBeRemembered()) << NSString(pattern).UTF8String();
}

TEST(QVRegularExpression, WhetherAMatchMayBeEmptyIsKnownBehindAMovedStartAndOfVerbsThatFail) {
    for (const char16_t *pattern : {u"a", u"^ *\\Ka", u"a\\Kb|c", u"a?(*SKIP)(*FAIL)|b+"})
        EXPECT_FALSE(expressionFor(pattern)->canMatchEmptyText()) << NSString(pattern).UTF8String();
    for (const char16_t *pattern :
         {u"a?", u"a\\K", u"a\\Kb|c\\K", u"a\\Kb*", u"(?=a)", u"(*COMMIT)a", u"(a)\\K\\1"})
        EXPECT_TRUE(expressionFor(pattern)->canMatchEmptyText()) << NSString(pattern).UTF8String();
}

TEST(QVRegularExpression, KnowsPatternsThatOnlyLookAndThoseForLineStarts) {
    EXPECT_TRUE(expressionFor(u"(?=a)")->matchesEmptyTextAlone());
    EXPECT_FALSE(expressionFor(u"(?=a)b")->matchesEmptyTextAlone());
    EXPECT_TRUE(expressionFor(u"^a")->startsAtLineStartsAlone());
    EXPECT_FALSE(expressionFor(u"a")->startsAtLineStartsAlone());
    const auto literal = QVRegularExpression::regularExpressionWithPattern(u"^", QVRegularExpressionLiteral);
    EXPECT_FALSE(literal->matchesEmptyTextAlone());
    EXPECT_FALSE(literal->startsAtLineStartsAlone());
}

TEST(QVRegularExpression, SearchBoundariesSplitNothingThatASearchFromBeforeTakesAsOne) {
    const auto boundaries = [](std::u16string_view units) {
        const GuardedText text(units);
        std::vector<NSUInteger> result;
        for (NSUInteger location = 0; location <= text.length(); ++location)
            if (QVRegularExpression::isSearchBoundary(text.characters(), location))
                result.push_back(location);
        return result;
    };
    EXPECT_THAT(boundaries(u"ab"), ElementsAre(0, 1, 2));
    EXPECT_THAT(boundaries(u"\U0001F600b"), ElementsAre(0, 2, 3));
    EXPECT_THAT(boundaries(u"a\r\n\n"), ElementsAre(0, 1, 3, 4));
    EXPECT_THAT(boundaries(std::u16string{u'a', 0xD800, u'b', 0xDC00, u'c'}), ElementsAre(0, 1, 4, 5));
    EXPECT_THAT(boundaries(std::u16string{0xD800}), ElementsAre(0));
}

TEST(QVRegularExpressionLaw, AHitFoundAheadStaysTheFirstHitUntilItsStart) {
    Drawer drawer(4);
    for (int round = 0; round < drawnPatterns; ++round) {
        const NSString pattern = drawer.pattern();
        const QVRegularExpressionOptions options = drawer.options();
        const auto expression = QVRegularExpression::regularExpressionWithPattern(pattern, options);
        if (!expression || !expression->canBeRemembered())
            continue;
        const std::u16string units = drawer.text(16, drawer.oneIn(2));
        const GuardedText text(units);
        const NSUInteger end = text.length() - drawer.below(4);
        const bool interpreted = drawer.oneIn(2);
        for (NSUInteger from = 0; from <= end; ++from) {
            const auto first = search(*expression, text, {from, end - from}, interpreted);
            if (first.kind == QVMatchingOutcome::Error)
                continue;
            const NSUInteger last =
                first.range.location == NSNotFound ? end : std::min(first.range.location, end);
            for (NSUInteger later = from + 1; later <= last; ++later) {
                if (!QVRegularExpression::isSearchBoundary(text.characters(), later))
                    continue;
                const auto again = search(*expression, text, {later, end - later}, interpreted);
                EXPECT_EQ(again.kind, first.kind)
                    << pattern.UTF8String() << ", options " << options << ", on "
                    << testing::PrintToString(units) << " from " << from << " and " << later;
                EXPECT_EQ(again.range, first.range)
                    << pattern.UTF8String() << ", options " << options << ", on "
                    << testing::PrintToString(units) << " from " << from << " and " << later;
            }
        }
    }
}
