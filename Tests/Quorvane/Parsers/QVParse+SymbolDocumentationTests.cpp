// Which comments document a symbol, and what they say.

#include "Tests/Quorvane/Parsers/SymbolFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

class SymbolDocumentation : public SymbolTest {
protected:
    static std::string documentation(const std::string &attributes) {
        return element("documentation", attributes, "");
    }
    /// The comment of the symbol that is called "f".
    NSString commentOf(std::u16string_view text, const std::string &documentations = "",
                       const std::string &more = "") {
        start(scopes + more, text, element("symbols", "", documentations));
        for (const auto &each : parse->symbols())
            if (each->name() == u"f")
                return each->comment();
        ADD_FAILURE() << drawn();
        return nullptr;
    }
    /// What a comment says whose marks are "/*" and "*/".
    NSString saidBy(std::u16string_view content) {
        return commentOf(u"/*" + std::u16string(content) + u"*/f");
    }

    const std::string scopes = regionText("comment.block", "/\\*", "\\*/") +
                               matchText("comment.line", "//(.*)", captureText(1, "content")) +
                               matchText("attribute", "@\\w+") +
                               matchText("f", "f\\b", symbolText("function")) + matchText("other", "\\w+") +
                               matchText("mark", "[;,]");
};

} // namespace

// Which comments

TEST_F(SymbolDocumentation, IsTheCommentRightBeforeByDefault) {
    EXPECT_EQ(commentOf(u"/*a*/ f"), u"a");
    EXPECT_EQ(commentOf(u"/*a*/\n\n\t f"), u"a");
    EXPECT_EQ(commentOf(u"f /*a*/"), NSString());
    EXPECT_EQ(commentOf(u"f"), NSString());
}

TEST_F(SymbolDocumentation, SeveralCommentsComeNearestFirstEachWithALineEnd) {
    EXPECT_EQ(commentOf(u"/*a*/\n/*b*/\nf"), u"b\na\n");
    EXPECT_EQ(commentOf(u"// a\n// b\n// c\nf"), u"c\nb\na\n");
}

TEST_F(SymbolDocumentation, WhatIsNoCommentEndsTheSearch) {
    EXPECT_EQ(commentOf(u"/*a*/ x f"), NSString());
    EXPECT_EQ(commentOf(u"/*a*/ x /*b*/ f"), u"b");
    // Text that nothing matched, too.
    EXPECT_EQ(commentOf(u"/*a*/ + f"), NSString());
}

TEST_F(SymbolDocumentation, OnlyTypesFunctionsAndValuesHaveADefault) {
    for (const auto &[type, has] : {std::pair{"class", true},
                                    {"method", true},
                                    {"property", true},
                                    {"heading", false},
                                    {"tag", false},
                                    {"bookmark", false},
                                    {"block", false},
                                    {"comment", false}}) {
        start(regionText("comment", "/\\*", "\\*/") + matchText("f", "f\\b", symbolText(type)), u"/*a*/f");
        EXPECT_EQ(symbol(0)->comment(), has ? NSString(u"a") : NSString()) << type;
    }
}

TEST_F(SymbolDocumentation, ADeclarationTakesThePlaceOfTheDefault) {
    EXPECT_EQ(commentOf(u"/*a*/ f", documentation("match='doc'")), NSString());
    EXPECT_EQ(commentOf(u"/*a*/ f", documentation("mode='before'")), u"a");
    // An element for symbols that declares none leaves the default.
    EXPECT_EQ(commentOf(u"/*a*/ f", ""), u"a");
}

TEST_F(SymbolDocumentation, ASingleMatchEndsTheSearch) {
    EXPECT_EQ(commentOf(u"/*a*/ /*b*/ f", documentation("match='comment'")), u"b");
    EXPECT_EQ(commentOf(u"// a\n/*b*/\n// c\nf", documentation("match-multiple='line' match='block'")),
              u"c\nb\n");
}

TEST_F(SymbolDocumentation, ASingleMatchComesBehindTheOthersFoundBefore) {
    EXPECT_EQ(commentOf(u"/*b*/\n@c\nf", documentation("match-multiple='attribute' match='comment'")),
              u"@c\nb\n");
}

TEST_F(SymbolDocumentation, SkippedMatchesArePassedOver) {
    EXPECT_EQ(commentOf(u"/*a*/ @x f"), NSString());
    EXPECT_EQ(commentOf(u"/*a*/ @x @y f", documentation("match='comment' skip='attribute'")), u"a");
    EXPECT_EQ(commentOf(u"/*a*/ x @y f", documentation("match='comment' skip='attribute,other'")), u"a");
}

