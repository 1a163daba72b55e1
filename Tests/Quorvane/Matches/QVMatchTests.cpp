#include "Quorvane/Matches/QVMatch.h"

#include "Platform/Foundation/NSException.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Tests/Quorvane/Matches/MatchFixtures.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// What one step leads to from each match of the tree, in document order, with nothing at its end.
std::vector<std::string> steps(const Tree &tree, QVMatch *(QVMatch::*step)() const) {
    std::vector<std::string> result;
    for (const char16_t *name : {u"root", u"a", u"b", u"c", u"d", u"e", u"f", u"g"})
        result.push_back(Tree::name((static_cast<QVMatch *>(tree[name])->*step)()));
    return result;
}

} // namespace

TEST(QVMatch, HasNoPlaceAndNoLinksAtFirst) {
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto match = QVScopeMatch::initWithScope(scope.get());
    EXPECT_EQ(match->range(), NSNotFoundRange);
    EXPECT_EQ(match->endRange(), NSNotFoundRange);
    EXPECT_EQ(match->fullRange(), NSNotFoundRange);
    EXPECT_EQ(match->parentMatch(), nullptr);
    EXPECT_EQ(match->nextSibling(), nullptr);
    EXPECT_EQ(match->previousSibling(), nullptr);
}

TEST(QVMatch, FullRangeRunsToTheEndOfTheEndRange) {
    const auto scope = scopeOfType(QVScopeTypeStartEnd);
    const auto match = QVScopeMatch::initWithScope(scope.get());
    match->setRange({3, 2});
    EXPECT_EQ(match->fullRange(), (NSRange{3, 2}));
    match->setEndRange({9, 1});
    EXPECT_EQ(match->fullRange(), (NSRange{3, 7}));
    // An empty end at the end of a text of 20 units.
    match->setEndRange({20, 0});
    EXPECT_EQ(NSMaxRange(match->fullRange()), 20u);
    const QVMatch &plain = *match;
    EXPECT_EQ(plain.endRange(), (NSRange{20, 0}));
}

TEST(QVMatch, DirectOperationsTolerateNull) {
    EXPECT_EQ(QVMatch::directRange(nullptr), (NSRange{0, 0}));
    QVMatch::setDirectRange(nullptr, {1, 1});
    EXPECT_EQ(QVMatch::directParentMatch(nullptr), nullptr);
    QVMatch::setDirectParentMatch(nullptr, nullptr);
    EXPECT_EQ(QVMatch::directNextSibling(nullptr), nullptr);
    QVMatch::setDirectNextSibling(nullptr, nullptr);
    EXPECT_EQ(QVMatch::directPreviousSibling(nullptr), nullptr);
    QVMatch::setDirectPreviousSibling(nullptr, nullptr);
}

TEST(QVMatch, DirectOperationsAndPlainOnesAreTheSame) {
    const Tree tree;
    QVMatch *const e = tree[u"e"];
    QVMatch *const f = tree[u"f"];
    QVMatch *const a = tree[u"a"];
    EXPECT_EQ(QVMatch::directRange(e), (NSRange{5, 1}));
    QVMatch::setDirectRange(e, {8, 2});
    EXPECT_EQ(e->range(), (NSRange{8, 2}));
    EXPECT_EQ(QVMatch::directParentMatch(e), tree.root.get());
    EXPECT_EQ(QVMatch::directNextSibling(e), f);
    EXPECT_EQ(QVMatch::directPreviousSibling(e), a);
    QVMatch::setDirectNextSibling(e, a);
    QVMatch::setDirectPreviousSibling(e, f);
    QVMatch::setDirectParentMatch(e, nullptr);
    EXPECT_EQ(e->nextSibling(), a);
    EXPECT_EQ(e->previousSibling(), f);
    EXPECT_EQ(e->parentMatch(), nullptr);
    e->setNextSibling(f);
    e->setPreviousSibling(a);
    e->setParentMatch(tree.root.get());
}

