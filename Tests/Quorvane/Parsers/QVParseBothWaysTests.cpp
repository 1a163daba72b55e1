// Texts and patterns for which remembering searches takes care to find what searching afresh would. Every
// tree here is made both ways, and the fixture fails where they differ.
#include "Tests/Support/ParseFixture.h"

#include <gtest/gtest.h>

using namespace quorvane::test;

TEST(QVParseBothWays, APatternThatMovesItsMatchsStartKeepsItsCaptures) {
    EXPECT_EQ(treeOfText("<scope name=\"it\"><expression>a\\K(b)</expression>"
                         "<capture number=\"1\" name=\"group\"/></scope>",
                         u"ab b ab"),
              "Unknown unknown [0,1]\n"
              "Match it [1,1]\n"
              "  @1 group [1,1]\n"
              "Whitespace whitespace [2,1]\n"
              "Unknown unknown [3,1]\n"
              "Whitespace whitespace [4,1]\n"
              "Unknown unknown [5,1]\n"
              "Match it [6,1]\n"
              "  @1 group [6,1]\n");
}

TEST(QVParseBothWays, ARegionWhoseStartMovesKnowsWhatItsEndIsMadeOf) {
    EXPECT_EQ(treeOfText("<scope name=\"it\"><starts-with><expression>&lt;\\K(\\w)</expression></starts-with>"
                         "<ends-with><template>$1></template></ends-with></scope>",
                         u"<x y> x>"),
              "Unknown unknown [0,1]\n"
              "StartEnd it [1,1] end[6,2]\n"
              "  Whitespace whitespace [2,1]\n"
              "  Unknown unknown [3,2]\n"
              "  Whitespace whitespace [5,1]\n");
}

TEST(QVParseBothWays, HalfACharacterInAnAnchoredRegionHurtsNothing) {
    // Compiled and interpreted patterns step over the first half of a character in ways of their own, so
    // which places the dots take is nobody's promise; that both ways take the same is.
    const std::string tree = treeOfText(
        "<scope name=\"it\"><starts-with><expression>&lt;</expression></starts-with>"
        "<ends-with><expression>></expression></ends-with>"
        "<subscopes anchored=\"true\"><scope name=\"dot\" repeat=\"true\"><expression>.</expression></scope>"
        "</subscopes></scope>",
        std::u16string(u"<a") + char16_t(0xD83D) + u"bcd>");
    EXPECT_TRUE(tree.starts_with("StartEnd it [0,1] end[6,1]\n  Match dot [1,1]\n  Match dot [2,")) << tree;
}

TEST(QVParseBothWays, AVerbThatSkipsAheadDoesNotLeaveItsPlaceInAnAnchoredRegion) {
    // The end does not match at the "a", so the letter is the first scope's; behind it stands an end.
    EXPECT_EQ(treeOfText("<scope name=\"it\"><starts-with><expression>&lt;</expression></starts-with>"
                         "<ends-with><expression>a(*SKIP)(*F)|\\w</expression></ends-with>"
                         "<subscopes anchored=\"true\"><scope name=\"letter\" repeat=\"true\">"
                         "<expression>a</expression></scope></subscopes></scope>",
                         u"<aab"),
              "StartEnd it [0,1] end[3,1]\n"
              "  Match letter [1,1]\n"
              "  Match letter [2,1]\n");
}

TEST(QVParseBothWays, OfTwoCutOffsAtOnePlaceTheFirstEndsTheRegion) {
    const auto grammar = [](const char *first, const char *second) {
        return std::string("<scope name=\"it\"><starts-with><expression>&lt;</expression></starts-with>"
                           "<ends-with><expression>></expression></ends-with><subscopes>"
                           "<cut-off name=\"one\"><expression>") +
               first + "</expression></cut-off><cut-off name=\"two\"><expression>" + second +
               "</expression></cut-off></subscopes></scope>";
    };
    EXPECT_EQ(treeOfText(grammar("ab", "a*").c_str(), u"<ab"), "StartEnd it [0,1] end[1,2]\n");
    EXPECT_EQ(treeOfText(grammar("a*", "ab").c_str(), u"<ab"), "StartEnd it [0,1] end[1,1]\n"
                                                               "Unknown unknown [2,1]\n");
    EXPECT_EQ(treeOfText(grammar("(?=b)", "ab").c_str(), u"<ab"), "StartEnd it [0,1] end[1,2]\n");
}

