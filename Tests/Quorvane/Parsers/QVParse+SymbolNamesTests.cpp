// What symbols are called.

#include "Quorvane/Formatters/QVFormatter.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Tests/Quorvane/Parsers/SymbolFixtures.h"

#include <thread>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;

namespace {

class SymbolNames : public SymbolTest {
protected:
    /// The name and its range for the only symbol of a text.
    std::string nameOf(const std::string &scopes, std::u16string_view text) {
        start(scopes, text);
        if (parse->symbols().size() != 1)
            return drawn();
        return (symbol(0)->name() ? symbol(0)->name().UTF8String() : "-") + " " +
               drawnRange(*symbol(0)->nameRange());
    }
    static std::shared_ptr<const QVSimpleSelector> selector(const char16_t *text) {
        return QVSimpleSelector::simpleSelectorWithString(text);
    }
};

} // namespace

TEST_F(SymbolNames, AreCleanedOfBlanks) {
    const auto cleaned = [](std::u16string_view name) { return QVParse::trimAndCleanUpSymbolName(name); };
    EXPECT_EQ(cleaned(u"a"), u"a");
    EXPECT_EQ(cleaned(u"  a"), u"a");
    EXPECT_EQ(cleaned(u"a \t\n"), u"a");
    EXPECT_EQ(cleaned(u" a \t b\r\n  c "), u"a b c");
    EXPECT_EQ(cleaned(u"a b"), u"a b");
    EXPECT_EQ(cleaned(u"a  b"), u"a b");
    EXPECT_EQ(cleaned(u"a\tb"), u"a b");
    EXPECT_EQ(cleaned(u"a\u00A0b\u2028"), u"a b");
    EXPECT_EQ(cleaned(u""), NSString());
    EXPECT_EQ(cleaned(u" \n\t"), NSString());
}

TEST_F(SymbolNames, ComeWithTheirWords) {
    start(matchText("f", "\\w+", symbolText("function")), u"makeHTMLPage");
    EXPECT_EQ(symbol(0)->nameGrams(), (QVGrams{u"make", u"HTML", u"Page"}));
    EXPECT_TRUE(symbol(0)->displayNameGrams().isNull());
}

TEST_F(SymbolNames, FindTheirWordsForSeveralReadersAtOnce) {
    start(matchText("f", "\\w+", symbolText("function")), u"makeHTMLPage");
    std::vector<std::thread> readers;
    for (int index = 0; index < 4; ++index)
        readers.emplace_back([&] {
            EXPECT_EQ(symbol(0)->nameGrams(), (QVGrams{u"make", u"HTML", u"Page"}));
        });
    for (std::thread &reader : readers)
        reader.join();
}

TEST_F(SymbolNames, AnAnonymousSymbolHasNone) {
    const std::string scope =
        matchText("f", "f(\\w+)", captureText(1, "name") + symbolText("function", "anonymous='true'"));
    EXPECT_EQ(nameOf(scope, u"fab"), "- none");
    EXPECT_TRUE(symbol(0)->isAnonymous());
    EXPECT_TRUE(symbol(0)->nameGrams().isNull());
}

TEST_F(SymbolNames, AnAnonymousSymbolLosesTheNameThatItHad) {
    start(matchText("f", "\\w+", symbolText("function", "anonymous='true'")), u"ab");
    QVParseSymbol made;
    made.setMatch(symbol(0)->match());
    made.setName(u"before");
    made.setNameGrams(qv_grams(u"before"));
    made.setNameRange({0, 1});
    parse->associateNameForSymbol(made, nullptr);
    EXPECT_EQ(made.name(), NSString());
    EXPECT_TRUE(made.nameGrams().isNull());
    EXPECT_EQ(made.nameRange(), NSNotFoundRange);
}

TEST_F(SymbolNames, ACommentHasNone) {
    EXPECT_EQ(nameOf(matchText("c", "\\#(\\w+)", captureText(1, "name") + symbolText("comment")), u"#ab"),
              "- none");
}