TEST(QVMatch, ChildrenAreTheFirstAndTheLast) {
    const Tree tree;
    EXPECT_THAT(steps(tree, &QVMatch::firstChild), ElementsAre("a", "b", "-", "d", "-", "-", "g", "-"));
    EXPECT_THAT(steps(tree, &QVMatch::lastChild), ElementsAre("f", "c", "-", "d", "-", "-", "g", "-"));
}

TEST(QVMatch, DeepestChildrenAreAtTheBottomOrTheMatchItself) {
    const Tree tree;
    EXPECT_THAT(steps(tree, &QVMatch::deepestFirstChild),
                ElementsAre("b", "b", "b", "d", "d", "e", "g", "g"));
    EXPECT_THAT(steps(tree, &QVMatch::deepestLastChild), ElementsAre("g", "d", "b", "d", "d", "e", "g", "g"));
}

TEST(QVMatch, NextAndPreviousWalkInDocumentOrder) {
    const Tree tree;
    EXPECT_THAT(steps(tree, &QVMatch::nextMatch), ElementsAre("a", "b", "c", "d", "e", "f", "g", "-"));
    EXPECT_THAT(steps(tree, &QVMatch::previousMatch), ElementsAre("-", "root", "a", "b", "c", "d", "e", "f"));
}

TEST(QVMatch, DeepStepsGoDownToTheBottomAfterwards) {
    const Tree tree;
    EXPECT_THAT(steps(tree, &QVMatch::nextDeepMatch), ElementsAre("b", "b", "d", "d", "e", "g", "g", "-"));
    // Back from a first child the step leads to the parent, and then down along the last children again;
    // meant so.
    EXPECT_THAT(steps(tree, &QVMatch::previousDeepMatch),
                ElementsAre("-", "g", "d", "b", "d", "d", "e", "g"));
}

TEST(QVMatch, ShallowStepsNeverLeadToAChild) {
    const Tree tree;
    EXPECT_THAT(steps(tree, &QVMatch::nextShallowMatch), ElementsAre("-", "e", "c", "e", "e", "f", "-", "-"));
    EXPECT_THAT(steps(tree, &QVMatch::previousShallowMatch),
                ElementsAre("-", "root", "a", "b", "c", "a", "e", "f"));
}

TEST(QVMatch, EnumeratingASubtreeVisitsAllDescendantsAndNotTheMatch) {
    const Tree tree;
    const auto names = [&](const QVMatch *match) {
        std::vector<std::string> result;
        match->enumerateSubtreeUsingBlock(
            [&](QVMatch *visited, bool &, bool &) { result.push_back(Tree::name(visited)); });
        return result;
    };
    EXPECT_THAT(names(tree.root.get()), ElementsAre("a", "b", "c", "d", "e", "f", "g"));
    EXPECT_THAT(names(tree[u"a"]), ElementsAre("b", "c", "d"));
    EXPECT_THAT(names(tree[u"f"]), ElementsAre("g"));
    EXPECT_THAT(names(tree[u"e"]), IsEmpty());
    EXPECT_THAT(names(tree[u"g"]), IsEmpty());
}

TEST(QVMatch, EnumeratingASubtreeStopsAndSkips) {
    const Tree tree;
    std::vector<std::string> names;
    tree.root->enumerateSubtreeUsingBlock([&](QVMatch *match, bool &stop, bool &skip) {
        names.push_back(Tree::name(match));
        skip = match == tree[u"a"];
        stop = match == tree[u"f"];
    });
    EXPECT_THAT(names, ElementsAre("a", "e", "f"));
    // Skipping the last one passes over its descendants too and stays within the subtree.
    names.clear();
    tree[u"a"]->enumerateSubtreeUsingBlock([&](QVMatch *match, bool &, bool &skip) {
        names.push_back(Tree::name(match));
        skip = true;
    });
    EXPECT_THAT(names, ElementsAre("b", "c"));
}

