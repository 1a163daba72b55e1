#include "Quorvane/Text/QVLineRunArray.h"

#include "Tests/Quorvane/Text/RunPictures.h"
#include "Tests/Support/Exceptions.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/TextGaps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The lines of a text, put in at once.
std::shared_ptr<QVLineRunArray> lines(std::u16string_view text, std::uint64_t options = 0,
                                      std::size_t runsPerChunk = 4) {
    auto array = std::make_shared<QVLineRunArray>(options, runsPerChunk);
    array->replaceCharactersInRange({0, 0}, text);
    return array;
}

/// What is left of a text's lines after an edit.
std::string edited(std::u16string_view text, NSRange range, std::u16string_view string) {
    auto array = lines(text);
    array->replaceCharactersInRange(range, string);
    return draw(*array);
}

/// Line numbers and ranges in the order of a walk: "1{2,3}".
std::string walk(const QVLineRunArray &array, NSRange range, NSEnumerationOptions options = 0) {
    std::string picture;
    array.enumerateLinesForCharacterRange(
        range, options, [&](const QVLineRun &run, NSUInteger number, bool &) {
            picture += (picture.empty() ? "" : " ") + std::to_string(number) + "{" +
                       std::to_string(run.range().location) + "," + std::to_string(run.range().length) + "}";
        });
    return picture;
}

std::string strings(const QVLineRunArray &array) {
    std::string picture;
    array.enumerateLinesForLineNumberRange(
        {0, array.numberOfLines()}, [&](const QVLineRun &run, NSUInteger, bool &) {
            picture += "[" + NSString(run.string().value_or(u"null")).UTF8String() + "]";
        });
    return picture;
}

const NSString beyond = u"Index is beyond of the bounds of the line run array";

} // namespace

// MARK: - Making and looking up

TEST(QVLineRunArray, ANewArrayHoldsOneEmptyLine) {
    const auto array = QVLineRunArray::init();
    EXPECT_EQ(array->options(), 0u);
    EXPECT_EQ(array->length(), 0u);
    EXPECT_EQ(array->numberOfLines(), 1u);
    EXPECT_EQ(array->lineForLineNumber(0).range(), (NSRange{0, 0}));
    EXPECT_EQ(array->lineForLineNumber(0).flags(), 0);
    EXPECT_FALSE(array->lineForLineNumber(0).string().has_value());
    EXPECT_EQ(array->lineForLineNumber(0).characters(), nullptr);
    array->validateRunIntegrity();
}

TEST(QVLineRunArray, ANewArrayThatStoresStringsHoldsAnEmptyOne) {
    const auto array = QVLineRunArray::initWithOptions(QVLineRunArrayStoresStrings);
    EXPECT_EQ(array->options(), QVLineRunArrayStoresStrings);
    EXPECT_EQ(array->lineForLineNumber(0).string(), std::u16string_view());
    EXPECT_NE(array->lineForLineNumber(0).characters(), nullptr);
}

TEST(QVLineRunArray, CRAndLFAndThePairEndLinesAndNothingElse) {
    EXPECT_EQ(draw(*lines(u"a\n")), "2LF 0");
    EXPECT_EQ(draw(*lines(u"a\rbc\n\r\nd")), "2CR 3LF 2CRLF 1");
    EXPECT_EQ(draw(*lines(u"\n\r\r\n")), "1LF 1CR 2CRLF 0");
    EXPECT_EQ(draw(*lines(u"a\u2028b\u2029c\u0085d\ve\f")), "10");
    EXPECT_EQ(draw(*lines(u"")), "0");
}

TEST(QVLineRunArray, LinesAreTheSameWhereverTheTextsGapIs) {
    const std::u16string text =
        u"ab\r\nc\xd83d\xde00\n\r\r\na long line of many more units than one look takes\r\nx";
    withEveryGap(text, [&](QVTextReader reader) {
        QVLineRunArray array(QVLineRunArrayStoresStrings, 2);
        array.replaceCharactersInRange({0, 0}, reader);
        EXPECT_EQ(draw(array), "4CRLF 4LF 1CR 2CRLF 52CRLF 1");
        EXPECT_EQ(array.lineForLineNumber(1).string(), std::u16string_view(u"c\xd83d\xde00\n"));
        EXPECT_EQ(array.lineForLineNumber(5).string(), std::u16string_view(u"x"));
        array.validateRunIntegrity();
    });
}

