// What is reported for a stretch of the tree, and in which order.

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVSyntaxHighlighting.h"
#include "Tests/Quorvane/Parsers/HighlightingFixtures.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/SyntaxText.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVSyntax> styled(const std::string &scopes, const std::map<std::u16string, int> &numbers) {
    auto syntax = syntaxWithElements(scopesText(scopes));
    setStyles(syntax, numbers);
    return syntax;
}

std::string embeddedText(std::string_view name, std::string_view start, std::string_view end,
                         std::string_view subsyntaxAttributes) {
    return regionText(name, start, end, element("subsyntax", subsyntaxAttributes, ""));
}

const std::string wordText = matchText("word", "[a-z]+");
const std::string blockText = regionText("block", "\\(", "\\)", subscopesText(wordText));

/// Reports for a range of a text, with the tree's lock held.
std::string reportsOf(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text, NSRange range,
                      const NSAttributes &defaultAttributes = {}, int stopAfter = 0) {
    const auto parse = parseOfText(syntax, text);
    std::string reports;
    parse->performReadingBlockAndWait(
        [&] { reports = test::reportsOf(*parse, range, defaultAttributes, stopAfter); });
    return reports;
}

} // namespace

TEST(QVParseHighlighting, AMatchIsReportedWithItsStyle) {
    EXPECT_EQ(test::reportsOf(styled(wordText, {{u"word", 3}}), u"ab, cd"), "0+2 3\n4+2 3\n");
}

TEST(QVParseHighlighting, WhatHasNeitherStyleNorLexicalClassIsNotReported) {
    EXPECT_EQ(test::reportsOf(styled(wordText, {}), u"ab, cd"), "");
}

TEST(QVParseHighlighting, BlanksLineEndsAndUnknownTextSayNothingWhateverTheirStyle) {
    const auto parse = parseOfText(styled(wordText, {{u"word", 3}}), u"ab +\ncd");
    parse->performReadingBlockAndWait([&] {
        // A theme's rule for the name of one of them would do this.
        for (const QVScopeMatch *const match : parse->rootMatch()->submatches())
            if (match->scope()->type() != QVScopeTypeMatch)
                const_cast<QVScope *>(match->scope())->addStyle(styleWithNumber(9));
        EXPECT_EQ(test::reportsOf(*parse, {0, 7}), "0+2 3\n5+2 3\n");
        EXPECT_EQ(test::reportsOf(*parse, {2, 3}), "");
    });
}

TEST(QVParseHighlighting, ALexicalClassIsReportedWithoutAStyle) {
    const auto syntax = styled(matchText("test.keyword", "[a-z]+"), {});
    EXPECT_EQ(test::reportsOf(syntax, u"ab"), "0+2 keyword\n");
    const auto parse = parseOfText(syntax, u"ab");
    parse->performReadingBlockAndWait([&] {
        parse->enumerateAttributesInRange({0, 2}, {},
                                          [](const NSAttributes &attributes, NSRange,
                                             const std::shared_ptr<QVSyntax> &, std::uint64_t, bool &) {
                                              ASSERT_EQ(attributes.count(), 1u);
                                              EXPECT_EQ(attributes.begin()->key.string(), u"QVLexicalClass");
                                              EXPECT_EQ(attributes.begin()->value.stringValue(),
                                                        QVLexicalClassKeyword.string());
                                          });
    });
}

TEST(QVParseHighlighting, StyleAndLexicalClassComeTogether) {
    EXPECT_EQ(test::reportsOf(styled(matchText("test.keyword", "[a-z]+"), {{u"test.keyword", 4}}), u"ab"),
              "0+2 4 keyword\n");
}

TEST(QVParseHighlighting, ARegionComesBeforeItsContentsOverAllOfItsExtent) {
    EXPECT_EQ(test::reportsOf(styled(blockText, {{u"word", 1}, {u"block", 2}}), u"(a b)"),
              "0+5 2\n1+1 1\n3+1 1\n");
}

TEST(QVParseHighlighting, ReportsAreCutDownToTheRange) {
    const auto syntax = styled(wordText, {{u"word", 1}});
    EXPECT_EQ(reportsOf(syntax, u"abcd efgh ij", {2, 5}), "2+2 1\n5+2 1\n");
    EXPECT_EQ(reportsOf(syntax, u"abcd efgh ij", {5, 4}), "5+4 1\n");
    EXPECT_EQ(reportsOf(syntax, u"abcd efgh ij", {10, 100}), "10+2 1\n");
    EXPECT_EQ(reportsOf(syntax, u"abcd efgh ij", {10, ~NSUInteger(0)}), "10+2 1\n");
}

