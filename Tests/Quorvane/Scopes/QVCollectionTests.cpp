#include "Quorvane/Scopes/QVCollection.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

/// A collection, drawn as its scopes' names; none of them has a parent.
class Collection : public testing::Test {
protected:
    static std::shared_ptr<QVScope> make(const NSString &name) {
        return QVScope::scopeWithType(QVScopeTypeMatch, nullptr, name, nullptr, nullptr);
    }
    std::string names() const {
        std::string result;
        for (const auto &scope : collection->scopes()) {
            result += scope->name().UTF8String();
            EXPECT_EQ(scope->parent(), nullptr);
        }
        return result;
    }

    const std::shared_ptr<QVCollection> collection = std::make_shared<QVCollection>();
    const std::shared_ptr<QVScope> a = make(u"a");
    const std::shared_ptr<QVScope> b = make(u"b");
    const std::shared_ptr<QVScope> c = make(u"c");
    const std::shared_ptr<QVScope> d = make(u"d");
};

} // namespace

TEST_F(Collection, IsEmptyAndOverridesNothingAtFirst) {
    EXPECT_EQ(collection->name(), NSString());
    EXPECT_FALSE(collection->overrides());
    EXPECT_EQ(names(), "");
}

TEST_F(Collection, AddsAndInsertsScopes) {
    collection->addScope(b);
    collection->addScopes({c, d});
    collection->insertScope(a, 0);
    EXPECT_EQ(names(), "abcd");
    collection->setScopes({b, d});
    collection->insertScopes({a, c}, {0, 2});
    EXPECT_EQ(names(), "abcd");
}

TEST_F(Collection, RemovesScopes) {
    collection->setScopes({a, b, c, d});
    collection->removeScopeAtIndex(1);
    EXPECT_EQ(names(), "acd");
    collection->removeScopesAtIndexes({0, 2});
    EXPECT_EQ(names(), "c");
    collection->setScopes({a, b, c, d});
    collection->removeScope(b);
    collection->removeScopes({d, a});
    EXPECT_EQ(names(), "c");
}

TEST_F(Collection, ScopesThatComeInStandAtTheTop) {
    const auto parent = make(u"parent");
    parent->addSubscopes({a, b, c, d});
    collection->addScope(a);
    collection->insertScope(b, 0);
    collection->addScopes({c});
    collection->insertScopes({d}, {0});
    EXPECT_EQ(names(), "dbac");
}

TEST_F(Collection, RemovingByIdentityLeavesAnotherParentAlone) {
    const auto parent = make(u"parent");
    collection->addScope(a);
    parent->addSubscope(a);
    collection->removeScope(a);
    EXPECT_EQ(a->parent(), parent);
    EXPECT_EQ(names(), "");
}

TEST_F(Collection, IndexesOutsideOfTheBoundsThrow) {
    collection->addScope(a);
    EXPECT_THROW(collection->insertScope(b, 2), NSException);
    EXPECT_THROW(collection->removeScopeAtIndex(1), NSException);
    EXPECT_THROW(collection->insertScopes({b, c}, {0}), NSException);
    EXPECT_EQ(names(), "a");
}

TEST_F(Collection, ACopyHasCopiesOfItsScopes) {
    const auto owner = std::make_shared<int>();
    const std::shared_ptr<QVPackage> package(owner, reinterpret_cast<QVPackage *>(owner.get()));
    collection->setPackage(package);
    collection->setName(u"statements");
    collection->setOverrides(true);
    a->addSubscope(b);
    collection->setScopes({a, c});
    const auto copy = collection->copy();
    EXPECT_EQ(copy->package(), package);
    EXPECT_EQ(copy->name(), u"statements");
    EXPECT_TRUE(copy->overrides());
    ASSERT_EQ(copy->scopes().size(), 2u);
    EXPECT_NE(copy->scopes()[0], a);
    EXPECT_EQ(copy->scopes()[0]->name(), u"a");
    EXPECT_EQ(copy->scopes()[0]->parent(), nullptr);
    EXPECT_NE(copy->scopes()[0]->subscopes()[0], b);
    EXPECT_EQ(names(), "ac");
}

TEST_F(Collection, DescriptionNamesIt) {
    collection->setName(u"statements");
    EXPECT_EQ(collection->description(),
              NSString::stringWithFormat(u"<QVCollection: %p : name=statements>",
                                         static_cast<const void *>(collection.get())));
}
