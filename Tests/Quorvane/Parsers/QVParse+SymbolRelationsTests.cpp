// Which contexts hold which symbols, and where contexts end.

#include "Quorvane/Parsers/QVWhitespaceContext.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Tests/Quorvane/Parsers/SymbolFixtures.h"

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Words that open and close contexts: "if", "else" and "end" of the group "if", "do" and "done" of the group
/// "do", "stop" for any; "x" is a plain symbol.
std::string contextWords(const std::string &unclosed = "") {
    const auto word = [](const char *pattern, const std::string &symbol) {
        return matchText(pattern, std::string("\\b") + pattern + "\\b", symbol);
    };
    return word("if", contextSymbol("function", "start", "group='if' " + unclosed)) +
           word("else", contextSymbol("function", "next", "group='if' " + unclosed)) +
           word("end", contextSymbol("keyword", "end", "group='if'")) +
           word("do", contextSymbol("function", "start", "group='do' " + unclosed)) +
           word("done", contextSymbol("keyword", "end", "group='do'")) +
           word("stop", contextSymbol("keyword", "end")) + word("x", symbolText("variable"));
}

class SymbolRelations : public SymbolTest {
protected:
    QVParseSymbol *at(std::size_t index) const { return symbol(index).get(); }
};

} // namespace

TEST_F(SymbolRelations, AnEndClosesTheStartOfItsGroup) {
    start(contextWords(), u"if x end x");
    EXPECT_EQ(drawn(), "function if 0+2 to 5+0\n"
                       "variable x 3+1 in if\n"
                       "keyword end 5+3\n"
                       "variable x 9+1\n");
    EXPECT_EQ(at(0)->nextContextGroupSymbol(), at(2));
    EXPECT_EQ(at(0)->previousContextGroupSymbol(), nullptr);
    EXPECT_EQ(at(2)->previousContextGroupSymbol(), at(0));
    EXPECT_EQ(at(2)->nextContextGroupSymbol(), nullptr);
    EXPECT_EQ(at(0)->fullRange(), (NSRange{0, 5}));
    EXPECT_EQ(at(1)->parent(), symbol(0));
    EXPECT_EQ(at(0)->parent(), nullptr);
    for (const auto &each : parse->symbols())
        EXPECT_FALSE(each->isUnclosed());
}

TEST_F(SymbolRelations, ANextClosesOneContextAndOpensAnother) {
    start(contextWords(), u"if x else x end");
    EXPECT_EQ(drawn(), "function if 0+2 to 5+0\n"
                       "variable x 3+1 in if\n"
                       "function else 5+4 to 12+0\n"
                       "variable x 10+1 in else\n"
                       "keyword end 12+3\n");
    EXPECT_EQ(at(0)->nextContextGroupSymbol(), at(2));
    EXPECT_EQ(at(2)->previousContextGroupSymbol(), at(0));
    EXPECT_EQ(at(2)->nextContextGroupSymbol(), at(4));
    EXPECT_EQ(at(4)->previousContextGroupSymbol(), at(2));
}

TEST_F(SymbolRelations, OfTwoStartsOfAGroupTheInnerOneIsClosed) {
    start(contextWords("unclosed='truncate'"), u"if if end x");
    EXPECT_EQ(drawn(), "function if 0+2\n"
                       "function if 3+2 to 6+0 in if\n"
                       "keyword end 6+3 in if\n"
                       "variable x 10+1 in if\n");
    EXPECT_EQ(at(2)->previousContextGroupSymbol(), at(1));
    EXPECT_EQ(at(0)->nextContextGroupSymbol(), nullptr);
}

TEST_F(SymbolRelations, AnEndPassesOverOtherGroupsAndTakesThemOffWithIt) {
    start(contextWords("unclosed='truncate'"), u"if do x end x");
    EXPECT_EQ(drawn(), "function if 0+2 to 8+0\n"
                       "function do 3+2 in if\n"
                       "variable x 6+1 in do\n"
                       "keyword end 8+3\n"
                       "variable x 12+1\n");
    EXPECT_EQ(at(1)->nextContextGroupSymbol(), nullptr);
}