TEST(QVParseHighlighting, AnEmptyRangeReportsNothing) {
    const auto syntax = styled(blockText, {{u"word", 1}, {u"block", 2}});
    for (NSUInteger location = 0; location <= 5; ++location)
        EXPECT_EQ(reportsOf(syntax, u"(a b)", {location, 0}, defaults(1)), "");
}

TEST(QVParseHighlighting, ARangeBehindTheTextReportsNothing) {
    const auto syntax = styled(wordText, {{u"word", 1}});
    EXPECT_EQ(reportsOf(syntax, u"ab", {2, 5}), "");
    EXPECT_EQ(reportsOf(syntax, u"ab", {100, 5}), "");
    EXPECT_EQ(reportsOf(syntax, u"ab", NSNotFoundRange), "");
    EXPECT_EQ(reportsOf(syntax, u"ab", {~NSUInteger(0), 5}), "");
    EXPECT_EQ(reportsOf(syntax, u"", {0, 5}), "");
}

TEST(QVParseHighlighting, InTheMiddleOfALongCommentTheCommentComesFirst) {
    const auto syntax = styled(regionText("test.comment", "/", "/", subscopesText(wordText)),
                               {{u"test.comment", 1}, {u"word", 2}});
    EXPECT_EQ(reportsOf(syntax, u"/aa bb cc dd/", {4, 5}), "4+5 1 comment\n4+2 2\n7+2 2\n");
}

TEST(QVParseHighlighting, AllRegionsAroundTheRangeComeFromTheOutside) {
    const std::string inner = regionText("inner", "\\[", "\\]", subscopesText(wordText));
    const auto syntax = styled(regionText("outer", "\\(", "\\)", subscopesText(inner)),
                               {{u"outer", 1}, {u"inner", 2}, {u"word", 3}});
    EXPECT_EQ(reportsOf(syntax, u"([ab cd])", {5, 1}), "5+1 1\n5+1 2\n5+1 3\n");
}

TEST(QVParseHighlighting, ARegionThatEndsInTheRangeIsReportedAgainWithItsContents) {
    const auto syntax = styled(blockText, {{u"word", 1}, {u"block", 2}});
    EXPECT_EQ(reportsOf(syntax, u"(ab cd)", {4, 3}),
              // From around the first word, then the word, then the whole region.
              "4+3 2\n4+2 1\n4+3 2\n4+2 1\n");
    EXPECT_EQ(reportsOf(syntax, u"(ab cd)", {4, 2}), "4+2 2\n4+2 1\n");
}

TEST(QVParseHighlighting, BehindARegionThatEndsInTheRangeTheWalkGoesOn) {
    const auto syntax = styled(blockText + wordText, {{u"word", 1}, {u"block", 2}});
    EXPECT_EQ(reportsOf(syntax, u"(a)b c", {1, 3}), "1+2 2\n1+1 1\n1+2 2\n1+1 1\n3+1 1\n");
}

TEST(QVParseHighlighting, TextThatBeginsBehindTheRangeIsNotReported) {
    const auto syntax = styled(wordText, {{u"word", 1}});
    EXPECT_EQ(reportsOf(syntax, u"a b c d", {2, 2}), "2+1 1\n");
}

// Captures

TEST(QVParseHighlighting, StyledCapturesComeBehindTheirMatch) {
    const std::string scope = matchText(
        "pair", "(\\w)(=)(\\w)", captureText(3, "value") + captureText(1, "key") + captureText(2, "sign"));
    EXPECT_EQ(test::reportsOf(styled(scope, {{u"pair", 1}, {u"key", 2}, {u"value", 3}}), u"a=b"),
              "0+3 1\n2+1 3\n0+1 2\n");
}

TEST(QVParseHighlighting, ACaptureWithoutStylesIsPassedOverEvenWithALexicalClass) {
    const std::string scope = matchText("call", "(\\w)\\(\\)", captureText(1, "test.identifier"));
    EXPECT_EQ(test::reportsOf(styled(scope, {{u"call", 1}}), u"f()"), "0+3 1\n");
    EXPECT_EQ(test::reportsOf(styled(scope, {{u"test.identifier", 2}}), u"f()"), "0+1 2 identifier\n");
}