TEST(QVParseBothWays, ACutOffThatOnlyLooksEndsTheRegionAtTheLineEnding) {
    EXPECT_EQ(treeOfText("<scope name=\"it\"><starts-with><expression>&lt;</expression></starts-with>"
                         "<ends-with><expression>></expression></ends-with><subscopes>"
                         "<scope name=\"letter\"><expression>\\w</expression></scope>"
                         "<cut-off name=\"line\"><expression>$</expression></cut-off></subscopes></scope>",
                         u"<a\n>"),
              "StartEnd it [0,1] end[2,0]\n"
              "  Match letter [1,1]\n"
              "Newline newline [2,1]\n"
              "Unknown unknown [3,1]\n");
}

TEST(QVParseBothWays, RegionsThatBeginByLookingHoldEachOtherOnceAtAPlace) {
    // Inside of itself, where it begins, the region is refused, so the letter is matched.
    EXPECT_EQ(treeOfText("<scope name=\"it\"><starts-with><expression>(?=\\w)</expression></starts-with>"
                         "<ends-with><expression>;</expression></ends-with><subscopes>"
                         "<include syntax=\"self\"/>"
                         "<scope name=\"letter\"><expression>\\w</expression></scope></subscopes></scope>",
                         u"a;b"),
              "StartEnd it [0,0] end[1,1]\n"
              "  Match letter [0,1]\n"
              "StartEnd it [2,0] end[3,0]\n"
              "  Match letter [2,1]\n");
}

TEST(QVParseBothWays, APatternThatBeginsWithAnyTextIsSearchedForFromEachPlace) {
    // From the line's start it runs to no digit, and no other place is tried; from behind the region one is.
    EXPECT_EQ(treeOfText("<scope name=\"digit\"><expression>(?:.*?)++\\d</expression></scope>"
                         "<scope name=\"it\"><starts-with><expression>&lt;</expression></starts-with>"
                         "<ends-with><expression>></expression></ends-with></scope>",
                         u"<>1"),
              "StartEnd it [0,1] end[1,1]\n"
              "Match digit [2,1]\n");
}

TEST(QVParseBothWays, PatternsForALinesStartKnowMoreLineEndingsThanDocumentsDo) {
    EXPECT_EQ(treeOfText("<scope name=\"first\"><expression>^\\w</expression></scope>", u"aa\va\x2028"
                                                                                        u"a\na"),
              "Match first [0,1]\n"
              "Unknown unknown [1,2]\n"
              "Match first [3,1]\n"
              "Unknown unknown [4,1]\n"
              "Match first [5,1]\n"
              "Newline newline [6,1]\n"
              "Match first [7,1]\n");
}

TEST(QVParseBothWays, BehindARegionALineHasNoStart) {
    EXPECT_EQ(treeOfText("<scope name=\"first\"><expression>^\\w</expression></scope>"
                         "<scope name=\"moved\"><expression>^\\x20*\\K:</expression></scope>"
                         "<scope name=\"it\"><starts-with><expression>&lt;</expression></starts-with>"
                         "<ends-with><expression>></expression></ends-with></scope>",
                         u"<>a:\na\n  :"),
              "StartEnd it [0,1] end[1,1]\n"
              "Unknown unknown [2,2]\n"
              "Newline newline [4,1]\n"
              "Match first [5,1]\n"
              "Newline newline [6,1]\n"
              "Whitespace whitespace [7,2]\n"
              "Match moved [9,1]\n");
}