TEST_F(SymbolRelations, AnEndWithoutAGroupClosesTheInnermostOfAny) {
    start(contextWords(), u"if do x stop x stop");
    EXPECT_EQ(drawn(), "function if 0+2 to 15+0\n"
                       "function do 3+2 to 8+0 in if\n"
                       "variable x 6+1 in do\n"
                       "keyword stop 8+4 in if\n"
                       "variable x 13+1 in if\n"
                       "keyword stop 15+4\n");
}

TEST_F(SymbolRelations, AnEndWithoutAStartClosesNothing) {
    start(contextWords("unclosed='truncate'"), u"do end x done");
    EXPECT_EQ(drawn(), "function do 0+2 to 9+0\n"
                       "keyword end 3+3 in do\n"
                       "variable x 7+1 in do\n"
                       "keyword done 9+4\n");
    EXPECT_EQ(at(1)->previousContextGroupSymbol(), nullptr);
}

TEST_F(SymbolRelations, ANextWithoutAStartOpensAContext) {
    start(contextWords(), u"else x end");
    EXPECT_EQ(drawn(), "function else 0+4 to 7+0\nvariable x 5+1 in else\nkeyword end 7+3\n");
}

TEST_F(SymbolRelations, ContextsWithoutGroupsCloseEachOther) {
    start(matchText("a", "\\(", contextSymbol("block", "start")) +
              matchText("b", "\\)", contextSymbol("block", "end", "group='g'")) +
              matchText("c", "\\]", contextSymbol("block", "end")),
          u"((])");
    EXPECT_EQ(at(1)->nextContextGroupSymbol(), at(2));
    EXPECT_EQ(at(0)->nextContextGroupSymbol(), nullptr);
    EXPECT_EQ(at(3)->previousContextGroupSymbol(), nullptr);
}

TEST_F(SymbolRelations, NamesPairTags) {
    const std::string name = captureText(1, "name");
    start(matchText("open", "<(\\w+)>", name + contextSymbol("tag", "start", "group-by-name='true'")) +
              matchText("close", "</(\\w+)>", name + contextSymbol("tag", "end", "group-by-name='true'")),
          u"<a><b></b></a>");
    EXPECT_EQ(drawn(), "tag a 0+3 to 10+0\n"
                       "tag b 3+3 to 6+0 in a\n"
                       "tag b 6+4 in a\n"
                       "tag a 10+4\n");
}

// Priorities

TEST_F(SymbolRelations, AStartLeavesContextsOfLowerPriority) {
    const auto level = [](const char *pattern, const char *priority) {
        return matchText(pattern, pattern,
                         contextSymbol("heading", "start",
                                       std::string("priority='") + priority + "' unclosed='truncate'"));
    };
    start(level("A", "5") + level("B", "3") + level("C", "1"), u"ABCBAC");
    // The second B ends C's reach and not the first B's, which has the same priority; A leaves them all.
    EXPECT_EQ(drawn(), "heading A 0+1\n"
                       "heading B 1+1 in A\n"
                       "heading C 2+1 in B\n"
                       "heading B 3+1 in B\n"
                       "heading A 4+1 in A\n"
                       "heading C 5+1 in A\n");
}

TEST_F(SymbolRelations, ContextsThatPriorityLeftResolveByTheirOwnBehaviour) {
    start(
        matchText("A", "A", contextSymbol("heading", "start", "priority='5'")) +
            matchText("B", "B", contextSymbol("heading", "start", "priority='3' unclosed='truncate'")) +
            matchText("C", "C", contextSymbol("heading", "start", "priority='1' unclosed='extend-document'")),
        u"BCA....");
    EXPECT_EQ(drawn(), "heading B 0+1\n"
                       "heading C 1+1 to 7+0 in B\n"
                       "heading A 2+1 to 7+0\n");
}