TEST_F(SymbolNames, TheSelectorPicksTheFirstCapture) {
    EXPECT_EQ(nameOf(matchText("f", "(\\w+)\\ (\\w+)\\ (\\w+)",
                               captureText(1, "x") + captureText(2, "id.a") + captureText(3, "id.b") +
                                   symbolText("function", "name-selector='id'")),
                     u"one two three"),
              "two 4+3");
}

TEST_F(SymbolNames, EndCapturesComeAfterTheCaptures) {
    const std::string scope =
        element("scope", named("f"),
                element("starts-with", "", expressionText("(\\w+)\\(") + captureText(1, "other")) +
                    element("ends-with", "", expressionText("\\)(\\w+)") + captureText(1, "id")) +
                    symbolText("function", "name-selector='id'"));
    EXPECT_EQ(nameOf(scope, u"ab(cd)ef"), "ef 6+2");
}

TEST_F(SymbolNames, AMatchInsideIsTakenBeforeItsCaptures) {
    const std::string inside = matchText("id", "(\\w)(\\w)", captureText(1, "id.a") + captureText(2, "id.b"));
    EXPECT_EQ(nameOf(regionText("f", "\\(", "\\)",
                                subscopesText(inside) + symbolText("function", "name-selector='id'")),
                     u"(ab)"),
              "ab 1+2");
}

TEST_F(SymbolNames, OfTheCapturesInsideTheLastOneStands) {
    // What stands in front qualifies the name.
    const std::string inside =
        matchText("path", "(\\w)/(\\w)", captureText(1, "id.a") + captureText(2, "id.b"));
    EXPECT_EQ(nameOf(regionText("f", "\\(", "\\)",
                                subscopesText(inside) + symbolText("function", "name-selector='id'")),
                     u"(a/b c/d)"),
              "b 3+1");
}

TEST_F(SymbolNames, OfTheEndCapturesInsideTheFirstOneStandsAndComesLast) {
    const std::string inside = element(
        "scope", named("path"),
        element("starts-with", "", expressionText("\\[(\\w)") + captureText(1, "id.a")) +
            element("ends-with", "",
                    expressionText("(\\w)(\\w)\\]") + captureText(1, "id.b") + captureText(2, "id.c")));
    EXPECT_EQ(nameOf(regionText("f", "\\(", "\\)",
                                subscopesText(inside) + symbolText("function", "name-selector='id'")),
                     u"([abc])"),
              "b 3+1");
}

TEST_F(SymbolNames, TheFirstMatchInsideEndsTheSearch) {
    const std::string inside = matchText("id", "\\w");
    EXPECT_EQ(nameOf(regionText("f", "\\(", "\\)",
                                subscopesText(inside) + symbolText("function", "name-selector='id'")),
                     u"(a b)"),
              "a 1+1");
}

TEST_F(SymbolNames, ASymbolInsideKeepsItsOwnNames) {
    const std::string nested =
        regionText("f", "\\(", "\\)",
                   subscopesText(includeText("", "self")) + symbolText("function", "name-selector='id'"));
    start(nested + matchText("id", "\\w"), u"((a)b)");
    EXPECT_EQ(drawn(), "function b 0+6\nfunction a 1+3\n");
}

TEST_F(SymbolNames, ARegionInsideCountsAsAWhole) {
    EXPECT_EQ(nameOf(regionText("f", "\\(", "\\)",
                                subscopesText(regionText("id", "\\[", "\\]")) +
                                    symbolText("function", "name-selector='id'")),
                     u"([a b])"),
              "[a b] 1+5");
}

TEST_F(SymbolNames, WithoutASelectorTheClassNameIsLookedFor) {
    const std::string inside = matchText("word", "\\w+") + matchText("tag.name", "'\\w+'");
    EXPECT_EQ(
        nameOf(regionText("f", "\\(", "\\)", subscopesText(inside) + symbolText("function")), u"(ab 'cd')"),
        "'cd' 4+4");
}

