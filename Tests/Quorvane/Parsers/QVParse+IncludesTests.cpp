// End patterns built from a template, and includes.

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Parsers/QVParseScopeTrace.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Support/SyntaxText.h"
#include "Tests/Support/ParseFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;
using ::testing::IsEmpty;

namespace {

std::vector<DiagnosticRecorder::Diagnostic> diagnosticsOfText(const std::shared_ptr<QVSyntax> &syntax,
                                                              std::u16string_view text, bool remembers) {
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
    parse->setRemembersSearches(remembers);
    parse->setDelegate(recorder);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, text, nullptr); });
    return recorder->diagnostics;
}

RegisteredSyntax registered(std::string_view name, std::string_view elements) {
    return RegisteredSyntax(syntaxFromXML(syntaxText(name, elements)));
}

std::string embeddedText(std::string_view name, std::string_view start, std::string_view end,
                         std::string_view syntax, std::string_view collection = "") {
    std::string attributes = named(syntax);
    if (!collection.empty())
        attributes += " collection=\"" + std::string(collection) + "\"";
    return regionText(name, start, end, element("subsyntax", attributes, ""));
}

} // namespace

// End templates

TEST(QVParse, AnEndTemplateTakesTheGroupsOfTheStart) {
    EXPECT_EQ(treeOfText(templateRegionText("heredoc", "<<(\\w+)", "^\\1$"), u"<<A\nB\nA\ny"),
              "StartEnd heredoc [0,3] end[6,1]\n"
              "  Newline newline [3,1]\n"
              "  Unknown unknown [4,1]\n"
              "  Newline newline [5,1]\n"
              "Newline newline [7,1]\n"
              "Unknown unknown [8,1]\n");
}

TEST(QVParse, EachRegionHasTheEndOfItsOwnStart) {
    EXPECT_EQ(treeOfText(templateRegionText("region", "<(\\w)", "\\1>"), u"<ab>a><bb>"),
              "StartEnd region [0,2] end[4,2]\n"
              "  Unknown unknown [2,2]\n"
              "StartEnd region [6,2] end[8,2]\n");
}

TEST(QVParse, WhatAnEndTemplateTakesFromTheTextStandsLiterally) {
    EXPECT_EQ(treeOfText(templateRegionText("region", "<(\\S+)", "\\1>"), u"<a.(\nab(> a.(>"),
              "StartEnd region [0,4] end[10,4]\n"
              "  Newline newline [4,1]\n"
              "  Unknown unknown [5,4]\n"
              "  Whitespace whitespace [9,1]\n");
}

TEST(QVParse, BlanksInAnEndTemplateCount) {
    EXPECT_EQ(treeOfText(templateRegionText("region", "<(\\w)", "end \\1"), u"<aenda end a"),
              "StartEnd region [0,2] end[7,5]\n"
              "  Unknown unknown [2,4]\n"
              "  Whitespace whitespace [6,1]\n");
}

TEST(QVParse, AnEndTemplateMayTakeWhatTheStartOnlySaw) {
    EXPECT_EQ(treeOfText(templateRegionText("region", "(?<=(\\w))<(?=(\\w))", "\\1\\2>"), u"a<bab>"),
              "Unknown unknown [0,1]\n"
              "StartEnd region [1,1] end[3,3]\n"
              "  Unknown unknown [2,1]\n");
}

TEST(QVParse, AnEndTemplatesPatternMayHaveCaptures) {
    const std::string region =
        element("scope", named("region"),
                element("starts-with", "", expressionText("<(\\w)")) +
                    element("ends-with", "", element("template", "", "\\1(!)") + captureText(1, "mark")));
    EXPECT_EQ(treeOfText(region, u"<aa!"), "StartEnd region [0,2] end[2,2]\n"
                                           "  @end 1 mark [3,1]\n");
}

TEST(QVParse, AnEndTemplateThatDoesNotCompileEndsNothingAndIsReportedForEachLine) {
    const auto syntax = syntaxWithElements(scopesText(templateRegionText("region", "<(\\w)", "(\\1")));
    EXPECT_EQ(treeOfText(syntax, u"<a\nb\na"), "StartEnd region [0,2] end[6,0]\n"
                                               "  Newline newline [2,1]\n"
                                               "  Unknown unknown [3,1]\n"
                                               "  Newline newline [4,1]\n"
                                               "  Unknown unknown [5,1]\n");
    const DiagnosticRecorder::Diagnostic expected{
        u"Error compiling end-scope template regex with pattern: (a, (null)", 9};
    for (const bool remembers : {false, true})
        EXPECT_EQ(diagnosticsOfText(syntax, u"<a\nb\na", remembers),
                  (std::vector{expected, expected, expected}));
}