TEST_F(SymbolRelations, PriorityCountsBehindContextsOfOtherKindsAndTakesThemAlong) {
    start(matchText("A", "A", contextSymbol("heading", "start", "priority='1' unclosed='truncate'")) +
              regionText("r", "\\(", "\\)",
                         subscopesText(includeText("", "self")) + contextSymbol("block", "subtree")) +
              matchText("B", "B", contextSymbol("heading", "start", "priority='2' unclosed='truncate'")),
          u"A(B)");
    EXPECT_EQ(drawn(), "heading A 0+1\n"
                       "block - 1+1 to 3+1 in A\n"
                       "heading B 2+1\n");
}

// Unclosed contexts

TEST_F(SymbolRelations, AnUnclosedContextExtendsToTheTextsEndAtTopLevel) {
    start(contextWords(), u"if x ...");
    EXPECT_EQ(drawn(), "function if 0+2 to 8+0\nvariable x 3+1 in if\n");
    edit({8, 0}, u"..");
    EXPECT_EQ(at(0)->endRange(), (NSRange{10, 0}));
}

TEST_F(SymbolRelations, AnUnclosedContextExtendsToItsParentsEnd) {
    start(contextWords(), u"if do x end x");
    EXPECT_EQ(drawn(), "function if 0+2 to 8+0\n"
                       "function do 3+2 to 8+0 in if\n"
                       "variable x 6+1 in do\n"
                       "keyword end 8+3\n"
                       "variable x 12+1\n");
}

TEST_F(SymbolRelations, InAParentWithoutAnEndItEndsWithTheParentsRange) {
    start(matchText("A", "AA", contextSymbol("function", "start", "unclosed='truncate'")) +
              matchText("B", "B", contextSymbol("function", "start")),
          u"AA B");
    EXPECT_EQ(drawn(), "function AA 0+2\nfunction B 3+1 to 2+0 in AA\n");
}

TEST_F(SymbolRelations, AnUnclosedContextCanExtendToTheDocumentsEnd) {
    start(contextWords("unclosed='extend-document'"), u"if do x end ...");
    EXPECT_EQ(at(1)->endRange(), (NSRange{15, 0}));
    EXPECT_EQ(at(1)->parentContextSymbol(), at(0));
}

TEST_F(SymbolRelations, WhatStandsInATruncatedContextStaysInIt) {
    // The second pass clears the mark of an open context before it comes to what is inside.
    start(contextWords("unclosed='truncate'"), u"if x");
    EXPECT_EQ(drawn(), "function if 0+2\nvariable x 3+1 in if\n");
    EXPECT_FALSE(at(0)->isUnclosed());
}

// Subtrees

namespace {

const std::string braces = regionText(
    "block", "\\{", "\\}", subscopesText(includeText("", "self")) + contextSymbol("block", "subtree"));
const std::string variables = matchText("x", "\\w+", symbolText("variable"));

} // namespace

TEST_F(SymbolRelations, ASubtreeReachesFromItsStartToItsEnd) {
    start(braces + variables, u"a{b{c}d}e");
    EXPECT_EQ(drawn(), "variable a 0+1\n"
                       "block - 1+1 to 7+1\n"
                       "variable b 2+1 in -\n"
                       "block - 3+1 to 5+1 in -\n"
                       "variable c 4+1 in -\n"
                       "variable d 6+1 in -\n"
                       "variable e 8+1\n");
    EXPECT_EQ(at(2)->parentContextSymbol(), at(1));
    EXPECT_EQ(at(4)->parentContextSymbol(), at(3));
    EXPECT_EQ(at(5)->parentContextSymbol(), at(1));
    EXPECT_EQ(at(3)->fullRange(), (NSRange{3, 3}));
}

TEST_F(SymbolRelations, ASubtreeThatTheTextCutsOffEndsWithIt) {
    start(braces + variables, u"{a");
    EXPECT_EQ(drawn(), "block - 0+1 to 2+0\nvariable a 1+1 in -\n");
}

TEST_F(SymbolRelations, ASubtreeOfASingleMatchEndsWithIt) {
    start(matchText("m", "ab", contextSymbol("block", "subtree")) + variables, u"ab c");
    EXPECT_EQ(drawn(), "block - 0+2 to 2+0\nvariable c 3+1\n");
}

