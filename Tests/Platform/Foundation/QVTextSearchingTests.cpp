#include "Platform/Foundation/QVTextSearching.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSException.h"
#include "Tests/Support/TextGaps.h"
#include "Tests/Support/TextLines.h"

#include <gtest/gtest.h>
#include <random>
#include <unicode/ubrk.h>

using namespace quorvane;
using test::Line;
using test::lineBy;
using test::withEveryGap;

namespace {

Line lineOf(QVTextReader text, NSRange range) { return lineBy(QVPlatformGetLineStart, text, range); }

} // namespace

TEST(QVTextSearching, ACharacterOfASetIsFoundOnBothSidesOfTheGap) {
    const auto faces = NSCharacterSet::characterSetWithCharactersInString(u"\U0001F600");
    withEveryGap(u"a\U0001F600b\U0001F600", [&](QVTextReader text) {
        EXPECT_EQ(QVRangeOfCharacterFromSet(text, *faces, 0, {0, 6}), (NSRange{1, 2}));
        EXPECT_EQ(QVRangeOfCharacterFromSet(text, *faces, NSBackwardsSearch, {0, 6}), (NSRange{4, 2}));
        EXPECT_EQ(QVRangeOfCharacterFromSet(text, *faces, NSBackwardsSearch, {0, 4}), (NSRange{1, 2}));
        // A range that cuts a pair holds no whole character of it.
        EXPECT_EQ(QVRangeOfCharacterFromSet(text, *faces, 0, {2, 3}), NSNotFoundRange);
        EXPECT_EQ(QVRangeOfCharacterFromSet(text, *faces, NSBackwardsSearch, {2, 3}), NSNotFoundRange);
        EXPECT_THROW(QVRangeOfCharacterFromSet(text, *faces, 0, {7, 0}), NSException);
        EXPECT_THROW(QVRangeOfCharacterFromSet(text, *faces, 0, {1, ~NSUInteger(0)}), NSException);
    });
}

TEST(QVTextSearching, ATextIsFoundAcrossTheGap) {
    withEveryGap(u"aabaabaaa", [](QVTextReader text) {
        EXPECT_EQ(QVLocationOfText(text, u"baab", 0), 2u);
        EXPECT_EQ(QVLocationOfText(text, u"aab", 1), 3u);
        EXPECT_EQ(QVLocationOfText(text, u"aaa", 0), 6u);
        EXPECT_EQ(QVLocationOfText(text, u"aabaabaaa", 0), 0u);
        EXPECT_EQ(QVLocationOfText(text, u"aabaabaaaa", 0), NSNotFound);
        EXPECT_EQ(QVLocationOfText(text, u"bb", 0), NSNotFound);
        EXPECT_EQ(QVLocationOfText(text, u"a", 9), NSNotFound);
        EXPECT_EQ(QVLocationOfText(text, u"", 0), NSNotFound);
        EXPECT_THROW(QVLocationOfText(text, u"a", 10), NSException);
    });
}

TEST(QVTextSearching, ClustersAreWholeWhereverTheGapStands) {
    // Letter with two marks, pair, CR LF, two flags, family joined by joiners, Hangul of three parts, letter.
    const std::vector<std::u16string> clusters{u"e\u0301\u0323",
                                               u"\U0001F600",
                                               u"\r\n",
                                               u"\U0001F1E9\U0001F1EA",
                                               u"\U0001F1EB\U0001F1F7",
                                               u"\U0001F468\u200D\U0001F469\u200D\U0001F467",
                                               u"\u1112\u1161\u11AB",
                                               u"x"};
    std::u16string whole;
    for (const std::u16string &cluster : clusters)
        whole += cluster;
    withEveryGap(whole, [&](QVTextReader text) {
        NSUInteger start = 0;
        for (const std::u16string &cluster : clusters) {
            for (NSUInteger index = start; index < start + cluster.size(); ++index)
                EXPECT_EQ(QVRangeOfComposedCharacterSequenceAtIndex(text, index),
                          (NSRange{start, cluster.size()}));
            start += cluster.size();
        }
    });
}

TEST(QVTextSearching, ALoneHalfOfAPairIsAClusterOfItsOwn) {
    const std::u16string text{u'a', 0xD83D, u'b', 0xDE00, 0xD83D};
    for (NSUInteger index = 0; index < text.size(); ++index)
        EXPECT_EQ(QVRangeOfComposedCharacterSequenceAtIndex(text, index), (NSRange{index, 1}));
}

TEST(QVTextSearching, AnIndexThatIsNotBelowTheLengthHasNoCluster) {
    for (const NSUInteger index : {NSUInteger(2), NSNotFound}) {
        try {
            QVRangeOfComposedCharacterSequenceAtIndex(u"ab", index);
            FAIL() << "no exception";
        } catch (const NSException &exception) {
            EXPECT_EQ(exception.name(), u"NSRangeException");
        }
    }
    EXPECT_THROW(QVRangeOfComposedCharacterSequenceAtIndex(u"", 0), NSException);
}

