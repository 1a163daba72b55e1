// What a pattern's hit becomes: what is dropped and reported, and what is kept of a match's groups.

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Support/SyntaxText.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Diagnostics = std::vector<DiagnosticRecorder::Diagnostic>;

/// What a parse reports; fails the test where the two ways report differently.
Diagnostics diagnosticsOfText(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text) {
    Diagnostics diagnostics[2];
    for (const bool remembers : {false, true}) {
        const auto recorder = std::make_shared<DiagnosticRecorder>();
        const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
        parse->setRemembersSearches(remembers);
        parse->setDelegate(recorder);
        parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, text, nullptr); });
        diagnostics[remembers] = recorder->diagnostics;
    }
    EXPECT_TRUE(diagnostics[0] == diagnostics[1]) << "remembering searches changed what is reported";
    return diagnostics[0];
}

Diagnostics diagnosticsOfText(std::string_view scopes, std::u16string_view text) {
    return diagnosticsOfText(syntaxWithElements(scopesText(scopes)), text);
}

Diagnostics timesOf(std::size_t count, std::u16string_view message, NSUInteger level) {
    return Diagnostics(count, DiagnosticRecorder::Diagnostic{NSString(message), level});
}

constexpr std::u16string_view emptyMatch =
    u"Encountered a zero-length single match for scope: empty; Ignoring";

} // namespace

// Recursion

TEST(QVParse, ARegionThatBeginsWithinItselfAtOnePlaceStopsAfterOneLevel) {
    const auto syntax = syntaxWithElements(
        collectionsText(
            collectionText("all", regionText("region", "(?=a)", "b", subscopesText(includeText("all"))))) +
        scopesText(includeText("all")));
    EXPECT_EQ(treeOfText(syntax, u"ab"), "StartEnd region [0,0] end[1,1]\n"
                                         "  Unknown unknown [0,1]\n");
    EXPECT_EQ(
        diagnosticsOfText(syntax, u"ab"),
        timesOf(1,
                u"Encountered an infinitely-recursive depth-wise parse for scope: region; Ignoring subscopes",
                5));
}

TEST(QVParse, ARegionMayBeginWithinItselfFurtherOn) {
    const auto syntax = syntaxWithElements(
        collectionsText(
            collectionText("all", regionText("region", "(?=a)", "b", subscopesText(includeText("all"))))) +
        scopesText(includeText("all")));
    EXPECT_EQ(treeOfText(syntax, u"aabb"), "StartEnd region [0,0] end[3,1]\n"
                                           "  Unknown unknown [0,1]\n"
                                           "  StartEnd region [1,0] end[2,1]\n"
                                           "    Unknown unknown [1,1]\n");
}

TEST(QVParse, RegionsThatBeginInOneAnotherAtOnePlaceStopAtTheFirstThatRepeats) {
    // "one" holds "two" holds "one": the second "one" is dropped.
    const auto syntax = syntaxWithElements(
        collectionsText(
            collectionText("ones", regionText("one", "(?=a)", "b", subscopesText(includeText("twos")))) +
            collectionText("twos", regionText("two", "(?=a)", "c", subscopesText(includeText("ones"))))) +
        scopesText(includeText("ones")));
    EXPECT_EQ(treeOfText(syntax, u"acb"), "StartEnd one [0,0] end[2,1]\n"
                                          "  StartEnd two [0,0] end[1,1]\n"
                                          "    Unknown unknown [0,1]\n");
    EXPECT_EQ(
        diagnosticsOfText(syntax, u"acb"),
        timesOf(1, u"Encountered an infinitely-recursive depth-wise parse for scope: one; Ignoring subscopes",
                5));
}

TEST(QVParse, AnEmptyStartOfARegionWithinItselfRightBehindItsStartIsDropped) {
    const auto syntax = syntaxWithElements(
        collectionsText(
            collectionText("all", regionText("region", "a|(?=b)", "c", subscopesText(includeText("all"))))) +
        scopesText(includeText("all")));
    EXPECT_EQ(treeOfText(syntax, u"abc"), "StartEnd region [0,1] end[2,1]\n"
                                          "  Unknown unknown [1,1]\n");
    EXPECT_EQ(diagnosticsOfText(syntax, u"abc"),
              timesOf(1, u"Encountered an infinitely-recursive parse for scope: region; Ignoring", 5));
}

TEST(QVParse, AnEmptyStartOfAnotherRegionRightBehindAStartIsEntered) {
    const std::string inner = regionText("inner", "(?=b)", "(?<=b)");
    EXPECT_EQ(treeOfText(regionText("outer", "a", "c", subscopesText(inner)), u"abc"),
              "StartEnd outer [0,1] end[2,1]\n"
              "  StartEnd inner [1,0] end[2,0]\n"
              "    Unknown unknown [1,1]\n");
}

TEST(QVParse, ANonEmptyStartOfARegionWithinItselfIsEntered) {
    const auto syntax =
        syntaxWithElements(collectionsText(collectionText(
                               "all", regionText("region", "a", "c", subscopesText(includeText("all"))))) +
                           scopesText(includeText("all")));
    EXPECT_EQ(treeOfText(syntax, u"aacc"), "StartEnd region [0,1] end[3,1]\n"
                                           "  StartEnd region [1,1] end[2,1]\n");
    EXPECT_THAT(diagnosticsOfText(syntax, u"aacc"), IsEmpty());
}

// Empty hits