TEST(QVParse, ARegionWhoseEndTemplateDoesNotCompileCanBeCutOff) {
    EXPECT_EQ(
        treeOfText(templateRegionText("region", "<(\\w)", "(\\1", subscopesText(cutoffText(";"))), u"<ab;"),
        "StartEnd region [0,2] end[3,1]\n"
        "  Unknown unknown [2,1]\n");
}

TEST(QVParse, MoreEndPatternsThanAreRememberedStillEndTheirRegions) {
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText(
            "all", templateRegionText("region", "<(\\d+),", "\\1>", subscopesText(includeText("all"))))) +
        scopesText(includeText("all")));
    // The outer region's pattern is still in use when the inner ones have driven it out.
    std::u16string text = u"<0,";
    for (std::size_t number = 1; number <= limits::rememberedEndPatterns + 5; ++number) {
        const NSString name = NSString::stringWithFormat(u"%ld", static_cast<NSInteger>(number));
        const std::u16string digits(name.view());
        text += u"<" + digits + u"," + digits + u">";
    }
    const NSUInteger end = text.size();
    text += u"0>";
    const auto parse = parseOfText(syntax, text);
    parse->performReadingBlockAndWait([&] {
        const QVScopeMatch *const outer = parse->rootMatch()->firstChild();
        EXPECT_EQ(outer->submatches().count(), limits::rememberedEndPatterns + 5);
        EXPECT_EQ(outer->endRange(), (NSRange{end, 2}));
    });
}

// Includes

TEST(QVParse, AnIncludeStandsForItsCollectionInPlace) {
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText("middle", matchText("second", "ab") + matchText("third", "abc"))) +
        scopesText(matchText("first", "a(?=x)") + includeText("middle") + matchText("fourth", "abcd")));
    EXPECT_EQ(treeOfText(syntax, u"ax abcd"), "Match first [0,1]\n"
                                              "Unknown unknown [1,1]\n"
                                              "Whitespace whitespace [2,1]\n"
                                              "Match second [3,2]\n"
                                              "Unknown unknown [5,2]\n");
}

TEST(QVParse, IncludesWithinIncludesAreExpandedInPlace) {
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText("outer", includeText("inner") + matchText("late", "ab")) +
                        collectionText("inner", matchText("early", "a"))) +
        scopesText(includeText("outer")));
    EXPECT_EQ(treeOfText(syntax, u"ab"), "Match early [0,1]\n"
                                         "Unknown unknown [1,1]\n");
}

TEST(QVParse, AnIncludeOfAnotherSyntaxBringsItsScopes) {
    const auto other =
        registered("other", collectionsText(collectionText("digits", matchText("digit", "\\d"))) +
                                scopesText(matchText("letter", "[a-z]")));
    EXPECT_EQ(treeOfText(includeText("", "other"), u"a1"), "Match letter [0,1]\n"
                                                           "Unknown unknown [1,1]\n");
    EXPECT_EQ(treeOfText(includeText("*", "other"), u"a1"), "Match letter [0,1]\n"
                                                            "Unknown unknown [1,1]\n");
    EXPECT_EQ(treeOfText(includeText("digits", "other"), u"a1"), "Unknown unknown [0,1]\n"
                                                                 "Match digit [1,1]\n");
}

TEST(QVParse, AnIncludeThatIsNotResolvedBringsNothing) {
    const auto other = registered("other", scopesText(matchText("letter", "[a-z]")));
    const std::string digit = matchText("digit", "\\d");
    for (const std::string &include : {includeText("", "none"), includeText("none", "other"),
                                       includeText("none"), includeText("x", "none")})
        EXPECT_EQ(treeOfText(include + digit, u"a1"), "Unknown unknown [0,1]\n"
                                                      "Match digit [1,1]\n")
            << include;
}

TEST(QVParse, AnIncludeWithoutASyntaxNameBringsNothing) {
    const auto syntax = syntaxWithElements(collectionsText(collectionText("all", matchText("letter", "a"))) +
                                           scopesText(includeText("all")));
    syntax->grammar()->scopes().front()->setIncludeSyntaxName(nullptr);
    EXPECT_EQ(treeOfText(syntax, u"a"), "Unknown unknown [0,1]\n");
}

TEST(QVParse, AnIncludeOfTheWholeSelfBringsTheTopLevelScopes) {
    EXPECT_EQ(treeOfText(regionText("block", "\\{", "\\}", subscopesText(includeText("*"))), u"{{}}"),
              "StartEnd block [0,1] end[3,1]\n"
              "  StartEnd block [1,1] end[2,1]\n");
}

// Includes of "self" within embedded languages

