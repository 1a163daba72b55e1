#include "Quorvane/Categories/NSCharacterSet+QuorvaneAdditions.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Tests/Support/Exceptions.h"
#include "Tests/Support/TextGaps.h"
#include "Tests/Support/TextLines.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::Line;
using test::lineBy;
using test::reasonOf;
using test::withEveryGap;

namespace {

Line lineOf(QVTextReader text, NSRange range) { return lineBy(qv_getLineStart, text, range); }

} // namespace

TEST(QVRangeOfCharacters, TheRunGrowsFromTheFirstHitToItsEnd) {
    withEveryGap(u"ab12cd345", [](QVTextReader text) {
        const auto digits = NSCharacterSet::decimalDigitCharacterSet();
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *digits, 0, {0, 9}), (NSRange{2, 2}));
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *digits, 0, {3, 6}), (NSRange{3, 1}));
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *digits, 0, {4, 4}), (NSRange{6, 2}));
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *digits, 0, {4, 2}), NSNotFoundRange);
    });
}

TEST(QVRangeOfCharacters, BackwardsTheRunGrowsTowardsTheRangesStart) {
    withEveryGap(u"ab12cd345", [](QVTextReader text) {
        const auto digits = NSCharacterSet::decimalDigitCharacterSet();
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *digits, NSBackwardsSearch, {0, 9}), (NSRange{6, 3}));
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *digits, NSBackwardsSearch, {0, 6}), (NSRange{2, 2}));
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *digits, NSBackwardsSearch, {7, 1}), (NSRange{7, 1}));
    });
}

TEST(QVRangeOfCharacters, AnAnchoredRunBeginsWithTheRange) {
    const auto digits = NSCharacterSet::decimalDigitCharacterSet();
    EXPECT_EQ(qv_rangeOfCharactersFromSet(u"a12", *digits, NSAnchoredSearch, {0, 3}), NSNotFoundRange);
    EXPECT_EQ(qv_rangeOfCharactersFromSet(u"a12", *digits, NSAnchoredSearch, {1, 2}), (NSRange{1, 2}));
    EXPECT_EQ(qv_rangeOfCharactersFromSet(u"12a", *digits, NSAnchoredSearch | NSBackwardsSearch, {0, 3}),
              NSNotFoundRange);
}

TEST(QVRangeOfCharacters, PairsOfSurrogatesAreWholeMembersOfTheRun) {
    const auto faces = NSCharacterSet::characterSetWithCharactersInString(u"\U0001F600");
    withEveryGap(u"a\U0001F600\U0001F600b", [&](QVTextReader text) {
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *faces, 0, {0, 6}), (NSRange{1, 4}));
        EXPECT_EQ(qv_rangeOfCharactersFromSet(text, *faces, NSBackwardsSearch, {0, 6}), (NSRange{1, 4}));
    });
}

TEST(QVRangeOfCharacters, AnEmptyRangeFindsNothingAndAnOutsideRangeThrows) {
    const auto set = qv_newlineCharacterSet();
    EXPECT_EQ(qv_rangeOfCharactersFromSet(u"\n\n", *set, 0, {1, 0}), NSNotFoundRange);
    EXPECT_EQ(qv_rangeOfCharactersFromSet(u"\n\n", *set, 0, {2, 0}), NSNotFoundRange);
    for (const NSRange range :
         {NSRange{3, 0}, NSRange{1, 2}, NSRange{1, ~NSUInteger(0)}, NSRange{NSNotFound, 0}})
        EXPECT_EQ(reasonOf(NSRangeException, [&] { qv_rangeOfCharactersFromSet(u"\n\n", *set, 0, range); }),
                  u"Search range is out of bounds");
}

TEST(QVRangeOfNewline, IsTheWholeTerminatorFromAnyOfItsUnits) {
    // 0 a, 1 CR, 2 LF, 3 LF, 4 CR, 5 CR
    withEveryGap(u"a\r\n\n\r\r", [](QVTextReader text) {
        EXPECT_EQ(qv_rangeOfNewlineAtLocation(text, 0), NSNotFoundRange);
        EXPECT_EQ(qv_rangeOfNewlineAtLocation(text, 1), (NSRange{1, 2}));
        EXPECT_EQ(qv_rangeOfNewlineAtLocation(text, 2), (NSRange{1, 2}));
        EXPECT_EQ(qv_rangeOfNewlineAtLocation(text, 3), (NSRange{3, 1}));
        EXPECT_EQ(qv_rangeOfNewlineAtLocation(text, 4), (NSRange{4, 1}));
        EXPECT_EQ(qv_rangeOfNewlineAtLocation(text, 5), (NSRange{5, 1}));
        EXPECT_THROW(qv_rangeOfNewlineAtLocation(text, 6), NSException);
    });
    EXPECT_EQ(qv_rangeOfNewlineAtLocation(u"\n", 0), (NSRange{0, 1}));
    // The platform's other line ends are none here.
    for (const char16_t *text : {u"\u0085", u"\u2028", u"\u2029", u"\v", u"\f"})
        EXPECT_EQ(qv_rangeOfNewlineAtLocation(text, 0), NSNotFoundRange);
}

