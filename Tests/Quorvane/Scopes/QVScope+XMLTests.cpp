#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Support/Printing.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVScope> scopeOf(std::string_view xml) {
    std::shared_ptr<NSError> error;
    auto scope = QVScope::scopeWithXMLElement(*elementOf(xml), nullptr, &error);
    EXPECT_EQ(error, nullptr) << error->localizedDescription().UTF8String();
    EXPECT_NE(scope, nullptr);
    return scope ? scope : std::make_shared<QVScope>();
}

/// A region with these attributes and these children beside a plain start and end.
std::shared_ptr<QVScope> regionOf(std::string_view attributes, std::string_view children = "") {
    return scopeOf("<scope " + std::string(attributes) +
                   "><starts-with><expression>a</expression></starts-with><ends-with><expression>b"
                   "</expression></ends-with>" +
                   std::string(children) + "</scope>");
}

std::shared_ptr<QVScope> matchOf(std::string_view attributes, std::string_view children = "") {
    return scopeOf("<scope " + std::string(attributes) + "><expression>a</expression>" +
                   std::string(children) + "</scope>");
}

NSString patternOfStrings(std::string_view strings) {
    const auto scope = scopeOf("<scope>" + std::string(strings) + "</scope>");
    return scope->regularExpression() ? scope->regularExpression()->pattern() : NSString();
}

std::vector<NSString> names(const std::vector<std::shared_ptr<QVScope>> &scopes) {
    std::vector<NSString> result;
    for (const auto &scope : scopes)
        result.push_back(scope->name());
    return result;
}

using Texts = std::vector<NSString>;

} // namespace

// Kinds

TEST(QVScopeXML, StartAndEndMakeARegion) {
    const auto scope = regionOf("name='string.quoted'");
    EXPECT_EQ(scope->type(), QVScopeTypeStartEnd);
    EXPECT_EQ(scope->name(), u"string.quoted");
    EXPECT_EQ(scope->selector(), QVSimpleSelector::simpleSelectorWithString(u"string.quoted").get());
    EXPECT_EQ(scope->lexicalClass(), u"string");
    ASSERT_NE(scope->regularExpression(), nullptr);
    EXPECT_EQ(scope->regularExpression()->pattern(), u"a");
    EXPECT_EQ(scope->regularExpression()->options(), 82u);
    ASSERT_NE(scope->endRegularExpression(), nullptr);
    EXPECT_EQ(scope->endRegularExpression()->pattern(), u"b");
    EXPECT_EQ(scope->endRegularExpression()->options(), 82u);
    EXPECT_TRUE(scope->endRegularExpressionTemplate().isNull());
    EXPECT_EQ(scope->symbolLookupBehavior(), 1u);
    EXPECT_EQ(scope->spellCheckingType(), QVSpellCheckingInherit);
    EXPECT_EQ(scope->symbolOptions(), nullptr);
    EXPECT_FALSE(scope->definesSubsyntax());
}

TEST(QVScopeXML, AnExpressionMakesASingleMatch) {
    const auto scope = scopeOf("<scope name='keyword'><expression> a b </expression></scope>");
    EXPECT_EQ(scope->type(), QVScopeTypeMatch);
    EXPECT_EQ(scope->lexicalClass(), u"keyword");
    EXPECT_EQ(scope->regularExpression()->pattern(), u" a b ");
    EXPECT_EQ(scope->regularExpression()->options(), 82u);
    EXPECT_EQ(scope->endRegularExpression(), nullptr);
}

TEST(QVScopeXML, AStartWithoutAnEndReadsAsASingleMatch) {
    const auto scope = scopeOf("<scope><starts-with><expression>(</expression></starts-with>"
                               "<expression>x</expression></scope>");
    EXPECT_EQ(scope->type(), QVScopeTypeMatch);
    EXPECT_EQ(scope->regularExpression()->pattern(), u"x");
}

