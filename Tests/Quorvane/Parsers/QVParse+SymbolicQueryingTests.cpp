// Contexts, definitions and occurrences.

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Quorvane/Parsers/SymbolFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// A small language: "class A { }", "fun f(a) { }", "let x" local, "own y" private, "def z" global, words as
/// identifiers, and comments.
class SymbolicQuerying : public SymbolTest {
protected:
    void start(std::u16string_view text, const std::string &symbols = "") {
        SymbolTest::start(scopes, text, symbols);
    }

    /// Where a piece of the text stands for the so-manieth time, counted from 1.
    NSUInteger place(std::u16string_view piece, int turn = 1) const {
        std::size_t found = parse->string().find(piece);
        for (; turn > 1; --turn)
            found = parse->string().find(piece, found + 1);
        EXPECT_NE(found, std::u16string_view::npos);
        return found;
    }

    /// "type name@location" of what defines the identifier, and " in name" of the context.
    std::string definition(NSUInteger location) const {
        NSRange range{7, 7};
        auto context = parse->symbols().empty() ? nullptr : parse->symbols().front();
        const auto found = parse->symbolDefiningIdentifierAtLocation(location, &range, &context);
        if (!found) {
            EXPECT_EQ(context, nullptr);
            return range.location == NSNotFound ? "no identifier" : "none";
        }
        EXPECT_EQ(parse->string().substr(range.location, range.length), found->name().view());
        return QVSymbolTypeToString(found->symbolType()).UTF8String() + " " + found->name().UTF8String() +
               "@" + std::to_string(found->range().location) +
               (context ? " in " + context->name().UTF8String() : "");
    }

    /// The places where the identifier stands.
    std::string occurrences(NSUInteger location, NSUInteger options = 0) const {
        std::string text;
        for (const NSRange &range :
             parse->rangesForOccurrancesOfIdentifierAtLocation(location, options, nullptr))
            text += (text.empty() ? "" : " ") + std::to_string(range.location);
        return text;
    }

    std::string contextAt(NSUInteger location) const {
        const auto context = parse->deepestSymbolContextContainingLocation(location);
        return !context ? "none" : context->name() ? context->name().UTF8String() : "-";
    }

    const std::string name = captureText(1, "name.identifier");
    const std::string body = element("subscopes", "", includeText("", "self"));
    const std::string scopes =
        regionText("comment", "/\\*", "\\*/") +
        regionText("class", "class\\ (?=\\w)", "\\}",
                   body + symbolText("class", "name-selector='title'", contextText("behavior='subtree'"))) +
        regionText("function", "fun\\ (?=\\w)", "\\}",
                   body +
                       symbolText("function", "name-selector='title'", contextText("behavior='subtree'"))) +
        matchText("let", "let\\ (\\w+)",
                  captureText(1, "identifier") +
                      symbolText("variable", "scope='local' name-selector='identifier'")) +
        matchText("own", "own\\ (\\w+)",
                  captureText(1, "identifier") +
                      symbolText("constant", "scope='private' name-selector='identifier'")) +
        matchText("def", "def\\ (\\w+)",
                  captureText(1, "identifier") + symbolText("property", "name-selector='identifier'")) +
        matchText("argument.identifier", "%\\w+", symbolText("argument")) +
        matchText("title.name", "\\w+(?=\\ [({])") + matchText("identifier", "[%]?\\w+");
};

} // namespace

// Contexts

TEST_F(SymbolicQuerying, TheDeepestContextIsTheLastThatHoldsThePlace) {
    start(u"x class A { fun f ( { y } z } w");
    ASSERT_EQ(drawn(), "class A 2+6 to 28+1\nfunction f 12+4 to 24+1 in A\n");
    EXPECT_EQ(contextAt(0), "none");
    // Not its own first place, but its end.
    EXPECT_EQ(contextAt(2), "none");
    EXPECT_EQ(contextAt(3), "A");
    EXPECT_EQ(contextAt(12), "A");
    EXPECT_EQ(contextAt(13), "f");
    EXPECT_EQ(contextAt(25), "f");
    EXPECT_EQ(contextAt(26), "A");
    EXPECT_EQ(contextAt(29), "A");
    EXPECT_EQ(contextAt(30), "none");
    EXPECT_EQ(contextAt(1000), "none");
}