TEST(QVParseHighlighting, CapturesOfTheEndComeBeforeTheContents) {
    const std::string region =
        element("scope", named("tag"),
                element("starts-with", "", expressionText("<(\\w)>") + captureText(1, "open")) +
                    element("ends-with", "", expressionText("</(\\w)>") + captureText(1, "close")) +
                    subscopesText(wordText));
    const auto syntax = styled(region, {{u"tag", 1}, {u"open", 2}, {u"close", 3}, {u"word", 4}});
    EXPECT_EQ(test::reportsOf(syntax, u"<b>x</b>"), "0+8 1\n1+1 2\n6+1 3\n3+1 4\n");
    // From within, the captures of the end come when the region is reported again.
    EXPECT_EQ(reportsOf(syntax, u"<b>x</b>", {3, 5}), "3+5 1\n3+1 4\n3+5 1\n6+1 3\n3+1 4\n");
}

TEST(QVParseHighlighting, ACaptureMayStandOutsideOfItsMatch) {
    const std::string scope = matchText("label", "\\w+(?=(:))", captureText(1, "colon"));
    const auto syntax = styled(scope, {{u"colon", 1}});
    EXPECT_EQ(test::reportsOf(syntax, u"ab:"), "2+1 1\n");
}

// Embedded languages

TEST(QVParseHighlighting, AnEmbeddedLanguageStartsFromTheDefaults) {
    const auto innerSyntax = syntaxFromXML(syntaxText("inner", scopesText(wordText)));
    setStyles(innerSyntax, {{u"word", 5}});
    const RegisteredSyntax inner(innerSyntax);
    const auto syntax = styled(embeddedText("code", "<", ">", named("inner")), {{u"code", 1}});
    EXPECT_EQ(test::reportsOf(syntax, u"<ab c>", defaults(7)),
              "0+6 1\ndefault 1+4 d7@inner\n1+2 5@inner\n4+1 5@inner\n");
    // From within it comes through the region around.
    EXPECT_EQ(reportsOf(syntax, u"<ab c>", {4, 1}, defaults(7)),
              "4+1 1\ndefault 4+1 d7@inner\n4+1 5@inner\n");
}

TEST(QVParseHighlighting, WithoutDefaultAttributesNothingIsSaidOfAnEmbeddedLanguagesContents) {
    const RegisteredSyntax inner(syntaxFromXML(syntaxText("inner", scopesText(wordText))));
    const auto syntax = styled(embeddedText("code", "<", ">", named("inner")), {{u"code", 1}});
    EXPECT_EQ(test::reportsOf(syntax, u"<ab>"), "0+4 1\n");
}

TEST(QVParseHighlighting, AnEmptyEmbeddedLanguageHasNoDefaults) {
    const RegisteredSyntax inner(syntaxFromXML(syntaxText("inner", scopesText(wordText))));
    const auto syntax = styled(embeddedText("code", "<", ">", named("inner")), {{u"code", 1}});
    EXPECT_EQ(test::reportsOf(syntax, u"<>", defaults(7)), "0+2 1\n");
}

TEST(QVParseHighlighting, AnEmbeddedLanguageThatIsNotFoundStillStartsFromTheDefaults) {
    const auto syntax = styled(embeddedText("code", "<", ">", named("none")), {});
    syntax->grammar()->scopes().front()->addSubscope(
        styled(wordText, {{u"word", 5}})->grammar()->scopes().front());
    EXPECT_EQ(test::reportsOf(syntax, u"<ab>", defaults(7)), "default 1+2 d7@none\n1+2 5\n");
}

TEST(QVParseHighlighting, AnUnfinishedEmbeddedLanguageHasDefaultsToTheEndOfTheText) {
    const RegisteredSyntax inner(syntaxFromXML(syntaxText("inner", scopesText(wordText))));
    const auto syntax = styled(embeddedText("code", "<", ">", named("inner")), {});
    EXPECT_EQ(test::reportsOf(syntax, u"ab<ab", defaults(7)), "default 3+2 d7@inner\n");
    // A region by hand that has no end at all.
    const auto parse = parseOfText(syntax, u"abcdef");
    parse->performWritingBlockAndWait([&] {
        const auto match = QVScopeMatch::initWithScope(syntax->grammar()->scopes().front().get());
        match->setRange({1, 2});
        QVAttributeCache scratch(defaults(7));
        std::string reports;
        EXPECT_TRUE(QVParseEnumerateAttributesForMatchUsingBlock(
            *parse, syntax, {0, 50}, match.get(), match->scope(), true, scratch,
            [&](const NSAttributes &attributes, NSRange range, const std::shared_ptr<QVSyntax> &reported,
                std::uint64_t flags,
                bool &) { reports += drawnReport(*parse, attributes, range, reported, flags); }));
        EXPECT_EQ(reports, "default 3+3 d7@none\n");
    });
}

