#pragma once

#include <cstdint>
#include <unordered_map>

namespace quorvane {

/// A set that remembers how many times each value was added. Removing takes back one of them.
template <typename T> class NSCountedSet {
public:
    void addObject(const T &value) { ++_counts[value]; }
    /// Removing what is not there does nothing.
    void removeObject(const T &value) {
        const auto found = _counts.find(value);
        if (found != _counts.end() && --found->second == 0)
            _counts.erase(found);
    }
    void removeAllObjects() { _counts.clear(); }
    bool containsObject(const T &value) const { return _counts.contains(value); }
    std::uint64_t countForObject(const T &value) const {
        const auto found = _counts.find(value);
        return found == _counts.end() ? 0 : found->second;
    }
    /// The number of different values.
    std::uint64_t count() const { return _counts.size(); }

private:
    std::unordered_map<T, std::uint64_t> _counts;
};

} // namespace quorvane