TEST(QVLineRunArray, FindsTheLineOfEachPosition) {
    const auto array = lines(u"a\r\nb\n\ncd");
    const NSUInteger expected[] = {0, 0, 0, 1, 1, 2, 3, 3, 3};
    for (NSUInteger i = 0; i <= 8; ++i) {
        NSUInteger number = 99;
        const QVLineRun run = array->lineForCharacterIndex(i, &number);
        EXPECT_EQ(number, expected[i]) << i;
        EXPECT_EQ(run, array->lineForLineNumber(expected[i])) << i;
        EXPECT_EQ(array->lineForCharacterIndex(i).lineNumber(), expected[i]) << i;
    }
}

TEST(QVLineRunArray, TheEndBehindATerminatorIsOnTheEmptyLastLine) {
    const auto array = lines(u"ab\n");
    NSUInteger number = 99;
    EXPECT_EQ(array->lineForCharacterIndex(3, &number).range(), (NSRange{3, 0}));
    EXPECT_EQ(number, 1u);
}

TEST(QVLineRunArray, WhatLiesBeyondThrowsAndChangesNothing) {
    const auto array = lines(u"a\nb");
    EXPECT_EQ(reasonOf([&] { array->lineForLineNumber(2); }), beyond);
    EXPECT_EQ(reasonOf([&] { array->lineForCharacterIndex(4); }), beyond);
    EXPECT_EQ(reasonOf([&] { array->replaceCharactersInRange({2, 2}, u"x"); }), beyond);
    EXPECT_EQ(reasonOf([&] { array->replaceCharactersInRange({4, 0}, u"x"); }), beyond);
    EXPECT_EQ(reasonOf([&] {
                  array->replaceCharactersInRange({1, std::numeric_limits<NSUInteger>::max()}, u"x");
              }),
              beyond);
    EXPECT_EQ(reasonOf([&] { walk(*array, {4, 0}); }), beyond);
    EXPECT_EQ(reasonOf([&] { walk(*array, {2, 2}, NSEnumerationReverse); }), beyond);
    EXPECT_EQ(reasonOf([&] { array->lineRangeForCharacterRange({NSNotFound, 0}); }), beyond);
    EXPECT_EQ(
        reasonOf([&] {
            array->enumerateLinesForLineNumberRange({2, 1}, [](const QVLineRun &, NSUInteger, bool &) {});
        }),
        beyond);
    EXPECT_EQ(draw(*array), "2LF 1");
    EXPECT_EQ(array->length(), 3u);
}

// MARK: - Walking

TEST(QVLineRunArray, WalksLinesByNumber) {
    const auto array = lines(u"a\nbc\nd");
    const auto numbers = [&](NSRange range) {
        std::string result;
        array->enumerateLinesForLineNumberRange(range, [&](const QVLineRun &run, NSUInteger number, bool &) {
            EXPECT_EQ(run.lineNumber(), number);
            result += std::to_string(number);
        });
        return result;
    };
    EXPECT_EQ(numbers({0, 3}), "012");
    EXPECT_EQ(numbers({1, 1}), "1");
    EXPECT_EQ(numbers({1, 100}), "12");
    EXPECT_EQ(numbers({1, std::numeric_limits<NSUInteger>::max()}), "12");
    EXPECT_EQ(numbers({1, 0}), "1"); // the first in any case
    int calls = 0;
    array->enumerateLinesForLineNumberRange(
        {0, 3}, [&](const QVLineRun &, NSUInteger, bool &stop) { stop = ++calls == 2; });
    EXPECT_EQ(calls, 2);
}

