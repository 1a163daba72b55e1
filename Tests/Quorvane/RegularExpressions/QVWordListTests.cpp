#include "Quorvane/RegularExpressions/QVWordList.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/Printing.h"

#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

const QVWordList *wordListOfStrings(const std::string &attributes, const std::string &words) {
    static std::shared_ptr<QVSyntax> syntax;
    syntax = test::syntaxWithElements("<scopes><scope name=\"w\"><strings" + attributes + ">" + words +
                                      "</strings></scope></scopes>");
    return syntax->grammar()->scopes().front()->regularExpression()->wordList();
}

} // namespace

TEST(QVWordList, HoldsWholeRunsOnly) {
    const auto list = QVWordList::wordListWithWords({u"int", u"if", u"if", u"_x9"}, false);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->words().size(), 3u);
    EXPECT_TRUE(list->containsRun(u"if"));
    EXPECT_TRUE(list->containsRun(u"_x9"));
    EXPECT_FALSE(list->containsRun(u"i"));
    EXPECT_FALSE(list->containsRun(u"iff"));
    EXPECT_FALSE(list->containsRun(u"IF"));
    EXPECT_FALSE(list->containsRun(u"zebra"));
}

TEST(QVWordList, WithoutRegardToCaseFoldsASCII) {
    const auto list = QVWordList::wordListWithWords({u"select"}, true);
    EXPECT_TRUE(list->containsRun(u"SeLeCT"));
    EXPECT_FALSE(list->containsRun(u"SeLeCTs"));
}

TEST(QVWordList, IsNotMadeOfWordsWithOtherUnits) {
    EXPECT_FALSE(QVWordList::wordListWithWords({u"a", u"b-c"}, false));
    EXPECT_FALSE(QVWordList::wordListWithWords({u"caf\u00E9"}, false));
}

TEST(QVWordList, ComesFromStringsWithBoundariesAndNothingThatTakesText) {
    const std::string words = "<string>a</string><string>bc</string>";
    EXPECT_TRUE(wordListOfStrings("", words));
    EXPECT_TRUE(wordListOfStrings(" case-insensitive=\"true\"", words));
    EXPECT_TRUE(wordListOfStrings(" suffix=\"(?!\\$)(?=\\s*\\()\"", words));
    EXPECT_FALSE(wordListOfStrings(" word-boundary=\"false\"", words));
    EXPECT_FALSE(wordListOfStrings(" prefix=\"@\"", words));
    EXPECT_FALSE(wordListOfStrings(" suffix=\"x\"", words));
    EXPECT_FALSE(wordListOfStrings(" suffix=\"(?!x)y\"", words));
    EXPECT_FALSE(wordListOfStrings(" suffix=\"(?![(])\"", words));
    EXPECT_FALSE(wordListOfStrings("", words + "<string>b-c</string>"));
}

// The plain way searches with the pattern; `treeOfText` fails where looking up finds something else.
TEST(QVWordList, LookedUpWordsGiveTheTreeThatSearchingGives) {
    const std::string scopes =
        "<scope name=\"region\"><starts-with><expression>\\(</expression></starts-with>"
        "<ends-with><expression>\\)|b(?=c)</expression></ends-with></scope>"
        "<scope name=\"word\"><strings suffix=\"(?!\\$)\"><string>if</string>"
        "<string>in</string><string>int</string></strings></scope>"
        "<scope name=\"folded\"><strings case-insensitive=\"true\"><string>kiss</string></strings>"
        "</scope>";
    EXPECT_EQ(test::treeOfText(scopes, u"if int"),
              "Match word [0,2]\nWhitespace whitespace [2,1]\nMatch word [3,3]\n");
    // A name that a dollar follows is none of the list; a run that a region's end cut in two is no whole
    // word.
    EXPECT_EQ(test::treeOfText(scopes, u"in$ (bin"),
              "Unknown unknown [0,3]\nWhitespace whitespace [3,1]\n"
              "StartEnd region [4,1] end[8,0]\n  Unknown unknown [5,3]\n");
    EXPECT_EQ(test::treeOfText(scopes, u"(bcin"), "StartEnd region [0,1] end[1,1]\nUnknown unknown [2,3]\n");
    // The long s is a letter of "kiss" without regard to case, and the list does not know it.
    EXPECT_EQ(test::treeOfText(scopes, u"kiSS ki\u017Fs x"),
              "Match folded [0,4]\nWhitespace whitespace [4,1]\nMatch folded [5,4]\n"
              "Whitespace whitespace [9,1]\nUnknown unknown [10,1]\n");
}
