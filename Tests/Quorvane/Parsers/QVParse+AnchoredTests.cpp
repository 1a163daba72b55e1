#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Quorvane/Parsers/GrammarText.h"
#include "Tests/Support/Printing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;

namespace {

const std::string a = single("a", "a");
const std::string b = single("b", "b");

} // namespace

// The sequence

TEST(QVParseAnchored, EachSubscopeMustMatchWhereTheOneBeforeItEnded) {
    EXPECT_EQ(treeOfText(sequence(a + b), u"(abx"), "StartEnd r [0,1] end[3,0]\n"
                                                    "  Match a [1,1]\n"
                                                    "  Match b [2,1]\n"
                                                    "Unknown unknown [3,1]\n");
}

TEST(QVParseAnchored, TextThatFitsNothingEndsTheRegionAndIsLeftToWhatIsAround) {
    // No node stands for it in the region, whose end is where its last match ended.
    EXPECT_EQ(treeOfText(sequence(a + b), u"(ax)"), "StartEnd r [0,1] end[2,0]\n"
                                                    "  Match a [1,1]\n"
                                                    "Unknown unknown [2,2]\n");
    EXPECT_EQ(treeOfText(sequence(a + b), u"(ba"), "StartEnd r [0,1] end[1,0]\n"
                                                   "Unknown unknown [1,2]\n");
}

TEST(QVParseAnchored, ASubscopeIsNotSearchedForFurtherOn) {
    EXPECT_EQ(treeOfText(sequence(b), u"(ab"), "StartEnd r [0,1] end[1,0]\n"
                                               "Unknown unknown [1,2]\n");
}

TEST(QVParseAnchored, AnOptionalSubscopeMayBePassedOver) {
    const std::string scopes = sequence(single("a", "a", optional) + b);
    EXPECT_EQ(treeOfText(scopes, u"(b"), "StartEnd r [0,1] end[2,0]\n"
                                         "  Match b [1,1]\n");
    EXPECT_EQ(treeOfText(scopes, u"(ab"), "StartEnd r [0,1] end[3,0]\n"
                                          "  Match a [1,1]\n"
                                          "  Match b [2,1]\n");
    // Once it came, it is over.
    EXPECT_EQ(treeOfText(scopes, u"(aab"), "StartEnd r [0,1] end[2,0]\n"
                                           "  Match a [1,1]\n"
                                           "Unknown unknown [2,2]\n");
}

TEST(QVParseAnchored, ARepeatingSubscopeComesAsOftenAsItCan) {
    EXPECT_EQ(treeOfText(sequence(single("a", "a", repeating) + b), u"(aab"), "StartEnd r [0,1] end[4,0]\n"
                                                                              "  Match a [1,1]\n"
                                                                              "  Match a [2,1]\n"
                                                                              "  Match b [3,1]\n");
}

TEST(QVParseAnchored, ARepeatingSubscopeThatIsNotOptionalMustComeOnce) {
    EXPECT_EQ(treeOfText(sequence(single("a", "a", repeating) + b), u"(b"), "StartEnd r [0,1] end[1,0]\n"
                                                                            "Unknown unknown [1,1]\n");
    EXPECT_EQ(treeOfText(sequence(single("a", "a", optional + repeating) + b), u"(b"),
              "StartEnd r [0,1] end[2,0]\n"
              "  Match b [1,1]\n");
}

TEST(QVParseAnchored, WhatRepeatedDoesNotLetTheNextRequiredSubscopeBePassedOver) {
    EXPECT_EQ(treeOfText(sequence(single("a", "a", repeating) + b + single("c", "c")), u"(ac"),
              "StartEnd r [0,1] end[2,0]\n"
              "  Match a [1,1]\n"
              "Unknown unknown [2,1]\n");
}

