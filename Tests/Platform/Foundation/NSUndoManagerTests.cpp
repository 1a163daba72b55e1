#include "Platform/Foundation/NSUndoManager.h"

#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

/// A number whose changes can be taken back.
class Counter final : public NSObject {
public:
    explicit Counter(std::shared_ptr<NSUndoManager> undoManager) : manager(std::move(undoManager)) {}

    int value = 0;
    /// Every value that there was.
    std::vector<int> history;
    std::shared_ptr<NSUndoManager> manager;

    void set(int newValue) {
        manager->prepareWithInvocationTarget(std::static_pointer_cast<Counter>(shared_from_this()),
                                             [old = value](Counter &counter) { counter.set(old); });
        value = newValue;
        history.push_back(newValue);
    }
    /// As a step by itself.
    void step(int newValue) {
        manager->beginUndoGrouping();
        set(newValue);
        manager->endUndoGrouping();
    }
};

struct NSUndoManagerTest : testing::Test {
    std::shared_ptr<NSUndoManager> manager = NSUndoManager::init();
    std::shared_ptr<Counter> counter = std::make_shared<Counter>(manager);

    NSUndoManagerTest() { manager->setGroupsByEvent(false); }
    ~NSUndoManagerTest() override { MainQueue::drain(); }
};

struct NSUndoManagerTurns : NSUndoManagerTest {
    NSUndoManagerTurns() { manager->setGroupsByEvent(true); }
};

NSString exceptionName(QVBlock<void()> block) {
    try {
        block();
    } catch (const NSException &exception) {
        return exception.name();
    }
    return nullptr;
}

} // namespace

TEST_F(NSUndoManagerTest, HasNothingToDoAtFirst) {
    EXPECT_FALSE(manager->canUndo());
    EXPECT_FALSE(manager->canRedo());
    EXPECT_EQ(manager->groupingLevel(), 0u);
    EXPECT_TRUE(manager->isUndoRegistrationEnabled());
    EXPECT_EQ(manager->levelsOfUndo(), 0u);
    manager->undo();
    manager->redo();
    EXPECT_TRUE(NSUndoManager::init()->groupsByEvent());
}

TEST_F(NSUndoManagerTest, UndoTakesBackTheLastStepAndRedoDoesItAgain) {
    counter->step(1);
    counter->step(2);
    manager->undo();
    EXPECT_EQ(counter->value, 1);
    EXPECT_TRUE(manager->canUndo());
    EXPECT_TRUE(manager->canRedo());
    manager->undo();
    EXPECT_EQ(counter->value, 0);
    EXPECT_FALSE(manager->canUndo());
    manager->redo();
    EXPECT_EQ(counter->value, 1);
    manager->redo();
    EXPECT_EQ(counter->value, 2);
    EXPECT_FALSE(manager->canRedo());
    manager->undo();
    EXPECT_EQ(counter->value, 1);
}

TEST_F(NSUndoManagerTest, AGroupIsTakenBackFromItsEnd) {
    manager->beginUndoGrouping();
    counter->set(1);
    counter->set(2);
    counter->set(3);
    manager->endUndoGrouping();
    counter->history.clear();
    manager->undo();
    EXPECT_EQ(counter->history, (std::vector<int>{2, 1, 0}));
    counter->history.clear();
    manager->redo();
    EXPECT_EQ(counter->history, (std::vector<int>{1, 2, 3}));
    EXPECT_FALSE(manager->canRedo());
}

TEST_F(NSUndoManagerTest, GroupsInsideOfAGroupAreOneStepWithIt) {
    manager->beginUndoGrouping();
    counter->set(1);
    manager->beginUndoGrouping();
    EXPECT_EQ(manager->groupingLevel(), 2u);
    counter->set(2);
    counter->set(3);
    manager->endUndoGrouping();
    counter->set(4);
    manager->endUndoGrouping();
    counter->history.clear();
    manager->undo();
    EXPECT_EQ(counter->history, (std::vector<int>{3, 2, 1, 0}));
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTest, AGroupWithoutActionsIsNoStep) {
    manager->beginUndoGrouping();
    EXPECT_FALSE(manager->canUndo());
    manager->beginUndoGrouping();
    manager->endUndoGrouping();
    manager->endUndoGrouping();
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTest, ANewActionEmptiesTheRedoStack) {
    counter->step(1);
    counter->step(2);
    manager->undo();
    counter->step(5);
    EXPECT_FALSE(manager->canRedo());
    manager->undo();
    manager->undo();
    EXPECT_EQ(counter->value, 0);
}

