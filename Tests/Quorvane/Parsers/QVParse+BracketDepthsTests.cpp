// The table of bracket locations by depth of nesting.

#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/SyntaxText.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;
using namespace quorvane::test;

namespace {

using Pairs = std::map<NSString, NSString>;

const Pairs parentheses{{u"(", u")"}};
const Pairs bothKinds{{u"(", u")"}, {u"[", u"]"}};

std::shared_ptr<QVSyntax> syntaxWith(const Pairs &pairs, const std::string &scopes = "") {
    const auto syntax = syntaxWithElements(scopesText(scopes));
    syntax->setBracketPairs(pairs);
    return syntax;
}

RegisteredSyntax registered(std::string_view name, const Pairs &pairs, const std::string &scopes = "") {
    const auto syntax = syntaxFromXML(syntaxText(name, scopesText(scopes)));
    syntax->setBracketPairs(pairs);
    return RegisteredSyntax(syntax);
}

std::string embeddedText(std::string_view name, std::string_view start, std::string_view end,
                         std::string_view subsyntaxAttributes) {
    return regionText(name, start, end, element("subsyntax", subsyntaxAttributes, ""));
}

std::string drawn(const std::optional<std::vector<NSIndexSet>> &depths) {
    if (!depths)
        return "off";
    std::string text;
    for (const NSIndexSet &indexes : *depths) {
        text += text.empty() ? "" : " | ";
        std::string list;
        indexes.enumerateIndexesUsingBlock(
            [&](NSUInteger index, bool &) { list += (list.empty() ? "" : " ") + std::to_string(index); });
        text += list;
    }
    return text;
}

/// "0 5 | 1 4": the locations for each depth.
std::string bracketsOf(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text) {
    const auto parse = QVParse::initWithSyntax(syntax, text.size(), QVParsePrivateQueueConcurrencyType);
    parse->performWritingBlockAndWait([&] {
        parse->setShouldCalculateBracketDepths(true);
        parse->replaceCharactersInRange({0, 0}, text, nullptr);
    });
    return drawn(parse->bracketLocationsByDepth());
}

} // namespace

TEST(QVParseBracketDepths, BracketsAreListedByTheirDepth) {
    EXPECT_EQ(bracketsOf(syntaxWith(parentheses), u"(a(b)c)()"), "0 6 7 8 | 2 4");
    EXPECT_EQ(bracketsOf(syntaxWith(parentheses), u"abc"), "");
}

TEST(QVParseBracketDepths, AnOpenBracketWithoutAnEndKeepsItsDepth) {
    EXPECT_EQ(bracketsOf(syntaxWith(parentheses), u"(()"), "0 | 1 2");
}

TEST(QVParseBracketDepths, AnUnmatchedClosingBracketIsInNoSet) {
    EXPECT_EQ(bracketsOf(syntaxWith(bothKinds), u"(]"), "0");
    EXPECT_EQ(bracketsOf(syntaxWith(bothKinds), u")()"), "1 2");
}

TEST(QVParseBracketDepths, EachKindOfBracketHasItsOwnDepths) {
    EXPECT_EQ(bracketsOf(syntaxWith(bothKinds), u"[([])]"), "0 1 4 5 | 2 3");
}

TEST(QVParseBracketDepths, BracketsOverlapWithoutDisturbingEachOther) {
    EXPECT_EQ(bracketsOf(syntaxWith(bothKinds), u"([)]"), "0 1 2 3");
}

TEST(QVParseBracketDepths, ACharacterThatOpensAndClosesOpens) {
    EXPECT_EQ(bracketsOf(syntaxWith({{u"|", u"|"}}), u"|a|"), "0 | 2");
}

TEST(QVParseBracketDepths, OnlySingleUnitsAreBrackets) {
    EXPECT_EQ(bracketsOf(syntaxWith({{u"begin", u"end"}, {u"\U0001D11E", u"x"}, {u"(", u")"}}),
                         u"begin (end) \U0001D11E x"),
              "6 10");
    // The unit that closes a longer one closes nothing.
    EXPECT_EQ(bracketsOf(syntaxWith({{u"be", u"x"}, {u"b", u")"}}), u"bx)"), "0 2");
}