TEST_F(SymbolicQuerying, AGlobalSymbolIsSeenEverywhere) {
    start(u"class A { fun f ( { def x } }");
    EXPECT_EQ(parse->contextForSymbol(*symbol(2)), nullptr);
    EXPECT_EQ(parse->contextForSymbol(*symbol(0)), nullptr);
}

TEST_F(SymbolicQuerying, ALocalSymbolIsSeenInItsParent) {
    const std::string blocks = regionText(
        "b", "\\{", "\\}", subscopesText(includeText("", "self")) + contextSymbol("block", "subtree"));
    const std::string functions = regionText(
        "f", "\\(", "\\)", subscopesText(includeText("", "self")) + contextSymbol("function", "subtree"));
    const std::string variables = matchText("v", "\\w", symbolText("variable", "scope='local'"));
    SymbolTest::start(blocks + functions + variables, u"({a})b{c}");
    EXPECT_EQ(parse->contextForSymbol(*symbol(2)), symbol(1));
    EXPECT_EQ(parse->contextForSymbol(*symbol(3)), nullptr);
    EXPECT_EQ(parse->contextForSymbol(*symbol(5)), symbol(4));
    // Or in the whole construct, where the language says so and where there is one.
    SymbolTest::start(blocks + functions + variables, u"({a})b{c}",
                      element("symbols", "", element("local", "scope='within-construct'", "")));
    EXPECT_EQ(parse->contextForSymbol(*symbol(2)), symbol(0));
    EXPECT_EQ(parse->contextForSymbol(*symbol(3)), nullptr);
    EXPECT_EQ(parse->contextForSymbol(*symbol(5)), symbol(4));
}

TEST_F(SymbolicQuerying, APrivateSymbolIsSeenInItsType) {
    start(u"class A { fun f ( { own x } } fun g ( { own y } own z");
    EXPECT_EQ(parse->contextForSymbol(*symbol(2)), symbol(0));
    EXPECT_EQ(parse->contextForSymbol(*symbol(4)), symbol(3));
    EXPECT_EQ(parse->contextForSymbol(*symbol(5)), nullptr);
}

TEST_F(SymbolicQuerying, AnExternalSymbolIsSeenInItsParent) {
    start(u"class A { let x }");
    symbol(1)->setSymbolScope(QVSymbolScopeExternal);
    EXPECT_EQ(parse->contextForSymbol(*symbol(1)), symbol(0));
}

// Identifiers

TEST_F(SymbolicQuerying, AnIdentifierIsAMatchOrACaptureOfThatClass) {
    start(u"  abc let x");
    const auto identifierAt = [&](NSUInteger location) {
        const QVMatch *const match =
            QVParse::identifierMatchAtMatch(parse->matchAtLocation(location, true, nullptr));
        return match ? drawnRange(match->range()) : "none";
    };
    EXPECT_EQ(identifierAt(2), "2+3");
    EXPECT_EQ(identifierAt(4), "2+3");
    EXPECT_EQ(identifierAt(0), "none");
    EXPECT_EQ(identifierAt(10), "10+1");
    // "let " is no part of its capture.
    EXPECT_EQ(identifierAt(7), "none");
    EXPECT_EQ(QVParse::identifierMatchAtMatch(nullptr), nullptr);
}

TEST_F(SymbolicQuerying, TheFirstMatchOfTheTextIsNoIdentifierWithoutACapture) {
    start(u"abc abc");
    EXPECT_EQ(definition(0), "no identifier");
    EXPECT_EQ(definition(4), "none");
    EXPECT_EQ(occurrences(1), "");
    EXPECT_EQ(occurrences(4), "0 4");
}

TEST_F(SymbolicQuerying, AFirstCaptureAtTheMatchsStartStandsForIt) {
    const std::string capture = captureText(1, "identifier");
    SymbolTest::start(matchText("x", "(\\w+)!", capture) + matchText("y", "\\?(\\w+)", capture), u" a! ?b");
    QVMatch *const first = parse->matchAtLocation(1, false, nullptr);
    ASSERT_TRUE(first->isScopeMatch());
    EXPECT_EQ(QVParse::identifierMatchAtMatch(first), first->captureMatches()->front().get());
    EXPECT_EQ(QVParse::identifierMatchAtMatch(parse->matchAtLocation(4, false, nullptr)), nullptr);
}