TEST_F(NSUndoManagerTest, SaysWhatItIsDoing) {
    std::vector<std::pair<bool, bool>> seen;
    const auto note = [&](Counter &) { seen.emplace_back(manager->isUndoing(), manager->isRedoing()); };
    manager->beginUndoGrouping();
    manager->prepareWithInvocationTarget(counter, [&](Counter &target) {
        note(target);
        manager->prepareWithInvocationTarget(counter, note);
    });
    manager->endUndoGrouping();
    manager->undo();
    EXPECT_FALSE(manager->isUndoing());
    manager->redo();
    EXPECT_FALSE(manager->isRedoing());
    EXPECT_EQ(seen, (std::vector<std::pair<bool, bool>>{{true, false}, {false, true}}));
    // The second action registered nothing to take it back.
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTest, RegisteringWithoutAGroupThrows) {
    EXPECT_EQ(exceptionName([&] { counter->set(1); }), NSInternalInconsistencyException);
    EXPECT_EQ(counter->value, 0);
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTest, EndingAGroupThatWasNotBegunThrows) {
    EXPECT_EQ(exceptionName([&] { manager->endUndoGrouping(); }), NSInternalInconsistencyException);
    EXPECT_EQ(manager->groupingLevel(), 0u);
}

TEST_F(NSUndoManagerTest, UndoClosesOneOpenGroupAndRefusesMore) {
    manager->beginUndoGrouping();
    counter->set(1);
    EXPECT_TRUE(manager->canUndo());
    manager->beginUndoGrouping();
    EXPECT_EQ(exceptionName([&] { manager->undo(); }), NSInternalInconsistencyException);
    EXPECT_EQ(exceptionName([&] { manager->redo(); }), NSInternalInconsistencyException);
    EXPECT_EQ(counter->value, 1);
    manager->endUndoGrouping();
    manager->undo();
    EXPECT_EQ(counter->value, 0);
    EXPECT_EQ(manager->groupingLevel(), 0u);
}

TEST_F(NSUndoManagerTest, AnActionCanNotUndo) {
    std::vector<NSString> names;
    counter->step(1);
    manager->beginUndoGrouping();
    manager->prepareWithInvocationTarget(counter, [&](Counter &) {
        names.push_back(exceptionName([&] { manager->undo(); }));
        names.push_back(exceptionName([&] { manager->redo(); }));
    });
    manager->endUndoGrouping();
    manager->undo();
    EXPECT_EQ(names,
              (std::vector<NSString>{NSInternalInconsistencyException, NSInternalInconsistencyException}));
    EXPECT_EQ(counter->value, 1);
}

TEST_F(NSUndoManagerTest, AnExceptionOfAnActionLeavesWhatWasRegisteredToRedo) {
    counter->step(1);
    manager->beginUndoGrouping();
    manager->prepareWithInvocationTarget(counter, [](Counter &) { throw std::runtime_error("refused"); });
    counter->set(2);
    manager->endUndoGrouping();
    EXPECT_THROW(manager->undo(), std::runtime_error);
    EXPECT_EQ(counter->value, 1);
    EXPECT_FALSE(manager->isUndoing());
    EXPECT_EQ(manager->groupingLevel(), 0u);
    manager->redo();
    EXPECT_EQ(counter->value, 2);
    manager->undo();
    manager->undo();
    EXPECT_EQ(counter->value, 0);
}

TEST_F(NSUndoManagerTest, AGroupThatAnActionLeavesOpenIsClosed) {
    manager->beginUndoGrouping();
    manager->prepareWithInvocationTarget(counter, [&](Counter &target) {
        manager->beginUndoGrouping();
        target.set(7);
    });
    manager->endUndoGrouping();
    manager->undo();
    EXPECT_EQ(manager->groupingLevel(), 0u);
    EXPECT_EQ(counter->value, 7);
    manager->redo();
    EXPECT_EQ(counter->value, 0);
}

TEST_F(NSUndoManagerTest, ATargetIsNotKeptAlive) {
    counter->step(1);
    const std::weak_ptr<Counter> weak = counter;
    counter.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(manager->canUndo());
    manager->undo();
    EXPECT_FALSE(manager->canUndo());
    EXPECT_FALSE(manager->canRedo());
}

TEST_F(NSUndoManagerTest, ANullTargetHasNoActions) {
    manager->beginUndoGrouping();
    manager->prepareWithInvocationTarget(std::shared_ptr<Counter>(),
                                         [](Counter &target) { target.value = 1; });
    manager->endUndoGrouping();
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTest, NothingIsRegisteredWhileThatIsDisabled) {
    manager->disableUndoRegistration();
    manager->disableUndoRegistration();
    manager->enableUndoRegistration();
    EXPECT_FALSE(manager->isUndoRegistrationEnabled());
    // No group is needed either.
    counter->set(1);
    EXPECT_FALSE(manager->canUndo());
    manager->enableUndoRegistration();
    EXPECT_TRUE(manager->isUndoRegistrationEnabled());
    EXPECT_EQ(exceptionName([&] { manager->enableUndoRegistration(); }), NSInternalInconsistencyException);
    counter->step(2);
    manager->undo();
    EXPECT_EQ(counter->value, 1);
}

TEST_F(NSUndoManagerTest, TheOldestStepsGoWhenThereAreTooMany) {
    manager->setLevelsOfUndo(2);
    for (int value = 1; value <= 3; ++value)
        counter->step(value);
    manager->undo();
    manager->undo();
    EXPECT_FALSE(manager->canUndo());
    EXPECT_EQ(counter->value, 1);
}

