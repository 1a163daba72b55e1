// Entering and finishing regions, and how the text is cut into lines.

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Support/SyntaxText.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

const std::string word = matchText("word", "\\w+");
const std::string block = regionText("block", "\\{", "\\}", subscopesText(word));

} // namespace

// Finishing

TEST(QVParse, AnEndMarkerGivesItsPlaceToTheRegionAndLeavesTheTree) {
    EXPECT_EQ(treeOfText(block, u"a{b}c"), "Unknown unknown [0,1]\n"
                                           "StartEnd block [1,1] end[3,1]\n"
                                           "  Match word [2,1]\n"
                                           "Unknown unknown [4,1]\n");
}

TEST(QVParse, ARegionRunsOverLines) {
    EXPECT_EQ(treeOfText(block, u"{a\nb}c"), "StartEnd block [0,1] end[4,1]\n"
                                             "  Match word [1,1]\n"
                                             "  Newline newline [2,1]\n"
                                             "  Match word [3,1]\n"
                                             "Unknown unknown [5,1]\n");
}

TEST(QVParse, ARegionThatNothingEndsRunsToTheTextsEndAndEndsThereEmpty) {
    EXPECT_EQ(treeOfText(block, u"x{ab"), "Unknown unknown [0,1]\n"
                                          "StartEnd block [1,1] end[4,0]\n"
                                          "  Match word [2,2]\n");
}

TEST(QVParse, ARegionThatStartsAtTheTextsEndEndsThereEmpty) {
    EXPECT_EQ(treeOfText(block, u"{"), "StartEnd block [0,1] end[1,0]\n");
}

TEST(QVParse, TheEndsCapturesGoToTheRegion) {
    const std::string region =
        element("scope", named("region"),
                element("starts-with", "", expressionText("\\[(\\w)") + captureText(1, "first")) +
                    element("ends-with", "", expressionText("(\\w)\\]") + captureText(1, "last")));
    EXPECT_EQ(treeOfText(region, u"[axyb]"), "StartEnd region [0,2] end[4,2]\n"
                                             "  @1 first [1,1]\n"
                                             "  Unknown unknown [2,2]\n"
                                             "  @end 1 last [4,1]\n");

    const auto parse = parseOfText(syntaxWithElements(scopesText(region)), u"[axyb]");
    parse->performReadingBlockAndWait([&] {
        const QVScopeMatch *const match = parse->rootMatch()->firstChild();
        ASSERT_NE(match, nullptr);
        ASSERT_NE(match->endCaptureMatches(), nullptr);
        EXPECT_EQ(match->endCaptureMatches()->front()->parentMatch(), match);
    });
}

TEST(QVParse, ARegionThatNothingEndsHasNoEndCaptures) {
    const std::string region =
        element("scope", named("region"),
                element("starts-with", "", expressionText("\\[")) +
                    element("ends-with", "", expressionText("(\\w)\\]") + captureText(1, "last")));
    EXPECT_EQ(treeOfText(region, u"[ab"), "StartEnd region [0,1] end[3,0]\n"
                                          "  Unknown unknown [1,2]\n");
}

TEST(QVParse, WhatFollowsARegionsEndIsMatchedAfresh) {
    // From the line's start "bcb" is found at 1, and next from 4, where there is none; from the region's end
    // it is found at 3.
    EXPECT_EQ(treeOfText(regionText("region", "a", "b") + matchText("late", "bcb"), u"abcbcb"),
              "StartEnd region [0,1] end[1,1]\n"
              "Unknown unknown [2,1]\n"
              "Match late [3,3]\n");
}

TEST(QVParse, ARegionsEndMayBeFollowedByItsNextStart) {
    EXPECT_EQ(treeOfText(block, u"{}{}"), "StartEnd block [0,1] end[1,1]\n"
                                          "StartEnd block [2,1] end[3,1]\n");
}

TEST(QVParse, NestedRegionsEndFromTheInside) {
    const auto syntax =
        syntaxWithElements(collectionsText(collectionText(
                               "all", regionText("block", "\\{", "\\}", subscopesText(includeText("all"))))) +
                           scopesText(includeText("all")));
    EXPECT_EQ(treeOfText(syntax, u"{{}{"), "StartEnd block [0,1] end[4,0]\n"
                                           "  StartEnd block [1,1] end[2,1]\n"
                                           "  StartEnd block [3,1] end[4,0]\n");
}

// Regions that come to nothing

TEST(QVParse, AnEmptyRegionIsRemovedAndWhatElseWasFoundOnTheLineStands) {
    // The empty region held its place against "letter", so "b" comes to unknown text.
    EXPECT_EQ(treeOfText(regionText("empty", "(?=b)", "(?=b)") + matchText("letter", "[bc]"), u"abc"),
              "Unknown unknown [0,1]\n"
              "Unknown unknown [1,1]\n"
              "Match letter [2,1]\n");
}