TEST(QVParseBracketDepths, BracketsMayStandFarUpInTheCharacters) {
    EXPECT_EQ(bracketsOf(syntaxWith({{u"「", u"」"}, {u"『", u"』"}}), u"「『』」"), "0 1 2 3");
}

TEST(QVParseBracketDepths, WithoutPairsThereAreNone) { EXPECT_EQ(bracketsOf(syntaxWith({}), u"(())"), ""); }

TEST(QVParseBracketDepths, StringsAndCommentsArePassedOver) {
    const std::string scopes =
        regionText("test.string", "\"", "\"") +
        regionText("test.comment.block", "/\\(", "\\)/", subscopesText(matchText("word", "\\w+"))) +
        matchText("comment", "%.*");
    EXPECT_EQ(bracketsOf(syntaxWith(parentheses, scopes), u"(\"(\" /( ( )/ %(\n)"), "0 16");
}

TEST(QVParseBracketDepths, StartsContentsAndEndsOfRegionsCountInTheirOrder) {
    const std::string scopes = regionText("block", "\\(", "\\)", subscopesText(matchText("inner", "\\(\\)")));
    EXPECT_EQ(bracketsOf(syntaxWith(parentheses, scopes), u"(())"), "0 3 | 1 2");
    // No content, so the region is a leaf.
    EXPECT_EQ(bracketsOf(syntaxWith(parentheses, scopes), u"()()"), "0 1 2 3");
}

TEST(QVParseBracketDepths, EndsOfNestedRegionsCountOnTheWayUp) {
    const std::string inner = regionText("inner", "\\[", "\\]", subscopesText(matchText("word", "\\w")));
    const std::string scopes = regionText("outer", "\\(", "\\)", subscopesText(inner));
    EXPECT_EQ(bracketsOf(syntaxWith(bothKinds, scopes), u"([a])([b])"), "0 1 3 4 5 6 8 9");
}

TEST(QVParseBracketDepths, AnEmbeddedLanguageCountsItsOwnKindsFromZero) {
    const auto inner = registered("inner", {{u"[", u"]"}});
    const auto syntax = syntaxWith(parentheses, embeddedText("code", "<", ">", named("inner")));
    EXPECT_EQ(bracketsOf(syntax, u"(<[(]>)"), "0 2 4 6");
    EXPECT_EQ(bracketsOf(syntax, u"[<[>"), "2");
}

TEST(QVParseBracketDepths, TheEdgesOfAnEmbeddedLanguageBelongToTheOuterOne) {
    const auto inner = registered("inner", {{u"[", u"]"}});
    const auto syntax = syntaxWith(parentheses, embeddedText("code", "\\(", "\\)", named("inner")));
    EXPECT_EQ(bracketsOf(syntax, u"([])"), "0 1 2 3");
}

TEST(QVParseBracketDepths, PiecesOfAContiguousLanguageStartAnew) {
    const auto inner = registered("inner", parentheses);
    const auto syntax = syntaxWith(parentheses, embeddedText("code", "<", ">", named("inner")));
    EXPECT_EQ(bracketsOf(syntax, u"<(><(>"), "1 4");
}

TEST(QVParseBracketDepths, PiecesOfANoncontiguousLanguageShareTheirDepths) {
    const auto inner = registered("inner", parentheses);
    const auto syntax =
        syntaxWith(parentheses, embeddedText("code", "<", ">", named("inner") + " noncontiguous=\"true\""));
    ASSERT_TRUE(syntax->grammar()->scopes().front()->subsyntaxOptions()->isNoncontiguous());
    EXPECT_EQ(bracketsOf(syntax, u"<(>(<(>)<))>"), "1 3 7 10 | 5 9");
}

TEST(QVParseBracketDepths, NoncontiguousPiecesOfDifferentCollectionsAreDifferentTexts) {
    const auto inner = registered("inner", parentheses);
    const std::string whole = named("inner") + " noncontiguous=\"true\"";
    const auto syntax =
        syntaxWith(parentheses, embeddedText("a", "<", ">", whole) +
                                    embeddedText("b", "\\{", "\\}", whole + " collection=\"c\"") +
                                    embeddedText("d", "@", ";", whole + " collection=\"c\""));
    EXPECT_EQ(bracketsOf(syntax, u"<(>{(}@(;"), "1 4 | 7");
}