TEST_F(SymbolicQuerying, AnIdentifierAroundCountsUpToTheBorderOfAnEmbeddedLanguage) {
    const RegisteredSyntax inner(syntaxFromXML(syntaxText("inner", scopesText(matchText("i", "\\w+")))));
    const std::string inside = subscopesText(matchText("w", "\\w+"));
    SymbolTest::start(regionText("identifier", "\\(", "\\)", inside) +
                          regionText("identifier.x", "\\[", "\\]", element("subsyntax", "name='inner'", "")),
                      u" (a) [b]");
    const auto identifierAt = [&](NSUInteger location) {
        return QVParse::identifierMatchAtMatch(parse->matchAtLocation(location, true, nullptr));
    };
    EXPECT_EQ(identifierAt(2), parse->matchAtLocation(1, false, nullptr));
    EXPECT_EQ(identifierAt(6), nullptr);
    EXPECT_EQ(identifierAt(5), nullptr);
}

// Definitions

TEST_F(SymbolicQuerying, TheNearestDefinitionBeforeWins) {
    start(u"  def x def x x");
    EXPECT_EQ(definition(14), "property x@8");
    // A definition is its own.
    EXPECT_EQ(definition(6), "property x@2");
}

TEST_F(SymbolicQuerying, WhereNamesAreNotDistinctTheEarliestDefinitionWins) {
    start(u"  def x def x x", "<symbols redefinition='non-distinct'/>");
    EXPECT_EQ(definition(14), "property x@2");
    EXPECT_EQ(definition(12), "property x@2");
}

TEST_F(SymbolicQuerying, WithinAConstructTheEarliestDefinitionInItWins) {
    const std::u16string text = u"def x fun f ( { def x def x x }";
    start(text, "<symbols redefinition='within-construct'/>");
    EXPECT_EQ(definition(place(u"x }")), "property x@16");
    start(text);
    EXPECT_EQ(definition(place(u"x }")), "property x@22");
    start(text, "<symbols redefinition='non-distinct'/>");
    EXPECT_EQ(definition(place(u"x }")), "property x@0");
}

TEST_F(SymbolicQuerying, ALocalDefinitionIsSeenInItsContextAlone) {
    start(u"fun f ( { let x x } fun g ( { x } x");
    EXPECT_EQ(definition(16), "variable x@10 in f");
    EXPECT_EQ(definition(place(u"x }", 2)), "none");
    EXPECT_EQ(definition(parse->string().size() - 1), "none");
}

TEST_F(SymbolicQuerying, AnInnerDefinitionThatIsNotSeenLeavesTheOuterOne) {
    start(u"def x fun f ( { let x } x");
    EXPECT_EQ(definition(24), "property x@0");
}

TEST_F(SymbolicQuerying, AnArgumentIsFoundFromInsideItsFunctionAlone) {
    start(u"fun f (%a { %a } fun g ( { %a } %a");
    // Each place where it stands in the function is one of its arguments; the first decides.
    ASSERT_EQ(symbol(0)->argumentSymbols().size(), 2u);
    EXPECT_EQ(definition(12), "argument %a@7 in f");
    EXPECT_EQ(definition(7), "argument %a@7 in f");
    EXPECT_EQ(definition(parse->string().size() - 1), "none");
}

TEST_F(SymbolicQuerying, AnArgumentHidesADefinitionOutside) {
    const std::string inner =
        regionText("f", "\\(", "\\)",
                   subscopesText(matchText("a.identifier", "%\\w", symbolText("argument")) +
                                 matchText("identifier", "\\$\\w|\\w")) +
                       contextSymbol("function", "subtree"));
    SymbolTest::start(inner + matchText("d.identifier", "!\\w", symbolText("variable")), u" !a (%b %b)");
    EXPECT_EQ(definition(9), "argument %b@5 in (");
}

TEST_F(SymbolicQuerying, AUseBeforeItsDefinitionIsFoundInTheSameType) {
    start(u"class A { fun f ( { z } let y def z }");
    EXPECT_EQ(definition(place(u"z")), "property z@30");
    // Local ones only count behind themselves.
    start(u"class A { fun f ( { y } let y }");
    EXPECT_EQ(definition(place(u"y")), "none");
}

TEST_F(SymbolicQuerying, WhatStandsBehindIsLookedForBehindTheInnermostConstructAround) {
    // Not behind one that is over.
    start(u"class A { fun g ( { } z def z }");
    EXPECT_EQ(definition(place(u"z")), "none");
    start(u"class A { fun g ( { } z def z } def z");
    EXPECT_EQ(definition(place(u"z")), "property z@32");
}

