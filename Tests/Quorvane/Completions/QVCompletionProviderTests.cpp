#include "Quorvane/Completions/QVCompletionProvider.h"

#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Quorvane/Completions/QVSymbolCompletion.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVCompletionProvider> providerOf(std::string_view xml) {
    std::shared_ptr<NSError> error;
    auto provider = QVCompletionProvider::providerWithXMLElement(*elementOf(xml), &error);
    EXPECT_EQ(error, nullptr);
    return provider;
}

std::shared_ptr<QVCompletionProvider> fullProvider() {
    return providerOf("<provider name='members'><expression capture='2'>(\\.)(\\w*)$</expression>"
                      "<selector>a > b, c</selector><set>one</set><set>two.$(1)</set>"
                      "<symbols type='class'/><symbols syntax='x'/><syntax>c</syntax><syntax>d</syntax>"
                      "</provider>");
}

using Texts = std::vector<NSString>;

} // namespace

TEST(QVCompletionProvider, ReadsEachAttributeAndChild) {
    const auto provider = fullProvider();
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(provider->name(), u"members");
    ASSERT_NE(provider->regularExpression(), nullptr);
    EXPECT_EQ(provider->regularExpression()->pattern(), u"(\\.)(\\w*)$");
    EXPECT_EQ(provider->regularExpression()->options(), NSRegularExpressionAnchorsMatchLines);
    EXPECT_EQ(provider->captureNumber(), 2u);
    ASSERT_TRUE(provider->selectors().has_value());
    ASSERT_EQ(provider->selectors()->size(), 2u);
    EXPECT_NE(provider->selectors()->at(0)->next(), nullptr);
    EXPECT_EQ(provider->completionSets(), (Texts{u"one", u"two.$(1)"}));
    ASSERT_EQ(provider->symbolCompletions().size(), 2u);
    EXPECT_EQ(provider->symbolCompletions()[1]->syntaxName(), u"x");
    EXPECT_EQ(provider->syntaxNames(), (Texts{u"c", u"d"}));
}

TEST(QVCompletionProvider, AnEmptyElementGivesAProviderThatOffersNothing) {
    const auto provider = providerOf("<provider/>");
    ASSERT_NE(provider, nullptr);
    EXPECT_TRUE(provider->name().isNull());
    EXPECT_EQ(provider->regularExpression(), nullptr);
    EXPECT_EQ(provider->captureNumber(), 0u);
    EXPECT_EQ(provider->selectors(), std::nullopt);
    EXPECT_EQ(provider->completionSets(), std::nullopt);
    EXPECT_TRUE(provider->symbolCompletions().empty());
    EXPECT_EQ(provider->syntaxNames(), std::nullopt);
}

TEST(QVCompletionProvider, EmptyNamesOfSetsAndSyntaxesAreDropped) {
    const auto provider =
        providerOf("<provider><set/><set>a</set><set></set><syntax/><syntax>b</syntax></provider>");
    EXPECT_EQ(provider->completionSets(), (Texts{u"a"}));
    EXPECT_EQ(provider->syntaxNames(), (Texts{u"b"}));
}

TEST(QVCompletionProvider, ListsThatAreGivenButHoldNothingAreNotMissing) {
    const LogRecorder log;
    const auto provider = providerOf("<provider><selector>[</selector><set/><syntax/></provider>");
    // A selector that can't be read must not make the provider apply everywhere.
    EXPECT_EQ(provider->selectors(), QVCompletionProvider::Selectors());
    EXPECT_EQ(provider->completionSets(), Texts());
    EXPECT_EQ(provider->syntaxNames(), Texts());
    EXPECT_EQ(log.messages(), (Texts{u"Could not compile selector: ["}));
}

TEST(QVCompletionProvider, OfRepeatedExpressionsAndSelectorsTheLastCounts) {
    const auto provider =
        providerOf("<provider><expression capture='1'>(a)</expression><expression>b</expression>"
                   "<selector>x, y</selector><selector>z</selector></provider>");
    EXPECT_EQ(provider->regularExpression()->pattern(), u"b");
    EXPECT_EQ(provider->captureNumber(), 0u);
    ASSERT_TRUE(provider->selectors().has_value());
    EXPECT_EQ(provider->selectors()->size(), 1u);
}

TEST(QVCompletionProvider, AnUnknownCaptureNumberIsAccepted) {
    EXPECT_EQ(providerOf("<provider><expression capture='7'>(a)</expression></provider>")->captureNumber(),
              7u);
}