TEST_F(SymbolRelations, AClosedContextIsLeftThoughOneInsideWaits) {
    // The open "(" keeps the block on the way until something closes it.
    start(braces + matchText("open", "\\(", contextSymbol("function", "start", "unclosed='truncate'")) +
              variables,
          u"{(}a");
    EXPECT_EQ(drawn(), "block - 0+1 to 2+1\n"
                       "function ( 1+1 in -\n"
                       "variable a 3+1 in (\n");
}

TEST_F(SymbolRelations, RelationsFollowEdits) {
    start(braces + variables, u"a\n\n\n{\nb\n\n\n\nc\n}");
    ASSERT_EQ(drawn(), "variable a 0+1\n"
                       "block - 4+1 to 13+1\n"
                       "variable b 6+1 in -\n"
                       "variable c 11+1 in -\n");
    const auto before = parse->symbols();
    edit({0, 1}, u"xyz");
    EXPECT_EQ(drawn(), "variable xyz 0+3\n"
                       "block - 6+1 to 15+1\n"
                       "variable b 8+1 in -\n"
                       "variable c 13+1 in -\n");
    EXPECT_EQ(symbol(3), before[3]);
    // The region's start goes, and with it the context.
    edit({6, 1}, u"");
    EXPECT_EQ(drawn(), "variable xyz 0+3\nvariable b 7+1\nvariable c 12+1\n");
    EXPECT_EQ(before[1]->match(), nullptr);
    EXPECT_EQ(before[1]->parentContextSymbol(), nullptr);
}

// Local symbols

namespace {

const std::string exporting =
    matchText("class", "class", contextSymbol("class", "start", "export-local='property'")) +
    matchText("fun", "fun", contextSymbol("function", "start", "")) +
    matchText("end", "end", contextSymbol("keyword", "end")) +
    matchText("var", "\\$\\w+", symbolText("variable", "scope='local'")) +
    matchText("glob", "@\\w+", symbolText("constant", "scope='private'"));

} // namespace

TEST_F(SymbolRelations, ALocalSymbolOfAnExportingContextChangesItsTypeAndScope) {
    start(exporting, u"class $a @b fun $c end end $d");
    EXPECT_EQ(drawn(), "class class 0+5 to 23+0\n"
                       "property $a 6+2 in class\n"
                       "constant @b 9+2 in class\n"
                       "function fun 12+3 to 19+0 in class\n"
                       "variable $c 16+2 in fun\n"
                       "keyword end 19+3 in class\n"
                       "keyword end 23+3\n"
                       "variable $d 27+2\n");
    EXPECT_EQ(at(1)->symbolScope(), QVSymbolScopeGlobal);
    EXPECT_EQ(at(2)->symbolScope(), QVSymbolScopePrivate);
    EXPECT_EQ(at(4)->symbolScope(), QVSymbolScopeLocal);
    EXPECT_EQ(at(7)->symbolScope(), QVSymbolScopeLocal);
}

TEST_F(SymbolRelations, AnExportedSymbolGoesBackToItsTypeWhenItsParentChanges) {
    start(exporting, u"class\n\n\n\n$a");
    ASSERT_EQ(drawn(), "class class 0+5 to 11+0\nproperty $a 9+2 in class\n");
    const auto variable = symbol(1);
    edit({0, 5}, u"fun");
    ASSERT_EQ(drawn(), "function fun 0+3 to 9+0\nvariable $a 7+2 in fun\n");
    EXPECT_EQ(symbol(1), variable);
    EXPECT_EQ(variable->symbolScope(), QVSymbolScopeLocal);
    edit({0, 3}, u"class");
    EXPECT_EQ(drawn(), "class class 0+5 to 11+0\nproperty $a 9+2 in class\n");
    edit({0, 5}, u"");
    EXPECT_EQ(drawn(), "variable $a 4+2\n");
    EXPECT_EQ(symbol(0), variable);
}

TEST_F(SymbolRelations, ArgumentsAreNeverExported) {
    start(exporting, u"class $a");
    QVParseSymbol &variable = *at(1);
    variable.setSymbolType(QVSymbolTypeArgument);
    QVParse::updateSymbol(variable, at(0));
    EXPECT_EQ(variable.symbolType(), QVSymbolTypeVariable);
    EXPECT_EQ(variable.symbolScope(), QVSymbolScopeLocal);
    QVParse::updateSymbol(variable, at(0));
    EXPECT_EQ(variable.symbolType(), QVSymbolTypeProperty);
}

