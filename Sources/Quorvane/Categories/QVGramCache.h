#pragma once

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Categories/QVGrams.h"

#include <mutex>
#include <unordered_map>

namespace quorvane {

/// Remembers the grams of names. Two generations, of which the older is dropped when the younger is full:
/// what is asked for again moves to the younger one, so that names in use stay. Any thread.
class QVGramCache {
public:
    /// Null for an unknown name.
    QVGrams gramsForKey(const NSString &key);
    /// Long texts are not kept: they are no names, and a few of them would take more than all else.
    void setGrams(const QVGrams &grams, const NSString &forKey);
    /// How many names are remembered.
    std::size_t count() const;

private:
    void insert(const NSString &key, const QVGrams &grams);

    mutable std::mutex _mutex;
    std::unordered_map<NSString, QVGrams> _young;
    std::unordered_map<NSString, QVGrams> _old;
};

} // namespace quorvane