TEST(QVParseAnchored, ASequenceThatIsUsedUpEndsTheRegionWithoutAnEndPattern) {
    EXPECT_EQ(treeOfText(sequence(a) + single("x", "\\w"), u"(aa"), "StartEnd r [0,1] end[2,0]\n"
                                                                    "  Match a [1,1]\n"
                                                                    "Match x [2,1]\n");
    // Also one without any subscope.
    EXPECT_EQ(treeOfText(sequence(""), u"(a"), "StartEnd r [0,1] end[1,0]\n"
                                               "Unknown unknown [1,1]\n");
}

TEST(QVParseAnchored, TheTextsEndEndsTheRegion) {
    EXPECT_EQ(treeOfText(sequence(a + b), u"("), "StartEnd r [0,1] end[1,0]\n");
    EXPECT_EQ(treeOfText(sequence(a + b), u"(a"), "StartEnd r [0,1] end[2,0]\n"
                                                  "  Match a [1,1]\n");
}

TEST(QVParseAnchored, TheEndPatternComesBeforeTheSequence) {
    const std::string scopes = region("r", "\\(", "\\)", following(single("any", ".", repeating)));
    EXPECT_EQ(treeOfText(scopes, u"(a)b"), "StartEnd r [0,1] end[2,1]\n"
                                           "  Match any [1,1]\n"
                                           "Unknown unknown [3,1]\n");
    EXPECT_EQ(treeOfText(scopes, u"()b"), "StartEnd r [0,1] end[1,1]\n"
                                          "Unknown unknown [2,1]\n");
}

TEST(QVParseAnchored, TheEndPatternMustMatchAtThePlaceToo) {
    EXPECT_EQ(treeOfText(region("r", "\\(", "\\)", following(a)), u"(ab)"), "StartEnd r [0,1] end[2,0]\n"
                                                                            "  Match a [1,1]\n"
                                                                            "Unknown unknown [2,2]\n");
}

TEST(QVParseAnchored, AnEndPatternCanBeMadeOfTheStart) {
    const std::string scopes =
        "<scope name='r'><starts-with><expression>([*+])</expression></starts-with><ends-with>"
        "<template>\\1</template></ends-with>" +
        following(single("any", ".", repeating)) + "</scope>";
    EXPECT_EQ(treeOfText(scopes, u"*+*"), "StartEnd r [0,1] end[2,1]\n"
                                          "  Match any [1,1]\n");
    EXPECT_EQ(treeOfText(scopes, u"+*+"), "StartEnd r [0,1] end[2,1]\n"
                                          "  Match any [1,1]\n");
}

TEST(QVParseAnchored, ACutOffInTheSequenceEndsTheRegionAndMayBePassedOver) {
    const std::string scopes = sequence(a + cutoff("cut", ";") + b);
    EXPECT_EQ(treeOfText(scopes, u"(a;b"), "StartEnd r [0,1] end[2,1]\n"
                                           "  Match a [1,1]\n"
                                           "Unknown unknown [3,1]\n");
    EXPECT_EQ(treeOfText(scopes, u"(ab;"), "StartEnd r [0,1] end[3,0]\n"
                                           "  Match a [1,1]\n"
                                           "  Match b [2,1]\n"
                                           "Unknown unknown [3,1]\n");
}

TEST(QVParseAnchored, TheFirstScopeOfAnIncludeThatMatchesWins) {
    const auto syntax =
        syntaxWithScopes(region("r", "\\(", "\\)", following("<include collection='c' repeat='true'/>")),
                         "<collections><collection name='c'>" + single("short", "x") + single("long", "xy") +
                             single("other", "y") + "</collection></collections>");
    EXPECT_EQ(treeOfText(syntax, u"(xyy)"), "StartEnd r [0,1] end[4,1]\n"
                                            "  Match short [1,1]\n"
                                            "  Match other [2,1]\n"
                                            "  Match other [3,1]\n");
}

TEST(QVParseAnchored, AnIncludeThatLeadsNowhereIsAMiss) {
    EXPECT_EQ(treeOfText(sequence("<include syntax='nosuch' optional='true'/>" + a), u"(a"),
              "StartEnd r [0,1] end[2,0]\n"
              "  Match a [1,1]\n");
    EXPECT_EQ(treeOfText(sequence("<include syntax='nosuch'/>" + a), u"(a"), "StartEnd r [0,1] end[1,0]\n"
                                                                             "Unknown unknown [1,1]\n");
}