namespace {

/// A language whose scopes come from its collection "expression".
std::string overridableText() {
    return collectionsText(collectionText("expression", matchText("own", "[a-z]"))) +
           scopesText(includeText("expression"));
}

} // namespace

TEST(QVParse, TheEmbeddingSyntaxReplacesACollectionThatItOverrides) {
    const auto inner = registered("inner", overridableText());
    const auto syntaxWith = [](bool overrides) {
        return syntaxWithElements(
            collectionsText(collectionText("expression", matchText("embedders", "[a-z]"), overrides)) +
            scopesText(embeddedText("code", "<", ">", "inner")));
    };
    EXPECT_EQ(treeOfText(syntaxWith(true), u"<a>"), "StartEnd code [0,1] end[2,1]\n"
                                                    "  Match embedders [1,1]\n");
    EXPECT_EQ(treeOfText(syntaxWith(false), u"<a>"), "StartEnd code [0,1] end[2,1]\n"
                                                     "  Match own [1,1]\n");
}

TEST(QVParse, OnlyTheInnermostEmbeddingSyntaxOverrides) {
    const auto inner = registered("inner", overridableText());
    const auto middle = registered("middle", scopesText(embeddedText("in", "\\(", "\\)", "inner")));
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText("expression", matchText("embedders", "[a-z]"), true)) +
        scopesText(embeddedText("out", "<", ">", "middle")));
    EXPECT_EQ(treeOfText(syntax, u"<(a)>"), "StartEnd out [0,1] end[4,1]\n"
                                            "  StartEnd in [1,1] end[3,1]\n"
                                            "    Match own [2,1]\n");
}

TEST(QVParse, OutsideOfEmbeddedRegionsTheDocumentsSyntaxOverrides) {
    const auto other = registered("other", overridableText());
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText("expression", matchText("documents", "[a-z]"), true)) +
        scopesText(includeText("", "other")));
    EXPECT_EQ(treeOfText(syntax, u"a"), "Match documents [0,1]\n");
}

TEST(QVParse, AnIncludeOfAllOfSelfIsNotOverridden) {
    const auto inner = registered("inner", collectionsText(collectionText("all", includeText("*"))) +
                                               scopesText(matchText("own", "[a-z]")));
    const auto syntax =
        syntaxWithElements(collectionsText(collectionText("*", matchText("embedders", "[a-z]"), true)) +
                           scopesText(embeddedText("code", "<", ">", "inner", "all")));
    EXPECT_EQ(treeOfText(syntax, u"<a>"), "StartEnd code [0,1] end[2,1]\n"
                                          "  Match own [1,1]\n");
}

TEST(QVParse, WhatAnIncludeStandsForIsFixedByItsFirstUse) {
    const auto inner = registered("inner", overridableText());
    const auto middle = registered(
        "middle", collectionsText(collectionText("expression", matchText("middles", "[a-z]"), true)) +
                      scopesText(embeddedText("in", "\\(", "\\)", "inner")));
    const auto syntax = syntaxWithElements(
        scopesText(embeddedText("out", "<", ">", "middle") + embeddedText("plain", "\\[", "\\]", "inner")));
    EXPECT_EQ(treeOfText(syntax, u"[a]<(a)>"), "StartEnd plain [0,1] end[2,1]\n"
                                               "  Match own [1,1]\n"
                                               "StartEnd out [3,1] end[7,1]\n"
                                               "  StartEnd in [4,1] end[6,1]\n"
                                               "    Match own [5,1]\n");
    EXPECT_EQ(treeOfText(syntax, u"<(a)>[a]"), "StartEnd out [0,1] end[4,1]\n"
                                               "  StartEnd in [1,1] end[3,1]\n"
                                               "    Match middles [2,1]\n"
                                               "StartEnd plain [5,1] end[7,1]\n"
                                               "  Match middles [6,1]\n");
}

// What an include leaves out

TEST(QVParse, AnIncludeLeavesOutSyntheticScopes) {
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText("odd", matchText("odd", "a") + matchText("letter", "b"))) +
        scopesText(includeText("odd")));
    const auto odd = syntax->grammar()->collectionWithName(u"odd")->scopes().front();
    for (const QVScopeType type : {QVScopeTypeUnknown, QVScopeTypeWhitespace, QVScopeTypeNewline}) {
        odd->setType(type);
        EXPECT_EQ(treeOfText(syntax, u"ab"), "Unknown unknown [0,1]\n"
                                             "Match letter [1,1]\n");
    }
}