TEST_F(SymbolRelations, ASymbolWithoutOptionsKeepsTypeAndScope) {
    start(exporting, u"class");
    QVParseSymbol made;
    made.setSymbolType(QVSymbolTypeArgument);
    made.setSymbolScope(QVSymbolScopeLocal);
    made.setRange({3, 1});
    QVParse::updateSymbol(made, at(0));
    EXPECT_EQ(made.parentContextSymbol(), at(0));
    EXPECT_EQ(made.symbolType(), QVSymbolTypeArgument);
    EXPECT_EQ(made.symbolScope(), QVSymbolScopeLocal);
    QVParse::updateSymbol(made, nullptr);
    EXPECT_EQ(made.parentContextSymbol(), nullptr);
    EXPECT_EQ(made.symbolType(), QVSymbolTypeArgument);
}

TEST_F(SymbolRelations, AParentThatSucceedsItsChildIsLoggedAndTakenAllTheSame) {
    start(exporting, u"class $a");
    const LogRecorder log;
    QVParse::updateSymbol(*at(1), at(0));
    EXPECT_THAT(log.messages(), IsEmpty());
    QVParse::updateSymbol(*at(0), at(1));
    EXPECT_THAT(log.messages(), ElementsAre(NSString(u"Parse symbol parent succeeds its child: var, class")));
    EXPECT_EQ(at(0)->parentContextSymbol(), at(1));
}

// Contexts of indented lines

namespace {

/// Where a context ends that begins with the first "def" of a text.
NSUInteger blockEnd(std::u16string_view text, const NSString &prefix = u"#", NSUInteger tabWidth = 4) {
    NSUInteger lookedAtEnd = 0;
    const NSUInteger end =
        QVEndOfWhitespaceContext(text, {text.find(u"def"), 3}, prefix, tabWidth, &lookedAtEnd);
    // What stands behind has no part in it.
    for (const char16_t *const more : {u"", u"\tx", u"y\n"}) {
        NSUInteger again = 0;
        const std::u16string other =
            std::u16string(text.substr(0, lookedAtEnd)) + (lookedAtEnd < text.size() ? more : u"");
        EXPECT_EQ(QVEndOfWhitespaceContext(other, {text.find(u"def"), 3}, prefix, tabWidth, &again), end);
    }
    return end;
}

} // namespace

TEST(WhitespaceContext, HoldsTheMoreDeeplyIndentedLines) {
    EXPECT_EQ(blockEnd(u"def\n\ta\n\t\tb\n\tc\nd\n"), 14u);
    EXPECT_EQ(blockEnd(u"\tdef\n\t\ta\n\tb\n"), 9u);
    EXPECT_EQ(blockEnd(u"def\n    a\nb"), 10u);
    // Less than a level is no indentation.
    EXPECT_EQ(blockEnd(u"def\n  a\n"), 3u);
    EXPECT_EQ(blockEnd(u"def\n  a\n", u"#", 2), 8u);
}

TEST(WhitespaceContext, EndsWithItsSymbolWhereNoLineFollows) {
    EXPECT_EQ(blockEnd(u"def"), 3u);
    EXPECT_EQ(blockEnd(u"def f\n"), 3u);
    EXPECT_EQ(blockEnd(u"def f\nx"), 3u);
}

TEST(WhitespaceContext, ReachesToTheTextsEnd) {
    EXPECT_EQ(blockEnd(u"def\n\ta"), 6u);
    EXPECT_EQ(blockEnd(u"def\n\ta\n"), 7u);
}

TEST(WhitespaceContext, TrailingBlankLinesStandOutside) {
    EXPECT_EQ(blockEnd(u"def\n\ta\n\n\t\t\nb"), 7u);
    EXPECT_EQ(blockEnd(u"def\n\ta\n\n\n"), 7u);
    EXPECT_EQ(blockEnd(u"def\n\n\nb"), 4u);
    EXPECT_EQ(blockEnd(u"def\n\n"), 4u);
}