// Blanks

TEST(QVParseAnchored, GreedySkippingTakesBlanksBeforeAnythingElse) {
    EXPECT_EQ(treeOfText(sequence(a + b, "greedy"), u"( a\tb"), "StartEnd r [0,1] end[5,0]\n"
                                                                "  Whitespace whitespace [1,1]\n"
                                                                "  Match a [2,1]\n"
                                                                "  Whitespace whitespace [3,1]\n"
                                                                "  Match b [4,1]\n");
    // Even before an end pattern that would match them.
    const auto endingInBlanks = [](const std::string &skip) {
        return region("r", "\\(", "\\s", following(single("a", "a"), skip));
    };
    EXPECT_EQ(treeOfText(endingInBlanks("greedy"), u"( a"), "StartEnd r [0,1] end[3,0]\n"
                                                            "  Whitespace whitespace [1,1]\n"
                                                            "  Match a [2,1]\n");
    EXPECT_EQ(treeOfText(endingInBlanks("lazy"), u"( a"), "StartEnd r [0,1] end[1,1]\n"
                                                          "Unknown unknown [2,1]\n");
}

TEST(QVParseAnchored, WithoutSkippingBlanksFitNothing) {
    EXPECT_EQ(treeOfText(sequence(a + b), u"(a b"), "StartEnd r [0,1] end[2,0]\n"
                                                    "  Match a [1,1]\n"
                                                    "Whitespace whitespace [2,1]\n"
                                                    "Unknown unknown [3,1]\n");
}

TEST(QVParseAnchored, BlanksAreMoreThanSpacesAndTabs) {
    // A no-break space and an ideographic one; other than where unknown text is cut up.
    EXPECT_EQ(treeOfText(sequence(a, "greedy"), u"(\u00A0\t\u3000a\u3000"),
              "StartEnd r [0,1] end[6,0]\n"
              "  Whitespace whitespace [1,3]\n"
              "  Match a [4,1]\n"
              "  Whitespace whitespace [5,1]\n");
}

TEST(QVParseAnchored, LazySkippingTakesBlanksOnlyWhereNothingMatches) {
    EXPECT_EQ(treeOfText(sequence(a + single("c", "\\s?c"), "lazy"), u"(a c"), "StartEnd r [0,1] end[4,0]\n"
                                                                               "  Match a [1,1]\n"
                                                                               "  Match c [2,2]\n");
    EXPECT_EQ(treeOfText(sequence(a + b, "lazy"), u"(a  b"), "StartEnd r [0,1] end[5,0]\n"
                                                             "  Match a [1,1]\n"
                                                             "  Whitespace whitespace [2,2]\n"
                                                             "  Match b [4,1]\n");
}

TEST(QVParseAnchored, ALazySkipTakesBackThePassingOverOfOptionalSubscopes) {
    EXPECT_EQ(treeOfText(sequence(a + single("o", "o", optional) + b, "lazy"), u"(a ob"),
              "StartEnd r [0,1] end[5,0]\n"
              "  Match a [1,1]\n"
              "  Whitespace whitespace [2,1]\n"
              "  Match o [3,1]\n"
              "  Match b [4,1]\n");
    // And that a repeating one had come.
    EXPECT_EQ(treeOfText(sequence(single("a", "a", repeating) + b, "lazy"), u"(a a b"),
              "StartEnd r [0,1] end[6,0]\n"
              "  Match a [1,1]\n"
              "  Whitespace whitespace [2,1]\n"
              "  Match a [3,1]\n"
              "  Whitespace whitespace [4,1]\n"
              "  Match b [5,1]\n");
}

TEST(QVParseAnchored, ALazySkipHappensEvenWhereTheSequenceIsUsedUp) {
    // The region takes the blanks behind it in and ends after them.
    EXPECT_EQ(treeOfText(sequence(a, "lazy"), u"(a x"), "StartEnd r [0,1] end[3,0]\n"
                                                        "  Match a [1,1]\n"
                                                        "  Whitespace whitespace [2,1]\n"
                                                        "Unknown unknown [3,1]\n");
}

