#pragma once

#include "Platform/Foundation/QVLimits.h"

#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace quorvane {

/// What can be computed again, kept for a while: a dictionary of at most so many entries, from which the one
/// that was not used for the longest time goes first. Whoever asks must bear that nothing is there. Any
/// thread.
template <typename Key, typename Value, typename Hash = std::hash<Key>, typename Equal = std::equal_to<Key>>
class NSCache {
public:
    explicit NSCache(std::size_t countLimit = limits::cachedObjects) : _countLimit(countLimit) {}
    NSCache(const NSCache &) = delete;
    NSCache &operator=(const NSCache &) = delete;

    std::size_t countLimit() const { return _countLimit; }

    /// A copy of what is kept for the key.
    std::optional<Value> objectForKey(const Key &key) {
        const std::lock_guard guard(_lock);
        const auto found = _entries.find(key);
        if (found == _entries.end())
            return std::nullopt;
        _order.splice(_order.begin(), _order, found->second);
        return found->second->second;
    }

    void setObject(Value value, const Key &forKey) {
        // What goes is freed outside of the lock: its end may ask this cache.
        Order gone;
        const std::lock_guard guard(_lock);
        if (const auto found = _entries.find(forKey); found != _entries.end()) {
            gone.splice(gone.begin(), _order, found->second);
            _entries.erase(found);
        }
        if (_countLimit == 0)
            return;
        if (_order.size() == _countLimit) {
            _entries.erase(_order.back().first);
            gone.splice(gone.begin(), _order, std::prev(_order.end()));
        }
        _order.emplace_front(forKey, std::move(value));
        _entries.emplace(forKey, _order.begin());
    }

    void removeObjectForKey(const Key &key) {
        Order gone;
        const std::lock_guard guard(_lock);
        if (const auto found = _entries.find(key); found != _entries.end()) {
            gone.splice(gone.begin(), _order, found->second);
            _entries.erase(found);
        }
    }

    void removeAllObjects() {
        Order gone;
        const std::lock_guard guard(_lock);
        _entries.clear();
        gone.swap(_order);
    }

private:
    /// What was used last stands first.
    using Order = std::list<std::pair<Key, Value>>;

    std::size_t _countLimit;
    std::mutex _lock;
    Order _order;
    std::unordered_map<Key, typename Order::iterator, Hash, Equal> _entries;
};

} // namespace quorvane