TEST_F(SymbolNames, ASelectorThatFindsNothingGivesWayToTheClassName) {
    EXPECT_EQ(nameOf(matchText("f", "(\\w+)\\ (\\w+)",
                               captureText(1, "name") + captureText(2, "other") +
                                   symbolText("function", "name-selector='id'")),
                     u"ab cd"),
              "ab 0+2");
}

TEST_F(SymbolNames, TheWholeMatchIsTheLastResort) {
    EXPECT_EQ(nameOf(matchText("h", "\\#.*", symbolText("heading")), u"#  A \t title"), "# A title 0+12");
    EXPECT_EQ(nameOf(regionText("f", "fun", "end", symbolText("function")), u"fun x end"), "fun 0+3");
}

TEST_F(SymbolNames, ARegionThatBeginsWithNothingIsCalledByAllOfIt) {
    EXPECT_EQ(nameOf(regionText("f", "(?=a)", "$", symbolText("function")), u"a  b"), "a b 0+4");
}

TEST_F(SymbolNames, BlanksAloneAreNoNameButHaveAPlace) {
    EXPECT_EQ(nameOf(matchText("f", "<(\\ +)>", captureText(1, "name") + symbolText("function")), u"<  >"),
              "- 1+2");
}

TEST_F(SymbolNames, ExpressionsStatementsAndBlocksHaveOneByASelectorAlone) {
    for (const char *const type : {"expression", "statement", "block"}) {
        const std::string captures = captureText(1, "name") + captureText(2, "id");
        EXPECT_EQ(nameOf(matchText("e", "(\\w+)\\ (\\w+)", captures + symbolText(type)), u"ab cd"), "- none")
            << type;
        EXPECT_EQ(
            nameOf(matchText("e", "(\\w+)\\ (\\w+)", captures + symbolText(type, "name-selector='missing'")),
                   u"ab cd"),
            "- none")
            << type;
        EXPECT_EQ(nameOf(matchText("e", "(\\w+)\\ (\\w+)", captures + symbolText(type, "name-selector='id'")),
                         u"ab cd"),
                  "cd 3+2")
            << type;
    }
}

TEST_F(SymbolNames, AnExpressionWhoseNameWentKeepsTheOldOneAndItsPlace) {
    start(regionText("e", "\\(", "\\)",
                     subscopesText(matchText("id", "\\w+")) + symbolText("block", "name-selector='id'")) +
              matchText("x", "x"),
          u"x\nx\nx\n(\n\n\nab)");
    ASSERT_EQ(symbol(0)->name(), u"ab");
    ASSERT_EQ(symbol(0)->nameRange(), (NSRange{10, 2}));
    const auto before = symbol(0);
    edit({10, 2}, u"");
    EXPECT_EQ(symbol(0), before);
    EXPECT_EQ(symbol(0)->name(), u"ab");
    EXPECT_EQ(symbol(0)->nameRange(), (NSRange{10, 2}));
    // The place is nobody's any more: it does not move.
    edit({0, 0}, u"xxx");
    EXPECT_EQ(symbol(0), before);
    EXPECT_EQ(symbol(0)->range(), (NSRange{9, 5}));
    EXPECT_EQ(symbol(0)->nameRange(), (NSRange{10, 2}));
}

TEST_F(SymbolNames, AreRenewedWhereTheSymbolItselfStands) {
    start(regionText("f", "\\(", "\\)", subscopesText(matchText("name", "\\w+")) + symbolText("function")),
          u"(\n\n\nab)");
    const auto before = symbol(0);
    edit({5, 0}, u"xY");
    EXPECT_EQ(symbol(0), before);
    EXPECT_EQ(symbol(0)->name(), u"axYb");
    EXPECT_EQ(symbol(0)->nameRange(), (NSRange{4, 4}));
    EXPECT_EQ(symbol(0)->nameGrams(), (QVGrams{u"ax", u"Yb"}));
}

