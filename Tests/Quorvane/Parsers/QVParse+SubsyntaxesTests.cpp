// Languages within languages: which grammar a region's text is matched by, what cuts it off, and template
// scopes, which go through all of them.

#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Support/SyntaxText.h"
#include "Tests/Support/ParseFixture.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::string embeddedText(std::string_view name, std::string_view start, std::string_view end,
                         std::string_view subsyntaxAttributes, std::string_view cutoffs = "") {
    return regionText(name, start, end, element("subsyntax", subsyntaxAttributes, cutoffs));
}

RegisteredSyntax registered(std::string_view name, std::string_view elements) {
    return RegisteredSyntax(syntaxFromXML(syntaxText(name, elements)));
}

const std::string letters = scopesText(matchText("letter", "[a-z]"));

} // namespace

// Which syntax

TEST(QVParse, ANamedSyntaxMatchesTheRegionsText) {
    const auto inner = registered("inner", letters);
    const auto syntax = syntaxWithElements(scopesText(embeddedText("code", "<", ">", named("inner"))));
    EXPECT_EQ(treeOfText(syntax, u"<a>a"), "StartEnd code [0,1] end[2,1]\n"
                                           "  Match letter [1,1]\n"
                                           "Unknown unknown [3,1]\n");
    const auto parse = parseOfText(syntax, u"<a>");
    parse->performReadingBlockAndWait(
        [&] { EXPECT_EQ(parse->rootMatch()->firstChild()->subsyntax(), inner.syntax()); });
}

TEST(QVParse, ANamedCollectionOfASyntaxMatchesTheRegionsText) {
    const auto inner =
        registered("inner", collectionsText(collectionText("digits", matchText("digit", "\\d"))) + letters);
    const auto syntax = syntaxWithElements(
        scopesText(embeddedText("code", "<", ">", named("inner") + " collection=\"digits\"")));
    EXPECT_EQ(treeOfText(syntax, u"<1a>"), "StartEnd code [0,1] end[3,1]\n"
                                           "  Match digit [1,1]\n"
                                           "  Unknown unknown [2,1]\n");
}

TEST(QVParse, ASyntaxThatIsNotFoundLeavesTheRegionsOwnSubscopes) {
    const auto syntax = syntaxWithElements(scopesText(embeddedText("code", "<", ">", named("none"))));
    syntax->grammar()->scopes().front()->addSubscope(
        syntaxWithElements(letters)->grammar()->scopes().front());
    EXPECT_EQ(treeOfText(syntax, u"<a>"), "StartEnd code [0,1] end[2,1]\n"
                                          "  Match letter [1,1]\n");
    const auto parse = parseOfText(syntax, u"<a>");
    parse->performReadingBlockAndWait(
        [&] { EXPECT_EQ(parse->rootMatch()->firstChild()->subsyntax(), nullptr); });
}

TEST(QVParse, ACollectionThatIsNotFoundLeavesTheRegionsOwnSubscopes) {
    const auto inner = registered("inner", scopesText(matchText("digit", "\\d")));
    const auto syntax = syntaxWithElements(
        scopesText(embeddedText("code", "<", ">", named("inner") + " collection=\"none\"")));
    syntax->grammar()->scopes().front()->addSubscope(
        syntaxWithElements(letters)->grammar()->scopes().front());
    EXPECT_EQ(treeOfText(syntax, u"<a1>"), "StartEnd code [0,1] end[3,1]\n"
                                           "  Match letter [1,1]\n"
                                           "  Unknown unknown [2,1]\n");
    // The syntax counts as entered all the same.
    const auto parse = parseOfText(syntax, u"<a>");
    parse->performReadingBlockAndWait(
        [&] { EXPECT_EQ(parse->rootMatch()->firstChild()->subsyntax(), inner.syntax()); });
}

