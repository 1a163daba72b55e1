#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Tests/Quorvane/Selectors/FakeSelectable.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVSelectorCombinator> chain(const NSString &text) {
    return QVSelectorCombinator::selectorCombinatorsFromString(text, nullptr).at(0);
}

QVSelectorCombinator::Selectables nodes(FakeTree &tree, std::initializer_list<const char *> names) {
    QVSelectorCombinator::Selectables result;
    for (const char *name : names)
        result.push_back(tree[name]);
    return result;
}

/// What a selector finds in the whole tree.
std::string found(FakeTree &tree, const NSString &selector) {
    return namesOf(chain(selector)->evaluateWithArray({tree.root()}, true));
}

/// A step's matches, each with the node through which it was reached.
std::string drawn(const QVSelectorCombinator &step) {
    EXPECT_EQ(step.matches().size(), step.matchedThrough().size());
    std::string text;
    for (std::size_t index = 0; index < step.matches().size(); ++index)
        text += (index ? ", " : "") + namesOf({step.matches()[index]}) + " through " +
                namesOf({step.matchedThrough()[index]});
    return text;
}

} // namespace

TEST(QVSelectorCombinatorEvaluation, OneStepAnswersTheNodesThatPass) {
    FakeTree tree("r(a b(a#2) - a.b)");
    EXPECT_EQ(found(tree, u"a"), "a a#2 a.b");
    EXPECT_EQ(found(tree, u"a.b"), "a.b");
    EXPECT_EQ(found(tree, u"c"), "");
}

TEST(QVSelectorCombinatorEvaluation, WithoutRecursionOnlyTheStartingNodesAreTested) {
    FakeTree tree("r(a b(a#2) -)");
    EXPECT_EQ(namesOf(chain(u"a")->evaluateWithArray(nodes(tree, {"r", "a", "b", "-"}), false)), "a");
    EXPECT_EQ(namesOf(chain(u"*")->evaluateWithArray(nodes(tree, {"b", "a", "-"}), false)), "b a");
}

TEST(QVSelectorCombinatorEvaluation, AnswersEachNodeOnce) {
    FakeTree tree("r(a(b))");
    EXPECT_EQ(namesOf(chain(u"b")->evaluateWithArray(nodes(tree, {"b", "a", "r", "b"}), true)), "b");
    EXPECT_EQ(namesOf(chain(u"* b")->evaluateWithArray(nodes(tree, {"r"}), true)), "b");
}

TEST(QVSelectorCombinatorEvaluation, TheHeadsTypePlaysNoPartAndItsMatchesStayEmpty) {
    FakeTree tree("r(a b)");
    for (const char16_t *text : {u"a", u":not(a)", u"> a", u"~ a", u"+ a", u":has-child(a)"}) {
        const auto head = chain(text);
        EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "a");
        EXPECT_TRUE(head->matches().empty());
        EXPECT_TRUE(head->matchedThrough().empty());
    }
    EXPECT_EQ(found(tree, u":capture(x)"), "");
}

TEST(QVSelectorCombinatorEvaluation, ABlankReachesDescendantsAtAnyDepth) {
    FakeTree tree("r(a(b#1 c(b#2(b#3)) -(b#4)) b#5)");
    const auto head = chain(u"a b");
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "b#1 b#2 b#3 b#4");
    EXPECT_EQ(drawn(*head->next()), "b#1 through a, b#2 through a, b#3 through a, b#4 through a");
}

TEST(QVSelectorCombinatorEvaluation, ANodeIsNoDescendantOfItself) {
    FakeTree tree("a#1(a#2(a#3))");
    const auto head = chain(u"a a");
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "a#2 a#3");
    // a#3 is reached through a#2 as well; the first way counts.
    EXPECT_EQ(drawn(*head->next()), "a#2 through a#1, a#3 through a#1");
}

TEST(QVSelectorCombinatorEvaluation, AnOuterNodeBehindAnInnerOneStillReachesTheRest) {
    FakeTree tree("a#1(b#1 a#2(b#2) b#3)");
    const auto head = chain(u"a b");
    EXPECT_EQ(namesOf(head->evaluateWithArray(nodes(tree, {"a#2", "a#1"}), false)), "b#2 b#1 b#3");
    EXPECT_EQ(drawn(*head->next()), "b#2 through a#2, b#1 through a#1, b#3 through a#1");
}

