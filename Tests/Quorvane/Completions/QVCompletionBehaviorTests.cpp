#include "Quorvane/Completions/QVCompletionBehavior.h"

#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Tests/Quorvane/Completions/SymbolFixture.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVCompletionBehavior> behaviorOf(std::string_view xml) {
    return QVCompletionBehavior::behaviorWithXMLElement(*elementOf(xml));
}

std::shared_ptr<QVCompletionBehavior> withArguments(std::string_view attributes) {
    return behaviorOf("<behavior><arguments " + std::string(attributes) + "/></behavior>");
}

/// A behaviour in which nothing has its default.
std::shared_ptr<QVCompletionBehavior> unusualBehavior() {
    return behaviorOf("<behavior symbol='function' variables='true' complete-on-confirm='true' "
                      "deprecated='true' prefix='^a' suffix='b$'><prepend>p</prepend><append>q</append>"
                      "<arguments prefix='(' suffix=')' separator=', ' prefix-each='&lt;' suffix-each='>' "
                      "prepend-separator='true' append-empty='false' tokenize='false'/></behavior>");
}

} // namespace

TEST(QVCompletionBehavior, ANewOneDoesNotTokenize) {
    const QVCompletionBehavior behavior;
    EXPECT_FALSE(behavior.shouldTokenize());
    EXPECT_TRUE(behavior.shouldAppendEmptyArgumentList());
    EXPECT_TRUE(behavior.shouldTokenizeArguments());
    EXPECT_FALSE(behavior.prependInitialArgumentListSeparator());
    EXPECT_FALSE(behavior.usesVariableSubstitution());
    EXPECT_FALSE(behavior.shouldCompleteOnConfirm());
    EXPECT_FALSE(behavior.deprecated());
    EXPECT_EQ(behavior.symbolType(), 0u);
}

TEST(QVCompletionBehavior, AnEmptyElementGivesTheDefaultsOfFiles) {
    const auto behavior = behaviorOf("<behavior/>");
    EXPECT_TRUE(behavior->shouldTokenize());
    EXPECT_EQ(behavior->symbolType(), 0u);
    EXPECT_FALSE(behavior->usesVariableSubstitution());
    EXPECT_FALSE(behavior->shouldCompleteOnConfirm());
    EXPECT_FALSE(behavior->deprecated());
    EXPECT_EQ(behavior->prefixRegularExpression(), nullptr);
    EXPECT_EQ(behavior->suffixRegularExpression(), nullptr);
    for (const NSString &text : {behavior->prepend(), behavior->append(), behavior->argumentListPrefix(),
                                 behavior->argumentListSuffix(), behavior->argumentListSeparator(),
                                 behavior->argumentPrefix(), behavior->argumentSuffix()})
        EXPECT_TRUE(text.isNull());
    EXPECT_FALSE(behavior->prependInitialArgumentListSeparator());
    EXPECT_TRUE(behavior->shouldAppendEmptyArgumentList());
    EXPECT_TRUE(behavior->shouldTokenizeArguments());
}

TEST(QVCompletionBehavior, ReadsEachAttributeAndChild) {
    const auto behavior = unusualBehavior();
    EXPECT_EQ(behavior->symbolType(), 10u);
    EXPECT_TRUE(behavior->usesVariableSubstitution());
    EXPECT_TRUE(behavior->shouldCompleteOnConfirm());
    EXPECT_TRUE(behavior->deprecated());
    ASSERT_NE(behavior->prefixRegularExpression(), nullptr);
    EXPECT_EQ(behavior->prefixRegularExpression()->pattern(), u"^a");
    EXPECT_EQ(behavior->prefixRegularExpression()->options(), NSRegularExpressionAnchorsMatchLines);
    ASSERT_NE(behavior->suffixRegularExpression(), nullptr);
    EXPECT_EQ(behavior->suffixRegularExpression()->pattern(), u"b$");
    EXPECT_EQ(behavior->suffixRegularExpression()->options(), NSRegularExpressionAnchorsMatchLines);
    EXPECT_EQ(behavior->prepend(), u"p");
    EXPECT_EQ(behavior->append(), u"q");
    EXPECT_EQ(behavior->argumentListPrefix(), u"(");
    EXPECT_EQ(behavior->argumentListSuffix(), u")");
    EXPECT_EQ(behavior->argumentListSeparator(), u", ");
    EXPECT_EQ(behavior->argumentPrefix(), u"<");
    EXPECT_EQ(behavior->argumentSuffix(), u">");
    EXPECT_TRUE(behavior->prependInitialArgumentListSeparator());
    EXPECT_FALSE(behavior->shouldAppendEmptyArgumentList());
    EXPECT_FALSE(behavior->shouldTokenizeArguments());
}