TEST(QVLineRunArray, WalksLinesByCharactersBothWays) {
    const auto array = lines(u"a\nbc\nd\nef");
    EXPECT_EQ(walk(*array, {3, 3}), "1{2,3} 2{5,2}");
    EXPECT_EQ(walk(*array, {3, 3}, NSEnumerationReverse), "2{5,2} 1{2,3}");
    EXPECT_EQ(walk(*array, {0, 9}), "0{0,2} 1{2,3} 2{5,2} 3{7,2}");
    EXPECT_EQ(walk(*array, {0, 9}, NSEnumerationReverse), "3{7,2} 2{5,2} 1{2,3} 0{0,2}");
    EXPECT_EQ(walk(*array, {2, 3}), "1{2,3}");
    // No other bit counts.
    EXPECT_EQ(walk(*array, {3, 3}, 1), "1{2,3} 2{5,2}");
    EXPECT_EQ(walk(*array, {3, std::numeric_limits<NSUInteger>::max()}), "1{2,3} 2{5,2} 3{7,2}");
}

TEST(QVLineRunArray, AnEmptyRangeStillHasTheLineOfItsLocation) {
    const auto array = lines(u"a\nbc\n");
    EXPECT_EQ(walk(*array, {3, 0}), "1{2,3}");
    EXPECT_EQ(walk(*array, {3, 0}, NSEnumerationReverse), "1{2,3}");
    EXPECT_EQ(walk(*array, {2, 0}, NSEnumerationReverse), "1{2,3}");
    EXPECT_EQ(walk(*array, {5, 0}), "2{5,0}");
    EXPECT_EQ(walk(*array, {5, 0}, NSEnumerationReverse), "2{5,0}");
}

TEST(QVLineRunArray, AReverseWalkOfARangeThatEndsAtALinesStartBeginsOneLineEarlier) {
    const auto array = lines(u"a\nbc\nd");
    EXPECT_EQ(walk(*array, {0, 5}, NSEnumerationReverse), "1{2,3} 0{0,2}");
    EXPECT_EQ(walk(*array, {1, 1}, NSEnumerationReverse), "0{0,2}");
}

TEST(QVLineRunArray, TheStopFlagEndsAWalkOverCharacters) {
    const auto array = lines(u"a\nbc\nd");
    for (const NSEnumerationOptions options : {NSEnumerationOptions(0), NSEnumerationReverse}) {
        int calls = 0;
        array->enumerateLinesForCharacterRange({0, 6}, options,
                                               [&](const QVLineRun &, NSUInteger, bool &stop) {
                                                   EXPECT_FALSE(stop);
                                                   stop = ++calls == 2;
                                               });
        EXPECT_EQ(calls, 2);
    }
}

TEST(QVLineRunArray, ACallbackThatEditsLeavesTheWalkSound) {
    for (const NSEnumerationOptions options : {NSEnumerationOptions(0), NSEnumerationReverse}) {
        auto array = lines(u"a\nb\nc\nd\ne\nf\n");
        int calls = 0;
        array->enumerateLinesForCharacterRange({0, 12}, options, [&](const QVLineRun &, NSUInteger, bool &) {
            ++calls;
            array->replaceCharactersInRange({0, array->length()}, u"");
        });
        EXPECT_EQ(calls, 1);
    }
}

TEST(QVLineRunArray, AWalkByNumberReachesLinesThatItsCallbackAdds) {
    auto array = lines(u"a\nb");
    int calls = 0;
    array->enumerateLinesForLineNumberRange({0, 4}, [&](const QVLineRun &, NSUInteger, bool &) {
        if (++calls == 1)
            array->replaceCharactersInRange({3, 0}, u"\nc\nd\ne");
    });
    EXPECT_EQ(calls, 4);
}

TEST(QVLineRunArray, ARangesLinesAreUnitedWithIt) {
    const auto array = lines(u"a\nbc\nd");
    EXPECT_EQ(array->lineRangeForCharacterRange({3, 0}), (NSRange{2, 3}));
    EXPECT_EQ(array->lineRangeForCharacterRange({1, 2}), (NSRange{0, 5}));
    EXPECT_EQ(array->lineRangeForCharacterRange({2, 3}), (NSRange{2, 3}));
    EXPECT_EQ(array->lineRangeForCharacterRange({6, 0}), (NSRange{5, 1}));
    EXPECT_EQ(array->lineRangeForCharacterRange({5, 100}), (NSRange{5, 100}));
}