TEST(QVSelectorCombinatorEvaluation, AnInnerSourceIsReachedThroughAnOuterOneBehindIt) {
    FakeTree tree("a#1(a#2(b))");
    EXPECT_EQ(namesOf(chain(u"a a")->evaluateWithArray(nodes(tree, {"a#2", "a#1"}), false)), "a#2");
}

TEST(QVSelectorCombinatorEvaluation, AChildStepReachesChildrenAlone) {
    FakeTree tree("r(a(b#1 c(b#2) - b#3) b#4)");
    const auto head = chain(u"a > b");
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "b#1 b#3");
    EXPECT_EQ(drawn(*head->next()), "b#1 through a, b#3 through a");
}

TEST(QVSelectorCombinatorEvaluation, AnIndirectlyAdjacentStepReachesAllThatFollow) {
    FakeTree tree("r(b#1 a c b#2(b#3) - b#4)");
    const auto head = chain(u"a ~ b");
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "b#2 b#4");
    EXPECT_EQ(drawn(*head->next()), "b#2 through a, b#4 through a");
}

TEST(QVSelectorCombinatorEvaluation, OfSeveralSourcesInARowTheFirstOneAskedReachesWhatFollows) {
    FakeTree tree("r(a#1 b#1 a#2 b#2)");
    const auto head = chain(u"a ~ b");
    EXPECT_EQ(namesOf(head->evaluateWithArray(nodes(tree, {"a#2", "a#1"}), false)), "b#2 b#1");
    EXPECT_EQ(drawn(*head->next()), "b#2 through a#2, b#1 through a#1");
}

TEST(QVSelectorCombinatorEvaluation, ANodeThatIsItsOwnNextEndsTheWalk) {
    FakeTree tree("r(a b b#2)");
    tree["b"]->next = tree["b"];
    EXPECT_EQ(found(tree, u"a ~ b"), "b");
    tree["a"]->next = tree["a"];
    EXPECT_EQ(found(tree, u"a ~ *"), "");
}

TEST(QVSelectorCombinatorEvaluation, ARingOfSiblingsEndsTheWalk) {
    FakeTree tree("r(a b c)");
    tree["c"]->next = tree["a"];
    EXPECT_EQ(found(tree, u"b ~ *"), "c a b");
}

TEST(QVSelectorCombinatorEvaluation, ADirectlyAdjacentStepReachesTheNextNode) {
    FakeTree tree("r(a() b#1 b#2 a#2() c b#3 a#3())");
    const auto head = chain(u"a + b");
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "b#1");
    EXPECT_EQ(drawn(*head->next()), "b#1 through a");
}

// The requirement makes no use of the children; it is meant all the same.
TEST(QVSelectorCombinatorEvaluation, ADirectlyAdjacentStepAsksForASourceThatOffersChildren) {
    FakeTree tree("r(a b)");
    EXPECT_EQ(found(tree, u"a + b"), "");
    tree["a"]->isContainer = true;
    EXPECT_EQ(found(tree, u"a + b"), "b");
}

TEST(QVSelectorCombinatorEvaluation, ANotStepKeepsSourcesThatNoAlternativeMatches) {
    FakeTree tree("r(a a.b a.c a.d)");
    const auto head = chain(u"a:not(b,c)");
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "a a.d");
    EXPECT_EQ(drawn(*head->next()), "a through a, a.d through a.d");
}

TEST(QVSelectorCombinatorEvaluation, AHasChildStepKeepsSourcesAndRemembersTheChild) {
    FakeTree tree("r(a#1(x b) a#2(x(b#2)) a#3 a#4(c b#4))");
    const auto head = chain(u"a:has-child(b,c)");
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "a#1 a#4");
    // The first alternative is tried on all children before the second.
    EXPECT_EQ(drawn(*head->next()), "a#1 through b, a#4 through b#4");
}

TEST(QVSelectorCombinatorEvaluation, ACaptureStepLetsEverythingThrough) {
    FakeTree tree("r(a(b))");
    const auto head = chain(u"a:capture(name) b");
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "b");
    EXPECT_EQ(drawn(*head->next()), "a through a");
}