TEST(QVParseBothWays, PatternsForLineStartsAreAskedTogetherAndTheFirstInOrderHits) {
    // Enough lines for them to be compiled into one.
    const auto scope = [](const char *name, const char *pattern) {
        return std::string("<scope name=\"") + name + "\"><expression>" + pattern + "</expression></scope>";
    };
    const std::string scopes = scope("one", "^\\x20*\\Ka(?=1)") + scope("two", "^\\x20*\\K(\\w)(?=[12])") +
                               scope("three", "^\\x20*\\K[ab]\\w?") + scope("letter", "\\w");
    std::u16string text;
    std::string tree;
    std::size_t place = 0;
    const auto line = [&](std::u16string_view content, std::initializer_list<const char *> matches) {
        text += content;
        text += u'\n';
        for (const char *match : matches) {
            const std::string name(match);
            const std::size_t length = name == "three" && content.size() > 1 ? 2 : 1;
            tree += (name == "blank" ? "Whitespace whitespace [" : "Match " + name + " [") +
                    std::to_string(place) + "," + std::to_string(length) + "]\n";
            place += length;
        }
        tree += "Newline newline [" + std::to_string(place++) + ",1]\n";
    };
    for (int turn = 0; turn < 12; ++turn) {
        line(u"a1", {"one", "letter"});
        line(u"c2", {"two", "letter"});
        line(u"b3", {"three"});
        line(u"c3", {"letter", "letter"});
        line(u" a1", {"blank", "one", "letter"});
        line(u"a", {"three"});
        line(u"", {});
    }
    EXPECT_EQ(treeOfText(scopes, text), tree);
}

TEST(QVParseBothWays, AnEndBehindHalfACharacterKeepsItsCaptures) {
    const std::string tree =
        treeOfText("<scope name=\"it\"><starts-with><expression>&lt;</expression></starts-with>"
                   "<ends-with><expression>\"|(?&lt;![^a])</expression>"
                   "<capture number=\"0\" name=\"group\"/></ends-with></scope>",
                   std::u16string(u"<b") + char16_t(0xD83D));
    EXPECT_EQ(tree, "StartEnd it [0,1] end[3,0]\n"
                    "  Unknown unknown [1,2]\n"
                    "  @end 0 group [3,0]\n");
}

TEST(QVParseBothWays, AStartThatIsMatchedAmongOthersKnowsWhatItsEndIsMadeOf) {
    // Once they are compiled into one, another pattern's group stands before the region's.
    EXPECT_EQ(treeOfText("<scope name=\"other\"><expression>&lt;(\\w)!</expression>"
                         "<capture number=\"1\" name=\"group\"/></scope>"
                         "<scope name=\"it\"><starts-with><expression>&lt;(\\w)></expression></starts-with>"
                         "<ends-with><template>&lt;/$1></template></ends-with></scope>",
                         u"<a></b></a><b></a></b><c!<c></></c>"),
              "StartEnd it [0,3] end[7,4]\n"
              "  Unknown unknown [3,4]\n"
              "StartEnd it [11,3] end[18,4]\n"
              "  Unknown unknown [14,4]\n"
              "Match other [22,3]\n"
              "  @1 group [23,1]\n"
              "StartEnd it [25,3] end[31,4]\n"
              "  Unknown unknown [28,3]\n");
}

TEST(QVParseBothWays, ARegionHoldsTemplateScopesAgainBehindOneOfItsKindThatStoodInSuch) {
    const auto region = [](const char *name, const char *start, const char *end, const char *content) {
        return std::string("<scope name=\"") + name + "\"><starts-with><expression>" + start +
               "</expression></starts-with><ends-with><expression>" + end +
               "</expression></ends-with><subscopes>" + content + "</subscopes></scope>";
    };
    const char *const include = "<include syntax=\"self\" collection=\"c\"/>";
    const auto syntax = syntaxWithElements(
        "<collections><collection name=\"c\">" + region("it", "\\[", "\\]", "") +
        "</collection></collections><template-scopes>" + region("template", "\\{", "\\}", include) +
        "</template-scopes><scopes>" + region("plain", "\\(", "\\)", include) + "</scopes>");
    EXPECT_EQ(treeOfText(syntax, u"{[{]}([{}])([{}])"), "StartEnd template [0,1] end[4,1]\n"
                                                        "  StartEnd it [1,1] end[3,1]\n"
                                                        "    Unknown unknown [2,1]\n"
                                                        "StartEnd plain [5,1] end[10,1]\n"
                                                        "  StartEnd it [6,1] end[9,1]\n"
                                                        "    StartEnd template [7,1] end[8,1]\n"
                                                        "StartEnd plain [11,1] end[16,1]\n"
                                                        "  StartEnd it [12,1] end[15,1]\n"
                                                        "    StartEnd template [13,1] end[14,1]\n");
}
