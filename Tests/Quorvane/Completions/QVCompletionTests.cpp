#include "Quorvane/Completions/QVCompletion.h"

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Categories/QVGramPattern.h"
#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

using Behaviors = std::vector<std::shared_ptr<QVCompletionBehavior>>;
using Texts = std::vector<NSString>;

std::shared_ptr<QVCompletion> completionOf(std::string_view xml, NSUInteger symbolType = 0,
                                           const Behaviors &behaviors = {}) {
    auto completion = QVCompletion::completionWithXMLElement(*elementOf(xml), symbolType, behaviors);
    EXPECT_NE(completion, nullptr);
    return completion;
}

std::shared_ptr<QVCompletion> fullCompletion() {
    auto completion =
        completionOf("<completion string='fooBar$(1)' priority='7' case-insensitive='false' "
                     "deprecated='true' symbol='function' tokenize='true'>"
                     "<description>What <b>it</b> does.</description><confirm>(.</confirm>"
                     "<partial-confirm>-</partial-confirm><behavior><append>!</append></behavior>"
                     "</completion>");
    completion->setValue(u"a value");
    return completion;
}

void expectFull(const QVCompletion &completion) {
    EXPECT_EQ(completion.string(), u"fooBar$(1)");
    EXPECT_EQ(completion.stringGrams().strings(), (Texts{u"foo", u"Bar"}));
    EXPECT_EQ(completion.priority(), 7u);
    EXPECT_FALSE(completion.caseInsensitive());
    EXPECT_TRUE(completion.deprecated());
    EXPECT_EQ(completion.symbolType(), QVSymbolTypeFunction);
    EXPECT_TRUE(completion.shouldTokenize());
    EXPECT_EQ(completion.descriptiveText(), u"What it does.");
    EXPECT_EQ(completion.value(), u"a value");
    ASSERT_NE(completion.acceptChararacterSet(), nullptr);
    EXPECT_TRUE(completion.acceptChararacterSet()->characterIsMember(u'('));
    EXPECT_TRUE(completion.acceptChararacterSet()->characterIsMember(u'.'));
    EXPECT_FALSE(completion.acceptChararacterSet()->characterIsMember(u'-'));
    ASSERT_NE(completion.partialAcceptChararacterSet(), nullptr);
    EXPECT_TRUE(completion.partialAcceptChararacterSet()->characterIsMember(u'-'));
    EXPECT_FALSE(completion.partialAcceptChararacterSet()->characterIsMember(u'('));
    ASSERT_EQ(completion.behaviors().size(), 1u);
    EXPECT_EQ(completion.behaviors()[0]->append(), u"!");
}

} // namespace

TEST(QVCompletion, ANewOneHasItsDefaults) {
    const QVCompletion completion;
    EXPECT_TRUE(completion.caseInsensitive());
    EXPECT_FALSE(completion.deprecated());
    EXPECT_FALSE(completion.shouldTokenize());
    EXPECT_TRUE(completion.string().isNull());
    EXPECT_TRUE(completion.stringGrams().isNull());
    EXPECT_EQ(completion.priority(), 0u);
    EXPECT_EQ(completion.symbolType(), 0u);
    EXPECT_TRUE(completion.behaviors().empty());
    EXPECT_TRUE(completion.value().isNull());
    EXPECT_TRUE(completion.descriptiveText().isNull());
    EXPECT_EQ(completion.acceptChararacterSet(), nullptr);
    EXPECT_EQ(completion.partialAcceptChararacterSet(), nullptr);
}

TEST(QVCompletion, AnEmptyElementGivesTheDefaultsOfFiles) {
    const auto completion = completionOf("<completion/>");
    EXPECT_TRUE(completion->caseInsensitive());
    EXPECT_FALSE(completion->deprecated());
    // Unlike one that is made in a program.
    EXPECT_TRUE(completion->shouldTokenize());
    EXPECT_TRUE(completion->string().isNull());
    EXPECT_EQ(completion->priority(), 0u);
    EXPECT_TRUE(completion->descriptiveText().isNull());
    EXPECT_EQ(completion->acceptChararacterSet(), nullptr);
    EXPECT_EQ(completion->partialAcceptChararacterSet(), nullptr);
    EXPECT_TRUE(completion->behaviors().empty());
}