TEST_F(SymbolDocumentation, CanComeAfterTheSymbol) {
    EXPECT_EQ(commentOf(u"/*x*/ f // a\n// b", documentation("mode='after' match-multiple='comment'")),
              u"a\nb\n");
    EXPECT_EQ(commentOf(u"f // a\n// b", documentation("mode='after' match='comment'")), u"a");
    EXPECT_EQ(commentOf(u"f ; // a", documentation("mode='after' match='comment'")), NSString());
    EXPECT_EQ(commentOf(u"f ; // a", documentation("mode='after' match='comment' skip='mark'")), u"a");
}

TEST_F(SymbolDocumentation, CanComeInsideWhatFollows) {
    const std::string body =
        regionText("body", "\\{", "\\}",
                   subscopesText(regionText("comment", "/\\*", "\\*/") +
                                 matchText("comment.line", "//(.*)", captureText(1, "content")) +
                                 matchText("other", "\\w+")));
    const std::string subtree = documentation("mode='subtree' match='comment'");
    EXPECT_EQ(commentOf(u"f{/*a*/ /*b*/}", subtree, body), u"a");
    EXPECT_EQ(commentOf(u"f{\n\n/*a*/}", subtree, body), u"a");
    EXPECT_EQ(commentOf(u"f{x /*a*/}", subtree, body), NSString());
    EXPECT_EQ(commentOf(u"f{}", subtree, body), NSString());
    EXPECT_EQ(commentOf(u"f", subtree, body), NSString());
    // The one that follows is looked into, not at; and blanks are what follows too.
    EXPECT_EQ(commentOf(u"f/*a*/", subtree, body), NSString());
    EXPECT_EQ(commentOf(u"f {/*a*/}", subtree, body), NSString());
    const std::string all = documentation("mode='subtree' match-multiple='comment'");
    EXPECT_EQ(commentOf(u"f{//a\n//b\n}", all, body), u"a\nb\n");
    // What stands in a comment comes next, and ends the search.
    EXPECT_EQ(commentOf(u"f{/*a*/ /*b*/}", all, body), u"a");
}

TEST_F(SymbolDocumentation, DeclarationsAreTriedUntilOneFinds) {
    const std::string both = documentation("mode='after' match='comment'") + documentation("match='comment'");
    EXPECT_EQ(commentOf(u"/*a*/ f /*b*/", both), u"b");
    EXPECT_EQ(commentOf(u"/*a*/ f", both), u"a");
}

TEST_F(SymbolDocumentation, WhatSeveralDeclarationsFindWithoutAnEndAddsUp) {
    EXPECT_EQ(commentOf(u"/*a*/ f /*b*/", documentation("mode='after' match-multiple='comment'") +
                                              documentation("match-multiple='comment'")),
              u"b\na\n");
}

TEST_F(SymbolDocumentation, IsFoundWhenTheSymbolIsMadeAlone) {
    start(scopes, u"/*a\n\n\n*/\n\n\n\nf");
    const auto function = symbol(0);
    ASSERT_EQ(function->comment(), u"a\n");
    edit({2, 1}, u"b");
    EXPECT_EQ(symbol(0), function);
    EXPECT_EQ(function->comment(), u"a\n");
    edit({12, 0}, u" ");
    EXPECT_EQ(symbol(0)->comment(), u"b\n");
}

TEST_F(SymbolDocumentation, MatchesAreAnsweredInTheOrderOfTheSearch) {
    start(scopes, u"// a\n// b\nf");
    const auto matches =
        parse->documentationCommentMatchesForSymbolMatch(symbol(0)->match(), QVSymbolTypeFunction);
    ASSERT_EQ(matches.size(), 2u);
    EXPECT_EQ(matches[0]->range(), (NSRange{5, 4}));
    EXPECT_EQ(matches[1]->range(), (NSRange{0, 4}));
    EXPECT_TRUE(
        parse->documentationCommentMatchesForSymbolMatch(symbol(0)->match(), QVSymbolTypeHeading).empty());
    EXPECT_TRUE(parse->documentationCommentMatchesForSymbolMatch(nullptr, QVSymbolTypeFunction).empty());
    EXPECT_EQ(parse->documentationCommentFromMatch(nullptr), NSString());
}

// What they say

