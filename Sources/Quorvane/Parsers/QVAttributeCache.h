#pragma once

#include "Platform/Foundation/NSAttributes.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace quorvane {

class QVCapture;
class QVMatch;
class QVScope;

/// What scopes and captures look like over certain default attributes, resolved once for each of them instead
/// of once for each match. A walk that colours text has one; most matches cost it one look at a small table,
/// which also knows those that have nothing to say. Good as long as no theme changes any styles and no
/// grammar goes, which `isCurrent` tells. One thread.
class QV_EXPORT QVAttributeCache {
public:
    explicit QVAttributeCache(NSAttributes defaultAttributes);

    const NSAttributes &defaultAttributes() const { return _defaultAttributes; }
    /// Whether all answers are still what resolving them anew would give. Never true again once it is false.
    bool isCurrent() const;

    /// The lexical class and the styles of a scope; null where it has nothing of both. Good as long as the
    /// cache.
    const NSAttributes *attributesForScope(const QVScope *scope) {
        Slot *const slot = slotForKey(scope);
        return slot->key == scope ? slot->attributes : attributesForNewScope(scope);
    }
    /// The same for a capture. Null too where it has no styles, whatever its lexical class: there are many
    /// captures that only queries ask for.
    const NSAttributes *attributesForCapture(const QVCapture *capture) {
        Slot *const slot = slotForKey(capture);
        return slot->key == capture ? slot->attributes : attributesForNewCapture(capture);
    }

private:
    struct Slot {
        const void *key = nullptr;
        const NSAttributes *attributes = nullptr;
    };

    /// The key's slot, or the empty one where it belongs.
    Slot *slotForKey(const void *key) {
        const std::size_t mask = _slots.size() - 1;
        // Objects of one size stand at equal distances; multiplying spreads them.
        std::size_t index = (reinterpret_cast<std::uintptr_t>(key) * 0x9e3779b97f4a7c15u) >> 32 & mask;
        while (_slots[index].key != key && _slots[index].key != nullptr)
            index = (index + 1) & mask;
        return &_slots[index];
    }
    const NSAttributes *attributesForNewScope(const QVScope *scope);
    const NSAttributes *attributesForNewCapture(const QVCapture *capture);
    const NSAttributes *remember(const void *key, const NSAttributes &attributes);

    NSAttributes _defaultAttributes;
    std::uint64_t _generation;
    /// At most half full, so that there is always an empty one.
    std::vector<Slot> _slots;
    std::size_t _count = 0;
    std::deque<NSAttributes> _attributes;
};

} // namespace quorvane