TEST(QVParseHighlighting, BehindAnEmbeddedLanguageTheOuterOneIsBack) {
    const auto innerSyntax = syntaxFromXML(syntaxText("inner", scopesText(wordText)));
    setStyles(innerSyntax, {{u"word", 5}});
    const RegisteredSyntax inner(innerSyntax);
    const auto syntax =
        styled(regionText("block", "\\(", "\\)",
                          subscopesText(embeddedText("code", "<", ">", named("inner")) + wordText)),
               {{u"word", 6}});
    EXPECT_EQ(test::reportsOf(syntax, u"(<a>b)"), "2+1 5@inner\n4+1 6\n");
    EXPECT_EQ(reportsOf(syntax, u"(<a>b)", {2, 4}), "2+1 5@inner\n2+1 5@inner\n4+1 6\n2+1 5@inner\n4+1 6\n");
}

TEST(QVParseHighlighting, RegionsAroundTheRangeAreReportedWithTheSyntaxTheyStandIn) {
    const auto innerSyntax = syntaxFromXML(syntaxText("inner", scopesText(blockText)));
    setStyles(innerSyntax, {{u"block", 5}, {u"word", 6}});
    const RegisteredSyntax inner(innerSyntax);
    const auto syntax = styled(embeddedText("code", "<", ">", named("inner")), {{u"code", 1}});
    EXPECT_EQ(reportsOf(syntax, u"<(a b)>", {2, 1}), "2+1 1\n2+1 5@inner\n2+1 6@inner\n");
    // Where the flag ends the way to the match, the match stands in its syntax all the same.
    EXPECT_EQ(reportsOf(syntax, u"<(a b)>", {2, 1}, {}, 1), "2+1 1\n2+1 6@inner\n");
}

TEST(QVParseHighlighting, InsideOfAnEmbeddedLanguageThatIsNotFoundTheDocumentsIsTold) {
    const auto innerSyntax = syntaxFromXML(syntaxText(
        "inner", scopesText(regionText("code", "<", ">", element("subsyntax", named("none"), "")))));
    innerSyntax->grammar()->scopes().front()->addSubscope(
        styled(blockText, {{u"block", 5}, {u"word", 6}})->grammar()->scopes().front());
    const RegisteredSyntax inner(innerSyntax);
    const auto syntax = styled(embeddedText("page", "\\{", "\\}", named("inner")), {});
    // On the way up from the word, the nearest region that embeds a language has none.
    EXPECT_EQ(reportsOf(syntax, u"{<(a b)>}", {3, 1}), "3+1 5\n3+1 6\n");
}

// Far from the range

TEST(QVParseHighlighting, ARegionAroundAllIsNotWalkedForTheFewUnitsAtItsEdges) {
    const std::string region =
        regionText("block", "\\(", "\\)", subscopesText(matchText("w", "(w)", captureText(1, "c"))));
    const auto parse = parseOfText(styled(region, {{u"w", 1}, {u"c", 2}}), u"(wwwwwwwwww)");
    parse->performWritingBlockAndWait([&] {
        // Whoever looked at the match in the middle would report captures that stand at both ends.
        const QVScopeMatch *const block = parse->rootMatch()->firstChild();
        QVScopeMatch *const middle = block->submatches()[5];
        for (const NSUInteger place : {1, 10}) {
            (*middle->captureMatches())[0]->setRange({place, 1});
            EXPECT_EQ(test::reportsOf(*parse, {0, 2}), "1+1 1\n1+1 2\n");
            EXPECT_EQ(test::reportsOf(*parse, {10, 2}), "10+1 1\n10+1 2\n10+1 1\n10+1 2\n");
        }
    });
}

TEST(QVParseHighlighting, CapturesFarFromTheirMatchAreReportedWithIt) {
    const std::string label = matchText("label", "\\w+(?=\\s*(:))", captureText(1, "colon"));
    const std::string value = matchText("value", "(?<=(=).{4})\\d+", captureText(1, "sign"));
    const auto syntax = styled(regionText("block", "\\(", "\\)", subscopesText(label + value)),
                               {{u"colon", 1}, {u"sign", 2}});
    const std::u16string text = u"(a a    : a =    7)";
    // From the range's start, and again from the region's, which ends in the range.
    EXPECT_EQ(reportsOf(syntax, text, {8, 11}), "12+1 2\n8+1 1\n12+1 2\n");
    // The region starts in the range, and the second match behind it.
    EXPECT_EQ(reportsOf(syntax, text, {0, 13}), "8+1 1\n12+1 2\n");
}

