#include "Platform/Foundation/NSKeyValueObserving.h"

#include "Platform/Foundation/NSAssertionHandler.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quorvane {

/// Who hears of an object's keys, in the order they were added. It can stay behind while its object goes, on
/// the stack of a call that tells of a change.
struct NSKeyValueObserving::Table {
    struct Entry {
        NSString key;
        std::shared_ptr<NSKeyValueObservation::State> state;
    };

    explicit Table(const NSKeyValueObserving &observed) : object(&observed) {}
    std::vector<std::shared_ptr<NSKeyValueObservation::State>> statesForKey(std::u16string_view key) const;

    /// Null once the object is gone.
    const NSKeyValueObserving *object;
    std::vector<Entry> entries;
};

/// One observation. It stands in the tables of all objects with a key that its value depends on.
struct NSKeyValueObservation::State {
    using Table = NSKeyValueObserving::Table;

    NSString keyPath;
    NSKeyValueObservingOptions options = 0;
    NSKeyValueObserving::Observer observer = {};
    const void *context = nullptr;
    std::shared_ptr<Table> owner = {};

    bool isRemoved = false;
    /// Changes that have begun and not ended.
    NSUInteger changing = 0;
    std::any oldValue = {};
    std::vector<std::weak_ptr<Table>> tables = {};

    std::any value() const;
    void willChange();
    void didChange();
    void tell(std::any old);
    void remove();
};

std::vector<std::shared_ptr<NSKeyValueObservation::State>>
NSKeyValueObserving::Table::statesForKey(std::u16string_view key) const {
    std::vector<std::shared_ptr<NSKeyValueObservation::State>> states;
    for (const Entry &entry : entries)
        if (entry.key == key)
            states.push_back(entry.state);
    return states;
}

// MARK: - One observation

namespace {

/// The first key of a path, and what follows it (null behind the last one).
std::pair<NSString, NSString> splitPath(const NSString &path) {
    const std::u16string_view text = path.view();
    const std::size_t period = text.find(u'.');
    if (period == std::u16string_view::npos)
        return {path, NSString()};
    return {NSString(text.substr(0, period)), NSString(text.substr(period + 1))};
}

} // namespace

std::any NSKeyValueObservation::State::value() const {
    const NSKeyValueObserving *object = owner->object;
    auto [key, rest] = splitPath(keyPath);
    while (object != nullptr && !rest.isNull()) {
        object = object->observableForKey(key);
        std::tie(key, rest) = splitPath(rest);
    }
    return object != nullptr ? object->valueForKey(key) : std::any();
}

void NSKeyValueObservation::State::willChange() {
    if (changing++ == 0 && (options & NSKeyValueObservingOptionOld) != 0)
        oldValue = value();
}

void NSKeyValueObservation::State::didChange() {
    // One that was added in the middle of a change does not hear of it.
    if (changing == 0 || --changing > 0)
        return;
    std::any old = std::exchange(oldValue, std::any());
    if (!isRemoved && owner->object != nullptr)
        tell(std::move(old));
}

void NSKeyValueObservation::State::tell(std::any old) {
    NSKeyValueChange change{keyPath, context, std::move(old)};
    if ((options & NSKeyValueObservingOptionNew) != 0)
        change.newValue = value();
    observer(change);
}

void NSKeyValueObservation::State::remove() {
    isRemoved = true;
    for (const auto &weak : std::exchange(tables, {}))
        if (const auto table = weak.lock())
            std::erase_if(table->entries,
                          [this](const Table::Entry &entry) { return entry.state.get() == this; });
}

NSKeyValueObservation::NSKeyValueObservation() = default;

NSKeyValueObservation::NSKeyValueObservation(std::shared_ptr<State> state) : _state(std::move(state)) {}

NSKeyValueObservation::NSKeyValueObservation(NSKeyValueObservation &&) noexcept = default;

NSKeyValueObservation &NSKeyValueObservation::operator=(NSKeyValueObservation &&other) noexcept {
    if (this != &other) {
        invalidate();
        _state = std::move(other._state);
    }
    return *this;
}

NSKeyValueObservation::~NSKeyValueObservation() { invalidate(); }

void NSKeyValueObservation::invalidate() {
    // Emptied first: the observer may hold this token.
    if (const auto state = std::exchange(_state, nullptr))
        state->remove();
}

// MARK: - The observed object

NSKeyValueObserving::NSKeyValueObserving() = default;

NSKeyValueObserving::~NSKeyValueObserving() {
    if (_observers)
        _observers->object = nullptr;
}

std::any NSKeyValueObserving::valueForKey(const NSString & /*key*/) const { return {}; }
NSKeyValueObserving *NSKeyValueObserving::observableForKey(const NSString & /*key*/) const { return nullptr; }
std::set<NSString>
NSKeyValueObserving::keyPathsForValuesAffectingValueForKey(const NSString & /*key*/) const {
    return {};
}

/// Puts an observation into the table of this object, and of all those that its path leads to, with the keys
/// that these depend on.
void NSKeyValueObserving::subscribe(const NSString &path,
                                    const std::shared_ptr<NSKeyValueObservation::State> &state,
                                    Subscribed &subscribed) {
    if (!subscribed.emplace(this, path).second)
        return;
    if (!_observers)
        _observers = std::make_shared<Table>(*this);
    const auto [key, rest] = splitPath(path);
    _observers->entries.push_back({key, state});
    state->tables.push_back(_observers);
    for (const NSString &affecting : keyPathsForValuesAffectingValueForKey(key))
        subscribe(affecting, state, subscribed);
    if (NSKeyValueObserving *const object = rest.isNull() ? nullptr : observableForKey(key))
        object->subscribe(rest, state, subscribed);
}

NSKeyValueObservation NSKeyValueObserving::addObserver(const NSString &forKeyPath,
                                                       NSKeyValueObservingOptions options, Observer observer,
                                                       const void *context) {
    QVParameterAssert(observer != nullptr, "observer != nil");
    if (!observer)
        return {};
    const auto state = std::make_shared<NSKeyValueObservation::State>(
        NSKeyValueObservation::State{forKeyPath, options, std::move(observer), context});
    if (!_observers)
        _observers = std::make_shared<Table>(*this);
    state->owner = _observers;
    Subscribed subscribed;
    subscribe(forKeyPath, state, subscribed);
    NSKeyValueObservation observation(state);
    if ((options & NSKeyValueObservingOptionInitial) != 0)
        state->tell({});
    return observation;
}

void NSKeyValueObserving::willChangeValueForKey(std::u16string_view key) {
    if (!_observers)
        return;
    for (const auto &state : _observers->statesForKey(key))
        state->willChange();
}

void NSKeyValueObserving::didChangeValueForKey(std::u16string_view key) {
    if (!_observers)
        return;
    // An observer may add and remove others, and let go of this object.
    const auto states = _observers->statesForKey(key);
    std::size_t next = 0;
    try {
        while (next < states.size())
            states[next++]->didChange();
    } catch (...) {
        // The others are not told, but for them too the change is over.
        for (; next < states.size(); ++next)
            if (states[next]->changing > 0)
                --states[next]->changing;
        throw;
    }
}

} // namespace quorvane
