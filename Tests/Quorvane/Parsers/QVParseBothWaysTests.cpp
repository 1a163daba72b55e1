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