TEST_F(SymbolDocumentation, ARegionSaysWhatStandsBetweenItsMarks) {
    EXPECT_EQ(saidBy(u"a"), u"a");
    EXPECT_EQ(saidBy(u" a "), u"a ");
    EXPECT_EQ(saidBy(u""), u"");
}

TEST_F(SymbolDocumentation, ACaptureOfTheContentSaysIt) {
    EXPECT_EQ(commentOf(u"//  a\nf"), u"a");
    // A match without one says all of itself.
    EXPECT_EQ(
        commentOf(u"#a\nf", documentation("match='comment.plain'"), matchText("comment.plain", "\\#\\w+")),
        u"#a");
    EXPECT_EQ(commentOf(u"#ab\nf", documentation("match='comment.plain'"),
                        matchText("comment.plain", "\\#(a)(b)",
                                  captureText(1, "x.content") + captureText(2, "content"))),
              u"a");
}

TEST_F(SymbolDocumentation, AnEmptyContentGivesWayToTheEndCaptures) {
    const std::string region =
        element("scope", named("doc.comment"),
                element("starts-with", "", expressionText("<<(a?)") + captureText(1, "content")) +
                    element("ends-with", "", expressionText("(b?)>>") + captureText(1, "content")));
    const std::string found = documentation("match='doc'");
    EXPECT_EQ(commentOf(u"<<axb>>f", found, region), u"a");
    EXPECT_EQ(commentOf(u"<<xb>>f", found, region), u"b");
    // Both are there and say nothing; so nothing is said.
    EXPECT_EQ(commentOf(u"<<x>>f", found, region), u"");
}

TEST_F(SymbolDocumentation, AScopeThatIsContentSaysWhatItsFirstChildDoes) {
    const std::string region =
        regionText("doc.content", "<<", ">>", subscopesText(matchText("inside", "\\w+")));
    const std::string found = documentation("match='doc'");
    EXPECT_EQ(commentOf(u"<<a b>>f", found, region), u"a");
    EXPECT_EQ(commentOf(u"<<>>f", found, region), u"");
}

TEST_F(SymbolDocumentation, ACaptureOfTheContentComesBeforeTheFirstChild) {
    const std::string region = element(
        "scope", named("doc.content"),
        element("starts-with", "", expressionText("<<(a?)") + captureText(1, "content")) +
            element("ends-with", "", expressionText(">>")) + subscopesText(matchText("inside", "\\w+")));
    const std::string found = documentation("match='doc'");
    EXPECT_EQ(commentOf(u"<<a b>>f", found, region), u"a");
    EXPECT_EQ(commentOf(u"<<b c>>f", found, region), u"b");
}

TEST_F(SymbolDocumentation, ARegionThatNothingClosesReachesToTheTextsEnd) {
    EXPECT_EQ(commentOf(u"f /*a", documentation("mode='after' match='comment'")), u"a");
}

TEST_F(SymbolDocumentation, BlankLinesAroundAreDropped) {
    EXPECT_EQ(saidBy(u"\n\n  \na\n \n\t\n"), u"a\n");
    EXPECT_EQ(saidBy(u"\n \n"), u"");
}

TEST_F(SymbolDocumentation, TheIndentationThatAllLinesShareIsTakenAway) {
    EXPECT_EQ(saidBy(u"\n\ta\n\t\tb\n\tc"), u"a\n    b\nc");
    EXPECT_EQ(saidBy(u"\n        a\n    b\n"), u"    a\nb\n");
    // What is less than a level is none.
    EXPECT_EQ(saidBy(u"a\n  b\n   c"), u"a\nb\nc");
}

TEST_F(SymbolDocumentation, ABlankLineInTheMiddleCountsAsNotIndentedAndGoes) {
    EXPECT_EQ(saidBy(u"\n\ta\n\n\tb"), u"    a\n    b");
}

TEST_F(SymbolDocumentation, LevelsAreCountedAndWrittenInTheParsesTabWidth) {
    start(scopes, u"");
    parse->setTabWidth(2);
    edit({0, 0}, u"/*\n  a\n    b*/f");
    EXPECT_EQ(symbol(0)->comment(), u"a\n  b");
}

TEST_F(SymbolDocumentation, AllLineEndingsEndLinesOfComments) {
    EXPECT_EQ(saidBy(u"\r\n\ta\r\n\t\tb\u2028\tc\u2029"), u"a\r\n    b\u2028c\u2029");
}
