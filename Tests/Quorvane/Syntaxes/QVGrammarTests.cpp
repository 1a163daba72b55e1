#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Syntaxes/QVSyntaxSurroundingPair.h"
#include "Tests/Quorvane/Syntaxes/SyntaxFixtures.h"
#include "Tests/Support/CodingFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVGrammar> grammar() { return syntaxOf(wholeGrammar)->grammar(); }

} // namespace

TEST(QVGrammar, ANewOneIsEmpty) {
    const QVGrammar grammar;
    EXPECT_TRUE(grammar.scopes().empty());
    EXPECT_TRUE(grammar.templateScopes().empty());
    EXPECT_TRUE(grammar.collections().empty());
    EXPECT_TRUE(grammar.name().isNull());
}

TEST(QVGrammar, CollectionsAreFoundByName) {
    const auto whole = grammar();
    ASSERT_NE(whole->collectionWithName(u"c"), nullptr);
    EXPECT_EQ(whole->collectionWithName(u"c")->name(), u"c");
    EXPECT_EQ(whole->collectionWithName(u"C"), nullptr);
    EXPECT_EQ(whole->collectionWithName(nullptr), nullptr);
}

TEST(QVGrammar, SettingReplacesWhatWasThere) {
    const auto whole = grammar();
    whole->setTemplateScopes({});
    whole->setCollections({});
    EXPECT_TRUE(whole->templateScopes().empty());
    EXPECT_TRUE(whole->collections().empty());
    EXPECT_EQ(names(whole->scopes()), (Texts{u"top"}));
}

TEST(QVGrammar, IsDescribedLikeACollection) {
    const auto whole = grammar();
    EXPECT_EQ(whole->description(), NSString::stringWithFormat(u"<QVGrammar: %p : name=test>",
                                                               static_cast<const void *>(whole.get())));
}

TEST(QVGrammar, ACopyHasScopesAndCollectionsOfItsOwn) {
    const auto original = grammar();
    const auto copy = original->copy();
    EXPECT_EQ(copy->name(), u"test");
    EXPECT_EQ(names(copy->scopes()), (Texts{u"top"}));
    EXPECT_NE(copy->scopes()[0], original->scopes()[0]);
    EXPECT_NE(copy->scopes()[0]->subscopes().at(0), original->scopes()[0]->subscopes().at(0));
    EXPECT_EQ(copy->scopes()[0]->subscopes()[0]->parent(), copy->scopes()[0]);
    EXPECT_EQ(names(copy->templateScopes()), (Texts{u"template"}));
    EXPECT_NE(copy->templateScopes()[0], original->templateScopes()[0]);
    EXPECT_TRUE(copy->templateScopes()[0]->isTemplateScope());
    ASSERT_NE(copy->collectionWithName(u"c"), nullptr);
    EXPECT_NE(copy->collectionWithName(u"c"), original->collectionWithName(u"c"));
    EXPECT_TRUE(copy->collectionWithName(u"c")->overrides());
    EXPECT_NE(copy->collectionWithName(u"c")->scopes().at(0),
              original->collectionWithName(u"c")->scopes().at(0));
}

TEST(QVGrammar, ArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(*grammar()),
              (std::vector<std::string>{"collections: dictionary", "name: string", "overrides: bool",
                                        "scopes: array", "templateScopes: array"}));
}

TEST(QVGrammar, SurvivesATripThroughAnArchive) {
    const auto copy = throughArchive(grammar());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->name(), u"test");
    EXPECT_EQ(names(copy->scopes()), (Texts{u"top"}));
    EXPECT_EQ(names(copy->scopes()[0]->subscopes()), (Texts{u"inner"}));
    EXPECT_EQ(names(copy->templateScopes()), (Texts{u"template"}));
    ASSERT_NE(copy->collectionWithName(u"c"), nullptr);
    EXPECT_TRUE(copy->collectionWithName(u"c")->overrides());
    EXPECT_EQ(names(copy->collectionWithName(u"c")->scopes()), (Texts{u"in-c"}));
}

TEST(QVGrammar, AnArchiveWithAScopeInTwoPlacesIsRefused) {
    const auto refused = [](const std::shared_ptr<QVGrammar> &broken) {
        std::shared_ptr<NSError> error;
        return NSKeyedUnarchiver::unarchivedObjectOfClass<QVGrammar>(
                   NSKeyedArchiver::archivedDataWithRootObject(broken), &error) == nullptr &&
               error != nullptr;
    };
    const auto twice = grammar();
    twice->setTemplateScopes(twice->scopes());
    EXPECT_TRUE(refused(twice));
    const auto collection = grammar();
    collection->collectionWithName(u"c")->setScopes(collection->templateScopes());
    EXPECT_TRUE(refused(collection));
    const auto shared = grammar();
    shared->setCollections(
        {{u"a", shared->collectionWithName(u"c")}, {u"b", shared->collectionWithName(u"c")}});
    EXPECT_TRUE(refused(shared));
}

TEST(QVSyntaxSurroundingPair, ArchivesItsFieldsUnderTheirNames) {
    QVSyntaxSurroundingPair pair;
    EXPECT_TRUE(archivedKeys(pair).empty());
    pair.setOpen(u"(");
    pair.setClose(u")");
    pair.setSkipSelectors(QVSyntaxSurroundingPair::Selectors());
    EXPECT_EQ(archivedKeys(pair),
              (std::vector<std::string>{"close: string", "open: string", "skipSelectors: array"}));
}

TEST(QVSyntaxSurroundingPair, SurvivesATripThroughAnArchiveAndCopying) {
    const auto original = std::make_shared<QVSyntaxSurroundingPair>();
    original->setOpen(u"(");
    original->setClose(u")");
    original->setSkipSelectors(QVSimpleSelector::simpleSelectorsJoinedByString(u"string,comment"));
    for (const auto &pair : {throughArchive(original), original->copy()}) {
        ASSERT_NE(pair, nullptr);
        EXPECT_NE(pair, original);
        EXPECT_EQ(pair->open(), u"(");
        EXPECT_EQ(pair->close(), u")");
        ASSERT_TRUE(pair->skipSelectors().has_value());
        ASSERT_EQ(pair->skipSelectors()->size(), 2u);
        EXPECT_EQ(pair->skipSelectors()->at(1)->string(), u"comment");
    }
    EXPECT_EQ(throughArchive(std::make_shared<QVSyntaxSurroundingPair>())->skipSelectors(), std::nullopt);
}
