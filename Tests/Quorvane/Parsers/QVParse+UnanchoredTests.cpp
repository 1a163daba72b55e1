// Unanchored matching: which candidates win, what is covered, what becomes of the rest.

#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Support/SyntaxText.h"
#include "Tests/Support/ParseFixture.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

// Places

TEST(QVParse, AtOnePlaceTheEarlierScopeWinsEvenIfShorter) {
    EXPECT_EQ(treeOfText(matchText("short", "a") + matchText("long", "ab"), u"ab"),
              "Match short [0,1]\n"
              "Unknown unknown [1,1]\n");
    EXPECT_EQ(treeOfText(matchText("long", "ab") + matchText("short", "a"), u"ab"), "Match long [0,2]\n");
}

TEST(QVParse, TheLowerPlaceWinsWhateverTheOrder) {
    EXPECT_EQ(treeOfText(matchText("late", "bc") + matchText("early", "ab"), u"abc"),
              "Match early [0,2]\n"
              "Unknown unknown [2,1]\n");
}

TEST(QVParse, AMatchThatBeginsInsideAnAcceptedOneIsDroppedEvenIfItReachesFurther) {
    EXPECT_EQ(treeOfText(matchText("one", "ab") + matchText("two", "bcd"), u"abcd"),
              "Match one [0,2]\n"
              "Unknown unknown [2,2]\n");
}

TEST(QVParse, AMatchMayBeginWhereTheLastOneEnds) {
    EXPECT_EQ(treeOfText(matchText("one", "ab") + matchText("two", "cd"), u"abcd"), "Match one [0,2]\n"
                                                                                    "Match two [2,2]\n");
}

TEST(QVParse, AHitThatWasDroppedStillHidesThoseOfItsScopeThatOverlapIt) {
    // "bcb" is found at 1 and covered by "ab"; the one at 3 overlaps the first and is never looked for.
    EXPECT_EQ(treeOfText(matchText("one", "ab") + matchText("two", "bcb"), u"abcbcb"),
              "Match one [0,2]\n"
              "Unknown unknown [2,4]\n");
}

TEST(QVParse, AHitThatWasRefusedStillHidesThoseOfItsScopeThatOverlapIt) {
    // Both begin at 0; the second one's next hit is looked for from 3.
    EXPECT_EQ(treeOfText(matchText("one", "a") + matchText("two", "aba"), u"ababa"), "Match one [0,1]\n"
                                                                                     "Unknown unknown [1,1]\n"
                                                                                     "Match one [2,1]\n"
                                                                                     "Unknown unknown [3,1]\n"
                                                                                     "Match one [4,1]\n");
    EXPECT_EQ(treeOfText(matchText("one", "^a") + matchText("two", "aba"), u"abababa"),
              "Match one [0,1]\n"
              "Unknown unknown [1,3]\n"
              "Match two [4,3]\n");
}

TEST(QVParse, ACoveredHitAfterACoveredHitIsDroppedToo) {
    EXPECT_EQ(treeOfText(matchText("one", "abcd") + matchText("two", "[bce]"), u"abcde"),
              "Match one [0,4]\n"
              "Match two [4,1]\n");
}

// Ends

TEST(QVParse, ARegionsEndBeatsASubscopeAtItsPlace) {
    EXPECT_EQ(
        treeOfText(regionText("region", "\\{", "\\}", subscopesText(matchText("brace", "\\}x"))), u"{}x"),
        "StartEnd region [0,1] end[1,1]\n"
        "Unknown unknown [2,1]\n");
}

TEST(QVParse, ACutoffBeatsWhatIsBeforeItInTheList) {
    EXPECT_EQ(treeOfText(regionText("region", "\\{", "\\}",
                                    subscopesText(matchText("both", ";;") + cutoffText(";"))),
                         u"{a;;"),
              "StartEnd region [0,1] end[2,1]\n"
              "  Unknown unknown [1,1]\n"
              "Unknown unknown [3,1]\n");
}

TEST(QVParse, OfTwoEndsAtOnePlaceTheFirstWins) {
    EXPECT_EQ(treeOfText(regionText("region", "\\{", ";", subscopesText(cutoffText(";;"))), u"{a;;"),
              "StartEnd region [0,1] end[2,1]\n"
              "  Unknown unknown [1,1]\n"
              "Unknown unknown [3,1]\n");
    EXPECT_EQ(
        treeOfText(regionText("region", "\\{", ";;;", subscopesText(cutoffText(";;") + cutoffText(";"))),
                   u"{a;;"),
        "StartEnd region [0,1] end[2,2]\n"
        "  Unknown unknown [1,1]\n");
}

TEST(QVParse, AnEndInsideAnAcceptedMatchIsDropped) {
    EXPECT_EQ(treeOfText(regionText("string", "\"", "\"", subscopesText(matchText("escape", "\\\\."))),
                         u"\"a\\\"b\"c"),
              "StartEnd string [0,1] end[5,1]\n"
              "  Unknown unknown [1,1]\n"
              "  Match escape [2,2]\n"
              "  Unknown unknown [4,1]\n"
              "Unknown unknown [6,1]\n");
}