TEST(QVParse, AnEmptyRegionAtALinesEndIsRemoved) {
    EXPECT_EQ(treeOfText(regionText("empty", "$", "$"), u"ab"), "Unknown unknown [0,2]\n");
}

TEST(QVParse, ARegionWithAnEmptyStartMayHoldText) {
    EXPECT_EQ(treeOfText(regionText("region", "(?=b)", "c"), u"abcd"), "Unknown unknown [0,1]\n"
                                                                       "StartEnd region [1,0] end[2,1]\n"
                                                                       "  Unknown unknown [1,1]\n"
                                                                       "Unknown unknown [3,1]\n");
}

TEST(QVParse, SeveralEmptyRegionsOnALineAreAllRemoved) {
    EXPECT_EQ(treeOfText(regionText("empty", "(?=b)", "(?=)") + matchText("letter", "c"), u"bbcb"),
              "Unknown unknown [0,1]\n"
              "Unknown unknown [1,1]\n"
              "Match letter [2,1]\n"
              "Unknown unknown [3,1]\n");
}

// Nesting

namespace {

/// The deepest of the regions that begin one inside the other, and how many there are.
std::pair<const QVScopeMatch *, int> deepestFirstRegion(const QVParse &parse) {
    std::pair<const QVScopeMatch *, int> result{parse.rootMatch(), 0};
    while (const QVScopeMatch *const child = result.first->firstChild()) {
        if (child->scope()->type() != QVScopeTypeStartEnd)
            break;
        result = {child, result.second + 1};
    }
    return result;
}

std::shared_ptr<QVSyntax> syntaxOfNestedBlocks(std::string_view more) {
    return syntaxWithElements(
        collectionsText(
            collectionText("all", regionText("block", "\\(", "\\)", subscopesText(includeText("all"))) +
                                      std::string(more))) +
        scopesText(includeText("all")));
}

} // namespace

TEST(QVParse, TheHundredthOpenRegionIsEntered) {
    // The root is one of the hundred.
    const auto parse = parseOfText(syntaxOfNestedBlocks(word), std::u16string(99, u'(') + u"a");
    parse->performReadingBlockAndWait([&] {
        const auto [region, count] = deepestFirstRegion(*parse);
        EXPECT_EQ(count, 99);
        EXPECT_EQ(region->range(), (NSRange{98, 1}));
        EXPECT_EQ(region->endRange(), (NSRange{100, 0}));
        ASSERT_EQ(region->submatches().count(), 1u);
        EXPECT_EQ(region->firstChild()->range(), (NSRange{99, 1}));
    });
}

TEST(QVParse, OneRegionPastTheHundredIsClosedAtOnce) {
    const auto parse = parseOfText(syntaxOfNestedBlocks(word), std::u16string(100, u'(') + u"a)");
    parse->performReadingBlockAndWait([&] {
        const auto [refused, count] = deepestFirstRegion(*parse);
        EXPECT_EQ(count, 100);
        EXPECT_EQ(refused->range(), (NSRange{99, 1}));
        EXPECT_EQ(refused->endRange(), (NSRange{100, 0}));
        EXPECT_TRUE(refused->submatches().isEmpty());
        // What it would have held belongs to the region around it, the end included.
        const QVScopeMatch *const around = refused->parentMatch();
        EXPECT_EQ(around->submatches().count(), 2u);
        EXPECT_EQ(around->lastChild()->range(), (NSRange{100, 1}));
        EXPECT_EQ(around->endRange(), (NSRange{101, 1}));
    });
}

TEST(QVParse, DeepNestingGivesTheSameTreeBothWays) {
    EXPECT_FALSE(
        treeOfText(syntaxOfNestedBlocks(word), std::u16string(300, u'(') + u"a" + std::u16string(300, u')'))
            .empty());
}

TEST(QVParse, TheCutoffsOfARegionThatWasRefusedStayInForceInTheRegionAroundIt) {
    // The refused region of the embedded language came to nothing and is gone from the tree; its cut-off goes
    // on ending the hundredth region, at the line after. This is meant.
    const RegisteredSyntax inner(syntaxFromXML(syntaxText("inner", scopesText(word))));
    const auto syntax = syntaxOfNestedBlocks(
        regionText("embedded", "(?=!)", "(?=!)", element("subsyntax", named("inner"), cutoffText(";"))));
    const std::u16string text = std::u16string(99, u'(') + u"!\n;";
    const auto parse = parseOfText(syntax, text);
    parse->performReadingBlockAndWait([&] {
        const auto [region, count] = deepestFirstRegion(*parse);
        EXPECT_EQ(count, 99);
        EXPECT_EQ(region->endRange(), (NSRange{101, 1}));
    });
    EXPECT_FALSE(treeOfText(syntax, text).empty());
}

// Lines