TEST(QVParseBracketDepths, NoncontiguousPiecesInDifferentRegionsOfAnEmbeddedLanguageAreDifferentTexts) {
    const auto inmost = registered("inmost", parentheses);
    const auto inner = registered(
        "inner", parentheses, embeddedText("code", "<", ">", named("inmost") + " noncontiguous=\"true\""));
    const auto syntax = syntaxWith(parentheses, embeddedText("page", "\\{", "\\}", named("inner")));
    EXPECT_EQ(bracketsOf(syntax, u"{<(><(>}{<(>}"), "2 10 | 5");
}

TEST(QVParseBracketDepths, ALanguageThatWasNotFoundHasNoBrackets) {
    const auto syntax = syntaxWith(parentheses, embeddedText("code", "<", ">", named("none")));
    EXPECT_EQ(bracketsOf(syntax, u"(<()>)"), "0 5");
}

TEST(QVParseBracketDepths, TheTableFollowsEachEdit) {
    const auto parse = parseOfText(syntaxWith(parentheses), u"(a)");
    parse->performWritingBlockAndWait([&] {
        EXPECT_FALSE(parse->shouldCalculateBracketDepths());
        EXPECT_EQ(drawn(parse->bracketLocationsByDepth()), "off");
        parse->setShouldCalculateBracketDepths(true);
        EXPECT_EQ(drawn(parse->bracketLocationsByDepth()), "0 2");
        parse->replaceCharactersInRange({1, 0}, u"()", nullptr);
        EXPECT_EQ(drawn(parse->bracketLocationsByDepth()), "0 4 | 1 2");
        parse->replaceCharactersInRange({0, 5}, u"", nullptr);
        EXPECT_EQ(drawn(parse->bracketLocationsByDepth()), "");
    });
}

TEST(QVParseBracketDepths, TurningTheFeatureOffDropsTheTableAtOnce) {
    const auto parse = parseOfText(syntaxWith(parentheses), u"(a)");
    parse->performWritingBlockAndWait([&] {
        parse->setShouldCalculateBracketDepths(true);
        parse->setShouldCalculateBracketDepths(false);
        EXPECT_EQ(drawn(parse->bracketLocationsByDepth()), "off");
        parse->replaceCharactersInRange({0, 0}, u"(", nullptr);
        EXPECT_EQ(drawn(parse->bracketLocationsByDepth()), "off");
    });
}

TEST(QVParseBracketDepths, SettingWhatIsSetDoesNothing) {
    const auto parse = parseOfText(syntaxWith(parentheses), u"(a)");
    parse->performWritingBlockAndWait([&] {
        parse->setShouldCalculateBracketDepths(true);
        parse->setBracketLocationsByDepth(std::vector<NSIndexSet>{{7}});
        parse->setShouldCalculateBracketDepths(true);
        EXPECT_EQ(drawn(parse->bracketLocationsByDepth()), "7");
    });
}

TEST(QVParseBracketDepths, RandomTextsComeToWhatCountingByHandGives) {
    const auto syntax = syntaxWith(bothKinds, matchText("word", "[a-z(]+"));
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::u16string text;
        for (int i = 0; i < 200; ++i)
            text += u"()[]a \n"[random() % 7];
        std::vector<NSIndexSet> expected;
        std::vector<NSUInteger> open(2);
        for (NSUInteger location = 0; location < text.size(); ++location) {
            const auto at = std::u16string_view(u"()[]").find(text[location]);
            if (at == std::u16string_view::npos)
                continue;
            NSUInteger &count = open[at / 2];
            if (at % 2 == 0) {
                expected.resize(std::max(expected.size(), std::size_t(count + 1)));
                expected[count++].addIndex(location);
            } else if (count > 0) {
                expected[--count].addIndex(location);
            }
        }
        ASSERT_EQ(bracketsOf(syntax, text), drawn(expected));
    }
}