TEST_F(NSUndoManagerTest, ASmallerNumberOfStepsHoldsAtOnce) {
    for (int value = 1; value <= 3; ++value)
        counter->step(value);
    manager->undo();
    manager->undo();
    manager->setLevelsOfUndo(1);
    manager->redo();
    EXPECT_EQ(counter->value, 2);
    EXPECT_FALSE(manager->canRedo());
    manager->undo();
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTest, AllActionsCanBeRemoved) {
    counter->step(1);
    counter->step(2);
    manager->undo();
    manager->disableUndoRegistration();
    manager->removeAllActions();
    EXPECT_FALSE(manager->canUndo());
    EXPECT_FALSE(manager->canRedo());
    EXPECT_TRUE(manager->isUndoRegistrationEnabled());
    manager->beginUndoGrouping();
    counter->set(5);
    manager->removeAllActions();
    EXPECT_EQ(manager->groupingLevel(), 1u);
    manager->endUndoGrouping();
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTest, TheActionsOfOneTargetCanBeRemoved) {
    const auto other = std::make_shared<Counter>(manager);
    counter->step(1);
    manager->beginUndoGrouping();
    counter->set(2);
    other->set(8);
    manager->endUndoGrouping();
    other->step(9);
    manager->undo();
    manager->removeAllActionsWithTarget(other);
    EXPECT_FALSE(manager->canRedo());
    manager->undo();
    EXPECT_EQ(counter->value, 1);
    EXPECT_EQ(other->value, 8);
    manager->undo();
    EXPECT_EQ(counter->value, 0);
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTest, AStepKeepsItsNameOnBothStacks) {
    EXPECT_EQ(manager->undoActionName(), u"");
    EXPECT_EQ(manager->redoActionName(), u"");
    manager->setActionName(u"Nothing");
    manager->beginUndoGrouping();
    counter->set(1);
    manager->setActionName(u"Typing");
    EXPECT_EQ(manager->undoActionName(), u"Typing");
    manager->endUndoGrouping();
    counter->step(2);
    EXPECT_EQ(manager->undoActionName(), u"");
    manager->setActionName(u"Cut");
    EXPECT_EQ(manager->undoActionName(), u"Cut");
    manager->undo();
    EXPECT_EQ(manager->undoActionName(), u"Typing");
    EXPECT_EQ(manager->redoActionName(), u"Cut");
    manager->redo();
    EXPECT_EQ(manager->undoActionName(), u"Cut");
    EXPECT_EQ(manager->redoActionName(), u"");
}

TEST_F(NSUndoManagerTest, TheNameOfAGroupInsideGoesToTheStep) {
    manager->beginUndoGrouping();
    manager->beginUndoGrouping();
    counter->set(1);
    manager->setActionName(u"Typing");
    manager->endUndoGrouping();
    manager->endUndoGrouping();
    EXPECT_EQ(manager->undoActionName(), u"Typing");
}

TEST_F(NSUndoManagerTurns, WhatIsRegisteredInOneTurnIsOneStep) {
    counter->set(1);
    counter->step(2);
    EXPECT_EQ(manager->groupingLevel(), 1u);
    MainQueue::drain();
    EXPECT_EQ(manager->groupingLevel(), 0u);
    counter->set(3);
    MainQueue::drain();
    manager->undo();
    EXPECT_EQ(counter->value, 2);
    manager->undo();
    EXPECT_EQ(counter->value, 0);
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(NSUndoManagerTurns, UndoingEndsTheStepOfItsTurn) {
    counter->set(1);
    manager->undo();
    EXPECT_EQ(counter->value, 0);
    counter->set(5);
    counter->set(6);
    // The task of the first step finds another one open, which goes on to the end of its own turn.
    EXPECT_EQ(manager->groupingLevel(), 1u);
    manager->undo();
    EXPECT_EQ(counter->value, 0);
    EXPECT_FALSE(manager->canUndo());
    manager->redo();
    EXPECT_EQ(counter->value, 6);
}

TEST_F(NSUndoManagerTurns, AGroupThatIsOpenAtTheEndOfATurnHoldsItsStepOpen) {
    counter->set(1);
    manager->beginUndoGrouping();
    MainQueue::drain();
    EXPECT_EQ(manager->groupingLevel(), 2u);
    counter->set(2);
    manager->endUndoGrouping();
    EXPECT_EQ(manager->groupingLevel(), 0u);
    manager->undo();
    EXPECT_EQ(counter->value, 0);
}

TEST_F(NSUndoManagerTurns, AManagerThatIsGoneAtTheEndOfATurnIsLeftAlone) {
    counter->set(1);
    counter.reset();
    const std::weak_ptr<NSUndoManager> weak = manager;
    manager = NSUndoManager::init();
    EXPECT_TRUE(weak.expired());
    MainQueue::drain();
}
