#include "Quorvane/Selectors/QVSelectorCombinator.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/QVLimits.h"
#include "Tests/Quorvane/Selectors/FakeSelectable.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVSelectorCombinator> chain(const char16_t *text) {
    return QVSelectorCombinator::selectorCombinatorsFromString(NSString(text), nullptr).at(0);
}

std::shared_ptr<QVSelectorCombinator> stepOfType(NSUInteger type) {
    auto step = std::make_shared<QVSelectorCombinator>();
    step->setType(type);
    return step;
}

std::shared_ptr<QVSelectorCombinator> stepBehind(std::shared_ptr<QVSelectorCombinator> step,
                                                 std::size_t count) {
    for (; count > 0; --count)
        step = step->next();
    return step;
}

/// The head and the last step of a chain of so many steps.
struct LongChain {
    std::shared_ptr<QVSelectorCombinator> head;
    std::weak_ptr<QVSelectorCombinator> last;

    explicit LongChain(std::size_t steps) : head(stepOfType(1)), last(head) {
        while (--steps > 0) {
            auto before = stepOfType(1);
            EXPECT_TRUE(before->setNext(head));
            head = before;
        }
    }
};

std::shared_ptr<QVSelectorCombinator> unarchived(const NSData &data,
                                                 std::shared_ptr<NSError> *error = nullptr) {
    return NSKeyedUnarchiver::unarchivedObjectOfClass<QVSelectorCombinator>(data, error);
}

/// Writes under the name of a combinator what no combinator would write.
class ForgedStep final : public NSSecureCoding {
public:
    std::weak_ptr<ForgedStep> next;
    std::shared_ptr<ForgedStep> previous;

    const NSCodingClass &classForCoder() const override { return QVSelectorCombinator::codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override {
        coder.encodeInteger(1, u"type");
        coder.encodeObject(next.lock(), u"next");
        coder.encodeObject(previous, u"previous");
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &, std::shared_ptr<NSSecureCoding>) override {
        return nullptr;
    }
};

} // namespace

TEST(QVSelectorCombinator, IsEmptyAtFirst) {
    const QVSelectorCombinator step;
    EXPECT_EQ(step.type(), 0u);
    EXPECT_TRUE(step.simpleSelectors().empty());
    EXPECT_EQ(step.next(), nullptr);
    EXPECT_EQ(step.previous(), nullptr);
    EXPECT_TRUE(step.captureName().isNull());
    EXPECT_TRUE(step.matches().empty());
    EXPECT_TRUE(step.matchedThrough().empty());
}

TEST(QVSelectorCombinator, SettingMatchesReplacesThem) {
    FakeTree tree("a b");
    QVSelectorCombinator step;
    step.setMatches({tree["a"], tree["b"]});
    step.setMatchedThrough({tree["b"], tree["a"]});
    step.setMatches({tree["b"]});
    EXPECT_EQ(namesOf(step.matches()), "b");
    EXPECT_EQ(namesOf(step.matchedThrough()), "b a");
    step.setMatches({});
    step.setMatchedThrough({});
    EXPECT_TRUE(step.matches().empty());
    EXPECT_TRUE(step.matchedThrough().empty());
}

TEST(QVSelectorCombinator, ClearingForgetsTheMatchesOfThisStepAndAllBehindIt) {
    FakeTree tree("a");
    const auto head = chain(u"a b c");
    for (auto step = head; step; step = step->next()) {
        step->setMatches({tree.root()});
        step->setMatchedThrough({tree.root()});
    }
    head->next()->clearMatches();
    EXPECT_EQ(head->matches().size(), 1u);
    EXPECT_EQ(head->matchedThrough().size(), 1u);
    for (auto step = head->next(); step; step = step->next()) {
        EXPECT_TRUE(step->matches().empty());
        EXPECT_TRUE(step->matchedThrough().empty());
    }
}