TEST(QVCompletion, ReadsEachAttributeAndChild) {
    const auto completion = completionOf(
        "<completion string='fooBar$(1)' priority='7' case-insensitive='false' deprecated='true' "
        "symbol='function' tokenize='true' value='not read'><description>What <b>it</b> does.</description>"
        "<confirm>(.</confirm><partial-confirm>-</partial-confirm>"
        "<behavior><append>!</append></behavior></completion>");
    EXPECT_TRUE(completion->value().isNull());
    completion->setValue(u"a value");
    expectFull(*completion);
}

TEST(QVCompletion, WithoutAStringItHasNoGramsAndNeverMatches) {
    const auto completion = completionOf("<completion/>");
    EXPECT_TRUE(completion->stringGrams().isNull());
    EXPECT_FALSE(QVGramPattern(u"a", 2).matches(completion->stringGrams()));
}

TEST(QVCompletion, AnEmptyStringHasAnEmptyListOfGrams) {
    const auto completion = completionOf("<completion string=''/>");
    EXPECT_FALSE(completion->stringGrams().isNull());
    EXPECT_EQ(completion->stringGrams().count(), 0u);
}

TEST(QVCompletion, VariablesAreNoPartOfTheGrams) {
    EXPECT_EQ(completionOf("<completion string='get${name}Value'/>")->stringGrams().strings(),
              (Texts{u"get", u"Value"}));
    EXPECT_EQ(completionOf("<completion string='$name'/>")->stringGrams().strings(), Texts());
    EXPECT_EQ(completionOf("<completion string='$(1)_a'/>")->string(), u"$(1)_a");
    // A placeholder is no variable, and an escape loses its backslash.
    EXPECT_EQ(completionOf("<completion string='a$[b]'/>")->stringGrams().strings(),
              (Texts{u"a", u"$", u"[", u"b", u"]"}));
    EXPECT_EQ(completionOf("<completion string='a\\$b'/>")->stringGrams().strings(),
              (Texts{u"a", u"$", u"b"}));
}

TEST(QVCompletion, ABackslashAtTheEndOfAStringDoesNoHarm) {
    const auto completion = completionOf("<completion string='a$(b)\\'/>");
    EXPECT_EQ(completion->string(), u"a$(b)\\");
    EXPECT_EQ(completion->stringGrams().text(), u"a$(b)\\");
}

TEST(QVCompletion, ThePriorityIsTheNumberThatItsTextBeginsWith) {
    EXPECT_EQ(completionOf("<completion priority=' 12 points'/>")->priority(), 12u);
    EXPECT_EQ(completionOf("<completion priority='high'/>")->priority(), 0u);
    EXPECT_EQ(completionOf("<completion priority=''/>")->priority(), 0u);
    // It is kept without a sign: what is below 0 is above all else.
    EXPECT_EQ(completionOf("<completion priority='-1'/>")->priority(), ~NSUInteger{0});
}

TEST(QVCompletion, WordsAreComparedExactly) {
    EXPECT_FALSE(completionOf("<completion tokenize='TRUE'/>")->shouldTokenize());
    EXPECT_FALSE(completionOf("<completion tokenize='false'/>")->shouldTokenize());
    EXPECT_FALSE(completionOf("<completion tokenize=''/>")->shouldTokenize());
    EXPECT_TRUE(completionOf("<completion tokenize='true'/>")->shouldTokenize());
    EXPECT_FALSE(completionOf("<completion deprecated='True'/>")->deprecated());
    EXPECT_FALSE(completionOf("<completion deprecated='yes'/>")->deprecated());
    EXPECT_FALSE(completionOf("<completion case-insensitive='TRUE'/>")->caseInsensitive());
    EXPECT_FALSE(completionOf("<completion case-insensitive='yes'/>")->caseInsensitive());
    EXPECT_TRUE(completionOf("<completion case-insensitive='true'/>")->caseInsensitive());
}

TEST(QVCompletion, TheDefaultTypeStandsForAMissingOrUnknownOne) {
    EXPECT_EQ(completionOf("<completion/>", QVSymbolTypeClass)->symbolType(), QVSymbolTypeClass);
    EXPECT_EQ(completionOf("<completion symbol='nonsense'/>", QVSymbolTypeClass)->symbolType(),
              QVSymbolTypeClass);
    EXPECT_EQ(completionOf("<completion symbol='keyword'/>", QVSymbolTypeClass)->symbolType(),
              QVSymbolTypeKeyword);
}

