#include "Quorvane/Scopes/QVScopeSymbolOptions.h"

#include "Quorvane/Formatters/QVFormatter.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVScopeSymbolOptions> optionsOf(std::string_view xml) {
    return QVScopeSymbolOptions::symbolOptionsWithXMLElement(*elementOf(xml));
}

std::shared_ptr<QVScopeSymbolOptions> withContext(std::string_view attributes,
                                                  std::string_view symbolType = "statement") {
    return optionsOf("<symbol type='" + std::string(symbolType) + "'><context " + std::string(attributes) +
                     "/></symbol>");
}

/// Options in which nothing has its initial value.
std::shared_ptr<QVScopeSymbolOptions> unusualOptions() {
    auto options = optionsOf(
        "<symbol type='method' scope='private' anonymous='true' name-selector='name.function'>"
        "<display-name><component variable='name'/></display-name><filter match-start='^a' match-end='b$'/>"
        "<context behavior='start' group='braces' priority='3' export-local='variable' unclosed='truncate' "
        "foldable='false' fold-type='block'><auto-close string='}' completion='{}' indentation='none'/>"
        "</context></symbol>");
    options->setUsesNameAsContextGroupIdentifier(true);
    return options;
}

void expectUnusual(const std::shared_ptr<QVScopeSymbolOptions> &options) {
    ASSERT_NE(options, nullptr);
    EXPECT_EQ(options->symbolType(), 11u);
    EXPECT_EQ(options->symbolScope(), 2u);
    EXPECT_TRUE(options->isAnonymous());
    ASSERT_NE(options->nameSelector(), nullptr);
    EXPECT_EQ(options->nameSelector()->string(), u"name.function");
    ASSERT_NE(options->displayNameFormatter(), nullptr);
    ASSERT_EQ(options->displayNameFormatter()->components().size(), 1u);
    EXPECT_EQ(options->displayNameFormatter()->components()[0]->variable(), u"name");
    ASSERT_NE(options->leadingMatchRegularExpression(), nullptr);
    EXPECT_EQ(options->leadingMatchRegularExpression()->pattern(), u"^a");
    EXPECT_EQ(options->leadingMatchRegularExpression()->options(), 80u);
    ASSERT_NE(options->trailingMatchRegularExpression(), nullptr);
    EXPECT_EQ(options->trailingMatchRegularExpression()->pattern(), u"b$");
    EXPECT_EQ(options->trailingMatchRegularExpression()->options(), 80u);
    EXPECT_EQ(options->contextBehavior(), 2u);
    EXPECT_EQ(options->contextGroupIdentifier(), u"braces");
    EXPECT_TRUE(options->usesNameAsContextGroupIdentifier());
    EXPECT_EQ(options->contextCapturePriority(), 3u);
    EXPECT_TRUE(options->contextShouldCaptureArguments());
    EXPECT_EQ(options->contextLocalSymbolExportType(), 20u);
    EXPECT_EQ(options->contextUnclosedBehavior(), 2u);
    EXPECT_FALSE(options->isContextFoldable());
    EXPECT_EQ(options->contextFoldingSymbolType(), 32u);
    EXPECT_EQ(options->contextAutocloseExpression(), u"}");
    EXPECT_EQ(options->contextAutocloseCompletionExpression(), u"{}");
    EXPECT_EQ(options->contextAutocloseIndentationBehavior(), 0u);
}

} // namespace

