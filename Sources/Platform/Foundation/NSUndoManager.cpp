#include "Platform/Foundation/NSUndoManager.h"

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSException.h"

#include <algorithm>

namespace quorvane {

namespace {

[[noreturn]] void raise(const char16_t *reason) {
    throw NSException(NSInternalInconsistencyException, reason);
}

} // namespace

struct NSUndoManager::Action {
    std::weak_ptr<const NSObject> target;
    std::function<void()> perform;

    bool isOnTarget(const std::shared_ptr<const NSObject> &other) const {
        return !target.owner_before(other) && !other.owner_before(target);
    }
};

/// Actions in the order they were registered. Those of groups inside of it stand among its own, since they
/// are taken back together with them.
struct NSUndoManager::Group {
    std::vector<Action> actions;
    NSString name;
};

NSUndoManager::NSUndoManager() = default;
NSUndoManager::~NSUndoManager() = default;

void NSUndoManager::registerAction(const std::shared_ptr<const NSObject> &target,
                                   std::function<void()> perform) {
    if (!isUndoRegistrationEnabled() || !target)
        return;
    openTurn();
    if (_open.empty())
        raise(u"A group must be open before actions are registered");
    if (_state == State::Idle)
        _redoStack.clear();
    _open.back().actions.push_back({target, std::move(perform)});
}

void NSUndoManager::enableUndoRegistration() {
    if (_disableCount == 0)
        raise(u"Registering was enabled more often than it was disabled");
    --_disableCount;
}

void NSUndoManager::openTurn() {
    if (!_groupsByEvent || !_open.empty())
        return;
    openGroup();
    _turn = ++_lastTurn;
    dispatch_async(dispatch_get_main_queue(), [weakSelf = weak_from_this(), turn = _turn] {
        const auto self = std::static_pointer_cast<NSUndoManager>(weakSelf.lock());
        if (self && self->_turn == turn)
            self->endTurn();
    });
}

void NSUndoManager::endTurn() {
    _turnIsOver = true;
    if (_open.size() == 1)
        closeGroup();
}

void NSUndoManager::openGroup() { _open.emplace_back(); }

void NSUndoManager::closeGroup() {
    Group group = std::move(_open.back());
    _open.pop_back();
    if (!_open.empty()) {
        Group &outer = _open.back();
        std::ranges::move(group.actions, std::back_inserter(outer.actions));
        if (group.name)
            outer.name = group.name;
        // The turn had to wait for this group.
        if (_open.size() == 1 && _turn != 0 && _turnIsOver)
            closeGroup();
        return;
    }
    _turn = 0;
    _turnIsOver = false;
    if (group.actions.empty())
        return;
    Stack &stack = _state == State::Undoing ? _redoStack : _undoStack;
    stack.push_back(std::move(group));
    removeOldest(stack);
}

void NSUndoManager::beginUndoGrouping() {
    openTurn();
    openGroup();
}

void NSUndoManager::endUndoGrouping() {
    if (_open.empty())
        raise(u"A group was ended that was not begun");
    closeGroup();
}

NSUInteger NSUndoManager::groupingLevel() const { return _open.size(); }

void NSUndoManager::perform(State state, Stack &from) {
    if (_state != State::Idle)
        raise(u"An action can't undo or redo");
    if (_open.size() > 1)
        raise(u"Nothing can be undone or redone while groups are open");
    if (!_open.empty())
        closeGroup();
    if (from.empty())
        return;
    const Group group = std::move(from.back());
    from.pop_back();
    _state = state;
    openGroup();
    _open.back().name = group.name;
    // Whichever way the actions end, what they registered is the step back.
    struct Guard {
        NSUndoManager &manager;
        ~Guard() {
            while (!manager._open.empty())
                manager.closeGroup();
            manager._state = State::Idle;
        }
    } const guard{*this};
    for (auto action = group.actions.rbegin(); action != group.actions.rend(); ++action)
        if (const auto target = action->target.lock())
            action->perform();
}

void NSUndoManager::undo() { perform(State::Undoing, _undoStack); }

void NSUndoManager::redo() { perform(State::Redoing, _redoStack); }

bool NSUndoManager::canUndo() const {
    return !_undoStack.empty() ||
           (_state == State::Idle &&
            std::ranges::any_of(_open, [](const Group &group) { return !group.actions.empty(); }));
}

bool NSUndoManager::canRedo() const { return !_redoStack.empty(); }

void NSUndoManager::removeOldest(Stack &stack) const {
    while (_levelsOfUndo != 0 && stack.size() > _levelsOfUndo)
        stack.pop_front();
}

void NSUndoManager::setLevelsOfUndo(NSUInteger levelsOfUndo) {
    _levelsOfUndo = levelsOfUndo;
    removeOldest(_undoStack);
    removeOldest(_redoStack);
}

void NSUndoManager::removeAllActions() {
    _undoStack.clear();
    _redoStack.clear();
    for (Group &group : _open)
        group.actions.clear();
    _disableCount = 0;
}

void NSUndoManager::removeAllActionsWithTarget(const std::shared_ptr<const NSObject> &target) {
    for (Stack *stack : {&_undoStack, &_redoStack, &_open})
        for (Group &group : *stack)
            std::erase_if(group.actions,
                          [&target](const Action &action) { return action.isOnTarget(target); });
    for (Stack *stack : {&_undoStack, &_redoStack})
        std::erase_if(*stack, [](const Group &group) { return group.actions.empty(); });
}

void NSUndoManager::setActionName(const NSString &actionName) {
    if (!_open.empty())
        _open.back().name = actionName;
    else if (!_undoStack.empty())
        _undoStack.back().name = actionName;
}

NSString NSUndoManager::undoActionName() const {
    const Stack &stack = !_open.empty() && _state == State::Idle ? _open : _undoStack;
    return stack.empty() || !stack.back().name ? NSString(u"") : stack.back().name;
}

NSString NSUndoManager::redoActionName() const {
    return _redoStack.empty() || !_redoStack.back().name ? NSString(u"") : _redoStack.back().name;
}

} // namespace quorvane