// Resets

TEST(QVParseHighlighting, AResettingScopeIsReportedWithNothingButItsLexicalClass) {
    const auto syntax = styled(regionText("test.string", "<", ">", "", "reset-styles=\"true\""), {});
    ASSERT_TRUE(syntax->grammar()->scopes().front()->shouldResetStyleAttributes());
    EXPECT_EQ(test::reportsOf(syntax, u"<ab>"), "reset 0+4 string\n");
}

TEST(QVParseHighlighting, AResettingScopeWithoutAnythingIsReportedToo) {
    const auto syntax = styled(regionText("plain", "<", ">", "", "reset-styles=\"true\""), {});
    EXPECT_EQ(test::reportsOf(syntax, u"<ab>"), "reset 0+4 -\n");
}

TEST(QVParseHighlighting, AResettingScopeBringsItsOwnStyle) {
    const auto syntax = styled(regionText("plain", "<", ">", "", "reset-styles=\"true\""), {{u"plain", 2}});
    EXPECT_EQ(test::reportsOf(syntax, u"<ab>", defaults(7)), "reset 0+4 2\n");
}

// Stopping

TEST(QVParseHighlighting, TheFlagEndsTheWalk) {
    const auto syntax = styled(blockText, {{u"word", 1}, {u"block", 2}});
    EXPECT_EQ(reportsOf(syntax, u"(a b c)", {0, 7}, {}, 2), "0+7 2\n1+1 1\n");
    EXPECT_EQ(reportsOf(syntax, u"(a b c)", {0, 7}, {}, 1), "0+7 2\n");
}

TEST(QVParseHighlighting, TheFlagEndsTheWalkAtCapturesAndDefaultsToo) {
    const std::string scope =
        matchText("pair", "(\\w)=(\\w)", captureText(1, "key") + captureText(2, "value"));
    const auto pairs = styled(scope, {{u"key", 2}, {u"value", 3}});
    EXPECT_EQ(reportsOf(pairs, u"a=b", {0, 3}, {}, 1), "0+1 2\n");
    const RegisteredSyntax inner(syntaxFromXML(syntaxText("inner", scopesText(wordText))));
    const auto syntax = styled(embeddedText("code", "<", ">", named("inner")) + wordText, {{u"word", 1}});
    EXPECT_EQ(reportsOf(syntax, u"<a>b", {0, 4}, defaults(7), 1), "default 1+1 d7@inner\n");
}

TEST(QVParseHighlighting, AmongTheRegionsAroundTheFlagEndsOnlyThese) {
    const std::string inner = regionText("inner", "\\[", "\\]", subscopesText(wordText));
    const auto syntax = styled(regionText("outer", "\\(", "\\)", subscopesText(inner)),
                               {{u"outer", 1}, {u"inner", 2}, {u"word", 3}});
    EXPECT_EQ(reportsOf(syntax, u"([ab cd])", {5, 1}, {}, 1), "5+1 1\n5+1 3\n");
}

TEST(QVParseHighlighting, WalkingWithoutABlockIsAProgrammingError) {
    const auto parse = parseOfText(styled(wordText, {}), u"ab");
    const AssertionRecorder assertions;
    parse->performReadingBlockAndWait([&] { parse->enumerateAttributesInRange({0, 2}, {}, nullptr); });
    EXPECT_EQ(assertions.messages(),
              std::vector<NSString>{u"Invalid parameter not satisfying: block != nil"});
}

// The free functions

TEST(QVParseHighlighting, AMatchAloneLeavesOutWhatIsBelow) {
    const auto syntax = styled(blockText, {{u"word", 1}, {u"block", 2}});
    const auto parse = parseOfText(syntax, u"(ab)");
    parse->performReadingBlockAndWait([&] {
        QVAttributeCache scratch{NSAttributes()};
        const QVScopeMatch *const match = parse->rootMatch()->firstChild();
        std::string reports;
        const auto block = [&](const NSAttributes &attributes, NSRange range,
                               const std::shared_ptr<QVSyntax> &reported, std::uint64_t flags, bool &stop) {
            reports += drawnReport(*parse, attributes, range, reported, flags);
            stop = true;
        };
        EXPECT_FALSE(QVParseEnumerateAttributesForMatchUsingBlock(*parse, syntax, {0, 4}, match,
                                                                  match->scope(), true, scratch, block));
        EXPECT_EQ(reports, "0+4 2\n");
        EXPECT_FALSE(QVParseEnumerateAttributesForMatchTreeUsingBlock(*parse, syntax, {1, 3}, match, true,
                                                                      scratch, block));
        EXPECT_EQ(reports, "0+4 2\n1+3 2\n");
    });
}