TEST(QVScopeSymbolOptions, NewOnesHaveTheirInitialValues) {
    const QVScopeSymbolOptions options;
    EXPECT_EQ(options.symbolType(), 0u);
    EXPECT_EQ(options.symbolScope(), 0u);
    EXPECT_FALSE(options.isAnonymous());
    EXPECT_FALSE(options.usesNameAsContextGroupIdentifier());
    EXPECT_FALSE(options.contextShouldCaptureArguments());
    EXPECT_TRUE(options.isContextFoldable());
    EXPECT_EQ(options.nameSelector(), nullptr);
    EXPECT_EQ(options.displayNameFormatter(), nullptr);
    EXPECT_EQ(options.leadingMatchRegularExpression(), nullptr);
    EXPECT_EQ(options.trailingMatchRegularExpression(), nullptr);
    EXPECT_EQ(options.contextBehavior(), 0u);
    EXPECT_TRUE(options.contextGroupIdentifier().isNull());
    EXPECT_EQ(options.contextCapturePriority(), 0u);
    EXPECT_EQ(options.contextLocalSymbolExportType(), 0u);
    EXPECT_EQ(options.contextUnclosedBehavior(), 0u);
    EXPECT_EQ(options.contextFoldingSymbolType(), 0u);
    EXPECT_TRUE(options.contextAutocloseExpression().isNull());
    EXPECT_TRUE(options.contextAutocloseCompletionExpression().isNull());
    EXPECT_EQ(options.contextAutocloseIndentationBehavior(), 1u);
}

TEST(QVScopeSymbolOptions, ReadsEachAttributeAndChild) { expectUnusual(unusualOptions()); }

TEST(QVScopeSymbolOptions, AnEmptyElementLeavesTheInitialValues) {
    const auto options = optionsOf("<symbol/>");
    EXPECT_EQ(options->symbolType(), 0u);
    EXPECT_EQ(options->nameSelector(), nullptr);
    EXPECT_TRUE(options->isContextFoldable());
    EXPECT_FALSE(options->contextShouldCaptureArguments());
    EXPECT_EQ(options->contextAutocloseIndentationBehavior(), 1u);
}

TEST(QVScopeSymbolOptions, WordsOfTheSymbolItselfAreComparedExactly) {
    const auto options = optionsOf("<symbol type='Method' scope='Private' anonymous='TRUE'/>");
    EXPECT_EQ(options->symbolType(), 0u);
    EXPECT_EQ(options->symbolScope(), 0u);
    EXPECT_FALSE(options->isAnonymous());
}

TEST(QVScopeSymbolOptions, MostWordsOfAContextAreComparedInAnyCase) {
    const auto options =
        withContext("behavior='START' unclosed='Truncate' fold-type='BLOCK' arguments='TRUE'");
    EXPECT_EQ(options->contextBehavior(), 2u);
    EXPECT_EQ(options->contextUnclosedBehavior(), 2u);
    EXPECT_EQ(options->contextFoldingSymbolType(), 32u);
    EXPECT_TRUE(options->contextShouldCaptureArguments());
    EXPECT_EQ(withContext("export-local='VARIABLE'")->contextLocalSymbolExportType(), 0u);
}

TEST(QVScopeSymbolOptions, AContextIsFoldableUnlessItSaysFalse) {
    EXPECT_TRUE(withContext("")->isContextFoldable());
    EXPECT_TRUE(withContext("foldable='TRUE'")->isContextFoldable());
    EXPECT_FALSE(withContext("foldable='FALSE'")->isContextFoldable());
    EXPECT_TRUE(withContext("foldable='no'")->isContextFoldable());
    EXPECT_TRUE(withContext("foldable=''")->isContextFoldable());
}

TEST(QVScopeSymbolOptions, WithoutAWordFunctionsCaptureArgumentsAndOthersDoNot) {
    EXPECT_TRUE(withContext("", "function")->contextShouldCaptureArguments());
    EXPECT_TRUE(withContext("", "static-method")->contextShouldCaptureArguments());
    EXPECT_FALSE(withContext("", "class")->contextShouldCaptureArguments());
    EXPECT_FALSE(withContext("arguments='false'", "function")->contextShouldCaptureArguments());
    EXPECT_FALSE(withContext("arguments=''", "function")->contextShouldCaptureArguments());
    EXPECT_TRUE(withContext("arguments='true'", "class")->contextShouldCaptureArguments());
    // Without a context there is nothing to capture for.
    EXPECT_FALSE(optionsOf("<symbol type='function'/>")->contextShouldCaptureArguments());
}

