#include "Quorvane/Categories/QVGramCache.h"

namespace quorvane {

QVGrams QVGramCache::gramsForKey(const NSString &key) {
    const std::lock_guard guard(_mutex);
    if (const auto found = _young.find(key); found != _young.end())
        return found->second;
    const auto found = _old.find(key);
    if (found == _old.end())
        return nullptr;
    const QVGrams grams = found->second;
    _old.erase(found);
    insert(key, grams);
    return grams;
}

void QVGramCache::setGrams(const QVGrams &grams, const NSString &forKey) {
    if (forKey.length() > limits::rememberedGramsLength)
        return;
    const std::lock_guard guard(_mutex);
    insert(forKey, grams);
}

std::size_t QVGramCache::count() const {
    const std::lock_guard guard(_mutex);
    return _young.size() + _old.size();
}

void QVGramCache::insert(const NSString &key, const QVGrams &grams) {
    if (_young.size() >= limits::rememberedGrams / 2) {
        _old = std::move(_young);
        _young.clear();
    }
    // A name can't be in both, or it would count twice: whoever inserts has not found it.
    _old.erase(key);
    _young.insert_or_assign(key, grams);
}

} // namespace quorvane