TEST(QVParseHighlighting, AMatchThatIsReportedAsAnotherScopeKeepsItsStyle) {
    // The style was taken from the other scope too.
    const auto syntax =
        styled(matchText("word", "[a-z]+") + regionText("test.keyword", "<", ">", "", "reset-styles='true'"),
               {{u"word", 1}, {u"test.keyword", 2}});
    const auto parse = parseOfText(syntax, u"ab");
    parse->performReadingBlockAndWait([&] {
        QVAttributeCache scratch{NSAttributes()};
        const auto &scopes = syntax->grammar()->scopes();
        const QVScopeMatch *const match = parse->rootMatch()->firstChild();
        ASSERT_EQ(match->scope(), scopes.front().get());
        std::string reports;
        EXPECT_TRUE(QVParseEnumerateAttributesForMatchUsingBlock(
            *parse, syntax, {0, 2}, match, scopes.back().get(), true, scratch,
            [&](const NSAttributes &attributes, NSRange range, const std::shared_ptr<QVSyntax> &reported,
                std::uint64_t flags,
                bool &) { reports += drawnReport(*parse, attributes, range, reported, flags); }));
        EXPECT_EQ(reports, "reset 0+2 1 keyword\n");
    });
}

TEST(QVParseHighlighting, WithoutCapturesTheyAreLeftOut) {
    const std::string scope = matchText("pair", "(\\w)=", captureText(1, "key"));
    const auto syntax = styled(scope, {{u"key", 2}});
    const auto parse = parseOfText(syntax, u"a=");
    parse->performReadingBlockAndWait([&] {
        QVAttributeCache scratch{NSAttributes()};
        const auto block = [](const NSAttributes &, NSRange, const std::shared_ptr<QVSyntax> &, std::uint64_t,
                              bool &) { ADD_FAILURE(); };
        EXPECT_TRUE(QVParseEnumerateAttributesForMatchTreeUsingBlock(
            *parse, syntax, {0, 2}, parse->rootMatch()->firstChild(), false, scratch, block));
    });
}

TEST(QVParseHighlighting, ResolvingAddsWhatTheStyleOfAScopeOrCaptureSays) {
    const std::string scope =
        matchText("test.keyword", "(\\w)(=)", captureText(1, "key") + captureText(2, "plain"));
    const auto parse = parseOfText(styled(scope, {{u"test.keyword", 1}, {u"key", 2}}), u"a=");
    parse->performReadingBlockAndWait([&] {
        const QVScopeMatch *const match = parse->rootMatch()->firstChild();
        NSMutableAttributes attributes(defaults(3));
        QVParseResolveStyleAttributesForMatch(match, attributes, {});
        EXPECT_EQ(drawnAttributes(attributes.attributes()), "d3 1");
        QVParseResolveStyleAttributesForMatch((*match->captureMatches())[0].get(), attributes, {});
        EXPECT_EQ(drawnAttributes(attributes.attributes()), "d3 2");
        QVParseResolveStyleAttributesForMatch((*match->captureMatches())[1].get(), attributes, {});
        QVParseResolveStyleAttributesForMatch(parse->rootMatch(), attributes, {});
        QVParseResolveStyleAttributesForMatch(nullptr, attributes, {});
        EXPECT_EQ(drawnAttributes(attributes.attributes()), "d3 2");
    });
}

TEST(QVParseHighlighting, TheAttributesThatHighlightingTouchesAreFontColoursLinesAndShadow) {
    const std::set<NSAttributeKey> expected{
        NSFontAttributeName,           NSForegroundColorAttributeName,   NSBackgroundColorAttributeName,
        NSUnderlineStyleAttributeName, NSUnderlineColorAttributeName,    NSStrikethroughStyleAttributeName,
        NSShadowAttributeName,         NSStrikethroughColorAttributeName};
    EXPECT_EQ(QVParse::attributesAffectedBySyntaxHighlighting(), expected);
}