TEST(QVCompletionBehavior, ItsOwnWordsAreComparedExactly) {
    const auto behavior =
        behaviorOf("<behavior symbol='Function' variables='TRUE' complete-on-confirm='True' "
                   "deprecated='yes' tokenize='TRUE'/>");
    EXPECT_EQ(behavior->symbolType(), 0u);
    EXPECT_FALSE(behavior->usesVariableSubstitution());
    EXPECT_FALSE(behavior->shouldCompleteOnConfirm());
    EXPECT_FALSE(behavior->deprecated());
    EXPECT_FALSE(behavior->shouldTokenize());
    EXPECT_TRUE(behaviorOf("<behavior tokenize='true'/>")->shouldTokenize());
    EXPECT_FALSE(behaviorOf("<behavior tokenize=''/>")->shouldTokenize());
}

TEST(QVCompletionBehavior, TheWordsOfArgumentsAreComparedInAnyCase) {
    const auto behavior = withArguments("prepend-separator='TRUE' append-empty='True' tokenize='TRUE'");
    EXPECT_TRUE(behavior->prependInitialArgumentListSeparator());
    EXPECT_TRUE(behavior->shouldAppendEmptyArgumentList());
    EXPECT_TRUE(behavior->shouldTokenizeArguments());
    const auto others = withArguments("prepend-separator='1' append-empty='1' tokenize=''");
    EXPECT_FALSE(others->prependInitialArgumentListSeparator());
    EXPECT_FALSE(others->shouldAppendEmptyArgumentList());
    EXPECT_FALSE(others->shouldTokenizeArguments());
}

TEST(QVCompletionBehavior, ABadPatternLeavesItsPlaceEmpty) {
    const auto behavior = behaviorOf("<behavior prefix='(' suffix='a'/>");
    EXPECT_EQ(behavior->prefixRegularExpression(), nullptr);
    EXPECT_NE(behavior->suffixRegularExpression(), nullptr);
}

TEST(QVCompletionBehavior, OfRepeatedChildrenTheLastCounts) {
    const auto behavior = behaviorOf("<behavior><prepend>a</prepend><prepend>b</prepend><append>c</append>"
                                     "<append>d</append><arguments prefix='x' suffix='y'/>"
                                     "<arguments prefix='z'/></behavior>");
    EXPECT_EQ(behavior->prepend(), u"b");
    EXPECT_EQ(behavior->append(), u"d");
    EXPECT_EQ(behavior->argumentListPrefix(), u"z");
    EXPECT_TRUE(behavior->argumentListSuffix().isNull());
}

TEST(QVCompletionBehavior, ArchivesItsFieldsUnderTheirNamesButNotWhetherItTokenizes) {
    EXPECT_EQ(archivedKeys(*unusualBehavior()),
              (std::vector<std::string>{
                  "append: string", "argumentListPrefix: string", "argumentListSeparator: string",
                  "argumentListSuffix: string", "argumentPrefix: string", "argumentSuffix: string",
                  "deprecated: bool", "prefixRegularExpression: NSRegularExpression", "prepend: string",
                  "prependInitialArgumentListSeparator: bool", "shouldAppendEmptyArgumentList: bool",
                  "shouldCompleteOnConfirm: bool", "shouldTokenizeArguments: bool",
                  "suffixRegularExpression: NSRegularExpression", "symbolType: integer",
                  "usesVariableSubstitution: bool"}));
}

namespace {

void expectUnusual(const std::shared_ptr<QVCompletionBehavior> &copy) {
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->symbolType(), 10u);
    EXPECT_TRUE(copy->usesVariableSubstitution());
    EXPECT_TRUE(copy->shouldCompleteOnConfirm());
    EXPECT_TRUE(copy->deprecated());
    ASSERT_NE(copy->prefixRegularExpression(), nullptr);
    EXPECT_EQ(copy->prefixRegularExpression()->pattern(), u"^a");
    ASSERT_NE(copy->suffixRegularExpression(), nullptr);
    EXPECT_EQ(copy->suffixRegularExpression()->pattern(), u"b$");
    EXPECT_EQ(copy->prepend(), u"p");
    EXPECT_EQ(copy->append(), u"q");
    EXPECT_EQ(copy->argumentListPrefix(), u"(");
    EXPECT_EQ(copy->argumentListSuffix(), u")");
    EXPECT_EQ(copy->argumentListSeparator(), u", ");
    EXPECT_EQ(copy->argumentPrefix(), u"<");
    EXPECT_EQ(copy->argumentSuffix(), u">");
    EXPECT_TRUE(copy->prependInitialArgumentListSeparator());
    EXPECT_FALSE(copy->shouldAppendEmptyArgumentList());
    EXPECT_FALSE(copy->shouldTokenizeArguments());
    // Meant so: a package from a cache has lost it, and a copy is like it.
    EXPECT_FALSE(copy->shouldTokenize());
}

} // namespace

TEST(QVCompletionBehavior, SurvivesATripThroughAnArchiveButForTokenizing) {
    ASSERT_TRUE(unusualBehavior()->shouldTokenize());
    expectUnusual(throughArchive(unusualBehavior()));
}