TEST(QVScopeXML, WithoutANameAScopeIsUnknown) {
    EXPECT_EQ(matchOf("")->name(), u"unknown");
    EXPECT_EQ(matchOf("name=''")->name(), u"unknown");
    EXPECT_EQ(regionOf("")->name(), u"unknown");
    EXPECT_EQ(scopeOf("<cut-off><expression>a</expression></cut-off>")->name(), u"unknown");
    EXPECT_EQ(matchOf("")->selector(), QVSimpleSelector::simpleSelectorWithString(u"unknown").get());
}

TEST(QVScopeXML, ScopesLearnTheSyntaxTheyAreReadFor) {
    const auto syntax = std::make_shared<QVSyntax>();
    const auto scope = QVScope::scopeWithXMLElement(
        *elementOf("<scope><starts-with><expression>a</expression></starts-with><ends-with/><subscopes>"
                   "<include/></subscopes></scope>"),
        syntax);
    ASSERT_NE(scope, nullptr);
    EXPECT_EQ(scope->parentSyntax(), syntax);
    ASSERT_EQ(scope->subscopes().size(), 1u);
    EXPECT_EQ(scope->subscopes()[0]->parentSyntax(), syntax);
}

TEST(QVScopeXML, OfRepeatedChildrenTheLastCounts) {
    const auto scope = scopeOf(
        "<scope><starts-with><expression>a</expression></starts-with><starts-with><expression>b</expression>"
        "<expression>c</expression></starts-with><ends-with><expression>d</expression></ends-with><ends-with>"
        "<template>e</template><template>f</template></ends-with><subscopes><include collection='x'/>"
        "</subscopes><subscopes><include collection='y'/></subscopes></scope>");
    EXPECT_EQ(scope->regularExpression()->pattern(), u"c");
    EXPECT_EQ(scope->endRegularExpression(), nullptr);
    EXPECT_EQ(scope->endRegularExpressionTemplate(), u"f");
    EXPECT_EQ(names(scope->subscopes()), (Texts{u"self:y"}));
}

// Starts and ends

TEST(QVScopeXML, ARegionNeedsNoEndPattern) {
    const auto scope = scopeOf("<scope><starts-with><expression>a</expression><capture number='0'/>"
                               "</starts-with><ends-with><capture number='9'/></ends-with></scope>");
    EXPECT_EQ(scope->type(), QVScopeTypeStartEnd);
    EXPECT_EQ(scope->endRegularExpression(), nullptr);
    EXPECT_TRUE(scope->endRegularExpressionTemplate().isNull());
    // Captures of nothing are not read.
    EXPECT_TRUE(scope->endCaptures().empty());
}

TEST(QVScopeXML, AnEndTemplateIsKeptAsItIs) {
    const auto scope =
        scopeOf("<scope><starts-with><expression>(a)</expression></starts-with><ends-with>"
                "<template>\\1 (</template><capture number='7' name='x'/></ends-with></scope>");
    EXPECT_EQ(scope->endRegularExpressionTemplate(), u"\\1 (");
    EXPECT_EQ(scope->endRegularExpression(), nullptr);
    // How many groups it has is known only when it is filled.
    ASSERT_EQ(scope->endCaptures().size(), 1u);
    EXPECT_EQ(scope->endCaptures()[0]->number(), 7u);
}

TEST(QVScopeXML, AnEndExpressionGoesBeforeStringsAndThoseBeforeATemplate) {
    const auto both = scopeOf("<scope><starts-with><expression>a</expression></starts-with><ends-with>"
                              "<template>t</template><strings><string>s</string></strings>"
                              "<expression>e</expression></ends-with></scope>");
    EXPECT_EQ(both->endRegularExpression()->pattern(), u"e");
    EXPECT_TRUE(both->endRegularExpressionTemplate().isNull());
    const auto strings = scopeOf("<scope><starts-with><expression>a</expression></starts-with><ends-with>"
                                 "<template>t</template><strings><string>s</string></strings>"
                                 "</ends-with></scope>");
    EXPECT_EQ(strings->endRegularExpression()->options(), 80u);
    EXPECT_TRUE(strings->endRegularExpressionTemplate().isNull());
}