TEST(WhitespaceContext, BlankLinesBetweenBelongToIt) { EXPECT_EQ(blockEnd(u"def\n\ta\n\n\n\tb\nc"), 12u); }

TEST(WhitespaceContext, CommentsNeitherEndNorExtendIt) {
    EXPECT_EQ(blockEnd(u"def\n\ta\n# c\n\tb\nd"), 14u);
    EXPECT_EQ(blockEnd(u"def\n\ta\n\t# c\nd"), 7u);
    EXPECT_EQ(blockEnd(u"def\n\ta\n\n# c\n\nd"), 7u);
}

TEST(WhitespaceContext, WithoutAPrefixEveryLineIsContent) {
    EXPECT_EQ(blockEnd(u"def\n\ta\n\t# c\nd", nullptr), 12u);
    EXPECT_EQ(blockEnd(u"def\n\ta\n# c\n\tb", nullptr), 7u);
    EXPECT_EQ(blockEnd(u"def\n\ta\n# c\n\tb", u""), 7u);
}

TEST(WhitespaceContext, APrefixNeedsToStandWhole) { EXPECT_EQ(blockEnd(u"def\n\ta\n-", u"--"), 7u); }

TEST(WhitespaceContext, AllLineEndingsEndLines) {
    EXPECT_EQ(blockEnd(u"def\r\n\ta\r\rb"), 8u);
    EXPECT_EQ(blockEnd(u"def\r\ta\rb"), 7u);
}

TEST_F(SymbolRelations, WhitespaceContextsNest) {
    start(matchText("def", "def\\ (\\w+)", captureText(1, "name") + contextSymbol("function", "whitespace")) +
              matchText("comment", "\\#.*") + matchText("x", "\\b[a-z]\\b", symbolText("variable")),
          u"def A\n\tx\n\tdef B\n\t\ty\n\n# c\n\tz\n\nw",
          "<comments><single><expression>#</expression></single></comments>");
    EXPECT_EQ(drawn(), "function A 0+5 to 28+0\n"
                       "variable x 7+1 in A\n"
                       "function B 10+5 to 20+0 in A\n"
                       "variable y 18+1 in B\n"
                       "variable z 26+1 in A\n"
                       "variable w 29+1\n");
}

TEST_F(SymbolRelations, AWhitespaceContextGrowsWithTheLinesBehindIt) {
    start(matchText("def", "def", contextSymbol("function", "whitespace")) +
              matchText("x", "\\b[a-z]\\b", symbolText("variable")),
          u"def\n\ta\n\n\n\n\nb");
    ASSERT_EQ(drawn(), "function def 0+3 to 7+0\nvariable a 5+1 in def\nvariable b 11+1\n");
    const auto before = symbol(0);
    edit({11, 0}, u"\t");
    EXPECT_EQ(drawn(), "function def 0+3 to 13+0\nvariable a 5+1 in def\nvariable b 12+1 in def\n");
    EXPECT_EQ(symbol(0), before);
}

// Behind an edit relations are worked out as far as they can have changed.

namespace {

const std::string indented =
    matchText("def", "def\\ (\\w+)", captureText(1, "name") + contextSymbol("function", "whitespace")) +
    matchText("mark", "\\#.*", symbolText("heading")) +
    matchText("if", "\\bif\\b", contextSymbol("statement", "start", "group='i'")) +
    matchText("fi", "\\bfi\\b", contextSymbol("keyword", "end", "group='i'")) +
    matchText("x", "\\b[a-z]\\b", symbolText("variable"));
const std::string hashComments = "<comments><single><expression>#</expression></single></comments>";

} // namespace

