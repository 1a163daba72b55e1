#include "Quorvane/Categories/QVGrams.h"

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Categories/QVGramCache.h"
#include "Tests/Quorvane/Categories/NaiveGrams.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

using Texts = std::vector<NSString>;

Texts gramsOf(const NSString &string) { return qv_grams(string).strings(); }

} // namespace

// MARK: - Splitting

TEST(QVGrams, ANameSplitsWhereItsCaseChanges) {
    EXPECT_EQ(gramsOf(u"fooBarBaz"), (Texts{u"foo", u"Bar", u"Baz"}));
    EXPECT_EQ(gramsOf(u"FooBar"), (Texts{u"Foo", u"Bar"}));
    EXPECT_EQ(gramsOf(u"foo"), (Texts{u"foo"}));
    EXPECT_EQ(gramsOf(u"F"), (Texts{u"F"}));
}

TEST(QVGrams, TheLastOfSeveralCapitalsBeginsTheNextWord) {
    EXPECT_EQ(gramsOf(u"HTMLElement"), (Texts{u"HTML", u"Element"}));
    EXPECT_EQ(gramsOf(u"aURL"), (Texts{u"a", u"URL"}));
    EXPECT_EQ(gramsOf(u"ABc"), (Texts{u"A", u"Bc"}));
    EXPECT_EQ(gramsOf(u"toURLString"), (Texts{u"to", u"URL", u"String"}));
}

TEST(QVGrams, EachUnitThatIsNoLetterIsAWordOfItsOwn) {
    EXPECT_EQ(gramsOf(u"a_b2"), (Texts{u"a", u"_", u"b", u"2"}));
    EXPECT_EQ(gramsOf(u"x10"), (Texts{u"x", u"1", u"0"}));
    EXPECT_EQ(gramsOf(u"__"), (Texts{u"_", u"_"}));
    EXPECT_EQ(gramsOf(u"URL2"), (Texts{u"URL", u"2"}));
    EXPECT_EQ(gramsOf(u" \t"), (Texts{u" ", u"\t"}));
}

TEST(QVGrams, LettersWithoutCaseStandAlone) {
    EXPECT_EQ(gramsOf(u"漢字"), (Texts{u"漢", u"字"}));
    EXPECT_EQ(gramsOf(u"ÉcoleÜber"), (Texts{u"École", u"Über"}));
    // A title case letter is upper case.
    EXPECT_EQ(gramsOf(u"\u01C5a"), (Texts{u"\u01C5a"}));
    // A mark is no letter.
    EXPECT_EQ(gramsOf(u"e\u0301"), (Texts{u"e", u"\u0301"}));
}

TEST(QVGrams, PairsOfSurrogatesAreSplitUnlessTheyAreLetters) {
    EXPECT_EQ(gramsOf(u"a\U0001F600"), (Texts{u"a", std::u16string(1, 0xD83D), std::u16string(1, 0xDE00)}));
    // Deseret long I, upper and lower case.
    EXPECT_EQ(gramsOf(u"\U00010400\U00010428"), (Texts{u"\U00010400\U00010428"}));
    EXPECT_EQ(gramsOf(u"\U00010400\U00010400\U00010428"), (Texts{u"\U00010400", u"\U00010400\U00010428"}));
    EXPECT_EQ(gramsOf(std::u16string(1, 0xD801)), (Texts{std::u16string(1, 0xD801)}));
}

TEST(QVGrams, AnEmptyTextHasNoneAndANullOneNoList) {
    EXPECT_FALSE(qv_grams(u"").isNull());
    EXPECT_EQ(qv_grams(u"").count(), 0u);
    EXPECT_TRUE(qv_grams(nullptr).isNull());
    EXPECT_EQ(qv_grams(nullptr).strings(), Texts());
}

TEST(QVGrams, SplittingLosesNothingAndAgreesWithThePlainWay) {
    const std::u16string units = u"abcABCxX_-0 9é\u0301É\u01C5漢\xD83D\xDE00\xD801\xDC00\xDC28";
    for (unsigned seed = 1; seed <= 10000; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::u16string text;
        for (std::size_t length = random() % 24; text.size() < length;)
            text += units[random() % units.size()];
        const QVGrams grams = qv_grams(text);
        ASSERT_EQ(grams.strings(), naiveGrams(text));
        ASSERT_EQ(grams.text(), text);
    }
}

// MARK: - The list