TEST(QVScopeXML, AnEmptyExpressionIsPresent) {
    EXPECT_EQ(scopeOf("<scope><expression/><strings><string>a</string></strings></scope>")
                  ->regularExpression()
                  ->pattern(),
              u"");
    const auto region = scopeOf("<scope><starts-with><expression/></starts-with><ends-with><expression/>"
                                "<template>t</template></ends-with></scope>");
    EXPECT_EQ(region->regularExpression()->pattern(), u"");
    EXPECT_EQ(region->endRegularExpression()->pattern(), u"");
    EXPECT_EQ(scopeOf("<cut-off><expression/></cut-off>")->regularExpression()->pattern(), u"");
}

TEST(QVScopeXML, CapturesBelongToTheirExpression) {
    const auto scope =
        scopeOf("<scope><starts-with><expression>(a)(b)</expression><capture number='2' name='keyword'/>"
                "<capture number='1'/></starts-with><ends-with><expression>(c)</expression>"
                "<capture number='1' name='x.y'/></ends-with></scope>");
    ASSERT_EQ(scope->captures().size(), 2u);
    EXPECT_EQ(scope->captures()[0]->number(), 2u);
    EXPECT_EQ(scope->captures()[0]->name(), u"keyword");
    EXPECT_EQ(scope->captures()[0]->lexicalClass(), u"keyword");
    EXPECT_EQ(scope->captures()[0]->parent(), scope);
    EXPECT_EQ(scope->captures()[1]->name(), u"unknown");
    ASSERT_EQ(scope->endCaptures().size(), 1u);
    EXPECT_EQ(scope->endCaptures()[0]->selector(), QVSimpleSelector::simpleSelectorWithString(u"x.y").get());
    EXPECT_EQ(scope->endCaptures()[0]->parent(), scope);
}

TEST(QVScopeXML, TheWholeMatchIsCaptureZero) {
    EXPECT_EQ(matchOf("", "<capture number='0' name='x'/>")->captures().at(0)->number(), 0u);
}

// Attributes

TEST(QVScopeXML, StringsAndCommentsAreAtomicRegionsAndOthersAreNot) {
    EXPECT_TRUE(regionOf("name='string'")->isAtomic());
    EXPECT_TRUE(regionOf("name='comment.line'")->isAtomic());
    EXPECT_FALSE(regionOf("name='keyword'")->isAtomic());
    EXPECT_TRUE(matchOf("name='keyword'")->isAtomic());
}

TEST(QVScopeXML, AtomicIsSetOnRegionsAloneByExactWords) {
    EXPECT_FALSE(regionOf("name='string' atomic='false'")->isAtomic());
    EXPECT_TRUE(regionOf("name='x' atomic='true'")->isAtomic());
    EXPECT_FALSE(regionOf("name='x' atomic='TRUE'")->isAtomic());
    EXPECT_TRUE(regionOf("name='string' atomic='no'")->isAtomic());
    EXPECT_TRUE(matchOf("atomic='false'")->isAtomic());
}

TEST(QVScopeXML, OptionalAndRepeatAreTrueInAnyCase) {
    for (const auto &scope :
         {regionOf("optional='TRUE' repeat='True'"), matchOf("optional='true' repeat='true'"),
          scopeOf("<include optional='TRUE' repeat='TRUE'/>")}) {
        EXPECT_TRUE(scope->isOptional());
        EXPECT_TRUE(scope->isRepeating());
    }
    for (const auto &scope : {regionOf("optional='yes' repeat=''"), matchOf(""), scopeOf("<include/>")}) {
        EXPECT_FALSE(scope->isOptional());
        EXPECT_FALSE(scope->isRepeating());
    }
}

TEST(QVScopeXML, SpellCheckingIsAWordInAnyCase) {
    EXPECT_EQ(matchOf("spell-check='TRUE'")->spellCheckingType(), QVSpellCheckingEnabled);
    EXPECT_EQ(regionOf("spell-check='False'")->spellCheckingType(), QVSpellCheckingDisabled);
    EXPECT_EQ(matchOf("spell-check='inherit'")->spellCheckingType(), QVSpellCheckingInherit);
    EXPECT_EQ(matchOf("spell-check='maybe'")->spellCheckingType(), QVSpellCheckingInherit);
}

