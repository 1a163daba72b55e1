#pragma once

#include "Platform/Foundation/NSObject.h"

#include <functional>
#include <list>
#include <vector>

namespace quorvane {

/// What can be taken back, and what can be done again: two stacks of groups of actions. Undoing runs the
/// actions of the last group, the last of them first; what they register in turn is the group that redoes it.
/// Groups may stand in one another, and only the outermost is a step for the user; one without actions is
/// none. Targets are not kept alive: the actions of one that is gone do nothing.
///
/// By default each turn of the main queue is one group around all that is registered in it, so that a command
/// that changes many things is one step. Main thread.
class QV_EXPORT NSUndoManager final : public NSObject {
public:
    static std::shared_ptr<NSUndoManager> init() { return std::make_shared<NSUndoManager>(); }
    NSUndoManager();
    ~NSUndoManager() override;

    // Registering

    /// Registers an action on a target, which is handed to it. With an open group, or one that this opens for
    /// the turn; else throws `NSInternalInconsistencyException`. Outside of undoing and redoing it empties
    /// the redo stack. Nothing while registering is disabled, and for a null target.
    template <typename Target>
    void prepareWithInvocationTarget(const std::shared_ptr<Target> &target,
                                     std::type_identity_t<std::function<void(Target &)>> invocation) {
        // What the action is handed is held for its time, so the target's own pointer is as good.
        Target *const object = target.get();
        registerAction(target, [object, invocation = std::move(invocation)] { invocation(*object); });
    }
    /// Calls stand inside one another; throws `NSInternalInconsistencyException` when there is one too many.
    void enableUndoRegistration();
    void disableUndoRegistration() { ++_disableCount; }
    bool isUndoRegistrationEnabled() const { return _disableCount == 0; }

    // Groups

    void beginUndoGrouping();
    /// Throws `NSInternalInconsistencyException` when no group is open.
    void endUndoGrouping();
    /// How many groups are open, the turn's included.
    NSUInteger groupingLevel() const;
    /// Whether a turn of the main queue is a group; yes unless a host says otherwise, which it may while no
    /// group is open.
    bool groupsByEvent() const { return _groupsByEvent; }
    void setGroupsByEvent(bool groupsByEvent) { _groupsByEvent = groupsByEvent; }

    // Undoing

    /// Takes back the last step; nothing where there is none. A group that is open is closed first, but with
    /// more than one, and from within an action, it throws `NSInternalInconsistencyException`. An exception
    /// of an action leaves; the step is used up, and what was registered so far is the step to redo.
    void undo();
    /// Likewise the last step that was undone.
    void redo();
    bool canUndo() const;
    bool canRedo() const;
    bool isUndoing() const { return _state == State::Undoing; }
    bool isRedoing() const { return _state == State::Redoing; }

    /// The steps to keep, of which the oldest go first; 0, as at first, is any number.
    NSUInteger levelsOfUndo() const { return _levelsOfUndo; }
    void setLevelsOfUndo(NSUInteger levelsOfUndo);

    /// Empties both stacks and the open groups, which stay open, and enables registering.
    void removeAllActions();
    void removeAllActionsWithTarget(const std::shared_ptr<const NSObject> &target);

    // Names

    /// Names the innermost open group, or else the last step; the step that redoes it has the same name.
    void setActionName(const NSString &actionName);
    /// Of the step that would be undone or redone; empty where there is none or it has no name.
    NSString undoActionName() const;
    NSString redoActionName() const;

    std::u16string_view className() const override { return u"NSUndoManager"; }

private:
    enum class State : std::uint8_t { Idle, Undoing, Redoing };
    struct Action;
    struct Group;
    using Stack = std::list<Group>;

    void registerAction(const std::shared_ptr<const NSObject> &target, std::function<void()> perform);
    void openGroup();
    void closeGroup();
    void openTurn();
    void endTurn();
    void removeOldest(Stack &stack) const;
    void perform(State state, Stack &from);

    Stack _undoStack, _redoStack;
    /// From the outermost to the innermost.
    Stack _open;
    NSUInteger _levelsOfUndo = 0;
    NSUInteger _disableCount = 0;
    /// The number of the turn whose group is open, 0 for none, and whether the turn is over.
    NSUInteger _turn = 0, _lastTurn = 0;
    bool _turnIsOver = false;
    bool _groupsByEvent = true;
    State _state = State::Idle;
};

} // namespace quorvane
