#include "Quorvane/Categories/QVGramPattern.h"

#include "Tests/Quorvane/Categories/NaiveGrams.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::string drawing(const NSString &pattern, const std::vector<NSString> &grams, unsigned options) {
    std::string text =
        "pattern \"" + pattern.UTF8String() + "\" options " + std::to_string(options) + " grams";
    for (const NSString &gram : grams)
        text += " \"" + gram.UTF8String() + '"';
    return text;
}

std::vector<NSUInteger> listed(const NSIndexSet &indexes) {
    std::vector<NSUInteger> list;
    indexes.enumerateIndexesUsingBlock([&](NSUInteger index, bool &) { list.push_back(index); });
    return list;
}

} // namespace

TEST(QVGramPattern, ScoreAndIndexesAreWrittenOnFailureToo) {
    for (const char16_t *pattern : {u"", u"x", u"fooo"}) {
        float score = 7;
        NSIndexSet indexes{1, 2};
        EXPECT_FALSE(QVGramPattern(pattern, 0).matches(qv_grams(u"foo"), &score, &indexes));
        EXPECT_EQ(score, 0);
        EXPECT_TRUE(indexes.isEmpty());
    }
    float score = 7;
    EXPECT_TRUE(qv_indexesMatchingGrams(u"x", qv_grams(u"foo"), 0, &score).isEmpty());
    EXPECT_EQ(score, 0);
}

TEST(QVGramPattern, WhatWasInTheIndexesBeforeGoes) {
    NSIndexSet indexes{7};
    EXPECT_TRUE(QVGramPattern(u"fo", 0).matches(qv_grams(u"foo"), nullptr, &indexes));
    EXPECT_EQ(indexes, (NSIndexSet{0, 1}));
}

TEST(QVGramPattern, TheScoreCanBeLeftOut) {
    EXPECT_EQ(qv_indexesMatchingGrams(u"fo", qv_grams(u"foo"), 0), (NSIndexSet{0, 1}));
    EXPECT_TRUE(QVGramPattern(u"fo", 0).matches(qv_grams(u"foo")));
}

TEST(QVGramPattern, NullIsAsGoodAsEmpty) {
    float score = 7;
    EXPECT_TRUE(qv_indexesMatchingGrams(nullptr, qv_grams(u"foo"), 0, &score).isEmpty());
    EXPECT_EQ(score, 0);
    EXPECT_TRUE(qv_indexesMatchingGrams(nullptr, nullptr, 2, &score).isEmpty());
    EXPECT_TRUE(qv_indexesMatchingGrams(u"f", nullptr, 2, &score).isEmpty());
}

TEST(QVGramPattern, EmptyGramsAreStepsWithoutLetters) {
    // They count among the grams, so the run of three grams adds a third of 0.01, and an empty gram between
    // two leaves a gap: 1.8 + 1.2 + 0.01 x 2 / 3.
    float score = 0;
    EXPECT_EQ(listed(qv_indexesMatchingGrams(u"fB", {u"foo", u"", u"Bar"}, 0, &score)),
              (std::vector<NSUInteger>{0, 3}));
    EXPECT_NEAR(score, 3.0066667, 1e-6);
    // The second gram is not the first, though nothing stands before it: 1.44 x 3 + 0.01 / 2.
    EXPECT_EQ(listed(qv_indexesMatchingGrams(u"foo", {u"", u"foo"}, 0, &score)),
              (std::vector<NSUInteger>{0, 1, 2}));
    EXPECT_NEAR(score, 4.325, 1e-6);
    EXPECT_TRUE(qv_indexesMatchingGrams(u"f", {u"", u""}, 0, &score).isEmpty());
}

TEST(QVGramPattern, WhereAUnitIsMissingNoWordIsLookedAt) {
    EXPECT_FALSE(QVGramPattern(u"fx", 2).mayMatch(qv_grams(u"fooBar")));
    EXPECT_TRUE(QVGramPattern(u"rab", 2).mayMatch(qv_grams(u"fooBar")));
    EXPECT_TRUE(QVGramPattern(u"f b", 10).mayMatch(qv_grams(u"fooBar")));
    EXPECT_FALSE(QVGramPattern(u"f b", 2).mayMatch(qv_grams(u"fooBar")));
}