TEST(QVScopeXML, LookupIsAWordInAnyCaseAndInheritsWithoutOne) {
    EXPECT_EQ(matchOf("lookup='DOCUMENTATION'")->symbolLookupBehavior(), 3u);
    EXPECT_EQ(regionOf("lookup='index'")->symbolLookupBehavior(), 2u);
    EXPECT_EQ(matchOf("lookup='everywhere'")->symbolLookupBehavior(), 0u);
    EXPECT_EQ(matchOf("")->symbolLookupBehavior(), 1u);
}

TEST(QVScopeXML, ResettingStylesIsTrueInAnyCase) {
    EXPECT_TRUE(matchOf("reset-styles='TRUE'")->shouldResetStyleAttributes());
    EXPECT_TRUE(regionOf("reset-styles='true'")->shouldResetStyleAttributes());
    EXPECT_FALSE(matchOf("reset-styles='1'")->shouldResetStyleAttributes());
}

TEST(QVScopeXML, RegionsAndMatchesCanBeSymbols) {
    EXPECT_EQ(matchOf("", "<symbol type='class'/><symbol type='method'/>")->symbolOptions()->symbolType(),
              11u);
    EXPECT_EQ(regionOf("", "<symbol type='class'/>")->symbolOptions()->symbolType(), 2u);
    EXPECT_EQ(scopeOf("<cut-off><expression>a</expression><symbol type='class'/></cut-off>")->symbolOptions(),
              nullptr);
}

// Word lists

TEST(QVScopeXML, WordsBecomeAPatternWithBoundaries) {
    // One word of one unit: the list's own pattern is "(?:x)".
    EXPECT_EQ(patternOfStrings("<strings><string>x</string></strings>"), u"\\b((?:x))\\b");
    EXPECT_EQ(patternOfStrings("<strings word-boundary='FALSE'><string>x</string></strings>"), u"((?:x))");
    EXPECT_EQ(patternOfStrings("<strings word-boundary='no'><string>x</string></strings>"), u"\\b((?:x))\\b");
    EXPECT_EQ(patternOfStrings("<strings prefix='(?&lt;=@)' suffix='(?=:)'><string>x</string></strings>"),
              u"\\b(?<=@)((?:x))(?=:)\\b");
}

TEST(QVScopeXML, WordListsAreCompiledWithoutLayout) {
    const auto scope =
        scopeOf("<scope><strings word-boundary='false'><string>a b</string></strings></scope>");
    EXPECT_EQ(scope->regularExpression()->options(), 80u);
    EXPECT_EQ(scope->regularExpression()->rangeOfFirstMatchInString(u"xa by", 0, {0, 5}), (NSRange{1, 3}));
}

TEST(QVScopeXML, CaseInsensitiveListsAreInLowerCase) {
    const auto scope =
        scopeOf("<scope><strings case-insensitive='TRUE'><string>X</string></strings></scope>");
    EXPECT_EQ(scope->regularExpression()->options(), 81u);
    EXPECT_EQ(scope->regularExpression()->pattern(), u"\\b((?:x))\\b");
    EXPECT_EQ(scope->regularExpression()->rangeOfFirstMatchInString(u"a X", 0, {0, 3}), (NSRange{2, 1}));
    EXPECT_EQ(patternOfStrings("<strings case-insensitive='yes'><string>X</string></strings>"),
              u"\\b((?:X))\\b");
}

TEST(QVScopeXML, EmptyWordsAreDroppedAndOtherElementsPassedOver) {
    EXPECT_EQ(patternOfStrings("<strings>text<string/><word>y</word><string>x</string></strings>"),
              u"\\b((?:x))\\b");
}

TEST(QVScopeXML, StringsStandForStartsAndEnds) {
    const auto scope = scopeOf("<scope><starts-with><strings><string>x</string></strings></starts-with>"
                               "<ends-with><strings case-insensitive='true'><string>Y</string></strings>"
                               "</ends-with></scope>");
    EXPECT_EQ(scope->regularExpression()->pattern(), u"\\b((?:x))\\b");
    EXPECT_EQ(scope->regularExpression()->options(), 80u);
    EXPECT_EQ(scope->endRegularExpression()->pattern(), u"\\b((?:y))\\b");
    EXPECT_EQ(scope->endRegularExpression()->options(), 81u);
}

