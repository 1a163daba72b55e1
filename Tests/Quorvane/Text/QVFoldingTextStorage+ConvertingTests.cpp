#include "Tests/Quorvane/Text/FoldingFixtures.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// What a walk over discrete ranges tells: "0+2@0 2+2@1".
std::string discreteRanges(const QVFoldingTextStorage &view, NSRange range) {
    std::string text;
    view.enumerateDiscreteBackingRangesInRange(
        range, [&](NSRange backingRange, NSUInteger foldDepth, bool &) {
            text += (text.empty() ? "" : " ") + drawn(backingRange) + "@" + std::to_string(foldDepth);
        });
    return text;
}

} // namespace

TEST(QVFoldingConversions, WithoutFoldsPlacesAreTheSame) {
    const FoldedDocument folded(u"abc");
    for (NSUInteger position = 0; position <= 3; ++position) {
        EXPECT_EQ(folded.view->convertPositionFromBacking(position), position);
        EXPECT_EQ(folded.view->convertPositionToBacking(position), position);
    }
    EXPECT_EQ(folded.view->convertPositionFromBacking(50), 3u);
    EXPECT_EQ(folded.view->convertRangeToBacking({1, 2}), (NSRange{1, 2}));
}

TEST(QVFoldingConversions, APlaceInsideOfAFoldIsItsCharacterOrTheOneBehind) {
    FoldedDocument folded(u"abcdefg");
    folded.view->foldRange({2, 3});
    EXPECT_EQ(folded.view->convertPositionFromBacking(3), 2u);
    EXPECT_EQ(folded.view->convertPositionFromBacking(3, 1), 3u);
    EXPECT_EQ(folded.view->convertPositionFromBacking(4, 7), 3u);
    EXPECT_EQ(folded.view->convertPositionToBacking(2), 2u);
    EXPECT_EQ(folded.view->convertPositionToBacking(3), 5u);
    // Its edges are no inside.
    EXPECT_EQ(folded.view->convertPositionFromBacking(2, 1), 2u);
    EXPECT_EQ(folded.view->convertPositionFromBacking(5, 0), 3u);
    EXPECT_EQ(folded.view->convertPositionFromBacking(7), 5u);
    EXPECT_EQ(folded.view->convertPositionToBacking(5), 7u);
}

TEST(QVFoldingConversions, RangesThatEndInAFoldStopBeforeItsCharacter) {
    FoldedDocument folded(u"abcdefg");
    folded.view->foldRange({2, 3});
    EXPECT_EQ(folded.view->convertRangeFromBacking({1, 3}), (NSRange{1, 1}));
    EXPECT_EQ(folded.view->convertRangeFromBacking({3, 1}), (NSRange{2, 0}));
    EXPECT_EQ(folded.view->convertRangeFromBacking({3, 3}), (NSRange{2, 2}));
    EXPECT_EQ(folded.view->convertRangeFromBacking({2, 3}), (NSRange{2, 1}));
}

TEST(QVFoldingConversions, ARangeWithAFoldsCharacterSpansItsText) {
    FoldedDocument folded(u"abcdefg");
    folded.view->foldRange({2, 3});
    EXPECT_EQ(folded.view->convertRangeToBacking({1, 2}), (NSRange{1, 4}));
    EXPECT_EQ(folded.view->convertRangeToBacking({2, 1}), (NSRange{2, 3}));
    EXPECT_EQ(folded.view->convertRangeToBacking({2, 0}), (NSRange{2, 0}));
    EXPECT_EQ(folded.view->convertRangeToBacking({0, 5}), (NSRange{0, 7}));
}