TEST(QVParse, AnEmptySingleMatchIsDroppedAndReported) {
    const std::string scope = matchText("empty", "b*");
    EXPECT_EQ(treeOfText(scope, u"abc"), "Unknown unknown [0,1]\n"
                                         "Match empty [1,1]\n"
                                         "Unknown unknown [2,1]\n");
    // At 0, at 2 behind the "b", and at the line's end.
    EXPECT_EQ(diagnosticsOfText(scope, u"abc"), timesOf(3, emptyMatch, 5));
}

TEST(QVParse, EmptyHitsAreReportedForTheWholeRestOfALineEachTimeItIsSearched) {
    // Six on the whole line, two more on what is left of it behind the region.
    EXPECT_EQ(diagnosticsOfText(matchText("empty", "x*") + regionText("region", "\\{", "\\}"), u"a{b}c"),
              timesOf(8, emptyMatch, 5));
}

TEST(QVParse, EmptyHitsBehindARegionsEndAreReportedToo) {
    // Inside of the region: at 1, 2 and 3, of which the last lies behind the end. Outside: at 0 to 3 there is
    // no such scope.
    EXPECT_EQ(diagnosticsOfText(regionText("region", "\\{", "\\}", subscopesText(matchText("empty", "x*"))),
                                u"{}c"),
              timesOf(3, emptyMatch, 5));
}

TEST(QVParse, EmptyStartsAndEmptyCutoffsAreLegal) {
    const std::string scope = regionText("region", "(?=a)", "x", subscopesText(cutoffText("(?=b)")));
    EXPECT_EQ(treeOfText(scope, u"ab"), "StartEnd region [0,0] end[1,0]\n"
                                        "  Unknown unknown [0,1]\n"
                                        "Unknown unknown [1,1]\n");
    EXPECT_THAT(diagnosticsOfText(scope, u"ab"), IsEmpty());
}

// Types

TEST(QVParse, AScopeOfAStrangeTypeMakesAPlainMatchAndIsLogged) {
    const auto syntax = syntaxWithElements(collectionsText(collectionText("odd", matchText("odd", "a"))) +
                                           scopesText(includeText("odd")));
    syntax->grammar()->collectionWithName(u"odd")->scopes().front()->setType(static_cast<QVScopeType>(99));
    const LogRecorder log;
    const auto parse = parseOfText(syntax, u"aba");
    parse->performReadingBlockAndWait([&] {
        ASSERT_EQ(parse->rootMatch()->submatches().count(), 3u);
        EXPECT_EQ(parse->rootMatch()->firstChild()->range(), (NSRange{0, 1}));
        EXPECT_FALSE(parse->rootMatch()->firstChild()->isStart());
        EXPECT_FALSE(parse->rootMatch()->firstChild()->isEnd());
    });
    EXPECT_THAT(log.messages(), ElementsAre(u"Unhandled scope type.", u"Unhandled scope type."));
}

// Groups

TEST(QVParse, ASingleMatchHasItsCaptures) {
    const std::string scope = element("scope", named("call"),
                                      expressionText("(\\w+)(\\()?(\\[)?") + captureText(1, "name") +
                                          captureText(2, "open") + captureText(3, "index"));
    // A group that took no part has no match.
    EXPECT_EQ(treeOfText(scope, u" ab("), "Whitespace whitespace [0,1]\n"
                                          "Match call [1,3]\n"
                                          "  @1 name [1,2]\n"
                                          "  @2 open [3,1]\n");
}

TEST(QVParse, CapturesAreThoseOfTheHitThatWasTaken) {
    // The hit at 4 is found ahead, and again behind the region; another scope's search comes in between.
    const std::string call =
        element("scope", named("call"), expressionText("(\\w)\\(") + captureText(1, "name"));
    EXPECT_EQ(treeOfText(call + regionText("region", "\\{", "\\}") + matchText("word", "(\\w)+"), u"{} a(b"),
              "StartEnd region [0,1] end[1,1]\n"
              "Whitespace whitespace [2,1]\n"
              "Match call [3,2]\n"
              "  @1 name [3,1]\n"
              "Match word [5,1]\n");
}

TEST(QVParse, ASubscopesCapturesMaySeeTextBehindTheLine) {
    const std::string scope =
        element("scope", named("last"), expressionText("a(?=\\n(b))") + captureText(1, "next"));
    EXPECT_EQ(treeOfText(scope, u"a\nb"), "Match last [0,1]\n"
                                          "  @1 next [2,1]\n"
                                          "Newline newline [1,1]\n"
                                          "Unknown unknown [2,1]\n");
}

TEST(QVParse, OnlyRegionsThatNeedTheirStartKeepItsGroups) {
    const auto resultOf = [](std::string_view scope) {
        const auto parse = parseOfText(syntaxWithElements(scopesText(scope)), u"a1b");
        std::shared_ptr<QVRegularExpressionResult> result;
        parse->performReadingBlockAndWait(
            [&] { result = parse->rootMatch()->firstChild()->textCheckingResult(); });
        return result;
    };
    const auto kept = resultOf(templateRegionText("region", "a(\\d)", "\\1"));
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->range(), (NSRange{0, 2}));
    EXPECT_EQ(kept->rangeAtIndex(1), (NSRange{1, 1}));
    EXPECT_NE(resultOf(element("scope", named("region"),
                               element("starts-with", "", expressionText("a(\\d)")) +
                                   element("ends-with", "", expressionText("b")) +
                                   element("subsyntax", "capture=\"1\"", ""))),
              nullptr);
    EXPECT_EQ(resultOf(element("scope", named("region"),
                               element("starts-with", "", expressionText("a(\\d)")) +
                                   element("ends-with", "", expressionText("b")) +
                                   element("subsyntax", "name=\"none\"", ""))),
              nullptr);
    EXPECT_EQ(resultOf(regionText("region", "a(\\d)", "b")), nullptr);
}