TEST(QVParse, AnIncludeInARegionBringsCutoffsAndOneInTheRootLeavesThemOut) {
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText("stops", cutoffText(";"))) +
        scopesText(includeText("stops") +
                   regionText("region", "\\{", "\\}", subscopesText(includeText("stops")))));
    EXPECT_EQ(treeOfText(syntax, u";{a;b"), "Unknown unknown [0,1]\n"
                                            "StartEnd region [1,1] end[3,1]\n"
                                            "  Unknown unknown [2,1]\n"
                                            "Unknown unknown [4,1]\n");
}

TEST(QVParse, CutoffsThatTheRootLeftOutOfAnIncludeStayOutInRegions) {
    // The region embeds the document's own language, so its list is the root's, include and all.
    const RegisteredSyntax test(
        syntaxWithElements(collectionsText(collectionText("stops", cutoffText(";"))) +
                           scopesText(includeText("stops") + embeddedText("region", "\\{", "\\}", "test"))));
    EXPECT_EQ(treeOfText(test.syntax(), u"{a;b}"), "StartEnd region [0,1] end[4,1]\n"
                                                   "  Unknown unknown [1,3]\n");
}

// Includes met more than once

namespace {

NSUInteger attemptsOfScope(const QVParse &parse, std::u16string_view name) {
    NSUInteger attempts = 0;
    for (const auto &trace : parse.scopeTraces())
        if (trace->scope()->name() == name)
            attempts += trace->successCount() + trace->failureCount();
    return attempts;
}

std::shared_ptr<QVParse> tracedParseOfText(const std::shared_ptr<QVSyntax> &syntax,
                                           std::u16string_view text) {
    const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
    parse->setPerformanceCollectionEnabled(true);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, text, nullptr); });
    return parse;
}

} // namespace

TEST(QVParse, AScopeReachedThroughTwoIncludesIsSearchedOnceForEachLine) {
    const auto syntax = syntaxWithElements(collectionsText(collectionText("one", includeText("both")) +
                                                           collectionText("two", includeText("both")) +
                                                           collectionText("both", matchText("letter", "a"))) +
                                           scopesText(includeText("one") + includeText("two")));
    EXPECT_EQ(attemptsOfScope(*tracedParseOfText(syntax, u"a\na"), u"letter"), 2u);
    EXPECT_EQ(treeOfText(syntax, u"a"), "Match letter [0,1]\n");
}

TEST(QVParse, AScopeThatStandsInTheListItselfIsSearchedBesidesItsIncludes) {
    const auto syntax = syntaxWithElements(
        scopesText(matchText("letter", "a") +
                   regionText("region", "\\{", "\\}", subscopesText(includeText("*") + includeText("*")))));
    const auto region = syntax->grammar()->scopes()[1];
    region->addSubscope(syntax->grammar()->scopes()[0]);
    // Once on the root's line, twice in the region, and once more behind it.
    EXPECT_EQ(attemptsOfScope(*tracedParseOfText(syntax, u"{a}b"), u"letter"), 4u);
}

TEST(QVParse, CollectionsThatIncludeEachOtherAreCutAndReportedOnce) {
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText("one", matchText("letter", "a") + includeText("two")) +
                        collectionText("two", matchText("digit", "1") + includeText("one"))) +
        scopesText(includeText("one")));
    EXPECT_EQ(treeOfText(syntax, u"a1\n1"), "Match letter [0,1]\n"
                                            "Match digit [1,1]\n"
                                            "Newline newline [2,1]\n"
                                            "Match digit [3,1]\n");
    const DiagnosticRecorder::Diagnostic expected{
        u"Encountered an include cycle for scope: self:one; Ignoring", 9};
    for (const bool remembers : {false, true})
        EXPECT_EQ(diagnosticsOfText(syntax, u"a1\n1", remembers), std::vector{expected});
}

TEST(QVParse, ACollectionThatIsIncludedTwiceIsNoCycle) {
    const auto syntax =
        syntaxWithElements(collectionsText(collectionText("one", includeText("two") + includeText("two")) +
                                           collectionText("two", matchText("digit", "1"))) +
                           scopesText(includeText("one") + includeText("two")));
    EXPECT_EQ(treeOfText(syntax, u"1"), "Match digit [0,1]\n");
    EXPECT_THAT(diagnosticsOfText(syntax, u"1", true), IsEmpty());
}

TEST(QVParse, AVeryLongChainOfIncludesIsFollowed) {
    std::string collections;
    constexpr int count = 50000;
    for (int number = 0; number < count; ++number)
        collections +=
            collectionText("c" + std::to_string(number), includeText("c" + std::to_string(number + 1)));
    collections += collectionText("c" + std::to_string(count), matchText("letter", "a"));
    EXPECT_EQ(
        treeOfText(syntaxWithElements(collectionsText(collections) + scopesText(includeText("c0"))), u"a"),
        "Match letter [0,1]\n");
}