TEST(QVParseAnchored, BlanksBeforeTextThatFitsNothingStayInTheRegion) {
    for (const char *const skip : {"lazy", "greedy"})
        EXPECT_EQ(treeOfText(sequence(a + b, skip), u"(a x"), "StartEnd r [0,1] end[3,0]\n"
                                                              "  Match a [1,1]\n"
                                                              "  Whitespace whitespace [2,1]\n"
                                                              "Unknown unknown [3,1]\n");
}

// Lines

TEST(QVParseAnchored, ASequenceGoesOnInTheNextLine) {
    EXPECT_EQ(treeOfText(sequence(a + b), u"(a\nb"), "StartEnd r [0,1] end[4,0]\n"
                                                     "  Match a [1,1]\n"
                                                     "  Newline newline [2,1]\n"
                                                     "  Match b [3,1]\n");
    EXPECT_EQ(treeOfText(sequence(a + b), u"(\r\n\r\na"), "StartEnd r [0,1] end[6,0]\n"
                                                          "  Newline newline [1,2]\n"
                                                          "  Newline newline [3,2]\n"
                                                          "  Match a [5,1]\n");
    EXPECT_EQ(treeOfText(sequence(a + b, "greedy"), u"(a \r b"), "StartEnd r [0,1] end[6,0]\n"
                                                                 "  Match a [1,1]\n"
                                                                 "  Whitespace whitespace [2,1]\n"
                                                                 "  Newline newline [3,1]\n"
                                                                 "  Whitespace whitespace [4,1]\n"
                                                                 "  Match b [5,1]\n");
}

TEST(QVParseAnchored, AnOptionalSubscopeIsNotPassedOverAtALinesEnd) {
    EXPECT_EQ(treeOfText(sequence(a + single("o", "o", optional) + b), u"(a\nob"),
              "StartEnd r [0,1] end[5,0]\n"
              "  Match a [1,1]\n"
              "  Newline newline [2,1]\n"
              "  Match o [3,1]\n"
              "  Match b [4,1]\n");
    // Nor one that repeats and has come.
    EXPECT_EQ(treeOfText(sequence(single("a", "a", repeating)), u"(a\na"), "StartEnd r [0,1] end[4,0]\n"
                                                                           "  Match a [1,1]\n"
                                                                           "  Newline newline [2,1]\n"
                                                                           "  Match a [3,1]\n");
}

TEST(QVParseAnchored, ASequenceThatIsUsedUpAtALinesEndLeavesTheLineEnding) {
    EXPECT_EQ(treeOfText(sequence(a), u"(a\nb"), "StartEnd r [0,1] end[2,0]\n"
                                                 "  Match a [1,1]\n"
                                                 "Newline newline [2,1]\n"
                                                 "Unknown unknown [3,1]\n");
}

TEST(QVParseAnchored, AnEndPatternMayMatchAtALinesVeryEnd) {
    EXPECT_EQ(treeOfText(region("r", "\\(", "$", following(single("a", "a", repeating))), u"(a\na"),
              "StartEnd r [0,1] end[2,0]\n"
              "  Match a [1,1]\n"
              "Newline newline [2,1]\n"
              "Unknown unknown [3,1]\n");
}

TEST(QVParseAnchored, APatternDoesNotReachIntoTheNextLine) {
    EXPECT_EQ(treeOfText(sequence(single("ab", "a\\s*b") + b), u"(a\nb"), "StartEnd r [0,1] end[1,0]\n"
                                                                          "Unknown unknown [1,1]\n"
                                                                          "Newline newline [2,1]\n"
                                                                          "Unknown unknown [3,1]\n");
}