TEST(QVSelectorCombinatorEvaluation, StepsWorkOnWhatTheStepBeforeLetThrough) {
    FakeTree tree("r(f(p(n#1 q) p.z(n.x#2 n#3) p#4(n#4)) n#5)");
    EXPECT_EQ(found(tree, u"f p:not(z) > n"), "n#1 n#4");
    EXPECT_EQ(found(tree, u"f > p:has-child(q) + p > n:not(x)"), "n#3");
    EXPECT_EQ(found(tree, u"p:has-child(q) ~ p > n"), "n.x#2 n#3 n#4");
}

TEST(QVSelectorCombinatorEvaluation, ASecondEvaluationForgetsTheFirst) {
    FakeTree first("r(a(b))");
    FakeTree second("r(a(b#2))");
    const auto head = chain(u"a > b");
    head->evaluateWithArray({first.root()}, true);
    EXPECT_EQ(namesOf(head->evaluateWithArray({second.root()}, true)), "b#2");
    EXPECT_EQ(drawn(*head->next()), "b#2 through a");
}

TEST(QVSelectorCombinatorEvaluation, NoStepLetsEverythingThrough) {
    FakeTree tree("a b");
    const auto input = nodes(tree, {"b", "a", "b"});
    EXPECT_EQ(QVSelectorCombinator::updateMatches(input, nullptr), input);
}

TEST(QVSelectorCombinatorEvaluation, UpdatingAppliesAStepAndAllBehindIt) {
    FakeTree tree("r(a(b(c)))");
    const auto head = chain(u"x b > c");
    EXPECT_EQ(namesOf(QVSelectorCombinator::updateMatches({tree["a"]}, head->next().get())), "c");
    EXPECT_EQ(drawn(*head->next()), "b through a");
}

TEST(QVSelectorCombinatorEvaluation, AStepMayBeUpdatedFromItsOwnMatches) {
    FakeTree tree("a#1(a#2(a#3))");
    const auto step = chain(u"> a");
    step->setMatches({tree["a#1"]});
    EXPECT_EQ(namesOf(QVSelectorCombinator::updateMatches(step->matches(), step.get())), "a#1 a#2");
}

TEST(QVSelectorCombinatorEvaluation, AHeadInTheMiddleIsLoggedAndLetsNothingThrough) {
    const LogRecorder log;
    FakeTree tree("r(a(b))");
    const auto head = chain(u"a:capture(x) b");
    head->next()->setType(QVSelectorCombinatorTypeNone);
    EXPECT_EQ(namesOf(head->evaluateWithArray({tree.root()}, true)), "");
    EXPECT_EQ(log.messages(), std::vector<NSString>{u"unhandled selector combinator case."});
}

TEST(QVSelectorCombinatorEvaluation, NullNodesAreSkipped) {
    FakeTree tree("a");
    EXPECT_EQ(namesOf(chain(u"a")->evaluateWithArray({nullptr, tree.root()}, true)), "a");
    EXPECT_EQ(namesOf(QVSelectorCombinator::updateMatches({nullptr}, chain(u":not(a)").get())), "");
}

// Nodes within one another have more ways from top to bottom than could ever be walked.
TEST(QVSelectorCombinatorEvaluation, TheWorkDoesNotGrowWithTheNumberOfWays) {
    std::string drawing;
    for (int depth = 0; depth < 60; ++depth)
        drawing += "a(";
    FakeTree tree(drawing + "b" + std::string(60, ')'));
    std::u16string selector;
    for (int step = 0; step < 30; ++step)
        selector += u"a ";
    EXPECT_EQ(found(tree, selector + u"b"), "b");
    // Once by the head and once by each of the thirty steps behind it.
    EXPECT_EQ(tree["b"]->questions, 31);
}

TEST(QVSelectorCombinatorEvaluation, ALongRowOfSourcesIsWalkedOnce) {
    std::string drawing = "r(";
    for (int count = 0; count < 300; ++count)
        drawing += "a ";
    FakeTree tree(drawing + "b)");
    EXPECT_EQ(found(tree, u"a ~ b"), "b");
    EXPECT_EQ(tree["b"]->questions, 2);
}