// Subscopes

TEST(QVScopeXML, SubscopesStandInDocumentOrder) {
    const auto scope =
        regionOf("", "<subscopes><include collection='a'/><scope name='b'><expression>x</expression></scope>"
                     "<other/><cut-off name='c'><expression>y</expression></cut-off><include/></subscopes>");
    EXPECT_EQ(names(scope->subscopes()), (Texts{u"self:a", u"b", u"c", u"self"}));
    for (const auto &subscope : scope->subscopes())
        EXPECT_EQ(subscope->parent(), scope);
    EXPECT_FALSE(scope->usesAnchoredSubscopeMatching());
    EXPECT_EQ(scope->whitespaceSkipBehavior(), QVWhitespaceSkipNone);
}

TEST(QVScopeXML, AnchoredSubscopesSkipWhitespaceGreedilyUnlessTheySayOtherwise) {
    const auto behavior = [](std::string_view attributes) {
        const auto scope = regionOf("", "<subscopes anchored='TRUE' " + std::string(attributes) + "/>");
        EXPECT_TRUE(scope->usesAnchoredSubscopeMatching());
        return scope->whitespaceSkipBehavior();
    };
    EXPECT_EQ(behavior(""), QVWhitespaceSkipGreedy);
    EXPECT_EQ(behavior("skip-whitespace='true'"), QVWhitespaceSkipGreedy);
    EXPECT_EQ(behavior("skip-whitespace='GREEDY'"), QVWhitespaceSkipGreedy);
    EXPECT_EQ(behavior("skip-whitespace='Lazy'"), QVWhitespaceSkipLazy);
    EXPECT_EQ(behavior("skip-whitespace='FALSE'"), QVWhitespaceSkipNone);
    EXPECT_EQ(behavior("skip-whitespace='none'"), QVWhitespaceSkipNone);
    EXPECT_EQ(behavior("skip-whitespace='often'"), QVWhitespaceSkipGreedy);
    EXPECT_EQ(behavior("skip-whitespace=''"), QVWhitespaceSkipGreedy);
}

TEST(QVScopeXML, WithoutAnchoringTheWordForWhitespaceIsNotRead) {
    EXPECT_EQ(regionOf("", "<subscopes skip-whitespace='greedy'/>")->whitespaceSkipBehavior(),
              QVWhitespaceSkipNone);
}

TEST(QVScopeXML, ASingleMatchHasNoSubscopes) {
    const auto scope = matchOf("", "<subscopes><include/></subscopes><subsyntax name='x'/>");
    EXPECT_TRUE(scope->subscopes().empty());
    EXPECT_FALSE(scope->definesSubsyntax());
}

// Subsyntaxes

TEST(QVScopeXML, ASubsyntaxIsNamed) {
    const auto scope = regionOf("", "<subsyntax name='css' collection='rules' noncontiguous='TRUE' "
                                    "export-symbols='True'/>");
    ASSERT_TRUE(scope->definesSubsyntax());
    const auto &options = scope->subsyntaxOptions();
    EXPECT_EQ(options->name(), u"css");
    EXPECT_EQ(options->collection(), u"rules");
    EXPECT_EQ(options->captureNumber(), std::nullopt);
    EXPECT_TRUE(options->isNoncontiguous());
    EXPECT_TRUE(options->exportsSymbols());
    EXPECT_TRUE(options->aliases().empty());
    EXPECT_TRUE(options->cutoffScopes().empty());
}

TEST(QVScopeXML, ACaptureOfTheStartTakesThePlaceOfAName) {
    const auto options =
        regionOf("", "<subsyntax capture='2' name='css' collection='rules'/>")->subsyntaxOptions();
    EXPECT_EQ(options->captureNumber(), 2);
    EXPECT_TRUE(options->name().isNull());
    EXPECT_TRUE(options->collection().isNull());
    EXPECT_FALSE(options->isNoncontiguous());
    EXPECT_FALSE(options->exportsSymbols());
}