TEST(QVParseAnchored, ARegionInTheSequenceMayRunOverLines) {
    const std::string scopes = sequence(region("q", "\"", "\"", "", repeating));
    EXPECT_EQ(treeOfText(scopes, u"(\"a\nb\"\"c\""), "StartEnd r [0,1] end[9,0]\n"
                                                     "  StartEnd q [1,1] end[5,1]\n"
                                                     "    Unknown unknown [2,1]\n"
                                                     "    Newline newline [3,1]\n"
                                                     "    Unknown unknown [4,1]\n"
                                                     "  StartEnd q [6,1] end[8,1]\n"
                                                     "    Unknown unknown [7,1]\n");
    // One that ends right at the line's end goes on there.
    EXPECT_EQ(treeOfText(scopes, u"(\"a\"\n\"b\""), "StartEnd r [0,1] end[8,0]\n"
                                                    "  StartEnd q [1,1] end[3,1]\n"
                                                    "    Unknown unknown [2,1]\n"
                                                    "  Newline newline [4,1]\n"
                                                    "  StartEnd q [5,1] end[7,1]\n"
                                                    "    Unknown unknown [6,1]\n");
}

TEST(QVParseAnchored, SequencesNest) {
    // The inner one is used up at its end, and the outer one goes on.
    const std::string inner = region("i", "\\[", "", following(a));
    EXPECT_EQ(treeOfText(sequence(inner + b), u"([abb"), "StartEnd r [0,1] end[4,0]\n"
                                                         "  StartEnd i [1,1] end[3,0]\n"
                                                         "    Match a [2,1]\n"
                                                         "  Match b [3,1]\n"
                                                         "Unknown unknown [4,1]\n");
}

TEST(QVParseAnchored, ARegionWithoutItsNextMatchEndsWhereItsLastRegionEnds) {
    const std::string inner = region("i", "\\[", "", following(a + b));
    EXPECT_EQ(treeOfText(sequence(inner + b), u"([ax"), "StartEnd r [0,1] end[3,0]\n"
                                                        "  StartEnd i [1,1] end[3,0]\n"
                                                        "    Match a [2,1]\n"
                                                        "Unknown unknown [3,1]\n");
}

// Template scopes

TEST(QVParseAnchored, ATemplateScopeMayComeAnywhereAndDoesNotAdvanceTheSequence) {
    const auto syntax =
        syntaxWithScopes(sequence(a + b), "<template-scopes>" + single("t", "%") + "</template-scopes>");
    EXPECT_EQ(treeOfText(syntax, u"(%a%%b"), "StartEnd r [0,1] end[6,0]\n"
                                             "  Match t [1,1]\n"
                                             "  Match a [2,1]\n"
                                             "  Match t [3,1]\n"
                                             "  Match t [4,1]\n"
                                             "  Match b [5,1]\n");
}

TEST(QVParseAnchored, ATemplateScopeComesBeforeTheSequenceAndAfterTheEnd) {
    const auto syntax = syntaxWithScopes(region("r", "\\(", "\\)", following(a)),
                                         "<template-scopes>" + single("t", "[a)]") + "</template-scopes>");
    EXPECT_EQ(treeOfText(syntax, u"(a)"), "StartEnd r [0,1] end[2,1]\n"
                                          "  Match t [1,1]\n");
}

TEST(QVParseAnchored, InsideATemplateScopeNoneIsTried) {
    const auto syntax = syntaxWithScopes(
        sequence(single("a", "a", repeating)),
        "<template-scopes>" + region("t", "\\{", "\\}", following(single("any", "[^{}]", repeating))) +
            "</template-scopes>");
    EXPECT_EQ(treeOfText(syntax, u"(a{b}a{{"), "StartEnd r [0,1] end[8,0]\n"
                                               "  Match a [1,1]\n"
                                               "  StartEnd t [2,1] end[4,1]\n"
                                               "    Match any [3,1]\n"
                                               "  Match a [5,1]\n"
                                               "  StartEnd t [6,1] end[7,0]\n"
                                               "  StartEnd t [7,1] end[8,0]\n");
}