// MARK: - Editing

TEST(QVLineRunArray, EditsChangeTheLinesTheyTouch) {
    const struct {
        const char16_t *text;
        NSRange range;
        const char16_t *string;
        const char *lines;
    } rows[] = {
        {u"", {0, 0}, u"a\n", "2LF 0"},
        {u"", {0, 0}, u"ab", "2"},
        {u"ab\ncd", {1, 0}, u"x", "4LF 2"},      // inside of a line
        {u"ab\ncd", {0, 0}, u"x", "4LF 2"},      // at its start
        {u"ab\ncd", {3, 0}, u"x", "3LF 3"},      // at the last one's start
        {u"ab\ncd", {5, 0}, u"x", "3LF 3"},      // at the end
        {u"ab\ncd", {2, 0}, u"x", "4LF 2"},      // before a terminator
        {u"ab\ncd", {1, 0}, u"\n", "2LF 2LF 2"}, // breaks a line
        {u"ab\ncd", {0, 0}, u"\n", "1LF 3LF 2"}, //
        {u"ab\ncd", {5, 0}, u"\n", "3LF 3LF 0"}, //
        {u"ab\ncd", {1, 0}, u"x\r\ny\rz", "4CRLF 2CR 3LF 2"},
        {u"ab\ncd", {0, 0}, u"x\r\ny\rz", "3CRLF 2CR 4LF 2"},
        {u"ab\ncd", {2, 1}, u"", "4"},                   // joins two lines
        {u"ab\r\ncd", {2, 2}, u"", "4"},                 //
        {u"ab\r\ncd", {1, 4}, u"", "2"},                 //
        {u"ab\ncd\nef", {1, 6}, u"", "2"},               // takes a line out
        {u"ab\ncd\nef", {3, 3}, u"", "3LF 2"},           //
        {u"ab\ncd\nef", {0, 3}, u"", "3LF 2"},           //
        {u"ab\ncd\nef", {0, 8}, u"", "0"},               // all
        {u"a\nb\n", {0, 4}, u"", "0"},                   //
        {u"a\nb\nc\nd\ne\nf\ng", {1, 10}, u"", "2LF 1"}, // across chunks
        {u"a\nb", {1, 1}, u"\r", "2CR 1"},               // another terminator
        {u"a\nb", {1, 1}, u"\r\n", "3CRLF 1"},           //
        {u"a\nb", {0, 0}, u"", "2LF 1"},                 // nothing
        {u"a\rb", {1, 1}, u"", "2"},                     //
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << NSString(row.text).UTF8String() << " at " << row.range.location);
        EXPECT_EQ(edited(row.text, row.range, row.string), row.lines);
    }
}

TEST(QVLineRunArray, AnLFPutBetweenCRAndLFGoesToTheCR) {
    // The CR stands alone while the LF comes in and takes it as its own; the LF that was there is a line.
    EXPECT_EQ(edited(u"\r\n", {1, 0}, u"\n"), "2CRLF 1LF 0");
    EXPECT_EQ(edited(u"ab\r\ncd", {3, 0}, u"\n"), "4CRLF 1LF 2");
}

TEST(QVLineRunArray, OtherTextPutBetweenCRAndLFMakesLinesOfThem) {
    EXPECT_EQ(edited(u"ab\r\ncd", {3, 0}, u"x"), "3CR 2LF 2");
    EXPECT_EQ(edited(u"ab\r\ncd", {3, 0}, u"\r"), "3CR 2CRLF 2");
    EXPECT_EQ(edited(u"ab\r\ncd", {3, 0}, u"x\ny"), "3CR 2LF 2LF 2");
}

TEST(QVLineRunArray, DeletingTheLFOfACRLFLeavesACRLine) {
    EXPECT_EQ(edited(u"ab\r\ncd", {3, 1}, u""), "3CR 2");
}

TEST(QVLineRunArray, DeletingTheCRBeforeAnLFInsideOfALineLeavesAnLFLine) {
    EXPECT_EQ(edited(u"ab\r\ncd", {2, 1}, u""), "3LF 2");
    EXPECT_EQ(edited(u"ab\r\ncd", {1, 2}, u""), "2LF 2");
    EXPECT_EQ(edited(u"ab\r\ncd", {1, 2}, u"x"), "3LF 2");
}

