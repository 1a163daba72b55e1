#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/TextGaps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorvane;
using test::withEveryGap;
using testing::ElementsAre;

TEST(QVIndentationLevel, IsTabsAndWholeTabWidthsOfSpaces) {
    withEveryGap(u"\t  \t   x", [](QVTextReader text) {
        NSUInteger tabs = 9;
        NSUInteger spaces = 9;
        EXPECT_EQ(qv_indentationLevelInRange(text, {0, 8}, 2, &tabs, &spaces), 4u);
        EXPECT_EQ(tabs, 2u);
        EXPECT_EQ(spaces, 5u);
        EXPECT_EQ(qv_indentationLevelInRange(text, {1, 2}, 2, &tabs, &spaces), 1u);
        EXPECT_EQ(tabs, 0u);
        EXPECT_EQ(spaces, 2u);
        EXPECT_EQ(qv_indentationLevelInRange(text, {7, 1}, 2, &tabs, &spaces), 0u);
        EXPECT_EQ(tabs + spaces, 0u);
        EXPECT_EQ(qv_indentationLevelInRange(text, {0, 0}, 2), 0u);
        EXPECT_EQ(qv_indentationLevelWithTabWidth(text, 5), 3u);
    });
    EXPECT_EQ(qv_indentationLevelWithTabWidth(u"    ", 4), 1u);
    EXPECT_EQ(qv_indentationLevelWithTabWidth(u"", 4), 0u);
    // Other blanks don't indent.
    EXPECT_EQ(qv_indentationLevelWithTabWidth(u"\u00A0\t", 4), 0u);
}

TEST(QVIndentationLevel, ATabWidthOfZeroCountsFourSpacesALevel) {
    EXPECT_EQ(qv_indentationLevelWithTabWidth(u"\t         x", 0), 3u);
    EXPECT_EQ(qv_indentationLevelInRange(u"   ", {0, 3}, 0), 0u);
}

TEST(QVIndentationLevel, ARangeOutsideOfTheTextThrowsWhenItGetsThere) {
    EXPECT_THROW(qv_indentationLevelInRange(u"  ", {0, 3}, 4), NSException);
    EXPECT_THROW(qv_indentationLevelInRange(u"  ", {NSNotFound, 1}, 4), NSException);
    EXPECT_EQ(qv_indentationLevelInRange(u"\tx", {0, NSNotFound}, 4), 1u);
}

TEST(QVIndentationString, OfALevelIsTabsOrSpaces) {
    EXPECT_EQ(qv_stringWithIndentationLevel(3, QVIndentationStyleTabs, 4), u"\t\t\t");
    EXPECT_EQ(qv_stringWithIndentationLevel(2, QVIndentationStyleSpaces, 3), u"      ");
    EXPECT_EQ(qv_stringWithIndentationLevel(0, QVIndentationStyleSpaces, 3), u"");
    EXPECT_EQ(qv_stringWithIndentationLevel(2, QVIndentationStyleSpaces, 0), u"");
    EXPECT_EQ(qv_stringWithIndentationLevel(3, QVIndentationStyle(2), 4), u"");
    EXPECT_EQ(std::uint64_t(QVIndentationStyleSpaces), 0u);
    EXPECT_EQ(std::uint64_t(QVIndentationStyleTabs), 1u);
}

TEST(QVIndentationString, OfAWidthEndsWithTheRemainderInSpacesWhateverTheStyle) {
    EXPECT_EQ(qv_stringWithIndentationStyle(QVIndentationStyleTabs, 10, 4), u"\t\t  ");
    EXPECT_EQ(qv_stringWithIndentationStyle(QVIndentationStyleSpaces, 10, 4), u"          ");
    EXPECT_EQ(qv_stringWithIndentationStyle(QVIndentationStyleTabs, 3, 4), u"   ");
    EXPECT_EQ(qv_stringWithIndentationStyle(QVIndentationStyleTabs, 0, 4), u"");
    EXPECT_EQ(qv_stringWithIndentationStyle(QVIndentationStyle(2), 10, 4), u"  ");
}

TEST(QVIndentationString, OfAWidthAssertsATabWidth) {
    const test::AssertionRecorder assertions;
    EXPECT_EQ(qv_stringWithIndentationStyle(QVIndentationStyleTabs, 3, 0), u"   ");
    EXPECT_THAT(assertions.messages(),
                ElementsAre(NSString(u"Invalid parameter not satisfying: tabWidth > 0")));
}