TEST_F(SymbolicQuerying, AConstructIsNotTheOneAroundItself) {
    const std::string functions =
        matchText("call.identifier", "(\\w)!", captureText(1, "name") + symbolText("function"));
    const std::string variables =
        matchText("var", "\\$(\\w!)", captureText(1, "name") + symbolText("variable"));
    const std::string braces = regionText(
        "class", "\\{", "\\}", subscopesText(includeText("", "self")) + contextSymbol("class", "subtree"));
    SymbolTest::start(braces + functions + variables, u" {f! $f!} $f!");
    const QVMatch *const call = parse->matchAtLocation(2, false, nullptr);
    ASSERT_EQ(call->range(), (NSRange{2, 2}));
    // Its own name is another text; behind the class around it stands the one of its text.
    const auto found = parse->symbolDefiningIdentifierAtMatch(call, nullptr);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->range(), (NSRange{10, 3}));
    SymbolTest::start(braces + functions + variables, u" {f! $f!}");
    EXPECT_EQ(parse->symbolDefiningIdentifierAtMatch(parse->matchAtLocation(2, false, nullptr), nullptr),
              nullptr);
}

TEST_F(SymbolicQuerying, OfSeveralDefinitionsBehindTheLastOneWins) {
    start(u"fun f ( { z } def z def z");
    EXPECT_EQ(definition(10), "property z@20");
}

TEST_F(SymbolicQuerying, APrivateDefinitionBehindIsSeenInItsType) {
    start(u"class A { fun f ( { y } own y } fun g ( { y }");
    EXPECT_EQ(definition(place(u"y")), "constant y@24 in A");
    EXPECT_EQ(definition(place(u"y }", 3)), "none");
}

TEST_F(SymbolicQuerying, AtTopLevelOnlyALanguageWithoutRedefinitionLooksBehind) {
    start(u"  z def z");
    EXPECT_EQ(definition(2), "none");
    start(u"  z def z", "<symbols redefinition='non-distinct'/>");
    EXPECT_EQ(definition(2), "property z@4");
}

TEST_F(SymbolicQuerying, WithoutRedefinitionTheSameConstructIsSearchedOnlyWhereNothingStandsBehindIt) {
    const std::string symbols = "<symbols redefinition='non-distinct'/>";
    start(u"fun f ( { z def z }", symbols);
    EXPECT_EQ(definition(10), "property z@12");
    start(u"fun f ( { z def z } w", symbols);
    EXPECT_EQ(definition(10), "none");
}

TEST_F(SymbolicQuerying, EmbeddedLanguagesAreClosedToBothSides) {
    const std::string inside = scopesText(
        matchText("d", "def\\ (\\w+)",
                  captureText(1, "identifier") + symbolText("property", "name-selector='identifier'")) +
        matchText("identifier", "\\w+"));
    const RegisteredSyntax inner(syntaxFromXML(syntaxText("inner", inside)));
    const std::string embedded = regionText("e", "<", ">", element("subsyntax", "name='inner'", ""));
    SymbolTest::start(embedded + scopes, u"def a <a def b b> b", "<symbols redefinition='non-distinct'/>");
    EXPECT_EQ(definition(7), "none");
    EXPECT_EQ(definition(15), "property b@9");
    // Backwards what stands in the region is met before its border.
    EXPECT_EQ(definition(18), "property b@9");
    SymbolTest::start(embedded + scopes, u"fun f ( { b } <def b> def c",
                      "<symbols redefinition='non-distinct'/>");
    EXPECT_EQ(definition(10), "none");
}

TEST_F(SymbolicQuerying, AtALinesEndWhatStandsBeforeIsLookedUp) {
    start(u"def x\nx\n\n");
    EXPECT_EQ(definition(7), "property x@0");
    EXPECT_EQ(definition(8), "property x@0");
}

TEST_F(SymbolicQuerying, WhereNoIdentifierStandsNothingIsAnswered) {
    start(u"def x /* x */ ; x");
    EXPECT_EQ(definition(9), "no identifier");
    EXPECT_EQ(definition(13), "no identifier");
    EXPECT_EQ(definition(1), "no identifier");
    start(u"");
    EXPECT_EQ(definition(0), "no identifier");
    EXPECT_EQ(occurrences(0), "");
}