// Meant: from a line's head the LF that survives is no terminator any more, though the line stays one.
TEST(QVLineRunArray, DeletingFromALinesHeadThroughItsCRLeavesTheLFAsACharacter) {
    EXPECT_EQ(edited(u"\r\ncd", {0, 1}, u""), "1 2");
    EXPECT_EQ(edited(u"ab\r\ncd", {0, 3}, u""), "1 2");
    EXPECT_EQ(edited(u"x\nab\r\ncd", {0, 5}, u""), "1 2");
}

TEST(QVLineRunArray, ACRAndALoneLFThatAnEditPutsBehindItAreOneTerminator) {
    EXPECT_EQ(edited(u"ab\n\ncd", {2, 1}, u"\r"), "4CRLF 2");
    EXPECT_EQ(edited(u"ab\rcd\n\nef", {2, 4}, u"\r"), "4CRLF 2");
    // Not where the LF has a line's text before it, and not before the edit's own first line.
    EXPECT_EQ(edited(u"ab\ncd\nef", {2, 1}, u"\r"), "3CR 3LF 2");
    EXPECT_EQ(edited(u"ab\rcd\n\nef", {3, 3}, u""), "3CR 1LF 2");
}

// Meant: the CR takes the LF wherever in its line it comes in.
TEST(QVLineRunArray, AnLFAtTheStartOfALineThatEndsInCRGoesToItsEnd) {
    auto array = lines(u"ab\rcd", QVLineRunArrayStoresStrings);
    array->replaceCharactersInRange({0, 0}, u"\n");
    EXPECT_EQ(draw(*array), "4CRLF 2");
    EXPECT_EQ(strings(*array), "[ab\r\n][cd]");
    array->validateRunIntegrity();
}

TEST(QVLineRunArray, TextBehindSuchAnLFStandsOnePlaceTooFarBack) {
    auto array = lines(u"ab\rcd\nef");
    array->replaceCharactersInRange({0, 0}, u"\nx\ny\n");
    // Three lines start one unit late, for the LF that belongs before them was counted behind.
    EXPECT_EQ(draw(*array), "2LF 2LF 4CRLF 3LF 2");
    EXPECT_EQ(walk(*array, {1, 12}), "0{1,2} 1{3,2} 2{5,4} 3{8,3} 4{11,2}");
    {
        const AssertionRecorder assertions;
        array->validateRunIntegrity();
        EXPECT_THAT(assertions.messages(), ElementsAre(u"Range location is not contiguous"));
    }
    // No line holds the first position. Overlaps are found as the search meets them.
    const AssertionRecorder assertions;
    NSUInteger number = 99;
    EXPECT_FALSE(array->lineForCharacterIndex(0, &number));
    EXPECT_EQ(number, 99u);
    EXPECT_EQ(walk(*array, {0, 1}), "");
    array->replaceCharactersInRange({0, 0}, u"x");
    EXPECT_EQ(array->length(), 13u);
    const NSString message = u"We should never get here, because a value should've been found by now.";
    EXPECT_THAT(assertions.messages(), ElementsAre(message, message, message));
    EXPECT_EQ(array->lineForCharacterIndex(8).lineNumber(), 2u);
}

TEST(QVLineRunArray, SuchATextIsSoundAgainOnceItHasOneLineOnly) {
    auto array = lines(u"q\nab\r");
    array->replaceCharactersInRange({2, 0}, u"\nx");
    EXPECT_EQ(walk(*array, {0, 2}), "0{0,2}");
    EXPECT_EQ(walk(*array, {3, 4}), "1{3,5}");
    // The run that ends one unit behind the text keeps that unit, and a last line that is empty.
    array->replaceCharactersInRange({0, 7}, u"");
    EXPECT_EQ(draw(*array), "1 0");
    array->replaceCharactersInRange({0, 0}, u"z");
    EXPECT_EQ(draw(*array), "1 1");
    array->replaceCharactersInRange({0, 1}, u"");
    EXPECT_EQ(draw(*array), "0");
    array->replaceCharactersInRange({0, 0}, u"a\nb");
    EXPECT_EQ(draw(*array), "2LF 1");
    array->validateRunIntegrity();
}