TEST(QVScopeSymbolOptions, AGroupKeepsTheNameFromBeingTheGroup) {
    EXPECT_FALSE(withContext("group='a' group-by-name='true'")->usesNameAsContextGroupIdentifier());
    const auto options = withContext("group='' group-by-name='true'");
    EXPECT_TRUE(options->contextGroupIdentifier().isNull());
    EXPECT_TRUE(options->usesNameAsContextGroupIdentifier());
    EXPECT_FALSE(withContext("group-by-name='TRUE'")->usesNameAsContextGroupIdentifier());
}

TEST(QVScopeSymbolOptions, AnEmptyPriorityOrIndentationCountsAsMissing) {
    EXPECT_EQ(withContext("priority=''")->contextCapturePriority(), 0u);
    EXPECT_EQ(withContext("priority='12'")->contextCapturePriority(), 12u);
    const auto indentation = [](std::string_view word) {
        return optionsOf("<symbol><context><auto-close indentation='" + std::string(word) +
                         "'/></context></symbol>")
            ->contextAutocloseIndentationBehavior();
    };
    EXPECT_EQ(indentation(""), 1u);
    EXPECT_EQ(indentation("auto"), 1u);
    EXPECT_EQ(indentation("none"), 0u);
    EXPECT_EQ(indentation("AUTO"), 0u);
}

TEST(QVScopeSymbolOptions, AFilterThatDoesNotCompileIsLeftOut) {
    const auto options = optionsOf("<symbol type='class'><filter match-start='a' match-end='('/></symbol>");
    EXPECT_EQ(options->symbolType(), 2u);
    EXPECT_NE(options->leadingMatchRegularExpression(), nullptr);
    EXPECT_EQ(options->trailingMatchRegularExpression(), nullptr);
}

TEST(QVScopeSymbolOptions, OfRepeatedChildrenTheLastCounts) {
    const auto options =
        optionsOf("<symbol><filter match-start='a'/><filter match-end='b'/><context group='a'/>"
                  "<context priority='1'><auto-close string='a'/><auto-close completion='b'/></context>"
                  "<display-name><component/></display-name><display-name/></symbol>");
    EXPECT_EQ(options->leadingMatchRegularExpression(), nullptr);
    EXPECT_NE(options->trailingMatchRegularExpression(), nullptr);
    EXPECT_TRUE(options->contextGroupIdentifier().isNull());
    EXPECT_EQ(options->contextCapturePriority(), 1u);
    EXPECT_TRUE(options->contextAutocloseExpression().isNull());
    EXPECT_EQ(options->contextAutocloseCompletionExpression(), u"b");
    EXPECT_TRUE(options->displayNameFormatter()->components().empty());
}

TEST(QVScopeSymbolOptions, ArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(*unusualOptions()),
              (std::vector<std::string>{
                  "anonymous: bool", "contextAutocloseCompletionExpression: string",
                  "contextAutocloseExpression: string", "contextAutocloseIndentationBehavior: integer",
                  "contextBehavior: integer", "contextCapturePriority: integer", "contextFoldable: integer",
                  "contextFoldingSymbolType: integer", "contextGroupIdentifier: string",
                  "contextLocalSymbolExportType: integer", "contextShouldCaptureArguments: integer",
                  "contextUnclosedBehavior: integer", "displayNameFormatter: QVFormatter",
                  "leadingMatchRegularExpression: QVRegularExpression", "nameSelector: QVSimpleSelector",
                  "symbolScope: integer", "symbolType: integer",
                  "trailingMatchRegularExpression: QVRegularExpression",
                  "usesNameAsContextGroupIdentifier: bool"}));
}

TEST(QVScopeSymbolOptions, SurvivesATripThroughAnArchive) {
    expectUnusual(throughArchive(unusualOptions()));
    const auto plain = throughArchive(std::make_shared<QVScopeSymbolOptions>());
    ASSERT_NE(plain, nullptr);
    EXPECT_TRUE(plain->isContextFoldable());
    EXPECT_EQ(plain->contextAutocloseIndentationBehavior(), 1u);
}

TEST(QVScopeSymbolOptions, ACopyHasAllValues) {
    const auto original = unusualOptions();
    const auto copy = original->copy();
    EXPECT_NE(copy, original);
    expectUnusual(copy);
}