TEST(QVParse, AGroupOfTheStartMayNameTheSyntax) {
    const auto inner = registered("inner", letters);
    const auto other = registered("other", scopesText(matchText("digit", "\\d")));
    const auto syntax =
        syntaxWithElements(scopesText(embeddedText("code", "<(\\w+):", ">", "capture=\"1\"")));
    EXPECT_EQ(treeOfText(syntax, u"<inner:a1><other:a1><none:a1>"), "StartEnd code [0,7] end[9,1]\n"
                                                                    "  Match letter [7,1]\n"
                                                                    "  Unknown unknown [8,1]\n"
                                                                    "StartEnd code [10,7] end[19,1]\n"
                                                                    "  Unknown unknown [17,1]\n"
                                                                    "  Match digit [18,1]\n"
                                                                    "StartEnd code [20,6] end[28,1]\n"
                                                                    "  Unknown unknown [26,2]\n");
}

TEST(QVParse, AnAliasMayStandForASyntaxName) {
    const auto inner = registered("inner", letters);
    const auto syntax = syntaxWithElements(
        scopesText(embeddedText("code", "<(\\w+):", ">", "capture=\"1\"",
                                element("alias", "key=\"in\" value=\"inner\"", "") +
                                    element("alias", "key=\"inner\" value=\"none\"", ""))));
    // A syntax of the name itself comes before an alias.
    EXPECT_EQ(treeOfText(syntax, u"<in:a><inner:a>"), "StartEnd code [0,4] end[5,1]\n"
                                                      "  Match letter [4,1]\n"
                                                      "StartEnd code [6,7] end[14,1]\n"
                                                      "  Match letter [13,1]\n");
}

TEST(QVParse, AGroupThatTookNoPartNamesNoSyntax) {
    const auto inner = registered("inner", letters);
    const auto syntax =
        syntaxWithElements(scopesText(embeddedText("code", "<(\\w+:)?", ">", "capture=\"1\"")));
    EXPECT_EQ(treeOfText(syntax, u"<,>"), "StartEnd code [0,1] end[2,1]\n"
                                          "  Unknown unknown [1,1]\n");
}

TEST(QVParse, AGroupThatThePatternLacksNamesNoSyntax) {
    const auto inner = registered("inner", letters);
    const auto syntax =
        syntaxWithElements(scopesText(embeddedText("code", "<(inner)", ">", "capture=\"2\"")));
    EXPECT_EQ(treeOfText(syntax, u"<inner,>"), "StartEnd code [0,6] end[7,1]\n"
                                               "  Unknown unknown [6,1]\n");
}

TEST(QVParse, GroupZeroIsTheWholeStart) {
    const auto inner = registered("inner", letters);
    const auto syntax = syntaxWithElements(scopesText(embeddedText("code", "inner", ";", "capture=\"0\"")));
    EXPECT_EQ(treeOfText(syntax, u"innera;"), "StartEnd code [0,5] end[6,1]\n"
                                              "  Match letter [5,1]\n");
}

TEST(QVParse, ANameThatIsNotFoundIsNotMadeUpForByAGroup) {
    const auto inner = registered("inner", letters);
    const auto syntax =
        syntaxWithElements(scopesText(embeddedText("code", "<(\\w+):", ">", "capture=\"1\"")));
    syntax->grammar()->scopes().front()->subsyntaxOptions()->setName(u"none");
    EXPECT_EQ(treeOfText(syntax, u"<inner:a>"), "StartEnd code [0,7] end[8,1]\n"
                                                "  Unknown unknown [7,1]\n");
}

TEST(QVParse, ASyntaxMayHoldItself) {
    const auto test = RegisteredSyntax(syntaxWithElements(
        scopesText(embeddedText("code", "<", ">", named("test")) + matchText("letter", "[a-z]"))));
    EXPECT_EQ(treeOfText(test.syntax(), u"a<b<c>>"), "Match letter [0,1]\n"
                                                     "StartEnd code [1,1] end[6,1]\n"
                                                     "  Match letter [2,1]\n"
                                                     "  StartEnd code [3,1] end[5,1]\n"
                                                     "    Match letter [4,1]\n");
}

// Cut-offs

TEST(QVParse, ACutoffEndsEveryRegionInsideTheEmbeddedLanguage) {
    const auto inner = registered("inner", scopesText(regionText("quoted", "\"", "\"")));
    const auto syntax = syntaxWithElements(
        scopesText(embeddedText("script", "<s>", "</s>", named("inner"), cutoffText("(?=</s>)"))));
    EXPECT_EQ(treeOfText(syntax, u"<s>\"a</s>b"), "StartEnd script [0,3] end[5,4]\n"
                                                  "  StartEnd quoted [3,1] end[5,0]\n"
                                                  "    Unknown unknown [4,1]\n"
                                                  "Unknown unknown [9,1]\n");
}