// Meant: a line that is broken inside keeps what was deleted at the head of the rest's string.
TEST(QVLineRunArray, WhatIsDeletedInsideOfALineStaysInItsString) {
    auto array = lines(u"abcd\nef", QVLineRunArrayStoresStrings);
    array->replaceCharactersInRange({1, 2}, u"X");
    EXPECT_EQ(draw(*array), "4LF 2");
    EXPECT_EQ(strings(*array), "[aXbcd\n][ef]");
    const AssertionRecorder assertions;
    array->validateRunIntegrity();
    // The first line is not asked for its string.
    EXPECT_THAT(assertions.messages(), IsEmpty());
    array->replaceCharactersInRange({5, 0}, u"12");
    array->replaceCharactersInRange({6, 1}, u"");
    array->validateRunIntegrity();
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Run string length does not match range length"));
}

TEST(QVLineRunArray, StoredStringsFollowInsertionsAndCuts) {
    auto array = lines(u"ab\r\ncd\nef", QVLineRunArrayStoresStrings);
    EXPECT_EQ(strings(*array), "[ab\r\n][cd\n][ef]");
    array->replaceCharactersInRange({1, 0}, u"x\ny");
    EXPECT_EQ(strings(*array), "[ax\n][yb\r\n][cd\n][ef]");
    array->replaceCharactersInRange({2, 3}, u"");
    EXPECT_EQ(strings(*array), "[ax\r\n][cd\n][ef]");
    array->replaceCharactersInRange({3, 2}, u"");
    EXPECT_EQ(strings(*array), "[ax\r][d\n][ef]");
    array->replaceCharactersInRange({0, 1}, u"\xd83d\xde00");
    EXPECT_EQ(array->lineForLineNumber(0).string(), std::u16string_view(u"\xd83d\xde00x\r"));
    EXPECT_EQ(std::u16string_view(array->lineForLineNumber(1).characters(), 2), u"d\n");
    array->validateRunIntegrity();
}

// MARK: - Links

TEST(QVLineRunArray, LinesAreLinkedBothWays) {
    const auto array = lines(u"a\nb\nc");
    const QVLineRun first = array->lineForLineNumber(0);
    EXPECT_FALSE(first.previousRun());
    EXPECT_EQ(first.nextRun().lineNumber(), 1u);
    EXPECT_EQ(first.nextRun().nextRun().range(), (NSRange{4, 1}));
    EXPECT_FALSE(first.nextRun().nextRun().nextRun());
    EXPECT_EQ(first.nextRun().previousRun(), first);
    EXPECT_FALSE(QVLineRun().nextRun());
    EXPECT_FALSE(QVLineRun().previousRun());
}

// Meant: the line behind one that was broken goes on to name the first part.
TEST(QVLineRunArray, TheLineBehindABrokenOneNamesItsFirstPart) {
    auto array = lines(u"0\nab\ncd\nef");
    array->replaceCharactersInRange({3, 0}, u"x\ny\n");
    EXPECT_EQ(draw(*array), "2LF 3LF 2LF 2LF 3LF 2");
    EXPECT_EQ(array->lineForLineNumber(4).previousRun().lineNumber(), 1u);
    EXPECT_EQ(array->lineForLineNumber(3).previousRun().lineNumber(), 2u);
    // A reverse walk follows the link and counts down by one all the same.
    EXPECT_EQ(walk(*array, {0, 12}, NSEnumerationReverse), "4{9,3} 3{2,3} 2{0,2}");
    const AssertionRecorder assertions;
    array->validateRunIntegrity();
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Previous run is incorrect"));
}