TEST(QVCompletionProvider, ABadPatternFailsTheProviderWithItsPlace) {
    // The place is where the provider's start tag ends.
    const auto element = elementOf("<completions>\n <provider name='members'>\n"
                                   "  <expression>(</expression>\n </provider></completions>")
                             ->lastElementForName(u"provider");
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVCompletionProvider::providerWithXMLElement(*element, &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), NSString(QVQuorvaneErrorDomain));
    EXPECT_EQ(error->code(), 1);
    EXPECT_EQ(error->localizedDescription(),
              u"Invalid regular expression for completion provider members, {2, 26}");
    EXPECT_EQ(error->underlyingError(), nullptr);
}

TEST(QVCompletionProvider, AFailureWithoutANameIsToldAllTheSame) {
    std::shared_ptr<NSError> error;
    QVCompletionProvider::providerWithXMLElement(
        *elementOf("<provider><expression>(</expression></provider>"), &error);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->localizedDescription(),
              u"Invalid regular expression for completion provider (null), {1, 10}");
    EXPECT_EQ(QVCompletionProvider::providerWithXMLElement(
                  *elementOf("<provider><expression>(</expression></provider>")),
              nullptr);
}

TEST(QVCompletionProvider, ArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(*fullProvider()),
              (std::vector<std::string>{"captureNumber: integer", "completionSets: strings", "name: string",
                                        "regularExpression: NSRegularExpression", "selectors: array",
                                        "symbolCompletions: array", "syntaxNames: strings"}));
}

TEST(QVCompletionProvider, SurvivesATripThroughAnArchive) {
    const auto copy = throughArchive(fullProvider());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->name(), u"members");
    ASSERT_NE(copy->regularExpression(), nullptr);
    EXPECT_EQ(copy->regularExpression()->pattern(), u"(\\.)(\\w*)$");
    EXPECT_EQ(copy->captureNumber(), 2u);
    ASSERT_TRUE(copy->selectors().has_value());
    ASSERT_EQ(copy->selectors()->size(), 2u);
    EXPECT_NE(copy->selectors()->at(0)->next(), nullptr);
    EXPECT_EQ(copy->completionSets(), (Texts{u"one", u"two.$(1)"}));
    ASSERT_EQ(copy->symbolCompletions().size(), 2u);
    EXPECT_EQ(copy->symbolCompletions()[0]->symbolTypes(), std::set<NSUInteger>{2});
    EXPECT_EQ(copy->syntaxNames(), (Texts{u"c", u"d"}));
}

TEST(QVCompletionProvider, MissingListsComeBackMissingFromAnArchiveAndEmptyOnesEmpty) {
    const auto missing = providerOf("<provider/>");
    EXPECT_EQ(archivedKeys(*missing),
              (std::vector<std::string>{"captureNumber: integer", "symbolCompletions: array"}));
    EXPECT_EQ(throughArchive(missing)->selectors(), std::nullopt);
    EXPECT_EQ(throughArchive(missing)->completionSets(), std::nullopt);
    EXPECT_EQ(throughArchive(missing)->syntaxNames(), std::nullopt);

    const auto empty = std::make_shared<QVCompletionProvider>();
    empty->setSelectors(QVCompletionProvider::Selectors());
    empty->setCompletionSets(Texts());
    empty->setSyntaxNames(Texts());
    EXPECT_EQ(throughArchive(empty)->selectors(), QVCompletionProvider::Selectors());
    EXPECT_EQ(throughArchive(empty)->completionSets(), Texts());
    EXPECT_EQ(throughArchive(empty)->syntaxNames(), Texts());
}

TEST(QVCompletionProvider, ACopyHasSymbolCompletionsOfItsOwnAndSharesTheRest) {
    const auto original = fullProvider();
    const auto copy = original->copy();
    EXPECT_EQ(copy->name(), u"members");
    EXPECT_EQ(copy->regularExpression(), original->regularExpression());
    EXPECT_EQ(copy->captureNumber(), 2u);
    EXPECT_EQ(copy->selectors(), original->selectors());
    EXPECT_EQ(copy->completionSets(), original->completionSets());
    EXPECT_EQ(copy->syntaxNames(), original->syntaxNames());
    ASSERT_EQ(copy->symbolCompletions().size(), 2u);
    EXPECT_NE(copy->symbolCompletions()[0], original->symbolCompletions()[0]);
    EXPECT_EQ(copy->symbolCompletions()[0]->symbolTypes(), std::set<NSUInteger>{2});
}