TEST(QVParseAnchored, AnIncludeAmongTheTemplateScopesIsNotTried) {
    // Other than where subscopes are searched for.
    const auto syntax =
        syntaxWithScopes(sequence(a + b), "<collections><collection name='c'>" + single("t", "%") +
                                              "</collection></collections><template-scopes>"
                                              "<include collection='c'/></template-scopes>");
    EXPECT_EQ(treeOfText(syntax, u"(%"), "StartEnd r [0,1] end[1,0]\n"
                                         "Match t [1,1]\n");
}

// Cut-offs of open subsyntaxes

namespace {

/// "[" enters the syntax "mid", where "{" enters the syntax "low", where "(" begins a sequence of a's.
class AnchoredCutOffs : public testing::Test {
protected:
    std::string tree(const std::string &outerCutoffs, const std::string &innerCutoffs,
                     const std::string &attributes, std::u16string_view text) const {
        const RegisteredSyntax low(
            syntaxFromXML("<syntax name='low'><scopes>" +
                          region("r", "\\(", "", following(single("a", "a", repeating)), attributes) +
                          "</scopes></syntax>"));
        const RegisteredSyntax mid(syntaxFromXML(
            "<syntax name='mid'><scopes>" +
            region("inner", "\\{", "", "<subsyntax name='low'>" + innerCutoffs + "</subsyntax>") +
            "</scopes></syntax>"));
        return treeOfText(syntaxWithScopes(region("outer", "\\[", "",
                                                  "<subsyntax name='mid'>" + outerCutoffs + "</subsyntax>")),
                          text);
    }
    const std::string comma = cutoff("comma", ",", "<capture number='0' name='c'/>");
    const std::string semicolon = cutoff("semicolon", ";");
};

} // namespace

TEST_F(AnchoredCutOffs, EndTheRegionAndGiveItTheirCaptures) {
    EXPECT_EQ(tree("", comma, "", u"[{(a,a"), "StartEnd outer [0,1] end[6,0]\n"
                                              "  StartEnd inner [1,1] end[6,0]\n"
                                              "    StartEnd r [2,1] end[4,1]\n"
                                              "      Match a [3,1]\n"
                                              "      @end 0 c [4,1]\n"
                                              "    Unknown unknown [5,1]\n");
}

TEST_F(AnchoredCutOffs, TheOutermostThatHasSomeDecides) {
    // The inner one's hit is forgotten: the sequence runs out instead, and the comma ends the inner region,
    // which takes no captures of a cut-off as its subscopes are searched for.
    EXPECT_EQ(tree(semicolon, comma, "", u"[{(a,a"), "StartEnd outer [0,1] end[6,0]\n"
                                                     "  StartEnd inner [1,1] end[4,1]\n"
                                                     "    StartEnd r [2,1] end[4,0]\n"
                                                     "      Match a [3,1]\n"
                                                     "  Unknown unknown [5,1]\n");
    EXPECT_EQ(tree(comma, semicolon, "", u"[{(a,a"), "StartEnd outer [0,1] end[6,0]\n"
                                                     "  StartEnd inner [1,1] end[6,0]\n"
                                                     "    StartEnd r [2,1] end[4,1]\n"
                                                     "      Match a [3,1]\n"
                                                     "      @end 0 c [4,1]\n"
                                                     "    Unknown unknown [5,1]\n");
}

TEST_F(AnchoredCutOffs, OfOneSubsyntaxAreTriedInOrder) {
    const std::string word = cutoff("word", ",\\w", "<capture number='0' name='w'/>");
    EXPECT_EQ(tree("", comma + word, "", u"[{(,x"), "StartEnd outer [0,1] end[5,0]\n"
                                                    "  StartEnd inner [1,1] end[5,0]\n"
                                                    "    StartEnd r [2,1] end[3,1]\n"
                                                    "      @end 0 c [3,1]\n"
                                                    "    Unknown unknown [4,1]\n");
    EXPECT_EQ(tree("", word + comma, "", u"[{(,x"), "StartEnd outer [0,1] end[5,0]\n"
                                                    "  StartEnd inner [1,1] end[5,0]\n"
                                                    "    StartEnd r [2,1] end[3,2]\n"
                                                    "      @end 0 w [3,2]\n");
}