TEST(QVGramPattern, APatternCanBeUsedForManyCandidates) {
    const QVGramPattern pattern(u"fb", QVGramMatchingIgnoreCase);
    EXPECT_TRUE(pattern.matches(qv_grams(u"fooBar")));
    EXPECT_FALSE(pattern.matches(qv_grams(u"barFoo")));
    EXPECT_TRUE(pattern.matches(qv_grams(u"FB")));
}

// MARK: - Laws

TEST(QVGramPatternLaw, AgreesWithThePlainWayToTheLastBit) {
    // Few letters, so that much matches; two that change their length when lowered or stripped, and halves of
    // pairs.
    const std::u16string letters = u"aabbABcC__ 1";
    const std::u16string odd = u"abAB \téÉ\u0301\u0130\u00A0\xFFFF\xD83D\xDE00\u1E9E";
    std::size_t matches = 0;
    for (unsigned seed = 1; seed <= 8000; ++seed) {
        std::mt19937 random(seed);
        const std::u16string &units = random() % 3 == 0 ? odd : letters;
        const auto text = [&](std::size_t longest) {
            std::u16string result;
            for (std::size_t length = random() % (longest + 1); result.size() < length;)
                result += units[random() % units.size()];
            return NSString(result);
        };
        std::vector<NSString> grams;
        if (random() % 2 == 0) {
            grams = naiveGrams(text(16));
        } else {
            // Any texts at all, as archives and stores may bring them.
            for (std::size_t count = random() % 6; grams.size() < count;)
                grams.push_back(text(5));
        }
        const NSString pattern = text(random() % 2 == 0 ? 3 : 8);
        for (unsigned options = 0; options < 16; ++options) {
            const NaiveMatch expected = naiveMatch(pattern, grams, options);
            const QVGrams prepared{std::span<const NSString>(grams)};
            float score = -1;
            NSIndexSet indexes;
            const bool isMatch = QVGramPattern(pattern, options).matches(prepared, &score, &indexes);
            ASSERT_EQ(indexes, expected.indexes)
                << "seed " << seed << ' ' << drawing(pattern, grams, options);
            ASSERT_EQ(std::bit_cast<std::uint32_t>(score), std::bit_cast<std::uint32_t>(expected.score))
                << "seed " << seed << ' ' << drawing(pattern, grams, options);
            ASSERT_EQ(isMatch, !indexes.isEmpty()) << "seed " << seed;
            float scoreAlone = -1;
            ASSERT_EQ(QVGramPattern(pattern, options).matches(prepared, &scoreAlone), isMatch);
            ASSERT_EQ(scoreAlone, score);
            matches += isMatch;
        }
    }
    // Or the law says nothing.
    EXPECT_GT(matches, 12000u);
}

TEST(QVGramPatternLaw, LongNamesAndPatternsAgreeToo) {
    const std::u16string units = u"abcABC_";
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        std::u16string name;
        while (name.size() < 2000)
            name += units[random() % units.size()];
        // A part of the name's units, in order.
        std::u16string pattern;
        for (const char16_t unit : name)
            if (random() % 8 == 0)
                pattern += unit;
        for (unsigned options = 0; options < 16; ++options) {
            const NaiveMatch expected = naiveMatch(pattern, naiveGrams(name), options);
            float score = -1;
            ASSERT_EQ(qv_indexesMatchingGrams(pattern, qv_grams(name), options, &score), expected.indexes)
                << "seed " << seed << " options " << options;
            ASSERT_EQ(score, expected.score) << "seed " << seed << " options " << options;
        }
        EXPECT_FALSE(qv_indexesMatchingGrams(pattern, qv_grams(name), 2).isEmpty()) << "seed " << seed;
    }
}