TEST(QVParse, WhatLiesBehindAnEndIsLeftToTheRegionAround) {
    EXPECT_EQ(treeOfText(regionText("region", "\\{", "\\}", subscopesText(matchText("inside", "[ab]"))) +
                             matchText("outside", "b"),
                         u"{a}b"),
              "StartEnd region [0,1] end[2,1]\n"
              "  Match inside [1,1]\n"
              "Match outside [3,1]\n");
}

TEST(QVParse, ASubscopeThatBeginsBeforeTheEndMayReachOverIt) {
    EXPECT_EQ(
        treeOfText(regionText("region", "\\{", "\\}", subscopesText(matchText("over", "a\\}a"))), u"{a}a}"),
        "StartEnd region [0,1] end[4,1]\n"
        "  Match over [1,3]\n");
}

TEST(QVParse, AnEndIsNotLookedForInsideItsStart) {
    EXPECT_EQ(treeOfText(regionText("region", "aa", "a"), u"aaba"), "StartEnd region [0,2] end[3,1]\n"
                                                                    "  Unknown unknown [2,1]\n");
}

TEST(QVParse, AnEmptyEndIsFoundRightBehindTheStartOfAnEmptyLine) {
    // Nothing is left of the line, and still the end may stand there.
    EXPECT_EQ(treeOfText(regionText("region", "\\{", "$"), u"{\nb"), "StartEnd region [0,1] end[1,0]\n"
                                                                     "Newline newline [1,1]\n"
                                                                     "Unknown unknown [2,1]\n");
}

TEST(QVParse, AnEmptyEndMayStandAtTheLineEnding) {
    EXPECT_EQ(treeOfText(regionText("region", "\\{", "$"), u"{a\nb"), "StartEnd region [0,1] end[2,0]\n"
                                                                      "  Unknown unknown [1,1]\n"
                                                                      "Newline newline [2,1]\n"
                                                                      "Unknown unknown [3,1]\n");
}

TEST(QVParse, NothingButAnEndMayStandAtTheLineEnding) {
    EXPECT_EQ(treeOfText(regionText("empty", "(?=\\n)", "x"), u"a\nbx"), "Unknown unknown [0,1]\n"
                                                                         "Newline newline [1,1]\n"
                                                                         "Unknown unknown [2,2]\n");
}

TEST(QVParse, ARegionWithoutAnEndPatternIsEndedByACutoff) {
    const std::string region = element("scope", named("region"),
                                       element("starts-with", "", expressionText("\\{")) +
                                           element("ends-with", "", "") + subscopesText(cutoffText(";")));
    EXPECT_EQ(treeOfText(region, u"{a}\n;b"), "StartEnd region [0,1] end[4,1]\n"
                                              "  Unknown unknown [1,2]\n"
                                              "  Newline newline [3,1]\n"
                                              "Unknown unknown [5,1]\n");
}

// Cut-offs as subscopes

TEST(QVParse, ACutoffEndsItsRegionWhereverItIsFound) {
    const std::string region = regionText("region", "\\(", "\\)", subscopesText(cutoffText("(?=;)")));
    EXPECT_EQ(treeOfText(region, u"(a;b)"), "StartEnd region [0,1] end[2,0]\n"
                                            "  Unknown unknown [1,1]\n"
                                            "Unknown unknown [2,3]\n");
}

TEST(QVParse, ACutoffHasNoCapturesInAnUnanchoredRegion) {
    const std::string cutoff =
        element("cut-off", named("cut"), expressionText("(;)") + captureText(1, "end"));
    EXPECT_EQ(treeOfText(regionText("region", "\\(", "\\)", subscopesText(cutoff)), u"(a;"),
              "StartEnd region [0,1] end[2,1]\n"
              "  Unknown unknown [1,1]\n");
}

TEST(QVParse, ACutoffIsNotTriedInTheRoot) {
    const auto syntax = syntaxWithElements(scopesText(matchText("letter", "a")));
    syntax->grammar()->addScope(
        QVScope::scopeWithType(QVScopeTypeCutoff, syntax, u"cut",
                               QVRegularExpression::regularExpressionWithPattern(u";", 0), nullptr));
    EXPECT_EQ(treeOfText(syntax, u"a;a"), "Match letter [0,1]\n"
                                          "Unknown unknown [1,1]\n"
                                          "Match letter [2,1]\n");
}

// Overruns

TEST(QVParse, AHitThatReachesOverTheLinesEndEndsTheSearchForItsScope) {
    const std::string scope = matchText("scope", "a[^z]*\\n|c");
    EXPECT_EQ(treeOfText(scope, u"xbc\n"), "Unknown unknown [0,2]\n"
                                           "Match scope [2,1]\n"
                                           "Newline newline [3,1]\n");
    EXPECT_EQ(treeOfText(scope, u"abc\n"), "Unknown unknown [0,3]\n"
                                           "Newline newline [3,1]\n");
}