TEST(QVScopeXML, EmptyNamesOfASubsyntaxCountAsMissing) {
    const auto options = regionOf("", "<subsyntax capture='' name='' collection=''/>")->subsyntaxOptions();
    EXPECT_EQ(options->captureNumber(), std::nullopt);
    EXPECT_TRUE(options->name().isNull());
    EXPECT_TRUE(options->collection().isNull());
}

TEST(QVScopeXML, AliasesNeedAKeyAndAValue) {
    const auto options =
        regionOf("", "<subsyntax capture='1'><alias key='js' value='script'/><alias key='' value='x'/>"
                     "<alias key='y'/><alias value='z'/><alias key='sh' value='shell'/></subsyntax>")
            ->subsyntaxOptions();
    EXPECT_EQ(options->aliases(), (std::map<NSString, NSString>{{u"js", u"script"}, {u"sh", u"shell"}}));
}

TEST(QVScopeXML, ASubsyntaxHasCutoffs) {
    const auto options = regionOf("", "<subsyntax name='x'><cut-off name='a'><expression>e</expression>"
                                      "</cut-off><scope name='no'><expression>f</expression></scope>"
                                      "<cut-off name='b'><expression>g</expression></cut-off></subsyntax>")
                             ->subsyntaxOptions();
    EXPECT_EQ(names(options->cutoffScopes()), (Texts{u"a", u"b"}));
    EXPECT_EQ(options->cutoffScopes()[0]->type(), QVScopeTypeCutoff);
}

TEST(QVScopeXML, ASubsyntaxKeepsSubscopesFromBeingRead) {
    // The subscopes would fail.
    const auto scope = regionOf("", "<subscopes><scope/></subscopes><subsyntax name='x'/>");
    EXPECT_TRUE(scope->definesSubsyntax());
    EXPECT_TRUE(scope->subscopes().empty());
}

// Includes

TEST(QVScopeXML, AnIncludeIsNamedByWhatItRefersTo) {
    const auto both = scopeOf("<include syntax='css' collection='rules'/>");
    EXPECT_EQ(both->type(), QVScopeTypeInclude);
    EXPECT_EQ(both->name(), u"css:rules");
    EXPECT_EQ(both->includeSyntaxName(), u"css");
    EXPECT_EQ(both->includeCollectionName(), u"rules");
    EXPECT_EQ(both->regularExpression(), nullptr);
    EXPECT_EQ(both->selector(), nullptr);

    const auto syntax = scopeOf("<include syntax='css' collection=''/>");
    EXPECT_EQ(syntax->name(), u"css");
    EXPECT_TRUE(syntax->includeCollectionName().isNull());

    const auto neither = scopeOf("<include syntax=''/>");
    EXPECT_EQ(neither->name(), u"self");
    EXPECT_EQ(neither->includeSyntaxName(), u"self");
    EXPECT_TRUE(neither->includeCollectionName().isNull());
}

// Cut-offs

TEST(QVScopeXML, ACutoffIsAlwaysOptionalAndItsPatternHasNoLayout) {
    const auto scope = scopeOf("<cut-off name='end' optional='false'><expression>a b(c)</expression>"
                               "<capture number='1' name='x'/></cut-off>");
    EXPECT_EQ(scope->type(), QVScopeTypeCutoff);
    EXPECT_EQ(scope->name(), u"end");
    EXPECT_TRUE(scope->isOptional());
    EXPECT_EQ(scope->regularExpression()->options(), 80u);
    EXPECT_EQ(scope->regularExpression()->pattern(), u"a b(c)");
    ASSERT_EQ(scope->captures().size(), 1u);
    EXPECT_EQ(scope->captures()[0]->name(), u"x");
}

TEST(QVScopeXML, ACutoffWithoutAnExpressionIsNothingAndNoError) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVScope::scopeWithXMLElement(*elementOf("<cut-off name='x'/>"), nullptr, &error), nullptr);
    EXPECT_EQ(error, nullptr);
}