TEST(QVGrams, AListTellsItsWords) {
    const QVGrams grams{u"foo", u"", u"Bar"};
    EXPECT_EQ(grams.count(), 3u);
    EXPECT_EQ(grams.gramAtIndex(0), u"foo");
    EXPECT_EQ(grams.gramAtIndex(1), u"");
    EXPECT_EQ(grams.gramAtIndex(2), u"Bar");
    EXPECT_EQ(grams.text(), u"fooBar");
    EXPECT_EQ(grams.strings(), (Texts{u"foo", u"", u"Bar"}));
}

TEST(QVGrams, ListsAreEqualWhereTheirWordsAre) {
    EXPECT_EQ((QVGrams{u"foo", u"Bar"}), qv_grams(u"fooBar"));
    EXPECT_NE((QVGrams{u"fo", u"oBar"}), qv_grams(u"fooBar"));
    EXPECT_NE((QVGrams{u"foo", u"bar"}), qv_grams(u"fooBar"));
    EXPECT_NE((QVGrams{u"foo"}), (QVGrams{u"foo", u""}));
    EXPECT_NE(QVGrams(), qv_grams(u""));
    EXPECT_EQ(QVGrams(), QVGrams(nullptr));
    EXPECT_EQ(qv_grams(u"éclair"), QVGrams{u"éclair"});
}

TEST(QVGrams, AWordCanBeLongerThanOneUnitTells) {
    const NSString word(std::u16string(70000, u'x'));
    const QVGrams grams{word, u"y"};
    EXPECT_EQ(grams.gramAtIndex(0), word.view());
    EXPECT_EQ(grams.gramAtIndex(1), u"y");
}

TEST(QVGrams, TheMaskHasTheBitsOfAllUnitsUnderAnyOptions) {
    const QVGrams grams = qv_grams(u"Éa_9");
    for (const char16_t unit : {u'É', u'é', u'E', u'e', u'a', u'A', u'_', u'9'})
        EXPECT_NE(grams.letterMask() & QVGrams::letterBit(unit), 0u) << static_cast<int>(unit);
    EXPECT_EQ(grams.letterMask() & QVGrams::letterBit(u'b'), 0u);
    EXPECT_EQ(QVGrams().letterMask(), 0u);
}

TEST(QVGrams, WhatIdentifiersAreMadeOfHasBitsOfItsOwn) {
    std::uint64_t seen = 0;
    for (const char16_t unit : std::u16string_view(u"abcdefghijklmnopqrstuvwxyz0123456789_")) {
        EXPECT_EQ(seen & QVGrams::letterBit(unit), 0u) << static_cast<char>(unit);
        seen |= QVGrams::letterBit(unit);
    }
    EXPECT_EQ(QVGrams::letterBit(u'q'), QVGrams::letterBit(u'Q'));
}

// MARK: - The cache

TEST(QVGrams, AreComputedOnceForAName) {
    const QVGrams first = qv_grams(u"aNameForTheCache");
    EXPECT_EQ(qv_grams(u"aNameForTheCache").text().data(), first.text().data());
}

TEST(QVGramCache, ANameTakesTheGramsItWasGivenLast) {
    QVGramCache cache;
    EXPECT_TRUE(cache.gramsForKey(u"name").isNull());
    cache.setGrams({u"na", u"me"}, u"name");
    EXPECT_EQ(cache.gramsForKey(u"name"), (QVGrams{u"na", u"me"}));
    cache.setGrams({u"name"}, u"name");
    EXPECT_EQ(cache.gramsForKey(u"name"), QVGrams{u"name"});
    EXPECT_EQ(cache.count(), 1u);
    EXPECT_TRUE(cache.gramsForKey(u"").isNull());
}

TEST(QVGramCache, AFullCacheHoldsItsLimitAndForgetsOneNameForEachNewOne) {
    QVGramCache cache;
    std::size_t last = 0;
    // Each place is taken sooner or later.
    while (cache.count() < limits::rememberedGrams && last < 100 * limits::rememberedGrams)
        for (int some = 0; some < 1000; ++some, ++last)
            cache.setGrams(QVGrams{u"x"}, NSString::stringWithFormat(u"%lu", last));
    EXPECT_EQ(cache.count(), limits::rememberedGrams);
    cache.setGrams({u"new"}, u"new");
    EXPECT_EQ(cache.count(), limits::rememberedGrams);
    EXPECT_EQ(cache.gramsForKey(u"new"), QVGrams{u"new"});
    std::size_t kept = 0;
    for (std::size_t index = 0; index < last; ++index)
        kept += !cache.gramsForKey(NSString::stringWithFormat(u"%lu", index)).isNull();
    EXPECT_EQ(kept, limits::rememberedGrams - 1);
}