TEST(QVLines, EveryLocationOfALineAnswersTheLine) {
    for (const std::u16string terminator : {u"\n", u"\r", u"\r\n"}) {
        const std::u16string whole = u"ab" + terminator + u"c\u2028";
        const NSUInteger behind = 2 + terminator.size();
        withEveryGap(whole, [&](QVTextReader text) {
            for (NSUInteger location = 0; location < behind; ++location)
                EXPECT_EQ(lineOf(text, {location, 0}).start, 0u) << location;
            for (NSUInteger location = 0; location <= 2; ++location)
                EXPECT_EQ(lineOf(text, {location, 0}), (Line{0, 2, behind})) << location;
            for (NSUInteger location = behind; location <= whole.size(); ++location)
                EXPECT_EQ(lineOf(text, {location, 0}), (Line{behind, whole.size(), whole.size()}))
                    << location;
            EXPECT_EQ(qv_lineRangeForRange(text, {1, 1}), (NSRange{0, behind}));
        });
    }
}

TEST(QVLines, ARangeThatEndsBehindATerminatorReachesThroughTheNextLine) {
    withEveryGap(u"ab\ncd\r\nef", [](QVTextReader text) {
        EXPECT_EQ(qv_lineRangeForRange(text, {0, 3}), (NSRange{0, 7}));
        EXPECT_EQ(qv_lineRangeForRange(text, {3, 4}), (NSRange{3, 6}));
        EXPECT_EQ(qv_lineRangeForRange(text, {0, 2}), (NSRange{0, 3}));
    });
}

TEST(QVLines, BetweenCRAndLFTheLineIsTheOneThatBothEnd) {
    withEveryGap(u"x\nab\r\ncd", [](QVTextReader text) {
        // 2..4 is "ab", 4 the CR, 5 the LF.
        EXPECT_EQ(lineOf(text, {5, 0}), (Line{2, 4, 6}));
        EXPECT_EQ(lineOf(text, {2, 3}), (Line{2, 4, 6}));
        EXPECT_EQ(lineOf(text, {5, 1}), (Line{2, 8, 8}));
    });
    withEveryGap(u"\r\n", [](QVTextReader text) {
        EXPECT_EQ(lineOf(text, {1, 0}), (Line{0, 0, 2}));
        EXPECT_EQ(lineOf(text, {2, 0}), (Line{2, 2, 2}));
    });
    // Behind two terminators, the second of them cut.
    withEveryGap(u"\n\r\n", [](QVTextReader text) { EXPECT_EQ(lineOf(text, {2, 0}), (Line{1, 1, 3})); });
}

TEST(QVLines, AnEmptyTextIsOneEmptyLine) {
    EXPECT_EQ(lineOf(u"", {0, 0}), (Line{0, 0, 0}));
    EXPECT_EQ(qv_lineRangeForRange(u"", {0, 0}), (NSRange{0, 0}));
}

TEST(QVLines, OnlyWhatIsAskedForIsAnswered) {
    NSUInteger start = 9;
    qv_getLineStart(u"a\nb", &start, nullptr, nullptr, {3, 0});
    EXPECT_EQ(start, 2u);
    NSUInteger contentsEnd = 9;
    qv_getLineStart(u"a\nb", nullptr, nullptr, &contentsEnd, {0, 0});
    EXPECT_EQ(contentsEnd, 1u);
    qv_getLineStart(u"a\nb", nullptr, nullptr, nullptr, {0, 0});
}

TEST(QVLines, ARangeOutsideOfTheTextThrows) {
    const NSString outside = u"Search range is out of bounds";
    EXPECT_EQ(reasonOf(NSRangeException, [] { qv_lineRangeForRange(u"ab", {3, 0}); }), outside);
    EXPECT_EQ(reasonOf(NSRangeException, [] { qv_lineRangeForRange(u"ab", {1, 2}); }), outside);
    EXPECT_EQ(reasonOf(NSRangeException, [] { qv_lineRangeForRange(u"ab", {1, ~NSUInteger(0)}); }), outside);
}