TEST(QVFoldingConversions, RangesAreCutToTheTextAndNotFoundStays) {
    FoldedDocument folded(u"abcdefg");
    folded.view->foldRange({2, 3});
    EXPECT_EQ(folded.view->convertRangeFromBacking({5, 100}), (NSRange{3, 2}));
    EXPECT_EQ(folded.view->convertRangeFromBacking({5, std::numeric_limits<NSUInteger>::max() - 5}),
              (NSRange{3, 2}));
    EXPECT_EQ(folded.view->convertRangeFromBacking({7, 3}), (NSRange{5, 0}));
    EXPECT_EQ(folded.view->convertRangeFromBacking({90, 3}), (NSRange{5, 0}));
    EXPECT_EQ(folded.view->convertRangeFromBacking({NSNotFound, 4}), (NSRange{NSNotFound, 4}));
    EXPECT_EQ(folded.view->convertRangeToBacking({NSNotFound, 4}), (NSRange{NSNotFound, 4}));
}

TEST(QVFoldingConversions, ViewsWithoutTextConvertNothing) {
    const auto view = QVFoldingTextStorage::init();
    EXPECT_EQ(view->convertPositionFromBacking(0), 0u);
    EXPECT_EQ(view->convertPositionFromBacking(5), 5u);
    EXPECT_EQ(view->convertPositionToBacking(5), 5u);
}

TEST(QVFoldingConversions, AfterClearingAViewCountsFromTheLengthOfBefore) {
    // Meant like that, until the view is made anew.
    FoldedDocument folded(u"abcdef");
    folded.view->foldRange({0, 3});
    folded.take();
    folded.document->clearContents();
    EXPECT_EQ(folded.take(), (Strings{"did 3 0+0 -4"}));
    EXPECT_EQ(folded.view->length(), 0u);
    folded.document->replaceCharactersInRange({0, 0}, u"xy");
    EXPECT_EQ(drawn(*folded.view), "xy");
    EXPECT_EQ(folded.view->convertPositionToBacking(1), 1u);
    EXPECT_EQ(folded.view->convertPositionToBacking(2), 8u);
    EXPECT_EQ(folded.view->convertPositionFromBacking(2), 2u);
    EXPECT_THROW(folded.view->replaceCharactersInRange({2, 0}, u"z"), NSException);
}

TEST(QVFoldingConversions, PlacesThatNoTextHasAreAsserted) {
    FoldedDocument folded(u"abcdef");
    folded.document->clearContents();
    folded.document->replaceCharactersInRange({0, 0}, u"xyz");
    const auto messages = [](auto convert) {
        const AssertionRecorder assertions;
        convert();
        return assertions.messages();
    };
    using Messages = std::vector<NSString>;
    EXPECT_EQ(messages([&] { folded.view->convertPositionFromBacking(5); }),
              (Messages{u"Converted folding position is invalid."}));
    EXPECT_EQ(messages([&] {
                  folded.view->convertRangeToBacking({3, 1});
              }),
              (Messages{u"Start position succeeds end position"}));
    folded.view->foldRange({0, 2});
    folded.document->replaceCharactersInRange({2, 1}, u"");
    EXPECT_EQ(drawn(*folded.view), "~");
    EXPECT_EQ(messages([&] { folded.view->convertPositionFromBacking(5); }),
              (Messages{u"Invalid effective range: No value found"}));
}

// MARK: - Discrete ranges

TEST(QVFoldingDiscreteRanges, TextWithoutFoldsIsOneRange) {
    const FoldedDocument folded(u"abcdef");
    EXPECT_EQ(discreteRanges(*folded.view, {1, 3}), "1+3@0");
    EXPECT_EQ(discreteRanges(*folded.view, {2, 0}), "2+0@0");
}

TEST(QVFoldingDiscreteRanges, FoldsComeWithTheirDepthAndTheTextAroundThem) {
    FoldedDocument folded(u"abcdefghij");
    folded.view->foldRange({4, 2});
    folded.view->foldRange({2, 5});
    EXPECT_EQ(discreteRanges(*folded.view, {0, 5}), "0+2@0 2+2@1 4+2@2 6+2@1 8+2@0");
    EXPECT_EQ(discreteRanges(*folded.view, {2, 1}), "2+2@1 4+2@2 6+2@1");
    EXPECT_EQ(discreteRanges(*folded.view, {3, 2}), "8+2@0");
}