namespace {

struct Dominant {
    bool found;
    std::uint64_t style;
    NSUInteger tabWidth;
    bool homogeneous;
    friend bool operator==(const Dominant &, const Dominant &) = default;
    friend void PrintTo(const Dominant &dominant, std::ostream *stream) {
        *stream << dominant.found << ' ' << dominant.style << ' ' << dominant.tabWidth << ' '
                << dominant.homogeneous;
    }
};

/// Values that no text gives stand for what was left alone.
Dominant dominantOf(QVTextReader text) {
    auto style = QVIndentationStyle(77);
    NSUInteger tabWidth = 77;
    bool homogeneous = false;
    const bool found = qv_getDominantIndentationStyle(text, &style, &tabWidth, &homogeneous);
    EXPECT_EQ(qv_getDominantIndentationStyle(text), found);
    return {found, style, tabWidth, homogeneous};
}

} // namespace

TEST(QVDominantIndentation, CountsLinesAndTakesTheSmallestWidthOfSpaces) {
    struct {
        const char16_t *text;
        Dominant expected;
    } const rows[] = {
        {u"", {false, 77, 77, false}},
        {u"a\nb\n", {false, 77, 77, false}},
        {u"a\n\tb\n", {true, 1, 77, true}},
        {u"a\n  b\n    c\n", {true, 0, 2, true}},
        // The smallest width, not the most frequent one.
        {u"    a\n    b\n    c\n   d\n", {true, 0, 3, true}},
        // A tie goes to tabs; then the width stays, as it does whenever tabs win.
        {u"\ta\n  b\n", {true, 1, 77, false}},
        {u"\ta\n\tb\n  c\n", {true, 1, 77, false}},
        {u"\ta\n  b\n  c\n", {true, 0, 2, false}},
        // A single space makes a line of spaces, but no width.
        {u" a\n b", {true, 0, 77, true}},
        {u" a\n     b", {true, 0, 5, true}},
        // A line without content makes a line of spaces, but no width.
        {u"  \n  \n    x", {true, 0, 4, true}},
        {u"  \t\u00A0\n    x", {true, 0, 4, true}},
        // Blanks behind the spaces don't count into the width.
        {u"  \tx", {true, 0, 2, true}},
        // The line begins with a tab, whatever follows.
        {u"\t  x", {true, 1, 77, true}},
        // The platform's line ends separate lines here.
        {u"a\u2028  b\r\n\v\f   c", {true, 0, 2, true}},
        // Blank lines are passed over as a whole.
        {u"x\n\n\n\n  b", {true, 0, 2, true}},
    };
    for (const auto &row : rows)
        withEveryGap(row.text, [&](QVTextReader text) {
            EXPECT_EQ(dominantOf(text), row.expected) << NSString(row.text).UTF8String();
        });
}

TEST(QVRangeOfIndentation, IsTheRunOfSpacesAndTabsWithItsWidth) {
    withEveryGap(u"x \t  y", [](QVTextReader text) {
        NSUInteger width = 9;
        // A tab counts a whole tab width, whatever column it stands in.
        EXPECT_EQ(qv_rangeOfIndentationInRange(text, {1, 5}, 4, &width), (NSRange{1, 4}));
        EXPECT_EQ(width, 7u);
        EXPECT_EQ(qv_rangeOfIndentationInRange(text, {1, 2}, 4, &width), (NSRange{1, 2}));
        EXPECT_EQ(width, 5u);
        EXPECT_EQ(qv_rangeOfIndentationInRange(text, {0, 6}, 4, &width), (NSRange{0, 0}));
        EXPECT_EQ(width, 0u);
        EXPECT_EQ(qv_rangeOfIndentationInRange(text, {1, 5}, 8), (NSRange{1, 4}));
    });
}

TEST(QVRangeOfIndentation, ATabWidthOfZeroGivesAnEmptyRangeAndNoWidth) {
    NSUInteger width = 9;
    EXPECT_EQ(qv_rangeOfIndentationInRange(u"  x", {1, 2}, 0, &width), (NSRange{1, 0}));
    EXPECT_EQ(width, 9u);
}

TEST(QVRangeOfIndentation, AnEmptyRangeIsZeroWide) {
    NSUInteger width = 9;
    EXPECT_EQ(qv_rangeOfIndentationInRange(u"  x", {1, 0}, 4, &width), (NSRange{1, 0}));
    EXPECT_EQ(width, 0u);
    EXPECT_EQ(qv_rangeOfIndentationInRange(u"  x", {3, 0}, 4, &width), (NSRange{3, 0}));
}

TEST(QVRangeOfIndentation, ARangeBeyondTheTextIsAsserted) {
    const test::AssertionRecorder assertions;
    NSUInteger width = 9;
    EXPECT_EQ(qv_rangeOfIndentationInRange(u"  x", {0, 4}, 4, &width), (NSRange{0, 2}));
    EXPECT_EQ(width, 2u);
    EXPECT_THAT(assertions.messages(),
                ElementsAre(NSString(u"Invalid parameter not satisfying: NSMaxRange(range) <= self.length")));
    // Work that goes on may not read behind the text.
    EXPECT_THROW(qv_rangeOfIndentationInRange(u"  ", {0, 3}, 4), NSException);
    EXPECT_THROW(qv_rangeOfIndentationInRange(u"  ", {1, ~NSUInteger(0)}, 4), NSException);
    EXPECT_EQ(assertions.messages().size(), 3u);
}