TEST(QVSelectorCombinator, DescribesItsType) {
    const auto step = stepOfType(QVSelectorCombinatorTypeHasChild);
    EXPECT_EQ(step->description(),
              NSString::stringWithFormat(u"<QVSelectorCombinator: %p : type=has-child>", step.get()));
}

TEST(QVSelectorCombinatorLinks, SettingTheNextStepLinksBothWays) {
    const auto first = stepOfType(0);
    const auto second = stepOfType(1);
    EXPECT_TRUE(first->setNext(second));
    EXPECT_EQ(first->next(), second);
    EXPECT_EQ(second->previous(), first.get());
    EXPECT_TRUE(first->setNext(nullptr));
    EXPECT_EQ(first->next(), nullptr);
    EXPECT_EQ(second->previous(), nullptr);
}

TEST(QVSelectorCombinatorLinks, AStepOutlivesTheOneBeforeItWithoutALinkToIt) {
    auto first = stepOfType(0);
    const auto second = stepOfType(1);
    first->setNext(second);
    first.reset();
    EXPECT_EQ(second->previous(), nullptr);
}

TEST(QVSelectorCombinatorLinks, AStepWithANewPredecessorKeepsItWhenTheOldOneGoes) {
    auto old = stepOfType(0);
    const auto fresh = stepOfType(0);
    const auto shared = stepOfType(1);
    old->setNext(shared);
    fresh->setNext(shared);
    old.reset();
    EXPECT_EQ(shared->previous(), fresh.get());
}

TEST(QVSelectorCombinatorLinks, ACircleIsRefused) {
    const auto head = chain(u"a b c");
    const auto last = stepBehind(head, 2);
    EXPECT_FALSE(last->setNext(head));
    EXPECT_FALSE(last->setNext(last));
    EXPECT_EQ(last->next(), nullptr);
    EXPECT_EQ(head->previous(), nullptr);
}

TEST(QVSelectorCombinatorLinks, AChainGrowsToItsLimitAndNoFurther) {
    const LongChain chain(limits::selectorChainLength);
    EXPECT_FALSE(stepOfType(0)->setNext(chain.head));
    EXPECT_FALSE(chain.last.lock()->setNext(stepOfType(1)));
}

TEST(QVSelectorCombinatorLinks, AWholeChainGoesWithItsHead) {
    LongChain chain(limits::selectorChainLength);
    chain.head.reset();
    EXPECT_TRUE(chain.last.expired());
}

TEST(QVSelectorCombinatorLinks, AHeldStepKeepsTheRestOfItsChain) {
    auto head = chain(u"a b c d");
    const auto third = stepBehind(head, 2);
    head.reset();
    EXPECT_EQ(third->previous(), nullptr);
    ASSERT_TRUE(third->next());
    EXPECT_EQ(third->next()->previous(), third.get());
}

TEST(QVSelectorCombinatorCopy, IsAChainOfItsOwnWithoutMatches) {
    FakeTree tree("a(b)");
    const auto head = chain(u"a > b:capture(c)");
    head->evaluateWithArray({tree.root()}, true);
    const auto copy = head->copy();
    EXPECT_NE(copy, head);
    EXPECT_NE(copy->next(), head->next());
    EXPECT_EQ(copy->simpleSelectors(), head->simpleSelectors());
    EXPECT_EQ(copy->next()->type(), QVSelectorCombinatorTypeChild);
    EXPECT_EQ(copy->next()->previous(), copy.get());
    EXPECT_EQ(namesOf(head->next()->matches()), "b");
    EXPECT_TRUE(copy->next()->matches().empty());
    EXPECT_TRUE(copy->next()->matchedThrough().empty());
    EXPECT_EQ(stepBehind(copy, 2)->captureName(), u"c");
    EXPECT_EQ(stepBehind(copy, 2)->next(), nullptr);
}