TEST(QVTextSearching, ClustersOfRandomTextAreThoseOfTheWholeText) {
    // The library's answer for the whole text is the slow twin of the look at a short stretch of it.
    const std::u32string_view alphabet =
        U"ab \r\n\u0301\u200D\u0903\u0600\u1112\u1161\u11AB\uAC00\uAC01\u0915\u094D"
        U"\U0001F1E9\U0001F468\U0001F3FD\U0001F600\u4E00\u2764\uFE0F\u0000";
    std::mt19937 random(20240613);
    for (int round = 0; round < 300; ++round) {
        std::u16string text;
        for (int count = 0; count < 30; ++count) {
            const char32_t character = alphabet[random() % alphabet.size()];
            if (character >= 0x10000) {
                text.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
                text.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
            } else {
                text.push_back(static_cast<char16_t>(character));
            }
        }
        UErrorCode status = U_ZERO_ERROR;
        UBreakIterator *whole =
            ubrk_open(UBRK_CHARACTER, "", text.data(), static_cast<std::int32_t>(text.size()), &status);
        ASSERT_TRUE(U_SUCCESS(status));
        const NSUInteger gap = random() % (text.size() + 1);
        const QVTextReader reader(std::u16string_view(text).substr(0, gap),
                                  std::u16string_view(text).substr(gap));
        std::int32_t start = 0;
        for (std::int32_t end; (end = ubrk_next(whole)) != UBRK_DONE; start = end)
            for (std::int32_t index = start; index < end; ++index)
                ASSERT_EQ(QVRangeOfComposedCharacterSequenceAtIndex(reader, static_cast<NSUInteger>(index)),
                          (NSRange{static_cast<NSUInteger>(start), static_cast<NSUInteger>(end - start)}))
                    << "round " << round << ", index " << index;
        ubrk_close(whole);
    }
}

TEST(QVTextSearching, EveryUnicodeLineEndEndsAPlatformLine) {
    for (const std::u16string terminator : {u"\n", u"\r", u"\r\n", u"\u0085", u"\u2028", u"\u2029"}) {
        const std::u16string whole = u"ab" + terminator + u"cd";
        const NSUInteger behind = 2 + terminator.size();
        withEveryGap(whole, [&](QVTextReader text) {
            for (NSUInteger location = 0; location < behind; ++location)
                EXPECT_EQ(lineOf(text, {location, 0}), (Line{0, 2, behind})) << location;
            for (NSUInteger location = behind; location <= whole.size(); ++location)
                EXPECT_EQ(lineOf(text, {location, 0}), (Line{behind, behind + 2, behind + 2})) << location;
            // A range that ends with the terminator stays in its line.
            EXPECT_EQ(lineOf(text, {1, behind - 1}), (Line{0, 2, behind}));
            EXPECT_EQ(lineOf(text, {1, behind}), (Line{0, behind + 2, behind + 2}));
            EXPECT_EQ(QVPlatformLineRangeForRange(text, {1, 1}), (NSRange{0, behind}));
        });
    }
    // The vertical tab and the form feed are no line ends.
    EXPECT_EQ(lineOf(u"a\v\fb", {0, 0}), (Line{0, 4, 4}));
}

TEST(QVTextSearching, ARangeThatEndsBetweenCRAndLFEndsBehindBoth) {
    withEveryGap(u"a\r\nb", [](QVTextReader text) {
        EXPECT_EQ(lineOf(text, {0, 2}), (Line{0, 1, 3}));
        EXPECT_EQ(lineOf(text, {2, 1}), (Line{0, 1, 3}));
        EXPECT_EQ(lineOf(text, {2, 2}), (Line{0, 4, 4}));
    });
    withEveryGap(u"\r\n", [](QVTextReader text) { EXPECT_EQ(lineOf(text, {1, 0}), (Line{0, 0, 2})); });
}

TEST(QVTextSearching, PlatformLinesOfEmptyTextAndOfOutsideRanges) {
    EXPECT_EQ(lineOf(u"", {0, 0}), (Line{0, 0, 0}));
    EXPECT_EQ(lineOf(u"a\n", {2, 0}), (Line{2, 2, 2}));
    EXPECT_THROW(lineOf(u"a\n", {3, 0}), NSException);
    EXPECT_THROW(QVPlatformLineRangeForRange(u"a\n", {1, 2}), NSException);
    NSUInteger start = 7;
    QVPlatformGetLineStart(u"a\nb", &start, nullptr, nullptr, {2, 1});
    EXPECT_EQ(start, 2u);
}