TEST(QVParse, ACutoffEndsRegionsOnLaterLinesToo) {
    const auto inner = registered(
        "inner", collectionsText(collectionText(
                     "all", regionText("block", "\\{", "\\}", subscopesText(includeText("all"))))) +
                     scopesText(includeText("all")));
    const auto syntax = syntaxWithElements(
        scopesText(embeddedText("script", "<s>", "</s>", named("inner"), cutoffText("(?=</s>)"))));
    EXPECT_EQ(treeOfText(syntax, u"<s>{\n{</s>"), "StartEnd script [0,3] end[6,4]\n"
                                                  "  StartEnd block [3,1] end[6,0]\n"
                                                  "    Newline newline [4,1]\n"
                                                  "    StartEnd block [5,1] end[6,0]\n");
}

TEST(QVParse, ACutoffEndsTheEmbeddingRegionItself) {
    const auto inner = registered("inner", letters);
    const auto syntax =
        syntaxWithElements(scopesText(embeddedText("code", "<", ">", named("inner"), cutoffText(";"))));
    EXPECT_EQ(treeOfText(syntax, u"<a;b>"), "StartEnd code [0,1] end[2,1]\n"
                                            "  Match letter [1,1]\n"
                                            "Unknown unknown [3,2]\n");
}

TEST(QVParse, TheCutoffsOfTheInnermostLanguageComeFirst) {
    const auto innermost = registered("innermost", scopesText(regionText("quoted", "\"", "\"")));
    const auto inner = registered(
        "inner", scopesText(embeddedText("in", "\\(", "\\)", named("innermost"), cutoffText(";"))));
    const auto syntax =
        syntaxWithElements(scopesText(embeddedText("out", "<", ">", named("inner"), cutoffText(";;"))));
    // The string ends at the first ";", and so does the region around it at the second; the cut-off of the
    // outer language needs two.
    EXPECT_EQ(treeOfText(syntax, u"<(\"a;;b>"), "StartEnd out [0,1] end[7,1]\n"
                                                "  StartEnd in [1,1] end[5,1]\n"
                                                "    StartEnd quoted [2,1] end[4,1]\n"
                                                "      Unknown unknown [3,1]\n"
                                                "  Unknown unknown [6,1]\n");
}

TEST(QVParse, CutoffsOfOneLanguageAreTriedInTheirOrder) {
    const auto inner = registered("inner", letters);
    const auto syntax = syntaxWithElements(
        scopesText(embeddedText("code", "<", ">", named("inner"), cutoffText(";;") + cutoffText(";"))));
    EXPECT_EQ(treeOfText(syntax, u"<;;"), "StartEnd code [0,1] end[1,2]\n");
}

TEST(QVParse, AnAtomicRegionIsNotCutOff) {
    const auto inner =
        registered("inner", scopesText(regionText("quoted", "\"", "\"", "", "atomic=\"true\"") +
                                       regionText("loose", "'", "'")));
    const auto syntax =
        syntaxWithElements(scopesText(embeddedText("code", "<", ">", named("inner"), cutoffText(";"))));
    EXPECT_EQ(treeOfText(syntax, u"<\";\">"), "StartEnd code [0,1] end[4,1]\n"
                                              "  StartEnd quoted [1,1] end[3,1]\n"
                                              "    Unknown unknown [2,1]\n");
    EXPECT_EQ(treeOfText(syntax, u"<';"), "StartEnd code [0,1] end[3,0]\n"
                                          "  StartEnd loose [1,1] end[2,1]\n");
}

TEST(QVParse, CutoffsHoldOnlyWhileTheirRegionIsOpen) {
    const auto inner = registered("inner", letters);
    const auto syntax = syntaxWithElements(scopesText(
        embeddedText("code", "<", ">", named("inner"), cutoffText(";")) + regionText("quoted", "\"", "\"")));
    EXPECT_EQ(treeOfText(syntax, u"<>\";\""), "StartEnd code [0,1] end[1,1]\n"
                                              "StartEnd quoted [2,1] end[4,1]\n"
                                              "  Unknown unknown [3,1]\n");
}