TEST(QVSelectorCombinatorArchive, ChainsSurvive) {
    FakeTree tree("a");
    const auto head = chain(u"archive.b > c:not(d,e):capture(f)");
    head->next()->setMatches({tree.root()});
    const auto read = unarchived(NSKeyedArchiver::archivedDataWithRootObject(head));
    ASSERT_TRUE(read);
    const QVSelectorCombinator *previous = nullptr;
    auto expected = head;
    for (auto step = read; step; step = step->next(), expected = expected->next()) {
        ASSERT_TRUE(expected);
        EXPECT_EQ(step->type(), expected->type());
        ASSERT_EQ(step->simpleSelectors().size(), expected->simpleSelectors().size());
        for (std::size_t index = 0; index < step->simpleSelectors().size(); ++index)
            EXPECT_EQ(step->simpleSelectors()[index]->classes(),
                      expected->simpleSelectors()[index]->classes());
        EXPECT_EQ(step->captureName(), expected->captureName());
        EXPECT_EQ(step->previous(), previous);
        EXPECT_TRUE(step->matches().empty());
        previous = step.get();
    }
    EXPECT_EQ(expected, nullptr);
}

TEST(QVSelectorCombinatorArchive, AStepFromTheMiddleComesBackAsAHead) {
    const auto head = chain(u"a b c");
    const auto read = unarchived(NSKeyedArchiver::archivedDataWithRootObject(head->next()));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->type(), QVSelectorCombinatorTypeSimple);
    EXPECT_EQ(read->previous(), nullptr);
    ASSERT_TRUE(read->next());
    EXPECT_EQ(read->next()->previous(), read.get());
    EXPECT_EQ(read->next()->next(), nullptr);
}

TEST(QVSelectorCombinatorArchive, AnUnknownTypeStays) {
    EXPECT_EQ(unarchived(NSKeyedArchiver::archivedDataWithRootObject(stepOfType(99)))->type(), 99u);
}

TEST(QVSelectorCombinatorArchive, TheLongestChainSurvives) {
    const LongChain chain(limits::selectorChainLength);
    const auto read = unarchived(NSKeyedArchiver::archivedDataWithRootObject(chain.head));
    ASSERT_TRUE(read);
    EXPECT_EQ(stepBehind(read, limits::selectorChainLength - 1)->next(), nullptr);
}

TEST(QVSelectorCombinatorArchive, AChainOverTheLimitFails) {
    std::vector<std::shared_ptr<ForgedStep>> steps;
    for (std::size_t step = 0; step <= limits::selectorChainLength; ++step) {
        steps.push_back(std::make_shared<ForgedStep>());
        if (step > 0)
            steps[step - 1]->next = steps[step];
    }
    std::shared_ptr<NSError> error;
    EXPECT_EQ(unarchived(NSKeyedArchiver::archivedDataWithRootObject(steps[0]), &error), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), NSCocoaErrorDomain);
    EXPECT_EQ(error->code(), 4864);
    EXPECT_EQ(error->localizedDescription(), u"The steps of a selector form a circle or are too many.");
}

TEST(QVSelectorCombinatorArchive, ACircleOfStepsFails) {
    const auto first = std::make_shared<ForgedStep>();
    const auto second = std::make_shared<ForgedStep>();
    first->next = second;
    second->next = first;
    std::shared_ptr<NSError> error;
    EXPECT_EQ(unarchived(NSKeyedArchiver::archivedDataWithRootObject(first), &error), nullptr);
    EXPECT_TRUE(error);

    first->next = first;
    EXPECT_EQ(unarchived(NSKeyedArchiver::archivedDataWithRootObject(first)), nullptr);
}

TEST(QVSelectorCombinatorArchive, AStepThatIsOnlyNamedAsThePreviousOneIsNotTrusted) {
    const auto step = std::make_shared<ForgedStep>();
    step->previous = std::make_shared<ForgedStep>();
    const auto read = unarchived(NSKeyedArchiver::archivedDataWithRootObject(step));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->previous(), nullptr);
}
