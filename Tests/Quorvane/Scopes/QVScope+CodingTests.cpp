#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVCollection.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

using Keys = std::vector<std::string>;

std::shared_ptr<QVScope> named(NSString name, QVScope::Scopes subscopes = {}) {
    auto scope = QVScope::scopeWithType(QVScopeTypeMatch, nullptr, std::move(name), nullptr, nullptr);
    scope->setSubscopes(std::move(subscopes));
    return scope;
}

/// A region in which nothing is as it is by default.
std::shared_ptr<QVScope> unusualScope() {
    auto scope = QVScope::scopeWithXMLElement(
        *elementOf(
            "<scope name='string.quoted' atomic='false' optional='true' repeat='true' lookup='dictionary' "
            "spell-check='true' reset-styles='true'><starts-with><expression>(a)</expression>"
            "<capture number='1' name='keyword.x'/></starts-with><ends-with><expression>(b)</expression>"
            "<capture number='0' name='y'/></ends-with><subscopes anchored='true' skip-whitespace='lazy'>"
            "<include syntax='css' collection='rules'/><scope name='inner'><expression>c</expression>"
            "</scope></subscopes><symbol type='class'/></scope>"),
        nullptr);
    scope->setEndRegularExpressionTemplate(u"\\1");
    scope->setTemplateScope(true);
    scope->setIncludeSyntaxName(u"s");
    scope->setIncludeCollectionName(u"c");
    auto options = std::make_shared<QVScopeSubsyntaxOptions>();
    options->setName(u"css");
    scope->setSubsyntaxOptions(options);
    return scope;
}

std::shared_ptr<NSError> refusal(const std::shared_ptr<QVScope> &scope) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVScope>(
                  NSKeyedArchiver::archivedDataWithRootObject(scope), &error),
              nullptr);
    return error;
}

} // namespace

TEST(QVScopeCoding, AScopeArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(*unusualScope()), (Keys{"atomic: bool",
                                                   "captures: array",
                                                   "endCaptures: array",
                                                   "endRegularExpression: QVRegularExpression",
                                                   "endRegularExpressionTemplate: string",
                                                   "includeCollectionName: string",
                                                   "includeSyntaxName: string",
                                                   "lexicalClass: string",
                                                   "name: string",
                                                   "optional: bool",
                                                   "regularExpression: QVRegularExpression",
                                                   "repeating: bool",
                                                   "selector: QVSimpleSelector",
                                                   "shouldResetStyleAttributes: bool",
                                                   "spellCheckingType: integer",
                                                   "subscopes: array",
                                                   "subsyntaxOptions: QVScopeSubsyntaxOptions",
                                                   "symbolLookupBehavior: integer",
                                                   "symbolOptions: QVScopeSymbolOptions",
                                                   "templateScope: bool",
                                                   "type: integer",
                                                   "usesAnchoredSubscopeMatching: bool",
                                                   "whitespaceSkipBehavior: integer"}));
}

TEST(QVScopeCoding, ACaptureArchivesItsFieldsUnderTheirNames) {
    QVCapture capture;
    capture.setName(u"keyword");
    EXPECT_EQ(archivedKeys(capture), (Keys{"lexicalClass: string", "name: string", "number: integer",
                                           "selector: QVSimpleSelector"}));
}

TEST(QVScopeCoding, ACollectionArchivesItsFieldsUnderTheirNames) {
    QVCollection collection;
    collection.setName(u"c");
    EXPECT_EQ(archivedKeys(collection), (Keys{"name: string", "overrides: bool", "scopes: array"}));
}

TEST(QVScopeCoding, SubsyntaxOptionsArchiveTheirFieldsUnderTheirNames) {
    QVScopeSubsyntaxOptions options;
    options.setName(u"a");
    options.setCollection(u"b");
    options.setCaptureNumber(0);
    EXPECT_EQ(archivedKeys(options),
              (Keys{"aliases: string dictionary", "captureNumber: number", "collection: string",
                    "cutoffScopes: array", "exportsSymbols: bool", "name: string", "noncontiguous: bool"}));
    // No number and the number of the whole match must stay apart.
    options.setCaptureNumber(std::nullopt);
    EXPECT_EQ(archivedKeys(options).size(), 6u);
}