TEST_F(AnchoredCutOffs, AreNotSeenByAtomicRegions) {
    EXPECT_EQ(tree("", cutoff("cut", "a"), " atomic='true'", u"[{(aa"), "StartEnd outer [0,1] end[5,0]\n"
                                                                        "  StartEnd inner [1,1] end[5,0]\n"
                                                                        "    StartEnd r [2,1] end[5,0]\n"
                                                                        "      Match a [3,1]\n"
                                                                        "      Match a [4,1]\n");
    EXPECT_EQ(tree("", cutoff("cut", "a"), "", u"[{(aa"), "StartEnd outer [0,1] end[5,0]\n"
                                                          "  StartEnd inner [1,1] end[4,1]\n"
                                                          "    StartEnd r [2,1] end[3,1]\n");
}

// Captures

TEST(QVParseAnchored, MatchesTakeTheirCaptures) {
    const std::string pair = "<scope name='pair'><expression>(a)(b)?</expression>"
                             "<capture number='1' name='one'/><capture number='2' name='two'/></scope>";
    EXPECT_EQ(treeOfText(sequence(pair), u"(ab"), "StartEnd r [0,1] end[3,0]\n"
                                                  "  Match pair [1,2]\n"
                                                  "    @1 one [1,1]\n"
                                                  "    @2 two [2,1]\n");
    EXPECT_EQ(treeOfText(sequence(pair), u"(a"), "StartEnd r [0,1] end[2,0]\n"
                                                 "  Match pair [1,1]\n"
                                                 "    @1 one [1,1]\n");
}

TEST(QVParseAnchored, TheEndsCapturesGoToTheRegion) {
    const std::string scopes =
        "<scope name='r'><starts-with><expression>(\\()</expression><capture number='1' name='open'/>"
        "</starts-with><ends-with><expression>(\\))(!)?</expression><capture number='1' name='close'/>"
        "<capture number='2' name='mark'/></ends-with>" +
        following(single("a", "a", repeating)) + "</scope>";
    EXPECT_EQ(treeOfText(scopes, u"(a)!"), "StartEnd r [0,1] end[2,2]\n"
                                           "  @1 open [0,1]\n"
                                           "  Match a [1,1]\n"
                                           "  @end 1 close [2,1]\n"
                                           "  @end 2 mark [3,1]\n");
    const auto parse = parseOfText(syntaxWithScopes(scopes), u"(a)!");
    parse->performReadingBlockAndWait([&] {
        const QVMatch *const r = parse->rootMatch()->firstChild();
        ASSERT_NE(r->endCaptureMatches(), nullptr);
        for (const auto &capture : *r->endCaptureMatches())
            EXPECT_EQ(capture->parentMatch(), r);
    });
}

TEST(QVParseAnchored, ACutOffInTheSequenceGivesItsCaptures) {
    EXPECT_EQ(treeOfText(sequence(a + cutoff("cut", "(;)", "<capture number='1' name='c'/>")), u"(a;"),
              "StartEnd r [0,1] end[2,1]\n"
              "  Match a [1,1]\n"
              "  @end 1 c [2,1]\n");
}

TEST(QVParseAnchored, MatchesKnowTheirPlaceInTheSequence) {
    const auto parse = parseOfText(
        syntaxWithScopes(sequence(single("a", "a", optional) + single("b", "b", repeating), "greedy"),
                         "<template-scopes>" + single("t", "%") + "</template-scopes>"),
        u"(b b\n%b");
    parse->performReadingBlockAndWait([&] {
        std::vector<NSUInteger> indexes;
        for (const QVScopeMatch *const match : parse->rootMatch()->firstChild()->asScopeMatch()->submatches())
            indexes.push_back(match->anchoredMatchIdx());
        EXPECT_THAT(indexes, ElementsAre(1, NSNotFound, 1, NSNotFound, NSNotFound, 1));
    });
}
