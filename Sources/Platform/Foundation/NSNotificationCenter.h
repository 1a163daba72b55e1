#pragma once

#include "Platform/Foundation/NSString.h"

#include <any>
#include <functional>
#include <map>

namespace quorvane {

/// One message: a name, who sent it and what came with it.
struct NSNotification {
    NSString name;
    /// The sender; only ever compared, never followed. For messages of a class its `codingClass` or another
    /// address that stands for it.
    const void *object = nullptr;
    std::map<NSString, std::any> userInfo = {};
};

/// Holds an observer for as long as it lives; destroying it ends the observing and waits for a call that is
/// running on another thread, but not for the calls that it is itself made from. Movable, not copyable.
class QV_EXPORT NSNotificationToken {
public:
    struct State;
    NSNotificationToken();
    explicit NSNotificationToken(std::shared_ptr<State> state);
    NSNotificationToken(NSNotificationToken &&) noexcept;
    NSNotificationToken &operator=(NSNotificationToken &&) noexcept;
    ~NSNotificationToken();
    void invalidate();

private:
    std::shared_ptr<State> _state;
};

/// Tells observers of messages at once, on the thread that posts. Any thread may post, add and remove; an
/// observer may do so while it is told: one that is removed before its turn is not told, one that is added is
/// not told of the running message. An exception of an observer reaches who posts; those after it are not
/// told.
class QV_EXPORT NSNotificationCenter {
public:
    static NSNotificationCenter &defaultCenter();

    NSNotificationCenter();
    ~NSNotificationCenter();

    using Observer = std::function<void(const NSNotification &)>;
    /// A null name observes all names, a null object all senders. Observers are told in the order they were
    /// added.
    [[nodiscard]] NSNotificationToken addObserver(NSString name, const void *object, Observer observer);
    void postNotification(const NSNotification &notification);

    struct Storage;

private:
    std::shared_ptr<Storage> _storage;
};

} // namespace quorvane