TEST_F(SymbolicQuerying, OutParametersMayBeLeftOut) {
    start(u"def x x");
    EXPECT_EQ(parse->symbolDefiningIdentifierAtLocation(6, nullptr, nullptr), symbol(0));
    EXPECT_EQ(parse->symbolDefiningIdentifierAtLocation(5, nullptr, nullptr), nullptr);
    EXPECT_EQ(parse->symbolDefiningIdentifierAtMatch(nullptr, nullptr), nullptr);
}

// Occurrences

TEST_F(SymbolicQuerying, OccurrencesAreIdentifiersAndNamesOfTheSameText) {
    start(u" x def x y /* x */ x xx fun x { }");
    ASSERT_EQ(parse->string().find(u"fun x"), 24u);
    EXPECT_EQ(occurrences(1), "1 7 19 28");
    EXPECT_EQ(occurrences(9), "9");
    NSRange range{};
    parse->rangesForOccurrancesOfIdentifierAtLocation(20, 0, &range);
    EXPECT_EQ(range, NSNotFoundRange);
    parse->rangesForOccurrancesOfIdentifierAtLocation(22, 0, &range);
    EXPECT_EQ(range, (NSRange{21, 2}));
}

TEST_F(SymbolicQuerying, UsesBeforeALocalDefinitionAreNone) {
    start(u" x fun f ( { x let x x } x");
    EXPECT_EQ(occurrences(21), "19 21");
    // The others belong together.
    EXPECT_EQ(occurrences(13), "1 13 19 21 25");
}

TEST_F(SymbolicQuerying, OccurrencesOfAnArgumentStayInItsFunction) {
    start(u"fun f (%a { %a } fun g ( { %a }");
    EXPECT_EQ(occurrences(12), "7 12");
}

TEST_F(SymbolicQuerying, ALocalDefinitionOutsideOfAllReachesToTheTextsEnd) {
    start(u" x let x x fun f ( { x }");
    EXPECT_EQ(occurrences(9), "7 9 21");
}

TEST_F(SymbolicQuerying, ADefinitionOutsideOfTheAreaLimitsNothing) {
    start(u"class A { fun f ( { y y } own y }");
    const NSUInteger use = place(u"y");
    EXPECT_EQ(definition(use), "constant y@26 in A");
    EXPECT_EQ(occurrences(use, 2), "20 22");
    // In the whole text uses before it are none of it.
    EXPECT_EQ(occurrences(use), "30");
}

TEST_F(SymbolicQuerying, TheLowestOptionChoosesTheArea) {
    //     0         1         2         3         4         5
    //     0123456789012345678901234567890123456789012345678901234567890
    start(u" x class A { x fun f ( { x def z x } x } x");
    const NSUInteger inside = 33;
    ASSERT_EQ(parse->string()[inside], u'x');
    EXPECT_EQ(occurrences(inside), "1 13 25 33 37 41");
    EXPECT_EQ(occurrences(inside, 1), "13 25 33 37");
    EXPECT_EQ(occurrences(inside, 2), "25 33");
    EXPECT_EQ(occurrences(inside, 4), "25 33");
    EXPECT_EQ(occurrences(inside, 3), "13 25 33 37");
    EXPECT_EQ(occurrences(inside, 6), "25 33");
    EXPECT_EQ(occurrences(inside, 8), "1 13 25 33 37 41");
    EXPECT_EQ(occurrences(inside, 9), "13 25 33 37");
    // Without a type or function around it is the whole document.
    EXPECT_EQ(occurrences(1, 2), "1 13 25 33 37 41");
}

TEST_F(SymbolicQuerying, ASymbolsOwnPlaceIsInsideItForOccurrences) {
    start(u" x def x x");
    EXPECT_EQ(occurrences(7, 4), "7");
    EXPECT_EQ(occurrences(7, 2), "1 7 9");
}

TEST_F(SymbolicQuerying, OfAMatchsCapturesTheFirstOfTheNameCountsOnce) {
    const std::string captures =
        captureText(1, "other") + captureText(2, "identifier") + captureText(3, "identifier");
    const std::string pair = element(
        "scope", named("r"),
        element("starts-with", "", expressionText("(\\w)\\.(\\w)\\.(\\w)\\(") + captures) +
            element("ends-with", "",
                    expressionText("\\)(\\w)(\\w)") + captureText(1, "identifier") + captureText(2, "name")));
    SymbolTest::start(pair + matchText("identifier", "\\w"), u" x x.x.x()xx x.y.x()yx");
    EXPECT_EQ(occurrences(1), "1 5 10 17 21");
}
