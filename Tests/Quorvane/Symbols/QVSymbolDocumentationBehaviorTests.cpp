#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

using Behavior = QVSymbolDocumentationBehavior;

std::shared_ptr<Behavior> behaviorOf(std::string_view xml) {
    return Behavior::documentationBehaviorWithXMLElement(*elementOf(xml));
}

std::vector<NSString> texts(const Behavior::Selectors &selectors) {
    std::vector<NSString> result;
    for (const auto &selector : selectors)
        result.push_back(selector->string());
    return result;
}

using Texts = std::vector<NSString>;

} // namespace

TEST(QVSymbolDocumentationBehavior, TheModeIsAWordAndBeforeWithoutOne) {
    EXPECT_EQ(behaviorOf("<documentation mode='before'/>")->searchMode(), 1u);
    EXPECT_EQ(behaviorOf("<documentation mode='after'/>")->searchMode(), 2u);
    EXPECT_EQ(behaviorOf("<documentation mode='subtree'/>")->searchMode(), 0u);
    EXPECT_EQ(behaviorOf("<documentation/>")->searchMode(), 1u);
    EXPECT_EQ(behaviorOf("<documentation mode='After'/>")->searchMode(), 1u);
    EXPECT_EQ(behaviorOf("<documentation mode=''/>")->searchMode(), 1u);
}

TEST(QVSymbolDocumentationBehavior, ReadsListsOfSelectors) {
    const auto behavior =
        behaviorOf("<documentation match='comment.doc, a' match-multiple='b.c' skip='attribute,decorator'/>");
    EXPECT_EQ(texts(behavior->matchSelectors()), (Texts{u"comment.doc", u"a"}));
    EXPECT_EQ(texts(behavior->matchMultipleSelectors()), (Texts{u"b.c"}));
    EXPECT_EQ(texts(behavior->skipSelectors()), (Texts{u"attribute", u"decorator"}));
}

TEST(QVSymbolDocumentationBehavior, WithoutSelectorsACommentIsLookedFor) {
    const auto behavior = behaviorOf("<documentation skip='x'/>");
    EXPECT_EQ(texts(behavior->matchSelectors()), (Texts{u"comment"}));
    EXPECT_EQ(texts(behavior->matchMultipleSelectors()), Texts());
    EXPECT_EQ(texts(behavior->skipSelectors()), (Texts{u"x"}));
}

TEST(QVSymbolDocumentationBehavior, EmptyTextsGiveNoSelectors) {
    EXPECT_EQ(texts(behaviorOf("<documentation match='' match-multiple=''/>")->matchSelectors()),
              (Texts{u"comment"}));
}

TEST(QVSymbolDocumentationBehavior, OneOfTheTwoListsIsEnough) {
    const auto behavior = behaviorOf("<documentation match-multiple='b'/>");
    EXPECT_EQ(texts(behavior->matchSelectors()), Texts());
    EXPECT_EQ(texts(behavior->matchMultipleSelectors()), (Texts{u"b"}));
}

TEST(QVSymbolDocumentationBehavior, IsMadeFromTextsAsFromAnElement) {
    const auto behavior = Behavior::behaviorWithSearchMode(2, u"a,b", nullptr, u"");
    EXPECT_EQ(behavior->searchMode(), 2u);
    EXPECT_EQ(texts(behavior->matchSelectors()), (Texts{u"a", u"b"}));
    EXPECT_EQ(texts(behavior->skipSelectors()), Texts());
}

TEST(QVSymbolDocumentationBehavior, ByDefaultTheCommentsBeforeTypesFunctionsAndValuesCount) {
    for (const NSUInteger type : {1u, 9u, 10u, 19u, 20u, 29u}) {
        const auto behaviors = Behavior::defaultBehaviorsForSymbolType(type);
        ASSERT_EQ(behaviors.size(), 1u) << type;
        EXPECT_EQ(behaviors[0]->searchMode(), 1u);
        EXPECT_EQ(texts(behaviors[0]->matchSelectors()), Texts());
        EXPECT_EQ(texts(behaviors[0]->matchMultipleSelectors()), (Texts{u"comment"}));
        EXPECT_EQ(texts(behaviors[0]->skipSelectors()), Texts());
    }
}

TEST(QVSymbolDocumentationBehavior, OtherTypesHaveNoDefault) {
    for (const NSUInteger type : {NSUInteger(0), NSUInteger(30), NSUInteger(QVSymbolTypeComment),
                                  NSUInteger(60), NSUInteger(NSNotFound)})
        EXPECT_TRUE(Behavior::defaultBehaviorsForSymbolType(type).empty()) << type;
}

TEST(QVSymbolDocumentationBehavior, TheDefaultsAreMadeOnce) {
    EXPECT_EQ(Behavior::defaultBehaviorsForSymbolType(10), Behavior::defaultBehaviorsForSymbolType(10));
}

TEST(QVSymbolDocumentationBehavior, ArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(Behavior()),
              (std::vector<std::string>{"matchMultipleSelectors: array", "matchSelectors: array",
                                        "searchMode: integer", "skipSelectors: array"}));
}

TEST(QVSymbolDocumentationBehavior, SurvivesATripThroughAnArchive) {
    const auto copy =
        throughArchive(behaviorOf("<documentation mode='after' match='a,b' match-multiple='c' skip='d'/>"));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->searchMode(), 2u);
    EXPECT_EQ(texts(copy->matchSelectors()), (Texts{u"a", u"b"}));
    EXPECT_EQ(texts(copy->matchMultipleSelectors()), (Texts{u"c"}));
    EXPECT_EQ(texts(copy->skipSelectors()), (Texts{u"d"}));
}

TEST(QVSymbolDocumentationBehavior, ACopyHasListsOfItsOwn) {
    const auto original = behaviorOf("<documentation mode='after' match='a' match-multiple='c' skip='d'/>");
    const auto copy = original->copy();
    original->setMatchSelectors({});
    original->setSearchMode(0);
    EXPECT_EQ(copy->searchMode(), 2u);
    EXPECT_EQ(texts(copy->matchSelectors()), (Texts{u"a"}));
    EXPECT_EQ(texts(copy->matchMultipleSelectors()), (Texts{u"c"}));
    EXPECT_EQ(texts(copy->skipSelectors()), (Texts{u"d"}));
}