TEST(QVScopeCoding, AScopeSurvivesATripThroughAnArchive) {
    const auto scope = throughArchive(unusualScope());
    ASSERT_NE(scope, nullptr);
    EXPECT_EQ(scope->type(), QVScopeTypeStartEnd);
    EXPECT_EQ(scope->name(), u"string.quoted");
    ASSERT_NE(scope->selector(), nullptr);
    EXPECT_EQ(scope->selector()->classes(), (std::set<NSString>{u"quoted", u"string"}));
    EXPECT_EQ(scope->lexicalClass(), u"string");
    ASSERT_NE(scope->regularExpression(), nullptr);
    EXPECT_EQ(scope->regularExpression()->pattern(), u"(a)");
    EXPECT_EQ(scope->regularExpression()->options(), 82u);
    EXPECT_EQ(scope->regularExpression()->numberOfCaptureGroups(), 1u);
    ASSERT_NE(scope->endRegularExpression(), nullptr);
    EXPECT_EQ(scope->endRegularExpression()->pattern(), u"(b)");
    EXPECT_EQ(scope->endRegularExpressionTemplate(), u"\\1");
    EXPECT_FALSE(scope->isAtomic());
    EXPECT_TRUE(scope->isOptional());
    EXPECT_TRUE(scope->isRepeating());
    EXPECT_TRUE(scope->isTemplateScope());
    EXPECT_TRUE(scope->usesAnchoredSubscopeMatching());
    EXPECT_EQ(scope->whitespaceSkipBehavior(), QVWhitespaceSkipLazy);
    EXPECT_TRUE(scope->shouldResetStyleAttributes());
    EXPECT_EQ(scope->symbolLookupBehavior(), 4u);
    EXPECT_EQ(scope->spellCheckingType(), QVSpellCheckingEnabled);
    EXPECT_EQ(scope->includeSyntaxName(), u"s");
    EXPECT_EQ(scope->includeCollectionName(), u"c");
    ASSERT_NE(scope->symbolOptions(), nullptr);
    EXPECT_EQ(scope->symbolOptions()->symbolType(), 2u);
    EXPECT_TRUE(scope->directHasSymbol());
    ASSERT_NE(scope->subsyntaxOptions(), nullptr);
    EXPECT_EQ(scope->subsyntaxOptions()->name(), u"css");

    ASSERT_EQ(scope->captures().size(), 1u);
    EXPECT_EQ(scope->captures()[0]->number(), 1u);
    EXPECT_EQ(scope->captures()[0]->name(), u"keyword.x");
    EXPECT_EQ(scope->captures()[0]->lexicalClass(), u"keyword");
    ASSERT_NE(scope->captures()[0]->selector(), nullptr);
    EXPECT_EQ(scope->captures()[0]->selector()->classes(), (std::set<NSString>{u"keyword", u"x"}));
    EXPECT_EQ(scope->captures()[0]->parent(), scope);
    ASSERT_EQ(scope->endCaptures().size(), 1u);
    EXPECT_EQ(scope->endCaptures()[0]->name(), u"y");
    EXPECT_EQ(scope->endCaptures()[0]->parent(), scope);

    ASSERT_EQ(scope->subscopes().size(), 2u);
    EXPECT_EQ(scope->subscopes()[0]->type(), QVScopeTypeInclude);
    EXPECT_EQ(scope->subscopes()[0]->name(), u"css:rules");
    EXPECT_EQ(scope->subscopes()[0]->includeSyntaxName(), u"css");
    EXPECT_EQ(scope->subscopes()[0]->selector(), nullptr);
    EXPECT_EQ(scope->subscopes()[1]->name(), u"inner");
    for (const auto &subscope : scope->subscopes())
        EXPECT_EQ(subscope->parent(), scope);
}

TEST(QVScopeCoding, ACommentIsStillOneThatCanHaveASymbol) {
    EXPECT_TRUE(throughArchive(named(u"comment.line"))->directHasSymbol());
    EXPECT_FALSE(throughArchive(named(u"keyword"))->directHasSymbol());
}

TEST(QVScopeCoding, ACollectionSurvivesATripThroughAnArchive) {
    const auto original = std::make_shared<QVCollection>();
    original->setName(u"rules");
    original->setOverrides(true);
    original->setScopes({named(u"a"), named(u"b", {named(u"c")})});
    const auto collection = throughArchive(original);
    ASSERT_NE(collection, nullptr);
    EXPECT_EQ(collection->name(), u"rules");
    EXPECT_TRUE(collection->overrides());
    ASSERT_EQ(collection->scopes().size(), 2u);
    EXPECT_EQ(collection->scopes()[0]->name(), u"a");
    EXPECT_EQ(collection->scopes()[1]->subscopes().at(0)->name(), u"c");
    EXPECT_EQ(collection->scopes()[0]->parent(), nullptr);
}

TEST(QVScopeCoding, SubsyntaxOptionsSurviveATripThroughAnArchive) {
    const auto original = std::make_shared<QVScopeSubsyntaxOptions>();
    original->setName(u"a");
    original->setCollection(u"b");
    original->setCaptureNumber(3);
    original->setNoncontiguous(true);
    original->setExportsSymbols(true);
    original->setAliases({{u"js", u"script"}});
    original->setCutoffScopes({named(u"cut")});
    const auto options = throughArchive(original);
    ASSERT_NE(options, nullptr);
    EXPECT_EQ(options->name(), u"a");
    EXPECT_EQ(options->collection(), u"b");
    EXPECT_EQ(options->captureNumber(), 3);
    EXPECT_TRUE(options->isNoncontiguous());
    EXPECT_TRUE(options->exportsSymbols());
    EXPECT_EQ(options->aliases(), (std::map<NSString, NSString>{{u"js", u"script"}}));
    ASSERT_EQ(options->cutoffScopes().size(), 1u);
    EXPECT_EQ(options->cutoffScopes()[0]->name(), u"cut");
    EXPECT_EQ(throughArchive(std::make_shared<QVScopeSubsyntaxOptions>())->captureNumber(), std::nullopt);
}