TEST(QVMatch, EnumeratingASubtreeWithoutABlockIsAProgrammingError) {
    const Tree tree;
    const AssertionRecorder assertions;
    tree.root->enumerateSubtreeUsingBlock(nullptr);
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Invalid parameter not satisfying: block != nil"));
}

TEST(QVMatch, IsASelectableNode) {
    const Tree tree;
    const QVMatch *const a = tree[u"a"];
    EXPECT_EQ(a->parentSelectable(), tree.root.get());
    EXPECT_EQ(tree.root->parentSelectable(), nullptr);
    // The shallow step, which climbs where there is no sibling.
    EXPECT_EQ(tree[u"d"]->nextSelectable(), static_cast<QVMatch *>(tree[u"e"]));
    EXPECT_EQ(tree[u"g"]->nextSelectable(), nullptr);
    EXPECT_EQ(a->selector(), QVSimpleSelector::simpleSelectorWithString(u"a").get());
    EXPECT_EQ(a->matchedOn(), const_cast<QVScope *>(tree[u"a"]->scope()));
}

TEST(QVMatch, SelectableChildrenAreCapturesThenSubmatchesThenEndCaptures) {
    const Tree tree;
    const auto names = [&](const QVMatch *match, std::size_t count) {
        std::vector<std::string> result;
        EXPECT_TRUE(match->offersSelectableChildren());
        match->enumerateSelectableChildrenUsingBlock([&](QVSelectable *child, bool &stop) {
            result.push_back(Tree::name(static_cast<QVMatch *>(child)));
            stop = result.size() == count;
        });
        return result;
    };
    EXPECT_THAT(names(tree[u"a"], 99), ElementsAre("a1", "a2", "b", "c", "a9"));
    EXPECT_THAT(names(tree[u"a"], 1), ElementsAre("a1"));
    EXPECT_THAT(names(tree[u"a"], 3), ElementsAre("a1", "a2", "b"));
    EXPECT_THAT(names(tree[u"a"], 4), ElementsAre("a1", "a2", "b", "c"));
    EXPECT_THAT(names(tree[u"e"], 99), IsEmpty());
    EXPECT_THAT(names(tree[u"a"]->captureMatches()->front().get(), 99), IsEmpty());
}

TEST(QVMatch, DescribesRegionsWithTheirEnd) {
    Tree tree;
    QVScopeMatch *const a = tree[u"a"];
    a->setEndRange({4, 1});
    EXPECT_EQ(a->description(), NSString::stringWithFormat(
                                    u"<QVScopeMatch: %p : a, range={0, 1}, parent=root, endRange={4, 1}>",
                                    static_cast<const void *>(a)));
}

TEST(QVMatch, DescribesOtherMatchesWithoutAnEnd) {
    const Tree tree;
    EXPECT_EQ(tree.root->description(),
              NSString::stringWithFormat(u"<QVScopeMatch: %p : root, range=%@, parent=(null)>",
                                         static_cast<const void *>(tree.root.get()), NSNotFoundRange));
    QVCaptureMatch *const capture = tree[u"a"]->captureMatches()->front().get();
    capture->setRange({0, 1});
    EXPECT_EQ(capture->description(),
              NSString::stringWithFormat(u"<QVCaptureMatch: %p : a1, range={0, 1}, parent=a>",
                                         static_cast<const void *>(capture)));
}

TEST(QVMatch, EqualityIsIdentity) {
    const Tree tree;
    const QVMatch *const a = tree[u"a"];
    EXPECT_TRUE(a->isEqual(tree[u"a"]));
    EXPECT_FALSE(a->isEqual(tree[u"b"]));
    EXPECT_FALSE(a->isEqual(nullptr));
    EXPECT_EQ(a->hash(), tree[u"a"]->hash());
}