TEST(QVGramCache, LongTextsAreNotKept) {
    QVGramCache cache;
    const NSString longest(std::u16string(limits::rememberedGramsLength, u'x'));
    const NSString longer(std::u16string(limits::rememberedGramsLength + 1, u'x'));
    cache.setGrams(QVGrams{longest}, longest);
    cache.setGrams(QVGrams{longer}, longer);
    EXPECT_FALSE(cache.gramsForKey(longest).isNull());
    EXPECT_TRUE(cache.gramsForKey(longer).isNull());
    EXPECT_EQ(qv_grams(longer).strings(), Texts{longer});
}

TEST(QVGrams, ManyThreadsCanAskForThem) {
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 500; ++round) {
                const NSString name = NSString::stringWithFormat(u"nameNumber%d", round);
                if (qv_grams(name).gramAtIndex(1) != u"Number")
                    ++wrong;
            }
        });
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

// MARK: - String representations

TEST(QVGrams, WordsAreJoinedByCommasForStorage) {
    EXPECT_EQ(qv_stringRepresentationForGrams({u"foo", u"Bar"}), u"foo,Bar");
    EXPECT_EQ(qv_stringRepresentationForGrams({u"foo"}), u"foo");
    EXPECT_EQ(qv_stringRepresentationForGrams({u"", u""}), u",");
    EXPECT_EQ(qv_stringRepresentationForGrams({u"a", u",", u"\\", u"b"}), u"a,\\,,\\\\,b");
    EXPECT_EQ(qv_stringRepresentationForGrams(qv_grams(u"")), u"");
    EXPECT_TRUE(qv_stringRepresentationForGrams(nullptr).isNull());
}

TEST(QVGrams, StoredWordsAreReadBack) {
    EXPECT_EQ(qv_gramsForStringRepresentation(u"foo,Bar").strings(), (Texts{u"foo", u"Bar"}));
    EXPECT_EQ(qv_gramsForStringRepresentation(u"a,\\,,\\\\,b").strings(), (Texts{u"a", u",", u"\\", u"b"}));
    // Whatever is behind a backslash stands for itself.
    EXPECT_EQ(qv_gramsForStringRepresentation(u"\\a\\bc").strings(), (Texts{u"abc"}));
    EXPECT_TRUE(qv_gramsForStringRepresentation(nullptr).isNull());
}

TEST(QVGrams, WhatRemainsAtTheEndIsAWordEvenWhereItIsEmpty) {
    EXPECT_EQ(qv_gramsForStringRepresentation(u"").strings(), (Texts{u""}));
    EXPECT_EQ(qv_gramsForStringRepresentation(u"a,").strings(), (Texts{u"a", u""}));
    EXPECT_EQ(qv_gramsForStringRepresentation(u",").strings(), (Texts{u"", u""}));
}

TEST(QVGrams, ABackslashAtTheVeryEndIsDropped) {
    EXPECT_EQ(qv_gramsForStringRepresentation(u"a\\").strings(), (Texts{u"a"}));
    EXPECT_EQ(qv_gramsForStringRepresentation(u"\\").strings(), (Texts{u""}));
    EXPECT_EQ(qv_gramsForStringRepresentation(u"a,\\").strings(), (Texts{u"a", u""}));
}

TEST(QVGrams, ABackslashTakesOneUnitOfAPair) {
    // The pair stays whole, since the other half follows.
    EXPECT_EQ(qv_gramsForStringRepresentation(u"\\\U0001F600").strings(), (Texts{u"\U0001F600"}));
}

TEST(QVGrams, AnyWordsReadBackAsTheyWere) {
    const std::u16string units = u"ab,\\,\\é";
    for (unsigned seed = 1; seed <= 5000; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Texts words(1 + random() % 5);
        for (NSString &word : words) {
            std::u16string text;
            for (std::size_t length = random() % 5; text.size() < length;)
                text += units[random() % units.size()];
            word = text;
        }
        const QVGrams grams{std::span<const NSString>(words)};
        ASSERT_EQ(qv_gramsForStringRepresentation(qv_stringRepresentationForGrams(grams)).strings(), words);
    }
}