TEST_F(SymbolNames, AMatchThatLeavesTheTextIsLoggedAndGivesNone) {
    start(matchText("f", "\\w+", symbolText("function")), u"ab");
    const QVScopeMatchReference strange = QVScopeMatch::initWithScope(symbol(0)->match()->scope());
    strange->setRange({1, 5});
    QVParseSymbol made;
    made.setMatch(strange.get());
    made.setName(u"before");
    const LogRecorder log;
    parse->associateNameForSymbol(made, nullptr);
    EXPECT_THAT(
        log.messages(),
        ElementsAre(NSString(u"Parse symbol name range exceeds bounds of the string storage: {1, 5}, 2")));
    EXPECT_EQ(made.name(), u"before");
    EXPECT_EQ(made.nameRange(), NSNotFoundRange);
    strange->setRange({1, 1});
    parse->associateNameForSymbol(made, nullptr);
    EXPECT_EQ(made.name(), u"b");
}

TEST_F(SymbolNames, WithoutOptionsAndWithoutAMatchNothingChanges) {
    start(matchText("f", "\\w+", symbolText("function")), u"ab");
    QVParseSymbol made;
    made.setName(u"x");
    parse->associateNameForSymbol(made, nullptr);
    EXPECT_EQ(made.name(), u"x");
    EXPECT_TRUE(parse->argumentsForSymbol(made).empty());
    EXPECT_EQ(QVParse::rangeWithinSymbol(made, QVLexicalClassName, nullptr), NSNotFoundRange);
}

TEST_F(SymbolNames, ClassAndSelectorMayBeLookedForTogether) {
    start(matchText("f", "(\\w+)\\ (\\w+)",
                    captureText(1, "id") + captureText(2, "name") + symbolText("block")),
          u"ab cd");
    const QVParseSymbol &found = *symbol(0);
    EXPECT_EQ(QVParse::rangeWithinSymbol(found, QVLexicalClassName, nullptr), (NSRange{3, 2}));
    EXPECT_EQ(QVParse::rangeWithinSymbol(found, nullptr, selector(u"id").get()), (NSRange{0, 2}));
    EXPECT_EQ(QVParse::rangeWithinSymbol(found, QVLexicalClassName, selector(u"id").get()), (NSRange{0, 2}));
    EXPECT_EQ(QVParse::rangeWithinSymbol(found, nullptr, nullptr), NSNotFoundRange);
}

// Bookmarks

namespace {

class Bookmarks : public SymbolTest {
protected:
    /// Bookmark and name ranges of the first match of a text.
    std::string bookmarkOf(const std::string &scopes, std::u16string_view text) {
        start(scopes, text);
        NSRange name{7, 7};
        const NSRange range =
            parse->bookmarkRangeForMatch(parse->rootMatch()->firstChild()->asScopeMatch(), &name);
        return drawnRange(range) + " " + drawnRange(name);
    }
    const std::string region = regionText("comment", "/\\*", "\\*/");
    const std::string line = matchText("comment", "//(.*)", captureText(1, "content"));
};

} // namespace

TEST_F(Bookmarks, BeginWithAnExclamationMarkBehindBlanks) {
    EXPECT_EQ(bookmarkOf(region, u"/*!a*/"), "2+2 3+1");
    EXPECT_EQ(bookmarkOf(region, u"/* \t!\t a b */"), "4+7 7+4");
    EXPECT_EQ(bookmarkOf(region, u"/*a!*/"), "none none");
    EXPECT_EQ(bookmarkOf(region, u"/*\n!a*/"), "none none");
}

TEST_F(Bookmarks, OfSeveralMarksTheLastCounts) { EXPECT_EQ(bookmarkOf(region, u"/*! !!a*/"), "5+2 6+1"); }

TEST_F(Bookmarks, TheNameEndsWithItsLine) {
    EXPECT_EQ(bookmarkOf(region, u"/*!a b\nc*/"), "2+6 3+3");
    EXPECT_EQ(bookmarkOf(region, u"/*!a\rc*/"), "2+4 3+1");
    EXPECT_EQ(bookmarkOf(region, u"/*!a\r\nc*/"), "2+5 3+1");
    // What ends lines elsewhere ends none here.
    EXPECT_EQ(bookmarkOf(region, u"/*!a\u2028b\u0085c\u000Cd*/"), "2+8 3+7");
    // The mark alone, and then a line: the name is empty, and there.
    EXPECT_EQ(bookmarkOf(region, u"/*!\nc*/"), "2+3 3+0");
}