TEST(QVLineRunArray, AWrongLinkSurvivesEditsElsewhereAndGoesWithOneThatReachesIt) {
    auto array = lines(u"0\nab\ncd\nef\ngh");
    array->replaceCharactersInRange({3, 0}, u"\n");
    EXPECT_EQ(array->lineForLineNumber(3).previousRun().lineNumber(), 1u);
    array->replaceCharactersInRange({0, 0}, u"new\nlines\n");
    EXPECT_EQ(array->lineForLineNumber(5).previousRun().lineNumber(), 3u);
    array->replaceCharactersInRange({array->length(), 0}, u"\n");
    EXPECT_EQ(array->lineForLineNumber(5).previousRun().lineNumber(), 3u);
    // Typing in the line before links both.
    array->replaceCharactersInRange({array->lineForLineNumber(4).range().location + 1, 0}, u"x");
    EXPECT_EQ(array->lineForLineNumber(5).previousRun().lineNumber(), 4u);
    array->validateRunIntegrity();
}

TEST(QVLineRunArray, ALinkToALineThatIsGoneAnswersTheLineBefore) {
    auto array = lines(u"0\nab\ncd\nef");
    array->replaceCharactersInRange({3, 0}, u"\n");
    EXPECT_EQ(array->lineForLineNumber(3).previousRun().lineNumber(), 1u);
    // The first part joins the line before it.
    array->replaceCharactersInRange({1, 1}, u"");
    EXPECT_EQ(draw(*array), "3LF 2LF 3LF 2");
    EXPECT_EQ(array->lineForLineNumber(2).previousRun().lineNumber(), 1u);
    array->validateRunIntegrity();
}

TEST(QVLineRunArray, AHandleOlderThanAnEditLooksAgain) {
    auto array = lines(u"a\nb\nc\nd");
    const QVLineRun run = array->lineForLineNumber(2);
    array->replaceCharactersInRange({0, 2}, u"");
    EXPECT_FALSE(run.nextRun());
    EXPECT_EQ(run.previousRun().range(), (NSRange{2, 2}));
    array->replaceCharactersInRange({0, 5}, u"");
    EXPECT_FALSE(run.nextRun());
    EXPECT_FALSE(run.previousRun());
}

// MARK: - Runs

TEST(QVLineRun, DirectOperationsTolerateNull) {
    EXPECT_EQ(QVLineRun::directRange(nullptr), (NSRange{0, 0}));
    EXPECT_EQ(QVLineRun::directFlags(nullptr), 0);
    const auto array = lines(u"a\r\nb");
    const QVLineRun run = array->lineForLineNumber(0);
    EXPECT_EQ(QVLineRun::directRange(&run), (NSRange{0, 3}));
    EXPECT_EQ(QVLineRun::directFlags(&run), QVLineRunEndsInCR | QVLineRunEndsInLF);
}

TEST(QVLineRun, DescribesItsTerminatorAndRange) {
    const auto array = lines(u"a\r\nb\rc\nd");
    const char *const words[] = {" CRLF range={0, 3}>", " CR range={3, 2}>", " LF range={5, 2}>",
                                 " none range={7, 1}>"};
    for (NSUInteger i = 0; i < 4; ++i) {
        const std::string text = array->lineForLineNumber(i).description().UTF8String();
        EXPECT_THAT(text, testing::StartsWith("<QVLineRun: 0x"));
        EXPECT_THAT(text, testing::EndsWith(words[i]));
    }
}

TEST(QVLineRunString, IsEditedInPlace) {
    QVLineRunString string = QVLineRunString::initWithString(u"abcd");
    string.replaceCharactersInRange({1, 2}, NSString(u"X\xd83d\xde00"));
    EXPECT_EQ(string.string(), u"aX\xd83d\xde00"
                               u"d");
    EXPECT_EQ(std::u16string_view(string.characters(), 5), string.string());
}

TEST(QVLineRunString, ANullReplacementDeletes) {
    QVLineRunString string = QVLineRunString::initWithString(u"abcd");
    string.replaceCharactersInRange({1, 2}, NSString());
    EXPECT_EQ(string.string(), u"ad");
}

TEST(QVLineRunString, GrowsFarBeyondItsFirstBuffer) {
    QVLineRunString string = QVLineRunString::initWithString(u"");
    std::u16string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::u16string piece(1, static_cast<char16_t>('a' + i % 26));
        string.replaceCharactersInRange({expected.size() / 2, 0}, QVTextReader(piece));
        expected.insert(expected.size() / 2, piece);
    }
    EXPECT_EQ(std::u16string_view(string.characters(), 3000), expected);
}