TEST_F(SymbolRelations, AContextThatEndsEarlierUnderAnOpenOneLetsGoOfWhatFollowsThat) {
    start(indented, u"def f\n\tif\n\t\ta\n\n\n\n\t\tb\n\tfi\n\tc\n", hashComments);
    ASSERT_EQ(drawn(), "function f 0+5 to 28+0\n"
                       "statement - 7+2 to 22+0 in f\n"
                       "variable a 12+1 in -\n"
                       "variable b 19+1 in -\n"
                       "keyword fi 22+2 in f\n"
                       "variable c 26+1 in f\n");
    // The open "if" holds the function where it is over, until it is closed itself.
    edit({15, 0}, u"W");
    EXPECT_EQ(drawn(), "function f 0+5 to 14+0\n"
                       "statement - 7+2 to 23+0 in f\n"
                       "variable a 12+1 in -\n"
                       "variable b 20+1 in -\n"
                       "keyword fi 23+2 in f\n"
                       "variable c 27+1\n");
}

TEST_F(SymbolRelations, AMarkInFrontOfAnEditComesIntoTheContextThatGrowsOverIt) {
    start(indented, u"def f\n\ta\n# m\n\n\nb\n", hashComments);
    ASSERT_EQ(drawn(), "function f 0+5 to 9+0\n"
                       "variable a 7+1 in f\n"
                       "heading # m 9+3\n"
                       "variable b 15+1\n");
    edit({15, 0}, u"\t");
    EXPECT_EQ(drawn(), "function f 0+5 to 18+0\n"
                       "variable a 7+1 in f\n"
                       "heading # m 9+3 in f\n"
                       "variable b 16+1 in f\n");
    edit({15, 1}, u"");
    EXPECT_EQ(drawn(), "function f 0+5 to 9+0\n"
                       "variable a 7+1 in f\n"
                       "heading # m 9+3\n"
                       "variable b 15+1\n");
}

TEST_F(SymbolRelations, AContextThatIsClosedByAnEditEndsTheOpenOnesInItToo) {
    start(contextWords(), u"do\nif\n\n\n\n\nx\n");
    const std::string open =
        "function do 0+2 to 12+0\nfunction if 3+2 to 12+0 in do\nvariable x 10+1 in if\n";
    ASSERT_EQ(drawn(), open);
    edit({8, 0}, u"done");
    EXPECT_EQ(drawn(), "function do 0+2 to 8+0\n"
                       "function if 3+2 to 8+0 in do\n"
                       "keyword done 8+4\n"
                       "variable x 14+1\n");
    edit({8, 4}, u"");
    EXPECT_EQ(drawn(), open);
}

TEST_F(SymbolRelations, OpenContextsEndWithTheTextThoughNothingOfThemIsLookedAt) {
    start(contextWords(), u"if\n\n\n\nx");
    ASSERT_EQ(drawn(), "function if 0+2 to 7+0\nvariable x 6+1 in if\n");
    edit({6, 1}, u"....");
    EXPECT_EQ(drawn(), "function if 0+2 to 10+0\n");
}

TEST_F(SymbolRelations, NamesFarInFrontOfTheirSymbolsFollowTheText) {
    start(matchText("at", "(?<=(\\w)\\n\\n\\n)@", captureText(1, "name") + symbolText("variable")) +
              matchText("and", "(?<=(\\w)\\n\\n\\n@)&", captureText(1, "name") + symbolText("constant")),
          u"a\n\n\n@&\n");
    ASSERT_EQ(drawn(), "variable a 4+1\nconstant a 5+1\n");
    edit({0, 1}, u"b");
    EXPECT_EQ(drawn(), "variable b 4+1\nconstant b 5+1\n");
}

TEST_F(SymbolRelations, ASymbolThatGoesKeepsItsPlaces) {
    start(contextWords(), u"x\n\n\nif\nx\nend\n");
    const auto function = symbol(1);
    ASSERT_EQ(drawnSymbol(*function), "function if 4+2 to 9+0");
    edit({0, 0}, u"....");
    ASSERT_EQ(drawnSymbol(*function), "function if 8+2 to 13+0");
    // The end goes with it, and all that follows moves.
    edit({0, parse->string().size()}, u"....");
    EXPECT_EQ(function->match(), nullptr);
    EXPECT_EQ(drawnSymbol(*function), "function if 8+2 to 13+0");
    EXPECT_EQ(function->nameRange(), (NSRange{8, 2}));
}