// Archives that are no trees

TEST(QVScopeCoding, AnArchivedScopeThatContainsItselfIsRefused) {
    const auto scope = named(u"a");
    const auto inner = named(u"b", {scope});
    scope->addSubscope(inner);
    const auto error = refusal(scope);
    scope->setSubscopes({});
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), NSString(NSCocoaErrorDomain));
    EXPECT_EQ(error->code(), 4864);
    EXPECT_EQ(error->localizedDescription(), u"The archive's objects do not form a tree.");
}

TEST(QVScopeCoding, AnArchivedScopeThatEndsItsOwnSubsyntaxIsRefused) {
    const auto scope = named(u"a");
    auto options = std::make_shared<QVScopeSubsyntaxOptions>();
    options->setCutoffScopes({scope});
    scope->setSubsyntaxOptions(options);
    EXPECT_NE(refusal(scope), nullptr);
    options->setCutoffScopes({});
}

TEST(QVScopeCoding, AnArchivedScopeInTwoPlacesIsRefused) {
    const auto shared = named(u"a");
    EXPECT_NE(refusal(named(u"b", {shared, shared})), nullptr);
    EXPECT_NE(refusal(named(u"b", {named(u"c", {shared}), shared})), nullptr);
    EXPECT_NE(refusal(named(u"b", {shared, named(u"c", {shared})})), nullptr);
}

TEST(QVScopeCoding, SubsyntaxOptionsOfTwoScopesAreRefused) {
    const auto first = named(u"a");
    const auto second = named(u"b");
    const auto options = std::make_shared<QVScopeSubsyntaxOptions>();
    first->setSubsyntaxOptions(options);
    second->setSubsyntaxOptions(options);
    EXPECT_NE(refusal(named(u"c", {first, second})), nullptr);
}

TEST(QVScopeCoding, WhatOneArchiveHoldsSaysNothingAboutTheNext) {
    const auto scope = named(u"a", {named(u"b")});
    const NSData archive = NSKeyedArchiver::archivedDataWithRootObject(scope);
    for (int round = 0; round < 3; ++round)
        EXPECT_NE(NSKeyedUnarchiver::unarchivedObjectOfClass<QVScope>(archive), nullptr);
}

TEST(QVScopeCoding, AChainThatIsTiedTogetherFromShallowPiecesIsRefused) {
    // Each scope of the list is read before the one that holds it, so that no reading ever goes deep; the
    // chain that comes out would be as long as the list.
    const auto holder = std::make_shared<QVCollection>();
    QVCollection::Scopes list{named(u"leaf")};
    while (list.size() < limits::archiveNestingDepth + 10)
        list.push_back(named(u"x", {list.back()}));
    holder->setScopes(list);
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVCollection>(
                  NSKeyedArchiver::archivedDataWithRootObject(holder), &error),
              nullptr);
    EXPECT_NE(error, nullptr);
    holder->setScopes({});
}

TEST(QVScopeCoding, AsManyLevelsAsAnArchiveMayNestAreRead) {
    // A scope and the list of its subscopes are two objects for each level.
    auto scope = named(u"leaf");
    for (std::size_t level = 1; level < limits::archiveNestingDepth / 2 - 4; ++level)
        scope = named(u"x", {scope});
    EXPECT_NE(throughArchive(scope), nullptr);
}

TEST(QVScopeCoding, MoreLevelsThanAnArchiveMayNestAreRefused) {
    auto scope = named(u"leaf");
    for (std::size_t level = 1; level < limits::archiveNestingDepth + 10; ++level)
        scope = named(u"x", {scope});
    NSData archive;
    try {
        archive = NSKeyedArchiver::archivedDataWithRootObject(scope);
    } catch (const std::exception &) {
        // Refused when it is written is as good.
        return;
    }
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVScope>(archive, &error), nullptr);
}

TEST(QVLoadable, ASyntaxIsAppliedToAScopeAndItsSubscopes) {
    const auto syntax = std::make_shared<QVSyntax>();
    const auto scope = named(u"a", {named(u"b", {named(u"c")}), named(u"d")});
    QVLoadable::recursivelyApplySyntax(syntax, scope);
    EXPECT_EQ(scope->parentSyntax(), syntax);
    EXPECT_EQ(scope->subscopes()[0]->parentSyntax(), syntax);
    EXPECT_EQ(scope->subscopes()[0]->subscopes()[0]->parentSyntax(), syntax);
    EXPECT_EQ(scope->subscopes()[1]->parentSyntax(), syntax);
}