TEST(QVCompletion, TheFirstDescriptionCountsAndTheLastOfTheOthers) {
    const auto completion =
        completionOf("<completion><description>one</description><confirm>a</confirm>"
                     "<description>two</description><confirm>b</confirm>"
                     "<partial-confirm>c</partial-confirm><partial-confirm/></completion>");
    EXPECT_EQ(completion->descriptiveText(), u"one");
    EXPECT_FALSE(completion->acceptChararacterSet()->characterIsMember(u'a'));
    EXPECT_TRUE(completion->acceptChararacterSet()->characterIsMember(u'b'));
    ASSERT_NE(completion->partialAcceptChararacterSet(), nullptr);
    EXPECT_FALSE(completion->partialAcceptChararacterSet()->characterIsMember(u'c'));
}

TEST(QVCompletion, BehavioursOfItsOwnAreAllThatItHas) {
    const Behaviors defaults{std::make_shared<QVCompletionBehavior>()};
    const auto own = completionOf("<completion><behavior><append>a</append></behavior>"
                                  "<behavior><append>b</append></behavior></completion>",
                                  0, defaults);
    ASSERT_EQ(own->behaviors().size(), 2u);
    EXPECT_EQ(own->behaviors()[0]->append(), u"a");
    EXPECT_EQ(own->behaviors()[1]->append(), u"b");
    // The list is copied, what is in it is shared.
    EXPECT_EQ(completionOf("<completion/>", 0, defaults)->behaviors(), defaults);
}

TEST(QVCompletion, ArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(*fullCompletion()),
              (std::vector<std::string>{
                  "acceptChararacterSet: NSCharacterSet", "behaviors: array", "caseInsensitive: bool",
                  "deprecated: bool", "descriptiveText: string",
                  "partialAcceptChararacterSet: NSCharacterSet", "priority: integer", "shouldTokenize: bool",
                  "string: string", "stringGrams: strings", "symbolType: integer", "value: string"}));
}

TEST(QVCompletion, SurvivesATripThroughAnArchive) {
    const auto copy = throughArchive(fullCompletion());
    ASSERT_NE(copy, nullptr);
    expectFull(*copy);
    // This one a behaviour loses on the way.
    EXPECT_TRUE(fullCompletion()->behaviors()[0]->shouldTokenize());
    EXPECT_FALSE(copy->behaviors()[0]->shouldTokenize());
}

TEST(QVCompletion, ComesBackEmptyWhereItWas) {
    const auto copy = throughArchive(completionOf("<completion/>"));
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->string().isNull());
    EXPECT_TRUE(copy->stringGrams().isNull());
    EXPECT_EQ(copy->acceptChararacterSet(), nullptr);
    EXPECT_TRUE(copy->caseInsensitive());
    EXPECT_TRUE(copy->shouldTokenize());
}

TEST(QVCompletion, ThePriorityOfANegativeNumberSurvivesAnArchive) {
    EXPECT_EQ(throughArchive(completionOf("<completion priority='-1'/>"))->priority(), ~NSUInteger{0});
}

TEST(QVCompletion, AnEmojiIsKeptByAnArchive) {
    // Its halves are grams apart.
    const auto copy = throughArchive(completionOf("<completion string='a&#x1F600;b'/>"));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->string(), u"a\U0001F600b");
    EXPECT_EQ(copy->stringGrams(), qv_grams(u"a\U0001F600b"));
    EXPECT_EQ(copy->stringGrams().count(), 4u);
}

TEST(QVCompletion, GramsOfAnArchiveAreTakenAsTheyStand) {
    // A set is unpacked without splitting its strings once more; what an archive claims can't do harm.
    QVCompletion completion;
    completion.setString(u"abc");
    completion.setStringGrams({u"", u"xyzxyz"});
    const auto copy = throughArchive(std::make_shared<QVCompletion>(completion));
    EXPECT_EQ(copy->stringGrams().strings(), (Texts{u"", u"xyzxyz"}));
}