TEST(QVLineRunString, ANullStringStoresNothing) {
    QVLineRunString string = QVLineRunString::initWithString(NSString());
    EXPECT_FALSE(string.hasString());
    EXPECT_EQ(string.characters(), nullptr);
    string.replaceCharactersInRange({0, 0}, NSString(u"x"));
    EXPECT_FALSE(string.hasString());
    EXPECT_TRUE(QVLineRunString::initWithString(u"").hasString());
}

// MARK: - Checking

namespace {

using Record = QVLineRunArray::RunRecord;
using Records = std::vector<Record>;

/// What validation says about three lines that a test has broken.
template <typename Break>
std::vector<NSString> complaints(Break breakThem, bool storesStrings = false, NSUInteger length = 10) {
    Records runs(3);
    const NSRange ranges[] = {{0, 3}, {3, 5}, {8, 2}};
    for (std::size_t i = 0; i < 3; ++i)
        runs[i] = {ranges[i], i > 0 ? &runs[i - 1] : nullptr, i < 2 ? &runs[i + 1] : nullptr, true,
                   ranges[i].length};
    breakThem(runs);
    const AssertionRecorder assertions;
    QVLineRunArray::validateRuns(runs, storesStrings, length);
    return assertions.messages();
}

} // namespace

TEST(QVLineRunArray, ValidationIsSilentAboutSoundLines) {
    EXPECT_THAT(complaints([](Records &) {}, true), IsEmpty());
    EXPECT_THAT(complaints([](Records &runs) { runs[2].range = {8, 0}; }, false, 8), IsEmpty());
    EXPECT_THAT(complaints([](Records &runs) { runs.resize(1), runs[0] = {}; }, false, 0), IsEmpty());
}

TEST(QVLineRunArray, ValidationNamesEachBrokenInvariant) {
    EXPECT_THAT(complaints([](Records &runs) {
                    runs[0].range = {3, 0};
                }),
                ElementsAre(u"Range length is empty"));
    EXPECT_THAT(complaints([](Records &runs) { runs[0].previousRun = &runs[1]; }),
                ElementsAre(u"Previous run is incorrect"));
    EXPECT_THAT(complaints([](Records &runs) {
                    runs[1].range = {4, 4};
                }),
                ElementsAre(u"Range location is not contiguous"));
    EXPECT_THAT(complaints([](Records &runs) {
                    runs[1].range = {3, 0}, runs[2].range = {3, 7};
                }),
                ElementsAre(u"Range length is empty"));
    EXPECT_THAT(complaints([](Records &runs) { runs[0].nextRun = &runs[2]; }),
                ElementsAre(u"Next run is incorrect"));
    EXPECT_THAT(complaints([](Records &runs) { runs[2].previousRun = &runs[0]; }),
                ElementsAre(u"Previous run is incorrect"));
    EXPECT_THAT(complaints([](Records &runs) { runs[1].nextRun = nullptr; }),
                ElementsAre(u"Run is not the last object", u"Next run is incorrect"));
    EXPECT_THAT(complaints([](Records &runs) { runs[1].hasString = false; }, true),
                ElementsAre(u"Run does not have a string set"));
    EXPECT_THAT(complaints([](Records &runs) { runs[1].stringLength = 4; }, true),
                ElementsAre(u"Run string length does not match range length"));
    EXPECT_THAT(complaints([](Records &runs) { runs[2].nextRun = &runs[0]; }),
                ElementsAre(u"Next run is incorrect"));
    EXPECT_THAT(complaints([](Records &) {}, false, 11), ElementsAre(u"Ranges do not match array length"));
}

TEST(QVLineRunArray, BrokenInvariantsAreAssertedInItsName) {
    std::vector<NSString> sources;
    auto before = NSAssertionHandler::setHandler(
        [&](const NSString &source, const NSString &) { sources.push_back(source); });
    QVLineRunArray::validateRuns({}, false, 1);
    NSAssertionHandler::setHandler(std::move(before));
    EXPECT_THAT(sources, ElementsAre(u"QVLineRunArray"));
}
