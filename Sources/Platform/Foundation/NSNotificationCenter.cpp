#include "Platform/Foundation/NSNotificationCenter.h"

#include "Platform/Foundation/NSAssertionHandler.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvane {

/// The observers in the order they were added.
struct NSNotificationCenter::Storage {
    std::mutex mutex;
    std::vector<std::shared_ptr<NSNotificationToken::State>> observers;
};

/// One observer, and which threads are inside of it.
struct NSNotificationToken::State {
    NSString name;
    const void *object;
    NSNotificationCenter::Observer observer;
    std::weak_ptr<NSNotificationCenter::Storage> storage;

    std::mutex mutex;
    std::condition_variable threadLeft;
    bool isRemoved = false;
    /// One entry for each running call; a thread that posts from inside an observer has several.
    std::vector<std::thread::id> running;

    State(NSString observedName, const void *observedObject, NSNotificationCenter::Observer callback)
        : name(std::move(observedName)), object(observedObject), observer(std::move(callback)) {}

    bool observes(const NSNotification &notification) const {
        return (name.isNull() || name == notification.name) &&
               (object == nullptr || object == notification.object);
    }

    void tell(const NSNotification &notification) {
        {
            const std::lock_guard guard(mutex);
            if (isRemoved)
                return;
            running.push_back(std::this_thread::get_id());
        }
        struct Leaving {
            State &state;
            ~Leaving() {
                const std::lock_guard guard(state.mutex);
                state.running.erase(
                    std::find(state.running.begin(), state.running.end(), std::this_thread::get_id()));
                state.threadLeft.notify_all();
            }
        } leaving{*this};
        observer(notification);
    }

    void remove(const std::shared_ptr<State> &self) {
        if (const auto center = storage.lock()) {
            const std::lock_guard guard(center->mutex);
            std::erase(center->observers, self);
        }
        std::unique_lock lock(mutex);
        isRemoved = true;
        // Its own calls, which are further up this thread's stack, could only be waited for in vain.
        threadLeft.wait(lock, [this] {
            return std::all_of(running.begin(), running.end(),
                               [](std::thread::id thread) { return thread == std::this_thread::get_id(); });
        });
    }
};

NSNotificationToken::NSNotificationToken() = default;

NSNotificationToken::NSNotificationToken(std::shared_ptr<State> state) : _state(std::move(state)) {}

NSNotificationToken::NSNotificationToken(NSNotificationToken &&) noexcept = default;

NSNotificationToken &NSNotificationToken::operator=(NSNotificationToken &&other) noexcept {
    if (this != &other) {
        invalidate();
        _state = std::move(other._state);
    }
    return *this;
}

NSNotificationToken::~NSNotificationToken() { invalidate(); }

void NSNotificationToken::invalidate() {
    // Emptied first: the observer may hold this token.
    if (const auto state = std::exchange(_state, nullptr))
        state->remove(state);
}

NSNotificationCenter &NSNotificationCenter::defaultCenter() {
    // Never destroyed, so that observers of any lifetime can leave it.
    static NSNotificationCenter *const center = new NSNotificationCenter;
    return *center;
}

NSNotificationCenter::NSNotificationCenter() : _storage(std::make_shared<Storage>()) {}

NSNotificationCenter::~NSNotificationCenter() = default;

NSNotificationToken NSNotificationCenter::addObserver(NSString name, const void *object, Observer observer) {
    QVParameterAssert(observer != nullptr, "block != nil");
    if (!observer)
        return {};
    auto state = std::make_shared<NSNotificationToken::State>(std::move(name), object, std::move(observer));
    state->storage = _storage;
    const std::lock_guard guard(_storage->mutex);
    _storage->observers.push_back(state);
    return NSNotificationToken(std::move(state));
}

void NSNotificationCenter::postNotification(const NSNotification &notification) {
    // Told without the lock, so that an observer may post, add and remove.
    std::vector<std::shared_ptr<NSNotificationToken::State>> observers;
    {
        const std::lock_guard guard(_storage->mutex);
        std::copy_if(_storage->observers.begin(), _storage->observers.end(), std::back_inserter(observers),
                     [&](const auto &state) { return state->observes(notification); });
    }
    for (const auto &state : observers)
        state->tell(notification);
}

} // namespace quorvane