TEST(QVParse, HitsBeforeAnOverrunStay) {
    EXPECT_EQ(treeOfText(matchText("scope", "a[^z]*\\n|c"), u"cac\n"), "Match scope [0,1]\n"
                                                                       "Unknown unknown [1,2]\n"
                                                                       "Newline newline [3,1]\n");
}

TEST(QVParse, BehindARegionTheSearchBeginsAnewAfterAnOverrun) {
    // The hit at "a" reached over the line's end; from behind the region "c" is found.
    EXPECT_EQ(treeOfText(regionText("region", "a", "b") + matchText("scope", "a[^z]*\\n|c"), u"abc\n"),
              "StartEnd region [0,1] end[1,1]\n"
              "Match scope [2,1]\n"
              "Newline newline [3,1]\n");
}

// Unknown text

TEST(QVParse, UnknownTextIsSplitAtBlanks) {
    EXPECT_EQ(treeOfText(matchText("none", "!"), u"ab \t cd  "), "Unknown unknown [0,2]\n"
                                                                 "Whitespace whitespace [2,3]\n"
                                                                 "Unknown unknown [5,2]\n"
                                                                 "Whitespace whitespace [7,2]\n");
    EXPECT_EQ(treeOfText(matchText("none", "!"), u"\t\n  "), "Whitespace whitespace [0,1]\n"
                                                             "Newline newline [1,1]\n"
                                                             "Whitespace whitespace [2,2]\n");
}

TEST(QVParse, OtherBlanksThanSpacesAndTabsAreUnknownText) {
    EXPECT_EQ(treeOfText(matchText("none", "!"), u"a\u00A0b\u3000"), "Unknown unknown [0,4]\n");
}

TEST(QVParse, GapsBetweenMatchesAreUnknownText) {
    EXPECT_EQ(treeOfText(matchText("word", "\\w+"), u" a + b"), "Whitespace whitespace [0,1]\n"
                                                                "Match word [1,1]\n"
                                                                "Whitespace whitespace [2,1]\n"
                                                                "Unknown unknown [3,1]\n"
                                                                "Whitespace whitespace [4,1]\n"
                                                                "Match word [5,1]\n");
}

TEST(QVParse, AMatchedBlankIsNotSplit) {
    EXPECT_EQ(treeOfText(matchText("pair", "a b"), u"a b"), "Unknown unknown [0,1]\n"
                                                            "Whitespace whitespace [1,1]\n"
                                                            "Unknown unknown [2,1]\n")
        << "blanks in a pattern are layout";
    EXPECT_EQ(treeOfText(matchText("pair", "a\\ b"), u"a b"), "Match pair [0,3]\n");
}

TEST(QVParse, AGrammarWithoutScopesMakesUnknownText) {
    EXPECT_EQ(treeOfText(syntaxWithElements(""), u"a b\n"), "Unknown unknown [0,1]\n"
                                                            "Whitespace whitespace [1,1]\n"
                                                            "Unknown unknown [2,1]\n"
                                                            "Newline newline [3,1]\n");
}

// Patterns that look at where their search began

TEST(QVParse, APatternThatMovesItsStartMatchesFromThere) {
    EXPECT_EQ(treeOfText(matchText("moved", "a\\Kb"), u"abab"), "Unknown unknown [0,1]\n"
                                                                "Match moved [1,1]\n"
                                                                "Unknown unknown [2,1]\n"
                                                                "Match moved [3,1]\n");
}

TEST(QVParse, APatternThatMovesItsStartKeepsItsCaptures) {
    const std::string scope = element(
        "scope", named("moved"), expressionText("a\\K(b)(c)") + captureText(1, "b") + captureText(2, "c"));
    EXPECT_EQ(treeOfText(scope, u"xabc"), "Unknown unknown [0,2]\n"
                                          "Match moved [2,2]\n"
                                          "  @1 b [2,1]\n"
                                          "  @2 c [3,1]\n");
}

TEST(QVParse, APatternMayAskWhereItsSearchBegan) {
    // Each hit is followed by a search that begins at its end; behind the region one begins anew.
    EXPECT_EQ(treeOfText(matchText("at", "\\Ga") + regionText("region", "\\{", "\\}"), u"aaba{}aa"),
              "Match at [0,1]\n"
              "Match at [1,1]\n"
              "Unknown unknown [2,2]\n"
              "StartEnd region [4,1] end[5,1]\n"
              "Match at [6,1]\n"
              "Match at [7,1]\n");
}

TEST(QVParse, AMatchWhoseStartWasMovedBehindItsEndIsNone) {
    // An assertion that calls a group can do this; a range from 2 to 0 is none.
    EXPECT_EQ(treeOfText(regionText("crossed", "(?=(?1))(?(DEFINE)(ab\\K))", "c"), u"abab"),
              "Unknown unknown [0,4]\n");
}
