#include "Quorvane/Categories/QVGramCache.h"

#include <algorithm>

namespace quorvane {

QVGramCache::QVGramCache() : _entries(limits::rememberedGrams) {}

QVGrams QVGramCache::gramsForKey(const NSString &key) {
    Entry &entry = entryForKey(key);
    const std::lock_guard guard(_mutex);
    return entry.key == key ? entry.grams : nullptr;
}

void QVGramCache::setGrams(QVGrams grams, NSString forKey) {
    if (forKey.length() > limits::rememberedGramsLength)
        return;
    Entry &entry = entryForKey(forKey);
    // What had the place goes with the parameters, when the lock is free again.
    const std::lock_guard guard(_mutex);
    std::swap(entry.key, forKey);
    std::swap(entry.grams, grams);
}

std::size_t QVGramCache::count() const {
    const std::lock_guard guard(_mutex);
    return static_cast<std::size_t>(
        std::ranges::count_if(_entries, [](const Entry &entry) { return !entry.key.isNull(); }));
}

} // namespace quorvane