TEST_F(Bookmarks, WithoutMoreThanMarksAndBlanksThereIsNoName) {
    EXPECT_EQ(bookmarkOf(region, u"/*! */"), "2+2 none");
    EXPECT_EQ(bookmarkOf(region, u"/* ! ! */"), "5+2 none");
    EXPECT_EQ(bookmarkOf(region, u"/*  */"), "none none");
    EXPECT_EQ(bookmarkOf(region, u"/**/"), "none none");
}

TEST_F(Bookmarks, ACommentThatNothingClosesReachesToTheTextsEnd) {
    EXPECT_EQ(bookmarkOf(region, u"/*!a"), "2+2 3+1");
}

TEST_F(Bookmarks, ASingleMatchNeedsACaptureOfItsContent) {
    EXPECT_EQ(bookmarkOf(line, u"// !a"), "3+2 4+1");
    EXPECT_EQ(bookmarkOf(line, u"//"), "none none");
    EXPECT_EQ(bookmarkOf(matchText("comment", "//.*"), u"//!a"), "none none");
    EXPECT_EQ(bookmarkOf(matchText("comment", "//(.*)", captureText(1, "contents")), u"//!a"), "none none");
}

TEST_F(Bookmarks, SeveralContentCapturesAreOneContent) {
    EXPECT_EQ(
        bookmarkOf(matchText("comment", "//(!)-(a)", captureText(1, "content") + captureText(2, "x.content")),
                   u"//!-a"),
        "2+3 3+2");
}

TEST_F(Bookmarks, OtherMatchesAreNone) {
    start(region, u"x");
    NSRange name{7, 7};
    EXPECT_EQ(parse->bookmarkRangeForMatch(parse->rootMatch(), &name), NSNotFoundRange);
    EXPECT_EQ(name, NSNotFoundRange);
    EXPECT_EQ(parse->bookmarkRangeForMatch(nullptr, nullptr), NSNotFoundRange);
}

// Formatters

namespace {

class DisplayNames : public SymbolTest {
protected:
    /// The display name of the first symbol, by components such as "value='x'".
    NSString displayName(const std::string &scope, const std::vector<std::string> &components,
                         std::u16string_view text) {
        std::string content;
        for (const std::string &attributes : components)
            content += element("component", attributes, "");
        std::string whole = scope;
        const std::size_t place = whole.find("$display");
        whole.replace(place, 8, element("display-name", "", content));
        start(whole, text);
        return symbol(0)->displayName();
    }
    const std::string pair = matchText("f", "(\\w+)\\ (\\w+)",
                                       captureText(1, "name") + captureText(2, "id.a") +
                                           element("symbol", "type='function'", "$display"));
};

} // namespace

TEST_F(DisplayNames, ThereIsNoneWithoutAFormatter) {
    start(matchText("f", "\\w+", symbolText("function")), u"ab");
    EXPECT_EQ(symbol(0)->displayName(), NSString());
}

TEST_F(DisplayNames, AreMadeOfLiteralsTheNameAndPiecesOfTheSymbol) {
    EXPECT_EQ(displayName(pair, {"value='fn '", "variable='name'", "selector='id' prepend='(' append=')'"},
                          u"ab cd"),
              u"fn ab(cd)");
}

TEST_F(DisplayNames, ComponentsWithoutATextAreLeftOutWithTheirWrapping) {
    EXPECT_EQ(displayName(
                  pair,
                  {"prepend='a'", "variable='type' append='b'", "selector='missing' append='c'", "value='d'"},
                  u"ab cd"),
              u"d");
    EXPECT_EQ(displayName(pair, {}, u"ab cd"), u"");
}

TEST_F(DisplayNames, ANamelessSymbolLeavesTheNameOut) {
    EXPECT_EQ(
        displayName(matchText("f", "<(\\ )>",
                              captureText(1, "name") + element("symbol", "type='function'", "$display")),
                    {"value='['", "variable='name' append='x'", "value=']'"}, u"< >"),
        u"[]");
}