TEST(QVParse, AnEmptyTextRunsNoPattern) {
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    const auto parse = QVParse::initWithSyntax(syntaxWithElements(scopesText(matchText("empty", "(?=)"))), 0,
                                               QVParsePrivateQueueConcurrencyType);
    parse->setDelegate(recorder);
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, u"", nullptr);
        EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
    });
    EXPECT_TRUE(recorder->diagnostics.empty());
}

TEST(QVParse, ALineThatOnlyHoldsItsEndingIsANewlineMatch) {
    EXPECT_EQ(treeOfText(word, u"\n"), "Newline newline [0,1]\n");
    EXPECT_EQ(treeOfText(word, u"\r\n\n\r"), "Newline newline [0,2]\n"
                                             "Newline newline [2,1]\n"
                                             "Newline newline [3,1]\n");
}

TEST(QVParse, CRAndLFAndBothTogetherEndALine) {
    EXPECT_EQ(treeOfText(word, u"a\rb\r\nc\nd"), "Match word [0,1]\n"
                                                 "Newline newline [1,1]\n"
                                                 "Match word [2,1]\n"
                                                 "Newline newline [3,2]\n"
                                                 "Match word [5,1]\n"
                                                 "Newline newline [6,1]\n"
                                                 "Match word [7,1]\n");
}

TEST(QVParse, NothingElseEndsALine) {
    EXPECT_EQ(treeOfText(word, u"a\u2028b\u0085c\u000Bd"), "Match word [0,1]\n"
                                                           "Unknown unknown [1,1]\n"
                                                           "Match word [2,1]\n"
                                                           "Unknown unknown [3,1]\n"
                                                           "Match word [4,1]\n"
                                                           "Unknown unknown [5,1]\n"
                                                           "Match word [6,1]\n");
}

TEST(QVParse, NoPatternReachesOverALinesEnd) {
    EXPECT_EQ(treeOfText(matchText("pair", "a\\s+b"), u"a b\na\nb"), "Match pair [0,3]\n"
                                                                     "Newline newline [3,1]\n"
                                                                     "Unknown unknown [4,1]\n"
                                                                     "Newline newline [5,1]\n"
                                                                     "Unknown unknown [6,1]\n");
}

TEST(QVParse, PatternsSeeTheTextAroundTheirLine) {
    EXPECT_EQ(treeOfText(matchText("before", "a(?=\\nb)") + matchText("behind", "(?<=a\\n)b"), u"a\nb"),
              "Match before [0,1]\n"
              "Newline newline [1,1]\n"
              "Match behind [2,1]\n");
}

// Lines that are too long

TEST(QVParse, ALineOfTheMaximumLengthIsParsed) {
    const auto syntax = syntaxWithElements(scopesText(matchText("letters", "a+")));
    EXPECT_EQ(treeOfText(syntax, std::u16string(10000, u'a'), 10000), "Match letters [0,10000]\n");
    EXPECT_EQ(treeOfText(syntax, std::u16string(10000, u'a') + u"\r\na", 10000), "Match letters [0,10000]\n"
                                                                                 "Newline newline [10000,2]\n"
                                                                                 "Match letters [10002,1]\n");
}

TEST(QVParse, ALineOfOneUnitMoreIsOneUnknownMatch) {
    const auto syntax = syntaxWithElements(scopesText(matchText("letters", "a+")));
    EXPECT_EQ(treeOfText(syntax, std::u16string(10001, u'a'), 10000), "Unknown unknown [0,10001]\n");
    // Blanks in it are not split off, and the next line is parsed.
    EXPECT_EQ(treeOfText(syntax, std::u16string(10000, u'a') + u" \naa", 10000), "Unknown unknown [0,10001]\n"
                                                                                 "Newline newline [10001,1]\n"
                                                                                 "Match letters [10002,2]\n");
}

TEST(QVParse, AMaximumOfZeroIsNone) {
    const auto syntax = syntaxWithElements(scopesText(matchText("letters", "a+")));
    EXPECT_EQ(treeOfText(syntax, std::u16string(100000, u'a'), 0), "Match letters [0,100000]\n");
}

TEST(QVParse, ARegionDoesNotEndOnALineThatIsTooLong) {
    const auto syntax = syntaxWithElements(scopesText(block));
    EXPECT_EQ(treeOfText(syntax, u"{\nab}cd\n}", 4), "StartEnd block [0,1] end[8,1]\n"
                                                     "  Newline newline [1,1]\n"
                                                     "  Unknown unknown [2,5]\n"
                                                     "  Newline newline [7,1]\n");
}

TEST(QVParse, NoPatternRunsOnALineThatIsTooLong) {
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    const auto parse = QVParse::initWithSyntax(syntaxWithElements(scopesText(matchText("empty", "(?=a)"))), 0,
                                               QVParsePrivateQueueConcurrencyType);
    parse->setDelegate(recorder);
    parse->setMaximumLineLength(3);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, u"aaaa", nullptr); });
    EXPECT_TRUE(recorder->diagnostics.empty());
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 1}, u"", nullptr); });
    EXPECT_EQ(recorder->diagnostics.size(), 3u);
}