TEST(QVParse, CutoffsHoldAlsoWhereTheSyntaxWasNotFound) {
    const auto syntax =
        syntaxWithElements(scopesText(embeddedText("code", "<", ">", named("none"), cutoffText(";"))));
    syntax->grammar()->scopes().front()->addSubscope(
        syntaxWithElements(scopesText(regionText("quoted", "\"", "\"")))->grammar()->scopes().front());
    EXPECT_EQ(treeOfText(syntax, u"<\"a;b>"), "StartEnd code [0,1] end[5,1]\n"
                                              "  StartEnd quoted [1,1] end[3,1]\n"
                                              "    Unknown unknown [2,1]\n"
                                              "  Unknown unknown [4,1]\n");
}

// Template scopes

namespace {

std::string templatesText(std::string_view scopes) { return element("template-scopes", "", scopes); }

const std::string templateRegion =
    templatesText(regionText("template", "\\{\\{", "\\}\\}", subscopesText(matchText("variable", "\\w+"))));

} // namespace

TEST(QVParse, TemplateScopesAreTriedInEveryRegion) {
    const auto inner = registered("inner", letters);
    const auto syntax =
        syntaxWithElements(templateRegion + scopesText(regionText("quoted", "\"", "\"") +
                                                       embeddedText("code", "<", ">", named("inner"))));
    EXPECT_EQ(treeOfText(syntax, u"{{a}}\"{{b}}\"<{{c}}>"), "StartEnd template [0,2] end[3,2]\n"
                                                            "  Match variable [2,1]\n"
                                                            "StartEnd quoted [5,1] end[11,1]\n"
                                                            "  StartEnd template [6,2] end[9,2]\n"
                                                            "    Match variable [8,1]\n"
                                                            "StartEnd code [12,1] end[18,1]\n"
                                                            "  StartEnd template [13,2] end[16,2]\n"
                                                            "    Match variable [15,1]\n");
}

TEST(QVParse, TemplateScopesComeBeforeOtherScopesAndBehindEnds) {
    const auto syntax =
        syntaxWithElements(templatesText(matchText("template", "%")) +
                           scopesText(matchText("percent", "%%") + regionText("region", "<", "%>")));
    EXPECT_EQ(treeOfText(syntax, u"%%<%>"), "Match template [0,1]\n"
                                            "Match template [1,1]\n"
                                            "StartEnd region [2,1] end[3,2]\n");
}

TEST(QVParse, InATemplateScopeTemplateScopesAreNotTried) {
    const auto syntax = syntaxWithElements(templatesText(
        regionText("template", "\\{\\{", "\\}\\}", subscopesText(regionText("quoted", "\"", "\"")))));
    EXPECT_EQ(treeOfText(syntax, u"{{{{\"{{\"}}{{"), "StartEnd template [0,2] end[8,2]\n"
                                                     "  Unknown unknown [2,2]\n"
                                                     "  StartEnd quoted [4,1] end[7,1]\n"
                                                     "    Unknown unknown [5,2]\n"
                                                     "StartEnd template [10,2] end[12,0]\n");
}

TEST(QVParse, TheTemplateScopesOfAnEmbeddedLanguageAreNotTried) {
    const auto inner = registered("inner", templatesText(matchText("template", "%")) + letters);
    const auto syntax = syntaxWithElements(scopesText(embeddedText("code", "<", ">", named("inner"))));
    EXPECT_EQ(treeOfText(syntax, u"<%a>"), "StartEnd code [0,1] end[3,1]\n"
                                           "  Unknown unknown [1,1]\n"
                                           "  Match letter [2,1]\n");
}

TEST(QVParse, TemplateScopesMayBeIncluded) {
    const auto syntax = syntaxWithElements(
        collectionsText(collectionText("templates", matchText("template", "%"))) +
        templatesText(includeText("templates")) + scopesText(regionText("quoted", "\"", "\"")));
    EXPECT_EQ(treeOfText(syntax, u"%\"%\""), "Match template [0,1]\n"
                                             "StartEnd quoted [1,1] end[3,1]\n"
                                             "  Match template [2,1]\n");
}