TEST_F(DisplayNames, RewriteAllMatchesOfAPattern) {
    EXPECT_EQ(displayName(pair, {"variable='name' replace='(b+)' replace-with='[$1$1]'"}, u"abbcb d"),
              u"a[bbbb]c[bb]");
    EXPECT_EQ(displayName(pair, {"variable='name' replace='x' replace-with='y'"}, u"abc d"), u"abc");
    EXPECT_EQ(displayName(pair, {"variable='name' replace='b'"}, u"abc d"), u"abc");
    EXPECT_EQ(displayName(pair, {"variable='name' replace-with='b'"}, u"abc d"), u"abc");
    EXPECT_EQ(displayName(pair, {"variable='name' replace='b' replace-with='' append='!'"}, u"abc d"),
              u"ac!");
}

TEST_F(DisplayNames, EachSelectorTakesItsFirstMatchInsideTheSymbol) {
    const std::string inside =
        subscopesText(regionText("nested", "\\[", "\\]",
                                 subscopesText(matchText("id.hidden", "\\w+")) + symbolText("block")) +
                      matchText("id", "(\\w)(\\w)", captureText(1, "first") + captureText(2, "second")));
    const std::string scope =
        regionText("f", "\\(", "\\)", inside + element("symbol", "type='function'", "$display"));
    EXPECT_EQ(displayName(scope, {"selector='second'", "selector='first'", "selector='id' prepend=' '"},
                          u"([xy] ab cd)"),
              u"ba ab");
    EXPECT_EQ(displayName(scope, {"selector='hidden'", "value='.'"}, u"([xy])"), u".");
}

TEST_F(DisplayNames, OneSelectorMayStandInSeveralComponents) {
    EXPECT_EQ(displayName(pair, {"selector='id'", "value='/'", "selector='id'"}, u"ab cd"), u"cd/cd");
}

TEST_F(DisplayNames, EndCapturesAreLookedAtBehindTheCaptures) {
    const std::string scope =
        element("scope", named("f"),
                element("starts-with", "", expressionText("(\\w+)\\(") + captureText(1, "a")) +
                    element("ends-with", "", expressionText("\\)(\\w+)") + captureText(1, "b")) +
                    element("symbol", "type='function'", "$display"));
    EXPECT_EQ(displayName(scope, {"selector='b'", "selector='a'"}, u"x()y"), u"yx");
}

TEST_F(DisplayNames, SelectorsLookAtTheEndCapturesOfMatchesInsideToo) {
    const std::string inside =
        subscopesText(element("scope", named("inner"),
                              element("starts-with", "", expressionText("(\\w)<") + captureText(1, "a")) +
                                  element("ends-with", "", expressionText(">(\\w)") + captureText(1, "b"))));
    const std::string scope =
        regionText("f", "\\(", "\\)", inside + element("symbol", "type='function'", "$display"));
    EXPECT_EQ(displayName(scope, {"selector='b'", "selector='a'"}, u"(x<>y)"), u"yx");
}

TEST_F(DisplayNames, FollowTheNameAndThePiecesThatTheyAreMadeOf) {
    // A region, which keeps its symbol while what it holds changes.
    const std::string scope =
        regionText("f", "\\(", "\\)",
                   subscopesText(matchText("name", "[a-z]+") + matchText("id", "[0-9]+")) +
                       element("symbol", "type='function'", "$display"));
    ASSERT_EQ(displayName(scope, {"variable='name'", "value='.'"}, u"(\n\n\nab\n\n\n12)"), u"ab.");
    edit({5, 0}, u"x");
    EXPECT_EQ(symbol(0)->displayName(), u"axb.");
    ASSERT_EQ(displayName(scope, {"variable='name'", "selector='id'"}, u"(\n\n\nab\n\n\n12)"), u"ab12");
    edit({10, 0}, u"3");
    EXPECT_EQ(symbol(0)->displayName(), u"ab132");
}
