#pragma once

#include "Platform/Foundation/NSString.h"

#include <any>
#include <functional>
#include <memory>
#include <set>

namespace quorvane {

/// What an observer wants to be given; a bit mask.
using NSKeyValueObservingOptions = std::uint64_t;
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionNew = 1 << 0;
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionOld = 1 << 1;
/// Tells the observer once at the start, before `addObserver` returns.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionInitial = 1 << 2;

/// One change of an observed property.
struct NSKeyValueChange {
    /// As it was given to `addObserver`.
    NSString keyPath;
    /// The observer's own mark, never followed.
    const void *context = nullptr;
    /// Empty where it was not asked for, and where the key has no value that can be read.
    std::any oldValue = {};
    std::any newValue = {};
};

/// Holds an observation for as long as it lives. It may outlive what it observes. Movable, not copyable.
class QV_EXPORT NSKeyValueObservation {
public:
    struct State;
    NSKeyValueObservation();
    explicit NSKeyValueObservation(std::shared_ptr<State> state);
    NSKeyValueObservation(NSKeyValueObservation &&) noexcept;
    NSKeyValueObservation &operator=(NSKeyValueObservation &&) noexcept;
    ~NSKeyValueObservation();
    void invalidate();

private:
    std::shared_ptr<State> _state;
};

/// What an object whose properties can be observed derives from, beside its base class. Setters put
/// `willChangeValueForKey` and `didChangeValueForKey` around a change; observers are told in the second, on
/// the same thread, in the order they were added. A key that nobody knows can be observed and never changes.
///
/// An observer may add and remove others while it is told, and let go of the object: one that is removed
/// before its turn is not told, one that is added is not told of the running change. An exception of an
/// observer reaches who made the change; those behind it are not told.
///
/// One thread at a time, as the object itself.
class QV_EXPORT NSKeyValueObserving {
public:
    using Observer = std::function<void(const NSKeyValueChange &change)>;

    NSKeyValueObserving();
    virtual ~NSKeyValueObserving();
    NSKeyValueObserving(const NSKeyValueObserving &) = delete;
    NSKeyValueObserving &operator=(const NSKeyValueObserving &) = delete;

    /// The path is a key, or keys joined by periods that lead through `observableForKey`.
    [[nodiscard]] NSKeyValueObservation addObserver(const NSString &forKeyPath,
                                                    NSKeyValueObservingOptions options, Observer observer,
                                                    const void *context = nullptr);

    /// The two can be nested: of several changes of one value observers are told once, when the outermost is
    /// over. A change of a key that others depend on is one of theirs too. For an object that nobody observes
    /// both cost one test.
    void willChangeValueForKey(std::u16string_view key);
    void didChangeValueForKey(std::u16string_view key);

    /// A property's value by its name, empty where there is none.
    virtual std::any valueForKey(const NSString &key) const;
    /// The object that a key leads to in a longer path, null where it leads to none. It must stay the same
    /// for as long as anything is observed through it.
    virtual NSKeyValueObserving *observableForKey(const NSString &key) const;
    /// The paths, from this object, on whose values a key's value depends.
    virtual std::set<NSString> keyPathsForValuesAffectingValueForKey(const NSString &key) const;

private:
    friend struct NSKeyValueObservation::State;
    struct Table;
    /// Objects and paths that an observation stands on already, so that circles end.
    using Subscribed = std::set<std::pair<const NSKeyValueObserving *, NSString>>;
    void subscribe(const NSString &path, const std::shared_ptr<NSKeyValueObservation::State> &state,
                   Subscribed &subscribed);

    /// Null until somebody observes.
    std::shared_ptr<Table> _observers;
};

} // namespace quorvane