TEST(QVRangeOfIndentationForSpaces, EndsWhereTheWidthIsReached) {
    withEveryGap(u"  \t  x", [](QVTextReader text) {
        NSUInteger width = 9;
        EXPECT_EQ(qv_rangeOfIndentationForNumberOfSpaces(text, 1, {0, 6}, 4, &width), (NSRange{0, 1}));
        EXPECT_EQ(width, 1u);
        // The tab carries the count beyond what was wanted.
        EXPECT_EQ(qv_rangeOfIndentationForNumberOfSpaces(text, 3, {0, 6}, 4, &width), (NSRange{0, 3}));
        EXPECT_EQ(width, 6u);
        EXPECT_EQ(qv_rangeOfIndentationForNumberOfSpaces(text, 7, {0, 6}, 4, &width), (NSRange{0, 4}));
        EXPECT_EQ(width, 7u);
        // Where there is less, all of it.
        EXPECT_EQ(qv_rangeOfIndentationForNumberOfSpaces(text, 99, {0, 6}, 4, &width), (NSRange{0, 5}));
        EXPECT_EQ(width, 8u);
        EXPECT_EQ(qv_rangeOfIndentationForNumberOfSpaces(text, 99, {1, 1}, 4, &width), (NSRange{1, 1}));
        EXPECT_EQ(width, 1u);
        EXPECT_EQ(qv_rangeOfIndentationForNumberOfSpaces(text, 2, {5, 1}, 4, &width), (NSRange{5, 0}));
        EXPECT_EQ(width, 0u);
        EXPECT_EQ(qv_rangeOfIndentationForNumberOfSpaces(text, 2, {0, 6}, 4), (NSRange{0, 2}));
    });
}

TEST(QVRangeOfIndentationForSpaces, OfNoSpacesIsEmptyAndLeavesTheWidthAlone) {
    NSUInteger width = 9;
    EXPECT_EQ(qv_rangeOfIndentationForNumberOfSpaces(u"  x", 0, {1, 2}, 4, &width), (NSRange{1, 0}));
    EXPECT_EQ(width, 9u);
}

TEST(QVCommonIndentation, IsTheSmallestOfTheLinesWithContent) {
    const auto common = [](QVTextReader text, NSRange range, NSUInteger additional = 0) {
        return qv_greatestCommonIndentationNumberOfSpacesForAllLinesInRange(text, range, additional, 4);
    };
    withEveryGap(u"    a\r\n\r\n\tb\n  c", [&](QVTextReader text) {
        const NSUInteger length = text.length();
        EXPECT_EQ(common(text, {0, length}), 2u);
        // Up to the line of the tab.
        EXPECT_EQ(common(text, {0, 12}), 4u);
        EXPECT_EQ(common(text, {0, 1}), 4u);
        // The extra width counts for the first line of the text.
        EXPECT_EQ(common(text, {0, 3}, 3), 7u);
        EXPECT_EQ(common(text, {0, 12}, 3), 4u);
        // Meant: it is left out where the range begins later, be it in the first line.
        EXPECT_EQ(common(text, {1, 3}, 3), 4u);
        EXPECT_EQ(common(text, {9, 2}, 3), 4u);
        EXPECT_EQ(common(text, {length - 1, 1}, 3), 2u);
        // Beyond the text there is nothing more.
        EXPECT_EQ(common(text, {0, NSNotFound}), 2u);
    });
    // A line of blanks has content.
    EXPECT_EQ(common(u"    a\n \n    b", {0, 13}), 1u);
    // Zero ends the scan and wins.
    EXPECT_EQ(common(u"  a\nb\n  c", {0, 9}), 0u);
    // Lines are the platform's.
    EXPECT_EQ(common(u"    a\u2028  b", {0, 9}), 2u);
}

TEST(QVCommonIndentation, WithoutALineOfContentIsZero) {
    EXPECT_EQ(qv_greatestCommonIndentationNumberOfSpacesForAllLinesInRange(u"\n\n\n", {0, 3}, 5, 4), 0u);
    EXPECT_EQ(qv_greatestCommonIndentationNumberOfSpacesForAllLinesInRange(u"", {0, 0}, 5, 4), 0u);
    EXPECT_THROW(qv_greatestCommonIndentationNumberOfSpacesForAllLinesInRange(u"ab", {3, 1}, 0, 4),
                 NSException);
}