TEST(QVFoldingDiscreteRanges, TheTextBeforeASecondFoldIsCountedFromTheStartOfTheRange) {
    // A decision that stands: it covers the first fold once more.
    FoldedDocument folded(u"abcdefghij");
    folded.view->foldRange({6, 2});
    folded.view->foldRange({2, 2});
    EXPECT_EQ(discreteRanges(*folded.view, {0, 8}), "0+2@0 2+2@1 0+6@0 6+2@1 8+2@0");
    EXPECT_EQ(discreteRanges(*folded.view, {2, 1}), "2+2@1");
}

TEST(QVFoldingDiscreteRanges, TheStopFlagEndsAllLevels) {
    FoldedDocument folded(u"abcdefghij");
    folded.view->foldRange({4, 2});
    folded.view->foldRange({2, 5});
    for (int last = 1; last <= 5; ++last) {
        int told = 0;
        folded.view->enumerateDiscreteBackingRangesInRange(
            {0, 5}, [&](NSRange, NSUInteger, bool &stop) { stop = ++told == last; });
        EXPECT_EQ(told, last);
    }
}

TEST(QVFoldingDiscreteRanges, AMissingBlockIsAsserted) {
    const AssertionRecorder assertions;
    const FoldedDocument folded(u"abc");
    folded.view->enumerateDiscreteBackingRangesInRange({0, 1}, nullptr);
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{u"Invalid parameter not satisfying: block != nil"}));
}

// MARK: - Lines

TEST(QVFoldingLines, KeepTheirNumbersWhenOthersAreFolded) {
    // "one\n[two\nthree\n]four"
    FoldedDocument folded(u"one\ntwo\nthree\nfour");
    folded.view->foldRange({4, 10});
    EXPECT_EQ(drawn(*folded.view), "one\n~four");
    EXPECT_EQ(folded.view->numberOfLines(), 4u);
    EXPECT_EQ(folded.view->characterRangeForLineNumber(3), (NSRange{5, 4}));
    // A line that ends in a fold ends before its character; one that is all inside is empty.
    EXPECT_EQ(folded.view->characterRangeForLineNumber(1), (NSRange{4, 0}));
    EXPECT_EQ(folded.view->characterRangeForLineNumber(2), (NSRange{4, 1}));
    EXPECT_EQ(folded.view->characterRangeForLineNumber(4), NSNotFoundRange);
    EXPECT_EQ(folded.view->characterRangeForLineNumbersInRange({1, 3}), (NSRange{4, 5}));

    NSRange range;
    EXPECT_EQ(folded.view->lineNumberForCharacterIndex(6, &range), 3u);
    EXPECT_EQ(range, (NSRange{5, 4}));
    EXPECT_EQ(folded.view->lineNumberForCharacterIndex(4), 1u);
    EXPECT_EQ(folded.view->rangeOfLineNumbersForCharacterRange({2, 4}, &range), (NSRange{0, 4}));
    EXPECT_EQ(range, (NSRange{0, 9}));
    EXPECT_EQ(folded.view->rangeOfLineNumbersForCharacterRange({6, 1}), (NSRange{3, 1}));
}

TEST(QVFoldingLines, AreToldWithTheirPlacesInTheView) {
    FoldedDocument folded(u"one\ntwo\nthree\nfour");
    folded.view->foldRange({4, 10});
    std::string told;
    const auto note = [&](NSRange range, NSUInteger lineNumber, bool &) {
        told += std::to_string(lineNumber) + ":" + drawn(range) + " ";
    };
    folded.view->enumerateLinesInRange({0, 4}, note);
    EXPECT_EQ(told, "0:0+4 1:4+0 2:4+1 3:5+4 ");
    told.clear();
    folded.view->enumerateLinesForCharacterRange({4, 2}, note);
    EXPECT_EQ(told, "1:4+0 2:4+1 3:5+4 ");
}