TEST(QVCompletionBehavior, ACopyHasAllValuesButForTokenizing) {
    const auto original = unusualBehavior();
    const auto copy = original->copy();
    EXPECT_NE(copy, original);
    expectUnusual(copy);
}

TEST(QVCompletionBehavior, TheTrueDefaultsAreArchivedToo) {
    const auto copy = throughArchive(behaviorOf("<behavior/>"));
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->shouldAppendEmptyArgumentList());
    EXPECT_TRUE(copy->shouldTokenizeArguments());
    EXPECT_TRUE(copy->prepend().isNull());
}

// MARK: - The text to insert

namespace {

NSString insertedText(std::string_view behavior, const QVSymbol *symbol) {
    return QVCompletionBehavior::behaviorWithXMLElement(*elementOf(behavior))
        ->completionStringWithText(u"call", symbol);
}

constexpr std::string_view callBehavior =
    "<behavior><arguments prefix='(' suffix=')' separator=', '/></behavior>";

} // namespace

TEST(QVCompletionBehavior, TheTextStandsBetweenPrependAndAppend) {
    EXPECT_EQ(insertedText("<behavior/>", nullptr), u"call");
    EXPECT_EQ(insertedText("<behavior><prepend>a </prepend><append>;</append></behavior>", nullptr),
              u"a call;");
    EXPECT_EQ(QVCompletionBehavior().completionStringWithText(nullptr, nullptr), u"");
}

TEST(QVCompletionBehavior, ASymbolsArgumentsBecomeTokens) {
    const FunctionSymbol symbol(u"call", {u"a", u"b"});
    EXPECT_EQ(insertedText(callBehavior, &symbol), u"call($[a], $[b])");
    const FunctionSymbol one(u"call", {u"a"});
    EXPECT_EQ(insertedText(callBehavior, &one), u"call($[a])");
}

TEST(QVCompletionBehavior, TheArgumentListComesBehindTheAppendedText) {
    const FunctionSymbol symbol(u"call", {u"a"});
    EXPECT_EQ(
        insertedText("<behavior><append>!</append><arguments prefix='(' suffix=')'/></behavior>", &symbol),
        u"call!($[a])");
}

TEST(QVCompletionBehavior, ArgumentsCanBePlainText) {
    const FunctionSymbol symbol(u"call", {u"a", u"b"});
    EXPECT_EQ(
        insertedText("<behavior><arguments prefix='(' suffix=')' separator=',' tokenize='no'/></behavior>",
                     &symbol),
        u"call(a,b)");
}

TEST(QVCompletionBehavior, EachArgumentHasItsPrefixAndSuffix) {
    const FunctionSymbol symbol(u"call", {u"a", u"b"});
    EXPECT_EQ(insertedText("<behavior><arguments prefix='[' suffix=']' separator=' ' prefix-each='&lt;' "
                           "suffix-each='&gt;' prepend-separator='TRUE'/></behavior>",
                           &symbol),
              u"call[ <$[a]> <$[b]>]");
}

TEST(QVCompletionBehavior, AnArgumentWithoutANameIsAnEmptyToken) {
    const FunctionSymbol symbol(u"call", {NSString(), u"b"});
    EXPECT_EQ(insertedText(callBehavior, &symbol), u"call($[], $[b])");
}

TEST(QVCompletionBehavior, AnEmptyListGetsPrefixAndSuffixUnlessItIsToBeLeftOut) {
    const FunctionSymbol symbol(u"call", std::vector<NSString>());
    EXPECT_EQ(insertedText(callBehavior, &symbol), u"call()");
    EXPECT_EQ(
        insertedText("<behavior><arguments prefix='(' suffix=')' append-empty='false'/></behavior>", &symbol),
        u"call");
    EXPECT_EQ(
        insertedText("<behavior><arguments prefix='(' suffix=')' append-empty='TRUE'/></behavior>", &symbol),
        u"call()");
    // The separator before the first argument stands there even where no argument follows.
    EXPECT_EQ(insertedText("<behavior><arguments prefix='(' suffix=')' separator=',' "
                           "prepend-separator='true'/></behavior>",
                           &symbol),
              u"call(,)");
}

TEST(QVCompletionBehavior, ASymbolThatKnowsNoArgumentsGetsNoListAtAll) {
    const FunctionSymbol symbol(u"call");
    EXPECT_EQ(insertedText(callBehavior, &symbol), u"call");
    EXPECT_EQ(insertedText(callBehavior, nullptr), u"call");
}

TEST(QVCompletionBehavior, WithoutAnArgumentsElementNothingStandsBetweenTheTokens) {
    const FunctionSymbol symbol(u"call", {u"a", u"b"});
    EXPECT_EQ(insertedText("<behavior/>", &symbol), u"call$[a]$[b]");
}
